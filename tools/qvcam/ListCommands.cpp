// qvcam list and qvcam info.

#include <cstdio>

#include <QvApi_TL.h>

#include "CameraSession.h"
#include "CommandHelpers.h"
#include "Commands.h"
#include "FeatureAccess.h"
#include "TextTable.h"
#include "ToolError.h"

namespace QvCam
{
namespace
{
template <class F>
std::string Field(F read)
{
    try
    {
        return read().c_str();
    }
    catch (const GenICam::GenericException&)
    {
        return "-";
    }
}

std::string SystemText(QvApi::IQvSystem* pSystem)
{
    QvApi::IQvSystemInfo* pInfo = pSystem->GetIQvSystemInfo();
    std::string text = Field([&] { return pInfo->GetVendor(); }) + " " + Field([&] { return pInfo->GetModel(); }) + " " +
                       Field([&] { return pInfo->GetVersion(); });
    try
    {
        text += ", GenTL " + std::to_string(pInfo->GetGenTLVersionMajor()) + "." +
                std::to_string(pInfo->GetGenTLVersionMinor());
    }
    catch (const GenICam::GenericException&)
    {
    }
    return text;
}
} // namespace

int RunList(const CommandOptions_t& options)
{
    if (!options.positionals.empty())
        throw CToolError(ExitCode_Usage, "too many arguments: usage: qvcam list");
    CCameraSession session;
    session.OpenSystems(); // throws when no .cti file is on the path

    std::printf("Producers on GENICAM_GENTL64_PATH:\n");
    CTextTable producers({"File", "Status"});
    for (const ProducerFile_t& file : session.GetProducerFiles())
    {
        std::string status;
        if (file.vendor < 0)
            status = "found; not one of the SDK's vendor producers, not opened";
        else if (file.shadowed)
            status = "shadowed by an earlier folder holding the same file name";
        else
            for (const SystemEntry_t& system : session.GetSystems())
                if (system.path == file.path)
                    status = system.pSystem != nullptr ? "opened: " + SystemText(system.pSystem)
                                                       : "cannot be opened: " + system.error;
        producers.AddRow({file.path, status});
    }
    producers.Print(stdout, "  ");

    CTextTable interfaces({"Interface", "Type", "Devices", "Producer"});
    for (const SystemEntry_t& system : session.GetSystems())
    {
        if (system.pSystem == nullptr)
            continue;
        for (size_t i = 0; i < system.pSystem->GetInterfaceCount(); ++i)
        {
            QvApi::IQvInterface* pInterface = system.pSystem->GetIQvInterface(i);
            size_t devices = 0;
            try
            {
                pInterface->UpdateDeviceList();
                devices = pInterface->GetDeviceCount();
            }
            catch (const GenICam::GenericException&)
            {
            }
            const std::string path = system.path.substr(system.path.rfind('/') + 1);
            interfaces.AddRow({Field([&] { return pInterface->GetIQvInterfaceInfo()->GetID(); }),
                               Field([&] { return pInterface->GetIQvInterfaceInfo()->GetTLType(); }),
                               std::to_string(devices), path});
        }
    }
    std::printf("\nInterfaces:\n");
    if (interfaces.GetRowCount() == 0)
        std::printf("  none\n");
    else
        interfaces.Print(stdout, "  ");

    CTextTable devices({"#", "ID", "Vendor", "Model", "Serial", "User name", "Access", "Interface"});
    for (const DeviceEntry_t& device : session.GetDevices())
        devices.AddRow({std::to_string(device.index), device.id, device.vendor, device.model, device.serial,
                        device.userName.empty() ? "-" : device.userName, AccessStatusText(device.accessStatus),
                        device.interfaceId});
    std::printf("\nDevices:\n");
    if (devices.GetRowCount() == 0)
        std::printf("  none found\n");
    else
        devices.Print(stdout, "  ");
    return ExitCode_Ok;
}

int RunInfo(const CommandOptions_t& options)
{
    const DeviceArguments_t arguments = SplitDeviceArguments(options.positionals, 0, "info [DEVICE] [--module M] [--all]");
    CheckModuleName(options.module);
    CCameraSession session;
    QvApi::IQvDevice* pDevice = session.OpenDeviceForReading(arguments.device);

    QvApi::IQvDeviceInfo* pInfo = pDevice->GetIQvDeviceInfo();
    CTextTable table;
    table.AddRow({"ID", Field([&] { return pInfo->GetID(); })});
    table.AddRow({"Vendor", Field([&] { return pInfo->GetVendor(); })});
    table.AddRow({"Model", Field([&] { return pInfo->GetModel(); })});
    table.AddRow({"Serial number", Field([&] { return pInfo->GetSerialNumber(); })});
    table.AddRow({"User name", Field([&] { return pInfo->GetUserDefinedName(); })});
    table.AddRow({"Version", Field([&] { return pInfo->GetVersion(); })});
    table.AddRow({"Transport layer", Field([&] { return pInfo->GetTLType(); })});
    table.AddRow({"Interface", Field([&] { return pDevice->GetIQvInterface()->GetIQvInterfaceInfo()->GetID(); })});
    table.AddRow({"Producer", Field([&] {
                      return pDevice->GetIQvInterface()->GetIQvSystem()->GetIQvSystemInfo()->GetPathName();
                  })});
    table.AddRow({"Data streams", std::to_string(pDevice->GetDataStreamCount())});
    std::printf("Device %s\n", session.GetDeviceName().c_str());
    table.Print(stdout, "  ");

    QvApi::IQvPort* pPort = ModulePort(session, options.module);
    std::printf("\nFeatures of the %s (%s):\n", ModuleTitle(options.module).c_str(),
                Field([&] { return pPort->GetXMLFileName(); }).c_str());
    CFeatureAccess features(pPort->GetINodeMap(), ModuleTitle(options.module));
    features.PrintTree(stdout, options.withInvisible);
    return ExitCode_Ok;
}
} // namespace QvCam
