#include "QvSDKCommon/QvExceptionMacros.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include <Base/GCException.h>

#include "QvSDKCommon/QvGenTLErrorExceptionReporter.h"
#include "QvSDKCommon/QvLinuxErrorExceptionReporter.h"

namespace QvApi
{
namespace
{
template <typename E>
[[noreturn]] void Throw(const char* file, int line, const char* typeName, const GenICam::gcstring& text)
{
    throw GenICam::ExceptionReporter<E>(file, line, typeName).Report(text);
}

[[noreturn]] void ThrowKind(EQvExceptionKind_t kind, const char* file, int line, const GenICam::gcstring& text)
{
    switch (kind)
    {
    case EQvExceptionKind_t::RuntimeException:
        Throw<GenICam::RuntimeException>(file, line, "RuntimeException", text);
    case EQvExceptionKind_t::InvalidArgumentException:
        Throw<GenICam::InvalidArgumentException>(file, line, "InvalidArgumentException", text);
    case EQvExceptionKind_t::OutOfRangeException:
        Throw<GenICam::OutOfRangeException>(file, line, "OutOfRangeException", text);
    case EQvExceptionKind_t::LogicalErrorException:
        Throw<GenICam::LogicalErrorException>(file, line, "LogicalErrorException", text);
    case EQvExceptionKind_t::AccessException:
        Throw<GenICam::AccessException>(file, line, "AccessException", text);
    case EQvExceptionKind_t::TimeoutException:
        Throw<GenICam::TimeoutException>(file, line, "TimeoutException", text);
    case EQvExceptionKind_t::BadAllocException:
        Throw<GenICam::BadAllocException>(file, line, "BadAllocException", text);
    }
    Throw<GenICam::RuntimeException>(file, line, "RuntimeException", text);
}

const char* RangeTemplate(EQvRangeCheck_t check)
{
    switch (check)
    {
    case EQvRangeCheck_t::EqualOrGreaterThanMin: return "%s = %ld must be equal or greater than Min = %ld";
    case EQvRangeCheck_t::EqualOrSmallerThanMax: return "%s = %ld must be equal or smaller than Max = %ld";
    case EQvRangeCheck_t::SmallerThanMax: return "%s = %ld must be smaller than Max = %ld";
    case EQvRangeCheck_t::GreaterThanMin: return "%s = %ld must be greater than Min = %ld";
    }
    return "%s = %ld is out of range (%ld)";
}
} // namespace

void ThrowGenICamException(EQvExceptionKind_t kind, const char* sourceFileName, int sourceLine, const char* format,
                           ...)
{
    va_list args;
    va_start(args, format);
    GenICam::gcstring text = GenICam::FormatExceptionText(GenICam::kMaxExceptionDescription, format, args);
    va_end(args);
    ThrowKind(kind, sourceFileName, sourceLine, text);
}

void ThrowGenICamExceptionEmpty(EQvExceptionKind_t kind, const char* sourceFileName, int sourceLine)
{
    ThrowKind(kind, sourceFileName, sourceLine, GenICam::gcstring());
}

void ThrowGenTLError(const char* sourceFileName, int sourceLine, CQvGenTLLib* lib, GenTL::GC_ERROR error,
                     const char* functionName, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CQvGenTLErrorExceptionReporter reporter(sourceFileName, sourceLine, "QvGenTLErrorException");
    CQvGenTLErrorException exception = reporter.ReportV(lib, error, functionName, format, args);
    va_end(args);
    throw exception;
}

void ThrowLinuxError(const char* sourceFileName, int sourceLine, int error, const char* functionName,
                     const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CQvLinuxErrorExceptionReporter reporter(sourceFileName, sourceLine, "QvLinuxErrorException");
    CQvLinuxErrorException exception = reporter.ReportV(error, functionName, format, args);
    va_end(args);
    throw exception;
}

void ThrowOutOfRange(const char* sourceFileName, int sourceLine, EQvRangeCheck_t check, const char* name, long value,
                     long bound)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    throw GenICam::ExceptionReporter<GenICam::OutOfRangeException>(sourceFileName, sourceLine, "OutOfRangeException")
        .Report(RangeTemplate(check), name, value, bound);
#pragma GCC diagnostic pop
}

void ThrowNotDividable(const char* sourceFileName, int sourceLine, const char* name, long value, long min, long inc)
{
    throw GenICam::ExceptionReporter<GenICam::OutOfRangeException>(sourceFileName, sourceLine, "OutOfRangeException")
        .Report("The difference between %s = %ld and Min = %ld must be dividable without rest by Inc = %ld", name,
                value, min, inc);
}

void AssertionFailed(const char* sourceFileName, int sourceLine, const char* text) noexcept
{
    fprintf(stderr, "QvApi assertion failed: %s (file '%s', line %d)\n", text, sourceFileName, sourceLine);
    fflush(stderr);
    abort();
}
} // namespace QvApi
