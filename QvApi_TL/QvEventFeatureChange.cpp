#include "QvApi_TL/QvEventFeatureChange.h"

#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>
#include <QvApi/QvPort.h>
#include <GenApi/IValue.h>

#include "QvApi_TL/QvDeviceInside.h"
#include "QvApi_TL/QvEventDataInfo.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CQvEventFeatureChange::CQvEventFeatureChange(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* pIQvDeviceInside,
                                             const char* name)
    : CQvEvent(pCQvGenTL, pIQvDeviceInside->GetDeviceHandle(), GenTL::EVENT_FEATURE_CHANGE, name),
      m_pIQvDeviceInside(pIQvDeviceInside)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
}

CQvEventFeatureChange::~CQvEventFeatureChange()
{
    Shutdown();
}

void CQvEventFeatureChange::OnRcvEvent(void* pData, size_t iSize)
{
    QV_ASSERT(m_pIQvDeviceInside != nullptr, "m_pIQvDeviceInside != NULL");
    QV_ASSERT(m_hEvent != nullptr, "m_hEvent != NULL");
    const SQvEventDataItem_ name = ReadEventDataItem(m_pCQvGenTL, m_hEvent, pData, iSize, GenTL::EVENT_DATA_ID);
    const SQvEventDataItem_ value = ReadEventDataItem(m_pCQvGenTL, m_hEvent, pData, iSize, GenTL::EVENT_DATA_VALUE);
    if (name.pData == nullptr || value.pData == nullptr)
        return;
    GenApi::INodeMap* pNodeMap = m_pIQvDeviceInside->GetRemoteIQvPort()->GetINodeMap();
    GenApi::INode* pNode = pNodeMap != nullptr ? pNodeMap->GetNode(name.Text()) : nullptr;
    GenApi::IValue* pValue = dynamic_cast<GenApi::IValue*>(pNode);
    if (pValue == nullptr)
        QV_THROW(RuntimeException, "Node %s not found.", name.Text());
    pValue->FromString(value.Text(), true);
}
} // namespace QvApi
