#pragma once

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvDevice.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief One device as its interface lists it, before it is opened (IFGetDeviceInfo by ID).
 *        Owned by the interface's device list; rebuilt with the list. Any thread.
 */
class QVAPI_API CQvIFDeviceInfo : public IQvDeviceInfo
{
public:
    CQvIFDeviceInfo(CQvGenTLLib* pCQvGenTL, GenTL::IF_HANDLE hIF, const GenICam::gcstring& deviceID)
        : m_pCQvGenTL(pCQvGenTL), m_hIF(hIF), m_deviceID(deviceID)
    {
    }
    virtual ~CQvIFDeviceInfo() = default;
    CQvIFDeviceInfo(const CQvIFDeviceInfo&) = delete;
    CQvIFDeviceInfo& operator=(const CQvIFDeviceInfo&) = delete;

    /// \return The ID the interface listed (no producer call).
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
    GenICam::gcstring GetIFDeviceInfoString(GenTL::DEVICE_INFO_CMD cmd) const;
    template <typename T>
    T GetIFDeviceInfo(GenTL::DEVICE_INFO_CMD cmd) const;

    CQvGenTLLib* const m_pCQvGenTL; // borrowed from the system
    const GenTL::IF_HANDLE m_hIF;
    const GenICam::gcstring m_deviceID;
};
} // namespace QvApi
