#include <QvApi/Worker.h>

#include <algorithm>
#include <new>

#include <sched.h>

#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CWorker::CWorker(const char* name)
try : m_pName(name), m_stopRequestEvent(nullptr, true, false, nullptr), m_mutex(PTHREAD_MUTEX_INITIALIZER)
{
}
QV_CATCH_BAD_ALLOC()

CWorker::~CWorker()
{
    CWorker::Stop();
    pthread_mutex_destroy(&m_mutex);
}

bool CWorker::IsStopRequest(unsigned int timeoutMs)
{
    return WaitForSingleObject(GetStopRequestEvent(), timeoutMs) == kWaitObject0;
}

CEventObject* CWorker::GetStopRequestEvent()
{
    return m_stopRequestEvent.IsClosing() ? nullptr : &m_stopRequestEvent;
}

void CWorker::Stop()
{
    if (m_thread == 0)
        return;
    m_stopRequestEvent.SetEvent();
    pthread_join(m_thread, nullptr);
    // Only after the join: the thread holds the mutex for all of mWork().
    pthread_mutex_lock(&m_mutex);
    m_thread = 0;
    pthread_mutex_unlock(&m_mutex);
}

void CWorker::Start()
{
    Stop();
    m_stopRequestEvent.ResetEvent();
    pthread_t thread = 0;
    if (pthread_create(&thread, nullptr, &CWorker::sThreadStart, this) != 0)
        return; // nothing recorded: IsWorking() stays false and Stop() has nothing to join
    m_thread = thread;

    if (m_priority <= 1)
    {
        // Clamp into the default policy's range without storing: the field keeps what the
        // owner asked for.
        pthread_attr_t attributes;
        int policy = SCHED_OTHER;
        if (pthread_attr_init(&attributes) == 0)
        {
            pthread_attr_getschedpolicy(&attributes, &policy);
            pthread_attr_destroy(&attributes);
        }
        const int priority = std::clamp(m_priority, sched_get_priority_min(policy), sched_get_priority_max(policy));
        pthread_setschedprio(m_thread, priority);
    }
    else
    {
        m_priority = std::clamp(m_priority, sched_get_priority_min(SCHED_RR), sched_get_priority_max(SCHED_RR));
        sched_param parameter{};
        parameter.sched_priority = m_priority;
        // The thread's pthread_t goes where sched_setscheduler expects a process id; the call
        // normally fails and the result is ignored on purpose.
        sched_setscheduler(static_cast<pid_t>(m_thread), SCHED_RR, &parameter);
    }
}

void* CWorker::sThreadStart(void* arg)
{
    static_cast<CWorker*>(arg)->ThreadStart();
    return nullptr;
}

unsigned int CWorker::ThreadStart()
{
    pthread_mutex_lock(&m_mutex);
    m_bWorking.store(true, std::memory_order_release);
    const unsigned int code = mWork();
    m_bWorking.store(false, std::memory_order_release);
    pthread_mutex_unlock(&m_mutex);
    return code;
}
} // namespace QvApi
