#include "QvApi_TL/QvDataStream.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <new>
#include <utility>

#include <GenApi/IBoolean.h>
#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <QvApi/QvAllocator.h>
#include <QvApi/QvImage.h>

#include "QvApi_TL/QvCallbackParamNewBuffer.h"
#include "QvApi_TL/QvDeviceInside.h"
#include "QvApi_TL/QvEventNewBuffer.h"
#include "QvApi_TL/QvPortInside.h"
#include "QvApi_TL/QvStreamBuffer.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// Wait results of RetrieveBuffer's four handles.
constexpr unsigned int kWaitFilled = kWaitObject0 + 0;
constexpr unsigned int kWaitStopped = kWaitObject0 + 1;
constexpr unsigned int kWaitListenerError = kWaitObject0 + 2;
constexpr unsigned int kWaitDeviceLost = kWaitObject0 + 3;

constexpr size_t kMaxStreamBufferCount = 0xFFFF;
} // namespace

CQvDataStream::CQvDataStream(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* pIQvDeviceInside, GenTL::DS_HANDLE hDataStream,
                             IQvAllocator* pAllocator)
try : CQvModule(pCQvGenTL), m_pIQvDeviceInside(pIQvDeviceInside), m_hDataStream(hDataStream),
      m_pAllocator(pAllocator), m_info(pCQvGenTL, hDataStream, pIQvDeviceInside),
      m_filledEvent(nullptr, true, false, nullptr), m_stoppedEvent(nullptr, true, true, nullptr),
      m_neverEvent(nullptr, true, false, nullptr)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    QV_ASSERT(m_pIQvDeviceInside != nullptr, "m_pIQvDeviceInside != NULL");
    m_pRemotePort = dynamic_cast<IQvPortInside*>(m_pIQvDeviceInside->GetRemoteIQvPort());
    CreatePort(m_hDataStream, GenApi::RW,
               GenICam::gcstring("DataStream_0_") + m_pIQvDeviceInside->GetIQvDeviceInfo()->GetID());
    CreateEventError(m_hDataStream, this, QvCallbackTypeGenTLEventErrorDS, "QvApi_TL_EventError_DS", __FILE__);
}
QV_CATCH_BAD_ALLOC()

CQvDataStream::~CQvDataStream()
{
    bool tearDown = true;
    try
    {
        StopAcquisition(GenTL::ACQ_STOP_FLAGS_DEFAULT);
        DeallocateBuffers();
    }
    catch (...)
    {
        tearDown = false;
    }
    if (tearDown && m_pAllocator != nullptr)
    {
        try
        {
            m_pAllocator->OnDeregister();
        }
        catch (...)
        {
            tearDown = false;
        }
    }
    if (tearDown)
    {
        DeleteInsideObjects();
        return;
    }
    // After a failed stop or revoke the producer may still own the buffers and the handle: they
    // are left alone (not revoked, not freed, not closed). Only the listener threads must end,
    // since they would call into this object.
    try
    {
        StopEventAcquisitionThread();
    }
    catch (...)
    {
    }
    std::unique_ptr<CQvEventNewBuffer> pListener;
    {
        std::unique_lock<std::shared_mutex> lock(m_listenerMutex);
        pListener = std::move(m_pEventNewBuffer);
    }
    pListener.reset();
    for (std::unique_ptr<CQvStreamBuffer>& pBuffer : m_buffers)
    {
        pBuffer->StopEventAcquisitionThread();
        (void)pBuffer.release(); // deliberately left to the producer
    }
    (void)m_pCQvEventError.release();
    (void)m_pCQvPort.release();
}

void CQvDataStream::DeleteInsideObjects() noexcept
{
    try
    {
        StopEventAcquisitionThread();
    }
    catch (...)
    {
    }
    if (m_hDataStream == nullptr)
        return;
    DeleteEventError();
    std::unique_ptr<CQvEventNewBuffer> pListener;
    {
        std::unique_lock<std::shared_mutex> lock(m_listenerMutex);
        pListener = std::move(m_pEventNewBuffer);
    }
    pListener.reset();
    try
    {
        FlushQueue(GenTL::ACQ_QUEUE_ALL_DISCARD);
    }
    catch (...)
    {
    }
    {
        GenICam::AutoLock lock(m_queueLock);
        m_filledCount = 0;
        m_filledEvent.ResetEvent();
    }
    for (std::unique_ptr<CQvStreamBuffer>& pBuffer : m_buffers)
    {
        try
        {
            pBuffer->RevokeBuffer();
        }
        catch (...)
        {
        }
        pBuffer.reset();
    }
    m_buffers.clear();
    DeletePort();
    // A missing DSClose is skipped and its failure not reported, unlike TLClose and IFClose.
    if (m_pCQvGenTL->DSClose != nullptr)
        m_pCQvGenTL->DSClose(m_hDataStream);
    m_hDataStream = nullptr;
}

void CQvDataStream::Release()
{
    delete this;
}

// ---- Information --------------------------------------------------------------------------------

IQvDevice* CQvDataStream::GetIQvDevice()
{
    return m_pIQvDeviceInside;
}

IQvPort* CQvDataStream::GetIQvPort()
{
    return m_pCQvPort.get();
}

IQvDataStreamInfo* CQvDataStream::GetIQvDataStreamInfo() const
{
    return const_cast<CQvDataStreamInfo*>(&m_info);
}

void* CQvDataStream::GetIsFilledStreamBufferEventHandle()
{
    return m_filledEvent.IsClosing() ? nullptr : static_cast<void*>(&m_filledEvent);
}

void CQvDataStream::SetStreamBufferCount(size_t nCount)
{
    const size_t min = m_info.GetBufAnnounceMin();
    QV_CHECK_MIN("nCount", nCount, min);
    QV_CHECK_MAX("nCount", nCount, kMaxStreamBufferCount);
    m_bufferCount = nCount;
}

bool CQvDataStream::IsGrabbing()
{
    if (m_info.IsGrabbing())
        return true;
    // A stream the producer stopped still counts while delivered buffers wait to be retrieved.
    GenICam::AutoLock lock(m_queueLock);
    return m_info.GetNumAwaitDelivery() + m_filledCount != 0;
}

// ---- Buffers ------------------------------------------------------------------------------------

IQvStreamBuffer* CQvDataStream::RegisterStreamBuffer(void* pBuffer, size_t size, void* pContext, size_t index)
{
    try
    {
        auto pStreamBuffer = std::make_unique<CQvStreamBuffer>(m_pCQvGenTL, this, pBuffer, size, pContext, index);
        m_buffers.push_back(std::move(pStreamBuffer));
        return m_buffers.back().get();
    }
    QV_CATCH_BAD_ALLOC()
}

void CQvDataStream::DeregisterStreamBuffer(IQvStreamBuffer* pBuffer)
{
    auto it = std::find_if(m_buffers.begin(), m_buffers.end(), [&](const std::unique_ptr<CQvStreamBuffer>& p) {
        return static_cast<IQvStreamBuffer*>(p.get()) == pBuffer;
    });
    QV_ASSERT(it != m_buffers.end(), "pBuffer is announced on this stream");
    (*it)->RevokeBuffer(); // a failure leaves it announced and listed
    m_buffers.erase(it);
}

void CQvDataStream::QueueBuffer(IQvStreamBuffer* pBuffer)
{
    IQvStreamBufferInside* pIQvStreamBufferInside = dynamic_cast<IQvStreamBufferInside*>(pBuffer);
    QV_ASSERT(pIQvStreamBufferInside != nullptr, "(pIQvStreamBufferInside) != NULL");
    const GenTL::BUFFER_HANDLE hBuffer = pIQvStreamBufferInside->GetBufferHandle();
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DSQueueBuffer, m_hDataStream, hBuffer);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "DSQueueBuffer", "%d = DSQueueBuffer(0x%p, 0x%p)", err, m_hDataStream, hBuffer);
}

void CQvDataStream::FlushQueue(GenTL::ACQ_QUEUE_TYPE mode)
{
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DSFlushQueue, m_hDataStream, mode);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "DSFlushQueue", "%d = DSFlushQueue(0x%p, %d)", err, m_hDataStream, mode);
}

void CQvDataStream::AllocateBuffers()
{
    const size_t size = m_info.GetPayloadSize();
    {
        GenICam::AutoLock lock(m_queueLock);
        m_filledEvent.ResetEvent();
        m_filledCount = 0;
        m_filledHead = 0;
    }
    if (!m_buffers.empty())
    {
        bool keep = m_bufferCount >= m_buffers.size();
        for (const std::unique_ptr<CQvStreamBuffer>& pBuffer : m_buffers)
            keep = keep && pBuffer->Info().GetBufferSize() >= size;
        if (!keep)
            DeallocateBuffers();
    }
    {
        // The filled queue never holds more than the announced buffers: size it once here.
        GenICam::AutoLock lock(m_queueLock);
        try
        {
            m_filledRing.assign(std::max(m_bufferCount, m_buffers.size()), nullptr);
        }
        QV_CATCH_BAD_ALLOC()
    }
    while (m_buffers.size() < m_bufferCount)
    {
        void* pBuffer = nullptr;
        void* pContext = nullptr;
        if (m_pAllocator != nullptr)
        {
            m_pAllocator->Allocate(&pBuffer, size, &pContext);
            if (pBuffer == nullptr)
                QV_THROW(BadAllocException, "The allocator provided no memory for a stream buffer of %zu bytes.", size);
        }
        IQvStreamBuffer* pStreamBuffer = nullptr;
        try
        {
            pStreamBuffer = RegisterStreamBuffer(pBuffer, size, pContext, m_buffers.size());
        }
        catch (...)
        {
            if (m_pAllocator != nullptr)
                m_pAllocator->Deallocate(pBuffer, size, pContext);
            throw;
        }
        QueueBuffer(pStreamBuffer);
    }
}

void CQvDataStream::DeallocateBuffers()
{
    // The camera's node map must not keep pointing into memory that goes now.
    if (m_pRemotePort != nullptr)
        m_pRemotePort->DetachChunkBuffer();
    FlushQueue(GenTL::ACQ_QUEUE_ALL_DISCARD);
    {
        GenICam::AutoLock lock(m_queueLock);
        m_filledCount = 0;
        m_filledHead = 0;
        m_filledEvent.ResetEvent();
    }
    while (!m_buffers.empty())
    {
        CQvStreamBuffer* pBuffer = m_buffers.front().get();
        void* pBase = pBuffer->Info().GetBaseAddress();
        const size_t size = pBuffer->Info().GetBufferSize();
        void* pContext = pBuffer->Info().GetUserPtr();
        DeregisterStreamBuffer(pBuffer);
        if (m_pAllocator != nullptr)
            m_pAllocator->Deallocate(pBase, size, pContext);
    }
}

void CQvDataStream::PrepareChunkDecode()
{
    if (!m_bChunkModeLookedUp)
    {
        GenApi::INodeMap* pNodeMap = nullptr;
        try
        {
            pNodeMap = m_pRemotePort != nullptr ? m_pRemotePort->GetINodeMap() : nullptr;
        }
        catch (const GenICam::GenericException&)
        {
            return; // no camera description: no chunks to decode
        }
        if (pNodeMap != nullptr)
            m_pChunkModeActive = dynamic_cast<GenApi::IBoolean*>(pNodeMap->GetNode("ChunkModeActive"));
        m_bChunkModeLookedUp = true;
    }
    if (m_pChunkModeActive == nullptr || !GenApi::IsReadable(m_pChunkModeActive) || !m_pChunkModeActive->GetValue())
        return;
    for (const std::unique_ptr<CQvStreamBuffer>& pBuffer : m_buffers)
        pBuffer->PrepareChunkDecode();
}

// ---- Acquisition --------------------------------------------------------------------------------

void CQvDataStream::StartAcquisition(uint64_t count, GenTL::ACQ_START_FLAGS flags)
{
    if (m_pIQvDeviceInside->IsDeviceLost())
        QV_THROW(AccessException, "The device is lost.");
    if (m_pEventNewBuffer == nullptr)
    {
        std::unique_ptr<CQvEventNewBuffer> pListener;
        try
        {
            pListener = std::make_unique<CQvEventNewBuffer>(m_pCQvGenTL, m_hDataStream, "QvApi_TL_EventNewBuffer");
        }
        QV_CATCH_BAD_ALLOC()
        std::unique_lock<std::shared_mutex> lock(m_listenerMutex);
        m_pEventNewBuffer = std::move(pListener);
    }
    try
    {
        AllocateBuffers();
        PrepareChunkDecode();
        m_fps.Reset();
        m_bps.Reset();
        // The thread starts only now: a record of the previous run still queued in the producer
        // must not reach OnNewBuffer while AllocateBuffers revokes and deletes buffers.
        m_pEventNewBuffer->Start();
        const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DSStartAcquisition, m_hDataStream, flags, count);
        if (err == GenTL::GC_ERR_SUCCESS)
        {
            m_deliveredCount.store(0, std::memory_order_relaxed);
            m_stoppedEvent.ResetEvent();
            return;
        }
        QV_THROW_GENTL(m_pCQvGenTL, err, "DSStartAcquisition", "%d = DSStartAcquisition(0x%p, %d, %I64d)", err,
                       m_hDataStream, flags, static_cast<int>(count));
    }
    catch (const GenICam::GenericException&)
    {
        std::unique_ptr<CQvEventNewBuffer> pListener;
        {
            std::unique_lock<std::shared_mutex> lock(m_listenerMutex);
            pListener = std::move(m_pEventNewBuffer);
        }
        pListener.reset(); // stops and unregisters itself
        try
        {
            DeallocateBuffers();
        }
        catch (...)
        {
            // The first failure is the one to report.
        }
        throw;
    }
}

void CQvDataStream::StopAcquisition(GenTL::ACQ_STOP_FLAGS flags)
{
    if (m_pEventNewBuffer == nullptr)
        return;
    m_stoppedEvent.SetEvent(); // waiting RetrieveBuffer calls return null now
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DSStopAcquisition, m_hDataStream, flags);
    std::unique_ptr<CQvEventNewBuffer> pListener;
    {
        // Waits hold the lock shared and are woken by the stopped event, so this is quick. The
        // listener is joined outside the lock: its callbacks may be in RetrieveBuffer().
        std::unique_lock<std::shared_mutex> lock(m_listenerMutex);
        pListener = std::move(m_pEventNewBuffer);
    }
    pListener.reset();
    QV_CHECK_GENTL(m_pCQvGenTL, err, "DSStopAcquisition", "%d = DSStopAcquisition(0x%p, %d)", err, m_hDataStream,
                   flags);
}

void CQvDataStream::OnNewBuffer(IQvStreamBufferInside* pIQvStreamBufferInside)
{
    m_deliveredCount.fetch_add(1, std::memory_order_relaxed);
    // Only this stream announces buffers with itself as their stream.
    CQvStreamBuffer* pBuffer = static_cast<CQvStreamBuffer*>(pIQvStreamBufferInside);
    CQvStreamBufferInfo& info = pBuffer->Info();
    const bool incomplete = info.IsIncomplete();
    pBuffer->OnFilled(incomplete); // RetrieveBuffer() needs it too: ask the producer once
    if (!incomplete)
        m_fps.Rcv();

    size_t bytes = 0;
    bool counted = false;
    if (m_bUseDataSize.load(std::memory_order_relaxed))
    {
        try
        {
            bytes = info.GetDataSize();
            counted = true;
        }
        catch (const GenICam::GenericException&)
        {
            m_bUseDataSize.store(false, std::memory_order_relaxed); // an older producer: never ask again
        }
    }
    if (!counted)
    {
        if (!info.IsImagePresent())
            QV_THROW(RuntimeException, "There is no available image.");
        IQvImage* pImage = pBuffer->GetIQvImage();
        bytes = pImage->GetImageHeight() * pImage->GetImageLinePitch();
    }
    m_bps.Rcv(static_cast<unsigned long>(bytes));

    bool appended = false;
    {
        GenICam::AutoLock lock(m_queueLock);
        if (QV_UNLIKELY(m_filledCount == m_filledRing.size()))
        {
            // Never expected (the ring is as large as the announced buffers): grow it.
            try
            {
                std::vector<IQvStreamBufferInside*> ring(m_filledRing.size() * 2 + 1, nullptr);
                for (size_t i = 0; i < m_filledCount; ++i)
                    ring[i] = m_filledRing[(m_filledHead + i) % m_filledRing.size()];
                m_filledRing.swap(ring);
                m_filledHead = 0;
            }
            catch (const std::bad_alloc&)
            {
            }
        }
        if (m_filledCount < m_filledRing.size())
        {
            m_filledRing[(m_filledHead + m_filledCount) % m_filledRing.size()] = pIQvStreamBufferInside;
            ++m_filledCount;
            m_filledEvent.SetEvent();
            appended = true;
        }
    }
    if (QV_UNLIKELY(!appended))
    {
        QueueBuffer(pBuffer); // not lost: the producer fills it again
        QV_THROW(BadAllocException, "%s", "std::bad_alloc");
    }

    CQvCallbackParamNewBuffer param(this);
    m_callbackManager.RunCallback(&param);
}

IQvStreamBufferInside* CQvDataStream::PopFilled()
{
    GenICam::AutoLock lock(m_queueLock);
    if (m_filledCount == 0)
        return nullptr;
    IQvStreamBufferInside* pBuffer = m_filledRing[m_filledHead];
    m_filledHead = m_filledHead + 1 == m_filledRing.size() ? 0 : m_filledHead + 1;
    if (--m_filledCount == 0)
        m_filledEvent.ResetEvent();
    return pBuffer;
}

void CQvDataStream::PrepareChunkData(IQvStreamBufferInside* pIQvStreamBufferInside)
{
    CQvStreamBuffer* pBuffer = static_cast<CQvStreamBuffer*>(pIQvStreamBufferInside);
    CQvStreamBufferInfo& info = pBuffer->Info();
    if (pBuffer->IsFillIncomplete())
        return;
    bool hasChunks = false;
    try
    {
        const size_t payloadType = info.GetPayloadType();
        hasChunks = payloadType == GenTL::PAYLOAD_TYPE_CHUNK_DATA || payloadType == GenTL::PAYLOAD_TYPE_CHUNK_ONLY;
    }
    catch (const GenICam::GenericException&)
    {
    }
    if (!hasChunks)
    {
        try
        {
            hasChunks = info.HasChunkData();
        }
        catch (const GenICam::GenericException&)
        {
            // A producer older than GenTL 1.4 cannot tell: take it as no chunks.
        }
    }
    if (hasChunks)
    {
        if (m_pRemotePort != nullptr)
            m_pRemotePort->AttachChunkBuffer(static_cast<uint8_t*>(info.GetBaseAddress()),
                                             static_cast<int64_t>(info.GetDeliverdChunkPayloadSize()));
        pBuffer->AttachChunkBuffer();
    }
    else
    {
        if (m_pRemotePort != nullptr)
            m_pRemotePort->DetachChunkBuffer();
        pBuffer->DetachChunkBuffer();
    }
}

void CQvDataStream::ThrowListenerErrorLocked(CQvEventNewBuffer* pListener)
{
    CEventObject* pErrorEvent = pListener != nullptr ? pListener->GetErrorEvent() : nullptr;
    if (pErrorEvent == nullptr || WaitForSingleObject(pErrorEvent, 0) != kWaitObject0)
        return;
    GenTL::GC_ERROR err = GenTL::GC_ERR_SUCCESS;
    {
        GenICam::AutoLock lock(pListener->GetLock());
        pErrorEvent->ResetEvent();
        err = pListener->GetLastGenTLError();
    }
    // The missing comma after the event handle belongs to the message.
    QV_THROW_GENTL(m_pCQvGenTL, err, "EventGetData", "%d = EventGetData(0x%p 0x%p, %I64u, %I64u)", err,
                   pListener->GetEventHandle(), pListener->GetReceiveBuffer(),
                   static_cast<unsigned>(pListener->GetBufferSize()), static_cast<unsigned>(pListener->GetTimeoutMs()));
}

IQvStreamBufferReleasable* CQvDataStream::RetrieveBuffer(uint32_t timeoutMs, EQvTimeoutHandling_t handling)
{
    using Clock = std::chrono::steady_clock;
    // The filled event is the first handle of the wait, so a buffer waiting now is what the wait
    // would return: take it without building the wait.
    IQvStreamBufferInside* pBuffer = nullptr;
    if (WaitForSingleObject(&m_filledEvent, 0) == kWaitObject0)
        pBuffer = PopFilled();

    Clock::time_point deadline{};
    bool haveDeadline = false;
    uint32_t remainingMs = timeoutMs;
    while (pBuffer == nullptr)
    {
        unsigned int result = kWaitFailed;
        {
            std::shared_lock<std::shared_mutex> lock(m_listenerMutex);
            CQvEventNewBuffer* pListener = m_pEventNewBuffer.get();
            CEventObject* pListenerError = pListener != nullptr ? pListener->GetErrorEvent() : nullptr;
            void* pDeviceLost = m_pIQvDeviceInside->GetDeviceLostEventHandle();
            // A missing listener or device-lost event is replaced by one that is never set: a
            // null handle would fail the whole wait, and a stopped stream must answer null.
            void* handles[4] = {
                m_filledEvent.IsClosing() ? nullptr : &m_filledEvent,
                m_stoppedEvent.IsClosing() ? nullptr : &m_stoppedEvent,
                pListenerError != nullptr ? static_cast<void*>(pListenerError) : &m_neverEvent,
                pDeviceLost != nullptr ? pDeviceLost : &m_neverEvent,
            };
            result = WaitForMultipleObjects(4, handles, false, remainingMs);
            if (result == kWaitListenerError)
            {
                ThrowListenerErrorLocked(pListener);
                return nullptr; // the error was taken by another caller meanwhile
            }
        }
        switch (result)
        {
        case kWaitFilled:
            pBuffer = PopFilled();
            if (pBuffer == nullptr && remainingMs != kWaitInfinite)
            {
                // Another thread took it: wait again for what is left of the time-out.
                const Clock::time_point now = Clock::now();
                if (!haveDeadline)
                {
                    deadline = now + std::chrono::milliseconds(timeoutMs);
                    haveDeadline = true;
                }
                remainingMs = now >= deadline ? 0
                                              : static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                                                          deadline - now)
                                                                          .count());
            }
            break;
        case kWaitStopped:
            return nullptr;
        case kWaitDeviceLost:
            QV_THROW(AccessException, "The device is lost.");
        default:
            if (handling == QvTimeoutHandling_Throw)
                QV_THROW(TimeoutException,
                         "A timeout occurred during the processing of IQvDataStream::RetrieveBuffer(%u, %u)", timeoutMs,
                         static_cast<unsigned>(handling));
            return nullptr;
        }
    }

    try
    {
        PrepareChunkData(pBuffer);
    }
    catch (...)
    {
        // The application will not get this buffer: give it back to the producer.
        try
        {
            QueueBuffer(pBuffer);
        }
        catch (...)
        {
        }
        throw;
    }
    return pBuffer;
}
} // namespace QvApi
