#pragma once

#include <cstdint>

namespace QvGenTL {

/// Identity of the producer as its system module and ports report it.
constexpr const char* kProducerVendor = "QvApi";
constexpr const char* kProducerModel = "QvGenTL";
constexpr const char* kProducerVersion = QVGENTL_VERSION; // set by the build from the project version
constexpr const char* kSystemId = "QvGenTL";
constexpr const char* kSystemDisplayName = "QvApi GenTL producer";
constexpr const char* kSystemTLType = "Mixed";
constexpr uint32_t kGenTLVersionMajor = 1;
constexpr uint32_t kGenTLVersionMinor = 5;

/// Address of the description file in every port of the producer (local modules and cameras).
constexpr uint64_t kDescriptionAddress = 0x100000;
/// Address of the plain-XML copy where a port also offers its description zipped.
constexpr uint64_t kPlainDescriptionAddress = 0x200000;

/// Registers every local module has for error events on request (see TestControl.xml.in).
constexpr uint64_t kTestErrorCodeAddress = 0xF000;
constexpr uint64_t kTestErrorGenerateAddress = 0xF004;

} // namespace QvGenTL
