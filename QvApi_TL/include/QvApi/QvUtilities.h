#pragma once

#include <cstdio>

#include <Base/GCString.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief Creates the directory of a path with mode 0775.
 * \param[in] path       A directory path, or a file path when \a isFilePath is true, in which
 *                       case the part after the last "/" (beyond the first character) is dropped.
 * \param[in] isFilePath Whether \a path names a file.
 * \note Only the last level is created; missing parents are not, and failures (an existing
 *       directory included) are not reported.
 */
QVAPI_API void MakePath(const GenICam::gcstring& path, bool isFilePath);

/**
 * \brief Opens an anonymous scratch file for binary writing.
 * \param[in] name Prefix of the file, created as "<dir>/<name>.XXXXXX" in $TMPDIR (ignored for
 *                 set-user-id callers) or /tmp, and unlinked at once.
 * \return The open file, which disappears when closed; null on failure. The caller owns it
 *         and closes it with fclose().
 */
QVAPI_API FILE* openTempFile(const char* name);
} // namespace QvApi
