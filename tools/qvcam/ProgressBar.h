#pragma once

#include <stddef.h>

#include <chrono>
#include <cstdio>

namespace QvCam
{
/**
 * \brief A one-line progress bar on stderr, redrawn in place, shown only when stderr is a
 *        terminal (logs and pipes stay clean). One thread.
 */
class CProgressBar
{
public:
    /// \param[in] total Steps to reach 100 %.
    explicit CProgressBar(size_t total);
    /// Clears the line when it was drawn.
    ~CProgressBar();
    CProgressBar(const CProgressBar&) = delete;
    CProgressBar& operator=(const CProgressBar&) = delete;

    /// Shows \a done steps and the rate since construction; redraws at most ten times a second.
    void Update(size_t done);

private:
    const size_t m_total;
    const bool m_enabled;
    bool m_drawn = false;
    const std::chrono::steady_clock::time_point m_start;
    std::chrono::steady_clock::time_point m_lastDraw;
};
} // namespace QvCam
