#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <shared_mutex>
#include <vector>

#include <Base/GCSynch.h>
#include <GenTL/GenTL.h>
#include <QvApi/BPS.h>
#include <QvApi/EventObject.h>
#include <QvApi/FPS.h>
#include <QvApi/QvDataStream.h>

#include "QvApi_TL/QvDataStreamInfo.h"
#include "QvApi_TL/QvDataStreamInside.h"
#include "QvApi_TL/QvModule.h"

namespace GenApi
{
struct IBoolean;
}

namespace QvApi
{
class CQvEventNewBuffer;
class CQvStreamBuffer;
class IQvAllocator;
class IQvDeviceInside;
class IQvPortInside;

/**
 * \brief One open GenTL data stream: its announced buffers, acquisition start and stop, the
 *        queue of filled buffers fed by the new-buffer listener, retrieval with time-outs, the
 *        new-buffer callbacks and the frame and byte rates.
 *
 * Made by CQvDevice::CreateIQvDataStream() (through CreateQvDataStream()), owned by the
 * application, deleted by Release(). Threads: StartAcquisition(), StopAcquisition(),
 * SetStreamBufferCount() and Release() from one controlling thread at a time; RetrieveBuffer()
 * and QueueBuffer() (a buffer's Release()) from any thread; OnNewBuffer() and the callbacks on
 * the new-buffer listener's thread.
 *
 * Lock order: m_listenerMutex (shared, held across a blocking wait) before the wait's event
 * mutexes; m_queueLock before the filled event's mutex. The callback manager's lock is taken
 * alone, on the listener thread, with no other lock of the stream held.
 */
class QVAPI_API CQvDataStream final
    : public CQvModule<IQvDataStreamInside, IQvDataStream, IQvCallbackParamGenTLEventErrorDS>
{
public:
    /**
     * \param[in] pCQvGenTL        Producer binding; borrowed.
     * \param[in] pIQvDeviceInside The device that opened the stream; borrowed, outlives it.
     * \param[in] hDataStream      The handle DevOpenDataStream gave; closed by the destructor.
     * \param[in] pAllocator       Application memory for the buffers (borrowed, outlives the
     *                             stream), or null for the producer's.
     * \throws As CQvEvent for the error listener; BadAllocException.
     */
    CQvDataStream(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* pIQvDeviceInside, GenTL::DS_HANDLE hDataStream,
                  IQvAllocator* pAllocator);

    // IQvDataStream
    IQvDevice* GetIQvDevice() override;
    IQvPort* GetIQvPort() override;
    IQvDataStreamInfo* GetIQvDataStreamInfo() const override;
    size_t GetStreamBufferCount() const override { return m_bufferCount; }
    void SetStreamBufferCount(size_t nCount) override;
    IQvStreamBufferReleasable* RetrieveBuffer(uint32_t timeoutMs, EQvTimeoutHandling_t handling) override;
    void StartAcquisition(uint64_t count, GenTL::ACQ_START_FLAGS flags) override;
    void StopAcquisition(GenTL::ACQ_STOP_FLAGS flags) override;
    bool IsGrabbing() override;
    double GetCurrentFPS() const override { return m_fps.GetFPS(); }
    double GetCurrentBPS() const override { return m_bps.GetBPS(); }
    // IQvDataStreamInside
    IQvDeviceInside* GetIQvDeviceInside() override { return m_pIQvDeviceInside; }
    GenTL::DS_HANDLE GetDataStreamHandle() override { return m_hDataStream; }
    void OnNewBuffer(IQvStreamBufferInside* pIQvStreamBufferInside) override;
    IQvStreamBuffer* RegisterStreamBuffer(void* pBuffer, size_t size, void* pContext, size_t index) override;
    void DeregisterStreamBuffer(IQvStreamBuffer* pBuffer) override;
    void QueueBuffer(IQvStreamBuffer* pBuffer) override;
    void* GetIsFilledStreamBufferEventHandle() override;
    /// Stops the stream, revokes its buffers, closes it and deletes this object.
    void Release() override;

    /// \return Buffers received since the last start (tests, diagnostics).
    uint64_t GetDeliveredCount() const { return m_deliveredCount.load(std::memory_order_relaxed); }
    /// \return Number of announced buffers.
    size_t GetAnnouncedBufferCount() const { return m_buffers.size(); }
    /// \return The new-buffer listener while acquiring, else null (tests).
    CQvEventNewBuffer* GetNewBufferEvent() const { return m_pEventNewBuffer.get(); }

private:
    ~CQvDataStream() override;

    void AllocateBuffers();
    void DeallocateBuffers();
    void PrepareChunkDecode();
    void FlushQueue(GenTL::ACQ_QUEUE_TYPE mode);
    /// Takes the oldest filled buffer (null when the queue is empty); resets the filled event
    /// when it empties. Takes m_queueLock.
    IQvStreamBufferInside* PopFilled();
    /// Attaches or detaches the chunk data of a retrieved buffer.
    void PrepareChunkData(IQvStreamBufferInside* pBuffer);
    /// Throws the listener's EventGetData failure, or returns when it is no longer signaled.
    /// Needs m_listenerMutex held (shared).
    void ThrowListenerErrorLocked(CQvEventNewBuffer* pListener);
    /// Teardown of the inside objects (destructor only).
    void DeleteInsideObjects() noexcept;

    IQvDeviceInside* const m_pIQvDeviceInside; // borrowed: the device outlives its streams
    IQvPortInside* m_pRemotePort = nullptr;     // the camera port of the device; borrowed likewise
    GenTL::DS_HANDLE m_hDataStream;             // the producer's; null once DSClose has run
    IQvAllocator* const m_pAllocator;           // borrowed application allocator, or null
    CQvDataStreamInfo m_info;
    size_t m_bufferCount = 6;                           // buffers the next start announces
    std::vector<std::unique_ptr<CQvStreamBuffer>> m_buffers; // announced, in announce order
    GenApi::IBoolean* m_pChunkModeActive = nullptr;     // camera node, looked up once
    bool m_bChunkModeLookedUp = false;

    // Rates, fed on the listener thread (each counter locks itself).
    CFPS m_fps;
    CBPS m_bps;
    std::atomic<bool> m_bUseDataSize{true}; // cleared once BUFFER_INFO_DATA_SIZE fails
    std::atomic<uint64_t> m_deliveredCount{0};

    GenICam::CLock m_queueLock;
    // Guarded by m_queueLock: the filled queue, a ring as large as the announced buffers (it
    // never holds more), so delivering a buffer allocates nothing.
    std::vector<IQvStreamBufferInside*> m_filledRing;
    size_t m_filledHead = 0;
    size_t m_filledCount = 0;
    CEventObject m_filledEvent; // manual reset; set while m_filledCount != 0 (changed under m_queueLock)

    CEventObject m_stoppedEvent; // manual reset; set while not acquiring (from construction on)
    CEventObject m_neverEvent;   // never set: stands in for a missing listener or device-lost event

    // The listener is replaced by the controlling thread under the exclusive lock; waits hold it
    // shared while they use the listener's error event, so the event is never destroyed under them.
    std::shared_mutex m_listenerMutex;
    std::unique_ptr<CQvEventNewBuffer> m_pEventNewBuffer; // null while not acquiring
};
} // namespace QvApi
