#include "CommandHelpers.h"

#include <csignal>
#include <atomic>

#include "CameraSession.h"
#include "Commands.h"
#include "ToolError.h"

namespace QvCam
{
namespace
{
std::atomic<bool> g_interrupted{false};

extern "C" void OnInterrupt(int)
{
    g_interrupted = true;
}
} // namespace

bool IsInterrupted()
{
    return g_interrupted;
}

void InstallInterruptHandler()
{
    struct sigaction action = {};
    action.sa_handler = OnInterrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

DeviceArguments_t SplitDeviceArguments(const std::vector<std::string>& positionals, size_t count,
                                       const std::string& synopsis)
{
    if (positionals.size() < count)
        throw CToolError(ExitCode_Usage, "missing argument: usage: qvcam " + synopsis);
    if (positionals.size() > count + 1)
        throw CToolError(ExitCode_Usage, "too many arguments: usage: qvcam " + synopsis);
    DeviceArguments_t arguments;
    size_t first = 0;
    if (positionals.size() == count + 1)
        arguments.device = positionals[first++];
    arguments.rest.assign(positionals.begin() + static_cast<std::ptrdiff_t>(first), positionals.end());
    return arguments;
}

void CheckModuleName(const std::string& module)
{
    if (module != "system" && module != "interface" && module != "local" && module != "remote" && module != "stream")
        throw CToolError(ExitCode_Usage,
                         "unknown module '" + module + "' (use system, interface, local, remote or stream)");
}

std::string ModuleTitle(const std::string& module)
{
    if (module == "local")
        return "local device";
    if (module == "remote")
        return "remote device";
    if (module == "stream")
        return "data stream";
    return module;
}

QvApi::IQvPort* ModulePort(CCameraSession& session, const std::string& module)
{
    CheckModuleName(module);
    QvApi::IQvDevice* pDevice = session.GetDevice();
    if (module == "system")
        return pDevice->GetIQvInterface()->GetIQvSystem()->GetIQvPort();
    if (module == "interface")
        return pDevice->GetIQvInterface()->GetIQvPort();
    if (module == "local")
        return pDevice->GetLocalIQvPort();
    if (module == "stream")
        return session.GetDataStream()->GetIQvPort();
    return pDevice->GetRemoteIQvPort();
}
} // namespace QvCam
