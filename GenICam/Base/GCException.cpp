#include <Base/GCException.h>

#include <cstdio>
#include <vector>

namespace GenICam
{
GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine)
    : GenericException(description, sourceFileName, sourceLine, "GenericException")
{
}

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine, const char* exceptionType)
    : m_description(description), m_sourceFileName(sourceFileName), m_sourceLine(sourceLine),
      m_exceptionType(exceptionType)
{
    Compose();
}

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine, const char* entryPoint,
                                   const char* errorNodeName, const char* exceptionType)
    : m_description(description), m_sourceFileName(sourceFileName), m_sourceLine(sourceLine),
      m_exceptionType(exceptionType), m_entryPoint(entryPoint), m_errorNodeName(errorNodeName)
{
    Compose();
}

GenericException::~GenericException() noexcept = default;

void GenericException::Compose()
{
    std::string text = m_description.str();
    text += " : ";
    text += m_exceptionType.str();
    text += " thrown";
    if (!m_errorNodeName.empty())
    {
        text += " in node '" + m_errorNodeName.str() + "'";
        if (!m_entryPoint.empty())
            text += " while calling '" + m_errorNodeName.str() + "." + m_entryPoint.str() + "()'";
    }
    text += " (file '" + m_sourceFileName.str() + "', line " + std::to_string(m_sourceLine) + ")";
    m_what = text;
}

const char* GenericException::GetDescription() const noexcept
{
    return m_description.c_str();
}
const char* GenericException::GetSourceFileName() const noexcept
{
    return m_sourceFileName.c_str();
}
unsigned int GenericException::GetSourceLine() const noexcept
{
    return m_sourceLine;
}
const char* GenericException::what() const noexcept
{
    return m_what.c_str();
}
const char* GenericException::GetExceptionType() const noexcept
{
    return m_exceptionType.c_str();
}
const char* GenericException::GetNodeName() const noexcept
{
    return m_errorNodeName.c_str();
}
const char* GenericException::GetEntryPoint() const noexcept
{
    return m_entryPoint.c_str();
}

gcstring FormatExceptionText(size_t maxLength, const char* format, va_list args)
{
    if (!format)
        return gcstring();
    std::vector<char> buffer(maxLength + 1);
    int written = vsnprintf(buffer.data(), buffer.size(), format, args);
    if (written < 0)
        return gcstring();
    return gcstring(buffer.data());
}
} // namespace GenICam
