// CIQvDataStreamPtrArray: several streams started, stopped and polled together.
#include <QvApi/QvDataStream.h>

#include <vector>

#include <QvApi/EventObject.h>

#include "QvApi_TL/QvAutoPtrArray.h"
#include "QvApi_TL/QvDataStreamInside.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
template class CQvAutoPtrArray<IQvDataStreamReleasable, IQvDataStream>;

namespace
{
// Streams waited on without touching the heap; larger arrays use a vector.
constexpr size_t kInlineStreamCount = 16;
} // namespace

CIQvDataStreamPtrArray::~CIQvDataStreamPtrArray()
{
    try
    {
        Release();
    }
    catch (...)
    {
    }
}

void CIQvDataStreamPtrArray::Release()
{
    while (GetSize() != 0)
        Deregister(0)->Release();
}

IQvStreamBufferReleasable* CIQvDataStreamPtrArray::RetrieveBuffer(uint32_t timeoutMs, EQvTimeoutHandling_t handling)
{
    const size_t count = GetSize();
    void* inlineHandles[kInlineStreamCount];
    std::vector<void*> heapHandles;
    void** handles = inlineHandles;
    if (count > kInlineStreamCount)
    {
        try
        {
            heapHandles.resize(count);
        }
        QV_CATCH_BAD_ALLOC()
        handles = heapHandles.data();
    }
    for (size_t i = 0; i < count; ++i)
    {
        IQvDataStreamInside* pIQvDataStreamInside = dynamic_cast<IQvDataStreamInside*>((*this)[i]);
        QV_ASSERT(pIQvDataStreamInside != nullptr, "(pIQvDataStreamInside) != NULL");
        handles[i] = pIQvDataStreamInside->GetIsFilledStreamBufferEventHandle();
    }
    const unsigned int result =
        WaitForMultipleObjects(static_cast<unsigned int>(count), handles, false, static_cast<unsigned int>(timeoutMs));
    if (result < count)
        return (*this)[result]->RetrieveBuffer(0, handling);
    if (handling == QvTimeoutHandling_Throw)
        QV_THROW(TimeoutException, "A timeout occurred during the processing of IQvDataStream::RetrieveBuffer(%u, %u)",
                 timeoutMs, static_cast<unsigned>(handling));
    return nullptr;
}

void CIQvDataStreamPtrArray::StartAcquisition(uint64_t count, GenTL::ACQ_START_FLAGS flags)
{
    for (size_t index = 0; index < GetSize(); ++index)
        (*this)[index]->StartAcquisition(count, flags);
}

void CIQvDataStreamPtrArray::StopAcquisition(GenTL::ACQ_STOP_FLAGS flags)
{
    for (size_t index = 0; index < GetSize(); ++index)
        (*this)[index]->StopAcquisition(flags);
}

bool CIQvDataStreamPtrArray::IsGrabbingAll()
{
    if (GetSize() == 0)
        return false;
    for (size_t index = 0; index < GetSize(); ++index)
    {
        if (!(*this)[index]->IsGrabbing())
            return false;
    }
    return true;
}

bool CIQvDataStreamPtrArray::IsGrabbingAny()
{
    for (size_t index = 0; index < GetSize(); ++index)
    {
        if ((*this)[index]->IsGrabbing())
            return true;
    }
    return false;
}
} // namespace QvApi
