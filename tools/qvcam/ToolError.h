#pragma once

#include <stdexcept>
#include <string>

namespace QvCam
{
/// Exit codes of qvcam; each failure class has its own so that scripts can tell them apart.
/// The README lists them; keep the two in step.
enum EExitCode_t : int
{
    ExitCode_Ok = 0,
    ExitCode_Failure = 1,        ///< anything not listed below (an unexpected SDK error)
    ExitCode_Usage = 2,          ///< bad command line: unknown option, missing or extra argument
    ExitCode_NoProducer = 3,     ///< no usable GenTL producer on GENICAM_GENTL64_PATH
    ExitCode_NoDevice = 4,       ///< no device at all, or none matching DEVICE
    ExitCode_DeviceOpen = 5,     ///< the device exists but cannot be opened (busy, no access)
    ExitCode_UnknownFeature = 6, ///< the node map has no feature of that name
    ExitCode_BadValue = 7,       ///< value not parseable, out of range, wrong increment, no such entry
    ExitCode_AccessDenied = 8,   ///< feature not readable/writable now (read-only, locked, not available)
    ExitCode_DeviceLost = 9,     ///< the device went away during the command
    ExitCode_Acquisition = 10,   ///< acquisition failed or delivered no frame in time
    ExitCode_File = 11,          ///< a file or folder cannot be read or written
    ExitCode_LoadIncomplete = 12,///< "features load" could not apply every feature
    ExitCode_Description = 13,   ///< a description file cannot be loaded (genicam-dump)
    ExitCode_Interrupted = 130   ///< stopped by Ctrl-C
};

/// A failure with its one-line message (no "qvcam:" prefix) and the exit code it ends with.
class CToolError : public std::runtime_error
{
public:
    CToolError(EExitCode_t code, const std::string& message) : std::runtime_error(message), m_code(code) {}
    EExitCode_t GetCode() const { return m_code; }

private:
    EExitCode_t m_code;
};
} // namespace QvCam
