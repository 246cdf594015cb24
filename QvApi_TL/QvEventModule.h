#pragma once

#include <memory>

#include <GenApi/EventAdapterGeneric.h>

#include "QvApi_TL/QvEvent.h"

namespace QvApi
{
class IQvPortInside;

/**
 * \brief A module's own GenTL events (EVENT_MODULE) on its port: each record's payload
 *        (EVENT_DATA_VALUE) and ID (EVENT_DATA_ID) go to a generic event adapter on the port's
 *        node map, on this listener's thread. This is how the local device module's
 *        "EventDeviceLost" fires.
 *
 * Owned by the module (interface, device), which outlives it with its port.
 */
class QVAPI_API CQvEventModule final : public CQvEvent
{
public:
    /**
     * Loads the port's node map if it was not loaded yet.
     * \throws As CQvEvent, and the failures of loading the port's description.
     */
    CQvEventModule(CQvGenTLLib* pCQvGenTL, IQvPortInside* pIQvPortInside, const char* name);
    ~CQvEventModule() override;

protected:
    void OnRcvEvent(void* pData, size_t iSize) override;

private:
    IQvPortInside* const m_pIQvPortInside; // the module's port
    std::unique_ptr<GenApi::CEventAdapterGeneric> m_pCEventAdapter;
};
} // namespace QvApi
