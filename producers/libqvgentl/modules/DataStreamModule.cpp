#include "modules/DataStreamModule.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "modules/DeviceModule.h"
#include "modules/HandleTable.h"
#include "modules/InterfaceModule.h"
#include "modules/NewBufferEvent.h"

namespace QvGenTL {

namespace {

constexpr size_t kAnnounceMinimum = 1;

} // namespace

CDataStreamModule::CDataStreamModule(std::shared_ptr<CDeviceModule> device, const std::string& streamId)
    : CModule(streamId, device->TLType(), "DataStream.xml"), m_device(std::move(device)),
      m_connection(m_device->Connection())
{
    auto locked = [this](auto read) {
        return [this, read] {
            std::lock_guard lock(m_lock);
            return int64_t(read());
        };
    };
    m_registers.AddString(0x0000, 64, [this] { return Id(); });
    m_registers.AddInteger(0x0040, 4, [this] { return TLTypeCode(TLType()); });
    m_registers.AddInteger(0x0100, 8, locked([this] { return m_buffers.size(); }));
    m_registers.AddInteger(0x0108, 8, [] { return int64_t(kAnnounceMinimum); });
    m_registers.AddInteger(0x0110, 8, [] { return int64_t(CBufferModule::kAlignment); });
    m_registers.AddInteger(0x0118, 8, locked([this] { return m_input.size(); }));
    m_registers.AddInteger(0x0120, 8, locked([this] { return m_output.size(); }));
    m_registers.AddInteger(0x0128, 8, [this] { return int64_t(m_connection.MaxChunkCount()); });
    m_registers.AddInteger(0x0200, 8, locked([this] { return m_numStarted; }));
    m_registers.AddInteger(0x0208, 8, locked([this] { return m_deliveredSinceStart; }));
    m_registers.AddInteger(0x0210, 8, locked([this] { return m_numUnderrun; }));
    m_registers.AddInteger(0x0218, 8, locked([this] { return m_numDropped; }));
    m_registers.AddInteger(0x0220, 8, locked([this] { return m_numIncomplete; }));
    m_registers.AddInteger(0x0228, 4, locked([this] { return m_acquiring ? 1 : 0; }));
}

CDataStreamModule::~CDataStreamModule() = default;

CInfoValue CDataStreamModule::Info(GenTL::STREAM_INFO_CMD command)
{
    switch (command)
    {
    case GenTL::STREAM_INFO_ID: return CInfoValue::String(Id());
    case GenTL::STREAM_INFO_PAYLOAD_SIZE: return CInfoValue::SizeT(m_connection.PayloadSize());
    case GenTL::STREAM_INFO_DEFINES_PAYLOADSIZE: return CInfoValue::Bool8(false);
    case GenTL::STREAM_INFO_TLTYPE: return CInfoValue::String(TLType());
    case GenTL::STREAM_INFO_NUM_CHUNKS_MAX: return CInfoValue::SizeT(m_connection.MaxChunkCount());
    case GenTL::STREAM_INFO_BUF_ANNOUNCE_MIN: return CInfoValue::SizeT(kAnnounceMinimum);
    case GenTL::STREAM_INFO_BUF_ALIGNMENT: return CInfoValue::SizeT(CBufferModule::kAlignment);
    default: break;
    }
    std::lock_guard lock(m_lock);
    switch (command)
    {
    case GenTL::STREAM_INFO_NUM_DELIVERED: return CInfoValue::UInt64(m_deliveredSinceStart);
    case GenTL::STREAM_INFO_NUM_UNDERRUN: return CInfoValue::UInt64(m_numUnderrun);
    case GenTL::STREAM_INFO_NUM_ANNOUNCED: return CInfoValue::SizeT(m_buffers.size());
    case GenTL::STREAM_INFO_NUM_QUEUED: return CInfoValue::SizeT(m_input.size());
    case GenTL::STREAM_INFO_NUM_AWAIT_DELIVERY: return CInfoValue::SizeT(m_output.size());
    case GenTL::STREAM_INFO_NUM_STARTED: return CInfoValue::UInt64(m_numStarted);
    case GenTL::STREAM_INFO_IS_GRABBING: return CInfoValue::Bool8(m_acquiring);
    case GenTL::STREAM_INFO_FLOW_TABLE:
    case GenTL::STREAM_INFO_GENDC_PREFETCH_DESCRIPTOR:
        ThrowGenTL(GenTL::GC_ERR_NOT_AVAILABLE, "The stream delivers no GenDC data");
    default: ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Unknown STREAM_INFO_CMD %d", command);
    }
}

std::shared_ptr<CBufferModule> CDataStreamModule::AnnounceBuffer(void* memory, size_t size, void* pPrivate)
{
    if (size == 0)
        ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "A buffer of 0 bytes cannot be announced");
    std::lock_guard lock(m_lock);
    if (memory != nullptr)
        for (const auto& buffer : m_buffers)
            if (buffer->data == memory)
                ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "The memory at %p is announced already", memory);
    auto buffer = std::make_shared<CBufferModule>(SharedAs<CDataStreamModule>(),
                                                  "Buffer" + std::to_string(m_nextBufferNumber), memory, size,
                                                  pPrivate);
    ++m_nextBufferNumber;
    m_buffers.push_back(buffer);
    Handles().Add(buffer);
    return buffer;
}

void CDataStreamModule::CheckOwnBuffer(const CBufferModule& buffer) const
{
    if (buffer.Stream().get() != this)
        ThrowGenTL(GenTL::GC_ERR_INVALID_HANDLE, "Buffer %s belongs to another data stream", buffer.Id().c_str());
}

void CDataStreamModule::RevokeBuffer(const std::shared_ptr<CBufferModule>& buffer, void** ppMemory, void** ppPrivate)
{
    CheckOwnBuffer(*buffer);
    {
        std::lock_guard lock(m_lock);
        if (buffer->m_state != EBufferState_t::Announced)
            ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "Buffer %s is queued or being filled: flush the queues first",
                       buffer->Id().c_str());
        auto it = std::find(m_buffers.begin(), m_buffers.end(), buffer);
        if (it == m_buffers.end())
            ThrowGenTL(GenTL::GC_ERR_INVALID_HANDLE, "Buffer %s is revoked already", buffer->Id().c_str());
        m_buffers.erase(it);
    }
    if (ppMemory != nullptr)
        *ppMemory = buffer->OwnsMemory() ? nullptr : buffer->data;
    if (ppPrivate != nullptr)
        *ppPrivate = buffer->UserPointer();
    buffer->Close();
}

void CDataStreamModule::QueueBuffer(const std::shared_ptr<CBufferModule>& buffer)
{
    CheckOwnBuffer(*buffer);
    std::lock_guard lock(m_lock);
    if (buffer->m_state != EBufferState_t::Announced)
        ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "Buffer %s is queued already", buffer->Id().c_str());
    if (buffer->IsClosed())
        ThrowGenTL(GenTL::GC_ERR_INVALID_HANDLE, "Buffer %s is revoked", buffer->Id().c_str());
    buffer->m_state = EBufferState_t::Input;
    buffer->m_newData = false;
    buffer->m_fill.sizeFilled = 0;
    m_input.push_back(buffer.get());
    m_inputChanged.notify_one();
}

void CDataStreamModule::RemoveFromQueuesLocked(CBufferModule* buffer)
{
    m_input.erase(std::remove(m_input.begin(), m_input.end(), buffer), m_input.end());
    m_output.erase(std::remove(m_output.begin(), m_output.end(), buffer), m_output.end());
}

void CDataStreamModule::FlushQueue(GenTL::ACQ_QUEUE_TYPE operation)
{
    std::unique_lock lock(m_lock);
    switch (operation)
    {
    case GenTL::ACQ_QUEUE_INPUT_TO_OUTPUT:
        // Unfilled buffers become new-buffer entries (NEW_DATA stays false).
        for (CBufferModule* buffer : m_input)
        {
            buffer->m_state = EBufferState_t::Output;
            m_output.push_back(buffer);
            ++m_numNewBufferFired;
        }
        m_input.clear();
        lock.unlock();
        m_outputChanged.notify_all();
        return;
    case GenTL::ACQ_QUEUE_OUTPUT_DISCARD:
        for (CBufferModule* buffer : m_output)
            buffer->m_state = EBufferState_t::Announced;
        m_output.clear();
        return;
    case GenTL::ACQ_QUEUE_ALL_TO_INPUT:
        for (CBufferModule* buffer : m_output)
        {
            buffer->m_state = EBufferState_t::Input;
            buffer->m_fill.sizeFilled = 0;
            m_input.push_back(buffer);
        }
        m_output.clear();
        [[fallthrough]];
    case GenTL::ACQ_QUEUE_UNQUEUED_TO_INPUT:
        for (const auto& buffer : m_buffers)
            if (buffer->m_state == EBufferState_t::Announced)
            {
                buffer->m_state = EBufferState_t::Input;
                buffer->m_newData = false;
                buffer->m_fill.sizeFilled = 0;
                m_input.push_back(buffer.get());
            }
        m_inputChanged.notify_one();
        return;
    case GenTL::ACQ_QUEUE_ALL_DISCARD:
        for (CBufferModule* buffer : m_input)
            buffer->m_state = EBufferState_t::Announced;
        for (CBufferModule* buffer : m_output)
            buffer->m_state = EBufferState_t::Announced;
        m_input.clear();
        m_output.clear();
        return;
    default: ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Unknown ACQ_QUEUE_TYPE %d", operation);
    }
}

void CDataStreamModule::StartAcquisition(GenTL::ACQ_START_FLAGS /*flags*/, uint64_t numToAcquire)
{
    std::lock_guard control(m_controlLock);
    {
        std::lock_guard lock(m_lock);
        if (IsClosed())
            ThrowGenTL(GenTL::GC_ERR_INVALID_HANDLE, "Data stream %s is closed", Id().c_str());
        if (m_acquiring)
            ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "The acquisition of %s runs already", Id().c_str());
        if (m_lost)
            ThrowGenTL(GenTL::GC_ERR_IO, "Device %s is lost", m_device->Id().c_str());
        if (numToAcquire == 0)
            ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Acquiring 0 buffers: use GENTL_INFINITE for continuous");
        if (m_buffers.size() < kAnnounceMinimum)
            ThrowGenTL(GenTL::GC_ERR_NOT_AVAILABLE, "Announce at least %zu buffer before the acquisition starts",
                       kAnnounceMinimum);
        m_acquiring = true;
        m_numToAcquire = numToAcquire;
        m_deliveredSinceStart = 0;
    }
    // A thread that ended by itself after its last buffer is joined before a new one starts.
    if (m_streaming)
    {
        m_connection.StopStreaming(false);
        m_streaming = false;
    }
    try
    {
        m_connection.StartStreaming(this);
        m_streaming = true;
    }
    catch (...)
    {
        std::lock_guard lock(m_lock);
        m_acquiring = false;
        throw;
    }
}

void CDataStreamModule::StopStreaming(bool kill)
{
    std::lock_guard control(m_controlLock);
    {
        std::lock_guard lock(m_lock);
        m_acquiring = false;
    }
    m_inputChanged.notify_all();
    if (m_streaming)
    {
        m_connection.StopStreaming(kill);
        m_streaming = false;
    }
}

void CDataStreamModule::StopAcquisition(GenTL::ACQ_STOP_FLAGS flags)
{
    // Stopping a stream that is not (or no longer) acquiring succeeds: a stream that stopped
    // by itself after its last buffer is stopped by its consumer as usual.
    StopStreaming(flags == GenTL::ACQ_STOP_FLAGS_KILL);
}

GenTL::BUFFER_HANDLE CDataStreamModule::BufferId(uint32_t index)
{
    std::lock_guard lock(m_lock);
    if (index >= m_buffers.size())
        ThrowGenTL(GenTL::GC_ERR_INVALID_INDEX, "Buffer index %u is not below the announced count %zu", index,
                   m_buffers.size());
    return m_buffers[index]->Handle();
}

CInfoValue CDataStreamModule::BufferInfo(CBufferModule& buffer, GenTL::BUFFER_INFO_CMD command)
{
    CheckOwnBuffer(buffer);
    std::lock_guard lock(m_lock);
    const BufferFill_t& fill = buffer.m_fill;
    switch (command)
    {
    case GenTL::BUFFER_INFO_BASE: return CInfoValue::Ptr(buffer.data);
    case GenTL::BUFFER_INFO_SIZE: return CInfoValue::SizeT(buffer.size);
    case GenTL::BUFFER_INFO_USER_PTR: return CInfoValue::Ptr(buffer.UserPointer());
    case GenTL::BUFFER_INFO_TIMESTAMP: return CInfoValue::UInt64(fill.timestamp);
    case GenTL::BUFFER_INFO_NEW_DATA: return CInfoValue::Bool8(buffer.m_newData);
    case GenTL::BUFFER_INFO_IS_QUEUED:
        return CInfoValue::Bool8(buffer.m_state == EBufferState_t::Input || buffer.m_state == EBufferState_t::Output);
    case GenTL::BUFFER_INFO_IS_ACQUIRING: return CInfoValue::Bool8(buffer.m_state == EBufferState_t::Filling);
    case GenTL::BUFFER_INFO_IS_INCOMPLETE: return CInfoValue::Bool8(fill.incomplete);
    case GenTL::BUFFER_INFO_TLTYPE: return CInfoValue::String(TLType());
    case GenTL::BUFFER_INFO_SIZE_FILLED: return CInfoValue::SizeT(fill.sizeFilled);
    case GenTL::BUFFER_INFO_WIDTH: return CInfoValue::SizeT(fill.width);
    case GenTL::BUFFER_INFO_HEIGHT: return CInfoValue::SizeT(fill.height);
    case GenTL::BUFFER_INFO_XOFFSET: return CInfoValue::SizeT(fill.xOffset);
    case GenTL::BUFFER_INFO_YOFFSET: return CInfoValue::SizeT(fill.yOffset);
    case GenTL::BUFFER_INFO_XPADDING: return CInfoValue::SizeT(0);
    case GenTL::BUFFER_INFO_YPADDING: return CInfoValue::SizeT(0);
    case GenTL::BUFFER_INFO_FRAMEID: return CInfoValue::UInt64(fill.frameId);
    case GenTL::BUFFER_INFO_IMAGEPRESENT: return CInfoValue::Bool8(fill.imagePresent);
    case GenTL::BUFFER_INFO_IMAGEOFFSET: return CInfoValue::SizeT(fill.imageOffset);
    case GenTL::BUFFER_INFO_PAYLOADTYPE: return CInfoValue::SizeT(fill.payloadType);
    case GenTL::BUFFER_INFO_PIXELFORMAT: return CInfoValue::UInt64(fill.pixelFormat);
    case GenTL::BUFFER_INFO_PIXELFORMAT_NAMESPACE:
        return CInfoValue::UInt64(fill.pixelFormat != 0 ? GenTL::PIXELFORMAT_NAMESPACE_PFNC_32BIT
                                                        : GenTL::PIXELFORMAT_NAMESPACE_UNKNOWN);
    case GenTL::BUFFER_INFO_DELIVERED_IMAGEHEIGHT: return CInfoValue::SizeT(fill.deliveredImageHeight);
    case GenTL::BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE: return CInfoValue::SizeT(fill.chunkPayloadSize);
    case GenTL::BUFFER_INFO_CHUNKLAYOUTID: return CInfoValue::UInt64(fill.chunkLayoutId);
    case GenTL::BUFFER_INFO_FILENAME:
        ThrowGenTL(GenTL::GC_ERR_NOT_AVAILABLE, "The buffer carries no file");
    case GenTL::BUFFER_INFO_PIXEL_ENDIANNESS: return CInfoValue::Int32(GenTL::PIXELENDIANNESS_LITTLE);
    case GenTL::BUFFER_INFO_DATA_SIZE: return CInfoValue::SizeT(fill.dataSize);
    case GenTL::BUFFER_INFO_TIMESTAMP_NS: return CInfoValue::UInt64(fill.timestampNs);
    case GenTL::BUFFER_INFO_DATA_LARGER_THAN_BUFFER: return CInfoValue::Bool8(fill.dataLargerThanBuffer);
    case GenTL::BUFFER_INFO_CONTAINS_CHUNKDATA: return CInfoValue::Bool8(fill.containsChunkData);
    case GenTL::BUFFER_INFO_IS_COMPOSITE: return CInfoValue::Bool8(false);
    default: ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Unknown BUFFER_INFO_CMD %d", command);
    }
}

void CDataStreamModule::BufferChunkData(CBufferModule& buffer, GenTL::SINGLE_CHUNK_DATA* pChunks,
                                        size_t* piNumChunks)
{
    CheckOwnBuffer(buffer);
    if (piNumChunks == nullptr)
        ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "piNumChunks is null");
    std::lock_guard lock(m_lock);
    const BufferFill_t& fill = buffer.m_fill;
    const size_t count = fill.containsChunkData ? fill.numChunks : 0;
    if (pChunks == nullptr)
    {
        *piNumChunks = count;
        return;
    }
    if (*piNumChunks < count)
    {
        *piNumChunks = count;
        ThrowGenTL(GenTL::GC_ERR_BUFFER_TOO_SMALL, "The buffer holds %zu chunks", count);
    }
    std::memcpy(pChunks, fill.chunks, count * sizeof(GenTL::SINGLE_CHUNK_DATA));
    *piNumChunks = count;
}

void CDataStreamModule::OnDeviceLost(const std::string& reason)
{
    RaiseError(GenTL::GC_ERR_IO, "Data stream " + Id() + " of device " + m_device->Id() + " stopped: " + reason);
    {
        std::lock_guard lock(m_lock);
        m_lost = true;
        m_acquiring = false;
    }
    m_inputChanged.notify_all();
}

GenTL::GC_ERROR CDataStreamModule::WaitNewBuffer(void* pBuffer, size_t* piSize, uint64_t timeoutMs)
{
    if (pBuffer == nullptr || piSize == nullptr)
        return GenTL::GC_ERR_INVALID_PARAMETER;
    if (*piSize < sizeof(GenTL::EVENT_NEW_BUFFER_DATA))
    {
        *piSize = sizeof(GenTL::EVENT_NEW_BUFFER_DATA);
        return GenTL::GC_ERR_BUFFER_TOO_SMALL;
    }
    std::unique_lock lock(m_lock);
    if (m_output.empty() && !m_newBufferClosed)
    {
        if (m_killPending)
        {
            m_killPending = false;
            return GenTL::GC_ERR_ABORT;
        }
        const uint64_t generation = m_killGeneration;
        auto ready = [&] {
            return !m_output.empty() || m_newBufferClosed || m_killGeneration != generation;
        };
        ++m_waiters;
        if (timeoutMs >= kWaitForeverMs)
            m_outputChanged.wait(lock, ready);
        else
            m_outputChanged.wait_for(lock, std::chrono::milliseconds(timeoutMs), ready);
        --m_waiters;
        if (m_output.empty() && m_killGeneration != generation)
            return GenTL::GC_ERR_ABORT;
    }
    if (m_output.empty())
    {
        return m_newBufferClosed ? GenTL::GC_ERR_ABORT : GenTL::GC_ERR_TIMEOUT;
    }
    CBufferModule* buffer = m_output.front();
    m_output.pop_front();
    buffer->m_state = EBufferState_t::Announced;
    GenTL::EVENT_NEW_BUFFER_DATA data;
    data.BufferHandle = buffer->Handle();
    data.pUserPointer = buffer->UserPointer();
    std::memcpy(pBuffer, &data, sizeof(data));
    *piSize = sizeof(data);
    return GenTL::GC_ERR_SUCCESS;
}

void CDataStreamModule::KillNewBufferWait()
{
    {
        std::lock_guard lock(m_lock);
        if (m_waiters == 0)
        {
            m_killPending = true;
            return;
        }
        ++m_killGeneration;
    }
    m_outputChanged.notify_all();
}

void CDataStreamModule::CloseNewBufferEvent()
{
    {
        std::lock_guard lock(m_lock);
        m_newBufferClosed = true;
    }
    m_outputChanged.notify_all();
}

void CDataStreamModule::FlushOutputQueue()
{
    FlushQueue(GenTL::ACQ_QUEUE_OUTPUT_DISCARD);
}

size_t CDataStreamModule::OutputQueueSize()
{
    std::lock_guard lock(m_lock);
    return m_output.size();
}

uint64_t CDataStreamModule::NumNewBufferFired()
{
    std::lock_guard lock(m_lock);
    return m_numNewBufferFired;
}

bool CDataStreamModule::SupportsEvent(GenTL::EVENT_TYPE type) const
{
    return type == GenTL::EVENT_NEW_BUFFER || CModule::SupportsEvent(type);
}

std::shared_ptr<CEvent> CDataStreamModule::MakeEvent(GenTL::EVENT_TYPE type)
{
    if (type != GenTL::EVENT_NEW_BUFFER)
        return CModule::MakeEvent(type);
    {
        std::lock_guard lock(m_lock);
        m_newBufferClosed = false;
        m_killPending = false;
    }
    return std::make_shared<CNewBufferEvent>(SharedAs<CDataStreamModule>());
}

StreamBuffer_t* CDataStreamModule::TakeInputBuffer()
{
    std::lock_guard lock(m_lock);
    if (!m_acquiring)
        return nullptr;
    if (m_input.empty())
    {
        ++m_numUnderrun;
        return nullptr;
    }
    CBufferModule* buffer = m_input.front();
    m_input.pop_front();
    buffer->m_state = EBufferState_t::Filling;
    ++m_numStarted;
    return buffer;
}

bool CDataStreamModule::DeliverBuffer(StreamBuffer_t* memory, const BufferFill_t& fill)
{
    CBufferModule* buffer = static_cast<CBufferModule*>(memory);
    bool more;
    {
        std::lock_guard lock(m_lock);
        if (m_lost)
        {
            // The frame was cut off by the loss: nothing reaches the host, the buffer stays queued.
            buffer->m_state = EBufferState_t::Input;
            m_input.push_front(buffer);
            return false;
        }
        buffer->m_fill = fill;
        buffer->m_newData = true;
        buffer->m_state = EBufferState_t::Output;
        m_output.push_back(buffer);
        ++m_numNewBufferFired;
        ++m_deliveredSinceStart;
        if (fill.incomplete)
            ++m_numIncomplete;
        if (m_numToAcquire != GENTL_INFINITE && m_deliveredSinceStart >= m_numToAcquire)
            m_acquiring = false;
        more = m_acquiring;
    }
    m_outputChanged.notify_all();
    return more;
}

void CDataStreamModule::ReturnBuffer(StreamBuffer_t* memory)
{
    CBufferModule* buffer = static_cast<CBufferModule*>(memory);
    std::lock_guard lock(m_lock);
    buffer->m_state = EBufferState_t::Input;
    m_input.push_front(buffer);
}

void CDataStreamModule::CountDroppedFrame()
{
    std::lock_guard lock(m_lock);
    ++m_numDropped;
}

void CDataStreamModule::WaitForInputBuffer(std::chrono::milliseconds timeout)
{
    std::unique_lock lock(m_lock);
    m_inputChanged.wait_for(lock, timeout, [this] { return !m_input.empty() || !m_acquiring; });
}

void CDataStreamModule::CloseChildren()
{
    StopStreaming(true);
    std::vector<std::shared_ptr<CBufferModule>> buffers;
    {
        std::lock_guard lock(m_lock);
        buffers.swap(m_buffers);
        m_input.clear();
        m_output.clear();
    }
    for (const auto& buffer : buffers)
        buffer->Close();
}

void CDataStreamModule::Close()
{
    if (IsClosed())
        return;
    CModule::Close();
    m_device->ForgetDataStream(this);
}

} // namespace QvGenTL
