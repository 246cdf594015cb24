#include "Engine/Nodes/IntRegNode.h"

#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/EvaluationGuard.h"

namespace GenApi
{
namespace
{
uint64_t Decode(const uint8_t* pBytes, int64_t lengthBytes, bool bigEndian)
{
    uint64_t raw = 0;
    for (int64_t i = 0; i < lengthBytes; ++i)
    {
        const int64_t shiftBytes = bigEndian ? lengthBytes - 1 - i : i;
        raw |= static_cast<uint64_t>(pBytes[i]) << (8 * shiftBytes);
    }
    return raw;
}

void Encode(uint64_t raw, uint8_t* pBytes, int64_t lengthBytes, bool bigEndian)
{
    for (int64_t i = 0; i < lengthBytes; ++i)
    {
        const int64_t shiftBytes = bigEndian ? lengthBytes - 1 - i : i;
        pBytes[i] = static_cast<uint8_t>(raw >> (8 * shiftBytes));
    }
}

uint64_t Mask(unsigned width)
{
    return width >= 64 ? ~uint64_t(0) : ((uint64_t(1) << width) - 1);
}

int64_t SignExtend(uint64_t value, unsigned width)
{
    if (width >= 64)
        return static_cast<int64_t>(value);
    const uint64_t signBit = uint64_t(1) << (width - 1);
    return static_cast<int64_t>((value ^ signBit) - signBit);
}
} // namespace

bool CIntRegNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    if (m_register.ConfigureElement(this, child, builder))
        return true;
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::Sign)
        m_signed = builder.Enum<ESignClass, ESign>(child, this) == Signed;
    else if (element == EElement_t::Endianess)
        m_bigEndian = builder.Enum<EEndianessClass, EEndianess>(child, this) == BigEndian;
    else if (element == EElement_t::Bit)
        m_lsb = m_msb = builder.Int(child, this);
    else if (element == EElement_t::LSB)
        m_lsb = builder.Int(child, this);
    else if (element == EElement_t::MSB)
        m_msb = builder.Int(child, this);
    else
        return CIntegerBase::ConfigureElement(child, builder);
    return true;
}

void CIntRegNode::Link(CNodeBuilder& builder)
{
    m_register.Link(this, builder);
    if (Kind() == ENodeKind_t::IntReg)
        return;
    if (m_lsb < 0 && m_msb < 0)
        builder.Fail(this, pugi::xml_node(), "a bit field needs Bit or LSB and MSB");
    if (m_lsb < 0)
        m_lsb = m_msb;
    if (m_msb < 0)
        m_msb = m_lsb;
    if (m_pMap && m_register.HasLengthElement())
    {
        const int64_t bits = 8 * m_register.ConstantLength();
        if (m_bigEndian)
        {
            if (m_lsb < m_msb)
                builder.Fail(this, pugi::xml_node(), "For a big endian integer LSB must be greater or equal than MSB");
            if (m_lsb >= bits)
                builder.Fail(this, pugi::xml_node(), "For a big endian integer LSB must be smaller than 8 * Length");
        }
        else
        {
            if (m_msb < m_lsb)
                builder.Fail(this, pugi::xml_node(), "For a little endian integer MSB must be greater or equal than LSB");
            if (m_msb >= bits)
                builder.Fail(this, pugi::xml_node(), "For a little endian integer MSB must be smaller than 8 * Length");
        }
    }
}

EAccessMode CIntRegNode::NaturalAccessLocked(bool structural)
{
    return m_register.NaturalAccessLocked(structural);
}

void CIntRegNode::DropCacheLocked()
{
    CNode::DropCacheLocked();
    m_register.DropPortCacheLocked();
}

int64_t CIntRegNode::CheckedLengthLocked()
{
    const int64_t lengthBytes = m_register.LengthLocked();
    if (lengthBytes > 8)
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "GetValue")("Value = %lld must be equal or smaller than Max = 8",
                                                                    static_cast<long long>(lengthBytes));
    if (lengthBytes < 1)
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "GetValue")("Value = %lld must be equal or greater than Min = 1",
                                                                    static_cast<long long>(lengthBytes));
    return lengthBytes;
}

void CIntRegNode::FieldLocked(int64_t lengthBytes, unsigned& low, unsigned& width)
{
    const int64_t bits = 8 * lengthBytes;
    if (Kind() == ENodeKind_t::IntReg)
    {
        low = 0;
        width = static_cast<unsigned>(bits);
        return;
    }
    int64_t lowBit = m_bigEndian ? bits - 1 - m_lsb : m_lsb;
    int64_t highBit = m_bigEndian ? bits - 1 - m_msb : m_msb;
    if (lowBit < 0 || highBit >= bits || highBit < lowBit)
        throw RUNTIME_EXCEPTION_NODE(NameText(), "GetValue")("Node '%s' : bit field LSB %lld MSB %lld does not fit a %lld byte register",
                                                           NameText(), static_cast<long long>(m_lsb),
                                                           static_cast<long long>(m_msb), static_cast<long long>(lengthBytes));
    low = static_cast<unsigned>(lowBit);
    width = static_cast<unsigned>(highBit - lowBit + 1);
}

uint64_t CIntRegNode::ReadRawLocked(int64_t address, int64_t lengthBytes, bool useCache)
{
    uint8_t bytes[8] = {};
    m_register.ReadBytesLocked(this, bytes, address, lengthBytes, useCache);
    return Decode(bytes, lengthBytes, m_bigEndian);
}

int64_t CIntRegNode::ReadLocked(bool /*verify*/, bool ignoreCache)
{
    const int64_t lengthBytes = CheckedLengthLocked();
    const int64_t address = m_register.AddressLocked();
    unsigned low = 0, width = 0;
    FieldLocked(lengthBytes, low, width);
    const uint64_t field = (ReadRawLocked(address, lengthBytes, !ignoreCache) >> low) & Mask(width);
    if (m_signed)
        return SignExtend(field, width);
    return static_cast<int64_t>(field);
}

void CIntRegNode::WriteLocked(int64_t value, bool /*verify*/)
{
    const int64_t lengthBytes = CheckedLengthLocked();
    const int64_t address = m_register.AddressLocked();
    unsigned low = 0, width = 0;
    FieldLocked(lengthBytes, low, width);
    uint64_t raw = static_cast<uint64_t>(value);
    if (Kind() != ENodeKind_t::IntReg)
    {
        // Read-modify-write of the field; a register that cannot be read cannot be merged into.
        if (!IsReadable(m_register.AccessModeElement()))
            throw ACCESS_EXCEPTION_NODE(NameText(), "SetValue")("Node is not readable");
        const uint64_t mask = Mask(width) << low;
        raw = (ReadRawLocked(address, lengthBytes, true) & ~mask) | ((static_cast<uint64_t>(value) << low) & mask);
    }
    uint8_t bytes[8] = {};
    Encode(raw, bytes, lengthBytes, m_bigEndian);
    m_register.WriteBytesLocked(this, bytes, address, lengthBytes);
}

int64_t CIntRegNode::RawMinLocked()
{
    const int64_t lengthBytes = CheckedLengthLocked();
    unsigned low = 0, width = 0;
    FieldLocked(lengthBytes, low, width);
    if (!m_signed)
        return 0;
    return width >= 64 ? INT64_MIN : -(int64_t(1) << (width - 1));
}

int64_t CIntRegNode::RawMaxLocked()
{
    const int64_t lengthBytes = CheckedLengthLocked();
    unsigned low = 0, width = 0;
    FieldLocked(lengthBytes, low, width);
    if (m_signed)
        return width >= 64 ? INT64_MAX : (int64_t(1) << (width - 1)) - 1;
    if (width >= 64)
        return Kind() == ENodeKind_t::IntReg ? INT64_MAX : -1;
    return static_cast<int64_t>(Mask(width));
}

// ---------------------------------------------------------------- IRegister

void CIntRegNode::Set(const uint8_t* pBuffer, int64_t lengthBytes, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    CheckWritableLocked(verify, "Set");
    const int64_t registerLength = m_register.LengthLocked();
    if (lengthBytes != registerLength)
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "Set")("Length = %lld must be equal to the register length %lld",
                                                               static_cast<long long>(lengthBytes),
                                                               static_cast<long long>(registerLength));
    m_valueValid = false;
    m_register.WriteBytesLocked(this, pBuffer, m_register.AddressLocked(), lengthBytes);
}

void CIntRegNode::Get(uint8_t* pBuffer, int64_t lengthBytes, bool /*verify*/, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    CheckReadableLocked("Get");
    const int64_t registerLength = m_register.LengthLocked();
    if (lengthBytes != registerLength)
        throw OUT_OF_RANGE_EXCEPTION_NODE(NameText(), "Get")("Length = %lld must be equal to the register length %lld",
                                                               static_cast<long long>(lengthBytes),
                                                               static_cast<long long>(registerLength));
    m_register.ReadBytesLocked(this, pBuffer, m_register.AddressLocked(), lengthBytes, !ignoreCache);
}

int64_t CIntRegNode::GetLength()
{
    AutoLock lock(NodeMapLock());
    return m_register.LengthLocked();
}

int64_t CIntRegNode::GetAddress()
{
    AutoLock lock(NodeMapLock());
    return m_register.AddressLocked();
}
} // namespace GenApi
