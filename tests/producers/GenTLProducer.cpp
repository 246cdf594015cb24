#include "tests/producers/GenTLProducer.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include <gtest/gtest.h>

namespace QvGenTLTest {

std::unique_ptr<CGenTLProducer> CGenTLProducer::Load(const std::string& path)
{
    auto producer = std::make_unique<CGenTLProducer>();
    producer->library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (producer->library == nullptr)
    {
        ADD_FAILURE() << "dlopen(" << path << "): " << dlerror();
        return nullptr;
    }
#define QV_GENTL_ENTRY(name) producer->name = reinterpret_cast<GenTL::P##name>(dlsym(producer->library, #name));
#include "tests/producers/GenTLEntryPoints.inc"
#undef QV_GENTL_ENTRY
    return producer;
}

CGenTLProducer::~CGenTLProducer()
{
    if (library != nullptr)
        dlclose(library);
}

std::string FindQvGenTL()
{
    const char* path = std::getenv("GENICAM_GENTL64_PATH");
    std::stringstream folders(path != nullptr ? path : "");
    std::string folder;
    while (std::getline(folders, folder, ':'))
    {
        const std::string candidate = folder + "/libqvgentl.cti";
        if (!folder.empty() && access(candidate.c_str(), R_OK) == 0)
            return candidate;
    }
    return std::string();
}

size_t FixedSizeOf(GenTL::INFO_DATATYPE type)
{
    switch (type)
    {
    case GenTL::INFO_DATATYPE_INT16:
    case GenTL::INFO_DATATYPE_UINT16: return 2;
    case GenTL::INFO_DATATYPE_INT32:
    case GenTL::INFO_DATATYPE_UINT32: return 4;
    case GenTL::INFO_DATATYPE_INT64:
    case GenTL::INFO_DATATYPE_UINT64:
    case GenTL::INFO_DATATYPE_FLOAT64:
    case GenTL::INFO_DATATYPE_PTR:
    case GenTL::INFO_DATATYPE_SIZET:
    case GenTL::INFO_DATATYPE_PTRDIFF: return 8;
    case GenTL::INFO_DATATYPE_BOOL8: return 1;
    default: return 0;
    }
}

} // namespace QvGenTLTest
