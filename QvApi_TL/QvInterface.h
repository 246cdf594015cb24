#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include <Base/GCString.h>
#include <Base/GCSynch.h>
#include <GenTL/GenTL.h>

#include "QvApi_TL/QvIFDeviceInfo.h"
#include "QvApi_TL/QvInterfaceInfo.h"
#include "QvApi_TL/QvInterfaceInside.h"
#include "QvApi_TL/QvModule.h"

namespace QvApi
{
class CQvEventModule;
class IQvSystemInside;

/**
 * \brief One GenTL interface: the list of its devices as records (not open devices), their
 *        availability, and the factory that opens them (IFOpenDevice, CQvDevice).
 *
 * Made by its system's list update on a handle from TLOpenInterface; reference counted (the
 * system holds one for its list, each open device one more); the last Release() closes it
 * (IFClose). The device list is guarded by a recursive lock held across the producer calls;
 * the error and module listeners run on their own threads.
 */
class QVAPI_API CQvInterface final
    : public CQvModule<IQvInterfaceInside, IQvInterface, IQvCallbackParamGenTLEventErrorIF>
{
public:
    /**
     * \param[in] pCQvGenTL         Producer binding; borrowed.
     * \param[in] pIQvSystemInside  The owning system; borrowed.
     * \param[in] interfaceID       The ID the system opened it with.
     * \param[in] hInterface        The handle TLOpenInterface gave; closed by the last Release().
     * \throws CQvGenTLErrorException and GenICam exceptions of the port, the listeners and the
     *         first device-list update; the handle is then left open.
     */
    CQvInterface(CQvGenTLLib* pCQvGenTL, IQvSystemInside* pIQvSystemInside, const GenICam::gcstring& interfaceID,
                 GenTL::IF_HANDLE hInterface);

    /**
     * \brief The transport-layer bit of a GenTL TL type text: compared without case with "U3V",
     *        "GEV", "CXP" in turn; a text matches when each of its characters equals the
     *        constant's at the same place, so any leading part matches ("" gives USB3 Vision,
     *        "G" GigE Vision). No match gives 0.
     */
    static _EQvInterfaceType_t InterfaceTypeOf(const GenICam::gcstring& tlType);

    // IQvInterface
    IQvSystem* GetIQvSystem() override;
    IQvPort* GetIQvPort() override;
    IQvInterfaceInfo* GetIQvInterfaceInfo() const override;
    bool UpdateDeviceList() override;
    uint64_t GetUpdateDeviceListTimeout() const override;
    void SetUpdateDeviceListTimeout(uint64_t timeoutMs) override;
    size_t GetDeviceCount() const override;
    IQvDeviceInfo* GetIQvDeviceInfo(size_t nIndex) const override;
    bool IsDeviceAvailable(size_t nIndex, GenTL::DEVICE_ACCESS_FLAGS flags) override;
    IQvDeviceReleasable* CreateIQvDevice(size_t nIndex, GenTL::DEVICE_ACCESS_FLAGS flags) override;
    IQvDeviceReleasable* CreateIQvDevice(const GenICam::gcstring& deviceID, GenTL::DEVICE_ACCESS_FLAGS flags) override;
    IQvDeviceReleasable* CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_FLAGS flags) override;
    // IQvInterfaceInside
    IQvSystemInside* GetIQvSystemInside() override;
    GenTL::IF_HANDLE GetInterfaceHandle() override;
    _EQvInterfaceType_t GetQvInterfaceType() override;
    int64_t AddRef() override;
    void Release() override;
    /// Starts the error and module listeners.
    void StartEventAcquisitionThread() override;
    /// Stops the error and module listeners.
    void StopEventAcquisitionThread() override;

    /// \return The current reference count (tests).
    int64_t GetRefCount() const { return m_lRefCount.load(); }

private:
    ~CQvInterface() override;
    void DeleteInsideObjects() noexcept;
    /// The record at \a nIndex; the lock is held by the caller.
    CQvIFDeviceInfo* DeviceInfoLocked(size_t nIndex) const;

    IQvSystemInside* const m_pIQvSystemInside; // the owning system, which outlives its interfaces
    const GenICam::gcstring m_interfaceID;
    GenTL::IF_HANDLE m_hInterface; // the producer's; null once IFClose has run
    mutable GenICam::CLock m_lock;
    // Guarded by m_lock.
    std::vector<std::unique_ptr<CQvIFDeviceInfo>> m_deviceInfos;
    uint64_t m_updateDeviceListTimeoutMs = 250;
    std::unique_ptr<CQvEventModule> m_pEventModule;
    CQvInterfaceInfo m_interfaceInfo;
    std::atomic<int64_t> m_lRefCount{0}; // the system's list entry and every open device
    bool m_bFirstUpdate = true;          // cleared by the first list update of vendors 1 to 3
};
} // namespace QvApi
