#include "QvApi_TL/QvIFDeviceInfo.h"

#include "QvApi_TL/QvGenTLText.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
GenICam::gcstring CQvIFDeviceInfo::GetIFDeviceInfoString(GenTL::DEVICE_INFO_CMD cmd) const
{
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    try
    {
        return ReadGenTLText(
            [&](char* pBuffer, size_t* pSize) {
                return QV_GENTL_CALL(m_pCQvGenTL, IFGetDeviceInfo, m_hIF, m_deviceID.c_str(), cmd, &type, pBuffer,
                                     pSize);
            },
            [&](GenTL::GC_ERROR err, void* pBuffer, size_t* pSize) {
                QV_THROW_GENTL(m_pCQvGenTL, err, "IFGetDeviceInfo",
                               "%d = IFGetDeviceInfo(0x%p, 0x%p, %d, 0x%p, 0x%p, 0x%p)", err, m_hIF,
                               static_cast<const void*>(m_deviceID.c_str()), cmd, static_cast<void*>(&type), pBuffer,
                               static_cast<void*>(pSize));
            });
    }
    QV_CATCH_BAD_ALLOC()
}

template <typename T>
T CQvIFDeviceInfo::GetIFDeviceInfo(GenTL::DEVICE_INFO_CMD cmd) const
{
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    T value{};
    size_t size = sizeof(value);
    const GenTL::GC_ERROR err =
        QV_GENTL_CALL(m_pCQvGenTL, IFGetDeviceInfo, m_hIF, m_deviceID.c_str(), cmd, &type, &value, &size);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "IFGetDeviceInfo", "%d = IFGetDeviceInfo(0x%p, 0x%p, %d, 0x%p, 0x%p, 0x%p)", err,
                   m_hIF, static_cast<const void*>(m_deviceID.c_str()), cmd, static_cast<void*>(&type),
                   static_cast<void*>(&value), static_cast<void*>(&size));
    return value;
}

GenICam::gcstring CQvIFDeviceInfo::GetID() const
{
    return m_deviceID;
}

GenICam::gcstring CQvIFDeviceInfo::GetVendor() const
{
    return GetIFDeviceInfoString(GenTL::DEVICE_INFO_VENDOR);
}

GenICam::gcstring CQvIFDeviceInfo::GetModel() const
{
    return GetIFDeviceInfoString(GenTL::DEVICE_INFO_MODEL);
}

GenICam::gcstring CQvIFDeviceInfo::GetTLType() const
{
    return GetIFDeviceInfoString(GenTL::DEVICE_INFO_TLTYPE);
}

GenICam::gcstring CQvIFDeviceInfo::GetDisplayName() const
{
    return GetIFDeviceInfoString(GenTL::DEVICE_INFO_DISPLAYNAME);
}

GenTL::DEVICE_ACCESS_STATUS CQvIFDeviceInfo::GetAccessStatus() const
{
    return GetIFDeviceInfo<GenTL::DEVICE_ACCESS_STATUS>(GenTL::DEVICE_INFO_ACCESS_STATUS);
}

GenICam::gcstring CQvIFDeviceInfo::GetUserDefinedName() const
{
    return GetIFDeviceInfoString(GenTL::DEVICE_INFO_USER_DEFINED_NAME);
}

GenICam::gcstring CQvIFDeviceInfo::GetSerialNumber() const
{
    return GetIFDeviceInfoString(GenTL::DEVICE_INFO_SERIAL_NUMBER);
}

GenICam::gcstring CQvIFDeviceInfo::GetVersion() const
{
    return GetIFDeviceInfoString(GenTL::DEVICE_INFO_VERSION);
}

uint64_t CQvIFDeviceInfo::GetTimestampFrequency() const
{
    return GetIFDeviceInfo<uint64_t>(GenTL::DEVICE_INFO_TIMESTAMP_FREQUENCY);
}
} // namespace QvApi
