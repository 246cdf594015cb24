// CIQvDevicePtrArray: several devices started and stopped together.
#include <QvApi/QvPtrArray.h>

namespace QvApi
{
CIQvDevicePtrArray::~CIQvDevicePtrArray()
{
    try
    {
        Release();
    }
    catch (...)
    {
    }
}

void CIQvDevicePtrArray::Release()
{
    while (GetSize() != 0)
        Deregister(0)->Release();
}

void CIQvDevicePtrArray::AcquisitionStart()
{
    for (size_t index = 0; index < GetSize(); ++index)
        (*this)[index]->AcquisitionStart();
}

void CIQvDevicePtrArray::AcquisitionStop()
{
    for (size_t index = 0; index < GetSize(); ++index)
        (*this)[index]->AcquisitionStop();
}
} // namespace QvApi
