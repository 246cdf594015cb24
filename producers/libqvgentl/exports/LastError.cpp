#include "exports/LastError.h"

#include <cstring>

namespace QvGenTL {

namespace {

struct LastError_t
{
    GenTL::GC_ERROR code = GenTL::GC_ERR_SUCCESS;
    std::string text = "No error";
};

thread_local LastError_t t_lastError;

} // namespace

GenTL::GC_ERROR RecordError(GenTL::GC_ERROR code, std::string text)
{
    t_lastError.code = code;
    t_lastError.text = std::move(text);
    return code;
}

GenTL::GC_ERROR CopyLastError(GenTL::GC_ERROR* piErrorCode, char* sErrText, size_t* piSize)
{
    if (piErrorCode == nullptr || piSize == nullptr)
        return GenTL::GC_ERR_INVALID_PARAMETER;
    const size_t size = t_lastError.text.size() + 1;
    *piErrorCode = t_lastError.code;
    if (sErrText == nullptr)
    {
        *piSize = size;
        return GenTL::GC_ERR_SUCCESS;
    }
    if (*piSize < size)
    {
        *piSize = size;
        return GenTL::GC_ERR_BUFFER_TOO_SMALL;
    }
    std::memcpy(sErrText, t_lastError.text.c_str(), size);
    *piSize = size;
    return GenTL::GC_ERR_SUCCESS;
}

} // namespace QvGenTL
