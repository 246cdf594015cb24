// Writing pixel components: every writable format, random pixels and values, read back directly
// and through ROI views at every legal offset; neighbours and padding stay as they were.
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvImage.h>
#include <QvApi/QvImageBuffer.h>
#include <QvApi/QvPixelComponent.h>

#include "tests/QvApi_TL/Images/ImageTestSupport.h"

using namespace QvApi;
using QvApiTest::AllFormats;
using QvApiTest::BufferPtr;
using QvApiTest::ComponentsAt;
using QvApiTest::DescriptionOf;

namespace
{
using Components = std::vector<std::pair<uint32_t, uint64_t>>;

// Formats whose reader does not follow the packing, so a write would land in a neighbour.
const std::set<EQvPixelFormatNamingConvention_t> kUnwritable = {
    QvPFNC_YCbCr411_8, QvPFNC_YCbCr8, QvPFNC_YCbCr8_CbYCr, QvPFNC_YCbCr601_8_CbYCr, QvPFNC_YCbCr709_8_CbYCr,
    QvPFNC_YUV8_UYV};

constexpr size_t kWidth = 24; // a multiple of every pixel increment (1, 2, 4, 8)
constexpr size_t kHeight = 3;

bool IsChroma(uint32_t component)
{
    const uint32_t channel = component >> 24;
    return channel >= 8 && channel <= 11;
}

uint64_t MaxValue(uint32_t component)
{
    return (uint64_t(1) << ((component >> 16) & 0xFF)) - 1;
}

std::vector<Components> AllPixels(IQvImage* pImage)
{
    std::vector<Components> pixels;
    for (size_t y = 0; y < pImage->GetImageHeight(); ++y)
        for (size_t x = 0; x < pImage->GetImageWidth(); ++x)
            pixels.push_back(ComponentsAt(pImage, x, y));
    return pixels;
}

class PixelComponentWrite : public QvApiTest::ImageTest
{
protected:
    // A kWidth x kHeight image of random bytes, capacity included.
    IQvImage* RandomImage(EQvPixelFormatNamingConvention_t format, std::mt19937_64& random)
    {
        m_buffer = QvApiTest::MakeBuffer(&m_allocator);
        m_buffer->SetSize(kWidth, kHeight, format, 0);
        IQvImage* pImage = m_buffer->GetIQvImage();
        uint8_t* pBytes = QvApiTest::BytesOf(pImage);
        for (size_t i = 0; i < m_allocator.lastAllocateSize; ++i)
            pBytes[i] = static_cast<uint8_t>(random());
        return pImage;
    }

    // Bytes of the block that hold no pixel: line padding and what lies past the planes.
    std::vector<uint8_t> PaddingOf(IQvImage* pImage)
    {
        const IQvPixelFormatInfo* pInfo = GetIQvPixelFormatInfo(pImage->GetImagePixelFormat());
        const size_t lineBytes = pInfo->GetRequiredLinePitch(pImage->GetImageWidth(), 1);
        const size_t pitch = pImage->GetImageLinePitch();
        const uint8_t* pBytes = QvApiTest::BytesOf(pImage);
        std::vector<uint8_t> padding;
        size_t planesEnd = pInfo->GetPlaneCount() * pImage->GetImagePlanePitch();
        for (size_t line = 0; line * pitch < planesEnd; ++line)
            padding.insert(padding.end(), pBytes + line * pitch + lineBytes, pBytes + (line + 1) * pitch);
        padding.insert(padding.end(), pBytes + planesEnd, pBytes + m_allocator.lastAllocateSize);
        return padding;
    }

    QvApiTest::GuardedAllocator m_allocator;
    BufferPtr m_buffer;
};
} // namespace

TEST_F(PixelComponentWrite, WrittenComponentsReadBackAndNothingElseChanges)
{
    std::mt19937_64 random(20240611);
    size_t writable = 0;
    for (EQvPixelFormatNamingConvention_t format : AllFormats())
    {
        if (kUnwritable.count(format) != 0)
            continue;
        ++writable;
        const IQvPixelFormatInfo* pInfo = GetIQvPixelFormatInfo(format);
        SCOPED_TRACE(pInfo->GetName().c_str());
        IQvImage* pImage = RandomImage(format, random);
        const size_t groupWidth = pInfo->GetPixelIncrementX();
        std::vector<Components> before = AllPixels(pImage);
        const std::vector<uint8_t> padding = PaddingOf(pImage);

        for (int iteration = 0; iteration < 40; ++iteration)
        {
            const size_t x = random() % kWidth;
            const size_t y = random() % kHeight;
            const Components& pixel = before[y * kWidth + x];
            const size_t index = random() % pixel.size();
            const uint64_t value = random() & MaxValue(pixel[index].first);

            IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
            pValue->WriteValue(pImage, x, y, index, value);
            // The accessor now holds the written pixel.
            ASSERT_EQ(pValue->GetValue(index), value);

            const std::vector<Components> after = AllPixels(pImage);
            for (size_t py = 0; py < kHeight; ++py)
                for (size_t px = 0; px < kWidth; ++px)
                {
                    const Components& was = before[py * kWidth + px];
                    const Components& is = after[py * kWidth + px];
                    Components expected = was;
                    if (px == x && py == y)
                        expected[index].second = value;
                    // A shared chroma sample changes for its whole group.
                    const bool sharesChroma = IsChroma(pixel[index].first) && py == y && px / groupWidth == x / groupWidth;
                    if (sharesChroma)
                    {
                        for (size_t i = 0; i < is.size(); ++i)
                            if (is[i].first == pixel[index].first)
                                expected[i].second = value;
                    }
                    ASSERT_EQ(is, expected) << "pixel (" << px << ", " << py << ") after writing (" << x << ", "
                                            << y << ") entry " << index << " = " << value;
                }
            before = after;
        }
        EXPECT_EQ(PaddingOf(pImage), padding);
        EXPECT_TRUE(m_allocator.GuardsIntact());
    }
    EXPECT_EQ(writable, 92u);
}

TEST_F(PixelComponentWrite, WritesThroughRoiViewsAtEveryLegalOffset)
{
    std::mt19937_64 random(7);
    for (EQvPixelFormatNamingConvention_t format : AllFormats())
    {
        if (kUnwritable.count(format) != 0)
            continue;
        const IQvPixelFormatInfo* pInfo = GetIQvPixelFormatInfo(format);
        SCOPED_TRACE(pInfo->GetName().c_str());
        IQvImage* pImage = RandomImage(format, random);
        const size_t incX = pInfo->GetPixelIncrementX();
        for (size_t x0 = 0; x0 < kWidth; x0 += incX)
            for (size_t y0 = 0; y0 < kHeight; ++y0)
            {
                IQvImage* pView = pImage->GetROIImage(x0, y0, kWidth - x0, kHeight - y0);
                for (int iteration = 0; iteration < 3; ++iteration)
                {
                    const size_t x = random() % pView->GetImageWidth();
                    const size_t y = random() % pView->GetImageHeight();
                    const Components root = ComponentsAt(pImage, x0 + x, y0 + y);
                    const size_t index = random() % root.size();
                    const uint64_t value = random() & MaxValue(root[index].first);

                    // Written through the view's own memory address and format...
                    IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
                    pValue->WriteValue(pView, x, y, index, value);
                    // ...it is the root's pixel that changed, with the same component codes.
                    Components expected = root;
                    expected[index].second = value;
                    ASSERT_EQ(ComponentsAt(pImage, x0 + x, y0 + y), expected)
                        << "view (" << x0 << ", " << y0 << ") pixel (" << x << ", " << y << ")";
                    // The view's accessor forwards to the root; decoding the view directly agrees.
                    ASSERT_EQ(ComponentsAt(pView, x, y), expected);
                    pValue->SetPixelComponent(pView, x, y);
                    ASSERT_EQ(pValue->GetPixelComponent(index), expected[index].first);
                    ASSERT_EQ(pValue->GetValue(index), value);
                }
            }
        EXPECT_TRUE(m_allocator.GuardsIntact());
    }
}

TEST_F(PixelComponentWrite, RefusesFormatsWhoseReaderDoesNotFollowThePacking)
{
    for (EQvPixelFormatNamingConvention_t format : kUnwritable)
    {
        BufferPtr buffer = QvApiTest::MakeBuffer();
        buffer->CreateBuffer(8, 1, format, QvMemoryInitialization_Zero);
        IQvImage* pImage = buffer->GetIQvImage();
        IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
        const std::string name = GetIQvPixelFormatInfo(format)->GetName().c_str();
        EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([&] { pValue->WriteValue(pImage, 1, 0, 0, 1); }),
                  "Not supported pixelformat " + name);
        EXPECT_EQ(ComponentsAt(pImage, 1, 0)[0].second, 0u);
    }
}

TEST_F(PixelComponentWrite, ChecksPositionIndexAndValueBeforeWriting)
{
    BufferPtr buffer = QvApiTest::MakeBuffer();
    buffer->CreateBuffer(4, 2, QvPFNC_Mono10p, QvMemoryInitialization_Zero);
    IQvImage* pImage = buffer->GetIQvImage();
    IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pValue->WriteValue(pImage, 4, 0, 0, 1); }),
              "size_t x = 4 must be smaller than Max = 4");
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pValue->WriteValue(pImage, 0, 0, 1, 1); }),
              "nIndex = 1 must be smaller than Max = 1");
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pValue->WriteValue(pImage, 0, 0, 0, 1024); }),
              "value = 1024 must be equal or smaller than Max = 1023");
    for (size_t i = 0; i < 10; ++i)
        EXPECT_EQ(QvApiTest::BytesOf(pImage)[i], 0u);
    pValue->WriteValue(pImage, 3, 1, 0, 1023);
    EXPECT_EQ(ComponentsAt(pImage, 3, 1), (Components{{QvPixelComponent_Mono10, 1023}}));
    // Pixel 3 is the top ten bits of the line's five bytes.
    EXPECT_EQ(QvApiTest::BytesOf(pImage)[9], 0xFFu);
    EXPECT_EQ(QvApiTest::BytesOf(pImage)[8], 0xC0u);
}
