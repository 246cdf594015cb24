#pragma once

#include <string>
#include <vector>

#include <QvApi_TL.h>

namespace QvCam
{
class CCameraSession;

/// DEVICE and the other arguments of a command line "[DEVICE] ARG...".
struct DeviceArguments_t
{
    std::string device;             ///< empty: the first available device
    std::vector<std::string> rest;  ///< exactly the count asked for
};

/**
 * \brief Splits \a positionals of a command taking \a count arguments after an optional DEVICE.
 * \throws CToolError Usage naming \a synopsis when there are too few or too many.
 */
DeviceArguments_t SplitDeviceArguments(const std::vector<std::string>& positionals, size_t count,
                                       const std::string& synopsis);

/**
 * \brief The port of module \a module ("system", "interface", "local", "remote", "stream") of the
 *        session's open device; the stream is opened when asked for.
 * \throws CToolError Usage for another name.
 */
QvApi::IQvPort* ModulePort(CCameraSession& session, const std::string& module);
/// \return How messages name the module, e.g. "remote device".
std::string ModuleTitle(const std::string& module);
/// \throws CToolError Usage unless \a module is one of the five names.
void CheckModuleName(const std::string& module);
} // namespace QvCam
