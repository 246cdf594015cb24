#include "QvApi_TL/QvEventNewBuffer.h"

#include <cstring>

#include "QvApi_TL/QvDataStreamInside.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// The real-time priority of new-buffer listeners: buffers must not wait for other threads.
constexpr int kNewBufferPriority = 90;
} // namespace

CQvEventNewBuffer::CQvEventNewBuffer(CQvGenTLLib* pCQvGenTL, GenTL::EVENTSRC_HANDLE hEventSrc, const char* name)
    : CQvEvent(pCQvGenTL, hEventSrc, GenTL::EVENT_NEW_BUFFER, name)
{
    SetPriority(kNewBufferPriority);
}

CQvEventNewBuffer::~CQvEventNewBuffer()
{
    Shutdown();
}

void CQvEventNewBuffer::OnRcvEvent(void* pData, size_t iSize)
{
    QV_ASSERT(sizeof(GenTL::EVENT_NEW_BUFFER_DATA) <= iSize, "sizeof(EVENT_NEW_BUFFER_DATA) <= iSize");
    GenTL::EVENT_NEW_BUFFER_DATA record;
    std::memcpy(&record, pData, sizeof(record));
    try
    {
        // The buffer announced itself with its own inside interface as the user pointer.
        IQvStreamBufferInside* pBuffer = static_cast<IQvStreamBufferInside*>(record.pUserPointer);
        if (pBuffer != nullptr)
            pBuffer->GetIQvDataStreamInside()->OnNewBuffer(pBuffer);
    }
    catch (...)
    {
    }
}
} // namespace QvApi
