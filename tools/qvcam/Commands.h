#pragma once

#include <stddef.h>

#include <string>
#include <vector>

namespace QvCam
{
/// Everything the command line can say; each command reads the fields it needs.
struct CommandOptions_t
{
    std::vector<std::string> positionals; ///< as typed; each command splits off DEVICE itself
    std::string module = "remote";        ///< system, interface, local, remote or stream
    bool withInvisible = false;           ///< info --all
    size_t count = 10;                    ///< grab --count
    std::string outFolder = ".";          ///< grab --out
    std::string format = "png";           ///< grab --format
    unsigned timeoutMs = 5000;            ///< grab/stream: longest wait for one frame
    double seconds = 5.0;                 ///< stream --seconds
    std::vector<std::string> presets;     ///< grab/stream --set NAME=VALUE, applied before starting
    std::vector<std::string> commands;    ///< grab/stream --exec COMMAND, run after the presets
    std::string registerFile;             ///< genicam-dump --registers
    bool printWarnings = false;           ///< genicam-dump --warnings
};

// Each command returns its exit code or throws CToolError. The library is initialised.
int RunList(const CommandOptions_t& options);
int RunInfo(const CommandOptions_t& options);
int RunGet(const CommandOptions_t& options);
int RunSet(const CommandOptions_t& options);
int RunExec(const CommandOptions_t& options);
int RunFeaturesSave(const CommandOptions_t& options);
int RunFeaturesLoad(const CommandOptions_t& options);
int RunXml(const CommandOptions_t& options);
int RunGenICamDump(const CommandOptions_t& options);
int RunGrab(const CommandOptions_t& options);
int RunStream(const CommandOptions_t& options);

/// \return True once Ctrl-C was pressed (grab and stream stop cleanly then).
bool IsInterrupted();
/// Installs the Ctrl-C handler behind IsInterrupted().
void InstallInterruptHandler();
} // namespace QvCam
