// Image buffers: CopyImage against memcpy of the same bytes (timed interleaved in the same
// iterations), test chart fill rate against memset, and the cost of one pixel component access.
#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>

#include <benchmark/benchmark.h>

#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvImage.h>
#include <QvApi/QvImageBuffer.h>
#include <QvApi/QvPixelComponent.h>

using namespace QvApi;

namespace
{
constexpr size_t kWidth = 4096;
constexpr size_t kHeight = 3000;

struct Library
{
    Library() { QvApiInitialize(QVAPI_VERSION); }
    ~Library() { QvApiTerminate(); }
};

struct ReleaseBuffer
{
    void operator()(IQvImageBufferReleasable* p) const { p->Release(); }
};
using BufferPtr = std::unique_ptr<IQvImageBufferReleasable, ReleaseBuffer>;

double Seconds(std::chrono::steady_clock::duration d)
{
    return std::chrono::duration<double>(d).count();
}

// CopyImage of a 4096 x 3000 image. sourceAlignment 0 gives the destination's own pitch (one
// block per plane); another value pads the source lines so that every line is copied alone.
// The baseline is one memcpy of the bytes CopyImage moves, between the same two blocks.
void CopyImage(benchmark::State& state, EQvPixelFormatNamingConvention_t format, size_t sourceAlignment)
{
    Library library;
    BufferPtr source(CreateIQvImageBuffer(nullptr));
    source->SetSize(kWidth, kHeight, format, sourceAlignment);
    memset(source->GetIQvImage()->GetImageBuffer(), 0x5A, source->GetIQvImage()->GetImagePlanePitch());
    BufferPtr destination(CreateIQvImageBuffer(nullptr));
    destination->CopyImage(source->GetIQvImage()); // allocates once; every copy below reuses it

    const size_t lineBytes = GetIQvPixelFormatInfo(format)->GetRequiredLinePitch(kWidth, 1);
    const size_t bytes = lineBytes * kHeight;
    void* pSource = source->GetIQvImage()->GetImageBuffer();
    void* pDestination = destination->GetIQvImage()->GetImageBuffer();

    // Whichever copy runs first in an iteration was measured up to 30% slower on this machine
    // (it follows the other's writes to the destination), so the order alternates.
    double copySeconds = 0, memcpySeconds = 0;
    bool copyFirst = true;
    for (auto _ : state)
    {
        auto timed = [](auto&& copy) {
            const auto start = std::chrono::steady_clock::now();
            copy();
            benchmark::ClobberMemory();
            return Seconds(std::chrono::steady_clock::now() - start);
        };
        auto copyImage = [&] { destination->CopyImage(source->GetIQvImage()); };
        auto copyBytes = [&] { memcpy(pDestination, pSource, bytes); };
        double copy, plain;
        if (copyFirst)
        {
            copy = timed(copyImage);
            plain = timed(copyBytes);
        }
        else
        {
            plain = timed(copyBytes);
            copy = timed(copyImage);
        }
        copyFirst = !copyFirst;
        copySeconds += copy;
        memcpySeconds += plain;
        state.SetIterationTime(copy);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["memcpy_GBps"] = bytes * state.iterations() / memcpySeconds / 1e9;
    state.counters["ratio_to_memcpy"] = memcpySeconds / copySeconds;
    state.counters["src_pitch"] = static_cast<double>(source->GetIQvImage()->GetImageLinePitch());
    state.counters["dst_pitch"] = static_cast<double>(destination->GetIQvImage()->GetImageLinePitch());
}

void BM_CopyImage_Mono8_EqualPitch(benchmark::State& state)
{
    CopyImage(state, QvPFNC_Mono8, 0);
}
void BM_CopyImage_Mono8_UnequalPitch(benchmark::State& state)
{
    CopyImage(state, QvPFNC_Mono8, kWidth + 64);
}
void BM_CopyImage_BGR8_EqualPitch(benchmark::State& state)
{
    CopyImage(state, QvPFNC_BGR8, 0);
}
void BM_CopyImage_BGR8_UnequalPitch(benchmark::State& state)
{
    CopyImage(state, QvPFNC_BGR8, 3 * kWidth + 64);
}
BENCHMARK(BM_CopyImage_Mono8_EqualPitch)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CopyImage_Mono8_UnequalPitch)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CopyImage_BGR8_EqualPitch)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CopyImage_BGR8_UnequalPitch)->UseManualTime()->Unit(benchmark::kMillisecond);

// CreateBuffer with the test chart on a reused 4096 x 3000 block; the baseline is memset of the
// image's bytes in the same iterations.
void Chart(benchmark::State& state, EQvPixelFormatNamingConvention_t format)
{
    Library library;
    BufferPtr buffer(CreateIQvImageBuffer(nullptr));
    buffer->CreateBuffer(kWidth, kHeight, format, QvMemoryInitialization_Zero);
    const size_t bytes = buffer->GetIQvImage()->GetImagePlanePitch();
    double chartSeconds = 0, memsetSeconds = 0;
    for (auto _ : state)
    {
        const auto t0 = std::chrono::steady_clock::now();
        buffer->CreateBuffer(kWidth, kHeight, format, QvMemoryInitialization_Chart);
        benchmark::ClobberMemory();
        const auto t1 = std::chrono::steady_clock::now();
        memset(buffer->GetIQvImage()->GetImageBuffer(), 0, bytes);
        benchmark::ClobberMemory();
        const auto t2 = std::chrono::steady_clock::now();
        chartSeconds += Seconds(t1 - t0);
        memsetSeconds += Seconds(t2 - t1);
        state.SetIterationTime(Seconds(t1 - t0));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["Mpixel_per_s"] = kWidth * kHeight * state.iterations() / chartSeconds / 1e6;
    state.counters["ratio_to_memset"] = memsetSeconds / chartSeconds;
}

void BM_Chart_Mono8(benchmark::State& state)
{
    Chart(state, QvPFNC_Mono8);
}
void BM_Chart_Mono12(benchmark::State& state)
{
    Chart(state, QvPFNC_Mono12);
}
void BM_Chart_BGR8(benchmark::State& state)
{
    Chart(state, QvPFNC_BGR8);
}
void BM_Chart_BGRa8(benchmark::State& state)
{
    Chart(state, QvPFNC_BGRa8);
}
void BM_Chart_BGR16(benchmark::State& state)
{
    Chart(state, QvPFNC_BGR16);
}
BENCHMARK(BM_Chart_Mono8)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Chart_Mono12)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Chart_BGR8)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Chart_BGRa8)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Chart_BGR16)->UseManualTime()->Unit(benchmark::kMillisecond);

// One GetIQvPixelComponentValue() plus reading its first value per iteration, walking the
// pixels of a 256 x 256 image; the time per iteration is the time per pixel.
void PixelComponent(benchmark::State& state, EQvPixelFormatNamingConvention_t format, bool throughView)
{
    Library library;
    BufferPtr buffer(CreateIQvImageBuffer(nullptr));
    buffer->CreateBuffer(256, 256, format, QvMemoryInitialization_Zero);
    IQvImage* pImage = buffer->GetIQvImage();
    if (throughView)
        pImage = pImage->GetROIImage(0, 0, 128, 128);
    const size_t width = pImage->GetImageWidth(), height = pImage->GetImageHeight();
    size_t x = 0, y = 0;
    uint64_t sum = 0;
    for (auto _ : state)
    {
        sum += pImage->GetIQvPixelComponentValue(x, y)->GetValue(0);
        if (++x == width)
        {
            x = 0;
            if (++y == height)
                y = 0;
        }
    }
    benchmark::DoNotOptimize(sum);
}

void BM_PixelComponent_Mono8(benchmark::State& state)
{
    PixelComponent(state, QvPFNC_Mono8, false);
}
void BM_PixelComponent_BayerRG12(benchmark::State& state)
{
    PixelComponent(state, QvPFNC_BayerRG12, false);
}
void BM_PixelComponent_Mono10p(benchmark::State& state)
{
    PixelComponent(state, QvPFNC_Mono10p, false);
}
void BM_PixelComponent_BGR8(benchmark::State& state)
{
    PixelComponent(state, QvPFNC_BGR8, false);
}
void BM_PixelComponent_YCbCr422_8(benchmark::State& state)
{
    PixelComponent(state, QvPFNC_YCbCr422_8, false);
}
void BM_PixelComponent_Mono8_ThroughView(benchmark::State& state)
{
    PixelComponent(state, QvPFNC_Mono8, true);
}
BENCHMARK(BM_PixelComponent_Mono8);
BENCHMARK(BM_PixelComponent_BayerRG12);
BENCHMARK(BM_PixelComponent_Mono10p);
BENCHMARK(BM_PixelComponent_BGR8);
BENCHMARK(BM_PixelComponent_YCbCr422_8);
BENCHMARK(BM_PixelComponent_Mono8_ThroughView);
} // namespace
