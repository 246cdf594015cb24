#pragma once

#include <ctime>

#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief The absolute CLOCK_REALTIME deadline of a wait of \a timeoutMs started at \a now.
 *
 * Whole seconds are split off only from 1000 ms upwards; the nanoseconds carry into the seconds
 * only when they exceed one second strictly, so exactly 1,000,000,000 ns is passed on as it is
 * (pthread_cond_timedwait then refuses it with EINVAL, which the waits report as a time-out).
 */
QVAPI_API timespec MakeWaitDeadline(unsigned int timeoutMs, const timespec& now);
} // namespace QvApi
