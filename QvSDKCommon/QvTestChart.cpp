#include "QvSDKCommon/QvTestChart.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvImageBuffer.h>

#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// What a writer needs from the image. `limit` bounds every write to the image's own bytes:
// the 16-bit colour writer also draws "RGB8" and "RGBa8" images, whose lines are half as long
// as it writes, and must not run past the last line.
struct ChartTarget_t
{
    uint8_t* pBuffer;
    size_t width;
    size_t height;
    size_t linePitch;
    size_t limit;
    const IQvPixelFormatInfo* pInfo;
};

ChartTarget_t ReadTarget(IQvImage* pIQvImage)
{
    ChartTarget_t target{};
    target.pBuffer = static_cast<uint8_t*>(pIQvImage->GetImageBuffer());
    target.width = pIQvImage->GetImageWidth();
    target.height = pIQvImage->GetImageHeight();
    target.linePitch = pIQvImage->GetImageLinePitch();
    target.limit = target.height * target.linePitch;
    target.pInfo = GetIQvPixelFormatInfo(pIQvImage->GetImagePixelFormat());
    return target;
}

// How many bytes of a line of `bytes` bytes starting at line y stay inside the image.
size_t BytesInside(const ChartTarget_t& target, size_t y, size_t bytes)
{
    const size_t start = y * target.linePitch;
    return start >= target.limit ? 0 : std::min(bytes, target.limit - start);
}

template <typename T>
void CopyLine(const ChartTarget_t& target, size_t y, const std::vector<T>& line)
{
    const size_t bytes = BytesInside(target, y, line.size() * sizeof(T));
    if (bytes != 0)
        memcpy(target.pBuffer + y * target.linePitch, line.data(), bytes);
}

template <typename T>
std::vector<T> MakeLine(size_t samples)
{
    try
    {
        return std::vector<T>(samples);
    }
    QV_CATCH_BAD_ALLOC()
}

// ---- Grey-scale chart ---------------------------------------------------------------------------

constexpr unsigned kGreySteps[11] = {255, 234, 212, 190, 167, 143, 120, 94, 67, 37, 0};

// Background 131, a top margin of H/10 lines, then four bands of H/5 lines between side margins
// of W/24 and the rest: steps white to black, an ascending ramp, a descending ramp, steps black
// to white; the remaining lines background. Values scaled to the format's valid bits.
template <typename T>
bool MakeChartMono(IQvImage* pIQvImage, uint32_t memoryInitialization)
{
    if (memoryInitialization != QvMemoryInitialization_Chart)
        return false;
    const ChartTarget_t target = ReadTarget(pIQvImage);
    const size_t W = target.width;
    const size_t H = target.height;
    const uint64_t validBits = target.pInfo->GetEachComponentValidBitCount();
    const uint64_t shift = validBits - 8;
    const T background = static_cast<T>(131u << shift);
    const uint64_t maximum = (uint64_t(1) << validBits) - 1;

    const size_t left = W / 24;
    const size_t cell = W / 12;
    const size_t patternWidth = 11 * cell;
    const size_t top = H / 10;
    const size_t band = H / 5;

    std::vector<T> line = MakeLine<T>(W);
    std::fill(line.begin(), line.end(), background);
    for (size_t y = 0; y < top; ++y)
        CopyLine(target, y, line);

    T* pPattern = line.data() + left;
    for (size_t bandIndex = 0; bandIndex < 4; ++bandIndex)
    {
        for (size_t i = 0; i < patternWidth; ++i)
        {
            uint64_t value = 0;
            switch (bandIndex)
            {
            case 0: value = uint64_t(kGreySteps[i / cell]) << shift; break;
            case 1: value = (i * maximum) / (patternWidth - 1); break;
            case 2: value = ((patternWidth - 1 - i) * maximum) / (patternWidth - 1); break;
            default: value = uint64_t(kGreySteps[10 - i / cell]) << shift; break;
            }
            pPattern[i] = static_cast<T>(value);
        }
        const size_t first = top + bandIndex * band;
        for (size_t y = first; y < first + band; ++y)
            CopyLine(target, y, line);
    }

    std::fill(line.begin(), line.end(), background);
    for (size_t y = top + 4 * band; y < H; ++y)
        CopyLine(target, y, line);
    return true;
}

// ---- Colour chart -------------------------------------------------------------------------------

// The 6 x 4 patches, (R, G, B) at 8 bits, row by row.
constexpr uint8_t kPatchColours[4][6][3] = {
    {{115, 82, 68}, {194, 150, 130}, {98, 122, 157}, {87, 108, 67}, {133, 128, 177}, {103, 189, 170}},
    {{214, 126, 44}, {80, 91, 166}, {193, 90, 99}, {94, 60, 108}, {157, 188, 64}, {224, 163, 46}},
    {{56, 61, 150}, {70, 148, 73}, {175, 54, 60}, {231, 199, 31}, {187, 86, 149}, {8, 133, 161}},
    {{243, 243, 242}, {200, 200, 200}, {160, 160, 160}, {122, 122, 121}, {85, 85, 85}, {52, 52, 52}},
};

template <typename T>
void Store(uint8_t* pByte, T value)
{
    memcpy(pByte, &value, sizeof(T)); // the application's allocator may hand out any alignment
}

// Patches of W/7 x H/5 with gaps of W/77 and H/45 and margins of three gaps, on black. Samples
// in R, G, B order or B, G, R; a fourth (alpha) sample of a patch pixel is left as it is.
template <typename T>
bool MakeChartBGR(IQvImage* pIQvImage, uint32_t memoryInitialization, bool rgbOrder)
{
    if (memoryInitialization != QvMemoryInitialization_Chart)
        return false;
    const ChartTarget_t target = ReadTarget(pIQvImage);
    const size_t W = target.width;
    const size_t H = target.height;
    const size_t K = target.pInfo->GetEachPixelTotalComponentCount();
    const uint64_t shift = target.pInfo->GetEachComponentValidBitCount() - 8;

    const size_t patchWidth = W / 7;
    const size_t gap = W / 77;
    const size_t left = 3 * gap;
    const size_t patchHeight = H / 5;
    const size_t verticalGap = H / 45;
    const size_t top = 3 * verticalGap;

    // The patches' samples in storage order.
    T samples[4][6][3];
    for (size_t row = 0; row < 4; ++row)
        for (size_t patch = 0; patch < 6; ++patch)
            for (size_t c = 0; c < 3; ++c)
            {
                const size_t source = rgbOrder ? c : 2 - c;
                samples[row][patch][c] = static_cast<T>(uint64_t(kPatchColours[row][patch][source]) << shift);
            }

    const size_t lineSamples = W * K;
    std::vector<T> black = MakeLine<T>(lineSamples);
    std::vector<T> patchLine = K == 3 ? MakeLine<T>(lineSamples) : std::vector<T>();
    size_t drawnRow = 4; // the patch row patchLine holds; 4 for none

    for (size_t y = 0; y < H; ++y)
    {
        // Images under five lines have patches of no height: all black.
        const size_t rowPeriod = patchHeight + verticalGap;
        const size_t inRows = y - top; // wraps for the top margin, which the test below rejects
        const size_t patchRow = y < top || rowPeriod == 0 ? 4 : inRows / rowPeriod;
        if (patchRow >= 4 || inRows % rowPeriod >= patchHeight)
        {
            CopyLine(target, y, black);
            continue;
        }
        if (K == 3)
        {
            // Every line of a patch row is the same: draw it once and copy it.
            if (patchRow != drawnRow)
            {
                std::fill(patchLine.begin(), patchLine.end(), T(0));
                for (size_t patch = 0; patch < 6; ++patch)
                {
                    T* pPixel = patchLine.data() + (left + patch * (patchWidth + gap)) * 3;
                    for (size_t i = 0; i < patchWidth; ++i, pPixel += 3)
                        std::copy(samples[patchRow][patch], samples[patchRow][patch] + 3, pPixel);
                }
                drawnRow = patchRow;
            }
            CopyLine(target, y, patchLine);
            continue;
        }
        // With an alpha sample the line cannot be copied whole: alpha of patch pixels stays.
        uint8_t* pLine = target.pBuffer + y * target.linePitch;
        const size_t samplesInside = BytesInside(target, y, lineSamples * sizeof(T)) / sizeof(T);
        if (samplesInside == lineSamples)
        {
            // The whole line lies inside the image: runs of black at once, three samples per
            // patch pixel.
            const size_t pixelBytes = K * sizeof(T);
            uint8_t* pByte = pLine;
            memset(pByte, 0, left * pixelBytes);
            pByte += left * pixelBytes;
            for (size_t patch = 0; patch < 6; ++patch)
            {
                for (size_t i = 0; i < patchWidth; ++i, pByte += pixelBytes)
                    memcpy(pByte, samples[patchRow][patch], 3 * sizeof(T));
                memset(pByte, 0, gap * pixelBytes);
                pByte += gap * pixelBytes;
            }
            memset(pByte, 0, static_cast<size_t>(pLine + W * pixelBytes - pByte));
            continue;
        }
        auto put = [&](size_t sample, T value) {
            if (sample < samplesInside)
                Store(pLine + sample * sizeof(T), value);
        };
        size_t x = 0;
        for (; x < left; ++x)
            for (size_t c = 0; c < K; ++c)
                put(x * K + c, T(0));
        for (size_t patch = 0; patch < 6; ++patch)
        {
            for (size_t i = 0; i < patchWidth; ++i, ++x)
                for (size_t c = 0; c < 3; ++c)
                    put(x * K + c, samples[patchRow][patch][c]);
            for (size_t i = 0; i < gap; ++i, ++x)
                for (size_t c = 0; c < K; ++c)
                    put(x * K + c, T(0));
        }
        for (; x < W; ++x)
            for (size_t c = 0; c < K; ++c)
                put(x * K + c, T(0));
    }
    return true;
}

bool IsRGBOrdered(IQvImage* pIQvImage)
{
    const EQvPixelFormatNamingConvention_t format = pIQvImage->GetImagePixelFormat();
    return format == QvPFNC_RGB8 || format == QvPFNC_RGBa8;
}
} // namespace

bool MakeChartMono8(IQvImage* pIQvImage, uint32_t memoryInitialization)
{
    return MakeChartMono<unsigned char>(pIQvImage, memoryInitialization);
}

bool MakeChartMono16(IQvImage* pIQvImage, uint32_t memoryInitialization)
{
    return MakeChartMono<unsigned short>(pIQvImage, memoryInitialization);
}

bool MakeChartBGR8(IQvImage* pIQvImage, uint32_t memoryInitialization)
{
    return MakeChartBGR<unsigned char>(pIQvImage, memoryInitialization, IsRGBOrdered(pIQvImage));
}

bool MakeChartBGR16(IQvImage* pIQvImage, uint32_t memoryInitialization)
{
    return MakeChartBGR<unsigned short>(pIQvImage, memoryInitialization, false);
}

ChartWriter_t GetChartWriter(EQvPixelFormatNamingConvention_t pixelFormat)
{
    switch (pixelFormat)
    {
    case QvPFNC_Mono8:
        return MakeChartMono8;
    case QvPFNC_Mono10:
    case QvPFNC_Mono12:
    case QvPFNC_Mono14:
    case QvPFNC_Mono16:
        return MakeChartMono16;
    case QvPFNC_BGR8:
    case QvPFNC_BGRa8:
        return MakeChartBGR8;
    // "RGB8" and "RGBa8" go to the 16-bit writer with B, G, R order: kept as applications know
    // it; the writer stays inside the image.
    case QvPFNC_RGB8:
    case QvPFNC_RGBa8:
    case QvPFNC_BGR10:
    case QvPFNC_BGR12:
    case QvPFNC_BGR14:
    case QvPFNC_BGR16:
    case QvPFNC_BGRa10:
    case QvPFNC_BGRa12:
    case QvPFNC_BGRa14:
    case QvPFNC_BGRa16:
        return MakeChartBGR16;
    default:
        return nullptr;
    }
}
} // namespace QvApi
