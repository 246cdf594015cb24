#pragma once

#include <atomic>

#include "transport/Transport.h"
#include "virtual/VirtualCamera.h"

namespace QvGenTL {

/// The host's side of one open virtual camera: forwards to the camera until closed.
/// Any thread.
class CVirtualConnection : public IDeviceConnection
{
public:
    CVirtualConnection(CVirtualCamera& camera, GenTL::DEVICE_ACCESS_FLAGS flags);
    ~CVirtualConnection() override;

    void ReadRemote(uint64_t address, void* pBuffer, size_t size) override;
    void WriteRemote(uint64_t address, const void* pBuffer, size_t size) override;
    bool RemoteLittleEndian() const override { return m_camera.LittleEndian(); }
    std::vector<PortUrl_t> RemoteUrls() const override { return m_camera.Urls(); }
    bool RemoteWritable() const override { return m_flags != GenTL::DEVICE_ACCESS_READONLY; }

    DeviceInfo_t Info() const override { return m_camera.Info(); }
    GenTL::DEVICE_ACCESS_STATUS AccessStatus() const override { return m_camera.AccessStatus(); }
    bool IsLost() const override { return m_camera.IsLost(); }

    size_t PayloadSize() override { return m_camera.PayloadSize(); }
    size_t MaxChunkCount() const override { return CVirtualCamera::kMaxChunks; }
    bool TLParamsLocked() override { return m_camera.TLParamsLocked(); }
    void SetTLParamsLocked(bool locked) override;

    void StartStreaming(IStreamSink* sink) override;
    void StopStreaming(bool kill) override;
    void Close() override;

private:
    void CheckOpen() const;

    CVirtualCamera& m_camera; // owned by the virtual transport, which outlives every connection
    const GenTL::DEVICE_ACCESS_FLAGS m_flags;
    std::atomic<bool> m_closed{false};
};

} // namespace QvGenTL
