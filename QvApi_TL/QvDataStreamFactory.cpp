// Where the device module meets the data stream class.
#include "QvApi_TL/QvDataStreamFactory.h"

#include "QvApi_TL/QvDataStream.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
IQvDataStreamReleasable* CreateQvDataStream(CQvGenTLLib* pCQvGenTL, IQvDeviceInside* pIQvDeviceInside,
                                            GenTL::DS_HANDLE hDataStream, IQvAllocator* pAllocator)
{
    try
    {
        return new CQvDataStream(pCQvGenTL, pIQvDeviceInside, hDataStream, pAllocator);
    }
    catch (const std::bad_alloc&)
    {
        throw; // the device closes the handle
    }
    catch (const GenICam::BadAllocException&)
    {
        throw; // likewise
    }
    catch (...)
    {
        // Nobody would own the stream: give the handle back to the producer.
        if (pCQvGenTL->DSClose != nullptr)
            pCQvGenTL->DSClose(hDataStream);
        throw;
    }
}
} // namespace QvApi
