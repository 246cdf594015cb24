// gentl-grab: grabs frames from the first camera of a GenTL producer with raw GenTL calls and
// writes them as PGM/PPM files.
//
//   GENICAM_GENTL64_PATH=build/gentl gentl-grab -n 10 -o out
//
// The producer is libqvgentl.cti when GENICAM_GENTL64_PATH holds it (else the first .cti
// there, or the one named with --producer). Camera features are set through the camera's own
// description, loaded with the GenApi engine and connected to the remote device port.

#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <GenApi/GenApi.h>
#include <GenApi/PortImpl.h>

#include "GenTLLibrary.h"
#include "ImageWriter.h"

using namespace GenTL;

namespace {

struct Options_t
{
    unsigned frames = 10;
    std::string output = "out";
    std::string producer = "libqvgentl.cti";
    std::string interfaceType;
    int64_t width = 0;
    int64_t height = 0;
    std::string pixelFormat;
    std::string testPattern;
    unsigned buffers = 4;
    uint64_t timeoutMs = 5000;
    bool save = true;
};

/// The camera's registers as a GenApi port.
class CRemotePort : public GenApi::CPortImpl
{
public:
    CRemotePort(const CGenTLLibrary& gentl, PORT_HANDLE port) : m_gentl(gentl), m_port(port) {}
    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
    void Read(void* pBuffer, int64_t address, int64_t length) override
    {
        size_t size = static_cast<size_t>(length);
        m_gentl.Check(m_gentl.GCReadPort(m_port, static_cast<uint64_t>(address), pBuffer, &size), "GCReadPort");
    }
    void Write(const void* pBuffer, int64_t address, int64_t length) override
    {
        size_t size = static_cast<size_t>(length);
        m_gentl.Check(m_gentl.GCWritePort(m_port, static_cast<uint64_t>(address), pBuffer, &size), "GCWritePort");
    }

private:
    const CGenTLLibrary& m_gentl;
    const PORT_HANDLE m_port;
};

/// A text answer of a two-phase query.
template <class Call>
std::string Text(const CGenTLLibrary& gentl, const char* what, Call call)
{
    size_t size = 0;
    gentl.Check(call(nullptr, &size), what);
    std::vector<char> text(size + 1, 0);
    gentl.Check(call(text.data(), &size), what);
    return text.data();
}

template <class T>
T BufferInfo(const CGenTLLibrary& gentl, DS_HANDLE stream, BUFFER_HANDLE buffer, BUFFER_INFO_CMD command)
{
    T value{};
    INFO_DATATYPE type = 0;
    size_t size = sizeof(value);
    gentl.Check(gentl.DSGetBufferInfo(stream, buffer, command, &type, &value, &size), "DSGetBufferInfo");
    return value;
}

/// Loads the description the remote port names at URL 0 ("local:" URLs, zipped or plain).
void LoadDescription(const CGenTLLibrary& gentl, PORT_HANDLE port, GenApi::CNodeMapRef& map)
{
    auto urlInfo = [&](URL_INFO_CMD command, void* value, size_t size) {
        INFO_DATATYPE type = 0;
        gentl.Check(gentl.GCGetPortURLInfo(port, 0, command, &type, value, &size), "GCGetPortURLInfo");
    };
    const std::string url = Text(gentl, "GCGetPortURLInfo", [&](char* text, size_t* size) {
        INFO_DATATYPE type = 0;
        return gentl.GCGetPortURLInfo(port, 0, URL_INFO_URL, &type, text, size);
    });
    int32_t scheme = -1;
    uint64_t address = 0, length = 0;
    urlInfo(URL_INFO_SCHEME, &scheme, sizeof(scheme));
    if (scheme != URL_SCHEME_LOCAL)
        throw std::runtime_error("the camera description is not in the camera (" + url + ")");
    urlInfo(URL_INFO_FILE_REGISTER_ADDRESS, &address, sizeof(address));
    urlInfo(URL_INFO_FILE_SIZE, &length, sizeof(length));
    std::vector<char> bytes(length + 1, 0);
    size_t size = length;
    gentl.Check(gentl.GCReadPort(port, address, bytes.data(), &size), "GCReadPort");
    const std::string name = url.substr(0, url.find(';'));
    if (name.size() > 4 && (name.compare(name.size() - 4, 4, ".zip") == 0 || name.compare(name.size() - 4, 4, ".ZIP") == 0))
        map._LoadXMLFromZIPData(bytes.data(), size);
    else
        map._LoadXMLFromString(GenICam::gcstring(bytes.data()));
}

int Grab(const Options_t& options)
{
    const std::string path = CGenTLLibrary::Find(options.producer);
    if (path.empty())
    {
        std::fprintf(stderr, "gentl-grab: no .cti on GENICAM_GENTL64_PATH (set it to the folder of libqvgentl.cti, "
                             "e.g. build/gentl)\n");
        return 2;
    }
    CGenTLLibrary gentl(path);
    std::printf("Producer: %s\n", path.c_str());
    gentl.Check(gentl.GCInitLib(), "GCInitLib");
    TL_HANDLE system = nullptr;
    gentl.Check(gentl.TLOpen(&system), "TLOpen");
    gentl.Check(gentl.TLUpdateInterfaceList(system, nullptr, 1000), "TLUpdateInterfaceList");

    // The first camera of the first interface (of the type asked for) that has one.
    IF_HANDLE iface = nullptr;
    DEV_HANDLE device = nullptr;
    std::string interfaceId;
    uint32_t interfaces = 0;
    gentl.Check(gentl.TLGetNumInterfaces(system, &interfaces), "TLGetNumInterfaces");
    for (uint32_t i = 0; i < interfaces && device == nullptr; ++i)
    {
        interfaceId = Text(gentl, "TLGetInterfaceID", [&](char* t, size_t* s) { return gentl.TLGetInterfaceID(system, i, t, s); });
        const std::string type = Text(gentl, "TLGetInterfaceInfo", [&](char* t, size_t* s) {
            INFO_DATATYPE dataType = 0;
            return gentl.TLGetInterfaceInfo(system, interfaceId.c_str(), INTERFACE_INFO_TLTYPE, &dataType, t, s);
        });
        if (!options.interfaceType.empty() && type != options.interfaceType)
            continue;
        gentl.Check(gentl.TLOpenInterface(system, interfaceId.c_str(), &iface), "TLOpenInterface");
        gentl.Check(gentl.IFUpdateDeviceList(iface, nullptr, 1000), "IFUpdateDeviceList");
        uint32_t devices = 0;
        gentl.Check(gentl.IFGetNumDevices(iface, &devices), "IFGetNumDevices");
        if (devices == 0)
        {
            gentl.Check(gentl.IFClose(iface), "IFClose");
            continue;
        }
        const std::string deviceId = Text(gentl, "IFGetDeviceID", [&](char* t, size_t* s) { return gentl.IFGetDeviceID(iface, 0, t, s); });
        gentl.Check(gentl.IFOpenDevice(iface, deviceId.c_str(), DEVICE_ACCESS_CONTROL, &device), "IFOpenDevice");
    }
    if (device == nullptr)
        throw std::runtime_error("no camera found");
    auto deviceText = [&](DEVICE_INFO_CMD command) {
        return Text(gentl, "DevGetInfo", [&](char* t, size_t* s) {
            INFO_DATATYPE type = 0;
            return gentl.DevGetInfo(device, command, &type, t, s);
        });
    };
    std::printf("Camera: %s %s (%s) on %s\n", deviceText(DEVICE_INFO_VENDOR).c_str(),
                deviceText(DEVICE_INFO_MODEL).c_str(), deviceText(DEVICE_INFO_SERIAL_NUMBER).c_str(),
                interfaceId.c_str());

    PORT_HANDLE remote = nullptr;
    gentl.Check(gentl.DevGetPort(device, &remote), "DevGetPort");
    GenApi::CNodeMapRef camera;
    LoadDescription(gentl, remote, camera);
    CRemotePort port(gentl, remote);
    if (!camera._Connect(&port, "Device"))
        throw std::runtime_error("the camera description has no port named Device");
    if (options.pixelFormat.size())
        GenApi::CEnumerationPtr(camera._GetNode("PixelFormat"))->FromString(options.pixelFormat.c_str());
    if (options.width != 0)
        GenApi::CIntegerPtr(camera._GetNode("Width"))->SetValue(options.width);
    if (options.height != 0)
        GenApi::CIntegerPtr(camera._GetNode("Height"))->SetValue(options.height);
    if (options.testPattern.size())
        GenApi::CEnumerationPtr(camera._GetNode("TestPattern"))->FromString(options.testPattern.c_str());

    const std::string streamId = Text(gentl, "DevGetDataStreamID", [&](char* t, size_t* s) { return gentl.DevGetDataStreamID(device, 0, t, s); });
    DS_HANDLE stream = nullptr;
    gentl.Check(gentl.DevOpenDataStream(device, streamId.c_str(), &stream), "DevOpenDataStream");
    size_t payload = 0;
    INFO_DATATYPE type = 0;
    size_t size = sizeof(payload);
    gentl.Check(gentl.DSGetInfo(stream, STREAM_INFO_PAYLOAD_SIZE, &type, &payload, &size), "DSGetInfo");
    std::vector<BUFFER_HANDLE> buffers(options.buffers);
    for (BUFFER_HANDLE& buffer : buffers)
    {
        gentl.Check(gentl.DSAllocAndAnnounceBuffer(stream, payload, nullptr, &buffer), "DSAllocAndAnnounceBuffer");
        gentl.Check(gentl.DSQueueBuffer(stream, buffer), "DSQueueBuffer");
    }
    EVENT_HANDLE newBuffer = nullptr;
    gentl.Check(gentl.GCRegisterEvent(stream, EVENT_NEW_BUFFER, &newBuffer), "GCRegisterEvent");
    if (options.save)
        mkdir(options.output.c_str(), 0755);

    GenApi::CIntegerPtr locked(camera._GetNode("TLParamsLocked"));
    if (locked.IsValid())
        locked->SetValue(1);
    gentl.Check(gentl.DSStartAcquisition(stream, ACQ_START_FLAGS_DEFAULT, options.frames), "DSStartAcquisition");
    GenApi::CCommandPtr(camera._GetNode("AcquisitionStart"))->Execute();

    using Clock = std::chrono::steady_clock;
    Clock::time_point first{}, last{};
    std::string format;
    for (unsigned frame = 0; frame < options.frames; ++frame)
    {
        EVENT_NEW_BUFFER_DATA data{};
        size = sizeof(data);
        gentl.Check(gentl.EventGetData(newBuffer, &data, &size, options.timeoutMs), "EventGetData");
        last = Clock::now();
        if (frame == 0)
            first = last;
        const BUFFER_HANDLE buffer = data.BufferHandle;
        const auto* base = BufferInfo<const uint8_t*>(gentl, stream, buffer, BUFFER_INFO_BASE);
        const size_t offset = BufferInfo<size_t>(gentl, stream, buffer, BUFFER_INFO_IMAGEOFFSET);
        const size_t filled = BufferInfo<size_t>(gentl, stream, buffer, BUFFER_INFO_SIZE_FILLED);
        const auto width = static_cast<uint32_t>(BufferInfo<size_t>(gentl, stream, buffer, BUFFER_INFO_WIDTH));
        const auto height = static_cast<uint32_t>(BufferInfo<size_t>(gentl, stream, buffer, BUFFER_INFO_HEIGHT));
        const uint64_t pfnc = BufferInfo<uint64_t>(gentl, stream, buffer, BUFFER_INFO_PIXELFORMAT);
        const uint64_t frameId = BufferInfo<uint64_t>(gentl, stream, buffer, BUFFER_INFO_FRAMEID);
        format = std::to_string(width) + "x" + std::to_string(height) + " " + PixelFormatName(pfnc);
        if (options.save)
        {
            char stem[64];
            std::snprintf(stem, sizeof(stem), "/frame_%04u", frame + 1);
            const std::string written = WriteImage(options.output + stem, pfnc, width, height, base + offset,
                                                   filled - std::min(filled, offset));
            std::printf("Frame %llu: %s\n", static_cast<unsigned long long>(frameId), written.c_str());
        }
        gentl.Check(gentl.DSQueueBuffer(stream, buffer), "DSQueueBuffer");
    }
    // The rate counts the intervals between the first and the last frame.
    const double seconds = std::chrono::duration<double>(last - first).count();
    if (options.frames > 1 && seconds > 0)
        std::printf("Grabbed %u frames (%s) in %.3f s: %.1f frames/s\n", options.frames, format.c_str(), seconds,
                    (options.frames - 1) / seconds);
    else
        std::printf("Grabbed %u frame (%s)\n", options.frames, format.c_str());

    GenApi::CCommandPtr(camera._GetNode("AcquisitionStop"))->Execute();
    gentl.Check(gentl.DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT), "DSStopAcquisition");
    if (locked.IsValid())
        locked->SetValue(0);
    gentl.Check(gentl.DSFlushQueue(stream, ACQ_QUEUE_ALL_DISCARD), "DSFlushQueue");
    for (BUFFER_HANDLE buffer : buffers)
        gentl.Check(gentl.DSRevokeBuffer(stream, buffer, nullptr, nullptr), "DSRevokeBuffer");
    gentl.Check(gentl.GCUnregisterEvent(stream, EVENT_NEW_BUFFER), "GCUnregisterEvent");
    gentl.Check(gentl.DSClose(stream), "DSClose");
    gentl.Check(gentl.DevClose(device), "DevClose");
    gentl.Check(gentl.IFClose(iface), "IFClose");
    gentl.Check(gentl.TLClose(system), "TLClose");
    gentl.Check(gentl.GCCloseLib(), "GCCloseLib");
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    Options_t options;
    CLI::App app{"Grabs frames from the first camera of a GenTL producer and writes them as PGM/PPM files."};
    app.add_option("-n,--frames", options.frames, "Frames to grab")->check(CLI::PositiveNumber);
    app.add_option("-o,--output", options.output, "Folder for the image files");
    app.add_option("-p,--producer", options.producer, "File name of the producer to prefer on GENICAM_GENTL64_PATH");
    app.add_option("-i,--interface", options.interfaceType, "Only interfaces of this transport type (U3V, GEV, CXP)");
    app.add_option("--width", options.width, "Width to set");
    app.add_option("--height", options.height, "Height to set");
    app.add_option("--pixel-format", options.pixelFormat, "PixelFormat to set (e.g. Mono8, RGB8, BayerRG8)");
    app.add_option("--test-pattern", options.testPattern, "TestPattern to set (GreyDiagonalRampMoving, ColorBar, FrameCounter)");
    app.add_option("-b,--buffers", options.buffers, "Buffers to announce")->check(CLI::PositiveNumber);
    app.add_option("-t,--timeout", options.timeoutMs, "Time-out per frame in milliseconds");
    app.add_flag("!--no-save", options.save, "Grab without writing files (to measure frames/s)");
    CLI11_PARSE(app, argc, argv);
    try
    {
        return Grab(options);
    }
    catch (const GenICam::GenericException& error)
    {
        std::fprintf(stderr, "gentl-grab: %s\n", error.GetDescription());
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "gentl-grab: %s\n", error.what());
    }
    return 1;
}
