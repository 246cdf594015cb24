#include "QvApi_TL/QvDevice.h"

#include <exception>
#include <new>

#include <GenApi/ICommand.h>
#include <GenApi/IEnumEntry.h>
#include <GenApi/IEnumeration.h>
#include <GenApi/IInteger.h>
#include <GenApi/INodeMap.h>
#include <GenApi/IPort.h>
#include <GenApi/NodeCallback.h>

#include "QvApi_TL/QvDataStreamFactory.h"
#include "QvApi_TL/QvEventFeatureChange.h"
#include "QvApi_TL/QvEventFeatureInvalidate.h"
#include "QvApi_TL/QvEventModule.h"
#include "QvApi_TL/QvEventRemoteDevice.h"
#include "QvApi_TL/QvInterfaceInside.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// The remote port refuses writes itself unless the device was opened for control.
GenApi::EAccessMode RemoteAccessMode(GenTL::DEVICE_ACCESS_FLAGS flags)
{
    return flags == GenTL::DEVICE_ACCESS_CONTROL || flags == GenTL::DEVICE_ACCESS_EXCLUSIVE ? GenApi::RW : GenApi::RO;
}
} // namespace

CQvDevice::CQvDevice(CQvGenTLLib* pCQvGenTL, IQvInterfaceInside* pIQvInterfaceInside, const char* deviceID,
                     GenTL::DEVICE_ACCESS_FLAGS flags, GenTL::DEV_HANDLE hDevice)
try : CQvModule(pCQvGenTL), m_pIQvInterfaceInside(pIQvInterfaceInside), m_deviceID(deviceID), m_accessFlags(flags),
      m_hDevice(hDevice), m_deviceInfo(pCQvGenTL, hDevice), m_deviceLostEvent(nullptr, true, false, nullptr)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    QV_ASSERT(m_pIQvInterfaceInside != nullptr, "m_pIQvInterfaceInside != NULL");
    try
    {
        UpdateDataStreamList();
        CreatePort(m_hDevice, GenApi::RW, GenICam::gcstring("LocalDevice_") + m_deviceID);

        GenTL::PORT_HANDLE hRemotePort = nullptr;
        const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DevGetPort, m_hDevice, &hRemotePort);
        QV_CHECK_GENTL(m_pCQvGenTL, err, "DevGetPort", "%d = DevGetPort(0x%p, 0x%p)", err, m_hDevice,
                       static_cast<void*>(&hRemotePort));
        m_pRemotePort = std::make_unique<CQvPort>(m_pCQvGenTL, hRemotePort, RemoteAccessMode(flags),
                                                  GenICam::gcstring("RemoteDevice_") + m_deviceID);

        CreateEventError(m_hDevice, this, QvCallbackTypeGenTLEventErrorDEV, "QvApi_TL_EventError_DEV", __FILE__);
        m_pEventFeatureInvalidate =
            std::make_unique<CQvEventFeatureInvalidate>(m_pCQvGenTL, this, "QvApi_TL_EventFeatureInvalidate");
        m_pEventFeatureChange = std::make_unique<CQvEventFeatureChange>(m_pCQvGenTL, this, "QvApi_TL_EventFeatureChange");
        m_pEventRemoteDevice = std::make_unique<CQvEventRemoteDevice>(m_pCQvGenTL, this, "QvApi_TL_EventRemoteDevice");
        m_pEventModule = std::make_unique<CQvEventModule>(m_pCQvGenTL, m_pCQvPort.get(), "QvApi_TL_EventModule");

        RegisterDeviceLostEvent();
    }
    catch (...)
    {
        // The handle stays open: it belongs to whoever called IFOpenDevice.
        DeleteInsideObjects();
        throw;
    }
    m_pIQvInterfaceInside->AddRef();
}
QV_CATCH_BAD_ALLOC()

CQvDevice::~CQvDevice()
{
    DeleteInsideObjects();
    if (m_hDevice != nullptr && m_pCQvGenTL->DevClose != nullptr)
        m_pCQvGenTL->DevClose(m_hDevice);
    m_hDevice = nullptr;
    try
    {
        m_pIQvInterfaceInside->Release();
    }
    catch (...)
    {
    }
}

void CQvDevice::Release()
{
    delete this;
}

void CQvDevice::DeleteInsideObjects() noexcept
{
    if (m_hDevice == nullptr)
        return;
    try
    {
        AcquisitionStop();
    }
    catch (...)
    {
    }
    try
    {
        StopEventAcquisitionThread();
    }
    catch (...)
    {
    }
    if (m_hDeviceLostCallback != 0)
    {
        try
        {
            GenApi::Deregister(m_hDeviceLostCallback);
        }
        catch (...)
        {
        }
        m_hDeviceLostCallback = 0;
    }
    m_pEventModule.reset();
    DeleteEventError();
    m_pEventRemoteDevice.reset();
    m_pEventFeatureChange.reset();
    m_pEventFeatureInvalidate.reset();
    // The cached nodes belong to the remote node map, which goes with its port.
    m_pTLParamsLocked = nullptr;
    m_pAcquisitionStart = nullptr;
    m_pAcquisitionStop = nullptr;
    m_pRemotePort.reset();
    DeletePort();
    // Wakes whoever still waits on the device.
    m_deviceLostEvent.SetEvent();
}

// ---- Data streams -------------------------------------------------------------------------------

void CQvDevice::UpdateDataStreamList()
{
    if (m_pCQvGenTL->DevGetNumDataStreams == nullptr || m_pCQvGenTL->DevGetDataStreamID == nullptr)
        return;
    m_dataStreamIDs.clear();
    uint32_t count = 0;
    GenTL::GC_ERROR err = m_pCQvGenTL->DevGetNumDataStreams(m_hDevice, &count);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "DevGetNumDataStreams", "%d = DevGetNumDataStreams(0x%p, 0x%p)", err, m_hDevice,
                   static_cast<void*>(&count));
    for (uint32_t index = 0; index < count; ++index)
    {
        size_t size = 0;
        err = m_pCQvGenTL->DevGetDataStreamID(m_hDevice, index, nullptr, &size);
        QV_CHECK_GENTL(m_pCQvGenTL, err, "DevGetDataStreamID", "%d = DevGetDataStreamID(0x%p, %u, 0x%p, 0x%p)", err,
                       m_hDevice, index, static_cast<void*>(nullptr), static_cast<void*>(&size));
        if (size == static_cast<size_t>(-1))
            throw std::bad_alloc();
        std::vector<char> buffer(size + 1, '\0');
        err = m_pCQvGenTL->DevGetDataStreamID(m_hDevice, index, buffer.data(), &size);
        // Written without blanks around '=' since it was first printed.
        QV_CHECK_GENTL(m_pCQvGenTL, err, "DevGetDataStreamID", "%d=DevGetDataStreamID(0x%p, %u, 0x%p, 0x%p)", err,
                       m_hDevice, index, static_cast<void*>(buffer.data()), static_cast<void*>(&size));
        m_dataStreamIDs.emplace_back(buffer.data());
    }
}

size_t CQvDevice::GetDataStreamCount() const
{
    return m_dataStreamIDs.size();
}

IQvDataStreamReleasable* CQvDevice::CreateIQvDataStream(size_t nIndex, IQvAllocator* pAllocator)
{
    if (nIndex >= m_dataStreamIDs.size())
    {
        if (static_cast<long>(nIndex) < 0)
            QV_THROW_RANGE(EqualOrGreaterThanMin, "nIndex", static_cast<long>(nIndex), 0);
        QV_THROW_RANGE(SmallerThanMax, "nIndex", nIndex, m_dataStreamIDs.size());
    }
    const GenICam::gcstring& streamID = m_dataStreamIDs[nIndex];
    GenTL::DS_HANDLE hDataStream = nullptr;
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, DevOpenDataStream, m_hDevice, streamID.c_str(), &hDataStream);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "DevOpenDataStream", "%d = DevOpenDataStream(0x%p, 0x%p, 0x%p)", err, m_hDevice,
                   static_cast<const void*>(streamID.c_str()), static_cast<void*>(&hDataStream));
    auto closeStream = [&] {
        if (m_pCQvGenTL->DSClose != nullptr)
            m_pCQvGenTL->DSClose(hDataStream);
    };
    try
    {
        return CreateQvDataStream(m_pCQvGenTL, this, hDataStream, pAllocator);
    }
    catch (const std::bad_alloc& e)
    {
        closeStream();
        QV_THROW(BadAllocException, "%s", e.what());
    }
    catch (const GenICam::BadAllocException&)
    {
        closeStream();
        throw;
    }
}

// ---- Acquisition --------------------------------------------------------------------------------

GenApi::IInteger* CQvDevice::TLParamsLocked()
{
    if (m_pTLParamsLocked == nullptr)
    {
        GenApi::INodeMap* pNodeMap = GetRemoteIQvPort()->GetINodeMap();
        m_pTLParamsLocked =
            dynamic_cast<GenApi::IInteger*>(pNodeMap != nullptr ? pNodeMap->GetNode("TLParamsLocked") : nullptr);
    }
    if (m_pTLParamsLocked == nullptr)
        QV_THROW(LogicalErrorException, "NULL pointer dereferenced");
    return m_pTLParamsLocked;
}

GenApi::ICommand* CQvDevice::Command(GenApi::ICommand*& pCache, const char* name)
{
    if (pCache == nullptr)
    {
        GenApi::INodeMap* pNodeMap = GetRemoteIQvPort()->GetINodeMap();
        pCache = dynamic_cast<GenApi::ICommand*>(pNodeMap != nullptr ? pNodeMap->GetNode(name) : nullptr);
    }
    if (pCache == nullptr)
        QV_THROW(RuntimeException, "Node %s not found.", name);
    return pCache;
}

void CQvDevice::AcquisitionStart()
{
    // Payload size and stream settings are fixed before the camera sends anything.
    TLParamsLocked()->SetValue(1, true);
    Command(m_pAcquisitionStart, "AcquisitionStart")->Execute(true);
    m_bAcquisitionRunning = true;
}

void CQvDevice::AcquisitionStop()
{
    if (!m_bAcquisitionRunning)
        return;
    m_bAcquisitionRunning = false;
    Command(m_pAcquisitionStop, "AcquisitionStop")->Execute(true);
    TLParamsLocked()->SetValue(0, true);
}

// ---- Device loss --------------------------------------------------------------------------------

void CQvDevice::RegisterDeviceLostEvent()
{
    GenApi::INodeMap* pLocalNodeMap = nullptr;
    try
    {
        pLocalNodeMap = GetLocalIQvPort()->GetINodeMap();
        // Ask the local device module to report the loss as a module event.
        GenApi::IEnumeration* pSelector = dynamic_cast<GenApi::IEnumeration*>(pLocalNodeMap->GetNode("EventSelector"));
        GenApi::IEnumEntry* pDeviceLost = pSelector != nullptr ? pSelector->GetEntryByName("DeviceLost") : nullptr;
        if (pDeviceLost != nullptr)
        {
            pSelector->SetIntValue(pDeviceLost->GetValue());
            GenApi::IEnumeration* pNotification =
                dynamic_cast<GenApi::IEnumeration*>(pLocalNodeMap->GetNode("EventNotification"));
            GenApi::IEnumEntry* pOn = pNotification != nullptr ? pNotification->GetEntryByName("On") : nullptr;
            if (pOn != nullptr)
                pNotification->SetIntValue(pOn->GetValue());
        }
    }
    catch (...)
    {
    }
    try
    {
        GenApi::INode* pNode = pLocalNodeMap != nullptr ? pLocalNodeMap->GetNode("EventDeviceLost") : nullptr;
        if (pNode != nullptr)
            m_hDeviceLostCallback = GenApi::Register(pNode, *this, &CQvDevice::OnDeviceLost, GenApi::cbPostInsideLock);
    }
    catch (...)
    {
    }
    // A device that cannot be read now is lost already; nobody would hear of it otherwise.
    try
    {
        GenApi::INodeMap* pRemoteNodeMap = GetRemoteIQvPort()->GetINodeMap();
        GenApi::IPort* pDevicePort =
            dynamic_cast<GenApi::IPort*>(pRemoteNodeMap != nullptr ? pRemoteNodeMap->GetNode("Device") : nullptr);
        if (pDevicePort != nullptr)
        {
            uint8_t probe[4];
            pDevicePort->Read(probe, 0, sizeof(probe));
        }
    }
    catch (...)
    {
        OnDeviceLost(nullptr);
    }
}

void CQvDevice::OnDeviceLost(GenApi::INode* pNode)
{
    // The node callback also fires when somebody else touches the node; only the module event
    // listener delivering the producer's event means the device is gone.
    if (pNode == nullptr || (m_pEventModule != nullptr && m_pEventModule->IsListenerThread()))
        m_deviceLostEvent.SetEvent();
}

bool CQvDevice::IsDeviceLost()
{
    return WaitForSingleObject(&m_deviceLostEvent, 0) == kWaitObject0;
}

void* CQvDevice::GetDeviceLostEventHandle()
{
    return m_deviceLostEvent.IsClosing() ? nullptr : static_cast<void*>(&m_deviceLostEvent);
}

// ---- Event threads ------------------------------------------------------------------------------

void CQvDevice::StartEventAcquisitionThread()
{
    if (m_pCQvEventError != nullptr)
        m_pCQvEventError->Start();
    if (m_pEventFeatureInvalidate != nullptr)
        m_pEventFeatureInvalidate->Start();
    if (m_pEventFeatureChange != nullptr)
        m_pEventFeatureChange->Start();
    if (m_pEventRemoteDevice != nullptr)
        m_pEventRemoteDevice->Start();
    if (m_pEventModule != nullptr)
        m_pEventModule->Start();
}

void CQvDevice::StopEventAcquisitionThread()
{
    // Every listener is stopped even when one of them reports a failure; the first is rethrown.
    std::exception_ptr pFirstFailure;
    for (CQvEvent* pEvent : {static_cast<CQvEvent*>(m_pCQvEventError.get()),
                             static_cast<CQvEvent*>(m_pEventFeatureInvalidate.get()),
                             static_cast<CQvEvent*>(m_pEventFeatureChange.get()),
                             static_cast<CQvEvent*>(m_pEventRemoteDevice.get()),
                             static_cast<CQvEvent*>(m_pEventModule.get())})
    {
        if (pEvent == nullptr)
            continue;
        try
        {
            pEvent->Stop();
        }
        catch (...)
        {
            if (pFirstFailure == nullptr)
                pFirstFailure = std::current_exception();
        }
    }
    if (pFirstFailure != nullptr)
        std::rethrow_exception(pFirstFailure);
}

// ---- Accessors ----------------------------------------------------------------------------------

IQvInterface* CQvDevice::GetIQvInterface()
{
    return m_pIQvInterfaceInside;
}

IQvInterfaceInside* CQvDevice::GetIQvInterfaceInside()
{
    return m_pIQvInterfaceInside;
}

IQvPort* CQvDevice::GetLocalIQvPort()
{
    return m_pCQvPort.get();
}

IQvPort* CQvDevice::GetRemoteIQvPort()
{
    return m_pRemotePort.get();
}

IQvDeviceInfo* CQvDevice::GetIQvDeviceInfo() const
{
    return const_cast<CQvDeviceInfo*>(&m_deviceInfo);
}

GenTL::DEV_HANDLE CQvDevice::GetDeviceHandle()
{
    return m_hDevice;
}
} // namespace QvApi
