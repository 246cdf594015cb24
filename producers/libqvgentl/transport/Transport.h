#pragma once

/*
 * The boundary between the GenTL modules of the producer and the transports that reach
 * cameras. Modules (system, interface, device, data stream, buffer) know only these
 * interfaces; a transport (today the virtual cameras, later a network transport) implements
 * them. Everything transport-specific stays behind this file.
 */

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <GenTL/GenTL.h>

#include "modules/EmbeddedFile.h"

namespace QvGenTL {

/// A device as an interface lists it (also before it is opened).
struct DeviceInfo_t
{
    std::string id;
    std::string vendor;
    std::string model;
    std::string tlType;
    std::string displayName;
    std::string userDefinedName;
    std::string serialNumber;
    std::string version;
    uint64_t timestampFrequency = 0;
};

/// What a transport reports about one filled buffer (the BUFFER_INFO_* values of a fill).
struct BufferFill_t
{
    static constexpr size_t kMaxChunks = 8;

    size_t sizeFilled = 0;      ///< bytes written
    size_t dataSize = 0;        ///< bytes the frame needed (more than the buffer when incomplete)
    size_t width = 0;
    size_t height = 0;
    size_t xOffset = 0;
    size_t yOffset = 0;
    size_t deliveredImageHeight = 0;
    size_t imageOffset = 0;
    size_t chunkPayloadSize = 0; ///< bytes of the chunk payload (image included); 0 without chunks
    size_t payloadType = GenTL::PAYLOAD_TYPE_IMAGE;
    uint64_t frameId = 0;
    uint64_t timestamp = 0;      ///< device ticks
    uint64_t timestampNs = 0;
    uint64_t pixelFormat = 0;    ///< PFNC code
    uint64_t chunkLayoutId = 0;
    bool incomplete = false;
    bool dataLargerThanBuffer = false;
    bool containsChunkData = false;
    bool imagePresent = false;
    size_t numChunks = 0;
    GenTL::SINGLE_CHUNK_DATA chunks[kMaxChunks] = {};
};

/// Memory of one announced buffer as a transport sees it.
struct StreamBuffer_t
{
    uint8_t* data = nullptr;
    size_t size = 0;
};

/**
 * Where a streaming device takes buffers from and hands them back; implemented by the data
 * stream module. Called on the transport's acquisition thread only.
 */
class IStreamSink
{
public:
    /// The oldest buffer of the input pool, now being filled; null when the pool is empty (the
    /// frame is then counted as lost to an underrun).
    virtual StreamBuffer_t* TakeInputBuffer() = 0;
    /// Puts a filled buffer on the output queue. Returns false once the stream has all the
    /// buffers DSStartAcquisition asked for: the transport stops then.
    virtual bool DeliverBuffer(StreamBuffer_t* buffer, const BufferFill_t& fill) = 0;
    /// Gives an unfilled buffer back to the head of the input pool (stop with kill).
    virtual void ReturnBuffer(StreamBuffer_t* buffer) = 0;
    /// A frame the device sent never arrived.
    virtual void CountDroppedFrame() = 0;
    /// Blocks until the input pool holds a buffer, the stream stops or timeout passes (a
    /// free-running device waits here after an underrun instead of losing frame after frame).
    virtual void WaitForInputBuffer(std::chrono::milliseconds timeout) = 0;

protected:
    ~IStreamSink() = default;
};

/// Where an open device reports what happens on its own; implemented by the device module.
/// Any thread; never called with a transport lock held.
class IDeviceEventSink
{
public:
    /// A remote-device event, already in the transport's record layout.
    virtual void OnRemoteEvent(std::vector<uint8_t> record) = 0;
    /// The device went away; register access fails from now on.
    virtual void OnDeviceLost(const std::string& reason, uint64_t timestampNs) = 0;
    /// A feature of the device changed behind the host's back: EVENT_FEATURE_INVALIDATE (the
    /// host re-reads feature name; value unused) or EVENT_FEATURE_CHANGE (name now holds value,
    /// given as text).
    virtual void OnFeatureEvent(GenTL::EVENT_TYPE type, const std::string& name, const std::string& value) = 0;

protected:
    ~IDeviceEventSink() = default;
};

/**
 * One opened device: its registers (the remote device port), its descriptions, and its
 * stream. Destroying it closes the device. Any thread; StartStreaming/StopStreaming are
 * serialised by the data stream.
 */
class IDeviceConnection
{
public:
    virtual ~IDeviceConnection() = default;

    /// Remote register access; throws CGenTLError (GC_ERR_IO once the device is lost).
    virtual void ReadRemote(uint64_t address, void* pBuffer, size_t size) = 0;
    virtual void WriteRemote(uint64_t address, const void* pBuffer, size_t size) = 0;
    virtual bool RemoteLittleEndian() const = 0;
    virtual std::vector<PortUrl_t> RemoteUrls() const = 0;
    virtual bool RemoteWritable() const = 0;

    virtual DeviceInfo_t Info() const = 0;
    virtual GenTL::DEVICE_ACCESS_STATUS AccessStatus() const = 0;
    virtual bool IsLost() const = 0;

    /// Bytes one buffer needs now.
    virtual size_t PayloadSize() = 0;
    virtual size_t MaxChunkCount() const = 0;
    virtual bool TLParamsLocked() = 0;
    /// Throws CGenTLError if the device refuses.
    virtual void SetTLParamsLocked(bool locked) = 0;

    /// Starts filling buffers from sink on the transport's own thread.
    virtual void StartStreaming(IStreamSink* sink) = 0;
    /// Stops and joins that thread. kill: the buffer being filled goes back unfilled.
    virtual void StopStreaming(bool kill) = 0;

    /// Releases the device (DevClose): streaming stops, the event sink is no longer called and
    /// every later call fails. The object itself may live on while calls drain.
    virtual void Close() = 0;
};

/// One interface of a transport (a network adapter, a USB controller, a frame grabber port).
class ITransportInterface
{
public:
    virtual ~ITransportInterface() = default;

    virtual std::string Id() const = 0;
    virtual std::string DisplayName() const = 0;
    virtual std::string TLType() const = 0;

    /// The devices reachable now; timeoutMs bounds discovery.
    virtual std::vector<DeviceInfo_t> Discover(uint64_t timeoutMs) = 0;
    /// Access this process could get to a device (also while it is open).
    virtual GenTL::DEVICE_ACCESS_STATUS AccessStatus(const std::string& deviceId) = 0;
    /// Opens a device; throws CGenTLError (GC_ERR_INVALID_ID, GC_ERR_RESOURCE_IN_USE, ...).
    virtual std::unique_ptr<IDeviceConnection> Open(const std::string& deviceId, GenTL::DEVICE_ACCESS_FLAGS flags,
                                                    IDeviceEventSink* sink) = 0;
};

/// A transport: a set of interfaces. Owned by the system module.
class ITransport
{
public:
    virtual ~ITransport() = default;
    virtual std::vector<ITransportInterface*> Interfaces() = 0;
};

/// Every transport of this producer, configured from the environment; throws CGenTLError on a
/// bad configuration.
std::vector<std::unique_ptr<ITransport>> CreateTransports();

} // namespace QvGenTL
