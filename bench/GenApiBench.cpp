// GenApi engine against Aravis's GenICam engine, side by side in one run:
//  - load time of three real descriptions (ours: CNodeMapRef::_LoadXMLFromString; Aravis:
//    arv_gc_new without a device), destruction excluded for both;
//  - integer feature reads (cached and uncached) and writes of an unchanged value, on
//    aravis_fake-camera.xml for both engines. Aravis cannot read registers without a device (its
//    ports report "No device set"), so it runs on its in-process ArvFakeDevice serving that same
//    description; ours runs on a CMemoryPort holding a copy of that fake camera's register bytes.
//    Both register spaces are plain host memory, so the numbers compare the engines.
//
// Descriptions are read at run time from QV_GENICAM_XML_DIR (environment, else the build's
// default); a benchmark whose file is absent is skipped with a message.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <arv.h>
#include <benchmark/benchmark.h>

#include <GenApi/GenApi.h>
#include <GenApi/MemoryPort.h>

using namespace GenApi;

namespace
{
const char* const kLoadFiles[] = {"basler_aca1440-73gm", "flir_orx-10g-245s8m", "aravis_fake-camera"};
const char* const kFakeCamera = "aravis_fake-camera";
// Integer feature: an Integer with pMax whose value comes from an IntReg (pValue).
const char* const kFeature = "Width";
// Register bytes copied from the fake camera (its description uses addresses below this).
constexpr int64_t kFakeRegisterBytes = 0x10000;

std::string DescriptionDir()
{
    if (const char* pDir = std::getenv("QV_GENICAM_XML_DIR"))
        return pDir;
    return QV_GENICAM_XML_DIR_DEFAULT;
}

std::string PathOf(const char* name)
{
    return DescriptionDir() + "/" + name + ".xml";
}

// The file's bytes, or "" when it cannot be read.
std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return std::string();
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string SkipMessage(const char* name)
{
    return std::string(name) + ".xml is absent from " + DescriptionDir() + ": skipped";
}

void LoadOurs(benchmark::State& state, const char* name)
{
    const std::string xml = ReadFile(PathOf(name));
    if (xml.empty())
    {
        state.SkipWithError(SkipMessage(name).c_str());
        return;
    }
    const GenICam::gcstring text(xml);
    for (auto _ : state)
    {
        auto pMap = std::make_unique<CNodeMapRef>();
        pMap->_LoadXMLFromString(text);
        benchmark::DoNotOptimize(pMap->_Ptr);
        state.PauseTiming();
        pMap.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(xml.size()));
}

void LoadAravis(benchmark::State& state, const char* name)
{
    const std::string xml = ReadFile(PathOf(name));
    if (xml.empty())
    {
        state.SkipWithError(SkipMessage(name).c_str());
        return;
    }
    for (auto _ : state)
    {
        ArvGc* pGc = arv_gc_new(nullptr, xml.data(), xml.size());
        benchmark::DoNotOptimize(pGc);
        state.PauseTiming();
        g_object_unref(pGc);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(xml.size()));
}

/// Aravis's fake device serving the shared fake-camera description.
struct AravisFake
{
    ArvDevice* pDevice = nullptr;
    ArvGc* pGc = nullptr;         // owned by the device
    ArvGcNode* pFeature = nullptr; // owned by the node map

    AravisFake()
    {
        arv_set_fake_camera_genicam_filename(PathOf(kFakeCamera).c_str());
        GError* pError = nullptr;
        pDevice = arv_fake_device_new("GenApiBench", &pError);
        if (!pDevice)
        {
            std::fprintf(stderr, "arv_fake_device_new: %s\n", pError ? pError->message : "failed");
            g_clear_error(&pError);
            return;
        }
        pGc = arv_device_get_genicam(pDevice);
        pFeature = arv_gc_get_node(pGc, kFeature);
    }
    ~AravisFake()
    {
        if (pDevice)
            g_object_unref(pDevice);
    }
    bool Ok() const { return pFeature != nullptr; }
};

/// Our node map on a memory port holding the fake camera's register bytes.
struct OursOnFakeRegisters
{
    CMemoryPort port;
    CNodeMapRef nodeMap;
    CIntegerPtr pFeature;

    explicit OursOnFakeRegisters(AravisFake& aravis)
    {
        ArvFakeCamera* pCamera = arv_fake_device_get_fake_camera(ARV_FAKE_DEVICE(aravis.pDevice));
        std::vector<uint8_t> bytes(static_cast<size_t>(kFakeRegisterBytes));
        if (!arv_fake_camera_read_memory(pCamera, 0, static_cast<guint32>(bytes.size()), bytes.data()))
            return;
        port.Poke(0, bytes);
        nodeMap._LoadXMLFromFile(PathOf(kFakeCamera).c_str());
        nodeMap._Connect(&port, "Device");
        pFeature = nodeMap._GetNode(kFeature);
    }
};

bool Prepare(benchmark::State& state)
{
    if (ReadFile(PathOf(kFakeCamera)).empty())
    {
        state.SkipWithError(SkipMessage(kFakeCamera).c_str());
        return false;
    }
    return true;
}

void ReadOurs(benchmark::State& state, bool cached)
{
    if (!Prepare(state))
        return;
    AravisFake aravis;
    OursOnFakeRegisters ours(aravis);
    if (!aravis.Ok() || !ours.pFeature)
    {
        state.SkipWithError("the fake camera could not be set up");
        return;
    }
    const int64_t expected = arv_gc_integer_get_value(ARV_GC_INTEGER(aravis.pFeature), nullptr);
    if (ours.pFeature->GetValue() != expected)
    {
        state.SkipWithError("the engines read different values");
        return;
    }
    ours.port.ResetCounts();
    for (auto _ : state)
        benchmark::DoNotOptimize(ours.pFeature->GetValue(false, !cached));
    state.counters["port_reads_per_read"] =
        static_cast<double>(ours.port.GetReadCount()) / static_cast<double>(state.iterations());
}

void ReadAravis(benchmark::State& state, bool cached)
{
    if (!Prepare(state))
        return;
    AravisFake aravis;
    if (!aravis.Ok())
    {
        state.SkipWithError("the fake camera could not be set up");
        return;
    }
    arv_gc_set_register_cache_policy(aravis.pGc, cached ? ARV_REGISTER_CACHE_POLICY_ENABLE
                                                         : ARV_REGISTER_CACHE_POLICY_DISABLE);
    ArvGcInteger* pInteger = ARV_GC_INTEGER(aravis.pFeature);
    GError* pError = nullptr;
    arv_gc_integer_get_value(pInteger, &pError);
    if (pError)
    {
        state.SkipWithError(pError->message);
        g_clear_error(&pError);
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(arv_gc_integer_get_value(pInteger, nullptr));
}

void WriteOurs(benchmark::State& state)
{
    if (!Prepare(state))
        return;
    AravisFake aravis;
    OursOnFakeRegisters ours(aravis);
    if (!aravis.Ok() || !ours.pFeature)
    {
        state.SkipWithError("the fake camera could not be set up");
        return;
    }
    const int64_t value = ours.pFeature->GetValue();
    ours.port.ResetCounts();
    for (auto _ : state)
        ours.pFeature->SetValue(value); // verified against min, max and increment
    state.counters["port_writes_per_write"] =
        static_cast<double>(ours.port.GetWriteCount()) / static_cast<double>(state.iterations());
}

void WriteAravis(benchmark::State& state)
{
    if (!Prepare(state))
        return;
    AravisFake aravis;
    if (!aravis.Ok())
    {
        state.SkipWithError("the fake camera could not be set up");
        return;
    }
    // Range checked and cached, like ours.
    arv_gc_set_range_check_policy(aravis.pGc, ARV_RANGE_CHECK_POLICY_ENABLE);
    arv_gc_set_register_cache_policy(aravis.pGc, ARV_REGISTER_CACHE_POLICY_ENABLE);
    ArvGcInteger* pInteger = ARV_GC_INTEGER(aravis.pFeature);
    const int64_t value = arv_gc_integer_get_value(pInteger, nullptr);
    GError* pError = nullptr;
    arv_gc_integer_set_value(pInteger, value, &pError);
    if (pError)
    {
        state.SkipWithError(pError->message);
        g_clear_error(&pError);
        return;
    }
    for (auto _ : state)
        arv_gc_integer_set_value(pInteger, value, nullptr);
}

int RegisterAll()
{
    for (const char* name : kLoadFiles)
    {
        benchmark::RegisterBenchmark((std::string("Load/Qv/") + name).c_str(), LoadOurs, name)
            ->Unit(benchmark::kMillisecond)
            ->MeasureProcessCPUTime()
            ->UseRealTime();
        benchmark::RegisterBenchmark((std::string("Load/Aravis/") + name).c_str(), LoadAravis, name)
            ->Unit(benchmark::kMillisecond)
            ->MeasureProcessCPUTime()
            ->UseRealTime();
    }
    benchmark::RegisterBenchmark("IntegerRead/Cached/Qv", ReadOurs, true);
    benchmark::RegisterBenchmark("IntegerRead/Cached/Aravis", ReadAravis, true);
    benchmark::RegisterBenchmark("IntegerRead/Uncached/Qv", ReadOurs, false);
    benchmark::RegisterBenchmark("IntegerRead/Uncached/Aravis", ReadAravis, false);
    benchmark::RegisterBenchmark("IntegerWrite/Unchanged/Qv", WriteOurs);
    benchmark::RegisterBenchmark("IntegerWrite/Unchanged/Aravis", WriteAravis);
    return 0;
}

const int kRegistered = RegisterAll();
} // namespace
