#include "QvApi_TL/QvInterfaceInfo.h"

#include "QvApi_TL/QvGenTLText.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
GenICam::gcstring CQvInterfaceInfo::GetIFInfoString(GenTL::INTERFACE_INFO_CMD cmd) const
{
    QV_ASSERT(m_hIF != nullptr, "m_hIF != NULL");
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    try
    {
        return ReadGenTLText(
            [&](char* pBuffer, size_t* pSize) {
                return QV_GENTL_CALL(m_pCQvGenTL, IFGetInfo, m_hIF, cmd, &type, pBuffer, pSize);
            },
            [&](GenTL::GC_ERROR err, void* pBuffer, size_t* pSize) {
                QV_THROW_GENTL(m_pCQvGenTL, err, "IFGetInfo", "%d = IFGetInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)", err, m_hIF,
                               cmd, static_cast<void*>(&type), pBuffer, static_cast<void*>(pSize));
            });
    }
    QV_CATCH_BAD_ALLOC()
}

GenICam::gcstring CQvInterfaceInfo::GetID() const
{
    return GetIFInfoString(GenTL::INTERFACE_INFO_ID);
}

GenICam::gcstring CQvInterfaceInfo::GetDisplayName() const
{
    return GetIFInfoString(GenTL::INTERFACE_INFO_DISPLAYNAME);
}

GenICam::gcstring CQvInterfaceInfo::GetTLType() const
{
    return GetIFInfoString(GenTL::INTERFACE_INFO_TLTYPE);
}
} // namespace QvApi
