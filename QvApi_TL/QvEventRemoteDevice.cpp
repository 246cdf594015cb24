#include "QvApi_TL/QvEventRemoteDevice.h"

#include <new>

#include <GenApi/EventAdapterGEV.h>
#include <GenApi/EventAdapterGeneric.h>
#include <GenApi/EventAdapterU3V.h>
#include <GenApi/INodeMap.h>
#include <QvApi/QvPort.h>

#include "QvApi_TL/QvDeviceInside.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// Camera events must not queue up behind ordinary threads.
constexpr int kRemoteDevicePriority = 90;
} // namespace

CQvEventRemoteDevice::CQvEventRemoteDevice(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* pIQvDeviceInside,
                                           const char* name)
    : CQvEvent(pCQvGenTL, pIQvDeviceInside->GetDeviceHandle(), GenTL::EVENT_REMOTE_DEVICE, name),
      m_pIQvDeviceInside(pIQvDeviceInside)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    SetPriority(kRemoteDevicePriority);
    const GenICam::gcstring tlType = m_pIQvDeviceInside->GetIQvDeviceInfo()->GetTLType();
    IQvPort* pIQvPort = m_pIQvDeviceInside->GetRemoteIQvPort();
    QV_ASSERT(pIQvPort != nullptr, "pIQvPort");
    GenApi::INodeMap* pINodeMap = pIQvPort->GetINodeMap();
    QV_ASSERT(pINodeMap != nullptr, "pINodeMap");
    try
    {
        if (tlType == "U3V")
            m_pCEventAdapter = std::make_unique<GenApi::CEventAdapterU3V>(pINodeMap);
        else if (tlType == "GEV")
            m_pCEventAdapter = std::make_unique<GenApi::CEventAdapterGEV>(pINodeMap);
        else
            m_pCEventAdapter = std::make_unique<GenApi::CEventAdapterGeneric>(pINodeMap);
    }
    QV_CATCH_BAD_ALLOC()
}

CQvEventRemoteDevice::~CQvEventRemoteDevice()
{
    // The thread may be delivering: stop it before the adapter goes.
    Shutdown();
}

void CQvEventRemoteDevice::OnRcvEvent(void* pData, size_t iSize)
{
    QV_ASSERT(m_pIQvDeviceInside != nullptr, "m_pIQvDeviceInside != NULL");
    QV_ASSERT(m_pCEventAdapter != nullptr, "m_pCEventAdapter != NULL");
    try
    {
        m_pCEventAdapter->DeliverMessage(static_cast<const uint8_t*>(pData), static_cast<uint32_t>(iSize));
    }
    catch (...)
    {
    }
}
} // namespace QvApi
