#include "modules/Event.h"

#include <cstring>

#include "modules/EventRecords.h"
#include "modules/GenTLError.h"
#include "transport/RemoteEventCodec.h"

namespace QvGenTL {

namespace {

constexpr size_t kMaxRemoteEventSize = 512;
constexpr size_t kMaxFeatureRecordSize = 1024;

/// Text of a NUL-terminated string inside [data, data + size); the rest if there is no NUL.
std::string_view TextAt(const uint8_t* data, size_t size)
{
    const void* end = std::memchr(data, 0, size);
    return std::string_view(reinterpret_cast<const char*>(data),
                            end ? static_cast<size_t>(static_cast<const uint8_t*>(end) - data) : size);
}

[[noreturn]] void ThrowNotApplicable(GenTL::EVENT_DATA_INFO_CMD command, GenTL::EVENT_TYPE type)
{
    ThrowGenTL(GenTL::GC_ERR_NOT_AVAILABLE, "EVENT_DATA_INFO_CMD %d does not apply to events of type %d", command,
               type);
}

} // namespace

CEvent::CEvent(GenTL::EVENT_TYPE type, std::string tlType) : m_type(type), m_tlType(std::move(tlType)) {}

size_t CEvent::MaxDataSize() const
{
    switch (m_type)
    {
    case GenTL::EVENT_ERROR: return 4 + kMaxErrorTextSize;
    case GenTL::EVENT_NEW_BUFFER: return sizeof(GenTL::EVENT_NEW_BUFFER_DATA);
    case GenTL::EVENT_FEATURE_INVALIDATE:
    case GenTL::EVENT_FEATURE_CHANGE: return kMaxFeatureRecordSize;
    default: return kMaxRemoteEventSize;
    }
}

size_t CEvent::MaxDataInfoSize() const
{
    switch (m_type)
    {
    case GenTL::EVENT_ERROR: return kMaxErrorTextSize;
    case GenTL::EVENT_NEW_BUFFER: return sizeof(void*);
    case GenTL::EVENT_FEATURE_INVALIDATE:
    case GenTL::EVENT_FEATURE_CHANGE: return kMaxFeatureRecordSize;
    default: return kMaxRemoteEventSize;
    }
}

CInfoValue CEvent::Info(GenTL::EVENT_INFO_CMD command)
{
    switch (command)
    {
    case GenTL::EVENT_EVENT_TYPE: return CInfoValue::Int32(m_type);
    case GenTL::EVENT_NUM_IN_QUEUE: return CInfoValue::SizeT(NumInQueue());
    case GenTL::EVENT_NUM_FIRED: return CInfoValue::UInt64(NumFired());
    case GenTL::EVENT_SIZE_MAX: return CInfoValue::SizeT(MaxDataSize());
    case GenTL::EVENT_INFO_DATA_SIZE_MAX: return CInfoValue::SizeT(MaxDataInfoSize());
    default: ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Unknown EVENT_INFO_CMD %d", command);
    }
}

CInfoValue CEvent::DataInfo(const void* pInBuffer, size_t inSize, GenTL::EVENT_DATA_INFO_CMD command) const
{
    if (pInBuffer == nullptr)
        ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "EventGetDataInfo needs the data of EventGetData");
    const uint8_t* data = static_cast<const uint8_t*>(pInBuffer);
    switch (m_type)
    {
    case GenTL::EVENT_ERROR:
    {
        if (inSize < 5)
            ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Error event data of %zu bytes is too short", inSize);
        if (command == GenTL::EVENT_DATA_ID)
            return CInfoValue::Int32(static_cast<int32_t>(LoadLE(data, 4)));
        if (command == GenTL::EVENT_DATA_VALUE)
            return CInfoValue::String(TextAt(data + 4, inSize - 4));
        ThrowNotApplicable(command, m_type);
    }
    case GenTL::EVENT_NEW_BUFFER:
    {
        GenTL::EVENT_NEW_BUFFER_DATA record;
        if (inSize < sizeof(record))
            ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "New-buffer event data of %zu bytes is too short", inSize);
        std::memcpy(&record, data, sizeof(record));
        if (command == GenTL::EVENT_DATA_ID)
            return CInfoValue::Ptr(record.BufferHandle);
        if (command == GenTL::EVENT_DATA_VALUE)
            return CInfoValue::Ptr(record.pUserPointer);
        ThrowNotApplicable(command, m_type);
    }
    case GenTL::EVENT_FEATURE_INVALIDATE:
    case GenTL::EVENT_FEATURE_CHANGE:
    {
        const std::string_view name = TextAt(data, inSize);
        if (command == GenTL::EVENT_DATA_ID)
            return CInfoValue::String(name);
        if (command == GenTL::EVENT_DATA_VALUE && m_type == GenTL::EVENT_FEATURE_CHANGE && name.size() < inSize)
            return CInfoValue::String(TextAt(data + name.size() + 1, inSize - name.size() - 1));
        ThrowNotApplicable(command, m_type);
    }
    default:
    {
        // Remote-device events travel in the transport's layout, module events as generic records.
        const EEventLayout_t layout =
            m_type == GenTL::EVENT_REMOTE_DEVICE ? EventLayoutOf(m_tlType) : EEventLayout_t::Generic;
        DecodedEvent_t event;
        if (!DecodeRemoteEvent(layout, data, inSize, event))
            ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Event data of %zu bytes is not a valid event record", inSize);
        if (command == GenTL::EVENT_DATA_ID)
            return CInfoValue::String(EventIdText(event.id));
        if (command == GenTL::EVENT_DATA_VALUE)
            return CInfoValue::Buffer(event.value.data(), event.value.size());
        if (command == GenTL::EVENT_DATA_NUMID)
            return CInfoValue::UInt64(event.id);
        ThrowNotApplicable(command, m_type);
    }
    }
}

} // namespace QvGenTL
