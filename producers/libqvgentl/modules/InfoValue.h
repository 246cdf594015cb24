#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <GenTL/GenTL.h>

namespace QvGenTL {

/**
 * One answer to a GenTL information query: its data type and bytes, copied out under the
 * two-phase size rule by CopyTo. Numbers live inline, so answering a numeric query allocates
 * nothing (buffer information is queried several times per frame).
 */
class CInfoValue
{
public:
    static CInfoValue String(std::string_view text);
    static CInfoValue StringList(const std::string& joined); ///< texts separated by NULs, no final extra NUL
    static CInfoValue Buffer(const void* data, size_t size);
    static CInfoValue Int32(int32_t value) { return Scalar(GenTL::INFO_DATATYPE_INT32, &value, 4); }
    static CInfoValue UInt32(uint32_t value) { return Scalar(GenTL::INFO_DATATYPE_UINT32, &value, 4); }
    static CInfoValue Int64(int64_t value) { return Scalar(GenTL::INFO_DATATYPE_INT64, &value, 8); }
    static CInfoValue UInt64(uint64_t value) { return Scalar(GenTL::INFO_DATATYPE_UINT64, &value, 8); }
    static CInfoValue Float64(double value) { return Scalar(GenTL::INFO_DATATYPE_FLOAT64, &value, 8); }
    static CInfoValue SizeT(size_t value) { return Scalar(GenTL::INFO_DATATYPE_SIZET, &value, sizeof(size_t)); }
    static CInfoValue PtrDiff(ptrdiff_t value) { return Scalar(GenTL::INFO_DATATYPE_PTRDIFF, &value, sizeof(value)); }
    static CInfoValue Ptr(const void* value) { return Scalar(GenTL::INFO_DATATYPE_PTR, &value, sizeof(void*)); }
    static CInfoValue Bool8(bool value)
    {
        const uint8_t byte = value ? 1 : 0;
        return Scalar(GenTL::INFO_DATATYPE_BOOL8, &byte, 1);
    }

    /**
     * Copies the value out. pBuffer null: stores the size (and type) only. A capacity below
     * the size gives GC_ERR_BUFFER_TOO_SMALL with *piSize set to the size needed.
     * piSize null gives GC_ERR_INVALID_PARAMETER; piType may be null.
     */
    GenTL::GC_ERROR CopyTo(GenTL::INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) const;

    GenTL::INFO_DATATYPE Type() const { return m_type; }
    size_t Size() const { return m_bytes.empty() ? m_scalarSize : m_bytes.size(); }
    const void* Data() const { return m_bytes.empty() ? static_cast<const void*>(m_scalar) : m_bytes.data(); }

private:
    static CInfoValue Scalar(GenTL::INFO_DATATYPE type, const void* value, size_t size);

    GenTL::INFO_DATATYPE m_type = GenTL::INFO_DATATYPE_UNKNOWN;
    uint8_t m_scalar[8] = {};
    size_t m_scalarSize = 0;
    std::string m_bytes; // strings (with their NUL) and buffers
};

} // namespace QvGenTL
