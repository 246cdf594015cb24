#include "modules/RegisterSpace.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace QvGenTL {

namespace {

void EncodeInteger(uint64_t value, uint8_t* out, size_t length, bool littleEndian)
{
    for (size_t i = 0; i < length; ++i)
    {
        const uint8_t byte = static_cast<uint8_t>(value >> (8 * i));
        out[littleEndian ? i : length - 1 - i] = byte;
    }
}

uint64_t DecodeInteger(const uint8_t* in, size_t length, bool littleEndian)
{
    uint64_t value = 0;
    for (size_t i = 0; i < length; ++i)
        value |= uint64_t(in[littleEndian ? i : length - 1 - i]) << (8 * i);
    return value;
}

int64_t SignExtend(uint64_t value, size_t length)
{
    if (length >= 8)
        return static_cast<int64_t>(value);
    const unsigned shift = unsigned(64 - 8 * length);
    return static_cast<int64_t>(value << shift) >> shift;
}

} // namespace

void CRegisterSpace::Insert(Register_t reg)
{
    auto it = std::lower_bound(m_registers.begin(), m_registers.end(), reg.address,
                               [](const Register_t& r, uint64_t a) { return r.address < a; });
    if ((it != m_registers.end() && it->address < reg.address + reg.length) ||
        (it != m_registers.begin() && std::prev(it)->address + std::prev(it)->length > reg.address))
        throw std::logic_error("overlapping registers in a register space");
    m_registers.insert(it, std::move(reg));
}

void CRegisterSpace::AddInteger(uint64_t address, uint32_t length, IntegerGetter getter, IntegerSetter setter)
{
    Register_t reg{};
    reg.address = address;
    reg.length = length;
    reg.kind = EKind_t::Integer;
    reg.readable = static_cast<bool>(getter);
    reg.writable = static_cast<bool>(setter);
    reg.getInteger = std::move(getter);
    reg.setInteger = std::move(setter);
    Insert(std::move(reg));
}

void CRegisterSpace::AddFloat(uint64_t address, FloatGetter getter, FloatSetter setter)
{
    Register_t reg{};
    reg.address = address;
    reg.length = 8;
    reg.kind = EKind_t::Float;
    reg.readable = static_cast<bool>(getter);
    reg.writable = static_cast<bool>(setter);
    reg.getFloat = std::move(getter);
    reg.setFloat = std::move(setter);
    Insert(std::move(reg));
}

void CRegisterSpace::AddString(uint64_t address, uint32_t length, StringGetter getter, StringSetter setter)
{
    Register_t reg{};
    reg.address = address;
    reg.length = length;
    reg.kind = EKind_t::String;
    reg.readable = static_cast<bool>(getter);
    reg.writable = static_cast<bool>(setter);
    reg.getString = std::move(getter);
    reg.setString = std::move(setter);
    Insert(std::move(reg));
}

void CRegisterSpace::AddMemory(uint64_t address, const uint8_t* data, size_t size)
{
    Register_t reg{};
    reg.address = address;
    reg.length = size;
    reg.kind = EKind_t::Memory;
    reg.memory = data;
    reg.readable = true;
    Insert(std::move(reg));
}

const CRegisterSpace::Register_t* CRegisterSpace::Find(uint64_t address, size_t size) const
{
    auto it = std::upper_bound(m_registers.begin(), m_registers.end(), address,
                               [](uint64_t a, const Register_t& r) { return a < r.address; });
    if (it == m_registers.begin())
        return nullptr;
    const Register_t& reg = *std::prev(it);
    const uint64_t offset = address - reg.address;
    if (offset >= reg.length || size > reg.length - offset)
        return nullptr;
    // Numbers are accessed whole; texts and memory also in parts.
    if ((reg.kind == EKind_t::Integer || reg.kind == EKind_t::Float) && (offset != 0 || size != reg.length))
        return nullptr;
    return &reg;
}

GenTL::GC_ERROR CRegisterSpace::Read(uint64_t address, void* pBuffer, size_t size) const
{
    const Register_t* reg = Find(address, size);
    if (reg == nullptr)
        return GenTL::GC_ERR_INVALID_ADDRESS;
    if (!reg->readable)
        return GenTL::GC_ERR_ACCESS_DENIED;
    uint8_t* out = static_cast<uint8_t*>(pBuffer);
    const uint64_t offset = address - reg->address;
    switch (reg->kind)
    {
    case EKind_t::Integer:
        EncodeInteger(static_cast<uint64_t>(reg->getInteger()), out, size, m_littleEndian);
        break;
    case EKind_t::Float:
    {
        const double value = reg->getFloat();
        uint64_t bits;
        std::memcpy(&bits, &value, 8);
        EncodeInteger(bits, out, 8, m_littleEndian);
        break;
    }
    case EKind_t::String:
    {
        const std::string text = reg->getString();
        for (size_t i = 0; i < size; ++i)
        {
            const size_t at = offset + i;
            out[i] = at < text.size() ? static_cast<uint8_t>(text[at]) : 0;
        }
        break;
    }
    case EKind_t::Memory:
        std::memcpy(out, reg->memory + offset, size);
        break;
    }
    return GenTL::GC_ERR_SUCCESS;
}

GenTL::GC_ERROR CRegisterSpace::Write(uint64_t address, const void* pBuffer, size_t size) const
{
    const Register_t* reg = Find(address, size);
    if (reg == nullptr)
        return GenTL::GC_ERR_INVALID_ADDRESS;
    if (!reg->writable)
        return GenTL::GC_ERR_ACCESS_DENIED;
    const uint8_t* in = static_cast<const uint8_t*>(pBuffer);
    switch (reg->kind)
    {
    case EKind_t::Integer:
        return reg->setInteger(SignExtend(DecodeInteger(in, size, m_littleEndian), size));
    case EKind_t::Float:
    {
        const uint64_t bits = DecodeInteger(in, 8, m_littleEndian);
        double value;
        std::memcpy(&value, &bits, 8);
        return reg->setFloat(value);
    }
    case EKind_t::String:
    {
        // A text register is written whole, as GenApi does; a partial write keeps the rest.
        std::string text = reg->getString ? reg->getString() : std::string();
        text.resize(reg->length, '\0');
        std::memcpy(&text[address - reg->address], in, size);
        text.resize(std::strlen(text.c_str()));
        return reg->setString(text);
    }
    case EKind_t::Memory:
        return GenTL::GC_ERR_ACCESS_DENIED;
    }
    return GenTL::GC_ERR_ERROR;
}

} // namespace QvGenTL
