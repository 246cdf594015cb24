#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <GenTL/GenTL.h>

namespace QvGenTL {

/**
 * The register space behind one port: integer, float and string registers whose values come
 * from getters and go to setters, plus read-only memory blocks (the description files).
 * Values are encoded in the port's byte order at this boundary, so the code behind a register
 * works with plain numbers. A scalar register is accessed whole; strings and memory blocks may
 * be read in parts. Unmapped addresses give GC_ERR_INVALID_ADDRESS, writes to read-only
 * registers GC_ERR_ACCESS_DENIED.
 *
 * Built once by the owning module, then only read: any thread. Getters and setters do their
 * own locking.
 */
class CRegisterSpace
{
public:
    using IntegerGetter = std::function<int64_t()>;
    /// Returns GC_ERR_SUCCESS or the code the write fails with (range, lock, ...).
    using IntegerSetter = std::function<GenTL::GC_ERROR(int64_t)>;
    using FloatGetter = std::function<double()>;
    using FloatSetter = std::function<GenTL::GC_ERROR(double)>;
    using StringGetter = std::function<std::string()>;
    using StringSetter = std::function<GenTL::GC_ERROR(const std::string&)>;

    explicit CRegisterSpace(bool littleEndian) : m_littleEndian(littleEndian) {}

    bool IsLittleEndian() const { return m_littleEndian; }

    /// Integer register of 1..8 bytes; a null getter makes it write-only, a null setter read-only.
    void AddInteger(uint64_t address, uint32_t length, IntegerGetter getter, IntegerSetter setter = nullptr);
    /// IEEE double register of 8 bytes.
    void AddFloat(uint64_t address, FloatGetter getter, FloatSetter setter = nullptr);
    /// String register of length bytes; reads are NUL-padded, writes take the text up to the first NUL.
    void AddString(uint64_t address, uint32_t length, StringGetter getter, StringSetter setter = nullptr);
    /// Read-only bytes that outlive the space (embedded files).
    void AddMemory(uint64_t address, const uint8_t* data, size_t size);

    GenTL::GC_ERROR Read(uint64_t address, void* pBuffer, size_t size) const;
    GenTL::GC_ERROR Write(uint64_t address, const void* pBuffer, size_t size) const;

private:
    enum class EKind_t { Integer, Float, String, Memory };
    struct Register_t
    {
        uint64_t address;
        uint64_t length;
        EKind_t kind;
        IntegerGetter getInteger;
        IntegerSetter setInteger;
        FloatGetter getFloat;
        FloatSetter setFloat;
        StringGetter getString;
        StringSetter setString;
        const uint8_t* memory;
        bool readable;
        bool writable;
    };

    void Insert(Register_t reg);
    const Register_t* Find(uint64_t address, size_t size) const;

    const bool m_littleEndian;
    std::vector<Register_t> m_registers; // sorted by address, never overlapping
};

} // namespace QvGenTL
