// CIQvSystemPtrArray: several systems searched together for a device.
#include <QvApi/QvPtrArray.h>

#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CIQvSystemPtrArray::~CIQvSystemPtrArray()
{
    try
    {
        Release();
    }
    catch (...)
    {
    }
}

void CIQvSystemPtrArray::Release()
{
    while (GetSize() != 0)
        Deregister(0)->Release();
}

IQvDeviceReleasable* CIQvSystemPtrArray::CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_FLAGS flags)
{
    for (size_t index = 0; index < GetSize(); ++index)
    {
        try
        {
            IQvDeviceReleasable* pDevice = (*this)[index]->CreateFirstIQvDevice(flags);
            if (pDevice != nullptr)
                return pDevice;
        }
        catch (...)
        {
            // This system has nothing to offer; try the next.
        }
    }
    QV_THROW(RuntimeException, "There is no available device.");
}
} // namespace QvApi
