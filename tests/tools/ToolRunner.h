#pragma once

#include <map>
#include <string>
#include <vector>

/// Environment value that removes a variable for the child.
constexpr const char* kUnset = "<unset>";

/// What one run of a command-line tool left behind.
struct ToolResult_t
{
    int exitCode = -1;
    std::string out;
    std::string err;
};

/**
 * \brief Runs \a program with \a arguments (no shell) and captures its exit code, stdout and
 *        stderr. \a environment entries override the test's environment; the value kUnset
 *        removes the variable.
 */
ToolResult_t RunTool(const std::string& program, const std::vector<std::string>& arguments,
                     const std::map<std::string, std::string>& environment = {});

/// \return The path of the qvcam binary under test (QV_QVCAM), or empty.
std::string QvCamPath();

/// A fresh, empty folder under TMPDIR (or /tmp), removed with its content on destruction.
class CTempFolder
{
public:
    CTempFolder();
    ~CTempFolder();
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;
    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

/// \return The whole content of \a path (empty when it cannot be read).
std::string ReadFile(const std::string& path);
