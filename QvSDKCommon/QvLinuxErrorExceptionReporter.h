#pragma once

#include <cstdarg>

#include <Base/GCString.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvLinuxErrorException.h>

namespace QvApi
{
/**
 * \brief Builds a CQvLinuxErrorException for a failed operating-system call, at its throw site.
 *
 * Short-lived: made with the unit's source path, the line and "QvLinuxErrorException", then
 * asked to Report(). Code normally reaches it through QV_THROW_LINUX (QvExceptionMacros.h).
 * Any thread.
 */
class QVAPI_API CQvLinuxErrorExceptionReporter
{
public:
    CQvLinuxErrorExceptionReporter(const char* sourceFileName, int sourceLine, const char* exceptionType);

    /**
     * \brief Formats the message and appends " ErrorCode=0x%08x \" \"%s" with \a error and the
     *        text of the thread's current errno (not of \a error).
     * \param[in] error        The error number to carry and print.
     * \param[in] functionName The failing call's name.
     * \param[in] format       printf format; the whole message is cut at 1023 characters.
     * \return The exception, for the caller to throw.
     */
    [[gnu::format(printf, 4, 5)]] CQvLinuxErrorException Report(int error, const char* functionName,
                                                                 const char* format, ...);
    /// Report() with the arguments as a va_list.
    CQvLinuxErrorException ReportV(int error, const char* functionName, const char* format, va_list args);

private:
    GenICam::gcstring m_sourceFileName;
    int m_sourceLine;
    GenICam::gcstring m_exceptionType;
};
} // namespace QvApi
