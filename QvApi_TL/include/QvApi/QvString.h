#pragma once

#include <string>

#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief A narrow copy of a narrow or wide C string.
 */
class QVAPI_API CQvString
{
public:
    /// Copies \a text; null gives the empty string.
    explicit CQvString(const char* text);
    /**
     * \brief Converts \a text with the current C locale (wcstombs).
     * \throws GenICam::RuntimeException "Unable to convert string." unless the conversion yields
     *         exactly four bytes per wide character; under a single-byte or UTF-8 locale plain
     *         ASCII text therefore throws. Null gives the empty string.
     */
    explicit CQvString(const wchar_t* text);

    const char* c_str() const { return m_text.c_str(); }
    const std::string& str() const { return m_text; }
    operator const char*() const { return m_text.c_str(); }

private:
    std::string m_text;
};
} // namespace QvApi
