#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include <pthread.h>

#include <Base/GCSynch.h>
#include <GenTL/GenTL.h>
#include <QvApi/EventObject.h>
#include <QvApi/Worker.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief One GenTL event the library listens to: registered with the producer at construction
 *        (GCRegisterEvent), received on its own worker thread (a loop on EventGetData with a
 *        500 ms time-out) and handed to OnRcvEvent().
 *
 * Nothing escapes the listener thread: EventGetData failures become the last error plus the
 * error event, exceptions from OnRcvEvent() are swallowed. Start(), Stop(), UnregisterEvent()
 * and destruction: one controlling thread (the owning module's). Every final class calls
 * Shutdown() in its destructor, before its own part is gone.
 */
class QVAPI_API CQvEvent : public CWorker
{
public:
    /**
     * \param[in] pCQvGenTL  Producer binding; borrowed, must outlive the listener.
     * \param[in] hEventSrc  The module handle the event is registered on.
     * \param[in] eventType  GenTL EVENT_TYPE (0 error, 1 new buffer, 2 feature invalidate, ...).
     * \param[in] name       The worker's name; borrowed (a literal).
     * \throws CQvGenTLErrorException with code 0 "\"GCRegisterEvent\" is not implemented." when
     *         the producer lacks GCRegisterEvent; "%d = GCRegisterEvent(0x%p, %d, 0x%p)" when it
     *         answers GC_ERR_NOT_IMPLEMENTED. Other registration failures are not reported: the
     *         listener then has no event handle and Start() does nothing.
     * \throws GenICam::BadAllocException.
     */
    CQvEvent(CQvGenTLLib* pCQvGenTL, GenTL::EVENTSRC_HANDLE hEventSrc, GenTL::EVENT_TYPE eventType, const char* name);
    /// Stops and unregisters (exceptions swallowed) if a derived destructor did not.
    ~CQvEvent() override;

    /**
     * \brief Allocates the receive buffer and starts the thread; does nothing without an event
     *        handle or while a thread is recorded.
     * \throws GenICam::BadAllocException.
     */
    void Start();
    /**
     * \brief Signals the stop, aborts a blocked EventGetData (EventKill), joins and frees the
     *        receive buffer; does nothing without a thread.
     * \throws CQvGenTLErrorException "%d = EventKill(0x%p)" when EventKill failed (after the join).
     */
    void Stop() override;
    /**
     * \brief GCUnregisterEvent; the handle is cleared whatever the result.
     * \throws CQvGenTLErrorException "%d = GCUnregisterEvent(0x%p, %d)".
     */
    void UnregisterEvent();

    /// \return The registered event handle; null when not registered.
    GenTL::EVENT_HANDLE GetEventHandle() const { return m_hEvent; }
    /// \return The GenTL event type.
    GenTL::EVENT_TYPE GetEventType() const { return m_eventType; }
    /// \return The receive-buffer size in bytes.
    size_t GetBufferSize() const { return m_bufferSize; }
    /// \return The receive buffer (null while stopped), for failure messages.
    void* GetReceiveBuffer() const { return m_pBuffer.get(); }
    /// \return The time-out of each EventGetData, in milliseconds.
    size_t GetTimeoutMs() const { return m_timeoutMs; }
    /// \return The lock guarding the last error and the error event.
    GenICam::CLock& GetLock() { return m_lock; }
    /// \return The last EventGetData failure; read under GetLock().
    GenTL::GC_ERROR GetLastGenTLError() const { return m_lastError; }
    /// \return The error event (manual reset), set at every EventGetData failure; null while it
    ///         is being destroyed.
    CEventObject* GetErrorEvent() { return m_errorEvent.IsClosing() ? nullptr : &m_errorEvent; }
    /// \return True when called on this listener's own thread while it runs.
    bool IsListenerThread() const;

protected:
    uint32_t mWork() override;
    /**
     * \brief One received record (listener thread only).
     * \param[in] pData Record as EventGetData returned it; valid for the call only.
     * \param[in] iSize Bytes the producer wrote.
     */
    virtual void OnRcvEvent(void* pData, size_t iSize) = 0;
    /// Stop() then UnregisterEvent(), swallowing both; final classes call it in their destructor.
    void Shutdown() noexcept;

    CQvGenTLLib* const m_pCQvGenTL; // borrowed from the system, which outlives every listener
    const GenTL::EVENTSRC_HANDLE m_hEventSrc;
    GenTL::EVENT_HANDLE m_hEvent = nullptr;
    const GenTL::EVENT_TYPE m_eventType;
    size_t m_bufferSize = 0;
    const size_t m_timeoutMs = 500;
    std::unique_ptr<uint8_t[]> m_pBuffer; // receive buffer; null while stopped

private:
    GenICam::CLock m_lock;
    // Guarded by m_lock.
    GenTL::GC_ERROR m_lastError = GenTL::GC_ERR_SUCCESS;
    CEventObject m_errorEvent;

    // The running thread's id, written by the thread itself (the controlling thread records its
    // pthread_t only after pthread_create returns, which may be after the first event).
    std::atomic<bool> m_bListenerRunning{false};
    std::atomic<pthread_t> m_listenerThread{};
};
} // namespace QvApi
