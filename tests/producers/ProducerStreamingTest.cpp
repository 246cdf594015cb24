// Acquisition through libqvgentl.cti with raw GenTL calls: frames, pixels, chunks and events
// on every transport, queues and flush modes, stop and kill, losses, triggers, locks, faults.

#include <atomic>
#include <chrono>
#include <cstring>
#include <set>
#include <thread>

#include <QvGenTL/VirtualCamera.h>

#include "tests/producers/PixelCheck.h"
#include "tests/producers/ProducerFixture.h"

using namespace GenTL;
using namespace QvGenTLTest;
using namespace QvVirtualCamera;

namespace {

constexpr uint32_t kMono8 = 0x01080001;

uint64_t Load(const uint8_t* data, size_t length, bool littleEndian)
{
    uint64_t value = 0;
    for (size_t i = 0; i < length; ++i)
        value |= uint64_t(data[littleEndian ? i : length - 1 - i]) << (8 * i);
    return value;
}

/// One chunk found in a buffer.
struct Chunk_t
{
    uint64_t id;
    size_t offset;
    size_t length;
    bool operator==(const Chunk_t& other) const
    {
        return id == other.id && offset == other.offset && length == other.length;
    }
};

/// Walks GEV/U3V chunk trailers backwards from the end of the valid payload, as a consumer's
/// chunk adapter does. Empty if the layout is inconsistent.
std::vector<Chunk_t> WalkTrailers(const uint8_t* payload, size_t size, bool littleEndian)
{
    std::vector<Chunk_t> chunks;
    size_t position = size;
    while (position > 0)
    {
        if (position < kChunkTrailerSize)
            return {};
        const uint64_t id = Load(payload + position - 8, 4, littleEndian);
        const size_t length = Load(payload + position - 4, 4, littleEndian);
        if (length > position - 8)
            return {};
        position -= 8 + length;
        chunks.insert(chunks.begin(), Chunk_t{id, position, length});
    }
    return chunks;
}

class ProducerStreaming : public ProducerTest
{
protected:
    /// Prepares a 640x480 Mono8 camera of a transport with the frame rate off.
    void OpenSmallCamera(const std::string& tlType, const char* config = nullptr)
    {
        OpenSystem(config);
        OpenCamera(tlType);
        ASSERT_GC_OK(m_camera->SetInt("Width", 640));
        ASSERT_GC_OK(m_camera->SetInt("Height", 480));
        ASSERT_GC_OK(m_camera->SetInt("AcquisitionFrameRateEnable", 0));
    }

    void RegisterNewBuffer()
    {
        ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_stream, EVENT_NEW_BUFFER, &m_newBuffer));
    }

    /// Waits for the next filled buffer; null on time-out.
    BUFFER_HANDLE NextBuffer(uint64_t timeoutMs = 2000)
    {
        EVENT_NEW_BUFFER_DATA data{};
        size_t size = sizeof(data);
        const GC_ERROR result = m_gentl->EventGetData(m_newBuffer, &data, &size, timeoutMs);
        if (result != GC_ERR_SUCCESS)
        {
            m_lastWait = result;
            return nullptr;
        }
        EXPECT_EQ(size, sizeof(data));
        return data.BufferHandle;
    }

    void Start(uint64_t count = GENTL_INFINITE)
    {
        ASSERT_GC_OK(m_gentl->DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, count));
        ASSERT_GC_OK(m_camera->Execute("AcquisitionStart"));
    }

    void Stop()
    {
        EXPECT_GC_OK(m_camera->Execute("AcquisitionStop"));
        EXPECT_GC_OK(m_gentl->DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_DEFAULT));
    }

    const uint8_t* Base(BUFFER_HANDLE buffer) { return BufferInfo<const uint8_t*>(buffer, BUFFER_INFO_BASE); }

    EVENT_HANDLE m_newBuffer = nullptr;
    GC_ERROR m_lastWait = GC_ERR_SUCCESS;
};

class ProducerStreamingPerTransport : public ProducerStreaming, public ::testing::WithParamInterface<const char*>
{
};

/// 1000 frames with chunks and ExposureEnd events, every pixel, chunk and event checked.
TEST_P(ProducerStreamingPerTransport, Streams1000FramesWithCheckedPixelsChunksAndEvents)
{
    const std::string tlType = GetParam();
    const bool littleEndian = tlType == "U3V";
    OpenSmallCamera(tlType);
    ASSERT_GC_OK(m_camera->SetInt("ChunkModeActive", 1));
    for (const std::string& chunk : m_camera->Entries("ChunkSelector"))
    {
        ASSERT_GC_OK(m_camera->SetEnum("ChunkSelector", chunk));
        ASSERT_GC_OK(m_camera->SetInt("ChunkEnable", 1));
    }
    // 2000 fps: fast, yet slow enough that events never pile up beyond what is read.
    ASSERT_GC_OK(m_camera->SetFloat("ExposureTime", 100.0));
    ASSERT_GC_OK(m_camera->SetInt("AcquisitionFrameRateEnable", 1));
    ASSERT_GC_OK(m_camera->SetFloat("AcquisitionFrameRate", 2000.0));
    ASSERT_GC_OK(m_camera->SetEnum("EventSelector", "ExposureEnd"));
    ASSERT_GC_OK(m_camera->SetEnum("EventNotification", "On"));
    const double exposureUs = m_camera->GetFloat("ExposureTime");
    const size_t payload = StreamPayloadSize();
    const size_t image = 640 * 480;
    const size_t chunkData = 2 * 8 + 5 * 4 + image;
    EXPECT_EQ(payload, tlType == "CXP" ? chunkData : chunkData + 8 * 8) << "image and 7 chunks, trailers on U3V/GEV";
    EXPECT_EQ(uint64_t(m_camera->GetInt("PayloadSize")), payload);

    RegisterNewBuffer();
    EVENT_HANDLE events = nullptr;
    ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_device, EVENT_REMOTE_DEVICE, &events));
    const std::vector<BUFFER_HANDLE> buffers = AnnounceAndQueue(8);
    ASSERT_GC_OK(m_camera->SetInt("TLParamsLocked", 1));
    Start(1000);

    std::map<uint64_t, uint64_t> eventTimestamps; // frame ID -> timestamp of its ExposureEnd
    auto drainEvents = [&] {
        uint8_t data[512];
        size_t size = sizeof(data);
        // The camera runs on while we read (frames lost to underruns send events too): read
        // what is queued now, not until the queue is empty.
        size_t queued = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                            return m_gentl->EventGetInfo(events, EVENT_NUM_IN_QUEUE, t, d, s);
                        }).As<size_t>();
        while (queued-- > 0 && m_gentl->EventGetData(events, data, &size, 0) == GC_ERR_SUCCESS)
        {
            InfoAnswer_t id = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                return m_gentl->EventGetDataInfo(events, data, size, EVENT_DATA_ID, t, d, s);
            });
            InfoAnswer_t value = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                return m_gentl->EventGetDataInfo(events, data, size, EVENT_DATA_VALUE, t, d, s);
            });
            EXPECT_EQ(id.Text(), "9001");
            EXPECT_EQ(QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                          return m_gentl->EventGetDataInfo(events, data, size, EVENT_DATA_NUMID, t, d, s);
                      }).As<uint64_t>(), kEventIdExposureEnd);
            const uint8_t* v = value.bytes.data();
            // The raw record is the transport's own message; the value is what an event port sees.
            if (tlType == "GEV")
            {
                EXPECT_EQ(data[0], 0x42);
                EXPECT_EQ(Load(data + 2, 2, false), 0x00C2u);
                EXPECT_EQ(Load(v, 2, false), value.bytes.size()) << "the length in the first field";
            }
            else if (tlType == "U3V")
            {
                EXPECT_EQ(Load(data, 4, true), 0x45563355u);
                EXPECT_EQ(Load(data + 6, 2, true), 0x0C00u);
            }
            EXPECT_EQ(Load(v + 2, 2, littleEndian), kEventIdExposureEnd);
            const size_t timestampAt = littleEndian ? kU3vEventTimestampOffset : kGevEventTimestampOffset;
            const size_t dataAt = littleEndian ? kU3vEventDataOffset : kGevEventDataOffset;
            ASSERT_EQ(value.bytes.size(), dataAt + 8);
            eventTimestamps[Load(v + dataAt, 8, littleEndian)] = Load(v + timestampAt, 8, littleEndian);
            size = sizeof(data);
        }
    };

    // Expected lines of the ramp: line y of frame f is ramp line (y + f) & 0xFF.
    std::vector<std::vector<uint8_t>> rampLines(256, std::vector<uint8_t>(640));
    for (uint32_t start = 0; start < 256; ++start)
        for (uint32_t x = 0; x < 640; ++x)
            rampLines[start][x] = GradientLevel(x, start, 0);

    uint64_t lastFrameId = 0, lastTimestamp = 0, layoutId = 0;
    std::vector<std::pair<uint64_t, uint64_t>> delivered; // frame ID, timestamp
    for (int frame = 0; frame < 1000; ++frame)
    {
        BUFFER_HANDLE buffer = NextBuffer();
        ASSERT_NE(buffer, nullptr) << "frame " << frame << ": " << m_lastWait;
        const uint8_t* base = Base(buffer);
        const uint64_t frameId = BufferInfo<uint64_t>(buffer, BUFFER_INFO_FRAMEID);
        const uint64_t timestamp = BufferInfo<uint64_t>(buffer, BUFFER_INFO_TIMESTAMP_NS);
        ASSERT_GT(frameId, lastFrameId);
        ASSERT_GT(timestamp, lastTimestamp);
        EXPECT_EQ(BufferInfo<uint64_t>(buffer, BUFFER_INFO_TIMESTAMP), timestamp) << "ticks are nanoseconds";
        lastFrameId = frameId;
        lastTimestamp = timestamp;
        delivered.emplace_back(frameId, timestamp);
        ASSERT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_SIZE_FILLED), payload);
        ASSERT_FALSE(BufferInfo<bool8_t>(buffer, BUFFER_INFO_IS_INCOMPLETE));
        ASSERT_TRUE(BufferInfo<bool8_t>(buffer, BUFFER_INFO_NEW_DATA));
        ASSERT_TRUE(BufferInfo<bool8_t>(buffer, BUFFER_INFO_CONTAINS_CHUNKDATA));
        ASSERT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_PAYLOADTYPE), size_t(PAYLOAD_TYPE_CHUNK_DATA));
        ASSERT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE), payload);
        ASSERT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_WIDTH), 640u);
        ASSERT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_HEIGHT), 480u);
        ASSERT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_IMAGEOFFSET), 0u);
        ASSERT_EQ(BufferInfo<uint64_t>(buffer, BUFFER_INFO_PIXELFORMAT), kMono8);
        ASSERT_EQ(BufferInfo<uint64_t>(buffer, BUFFER_INFO_PIXELFORMAT_NAMESPACE), uint64_t(PIXELFORMAT_NAMESPACE_PFNC_32BIT));
        const uint64_t layout = BufferInfo<uint64_t>(buffer, BUFFER_INFO_CHUNKLAYOUTID);
        if (frame == 0)
            layoutId = layout;
        ASSERT_EQ(layout, layoutId) << "the chunk layout does not change";

        for (uint32_t y = 0; y < 480; ++y)
            ASSERT_EQ(std::memcmp(base + y * 640, rampLines[(y + frameId) & 0xFF].data(), 640), 0)
                << "frame " << frameId << " line " << y;

        // The producer's chunk list, and the trailers where the transport has them.
        size_t count = 0;
        ASSERT_GC_OK(m_gentl->DSGetBufferChunkData(m_stream, buffer, nullptr, &count));
        ASSERT_EQ(count, 8u);
        std::vector<SINGLE_CHUNK_DATA> list(count);
        ASSERT_GC_OK(m_gentl->DSGetBufferChunkData(m_stream, buffer, list.data(), &count));
        std::vector<Chunk_t> chunks;
        for (const SINGLE_CHUNK_DATA& chunk : list)
            chunks.push_back(Chunk_t{chunk.ChunkID, size_t(chunk.ChunkOffset), chunk.ChunkLength});
        if (tlType != "CXP")
        {
            ASSERT_EQ(WalkTrailers(base, payload, littleEndian), chunks);
        }
        std::map<uint64_t, uint64_t> values;
        for (const Chunk_t& chunk : chunks)
            if (chunk.id != kChunkIdImage)
                values[chunk.id] = Load(base + chunk.offset, chunk.length, littleEndian);
        ASSERT_EQ(chunks[0].id, kChunkIdImage);
        ASSERT_EQ(chunks[0].offset, 0u);
        ASSERT_EQ(chunks[0].length, image);
        ASSERT_EQ(values[kChunkIdTimestamp], timestamp);
        ASSERT_EQ(values[kChunkIdFrameID], frameId);
        ASSERT_EQ(values[kChunkIdWidth], 640u);
        ASSERT_EQ(values[kChunkIdHeight], 480u);
        ASSERT_EQ(values[kChunkIdOffsetX], 0u);
        ASSERT_EQ(values[kChunkIdOffsetY], 0u);
        ASSERT_EQ(values[kChunkIdPixelFormat], kMono8);

        drainEvents();
        ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffer));
    }
    // The stream stops by itself after the 1000 buffers asked for.
    EXPECT_EQ(StreamInfo<uint64_t>(STREAM_INFO_NUM_DELIVERED), 1000u);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(StreamInfo<bool8_t>(STREAM_INFO_IS_GRABBING));
    EXPECT_EQ(NextBuffer(50), nullptr);
    drainEvents();
    // Every delivered frame was announced by an ExposureEnd event one exposure after its timestamp.
    for (const auto& [frameId, timestamp] : delivered)
    {
        auto event = eventTimestamps.find(frameId);
        ASSERT_NE(event, eventTimestamps.end()) << "no ExposureEnd for frame " << frameId;
        EXPECT_EQ(event->second, timestamp + uint64_t(exposureUs * 1000));
    }
    const uint64_t underruns = StreamInfo<uint64_t>(STREAM_INFO_NUM_UNDERRUN);
    EXPECT_EQ(lastFrameId, 1000 + underruns) << "frame IDs count every frame, lost ones too";
    Stop();
    ASSERT_GC_OK(m_camera->SetInt("TLParamsLocked", 0));
    ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_ALL_DISCARD));
    for (BUFFER_HANDLE buffer : buffers)
        ASSERT_GC_OK(m_gentl->DSRevokeBuffer(m_stream, buffer, nullptr, nullptr));
    ASSERT_GC_OK(m_gentl->GCUnregisterEvent(m_stream, EVENT_NEW_BUFFER));
    ASSERT_GC_OK(m_gentl->DSClose(m_stream));
    ASSERT_GC_OK(m_gentl->DevClose(m_device));
}

INSTANTIATE_TEST_SUITE_P(Transports, ProducerStreamingPerTransport, ::testing::Values("U3V", "GEV", "CXP"));

TEST_F(ProducerStreaming, EveryPixelFormatDeliversTheRampAndReportsItsFormat)
{
    OpenSmallCamera("U3V");
    RegisterNewBuffer();
    for (const std::string& name : m_camera->Entries("PixelFormat"))
    {
        SCOPED_TRACE(name);
        const uint32_t pfnc = static_cast<uint32_t>(m_camera->EntryValue("PixelFormat", name));
        ASSERT_GC_OK(m_camera->SetEnum("PixelFormat", name));
        const size_t payload = StreamPayloadSize();
        ASSERT_EQ(payload, LineBytesOf(pfnc, 640) * 480);
        const std::vector<BUFFER_HANDLE> buffers = AnnounceAndQueue(2);
        Start(2);
        for (int i = 0; i < 2; ++i)
        {
            BUFFER_HANDLE buffer = NextBuffer();
            ASSERT_NE(buffer, nullptr);
            EXPECT_EQ(BufferInfo<uint64_t>(buffer, BUFFER_INFO_PIXELFORMAT), pfnc);
            EXPECT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_SIZE_FILLED), payload);
            EXPECT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_PAYLOADTYPE), size_t(PAYLOAD_TYPE_IMAGE));
            EXPECT_FALSE(BufferInfo<bool8_t>(buffer, BUFFER_INFO_CONTAINS_CHUNKDATA));
            EXPECT_EQ(CheckRamp(pfnc, Base(buffer), 640, 480, BufferInfo<uint64_t>(buffer, BUFFER_INFO_FRAMEID)), "");
        }
        Stop();
        ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_ALL_DISCARD));
        for (BUFFER_HANDLE buffer : buffers)
            ASSERT_GC_OK(m_gentl->DSRevokeBuffer(m_stream, buffer, nullptr, nullptr));
    }
}

TEST_F(ProducerStreaming, ColorBarsAndFrameCounterStampAreDecodable)
{
    OpenSmallCamera("GEV");
    RegisterNewBuffer();
    for (const char* format : {"Mono8", "BayerRG8", "BayerBG12", "RGB8", "BGR8", "BGRa8", "Mono12p"})
    {
        SCOPED_TRACE(format);
        ASSERT_GC_OK(m_camera->SetEnum("PixelFormat", format));
        ASSERT_GC_OK(m_camera->SetEnum("TestPattern", "ColorBar"));
        const std::vector<BUFFER_HANDLE> buffers = AnnounceAndQueue(1);
        Start(1);
        BUFFER_HANDLE buffer = NextBuffer();
        ASSERT_NE(buffer, nullptr);
        EXPECT_EQ(CheckColorBars(static_cast<uint32_t>(m_camera->EntryValue("PixelFormat", format)), Base(buffer), 640,
                                 480), "");
        Stop();
        ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_ALL_DISCARD));
        ASSERT_GC_OK(m_gentl->DSRevokeBuffer(m_stream, buffers[0], nullptr, nullptr));
    }

    ASSERT_GC_OK(m_camera->SetEnum("PixelFormat", "Mono8"));
    ASSERT_GC_OK(m_camera->SetEnum("TestPattern", "FrameCounter"));
    AnnounceAndQueue(3);
    Start(5);
    for (int i = 0; i < 5; ++i)
    {
        BUFFER_HANDLE buffer = NextBuffer();
        ASSERT_NE(buffer, nullptr);
        const uint64_t frameId = BufferInfo<uint64_t>(buffer, BUFFER_INFO_FRAMEID);
        const uint8_t* base = Base(buffer);
        EXPECT_EQ(DecodeFrameStampMono8(base, 640), frameId);
        EXPECT_EQ(base[7 * 640 + 5], ((frameId >> 63) & 1) ? 255 : 0) << "eighth line still holds the stamp";
        EXPECT_EQ(base[8 * 640 + 100], frameId & 0xFF) << "lines below the stamp show the level";
        ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffer));
    }
}

TEST_F(ProducerStreaming, FlushModesMoveBuffersBetweenThePoolAndTheOutputQueue)
{
    OpenSmallCamera("U3V");
    RegisterNewBuffer();
    std::vector<BUFFER_HANDLE> buffers(4);
    std::vector<uint8_t> memory(4 * StreamPayloadSize());
    for (size_t i = 0; i < 4; ++i)
        ASSERT_GC_OK(m_gentl->DSAnnounceBuffer(m_stream, memory.data() + i * StreamPayloadSize(), StreamPayloadSize(),
                                               &buffers[i], &buffers[i]));
    EXPECT_EQ(m_gentl->DSAnnounceBuffer(m_stream, memory.data(), 16, nullptr, &buffers[0]), GC_ERR_RESOURCE_IN_USE);
    auto counts = [&] {
        return std::make_pair(StreamInfo<size_t>(STREAM_INFO_NUM_QUEUED), StreamInfo<size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY));
    };
    ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffers[0]));
    ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffers[1]));
    EXPECT_EQ(m_gentl->DSQueueBuffer(m_stream, buffers[1]), GC_ERR_RESOURCE_IN_USE);
    EXPECT_EQ(counts(), std::make_pair(size_t(2), size_t(0)));
    EXPECT_TRUE(BufferInfo<bool8_t>(buffers[0], BUFFER_INFO_IS_QUEUED));
    EXPECT_EQ(m_gentl->DSRevokeBuffer(m_stream, buffers[0], nullptr, nullptr), GC_ERR_RESOURCE_IN_USE);

    // Input to output: both become new-buffer entries, in order, without new data.
    ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_INPUT_TO_OUTPUT));
    EXPECT_EQ(counts(), std::make_pair(size_t(0), size_t(2)));
    BUFFER_HANDLE first = NextBuffer(0);
    EXPECT_EQ(first, buffers[0]);
    EXPECT_FALSE(BufferInfo<bool8_t>(first, BUFFER_INFO_NEW_DATA));
    EXPECT_FALSE(BufferInfo<bool8_t>(first, BUFFER_INFO_IS_QUEUED));
    EXPECT_EQ(BufferInfo<void*>(first, BUFFER_INFO_USER_PTR), &buffers[0]) << "pPrivate comes back";

    // Unqueued to input takes buffers 0, 2 and 3; buffer 1 still waits in the output queue.
    ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_UNQUEUED_TO_INPUT));
    EXPECT_EQ(counts(), std::make_pair(size_t(3), size_t(1)));
    ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_OUTPUT_DISCARD));
    EXPECT_EQ(counts(), std::make_pair(size_t(3), size_t(0)));
    EXPECT_EQ(NextBuffer(0), nullptr);
    ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_ALL_TO_INPUT));
    EXPECT_EQ(counts(), std::make_pair(size_t(4), size_t(0)));

    // Filled buffers go back with ALL_TO_INPUT too.
    Start(2);
    ASSERT_NE(NextBuffer(), nullptr);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(counts(), std::make_pair(size_t(2), size_t(1)));
    ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_ALL_TO_INPUT));
    EXPECT_EQ(counts(), std::make_pair(size_t(4), size_t(0))) << "the delivered one goes back as well";
    Stop();

    ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_ALL_DISCARD));
    EXPECT_EQ(counts(), std::make_pair(size_t(0), size_t(0)));
    for (size_t i = 0; i < 4; ++i)
    {
        void* revoked = nullptr;
        void* priv = nullptr;
        ASSERT_GC_OK(m_gentl->DSRevokeBuffer(m_stream, buffers[i], &revoked, &priv));
        EXPECT_EQ(revoked, memory.data() + i * StreamPayloadSize());
        EXPECT_EQ(priv, &buffers[i]);
    }
    EXPECT_EQ(StreamInfo<size_t>(STREAM_INFO_NUM_ANNOUNCED), 0u);
    EXPECT_EQ(m_gentl->DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE), GC_ERR_NOT_AVAILABLE)
        << "no buffer announced";
}

TEST_F(ProducerStreaming, StopKillAndRestartKeepTheCountsRight)
{
    OpenSmallCamera("GEV");
    RegisterNewBuffer();
    const std::vector<BUFFER_HANDLE> buffers = AnnounceAndQueue(4);
    EXPECT_EQ(m_gentl->DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, 0), GC_ERR_INVALID_PARAMETER);
    Start();
    EXPECT_EQ(m_gentl->DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE), GC_ERR_RESOURCE_IN_USE);
    for (int i = 0; i < 10; ++i)
    {
        BUFFER_HANDLE buffer = NextBuffer();
        ASSERT_NE(buffer, nullptr);
        ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffer));
    }
    EXPECT_TRUE(StreamInfo<bool8_t>(STREAM_INFO_IS_GRABBING));
    ASSERT_GC_OK(m_gentl->DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_KILL));
    EXPECT_FALSE(StreamInfo<bool8_t>(STREAM_INFO_IS_GRABBING));
    // Killed: nothing is being filled, every buffer is in a queue.
    for (BUFFER_HANDLE buffer : buffers)
        EXPECT_FALSE(BufferInfo<bool8_t>(buffer, BUFFER_INFO_IS_ACQUIRING));
    EXPECT_EQ(StreamInfo<size_t>(STREAM_INFO_NUM_QUEUED) + StreamInfo<size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY), 4u);
    const uint64_t started = StreamInfo<uint64_t>(STREAM_INFO_NUM_STARTED);
    EXPECT_GE(StreamInfo<uint64_t>(STREAM_INFO_NUM_DELIVERED), 10u);
    EXPECT_GC_OK(m_gentl->DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_DEFAULT)) << "stopping twice is harmless";

    // A restart counts delivered buffers from zero and numbers frames from 1 again.
    ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_ALL_DISCARD));
    ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_ALL_TO_INPUT));
    ASSERT_GC_OK(m_gentl->DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, 3));
    std::vector<uint64_t> ids;
    for (int i = 0; i < 3; ++i)
    {
        BUFFER_HANDLE buffer = NextBuffer();
        ASSERT_NE(buffer, nullptr);
        ids.push_back(BufferInfo<uint64_t>(buffer, BUFFER_INFO_FRAMEID));
        ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffer));
    }
    EXPECT_EQ(ids, (std::vector<uint64_t>{1, 2, 3}));
    EXPECT_EQ(StreamInfo<uint64_t>(STREAM_INFO_NUM_DELIVERED), 3u);
    EXPECT_EQ(NextBuffer(50), nullptr) << "three asked, three delivered";
    EXPECT_GT(StreamInfo<uint64_t>(STREAM_INFO_NUM_STARTED), started);
    Stop();
}

TEST_F(ProducerStreaming, CountsUnderrunsAndDroppedFrames)
{
    OpenSmallCamera("CXP");
    RegisterNewBuffer();
    ASSERT_GC_OK(m_camera->SetInt("TestDroppedFrameInterval", 3));
    const std::vector<BUFFER_HANDLE> buffers = AnnounceAndQueue(2);
    Start();
    std::vector<uint64_t> ids;
    for (int i = 0; i < 20; ++i)
    {
        BUFFER_HANDLE buffer = NextBuffer();
        ASSERT_NE(buffer, nullptr);
        ids.push_back(BufferInfo<uint64_t>(buffer, BUFFER_INFO_FRAMEID));
        ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffer));
    }
    for (uint64_t id : ids)
        EXPECT_NE(id % 3, 0u) << "every third frame is dropped";
    // Not giving buffers back: the camera runs on and loses frames to underruns.
    BUFFER_HANDLE held[2] = {NextBuffer(), NextBuffer()};
    ASSERT_NE(held[0], nullptr);
    ASSERT_NE(held[1], nullptr);
    // The sensor waits up to 100 ms for a buffer after each underrun, then tries again.
    const uint64_t underrunsBefore = StreamInfo<uint64_t>(STREAM_INFO_NUM_UNDERRUN);
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    EXPECT_GT(StreamInfo<uint64_t>(STREAM_INFO_NUM_UNDERRUN), underrunsBefore);
    auto stream = Features(m_stream);
    EXPECT_GE(stream->GetInt("StreamDroppedFrameCount"), 6);
    EXPECT_EQ(uint64_t(stream->GetInt("StreamLostFrameCount")), StreamInfo<uint64_t>(STREAM_INFO_NUM_UNDERRUN));
    EXPECT_GE(m_camera->GetInt("TestDroppedFrameCount"), stream->GetInt("StreamDroppedFrameCount"));
    Stop();
}

TEST_F(ProducerStreaming, ABufferTooSmallIsDeliveredIncomplete)
{
    OpenSmallCamera("U3V");
    RegisterNewBuffer();
    ASSERT_GC_OK(m_camera->SetInt("ChunkModeActive", 1));
    const size_t payload = StreamPayloadSize();
    const size_t small = 640 * 100 + 17; // 100 lines and a bit
    AnnounceAndQueue(1, small);
    Start(1);
    BUFFER_HANDLE buffer = NextBuffer();
    ASSERT_NE(buffer, nullptr);
    EXPECT_TRUE(BufferInfo<bool8_t>(buffer, BUFFER_INFO_IS_INCOMPLETE));
    EXPECT_TRUE(BufferInfo<bool8_t>(buffer, BUFFER_INFO_DATA_LARGER_THAN_BUFFER));
    EXPECT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_DATA_SIZE), payload);
    EXPECT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_SIZE_FILLED), 640u * 100);
    EXPECT_EQ(BufferInfo<size_t>(buffer, BUFFER_INFO_DELIVERED_IMAGEHEIGHT), 100u);
    EXPECT_FALSE(BufferInfo<bool8_t>(buffer, BUFFER_INFO_CONTAINS_CHUNKDATA));
    EXPECT_EQ(CheckRamp(kMono8, Base(buffer), 640, 100, BufferInfo<uint64_t>(buffer, BUFFER_INFO_FRAMEID)), "");
    Stop();
    EXPECT_EQ(Features(m_stream)->GetInt("StreamIncompleteFrameCount"), 1);
}

TEST_F(ProducerStreaming, PacesFramesAtTheFrameRateWithoutDrift)
{
    OpenSmallCamera("GEV");
    RegisterNewBuffer();
    ASSERT_GC_OK(m_camera->SetInt("AcquisitionFrameRateEnable", 1));
    ASSERT_GC_OK(m_camera->SetFloat("AcquisitionFrameRate", 100.0));
    EXPECT_EQ(m_camera->SetFloat("AcquisitionFrameRate", 5000.0), GC_ERR_INVALID_VALUE)
        << "1 ms exposure allows at most 1000 fps";
    AnnounceAndQueue(4);
    constexpr int kFrames = 41;
    Start(kFrames);
    std::vector<double> timestamps;
    for (int i = 0; i < kFrames; ++i)
    {
        BUFFER_HANDLE buffer = NextBuffer();
        ASSERT_NE(buffer, nullptr);
        timestamps.push_back(double(BufferInfo<uint64_t>(buffer, BUFFER_INFO_TIMESTAMP_NS)) / 1e6);
        ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffer));
    }
    // The period is the slope of timestamp over frame index (least squares): a single late
    // wake-up moves one point, not the rate, because the deadlines are absolute.
    double meanIndex = (kFrames - 1) / 2.0, meanTime = 0, covariance = 0, variance = 0;
    for (double t : timestamps)
        meanTime += t / kFrames;
    for (int i = 0; i < kFrames; ++i)
    {
        covariance += (i - meanIndex) * (timestamps[i] - meanTime);
        variance += (i - meanIndex) * (i - meanIndex);
    }
    EXPECT_NEAR(covariance / variance, 10.0, 0.2) << "ms per frame at 100 fps";
    Stop();
}

TEST_F(ProducerStreaming, SoftwareTriggersAndAcquisitionModesControlTheFrames)
{
    OpenSmallCamera("U3V");
    RegisterNewBuffer();
    AnnounceAndQueue(4);
    ASSERT_GC_OK(m_camera->SetEnum("TriggerSelector", "FrameStart"));
    ASSERT_GC_OK(m_camera->SetEnum("TriggerMode", "On"));
    ASSERT_GC_OK(m_camera->SetEnum("TriggerSource", "Software"));
    ASSERT_GC_OK(m_camera->SetEnum("TriggerSelector", "AcquisitionStart"));
    EXPECT_EQ(m_camera->GetEnum("TriggerMode"), "Off") << "each trigger has its own mode";
    ASSERT_GC_OK(m_camera->SetEnum("TriggerSelector", "FrameStart"));
    Start();
    EXPECT_EQ(NextBuffer(100), nullptr) << "no trigger, no frame";
    EXPECT_EQ(m_camera->SetEnum("AcquisitionMode", "SingleFrame"), GC_ERR_ACCESS_DENIED) << "locked while acquiring";
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_GC_OK(m_camera->Execute("TriggerSoftware"));
        BUFFER_HANDLE buffer = NextBuffer();
        ASSERT_NE(buffer, nullptr);
        ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffer));
    }
    EXPECT_EQ(NextBuffer(50), nullptr);
    Stop();
    ASSERT_GC_OK(m_camera->SetEnum("TriggerMode", "Off"));

    // SingleFrame: one frame per AcquisitionStart, then the acquisition ends by itself.
    ASSERT_GC_OK(m_camera->SetEnum("AcquisitionMode", "SingleFrame"));
    Start();
    BUFFER_HANDLE buffer = NextBuffer();
    ASSERT_NE(buffer, nullptr);
    ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffer));
    EXPECT_EQ(NextBuffer(50), nullptr);
    EXPECT_EQ(m_camera->GetInt("AcquisitionStatus"), 0);
    ASSERT_GC_OK(m_camera->Execute("AcquisitionStart"));
    EXPECT_NE(NextBuffer(), nullptr);
    Stop();

    // MultiFrame with AcquisitionFrameCount frames.
    ASSERT_GC_OK(m_gentl->DSFlushQueue(m_stream, ACQ_QUEUE_ALL_TO_INPUT));
    ASSERT_GC_OK(m_camera->SetEnum("AcquisitionMode", "MultiFrame"));
    ASSERT_GC_OK(m_camera->SetInt("AcquisitionFrameCount", 3));
    Start();
    int frames = 0;
    while (BUFFER_HANDLE next = NextBuffer(100))
    {
        ++frames;
        ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, next));
    }
    EXPECT_EQ(frames, 3);
    Stop();
}

TEST_F(ProducerStreaming, TLParamsLockedAndRangesGuardTheImageFormat)
{
    OpenSystem("GEV:1@1024x768");
    OpenCamera("GEV");
    EXPECT_EQ(m_camera->GetInt("WidthMax"), 1024);
    EXPECT_EQ(m_camera->SetInt("Width", 1026), GC_ERR_INVALID_VALUE);
    EXPECT_EQ(m_camera->SetInt("Width", 63), GC_ERR_INVALID_VALUE);
    EXPECT_EQ(m_camera->SetInt("Width", 641), GC_ERR_INVALID_VALUE) << "increment 2";
    ASSERT_GC_OK(m_camera->SetInt("Width", 642));
    ASSERT_GC_OK(m_camera->SetInt("OffsetX", 382));
    EXPECT_EQ(m_camera->SetInt("OffsetX", 384), GC_ERR_INVALID_VALUE) << "OffsetX + Width <= WidthMax";
    EXPECT_EQ(m_camera->SetInt("Width", 644), GC_ERR_INVALID_VALUE);
    // Mono10p packs groups of four pixels: unavailable at width 642.
    EXPECT_EQ(m_camera->SetEnum("PixelFormat", "Mono10p"), GC_ERR_INVALID_VALUE);
    ASSERT_GC_OK(m_camera->SetInt("Width", 640));
    ASSERT_GC_OK(m_camera->SetEnum("PixelFormat", "Mono10p"));
    EXPECT_EQ(m_camera->SetInt("Width", 642), GC_ERR_INVALID_VALUE) << "increment 4 now";
    EXPECT_EQ(m_camera->SetInt("PixelFormat", 0x01080002), GC_ERR_INVALID_VALUE) << "not a format of the camera";

    ASSERT_GC_OK(m_camera->SetInt("TLParamsLocked", 1));
    EXPECT_EQ(m_camera->SetInt("Width", 320), GC_ERR_ACCESS_DENIED);
    EXPECT_EQ(m_camera->SetInt("Height", 240), GC_ERR_ACCESS_DENIED);
    EXPECT_EQ(m_camera->SetEnum("PixelFormat", "Mono8"), GC_ERR_ACCESS_DENIED);
    EXPECT_EQ(m_camera->SetInt("ChunkModeActive", 1), GC_ERR_ACCESS_DENIED);
    EXPECT_GC_OK(m_camera->SetInt("OffsetX", 0)) << "offsets move the region on the fly";
    EXPECT_GC_OK(m_camera->SetEnum("TestPattern", "ColorBar"));
    EXPECT_EQ(m_camera->SetInt("TLParamsLocked", 2), GC_ERR_INVALID_VALUE);
    ASSERT_GC_OK(m_camera->SetInt("TLParamsLocked", 0));
    ASSERT_GC_OK(m_camera->SetInt("Width", 320));

    // The acquisition itself locks the format too.
    ASSERT_GC_OK(m_camera->Execute("AcquisitionStart"));
    EXPECT_EQ(m_camera->SetInt("Width", 640), GC_ERR_ACCESS_DENIED);
    EXPECT_EQ(m_camera->GetInt("AcquisitionStatus"), 1);
    ASSERT_GC_OK(m_camera->Execute("AcquisitionStop"));
    ASSERT_GC_OK(m_camera->SetInt("Width", 640));
    EXPECT_EQ(m_camera->SetFloat("ExposureTime", 5.0), GC_ERR_INVALID_VALUE);
    EXPECT_EQ(m_camera->SetFloat("Gain", 25.0), GC_ERR_INVALID_VALUE);
    ASSERT_GC_OK(m_camera->SetFloat("Gain", 6.5));
    EXPECT_EQ(m_camera->GetFloat("Gain"), 6.5);
}

/// A lost camera falls silent: the module event (DeviceLost) and the error events report the
/// loss; after that no buffer and no event arrives, and every wait only times out (or aborts on
/// EventKill), so that consumers' listeners neither spin nor report failures of their own.
TEST_F(ProducerStreaming, DeviceLossIsReportedByTheModuleEventThenTheDeviceFallsSilent)
{
    OpenSmallCamera("U3V");
    auto device = Features(m_device);
    ASSERT_GC_OK(device->SetEnum("EventSelector", "DeviceLost"));
    ASSERT_GC_OK(device->SetEnum("EventNotification", "On"));
    ASSERT_GC_OK(m_camera->SetEnum("EventSelector", "ExposureEnd"));
    ASSERT_GC_OK(m_camera->SetEnum("EventNotification", "On"));
    EVENT_HANDLE moduleEvent = nullptr, deviceErrors = nullptr, streamErrors = nullptr, remoteEvents = nullptr,
                 featureChanges = nullptr, featureInvalidates = nullptr;
    ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_device, EVENT_MODULE, &moduleEvent));
    ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_device, EVENT_ERROR, &deviceErrors));
    ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_stream, EVENT_ERROR, &streamErrors));
    ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_device, EVENT_REMOTE_DEVICE, &remoteEvents));
    ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_device, EVENT_FEATURE_CHANGE, &featureChanges));
    ASSERT_GC_OK(m_gentl->GCRegisterEvent(m_device, EVENT_FEATURE_INVALIDATE, &featureInvalidates));
    RegisterNewBuffer();
    AnnounceAndQueue(4);
    Start();
    BUFFER_HANDLE buffer = NextBuffer();
    ASSERT_NE(buffer, nullptr);
    ASSERT_GC_OK(m_gentl->DSQueueBuffer(m_stream, buffer));

    ASSERT_GC_OK(m_camera->Execute("TestDeviceLost"));

    // The module event carries the DeviceLost event for the local device's event port.
    uint8_t data[1024];
    size_t size = sizeof(data);
    ASSERT_GC_OK(m_gentl->EventGetData(moduleEvent, data, &size, 1000));
    EXPECT_EQ(QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                  return m_gentl->EventGetDataInfo(moduleEvent, data, size, EVENT_DATA_ID, t, d, s);
              }).Text(), "D001");
    InfoAnswer_t value = QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
        return m_gentl->EventGetDataInfo(moduleEvent, data, size, EVENT_DATA_VALUE, t, d, s);
    });
    ASSERT_EQ(value.type, INFO_DATATYPE_BUFFER);
    ASSERT_EQ(value.bytes.size(), 16u);
    EXPECT_EQ(Load(value.bytes.data() + 2, 2, true), kEventIdDeviceLost);
    EXPECT_EQ(device->Child("EventDeviceLostPort", "EventID"), "D001");
    EXPECT_GT(Load(value.bytes.data() + kModuleEventTimestampOffset, 8, true), 0u);

    // Error events on the device and the stream.
    for (EVENT_HANDLE errors : {deviceErrors, streamErrors})
    {
        size = sizeof(data);
        ASSERT_GC_OK(m_gentl->EventGetData(errors, data, &size, 1000));
        EXPECT_EQ(QueryInfo([&](INFO_DATATYPE* t, void* d, size_t* s) {
                      return m_gentl->EventGetDataInfo(errors, data, size, EVENT_DATA_ID, t, d, s);
                  }).As<int32_t>(), GC_ERR_IO);
    }

    // The camera no longer answers. Buffers and camera events of frames finished before the loss
    // are still delivered; then nothing more comes.
    uint8_t bytes[4];
    size_t length = 4;
    EXPECT_EQ(m_gentl->GCReadPort(m_remote, 0, bytes, &length), GC_ERR_IO);
    while (NextBuffer(0) != nullptr)
    {
    }
    EXPECT_EQ(m_lastWait, GC_ERR_TIMEOUT);
    GC_ERROR drained;
    do
        size = sizeof(data);
    while ((drained = m_gentl->EventGetData(remoteEvents, data, &size, 0)) == GC_ERR_SUCCESS);
    EXPECT_EQ(drained, GC_ERR_TIMEOUT);
    const uint64_t delivered = StreamInfo<uint64_t>(STREAM_INFO_NUM_DELIVERED);
    EXPECT_FALSE(StreamInfo<bool8_t>(STREAM_INFO_IS_GRABBING));

    // Every event now waits its whole time-out and says only that: no failure to report.
    for (EVENT_HANDLE event :
         {m_newBuffer, moduleEvent, deviceErrors, streamErrors, remoteEvents, featureChanges, featureInvalidates})
    {
        size = sizeof(data);
        const auto before = std::chrono::steady_clock::now();
        EXPECT_EQ(m_gentl->EventGetData(event, data, &size, 100), GC_ERR_TIMEOUT);
        EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(95));
    }
    EXPECT_EQ(StreamInfo<uint64_t>(STREAM_INFO_NUM_DELIVERED), delivered) << "no frame after the loss";

    // EventKill still ends a wait at once, as consumers stop their listeners with it.
    for (EVENT_HANDLE event : {m_newBuffer, moduleEvent})
    {
        GC_ERROR waited = GC_ERR_SUCCESS;
        std::thread waiter([&] {
            uint8_t record[1024];
            size_t recordSize = sizeof(record);
            waited = m_gentl->EventGetData(event, record, &recordSize, GENTL_INFINITE);
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_GC_OK(m_gentl->EventKill(event));
        waiter.join();
        EXPECT_EQ(waited, GC_ERR_ABORT);
    }

    EXPECT_EQ(m_gentl->DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, 1), GC_ERR_IO);
    EXPECT_GC_OK(m_gentl->DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_DEFAULT));

    // Closing and opening again reconnects the camera.
    ASSERT_GC_OK(m_gentl->DevClose(m_device));
    m_device = OpenDevice(m_interface);
    ASSERT_GC_OK(m_gentl->DevGetPort(m_device, &m_remote));
    length = 4;
    EXPECT_GC_OK(m_gentl->GCReadPort(m_remote, 0, bytes, &length));
}

TEST_F(ProducerStreaming, DeviceResetRestoresFactorySettingsAndDropsTheConnection)
{
    OpenSmallCamera("CXP");
    ASSERT_GC_OK(m_camera->SetString("DeviceUserID", "kept"));
    ASSERT_GC_OK(m_camera->Execute("DeviceReset"));
    uint8_t bytes[4];
    size_t length = 4;
    EXPECT_EQ(m_gentl->GCReadPort(m_remote, 0, bytes, &length), GC_ERR_IO);
    ASSERT_GC_OK(m_gentl->DevClose(m_device));
    m_device = OpenDevice(m_interface);
    ASSERT_GC_OK(m_gentl->DevGetPort(m_device, &m_remote));
    auto camera = Features(m_remote);
    EXPECT_EQ(camera->GetInt("Width"), kDefaultSensorWidth);
    EXPECT_EQ(camera->GetInt("AcquisitionFrameRateEnable"), 1);
    EXPECT_EQ(camera->GetString("DeviceUserID"), "kept") << "the user ID is stored like a camera's flash";
}

TEST_F(ProducerStreaming, OpensAndClosesTheWholeTree100Times)
{
    ASSERT_GC_OK(m_gentl->GCCloseLib());
    for (int i = 0; i < 100; ++i)
    {
        ASSERT_GC_OK(m_gentl->GCInitLib());
        OpenSystem(i % 2 ? "GEV:1@256x64" : "U3V:1@256x64,CXP:1@256x64");
        OpenCamera(i % 2 ? "GEV" : "CXP");
        RegisterNewBuffer();
        AnnounceAndQueue(2);
        ASSERT_GC_OK(m_camera->SetInt("AcquisitionFrameRateEnable", 0));
        Start(1);
        ASSERT_NE(NextBuffer(), nullptr);
        // Close from the top without stopping: the producer tears everything down.
        if (i % 3 == 0)
        {
            ASSERT_GC_OK(m_gentl->TLClose(m_system));
        }
        m_camera.reset();
        ASSERT_GC_OK(m_gentl->GCCloseLib());
    }
    ASSERT_GC_OK(m_gentl->GCInitLib());
}

} // namespace
