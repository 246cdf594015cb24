// ROI views: validation order and messages, addresses, nested views and Bayer phases.
#include <cstdint>
#include <string>

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
using QvApiTest::MakeBuffer;

namespace
{
class ROIImage : public QvApiTest::ImageTest
{
protected:
    IQvImage* Parent(EQvPixelFormatNamingConvention_t format, size_t width, size_t height)
    {
        m_buffer = MakeBuffer();
        m_buffer->CreateBuffer(width, height, format, QvMemoryInitialization_Zero);
        return m_buffer->GetIQvImage();
    }

    std::string RoiError(IQvImage* pImage, size_t x, size_t y, size_t width, size_t height)
    {
        return DescriptionOf<GenICam::OutOfRangeException>([&] { pImage->GetROIImage(x, y, width, height); });
    }

    BufferPtr m_buffer;
};

ptrdiff_t OffsetOf(IQvImage* pView, IQvImage* pParent)
{
    return BytesOf(pView) - BytesOf(pParent);
}
} // namespace

TEST_F(ROIImage, KeepsOffsetAndWidthOnThePackingGrid)
{
    IQvImage* pImage = Parent(QvPFNC_Mono10p, 16, 4);
    IQvImage* pView = pImage->GetROIImage(4, 0, 8, 4);
    EXPECT_EQ(pView->GetImageWidth(), 8u);
    EXPECT_EQ(OffsetOf(pView, pImage), 5); // four 10-bit pixels
    EXPECT_EQ(RoiError(pImage, 4, 0, 6, 4),
              "The difference between size_t Width = 6 and Min = 4 must be dividable without rest by Inc = 4");
    EXPECT_EQ(RoiError(pImage, 2, 0, 8, 4),
              "The difference between size_t x = 2 and Min = 0 must be dividable without rest by Inc = 4");
    EXPECT_EQ(RoiError(pImage, 0, 0, 2, 4), "size_t Width = 2 must be equal or greater than Min = 4");
    EXPECT_EQ(RoiError(pImage, 0, 0, 20, 4), "size_t Width = 20 must be equal or smaller than Max = 16");
    EXPECT_EQ(RoiError(pImage, 12, 0, 8, 4), "size_t x = 12 must be equal or smaller than Max = 8");
    try
    {
        pImage->GetROIImage(12, 0, 8, 4);
    }
    catch (const GenICam::OutOfRangeException& e)
    {
        EXPECT_STREQ(e.GetSourceFileName(), "QvSDKCommon/QvROIImage.cpp");
    }
}

TEST_F(ROIImage, ChecksTheVerticalRange)
{
    IQvImage* pImage = Parent(QvPFNC_Mono8, 8, 6);
    EXPECT_EQ(RoiError(pImage, 0, 0, 8, 0), "size_t Height = 0 must be equal or greater than Min = 1");
    EXPECT_EQ(RoiError(pImage, 0, 0, 8, 7), "size_t Height = 7 must be equal or smaller than Max = 6");
    EXPECT_EQ(RoiError(pImage, 0, 5, 8, 2), "size_t y = 5 must be equal or smaller than Max = 4");
    EXPECT_EQ(RoiError(pImage, SIZE_MAX, 0, 1, 1), "size_t x = -1 must be equal or greater than Min = 0");
    EXPECT_EQ(RoiError(pImage, 0, 0, SIZE_MAX, 1), "size_t Width = -1 must be equal or greater than Min = 1");
    // The horizontal checks come first.
    EXPECT_EQ(RoiError(pImage, 9, 9, 0, 0), "size_t Width = 0 must be equal or greater than Min = 1");
}

TEST_F(ROIImage, KeepsTheNewHorizontalValuesWhenAVerticalCheckFails)
{
    IQvImage* pImage = Parent(QvPFNC_Mono8, 8, 4);
    IQvImage* pView = pImage->GetROIImage(0, 1, 8, 2);
    EXPECT_THROW(pImage->GetROIImage(4, 0, 4, 9), GenICam::OutOfRangeException);
    EXPECT_EQ(pView->GetImageWidth(), 4u);
    EXPECT_EQ(pView->GetImageHeight(), 2u);
    EXPECT_EQ(OffsetOf(pView, pImage), 8 + 4); // the old y, the new x

    // A horizontal failure changes nothing.
    EXPECT_THROW(pImage->GetROIImage(5, 0, 4, 1), GenICam::OutOfRangeException);
    EXPECT_EQ(pView->GetImageWidth(), 4u);
    EXPECT_EQ(OffsetOf(pView, pImage), 12);
}

TEST_F(ROIImage, ReturnsTheSameViewReconfigured)
{
    IQvImage* pImage = Parent(QvPFNC_Mono8, 8, 4);
    IQvImage* pFirst = pImage->GetROIImage(0, 0, 2, 2);
    IQvImage* pSecond = pImage->GetROIImage(1, 1, 3, 3);
    EXPECT_EQ(pFirst, pSecond);
    EXPECT_EQ(pFirst->GetImageWidth(), 3u);
    EXPECT_EQ(pFirst->GetImageHeight(), 3u);
    EXPECT_EQ(OffsetOf(pFirst, pImage), 9);
}

TEST_F(ROIImage, SharesItsParentsPitchesAndContext)
{
    QvApiTest::GuardedAllocator allocator;
    BufferPtr buffer = MakeBuffer(&allocator);
    buffer->CreateBuffer(10, 4, QvPFNC_RGB8_Planar, QvMemoryInitialization_Zero);
    IQvImage* pImage = buffer->GetIQvImage();
    IQvImage* pView = pImage->GetROIImage(3, 1, 5, 2);
    EXPECT_EQ(pView->GetImageLinePitch(), pImage->GetImageLinePitch());
    EXPECT_EQ(pView->GetImagePlanePitch(), pImage->GetImagePlanePitch());
    EXPECT_EQ(pView->GetUserContext(), allocator.lastAllocateContext);
    // A planar view moves by one sample per pixel within the first plane.
    EXPECT_EQ(OffsetOf(pView, pImage), static_cast<ptrdiff_t>(pImage->GetImageLinePitch() + 3));
}

TEST_F(ROIImage, AddressesPixelsByTheFormatsBitsPerPixel)
{
    struct Case
    {
        EQvPixelFormatNamingConvention_t format;
        size_t x, y;
        ptrdiff_t offset;
    };
    // Parents of 16 x 4; offsets in bytes from the parent's first byte.
    const Case cases[] = {
        {QvPFNC_Mono8, 3, 2, 2 * 16 + 3},     {QvPFNC_RGB8, 3, 1, 48 + 9},   {QvPFNC_Mono12p, 2, 0, 3},
        {QvPFNC_BGRa16, 1, 1, 128 + 8},      {QvPFNC_Mono1p, 8, 1, 2 + 1},  {QvPFNC_YUV411_8_UYYVYY, 4, 0, 6},
        {QvPFNC_GVSP_BayerBG12Packed, 2, 1, 24 + 3}, {QvPFNC_BGR10p, 4, 0, 15},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(GetIQvPixelFormatInfo(c.format)->GetName().c_str());
        IQvImage* pImage = Parent(c.format, 16, 4);
        IQvImage* pView = pImage->GetROIImage(c.x, c.y, 8, 2);
        EXPECT_EQ(OffsetOf(pView, pImage), c.offset);
    }
}

TEST_F(ROIImage, FollowsTheBayerPhaseThroughNestedViews)
{
    IQvImage* pImage = Parent(QvPFNC_BayerRG8, 8, 8);
    IQvImage* pView = pImage->GetROIImage(1, 0, 6, 6);
    EXPECT_EQ(pView->GetImagePixelFormat(), QvPFNC_BayerGR8);
    IQvImage* pNested = pView->GetROIImage(1, 0, 4, 4);
    EXPECT_EQ(pNested->GetImagePixelFormat(), QvPFNC_BayerRG8);
    IQvImage* pDeeper = pNested->GetROIImage(1, 1, 2, 2);
    EXPECT_EQ(pDeeper->GetImagePixelFormat(), QvPFNC_BayerBG8);
    EXPECT_EQ(OffsetOf(pDeeper, pImage), 8 + 3);

    // Each level's pixels are the root's pixels at the accumulated offset, with the same site.
    IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
    pValue->WriteValue(pImage, 3, 1, 0, 77);
    EXPECT_EQ(ComponentsAt(pDeeper, 0, 0), ComponentsAt(pImage, 3, 1));
    EXPECT_EQ(ComponentsAt(pDeeper, 0, 0)[0], std::make_pair(uint32_t(QvPixelComponent_B8), uint64_t(77)));
    pValue->SetPixelComponent(pDeeper, 0, 0); // decoded through the view's own address and format
    EXPECT_EQ(pValue->GetPixelComponent(0), QvPixelComponent_B8);
    EXPECT_EQ(pValue->GetValue(0), 77u);

    // Odd y on a packed Bayer family swaps the rows.
    IQvImage* pPacked = Parent(QvPFNC_BayerGR12p, 8, 4);
    EXPECT_EQ(pPacked->GetROIImage(2, 1, 4, 2)->GetImagePixelFormat(), QvPFNC_BayerBG12p);
}

TEST_F(ROIImage, RefusesPixelsOutsideTheView)
{
    IQvImage* pImage = Parent(QvPFNC_Mono8, 8, 8);
    IQvImage* pView = pImage->GetROIImage(2, 2, 3, 3);
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pView->GetIQvPixelComponentValue(3, 0); }),
              "size_t x = 3 must be smaller than Max = 3");
    EXPECT_EQ(DescriptionOf<GenICam::OutOfRangeException>([&] { pView->GetIQvPixelComponentValue(0, 3); }),
              "size_t y = 3 must be smaller than Max = 3");
    // The accessor handed out is the root image's.
    EXPECT_EQ(pView->GetIQvPixelComponentValue(0, 0), pImage->GetIQvPixelComponentValue(0, 0));
}
