#pragma once

#include <cstddef>

#include <Base/GCLinkage.h>
#include <Base/GCString.h>
#include <Base/GCStringVector.h>

/// Name of the platform this library was built for, as GenICam folder names spell it.
#if defined(__x86_64__)
#define PLATFORM_NAME "Linux64_x64"
#elif defined(__aarch64__)
#define PLATFORM_NAME "Linux64_ARM"
#elif defined(__i386__)
#define PLATFORM_NAME "Linux32_i86"
#else
#define PLATFORM_NAME "Linux"
#endif

namespace GenICam
{
/**
 * \brief The value of an environment variable.
 * \return false (and \a variableContent left alone) when the variable is not set.
 * \note Any thread, as long as nobody changes the environment meanwhile.
 */
GENICAM_API bool GetValueOfEnvironmentVariable(const gcstring& variableName, gcstring& variableContent);

/// The value of an environment variable. \throws RuntimeException when it is not set.
GENICAM_API gcstring GetValueOfEnvironmentVariable(const gcstring& variableName);

/// Whether the environment variable is set (possibly to an empty text).
GENICAM_API bool DoesEnvironmentVariableExist(const gcstring& variableName);

/**
 * \brief Replaces every $(NAME) in \a buffer by the value of the environment variable NAME
 *        (unset variables by nothing); with \a replaceBlankBy20, blanks become "%20" as in URLs.
 */
GENICAM_API void ReplaceEnvironmentVariables(gcstring& buffer, bool replaceBlankBy20 = false);

/// \a input with every character but letters, digits and "-_.~" written as %XX.
GENICAM_API gcstring UrlEncode(const gcstring& input);

/// The inverse of UrlEncode; a '%' not followed by two hex digits stays as it is.
GENICAM_API gcstring UrlDecode(const gcstring& input);

/**
 * \brief The folder named by the environment variable GENICAM_CACHE_VERSION spells (where
 *        preprocessed descriptions may be kept), or "" when it is not set. This engine keeps no
 *        such cache itself.
 */
GENICAM_API void GetGenICamCacheFolder(gcstring& cacheFolder);

/**
 * \brief Splits \a text at any of \a delimiters and appends the non-empty pieces to \a tokens.
 * \return The number of pieces appended.
 */
inline size_t Tokenize(const gcstring& text, gcstring_vector& tokens, const gcstring& delimiters = " ")
{
    size_t count = 0;
    size_t start = text.find_first_not_of(delimiters, 0);
    while (start != gcstring::npos)
    {
        size_t end = text.find_first_of(delimiters, start);
        if (end == gcstring::npos)
            end = text.length();
        tokens.push_back(text.substr(start, end - start));
        ++count;
        start = text.find_first_not_of(delimiters, end);
    }
    return count;
}
} // namespace GenICam
