#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "modules/Module.h"
#include "transport/Transport.h"

namespace QvGenTL {

class CInterfaceModule;

/**
 * The GenTL system module (TLOpen): owns the transports, the snapshot of their interfaces
 * taken by TLUpdateInterfaceList, and the opened interfaces. One per process. Any thread.
 */
class CSystemModule : public CModule
{
public:
    /// Creates the transports from the environment (throws CGenTLError on a bad configuration)
    /// and registers the system's handle.
    static std::shared_ptr<CSystemModule> Create();

    /// Answers TLGetInfo; also GCGetInfo, which needs no open system.
    static CInfoValue LibraryInfo(GenTL::TL_INFO_CMD command);

    /// TLUpdateInterfaceList; returns whether the list changed.
    bool UpdateInterfaceList(uint64_t timeoutMs);
    uint32_t NumInterfaces();
    std::string InterfaceId(uint32_t index);
    CInfoValue InterfaceInfo(const std::string& interfaceId, GenTL::INTERFACE_INFO_CMD command);
    /// TLOpenInterface: GC_ERR_INVALID_ID if not listed, GC_ERR_RESOURCE_IN_USE if open already.
    std::shared_ptr<CInterfaceModule> OpenInterface(const std::string& interfaceId);
    /// Called by an interface when it closes.
    void ForgetInterface(const CInterfaceModule* module);

    CSystemModule(); // use Create

protected:
    const char* ModuleName() const override { return "TLSystem"; }
    const char* PortName() const override { return "TLPort"; }
    void CloseChildren() override;

private:
    ITransportInterface* FindListedLocked(const std::string& interfaceId) const;

    std::vector<std::unique_ptr<ITransport>> m_transports; // set by Create, then constant

    std::mutex m_lock;
    // Guarded by m_lock.
    std::vector<ITransportInterface*> m_listed;
    std::map<std::string, std::shared_ptr<CInterfaceModule>> m_open;
    uint32_t m_selectedInterface = 0;
};

} // namespace QvGenTL
