#include "Engine/Nodes/FloatRegNode.h"

#include <algorithm>
#include <cfloat>
#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"

namespace GenApi
{
bool CFloatRegNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    if (m_register.ConfigureElement(this, child, builder))
        return true;
    if (builder.ElementOf(child) == EElement_t::Endianess)
    {
        m_bigEndian = builder.Enum<EEndianessClass, EEndianess>(child, this) == BigEndian;
        return true;
    }
    return CFloatBase::ConfigureElement(child, builder);
}

void CFloatRegNode::Link(CNodeBuilder& builder)
{
    m_register.Link(this, builder);
}

ECachingMode CFloatRegNode::ComputeCachingModeLocked()
{
    // What a float register reads back need not be exactly what was written: unless the
    // description asks for WriteThrough, re-read after a write.
    return m_register.HasCachableElement() ? m_register.Cachable() : WriteAround;
}

double CFloatRegNode::RawMinLocked()
{
    return m_register.LengthLocked() == 4 ? -static_cast<double>(FLT_MAX) : -DBL_MAX;
}

double CFloatRegNode::RawMaxLocked()
{
    return m_register.LengthLocked() == 4 ? static_cast<double>(FLT_MAX) : DBL_MAX;
}

void CFloatRegNode::DropCacheLocked()
{
    CNode::DropCacheLocked();
    m_register.DropPortCacheLocked();
}

int64_t CFloatRegNode::CheckedLengthLocked(const char* method)
{
    const int64_t lengthBytes = m_register.LengthLocked();
    if (lengthBytes != 4 && lengthBytes != 8)
        throw RUNTIME_EXCEPTION_NODE(NameText(), method)("Node '%s' : a float register must be 4 or 8 bytes long, not %lld",
                                                       NameText(), static_cast<long long>(lengthBytes));
    return lengthBytes;
}

double CFloatRegNode::ReadLocked(bool /*verify*/, bool ignoreCache)
{
    const int64_t lengthBytes = CheckedLengthLocked("GetValue");
    uint8_t bytes[8] = {};
    m_register.ReadBytesLocked(this, bytes, m_register.AddressLocked(), lengthBytes, !ignoreCache);
    if (m_bigEndian)
        std::reverse(bytes, bytes + lengthBytes);
    if (lengthBytes == 4)
    {
        float value;
        std::memcpy(&value, bytes, 4);
        return value;
    }
    double value;
    std::memcpy(&value, bytes, 8);
    return value;
}

void CFloatRegNode::WriteLocked(double value, bool /*verify*/)
{
    const int64_t lengthBytes = CheckedLengthLocked("SetValue");
    uint8_t bytes[8] = {};
    if (lengthBytes == 4)
    {
        const float single = static_cast<float>(value);
        std::memcpy(bytes, &single, 4);
    }
    else
        std::memcpy(bytes, &value, 8);
    if (m_bigEndian)
        std::reverse(bytes, bytes + lengthBytes);
    m_register.WriteBytesLocked(this, bytes, m_register.AddressLocked(), lengthBytes);
}

void CFloatRegNode::Set(const uint8_t* pBuffer, int64_t lengthBytes, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    CheckWritableLocked(verify, "Set");
    if (lengthBytes != m_register.LengthLocked())
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "Set")("Length = %lld must be equal to the register length",
                                                               static_cast<long long>(lengthBytes));
    m_valueValid = false;
    m_register.WriteBytesLocked(this, pBuffer, m_register.AddressLocked(), lengthBytes);
}

void CFloatRegNode::Get(uint8_t* pBuffer, int64_t lengthBytes, bool /*verify*/, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    CheckReadableLocked("Get");
    if (lengthBytes != m_register.LengthLocked())
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "Get")("Length = %lld must be equal to the register length",
                                                               static_cast<long long>(lengthBytes));
    m_register.ReadBytesLocked(this, pBuffer, m_register.AddressLocked(), lengthBytes, !ignoreCache);
}

int64_t CFloatRegNode::GetLength()
{
    AutoLock lock(NodeMapLock());
    return m_register.LengthLocked();
}

int64_t CFloatRegNode::GetAddress()
{
    AutoLock lock(NodeMapLock());
    return m_register.AddressLocked();
}
} // namespace GenApi
