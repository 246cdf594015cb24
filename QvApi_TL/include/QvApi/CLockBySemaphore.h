#pragma once

#include <atomic>

#include <pthread.h>

#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief A counting lock made of one mutex and one condition variable.
 *
 * Lock() waits while the count has reached the maximum and then takes one unit; Unlock() gives
 * one back. A new lock starts with its count at the maximum, i.e. fully taken: the first Lock()
 * blocks until some thread calls Unlock(). LockMaxMinusOne() takes one unit (after waiting for
 * max - 1 free passes), while UnlockMaxMinusOne() gives back up to max - 1 units.
 * Any thread. Not copyable.
 */
class QVAPI_API CLockBySemaphore
{
public:
    /**
     * \param[in] max The maximum count; the lock starts at it.
     * \throws CQvLinuxErrorException when the mutex or condition cannot be initialised.
     */
    explicit CLockBySemaphore(long max);
    ~CLockBySemaphore();
    CLockBySemaphore(const CLockBySemaphore&) = delete;
    CLockBySemaphore& operator=(const CLockBySemaphore&) = delete;

    /// Waits until a unit is free, then takes one. Blocks the caller.
    void Lock() { mLock(1); }
    /// Waits for max - 1 free passes, then takes one unit.
    void LockMaxMinusOne() { mLock(m_max - 1); }
    /// Gives one unit back; does nothing when none is taken.
    void Unlock() { mUnlock(1); }
    /// Gives back up to max - 1 units, one at a time.
    void UnlockMaxMinusOne() { mUnlock(m_max - 1); }

    /// The current count (taken units), read without the lock: a snapshot.
    long GetCount() const { return static_cast<long>(m_count.load(std::memory_order_relaxed)); }

protected:
    /// Shared worker of the Lock forms: n passes of waiting, then one unit taken.
    void mLock(long n);
    /// Shared worker of the Unlock forms: up to n units given back.
    void mUnlock(long n);

private:
    struct SSemaphore
    {
        pthread_mutex_t mutex;
        pthread_cond_t condition;
    };

    const int64_t m_max;
    SSemaphore m_sem;
    // Changed only under m_sem.mutex; atomic because mUnlock() tests it without the mutex.
    std::atomic<int64_t> m_count;
};
} // namespace QvApi
