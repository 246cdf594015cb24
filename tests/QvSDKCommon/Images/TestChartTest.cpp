// Test charts: grey steps and ramps, colour patches, checked pixel by pixel against the geometry.
#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvImage.h>
#include <QvApi/QvImageBuffer.h>

#include "tests/QvApi_TL/Images/ImageTestSupport.h"

using namespace QvApi;
using QvApiTest::BufferPtr;
using QvApiTest::BytesOf;
using QvApiTest::GuardedAllocator;
using QvApiTest::MakeBuffer;

namespace
{
using TestChart = QvApiTest::ImageTest;

uint64_t Sample(const uint8_t* pBytes, size_t bytesPerSample)
{
    if (bytesPerSample == 1)
        return *pBytes;
    uint16_t value;
    memcpy(&value, pBytes, 2);
    return value;
}

// The grey value of pixel (x, y) of a W x H chart with `valid` significant bits.
uint64_t ExpectedGrey(size_t x, size_t y, size_t W, size_t H, unsigned valid)
{
    static const unsigned steps[11] = {255, 234, 212, 190, 167, 143, 120, 94, 67, 37, 0};
    const unsigned shift = valid - 8;
    const uint64_t background = uint64_t(131) << shift;
    const uint64_t maximum = (uint64_t(1) << valid) - 1;
    const size_t left = W / 24, cell = W / 12, pattern = 11 * cell, top = H / 10, band = H / 5;
    if (y < top || y >= top + 4 * band || x < left || x >= left + pattern)
        return background;
    const size_t i = x - left;
    switch ((y - top) / band)
    {
    case 0: return uint64_t(steps[i / cell]) << shift;
    case 1: return i * maximum / (pattern - 1);
    case 2: return (pattern - 1 - i) * maximum / (pattern - 1);
    default: return uint64_t(steps[10 - i / cell]) << shift;
    }
}

const unsigned kPatches[4][6][3] = {
    {{115, 82, 68}, {194, 150, 130}, {98, 122, 157}, {87, 108, 67}, {133, 128, 177}, {103, 189, 170}},
    {{214, 126, 44}, {80, 91, 166}, {193, 90, 99}, {94, 60, 108}, {157, 188, 64}, {224, 163, 46}},
    {{56, 61, 150}, {70, 148, 73}, {175, 54, 60}, {231, 199, 31}, {187, 86, 149}, {8, 133, 161}},
    {{243, 243, 242}, {200, 200, 200}, {160, 160, 160}, {122, 122, 121}, {85, 85, 85}, {52, 52, 52}},
};

// The (R, G, B) patch of pixel (x, y) of a W x H colour chart, or null on black.
const unsigned* ExpectedPatch(size_t x, size_t y, size_t W, size_t H)
{
    const size_t pw = W / 7, gap = W / 77, ph = H / 5, vgap = H / 45;
    if (y < 3 * vgap || x < 3 * gap || ph == 0 || pw == 0)
        return nullptr;
    const size_t row = (y - 3 * vgap) / (ph + vgap), column = (x - 3 * gap) / (pw + gap);
    if (row >= 4 || column >= 6 || (y - 3 * vgap) % (ph + vgap) >= ph || (x - 3 * gap) % (pw + gap) >= pw)
        return nullptr;
    return kPatches[row][column];
}

void CheckGreyChart(EQvPixelFormatNamingConvention_t format, size_t W, size_t H)
{
    const IQvPixelFormatInfo* pInfo = GetIQvPixelFormatInfo(format);
    SCOPED_TRACE(std::string(pInfo->GetName().c_str()) + " " + std::to_string(W) + " x " + std::to_string(H));
    GuardedAllocator allocator;
    BufferPtr buffer = MakeBuffer(&allocator);
    buffer->CreateBuffer(W, H, format, QvMemoryInitialization_Chart);
    IQvImage* pImage = buffer->GetIQvImage();
    const size_t bytesPerSample = pInfo->GetEachPixelTotalBitCount() / 8;
    const unsigned valid = static_cast<unsigned>(pInfo->GetEachComponentValidBitCount());
    for (size_t y = 0; y < H; ++y)
        for (size_t x = 0; x < W; ++x)
        {
            const uint8_t* pPixel = BytesOf(pImage) + y * pImage->GetImageLinePitch() + x * bytesPerSample;
            ASSERT_EQ(Sample(pPixel, bytesPerSample), ExpectedGrey(x, y, W, H, valid)) << "(" << x << ", " << y << ")";
        }
    EXPECT_TRUE(allocator.GuardsIntact());
}

void CheckColourChart(EQvPixelFormatNamingConvention_t format, size_t W, size_t H)
{
    const IQvPixelFormatInfo* pInfo = GetIQvPixelFormatInfo(format);
    SCOPED_TRACE(std::string(pInfo->GetName().c_str()) + " " + std::to_string(W) + " x " + std::to_string(H));
    GuardedAllocator allocator;
    BufferPtr buffer = MakeBuffer(&allocator);
    // Alpha of patch pixels keeps what was there before the chart.
    buffer->CreateBuffer(W, H, format, QvMemoryInitialization_FF);
    buffer->CreateBuffer(W, H, format, QvMemoryInitialization_Chart);
    IQvImage* pImage = buffer->GetIQvImage();
    const size_t bytesPerSample = pInfo->GetEachComponentTotalBitCount() / 8;
    const size_t K = pInfo->GetEachPixelTotalComponentCount();
    const unsigned shift = static_cast<unsigned>(pInfo->GetEachComponentValidBitCount()) - 8;
    const uint64_t alphaKept = bytesPerSample == 1 ? 0xFF : 0xFFFF;
    for (size_t y = 0; y < H; ++y)
        for (size_t x = 0; x < W; ++x)
        {
            const uint8_t* pPixel = BytesOf(pImage) + y * pImage->GetImageLinePitch() + x * K * bytesPerSample;
            const unsigned* pPatch = ExpectedPatch(x, y, W, H);
            for (size_t c = 0; c < K; ++c)
            {
                uint64_t expected = 0;
                if (pPatch != nullptr)
                    expected = c == 3 ? alphaKept : uint64_t(pPatch[2 - c]) << shift; // stored B, G, R
                ASSERT_EQ(Sample(pPixel + c * bytesPerSample, bytesPerSample), expected)
                    << "(" << x << ", " << y << ") sample " << c;
            }
        }
    EXPECT_TRUE(allocator.GuardsIntact());
}
} // namespace

TEST_F(TestChart, DrawsTheGreyChartOfTheTextbookExample)
{
    BufferPtr buffer = MakeBuffer();
    buffer->CreateBuffer(240, 100, QvPFNC_Mono8, QvMemoryInitialization_Chart);
    const uint8_t* pBytes = BytesOf(buffer->GetIQvImage());
    for (size_t y : {size_t(0), size_t(9), size_t(90), size_t(99)})
        for (size_t x = 0; x < 240; ++x)
            ASSERT_EQ(pBytes[y * 240 + x], 131) << x << ", " << y;
    const uint8_t steps[11] = {255, 234, 212, 190, 167, 143, 120, 94, 67, 37, 0};
    const uint8_t* pRow10 = pBytes + 10 * 240;
    for (size_t x = 0; x < 10; ++x)
    {
        EXPECT_EQ(pRow10[x], 131);
        EXPECT_EQ(pRow10[230 + x], 131);
    }
    for (size_t cell = 0; cell < 11; ++cell)
        for (size_t x = 0; x < 20; ++x)
            ASSERT_EQ(pRow10[10 + cell * 20 + x], steps[cell]) << cell;
    // Ramps end at the extremes; the last band climbs from black to white.
    EXPECT_EQ(pBytes[30 * 240 + 10], 0);
    EXPECT_EQ(pBytes[30 * 240 + 229], 255);
    EXPECT_EQ(pBytes[50 * 240 + 10], 255);
    EXPECT_EQ(pBytes[70 * 240 + 10], 0);
    EXPECT_EQ(pBytes[70 * 240 + 229], 255);
}

TEST_F(TestChart, DrawsTheGreyChartAtEveryDepthAndSize)
{
    for (EQvPixelFormatNamingConvention_t format : {QvPFNC_Mono8, QvPFNC_Mono10, QvPFNC_Mono12, QvPFNC_Mono14, QvPFNC_Mono16})
        for (auto size : {std::make_pair(240, 100), std::make_pair(37, 23), std::make_pair(11, 5), std::make_pair(1, 1),
                          std::make_pair(1001, 13)})
            CheckGreyChart(format, size.first, size.second);
}

TEST_F(TestChart, DrawsTheColourChartAtEveryDepthAndSize)
{
    for (EQvPixelFormatNamingConvention_t format : {QvPFNC_BGR8, QvPFNC_BGRa8, QvPFNC_BGR10, QvPFNC_BGR12, QvPFNC_BGR14,
                                                    QvPFNC_BGR16, QvPFNC_BGRa10, QvPFNC_BGRa16})
        for (auto size : {std::make_pair(154, 90), std::make_pair(700, 450), std::make_pair(23, 11), std::make_pair(5, 3)})
            CheckColourChart(format, size.first, size.second);
}

TEST_F(TestChart, DrawsEightBitRgbWithTheSixteenBitWriterWithoutLeavingTheImage)
{
    for (EQvPixelFormatNamingConvention_t format : {QvPFNC_RGB8, QvPFNC_RGBa8})
        for (auto size : {std::make_pair(154, 90), std::make_pair(31, 7), std::make_pair(1, 1)})
        {
            const size_t W = size.first, H = size.second;
            const IQvPixelFormatInfo* pInfo = GetIQvPixelFormatInfo(format);
            SCOPED_TRACE(std::string(pInfo->GetName().c_str()) + " " + std::to_string(W));
            const size_t K = pInfo->GetEachPixelTotalComponentCount();
            GuardedAllocator allocator;
            BufferPtr buffer = MakeBuffer(&allocator);
            buffer->CreateBuffer(W, H, format, QvMemoryInitialization_FF);
            buffer->CreateBuffer(W, H, format, QvMemoryInitialization_Chart);
            IQvImage* pImage = buffer->GetIQvImage();
            const size_t pitch = pImage->GetImageLinePitch();
            const size_t imageBytes = H * pitch;

            // What an unbounded writer of 16-bit B, G, R samples with a stride of K samples leaves,
            // line after line, in memory of twice the size.
            std::vector<uint8_t> unbounded(imageBytes + 2 * W * K * 2 + 16, 0xFF);
            for (size_t y = 0; y < H; ++y)
                for (size_t x = 0; x < W; ++x)
                {
                    const unsigned* pPatch = ExpectedPatch(x, y, W, H);
                    for (size_t c = 0; c < K; ++c)
                    {
                        if (pPatch != nullptr && c == 3)
                            continue;
                        const uint16_t value = pPatch == nullptr ? 0 : static_cast<uint16_t>(pPatch[2 - c]);
                        memcpy(&unbounded[y * pitch + (x * K + c) * 2], &value, 2);
                    }
                }
            // Inside the image the two agree byte for byte; nothing was written past it.
            EXPECT_EQ(0, memcmp(BytesOf(pImage), unbounded.data(), imageBytes));
            EXPECT_TRUE(allocator.GuardsIntact());
            const uint8_t* pBytes = BytesOf(pImage);
            for (size_t i = imageBytes; i < allocator.lastAllocateSize; ++i)
                ASSERT_EQ(pBytes[i], 0xFF) << i;
        }
}

TEST_F(TestChart, LeavesAReusedBlockPastTheImageAsItWas)
{
    GuardedAllocator allocator;
    BufferPtr buffer = MakeBuffer(&allocator);
    buffer->CreateBuffer(64, 64, QvPFNC_Mono8, QvMemoryInitialization_FF);
    buffer->CreateBuffer(32, 16, QvPFNC_Mono8, QvMemoryInitialization_Chart);
    const uint8_t* pBytes = BytesOf(buffer->GetIQvImage());
    EXPECT_EQ(pBytes[0], 131);
    for (size_t i = 32 * 16; i < 64 * 64; ++i)
        ASSERT_EQ(pBytes[i], 0xFF) << i;
}
