#include <QvApi/BPS.h>

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

CBPS::CBPS()
{
    try
    {
        m_pTimes.reset(new int64_t[m_capacity]());
    }
    QV_CATCH_BAD_ALLOC()
    try
    {
        m_pBytes.reset(new uint64_t[m_capacity]());
    }
    QV_CATCH_BAD_ALLOC()
}

CBPS::~CBPS() = default;

void CBPS::Rcv(unsigned long nBytes)
{
    RcvAt(nBytes, SteadyNowNs());
}

void CBPS::RcvAt(unsigned long nBytes, int64_t steadyTimeNs)
{
    GenICam::AutoLock lock(m_lock);
    if (m_count != 0)
        m_index = m_index + 1 == m_capacity ? 0 : m_index + 1;
    m_pTimes[m_index] = steadyTimeNs;
    m_pBytes[m_index] = nBytes;
    if (m_count <= 0xFFFFFFFEu)
        ++m_count;
}

double CBPS::GetBPS() const
{
    GenICam::AutoLock lock(m_lock);
    if (m_count <= 1)
        return 0.0;
    uint64_t oldest = 0;
    uint64_t samples = m_count;
    if (m_count >= m_capacity)
    {
        samples = m_capacity;
        oldest = m_index + 1 == m_capacity ? 0 : m_index + 1;
    }
    const double elapsedMs = static_cast<double>((m_pTimes[m_index] - m_pTimes[oldest]) / 1000) / 1000.0;
    // The oldest sample only opens the interval: its bytes arrived before it.
    uint64_t sum = 0;
    uint64_t slot = oldest;
    for (uint64_t k = 1; k < samples; ++k)
    {
        slot = slot + 1 == m_capacity ? 0 : slot + 1;
        sum += m_pBytes[slot];
    }
    if (elapsedMs <= 0.0)
        return 0.0;
    return static_cast<double>(sum) * 1000.0 / elapsedMs;
}

double CBPS::GetCurrentMSec() const
{
    return static_cast<double>(SteadyNowNs() / 1000) / 1000.0;
}

void CBPS::Reset()
{
    GenICam::AutoLock lock(m_lock);
    m_index = 0;
    m_count = 0;
}
} // namespace QvApi
