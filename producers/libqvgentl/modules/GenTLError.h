#pragma once

#include <exception>
#include <string>

#include <GenTL/GenTL.h>

namespace QvGenTL {

/**
 * A failure inside the producer, carrying the GenTL code the entry point returns and the text
 * GCGetLastError reports. Thrown by module code, turned into a return value in exactly one
 * place: GuardedCall at the C boundary.
 */
class CGenTLError : public std::exception
{
public:
    CGenTLError(GenTL::GC_ERROR code, std::string text) : m_code(code), m_text(std::move(text)) {}

    GenTL::GC_ERROR Code() const noexcept { return m_code; }
    const char* what() const noexcept override { return m_text.c_str(); }

private:
    GenTL::GC_ERROR m_code;
    std::string m_text;
};

/// Throws CGenTLError with a printf-style text; out of line to keep callers small.
[[noreturn, gnu::cold, gnu::noinline, gnu::format(printf, 2, 3)]] void ThrowGenTL(GenTL::GC_ERROR code,
                                                                                  const char* format, ...);

/// Throws unless code is GC_ERR_SUCCESS (for helpers that answer with a code).
inline void CheckGenTL(GenTL::GC_ERROR code, const char* what)
{
    if (code != GenTL::GC_ERR_SUCCESS)
        ThrowGenTL(code, "%s failed (%d)", what, code);
}

} // namespace QvGenTL
