#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "modules/Module.h"
#include "transport/Transport.h"

namespace QvGenTL {

class CDeviceModule;
class CSystemModule;

/**
 * A GenTL interface module (TLOpenInterface) over one transport interface: the snapshot of
 * its devices taken by IFUpdateDeviceList and the devices opened through it. Any thread.
 */
class CInterfaceModule : public CModule
{
public:
    CInterfaceModule(std::shared_ptr<CSystemModule> system, ITransportInterface* transport);

    /// INTERFACE_INFO_* of a transport interface, opened or not.
    static CInfoValue InterfaceInfo(ITransportInterface& transport, GenTL::INTERFACE_INFO_CMD command);
    CInfoValue Info(GenTL::INTERFACE_INFO_CMD command) { return InterfaceInfo(*m_transport, command); }

    /// IFUpdateDeviceList; returns whether the list changed.
    bool UpdateDeviceList(uint64_t timeoutMs);
    uint32_t NumDevices();
    std::string DeviceId(uint32_t index);
    /// IFGetDeviceInfo for a listed device.
    CInfoValue DeviceInfo(const std::string& deviceId, GenTL::DEVICE_INFO_CMD command);
    /// IFOpenDevice.
    std::shared_ptr<CDeviceModule> OpenDevice(const std::string& deviceId, GenTL::DEVICE_ACCESS_FLAGS flags);
    /// Called by a device when it closes.
    void ForgetDevice(const CDeviceModule* module);

    const std::shared_ptr<CSystemModule>& System() const { return m_system; }

    void Close() override;

protected:
    const char* ModuleName() const override { return "TLInterface"; }
    const char* PortName() const override { return "InterfacePort"; }
    void CloseChildren() override;

private:
    const DeviceInfo_t* FindListedLocked(const std::string& deviceId) const;

    const std::shared_ptr<CSystemModule> m_system; // kept alive while this interface lives
    ITransportInterface* const m_transport;         // owned by the system's transport

    std::mutex m_lock;
    // Guarded by m_lock.
    std::vector<DeviceInfo_t> m_listed;
    std::map<std::string, std::shared_ptr<CDeviceModule>> m_open;
    uint32_t m_selectedDevice = 0;
};

/// DEVICE_INFO_* of a device, with its current access status.
CInfoValue DeviceInfoValue(const DeviceInfo_t& device, GenTL::DEVICE_ACCESS_STATUS status,
                           GenTL::DEVICE_INFO_CMD command);

/// Value of the TLType-like enumerations of our descriptions (GigEVision 1, USB3Vision 2, CoaXPress 3).
int64_t TLTypeCode(const std::string& tlType);

} // namespace QvGenTL
