// Acquisition through the SDK beside the raw GenTL loop on the same producer, in the same run.
//
// Throughput (frame rate off): frames per second and consumer CPU time per frame through
// RetrieveBuffer()/Release(), and through EventGetData()/DSQueueBuffer() on a stream opened
// with raw GenTL calls on the same camera, at 640x480 and 4096x3000 Mono8; and the two side by
// side on two identical cameras timed in alternating blocks (BM_InterleavedRawVsSdk), which
// keeps the ratio meaningful on a loaded machine. Consumer CPU is
// the CPU time of the threads that receive frames: the benchmark thread, plus for the SDK its
// new-buffer listener thread (the producer's rendering thread is not counted).
//
// Latency (frames paced at 1000 Hz): from the buffer's timestamp to the return of
// RetrieveBuffer() (or EventGetData() for the raw loop), as p50/p99/p99.9 in microseconds.
// libqvgentl.cti takes the timestamp on the steady clock when it starts a frame, before it
// renders the image; its epoch is found with the camera's TimestampLatch. The latency thus
// includes rendering (negligible at 64x8) and the raw loop shows the producer's own share.
#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include <GenApi/GenApi.h>
#include <GenTL/GenTL.h>
#include <QvApi_TL.h>

#include "QvApi_TL/QvDeviceInside.h"
#include "ScopedEnvironment.h"
#include "tests/QvApi_TL/Acquisition/AcquisitionTestSupport.h"

using namespace QvApi;
using namespace QvAcquisitionTest;

namespace
{
constexpr size_t kBufferCount = 8;
using Clock = std::chrono::steady_clock;

int64_t NowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count();
}

pid_t ThreadId()
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

/// CPU time in ns a thread of this process has run (scheduler statistics).
int64_t ThreadCpuNs(pid_t tid)
{
    std::ifstream file("/proc/self/task/" + std::to_string(tid) + "/schedstat");
    int64_t runNs = 0;
    file >> runNs;
    return runNs;
}

/// One camera of libqvgentl.cti opened through the SDK, Mono8 at the given size.
class CBenchCamera
{
public:
    CBenchCamera(int64_t width, int64_t height, double frameRateHz)
        : m_environment("QVGENTL_VIRTUAL", "GEV:1@4096x3000"), m_session(QvInterfaceType_GigEVision)
    {
        m_pDevice = m_session.Device(0);
        SetEnum(m_pDevice, "PixelFormat", "Mono8");
        SetInteger(m_pDevice, "Width", width);
        SetInteger(m_pDevice, "Height", height);
        PaceCamera(m_pDevice, frameRateHz, "GreyDiagonalRampMoving");
    }
    IQvDeviceReleasable* Device() { return m_pDevice; }
    /// Steady-clock ns of the camera's timestamp 0, found with TimestampLatch.
    int64_t TimestampEpochNs()
    {
        int64_t best = INT64_MAX;
        int64_t epoch = 0;
        for (int i = 0; i < 20; ++i)
        {
            const int64_t before = NowNs();
            Execute(m_pDevice, "TimestampLatch");
            const int64_t after = NowNs();
            const int64_t latched = GetInteger(m_pDevice, "TimestampLatchValue");
            if (after - before < best)
            {
                best = after - before;
                epoch = before + (after - before) / 2 - latched;
            }
        }
        return epoch;
    }

private:
    QvTest::CScopedEnvironment m_environment;
    CCameraSession m_session;
    IQvDeviceReleasable* m_pDevice = nullptr;
};

/// A stream of the same camera driven with raw GenTL calls from the producer the SDK loaded.
class CRawStream
{
public:
    explicit CRawStream(IQvDevice* pDevice)
    {
        void* library = dlopen("libqvgentl.cti", RTLD_NOW | RTLD_NOLOAD);
        if (library == nullptr)
        {
            const char* folder = getenv("GENICAM_GENTL64_PATH");
            library = dlopen((std::string(folder != nullptr ? folder : ".") + "/libqvgentl.cti").c_str(),
                             RTLD_NOW | RTLD_NOLOAD);
        }
        if (library == nullptr)
            throw std::runtime_error("libqvgentl.cti is not loaded");
        auto resolve = [&](auto& entry, const char* name) {
            entry = reinterpret_cast<std::remove_reference_t<decltype(entry)>>(dlsym(library, name));
            if (entry == nullptr)
                throw std::runtime_error(std::string("missing ") + name);
        };
        resolve(DevOpenDataStream, "DevOpenDataStream");
        resolve(DSGetInfo, "DSGetInfo");
        resolve(DSGetBufferInfo, "DSGetBufferInfo");
        resolve(DSAllocAndAnnounceBuffer, "DSAllocAndAnnounceBuffer");
        resolve(DSQueueBuffer, "DSQueueBuffer");
        resolve(DSStartAcquisition, "DSStartAcquisition");
        resolve(DSStopAcquisition, "DSStopAcquisition");
        resolve(DSFlushQueue, "DSFlushQueue");
        resolve(DSRevokeBuffer, "DSRevokeBuffer");
        resolve(DSClose, "DSClose");
        resolve(GCRegisterEvent, "GCRegisterEvent");
        resolve(GCUnregisterEvent, "GCUnregisterEvent");
        resolve(EventGetData, "EventGetData");
        dlclose(library);

        GenTL::DEV_HANDLE hDevice = dynamic_cast<IQvDeviceInside*>(pDevice)->GetDeviceHandle();
        Check(DevOpenDataStream(hDevice, "Stream0", &m_hStream), "DevOpenDataStream");
        GenTL::INFO_DATATYPE type;
        size_t payload = 0;
        size_t size = sizeof(payload);
        Check(DSGetInfo(m_hStream, GenTL::STREAM_INFO_PAYLOAD_SIZE, &type, &payload, &size), "DSGetInfo");
        for (size_t i = 0; i < kBufferCount; ++i)
        {
            GenTL::BUFFER_HANDLE hBuffer = nullptr;
            Check(DSAllocAndAnnounceBuffer(m_hStream, payload, nullptr, &hBuffer), "DSAllocAndAnnounceBuffer");
            Check(DSQueueBuffer(m_hStream, hBuffer), "DSQueueBuffer");
            m_buffers.push_back(hBuffer);
        }
        Check(GCRegisterEvent(m_hStream, GenTL::EVENT_NEW_BUFFER, &m_hNewBuffer), "GCRegisterEvent");
        Check(DSStartAcquisition(m_hStream, GenTL::ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE), "DSStartAcquisition");
    }
    ~CRawStream()
    {
        DSStopAcquisition(m_hStream, GenTL::ACQ_STOP_FLAGS_KILL);
        DSFlushQueue(m_hStream, GenTL::ACQ_QUEUE_ALL_DISCARD);
        for (GenTL::BUFFER_HANDLE hBuffer : m_buffers)
            DSRevokeBuffer(m_hStream, hBuffer, nullptr, nullptr);
        GCUnregisterEvent(m_hStream, GenTL::EVENT_NEW_BUFFER);
        DSClose(m_hStream);
    }
    /// Waits for the next frame. \return Its buffer (queue it again with Queue()).
    GenTL::BUFFER_HANDLE Next()
    {
        GenTL::EVENT_NEW_BUFFER_DATA data;
        size_t size = sizeof(data);
        Check(EventGetData(m_hNewBuffer, &data, &size, 5000), "EventGetData");
        return data.BufferHandle;
    }
    void Queue(GenTL::BUFFER_HANDLE hBuffer) { Check(DSQueueBuffer(m_hStream, hBuffer), "DSQueueBuffer"); }
    uint64_t TimestampNs(GenTL::BUFFER_HANDLE hBuffer)
    {
        GenTL::INFO_DATATYPE type;
        uint64_t value = 0;
        size_t size = sizeof(value);
        Check(DSGetBufferInfo(m_hStream, hBuffer, GenTL::BUFFER_INFO_TIMESTAMP_NS, &type, &value, &size), "DSGetBufferInfo");
        return value;
    }

private:
    static void Check(GenTL::GC_ERROR err, const char* call)
    {
        if (err != GenTL::GC_ERR_SUCCESS)
            throw std::runtime_error(std::string(call) + " failed: " + std::to_string(err));
    }
    GenTL::PDevOpenDataStream DevOpenDataStream;
    GenTL::PDSGetInfo DSGetInfo;
    GenTL::PDSGetBufferInfo DSGetBufferInfo;
    GenTL::PDSAllocAndAnnounceBuffer DSAllocAndAnnounceBuffer;
    GenTL::PDSQueueBuffer DSQueueBuffer;
    GenTL::PDSStartAcquisition DSStartAcquisition;
    GenTL::PDSStopAcquisition DSStopAcquisition;
    GenTL::PDSFlushQueue DSFlushQueue;
    GenTL::PDSRevokeBuffer DSRevokeBuffer;
    GenTL::PDSClose DSClose;
    GenTL::PGCRegisterEvent GCRegisterEvent;
    GenTL::PGCUnregisterEvent GCUnregisterEvent;
    GenTL::PEventGetData EventGetData;
    GenTL::DS_HANDLE m_hStream = nullptr;
    GenTL::EVENT_HANDLE m_hNewBuffer = nullptr;
    std::vector<GenTL::BUFFER_HANDLE> m_buffers;
};

/// Learns the thread id of the stream's new-buffer listener from one callback.
class CListenerThreadProbe : public IQvCallback
{
public:
    void Invoke(IQvCallbackParamBase*) override { m_tid.store(ThreadId()); }
    void Release() override {}
    std::atomic<pid_t> m_tid{0};
};

void SetThroughputCounters(benchmark::State& state, int64_t frames, double seconds, int64_t consumerCpuNs)
{
    state.SetItemsProcessed(frames);
    state.counters["fps"] = benchmark::Counter(static_cast<double>(frames) / seconds);
    state.counters["consumer_cpu_us_per_frame"] = benchmark::Counter(consumerCpuNs / 1000.0 / frames);
}

void SetLatencyCounters(benchmark::State& state, std::vector<int64_t>& latencies)
{
    std::sort(latencies.begin(), latencies.end());
    auto at = [&](double q) {
        return latencies[std::min(latencies.size() - 1, static_cast<size_t>(q * latencies.size()))] / 1000.0;
    };
    state.counters["p50_us"] = at(0.5);
    state.counters["p99_us"] = at(0.99);
    state.counters["p999_us"] = at(0.999);
    state.counters["samples"] = static_cast<double>(latencies.size());
}

/// Runs a benchmark body; a failure skips the benchmark with its message.
template <class Body>
void Guarded(benchmark::State& state, Body body)
{
    try
    {
        body();
    }
    catch (const GenICam::GenericException& e)
    {
        state.SkipWithError(e.GetDescription());
    }
    catch (const std::exception& e)
    {
        state.SkipWithError(e.what());
    }
}

/// A device acquiring through an SDK data stream, past its first frame; it learns the stream's
/// listener thread on the way. Stops when it goes.
class CSdkAcquisition
{
public:
    explicit CSdkAcquisition(IQvDeviceReleasable* pDevice)
        : m_pDevice(pDevice), m_stream(pDevice->CreateIQvDataStream(0, nullptr))
    {
        m_stream->SetStreamBufferCount(kBufferCount);
        CListenerThreadProbe probe;
        void* hProbe = m_stream->RegisterCallback(&probe);
        m_stream->StartAcquisition();
        m_pDevice->AcquisitionStart();
        m_stream->RetrieveBuffer(5000, QvTimeoutHandling_Throw)->Release();
        while (probe.m_tid.load() == 0) // the callback runs after the buffer was queued as filled
            std::this_thread::yield();
        m_stream->DeregisterCallback(hProbe); // measured without callbacks
        m_listener = probe.m_tid.load();
    }
    ~CSdkAcquisition()
    {
        try
        {
            m_pDevice->AcquisitionStop();
            m_stream->StopAcquisition();
        }
        catch (const GenICam::GenericException&)
        {
        }
    }
    CSdkAcquisition(const CSdkAcquisition&) = delete;
    CSdkAcquisition& operator=(const CSdkAcquisition&) = delete;

    IQvStreamBufferReleasable* Next() { return m_stream->RetrieveBuffer(5000, QvTimeoutHandling_Throw); }
    void Skip(size_t frames)
    {
        for (size_t i = 0; i < frames; ++i)
            Next()->Release();
    }
    pid_t Listener() const { return m_listener; }

private:
    IQvDeviceReleasable* const m_pDevice;
    CIQvDataStreamPtr m_stream;
    pid_t m_listener = 0;
};

/// A device acquiring through a raw GenTL stream. Stops when it goes.
class CRawAcquisition : public CRawStream
{
public:
    explicit CRawAcquisition(IQvDeviceReleasable* pDevice) : CRawStream(pDevice), m_pDevice(pDevice)
    {
        m_pDevice->AcquisitionStart();
    }
    ~CRawAcquisition()
    {
        try
        {
            m_pDevice->AcquisitionStop();
        }
        catch (const GenICam::GenericException&)
        {
        }
    }
    void Skip(size_t frames)
    {
        for (size_t i = 0; i < frames; ++i)
            Queue(Next());
    }

private:
    IQvDeviceReleasable* const m_pDevice;
};

void BM_SdkRetrieve(benchmark::State& state)
{
    Guarded(state, [&] {
        CBenchCamera camera(state.range(0), state.range(1), 0.0);
        CSdkAcquisition sdk(camera.Device());
        sdk.Skip(16);
        const pid_t self = ThreadId();
        const int64_t cpuBefore = ThreadCpuNs(self) + ThreadCpuNs(sdk.Listener());
        const auto started = Clock::now();
        int64_t frames = 0;
        for (auto _ : state)
        {
            sdk.Next()->Release();
            ++frames;
        }
        const double seconds = std::chrono::duration<double>(Clock::now() - started).count();
        SetThroughputCounters(state, frames, seconds, ThreadCpuNs(self) + ThreadCpuNs(sdk.Listener()) - cpuBefore);
    });
}

void BM_RawLoop(benchmark::State& state)
{
    Guarded(state, [&] {
        CBenchCamera camera(state.range(0), state.range(1), 0.0);
        CRawAcquisition raw(camera.Device());
        raw.Skip(16);
        const pid_t self = ThreadId();
        const int64_t cpuBefore = ThreadCpuNs(self);
        const auto started = Clock::now();
        int64_t frames = 0;
        for (auto _ : state)
        {
            raw.Queue(raw.Next());
            ++frames;
        }
        const double seconds = std::chrono::duration<double>(Clock::now() - started).count();
        SetThroughputCounters(state, frames, seconds, ThreadCpuNs(self) - cpuBefore);
    });
}

void BM_SdkLatency(benchmark::State& state)
{
    Guarded(state, [&] {
        CBenchCamera camera(state.range(0), state.range(1), 1000.0);
        const int64_t epoch = camera.TimestampEpochNs();
        CSdkAcquisition sdk(camera.Device());
        sdk.Skip(16);
        std::vector<int64_t> latencies;
        latencies.reserve(static_cast<size_t>(state.max_iterations));
        for (auto _ : state)
        {
            IQvStreamBufferReleasable* pBuffer = sdk.Next();
            const int64_t returned = NowNs();
            latencies.push_back(returned - epoch -
                                static_cast<int64_t>(pBuffer->GetIQvStreamBufferInfo()->GetTimestampNS()));
            pBuffer->Release();
        }
        SetLatencyCounters(state, latencies);
    });
}

void BM_RawLatency(benchmark::State& state)
{
    Guarded(state, [&] {
        CBenchCamera camera(state.range(0), state.range(1), 1000.0);
        const int64_t epoch = camera.TimestampEpochNs();
        CRawAcquisition raw(camera.Device());
        raw.Skip(16);
        std::vector<int64_t> latencies;
        latencies.reserve(static_cast<size_t>(state.max_iterations));
        for (auto _ : state)
        {
            GenTL::BUFFER_HANDLE hBuffer = raw.Next();
            const int64_t returned = NowNs();
            latencies.push_back(returned - epoch - static_cast<int64_t>(raw.TimestampNs(hBuffer)));
            raw.Queue(hBuffer);
        }
        SetLatencyCounters(state, latencies);
    });
}

/// Two identical cameras, one through raw GenTL and one through the SDK, timed in alternating
/// blocks so that both see the same machine load (the raw loop and the SDK each get half of the
/// blocks). Before each block the frames the camera rendered while the other one was timed are
/// drained untimed.
void BM_InterleavedRawVsSdk(benchmark::State& state)
{
    Guarded(state, [&] {
        const int64_t width = state.range(0);
        const int64_t height = state.range(1);
        const int blockFrames = static_cast<int>(state.range(2));
        QvTest::CScopedEnvironment environment("QVGENTL_VIRTUAL", "GEV:2@4096x3000");
        CCameraSession session(QvInterfaceType_GigEVision);
        if (session.GetDeviceCount() < 2)
            throw std::runtime_error("two cameras expected");
        for (size_t i = 0; i < 2; ++i)
        {
            SetEnum(session.Device(i), "PixelFormat", "Mono8");
            SetInteger(session.Device(i), "Width", width);
            SetInteger(session.Device(i), "Height", height);
            PaceCamera(session.Device(i), 0.0, "GreyDiagonalRampMoving");
        }
        CRawAcquisition raw(session.Device(0));
        CSdkAcquisition sdk(session.Device(1));
        const pid_t self = ThreadId();
        const pid_t listener = sdk.Listener();

        int64_t sdkMainCpuNs = 0, rawNs = 0, sdkNs = 0, rawCpuNs = 0, sdkCpuNs = 0, rawFrames = 0, sdkFrames = 0;
        for (auto _ : state)
        {
            raw.Skip(kBufferCount);
            int64_t cpu = ThreadCpuNs(self);
            int64_t started = NowNs();
            raw.Skip(blockFrames);
            rawNs += NowNs() - started;
            rawCpuNs += ThreadCpuNs(self) - cpu;
            rawFrames += blockFrames;

            sdk.Skip(kBufferCount);
            cpu = ThreadCpuNs(self) + ThreadCpuNs(listener);
            const int64_t mainCpu = ThreadCpuNs(self);
            started = NowNs();
            sdk.Skip(blockFrames);
            sdkNs += NowNs() - started;
            sdkMainCpuNs += ThreadCpuNs(self) - mainCpu;
            sdkCpuNs += ThreadCpuNs(self) + ThreadCpuNs(listener) - cpu;
            sdkFrames += blockFrames;
        }
        const double rawFps = rawFrames / (rawNs / 1e9);
        const double sdkFps = sdkFrames / (sdkNs / 1e9);
        state.counters["raw_fps"] = rawFps;
        state.counters["sdk_fps"] = sdkFps;
        state.counters["sdk_to_raw"] = sdkFps / rawFps;
        state.counters["raw_cpu_us_per_frame"] = rawCpuNs / 1000.0 / rawFrames;
        state.counters["sdk_cpu_us_per_frame"] = sdkCpuNs / 1000.0 / sdkFrames;
        state.counters["sdk_main_cpu_us_per_frame"] = sdkMainCpuNs / 1000.0 / sdkFrames;
    });
}

// Per-pixel reads of a delivered buffer's image (and of an ROI view on it): the geometry must
// not cost a producer call per pixel.
void BM_StreamBufferPixelAccess(benchmark::State& state)
{
    Guarded(state, [&] {
        CBenchCamera camera(640, 480, 0.0);
        CSdkAcquisition sdk(camera.Device());
        IQvStreamBufferReleasable* pBuffer = sdk.Next();
        IQvImage* pImage = pBuffer->GetIQvImage();
        if (state.range(0) == 1)
            pImage = pImage->GetROIImage(64, 64, 256, 256);
        uint64_t sum = 0;
        int64_t pixels = 0;
        for (auto _ : state)
        {
            for (size_t y = 0; y < 256; ++y)
                for (size_t x = 0; x < 256; ++x)
                    sum += pImage->GetIQvPixelComponentValue(x, y)->GetValue(0);
            pixels += 256 * 256;
        }
        benchmark::DoNotOptimize(sum);
        state.SetItemsProcessed(pixels);
        state.counters["ns_per_pixel"] =
            benchmark::Counter(static_cast<double>(pixels), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
        pBuffer->Release();
    });
}
} // namespace

BENCHMARK(BM_StreamBufferPixelAccess)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RawLoop)->Args({640, 480})->Args({4096, 3000})->UseRealTime()->Unit(benchmark::kMicrosecond)->MinTime(2.0);
BENCHMARK(BM_SdkRetrieve)->Args({640, 480})->Args({4096, 3000})->UseRealTime()->Unit(benchmark::kMicrosecond)->MinTime(2.0);
BENCHMARK(BM_InterleavedRawVsSdk)->Args({640, 480, 200})->Args({4096, 3000, 10})->UseRealTime()->Unit(benchmark::kMillisecond)->MinTime(5.0);
BENCHMARK(BM_RawLatency)->Args({64, 8})->Args({640, 480})->Iterations(5000)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SdkLatency)->Args({64, 8})->Args({640, 480})->Iterations(5000)->UseRealTime()->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    QvApi::QvApiInitialize(QVAPI_VERSION);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    QvApi::QvApiTerminate();
    return 0;
}
