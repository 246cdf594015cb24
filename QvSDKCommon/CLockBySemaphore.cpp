#include <QvApi/CLockBySemaphore.h>

#include <cerrno>
#include <cstring>

#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CLockBySemaphore::CLockBySemaphore(long max) : m_max(max), m_count(max)
{
    int result = pthread_mutex_init(&m_sem.mutex, nullptr);
    if (result != 0)
    {
        const int savedErrno = errno;
        QV_THROW_LINUX(result, "pthread_mutex_init", "0 != pthread_mutex_init(&m_sem.mutex) [Error=0x%x %s]",
                       savedErrno, strerror(savedErrno));
    }
    result = pthread_cond_init(&m_sem.condition, nullptr);
    if (result != 0)
    {
        const int savedErrno = errno;
        pthread_mutex_destroy(&m_sem.mutex);
        errno = savedErrno;
        QV_THROW_LINUX(result, "pthread_cond_init", "0 != pthread_cond_init(&m_sem.condition) [Error=0x%x %s]",
                       savedErrno, strerror(savedErrno));
    }
}

CLockBySemaphore::~CLockBySemaphore()
{
    pthread_cond_destroy(&m_sem.condition);
    pthread_mutex_destroy(&m_sem.mutex);
}

void CLockBySemaphore::mLock(long n)
{
    pthread_mutex_lock(&m_sem.mutex);
    if (n <= 0)
    {
        m_count.fetch_add(1, std::memory_order_relaxed);
        pthread_mutex_unlock(&m_sem.mutex);
        return;
    }
    for (long pass = 0; pass < n; ++pass)
    {
        while (m_max <= m_count.load(std::memory_order_relaxed))
        {
            const int waitResult = pthread_cond_wait(&m_sem.condition, &m_sem.mutex);
            if (waitResult != 0 && waitResult != EINTR)
                break; // an unusual wait error ends this pass rather than spinning
        }
    }
    // One unit, whatever n: LockMaxMinusOne() takes a single unit.
    m_count.fetch_add(1, std::memory_order_relaxed);
    pthread_mutex_unlock(&m_sem.mutex);
}

void CLockBySemaphore::mUnlock(long n)
{
    if (n < 1 || m_count.load(std::memory_order_relaxed) < 1)
        return;
    for (long pass = 0; pass < n; ++pass)
    {
        // Each unit goes back under its own lock, and wakes one waiter.
        pthread_mutex_lock(&m_sem.mutex);
        m_count.fetch_sub(1, std::memory_order_relaxed);
        pthread_mutex_unlock(&m_sem.mutex);
        pthread_cond_signal(&m_sem.condition);
        if (m_count.load(std::memory_order_relaxed) <= 0)
            break;
    }
}
} // namespace QvApi
