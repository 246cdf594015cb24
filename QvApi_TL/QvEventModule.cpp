#include "QvApi_TL/QvEventModule.h"

#include <new>

#include <GenApi/INodeMap.h>

#include "QvApi_TL/QvEventDataInfo.h"
#include "QvApi_TL/QvPortInside.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CQvEventModule::CQvEventModule(CQvGenTLLib* pCQvGenTL, IQvPortInside* pIQvPortInside, const char* name)
    : CQvEvent(pCQvGenTL, pIQvPortInside->GetPortHandle(), GenTL::EVENT_MODULE, name),
      m_pIQvPortInside(pIQvPortInside)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    try
    {
        m_pCEventAdapter = std::make_unique<GenApi::CEventAdapterGeneric>(m_pIQvPortInside->GetINodeMap());
    }
    QV_CATCH_BAD_ALLOC()
}

CQvEventModule::~CQvEventModule()
{
    // The thread may be delivering: stop it before the adapter goes.
    Shutdown();
}

void CQvEventModule::OnRcvEvent(void* pData, size_t iSize)
{
    if (m_pCQvGenTL->EventGetDataInfo == nullptr)
        return;
    // A failed read ends only that item; the value is delivered with whatever the read left.
    const SQvEventDataItem_ id =
        ReadEventDataItem(m_pCQvGenTL, m_hEvent, pData, iSize, GenTL::EVENT_DATA_ID, false);
    const SQvEventDataItem_ value =
        ReadEventDataItem(m_pCQvGenTL, m_hEvent, pData, iSize, GenTL::EVENT_DATA_VALUE, false);
    if (id.result != GenTL::GC_ERR_SUCCESS || id.pData == nullptr)
        return;
    try
    {
        m_pCEventAdapter->DeliverMessage(value.pData.get(), static_cast<uint32_t>(value.size),
                                         GenICam::gcstring(id.Text()));
    }
    catch (...)
    {
    }
}
} // namespace QvApi
