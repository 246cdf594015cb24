// PLACEHOLDER until the data stream class exists: replace the body with
//     return new CQvDataStream(pCQvGenTL, pIQvDeviceInside, hDataStream, pAllocator);
// (inside a try with QV_CATCH_BAD_ALLOC()).
#include "QvApi_TL/QvDataStreamFactory.h"

#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
IQvDataStreamReleasable* CreateQvDataStream(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* /*pIQvDeviceInside*/,
                                            GenTL::DS_HANDLE hDataStream, IQvAllocator* /*pAllocator*/)
{
    // Nobody would own the stream: give the handle back to the producer.
    if (pCQvGenTL->DSClose != nullptr)
        pCQvGenTL->DSClose(hDataStream);
    QV_THROW(RuntimeException, "Data streams are not available in this build.");
}
} // namespace QvApi
