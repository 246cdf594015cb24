#pragma once

#include <cstdint>
#include <memory>

#include <Base/GCSynch.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief Byte rate over the last 500 buffers (a sliding window of arrival times and sizes).
 *
 * The oldest sample of the window only opens the interval: its bytes are not counted. Rcv() is
 * called once per buffer, typically on the acquisition thread; GetBPS() and Reset() from any
 * thread. Each call takes the counter's own lock. Not copyable.
 */
class QVAPI_API CBPS
{
public:
    /// \throws GenICam::BadAllocException when the window cannot be allocated.
    CBPS();
    ~CBPS();
    CBPS(const CBPS&) = delete;
    CBPS& operator=(const CBPS&) = delete;

    /// Records one buffer of \a nBytes arriving now.
    void Rcv(unsigned long nBytes);
    /// Records one buffer of \a nBytes that arrived at \a steadyTimeNs (steady clock, ns).
    void RcvAt(unsigned long nBytes, int64_t steadyTimeNs);

    /// Bytes per second over the window; 0.0 with fewer than two samples or no measurable time.
    double GetBPS() const;
    /// The steady clock in milliseconds, with microsecond resolution. Takes no lock.
    double GetCurrentMSec() const;
    /// Forgets the samples: the next one opens a new window.
    void Reset();

private:
    uint64_t m_index = 0;
    uint64_t m_count = 0;
    const uint64_t m_capacity = 500;
    mutable GenICam::CLock m_lock;
    std::unique_ptr<int64_t[]> m_pTimes;  // arrival times in steady-clock ns, capacity entries
    std::unique_ptr<uint64_t[]> m_pBytes; // buffer sizes, capacity entries
};
} // namespace QvApi
