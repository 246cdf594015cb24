#pragma once

#include <memory>
#include <vector>

#include <Base/GCString.h>
#include <GenApi/INode.h>
#include <GenApi/Types.h>
#include <GenTL/GenTL.h>
#include <QvApi/EventObject.h>

#include "QvApi_TL/QvDeviceInfo.h"
#include "QvApi_TL/QvDeviceInside.h"
#include "QvApi_TL/QvModule.h"

namespace GenApi
{
struct ICommand;
struct IInteger;
}

namespace QvApi
{
class CQvEventFeatureChange;
class CQvEventFeatureInvalidate;
class CQvEventModule;
class CQvEventRemoteDevice;
class IQvInterfaceInside;

/**
 * \brief One open GenTL device: the local device module's port, the remote device's port, the
 *        data stream IDs, acquisition start and stop under "TLParamsLocked", five event
 *        listeners (error, feature invalidate, feature change, remote device, module) and the
 *        detection of device loss.
 *
 * Made by CQvInterface after IFOpenDevice; holds one reference on that interface; ended by
 * Release(), which deletes it. The port (m_pCQvPort of the skeleton) is the local device's.
 * Threads: node maps from any thread; AcquisitionStart/Stop, thread control and Release from
 * one thread at a time; OnDeviceLost on the module listener's thread.
 */
class QVAPI_API CQvDevice final
    : public CQvModule<IQvDeviceInside, IQvDevice, IQvCallbackParamGenTLEventErrorDEV>
{
public:
    /**
     * \param[in] pCQvGenTL            Producer binding; borrowed.
     * \param[in] pIQvInterfaceInside  The interface that opened the device (a reference is taken).
     * \param[in] deviceID             The ID it was opened with.
     * \param[in] flags                The GenTL access flags it was opened with.
     * \param[in] hDevice              The handle IFOpenDevice gave; closed by the destructor only.
     * \throws CQvGenTLErrorException, GenICam exceptions of the ports and listeners; the handle
     *         is then left open and no reference is taken.
     */
    CQvDevice(CQvGenTLLib* pCQvGenTL, IQvInterfaceInside* pIQvInterfaceInside, const char* deviceID,
              GenTL::DEVICE_ACCESS_FLAGS flags, GenTL::DEV_HANDLE hDevice);

    // IQvDevice
    IQvInterface* GetIQvInterface() override;
    IQvPort* GetLocalIQvPort() override;
    IQvDeviceInfo* GetIQvDeviceInfo() const override;
    IQvPort* GetRemoteIQvPort() override;
    size_t GetDataStreamCount() const override;
    IQvDataStreamReleasable* CreateIQvDataStream(size_t nIndex, IQvAllocator* pAllocator) override;
    void AcquisitionStart() override;
    void AcquisitionStop() override;
    bool IsDeviceLost() override;
    // IQvDeviceInside
    IQvInterfaceInside* GetIQvInterfaceInside() override;
    GenTL::DEV_HANDLE GetDeviceHandle() override;
    void* GetDeviceLostEventHandle() override;
    /// Closes the device and deletes this object.
    void Release() override;
    /// Starts the error, feature-invalidate, feature-change, remote-device and module listeners.
    void StartEventAcquisitionThread() override;
    /// Stops them in the same order.
    void StopEventAcquisitionThread() override;

    /// \return The access flags the device was opened with.
    GenTL::DEVICE_ACCESS_FLAGS GetAccessFlags() const { return m_accessFlags; }
    /// \return The ID the device was opened with.
    const GenICam::gcstring& GetDeviceID() const { return m_deviceID; }
    /// \return The data stream ID at \a nIndex (as read at construction).
    const GenICam::gcstring& GetDataStreamID(size_t nIndex) const { return m_dataStreamIDs.at(nIndex); }

private:
    ~CQvDevice() override;

    void UpdateDataStreamList();
    void RegisterDeviceLostEvent();
    /// GenApi callback of "EventDeviceLost" (node set), or the probe's verdict (node null).
    void OnDeviceLost(GenApi::INode* pNode);
    /// Teardown shared by the destructor and a failed construction.
    void DeleteInsideObjects() noexcept;
    GenApi::IInteger* TLParamsLocked();
    GenApi::ICommand* Command(GenApi::ICommand*& pCache, const char* name);

    IQvInterfaceInside* const m_pIQvInterfaceInside; // holds one reference, dropped by the destructor
    const GenICam::gcstring m_deviceID;
    const GenTL::DEVICE_ACCESS_FLAGS m_accessFlags;
    GenTL::DEV_HANDLE m_hDevice; // the producer's; null once DevClose has run
    CQvDeviceInfo m_deviceInfo;
    std::vector<GenICam::gcstring> m_dataStreamIDs;
    std::unique_ptr<CQvPort> m_pRemotePort; // the camera's; deleted before the local port
    std::unique_ptr<CQvEventRemoteDevice> m_pEventRemoteDevice;
    std::unique_ptr<CQvEventFeatureChange> m_pEventFeatureChange;
    std::unique_ptr<CQvEventFeatureInvalidate> m_pEventFeatureInvalidate;
    std::unique_ptr<CQvEventModule> m_pEventModule;
    // Remote nodes looked up on first use; they live as long as the remote node map.
    GenApi::IInteger* m_pTLParamsLocked = nullptr;
    GenApi::ICommand* m_pAcquisitionStart = nullptr;
    GenApi::ICommand* m_pAcquisitionStop = nullptr;
    bool m_bAcquisitionRunning = false; // not locked: start and stop come from one thread
    CEventObject m_deviceLostEvent;     // manual reset; set once, never reset
    GenApi::CallbackHandleType m_hDeviceLostCallback = 0;
};
} // namespace QvApi
