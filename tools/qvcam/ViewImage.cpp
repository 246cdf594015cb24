#include "ViewImage.h"

#include <algorithm>
#include <cstring>

#include <QvApi_TL.h>

namespace QvCam
{
namespace
{
uint8_t To8Bits(uint64_t value, uint64_t bits)
{
    if (bits == 8)
        return static_cast<uint8_t>(value);
    if (bits > 8)
        return static_cast<uint8_t>(value >> (bits - 8));
    if (bits == 0)
        return 0;
    return static_cast<uint8_t>(value * 255 / ((uint64_t(1) << bits) - 1));
}

uint8_t Clamp(double value)
{
    return static_cast<uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

// One sample per pixel (mono or a mosaic) as 8 bits; fast for 8-bit and 16-bit containers.
std::vector<uint8_t> ReadSingleSamples(QvApi::IQvImage* pImage, const QvApi::IQvPixelFormatInfo* pInfo)
{
    const size_t width = pImage->GetImageWidth(), height = pImage->GetImageHeight();
    const size_t pitch = pImage->GetImageLinePitch();
    const uint8_t* base = static_cast<const uint8_t*>(pImage->GetImageBuffer());
    const uint64_t totalBits = pInfo->GetEachPixelTotalBitCount();
    const uint64_t validBits = pInfo->GetEachComponentValidBitCount();
    std::vector<uint8_t> samples(width * height);
    if (totalBits == 8)
    {
        for (size_t y = 0; y < height; ++y)
            std::memcpy(&samples[y * width], base + y * pitch, width);
        if (validBits != 8)
            for (uint8_t& sample : samples)
                sample = To8Bits(sample, validBits);
    }
    else if (totalBits == 16)
    {
        for (size_t y = 0; y < height; ++y)
        {
            const uint8_t* line = base + y * pitch;
            for (size_t x = 0; x < width; ++x)
                samples[y * width + x] = To8Bits(uint64_t(line[2 * x]) | uint64_t(line[2 * x + 1]) << 8, validBits);
        }
    }
    else if (totalBits < 16 && !pInfo->IsGevSp())
    {
        // PFNC "p" formats: samples packed LSB first, bit after bit, across byte borders.
        for (size_t y = 0; y < height; ++y)
        {
            const uint8_t* line = base + y * pitch;
            for (size_t x = 0; x < width; ++x)
            {
                const size_t bit = x * totalBits;
                uint32_t word = line[bit >> 3];
                if ((bit & 7) + totalBits > 8)
                    word |= uint32_t(line[(bit >> 3) + 1]) << 8;
                if ((bit & 7) + totalBits > 16)
                    word |= uint32_t(line[(bit >> 3) + 2]) << 16;
                samples[y * width + x] = To8Bits((word >> (bit & 7)) & ((1u << totalBits) - 1), validBits);
            }
        }
    }
    else
    {
        QvApi::IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < width; ++x)
            {
                pValue->SetPixelComponent(pImage, x, y);
                const uint64_t bits = QvApi::GetIQvPixelComponentInfo(pValue->GetPixelComponent(0))->GetBitCount();
                samples[y * width + x] = To8Bits(pValue->GetValue(0), bits);
            }
    }
    return samples;
}

void YCbCrToRgb(double luma, double cb, double cr, uint8_t* out)
{
    cb -= 128.0;
    cr -= 128.0;
    out[0] = Clamp(luma + 1.402 * cr);
    out[1] = Clamp(luma - 0.344136 * cb - 0.714136 * cr);
    out[2] = Clamp(luma + 1.772 * cb);
}

// Byte positions of Y0, Cb (U), Y1, Cr (V) in a 4-byte group of the 8-bit 4:2:2 formats.
const int* YCbCr422Order(QvApi::EQvPixelFormatNamingConvention_t format)
{
    static const int kYCbYCr[4] = {0, 1, 2, 3};
    static const int kCbYCrY[4] = {1, 0, 3, 2};
    switch (format)
    {
    case QvApi::QvPFNC_YCbCr422_8:
    case QvApi::QvPFNC_YCbCr601_422_8:
    case QvApi::QvPFNC_YCbCr709_422_8:
    case QvApi::QvPFNC_YUV422_8:
        return kYCbYCr;
    case QvApi::QvPFNC_YCbCr422_8_CbYCrY:
    case QvApi::QvPFNC_YCbCr601_422_8_CbYCrY:
    case QvApi::QvPFNC_YCbCr709_422_8_CbYCrY:
    case QvApi::QvPFNC_YUV422_8_UYVY:
        return kCbYCrY;
    default:
        return nullptr;
    }
}

// Byte positions of Y, Cb (U), Cr (V) of the 8-bit 4:4:4 formats.
const int* YCbCr444Order(QvApi::EQvPixelFormatNamingConvention_t format)
{
    static const int kYCbCr[3] = {0, 1, 2};
    static const int kCbYCr[3] = {1, 0, 2};
    switch (format)
    {
    case QvApi::QvPFNC_YCbCr8:
        return kYCbCr;
    case QvApi::QvPFNC_YCbCr8_CbYCr:
    case QvApi::QvPFNC_YCbCr601_8_CbYCr:
    case QvApi::QvPFNC_YCbCr709_8_CbYCr:
    case QvApi::QvPFNC_YUV8_UYV:
        return kCbYCr;
    default:
        return nullptr;
    }
}

std::vector<uint8_t> ReadYCbCr444(QvApi::IQvImage* pImage, const int* order)
{
    const size_t width = pImage->GetImageWidth(), height = pImage->GetImageHeight();
    const size_t pitch = pImage->GetImageLinePitch();
    const uint8_t* base = static_cast<const uint8_t*>(pImage->GetImageBuffer());
    std::vector<uint8_t> rgb(width * height * 3);
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x)
        {
            const uint8_t* pixel = base + y * pitch + 3 * x;
            YCbCrToRgb(pixel[order[0]], pixel[order[1]], pixel[order[2]], &rgb[(y * width + x) * 3]);
        }
    return rgb;
}

std::vector<uint8_t> ReadYCbCr422(QvApi::IQvImage* pImage, const int* order)
{
    const size_t width = pImage->GetImageWidth(), height = pImage->GetImageHeight();
    const size_t pitch = pImage->GetImageLinePitch();
    const uint8_t* base = static_cast<const uint8_t*>(pImage->GetImageBuffer());
    std::vector<uint8_t> rgb(width * height * 3);
    for (size_t y = 0; y < height; ++y)
    {
        const uint8_t* line = base + y * pitch;
        for (size_t x = 0; x < width; ++x)
        {
            const uint8_t* group = line + (x / 2) * 4;
            YCbCrToRgb(group[order[(x & 1) ? 2 : 0]], group[order[1]], group[order[3]], &rgb[(y * width + x) * 3]);
        }
    }
    return rgb;
}

// Three channels per pixel from the component accessor: R/G/B, or Y with Cb/Cr or U/V.
std::vector<uint8_t> ReadColourGeneric(QvApi::IQvImage* pImage)
{
    const size_t width = pImage->GetImageWidth(), height = pImage->GetImageHeight();
    std::vector<uint8_t> rgb(width * height * 3);
    QvApi::IQvPixelComponentValue* pValue = pImage->GetIQvPixelComponentValue(0, 0);
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x)
        {
            pValue->SetPixelComponent(pImage, x, y);
            double channel[12] = {0};
            bool seen[12] = {false};
            for (size_t i = 0; i < pValue->GetCount(); ++i)
            {
                const QvApi::EQvPixelComponent_t code = pValue->GetPixelComponent(i);
                const uint32_t kind = static_cast<uint32_t>(code) >> 24;
                const uint64_t bits = (static_cast<uint32_t>(code) >> 16) & 0xFF;
                if (kind < 12)
                {
                    channel[kind] = To8Bits(pValue->GetValue(i), bits);
                    seen[kind] = true;
                }
            }
            uint8_t* out = &rgb[(y * width + x) * 3];
            if (seen[7]) // Y with Cb/Cr (8, 9) or U/V (10, 11)
            {
                YCbCrToRgb(channel[7], seen[8] ? channel[8] : channel[10], seen[9] ? channel[9] : channel[11], out);
            }
            else if (seen[1]) // mono
                out[0] = out[1] = out[2] = static_cast<uint8_t>(channel[1]);
            else
            {
                out[0] = static_cast<uint8_t>(channel[2]);
                out[1] = static_cast<uint8_t>(seen[3] ? channel[3] : seen[5] ? channel[5] : channel[6]);
                out[2] = static_cast<uint8_t>(channel[4]);
            }
        }
    return rgb;
}
} // namespace

int BayerSiteColour(uint32_t phase, size_t x, size_t y)
{
    // Colour of the cell's four sites, top-left, top-right, bottom-left, bottom-right.
    static const int kCells[4][4] = {
        {0, 1, 1, 2}, // BayerRG
        {1, 0, 2, 1}, // BayerGR
        {1, 2, 0, 1}, // BayerGB
        {2, 1, 1, 0}, // BayerBG
    };
    const uint32_t row = phase >= QvApi::QvPixelColorFilter_BayerRG && phase <= QvApi::QvPixelColorFilter_BayerBG
                             ? phase - QvApi::QvPixelColorFilter_BayerRG
                             : 0;
    return kCells[row][(y & 1) * 2 + (x & 1)];
}

std::vector<uint8_t> DemosaicBilinear(const uint8_t* mosaic, size_t width, size_t height, uint32_t phase)
{
    std::vector<uint8_t> rgb(width * height * 3);
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x)
        {
            // Averaging the same-colour sites of the 3 x 3 neighbourhood is bilinear
            // interpolation on a Bayer grid; at the edges only the sites inside count.
            unsigned sum[3] = {0, 0, 0}, count[3] = {0, 0, 0};
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx)
                {
                    if ((y == 0 && dy < 0) || (x == 0 && dx < 0) || (y + 1 == height && dy > 0) ||
                        (x + 1 == width && dx > 0))
                        continue;
                    const size_t sx = x + dx, sy = y + dy;
                    const int colour = BayerSiteColour(phase, sx, sy);
                    sum[colour] += mosaic[sy * width + sx];
                    ++count[colour];
                }
            uint8_t* out = &rgb[(y * width + x) * 3];
            const int own = BayerSiteColour(phase, x, y);
            for (int c = 0; c < 3; ++c)
                out[c] = c == own ? mosaic[y * width + x]
                         : count[c] ? static_cast<uint8_t>((sum[c] + count[c] / 2) / count[c])
                                    : 0;
        }
    return rgb;
}

ViewImage_t ViewImage_t::FromImage(QvApi::IQvImage* pImage)
{
    ViewImage_t view;
    view.width = pImage->GetImageWidth();
    view.height = pImage->GetImageHeight();
    const QvApi::EQvPixelFormatNamingConvention_t format = pImage->GetImagePixelFormat();
    const QvApi::IQvPixelFormatInfo* pInfo = QvApi::GetIQvPixelFormatInfo(format);
    if (pInfo->IsBayer())
    {
        const std::vector<uint8_t> mosaic = ReadSingleSamples(pImage, pInfo);
        view.channels = 3;
        view.pixels = DemosaicBilinear(mosaic.data(), view.width, view.height, pInfo->GetPixelColorFilter(0, 0));
        return view;
    }
    if (pInfo->IsMono())
    {
        view.channels = 1;
        view.pixels = ReadSingleSamples(pImage, pInfo);
        return view;
    }
    view.channels = 3;
    const size_t pitch = pImage->GetImageLinePitch();
    const uint8_t* base = static_cast<const uint8_t*>(pImage->GetImageBuffer());
    int step = 0, red = 0, blue = 2;
    switch (format)
    {
    case QvApi::QvPFNC_RGB8:
        step = 3;
        break;
    case QvApi::QvPFNC_BGR8:
        step = 3, red = 2, blue = 0;
        break;
    case QvApi::QvPFNC_RGBa8:
        step = 4;
        break;
    case QvApi::QvPFNC_BGRa8:
        step = 4, red = 2, blue = 0;
        break;
    default:
        if (const int* order = YCbCr422Order(format))
        {
            view.pixels = ReadYCbCr422(pImage, order);
            return view;
        }
        if (const int* order = YCbCr444Order(format))
        {
            view.pixels = ReadYCbCr444(pImage, order);
            return view;
        }
        view.pixels = ReadColourGeneric(pImage);
        return view;
    }
    view.pixels.resize(view.width * view.height * 3);
    for (size_t y = 0; y < view.height; ++y)
    {
        const uint8_t* in = base + y * pitch;
        uint8_t* out = &view.pixels[y * view.width * 3];
        for (size_t x = 0; x < view.width; ++x, in += step, out += 3)
        {
            out[0] = in[red];
            out[1] = in[1];
            out[2] = in[blue];
        }
    }
    return view;
}
} // namespace QvCam
