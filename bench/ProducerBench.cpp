// Frame delivery of libqvgentl.cti with the frame rate off: frames per second and CPU time per
// frame (all threads of the process, the producer's acquisition thread included) at 640x480
// and 4096x3000 Mono8, through raw GenTL calls (EventGetData, DSQueueBuffer), beside memcpy of
// the same image size in the same run: rendering a frame straight into the buffer should cost
// about one copy of it.

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <GenApi/GenApi.h>
#include <GenApi/PortImpl.h>
#include <GenTL/GenTL.h>

using namespace GenTL;

namespace {

/// The entry points the benchmark drives, from the producer in the build tree.
struct Producer_t
{
    void* library = nullptr;
    PGCInitLib GCInitLib;
    PGCCloseLib GCCloseLib;
    PGCReadPort GCReadPort;
    PGCWritePort GCWritePort;
    PGCGetPortURLInfo GCGetPortURLInfo;
    PGCRegisterEvent GCRegisterEvent;
    PEventGetData EventGetData;
    PTLOpen TLOpen;
    PTLUpdateInterfaceList TLUpdateInterfaceList;
    PTLGetInterfaceID TLGetInterfaceID;
    PTLOpenInterface TLOpenInterface;
    PIFUpdateDeviceList IFUpdateDeviceList;
    PIFGetDeviceID IFGetDeviceID;
    PIFOpenDevice IFOpenDevice;
    PDevGetPort DevGetPort;
    PDevOpenDataStream DevOpenDataStream;
    PDSAllocAndAnnounceBuffer DSAllocAndAnnounceBuffer;
    PDSQueueBuffer DSQueueBuffer;
    PDSStartAcquisition DSStartAcquisition;
    PDSStopAcquisition DSStopAcquisition;
    PDSGetInfo DSGetInfo;

    Producer_t()
    {
        const char* folder = std::getenv("GENICAM_GENTL64_PATH");
        const std::string path = std::string(folder && *folder ? folder : QV_GENTL_BUILD_DIR) + "/libqvgentl.cti";
        library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            throw std::runtime_error("cannot load " + path);
        auto resolve = [&](auto& entry, const char* name) {
            entry = reinterpret_cast<std::remove_reference_t<decltype(entry)>>(dlsym(library, name));
            if (entry == nullptr)
                throw std::runtime_error(std::string("missing ") + name);
        };
#define QV_RESOLVE(name) resolve(name, #name)
        QV_RESOLVE(GCInitLib);
        QV_RESOLVE(GCCloseLib);
        QV_RESOLVE(GCReadPort);
        QV_RESOLVE(GCWritePort);
        QV_RESOLVE(GCGetPortURLInfo);
        QV_RESOLVE(GCRegisterEvent);
        QV_RESOLVE(EventGetData);
        QV_RESOLVE(TLOpen);
        QV_RESOLVE(TLUpdateInterfaceList);
        QV_RESOLVE(TLGetInterfaceID);
        QV_RESOLVE(TLOpenInterface);
        QV_RESOLVE(IFUpdateDeviceList);
        QV_RESOLVE(IFGetDeviceID);
        QV_RESOLVE(IFOpenDevice);
        QV_RESOLVE(DevGetPort);
        QV_RESOLVE(DevOpenDataStream);
        QV_RESOLVE(DSAllocAndAnnounceBuffer);
        QV_RESOLVE(DSQueueBuffer);
        QV_RESOLVE(DSStartAcquisition);
        QV_RESOLVE(DSStopAcquisition);
        QV_RESOLVE(DSGetInfo);
#undef QV_RESOLVE
    }
    ~Producer_t() { dlclose(library); }
};

void Check(GC_ERROR result, const char* call)
{
    if (result != GC_ERR_SUCCESS)
        throw std::runtime_error(std::string(call) + " failed: " + std::to_string(result));
}

class CCameraPort : public GenApi::CPortImpl
{
public:
    CCameraPort(Producer_t& producer, PORT_HANDLE port) : m_producer(producer), m_port(port) {}
    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
    void Read(void* pBuffer, int64_t address, int64_t length) override
    {
        size_t size = size_t(length);
        Check(m_producer.GCReadPort(m_port, uint64_t(address), pBuffer, &size), "GCReadPort");
    }
    void Write(const void* pBuffer, int64_t address, int64_t length) override
    {
        size_t size = size_t(length);
        Check(m_producer.GCWritePort(m_port, uint64_t(address), pBuffer, &size), "GCWritePort");
    }

private:
    Producer_t& m_producer;
    PORT_HANDLE m_port;
};

/// One virtual GEV camera with a 4096x3000 sensor, streaming width x height Mono8 unpaced.
class CStreamingCamera
{
public:
    CStreamingCamera(int64_t width, int64_t height)
    {
        setenv("QVGENTL_VIRTUAL", "GEV:1@4096x3000", 1);
        Check(m_producer.GCInitLib(), "GCInitLib");
        Check(m_producer.TLOpen(&m_system), "TLOpen");
        Check(m_producer.TLUpdateInterfaceList(m_system, nullptr, 0), "TLUpdateInterfaceList");
        char id[128];
        size_t size = sizeof(id);
        Check(m_producer.TLGetInterfaceID(m_system, 0, id, &size), "TLGetInterfaceID");
        IF_HANDLE iface = nullptr;
        Check(m_producer.TLOpenInterface(m_system, id, &iface), "TLOpenInterface");
        Check(m_producer.IFUpdateDeviceList(iface, nullptr, 0), "IFUpdateDeviceList");
        size = sizeof(id);
        Check(m_producer.IFGetDeviceID(iface, 0, id, &size), "IFGetDeviceID");
        DEV_HANDLE device = nullptr;
        Check(m_producer.IFOpenDevice(iface, id, DEVICE_ACCESS_CONTROL, &device), "IFOpenDevice");
        PORT_HANDLE remote = nullptr;
        Check(m_producer.DevGetPort(device, &remote), "DevGetPort");

        // The camera description (zipped, URL 0) through the GenApi engine.
        INFO_DATATYPE type;
        uint64_t address = 0, length = 0;
        size = 8;
        Check(m_producer.GCGetPortURLInfo(remote, 0, URL_INFO_FILE_REGISTER_ADDRESS, &type, &address, &size), "URL");
        size = 8;
        Check(m_producer.GCGetPortURLInfo(remote, 0, URL_INFO_FILE_SIZE, &type, &length, &size), "URL");
        std::vector<char> zip(length);
        size = length;
        Check(m_producer.GCReadPort(remote, address, zip.data(), &size), "GCReadPort");
        m_camera._LoadXMLFromZIPData(zip.data(), zip.size());
        m_port = std::make_unique<CCameraPort>(m_producer, remote);
        m_camera._Connect(m_port.get(), "Device");
        GenApi::CIntegerPtr(m_camera._GetNode("Width"))->SetValue(width);
        GenApi::CIntegerPtr(m_camera._GetNode("Height"))->SetValue(height);
        GenApi::CEnumerationPtr(m_camera._GetNode("PixelFormat"))->FromString("Mono8");
        GenApi::CBooleanPtr(m_camera._GetNode("AcquisitionFrameRateEnable"))->SetValue(false);

        Check(m_producer.DevOpenDataStream(device, "Stream0", &m_stream), "DevOpenDataStream");
        size_t payload = 0;
        size = sizeof(payload);
        Check(m_producer.DSGetInfo(m_stream, STREAM_INFO_PAYLOAD_SIZE, &type, &payload, &size), "DSGetInfo");
        for (int i = 0; i < 8; ++i)
        {
            BUFFER_HANDLE buffer = nullptr;
            Check(m_producer.DSAllocAndAnnounceBuffer(m_stream, payload, nullptr, &buffer), "DSAllocAndAnnounceBuffer");
            Check(m_producer.DSQueueBuffer(m_stream, buffer), "DSQueueBuffer");
        }
        Check(m_producer.GCRegisterEvent(m_stream, EVENT_NEW_BUFFER, &m_newBuffer), "GCRegisterEvent");
        Check(m_producer.DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE), "DSStartAcquisition");
        GenApi::CCommandPtr(m_camera._GetNode("AcquisitionStart"))->Execute();
    }

    ~CStreamingCamera()
    {
        GenApi::CCommandPtr(m_camera._GetNode("AcquisitionStop"))->Execute();
        m_producer.DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_KILL);
        m_camera._Destroy();
        m_producer.GCCloseLib(); // closes everything below the system
    }

    /// Waits for the next frame and gives its buffer back at once.
    void NextFrame()
    {
        EVENT_NEW_BUFFER_DATA data;
        size_t size = sizeof(data);
        Check(m_producer.EventGetData(m_newBuffer, &data, &size, 5000), "EventGetData");
        Check(m_producer.DSQueueBuffer(m_stream, data.BufferHandle), "DSQueueBuffer");
    }

private:
    Producer_t m_producer;
    TL_HANDLE m_system = nullptr;
    DS_HANDLE m_stream = nullptr;
    EVENT_HANDLE m_newBuffer = nullptr;
    GenApi::CNodeMapRef m_camera;
    std::unique_ptr<CCameraPort> m_port;
};

void BM_ProducerFrames(benchmark::State& state)
{
    const int64_t width = state.range(0), height = state.range(1);
    try
    {
        CStreamingCamera camera(width, height);
        for (int i = 0; i < 8; ++i)
            camera.NextFrame(); // warm-up: buffers touched once
        for (auto _ : state)
            camera.NextFrame();
    }
    catch (const std::exception& error)
    {
        state.SkipWithError(error.what());
        return;
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * width * height);
    state.SetLabel("Mono8, frame rate off");
}

/// The baseline: one copy of the same image per iteration.
void BM_MemcpyImage(benchmark::State& state)
{
    const size_t size = size_t(state.range(0)) * size_t(state.range(1));
    std::vector<uint8_t> source(size, 0x5A), target(size);
    for (auto _ : state)
    {
        std::memcpy(target.data(), source.data(), size);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * int64_t(size));
}

} // namespace

// Process CPU time (all threads) and real time: the producer renders on its own thread.
BENCHMARK(BM_ProducerFrames)->Args({640, 480})->Args({4096, 3000})->MeasureProcessCPUTime()->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MemcpyImage)->Args({640, 480})->Args({4096, 3000})->MeasureProcessCPUTime()->UseRealTime()->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
