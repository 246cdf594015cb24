#pragma once

#include <memory>

#include <GenApi/EventAdapter.h>

#include "QvApi_TL/QvEvent.h"

namespace QvApi
{
class IQvDeviceInside;

/**
 * \brief The camera's own events (EVENT_REMOTE_DEVICE): each record is handed unchanged to an
 *        event adapter on the remote node map (U3V, GEV or generic after the device's TL type),
 *        so that the event features update and their node callbacks fire, on this listener's
 *        thread (SCHED_RR priority 90 where the process may raise it).
 *
 * Owned by the device, which outlives it; the remote node map outlives the adapter.
 */
class QVAPI_API CQvEventRemoteDevice final : public CQvEvent
{
public:
    /**
     * Loads the remote node map if it was not loaded yet.
     * \throws As CQvEvent, and the failures of loading the remote description.
     */
    CQvEventRemoteDevice(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* pIQvDeviceInside, const char* name);
    ~CQvEventRemoteDevice() override;

    /// \return The adapter (tests).
    GenApi::CEventAdapter* GetEventAdapter() const { return m_pCEventAdapter.get(); }

protected:
    void OnRcvEvent(void* pData, size_t iSize) override;

private:
    IQvDeviceInside* const m_pIQvDeviceInside; // the owning device
    std::unique_ptr<GenApi::CEventAdapter> m_pCEventAdapter;
};
} // namespace QvApi
