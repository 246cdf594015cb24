#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include <Base/GCString.h>
#include <Base/GCSynch.h>
#include <GenTL/GenTL.h>

#include "QvApi_TL/QvModule.h"
#include "QvApi_TL/QvSystemInfo.h"
#include "QvApi_TL/QvSystemInside.h"

namespace QvApi
{
class CQvInterface;

/**
 * \brief One GenTL system: the loaded producer (its CQvGenTLLib, owned here), the open
 *        transport layer, its port and error listener, and the list of interfaces whose type is
 *        in the system's mask, kept in step with the producer's list.
 *
 * Made only by CreateIQvSystem(); reference counted (the last Release() deletes it: the
 * interfaces are released, the listener, port and information go, TLClose runs and the binding
 * is deleted, which closes and unloads the producer). The interface list is guarded by a
 * recursive lock held across each whole rebuild. Information queries take no lock.
 */
class QVAPI_API CQvSystem final : public CQvModule<IQvSystemInside, IQvSystem, IQvCallbackParamGenTLEventErrorTL>
{
public:
    /**
     * \brief Loads \a fileName, opens the transport layer and lists its interfaces.
     * \param[in] vendor         Reported by GetQvSystemVendor(); vendors other than the default
     *                           read their first interface and device lists regardless of the
     *                           producer's "changed" answer.
     * \param[in] fileName       The producer's file name, searched on GENICAM_GENTL64_PATH.
     * \param[in] interfaceTypes Mask of _EQvInterfaceType_t bits; other interfaces are not opened.
     * \throws The producer loader's exceptions; CQvGenTLErrorException "%d = TLOpen(0x%p)";
     *         the failures of the first interface-list update. Everything made is taken down.
     */
    CQvSystem(_EQvSystemVendor_t vendor, const char* fileName, _EQvInterfaceType_t interfaceTypes);

    // IQvSystem
    _EQvSystemVendor_t GetQvSystemVendor() override;
    IQvPort* GetIQvPort() override;
    IQvSystemInfo* GetIQvSystemInfo() const override;
    bool UpdateInterfaceList() override;
    size_t GetInterfaceCount() const override;
    IQvInterface* GetIQvInterface(size_t nIndex) override;
    IQvDeviceReleasable* CreateFirstIQvDevice(GenTL::DEVICE_ACCESS_FLAGS flags) override;
    // IQvSystemReleasable, IQvSystemInside
    int64_t AddRef() override;
    void Release() override;
    GenTL::TL_HANDLE GetSystemHandle() override;

    /// \return The producer binding (tests).
    CQvGenTLLib* GetGenTLLib() const { return m_pCQvGenTL; }
    /// \return The interface-type mask.
    _EQvInterfaceType_t GetInterfaceTypes() const { return m_interfaceTypes; }

private:
    ~CQvSystem() override;
    /// Releases every interface; false when one of them threw.
    bool ReleaseInterfaces() noexcept;
    /// Listener, port, information, TLClose and the binding. \throws CQvGenTLErrorException for TLClose.
    void DeleteInsideObjects();
    /// The producer's interface IDs in its order, after TLUpdateInterfaceList.
    std::vector<GenICam::gcstring> ReadInterfaceIDs(bool& bChanged);

    const GenICam::gcstring m_fileName;
    GenTL::TL_HANDLE m_hTL = nullptr; // the producer's; null once TLClose has run
    const _EQvSystemVendor_t m_vendor;
    const _EQvInterfaceType_t m_interfaceTypes;
    const uint64_t m_updateInterfaceListTimeoutMs = 250;
    mutable GenICam::CLock m_lock;
    // Guarded by m_lock.
    std::vector<CQvInterface*> m_interfaces; // one reference held on each
    CQvSystemInfo m_systemInfo;
    std::atomic<int64_t> m_lRefCount{0};
    bool m_bFirstUpdate = true; // cleared by the first list update of vendors 1 to 3
};
} // namespace QvApi
