#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "modules/BufferModule.h"
#include "modules/Module.h"
#include "transport/Transport.h"

namespace QvGenTL {

class CDeviceModule;

/**
 * A GenTL data stream module (DevOpenDataStream): the announced buffers, the input pool and
 * the output queue, the new-buffer event (whose entries are the output queue), acquisition
 * start and stop, and the frame counts.
 *
 * Threads: any consumer thread, plus the transport's acquisition thread through IStreamSink.
 * Locks: m_controlLock serialises start and stop (it is held while the transport thread is
 * joined); m_lock guards buffers, queues and counters and is never held while calling the
 * transport. Order: m_controlLock, then m_lock.
 */
class CDataStreamModule : public CModule, public IStreamSink
{
public:
    CDataStreamModule(std::shared_ptr<CDeviceModule> device, const std::string& streamId);
    ~CDataStreamModule() override;

    const std::shared_ptr<CDeviceModule>& Device() const { return m_device; }

    CInfoValue Info(GenTL::STREAM_INFO_CMD command);

    std::shared_ptr<CBufferModule> AnnounceBuffer(void* memory, size_t size, void* pPrivate);
    void RevokeBuffer(const std::shared_ptr<CBufferModule>& buffer, void** ppMemory, void** ppPrivate);
    void QueueBuffer(const std::shared_ptr<CBufferModule>& buffer);
    void FlushQueue(GenTL::ACQ_QUEUE_TYPE operation);
    void StartAcquisition(GenTL::ACQ_START_FLAGS flags, uint64_t numToAcquire);
    void StopAcquisition(GenTL::ACQ_STOP_FLAGS flags);
    GenTL::BUFFER_HANDLE BufferId(uint32_t index);
    /// Throws GC_ERR_INVALID_HANDLE unless the buffer belongs to this stream.
    void CheckOwnBuffer(const CBufferModule& buffer) const;
    CInfoValue BufferInfo(CBufferModule& buffer, GenTL::BUFFER_INFO_CMD command);
    /// DSGetBufferChunkData (two-phase on *piNumChunks).
    void BufferChunkData(CBufferModule& buffer, GenTL::SINGLE_CHUNK_DATA* pChunks, size_t* piNumChunks);
    /// A value of the buffer's last fill, read under the stream's lock (for the buffer's port).
    template <class F>
    auto ReadFill(CBufferModule& buffer, F read)
    {
        std::lock_guard lock(m_lock);
        return read(buffer);
    }

    /// The device was lost: stop and raise an error. Buffers filled before the loss are still
    /// delivered; after them the new-buffer event only times out, as no frame comes any more.
    void OnDeviceLost(const std::string& reason);

    // The new-buffer event (CNewBufferEvent forwards here).
    GenTL::GC_ERROR WaitNewBuffer(void* pBuffer, size_t* piSize, uint64_t timeoutMs);
    void KillNewBufferWait();
    void CloseNewBufferEvent();
    void FlushOutputQueue();
    size_t OutputQueueSize();
    uint64_t NumNewBufferFired();

    // IStreamSink (transport thread)
    StreamBuffer_t* TakeInputBuffer() override;
    bool DeliverBuffer(StreamBuffer_t* buffer, const BufferFill_t& fill) override;
    void ReturnBuffer(StreamBuffer_t* buffer) override;
    void CountDroppedFrame() override;
    void WaitForInputBuffer(std::chrono::milliseconds timeout) override;

    void Close() override;

protected:
    const char* ModuleName() const override { return "TLDataStream"; }
    const char* PortName() const override { return "DataStreamPort"; }
    bool SupportsEvent(GenTL::EVENT_TYPE type) const override;
    std::shared_ptr<CEvent> MakeEvent(GenTL::EVENT_TYPE type) override;
    void CloseChildren() override;

private:
    void RemoveFromQueuesLocked(CBufferModule* buffer);
    void StopStreaming(bool kill);

    const std::shared_ptr<CDeviceModule> m_device; // kept alive while the stream lives
    IDeviceConnection& m_connection;               // the device's, valid while m_device lives

    std::mutex m_controlLock;
    // Guarded by m_controlLock.
    bool m_streaming = false; // the transport's thread was started and not yet joined

    mutable std::mutex m_lock;
    std::condition_variable m_outputChanged; // a buffer entered the output queue, or waits must end
    std::condition_variable m_inputChanged;  // a buffer entered the input pool, or the stream stopped
    // Guarded by m_lock.
    std::vector<std::shared_ptr<CBufferModule>> m_buffers; // in announce order (DSGetBufferID)
    std::deque<CBufferModule*> m_input;
    std::deque<CBufferModule*> m_output;
    bool m_acquiring = false;
    uint64_t m_numToAcquire = 0;
    uint64_t m_deliveredSinceStart = 0;
    uint64_t m_numStarted = 0;
    uint64_t m_numUnderrun = 0;
    uint64_t m_numDropped = 0;
    uint64_t m_numIncomplete = 0;
    uint64_t m_numNewBufferFired = 0;
    uint64_t m_nextBufferNumber = 0;
    bool m_lost = false; // set once the device is lost; a start then fails
    // New-buffer event waits.
    bool m_newBufferClosed = false;
    bool m_killPending = false;
    uint64_t m_killGeneration = 0;
    unsigned m_waiters = 0;
};

} // namespace QvGenTL
