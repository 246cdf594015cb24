// The viewing conversion of qvcam: its fast paths read the same samples as the SDK's pixel
// component accessor, and the Bayer interpolation keeps flat colours flat.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include <QvApi_TL.h>

#include "ViewImage.h"

using namespace QvApi;

namespace
{
uint8_t To8(uint64_t value, uint64_t bits)
{
    return bits >= 8 ? static_cast<uint8_t>(value >> (bits - 8)) : static_cast<uint8_t>(value * 255 / ((1u << bits) - 1));
}

// Fills every component of every pixel with random values through the SDK, so that the memory
// is valid for the format (spare bits zero).
void FillRandom(IQvImage* pImage, uint32_t seed)
{
    std::mt19937 random(seed);
    IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
    for (size_t y = 0; y < pImage->GetImageHeight(); ++y)
        for (size_t x = 0; x < pImage->GetImageWidth(); ++x)
        {
            pValue->SetPixelComponent(pImage, x, y);
            for (size_t i = 0; i < pValue->GetCount(); ++i)
            {
                const uint64_t bits = GetIQvPixelComponentInfo(pValue->GetPixelComponent(i))->GetBitCount();
                pImage->GetIQvPixelComponentValue(x, y)->WriteValue(pImage, x, y, i, random() & ((1u << bits) - 1));
            }
        }
}

class ViewImage : public ::testing::Test
{
protected:
    CQvApiInitializer m_library;
};

TEST_F(ViewImage, DemosaicKeepsAFlatColourFlatForEveryPhase)
{
    const uint8_t colour[3] = {200, 100, 50};
    const size_t width = 8, height = 6;
    for (uint32_t phase : {QvPixelColorFilter_BayerRG, QvPixelColorFilter_BayerGR, QvPixelColorFilter_BayerGB,
                           QvPixelColorFilter_BayerBG})
    {
        std::vector<uint8_t> mosaic(width * height);
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < width; ++x)
                mosaic[y * width + x] = colour[QvCam::BayerSiteColour(phase, x, y)];
        const std::vector<uint8_t> rgb = QvCam::DemosaicBilinear(mosaic.data(), width, height, phase);
        for (size_t i = 0; i < width * height; ++i)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(rgb[i * 3 + c], colour[c]) << "phase " << phase << " pixel " << i << " channel " << c;
    }
}

TEST_F(ViewImage, BayerSitesFollowThePhaseNames)
{
    EXPECT_EQ(QvCam::BayerSiteColour(QvPixelColorFilter_BayerRG, 0, 0), 0);
    EXPECT_EQ(QvCam::BayerSiteColour(QvPixelColorFilter_BayerRG, 1, 1), 2);
    EXPECT_EQ(QvCam::BayerSiteColour(QvPixelColorFilter_BayerGR, 1, 0), 0);
    EXPECT_EQ(QvCam::BayerSiteColour(QvPixelColorFilter_BayerGB, 0, 1), 0);
    EXPECT_EQ(QvCam::BayerSiteColour(QvPixelColorFilter_BayerBG, 0, 0), 2);
    EXPECT_EQ(QvCam::BayerSiteColour(QvPixelColorFilter_BayerBG, 3, 1), 0);
    EXPECT_EQ(QvCam::BayerSiteColour(QvPixelColorFilter_BayerBG, 1, 0), 1);
}

TEST_F(ViewImage, MonoBayerAndRgbSamplesMatchTheSdkAccessor)
{
    const EQvPixelFormatNamingConvention_t formats[] = {
        QvPFNC_Mono8,     QvPFNC_Mono12,     QvPFNC_Mono16,   QvPFNC_Mono10p, QvPFNC_Mono12p, QvPFNC_Mono4p,
        QvPFNC_BayerRG8,  QvPFNC_BayerGB12,  QvPFNC_BayerBG10p, QvPFNC_RGB8,  QvPFNC_BGR8,    QvPFNC_BGRa8,
        QvPFNC_RGBa8,     QvPFNC_RGB8_Planar};
    CIQvImageBufferPtr buffer(CreateIQvImageBuffer());
    for (EQvPixelFormatNamingConvention_t format : formats)
    {
        const IQvPixelFormatInfo* pInfo = GetIQvPixelFormatInfo(format);
        SCOPED_TRACE(pInfo->GetName().c_str());
        const size_t width = 16, height = 4;
        buffer->CreateBuffer(width, height, format, QvMemoryInitialization_Zero);
        IQvImage* pImage = buffer->GetIQvImage();
        FillRandom(pImage, format);
        const QvCam::ViewImage_t view = QvCam::ViewImage_t::FromImage(pImage);
        ASSERT_EQ(view.width, width);
        ASSERT_EQ(view.height, height);

        // Reference: the same picture from the accessor alone.
        IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
        std::vector<uint8_t> samples;
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < width; ++x)
            {
                pValue->SetPixelComponent(pImage, x, y);
                uint8_t channel[12] = {0};
                for (size_t i = 0; i < pValue->GetCount(); ++i)
                {
                    const uint32_t code = pValue->GetPixelComponent(i);
                    channel[code >> 24] = To8(pValue->GetValue(i), (code >> 16) & 0xFF);
                }
                if (pInfo->IsMono() || pInfo->IsBayer())
                    samples.push_back(pInfo->IsBayer() ? channel[pValue->GetPixelComponent(0) >> 24] : channel[1]);
                else
                    samples.insert(samples.end(), {channel[2], channel[3], channel[4]});
            }
        if (pInfo->IsBayer())
        {
            ASSERT_EQ(view.channels, 3);
            EXPECT_EQ(view.pixels, QvCam::DemosaicBilinear(samples.data(), width, height, pInfo->GetPixelColorFilter(0, 0)));
        }
        else if (pInfo->IsMono())
        {
            ASSERT_EQ(view.channels, 1);
            EXPECT_EQ(view.pixels, samples);
        }
        else
        {
            ASSERT_EQ(view.channels, 3);
            EXPECT_EQ(view.pixels, samples);
        }
    }
}

TEST_F(ViewImage, YCbCrGreyAndPrimariesConvertToRgb)
{
    CIQvImageBufferPtr buffer(CreateIQvImageBuffer());
    for (EQvPixelFormatNamingConvention_t format : {QvPFNC_YCbCr422_8, QvPFNC_YCbCr422_8_CbYCrY, QvPFNC_YCbCr8})
    {
        SCOPED_TRACE(GetIQvPixelFormatInfo(format)->GetName().c_str());
        buffer->CreateBuffer(4, 2, format, QvMemoryInitialization_Zero);
        IQvImage* pImage = buffer->GetIQvImage();
        // Row 0 mid grey (Y 128, no chroma), row 1 a saturated red (BT.601 Y 76, Cb 85, Cr 255),
        // written as bytes in each format's order.
        const bool is444 = format == QvPFNC_YCbCr8;
        const bool cbFirst = format == QvPFNC_YCbCr422_8_CbYCrY;
        for (size_t y = 0; y < 2; ++y)
        {
            uint8_t* line = static_cast<uint8_t*>(pImage->GetImageBuffer()) + y * pImage->GetImageLinePitch();
            const uint8_t luma = y == 0 ? 128 : 76, cb = y == 0 ? 128 : 85, cr = y == 0 ? 128 : 255;
            for (size_t x = 0; x < 4; ++x)
            {
                if (is444)
                {
                    line[3 * x] = luma, line[3 * x + 1] = cb, line[3 * x + 2] = cr;
                    continue;
                }
                uint8_t* group = line + (x / 2) * 4;
                group[cbFirst ? 1 + 2 * (x & 1) : 2 * (x & 1)] = luma;
                group[cbFirst ? 0 : 1] = cb;
                group[cbFirst ? 2 : 3] = cr;
            }
        }
        const QvCam::ViewImage_t view = QvCam::ViewImage_t::FromImage(pImage);
        ASSERT_EQ(view.channels, 3);
        for (size_t x = 0; x < 4; ++x)
        {
            const uint8_t* grey = &view.pixels[x * 3];
            EXPECT_EQ(grey[0], 128);
            EXPECT_EQ(grey[1], 128);
            EXPECT_EQ(grey[2], 128);
            const uint8_t* red = &view.pixels[(4 + x) * 3];
            EXPECT_GE(red[0], 250);
            EXPECT_LE(red[1], 5);
            EXPECT_LE(red[2], 5);
        }
    }
}
} // namespace
