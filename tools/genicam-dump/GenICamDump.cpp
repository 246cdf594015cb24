// genicam-dump FILE [--registers REGFILE] [--warnings]
//
// Loads a GenICam description (.xml or .zip), connects a memory port to every Port node (all
// registers zero, or filled from REGFILE lines "ADDRESS HEXBYTES") and prints one JSON object per
// node, sorted by name: name, type, access, visibility, caching, is_feature and, for readable
// nodes, the value and the fields of the node's interface. A field that cannot be read is left
// out and the first such error is printed as "error". --warnings prints what the loader
// tolerated in the description (ILoadWarnings) to stderr, one line each.

#include <cstdio>
#include <exception>
#include <string>

#include <Base/GCException.h>

#include "GenICamDumper.h"

namespace
{
int Usage()
{
    std::fprintf(stderr, "usage: genicam-dump FILE.xml|FILE.zip [--registers FILE] [--warnings]\n");
    return 2;
}
} // namespace

int main(int argc, char** argv)
{
    std::string fileName, registerFile;
    bool printWarnings = false;
    for (int i = 1; i < argc; ++i)
    {
        const std::string argument = argv[i];
        if (argument == "--registers" && i + 1 < argc)
            registerFile = argv[++i];
        else if (argument == "--warnings")
            printWarnings = true;
        else if (argument == "-h" || argument == "--help")
            return Usage();
        else if (fileName.empty())
            fileName = argument;
        else
            return Usage();
    }
    if (fileName.empty())
        return Usage();
    try
    {
        DumpDescription(fileName, registerFile, stdout, printWarnings ? stderr : nullptr);
    }
    catch (const GenICam::GenericException& error)
    {
        std::fprintf(stderr, "genicam-dump: %s\n", error.what());
        return 1;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "genicam-dump: %s\n", error.what());
        return 1;
    }
    return 0;
}
