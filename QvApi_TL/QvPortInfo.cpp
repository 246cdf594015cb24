#include "QvApi_TL/QvPortInfo.h"

#include "QvApi_TL/QvGenTLText.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CQvPortInfo::CQvPortInfo(CQvGenTLLib* pCQvGenTL, GenTL::PORT_HANDLE hPort) : m_pCQvGenTL(pCQvGenTL), m_hPort(hPort) {}

GenICam::gcstring CQvPortInfo::GetPortInfoString(GenTL::PORT_INFO_CMD cmd) const
{
    QV_ASSERT(m_hPort != nullptr, "m_hPort != NULL");
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    try
    {
        return ReadGenTLText(
            [&](char* pBuffer, size_t* pSize) {
                return QV_GENTL_CALL(m_pCQvGenTL, GCGetPortInfo, m_hPort, cmd, &type, pBuffer, pSize);
            },
            [&](GenTL::GC_ERROR err, void* pBuffer, size_t* pSize) {
                QV_THROW_GENTL(m_pCQvGenTL, err, "GCGetPortInfo", "%d = GCGetPortInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)",
                               err, m_hPort, cmd, static_cast<void*>(&type), pBuffer, static_cast<void*>(pSize));
            });
    }
    QV_CATCH_BAD_ALLOC()
}

bool CQvPortInfo::GetPortInfoBool(GenTL::PORT_INFO_CMD cmd) const
{
    QV_ASSERT(m_hPort != nullptr, "m_hPort != NULL");
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    uint8_t value = 0;
    size_t size = sizeof(value);
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, GCGetPortInfo, m_hPort, cmd, &type, &value, &size);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "GCGetPortInfo", "%d = GCGetPortInfo(0x%p, %d, 0x%p, 0x%p, 0x%p)", err, m_hPort,
                   cmd, static_cast<void*>(&type), static_cast<void*>(&value), static_cast<void*>(&size));
    return value != 0;
}

GenICam::gcstring CQvPortInfo::GetID() const
{
    return GetPortInfoString(GenTL::PORT_INFO_ID);
}

GenICam::gcstring CQvPortInfo::GetVendor() const
{
    return GetPortInfoString(GenTL::PORT_INFO_VENDOR);
}

GenICam::gcstring CQvPortInfo::GetModel() const
{
    return GetPortInfoString(GenTL::PORT_INFO_MODEL);
}

GenICam::gcstring CQvPortInfo::GetTLType() const
{
    return GetPortInfoString(GenTL::PORT_INFO_TLTYPE);
}

GenICam::gcstring CQvPortInfo::GetModule() const
{
    return GetPortInfoString(GenTL::PORT_INFO_MODULE);
}

bool CQvPortInfo::IsLittleEndian() const
{
    return GetPortInfoBool(GenTL::PORT_INFO_LITTLE_ENDIAN);
}

bool CQvPortInfo::IsBigEndian() const
{
    return GetPortInfoBool(GenTL::PORT_INFO_BIG_ENDIAN);
}

bool CQvPortInfo::IsAccessRead() const
{
    return GetPortInfoBool(GenTL::PORT_INFO_ACCESS_READ);
}

bool CQvPortInfo::IsAccessWrite() const
{
    return GetPortInfoBool(GenTL::PORT_INFO_ACCESS_WRITE);
}

bool CQvPortInfo::IsAccessNA() const
{
    return GetPortInfoBool(GenTL::PORT_INFO_ACCESS_NA);
}

bool CQvPortInfo::IsAccessNI() const
{
    return GetPortInfoBool(GenTL::PORT_INFO_ACCESS_NI);
}

GenICam::gcstring CQvPortInfo::GetVersion() const
{
    return GetPortInfoString(GenTL::PORT_INFO_VERSION);
}

GenICam::gcstring CQvPortInfo::GetPortName() const
{
    return GetPortInfoString(GenTL::PORT_INFO_PORTNAME);
}
} // namespace QvApi
