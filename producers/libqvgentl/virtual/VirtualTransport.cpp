#include "virtual/VirtualTransport.h"

namespace QvGenTL {

CVirtualTransport::CVirtualTransport(const std::vector<VirtualInterfaceConfig_t>& config)
{
    // All cameras share one clock, started when the system opens.
    const CVirtualCamera::Clock::time_point epoch = CVirtualCamera::Clock::now();
    uint32_t counts[3] = {};
    for (const VirtualInterfaceConfig_t& item : config)
    {
        const uint32_t index = counts[static_cast<int>(item.transport)]++;
        m_interfaces.push_back(std::make_unique<CVirtualInterface>(item, index, epoch));
    }
}

std::vector<ITransportInterface*> CVirtualTransport::Interfaces()
{
    std::vector<ITransportInterface*> interfaces;
    for (const auto& interface : m_interfaces)
        interfaces.push_back(interface.get());
    return interfaces;
}

} // namespace QvGenTL
