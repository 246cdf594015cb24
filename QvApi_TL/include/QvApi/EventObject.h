#pragma once

#include <atomic>
#include <vector>

#include <pthread.h>

#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/// WaitForSingleObject / WaitForMultipleObjects: the first signaled handle is kWaitObject0 + index.
constexpr unsigned int kWaitObject0 = 0;
/// The wait ran out of time.
constexpr unsigned int kWaitTimeout = 0x102;
/// Bad arguments or an unusual wait error.
constexpr unsigned int kWaitFailed = 0xFFFFFFFF;
/// A time-out that never expires.
constexpr unsigned int kWaitInfinite = 0xFFFFFFFF;

struct _SQvMultiEventsWaiter;

/**
 * \brief The state an event shares with the waits on it: mutex, condition, reset mode, signaled
 *        flag and the multi-object waits registered on it.
 *
 * `signaled` is atomic because the wait functions peek at it without the mutex (fast path,
 * multi-object scans); every change of it still happens under the mutex, except the documented
 * unlocked consumption of an auto-reset event on the fast path.
 */
struct QVAPI_API SQvEventSignal_
{
    /// Initialises the condition, then the mutex.
    /// \throws GenICam::BadAllocException (empty text) when either cannot be initialised.
    SQvEventSignal_();
    ~SQvEventSignal_();
    SQvEventSignal_(const SQvEventSignal_&) = delete;
    SQvEventSignal_& operator=(const SQvEventSignal_&) = delete;

    pthread_mutex_t mutex;
    pthread_cond_t condition;
    bool manualReset = false;
    std::atomic<bool> signaled{false};
    /// Multi-object waits currently registered on this event; guarded by mutex.
    std::vector<_SQvMultiEventsWaiter*> waiters;
};

/**
 * \brief A Win32-style event on POSIX threads: manual- or auto-reset, waited on with
 *        WaitForSingleObject() and WaitForMultipleObjects().
 *
 * SetEvent() wakes one thread blocked in WaitForSingleObject() (a signal, not a broadcast, even
 * for a manual-reset event) and every multi-object wait registered on the event. An auto-reset
 * event is consumed by the wait that observes it. Any thread; destroying an event while another
 * thread still waits on it is undefined. Not copyable.
 */
class QVAPI_API CEventObject : public SQvEventSignal_
{
public:
    /**
     * \param[in] attributes   Kept for source compatibility; unused.
     * \param[in] manualReset  True: stays signaled until ResetEvent(). False: a successful wait
     *                         clears it.
     * \param[in] initialState True: starts signaled.
     * \param[in] name         Kept for source compatibility; unused.
     * \throws GenICam::BadAllocException when the mutex or condition cannot be initialised.
     */
    CEventObject(void* attributes, bool manualReset, bool initialState, const char* name);
    /// Marks the event closing (later SetEvent/ResetEvent do nothing), then frees it.
    ~CEventObject();

    /// Signals the event and wakes its waiters. Does nothing once the event is closing.
    void SetEvent();
    /// Clears the signal. Does nothing once the event is closing.
    void ResetEvent();
    /// True while the destructor runs.
    bool IsClosing() const { return closing.load(std::memory_order_acquire); }

    std::atomic<bool> closing{false};
    void* const attributes;
    const char* const name;
};

/**
 * \brief Waits until \a handle (a CEventObject*) is signaled.
 * \param[in] handle    The event; null gives kWaitFailed.
 * \param[in] timeoutMs 0 polls once, kWaitInfinite waits for ever, otherwise a deadline in ms.
 * \return kWaitObject0, kWaitTimeout or kWaitFailed.
 * \note An auto-reset event is consumed by the call, also when a time-out is reported while the
 *       flag happens to be set. A blocking wait checks the flag only after its first wake-up:
 *       a SetEvent() that lands between the unlocked first check and the wait is seen only at
 *       the next SetEvent() or at the time-out. Use finite time-outs where that matters.
 */
QVAPI_API unsigned int WaitForSingleObject(void* handle, unsigned int timeoutMs);

/**
 * \brief Waits until one (\a bWaitAll false) or all (true) of \a count events are signaled.
 * \param[in] count     Number of handles; 0 gives kWaitFailed.
 * \param[in] handles   Array of CEventObject*; null gives kWaitFailed.
 * \param[in] bWaitAll  Wait for all instead of any.
 * \param[in] timeoutMs As for WaitForSingleObject().
 * \return kWaitObject0 + the lowest index seen signaled, kWaitTimeout or kWaitFailed.
 * \throws GenICam::BadAllocException when the wait's own mutex or condition cannot be made.
 * \note Every signaled auto-reset event among the handles is consumed, also when a blocking
 *       wait for all ends in a time-out.
 */
QVAPI_API unsigned int WaitForMultipleObjects(unsigned int count, void* const* handles, bool bWaitAll,
                                              unsigned int timeoutMs);
} // namespace QvApi
