#pragma once

#include <cstddef>
#include <string>

#include <GenTL/GenTL.h>

namespace QvGenTL {

/// Records the last error of the calling thread and returns its code.
GenTL::GC_ERROR RecordError(GenTL::GC_ERROR code, std::string text);

/// GCGetLastError for the calling thread.
GenTL::GC_ERROR CopyLastError(GenTL::GC_ERROR* piErrorCode, char* sErrText, size_t* piSize);

} // namespace QvGenTL
