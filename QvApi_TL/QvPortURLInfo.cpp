#include "QvApi_TL/QvPortURLInfo.h"

#include <vector>

#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CQvPortURLInfo::CQvPortURLInfo(CQvGenTLLib* pCQvGenTL, GenTL::PORT_HANDLE hPort)
    : m_pCQvGenTL(pCQvGenTL), m_hPort(hPort)
{
}

GenICam::gcstring CQvPortURLInfo::GetPortInfoURLString(GenTL::URL_INFO_CMD cmd) const
{
    QV_ASSERT(m_hPort != nullptr, "m_hPort != NULL");
    // Producers before GenTL 1.1 only know their first URL, through GCGetPortURL.
    if (m_pCQvGenTL->GCGetPortURLInfo == nullptr && m_pCQvGenTL->GCGetPortURL != nullptr &&
        cmd == GenTL::URL_INFO_URL && m_nURLIndex == 0)
        return GetPortURL();

    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    size_t size = 0;
    GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, GCGetPortURLInfo, m_hPort, m_nURLIndex, cmd, &type, nullptr, &size);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "GCGetPortURLInfo", "%d = GCGetPortURLInfo(0x%p, %u, %d, 0x%p, 0x%p, 0x%p)", err,
                   m_hPort, m_nURLIndex, cmd, static_cast<void*>(&type), static_cast<void*>(nullptr),
                   static_cast<void*>(&size));
    try
    {
        std::vector<char> buffer(size + 1, '\0');
        err = m_pCQvGenTL->GCGetPortURLInfo(m_hPort, m_nURLIndex, cmd, &type, buffer.data(), &size);
        QV_CHECK_GENTL(m_pCQvGenTL, err, "GCGetPortURLInfo", "%d = GCGetPortURLInfo(0x%p, %u, %d, 0x%p, 0x%p, 0x%p)",
                       err, m_hPort, m_nURLIndex, cmd, static_cast<void*>(&type), static_cast<void*>(buffer.data()),
                       static_cast<void*>(&size));
        return GenICam::gcstring(buffer.data());
    }
    QV_CATCH_BAD_ALLOC()
}

template <typename T>
T CQvPortURLInfo::GetPortURLInfo(GenTL::URL_INFO_CMD cmd) const
{
    T value{};
    size_t size = sizeof(value);
    GetPortURLInfo(cmd, &value, &size);
    return value;
}

void CQvPortURLInfo::GetPortURLInfo(GenTL::URL_INFO_CMD cmd, void* pBuffer, size_t* pSize) const
{
    QV_ASSERT(m_hPort != nullptr, "m_hPort != NULL");
    GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_pCQvGenTL, GCGetPortURLInfo, m_hPort, m_nURLIndex, cmd, &type, pBuffer, pSize);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "GCGetPortURLInfo", "%d = GCGetPortURLInfo(0x%p, %u, %d, 0x%p, 0x%p, 0x%p)", err,
                   m_hPort, m_nURLIndex, cmd, static_cast<void*>(&type), pBuffer, static_cast<void*>(pSize));
}

GenICam::gcstring CQvPortURLInfo::GetPortURL() const
{
    QV_ASSERT(m_hPort != nullptr, "m_hPort != NULL");
    size_t size = 0;
    if (m_pCQvGenTL->GCGetPortURL == nullptr)
        QV_THROW_GENTL(m_pCQvGenTL, GenTL::GC_ERR_NOT_IMPLEMENTED, "GCGetPortURL", "%d = GCGetPortURL(0x%p, 0x%p, 0x%p)",
                       GenTL::GC_ERR_NOT_IMPLEMENTED, m_hPort, static_cast<void*>(nullptr), static_cast<void*>(&size));
    GenTL::GC_ERROR err = m_pCQvGenTL->GCGetPortURL(m_hPort, nullptr, &size);
    QV_CHECK_GENTL(m_pCQvGenTL, err, "GCGetPortURL", "%d = GCGetPortURL(0x%p, 0x%p, 0x%p)", err, m_hPort,
                   static_cast<void*>(nullptr), static_cast<void*>(&size));
    try
    {
        std::vector<char> buffer(size + 1, '\0');
        err = m_pCQvGenTL->GCGetPortURL(m_hPort, buffer.data(), &size);
        // The six-field text of GCGetPortURLInfo is reused here on purpose.
        QV_CHECK_GENTL(m_pCQvGenTL, err, "GCGetPortURL", "%d = GCGetPortURL(0x%p, %u, %d, 0x%p, 0x%p, 0x%p)", err,
                       m_hPort, m_nURLIndex, GenTL::URL_INFO_URL, static_cast<void*>(nullptr),
                       static_cast<void*>(buffer.data()), static_cast<void*>(&size));
        return GenICam::gcstring(buffer.data());
    }
    QV_CATCH_BAD_ALLOC()
}

GenICam::gcstring CQvPortURLInfo::GetURL() const
{
    return GetPortInfoURLString(GenTL::URL_INFO_URL);
}

int32_t CQvPortURLInfo::GetSchemaVerMajor() const
{
    return GetPortURLInfo<int32_t>(GenTL::URL_INFO_SCHEMA_VER_MAJOR);
}

int32_t CQvPortURLInfo::GetSchemaVerMinor() const
{
    return GetPortURLInfo<int32_t>(GenTL::URL_INFO_SCHEMA_VER_MINOR);
}

int32_t CQvPortURLInfo::GetFileVerMajor() const
{
    return GetPortURLInfo<int32_t>(GenTL::URL_INFO_FILE_VER_MAJOR);
}

int32_t CQvPortURLInfo::GetFileVerMinor() const
{
    return GetPortURLInfo<int32_t>(GenTL::URL_INFO_FILE_VER_MINOR);
}

int32_t CQvPortURLInfo::GetFileVerSubMinor() const
{
    return GetPortURLInfo<int32_t>(GenTL::URL_INFO_FILE_VER_SUBMINOR);
}

void CQvPortURLInfo::GetSha1HashBuffer(void* pBuffer, size_t* pSize) const
{
    GetPortURLInfo(GenTL::URL_INFO_FILE_SHA1_HASH, pBuffer, pSize);
}

uint64_t CQvPortURLInfo::GetFileRegisterAddress() const
{
    return GetPortURLInfo<uint64_t>(GenTL::URL_INFO_FILE_REGISTER_ADDRESS);
}

uint64_t CQvPortURLInfo::GetFileSize() const
{
    return GetPortURLInfo<uint64_t>(GenTL::URL_INFO_FILE_SIZE);
}

int32_t CQvPortURLInfo::GetScheme() const
{
    return GetPortURLInfo<int32_t>(GenTL::URL_INFO_SCHEME);
}

GenICam::gcstring CQvPortURLInfo::GetFileName() const
{
    return GetPortInfoURLString(GenTL::URL_INFO_FILENAME);
}
} // namespace QvApi
