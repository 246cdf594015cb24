#include "ImageWriter.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace {

enum class EKind_t
{
    Grey,   // one sample per pixel (mono, or a Bayer mosaic shown as grey)
    Rgb,
    Bgr,
    Bgra,
    YCbCr422,
};

struct Format_t
{
    uint64_t pfnc;
    const char* name;
    EKind_t kind;
    uint32_t bits;        // significant bits per sample
    uint32_t storageBits; // bits per pixel in the buffer
};

const Format_t kFormats[] = {
    {0x01080001, "Mono8", EKind_t::Grey, 8, 8},        {0x01100003, "Mono10", EKind_t::Grey, 10, 16},
    {0x01100005, "Mono12", EKind_t::Grey, 12, 16},     {0x01100007, "Mono16", EKind_t::Grey, 16, 16},
    {0x010A0046, "Mono10p", EKind_t::Grey, 10, 10},    {0x010C0047, "Mono12p", EKind_t::Grey, 12, 12},
    {0x01080008, "BayerGR8", EKind_t::Grey, 8, 8},     {0x01080009, "BayerRG8", EKind_t::Grey, 8, 8},
    {0x0108000A, "BayerGB8", EKind_t::Grey, 8, 8},     {0x0108000B, "BayerBG8", EKind_t::Grey, 8, 8},
    {0x01100010, "BayerGR12", EKind_t::Grey, 12, 16},  {0x01100011, "BayerRG12", EKind_t::Grey, 12, 16},
    {0x01100012, "BayerGB12", EKind_t::Grey, 12, 16},  {0x01100013, "BayerBG12", EKind_t::Grey, 12, 16},
    {0x02180014, "RGB8", EKind_t::Rgb, 8, 24},         {0x02180015, "BGR8", EKind_t::Bgr, 8, 24},
    {0x02200017, "BGRa8", EKind_t::Bgra, 8, 32},       {0x0210003B, "YCbCr422_8", EKind_t::YCbCr422, 8, 16},
};

const Format_t* Find(uint64_t pfnc)
{
    for (const Format_t& format : kFormats)
        if (format.pfnc == pfnc)
            return &format;
    return nullptr;
}

/// Sample i of a line: bytes, little-endian 16-bit containers or LSB-first packed bits.
uint32_t Sample(const Format_t& format, const uint8_t* line, uint32_t i)
{
    if (format.storageBits == 8)
        return line[i];
    if (format.storageBits == 16)
        return uint32_t(line[2 * i]) | uint32_t(line[2 * i + 1]) << 8;
    uint32_t value = 0;
    const size_t bit = size_t(i) * format.storageBits;
    for (uint32_t b = 0; b < format.storageBits; ++b)
        if (line[(bit + b) >> 3] & (1u << ((bit + b) & 7)))
            value |= 1u << b;
    return value;
}

uint8_t Clamp(int value)
{
    return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

void Save(const std::string& path, const std::string& header, const std::vector<uint8_t>& body)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << header;
    file.write(reinterpret_cast<const char*>(body.data()), std::streamsize(body.size()));
    if (!file)
        throw std::runtime_error("cannot write " + path);
}

} // namespace

std::string PixelFormatName(uint64_t pfnc)
{
    if (const Format_t* format = Find(pfnc))
        return format->name;
    char text[32];
    std::snprintf(text, sizeof(text), "0x%08llX", static_cast<unsigned long long>(pfnc));
    return text;
}

std::string WriteImage(const std::string& stem, uint64_t pfnc, uint32_t width, uint32_t height, const uint8_t* data,
                       size_t size)
{
    const Format_t* format = Find(pfnc);
    const size_t lineBytes = format ? size_t(width) * format->storageBits / 8 : 0;
    if (format == nullptr || lineBytes * height > size)
    {
        const std::string path = stem + ".raw";
        Save(path, std::string(), std::vector<uint8_t>(data, data + size));
        return path;
    }
    const std::string dimensions = std::to_string(width) + " " + std::to_string(height);
    std::vector<uint8_t> body;
    if (format->kind == EKind_t::Grey)
    {
        // PGM stores samples above 8 bits as two big-endian bytes, with the maximum in the header.
        const bool wide = format->bits > 8;
        body.reserve(size_t(width) * height * (wide ? 2 : 1));
        for (uint32_t y = 0; y < height; ++y)
            for (uint32_t x = 0; x < width; ++x)
            {
                const uint32_t sample = Sample(*format, data + y * lineBytes, x);
                if (wide)
                    body.push_back(static_cast<uint8_t>(sample >> 8));
                body.push_back(static_cast<uint8_t>(sample));
            }
        const std::string path = stem + ".pgm";
        Save(path, "P5\n" + dimensions + "\n" + std::to_string((1u << format->bits) - 1) + "\n", body);
        return path;
    }
    body.reserve(size_t(width) * height * 3);
    for (uint32_t y = 0; y < height; ++y)
    {
        const uint8_t* line = data + y * lineBytes;
        for (uint32_t x = 0; x < width; ++x)
        {
            switch (format->kind)
            {
            case EKind_t::Rgb: body.insert(body.end(), line + 3 * x, line + 3 * x + 3); break;
            case EKind_t::Bgr:
            case EKind_t::Bgra:
            {
                const uint8_t* pixel = line + size_t(x) * format->storageBits / 8;
                body.insert(body.end(), {pixel[2], pixel[1], pixel[0]});
                break;
            }
            case EKind_t::YCbCr422:
            {
                // Y0 Cb Y1 Cr, BT.601 full range.
                const uint8_t* pair = line + size_t(x / 2) * 4;
                const int luma = pair[(x & 1) ? 2 : 0], cb = pair[1] - 128, cr = pair[3] - 128;
                body.insert(body.end(), {Clamp(luma + (359 * cr) / 256), Clamp(luma - (88 * cb + 183 * cr) / 256),
                                         Clamp(luma + (454 * cb) / 256)});
                break;
            }
            case EKind_t::Grey: break;
            }
        }
    }
    const std::string path = stem + ".ppm";
    Save(path, "P6\n" + dimensions + "\n255\n", body);
    return path;
}
