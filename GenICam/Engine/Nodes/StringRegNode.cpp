#include "Engine/Nodes/StringRegNode.h"

#include <cstring>
#include <vector>

#include <Base/GCException.h>

#include "Engine/NodeMap/NodeMapImpl.h"

namespace GenApi
{
bool CStringRegNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    if (m_register.ConfigureElement(this, child, builder))
        return true;
    return CNode::ConfigureElement(child, builder);
}

void CStringRegNode::DropCacheLocked()
{
    CNode::DropCacheLocked();
    m_register.DropPortCacheLocked();
}

int64_t CStringRegNode::MaxLengthLocked()
{
    const EAccessMode mode = AccessLocked();
    if (mode == RO)
        return static_cast<int64_t>(StringValueLocked(false, false).size());
    return m_register.LengthLocked();
}

std::string CStringRegNode::ReadLocked(bool /*verify*/, bool ignoreCache)
{
    const int64_t lengthBytes = m_register.LengthLocked();
    if (lengthBytes < 0 || lengthBytes > (64 << 20))
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "GetValue")("Node '%s' : register length %lld is not usable",
                                                                    NameText(), static_cast<long long>(lengthBytes));
    std::vector<uint8_t> bytes(static_cast<size_t>(lengthBytes));
    m_register.ReadBytesLocked(this, bytes.data(), m_register.AddressLocked(), lengthBytes, !ignoreCache);
    size_t size = 0;
    while (size < bytes.size() && bytes[size] != 0)
        ++size;
    return std::string(reinterpret_cast<const char*>(bytes.data()), size);
}

void CStringRegNode::WriteLocked(const std::string& value, bool /*verify*/)
{
    const int64_t lengthBytes = m_register.LengthLocked();
    if (static_cast<int64_t>(value.size()) > lengthBytes)
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "SetValue")("String exceeds maximum length. Max length is %lld",
                                                                    static_cast<long long>(lengthBytes));
    std::vector<uint8_t> bytes(static_cast<size_t>(lengthBytes), 0);
    std::memcpy(bytes.data(), value.data(), value.size());
    m_register.WriteBytesLocked(this, bytes.data(), m_register.AddressLocked(), lengthBytes);
}

void CStringRegNode::Set(const uint8_t* pBuffer, int64_t lengthBytes, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    CheckWritableLocked(verify, "Set");
    if (lengthBytes != m_register.LengthLocked())
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "Set")("Length = %lld must be equal to the register length",
                                                               static_cast<long long>(lengthBytes));
    m_valueValid = false;
    m_register.WriteBytesLocked(this, pBuffer, m_register.AddressLocked(), lengthBytes);
}

void CStringRegNode::Get(uint8_t* pBuffer, int64_t lengthBytes, bool /*verify*/, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    CheckReadableLocked("Get");
    if (lengthBytes != m_register.LengthLocked())
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "Get")("Length = %lld must be equal to the register length",
                                                               static_cast<long long>(lengthBytes));
    m_register.ReadBytesLocked(this, pBuffer, m_register.AddressLocked(), lengthBytes, !ignoreCache);
}

int64_t CStringRegNode::GetLength()
{
    AutoLock lock(NodeMapLock());
    return m_register.LengthLocked();
}

int64_t CStringRegNode::GetAddress()
{
    AutoLock lock(NodeMapLock());
    return m_register.AddressLocked();
}
} // namespace GenApi
