#pragma once

#include <memory>
#include <string>
#include <vector>

#include "transport/Transport.h"
#include "virtual/VirtualCamera.h"
#include "virtual/VirtualConfig.h"

namespace QvGenTL {

/// One virtual interface: a fixed set of cameras of one transport type. Any thread.
class CVirtualInterface : public ITransportInterface
{
public:
    CVirtualInterface(const VirtualInterfaceConfig_t& config, uint32_t index, CVirtualCamera::Clock::time_point epoch);

    std::string Id() const override { return m_id; }
    std::string DisplayName() const override { return m_displayName; }
    std::string TLType() const override { return TransportName(m_transport); }
    std::vector<DeviceInfo_t> Discover(uint64_t timeoutMs) override;
    GenTL::DEVICE_ACCESS_STATUS AccessStatus(const std::string& deviceId) override;
    std::unique_ptr<IDeviceConnection> Open(const std::string& deviceId, GenTL::DEVICE_ACCESS_FLAGS flags,
                                            IDeviceEventSink* sink) override;

private:
    CVirtualCamera& Find(const std::string& deviceId);

    const ECameraTransport_t m_transport;
    const std::string m_id;
    const std::string m_displayName;
    std::vector<std::unique_ptr<CVirtualCamera>> m_cameras; // constant after construction
};

} // namespace QvGenTL
