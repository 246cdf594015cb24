#include <Base/GCUtilities.h>

#include <cstdlib>
#include <string>

#include <Base/GCException.h>
#include <GenICamVersion.h>

namespace GenICam
{
namespace
{
int HexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}
} // namespace

bool GetValueOfEnvironmentVariable(const gcstring& variableName, gcstring& variableContent)
{
    const char* pValue = std::getenv(variableName.c_str());
    if (!pValue)
        return false;
    variableContent = pValue;
    return true;
}

gcstring GetValueOfEnvironmentVariable(const gcstring& variableName)
{
    gcstring value;
    if (!GetValueOfEnvironmentVariable(variableName, value))
        throw RUNTIME_EXCEPTION("Environment variable '%s' not found", variableName.c_str());
    return value;
}

bool DoesEnvironmentVariableExist(const gcstring& variableName)
{
    return std::getenv(variableName.c_str()) != nullptr;
}

void ReplaceEnvironmentVariables(gcstring& buffer, bool replaceBlankBy20)
{
    const std::string& text = buffer.str();
    std::string result;
    result.reserve(text.size());
    size_t i = 0;
    while (i < text.size())
    {
        if (text.compare(i, 2, "$(") == 0)
        {
            const size_t close = text.find(')', i + 2);
            if (close != std::string::npos)
            {
                const std::string name = text.substr(i + 2, close - i - 2);
                if (const char* pValue = std::getenv(name.c_str()))
                    result += pValue;
                i = close + 1;
                continue;
            }
        }
        result += text[i++];
    }
    if (replaceBlankBy20)
    {
        std::string escaped;
        escaped.reserve(result.size());
        for (char c : result)
            if (c == ' ')
                escaped += "%20";
            else
                escaped += c;
        result.swap(escaped);
    }
    buffer = gcstring(std::move(result));
}

gcstring UrlEncode(const gcstring& input)
{
    static const char kHex[] = "0123456789ABCDEF";
    std::string result;
    for (char c : input.str())
    {
        const unsigned char byte = static_cast<unsigned char>(c);
        if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '-' ||
            byte == '_' || byte == '.' || byte == '~')
            result += c;
        else
        {
            result += '%';
            result += kHex[byte >> 4];
            result += kHex[byte & 0x0F];
        }
    }
    return gcstring(std::move(result));
}

gcstring UrlDecode(const gcstring& input)
{
    const std::string& text = input.str();
    std::string result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 && HexValue(text[i + 2]) >= 0)
        {
            result += static_cast<char>(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
            i += 2;
        }
        else
            result += text[i];
    }
    return gcstring(std::move(result));
}

void GetGenICamCacheFolder(gcstring& cacheFolder)
{
    cacheFolder = "";
    GetValueOfEnvironmentVariable(GENICAM_CACHE_VERSION, cacheFolder);
}
} // namespace GenICam
