// qvcam get, set, exec, features save|load, xml and genicam-dump.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <QvApi_TL.h>

#include "CameraSession.h"
#include "CommandHelpers.h"
#include "Commands.h"
#include "FeatureAccess.h"
#include "GenICamDumper.h"
#include "ToolError.h"

namespace QvCam
{
namespace
{
// Checks that \a path can be created or replaced, so that the SDK's own file errors (which
// name no reason) are only a fall-back.
void CheckWritableFile(const std::string& path)
{
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    struct stat info;
    if (stat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        throw CToolError(ExitCode_File, "cannot write " + path + ": folder " + folder + " does not exist");
    if (stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode))
        throw CToolError(ExitCode_File, "cannot write " + path + ": it is a folder");
    if (access(folder.c_str(), W_OK) != 0)
        throw CToolError(ExitCode_File, "cannot write " + path + ": " + std::strerror(errno));
}

void CheckReadableFile(const std::string& path)
{
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        throw CToolError(ExitCode_File, "cannot read " + path + ": " + std::strerror(errno));
    if (S_ISDIR(info.st_mode))
        throw CToolError(ExitCode_File, "cannot read " + path + ": it is a folder");
    if (access(path.c_str(), R_OK) != 0)
        throw CToolError(ExitCode_File, "cannot read " + path + ": " + std::strerror(errno));
}

size_t CountFeatureLines(const GenICam::gcstring& text)
{
    size_t lines = 0;
    const char* p = text.c_str();
    while (*p != '\0')
    {
        if (*p != '#' && *p != '\n')
            ++lines;
        const char* end = std::strchr(p, '\n');
        if (end == nullptr)
            break;
        p = end + 1;
    }
    return lines;
}
} // namespace

namespace
{
enum class EAccess_t
{
    Read,
    Write
};

// Opens the device the arguments name and runs \a action on the features of the module that
// --module names, with the arguments after the device.
template <class Action>
int RunOnFeatures(const CommandOptions_t& options, size_t count, const char* usage, EAccess_t access, Action action)
{
    const DeviceArguments_t arguments = SplitDeviceArguments(options.positionals, count, usage);
    CheckModuleName(options.module);
    CCameraSession session;
    if (access == EAccess_t::Write)
        session.OpenDevice(arguments.device, GenTL::DEVICE_ACCESS_CONTROL);
    else
        session.OpenDeviceForReading(arguments.device);
    CFeatureAccess features(ModulePort(session, options.module)->GetINodeMap(), ModuleTitle(options.module));
    action(features, arguments.rest);
    return ExitCode_Ok;
}
} // namespace

int RunGet(const CommandOptions_t& options)
{
    return RunOnFeatures(options, 1, "get [DEVICE] FEATURE", EAccess_t::Read,
                         [](CFeatureAccess& features, const std::vector<std::string>& rest) {
                             std::printf("%s\n", features.Get(rest[0]).c_str());
                         });
}

int RunSet(const CommandOptions_t& options)
{
    return RunOnFeatures(options, 2, "set [DEVICE] FEATURE VALUE", EAccess_t::Write,
                         [](CFeatureAccess& features, const std::vector<std::string>& rest) {
                             features.Set(rest[0], rest[1]);
                             // Echo what the device took (it may round to its increment).
                             std::printf("%s = %s\n", rest[0].c_str(), features.Get(rest[0]).c_str());
                         });
}

int RunExec(const CommandOptions_t& options)
{
    return RunOnFeatures(options, 1, "exec [DEVICE] COMMAND", EAccess_t::Write,
                         [](CFeatureAccess& features, const std::vector<std::string>& rest) {
                             features.Execute(rest[0]);
                             std::printf("%s executed\n", rest[0].c_str());
                         });
}

int RunFeaturesSave(const CommandOptions_t& options)
{
    const DeviceArguments_t arguments = SplitDeviceArguments(options.positionals, 1, "features save [DEVICE] FILE");
    const std::string& file = arguments.rest[0];
    CheckModuleName(options.module);
    CheckWritableFile(file);
    CCameraSession session;
    // Saving steps selectors through their values on the device, so it needs write access.
    session.OpenDevice(arguments.device, GenTL::DEVICE_ACCESS_CONTROL);
    QvApi::CIQvFeatureBagPtr bag(QvApi::CreateIQvFeatureBag());
    const int64_t stored = bag->StoreNodeMapToBag(ModulePort(session, options.module)->GetINodeMap());
    try
    {
        bag->SaveToFile(file.c_str());
    }
    catch (const GenICam::GenericException& error)
    {
        throw CToolError(ExitCode_File, "cannot write " + file + ": " + error.GetDescription());
    }
    std::printf("Saved %lld feature values of %s (%s) to %s\n", static_cast<long long>(stored),
                session.GetDeviceName().c_str(), ModuleTitle(options.module).c_str(), file.c_str());
    return ExitCode_Ok;
}

int RunFeaturesLoad(const CommandOptions_t& options)
{
    const DeviceArguments_t arguments = SplitDeviceArguments(options.positionals, 1, "features load [DEVICE] FILE");
    const std::string& file = arguments.rest[0];
    CheckModuleName(options.module);
    CheckReadableFile(file);
    QvApi::CIQvFeatureBagPtr bag(QvApi::CreateIQvFeatureBag());
    try
    {
        bag->StoreFileToBag(file.c_str());
    }
    catch (const GenICam::GenericException& error)
    {
        throw CToolError(ExitCode_File, file + " is not a feature file: " + error.GetDescription());
    }
    CCameraSession session;
    session.OpenDevice(arguments.device, GenTL::DEVICE_ACCESS_CONTROL);
    GenICam::gcstring_vector errors;
    const bool complete = bag->Load(ModulePort(session, options.module)->GetINodeMap(), true, &errors);
    GenICam::gcstring text;
    bag->SaveToString(text);
    const size_t total = CountFeatureLines(text);
    if (!complete)
    {
        std::fprintf(stderr, "qvcam: %zu of %zu feature values from %s could not be applied to %s%s\n", errors.size(),
                     total, file.c_str(), session.GetDeviceName().c_str(), errors.empty() ? "" : ":");
        for (const GenICam::gcstring& error : errors)
            std::fprintf(stderr, "  %s\n", error.c_str());
        return ExitCode_LoadIncomplete;
    }
    std::printf("Loaded %zu feature values from %s into %s (%s)\n", total, file.c_str(),
                session.GetDeviceName().c_str(), ModuleTitle(options.module).c_str());
    return ExitCode_Ok;
}

int RunXml(const CommandOptions_t& options)
{
    const DeviceArguments_t arguments = SplitDeviceArguments(options.positionals, 1, "xml [DEVICE] [--module M] FILE");
    const std::string& file = arguments.rest[0];
    CheckModuleName(options.module);
    CheckWritableFile(file);
    CCameraSession session;
    session.OpenDeviceForReading(arguments.device);
    QvApi::IQvPort* pPort = ModulePort(session, options.module);
    const std::string name = pPort->GetXMLFileName().c_str();
    try
    {
        pPort->SaveXMLFile(file.c_str());
    }
    catch (const GenICam::RuntimeException& error)
    {
        throw CToolError(ExitCode_File, "cannot write " + file + ": " + error.GetDescription());
    }
    const size_t dot = name.rfind('.');
    const bool zipped = dot != std::string::npos && (name.substr(dot) == ".zip" || name.substr(dot) == ".ZIP");
    std::printf("Saved the %s description %s%s to %s\n", ModuleTitle(options.module).c_str(), name.c_str(),
                zipped ? " (a zip archive, as the device serves it)" : "", file.c_str());
    return ExitCode_Ok;
}

int RunGenICamDump(const CommandOptions_t& options)
{
    if (options.positionals.size() != 1)
        throw CToolError(ExitCode_Usage, std::string(options.positionals.empty() ? "missing" : "too many") +
                                             " argument(s): usage: qvcam genicam-dump FILE [--registers FILE] [--warnings]");
    const std::string& file = options.positionals[0];
    CheckReadableFile(file);
    if (!options.registerFile.empty())
        CheckReadableFile(options.registerFile);
    try
    {
        DumpDescription(file, options.registerFile, stdout, options.printWarnings ? stderr : nullptr);
    }
    catch (const GenICam::GenericException& error)
    {
        throw CToolError(ExitCode_Description, "cannot load " + file + ": " + error.GetDescription());
    }
    return ExitCode_Ok;
}
} // namespace QvCam
