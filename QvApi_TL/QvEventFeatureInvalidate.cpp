#include "QvApi_TL/QvEventFeatureInvalidate.h"

#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <QvApi/QvPort.h>

#include "QvApi_TL/QvDeviceInside.h"
#include "QvApi_TL/QvEventDataInfo.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CQvEventFeatureInvalidate::CQvEventFeatureInvalidate(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* pIQvDeviceInside,
                                                     const char* name)
    : CQvEvent(pCQvGenTL, pIQvDeviceInside->GetDeviceHandle(), GenTL::EVENT_FEATURE_INVALIDATE, name),
      m_pIQvDeviceInside(pIQvDeviceInside)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
}

CQvEventFeatureInvalidate::~CQvEventFeatureInvalidate()
{
    Shutdown();
}

void CQvEventFeatureInvalidate::OnRcvEvent(void* pData, size_t iSize)
{
    QV_ASSERT(m_pIQvDeviceInside != nullptr, "m_pIQvDeviceInside != NULL");
    QV_ASSERT(m_hEvent != nullptr, "m_hEvent != NULL");
    const SQvEventDataItem_ name = ReadEventDataItem(m_pCQvGenTL, m_hEvent, pData, iSize, GenTL::EVENT_DATA_ID);
    if (name.pData == nullptr)
        return;
    GenApi::INodeMap* pNodeMap = m_pIQvDeviceInside->GetRemoteIQvPort()->GetINodeMap();
    GenApi::INode* pNode = pNodeMap != nullptr ? pNodeMap->GetNode(name.Text()) : nullptr;
    if (pNode == nullptr)
        QV_THROW(RuntimeException, "Node %s not found.", name.Text());
    pNode->InvalidateNode();
}
} // namespace QvApi
