#include "modules/Module.h"

#include "modules/EventRecords.h"
#include "modules/GenTLError.h"
#include "modules/HandleTable.h"
#include "modules/ProducerInfo.h"
#include "modules/QueuedEvent.h"

namespace QvGenTL {

CModule::CModule(std::string id, std::string tlType, const std::string& descriptionName)
    : m_id(std::move(id)), m_tlType(std::move(tlType)), m_description(FindEmbeddedFile(descriptionName))
{
    m_registers.AddMemory(kDescriptionAddress, m_description.data, m_description.size);
    m_registers.AddInteger(
        kTestErrorCodeAddress, 4, [this] { return int64_t(m_testErrorCode.load()); },
        [this](int64_t value) {
            if (value >= 0 || value < INT32_MIN)
                return GenTL::GC_ERR_INVALID_VALUE;
            m_testErrorCode = static_cast<int32_t>(value);
            return GenTL::GC_ERR_SUCCESS;
        });
    m_registers.AddInteger(kTestErrorGenerateAddress, 4, nullptr, [this](int64_t value) {
        if (value != 0)
            RaiseError(m_testErrorCode.load(), std::string("Error raised on request by TestErrorEventGenerate of ") +
                                                   ModuleName() + " " + m_id);
        return GenTL::GC_ERR_SUCCESS;
    });
}

void CModule::ReadPort(uint64_t address, void* pBuffer, size_t size)
{
    const GenTL::GC_ERROR result = m_registers.Read(address, pBuffer, size);
    if (result != GenTL::GC_ERR_SUCCESS)
        ThrowGenTL(result, "Reading %zu bytes at 0x%llX of the %s port failed", size,
                   static_cast<unsigned long long>(address), ModuleName());
}

void CModule::WritePort(uint64_t address, const void* pBuffer, size_t size)
{
    const GenTL::GC_ERROR result = m_registers.Write(address, pBuffer, size);
    if (result != GenTL::GC_ERR_SUCCESS)
        ThrowGenTL(result, "Writing %zu bytes at 0x%llX of the %s port failed", size,
                   static_cast<unsigned long long>(address), ModuleName());
}

PortIdentity_t CModule::PortIdentity() const
{
    PortIdentity_t identity;
    identity.id = m_id;
    identity.vendor = kProducerVendor;
    identity.model = kProducerModel;
    identity.tlType = m_tlType;
    identity.module = ModuleName();
    identity.version = kProducerVersion;
    identity.portName = PortName();
    identity.littleEndian = true;
    identity.readable = true;
    identity.writable = true;
    return identity;
}

std::vector<PortUrl_t> CModule::PortUrls() const
{
    return {PortUrl_t{&m_description, kDescriptionAddress}};
}

bool CModule::SupportsEvent(GenTL::EVENT_TYPE type) const
{
    return type == GenTL::EVENT_ERROR || type == GenTL::EVENT_MODULE || type == GenTL::EVENT_FEATURE_INVALIDATE ||
           type == GenTL::EVENT_FEATURE_CHANGE;
}

std::shared_ptr<CEvent> CModule::MakeEvent(GenTL::EVENT_TYPE type)
{
    return std::make_shared<CQueuedEvent>(type, m_tlType);
}

std::shared_ptr<CEvent> CModule::RegisterEvent(GenTL::EVENT_TYPE type)
{
    if (!SupportsEvent(type))
        ThrowGenTL(GenTL::GC_ERR_NOT_IMPLEMENTED, "%s has no events of type %d", ModuleName(), type);
    std::lock_guard lock(m_eventsLock);
    if (m_closed)
        ThrowGenTL(GenTL::GC_ERR_INVALID_HANDLE, "%s %s is closed", ModuleName(), m_id.c_str());
    if (m_events.count(type) != 0)
        ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "Event type %d of %s is registered already", type, ModuleName());
    std::shared_ptr<CEvent> event = MakeEvent(type);
    m_events[type] = event;
    Handles().Add(event);
    return event;
}

void CModule::UnregisterEvent(GenTL::EVENT_TYPE type)
{
    std::shared_ptr<CEvent> event;
    {
        std::lock_guard lock(m_eventsLock);
        auto it = m_events.find(type);
        if (it == m_events.end())
            ThrowGenTL(GenTL::GC_ERR_NOT_AVAILABLE, "Event type %d of %s is not registered", type, ModuleName());
        event = std::move(it->second);
        m_events.erase(it);
    }
    Handles().Remove(event->Handle());
    event->Close();
}

bool CModule::PostEvent(GenTL::EVENT_TYPE type, std::vector<uint8_t> record)
{
    std::shared_ptr<CEvent> event;
    {
        std::lock_guard lock(m_eventsLock);
        auto it = m_events.find(type);
        if (it == m_events.end())
            return false;
        event = it->second;
    }
    auto* queued = dynamic_cast<CQueuedEvent*>(event.get());
    if (queued == nullptr)
        return false;
    queued->Post(std::move(record));
    return true;
}

void CModule::RaiseError(GenTL::GC_ERROR code, const std::string& text)
{
    PostEvent(GenTL::EVENT_ERROR, EncodeErrorRecord(code, text));
}

void CModule::Close()
{
    if (m_closed.exchange(true))
        return;
    CloseChildren();
    std::map<GenTL::EVENT_TYPE, std::shared_ptr<CEvent>> events;
    {
        std::lock_guard lock(m_eventsLock);
        events.swap(m_events);
    }
    for (auto& [type, event] : events)
    {
        Handles().Remove(event->Handle());
        event->Close();
    }
    Handles().Remove(Handle());
}

} // namespace QvGenTL
