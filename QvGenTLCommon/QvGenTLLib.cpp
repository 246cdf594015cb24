#include "QvGenTLCommon/QvGenTLLib.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <string>

#include <dlfcn.h>
#include <unistd.h>

#include "QvSDKCommon/QvExceptionMacros.h"
#include "QvSDKCommon/QvGenTLErrorExceptionReporter.h"
#include "QvSDKCommon/QvLinuxErrorExceptionReporter.h"

namespace QvApi
{
CQvGenTLLib::CQvGenTLLib(GenICam::gcstring fileName)
try : m_fileName(std::move(fileName))
{
    m_fullPath = GetFullPathName();
    LoadLib();
}
QV_CATCH_BAD_ALLOC()

CQvGenTLLib::~CQvGenTLLib()
{
    UnloadLib();
}

GenICam::gcstring CQvGenTLLib::GetFullPathName() const
{
    const char* searchPath = getenv("GENICAM_GENTL64_PATH");
    if (searchPath == nullptr || searchPath[0] == '\0')
        QV_THROW(RuntimeException, "File %s not found.", m_fileName.c_str());

    // Pieces are taken as they stand: an empty piece means the root, a trailing separator
    // adds nothing, and the first readable candidate shadows any later one.
    const std::string directories(searchPath);
    size_t start = 0;
    while (start < directories.size())
    {
        size_t end = directories.find(':', start);
        if (end == std::string::npos)
            end = directories.size();
        std::string candidate = directories.substr(start, end - start);
        candidate += '/';
        candidate += m_fileName.str();
        if (access(candidate.c_str(), R_OK) == 0)
            return GenICam::gcstring(std::move(candidate));
        start = end + 1;
    }
    QV_THROW(RuntimeException, "File %s not found.", m_fileName.c_str());
}

void CQvGenTLLib::LoadLib()
{
    // RTLD_NODELETE keeps the producer mapped for the life of the process: listener threads or
    // static objects of the producer may outlive our reference, and several systems share it.
    void* handle = dlopen(m_fullPath.c_str(), RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
    if (handle == nullptr)
        handle = dlopen(m_fullPath.c_str(), RTLD_LAZY | RTLD_NODELETE);
    if (handle == nullptr)
    {
        const int loadErrno = errno;
        const char* loaderText = dlerror();
        // The path itself is the format, without arguments: a '%' in it is interpreted.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        throw CQvLinuxErrorExceptionReporter(__FILE__, __LINE__, "QvLinuxErrorException")
            .Report(loadErrno, loaderText != nullptr ? loaderText : "", m_fullPath.c_str());
#pragma GCC diagnostic pop
    }
    m_hLibrary = handle;

    // A missing name leaves its entry null; callers treat that as GC_ERR_NOT_IMPLEMENTED.
#define QV_GENTL_RESOLVE_ENTRY(name) name = reinterpret_cast<GenTL::P##name>(dlsym(m_hLibrary, #name));
    QV_GENTL_ENTRY_POINTS(QV_GENTL_RESOLVE_ENTRY)
#undef QV_GENTL_RESOLVE_ENTRY

    const GenTL::GC_ERROR err = QV_GENTL_CALL(this, GCInitLib);
    if (err != GenTL::GC_ERR_SUCCESS)
    {
        // The table stays as resolved; the owner discards this binding anyway.
        dlclose(m_hLibrary);
        m_hLibrary = nullptr;
        // No binding is passed: a producer that failed to initialise has no last error to ask.
        QV_THROW_GENTL(nullptr, err, "GCInitLib", "%d = GCInitLib()", err);
    }
}

void CQvGenTLLib::UnloadLib()
{
    if (m_hLibrary == nullptr)
        return;
    if (GCCloseLib != nullptr)
        GCCloseLib();
#define QV_GENTL_CLEAR_ENTRY(name) name = nullptr;
    QV_GENTL_ENTRY_POINTS(QV_GENTL_CLEAR_ENTRY)
#undef QV_GENTL_CLEAR_ENTRY
    dlclose(m_hLibrary);
    m_hLibrary = nullptr;
}
} // namespace QvApi
