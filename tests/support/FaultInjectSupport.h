#pragma once

// Helpers for tests that drive the fault-injection producer (producers/faultinject).

#include <cstdlib>
#include <cstring>
#include <string>

#include "producers/faultinject/FaultInjectControl.h"

namespace QvTest
{
/// The build's producer folder, as ctest puts it on GENICAM_GENTL64_PATH (QV_BUILD_DIR/gentl).
inline std::string ProducerDirectory()
{
    if (const char* build = getenv("QV_BUILD_DIR"))
        return std::string(build) + "/gentl";
    if (const char* path = getenv("GENICAM_GENTL64_PATH"))
        return std::string(path).substr(0, std::string(path).find(':'));
    return ".";
}

/// Full path of a producer of the build, e.g. ProducerPath("libqvfault.cti").
inline std::string ProducerPath(const char* fileName)
{
    return ProducerDirectory() + "/" + fileName;
}

/// The control table of a fault producer variant, reset to its freshly loaded state; null when
/// the file is missing.
inline const QvFaultControl* FaultControl(const char* fileName = "libqvfault.cti")
{
    const QvFaultControl* control = QvFaultLoadControl(ProducerPath(fileName).c_str());
    if (control != nullptr)
        control->Reset();
    return control;
}

/// A rule that makes an entry point return \a result, every call, any module.
inline QvFaultRule FailWith(int32_t result, const char* lastErrorText = "")
{
    QvFaultRule rule;
    std::memset(&rule, 0, sizeof(rule));
    rule.result = result;
    rule.module = QV_FAULT_MODULE_ANY;
    std::strncpy(rule.lastErrorText, lastErrorText, sizeof(rule.lastErrorText) - 1);
    return rule;
}
} // namespace QvTest
