#pragma once

#include "QvApi_TL/QvEvent.h"

namespace QvApi
{
/**
 * \brief The new-buffer event of a data stream: each record names a filled buffer through the
 *        user pointer it was announced with (its IQvStreamBufferInside*), which is handed to
 *        that buffer's stream (OnNewBuffer) on this listener's thread.
 *
 * Runs at SCHED_RR priority 90 where the process may raise it. Owned by the data stream while
 * it acquires.
 */
class QVAPI_API CQvEventNewBuffer final : public CQvEvent
{
public:
    /// \throws As CQvEvent.
    CQvEventNewBuffer(CQvGenTLLib* pCQvGenTL, GenTL::EVENTSRC_HANDLE hEventSrc, const char* name);
    ~CQvEventNewBuffer() override;

protected:
    /// \param[in] iSize At least sizeof(EVENT_NEW_BUFFER_DATA); anything shorter is our bug.
    void OnRcvEvent(void* pData, size_t iSize) override;
};
} // namespace QvApi
