#include "modules/DeviceModule.h"

#include <QvGenTL/VirtualCamera.h>

#include "modules/DataStreamModule.h"
#include "modules/EventRecords.h"
#include "modules/HandleTable.h"
#include "modules/InterfaceModule.h"
#include "modules/RemotePort.h"

namespace QvGenTL {

std::shared_ptr<CDeviceModule> CDeviceModule::Open(std::shared_ptr<CInterfaceModule> parent,
                                                   ITransportInterface& transport, const std::string& deviceId,
                                                   GenTL::DEVICE_ACCESS_FLAGS flags)
{
    auto device = std::make_shared<CDeviceModule>(std::move(parent), deviceId, transport.TLType());
    device->m_flags = flags;
    device->m_connection = transport.Open(deviceId, flags, device.get());
    device->m_remotePort = std::make_shared<CRemotePort>(device);
    Handles().Add(device->m_remotePort);
    return device;
}

CDeviceModule::CDeviceModule(std::shared_ptr<CInterfaceModule> parent, const std::string& deviceId,
                             const std::string& tlType)
    : CModule(deviceId, tlType, "LocalDevice.xml"), m_interface(std::move(parent))
{
    AddRegisters();
}

CDeviceModule::~CDeviceModule() = default;

void CDeviceModule::AddRegisters()
{
    auto info = [this](std::string DeviceInfo_t::*field) { return Connection().Info().*field; };
    m_registers.AddString(0x0000, 64, [=] { return info(&DeviceInfo_t::id); });
    m_registers.AddString(0x0040, 64, [=] { return info(&DeviceInfo_t::vendor); });
    m_registers.AddString(0x0080, 64, [=] { return info(&DeviceInfo_t::model); });
    m_registers.AddString(0x00C0, 64, [=] { return info(&DeviceInfo_t::serialNumber); });
    m_registers.AddString(0x0100, 64, [=] { return info(&DeviceInfo_t::userDefinedName); });
    m_registers.AddString(0x0140, 64, [=] { return info(&DeviceInfo_t::version); });
    m_registers.AddInteger(0x0180, 4, [this] { return TLTypeCode(TLType()); });
    m_registers.AddInteger(0x0184, 4, [this] { return int64_t(Connection().AccessStatus()); });
    m_registers.AddInteger(0x0188, 8, [this] { return int64_t(Connection().Info().timestampFrequency); });

    m_registers.AddInteger(
        0x0200, 4,
        [this] {
            std::lock_guard lock(m_lock);
            return int64_t(m_streamSelector);
        },
        [this](int64_t value) {
            if (value < 0 || value >= int64_t(NumDataStreams()))
                return GenTL::GC_ERR_INVALID_VALUE;
            std::lock_guard lock(m_lock);
            m_streamSelector = static_cast<uint32_t>(value);
            return GenTL::GC_ERR_SUCCESS;
        });
    m_registers.AddInteger(0x0204, 4, [this] { return int64_t(NumDataStreams()) - 1; });
    m_registers.AddString(0x0240, 64, [this] {
        std::lock_guard lock(m_lock);
        return DataStreamId(m_streamSelector);
    });

    m_registers.AddInteger(0x0300, 8, [this] { return int64_t(Connection().PayloadSize()); });
    m_registers.AddInteger(
        0x0308, 4, [this] { return int64_t(Connection().TLParamsLocked() ? 1 : 0); },
        [this](int64_t value) -> GenTL::GC_ERROR {
            if (value != 0 && value != 1)
                return GenTL::GC_ERR_INVALID_VALUE;
            try
            {
                Connection().SetTLParamsLocked(value != 0);
            }
            catch (const CGenTLError& error)
            {
                return error.Code();
            }
            return GenTL::GC_ERR_SUCCESS;
        });

    m_registers.AddInteger(
        0x0400, 4,
        [this] {
            std::lock_guard lock(m_lock);
            return int64_t(m_eventSelector);
        },
        [this](int64_t value) {
            if (value < 0 || value >= int64_t(kEventSelectorCount))
                return GenTL::GC_ERR_INVALID_VALUE;
            std::lock_guard lock(m_lock);
            m_eventSelector = static_cast<uint32_t>(value);
            return GenTL::GC_ERR_SUCCESS;
        });
    for (uint32_t selector = 0; selector < kEventSelectorCount; ++selector)
        m_registers.AddInteger(
            0x0410 + 4 * selector, 4,
            [this, selector] {
                std::lock_guard lock(m_lock);
                return int64_t(m_eventNotification[selector]);
            },
            [this, selector](int64_t value) {
                if (value != 0 && value != 1)
                    return GenTL::GC_ERR_INVALID_VALUE;
                std::lock_guard lock(m_lock);
                m_eventNotification[selector] = static_cast<uint32_t>(value);
                return GenTL::GC_ERR_SUCCESS;
            });
}

CInfoValue CDeviceModule::Info(GenTL::DEVICE_INFO_CMD command)
{
    return DeviceInfoValue(Connection().Info(), Connection().AccessStatus(), command);
}

std::string CDeviceModule::DataStreamId(uint32_t index) const
{
    if (index >= NumDataStreams())
        ThrowGenTL(GenTL::GC_ERR_INVALID_INDEX, "Data stream index %u is not below the stream count %u", index,
                   NumDataStreams());
    return kStreamId;
}

std::shared_ptr<CDataStreamModule> CDeviceModule::OpenDataStream(const std::string& streamId)
{
    if (streamId != kStreamId)
        ThrowGenTL(GenTL::GC_ERR_INVALID_ID, "Device %s has no data stream '%s'", Id().c_str(), streamId.c_str());
    if (m_flags == GenTL::DEVICE_ACCESS_READONLY)
        ThrowGenTL(GenTL::GC_ERR_ACCESS_DENIED, "Device %s is open read-only: it cannot stream", Id().c_str());
    std::lock_guard lock(m_lock);
    if (m_stream)
        ThrowGenTL(GenTL::GC_ERR_RESOURCE_IN_USE, "Data stream %s of %s is open already", streamId.c_str(),
                   Id().c_str());
    auto stream = std::make_shared<CDataStreamModule>(SharedAs<CDeviceModule>(), streamId);
    if (m_lost)
        stream->OnDeviceLost("the device was lost before the stream was opened");
    m_stream = stream;
    Handles().Add(stream);
    return stream;
}

void CDeviceModule::ForgetDataStream(const CDataStreamModule* stream)
{
    std::lock_guard lock(m_lock);
    if (m_stream.get() == stream)
        m_stream.reset();
}

bool CDeviceModule::SupportsEvent(GenTL::EVENT_TYPE type) const
{
    return type == GenTL::EVENT_REMOTE_DEVICE || CModule::SupportsEvent(type);
}

void CDeviceModule::OnRemoteEvent(std::vector<uint8_t> record)
{
    if (m_lost)
        return; // sent by a frame captured before the loss, after it: never reaches the host
    PostEvent(GenTL::EVENT_REMOTE_DEVICE, std::move(record));
}

void CDeviceModule::OnFeatureEvent(GenTL::EVENT_TYPE type, const std::string& name, const std::string& value)
{
    if (m_lost)
        return;
    PostEvent(type, type == GenTL::EVENT_FEATURE_CHANGE ? EncodeFeatureChangeRecord(name, value)
                                                        : EncodeFeatureInvalidateRecord(name));
}

void CDeviceModule::OnDeviceLost(const std::string& reason, uint64_t timestampNs)
{
    bool notify;
    std::shared_ptr<CDataStreamModule> stream;
    {
        // Under the lock, so that a stream opened at the same time is either seen here or sees the loss.
        std::lock_guard lock(m_lock);
        if (m_lost.exchange(true))
            return;
        notify = m_eventNotification[0] != 0;
        stream = m_stream;
    }
    RaiseError(GenTL::GC_ERR_IO, "Device " + Id() + " lost: " + reason);
    // The stream stops first, so that no buffer arrives after a consumer has seen the loss.
    if (stream)
        stream->OnDeviceLost(reason);
    if (notify)
    {
        uint8_t payload[16] = {};
        StoreLE(&payload[0], sizeof(payload), 2);
        StoreLE(&payload[2], QvVirtualCamera::kEventIdDeviceLost, 2);
        StoreLE(&payload[QvVirtualCamera::kModuleEventTimestampOffset], timestampNs, 8);
        PostEvent(GenTL::EVENT_MODULE,
                  EncodeGenericRecord(QvVirtualCamera::kEventIdDeviceLost, payload, sizeof(payload)));
    }
    // The events stay as they are: they deliver what they hold and then, like those of an
    // unplugged camera, only wait and time out. The module event above is the one signal of
    // the loss; failing the waits instead would make consumers' listeners report the loss as a
    // failure of their own, racing with that signal.
}

void CDeviceModule::CloseChildren()
{
    std::shared_ptr<CDataStreamModule> stream;
    {
        std::lock_guard lock(m_lock);
        stream = std::move(m_stream);
    }
    if (stream)
        stream->Close();
    if (m_remotePort)
        Handles().Remove(m_remotePort->Handle());
    if (m_connection)
        m_connection->Close();
}

void CDeviceModule::Close()
{
    if (IsClosed())
        return;
    CModule::Close();
    m_interface->ForgetDevice(this);
}

} // namespace QvGenTL
