#include "QvApi_TL/QvDeviceInfo.h"

#include "QvApi_TL/QvGenTLText.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
GenICam::gcstring CQvDeviceInfo::GetDevInfoString(GenTL::DEVICE_INFO_CMD cmd) const
{
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    try
    {
        return ReadGenTLText(
            [&](char* pBuffer, size_t* pSize) {
                return QV_GENTL_CALL(m_pCQvGenTL, DevGetInfo, m_hDevice, cmd, &type, pBuffer, pSize);
            },
            [&](GenTL::GC_ERROR err, void* pBuffer, size_t* pSize) {
                QV_THROW_GENTL(m_pCQvGenTL, err, "DevGetInfo", "%d = DevGetInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)", err,
                               m_hDevice, cmd, static_cast<void*>(&type), pBuffer, static_cast<void*>(pSize));
            });
    }
    QV_CATCH_BAD_ALLOC()
}

template <typename T>
T CQvDeviceInfo::GetDevInfo(GenTL::DEVICE_INFO_CMD cmd) const
{
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    T value{};
    size_t size = sizeof(value);
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DevGetInfo, m_hDevice, cmd, &type, &value, &size);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "DevGetInfo", "%d = DevGetInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)", err, m_hDevice, cmd,
                   static_cast<void*>(&type), static_cast<void*>(&value), static_cast<void*>(&size));
    return value;
}

GenICam::gcstring CQvDeviceInfo::GetID() const
{
    return GetDevInfoString(GenTL::DEVICE_INFO_ID);
}

GenICam::gcstring CQvDeviceInfo::GetVendor() const
{
    return GetDevInfoString(GenTL::DEVICE_INFO_VENDOR);
}

GenICam::gcstring CQvDeviceInfo::GetModel() const
{
    return GetDevInfoString(GenTL::DEVICE_INFO_MODEL);
}

GenICam::gcstring CQvDeviceInfo::GetTLType() const
{
    return GetDevInfoString(GenTL::DEVICE_INFO_TLTYPE);
}

GenICam::gcstring CQvDeviceInfo::GetDisplayName() const
{
    return GetDevInfoString(GenTL::DEVICE_INFO_DISPLAYNAME);
}

GenTL::DEVICE_ACCESS_STATUS CQvDeviceInfo::GetAccessStatus() const
{
    return GetDevInfo<GenTL::DEVICE_ACCESS_STATUS>(GenTL::DEVICE_INFO_ACCESS_STATUS);
}

GenICam::gcstring CQvDeviceInfo::GetUserDefinedName() const
{
    return GetDevInfoString(GenTL::DEVICE_INFO_USER_DEFINED_NAME);
}

GenICam::gcstring CQvDeviceInfo::GetSerialNumber() const
{
    return GetDevInfoString(GenTL::DEVICE_INFO_SERIAL_NUMBER);
}

GenICam::gcstring CQvDeviceInfo::GetVersion() const
{
    return GetDevInfoString(GenTL::DEVICE_INFO_VERSION);
}

uint64_t CQvDeviceInfo::GetTimestampFrequency() const
{
    return GetDevInfo<uint64_t>(GenTL::DEVICE_INFO_TIMESTAMP_FREQUENCY);
}
} // namespace QvApi
