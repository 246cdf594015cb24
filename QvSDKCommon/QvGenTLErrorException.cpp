#include <QvApi/QvGenTLErrorException.h>

namespace QvApi
{
CQvGenTLErrorException::CQvGenTLErrorException(GenTL::GC_ERROR error, const char* functionName,
                                               const char* description, const char* sourceFileName,
                                               int sourceLine, const char* exceptionType)
    : GenICam::GenericException(description, sourceFileName, static_cast<unsigned int>(sourceLine),
                                exceptionType),
      m_functionName(functionName), m_error(error)
{
}

CQvGenTLErrorException::~CQvGenTLErrorException() noexcept = default;

GenICam::gcstring CQvGenTLErrorException::GetFunctionName() const
{
    return m_functionName;
}

GenTL::GC_ERROR CQvGenTLErrorException::GetError() const
{
    return m_error;
}
} // namespace QvApi
