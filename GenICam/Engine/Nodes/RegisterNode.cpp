#include "Engine/Nodes/RegisterNode.h"

#include <cctype>
#include <cstring>

#include <Base/GCException.h>

#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/EvaluationGuard.h"

namespace GenApi
{
bool CRegisterNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    if (m_register.ConfigureElement(this, child, builder))
        return true;
    return CNode::ConfigureElement(child, builder);
}

void CRegisterNode::DropCacheLocked()
{
    CNode::DropCacheLocked();
    m_register.DropPortCacheLocked();
}

std::vector<uint8_t> CRegisterNode::ReadAllLocked(bool verify, bool ignoreCache)
{
    if (!verify && !ignoreCache && m_valueValid && ReadableLocked())
        return m_cachedBytes;
    CheckReadableLocked("Get");
    CEvaluationGuard guard(this);
    const int64_t lengthBytes = m_register.LengthLocked();
    if (lengthBytes < 0 || lengthBytes > (64 << 20))
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "Get")("Node '%s' : register length %lld is not usable", NameText(),
                                                               static_cast<long long>(lengthBytes));
    std::vector<uint8_t> bytes(static_cast<size_t>(lengthBytes));
    m_register.ReadBytesLocked(this, bytes.data(), m_register.AddressLocked(), lengthBytes, !(ignoreCache || verify));
    if (verify)
        CheckErrorsLocked();
    if (CachingMode() != NoCache)
    {
        m_cachedBytes = bytes;
        m_valueValid = true;
    }
    return bytes;
}

void CRegisterNode::WriteAllLocked(const uint8_t* pBuffer, int64_t lengthBytes, bool verify)
{
    CheckWritableLocked(verify, "Set");
    const int64_t registerLength = m_register.LengthLocked();
    if (lengthBytes != registerLength)
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "Set")("Length = %lld must be equal to the register length %lld",
                                                               static_cast<long long>(lengthBytes),
                                                               static_cast<long long>(registerLength));
    CEvaluationGuard guard(this);
    m_valueValid = false;
    m_register.WriteBytesLocked(this, pBuffer, m_register.AddressLocked(), lengthBytes);
    if (verify)
        CheckErrorsLocked();
    if (CachingMode() == WriteThrough)
    {
        m_cachedBytes.assign(pBuffer, pBuffer + lengthBytes);
        m_valueValid = true;
    }
}

GenICam::gcstring CRegisterNode::ToString(bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    const std::vector<uint8_t> bytes = ReadAllLocked(verify, ignoreCache);
    static const char kDigits[] = "0123456789abcdef";
    std::string text = "0x";
    text.reserve(2 + 2 * bytes.size());
    for (uint8_t byte : bytes)
    {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return GenICam::gcstring(std::move(text));
}

void CRegisterNode::FromString(const GenICam::gcstring& valueText, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    const char* p = valueText.c_str();
    if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X'))
        p += 2;
    const size_t digits = std::strlen(p);
    bool valid = digits % 2 == 0;
    std::vector<uint8_t> bytes;
    for (size_t i = 0; valid && i < digits; i += 2)
    {
        if (!std::isxdigit(static_cast<unsigned char>(p[i])) || !std::isxdigit(static_cast<unsigned char>(p[i + 1])))
        {
            valid = false;
            break;
        }
        const char pair[3] = {p[i], p[i + 1], '\0'};
        bytes.push_back(static_cast<uint8_t>(std::strtoul(pair, nullptr, 16)));
    }
    if (!valid)
        throw INVALID_ARGUMENT_EXCEPTION_NODE(NameText(), "FromString")("Node '%s' : cannot convert string '%s' to a register value.",
                                                                       NameText(), valueText.c_str());
    const int64_t lengthBytes = m_register.LengthLocked();
    bytes.resize(static_cast<size_t>(lengthBytes > 0 ? lengthBytes : 0), 0);
    WriteAllLocked(bytes.data(), lengthBytes, verify);
}

void CRegisterNode::Set(const uint8_t* pBuffer, int64_t lengthBytes, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    WriteAllLocked(pBuffer, lengthBytes, verify);
}

void CRegisterNode::Get(uint8_t* pBuffer, int64_t lengthBytes, bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    const std::vector<uint8_t> bytes = ReadAllLocked(verify, ignoreCache);
    if (lengthBytes != static_cast<int64_t>(bytes.size()))
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "Get")("Length = %lld must be equal to the register length %lld",
                                                               static_cast<long long>(lengthBytes),
                                                               static_cast<long long>(bytes.size()));
    std::memcpy(pBuffer, bytes.data(), bytes.size());
}

int64_t CRegisterNode::GetLength()
{
    AutoLock lock(NodeMapLock());
    return m_register.LengthLocked();
}

int64_t CRegisterNode::GetAddress()
{
    AutoLock lock(NodeMapLock());
    return m_register.AddressLocked();
}
} // namespace GenApi
