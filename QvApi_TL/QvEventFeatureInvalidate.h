#pragma once

#include "QvApi_TL/QvEvent.h"

namespace QvApi
{
class IQvDeviceInside;

/**
 * \brief The producer's feature-invalidate event of a device (EVENT_FEATURE_INVALIDATE): each
 *        record names a feature of the remote device whose cached value is dropped, so that the
 *        next access reads the camera again. Runs on this listener's thread.
 *
 * Owned by the device, which outlives it.
 */
class QVAPI_API CQvEventFeatureInvalidate final : public CQvEvent
{
public:
    /// \throws As CQvEvent.
    CQvEventFeatureInvalidate(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* pIQvDeviceInside, const char* name);
    ~CQvEventFeatureInvalidate() override;

protected:
    void OnRcvEvent(void* pData, size_t iSize) override;

private:
    IQvDeviceInside* const m_pIQvDeviceInside; // the owning device
};
} // namespace QvApi
