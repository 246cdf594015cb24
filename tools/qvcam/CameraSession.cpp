#include "CameraSession.h"

#include <dirent.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ToolError.h"

namespace QvCam
{
namespace
{
const char* const kVendorFiles[] = {"libqvgentl.cti", "coaxlink.cti", "KYFGLibGenTL.cti", "siso_gentl.cti"};

bool EndsWith(const std::string& text, const char* suffix)
{
    const size_t length = std::strlen(suffix);
    return text.size() >= length && text.compare(text.size() - length, length, suffix) == 0;
}

std::string BaseName(const std::string& path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool IsDigits(const std::string& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Reads one information field; a producer that cannot answer leaves it empty rather than
// hiding the whole device from the listing.
template <class F>
std::string Field(F read)
{
    try
    {
        return read().c_str();
    }
    catch (const GenICam::GenericException&)
    {
        return std::string();
    }
}
} // namespace

const char* VendorFileName(int vendor)
{
    if (vendor < 0 || vendor >= static_cast<int>(sizeof(kVendorFiles) / sizeof(kVendorFiles[0])))
        return nullptr;
    return kVendorFiles[vendor];
}

std::string AccessStatusText(int status)
{
    switch (status)
    {
    case GenTL::DEVICE_ACCESS_STATUS_READWRITE:
        return "available";
    case GenTL::DEVICE_ACCESS_STATUS_READONLY:
        return "read-only";
    case GenTL::DEVICE_ACCESS_STATUS_NOACCESS:
        return "no access";
    case GenTL::DEVICE_ACCESS_STATUS_BUSY:
        return "busy";
    case GenTL::DEVICE_ACCESS_STATUS_OPEN_READWRITE:
        return "open (read/write)";
    case GenTL::DEVICE_ACCESS_STATUS_OPEN_READONLY:
        return "open (read-only)";
    default:
        return "unknown";
    }
}

CCameraSession::CCameraSession()
{
    ScanPath();
}

namespace
{
std::string g_lastLostDevice;   // written on the one thread that runs the command
std::string g_lastOpenedDevice; // likewise
} // namespace

const std::string& CCameraSession::GetLastOpenedDevice()
{
    return g_lastOpenedDevice;
}

const std::string& CCameraSession::GetLastLostDevice()
{
    return g_lastLostDevice;
}

CCameraSession::~CCameraSession()
{
    try
    {
        if (m_device && m_device->IsDeviceLost())
            g_lastLostDevice = m_deviceName;
    }
    catch (...)
    {
    }
    m_stream.Reset();
    m_device.Reset();
    for (SystemEntry_t& system : m_systems)
    {
        if (system.pSystem == nullptr)
            continue;
        try
        {
            system.pSystem->Release();
        }
        catch (...)
        {
        }
    }
}

void CCameraSession::ScanPath()
{
    const char* value = std::getenv("GENICAM_GENTL64_PATH");
    if (value == nullptr || value[0] == '\0')
        return;
    std::vector<std::string> seenNames;
    const std::string path(value);
    size_t start = 0;
    while (start <= path.size())
    {
        size_t end = path.find(':', start);
        if (end == std::string::npos)
            end = path.size();
        // The SDK reads an empty piece as the root folder; list what it would load.
        std::string folder = path.substr(start, end - start);
        start = end + 1;
        if (folder.empty() && end == path.size() && end != 0)
            break; // a trailing separator adds nothing
        DIR* pDir = opendir(folder.empty() ? "/" : folder.c_str());
        if (pDir == nullptr)
            continue;
        std::vector<std::string> names;
        while (dirent* pEntry = readdir(pDir))
        {
            const std::string name = pEntry->d_name;
            if (EndsWith(name, ".cti"))
                names.push_back(name);
        }
        closedir(pDir);
        std::sort(names.begin(), names.end());
        for (const std::string& name : names)
        {
            ProducerFile_t file;
            file.path = folder + "/" + name;
            struct stat info;
            if (stat(file.path.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
                continue;
            for (int vendor = 0; VendorFileName(vendor) != nullptr; ++vendor)
                if (name == VendorFileName(vendor))
                    file.vendor = vendor;
            file.shadowed = std::find(seenNames.begin(), seenNames.end(), name) != seenNames.end();
            seenNames.push_back(name);
            m_producerFiles.push_back(file);
        }
        if (end == path.size())
            break;
    }
}

std::string CCameraSession::NoProducerMessage() const
{
    const char* value = std::getenv("GENICAM_GENTL64_PATH");
    if (value == nullptr || value[0] == '\0')
    {
        // An installed qvcam knows where the SDK's own producer was installed beside it.
        std::string hint;
        char exe[4096];
        const ssize_t length = readlink("/proc/self/exe", exe, sizeof(exe) - 1);
        if (length > 0)
        {
            std::string folder(exe, static_cast<size_t>(length));
            folder = folder.substr(0, folder.rfind('/')) + "/../lib/qvapi/gentl";
            struct stat info;
            if (stat((folder + "/libqvgentl.cti").c_str(), &info) == 0)
            {
                char resolved[4096];
                if (realpath(folder.c_str(), resolved) != nullptr)
                    folder = resolved;
                hint = "; the SDK's own producer is in " + folder;
            }
        }
        return "no GenTL producer: GENICAM_GENTL64_PATH is not set (it names the folders holding .cti files" + hint + ")";
    }
    return std::string("no GenTL producer (.cti file) found on GENICAM_GENTL64_PATH=") + value;
}

void CCameraSession::OpenSystems()
{
    if (m_systemsOpened)
        return;
    m_systemsOpened = true;
    if (m_producerFiles.empty())
        throw CToolError(ExitCode_NoProducer, NoProducerMessage());
    for (const ProducerFile_t& file : m_producerFiles)
    {
        if (file.vendor < 0 || file.shadowed)
            continue;
        SystemEntry_t entry;
        entry.path = file.path;
        try
        {
            entry.pSystem = QvApi::CreateIQvSystem(static_cast<QvApi::_EQvSystemVendor_t>(file.vendor),
                                                   QvApi::QvInterfaceType_All);
        }
        catch (const GenICam::GenericException& error)
        {
            entry.error = error.GetDescription();
        }
        m_systems.push_back(entry);
    }
}

const std::vector<DeviceEntry_t>& CCameraSession::GetDevices()
{
    OpenSystems();
    if (m_devicesListed)
        return m_devices;
    m_devicesListed = true;
    for (const SystemEntry_t& system : m_systems)
    {
        if (system.pSystem == nullptr)
            continue;
        for (size_t i = 0; i < system.pSystem->GetInterfaceCount(); ++i)
        {
            QvApi::IQvInterface* pInterface = system.pSystem->GetIQvInterface(i);
            try
            {
                pInterface->UpdateDeviceList();
            }
            catch (const GenICam::GenericException&)
            {
                continue; // an interface that cannot list shows no devices
            }
            const std::string interfaceId = Field([&] { return pInterface->GetIQvInterfaceInfo()->GetID(); });
            for (size_t d = 0; d < pInterface->GetDeviceCount(); ++d)
            {
                QvApi::IQvDeviceInfo* pInfo = pInterface->GetIQvDeviceInfo(d);
                DeviceEntry_t entry;
                entry.index = m_devices.size();
                entry.pInterface = pInterface;
                entry.indexOnInterface = d;
                entry.producer = BaseName(system.path);
                entry.interfaceId = interfaceId;
                entry.tlType = Field([&] { return pInfo->GetTLType(); });
                entry.id = Field([&] { return pInfo->GetID(); });
                entry.vendor = Field([&] { return pInfo->GetVendor(); });
                entry.model = Field([&] { return pInfo->GetModel(); });
                entry.serial = Field([&] { return pInfo->GetSerialNumber(); });
                entry.userName = Field([&] { return pInfo->GetUserDefinedName(); });
                try
                {
                    entry.accessStatus = pInfo->GetAccessStatus();
                }
                catch (const GenICam::GenericException&)
                {
                    entry.accessStatus = GenTL::DEVICE_ACCESS_STATUS_UNKNOWN;
                }
                m_devices.push_back(entry);
            }
        }
    }
    return m_devices;
}

QvApi::IQvDevice* CCameraSession::OpenDevice(const std::string& which, GenTL::DEVICE_ACCESS_FLAGS flags)
{
    OpenSystems();
    bool anySystem = false;
    std::string firstError;
    for (const SystemEntry_t& system : m_systems)
    {
        anySystem = anySystem || system.pSystem != nullptr;
        if (firstError.empty())
            firstError = system.error;
    }
    if (!anySystem)
    {
        if (m_systems.empty())
            throw CToolError(ExitCode_NoProducer,
                             "no GenTL producer the SDK can open on GENICAM_GENTL64_PATH (it loads libqvgentl.cti, "
                             "coaxlink.cti, KYFGLibGenTL.cti or siso_gentl.cti)");
        throw CToolError(ExitCode_NoProducer, "cannot open the GenTL producer: " + firstError);
    }
    const std::vector<DeviceEntry_t>& devices = GetDevices();
    if (devices.empty())
        throw CToolError(ExitCode_NoDevice, "no device found (see 'qvcam list')");

    const DeviceEntry_t* pChosen = nullptr;
    if (which.empty())
    {
        for (const DeviceEntry_t& entry : devices)
        {
            try
            {
                if (entry.pInterface->IsDeviceAvailable(entry.indexOnInterface, flags))
                {
                    pChosen = &entry;
                    break;
                }
            }
            catch (const GenICam::GenericException&)
            {
            }
        }
        if (pChosen == nullptr)
            throw CToolError(ExitCode_DeviceOpen, "no available device: all " + std::to_string(devices.size()) +
                                                      " devices are busy or not accessible");
    }
    else if (IsDigits(which))
    {
        const unsigned long long index = std::strtoull(which.c_str(), nullptr, 10);
        if (which.size() > 6 || index >= devices.size())
            throw CToolError(ExitCode_NoDevice, "no device #" + which + ": " + std::to_string(devices.size()) +
                                                    " device(s) found, numbered from 0 (see 'qvcam list')");
        pChosen = &devices[index];
    }
    else
    {
        // An ID wins over a serial number, which wins over a user-defined name.
        for (int pass = 0; pass < 3 && pChosen == nullptr; ++pass)
            for (const DeviceEntry_t& entry : devices)
            {
                const std::string& key = pass == 0 ? entry.id : pass == 1 ? entry.serial : entry.userName;
                if (!key.empty() && key == which)
                {
                    pChosen = &entry;
                    break;
                }
            }
        if (pChosen == nullptr)
            throw CToolError(ExitCode_NoDevice, "no device '" + which +
                                                    "': it is neither an index, an ID, a serial number nor a user-defined "
                                                    "name of a listed device (see 'qvcam list')");
    }

    m_deviceName = pChosen->id.empty() ? "#" + std::to_string(pChosen->index) : pChosen->id;
    try
    {
        m_device.Reset(pChosen->pInterface->CreateIQvDevice(pChosen->indexOnInterface, flags));
        g_lastOpenedDevice = m_deviceName;
    }
    catch (const GenICam::GenericException& error)
    {
        throw CToolError(ExitCode_DeviceOpen, "cannot open device " + m_deviceName + " (" +
                                                  AccessStatusText(pChosen->accessStatus) + "): " + error.GetDescription());
    }
    return m_device.Get();
}

QvApi::IQvDevice* CCameraSession::OpenDeviceForReading(const std::string& which)
{
    try
    {
        return OpenDevice(which, GenTL::DEVICE_ACCESS_CONTROL);
    }
    catch (const CToolError& error)
    {
        if (error.GetCode() != ExitCode_DeviceOpen)
            throw;
    }
    return OpenDevice(which, GenTL::DEVICE_ACCESS_READONLY);
}

QvApi::IQvDataStream* CCameraSession::GetDataStream()
{
    if (!m_stream)
    {
        if (!m_device || m_device->GetDataStreamCount() == 0)
            throw CToolError(ExitCode_Acquisition, "device " + m_deviceName + " has no data stream");
        m_stream.Reset(m_device->CreateIQvDataStream(0));
    }
    return m_stream.Get();
}
} // namespace QvCam
