#include <QvApi/QvLinuxErrorException.h>

namespace QvApi
{
CQvLinuxErrorException::CQvLinuxErrorException(int error, const char* functionName, const char* description,
                                               const char* sourceFileName, int sourceLine,
                                               const char* exceptionType)
    : GenICam::GenericException(description, sourceFileName, static_cast<unsigned int>(sourceLine),
                                exceptionType),
      m_functionName(functionName), m_error(error)
{
}

CQvLinuxErrorException::~CQvLinuxErrorException() noexcept = default;

GenICam::gcstring CQvLinuxErrorException::GetFunctionName() const
{
    return m_functionName;
}

int CQvLinuxErrorException::GetError() const
{
    return m_error;
}
} // namespace QvApi
