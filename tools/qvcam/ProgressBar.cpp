#include "ProgressBar.h"

#include <unistd.h>

#include <string>

namespace QvCam
{
CProgressBar::CProgressBar(size_t total)
    : m_total(total == 0 ? 1 : total), m_enabled(isatty(STDERR_FILENO) == 1),
      m_start(std::chrono::steady_clock::now()), m_lastDraw(m_start - std::chrono::seconds(1))
{
}

CProgressBar::~CProgressBar()
{
    if (m_drawn)
        std::fprintf(stderr, "\r\033[K");
}

void CProgressBar::Update(size_t done)
{
    if (!m_enabled)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (done < m_total && now - m_lastDraw < std::chrono::milliseconds(100))
        return;
    m_lastDraw = now;
    const int width = 30;
    const int filled = static_cast<int>(width * (done > m_total ? m_total : done) / m_total);
    const double seconds = std::chrono::duration<double>(now - m_start).count();
    std::string bar(static_cast<size_t>(filled), '#');
    bar.append(static_cast<size_t>(width - filled), '.');
    std::fprintf(stderr, "\r[%s] %zu/%zu  %.1f frames/s\033[K", bar.c_str(), done, m_total,
                 seconds > 0 ? static_cast<double>(done) / seconds : 0.0);
    std::fflush(stderr);
    m_drawn = true;
}
} // namespace QvCam
