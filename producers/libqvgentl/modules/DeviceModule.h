#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "modules/Module.h"
#include "transport/Transport.h"

namespace QvGenTL {

class CDataStreamModule;
class CInterfaceModule;
class CRemotePort;

/**
 * A GenTL device module (IFOpenDevice, the "local device"): the transport connection to the
 * camera, the remote device port, the one data stream, device-level events and the
 * detection of device loss. Any thread.
 */
class CDeviceModule : public CModule, public IDeviceEventSink
{
public:
    /// Opens the device through transport; throws CGenTLError. The handle is not registered yet.
    static std::shared_ptr<CDeviceModule> Open(std::shared_ptr<CInterfaceModule> parent, ITransportInterface& transport,
                                               const std::string& deviceId, GenTL::DEVICE_ACCESS_FLAGS flags);

    CDeviceModule(std::shared_ptr<CInterfaceModule> parent, const std::string& deviceId, const std::string& tlType);
    ~CDeviceModule() override;

    CInfoValue Info(GenTL::DEVICE_INFO_CMD command);
    /// DevGetPort.
    std::shared_ptr<CRemotePort> RemotePort() const { return m_remotePort; }
    uint32_t NumDataStreams() const { return 1; }
    std::string DataStreamId(uint32_t index) const;
    /// DevOpenDataStream.
    std::shared_ptr<CDataStreamModule> OpenDataStream(const std::string& streamId);
    void ForgetDataStream(const CDataStreamModule* stream);

    /// The transport connection; valid until the device is destroyed (calls fail once closed).
    IDeviceConnection& Connection() { return *m_connection; }
    const std::shared_ptr<CInterfaceModule>& Interface() const { return m_interface; }
    GenTL::DEVICE_ACCESS_FLAGS AccessFlags() const { return m_flags; }

    // IDeviceEventSink
    void OnRemoteEvent(std::vector<uint8_t> record) override;
    void OnDeviceLost(const std::string& reason, uint64_t timestampNs) override;
    void OnFeatureEvent(GenTL::EVENT_TYPE type, const std::string& name, const std::string& value) override;

    void Close() override;

protected:
    const char* ModuleName() const override { return "TLDevice"; }
    const char* PortName() const override { return "DevicePort"; }
    bool SupportsEvent(GenTL::EVENT_TYPE type) const override;
    void CloseChildren() override;

private:
    static constexpr const char* kStreamId = "Stream0";
    static constexpr uint32_t kEventSelectorCount = 1; // DeviceLost

    void AddRegisters();

    const std::shared_ptr<CInterfaceModule> m_interface; // kept alive while this device lives
    std::unique_ptr<IDeviceConnection> m_connection;     // set by Open, closed by Close, freed with us
    std::shared_ptr<CRemotePort> m_remotePort;
    GenTL::DEVICE_ACCESS_FLAGS m_flags = GenTL::DEVICE_ACCESS_UNKNOWN;

    std::mutex m_lock;
    // Guarded by m_lock.
    std::shared_ptr<CDataStreamModule> m_stream;
    uint32_t m_eventSelector = 0;
    uint32_t m_eventNotification[kEventSelectorCount] = {};
    uint32_t m_streamSelector = 0;

    std::atomic<bool> m_lost{false};
};

} // namespace QvGenTL
