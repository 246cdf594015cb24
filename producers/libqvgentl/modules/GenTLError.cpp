#include "modules/GenTLError.h"

#include <cstdarg>
#include <cstdio>

namespace QvGenTL {

void ThrowGenTL(GenTL::GC_ERROR code, const char* format, ...)
{
    char text[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    throw CGenTLError(code, text);
}

} // namespace QvGenTL
