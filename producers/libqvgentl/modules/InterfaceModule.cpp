#include "modules/InterfaceModule.h"

#include "modules/DeviceModule.h"
#include "modules/HandleTable.h"
#include "modules/SystemModule.h"

namespace QvGenTL {

int64_t TLTypeCode(const std::string& tlType)
{
    if (tlType == "GEV")
        return 1;
    if (tlType == "U3V")
        return 2;
    if (tlType == "CXP")
        return 3;
    return 4; // Mixed
}

CInfoValue DeviceInfoValue(const DeviceInfo_t& device, GenTL::DEVICE_ACCESS_STATUS status,
                           GenTL::DEVICE_INFO_CMD command)
{
    switch (command)
    {
    case GenTL::DEVICE_INFO_ID: return CInfoValue::String(device.id);
    case GenTL::DEVICE_INFO_VENDOR: return CInfoValue::String(device.vendor);
    case GenTL::DEVICE_INFO_MODEL: return CInfoValue::String(device.model);
    case GenTL::DEVICE_INFO_TLTYPE: return CInfoValue::String(device.tlType);
    case GenTL::DEVICE_INFO_DISPLAYNAME: return CInfoValue::String(device.displayName);
    case GenTL::DEVICE_INFO_ACCESS_STATUS: return CInfoValue::Int32(status);
    case GenTL::DEVICE_INFO_USER_DEFINED_NAME: return CInfoValue::String(device.userDefinedName);
    case GenTL::DEVICE_INFO_SERIAL_NUMBER: return CInfoValue::String(device.serialNumber);
    case GenTL::DEVICE_INFO_VERSION: return CInfoValue::String(device.version);
    case GenTL::DEVICE_INFO_TIMESTAMP_FREQUENCY: return CInfoValue::UInt64(device.timestampFrequency);
    default: ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Unknown DEVICE_INFO_CMD %d", command);
    }
}

CInterfaceModule::CInterfaceModule(std::shared_ptr<CSystemModule> system, ITransportInterface* transport)
    : CModule(transport->Id(), transport->TLType(), "Interface.xml"), m_system(std::move(system)),
      m_transport(transport)
{
    m_registers.AddString(0x0000, 64, [this] { return m_transport->Id(); });
    m_registers.AddString(0x0040, 64, [this] { return m_transport->DisplayName(); });
    m_registers.AddInteger(0x0080, 4, [this] { return TLTypeCode(m_transport->TLType()); });
    m_registers.AddInteger(0x0100, 4, nullptr, [this](int64_t) {
        UpdateDeviceList(0);
        return GenTL::GC_ERR_SUCCESS;
    });
    m_registers.AddInteger(
        0x0104, 4,
        [this] {
            std::lock_guard lock(m_lock);
            return int64_t(m_selectedDevice);
        },
        [this](int64_t value) {
            std::lock_guard lock(m_lock);
            if (value < 0 || value >= int64_t(m_listed.size()))
                return GenTL::GC_ERR_INVALID_VALUE;
            m_selectedDevice = static_cast<uint32_t>(value);
            return GenTL::GC_ERR_SUCCESS;
        });
    m_registers.AddInteger(0x0108, 4, [this] {
        std::lock_guard lock(m_lock);
        return int64_t(m_listed.size()) - 1;
    });
    // The selected device's texts; empty while the list is empty.
    auto selected = [this](std::string DeviceInfo_t::*field) {
        std::lock_guard lock(m_lock);
        return m_selectedDevice < m_listed.size() ? m_listed[m_selectedDevice].*field : std::string();
    };
    m_registers.AddString(0x0200, 64, [=] { return selected(&DeviceInfo_t::id); });
    m_registers.AddString(0x0240, 64, [=] { return selected(&DeviceInfo_t::vendor); });
    m_registers.AddString(0x0280, 64, [=] { return selected(&DeviceInfo_t::model); });
    m_registers.AddString(0x02C0, 64, [=] { return selected(&DeviceInfo_t::serialNumber); });
    m_registers.AddString(0x0300, 64, [=] { return selected(&DeviceInfo_t::userDefinedName); });
    m_registers.AddInteger(0x0340, 4, [this] {
        const std::string id = [&] {
            std::lock_guard lock(m_lock);
            return m_selectedDevice < m_listed.size() ? m_listed[m_selectedDevice].id : std::string();
        }();
        return int64_t(id.empty() ? GenTL::DEVICE_ACCESS_STATUS_UNKNOWN : m_transport->AccessStatus(id));
    });
}

CInfoValue CInterfaceModule::InterfaceInfo(ITransportInterface& transport, GenTL::INTERFACE_INFO_CMD command)
{
    switch (command)
    {
    case GenTL::INTERFACE_INFO_ID: return CInfoValue::String(transport.Id());
    case GenTL::INTERFACE_INFO_DISPLAYNAME: return CInfoValue::String(transport.DisplayName());
    case GenTL::INTERFACE_INFO_TLTYPE: return CInfoValue::String(transport.TLType());
    default: ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Unknown INTERFACE_INFO_CMD %d", command);
    }
}

bool CInterfaceModule::UpdateDeviceList(uint64_t timeoutMs)
{
    std::vector<DeviceInfo_t> found = m_transport->Discover(timeoutMs);
    std::lock_guard lock(m_lock);
    bool changed = found.size() != m_listed.size();
    for (size_t i = 0; !changed && i < found.size(); ++i)
        changed = found[i].id != m_listed[i].id;
    m_listed = std::move(found);
    if (m_selectedDevice >= m_listed.size())
        m_selectedDevice = 0;
    return changed;
}

uint32_t CInterfaceModule::NumDevices()
{
    std::lock_guard lock(m_lock);
    return static_cast<uint32_t>(m_listed.size());
}

std::string CInterfaceModule::DeviceId(uint32_t index)
{
    std::lock_guard lock(m_lock);
    if (index >= m_listed.size())
        ThrowGenTL(GenTL::GC_ERR_INVALID_INDEX, "Device index %u is not below the device count %zu", index,
                   m_listed.size());
    return m_listed[index].id;
}

const DeviceInfo_t* CInterfaceModule::FindListedLocked(const std::string& deviceId) const
{
    for (const DeviceInfo_t& device : m_listed)
        if (device.id == deviceId)
            return &device;
    ThrowGenTL(GenTL::GC_ERR_INVALID_ID, "Device '%s' is not in the device list of %s", deviceId.c_str(),
               Id().c_str());
}

CInfoValue CInterfaceModule::DeviceInfo(const std::string& deviceId, GenTL::DEVICE_INFO_CMD command)
{
    DeviceInfo_t device;
    {
        std::lock_guard lock(m_lock);
        device = *FindListedLocked(deviceId);
    }
    // The access status changes with opens and closes; ask for it now.
    const GenTL::DEVICE_ACCESS_STATUS status =
        command == GenTL::DEVICE_INFO_ACCESS_STATUS ? m_transport->AccessStatus(deviceId) : 0;
    return DeviceInfoValue(device, status, command);
}

std::shared_ptr<CDeviceModule> CInterfaceModule::OpenDevice(const std::string& deviceId,
                                                            GenTL::DEVICE_ACCESS_FLAGS flags)
{
    if (flags < GenTL::DEVICE_ACCESS_READONLY || flags > GenTL::DEVICE_ACCESS_EXCLUSIVE)
        ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Access flags %d are not READONLY, CONTROL or EXCLUSIVE", flags);
    std::lock_guard lock(m_lock);
    FindListedLocked(deviceId);
    if (m_open.count(deviceId) != 0)
        ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "Device '%s' is open already", deviceId.c_str());
    std::shared_ptr<CDeviceModule> device =
        CDeviceModule::Open(SharedAs<CInterfaceModule>(), *m_transport, deviceId, flags);
    m_open[deviceId] = device;
    Handles().Add(device);
    return device;
}

void CInterfaceModule::ForgetDevice(const CDeviceModule* module)
{
    std::lock_guard lock(m_lock);
    for (auto it = m_open.begin(); it != m_open.end(); ++it)
        if (it->second.get() == module)
        {
            m_open.erase(it);
            return;
        }
}

void CInterfaceModule::CloseChildren()
{
    std::map<std::string, std::shared_ptr<CDeviceModule>> open;
    {
        std::lock_guard lock(m_lock);
        open.swap(m_open);
    }
    for (auto& [id, device] : open)
        device->Close();
}

void CInterfaceModule::Close()
{
    if (IsClosed())
        return;
    CModule::Close();
    m_system->ForgetInterface(this);
}

} // namespace QvGenTL
