#pragma once

#include <cstdint>
#include <memory>

#include <Base/GCSynch.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief Frame rate over the last 500 frames (a sliding window of arrival times).
 *
 * Rcv() is called once per frame, typically on the acquisition thread; GetFPS() and Reset()
 * from any thread. Each call takes the counter's own lock. Not copyable.
 */
class QVAPI_API CFPS
{
public:
    /// \throws GenICam::BadAllocException when the window cannot be allocated.
    CFPS();
    ~CFPS();
    CFPS(const CFPS&) = delete;
    CFPS& operator=(const CFPS&) = delete;

    /// Records one frame arriving now.
    void Rcv();
    /// Records one frame arriving now; the argument is ignored.
    void Rcv(unsigned long ignored);
    /// Records one frame that arrived at \a steadyTimeNs (steady clock, nanoseconds), e.g. to
    /// replay recorded arrival times.
    void RcvAt(int64_t steadyTimeNs);

    /// Frames per second over the window: (samples - 1) intervals over the time they span;
    /// 0.0 with fewer than two samples or no measurable time between them (under 1 µs).
    double GetFPS() const;
    /// The steady clock in milliseconds, with microsecond resolution. Takes no lock.
    double GetCurrentMSec() const;
    /// Forgets the samples: the next one opens a new window.
    void Reset();

private:
    uint64_t m_index = 0;
    uint64_t m_count = 0;
    const uint64_t m_capacity = 500;
    mutable GenICam::CLock m_lock;
    std::unique_ptr<int64_t[]> m_pTimes; // arrival times in steady-clock ns, capacity entries
};
} // namespace QvApi
