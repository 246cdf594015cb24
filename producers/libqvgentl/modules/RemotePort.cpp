#include "modules/RemotePort.h"

#include "modules/DeviceModule.h"
#include "modules/GenTLError.h"

namespace QvGenTL {

std::shared_ptr<CDeviceModule> CRemotePort::Device() const
{
    std::shared_ptr<CDeviceModule> device = m_device.lock();
    if (!device || device->IsClosed())
        ThrowGenTL(GenTL::GC_ERR_INVALID_HANDLE, "The device of this remote port is closed");
    return device;
}

void CRemotePort::ReadPort(uint64_t address, void* pBuffer, size_t size)
{
    Device()->Connection().ReadRemote(address, pBuffer, size);
}

void CRemotePort::WritePort(uint64_t address, const void* pBuffer, size_t size)
{
    const std::shared_ptr<CDeviceModule> device = Device();
    if (device->AccessFlags() == GenTL::DEVICE_ACCESS_READONLY)
        ThrowGenTL(GenTL::GC_ERR_ACCESS_DENIED, "Device %s is open read-only", device->Id().c_str());
    device->Connection().WriteRemote(address, pBuffer, size);
}

PortIdentity_t CRemotePort::PortIdentity() const
{
    const std::shared_ptr<CDeviceModule> device = Device();
    IDeviceConnection& connection = device->Connection();
    const DeviceInfo_t info = connection.Info();
    PortIdentity_t identity;
    identity.id = info.id;
    identity.vendor = info.vendor;
    identity.model = info.model;
    identity.tlType = info.tlType;
    identity.module = "Device";
    identity.version = info.version;
    identity.portName = "Device";
    identity.littleEndian = connection.RemoteLittleEndian();
    identity.readable = true;
    identity.writable = device->AccessFlags() != GenTL::DEVICE_ACCESS_READONLY && connection.RemoteWritable();
    return identity;
}

std::vector<PortUrl_t> CRemotePort::PortUrls() const
{
    return Device()->Connection().RemoteUrls();
}

} // namespace QvGenTL
