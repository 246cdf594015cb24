#pragma once

#include "QvApi_TL/QvEvent.h"

namespace QvApi
{
class IQvDeviceInside;

/**
 * \brief The producer's feature-change event of a device (EVENT_FEATURE_CHANGE): each record
 *        names a feature of the remote device and its new value as text, which is written to
 *        the remote node map (with verification) on this listener's thread.
 *
 * Owned by the device, which outlives it. A feature the node map lacks changes nothing.
 */
class QVAPI_API CQvEventFeatureChange final : public CQvEvent
{
public:
    /// \throws As CQvEvent.
    CQvEventFeatureChange(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* pIQvDeviceInside, const char* name);
    ~CQvEventFeatureChange() override;

protected:
    void OnRcvEvent(void* pData, size_t iSize) override;

private:
    IQvDeviceInside* const m_pIQvDeviceInside; // the owning device
};
} // namespace QvApi
