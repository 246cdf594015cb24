#pragma once

#include <Base/GCException.h>
#include <Base/GCString.h>
#include <GenTL/GenTL.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief Thrown when a GenTL producer function returns an error.
 *
 * The description starts with the result code and the call with its arguments, e.g.
 * "-1006 = DSQueueBuffer(0x0x1234, 0x0x5678)", followed by a blank and the producer's own
 * error text when the producer reported that text for the same code. Copyable; thrown by
 * value, caught by reference. Any thread.
 */
class QVAPI_API CQvGenTLErrorException : public GenICam::GenericException
{
public:
    /**
     * \param[in] error          The code the producer returned.
     * \param[in] functionName   The GenTL function that failed, e.g. "TLOpen".
     * \param[in] description    The complete message.
     * \param[in] sourceFileName The throwing unit's relative source path.
     * \param[in] sourceLine     The line of the throw.
     * \param[in] exceptionType  The type name, "QvGenTLErrorException".
     */
    CQvGenTLErrorException(GenTL::GC_ERROR error, const char* functionName, const char* description,
                           const char* sourceFileName, int sourceLine, const char* exceptionType);
    CQvGenTLErrorException(const CQvGenTLErrorException&) = default;
    CQvGenTLErrorException(CQvGenTLErrorException&&) = default;
    CQvGenTLErrorException& operator=(const CQvGenTLErrorException&) = default;
    CQvGenTLErrorException& operator=(CQvGenTLErrorException&&) = default;
    ~CQvGenTLErrorException() noexcept override;

    /// \return A copy of the name of the GenTL function that failed.
    virtual GenICam::gcstring GetFunctionName() const;
    /// \return The code the producer returned (never the one read back from GCGetLastError).
    virtual GenTL::GC_ERROR GetError() const;

private:
    GenICam::gcstring m_functionName;
    GenTL::GC_ERROR m_error;
};
} // namespace QvApi
