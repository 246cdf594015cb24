#include "QvApi_TL/QvInterface.h"

#include <strings.h>

#include <exception>
#include <new>

#include "QvApi_TL/QvDevice.h"
#include "QvApi_TL/QvEventModule.h"
#include "QvApi_TL/QvSystemInside.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// USB3 Vision discovery of the SDK's own producer takes longer than the usual 250 ms.
constexpr uint64_t kUpdateDeviceListTimeoutMs = 250;
constexpr uint64_t kUpdateDeviceListTimeoutU3VMs = 500;
} // namespace

_EQvInterfaceType_t CQvInterface::InterfaceTypeOf(const GenICam::gcstring& tlType)
{
    struct SKnownType_
    {
        const char* text;
        _EQvInterfaceType_t type;
    };
    static const SKnownType_ kKnownTypes[] = {{"U3V", QvInterfaceType_USB3Vision},
                                              {"GEV", QvInterfaceType_GigEVision},
                                              {"CXP", QvInterfaceType_CoaXPress}};
    // Each character of the text is compared with the constant's at the same place, so a
    // leading part of a constant (even an empty text) matches it. Kept loose on purpose.
    const size_t length = tlType.size();
    for (const SKnownType_& known : kKnownTypes)
    {
        if (length <= 3 && strncasecmp(tlType.c_str(), known.text, length) == 0)
            return known.type;
    }
    return static_cast<_EQvInterfaceType_t>(0);
}

CQvInterface::CQvInterface(CQvGenTLLib* pCQvGenTL, IQvSystemInside* pIQvSystemInside,
                           const GenICam::gcstring& interfaceID, GenTL::IF_HANDLE hInterface)
try : CQvModule(pCQvGenTL), m_pIQvSystemInside(pIQvSystemInside), m_interfaceID(interfaceID),
      m_hInterface(hInterface), m_updateDeviceListTimeoutMs(kUpdateDeviceListTimeoutMs),
      m_interfaceInfo(pCQvGenTL, hInterface)
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    QV_ASSERT(m_pIQvSystemInside != nullptr, "m_pIQvSystemInside != NULL");
    try
    {
        if (GetQvInterfaceType() == QvInterfaceType_USB3Vision &&
            m_pIQvSystemInside->GetQvSystemVendor() == QvSystemVendor_Default)
            m_updateDeviceListTimeoutMs = kUpdateDeviceListTimeoutU3VMs;
        CreatePort(m_hInterface, GenApi::RW, GenICam::gcstring("Interface_") + m_interfaceID);
        CreateEventError(m_hInterface, this, QvCallbackTypeGenTLEventErrorIF, "QvApi_TL_EventError_IF", __FILE__);
        m_pEventModule = std::make_unique<CQvEventModule>(m_pCQvGenTL, m_pCQvPort.get(), "QvApi_TL_EventModule");
        UpdateDeviceList();
    }
    catch (...)
    {
        DeleteInsideObjects();
        // Nobody else could close the interface: the system has no object for it.
        if (m_pCQvGenTL->IFClose != nullptr)
            m_pCQvGenTL->IFClose(m_hInterface);
        throw;
    }
}
QV_CATCH_BAD_ALLOC()

CQvInterface::~CQvInterface()
{
    DeleteInsideObjects();
    try
    {
        const GenTL::IF_HANDLE hInterface = m_hInterface;
        const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, IFClose, hInterface);
        m_hInterface = nullptr;
        QV_CHECK_GENTL(m_pCQvGenTL, err, "IFClose", "%d = IFClose(0x%p)", err, hInterface);
    }
    catch (...)
    {
    }
}

void CQvInterface::DeleteInsideObjects() noexcept
{
    {
        GenICam::AutoLock lock(m_lock);
        m_deviceInfos.clear();
    }
    DeleteEventError();
    m_pEventModule.reset();
    DeletePort();
}

int64_t CQvInterface::AddRef()
{
    return ++m_lRefCount;
}

void CQvInterface::Release()
{
    if (--m_lRefCount == 0)
        delete this;
}

// ---- Device list --------------------------------------------------------------------------------

bool CQvInterface::UpdateDeviceList()
{
    GenTL::bool8_t changed = 0;
    GenTL::GC_ERROR err =
        QV_GENTL_CALL(m_pCQvGenTL, IFUpdateDeviceList, m_hInterface, &changed, m_updateDeviceListTimeoutMs);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "IFUpdateDeviceList", "%d = IFUpdateDeviceList(0x%p, 0x%p, %I64u)", err,
                   m_hInterface, static_cast<void*>(&changed), static_cast<unsigned>(m_updateDeviceListTimeoutMs));
    // Some third-party producers report no change on their first update although they list
    // devices: their list is read once regardless.
    if (m_pIQvSystemInside->GetQvSystemVendor() != QvSystemVendor_Default && m_bFirstUpdate)
        m_bFirstUpdate = false;
    else if (!changed)
        return false;

    GenICam::AutoLock lock(m_lock);
    m_deviceInfos.clear();
    uint32_t count = 0;
    err = QV_GENTL_CALL(m_pCQvGenTL, IFGetNumDevices, m_hInterface, &count);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "IFGetNumDevices", "%d = IFGetNumDevices(0x%p, 0x%p)", err, m_hInterface,
                   static_cast<void*>(&count));
    try
    {
        for (uint32_t index = 0; index < count; ++index)
        {
            size_t size = 0;
            err = QV_GENTL_CALL(m_pCQvGenTL, IFGetDeviceID, m_hInterface, index, nullptr, &size);
            // A failing IFGetDeviceID has always been reported under IFGetNumDevices' name.
            QV_CHECK_GENTL(m_pCQvGenTL, err, "IFGetNumDevices", "%d = IFGetNumDevices(0x%p, %u, 0x%p, 0x%p)", err,
                           m_hInterface, index, static_cast<void*>(nullptr), static_cast<void*>(&size));
            if (size == static_cast<size_t>(-1))
                throw std::bad_alloc();
            std::vector<char> buffer(size + 1, '\0');
            err = m_pCQvGenTL->IFGetDeviceID(m_hInterface, index, buffer.data(), &size);
            QV_CHECK_GENTL(m_pCQvGenTL, err, "IFGetNumDevices", "%d = IFGetNumDevices(0x%p, %u, 0x%p, 0x%p)", err,
                           m_hInterface, index, static_cast<void*>(buffer.data()), static_cast<void*>(&size));
            m_deviceInfos.push_back(
                std::make_unique<CQvIFDeviceInfo>(m_pCQvGenTL, m_hInterface, GenICam::gcstring(buffer.data())));
        }
    }
    QV_CATCH_BAD_ALLOC()
    return true;
}

uint64_t CQvInterface::GetUpdateDeviceListTimeout() const
{
    return m_updateDeviceListTimeoutMs;
}

void CQvInterface::SetUpdateDeviceListTimeout(uint64_t timeoutMs)
{
    m_updateDeviceListTimeoutMs = timeoutMs;
}

size_t CQvInterface::GetDeviceCount() const
{
    GenICam::AutoLock lock(m_lock);
    return m_deviceInfos.size();
}

CQvIFDeviceInfo* CQvInterface::DeviceInfoLocked(size_t nIndex) const
{
    QV_CHECK_MIN("nIndex", static_cast<long>(nIndex), 0);
    QV_CHECK_BELOW("nIndex", nIndex, m_deviceInfos.size());
    return m_deviceInfos[nIndex].get();
}

IQvDeviceInfo* CQvInterface::GetIQvDeviceInfo(size_t nIndex) const
{
    GenICam::AutoLock lock(m_lock);
    return DeviceInfoLocked(nIndex);
}

bool CQvInterface::IsDeviceAvailable(size_t nIndex, GenTL::DEVICE_ACCESS_FLAGS flags)
{
    QV_CHECK_MIN("eDeviceAccessFlags", flags, GenTL::DEVICE_ACCESS_READONLY);
    QV_CHECK_MAX("eDeviceAccessFlags", flags, GenTL::DEVICE_ACCESS_EXCLUSIVE);
    const GenTL::DEVICE_ACCESS_STATUS status = GetIQvDeviceInfo(nIndex)->GetAccessStatus();
    if (status == GenTL::DEVICE_ACCESS_STATUS_READWRITE)
        return true;
    if (status == GenTL::DEVICE_ACCESS_STATUS_READONLY)
        return flags == GenTL::DEVICE_ACCESS_READONLY;
    return false;
}

// ---- Opening devices ----------------------------------------------------------------------------

IQvDeviceReleasable* CQvInterface::CreateIQvDevice(const GenICam::gcstring& deviceID, GenTL::DEVICE_ACCESS_FLAGS flags)
{
    GenTL::DEV_HANDLE hDevice = nullptr;
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, IFOpenDevice, m_hInterface, deviceID.c_str(), flags, &hDevice);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "IFOpenDevice", "%d = IFOpenDevice(0x%p, 0x%p, 0x%u, 0x%p)", err, m_hInterface,
                   static_cast<const void*>(deviceID.c_str()), static_cast<unsigned>(flags),
                   static_cast<void*>(&hDevice));
    try
    {
        return new CQvDevice(m_pCQvGenTL, this, deviceID.c_str(), flags, hDevice);
    }
    QV_CATCH_BAD_ALLOC()
}

IQvDeviceReleasable* CQvInterface::CreateIQvDevice(size_t nIndex, GenTL::DEVICE_ACCESS_FLAGS flags)
{
    GenICam::AutoLock lock(m_lock);
    const GenICam::gcstring deviceID = DeviceInfoLocked(nIndex)->GetID();
    return CreateIQvDevice(deviceID, flags);
}

IQvDeviceReleasable* CQvInterface::CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_FLAGS flags)
{
    const size_t count = GetDeviceCount();
    for (size_t index = 0; index < count; ++index)
    {
        try
        {
            if (IsDeviceAvailable(index, flags))
                return CreateIQvDevice(index, flags);
        }
        catch (...)
        {
            // Busy, gone or failing to open: the next one may do.
        }
    }
    QV_THROW(RuntimeException, "There is no available device.");
}

// ---- Event threads and accessors ----------------------------------------------------------------

void CQvInterface::StartEventAcquisitionThread()
{
    if (m_pCQvEventError != nullptr)
        m_pCQvEventError->Start();
    if (m_pEventModule != nullptr)
        m_pEventModule->Start();
}

void CQvInterface::StopEventAcquisitionThread()
{
    std::exception_ptr pFirstFailure;
    for (CQvEvent* pEvent : {static_cast<CQvEvent*>(m_pCQvEventError.get()), static_cast<CQvEvent*>(m_pEventModule.get())})
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

IQvSystem* CQvInterface::GetIQvSystem()
{
    return m_pIQvSystemInside;
}

IQvSystemInside* CQvInterface::GetIQvSystemInside()
{
    return m_pIQvSystemInside;
}

IQvPort* CQvInterface::GetIQvPort()
{
    return m_pCQvPort.get();
}

IQvInterfaceInfo* CQvInterface::GetIQvInterfaceInfo() const
{
    return const_cast<CQvInterfaceInfo*>(&m_interfaceInfo);
}

GenTL::IF_HANDLE CQvInterface::GetInterfaceHandle()
{
    return m_hInterface;
}

_EQvInterfaceType_t CQvInterface::GetQvInterfaceType()
{
    return InterfaceTypeOf(m_interfaceInfo.GetTLType());
}
} // namespace QvApi
