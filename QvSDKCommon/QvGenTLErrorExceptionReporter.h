#pragma once

#include <cstdarg>

#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>
#include <QvApi/QvGenTLErrorException.h>

namespace QvApi
{
class CQvGenTLLib;

/**
 * \brief Builds a CQvGenTLErrorException for a failed GenTL call, at its throw site.
 *
 * Short-lived: made with the unit's source path, the line and "QvGenTLErrorException", then
 * asked to Report(). Code normally reaches it through QV_CHECK_GENTL / QV_THROW_GENTL
 * (QvExceptionMacros.h). Any thread; the producer's last error is per thread, so the report
 * must run on the thread that made the failed call.
 */
class QVAPI_API CQvGenTLErrorExceptionReporter
{
public:
    CQvGenTLErrorExceptionReporter(const char* sourceFileName, int sourceLine, const char* exceptionType);

    /**
     * \brief Formats the message and appends the producer's text when it belongs to \a error.
     * \param[in] lib          The producer binding whose GCGetLastError is asked; may be null.
     * \param[in] error        The code the failed call returned.
     * \param[in] functionName The GenTL function's name, e.g. "TLOpen".
     * \param[in] format       printf format whose first conversion is the code, e.g.
     *                         "%d = TLOpen(0x%p)"; the result is cut at 1023 characters.
     * \return The exception, for the caller to throw.
     */
    [[gnu::format(printf, 5, 6)]] CQvGenTLErrorException Report(CQvGenTLLib* lib, GenTL::GC_ERROR error,
                                                                 const char* functionName,
                                                                 const char* format, ...);
    /// Report() with the arguments as a va_list.
    CQvGenTLErrorException ReportV(CQvGenTLLib* lib, GenTL::GC_ERROR error, const char* functionName,
                                   const char* format, va_list args);

private:
    GenICam::gcstring m_sourceFileName;
    int m_sourceLine;
    GenICam::gcstring m_exceptionType;
};
} // namespace QvApi
