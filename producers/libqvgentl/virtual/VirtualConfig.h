#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "virtual/CameraSettings.h"

namespace QvGenTL {

/// One virtual interface and the cameras on it.
struct VirtualInterfaceConfig_t
{
    ECameraTransport_t transport;
    uint32_t cameraCount;
    uint32_t sensorWidth;
    uint32_t sensorHeight;
};

/**
 * Parses QVGENTL_VIRTUAL: a comma-separated list of TYPE:COUNT[@WIDTHxHEIGHT] items, one per
 * interface, where TYPE is U3V, GEV or CXP (any case), COUNT the number of cameras on that
 * interface (0 to 16; 0 makes an interface without cameras) and WIDTHxHEIGHT the sensor size
 * (default 1280x960; even, width 64 to 16384, height 8 to 16384). Repeating a type adds another
 * interface of it. Unset means "U3V:1,GEV:1,CXP:1"; set but empty means no virtual interfaces.
 * Throws CGenTLError(GC_ERR_INVALID_PARAMETER) naming the bad item.
 */
std::vector<VirtualInterfaceConfig_t> ParseVirtualConfig(const char* text);

/// The configuration from the environment.
std::vector<VirtualInterfaceConfig_t> VirtualConfigFromEnvironment();

constexpr const char* kVirtualConfigVariable = "QVGENTL_VIRTUAL";
constexpr const char* kDefaultVirtualConfig = "U3V:1,GEV:1,CXP:1";

} // namespace QvGenTL
