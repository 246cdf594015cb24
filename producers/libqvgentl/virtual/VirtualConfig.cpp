#include "virtual/VirtualConfig.h"

#include <cctype>
#include <cstdlib>

#include <QvGenTL/VirtualCamera.h>

#include "modules/GenTLError.h"

namespace QvGenTL {

namespace {

constexpr uint32_t kMaxCameras = 16;
constexpr uint32_t kMaxSensorSide = 16384;

std::string Trim(const std::string& text)
{
    size_t begin = 0, end = text.size();
    while (begin < end && std::isspace(static_cast<unsigned char>(text[begin])))
        ++begin;
    while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1])))
        --end;
    return text.substr(begin, end - begin);
}

/// Reads a decimal number that makes up all of text; false if it does not.
bool ParseNumber(const std::string& text, uint32_t& value)
{
    if (text.empty() || text.size() > 9)
        return false;
    for (char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return false;
    value = static_cast<uint32_t>(std::strtoul(text.c_str(), nullptr, 10));
    return true;
}

[[noreturn]] void ThrowBadItem(const std::string& item, const char* why)
{
    ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "%s: bad item '%s' (%s); expected TYPE:COUNT[@WIDTHxHEIGHT] with "
               "TYPE U3V, GEV or CXP", kVirtualConfigVariable, item.c_str(), why);
}

VirtualInterfaceConfig_t ParseItem(const std::string& item)
{
    const size_t colon = item.find(':');
    if (colon == std::string::npos)
        ThrowBadItem(item, "no ':'");
    std::string type = Trim(item.substr(0, colon));
    for (char& c : type)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    VirtualInterfaceConfig_t config{};
    if (type == "U3V")
        config.transport = ECameraTransport_t::U3V;
    else if (type == "GEV")
        config.transport = ECameraTransport_t::GEV;
    else if (type == "CXP")
        config.transport = ECameraTransport_t::CXP;
    else
        ThrowBadItem(item, "unknown type");

    std::string rest = item.substr(colon + 1);
    std::string size;
    const size_t at = rest.find('@');
    if (at != std::string::npos)
    {
        size = Trim(rest.substr(at + 1));
        rest = rest.substr(0, at);
    }
    if (!ParseNumber(Trim(rest), config.cameraCount) || config.cameraCount > kMaxCameras)
        ThrowBadItem(item, "the camera count must be 0 to 16");

    config.sensorWidth = QvVirtualCamera::kDefaultSensorWidth;
    config.sensorHeight = QvVirtualCamera::kDefaultSensorHeight;
    if (at != std::string::npos)
    {
        const size_t x = size.find_first_of("xX");
        if (x == std::string::npos || !ParseNumber(size.substr(0, x), config.sensorWidth) ||
            !ParseNumber(size.substr(x + 1), config.sensorHeight))
            ThrowBadItem(item, "the sensor size must read WIDTHxHEIGHT");
        if (config.sensorWidth < QvVirtualCamera::kMinWidth || config.sensorWidth > kMaxSensorSide ||
            config.sensorHeight < QvVirtualCamera::kMinHeight || config.sensorHeight > kMaxSensorSide ||
            config.sensorWidth % 4 != 0 || config.sensorHeight % 2 != 0)
            ThrowBadItem(item, "the sensor must be 64 to 16384 pixels wide (a multiple of 4) and 8 to 16384 "
                               "lines high (even)");
    }
    return config;
}

} // namespace

std::vector<VirtualInterfaceConfig_t> ParseVirtualConfig(const char* text)
{
    std::vector<VirtualInterfaceConfig_t> interfaces;
    const std::string all = Trim(text);
    if (all.empty())
        return interfaces;
    size_t begin = 0;
    for (;;)
    {
        const size_t comma = all.find(',', begin);
        const std::string item = Trim(all.substr(begin, comma == std::string::npos ? std::string::npos : comma - begin));
        interfaces.push_back(ParseItem(item));
        if (comma == std::string::npos)
            break;
        begin = comma + 1;
    }
    return interfaces;
}

std::vector<VirtualInterfaceConfig_t> VirtualConfigFromEnvironment()
{
    const char* text = std::getenv(kVirtualConfigVariable);
    return ParseVirtualConfig(text != nullptr ? text : kDefaultVirtualConfig);
}

} // namespace QvGenTL
