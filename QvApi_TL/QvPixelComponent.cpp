#include "QvApi_TL/QvPixelComponent.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include <Base/GCSynch.h>
#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvImage.h>

#include "QvApi_TL/QvApi.h"
#include "QvApi_TL/QvPixelFormatInfo.h"
#include "QvApi_TL/QvSpecificPixelInfo.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// `bits` bits starting `shift` bits above bit 0 of the byte at pByte, bytes taken least
// significant first. A null pByte lies outside the image: it reads as 0 and is never written.
struct BitField_t
{
    uint8_t* pByte;
    uint32_t shift;
    uint32_t bits;
};

// One sample of a pixel. Most are one field; the GigE Vision packing splits a sample into a
// high byte and a low nibble, read as (high << low.bits) | low.
struct Sample_t
{
    EQvPixelComponent_t component;
    BitField_t high;
    BitField_t low; // bits 0 when the sample is one field
};

struct PixelLayout_t
{
    size_t count;
    Sample_t samples[3];
};

// What a locator needs to know about the pixel; x and y are already checked.
struct PixelRequest_t
{
    IQvImage* pImage;
    const CQvSpecificPixelInfo* pInfo;
    EQvPixelFormatNamingConvention_t format;
    uint8_t* pBuffer;
    size_t linePitch;
    size_t width;
    size_t height;
    size_t x;
    size_t y;
};

using Locator_t = void (*)(const PixelRequest_t&, PixelLayout_t&);

constexpr uint64_t Mask(uint32_t bits)
{
    return bits >= 64 ? ~uint64_t(0) : (uint64_t(1) << bits) - 1;
}

constexpr EQvPixelComponent_t MakeComponent(uint32_t channel, uint64_t bits)
{
    return static_cast<EQvPixelComponent_t>((channel << 24) | (static_cast<uint32_t>(bits) << 16));
}

constexpr uint32_t kChannelMono = 1;
constexpr uint32_t kChannelRed = 2;
constexpr uint32_t kChannelGreen = 3;
constexpr uint32_t kChannelBlue = 4;
constexpr uint32_t kChannelY = 7;
constexpr uint32_t kChannelCb = 8;
constexpr uint32_t kChannelCr = 9;
constexpr uint32_t kChannelU = 10;
constexpr uint32_t kChannelV = 11;

BitField_t Field(uint8_t* pByte, uint32_t shift, uint32_t bits)
{
    return BitField_t{pByte, shift, bits};
}

// A field that starts at bit `bitPosition` counted from pBase.
BitField_t FieldAtBit(uint8_t* pBase, uint64_t bitPosition, uint32_t bits)
{
    return BitField_t{pBase + bitPosition / 8, static_cast<uint32_t>(bitPosition & 7), bits};
}

void Append(PixelLayout_t& layout, EQvPixelComponent_t component, BitField_t high, BitField_t low = {nullptr, 0, 0})
{
    layout.samples[layout.count++] = Sample_t{component, high, low};
}

uint64_t ReadField(const BitField_t& field)
{
    if (field.pByte == nullptr || field.bits == 0)
        return 0;
    const uint32_t end = field.shift + field.bits;
    uint64_t gathered = 0;
    for (uint32_t i = 0; i * 8 < end; ++i)
        gathered |= static_cast<uint64_t>(field.pByte[i]) << (8 * i);
    return (gathered >> field.shift) & Mask(field.bits);
}

void WriteField(const BitField_t& field, uint64_t value)
{
    if (field.pByte == nullptr || field.bits == 0)
        return;
    const uint32_t end = field.shift + field.bits;
    uint64_t gathered = 0;
    for (uint32_t i = 0; i * 8 < end; ++i)
        gathered |= static_cast<uint64_t>(field.pByte[i]) << (8 * i);
    const uint64_t mask = Mask(field.bits) << field.shift;
    gathered = (gathered & ~mask) | ((value << field.shift) & mask);
    for (uint32_t i = 0; i * 8 < end; ++i)
        field.pByte[i] = static_cast<uint8_t>(gathered >> (8 * i));
}

uint64_t ReadSample(const Sample_t& sample)
{
    if (sample.low.bits == 0)
        return ReadField(sample.high);
    return (ReadField(sample.high) << sample.low.bits) | ReadField(sample.low);
}

void WriteSample(const Sample_t& sample, uint64_t value)
{
    if (sample.low.bits == 0)
    {
        WriteField(sample.high, value);
        return;
    }
    WriteField(sample.high, value >> sample.low.bits);
    WriteField(sample.low, value & Mask(sample.low.bits));
}

// The mono component of the format's depth, or for a Bayer format the colour site at (x, y):
// R, Gr, Gb or B by the phase of the image's top-left pixel.
EQvPixelComponent_t MonoOrBayerComponent(const PixelRequest_t& request)
{
    const CQvSpecificPixelInfo& info = *request.pInfo;
    const uint64_t bits = info.GetEachComponentValidBitCount();
    const EQvPixelColorFilter_t filter = info.GetPixelColorFilter(0, 0);
    if (filter < QvPixelColorFilter_BayerRG || filter > QvPixelColorFilter_BayerBG)
        return MakeComponent(kChannelMono, bits);
    // Site 0 R, 1 Gr, 2 Gb, 3 B of the cell position k = (x & 1) + 2 (y & 1), per phase.
    static constexpr uint8_t kSite[4][4] = {{0, 1, 2, 3}, {1, 0, 3, 2}, {2, 3, 0, 1}, {3, 2, 1, 0}};
    static constexpr uint32_t kSiteChannel[4] = {kChannelRed, 5, 6, kChannelBlue};
    const size_t k = (request.x & 1) + 2 * (request.y & 1);
    return MakeComponent(kSiteChannel[kSite[filter - QvPixelColorFilter_BayerRG][k]], bits);
}

uint8_t* LineStart(const PixelRequest_t& request)
{
    return request.pBuffer + request.y * request.linePitch;
}

// ---- Sample locators, one per family of formats ---------------------------------------------

// Mono and Bayer, one little-endian sample of type T per pixel.
template <typename T>
void SetPixelComponentRaw_t(const PixelRequest_t& request, PixelLayout_t& layout)
{
    uint8_t* pSample = LineStart(request) + request.x * sizeof(T);
    Append(layout, MonoOrBayerComponent(request), Field(pSample, 0, 8 * sizeof(T)));
}

// PFNC packing: n-bit pixels from the least significant bit of each byte upward, no padding
// between pixels, every line starting on a byte.
void SetPixelComponentPacked_t(const PixelRequest_t& request, PixelLayout_t& layout)
{
    const uint32_t n = static_cast<uint32_t>(request.pInfo->GetEachPixelValidBitCount());
    Append(layout, MonoOrBayerComponent(request), FieldAtBit(LineStart(request), uint64_t(request.x) * n, n));
}

// GigE Vision packing: two pixels in three bytes (b0, b1, b2); the high eight bits of the even
// pixel in b0 and of the odd one in b2, their low bits in the upper and lower nibble of b1.
void SetPixelComponentGEVPacked16(const PixelRequest_t& request, PixelLayout_t& layout)
{
    const uint32_t s = static_cast<uint32_t>(request.pInfo->GetEachPixelValidBitCount()) - 8;
    uint8_t* pGroup = LineStart(request) + (request.x / 2) * 3;
    if ((request.x & 1) == 0)
        Append(layout, MonoOrBayerComponent(request), Field(pGroup, 0, 8), Field(pGroup + 1, 4, s));
    else
        Append(layout, MonoOrBayerComponent(request), Field(pGroup + 2, 0, 8), Field(pGroup + 1, 0, s));
}

// Interleaved samples of type T in memory order, the alpha sample (if any) not reported.
template <typename T>
void SetPixelComponentBGR_t(const PixelRequest_t& request, PixelLayout_t& layout)
{
    const CQvSpecificPixelInfo& info = *request.pInfo;
    const uint64_t bits = info.GetEachComponentValidBitCount();
    const size_t stride = info.GetEachPixelTotalComponentCount() * sizeof(T);
    uint8_t* pPixel = LineStart(request) + request.x * stride;
    const uint32_t first = info.IsBGROrder() ? kChannelBlue : kChannelRed;
    const uint32_t last = info.IsBGROrder() ? kChannelRed : kChannelBlue;
    Append(layout, MakeComponent(first, bits), Field(pPixel, 0, 8 * sizeof(T)));
    Append(layout, MakeComponent(kChannelGreen, bits), Field(pPixel + sizeof(T), 0, 8 * sizeof(T)));
    Append(layout, MakeComponent(last, bits), Field(pPixel + 2 * sizeof(T), 0, 8 * sizeof(T)));
}

// One 32-bit word per pixel with 10-bit fields at bits 0, 10 and 20, reported B, G, R for both
// formats of the family (the reader does not tell them apart).
void SetPixelComponentBGRx10p32(const PixelRequest_t& request, PixelLayout_t& layout)
{
    uint8_t* pWord = LineStart(request) + request.x * 4;
    Append(layout, MakeComponent(kChannelBlue, 10), FieldAtBit(pWord, 0, 10));
    Append(layout, MakeComponent(kChannelGreen, 10), FieldAtBit(pWord, 10, 10));
    Append(layout, MakeComponent(kChannelRed, 10), FieldAtBit(pWord, 20, 10));
}

// Packed colour: three n-bit fields per pixel, packed like the PFNC mono formats.
void SetPixelComponentBGRxp(const PixelRequest_t& request, PixelLayout_t& layout)
{
    const CQvSpecificPixelInfo& info = *request.pInfo;
    const uint32_t n = static_cast<uint32_t>(info.GetEachComponentValidBitCount());
    const uint64_t bitPosition = uint64_t(request.x) * 3 * n;
    uint8_t* pLine = LineStart(request);
    const uint32_t first = info.IsBGROrder() ? kChannelBlue : kChannelRed;
    const uint32_t last = info.IsBGROrder() ? kChannelRed : kChannelBlue;
    Append(layout, MakeComponent(first, n), FieldAtBit(pLine, bitPosition, n));
    Append(layout, MakeComponent(kChannelGreen, n), FieldAtBit(pLine, bitPosition + n, n));
    Append(layout, MakeComponent(last, n), FieldAtBit(pLine, bitPosition + 2 * n, n));
}

// Planar: R, G and B planes one plane pitch apart, one sample of type T per pixel in each.
template <typename T>
void SetPixelComponentRGBx_Planar_t(const PixelRequest_t& request, PixelLayout_t& layout)
{
    const uint64_t bits = request.pInfo->GetEachComponentValidBitCount();
    const size_t planePitch = request.pImage->GetImagePlanePitch();
    uint8_t* pSample = LineStart(request) + request.x * sizeof(T);
    Append(layout, MakeComponent(kChannelRed, bits), Field(pSample, 0, 8 * sizeof(T)));
    Append(layout, MakeComponent(kChannelGreen, bits), Field(pSample + planePitch, 0, 8 * sizeof(T)));
    Append(layout, MakeComponent(kChannelBlue, bits), Field(pSample + 2 * planePitch, 0, 8 * sizeof(T)));
}

// YCbCr and YUV: the byte indices of Y, Cb/U and Cr/V within a group of four pixels, by the
// pixel's place u in the group. Two layouts do not follow their format's packing and are kept
// that way on purpose: "YCbCr411_8" takes the luma of pixels 2 and 3 from bytes 5 and 6, and the
// 4:4:4 formats step 16 bytes per group of four and read bytes 0 to 2 for all four pixels.
void SetPixelComponentYCbCr_t(const PixelRequest_t& request, PixelLayout_t& layout, bool isYUV)
{
    const size_t x = request.x;
    const size_t u = x & 3;
    size_t groupOffset = 0;
    size_t y = 0, cb = 0, cr = 0;
    bool chromaFirst = false;
    switch (request.format)
    {
    case QvPFNC_YCbCr422_8:
    case QvPFNC_YCbCr601_422_8:
    case QvPFNC_YCbCr709_422_8:
    case QvPFNC_YUV422_8:
        groupOffset = (x / 4) * 8;
        y = 2 * u;
        cb = u < 2 ? 1 : 5;
        cr = u < 2 ? 3 : 7;
        break;
    case QvPFNC_YCbCr422_8_CbYCrY:
    case QvPFNC_YCbCr601_422_8_CbYCrY:
    case QvPFNC_YCbCr709_422_8_CbYCrY:
    case QvPFNC_YUV422_8_UYVY:
        groupOffset = (x / 4) * 8;
        y = 2 * u + 1;
        cb = u < 2 ? 0 : 4;
        cr = u < 2 ? 2 : 6;
        break;
    case QvPFNC_YCbCr411_8_CbYYCrYY:
    case QvPFNC_YCbCr601_411_8_CbYYCrYY:
    case QvPFNC_YCbCr709_411_8_CbYYCrYY:
    case QvPFNC_YUV411_8_UYYVYY:
        groupOffset = (x / 4) * 6;
        y = u < 2 ? u + 1 : u + 2;
        cb = 0;
        cr = 3;
        break;
    case QvPFNC_YCbCr411_8:
        groupOffset = (x / 4) * 6;
        y = u < 2 ? u : u + 3;
        cb = 2;
        cr = 5;
        break;
    case QvPFNC_YCbCr8:
        groupOffset = (x / 4) * 16;
        y = 0;
        cb = 1;
        cr = 2;
        break;
    default: // the CbYCr 4:4:4 formats
        groupOffset = (x / 4) * 16;
        y = 1;
        cb = 0;
        cr = 2;
        chromaFirst = true;
        break;
    }

    // The irregular layouts can point past the pixels of the last line; such bytes belong to no
    // one we know of and read as 0 instead of being touched.
    uint8_t* pGroup = LineStart(request) + groupOffset;
    const uint8_t* pEnd = request.pBuffer + (request.height - 1) * request.linePitch +
                          request.pInfo->GetRequiredLinePitch(request.width, 1);
    auto byteField = [&](size_t index) {
        uint8_t* pByte = pGroup + index;
        return Field(pByte < pEnd ? pByte : nullptr, 0, 8);
    };
    const EQvPixelComponent_t luma = MakeComponent(kChannelY, 8);
    const EQvPixelComponent_t blue = MakeComponent(isYUV ? kChannelU : kChannelCb, 8);
    const EQvPixelComponent_t red = MakeComponent(isYUV ? kChannelV : kChannelCr, 8);
    if (chromaFirst)
    {
        Append(layout, blue, byteField(cb));
        Append(layout, luma, byteField(y));
    }
    else
    {
        Append(layout, luma, byteField(y));
        Append(layout, blue, byteField(cb));
    }
    Append(layout, red, byteField(cr));
}

void SetPixelComponentRaw8(const PixelRequest_t& r, PixelLayout_t& l) { SetPixelComponentRaw_t<unsigned char>(r, l); }
void SetPixelComponentRaw16(const PixelRequest_t& r, PixelLayout_t& l) { SetPixelComponentRaw_t<unsigned short>(r, l); }
void SetPixelComponentBGR8(const PixelRequest_t& r, PixelLayout_t& l) { SetPixelComponentBGR_t<unsigned char>(r, l); }
void SetPixelComponentBGR16(const PixelRequest_t& r, PixelLayout_t& l) { SetPixelComponentBGR_t<unsigned short>(r, l); }
void SetPixelComponentYCbCr8(const PixelRequest_t& r, PixelLayout_t& l) { SetPixelComponentYCbCr_t(r, l, false); }
void SetPixelComponentYUV8(const PixelRequest_t& r, PixelLayout_t& l) { SetPixelComponentYCbCr_t(r, l, true); }
void SetPixelComponentRGB8_Planar(const PixelRequest_t& r, PixelLayout_t& l)
{
    SetPixelComponentRGBx_Planar_t<unsigned char>(r, l);
}
void SetPixelComponentRGB16_Planar(const PixelRequest_t& r, PixelLayout_t& l)
{
    SetPixelComponentRGBx_Planar_t<unsigned short>(r, l);
}
constexpr Locator_t SetPixelComponentPacked8 = SetPixelComponentPacked_t;
constexpr Locator_t SetPixelComponentPacked16 = SetPixelComponentPacked_t;

// ---- Dispatch -----------------------------------------------------------------------------------

struct Reader_t
{
    EQvPixelFormatNamingConvention_t format;
    Locator_t locate;
    // False where the locator does not follow the format's packing: writing there would land in
    // a neighbour's bytes.
    bool writable;
};

// clang-format off
constexpr Reader_t kReaders[] = {
    {QvPFNC_Mono8, SetPixelComponentRaw8, true},
    {QvPFNC_BayerGR8, SetPixelComponentRaw8, true},
    {QvPFNC_BayerRG8, SetPixelComponentRaw8, true},
    {QvPFNC_BayerGB8, SetPixelComponentRaw8, true},
    {QvPFNC_BayerBG8, SetPixelComponentRaw8, true},
    {QvPFNC_Mono10, SetPixelComponentRaw16, true},
    {QvPFNC_Mono12, SetPixelComponentRaw16, true},
    {QvPFNC_Mono14, SetPixelComponentRaw16, true},
    {QvPFNC_Mono16, SetPixelComponentRaw16, true},
    {QvPFNC_BayerGR10, SetPixelComponentRaw16, true},
    {QvPFNC_BayerRG10, SetPixelComponentRaw16, true},
    {QvPFNC_BayerGB10, SetPixelComponentRaw16, true},
    {QvPFNC_BayerBG10, SetPixelComponentRaw16, true},
    {QvPFNC_BayerGR12, SetPixelComponentRaw16, true},
    {QvPFNC_BayerRG12, SetPixelComponentRaw16, true},
    {QvPFNC_BayerGB12, SetPixelComponentRaw16, true},
    {QvPFNC_BayerBG12, SetPixelComponentRaw16, true},
    {QvPFNC_BayerGR14, SetPixelComponentRaw16, true},
    {QvPFNC_BayerRG14, SetPixelComponentRaw16, true},
    {QvPFNC_BayerGB14, SetPixelComponentRaw16, true},
    {QvPFNC_BayerBG14, SetPixelComponentRaw16, true},
    {QvPFNC_BayerGR16, SetPixelComponentRaw16, true},
    {QvPFNC_BayerRG16, SetPixelComponentRaw16, true},
    {QvPFNC_BayerGB16, SetPixelComponentRaw16, true},
    {QvPFNC_BayerBG16, SetPixelComponentRaw16, true},
    {QvPFNC_Mono1p, SetPixelComponentPacked8, true},
    {QvPFNC_Mono2p, SetPixelComponentPacked8, true},
    {QvPFNC_Mono4p, SetPixelComponentPacked8, true},
    {QvPFNC_BayerGR4p, SetPixelComponentPacked8, true},
    {QvPFNC_BayerRG4p, SetPixelComponentPacked8, true},
    {QvPFNC_BayerGB4p, SetPixelComponentPacked8, true},
    {QvPFNC_BayerBG4p, SetPixelComponentPacked8, true},
    {QvPFNC_Mono10p, SetPixelComponentPacked16, true},
    {QvPFNC_Mono12p, SetPixelComponentPacked16, true},
    {QvPFNC_Mono14p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerGR10p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerRG10p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerGB10p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerBG10p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerGR12p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerRG12p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerGB12p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerBG12p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerGR14p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerRG14p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerGB14p, SetPixelComponentPacked16, true},
    {QvPFNC_BayerBG14p, SetPixelComponentPacked16, true},
    {QvPFNC_GVSP_Mono10Packed, SetPixelComponentGEVPacked16, true},
    {QvPFNC_GVSP_Mono12Packed, SetPixelComponentGEVPacked16, true},
    {QvPFNC_GVSP_BayerGR10Packed, SetPixelComponentGEVPacked16, true},
    {QvPFNC_GVSP_BayerGR12Packed, SetPixelComponentGEVPacked16, true},
    {QvPFNC_GVSP_BayerRG10Packed, SetPixelComponentGEVPacked16, true},
    {QvPFNC_GVSP_BayerRG12Packed, SetPixelComponentGEVPacked16, true},
    {QvPFNC_GVSP_BayerGB10Packed, SetPixelComponentGEVPacked16, true},
    {QvPFNC_GVSP_BayerGB12Packed, SetPixelComponentGEVPacked16, true},
    {QvPFNC_GVSP_BayerBG10Packed, SetPixelComponentGEVPacked16, true},
    {QvPFNC_GVSP_BayerBG12Packed, SetPixelComponentGEVPacked16, true},
    {QvPFNC_RGB8, SetPixelComponentBGR8, true},
    {QvPFNC_RGBa8, SetPixelComponentBGR8, true},
    {QvPFNC_BGR8, SetPixelComponentBGR8, true},
    {QvPFNC_BGRa8, SetPixelComponentBGR8, true},
    {QvPFNC_BGR10, SetPixelComponentBGR16, true},
    {QvPFNC_BGRa10, SetPixelComponentBGR16, true},
    {QvPFNC_BGR12, SetPixelComponentBGR16, true},
    {QvPFNC_BGRa12, SetPixelComponentBGR16, true},
    {QvPFNC_BGR14, SetPixelComponentBGR16, true},
    {QvPFNC_BGRa14, SetPixelComponentBGR16, true},
    {QvPFNC_BGR16, SetPixelComponentBGR16, true},
    {QvPFNC_BGRa16, SetPixelComponentBGR16, true},
    {QvPFNC_RGB16, SetPixelComponentBGR16, true},
    {QvPFNC_CBGR10p32, SetPixelComponentBGRx10p32, true},
    {QvPFNC_RGB10p32, SetPixelComponentBGRx10p32, true},
    {QvPFNC_YCbCr8, SetPixelComponentYCbCr8, false},
    {QvPFNC_YCbCr411_8, SetPixelComponentYCbCr8, false},
    {QvPFNC_YCbCr422_8, SetPixelComponentYCbCr8, true},
    {QvPFNC_YCbCr709_422_8, SetPixelComponentYCbCr8, true},
    {QvPFNC_YCbCr601_422_8, SetPixelComponentYCbCr8, true},
    {QvPFNC_YCbCr411_8_CbYYCrYY, SetPixelComponentYCbCr8, true},
    {QvPFNC_YCbCr601_411_8_CbYYCrYY, SetPixelComponentYCbCr8, true},
    {QvPFNC_YCbCr709_411_8_CbYYCrYY, SetPixelComponentYCbCr8, true},
    {QvPFNC_YCbCr422_8_CbYCrY, SetPixelComponentYCbCr8, true},
    {QvPFNC_YCbCr601_422_8_CbYCrY, SetPixelComponentYCbCr8, true},
    {QvPFNC_YCbCr709_422_8_CbYCrY, SetPixelComponentYCbCr8, true},
    {QvPFNC_YCbCr8_CbYCr, SetPixelComponentYCbCr8, false},
    {QvPFNC_YCbCr601_8_CbYCr, SetPixelComponentYCbCr8, false},
    {QvPFNC_YCbCr709_8_CbYCr, SetPixelComponentYCbCr8, false},
    {QvPFNC_YUV411_8_UYYVYY, SetPixelComponentYUV8, true},
    {QvPFNC_YUV422_8_UYVY, SetPixelComponentYUV8, true},
    {QvPFNC_YUV8_UYV, SetPixelComponentYUV8, false},
    {QvPFNC_YUV422_8, SetPixelComponentYUV8, true},
    {QvPFNC_RGB8_Planar, SetPixelComponentRGB8_Planar, true},
    {QvPFNC_RGB10_Planar, SetPixelComponentRGB16_Planar, true},
    {QvPFNC_RGB12_Planar, SetPixelComponentRGB16_Planar, true},
    {QvPFNC_RGB16_Planar, SetPixelComponentRGB16_Planar, true},
    {QvPFNC_BGR10p, SetPixelComponentBGRxp, true},
    {QvPFNC_BGR12p, SetPixelComponentBGRxp, true},
    {QvPFNC_RGB10p, SetPixelComponentBGRxp, true},
    {QvPFNC_RGB12p, SetPixelComponentBGRxp, true},
};
// clang-format on
constexpr size_t kReaderCount = sizeof(kReaders) / sizeof(kReaders[0]);
static_assert(kReaderCount == 98, "one reader per known pixel format");

// The readers sorted by code at compile time, shared by every accessor.
constexpr std::array<Reader_t, kReaderCount> SortReaders()
{
    std::array<Reader_t, kReaderCount> readers{};
    for (size_t i = 0; i < kReaderCount; ++i)
    {
        size_t j = i;
        for (; j > 0 && readers[j - 1].format > kReaders[i].format; --j)
            readers[j] = readers[j - 1];
        readers[j] = kReaders[i];
    }
    return readers;
}
constexpr std::array<Reader_t, kReaderCount> kSortedReaders = SortReaders();

// The reader of a format, or null.
const Reader_t* GetFilter(EQvPixelFormatNamingConvention_t format)
{
    const auto& readers = kSortedReaders;
    const auto it = std::lower_bound(readers.begin(), readers.end(), format,
                                     [](const Reader_t& reader, EQvPixelFormatNamingConvention_t value) {
                                         return reader.format < value;
                                     });
    return it != readers.end() && it->format == format ? &*it : nullptr;
}

[[noreturn, gnu::cold, gnu::noinline]] void ThrowNotSupported(EQvPixelFormatNamingConvention_t format)
{
    // An unknown code fails in the table lookup with its own message.
    const GenICam::gcstring name = GetIQvPixelFormatInfo(format)->GetName();
    QV_THROW(RuntimeException, "Not supported pixelformat %s", name.c_str());
}

// Checks (x, y) against the image, finds the format's reader and locates the pixel's samples.
const Reader_t& Locate(IQvImage* pIQvImage, size_t x, size_t y, PixelLayout_t& layout)
{
    const size_t width = pIQvImage->GetImageWidth();
    const size_t height = pIQvImage->GetImageHeight();
    QV_CHECK_MIN("size_t x", static_cast<long>(x), 0L);
    QV_CHECK_BELOW("size_t x", static_cast<long>(x), width);
    QV_CHECK_MIN("size_t y", static_cast<long>(y), 0L);
    QV_CHECK_BELOW("size_t y", static_cast<long>(y), height);

    const EQvPixelFormatNamingConvention_t format = pIQvImage->GetImagePixelFormat();
    const Reader_t* pReader = GetFilter(format);
    if (QV_UNLIKELY(pReader == nullptr))
        ThrowNotSupported(format);
    CheckQvApiInitialized();
    const CQvSpecificPixelInfo* pInfo = gpCQvPixelFormatInfo->Find(format);
    QV_ASSERT(pInfo != nullptr, "(pIQvPixelFormatInfo) != NULL");

    PixelRequest_t request{pIQvImage, pInfo, format, static_cast<uint8_t*>(pIQvImage->GetImageBuffer()),
                           pIQvImage->GetImageLinePitch(), width, height, x, y};
    layout.count = 0;
    pReader->locate(request, layout);
    return *pReader;
}
} // namespace

CQvPixelComponent::CQvPixelComponent()
{
    m_components.reserve(3); // so that decoding never allocates
}

size_t CQvPixelComponent::GetCount()
{
    GenICam::AutoLock lock(m_lock);
    return m_components.size();
}

uint64_t CQvPixelComponent::GetValue(size_t nIndex)
{
    GenICam::AutoLock lock(m_lock);
    QV_CHECK_MIN("nIndex", static_cast<long>(nIndex), 0L);
    QV_CHECK_BELOW("nIndex", static_cast<long>(nIndex), m_components.size());
    return m_components[nIndex].value;
}

EQvPixelComponent_t CQvPixelComponent::GetPixelComponent(size_t nIndex)
{
    GenICam::AutoLock lock(m_lock);
    QV_CHECK_MIN("nIndex", static_cast<long>(nIndex), 0L);
    QV_CHECK_BELOW("nIndex", static_cast<long>(nIndex), m_components.size());
    return m_components[nIndex].component;
}

void CQvPixelComponent::SetPixelComponent(IQvImage* pIQvImage, size_t x, size_t y)
{
    QV_ASSERT(pIQvImage != nullptr, "pIQvImage");
    PixelLayout_t layout;
    Locate(pIQvImage, x, y, layout);

    GenICam::AutoLock lock(m_lock);
    m_components.clear();
    for (size_t i = 0; i < layout.count; ++i)
        m_components.push_back(SPIXE_COMPONENT_INFO{layout.samples[i].component, ReadSample(layout.samples[i])});
}

void CQvPixelComponent::WriteValue(IQvImage* pIQvImage, size_t x, size_t y, size_t nIndex, uint64_t value)
{
    QV_ASSERT(pIQvImage != nullptr, "pIQvImage");
    PixelLayout_t layout;
    const Reader_t& reader = Locate(pIQvImage, x, y, layout);
    if (QV_UNLIKELY(!reader.writable))
        ThrowNotSupported(reader.format);
    QV_CHECK_MIN("nIndex", static_cast<long>(nIndex), 0L);
    QV_CHECK_BELOW("nIndex", static_cast<long>(nIndex), layout.count);
    const Sample_t& sample = layout.samples[nIndex];
    const uint32_t bits = (static_cast<uint32_t>(sample.component) >> 16) & 0xFF;
    QV_CHECK_MAX("value", value, Mask(bits));

    GenICam::AutoLock lock(m_lock);
    WriteSample(sample, value);
    m_components.clear();
    for (size_t i = 0; i < layout.count; ++i)
        m_components.push_back(SPIXE_COMPONENT_INFO{layout.samples[i].component, ReadSample(layout.samples[i])});
}
} // namespace QvApi
