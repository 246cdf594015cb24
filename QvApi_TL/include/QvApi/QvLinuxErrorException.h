#pragma once

#include <Base/GCException.h>
#include <Base/GCString.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief Thrown when an operating-system call (pthread, dlopen, ...) fails.
 *
 * The description ends with " ErrorCode=0x" and eight hexadecimal digits of the error,
 * followed by the text of the thread's errno at the time of the report. Copyable; thrown by
 * value, caught by reference. Any thread.
 */
class QVAPI_API CQvLinuxErrorException : public GenICam::GenericException
{
public:
    /**
     * \param[in] error          The error number (an errno value or a POSIX call's result).
     * \param[in] functionName   The failing call or routine, as the thrower names it.
     * \param[in] description    The complete message.
     * \param[in] sourceFileName The throwing unit's relative source path.
     * \param[in] sourceLine     The line of the throw.
     * \param[in] exceptionType  The type name, "QvLinuxErrorException".
     */
    CQvLinuxErrorException(int error, const char* functionName, const char* description,
                           const char* sourceFileName, int sourceLine, const char* exceptionType);
    CQvLinuxErrorException(const CQvLinuxErrorException&) = default;
    CQvLinuxErrorException(CQvLinuxErrorException&&) = default;
    CQvLinuxErrorException& operator=(const CQvLinuxErrorException&) = default;
    CQvLinuxErrorException& operator=(CQvLinuxErrorException&&) = default;
    ~CQvLinuxErrorException() noexcept override;

    /// \return A copy of the name of the failing call.
    virtual GenICam::gcstring GetFunctionName() const;
    /// \return The error number given by the thrower.
    virtual int GetError() const;

private:
    GenICam::gcstring m_functionName;
    int m_error;
};
} // namespace QvApi
