#include <QvApi/FPS.h>

#include <chrono>
#include <new>

#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
int64_t SteadyNowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
} // namespace

CFPS::CFPS()
{
    try
    {
        m_pTimes.reset(new int64_t[m_capacity]());
    }
    QV_CATCH_BAD_ALLOC()
}

CFPS::~CFPS() = default;

void CFPS::Rcv()
{
    RcvAt(SteadyNowNs());
}

void CFPS::Rcv(unsigned long /*ignored*/)
{
    RcvAt(SteadyNowNs());
}

void CFPS::RcvAt(int64_t steadyTimeNs)
{
    GenICam::AutoLock lock(m_lock);
    // The first sample after construction or Reset() goes to slot 0 without advancing.
    if (m_count != 0)
        m_index = m_index + 1 == m_capacity ? 0 : m_index + 1;
    m_pTimes[m_index] = steadyTimeNs;
    if (m_count <= 0xFFFFFFFEu)
        ++m_count;
}

double CFPS::GetFPS() const
{
    GenICam::AutoLock lock(m_lock);
    if (m_count <= 1)
        return 0.0;
    uint64_t oldest = 0;
    uint64_t samples = m_index + 1;
    if (m_count >= m_capacity)
    {
        samples = m_capacity;
        oldest = m_index + 1 == m_capacity ? 0 : m_index + 1;
    }
    // Milliseconds with microsecond resolution.
    const double elapsedMs = static_cast<double>((m_pTimes[m_index] - m_pTimes[oldest]) / 1000) / 1000.0;
    if (elapsedMs <= 0.0)
        return 0.0;
    return (static_cast<double>(samples * 1000) - 1000.0) / elapsedMs;
}

double CFPS::GetCurrentMSec() const
{
    return static_cast<double>(SteadyNowNs() / 1000) / 1000.0;
}

void CFPS::Reset()
{
    GenICam::AutoLock lock(m_lock);
    m_index = 0;
    m_count = 0;
}
} // namespace QvApi
