// qvcam: find cameras, read and change their features, grab and stream images, save and load
// settings, through the QvApi SDK. Run "qvcam --help" for the commands and their exit codes.

#include <cstdio>
#include <exception>
#include <string>

#include <CLI/CLI.hpp>

#include <QvApi_TL.h>

#include "CameraSession.h"
#include "Commands.h"
#include "ToolError.h"

using namespace QvCam;

namespace
{
const char* const kExitCodes = R"(Exit codes:
  0 success                 7 bad value (type, range, increment, entry)
  1 other error             8 feature not readable/writable now
  2 bad command line        9 device lost
  3 no GenTL producer      10 acquisition failed or timed out
  4 no (such) device       11 file or folder error
  5 device cannot be opened 12 features load incomplete
  6 unknown feature        13 description cannot be loaded
 130 interrupted (Ctrl-C)

DEVICE is an index from 'qvcam list', a device ID, a serial number or a user-defined name;
without it the first available device is used. Producers are searched on GENICAM_GENTL64_PATH.)";

int Fail(int code, const std::string& message)
{
    std::fprintf(stderr, "qvcam: %s\n", message.c_str());
    return code;
}

// SDK messages may span lines or carry wide padded fields; the user gets one tidy line.
std::string OneLine(const std::string& text)
{
    std::string line;
    for (char c : text)
    {
        if (c == '\n' || c == '\r' || c == '\t')
            c = ' ';
        if (c == ' ' && (line.empty() || line.back() == ' '))
            continue;
        line += c;
    }
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    return line;
}
} // namespace

int main(int argc, char** argv)
{
    CommandOptions_t options;
    int (*pCommand)(const CommandOptions_t&) = nullptr;

    CLI::App app{"qvcam: cameras through the QvApi SDK (GenICam GenTL consumer)", "qvcam"};
    app.footer(kExitCodes);
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("qvcam ") + QVAPI_VERSION_TEXT);

    // A subcommand that runs pRun with the positional arguments described by argumentText.
    auto command = [&](CLI::App* pParent, const char* name, const char* description,
                       int (*pRun)(const CommandOptions_t&), const char* argumentText) {
        CLI::App* pSub = pParent->add_subcommand(name, description);
        pSub->callback([&pCommand, pRun] { pCommand = pRun; });
        pSub->add_option("args", options.positionals, argumentText);
        return pSub;
    };
    auto module = [&](CLI::App* pSub) {
        pSub->add_option("--module", options.module, "system, interface, local, remote (default) or stream");
        return pSub;
    };
    // Options of the commands that acquire.
    auto acquisition = [&](CLI::App* pSub) {
        pSub->add_option("--timeout", options.timeoutMs, "Longest wait for one frame in ms (default 5000)");
        pSub->add_option("--set", options.presets, "NAME=VALUE: set a camera feature first (repeatable)");
        pSub->add_option("--exec", options.commands, "COMMAND: execute a camera command first (repeatable)");
    };

    command(&app, "list", "Producers on GENICAM_GENTL64_PATH, their interfaces and devices", RunList, "(none)");
    CLI::App* pInfo =
        module(command(&app, "info", "Device information and its feature tree with values", RunInfo, "[DEVICE]"));
    pInfo->add_flag("--all", options.withInvisible, "Also show invisible features");
    module(command(&app, "get", "Print a feature's value", RunGet, "[DEVICE] FEATURE"));
    module(command(&app, "set", "Change a feature's value", RunSet, "[DEVICE] FEATURE VALUE"));
    module(command(&app, "exec", "Execute a command feature", RunExec, "[DEVICE] COMMAND"));

    CLI::App* pGrab = command(&app, "grab", "Grab frames into image files", RunGrab, "[DEVICE]");
    pGrab->add_option("-n,--count", options.count, "Frames to grab (default 10)");
    pGrab->add_option("-o,--out", options.outFolder, "Output folder, created if its parent exists (default .)");
    pGrab->add_option("-f,--format", options.format, "png (for viewing), pgm (full depth) or raw (bytes as delivered)");
    acquisition(pGrab);

    CLI::App* pStream =
        command(&app, "stream", "Stream and show frames/s, MB/s, dropped and incomplete frames", RunStream, "[DEVICE]");
    pStream->add_option("-s,--seconds", options.seconds, "How long to stream (default 5)");
    acquisition(pStream);

    CLI::App* pFeatures = app.add_subcommand("features", "Save or load feature values (GenApi persistence file)");
    pFeatures->require_subcommand(1);
    module(command(pFeatures, "save", "Save the device's feature values to FILE", RunFeaturesSave, "[DEVICE] FILE"));
    module(command(pFeatures, "load", "Apply the feature values of FILE to the device", RunFeaturesLoad,
                   "[DEVICE] FILE"));
    module(command(&app, "xml", "Save a module's GenICam description to FILE", RunXml, "[DEVICE] FILE"));

    CLI::App* pDump = command(&app, "genicam-dump", "Load a description file and print every node as JSON",
                              RunGenICamDump, "FILE");
    pDump->add_option("--registers", options.registerFile, "Register values, lines 'ADDRESS HEXBYTES'");
    pDump->add_flag("--warnings", options.printWarnings, "Print what the loader tolerated to stderr");

    // CLI11 reports an unknown command only as "A subcommand is required"; name it instead.
    bool known = false;
    for (const CLI::App* pSub : app.get_subcommands({}))
        known = known || (argc > 1 && pSub->get_name() == argv[1]);
    if (argc > 1 && argv[1][0] != '-' && !known)
        return Fail(ExitCode_Usage, std::string("unknown command '") + argv[1] + "' (see 'qvcam --help')");
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        if (error.get_exit_code() == 0)
            return app.exit(error); // --help, --version
        return Fail(ExitCode_Usage, OneLine(error.what()) + " (see 'qvcam --help')");
    }
    if (pCommand == nullptr)
        return Fail(ExitCode_Usage, "no command given (see 'qvcam --help')");

    InstallInterruptHandler();
    try
    {
        QvApi::CQvApiInitializer library;
        return pCommand(options);
    }
    catch (const CToolError& error)
    {
        return Fail(error.GetCode(), OneLine(error.what()));
    }
    catch (const QvApi::CQvGenTLErrorException& error)
    {
        // A transport error on an open device means the camera stopped answering.
        if (!CCameraSession::GetLastLostDevice().empty() ||
            (error.GetError() == GenTL::GC_ERR_IO && !CCameraSession::GetLastOpenedDevice().empty()))
            return Fail(ExitCode_DeviceLost, "device " + CCameraSession::GetLastOpenedDevice() + " was lost: " +
                                                 OneLine(error.GetDescription()));
        return Fail(ExitCode_Failure, OneLine(error.GetDescription()));
    }
    catch (const GenICam::GenericException& error)
    {
        if (!CCameraSession::GetLastLostDevice().empty())
            return Fail(ExitCode_DeviceLost, "device " + CCameraSession::GetLastLostDevice() + " was lost: " +
                                                 OneLine(error.GetDescription()));
        return Fail(ExitCode_Failure, OneLine(error.GetDescription()));
    }
    catch (const std::exception& error)
    {
        return Fail(ExitCode_Failure, OneLine(error.what()));
    }
}
