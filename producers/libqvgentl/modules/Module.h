#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <GenTL/GenTL.h>

#include "modules/Event.h"
#include "modules/Port.h"
#include "modules/RegisterSpace.h"

namespace QvGenTL {

/**
 * What every GenTL module of the producer shares: its ID and transport type, its port (a
 * little-endian register space serving the module description at kDescriptionAddress and the
 * module's features), its registered events, and error events on request.
 *
 * Lifetime: created and registered in the handle table by its parent, closed by its parent
 * (or its own close call), which closes its children and events and removes its handle.
 * Any thread.
 */
class CModule : public CPort
{
public:
    /// descriptionName names the embedded description file (e.g. "System.xml").
    CModule(std::string id, std::string tlType, const std::string& descriptionName);

    const std::string& Id() const { return m_id; }
    const std::string& TLType() const { return m_tlType; }

    void ReadPort(uint64_t address, void* pBuffer, size_t size) override;
    void WritePort(uint64_t address, const void* pBuffer, size_t size) override;
    PortIdentity_t PortIdentity() const override;
    std::vector<PortUrl_t> PortUrls() const override;

    /// GCRegisterEvent: throws GC_ERR_NOT_IMPLEMENTED for a type the module does not have,
    /// GC_ERR_RESOURCE_IN_USE when it is registered already.
    std::shared_ptr<CEvent> RegisterEvent(GenTL::EVENT_TYPE type);
    /// GCUnregisterEvent: aborts waits on the event and invalidates its handle.
    void UnregisterEvent(GenTL::EVENT_TYPE type);

    /// Queues an EVENT_ERROR record if the event is registered (else the error is only dropped).
    void RaiseError(GenTL::GC_ERROR code, const std::string& text);
    /// Queues a record on a registered event of a queued type; false if nobody registered it.
    bool PostEvent(GenTL::EVENT_TYPE type, std::vector<uint8_t> record);

    /// Closes the module: children first, then events, then its handle. Idempotent.
    virtual void Close();
    bool IsClosed() const { return m_closed.load(); }

protected:
    virtual const char* ModuleName() const = 0; ///< PORT_INFO_MODULE
    virtual const char* PortName() const = 0;   ///< Port node of the description
    virtual bool SupportsEvent(GenTL::EVENT_TYPE type) const;
    virtual std::shared_ptr<CEvent> MakeEvent(GenTL::EVENT_TYPE type);
    /// Closes the children; called by Close before the events go.
    virtual void CloseChildren() {}

    /// Features of the module; derived constructors add theirs.
    CRegisterSpace m_registers{true};

private:
    const std::string m_id;
    const std::string m_tlType;
    const EmbeddedFile_t& m_description;

    std::mutex m_eventsLock;
    // Guarded by m_eventsLock.
    std::map<GenTL::EVENT_TYPE, std::shared_ptr<CEvent>> m_events;

    std::atomic<int32_t> m_testErrorCode{GenTL::GC_ERR_ERROR};
    std::atomic<bool> m_closed{false};
};

} // namespace QvGenTL
