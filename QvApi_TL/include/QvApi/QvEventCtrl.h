#pragma once

#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief Start and stop of a module's GenTL event listener threads.
 *
 * A module registers its events with the producer when it is built, but listens only after
 * StartEventAcquisitionThread(): until then no error callback runs and (for a device) no
 * device loss or feature event is seen. One controlling thread at a time per module.
 */
class IQvEventCtrl
{
public:
    /**
     * \brief Starts the module's listener threads (one per registered event); a running one is
     *        left alone.
     * \throws GenICam::BadAllocException when a receive buffer cannot be allocated.
     */
    virtual void StartEventAcquisitionThread() = 0;
    /**
     * \brief Stops and joins the module's listener threads. Waits at most for one EventGetData
     *        time-out (500 ms) per thread when the producer ignores the abort request.
     * \throws CQvGenTLErrorException when the producer refuses EventKill (the thread is stopped
     *         and joined anyway).
     */
    virtual void StopEventAcquisitionThread() = 0;

protected:
    ~IQvEventCtrl() = default; // not deleted through this interface
};
} // namespace QvApi
