#include "QvApi_TL/QvEvent.h"

#include <new>

#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// Receive-buffer size when the producer cannot tell the largest record of an event.
constexpr size_t kDefaultBufferSize = 4096;
} // namespace

CQvEvent::CQvEvent(CQvGenTLLib* pCQvGenTL, GenTL::EVENTSRC_HANDLE hEventSrc, GenTL::EVENT_TYPE eventType,
                   const char* name)
try : CWorker(name), m_pCQvGenTL(pCQvGenTL), m_hEventSrc(hEventSrc), m_eventType(eventType),
      m_errorEvent(nullptr, true, false, nullptr)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    QV_ASSERT(hEventSrc != nullptr, "hEventSrc != NULL");
    if (m_pCQvGenTL->GCRegisterEvent == nullptr)
        QV_THROW_GENTL(m_pCQvGenTL, GenTL::GC_ERR_SUCCESS, "GCRegisterEvent", "\"GCRegisterEvent\" is not implemented.");
    GenTL::GC_ERROR err = m_pCQvGenTL->GCRegisterEvent(hEventSrc, eventType, &m_hEvent);
    // Only "not implemented" fails the listener; with any other failure it exists but never
    // starts, and the module works without that event.
    if (err == GenTL::GC_ERR_NOT_IMPLEMENTED)
        QV_THROW_GENTL(m_pCQvGenTL, err, "GCRegisterEvent", "%d = GCRegisterEvent(0x%p, %d, 0x%p)", err, hEventSrc,
                       eventType, static_cast<void*>(&m_hEvent));

    if (eventType == GenTL::EVENT_NEW_BUFFER)
    {
        m_bufferSize = sizeof(GenTL::EVENT_NEW_BUFFER_DATA);
    }
    else
    {
        GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
        size_t sizeMax = 0;
        size_t size = sizeof(sizeMax);
        err = QV_GENTL_CALL(m_pCQvGenTL, EventGetInfo, m_hEvent, GenTL::EVENT_SIZE_MAX, &type, &sizeMax, &size);
        m_bufferSize = err == GenTL::GC_ERR_SUCCESS && sizeMax != 0 ? sizeMax : kDefaultBufferSize;
    }
}
QV_CATCH_BAD_ALLOC()

CQvEvent::~CQvEvent()
{
    Shutdown();
}

void CQvEvent::Shutdown() noexcept
{
    try
    {
        CQvEvent::Stop();
    }
    catch (...)
    {
    }
    try
    {
        UnregisterEvent();
    }
    catch (...)
    {
    }
}

void CQvEvent::Start()
{
    if (m_hEvent == nullptr || m_thread != 0)
        return;
    try
    {
        m_pBuffer.reset(new uint8_t[m_bufferSize]);
    }
    QV_CATCH_BAD_ALLOC()
    CWorker::Start();
}

void CQvEvent::Stop()
{
    if (m_thread == 0)
        return;
    m_stopRequestEvent.SetEvent();
    // Wakes a thread blocked in EventGetData; without it the stop waits for the time-out.
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, EventKill, m_hEvent);
    CWorker::Stop();
    m_pBuffer.reset();
    QV_CHECK_GENTL(m_pCQvGenTL, err, "EventKill", "%d = EventKill(0x%p)", err, m_hEvent);
}

void CQvEvent::UnregisterEvent()
{
    if (m_hEvent == nullptr)
        return;
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, GCUnregisterEvent, m_hEventSrc, m_eventType);
    m_hEvent = nullptr;
    QV_CHECK_GENTL(m_pCQvGenTL, err, "GCUnregisterEvent", "%d = GCUnregisterEvent(0x%p, %d)", err, m_hEventSrc,
                   m_eventType);
}

bool CQvEvent::IsListenerThread() const
{
    return m_bListenerRunning.load(std::memory_order_acquire) &&
           pthread_equal(m_listenerThread.load(std::memory_order_acquire), pthread_self()) != 0;
}

uint32_t CQvEvent::mWork()
{
    m_listenerThread.store(pthread_self(), std::memory_order_release);
    m_bListenerRunning.store(true, std::memory_order_release);
    while (WaitForSingleObject(GetStopRequestEvent(), 0) != kWaitObject0)
    {
        size_t size = m_bufferSize;
        GenTL::GC_ERROR err = GenTL::GC_ERR_SUCCESS;
        try
        {
            err = QV_GENTL_CALL(m_pCQvGenTL, EventGetData, m_hEvent, m_pBuffer.get(), &size, m_timeoutMs);
        }
        catch (...)
        {
            continue;
        }
        if (err == GenTL::GC_ERR_TIMEOUT || err == GenTL::GC_ERR_ABORT)
            continue;
        if (err == GenTL::GC_ERR_SUCCESS)
        {
            try
            {
                OnRcvEvent(m_pBuffer.get(), size);
            }
            catch (...)
            {
                // The record is lost; the listener keeps going.
            }
            continue;
        }
        {
            GenICam::AutoLock lock(m_lock);
            m_lastError = err;
            m_errorEvent.SetEvent();
        }
        // Access denied means the event is gone for good. Other failures are retried at once:
        // a producer without EventGetData keeps this thread busy until it is stopped.
        if (err == GenTL::GC_ERR_ACCESS_DENIED)
            break;
    }
    m_bListenerRunning.store(false, std::memory_order_release);
    return 0;
}
} // namespace QvApi
