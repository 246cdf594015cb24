#include "Engine/Nodes/ValueText.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace GenApi
{
namespace ValueText
{
namespace
{
bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

// Decimal or 0x hex with optional sign and surrounding spaces; stops at the first other
// character. Decimals beyond int64 saturate; "-0x.." gives 0 (the sign stops a hex parse).
bool ParseNumber(const char* p, int64_t& value)
{
    while (IsSpace(*p))
        ++p;
    bool negative = false;
    if (*p == '+' || *p == '-')
    {
        negative = *p == '-';
        ++p;
    }
    if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X') && std::isxdigit(static_cast<unsigned char>(p[2])))
    {
        if (negative)
        {
            value = 0;
            return true;
        }
        uint64_t hex = 0;
        for (p += 2; std::isxdigit(static_cast<unsigned char>(*p)); ++p)
        {
            const int digit = std::isdigit(static_cast<unsigned char>(*p)) ? *p - '0' : (std::tolower(*p) - 'a' + 10);
            hex = (hex << 4) | static_cast<uint64_t>(digit);
        }
        value = static_cast<int64_t>(hex);
        return true;
    }
    if (!std::isdigit(static_cast<unsigned char>(*p)))
        return false;
    uint64_t magnitude = 0;
    bool overflow = false;
    for (; std::isdigit(static_cast<unsigned char>(*p)); ++p)
    {
        const uint64_t digit = static_cast<uint64_t>(*p - '0');
        if (magnitude > (UINT64_MAX - digit) / 10)
            overflow = true;
        else
            magnitude = magnitude * 10 + digit;
    }
    if (negative)
        value = (overflow || magnitude > static_cast<uint64_t>(INT64_MAX) + 1) ? INT64_MIN
                                                                             : static_cast<int64_t>(0 - magnitude);
    else
        value = (overflow || magnitude > static_cast<uint64_t>(INT64_MAX)) ? INT64_MAX : static_cast<int64_t>(magnitude);
    return true;
}

bool ParseIpv4(const char* p, int64_t& value)
{
    uint64_t result = 0;
    for (int part = 0; part < 4; ++part)
    {
        if (!std::isdigit(static_cast<unsigned char>(*p)))
            return false;
        unsigned number = 0;
        int digits = 0;
        while (std::isdigit(static_cast<unsigned char>(*p)))
        {
            number = number * 10 + static_cast<unsigned>(*p++ - '0');
            if (++digits > 3)
                return false;
        }
        if (number > 255)
            return false;
        result = (result << 8) | number;
        if (part < 3 && *p++ != '.')
            return false;
    }
    if (*p != '\0')
        return false;
    value = static_cast<int64_t>(result);
    return true;
}

bool ParseMac(const char* p, int64_t& value)
{
    uint64_t result = 0;
    for (int part = 0; part < 6; ++part)
    {
        unsigned number = 0;
        int digits = 0;
        while (std::isxdigit(static_cast<unsigned char>(*p)))
        {
            const int digit = std::isdigit(static_cast<unsigned char>(*p)) ? *p - '0' : (std::tolower(*p) - 'a' + 10);
            number = number * 16 + static_cast<unsigned>(digit);
            ++p;
            if (++digits > 2)
                return false;
        }
        if (digits == 0)
            return false;
        result = (result << 8) | number;
        if (part < 5 && *p++ != ':')
            return false;
    }
    if (*p != '\0')
        return false;
    value = static_cast<int64_t>(result);
    return true;
}

std::string Printf(const char* format, int precision, double value)
{
    char small[64];
    const int length = std::snprintf(small, sizeof(small), format, precision, value);
    if (length >= 0 && static_cast<size_t>(length) < sizeof(small))
        return small;
    std::vector<char> large(static_cast<size_t>(length) + 1);
    std::snprintf(large.data(), large.size(), format, precision, value);
    return large.data();
}
} // namespace

std::string FormatInt(int64_t value, ERepresentation representation)
{
    char text[64];
    const uint64_t bits = static_cast<uint64_t>(value);
    switch (representation)
    {
    case HexNumber:
        if (value == 0)
            return "0";
        std::snprintf(text, sizeof(text), "0x%llx", static_cast<unsigned long long>(bits));
        return text;
    case IPV4Address:
        std::snprintf(text, sizeof(text), "%u.%u.%u.%u", static_cast<unsigned>((bits >> 24) & 0xFF),
                      static_cast<unsigned>((bits >> 16) & 0xFF), static_cast<unsigned>((bits >> 8) & 0xFF),
                      static_cast<unsigned>(bits & 0xFF));
        return text;
    case MACAddress:
        std::snprintf(text, sizeof(text), "%02x:%02x:%02x:%02x:%02x:%02x", static_cast<unsigned>((bits >> 40) & 0xFF),
                      static_cast<unsigned>((bits >> 32) & 0xFF), static_cast<unsigned>((bits >> 24) & 0xFF),
                      static_cast<unsigned>((bits >> 16) & 0xFF), static_cast<unsigned>((bits >> 8) & 0xFF),
                      static_cast<unsigned>(bits & 0xFF));
        return text;
    case Boolean:
        return value ? "true" : "false";
    default:
        std::snprintf(text, sizeof(text), "%lld", static_cast<long long>(value));
        return text;
    }
}

bool ParseInt(const char* pText, ERepresentation representation, int64_t& value)
{
    switch (representation)
    {
    case IPV4Address:
        return ParseIpv4(pText, value);
    case MACAddress:
        return ParseMac(pText, value);
    case Boolean:
        if (std::strcmp(pText, "true") == 0)
            value = 1;
        else if (std::strcmp(pText, "false") == 0)
            value = 0;
        else
            return false;
        return true;
    default:
        return ParseNumber(pText, value);
    }
}

std::string FormatFloat(double value, EDisplayNotation notation, int64_t precision)
{
    if (precision < 0)
        precision = 6;
    if (precision > 100)
        precision = 100;
    const int p = static_cast<int>(precision);
    switch (notation)
    {
    case fnFixed:
        return Printf("%.*f", p, value);
    case fnScientific:
        return Printf("%.*e", p, value);
    default:
        return Printf("%.*g", p, value);
    }
}

std::string FormatFloatInRange(double value, EDisplayNotation notation, int64_t precision, double minimum,
                               double maximum)
{
    std::string text = FormatFloat(value, notation, precision);
    const double printed = std::strtod(text.c_str(), nullptr);
    if (!(printed > maximum) && !(printed < minimum))
        return text;
    // Half a unit of the last decimal place written after the point (the exponent is ignored).
    int decimals = 0;
    const size_t point = text.find('.');
    if (point != std::string::npos)
        for (size_t i = point + 1; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i)
            ++decimals;
    const double halfUnit = 0.5 * std::pow(10.0, -decimals);
    const double nudged = printed > maximum ? value - halfUnit : value + halfUnit;
    return FormatFloat(nudged, notation, precision);
}

bool ParseFloat(const char* pText, double& value)
{
    const char* p = pText;
    while (IsSpace(*p))
        ++p;
    const char* start = p;
    if (*p == '+' || *p == '-')
        ++p;
    if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X'))
    {
        int64_t integer = 0;
        if (!ParseNumber(start, integer))
            return false;
        value = static_cast<double>(integer);
        return true;
    }
    // Only digits, one point and an exponent: strtod would also take "inf", "nan" and hex floats.
    if (!std::isdigit(static_cast<unsigned char>(*p)) && !(*p == '.' && std::isdigit(static_cast<unsigned char>(p[1]))))
        return false;
    errno = 0;
    char* pEnd = nullptr;
    const std::string number(start);
    value = std::strtod(number.c_str(), &pEnd);
    return pEnd != number.c_str();
}
} // namespace ValueText
} // namespace GenApi
