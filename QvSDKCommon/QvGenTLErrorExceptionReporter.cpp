#include "QvSDKCommon/QvGenTLErrorExceptionReporter.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "QvGenTLCommon/QvGenTLLib.h"

namespace QvApi
{
namespace
{
constexpr size_t kMessageCapacity = 1024;

// Appends " <text>" when the producer's last error on this thread is the one being reported;
// otherwise its text describes some other failure and would mislead. Never throws: a failure
// to fetch the text must not replace the exception being built.
void AppendProducerText(CQvGenTLLib* lib, GenTL::GC_ERROR error, char* message) noexcept
{
    if (lib == nullptr || lib->GCGetLastError == nullptr)
        return;
    try
    {
        GenTL::GC_ERROR code = 0;
        size_t size = 0;
        if (lib->GCGetLastError(&code, nullptr, &size) != GenTL::GC_ERR_SUCCESS || code != error)
            return;
        if (size == SIZE_MAX)
            return; // one byte more would wrap to an empty buffer
        std::vector<char> text(size + 1, '\0'); // the extra zero ends a text the producer left open
        if (lib->GCGetLastError(&code, text.data(), &size) != GenTL::GC_ERR_SUCCESS || code != error)
            return;
        const size_t used = strlen(message);
        snprintf(message + used, kMessageCapacity - used, " %s", text.data());
    }
    catch (...)
    {
    }
}
} // namespace

CQvGenTLErrorExceptionReporter::CQvGenTLErrorExceptionReporter(const char* sourceFileName, int sourceLine,
                                                               const char* exceptionType)
    : m_sourceFileName(sourceFileName), m_sourceLine(sourceLine), m_exceptionType(exceptionType)
{
}

CQvGenTLErrorException CQvGenTLErrorExceptionReporter::Report(CQvGenTLLib* lib, GenTL::GC_ERROR error,
                                                              const char* functionName, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CQvGenTLErrorException exception = ReportV(lib, error, functionName, format, args);
    va_end(args);
    return exception;
}

CQvGenTLErrorException CQvGenTLErrorExceptionReporter::ReportV(CQvGenTLLib* lib, GenTL::GC_ERROR error,
                                                               const char* functionName, const char* format,
                                                               va_list args)
{
    char message[kMessageCapacity] = {};
    if (format != nullptr && vsnprintf(message, sizeof(message), format, args) < 0)
        message[0] = '\0';
    AppendProducerText(lib, error, message);
    return CQvGenTLErrorException(error, functionName, message, m_sourceFileName.c_str(), m_sourceLine,
                                  m_exceptionType.c_str());
}
} // namespace QvApi
