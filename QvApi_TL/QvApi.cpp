// The library's public entry points: start-up and shut-down, version, factories and the
// process-wide pixel tables.
#include "QvApi_TL/QvApi.h"

#include <cstdio>
#include <cstdlib>
#include <new>

#include <QvApi/QvApiFunctions.h>

#include "QvApi_TL/QvPixelComponentInfo.h"
#include "QvApi_TL/QvPixelFormatInfo.h"
#include "QvApi_TL/QvPixelFormatInfoInside.h"
#include "QvApi_TL/QvSystem.h"
#include "QvApi_TL/QvFeatureBag.h"
#include "QvSDKCommon/QvExceptionMacros.h"
#include "QvSDKCommon/QvImageBuffer.h"

namespace QvApi
{
std::atomic<int64_t> m_lInitializedCount{0};
CQvPixelFormatInfo* gpCQvPixelFormatInfo = nullptr;
CQvPixelComponentInfo* gpCQvPixelComponentInfo = nullptr;

// ---- Start-up and shut-down ---------------------------------------------------------------------

void QvApiInitialize(uint32_t version)
{
    // Major and minor must match; the patch level (and bits 8-15) may differ.
    if ((version >> 16) != 0x100)
        QV_THROW(RuntimeException,
                 "The version of the runtime library is not matched the version of the build time library. "
                 "Runtime:1.0.5, Build time:%u.%u.%u",
                 version >> 24, (version >> 16) & 0xFF, version & 0xFF);

    if (m_lInitializedCount.fetch_add(1) != 0)
        return;

    SetGenApiCache();
    try
    {
        if (gpCQvPixelFormatInfo == nullptr)
            gpCQvPixelFormatInfo = new CQvPixelFormatInfo();
        if (gpCQvPixelComponentInfo == nullptr)
            gpCQvPixelComponentInfo = new CQvPixelComponentInfo();
    }
    QV_CATCH_BAD_ALLOC()
}

void QvApiTerminate()
{
    CheckQvApiInitialized();
    if (m_lInitializedCount.fetch_sub(1) != 1)
        return;

    delete gpCQvPixelFormatInfo;
    gpCQvPixelFormatInfo = nullptr;
    if (gpCQvPixelComponentInfo != nullptr)
    {
        delete gpCQvPixelComponentInfo;
        gpCQvPixelComponentInfo = nullptr;
    }
}

void CheckQvApiInitialized()
{
    if (QV_UNLIKELY(gpCQvPixelFormatInfo == nullptr))
        QV_THROW(RuntimeException, "QvApi is not initialized.");
}

uint32_t GetQvApiVersion()
{
    CheckQvApiInitialized();
    return QVAPI_VERSION;
}

GenICam::gcstring GetQvApiVersionText()
{
    CheckQvApiInitialized();
    return GenICam::gcstring("1.0.5");
}

void SetGenApiCache()
{
    const char* pCache = getenv("GENICAM_CACHE_V3_0");
    if (pCache == nullptr)
        return;
    char path[4096];
    snprintf(path, sizeof(path), "%s/GenICam/xml/cache", pCache);
    setenv("GENICAM_CACHE_V3_0", path, 1);
}

// ---- Factories ----------------------------------------------------------------------------------

IQvSystemReleasable* CreateIQvSystem(_EQvSystemVendor_t eQvSystemVendor, _EQvInterfaceType_t eTargetInterface)
{
    CheckQvApiInitialized();
    // The producer file of each vendor, used exactly as written.
    static const char* const kProducerFiles[] = {"libqvgentl.cti", "coaxlink.cti", "KYFGLibGenTL.cti",
                                                 "siso_gentl.cti"};
    constexpr uint32_t kVendorCount = sizeof(kProducerFiles) / sizeof(kProducerFiles[0]);
    if (static_cast<uint32_t>(eQvSystemVendor) >= kVendorCount)
        QV_THROW_RANGE(SmallerThanMax, "eQvSystemVendor", static_cast<uint32_t>(eQvSystemVendor), kVendorCount);
    // The frame grabbers' producers are used for CoaXPress only, whatever the caller asked for.
    uint32_t interfaceTypes = eTargetInterface;
    if (eQvSystemVendor != QvSystemVendor_Default)
        interfaceTypes &= QvInterfaceType_CoaXPress;
    if (interfaceTypes != QvInterfaceType_All && static_cast<int32_t>(interfaceTypes) <= 0)
        QV_THROW_RANGE(EqualOrGreaterThanMin, "eTargetInterface", static_cast<int32_t>(interfaceTypes), 1);

    CQvSystem* pSystem = nullptr;
    try
    {
        pSystem = new CQvSystem(eQvSystemVendor, kProducerFiles[eQvSystemVendor],
                                static_cast<_EQvInterfaceType_t>(interfaceTypes));
    }
    QV_CATCH_BAD_ALLOC()
    pSystem->AddRef();
    return pSystem;
}

IQvImageBufferReleasable* CreateIQvImageBuffer(IQvAllocator* pAllocator)
{
    CheckQvApiInitialized();
    try
    {
        return new CQvImageBuffer(pAllocator);
    }
    QV_CATCH_BAD_ALLOC()
}

IQvFeatureBagReleasable* CreateIQvFeatureBag()
{
    CheckQvApiInitialized();
    try
    {
        return new CQvFeatureBag();
    }
    QV_CATCH_BAD_ALLOC()
}

// ---- Pixel tables -------------------------------------------------------------------------------

const IQvPixelFormatInfo* GetIQvPixelFormatInfo(EQvPixelFormatNamingConvention_t value)
{
    CheckQvApiInitialized();
    return gpCQvPixelFormatInfo->GetIQvPixelFormatInfoInside(value);
}

const IQvPixelComponentInfo* GetIQvPixelComponentInfo(EQvPixelComponent_t value)
{
    CheckQvApiInitialized();
    // Only a failed first initialisation leaves the format table without this one.
    if (QV_UNLIKELY(gpCQvPixelComponentInfo == nullptr))
        QV_THROW(RuntimeException, "QvApi is not initialized.");
    return gpCQvPixelComponentInfo->GetIQvPixelComponentInfoInside(value);
}
} // namespace QvApi
