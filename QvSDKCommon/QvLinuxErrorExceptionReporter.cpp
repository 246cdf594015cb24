#include "QvSDKCommon/QvLinuxErrorExceptionReporter.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace QvApi
{
namespace
{
constexpr size_t kMessageCapacity = 1024;
}

CQvLinuxErrorExceptionReporter::CQvLinuxErrorExceptionReporter(const char* sourceFileName, int sourceLine,
                                                               const char* exceptionType)
    : m_sourceFileName(sourceFileName), m_sourceLine(sourceLine), m_exceptionType(exceptionType)
{
}

CQvLinuxErrorException CQvLinuxErrorExceptionReporter::Report(int error, const char* functionName,
                                                              const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CQvLinuxErrorException exception = ReportV(error, functionName, format, args);
    va_end(args);
    return exception;
}

CQvLinuxErrorException CQvLinuxErrorExceptionReporter::ReportV(int error, const char* functionName,
                                                               const char* format, va_list args)
{
    // The text is that of errno as the report starts, which may differ from error: callers
    // pass a pthread result or a saved errno as the code, and the message keeps both.
    const int currentErrno = errno;
    char errnoText[256] = {};
    const char* errnoMessage = strerror_r(currentErrno, errnoText, sizeof(errnoText));

    char message[kMessageCapacity] = {};
    if (format != nullptr && vsnprintf(message, sizeof(message), format, args) < 0)
        message[0] = '\0';
    const size_t used = strlen(message);
    snprintf(message + used, sizeof(message) - used, " ErrorCode=0x%08x \" \"%s", static_cast<unsigned int>(error),
             errnoMessage);
    return CQvLinuxErrorException(error, functionName != nullptr ? functionName : "", message,
                                  m_sourceFileName.c_str(), m_sourceLine, m_exceptionType.c_str());
}
} // namespace QvApi
