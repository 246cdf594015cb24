#include <QvApi/EventObject.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <new>

#include "QvSDKCommon/QvExceptionMacros.h"
#include "QvSDKCommon/WaitDeadline.h"

namespace QvApi
{
namespace Detail
{
// The private record of one WaitForMultipleObjects call: shaped like SQvEventSignal_, with one
// flag bit per handle instead of a single signaled flag. SetEvent() of a registered event sets
// its bit and wakes the wait (for wait-all only once every bit is set). Guarded by mutex. The
// bits live in storage the call provides (its stack for up to 64 handles).
struct SQvMultiEventsWait_
{
    SQvMultiEventsWait_(unsigned int count, bool waitAll, uint64_t* pFlagWords)
        : flags(pFlagWords), count(count), waitAll(waitAll)
    {
        std::fill(flags, flags + WordCount(count), uint64_t(0));
        if (pthread_cond_init(&condition, nullptr) != 0)
            QV_THROW_EMPTY(BadAllocException);
        if (pthread_mutex_init(&mutex, nullptr) != 0)
        {
            pthread_cond_destroy(&condition);
            QV_THROW_EMPTY(BadAllocException);
        }
    }
    ~SQvMultiEventsWait_()
    {
        pthread_cond_destroy(&condition);
        pthread_mutex_destroy(&mutex);
    }
    SQvMultiEventsWait_(const SQvMultiEventsWait_&) = delete;
    SQvMultiEventsWait_& operator=(const SQvMultiEventsWait_&) = delete;

    static size_t WordCount(unsigned int count) { return (static_cast<size_t>(count) + 63) / 64; }
    bool Flag(unsigned int index) const { return (flags[index / 64] >> (index % 64)) & 1; }
    void SetFlag(unsigned int index) { flags[index / 64] |= uint64_t(1) << (index % 64); }
    bool AllFlagsSetLocked() const
    {
        const size_t fullWords = count / 64;
        for (size_t i = 0; i < fullWords; ++i)
        {
            if (flags[i] != ~uint64_t(0))
                return false;
        }
        const unsigned int rest = count % 64;
        return rest == 0 || flags[fullWords] == (uint64_t(1) << rest) - 1;
    }

    pthread_mutex_t mutex;
    pthread_cond_t condition;
    uint64_t* const flags;
    const unsigned int count;
    const bool waitAll;
};
} // namespace Detail

// One per event per multi-object wait; lives with the waiting call (on its stack when it waits
// on few handles).
struct _SQvMultiEventsWaiter
{
    Detail::SQvMultiEventsWait_* owner;
    uint32_t index;
};

namespace
{
constexpr unsigned int kFirstUnset = 0xFFFFFFFF;

// Handles whose wait needs no heap: a data stream waits on four, a pointer array on a few streams.
constexpr unsigned int kStackHandles = 8;
constexpr unsigned int kStackFlagWords = 1; // 64 flag bits
static_assert(kStackHandles <= 64 * kStackFlagWords, "stack flags cover the stack handles");

// The flag words and waiter records of one wait: on the stack for up to kStackHandles handles,
// on the heap beyond, so that the waits of the acquisition path allocate nothing.
class CWaitStorage
{
public:
    explicit CWaitStorage(unsigned int count)
    {
        if (count > kStackHandles)
        {
            m_pHeapWaiters.reset(new (std::nothrow) _SQvMultiEventsWaiter[count]);
            m_pWaiters = m_pHeapWaiters.get();
        }
        const size_t words = Detail::SQvMultiEventsWait_::WordCount(count);
        if (words > kStackFlagWords)
        {
            m_pHeapFlags.reset(new (std::nothrow) uint64_t[words]);
            m_pFlags = m_pHeapFlags.get();
        }
    }
    /// False when the heap had no room for a large count.
    bool Ok() const { return m_pFlags != nullptr && m_pWaiters != nullptr; }
    CWaitStorage(const CWaitStorage&) = delete;
    CWaitStorage& operator=(const CWaitStorage&) = delete;

    uint64_t* Flags() { return m_pFlags; }
    _SQvMultiEventsWaiter* Waiters() { return m_pWaiters; }

private:
    uint64_t m_stackFlags[kStackFlagWords];
    _SQvMultiEventsWaiter m_stackWaiters[kStackHandles];
    uint64_t* m_pFlags = m_stackFlags;
    _SQvMultiEventsWaiter* m_pWaiters = m_stackWaiters;
    std::unique_ptr<uint64_t[]> m_pHeapFlags;
    std::unique_ptr<_SQvMultiEventsWaiter[]> m_pHeapWaiters;
};

CEventObject* AsEvent(void* handle)
{
    return static_cast<CEventObject*>(handle);
}

// Whether the event is signaled, consuming the signal of an auto-reset event. Every consumption
// is one atomic exchange, so a signal is never reported to two waiters, whichever paths they take.
bool TakeSignal(CEventObject* event)
{
    if (event->manualReset)
        return event->signaled.load(std::memory_order_acquire);
    return event->signaled.exchange(false, std::memory_order_acq_rel);
}

void RemoveWaiterLocked(CEventObject* event, _SQvMultiEventsWaiter* waiter)
{
    auto it = std::find(event->waiters.begin(), event->waiters.end(), waiter);
    if (it != event->waiters.end())
        event->waiters.erase(it);
}
} // namespace

timespec MakeWaitDeadline(unsigned int timeoutMs, const timespec& now)
{
    const long seconds = timeoutMs > 999 ? static_cast<long>(timeoutMs / 1000) : 0;
    long nanoseconds = static_cast<long>(timeoutMs - seconds * 1000) * 1000000L + now.tv_nsec;
    timespec deadline;
    deadline.tv_sec = now.tv_sec + seconds;
    if (nanoseconds > 1000000000L)
    {
        deadline.tv_sec += 1;
        nanoseconds -= 1000000000L;
    }
    deadline.tv_nsec = nanoseconds;
    return deadline;
}

SQvEventSignal_::SQvEventSignal_()
{
    if (pthread_cond_init(&condition, nullptr) != 0)
        QV_THROW_EMPTY(BadAllocException);
    if (pthread_mutex_init(&mutex, nullptr) != 0)
    {
        pthread_cond_destroy(&condition);
        QV_THROW_EMPTY(BadAllocException);
    }
}

SQvEventSignal_::~SQvEventSignal_()
{
    pthread_cond_destroy(&condition);
    pthread_mutex_destroy(&mutex);
}

CEventObject::CEventObject(void* attributes, bool manualReset, bool initialState, const char* name)
    : attributes(attributes), name(name)
{
    this->manualReset = manualReset;
    if (initialState)
        SetEvent();
}

CEventObject::~CEventObject()
{
    pthread_mutex_lock(&mutex);
    closing.store(true, std::memory_order_release);
    pthread_mutex_unlock(&mutex);
}

void CEventObject::SetEvent()
{
    if (closing.load(std::memory_order_acquire))
        return;
    // Lock order: this event's mutex, then each registered wait's private mutex.
    pthread_mutex_lock(&mutex);
    signaled.store(true, std::memory_order_release);
    for (_SQvMultiEventsWaiter* waiter : waiters)
    {
        Detail::SQvMultiEventsWait_* owner = waiter->owner;
        pthread_mutex_lock(&owner->mutex);
        owner->SetFlag(waiter->index);
        if (!owner->waitAll || owner->AllFlagsSetLocked())
            pthread_cond_signal(&owner->condition);
        pthread_mutex_unlock(&owner->mutex);
    }
    // One waiter only, also for a manual-reset event: callers rely on this.
    pthread_cond_signal(&condition);
    pthread_mutex_unlock(&mutex);
}

void CEventObject::ResetEvent()
{
    if (closing.load(std::memory_order_acquire))
        return;
    pthread_mutex_lock(&mutex);
    signaled.store(false, std::memory_order_release);
    pthread_mutex_unlock(&mutex);
}

unsigned int WaitForSingleObject(void* handle, unsigned int timeoutMs)
{
    CEventObject* event = AsEvent(handle);
    if (event == nullptr)
        return kWaitFailed;

    // Fast path without the mutex. An auto-reset event is consumed with one atomic exchange, so
    // two threads racing here cannot both take the same signal.
    if (event->signaled.load(std::memory_order_acquire))
    {
        if (event->manualReset)
            return kWaitObject0;
        bool expected = true;
        if (event->signaled.compare_exchange_strong(expected, false, std::memory_order_acq_rel))
            return kWaitObject0;
    }

    unsigned int result;
    if (timeoutMs == 0)
    {
        if (pthread_mutex_trylock(&event->mutex) != 0)
            return kWaitTimeout;
        result = TakeSignal(event) ? kWaitObject0 : kWaitTimeout;
    }
    else
    {
        timespec deadline{};
        if (timeoutMs != kWaitInfinite)
        {
            timespec now{};
            clock_gettime(CLOCK_REALTIME, &now);
            deadline = MakeWaitDeadline(timeoutMs, now);
        }
        pthread_mutex_lock(&event->mutex);
        // The flag is tested only after a wake-up, never between taking the mutex and the first
        // wait (see the header note).
        int waitResult;
        do
        {
            waitResult = timeoutMs == kWaitInfinite ? pthread_cond_wait(&event->condition, &event->mutex)
                                                    : pthread_cond_timedwait(&event->condition, &event->mutex,
                                                                             &deadline);
        } while (waitResult == 0 && !TakeSignal(event));

        if (waitResult == 0)
            result = kWaitObject0;
        else if (!TakeSignal(event))
            result = kWaitTimeout;
        else
            // Consumed whatever the result: a time-out racing with SetEvent() takes the signal.
            result = waitResult == ETIMEDOUT ? kWaitTimeout : kWaitFailed;
    }
    pthread_mutex_unlock(&event->mutex);
    return result;
}

unsigned int WaitForMultipleObjects(unsigned int count, void* const* handles, bool bWaitAll, unsigned int timeoutMs)
{
    if (count == 0 || handles == nullptr)
        return kWaitFailed;
    for (unsigned int i = 0; i < count; ++i)
    {
        if (handles[i] == nullptr)
            return kWaitFailed;
    }

    CWaitStorage storage(count);
    if (!storage.Ok())
        QV_THROW_EMPTY(BadAllocException);
    Detail::SQvMultiEventsWait_ record(count, bWaitAll, storage.Flags());
    unsigned int remaining = count;
    unsigned int first = kFirstUnset;

    if (timeoutMs == 0)
    {
        for (unsigned int i = 0; i < count; ++i)
        {
            CEventObject* event = AsEvent(handles[i]);
            if (event->signaled.load(std::memory_order_acquire))
                record.SetFlag(i);
            else if (pthread_mutex_trylock(&event->mutex) == 0)
            {
                if (event->signaled.load(std::memory_order_relaxed))
                    record.SetFlag(i);
                pthread_mutex_unlock(&event->mutex);
            }
            if (record.Flag(i))
            {
                --remaining;
                if (first == kFirstUnset)
                    first = i;
            }
        }
        if (remaining > 0 && (bWaitAll || first == kFirstUnset))
            return kWaitTimeout;
        // Consume every signaled auto-reset event seen, not only the first. The answer names the
        // lowest index actually taken: another thread may have taken one since the scan.
        unsigned int taken = 0;
        first = kFirstUnset;
        for (unsigned int i = 0; i < count; ++i)
        {
            if (!record.Flag(i))
                continue;
            CEventObject* event = AsEvent(handles[i]);
            pthread_mutex_lock(&event->mutex);
            if (TakeSignal(event))
            {
                ++taken;
                first = std::min(first, i);
            }
            pthread_mutex_unlock(&event->mutex);
        }
        if ((bWaitAll && taken < count) || first == kFirstUnset)
            return kWaitTimeout;
        return first;
    }

    // Register one waiter per handle. Each append happens under the event's mutex, since
    // SetEvent() walks the same list on another thread.
    _SQvMultiEventsWaiter* const waiters = storage.Waiters();
    unsigned int registered = 0;
    try
    {
        for (; registered < count; ++registered)
        {
            waiters[registered] = {&record, registered};
            CEventObject* event = AsEvent(handles[registered]);
            pthread_mutex_lock(&event->mutex);
            try
            {
                event->waiters.push_back(&waiters[registered]);
            }
            catch (...)
            {
                pthread_mutex_unlock(&event->mutex);
                throw;
            }
            pthread_mutex_unlock(&event->mutex);
        }
    }
    catch (const std::bad_alloc&)
    {
        for (unsigned int i = 0; i < registered; ++i)
        {
            CEventObject* event = AsEvent(handles[i]);
            pthread_mutex_lock(&event->mutex);
            RemoveWaiterLocked(event, &waiters[i]);
            pthread_mutex_unlock(&event->mutex);
        }
        QV_THROW_EMPTY(BadAllocException);
    }

    pthread_mutex_lock(&record.mutex);
    timespec deadline{};
    if (timeoutMs != kWaitInfinite)
    {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        deadline = MakeWaitDeadline(timeoutMs, now);
    }
    for (;;)
    {
        remaining = count;
        for (unsigned int i = 0; i < count; ++i)
        {
            if (AsEvent(handles[i])->signaled.load(std::memory_order_acquire))
            {
                record.SetFlag(i);
                --remaining;
                first = std::min(first, i);
            }
        }
        if (remaining == 0 || (!bWaitAll && remaining < count))
            break;
        const int waitResult = timeoutMs == kWaitInfinite
                                   ? pthread_cond_wait(&record.condition, &record.mutex)
                                   : pthread_cond_timedwait(&record.condition, &record.mutex, &deadline);
        if (waitResult != 0)
            break;
    }
    // Never hold the private mutex while locking an event: SetEvent() locks the other way round.
    pthread_mutex_unlock(&record.mutex);

    // Collect under each event's mutex what is signaled now and consume it. The answer names the
    // lowest index seen here, so a signal another thread took meanwhile is not reported as ours.
    remaining = count;
    first = kFirstUnset;
    for (unsigned int i = 0; i < count; ++i)
    {
        CEventObject* event = AsEvent(handles[i]);
        pthread_mutex_lock(&event->mutex);
        if (TakeSignal(event))
        {
            first = std::min(first, i);
            --remaining;
        }
        RemoveWaiterLocked(event, &waiters[i]);
        pthread_mutex_unlock(&event->mutex);
    }
    if (remaining > 0 && (bWaitAll || first == kFirstUnset))
        return kWaitTimeout;
    return first;
}
} // namespace QvApi
