#pragma once

#include <atomic>
#include <cstdint>

#include <pthread.h>

#include <QvApi/EventObject.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief A background thread that can be asked to stop.
 */
class QVAPI_API IWorker
{
public:
    /**
     * \brief Whether a stop was requested, waiting up to \a timeoutMs for the request.
     * \param[in] timeoutMs 0 polls; kWaitInfinite waits for ever.
     */
    virtual bool IsStopRequest(unsigned int timeoutMs) = 0;
    /// The manual-reset event that Stop() signals; null while the worker is being destroyed.
    virtual CEventObject* GetStopRequestEvent() = 0;
    virtual ~IWorker() = default;
    /// Requests the stop and joins the thread; does nothing when no thread runs.
    virtual void Stop() = 0;
};

/**
 * \brief Base of every library thread: one POSIX thread running mWork(), a manual-reset stop
 *        event and a scheduling priority.
 *
 * Start() (re)starts the thread, stopping and joining a previous one first; Stop() signals the
 * stop event and joins. mWork() runs on the worker's own thread and should poll
 * IsStopRequest() (or wait on GetStopRequestEvent()) and return soon after a stop request.
 * Start(), Stop() and the destructor: one controlling thread at a time. Not copyable.
 * A derived class must call Stop() in its own destructor: by the time ~CWorker() joins, the
 * derived part (and its mWork()) is gone.
 *
 * Priority 1 or less keeps the default policy; 2 or more asks for SCHED_RR at that priority
 * (clamped to the policy's range) and normally needs privileges: the scheduling calls' results
 * are ignored, so without them the thread just runs at the default priority.
 */
class QVAPI_API CWorker : public IWorker
{
public:
    /**
     * \param[in] name Kept for diagnostics; the thread itself is not named. Borrowed: must
     *                 outlive the worker (normally a string literal).
     * \throws GenICam::BadAllocException when the stop event cannot be built.
     */
    explicit CWorker(const char* name);
    /// Stops and joins the thread (CWorker::Stop(), not an override).
    ~CWorker() override;
    CWorker(const CWorker&) = delete;
    CWorker& operator=(const CWorker&) = delete;

    bool IsStopRequest(unsigned int timeoutMs) override;
    CEventObject* GetStopRequestEvent() override;
    void Stop() override;

    /// Stops a running thread (through the virtual Stop()), clears the stop event and starts a
    /// new thread on mWork(). The thread's creation result is not reported.
    void Start();

    /// The name given to the constructor.
    const char* GetName() const { return m_pName; }
    /// True while mWork() runs.
    bool IsWorking() const { return m_bWorking.load(std::memory_order_acquire); }
    /// The scheduling priority the next Start() applies (after clamping for SCHED_RR).
    int GetPriority() const { return m_priority; }
    /// Sets the priority the next Start() applies: 1 or less default policy, 2 or more SCHED_RR.
    void SetPriority(int priority) { m_priority = priority; }

    /// Thread entry: calls ThreadStart() on the worker given as \a arg.
    static void* sThreadStart(void* arg);
    /// Runs mWork() under the worker's mutex with the working flag set.
    unsigned int ThreadStart();

protected:
    /// The thread's body; its return value is the thread's exit code.
    virtual uint32_t mWork() = 0;

    const char* const m_pName;
    CEventObject m_stopRequestEvent;
    std::atomic<bool> m_bWorking{false};
    int m_priority = 1;
    pthread_t m_thread = 0;   // the controlling thread's; 0 when no thread is recorded
    pthread_mutex_t m_mutex;  // held by the thread for the whole of mWork()
};
} // namespace QvApi
