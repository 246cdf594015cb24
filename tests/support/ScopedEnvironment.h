#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace QvTest
{
/// Sets (or unsets) an environment variable for the life of the object, then restores it.
class CScopedEnvironment
{
public:
    /// \param value The value to set; null unsets the variable.
    CScopedEnvironment(const char* name, const char* value) : m_name(name)
    {
        if (const char* old = getenv(name))
            m_oldValue = old;
        if (value != nullptr)
            setenv(name, value, 1);
        else
            unsetenv(name);
    }
    ~CScopedEnvironment()
    {
        if (m_oldValue)
            setenv(m_name.c_str(), m_oldValue->c_str(), 1);
        else
            unsetenv(m_name.c_str());
    }
    CScopedEnvironment(const CScopedEnvironment&) = delete;
    CScopedEnvironment& operator=(const CScopedEnvironment&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_oldValue;
};
} // namespace QvTest
