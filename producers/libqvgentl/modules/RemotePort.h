#pragma once

#include <memory>

#include "modules/Port.h"

namespace QvGenTL {

class CDeviceModule;

/**
 * The remote device port of DevGetPort: the camera's registers and description, reached
 * through the device's transport connection. Each call keeps the device alive while it runs.
 * Any thread.
 */
class CRemotePort : public CPort
{
public:
    explicit CRemotePort(const std::shared_ptr<CDeviceModule>& device) : m_device(device) {}

    void ReadPort(uint64_t address, void* pBuffer, size_t size) override;
    void WritePort(uint64_t address, const void* pBuffer, size_t size) override;
    PortIdentity_t PortIdentity() const override;
    std::vector<PortUrl_t> PortUrls() const override;

private:
    /// The device; throws GC_ERR_INVALID_HANDLE once it is gone.
    std::shared_ptr<CDeviceModule> Device() const;

    const std::weak_ptr<CDeviceModule> m_device; // the device owns this port
};

} // namespace QvGenTL
