#include "GenTLLibrary.h"

#include <dirent.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <vector>

CGenTLLibrary::CGenTLLibrary(const std::string& path)
{
    m_library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_library == nullptr)
        throw std::runtime_error("cannot load " + path + ": " + dlerror());
    auto resolve = [&](auto& entry, const char* name) {
        entry = reinterpret_cast<std::remove_reference_t<decltype(entry)>>(dlsym(m_library, name));
        if (entry == nullptr)
            throw std::runtime_error(path + " does not export " + name);
    };
#define QV_RESOLVE(name) resolve(name, #name)
    QV_RESOLVE(GCGetLastError);
    QV_RESOLVE(GCInitLib);
    QV_RESOLVE(GCCloseLib);
    QV_RESOLVE(GCReadPort);
    QV_RESOLVE(GCWritePort);
    QV_RESOLVE(GCGetPortInfo);
    QV_RESOLVE(GCGetPortURLInfo);
    QV_RESOLVE(GCRegisterEvent);
    QV_RESOLVE(GCUnregisterEvent);
    QV_RESOLVE(EventGetData);
    QV_RESOLVE(TLOpen);
    QV_RESOLVE(TLClose);
    QV_RESOLVE(TLUpdateInterfaceList);
    QV_RESOLVE(TLGetNumInterfaces);
    QV_RESOLVE(TLGetInterfaceID);
    QV_RESOLVE(TLGetInterfaceInfo);
    QV_RESOLVE(TLOpenInterface);
    QV_RESOLVE(IFClose);
    QV_RESOLVE(IFUpdateDeviceList);
    QV_RESOLVE(IFGetNumDevices);
    QV_RESOLVE(IFGetDeviceID);
    QV_RESOLVE(IFOpenDevice);
    QV_RESOLVE(DevGetPort);
    QV_RESOLVE(DevGetDataStreamID);
    QV_RESOLVE(DevOpenDataStream);
    QV_RESOLVE(DevGetInfo);
    QV_RESOLVE(DevClose);
    QV_RESOLVE(DSAllocAndAnnounceBuffer);
    QV_RESOLVE(DSQueueBuffer);
    QV_RESOLVE(DSRevokeBuffer);
    QV_RESOLVE(DSFlushQueue);
    QV_RESOLVE(DSStartAcquisition);
    QV_RESOLVE(DSStopAcquisition);
    QV_RESOLVE(DSGetInfo);
    QV_RESOLVE(DSGetBufferInfo);
    QV_RESOLVE(DSClose);
#undef QV_RESOLVE
}

CGenTLLibrary::~CGenTLLibrary()
{
    if (m_library != nullptr)
        dlclose(m_library);
}

std::string CGenTLLibrary::Find(const std::string& preferred)
{
    const char* path = std::getenv("GENICAM_GENTL64_PATH");
    std::stringstream folders(path != nullptr ? path : "");
    std::string folder, first;
    while (std::getline(folders, folder, ':'))
    {
        DIR* directory = folder.empty() ? nullptr : opendir(folder.c_str());
        if (directory == nullptr)
            continue;
        std::vector<std::string> names;
        while (dirent* entry = readdir(directory))
        {
            const std::string name = entry->d_name;
            if (name.size() > 4 && name.compare(name.size() - 4, 4, ".cti") == 0)
                names.push_back(name);
        }
        closedir(directory);
        std::sort(names.begin(), names.end());
        for (const std::string& name : names)
        {
            if (name == preferred)
                return folder + "/" + name;
            if (first.empty())
                first = folder + "/" + name;
        }
    }
    return first;
}

void CGenTLLibrary::Check(GenTL::GC_ERROR result, const char* call) const
{
    if (result == GenTL::GC_ERR_SUCCESS)
        return;
    GenTL::GC_ERROR code = 0;
    char text[1024] = {};
    size_t size = sizeof(text);
    GCGetLastError(&code, text, &size);
    throw std::runtime_error(std::string(call) + " failed with " + std::to_string(result) +
                             (code == result ? std::string(": ") + text : std::string()));
}
