#pragma once

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvDevice.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief Answers an open device's information queries (DevGetInfo). Embedded in CQvDevice;
 *        any thread.
 */
class QVAPI_API CQvDeviceInfo : public IQvDeviceInfo
{
public:
    CQvDeviceInfo(CQvGenTLLib* pCQvGenTL, GenTL::DEV_HANDLE hDevice) : m_pCQvGenTL(pCQvGenTL), m_hDevice(hDevice) {}
    virtual ~CQvDeviceInfo() = default;
    CQvDeviceInfo(const CQvDeviceInfo&) = delete;
    CQvDeviceInfo& operator=(const CQvDeviceInfo&) = delete;

    GenICam::gcstring GetID() const override;
    GenICam::gcstring GetVendor() const override;
    GenICam::gcstring GetModel() const override;
    GenICam::gcstring GetTLType() const override;
    GenICam::gcstring GetDisplayName() const override;
    GenTL::DEVICE_ACCESS_STATUS GetAccessStatus() const override;
    GenICam::gcstring GetUserDefinedName() const override;
    GenICam::gcstring GetSerialNumber() const override;
    GenICam::gcstring GetVersion() const override;
    uint64_t GetTimestampFrequency() const override;

private:
    GenICam::gcstring GetDevInfoString(GenTL::DEVICE_INFO_CMD cmd) const;
    template <typename T>
    T GetDevInfo(GenTL::DEVICE_INFO_CMD cmd) const;

    CQvGenTLLib* const m_pCQvGenTL; // borrowed from the system
    const GenTL::DEV_HANDLE m_hDevice;
};
} // namespace QvApi
