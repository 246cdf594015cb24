#include "QvApi_TL/QvSystemInfo.h"

#include "QvApi_TL/QvGenTLText.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
GenICam::gcstring CQvSystemInfo::GetTLInfoString(GenTL::TL_INFO_CMD cmd) const
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    try
    {
        return ReadGenTLText(
            [&](char* pBuffer, size_t* pSize) {
                return QV_GENTL_CALL(m_pCQvGenTL, TLGetInfo, m_hTL, cmd, &type, pBuffer, pSize);
            },
            [&](GenTL::GC_ERROR err, void* pBuffer, size_t* pSize) {
                QV_THROW_GENTL(m_pCQvGenTL, err, "TLGetInfo", "%d = TLGetInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)", err, m_hTL,
                               cmd, static_cast<void*>(&type), pBuffer, static_cast<void*>(pSize));
            });
    }
    QV_CATCH_BAD_ALLOC()
}

template <typename T>
T CQvSystemInfo::GetTLInfo(GenTL::TL_INFO_CMD cmd) const
{
    QV_ASSERT(m_pCQvGenTL != nullptr, "m_pCQvGenTL != NULL");
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    T value{};
    size_t size = sizeof(value);
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, TLGetInfo, m_hTL, cmd, &type, &value, &size);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "TLGetInfo", "%d = TLGetInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)", err, m_hTL, cmd,
                   static_cast<void*>(&type), static_cast<void*>(&value), static_cast<void*>(&size));
    return value;
}

GenICam::gcstring CQvSystemInfo::GetID() const
{
    return GetTLInfoString(GenTL::TL_INFO_ID);
}

GenICam::gcstring CQvSystemInfo::GetVendor() const
{
    return GetTLInfoString(GenTL::TL_INFO_VENDOR);
}

GenICam::gcstring CQvSystemInfo::GetModel() const
{
    return GetTLInfoString(GenTL::TL_INFO_MODEL);
}

GenICam::gcstring CQvSystemInfo::GetVersion() const
{
    return GetTLInfoString(GenTL::TL_INFO_VERSION);
}

GenICam::gcstring CQvSystemInfo::GetTLType() const
{
    return GetTLInfoString(GenTL::TL_INFO_TLTYPE);
}

GenICam::gcstring CQvSystemInfo::GetName() const
{
    return GetTLInfoString(GenTL::TL_INFO_NAME);
}

GenICam::gcstring CQvSystemInfo::GetPathName() const
{
    return GetTLInfoString(GenTL::TL_INFO_PATHNAME);
}

GenICam::gcstring CQvSystemInfo::GetDisplayName() const
{
    return GetTLInfoString(GenTL::TL_INFO_DISPLAYNAME);
}

int32_t CQvSystemInfo::GetCharEncoding() const
{
    return GetTLInfo<int32_t>(GenTL::TL_INFO_CHAR_ENCODING);
}

uint32_t CQvSystemInfo::GetGenTLVersionMajor() const
{
    return GetTLInfo<uint32_t>(GenTL::TL_INFO_GENTL_VER_MAJOR);
}

uint32_t CQvSystemInfo::GetGenTLVersionMinor() const
{
    return GetTLInfo<uint32_t>(GenTL::TL_INFO_GENTL_VER_MINOR);
}
} // namespace QvApi
