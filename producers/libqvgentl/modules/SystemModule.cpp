#include "modules/SystemModule.h"

#include <dlfcn.h>
#include <climits>
#include <cstdlib>

#include "modules/HandleTable.h"
#include "modules/InterfaceModule.h"
#include "modules/ProducerInfo.h"

namespace QvGenTL {

namespace {

/// Full path of the loaded producer file.
std::string ProducerPath()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&CSystemModule::LibraryInfo), &info) == 0 || info.dli_fname == nullptr)
        return "libqvgentl.cti";
    char resolved[PATH_MAX];
    if (realpath(info.dli_fname, resolved) != nullptr)
        return resolved;
    return info.dli_fname;
}

std::string ProducerFileName()
{
    const std::string path = ProducerPath();
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

} // namespace

CSystemModule::CSystemModule() : CModule(kSystemId, kSystemTLType, "System.xml")
{
    auto info = [](GenTL::TL_INFO_CMD command) {
        const CInfoValue value = LibraryInfo(command);
        return std::string(static_cast<const char*>(value.Data()));
    };
    m_registers.AddString(0x0000, 64, [=] { return info(GenTL::TL_INFO_ID); });
    m_registers.AddString(0x0040, 64, [=] { return info(GenTL::TL_INFO_VENDOR); });
    m_registers.AddString(0x0080, 64, [=] { return info(GenTL::TL_INFO_MODEL); });
    m_registers.AddString(0x00C0, 64, [=] { return info(GenTL::TL_INFO_VERSION); });
    m_registers.AddString(0x0100, 256, [=] { return info(GenTL::TL_INFO_NAME); });
    m_registers.AddString(0x0200, 64, [=] { return info(GenTL::TL_INFO_DISPLAYNAME); });
    m_registers.AddString(0x0400, 1024, [=] { return info(GenTL::TL_INFO_PATHNAME); });
    m_registers.AddInteger(0x0800, 4, [] { return TLTypeCode(kSystemTLType); });
    m_registers.AddInteger(0x0804, 4, [] { return int64_t(kGenTLVersionMajor); });
    m_registers.AddInteger(0x0808, 4, [] { return int64_t(kGenTLVersionMinor); });
    m_registers.AddInteger(0x0900, 4, nullptr, [this](int64_t) {
        UpdateInterfaceList(0);
        return GenTL::GC_ERR_SUCCESS;
    });
    m_registers.AddInteger(
        0x0904, 4,
        [this] {
            std::lock_guard lock(m_lock);
            return int64_t(m_selectedInterface);
        },
        [this](int64_t value) {
            std::lock_guard lock(m_lock);
            if (value < 0 || value >= int64_t(m_listed.size()))
                return GenTL::GC_ERR_INVALID_VALUE;
            m_selectedInterface = static_cast<uint32_t>(value);
            return GenTL::GC_ERR_SUCCESS;
        });
    m_registers.AddInteger(0x0908, 4, [this] {
        std::lock_guard lock(m_lock);
        return int64_t(m_listed.size()) - 1;
    });
    auto selected = [this](bool displayName) {
        std::lock_guard lock(m_lock);
        if (m_selectedInterface >= m_listed.size())
            return std::string();
        ITransportInterface* transport = m_listed[m_selectedInterface];
        return displayName ? transport->DisplayName() : transport->Id();
    };
    m_registers.AddString(0x0A00, 64, [=] { return selected(false); });
    m_registers.AddString(0x0A40, 64, [=] { return selected(true); });
}

std::shared_ptr<CSystemModule> CSystemModule::Create()
{
    auto system = std::make_shared<CSystemModule>();
    system->m_transports = CreateTransports();
    Handles().Add(system);
    return system;
}

CInfoValue CSystemModule::LibraryInfo(GenTL::TL_INFO_CMD command)
{
    switch (command)
    {
    case GenTL::TL_INFO_ID: return CInfoValue::String(kSystemId);
    case GenTL::TL_INFO_VENDOR: return CInfoValue::String(kProducerVendor);
    case GenTL::TL_INFO_MODEL: return CInfoValue::String(kProducerModel);
    case GenTL::TL_INFO_VERSION: return CInfoValue::String(kProducerVersion);
    case GenTL::TL_INFO_TLTYPE: return CInfoValue::String(kSystemTLType);
    case GenTL::TL_INFO_NAME: return CInfoValue::String(ProducerFileName());
    case GenTL::TL_INFO_PATHNAME: return CInfoValue::String(ProducerPath());
    case GenTL::TL_INFO_DISPLAYNAME: return CInfoValue::String(kSystemDisplayName);
    case GenTL::TL_INFO_CHAR_ENCODING: return CInfoValue::Int32(GenTL::TL_CHAR_ENCODING_ASCII);
    case GenTL::TL_INFO_GENTL_VER_MAJOR: return CInfoValue::UInt32(kGenTLVersionMajor);
    case GenTL::TL_INFO_GENTL_VER_MINOR: return CInfoValue::UInt32(kGenTLVersionMinor);
    default: ThrowGenTL(GenTL::GC_ERR_INVALID_PARAMETER, "Unknown TL_INFO_CMD %d", command);
    }
}

bool CSystemModule::UpdateInterfaceList(uint64_t /*timeoutMs*/)
{
    std::vector<ITransportInterface*> found;
    for (const auto& transport : m_transports)
        for (ITransportInterface* interface : transport->Interfaces())
            found.push_back(interface);
    std::lock_guard lock(m_lock);
    const bool changed = found != m_listed;
    m_listed = std::move(found);
    if (m_selectedInterface >= m_listed.size())
        m_selectedInterface = 0;
    return changed;
}

uint32_t CSystemModule::NumInterfaces()
{
    std::lock_guard lock(m_lock);
    return static_cast<uint32_t>(m_listed.size());
}

std::string CSystemModule::InterfaceId(uint32_t index)
{
    std::lock_guard lock(m_lock);
    if (index >= m_listed.size())
        ThrowGenTL(GenTL::GC_ERR_INVALID_INDEX, "Interface index %u is not below the interface count %zu", index,
                   m_listed.size());
    return m_listed[index]->Id();
}

ITransportInterface* CSystemModule::FindListedLocked(const std::string& interfaceId) const
{
    for (ITransportInterface* interface : m_listed)
        if (interface->Id() == interfaceId)
            return interface;
    ThrowGenTL(GenTL::GC_ERR_INVALID_ID, "Interface '%s' is not in the interface list", interfaceId.c_str());
}

CInfoValue CSystemModule::InterfaceInfo(const std::string& interfaceId, GenTL::INTERFACE_INFO_CMD command)
{
    std::lock_guard lock(m_lock);
    return CInterfaceModule::InterfaceInfo(*FindListedLocked(interfaceId), command);
}

std::shared_ptr<CInterfaceModule> CSystemModule::OpenInterface(const std::string& interfaceId)
{
    std::lock_guard lock(m_lock);
    ITransportInterface* transport = FindListedLocked(interfaceId);
    if (m_open.count(interfaceId) != 0)
        ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "Interface '%s' is open already", interfaceId.c_str());
    auto interface = std::make_shared<CInterfaceModule>(SharedAs<CSystemModule>(), transport);
    m_open[interfaceId] = interface;
    Handles().Add(interface);
    return interface;
}

void CSystemModule::ForgetInterface(const CInterfaceModule* module)
{
    std::lock_guard lock(m_lock);
    for (auto it = m_open.begin(); it != m_open.end(); ++it)
        if (it->second.get() == module)
        {
            m_open.erase(it);
            return;
        }
}

void CSystemModule::CloseChildren()
{
    std::map<std::string, std::shared_ptr<CInterfaceModule>> open;
    {
        std::lock_guard lock(m_lock);
        open.swap(m_open);
    }
    for (auto& [id, interface] : open)
        interface->Close();
}

} // namespace QvGenTL
