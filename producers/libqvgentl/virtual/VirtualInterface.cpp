#include "virtual/VirtualInterface.h"

#include "modules/GenTLError.h"
#include "virtual/VirtualConnection.h"

namespace QvGenTL {

namespace {

const char* LongName(ECameraTransport_t transport)
{
    switch (transport)
    {
    case ECameraTransport_t::U3V: return "USB3 Vision";
    case ECameraTransport_t::GEV: return "GigE Vision";
    case ECameraTransport_t::CXP: return "CoaXPress";
    }
    return "";
}

} // namespace

CVirtualInterface::CVirtualInterface(const VirtualInterfaceConfig_t& config, uint32_t index,
                                     CVirtualCamera::Clock::time_point epoch)
    : m_transport(config.transport), m_id(std::string("QvVirtual-") + TransportName(config.transport) +
                                          std::to_string(index)),
      m_displayName(std::string("Virtual ") + LongName(config.transport) + " interface " + std::to_string(index))
{
    for (uint32_t camera = 0; camera < config.cameraCount; ++camera)
        m_cameras.push_back(std::make_unique<CVirtualCamera>(config.transport, index, camera, config.sensorWidth,
                                                             config.sensorHeight, epoch));
}

std::vector<DeviceInfo_t> CVirtualInterface::Discover(uint64_t /*timeoutMs*/)
{
    std::vector<DeviceInfo_t> devices;
    for (const auto& camera : m_cameras)
        devices.push_back(camera->Info());
    return devices;
}

CVirtualCamera& CVirtualInterface::Find(const std::string& deviceId)
{
    for (const auto& camera : m_cameras)
        if (camera->Info().id == deviceId)
            return *camera;
    ThrowGenTL(GenTL::GC_ERR_INVALID_ID, "No camera '%s' on %s", deviceId.c_str(), m_id.c_str());
}

GenTL::DEVICE_ACCESS_STATUS CVirtualInterface::AccessStatus(const std::string& deviceId)
{
    return Find(deviceId).AccessStatus();
}

std::unique_ptr<IDeviceConnection> CVirtualInterface::Open(const std::string& deviceId,
                                                           GenTL::DEVICE_ACCESS_FLAGS flags, IDeviceEventSink* sink)
{
    CVirtualCamera& camera = Find(deviceId);
    camera.Connect(flags, sink);
    return std::make_unique<CVirtualConnection>(camera, flags);
}

} // namespace QvGenTL
