#include <QvApi/QvUtilities.h>

#include <cstdlib>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace QvApi
{
void MakePath(const GenICam::gcstring& path, bool isFilePath)
{
    std::string directory = path.str();
    if (isFilePath)
    {
        // A slash at position 0 alone is the root, not a separator to cut at.
        const size_t slash = directory.rfind('/');
        if (slash != std::string::npos && slash >= 1)
            directory.erase(slash);
    }
    mkdir(directory.c_str(), 0775);
}

FILE* openTempFile(const char* name)
{
    const uid_t realUser = getuid();
    // TMPDIR is ignored for set-user-id callers: it is the caller's environment, not ours.
    const char* directory = nullptr;
    if (realUser == geteuid() && static_cast<int>(realUser) >= 0)
        directory = getenv("TMPDIR");
    if (directory == nullptr)
        directory = "/tmp";

    char pattern[255];
    snprintf(pattern, sizeof(pattern), "%s/%s.XXXXXX", directory, name != nullptr ? name : "");
    const int fd = mkstemp(pattern);
    if (fd < 0)
        return nullptr;
    unlink(pattern);
    FILE* file = fdopen(fd, "wb");
    if (file == nullptr)
        close(fd);
    return file;
}
} // namespace QvApi
