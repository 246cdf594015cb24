#include "QvApi_TL/QvSystem.h"

#include <algorithm>
#include <mutex>
#include <new>

#include "QvApi_TL/QvGenTLText.h"
#include "QvApi_TL/QvInterface.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
const char* CheckedFileName(const char* szFileName)
{
    QV_ASSERT(szFileName != nullptr, "szFileName != NULL");
    return szFileName;
}

// A binding whose transport layer refused to close cannot be unloaded safely; it is kept for
// the rest of the process (reachable from here, so that leak checkers know it is deliberate).
void AbandonBinding(CQvGenTLLib* pCQvGenTL) noexcept
{
    static std::mutex* s_pMutex = new std::mutex;
    static std::vector<CQvGenTLLib*>* s_pAbandoned = new std::vector<CQvGenTLLib*>;
    try
    {
        std::lock_guard<std::mutex> lock(*s_pMutex);
        s_pAbandoned->push_back(pCQvGenTL);
    }
    catch (...)
    {
    }
}
} // namespace

CQvSystem::CQvSystem(_EQvSystemVendor_t vendor, const char* fileName, _EQvInterfaceType_t interfaceTypes)
try : CQvModule(nullptr), m_fileName(CheckedFileName(fileName)), m_vendor(vendor), m_interfaceTypes(interfaceTypes)
{
    m_pCQvGenTL = new CQvGenTLLib(m_fileName);
    try
    {
        const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, TLOpen, &m_hTL);
        QV_CHECK_GENTL(m_pCQvGenTL, err, "TLOpen", "%d = TLOpen(0x%p)", err, static_cast<void*>(&m_hTL));
        m_systemInfo.Set(m_pCQvGenTL, m_hTL);
        CreatePort(m_hTL, GenApi::RW, GenICam::gcstring("System_") + m_systemInfo.GetID());
        CreateEventError(m_hTL, this, QvCallbackTypeGenTLEventErrorTL, "QvApi_TL_EventError_TL", __FILE__);
        UpdateInterfaceList();
    }
    catch (...)
    {
        ReleaseInterfaces();
        try
        {
            DeleteInsideObjects();
        }
        catch (...)
        {
        }
        throw;
    }
}
QV_CATCH_BAD_ALLOC()

CQvSystem::~CQvSystem()
{
    if (!ReleaseInterfaces())
    {
        AbandonBinding(m_pCQvGenTL);
        return;
    }
    try
    {
        DeleteInsideObjects();
    }
    catch (...)
    {
    }
}

int64_t CQvSystem::AddRef()
{
    return ++m_lRefCount;
}

void CQvSystem::Release()
{
    if (--m_lRefCount == 0)
        delete this;
}

bool CQvSystem::ReleaseInterfaces() noexcept
{
    try
    {
        GenICam::AutoLock lock(m_lock);
        for (CQvInterface* pInterface : m_interfaces)
            pInterface->Release();
        m_interfaces.clear();
        return true;
    }
    catch (...)
    {
        return false;
    }
}

void CQvSystem::DeleteInsideObjects()
{
    DeleteEventError();
    DeletePort();
    m_systemInfo.Set(nullptr, nullptr);
    if (m_hTL != nullptr)
    {
        const GenTL::TL_HANDLE hTL = m_hTL;
        const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, TLClose, hTL);
        m_hTL = nullptr;
        if (QV_UNLIKELY(err != GenTL::GC_ERR_SUCCESS))
        {
            CQvGenTLLib* pCQvGenTL = m_pCQvGenTL;
            m_pCQvGenTL = nullptr;
            AbandonBinding(pCQvGenTL);
            QV_THROW_GENTL(pCQvGenTL, err, "TLClose", "%d = TLClose(0x%p)", err, hTL);
        }
    }
    // Closes and unloads the producer.
    delete m_pCQvGenTL;
    m_pCQvGenTL = nullptr;
}

// ---- Interface list -----------------------------------------------------------------------------

std::vector<GenICam::gcstring> CQvSystem::ReadInterfaceIDs(bool& bChanged)
{
    GenTL::bool8_t changed = 0;
    GenTL::GC_ERROR err =
        QV_GENTL_CALL(m_pCQvGenTL, TLUpdateInterfaceList, m_hTL, &changed, m_updateInterfaceListTimeoutMs);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "TLUpdateInterfaceList", "%d = TLUpdateInterfaceList(0x%p, 0x%p, %I64u)", err,
                   m_hTL, static_cast<void*>(&changed), static_cast<unsigned>(m_updateInterfaceListTimeoutMs));
    bChanged = changed != 0;
    uint32_t count = 0;
    err = QV_GENTL_CALL(m_pCQvGenTL, TLGetNumInterfaces, m_hTL, &count);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "TLGetNumInterfaces", "%d = TLGetNumInterfaces(0x%p, 0x%p)", err, m_hTL,
                   static_cast<void*>(&count));
    std::vector<GenICam::gcstring> ids;
    for (uint32_t index = 0; index < count; ++index)
    {
        ids.push_back(ReadGenTLText(
            [&](char* pBuffer, size_t* pSize) {
                return QV_GENTL_CALL(m_pCQvGenTL, TLGetInterfaceID, m_hTL, index, pBuffer, pSize);
            },
            [&](GenTL::GC_ERROR failure, void* pBuffer, size_t* pSize) {
                QV_THROW_GENTL(m_pCQvGenTL, failure, "TLGetInterfaceID", "%d = TLGetInterfaceID(0x%p, %u, 0x%p, 0x%p)",
                               failure, m_hTL, index, pBuffer, static_cast<void*>(pSize));
            }));
    }
    return ids;
}

bool CQvSystem::UpdateInterfaceList()
{
    try
    {
        bool bChanged = false;
        const std::vector<GenICam::gcstring> ids = ReadInterfaceIDs(bChanged);
        // Some third-party producers report no change on their first update although they list
        // interfaces: their list is read once regardless.
        if (m_vendor != QvSystemVendor_Default && m_bFirstUpdate)
            m_bFirstUpdate = false;
        else if (!bChanged)
            return false;

        GenICam::AutoLock lock(m_lock);
        std::vector<CQvInterface*> previous;
        previous.swap(m_interfaces);
        try
        {
            m_interfaces.reserve(ids.size());
            for (const GenICam::gcstring& id : ids)
            {
                auto reused = std::find_if(previous.begin(), previous.end(), [&](CQvInterface* pInterface) {
                    return pInterface->GetIQvInterfaceInfo()->GetID() == id;
                });
                if (reused != previous.end())
                {
                    m_interfaces.push_back(*reused);
                    previous.erase(reused);
                    continue;
                }
                GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
                const GenICam::gcstring tlType = ReadGenTLText(
                    [&](char* pBuffer, size_t* pSize) {
                        return QV_GENTL_CALL(m_pCQvGenTL, TLGetInterfaceInfo, m_hTL, id.c_str(),
                                             GenTL::INTERFACE_INFO_TLTYPE, &type, pBuffer, pSize);
                    },
                    [&](GenTL::GC_ERROR failure, void* pBuffer, size_t* pSize) {
                        QV_THROW_GENTL(m_pCQvGenTL, failure, "TLGetInterfaceInfo",
                                       "%d = TLGetInterfaceInfo(0x%p, 0x%p, %d, 0x%p, 0x%p, 0x%p)", failure, m_hTL,
                                       static_cast<const void*>(id.c_str()), GenTL::INTERFACE_INFO_TLTYPE,
                                       static_cast<void*>(&type), pBuffer, static_cast<void*>(pSize));
                    });
                if ((CQvInterface::InterfaceTypeOf(tlType) & m_interfaceTypes) == 0 ||
                    m_pCQvGenTL->TLOpenInterface == nullptr)
                    continue;
                GenTL::IF_HANDLE hInterface = nullptr;
                const GenTL::GC_ERROR err = m_pCQvGenTL->TLOpenInterface(m_hTL, id.c_str(), &hInterface);
                QV_CHECK_GENTL(m_pCQvGenTL, err, "TLOpenInterface", "%d = TLOpenInterface(0x%p, %s, 0x%p)", err, m_hTL,
                               id.c_str(), static_cast<void*>(&hInterface));
                CQvInterface* pInterface = new CQvInterface(m_pCQvGenTL, this, id, hInterface);
                pInterface->AddRef();
                m_interfaces.push_back(pInterface); // capacity reserved above: cannot throw
            }
        }
        catch (...)
        {
            for (CQvInterface* pInterface : previous)
                pInterface->Release();
            throw;
        }
        // Interfaces the producer no longer lists close when their last user lets go.
        for (CQvInterface* pInterface : previous)
            pInterface->Release();
        return true;
    }
    QV_CATCH_BAD_ALLOC()
}

size_t CQvSystem::GetInterfaceCount() const
{
    GenICam::AutoLock lock(m_lock);
    return m_interfaces.size();
}

IQvInterface* CQvSystem::GetIQvInterface(size_t nIndex)
{
    GenICam::AutoLock lock(m_lock);
    // The operation's name is printed as the parameter's, as it always was.
    QV_CHECK_MIN("GetInterface", static_cast<long>(nIndex), 0);
    QV_CHECK_BELOW("GetInterface", nIndex, m_interfaces.size());
    return m_interfaces[nIndex];
}

IQvDeviceReleasable* CQvSystem::CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_FLAGS flags)
{
    const size_t count = GetInterfaceCount();
    for (size_t index = 0; index < count; ++index)
    {
        try
        {
            return GetIQvInterface(index)->CreateFirstIQvDevice(flags);
        }
        catch (...)
        {
            // This interface has nothing to offer; try the next.
        }
    }
    QV_THROW(RuntimeException, "There is no available device.");
}

// ---- Accessors ----------------------------------------------------------------------------------

_EQvSystemVendor_t CQvSystem::GetQvSystemVendor()
{
    return m_vendor;
}

IQvPort* CQvSystem::GetIQvPort()
{
    return m_pCQvPort.get();
}

IQvSystemInfo* CQvSystem::GetIQvSystemInfo() const
{
    return const_cast<CQvSystemInfo*>(&m_systemInfo);
}

GenTL::TL_HANDLE CQvSystem::GetSystemHandle()
{
    return m_hTL;
}
} // namespace QvApi
