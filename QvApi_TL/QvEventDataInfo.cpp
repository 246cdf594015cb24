#include "QvApi_TL/QvEventDataInfo.h"

#include <new>

#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
SQvEventDataItem_ ReadEventDataItem(CQvGenTLLib* pCQvGenTL, GenTL::EVENT_HANDLE hEvent, const void* pData,
                                    size_t iSize, GenTL::EVENT_DATA_INFO_CMD command, bool throwOnReadFailure)
{
    SQvEventDataItem_ item;
    if (pCQvGenTL->EventGetDataInfo == nullptr)
        return item;
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    size_t outSize = 0;
    item.result = pCQvGenTL->EventGetDataInfo(hEvent, pData, iSize, command, &type, nullptr, &outSize);
    if (item.result != GenTL::GC_ERR_SUCCESS)
        return item;
    try
    {
        if (outSize == static_cast<size_t>(-1))
            throw std::bad_alloc();
        item.pData.reset(new uint8_t[outSize + 1]());
    }
    QV_CATCH_BAD_ALLOC()
    const size_t allocated = outSize;
    item.result = pCQvGenTL->EventGetDataInfo(hEvent, pData, iSize, command, &type, item.pData.get(), &outSize);
    if (item.result != GenTL::GC_ERR_SUCCESS && throwOnReadFailure)
        QV_THROW_GENTL(pCQvGenTL, item.result, "EventGetDataInfo",
                       "%d = EventGetDataInfo(0x%p, 0x%p, %u, %d, 0x%p, 0x%p, 0x%p)", item.result, hEvent, pData,
                       static_cast<unsigned>(iSize), command, static_cast<void*>(&type),
                       static_cast<void*>(item.pData.get()), static_cast<void*>(&outSize));
    // Whatever size the producer left, never more than the buffer holds.
    item.size = outSize < allocated ? outSize : allocated;
    return item;
}
} // namespace QvApi
