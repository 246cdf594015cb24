#include "modules/InfoValue.h"

#include <cstring>

namespace QvGenTL {

CInfoValue CInfoValue::Scalar(GenTL::INFO_DATATYPE type, const void* value, size_t size)
{
    CInfoValue info;
    info.m_type = type;
    std::memcpy(info.m_scalar, value, size);
    info.m_scalarSize = size;
    return info;
}

CInfoValue CInfoValue::String(std::string_view text)
{
    CInfoValue info;
    info.m_type = GenTL::INFO_DATATYPE_STRING;
    info.m_bytes.assign(text.data(), text.size());
    info.m_bytes.push_back('\0');
    return info;
}

CInfoValue CInfoValue::StringList(const std::string& joined)
{
    CInfoValue info;
    info.m_type = GenTL::INFO_DATATYPE_STRINGLIST;
    info.m_bytes = joined;
    info.m_bytes.push_back('\0');
    info.m_bytes.push_back('\0');
    return info;
}

CInfoValue CInfoValue::Buffer(const void* data, size_t size)
{
    CInfoValue info;
    info.m_type = GenTL::INFO_DATATYPE_BUFFER;
    info.m_bytes.assign(static_cast<const char*>(data), size);
    // An empty buffer still reports size 0 through m_scalarSize.
    return info;
}

GenTL::GC_ERROR CInfoValue::CopyTo(GenTL::INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) const
{
    if (piSize == nullptr)
        return GenTL::GC_ERR_INVALID_PARAMETER;
    const size_t size = Size();
    if (piType != nullptr)
        *piType = m_type;
    if (pBuffer == nullptr)
    {
        *piSize = size;
        return GenTL::GC_ERR_SUCCESS;
    }
    if (*piSize < size)
    {
        *piSize = size;
        return GenTL::GC_ERR_BUFFER_TOO_SMALL;
    }
    std::memcpy(pBuffer, Data(), size);
    *piSize = size;
    return GenTL::GC_ERR_SUCCESS;
}

} // namespace QvGenTL
