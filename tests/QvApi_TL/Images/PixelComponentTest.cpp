// Pixel component access: every reader family on hand-packed bytes, Bayer sites, range checks.
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvImage.h>
#include <QvApi/QvImageBuffer.h>
#include <QvApi/QvPixelComponent.h>

#include "tests/QvApi_TL/Images/ImageTestSupport.h"

using namespace QvApi;
using QvApiTest::BufferPtr;
using QvApiTest::ComponentsAt;
using QvApiTest::DescriptionOf;

namespace
{
using Components = std::vector<std::pair<uint32_t, uint64_t>>;

class PixelComponent : public QvApiTest::ImageTest
{
protected:
    // An image of the given format whose lines hold exactly \a lines (pitch aligned to 1 byte).
    IQvImage* Image(EQvPixelFormatNamingConvention_t format, size_t width,
                    std::initializer_list<std::vector<uint8_t>> lines)
    {
        m_buffer = QvApiTest::MakeBuffer();
        const size_t pitch = lines.begin()->size();
        m_buffer->SetSize(width, lines.size(), format, 1);
        EXPECT_EQ(m_buffer->GetIQvImage()->GetImageLinePitch(), pitch) << "test geometry";
        uint8_t* pBytes = QvApiTest::BytesOf(m_buffer->GetIQvImage());
        for (const std::vector<uint8_t>& line : lines)
            pBytes = std::copy(line.begin(), line.end(), pBytes);
        return m_buffer->GetIQvImage();
    }

    BufferPtr m_buffer;
};

Components One(EQvPixelComponent_t component, uint64_t value)
{
    return {{component, value}};
}

// Packs n-bit values least significant bit first, the way PFNC packed formats lie in memory.
std::vector<uint8_t> PackLsbFirst(const std::vector<uint64_t>& values, unsigned bits, size_t bytes)
{
    std::vector<uint8_t> packed(bytes, 0);
    size_t position = 0;
    for (uint64_t value : values)
        for (unsigned b = 0; b < bits; ++b, ++position)
            if ((value >> b) & 1)
                packed[position / 8] |= static_cast<uint8_t>(1u << (position % 8));
    return packed;
}

// An image of any code over caller-owned bytes, for formats no image buffer can take.
class ForeignImage : public IQvImage
{
public:
    ForeignImage(EQvPixelFormatNamingConvention_t format, size_t width, size_t height)
        : m_format(format), m_width(width), m_height(height), m_bytes(width * height * 8, 0)
    {
    }
    size_t GetImageWidth() override { return m_width; }
    size_t GetImageHeight() override { return m_height; }
    size_t GetImageLinePitch() override { return m_width * 8; }
    size_t GetImagePlanePitch() override { return m_bytes.size(); }
    EQvPixelFormatNamingConvention_t GetImagePixelFormat() override { return m_format; }
    void* GetImageBuffer() override { return m_bytes.data(); }
    void* GetUserContext() override { return nullptr; }
    IQvImage* GetROIImage(size_t, size_t, size_t, size_t) override { return nullptr; }
    IQvPixelComponentValue* GetIQvPixelComponentValue(size_t, size_t) override { return nullptr; }

private:
    EQvPixelFormatNamingConvention_t m_format;
    size_t m_width, m_height;
    std::vector<uint8_t> m_bytes;
};
} // namespace

TEST_F(PixelComponent, ReadsRawEightAndSixteenBitSamples)
{
    IQvImage* pMono8 = Image(QvPFNC_Mono8, 3, {{0x00, 0x7F, 0xFF}});
    EXPECT_EQ(ComponentsAt(pMono8, 1, 0), One(QvPixelComponent_Mono8, 0x7F));
    EXPECT_EQ(ComponentsAt(pMono8, 2, 0), One(QvPixelComponent_Mono8, 0xFF));

    // Little-endian and unmasked: bits above the valid depth are reported as stored.
    IQvImage* pMono12 = Image(QvPFNC_Mono12, 2, {{0x34, 0x12, 0xFF, 0xFF}});
    EXPECT_EQ(ComponentsAt(pMono12, 0, 0), One(QvPixelComponent_Mono12, 0x1234));
    EXPECT_EQ(ComponentsAt(pMono12, 1, 0), One(QvPixelComponent_Mono12, 0xFFFF));

    IQvImage* pMono16 = Image(QvPFNC_Mono16, 1, {{0xCD, 0xAB}, {0x01, 0x00}});
    EXPECT_EQ(ComponentsAt(pMono16, 0, 1), One(QvPixelComponent_Mono16, 1));
}

TEST_F(PixelComponent, NamesTheBayerSiteOfEachPixel)
{
    IQvImage* pBG = Image(QvPFNC_BayerBG8, 2, {{10, 11}, {12, 13}});
    EXPECT_EQ(ComponentsAt(pBG, 0, 0), One(QvPixelComponent_B8, 10));
    EXPECT_EQ(ComponentsAt(pBG, 1, 0), One(QvPixelComponent_Gb8, 11));
    EXPECT_EQ(ComponentsAt(pBG, 0, 1), One(QvPixelComponent_Gr8, 12));
    EXPECT_EQ(ComponentsAt(pBG, 1, 1), One(QvPixelComponent_R8, 13));

    IQvImage* pGR = Image(QvPFNC_BayerGR12, 2, {{1, 0, 2, 0}, {3, 0, 4, 0}});
    EXPECT_EQ(ComponentsAt(pGR, 0, 0), One(QvPixelComponent_Gr12, 1));
    EXPECT_EQ(ComponentsAt(pGR, 1, 0), One(QvPixelComponent_R12, 2));
    EXPECT_EQ(ComponentsAt(pGR, 0, 1), One(QvPixelComponent_B12, 3));
    EXPECT_EQ(ComponentsAt(pGR, 1, 1), One(QvPixelComponent_Gb12, 4));

    IQvImage* pRG = Image(QvPFNC_BayerRG16, 2, {{1, 0, 2, 0}, {3, 0, 4, 0}});
    EXPECT_EQ(ComponentsAt(pRG, 0, 0), One(QvPixelComponent_R16, 1));
    EXPECT_EQ(ComponentsAt(pRG, 1, 0), One(QvPixelComponent_Gr16, 2));
    EXPECT_EQ(ComponentsAt(pRG, 0, 1), One(QvPixelComponent_Gb16, 3));
    EXPECT_EQ(ComponentsAt(pRG, 1, 1), One(QvPixelComponent_B16, 4));

    IQvImage* pGB = Image(QvPFNC_BayerGB14, 2, {{1, 0, 2, 0}, {3, 0, 4, 0}});
    EXPECT_EQ(ComponentsAt(pGB, 0, 0), One(QvPixelComponent_Gb14, 1));
    EXPECT_EQ(ComponentsAt(pGB, 1, 0), One(QvPixelComponent_B14, 2));
    EXPECT_EQ(ComponentsAt(pGB, 0, 1), One(QvPixelComponent_R14, 3));
    EXPECT_EQ(ComponentsAt(pGB, 1, 1), One(QvPixelComponent_Gr14, 4));
}

TEST_F(PixelComponent, UnpacksPfncPackedPixelsFromTheLeastSignificantBit)
{
    IQvImage* pMono10p = Image(QvPFNC_Mono10p, 4, {{0x12, 0x34, 0x56, 0x78, 0x9A}});
    EXPECT_EQ(ComponentsAt(pMono10p, 0, 0), One(QvPixelComponent_Mono10, 0x012));
    EXPECT_EQ(ComponentsAt(pMono10p, 1, 0), One(QvPixelComponent_Mono10, 0x18D));
    EXPECT_EQ(ComponentsAt(pMono10p, 2, 0), One(QvPixelComponent_Mono10, 0x385));
    EXPECT_EQ(ComponentsAt(pMono10p, 3, 0), One(QvPixelComponent_Mono10, 0x269));

    IQvImage* pMono12p = Image(QvPFNC_Mono12p, 2, {{0xAB, 0xCD, 0xEF}});
    EXPECT_EQ(ComponentsAt(pMono12p, 0, 0), One(QvPixelComponent_Mono12, 0xDAB));
    EXPECT_EQ(ComponentsAt(pMono12p, 1, 0), One(QvPixelComponent_Mono12, 0xEFC));

    IQvImage* pMono1p = Image(QvPFNC_Mono1p, 8, {{0xB2}});
    const uint64_t bits[8] = {0, 1, 0, 0, 1, 1, 0, 1};
    for (size_t x = 0; x < 8; ++x)
        EXPECT_EQ(ComponentsAt(pMono1p, x, 0), One(QvPixelComponent_Mono1, bits[x])) << x;

    IQvImage* pMono2p = Image(QvPFNC_Mono2p, 4, {{0xE4}});
    for (size_t x = 0; x < 4; ++x)
        EXPECT_EQ(ComponentsAt(pMono2p, x, 0), One(QvPixelComponent_Mono2, x)) << x;

    IQvImage* pRG4p = Image(QvPFNC_BayerRG4p, 2, {{0x3C}, {0x21}});
    EXPECT_EQ(ComponentsAt(pRG4p, 0, 0), One(QvPixelComponent_R4, 0xC));
    EXPECT_EQ(ComponentsAt(pRG4p, 1, 0), One(QvPixelComponent_Gr4, 0x3));
    EXPECT_EQ(ComponentsAt(pRG4p, 1, 1), One(QvPixelComponent_B4, 0x2));

    const std::vector<uint64_t> values14 = {0x3FFF, 0x0001, 0x2A5A, 0x1234};
    IQvImage* pMono14p = Image(QvPFNC_Mono14p, 4, {PackLsbFirst(values14, 14, 7)});
    for (size_t x = 0; x < 4; ++x)
        EXPECT_EQ(ComponentsAt(pMono14p, x, 0), One(QvPixelComponent_Mono14, values14[x])) << x;

    const std::vector<uint64_t> values14p(8, 0x155);
    IQvImage* pGB14p = Image(QvPFNC_BayerGB14p, 8, {PackLsbFirst(values14p, 14, 14)});
    EXPECT_EQ(ComponentsAt(pGB14p, 7, 0), One(QvPixelComponent_B14, 0x155));
}

TEST_F(PixelComponent, UnpacksTheGigEVisionPackingOfTwoPixelsInThreeBytes)
{
    IQvImage* pMono12 = Image(QvPFNC_GVSP_Mono12Packed, 2, {{0xAB, 0xCD, 0xEF}});
    EXPECT_EQ(ComponentsAt(pMono12, 0, 0), One(QvPixelComponent_Mono12, 0xABC));
    EXPECT_EQ(ComponentsAt(pMono12, 1, 0), One(QvPixelComponent_Mono12, 0xEFD));

    // Ten bits: the low two bits sit in bits 4-5 (even pixel) and 0-1 (odd pixel) of the middle byte.
    IQvImage* pMono10 = Image(QvPFNC_GVSP_Mono10Packed, 2, {{0xAB, 0x21, 0xEF}});
    EXPECT_EQ(ComponentsAt(pMono10, 0, 0), One(QvPixelComponent_Mono10, (0xAB << 2) | 2));
    EXPECT_EQ(ComponentsAt(pMono10, 1, 0), One(QvPixelComponent_Mono10, (0xEF << 2) | 1));

    IQvImage* pGR10 = Image(QvPFNC_GVSP_BayerGR10Packed, 4, {{1, 0, 2, 3, 0, 4}, {5, 0, 6, 7, 0, 8}});
    EXPECT_EQ(ComponentsAt(pGR10, 0, 0), One(QvPixelComponent_Gr10, 4));
    EXPECT_EQ(ComponentsAt(pGR10, 1, 0), One(QvPixelComponent_R10, 8));
    EXPECT_EQ(ComponentsAt(pGR10, 3, 0), One(QvPixelComponent_R10, 16));
    EXPECT_EQ(ComponentsAt(pGR10, 2, 1), One(QvPixelComponent_B10, 28));
}

TEST_F(PixelComponent, ReportsInterleavedColourInMemoryOrderWithoutAlpha)
{
    IQvImage* pBGR8 = Image(QvPFNC_BGR8, 1, {{1, 2, 3}});
    EXPECT_EQ(ComponentsAt(pBGR8, 0, 0),
              (Components{{QvPixelComponent_B8, 1}, {QvPixelComponent_G8, 2}, {QvPixelComponent_R8, 3}}));

    IQvImage* pRGBa8 = Image(QvPFNC_RGBa8, 2, {{1, 2, 3, 4, 5, 6, 7, 8}});
    EXPECT_EQ(ComponentsAt(pRGBa8, 1, 0),
              (Components{{QvPixelComponent_R8, 5}, {QvPixelComponent_G8, 6}, {QvPixelComponent_B8, 7}}));

    IQvImage* pBGR12 = Image(QvPFNC_BGR12, 2, {{0, 0, 0, 0, 0, 0, 0x21, 0x03, 0x54, 0x06, 0x87, 0x09}});
    EXPECT_EQ(ComponentsAt(pBGR12, 1, 0),
              (Components{{QvPixelComponent_B12, 0x321}, {QvPixelComponent_G12, 0x654}, {QvPixelComponent_R12, 0x987}}));

    IQvImage* pRGB16 = Image(QvPFNC_RGB16, 1, {{0x01, 0x80, 0x02, 0x80, 0x03, 0x80}});
    EXPECT_EQ(ComponentsAt(pRGB16, 0, 0), (Components{{QvPixelComponent_R16, 0x8001},
                                                      {QvPixelComponent_G16, 0x8002},
                                                      {QvPixelComponent_B16, 0x8003}}));

    IQvImage* pBGRa10 = Image(QvPFNC_BGRa10, 2, {{0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 2, 0, 3, 0, 0xFF, 0xFF}});
    EXPECT_EQ(ComponentsAt(pBGRa10, 1, 0),
              (Components{{QvPixelComponent_B10, 1}, {QvPixelComponent_G10, 2}, {QvPixelComponent_R10, 3}}));
}

TEST_F(PixelComponent, ReadsTenBitFieldsOfA32BitWordAsBlueGreenRedForBothFormats)
{
    // 0x3FF00401: bits 0-9 = 1, bits 10-19 = 1, bits 20-29 = 0x3FF.
    const std::vector<uint8_t> word = {0x01, 0x04, 0xF0, 0x3F};
    const Components expected = {{QvPixelComponent_B10, 1}, {QvPixelComponent_G10, 1}, {QvPixelComponent_R10, 0x3FF}};
    EXPECT_EQ(ComponentsAt(Image(QvPFNC_RGB10p32, 1, {word}), 0, 0), expected);
    EXPECT_EQ(ComponentsAt(Image(QvPFNC_CBGR10p32, 1, {word}), 0, 0), expected);
}

TEST_F(PixelComponent, UnpacksPackedColourFieldsInTheFormatsOrder)
{
    const std::vector<uint64_t> fields10 = {0x155, 0x2AA, 0x0F0, 0x001, 0x3FF, 0x200, 7, 8, 9, 10, 11, 12};
    IQvImage* pBGR10p = Image(QvPFNC_BGR10p, 4, {PackLsbFirst(fields10, 10, 15)});
    EXPECT_EQ(ComponentsAt(pBGR10p, 1, 0),
              (Components{{QvPixelComponent_B10, 0x001}, {QvPixelComponent_G10, 0x3FF}, {QvPixelComponent_R10, 0x200}}));
    EXPECT_EQ(ComponentsAt(pBGR10p, 3, 0),
              (Components{{QvPixelComponent_B10, 10}, {QvPixelComponent_G10, 11}, {QvPixelComponent_R10, 12}}));

    const std::vector<uint64_t> fields12 = {0xABC, 0x123, 0xFED, 0x001, 0x800, 0x7FF};
    IQvImage* pRGB12p = Image(QvPFNC_RGB12p, 2, {PackLsbFirst(fields12, 12, 9)});
    EXPECT_EQ(ComponentsAt(pRGB12p, 0, 0),
              (Components{{QvPixelComponent_R12, 0xABC}, {QvPixelComponent_G12, 0x123}, {QvPixelComponent_B12, 0xFED}}));
    EXPECT_EQ(ComponentsAt(pRGB12p, 1, 0),
              (Components{{QvPixelComponent_R12, 0x001}, {QvPixelComponent_G12, 0x800}, {QvPixelComponent_B12, 0x7FF}}));
}

TEST_F(PixelComponent, ReadsPlanarSamplesOnePlanePitchApart)
{
    // 2 x 2 RGB8_Planar with pitch 4 (alignment 4): three planes of 8 bytes.
    BufferPtr buffer = QvApiTest::MakeBuffer();
    buffer->CreateBuffer(2, 2, QvPFNC_RGB8_Planar, QvMemoryInitialization_Zero);
    IQvImage* pImage = buffer->GetIQvImage();
    ASSERT_EQ(pImage->GetImageLinePitch(), 4u);
    ASSERT_EQ(pImage->GetImagePlanePitch(), 8u);
    const uint8_t planes[24] = {1, 2, 0, 0, 3, 4, 0, 0, 11, 12, 0, 0, 13, 14, 0, 0, 21, 22, 0, 0, 23, 24, 0, 0};
    std::copy(planes, planes + 24, QvApiTest::BytesOf(pImage));
    EXPECT_EQ(ComponentsAt(pImage, 1, 1),
              (Components{{QvPixelComponent_R8, 4}, {QvPixelComponent_G8, 14}, {QvPixelComponent_B8, 24}}));

    BufferPtr deep = QvApiTest::MakeBuffer();
    deep->CreateBuffer(1, 1, QvPFNC_RGB12_Planar, QvMemoryInitialization_Zero);
    IQvImage* pDeep = deep->GetIQvImage();
    ASSERT_EQ(pDeep->GetImagePlanePitch(), 4u);
    const uint8_t deepPlanes[12] = {0x21, 0x03, 0, 0, 0x54, 0x06, 0, 0, 0x87, 0x09, 0, 0};
    std::copy(deepPlanes, deepPlanes + 12, QvApiTest::BytesOf(pDeep));
    EXPECT_EQ(ComponentsAt(pDeep, 0, 0),
              (Components{{QvPixelComponent_R12, 0x321}, {QvPixelComponent_G12, 0x654}, {QvPixelComponent_B12, 0x987}}));
}

namespace
{
struct YCbCrCase
{
    EQvPixelFormatNamingConvention_t format;
    size_t width;
    size_t pitch;
    // Per pixel 0..width-1: byte index of each reported sample, in report order.
    std::vector<std::vector<int>> indices;
    bool chromaFirst; // Cb, Y, Cr instead of Y, Cb, Cr
    bool yuv;
};
} // namespace

TEST_F(PixelComponent, LocatesLumaAndChromaOfEveryYCbCrLayout)
{
    const std::vector<YCbCrCase> cases = {
        {QvPFNC_YCbCr422_8, 8, 16,
         {{0, 1, 3}, {2, 1, 3}, {4, 5, 7}, {6, 5, 7}, {8, 9, 11}, {10, 9, 11}, {12, 13, 15}, {14, 13, 15}}, false, false},
        {QvPFNC_YUV422_8, 4, 8, {{0, 1, 3}, {2, 1, 3}, {4, 5, 7}, {6, 5, 7}}, false, true},
        {QvPFNC_YCbCr709_422_8_CbYCrY, 4, 8, {{1, 0, 2}, {3, 0, 2}, {5, 4, 6}, {7, 4, 6}}, false, false},
        {QvPFNC_YUV422_8_UYVY, 4, 8, {{1, 0, 2}, {3, 0, 2}, {5, 4, 6}, {7, 4, 6}}, false, true},
        {QvPFNC_YCbCr601_411_8_CbYYCrYY, 8, 12,
         {{1, 0, 3}, {2, 0, 3}, {4, 0, 3}, {5, 0, 3}, {7, 6, 9}, {8, 6, 9}, {10, 6, 9}, {11, 6, 9}}, false, false},
        {QvPFNC_YUV411_8_UYYVYY, 4, 6, {{1, 0, 3}, {2, 0, 3}, {4, 0, 3}, {5, 0, 3}}, false, true},
        // Pixels 2 and 3 take their luma from the Cr byte and from the next group's first byte.
        {QvPFNC_YCbCr411_8, 8, 12,
         {{0, 2, 5}, {1, 2, 5}, {5, 2, 5}, {6, 2, 5}, {6, 8, 11}, {7, 8, 11}, {11, 8, 11}, {12, 8, 11}}, false, false},
        // 4:4:4: 16 bytes per group of four, all four pixels on bytes 0 to 2.
        {QvPFNC_YCbCr8, 8, 24,
         {{0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {16, 17, 18}, {16, 17, 18}, {16, 17, 18}, {16, 17, 18}}, false, false},
        {QvPFNC_YCbCr709_8_CbYCr, 4, 12, {{0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}}, true, false},
        {QvPFNC_YUV8_UYV, 4, 12, {{0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}}, true, true},
    };
    for (const YCbCrCase& c : cases)
    {
        SCOPED_TRACE(GetIQvPixelFormatInfo(c.format)->GetName().c_str());
        // Two lines whose bytes count up from 1 (line 0) and from 101 (line 1).
        std::vector<uint8_t> line0(c.pitch), line1(c.pitch);
        for (size_t i = 0; i < c.pitch; ++i)
        {
            line0[i] = static_cast<uint8_t>(1 + i);
            line1[i] = static_cast<uint8_t>(101 + i);
        }
        IQvImage* pImage = Image(c.format, c.width, {line0, line1});
        const uint32_t luma = QvPixelComponent_Y8;
        const uint32_t blue = c.yuv ? QvPixelComponent_U8 : QvPixelComponent_Cb8;
        const uint32_t red = c.yuv ? QvPixelComponent_V8 : QvPixelComponent_Cr8;
        for (size_t x = 0; x < c.width; ++x)
        {
            // Bytes past the line continue into the next one; only line 0 is checked there.
            auto byteAt = [&](int index) -> uint64_t { return 1 + index; };
            const auto& idx = c.indices[x];
            const Components expected =
                c.chromaFirst ? Components{{blue, byteAt(idx[0])}, {luma, byteAt(idx[1])}, {red, byteAt(idx[2])}}
                              : Components{{luma, byteAt(idx[0])}, {blue, byteAt(idx[1])}, {red, byteAt(idx[2])}};
            bool inside = true;
            for (int i : idx)
                inside = inside && static_cast<size_t>(i) < c.pitch;
            if (inside)
                EXPECT_EQ(ComponentsAt(pImage, x, 0), expected) << "x " << x;
            else
                EXPECT_EQ(ComponentsAt(pImage, x, 0)[0].second, expected[0].second + 100 - c.pitch) << "x " << x;
        }
    }
}

TEST_F(PixelComponent, ReadsZeroWhereAnIrregularLayoutPointsPastTheImage)
{
    // YCbCr8 16 x 1: pixels 12 to 15 look at bytes 48 to 50 of a 48-byte image.
    BufferPtr buffer = QvApiTest::MakeBuffer();
    buffer->CreateBuffer(16, 1, QvPFNC_YCbCr8, QvMemoryInitialization_FF);
    IQvImage* pImage = buffer->GetIQvImage();
    ASSERT_EQ(pImage->GetImageLinePitch(), 48u);
    EXPECT_EQ(ComponentsAt(pImage, 11, 0)[0].second, 0xFFu);
    EXPECT_EQ(ComponentsAt(pImage, 12, 0),
              (Components{{QvPixelComponent_Y8, 0}, {QvPixelComponent_Cb8, 0}, {QvPixelComponent_Cr8, 0}}));

    // YCbCr411_8 4 x 1: pixel 3 takes its luma from byte 6, one past the image.
    BufferPtr small = QvApiTest::MakeBuffer();
    small->CreateBuffer(4, 1, QvPFNC_YCbCr411_8, QvMemoryInitialization_FF);
    EXPECT_EQ(ComponentsAt(small->GetIQvImage(), 3, 0)[0], std::make_pair(uint32_t(QvPixelComponent_Y8), uint64_t(0)));
    EXPECT_EQ(ComponentsAt(small->GetIQvImage(), 2, 0)[0], std::make_pair(uint32_t(QvPixelComponent_Y8), uint64_t(0xFF)));
}

TEST_F(PixelComponent, ChecksThePositionBeforeReadingMemory)
{
    IQvImage* pImage = Image(QvPFNC_Mono8, 4, {{1, 2, 3, 4}, {5, 6, 7, 8}});
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pImage->GetIQvPixelComponentValue(4, 0); }),
              "size_t x = 4 must be smaller than Max = 4");
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pImage->GetIQvPixelComponentValue(0, 2); }),
              "size_t y = 2 must be smaller than Max = 2");
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pImage->GetIQvPixelComponentValue(SIZE_MAX, 0); }),
              "size_t x = -1 must be equal or greater than Min = 0");
    // x is checked before y.
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pImage->GetIQvPixelComponentValue(9, 9); }),
              "size_t x = 9 must be smaller than Max = 4");
    try
    {
        pImage->GetIQvPixelComponentValue(4, 0);
    }
    catch (const GenICam::OutOfRangeException& e)
    {
        EXPECT_STREQ(e.GetSourceFileName(), "QvApi_TL/QvPixelComponent.cpp");
    }
}

TEST_F(PixelComponent, ChecksTheIndexOfAnEntry)
{
    IQvImage* pImage = Image(QvPFNC_BGR8, 1, {{1, 2, 3}});
    IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
    ASSERT_EQ(pValue->GetCount(), 3u);
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pValue->GetValue(3); }),
              "nIndex = 3 must be smaller than Max = 3");
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pValue->GetPixelComponent(SIZE_MAX); }),
              "nIndex = -1 must be equal or greater than Min = 0");
}

TEST_F(PixelComponent, HandsOutOneAccessorPerImageRepositionedByEveryCall)
{
    IQvImage* pImage = Image(QvPFNC_Mono8, 2, {{7, 9}});
    IQvPixelComponentValue* pFirst = pImage->GetIQvPixelComponentValue(0, 0);
    EXPECT_EQ(pFirst->GetValue(0), 7u);
    IQvPixelComponentValue* pSecond = pImage->GetIQvPixelComponentValue(1, 0);
    EXPECT_EQ(pFirst, pSecond);
    EXPECT_EQ(pFirst->GetValue(0), 9u);
    // A failed positioning keeps the last decoded pixel.
    EXPECT_THROW(pImage->GetIQvPixelComponentValue(2, 0), GenICam::OutOfRangeException);
    EXPECT_EQ(pFirst->GetValue(0), 9u);
}

TEST_F(PixelComponent, DecodesAnyImageHandedToTheAccessor)
{
    IQvImage* pImage = Image(QvPFNC_Mono8, 1, {{0}});
    IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
    ForeignImage foreign(QvPFNC_Mono16, 2, 1);
    static_cast<uint8_t*>(foreign.GetImageBuffer())[2] = 0x42;
    pValue->SetPixelComponent(&foreign, 1, 0);
    EXPECT_EQ(pValue->GetPixelComponent(0), QvPixelComponent_Mono16);
    EXPECT_EQ(pValue->GetValue(0), 0x42u);

    // A code outside the table fails in the table lookup, naming the code.
    ForeignImage unknown(static_cast<EQvPixelFormatNamingConvention_t>(0x01080002), 1, 1);
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([&] { pValue->SetPixelComponent(&unknown, 0, 0); }),
              "Unknown pixelformat 0x1080002");
}

TEST_F(PixelComponent, AbortsOnANullImage)
{
    IQvImage* pImage = Image(QvPFNC_Mono8, 1, {{0}});
    IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
    EXPECT_DEATH(pValue->SetPixelComponent(nullptr, 0, 0), "pIQvImage");
}
