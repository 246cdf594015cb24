#include "tests/producers/PixelCheck.h"

#include <QvGenTL/VirtualCamera.h>

namespace QvGenTLTest {

namespace {

using namespace QvVirtualCamera;

struct Format_t
{
    uint32_t pfnc;
    enum { Mono, Bayer, Rgb, Bgr, Bgra, YCbCr } kind;
    uint32_t bits;          // significant bits
    uint32_t bitsPerPixel;  // storage
    int bayer;              // 0 GR, 1 RG, 2 GB, 3 BG
};

const Format_t kFormats[] = {
    {0x01080001, Format_t::Mono, 8, 8, 0},    {0x01100003, Format_t::Mono, 10, 16, 0},
    {0x01100005, Format_t::Mono, 12, 16, 0},  {0x01100007, Format_t::Mono, 16, 16, 0},
    {0x010A0046, Format_t::Mono, 10, 10, 0},  {0x010C0047, Format_t::Mono, 12, 12, 0},
    {0x01080008, Format_t::Bayer, 8, 8, 0},   {0x01080009, Format_t::Bayer, 8, 8, 1},
    {0x0108000A, Format_t::Bayer, 8, 8, 2},   {0x0108000B, Format_t::Bayer, 8, 8, 3},
    {0x01100010, Format_t::Bayer, 12, 16, 0}, {0x01100011, Format_t::Bayer, 12, 16, 1},
    {0x01100012, Format_t::Bayer, 12, 16, 2}, {0x01100013, Format_t::Bayer, 12, 16, 3},
    {0x02180014, Format_t::Rgb, 8, 24, 0},    {0x02180015, Format_t::Bgr, 8, 24, 0},
    {0x02200017, Format_t::Bgra, 8, 32, 0},   {0x0210003B, Format_t::YCbCr, 8, 16, 0},
};

const Format_t* Find(uint32_t pfnc)
{
    for (const Format_t& format : kFormats)
        if (format.pfnc == pfnc)
            return &format;
    return nullptr;
}

/// Sample of pixel index i of a line: little-endian 16-bit containers, or LSB-first packing.
uint32_t Sample(const Format_t& format, const uint8_t* line, uint32_t i)
{
    if (format.bitsPerPixel == 8)
        return line[i];
    if (format.bitsPerPixel == 16)
        return uint32_t(line[2 * i]) | uint32_t(line[2 * i + 1]) << 8;
    uint32_t value = 0;
    const size_t bit = size_t(i) * format.bitsPerPixel;
    for (uint32_t b = 0; b < format.bitsPerPixel; ++b)
        if (line[(bit + b) >> 3] & (1u << ((bit + b) & 7)))
            value |= 1u << b;
    return value;
}

/// Filter colour of a Bayer pattern at (x, y): 0 red, 1 green, 2 blue.
int BayerChannel(int pattern, uint32_t x, uint32_t y)
{
    static const int kChannels[4][2][2] = {{{1, 0}, {2, 1}}, {{0, 1}, {1, 2}}, {{1, 2}, {0, 1}}, {{2, 1}, {1, 0}}};
    return kChannels[pattern][y & 1][x & 1];
}

std::string Mismatch(uint32_t x, uint32_t y, int got, int expected)
{
    return "pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") is " + std::to_string(got) + ", expected " +
           std::to_string(expected);
}

} // namespace

size_t LineBytesOf(uint32_t pfnc, uint32_t width)
{
    const Format_t* format = Find(pfnc);
    return format ? size_t(width) * format->bitsPerPixel / 8 : 0;
}

int GreyLevelAt(uint32_t pfnc, const uint8_t* image, uint32_t width, uint32_t x, uint32_t y)
{
    const Format_t* format = Find(pfnc);
    if (format == nullptr)
        return -1;
    const uint8_t* line = image + LineBytesOf(pfnc, width) * y;
    switch (format->kind)
    {
    case Format_t::Mono:
    case Format_t::Bayer:
    {
        const uint32_t sample = Sample(*format, line, x);
        const uint32_t shift = format->bits - 8;
        if ((sample & ((1u << shift) - 1)) != 0 || (sample >> format->bits) != 0)
            return -1;
        return int(sample >> shift);
    }
    case Format_t::Rgb:
    case Format_t::Bgr:
    case Format_t::Bgra:
    {
        const uint8_t* pixel = line + size_t(x) * format->bitsPerPixel / 8;
        if (pixel[0] != pixel[1] || pixel[1] != pixel[2] || (format->kind == Format_t::Bgra && pixel[3] != 255))
            return -1;
        return pixel[0];
    }
    case Format_t::YCbCr:
    {
        const uint8_t* pair = line + size_t(x / 2) * 4;
        if (pair[1] != 128 || pair[3] != 128)
            return -1;
        return pair[(x & 1) ? 2 : 0];
    }
    }
    return -1;
}

bool ColourAt(uint32_t pfnc, const uint8_t* image, uint32_t width, uint32_t x, uint32_t y, uint8_t rgb[3])
{
    const Format_t* format = Find(pfnc);
    if (format == nullptr || format->kind == Format_t::YCbCr)
        return false;
    const uint8_t* line = image + LineBytesOf(pfnc, width) * y;
    if (format->kind == Format_t::Mono || format->kind == Format_t::Bayer)
    {
        rgb[0] = rgb[1] = rgb[2] = static_cast<uint8_t>(Sample(*format, line, x) >> (format->bits - 8));
        return true;
    }
    const uint8_t* pixel = line + size_t(x) * format->bitsPerPixel / 8;
    const bool bgr = format->kind != Format_t::Rgb;
    rgb[0] = bgr ? pixel[2] : pixel[0];
    rgb[1] = pixel[1];
    rgb[2] = bgr ? pixel[0] : pixel[2];
    return true;
}

std::string CheckRamp(uint32_t pfnc, const uint8_t* image, uint32_t width, uint32_t height, uint64_t frameId)
{
    if (Find(pfnc) == nullptr)
        return "unknown pixel format";
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
        {
            const int level = GreyLevelAt(pfnc, image, width, x, y);
            const int expected = GradientLevel(x, y, frameId);
            if (level != expected)
                return Mismatch(x, y, level, expected);
        }
    return std::string();
}

std::string CheckColorBars(uint32_t pfnc, const uint8_t* image, uint32_t width, uint32_t height)
{
    const Format_t* format = Find(pfnc);
    if (format == nullptr || format->kind == Format_t::YCbCr)
        return "format not readable as colours";
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
        {
            const uint8_t* bar = kColorBarRgb[ColorBarIndex(x, width)];
            uint8_t rgb[3];
            ColourAt(pfnc, image, width, x, y, rgb);
            int expected[3] = {bar[0], bar[1], bar[2]};
            if (format->kind == Format_t::Mono)
                expected[0] = expected[1] = expected[2] = Luma(bar[0], bar[1], bar[2]);
            else if (format->kind == Format_t::Bayer)
                expected[0] = expected[1] = expected[2] = bar[BayerChannel(format->bayer, x, y)];
            for (int c = 0; c < 3; ++c)
                if (rgb[c] != expected[c])
                    return Mismatch(x, y, rgb[c], expected[c]) + " in channel " + std::to_string(c);
        }
    return std::string();
}

} // namespace QvGenTLTest
