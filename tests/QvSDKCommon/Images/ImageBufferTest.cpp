// Image buffers: sizing and reuse, allocators, memory initialisation, copying.
#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvImage.h>
#include <QvApi/QvImageBuffer.h>
#include <QvApi/QvPixelComponent.h>

#include "tests/QvApi_TL/Images/ImageTestSupport.h"

using namespace QvApi;
using QvApiTest::BufferPtr;
using QvApiTest::BytesOf;
using QvApiTest::ComponentsAt;
using QvApiTest::DescriptionOf;
using QvApiTest::GuardedAllocator;
using QvApiTest::MakeBuffer;

namespace
{
using ImageBuffer = QvApiTest::ImageTest;

bool AllBytesAre(const uint8_t* pBytes, size_t count, uint8_t value)
{
    for (size_t i = 0; i < count; ++i)
        if (pBytes[i] != value)
            return false;
    return true;
}

// Fills every pixel's components with a pattern that differs from pixel to pixel.
void FillPattern(IQvImage* pImage)
{
    IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
    for (size_t y = 0; y < pImage->GetImageHeight(); ++y)
        for (size_t x = 0; x < pImage->GetImageWidth(); ++x)
        {
            pValue->SetPixelComponent(pImage, x, y);
            for (size_t i = 0; i < pValue->GetCount(); ++i)
            {
                const uint64_t max = (uint64_t(1) << ((pValue->GetPixelComponent(i) >> 16) & 0xFF)) - 1;
                pValue->WriteValue(pImage, x, y, i, (x * 7 + y * 31 + i * 3 + 1) & max);
            }
        }
}

void ExpectSamePixels(IQvImage* pExpected, IQvImage* pActual)
{
    ASSERT_EQ(pActual->GetImageWidth(), pExpected->GetImageWidth());
    ASSERT_EQ(pActual->GetImageHeight(), pExpected->GetImageHeight());
    ASSERT_EQ(pActual->GetImagePixelFormat(), pExpected->GetImagePixelFormat());
    for (size_t y = 0; y < pExpected->GetImageHeight(); ++y)
        for (size_t x = 0; x < pExpected->GetImageWidth(); ++x)
            ASSERT_EQ(ComponentsAt(pActual, x, y), ComponentsAt(pExpected, x, y)) << "(" << x << ", " << y << ")";
}

// An image no buffer of the library made.
class ForeignImage : public IQvImage
{
public:
    size_t GetImageWidth() override { return 1; }
    size_t GetImageHeight() override { return 1; }
    size_t GetImageLinePitch() override { return 1; }
    size_t GetImagePlanePitch() override { return 1; }
    EQvPixelFormatNamingConvention_t GetImagePixelFormat() override { return QvPFNC_Mono8; }
    void* GetImageBuffer() override { return &m_byte; }
    void* GetUserContext() override { return nullptr; }
    IQvImage* GetROIImage(size_t, size_t, size_t, size_t) override { return nullptr; }
    IQvPixelComponentValue* GetIQvPixelComponentValue(size_t, size_t) override { return nullptr; }

private:
    uint8_t m_byte = 0;
};
} // namespace

TEST_F(ImageBuffer, StartsEmpty)
{
    BufferPtr buffer = MakeBuffer();
    EXPECT_FALSE(buffer->HasImageBuffer());
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([&] { buffer->GetIQvImage(); }),
              "There is no available image.");
}

TEST_F(ImageBuffer, RefusesAnEmptySize)
{
    BufferPtr buffer = MakeBuffer();
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { buffer->SetSize(0, 10, QvPFNC_Mono8, 0); }),
              "size_t nWidth = 0 must be greater than Min = 0");
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { buffer->SetSize(10, 0, QvPFNC_Mono8, 0); }),
              "size_t nHeight = 0 must be greater than Min = 0");
    try
    {
        buffer->SetSize(0, 1, QvPFNC_Mono8, 0);
    }
    catch (const GenICam::OutOfRangeException& e)
    {
        EXPECT_STREQ(e.GetSourceFileName(), "QvSDKCommon/QvImageBuffer.cpp");
    }
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>(
                  [&] { buffer->SetSize(1, 1, static_cast<EQvPixelFormatNamingConvention_t>(0x01080002), 0); }),
              "Unknown pixelformat 0x1080002");
    EXPECT_FALSE(buffer->HasImageBuffer());
}

TEST_F(ImageBuffer, RoundsThePitchAndKeepsALargerBlock)
{
    GuardedAllocator allocator;
    BufferPtr buffer = MakeBuffer(&allocator);
    buffer->SetSize(10, 2, QvPFNC_RGB8, 0);
    IQvImage* pImage = buffer->GetIQvImage();
    EXPECT_EQ(pImage->GetImageLinePitch(), 32u);
    EXPECT_EQ(pImage->GetImagePlanePitch(), 64u);
    EXPECT_EQ(allocator.lastAllocateSize, 64u);
    void* pBlock = pImage->GetImageBuffer();

    buffer->SetSize(4, 2, QvPFNC_RGB8, 0);
    EXPECT_EQ(allocator.allocateCount, 1);
    EXPECT_EQ(pImage->GetImageBuffer(), pBlock);
    EXPECT_EQ(pImage->GetImageLinePitch(), 12u);
    EXPECT_EQ(pImage->GetImageWidth(), 4u);

    // The constant fill covers the whole block, not only the 24 bytes of the image.
    buffer->CreateBuffer(4, 2, QvPFNC_RGB8, QvMemoryInitialization_FF);
    EXPECT_TRUE(AllBytesAre(BytesOf(pImage), 64, 0xFF));
    buffer->CreateBuffer(4, 2, QvPFNC_RGB8, QvMemoryInitialization_Zero);
    EXPECT_TRUE(AllBytesAre(BytesOf(pImage), 64, 0x00));
    EXPECT_TRUE(allocator.GuardsIntact());
}

TEST_F(ImageBuffer, ReallocatesForALargerImageThroughTheAllocator)
{
    GuardedAllocator allocator;
    BufferPtr buffer = MakeBuffer(&allocator);
    buffer->SetSize(4, 4, QvPFNC_Mono8, 0);
    void* pContext = buffer->GetIQvImage()->GetUserContext();
    EXPECT_NE(pContext, nullptr);
    buffer->SetSize(5, 4, QvPFNC_Mono8, 0);
    EXPECT_EQ(allocator.allocateCount, 2);
    EXPECT_EQ(allocator.deallocateCount, 1);
    EXPECT_EQ(allocator.lastDeallocateSize, 16u);
    EXPECT_EQ(allocator.lastDeallocateContext, pContext);
    EXPECT_EQ(allocator.lastAllocateSize, 20u);
    EXPECT_EQ(buffer->GetIQvImage()->GetUserContext(), allocator.lastAllocateContext);
}

TEST_F(ImageBuffer, UsesAnExplicitAlignmentAndOnePlanePitchPerPlane)
{
    GuardedAllocator allocator;
    BufferPtr buffer = MakeBuffer(&allocator);
    buffer->SetSize(10, 1, QvPFNC_Mono8, 16);
    EXPECT_EQ(buffer->GetIQvImage()->GetImageLinePitch(), 16u);
    buffer->SetSize(10, 2, QvPFNC_RGB8_Planar, 0);
    EXPECT_EQ(buffer->GetIQvImage()->GetImageLinePitch(), 12u);
    EXPECT_EQ(buffer->GetIQvImage()->GetImagePlanePitch(), 24u);
    EXPECT_EQ(allocator.lastAllocateSize, 72u);
}

TEST_F(ImageBuffer, ReportsARefusedAllocationAndIsEmptyAfterwards)
{
    GuardedAllocator allocator;
    BufferPtr buffer = MakeBuffer(&allocator);
    buffer->SetSize(8, 8, QvPFNC_Mono8, 0);
    allocator.refuse = true;
    EXPECT_EQ(DescriptionOf<GenICam::BadAllocException>([&] { buffer->SetSize(9, 9, QvPFNC_Mono8, 0); }), "");
    EXPECT_FALSE(buffer->HasImageBuffer());
    EXPECT_EQ(allocator.LiveBlocks(), 0u); // the old block went back first
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([&] { buffer->GetIQvImage(); }),
              "There is no available image.");
}

TEST_F(ImageBuffer, RefusesASizeNoAllocatorCouldProvide)
{
    GuardedAllocator allocator;
    BufferPtr buffer = MakeBuffer(&allocator);
    const size_t huge = SIZE_MAX / 2;
    EXPECT_THROW(buffer->SetSize(huge, huge, QvPFNC_BGRa16, 0), GenICam::BadAllocException);
    EXPECT_EQ(allocator.allocateCount, 0);
    // Representable but far too large: the built-in allocator answers null, an application
    // allocator that throws std::bad_alloc instead is reported the same way.
    BufferPtr builtIn = MakeBuffer();
    EXPECT_THROW(builtIn->SetSize(SIZE_MAX / 64, 1, QvPFNC_Mono8, 0), GenICam::BadAllocException);
    EXPECT_THROW(buffer->SetSize(SIZE_MAX / 64, 1, QvPFNC_Mono8, 0), GenICam::BadAllocException);
    EXPECT_EQ(allocator.allocateCount, 1);
    buffer->SetSize(4, 4, QvPFNC_Mono8, 0);
    allocator.throwWhenRefusing = true;
    allocator.refuse = true;
    EXPECT_THROW(buffer->SetSize(8, 8, QvPFNC_Mono8, 0), GenICam::BadAllocException);
    EXPECT_FALSE(buffer->HasImageBuffer());
}

TEST_F(ImageBuffer, GivesMemoryBackAndDeregistersTheAllocatorOnRelease)
{
    GuardedAllocator allocator;
    {
        BufferPtr buffer = MakeBuffer(&allocator);
        buffer->SetSize(3, 3, QvPFNC_Mono16, 0);
        EXPECT_EQ(allocator.deregisterCount, 0);
    }
    EXPECT_EQ(allocator.deallocateCount, 1);
    EXPECT_EQ(allocator.lastDeallocateSize, 18u);
    EXPECT_EQ(allocator.deregisterCount, 1);
    EXPECT_EQ(allocator.LiveBlocks(), 0u);

    // Without memory there is nothing to give back, but the allocator is still let go.
    GuardedAllocator unused;
    MakeBuffer(&unused).reset();
    EXPECT_EQ(unused.deallocateCount, 0);
    EXPECT_EQ(unused.deregisterCount, 1);
}

TEST_F(ImageBuffer, LeavesMemoryAsItIsWithoutInitialisation)
{
    BufferPtr buffer = MakeBuffer();
    buffer->CreateBuffer(6, 2, QvPFNC_Mono8, QvMemoryInitialization_FF);
    buffer->CreateBuffer(6, 2, QvPFNC_Mono8, QvMemoryInitialization_None);
    EXPECT_TRUE(AllBytesAre(BytesOf(buffer->GetIQvImage()), 12, 0xFF));
}

TEST_F(ImageBuffer, ZeroFillsFormatsWithoutAChart)
{
    for (EQvPixelFormatNamingConvention_t format : {QvPFNC_BayerRG8, QvPFNC_Mono10p, QvPFNC_YUV422_8, QvPFNC_RGB8_Planar})
    {
        GuardedAllocator allocator;
        BufferPtr buffer = MakeBuffer(&allocator);
        buffer->CreateBuffer(16, 4, format, QvMemoryInitialization_FF);
        buffer->CreateBuffer(8, 2, format, QvMemoryInitialization_Chart);
        EXPECT_TRUE(AllBytesAre(BytesOf(buffer->GetIQvImage()), allocator.lastAllocateSize, 0))
            << GetIQvPixelFormatInfo(format)->GetName().c_str();
    }
}

TEST_F(ImageBuffer, CopiesAnImageWithTheSamePitchInOneBlock)
{
    for (EQvPixelFormatNamingConvention_t format : {QvPFNC_Mono8, QvPFNC_BGR8, QvPFNC_Mono12p, QvPFNC_RGB12_Planar})
    {
        SCOPED_TRACE(GetIQvPixelFormatInfo(format)->GetName().c_str());
        BufferPtr source = MakeBuffer();
        source->CreateBuffer(10, 5, format, QvMemoryInitialization_Zero);
        FillPattern(source->GetIQvImage());
        GuardedAllocator allocator;
        BufferPtr copy = MakeBuffer(&allocator);
        copy->CopyImage(source->GetIQvImage());
        ExpectSamePixels(source->GetIQvImage(), copy->GetIQvImage());
        EXPECT_EQ(copy->GetIQvImage()->GetImageLinePitch(), source->GetIQvImage()->GetImageLinePitch());
        EXPECT_TRUE(allocator.GuardsIntact());
    }
}

TEST_F(ImageBuffer, CopiesLineByLineBetweenDifferentPitches)
{
    for (EQvPixelFormatNamingConvention_t format : {QvPFNC_Mono8, QvPFNC_RGB8, QvPFNC_BayerGB12, QvPFNC_RGB8_Planar})
    {
        SCOPED_TRACE(GetIQvPixelFormatInfo(format)->GetName().c_str());
        // A source with a wide explicit pitch, and a view of it.
        BufferPtr source = MakeBuffer();
        source->SetSize(12, 6, format, 64);
        FillPattern(source->GetIQvImage());
        GuardedAllocator allocator;
        BufferPtr copy = MakeBuffer(&allocator);
        copy->CopyImage(source->GetIQvImage());
        EXPECT_NE(copy->GetIQvImage()->GetImageLinePitch(), 64u);
        ExpectSamePixels(source->GetIQvImage(), copy->GetIQvImage());

        IQvImage* pView = source->GetIQvImage()->GetROIImage(3, 2, 7, 4);
        copy->CopyImage(pView);
        ExpectSamePixels(pView, copy->GetIQvImage());
        EXPECT_TRUE(allocator.GuardsIntact());
    }
}

// Copies of more than a cache's worth of lines take another path (stores around the cache):
// lines of odd length at every alignment, from an image and from a view, and in place.
TEST_F(ImageBuffer, CopiesLargeImagesLineByLineExactly)
{
    const size_t width = 4099, height = 2100; // 8.6 MB
    BufferPtr source = MakeBuffer();
    source->SetSize(width, height, QvPFNC_Mono8, 64);
    IQvImage* pSource = source->GetIQvImage();
    ASSERT_EQ(pSource->GetImageLinePitch(), 4160u);
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < 4160; ++x)
            BytesOf(pSource)[y * 4160 + x] = static_cast<uint8_t>(x * 7 + y * 13 + (x >> 8));
    auto expectLines = [](IQvImage* pFrom, IQvImage* pTo) {
        const size_t lineBytes = pFrom->GetImageWidth();
        ASSERT_EQ(pTo->GetImageWidth(), lineBytes);
        ASSERT_EQ(pTo->GetImageHeight(), pFrom->GetImageHeight());
        size_t wrongLines = 0;
        for (size_t y = 0; y < pFrom->GetImageHeight(); ++y)
            wrongLines += std::memcmp(BytesOf(pTo) + y * pTo->GetImageLinePitch(),
                                      BytesOf(pFrom) + y * pFrom->GetImageLinePitch(), lineBytes) != 0;
        EXPECT_EQ(wrongLines, 0u);
    };

    GuardedAllocator allocator;
    BufferPtr copy = MakeBuffer(&allocator);
    copy->CopyImage(pSource);
    EXPECT_EQ(copy->GetIQvImage()->GetImageLinePitch(), width); // odd: every line starts elsewhere
    expectLines(pSource, copy->GetIQvImage());
    IQvImage* pView = pSource->GetROIImage(3, 1, 4093, 2099);
    copy->CopyImage(pView);
    expectLines(pView, copy->GetIQvImage());
    GuardedAllocator samePitchAllocator;
    BufferPtr samePitch = MakeBuffer(&samePitchAllocator);
    samePitch->CopyImage(copy->GetIQvImage()); // one block
    expectLines(copy->GetIQvImage(), samePitch->GetIQvImage());
    EXPECT_TRUE(allocator.GuardsIntact());
    EXPECT_TRUE(samePitchAllocator.GuardsIntact());

    // In place: the view's lines overlap the destination's.
    BufferPtr reference = MakeBuffer();
    reference->CopyImage(pSource->GetROIImage(5, 3, 4090, 2090));
    source->CopyImage(pSource->GetROIImage(5, 3, 4090, 2090));
    expectLines(reference->GetIQvImage(), source->GetIQvImage());
}

TEST_F(ImageBuffer, CopiesAViewAtAnOddOffsetWithItsBayerPhase)
{
    BufferPtr source = MakeBuffer();
    source->CreateBuffer(8, 8, QvPFNC_BayerRG8, QvMemoryInitialization_Zero);
    FillPattern(source->GetIQvImage());
    BufferPtr copy = MakeBuffer();
    copy->CopyImage(source->GetIQvImage()->GetROIImage(1, 1, 5, 5));
    EXPECT_EQ(copy->GetIQvImage()->GetImagePixelFormat(), QvPFNC_BayerBG8);
    EXPECT_EQ(ComponentsAt(copy->GetIQvImage(), 0, 0), ComponentsAt(source->GetIQvImage(), 1, 1));
    EXPECT_EQ(ComponentsAt(copy->GetIQvImage(), 0, 0)[0].first, uint32_t(QvPixelComponent_B8));
}

TEST_F(ImageBuffer, CropsInPlaceFromItsOwnView)
{
    BufferPtr buffer = MakeBuffer();
    buffer->CreateBuffer(16, 10, QvPFNC_BGR8, QvMemoryInitialization_Zero);
    FillPattern(buffer->GetIQvImage());
    BufferPtr reference = MakeBuffer();
    reference->CopyImage(buffer->GetIQvImage()->GetROIImage(5, 3, 9, 6));
    void* pBlock = buffer->GetIQvImage()->GetImageBuffer();

    buffer->CopyImage(buffer->GetIQvImage()->GetROIImage(5, 3, 9, 6));
    EXPECT_EQ(buffer->GetIQvImage()->GetImageBuffer(), pBlock);
    ExpectSamePixels(reference->GetIQvImage(), buffer->GetIQvImage());
}

TEST_F(ImageBuffer, CopiesAViewEndingAtTheLastByteOfItsParent)
{
    // RGB8 5 x 3 has a pitch of 16; a view of width 3 at x 2 reaching the bottom ends six bytes
    // into the last line, although its own default pitch (12) would reach past the parent.
    GuardedAllocator parentAllocator;
    BufferPtr parent = MakeBuffer(&parentAllocator);
    parent->CreateBuffer(5, 3, QvPFNC_RGB8, QvMemoryInitialization_Zero);
    FillPattern(parent->GetIQvImage());
    ASSERT_EQ(parentAllocator.lastAllocateSize, 48u);
    BufferPtr copy = MakeBuffer();
    IQvImage* pView = parent->GetIQvImage()->GetROIImage(2, 1, 3, 2);
    copy->CopyImage(pView);
    ExpectSamePixels(pView, copy->GetIQvImage());
}

TEST_F(ImageBuffer, AbortsWhenCopyingAnImageItDidNotMake)
{
    BufferPtr buffer = MakeBuffer();
    ForeignImage foreign;
    EXPECT_DEATH(buffer->CopyImage(&foreign), "\\(pSrcIQvImageInside\\) != NULL");
}

TEST_F(ImageBuffer, ReturnsItsOwnImageFace)
{
    BufferPtr buffer = MakeBuffer();
    buffer->CreateBuffer(2, 2, QvPFNC_Mono8, QvMemoryInitialization_Zero);
    IQvImage* pImage = buffer->GetIQvImage();
    EXPECT_EQ(pImage, buffer->GetIQvImage());
    EXPECT_EQ(pImage->GetImagePixelFormat(), QvPFNC_Mono8);
    EXPECT_EQ(pImage->GetUserContext(), nullptr); // the built-in allocator has no context
}
