#include "virtual/PatternRenderer.h"

#include <algorithm>
#include <cstring>

#include <QvGenTL/VirtualCamera.h>

namespace QvGenTL {

namespace {

using namespace QvVirtualCamera;

/// Colour filter of a Bayer pattern at (x, y): 0 red, 1 green, 2 blue.
int BayerChannel(EBayerPattern_t pattern, uint32_t x, uint32_t y)
{
    // Each pattern names the first row's two colours; the second row holds the other pair.
    static const int kChannels[4][2][2] = {
        {{1, 0}, {2, 1}}, // GR
        {{0, 1}, {1, 2}}, // RG
        {{1, 2}, {0, 1}}, // GB
        {{2, 1}, {1, 0}}, // BG
    };
    const int index = static_cast<int>(pattern) - static_cast<int>(EBayerPattern_t::GR);
    return kChannels[index][y & 1][x & 1];
}

/// Puts a sample of `bits` significant bits (from an 8-bit level) at bit position bitPos of a
/// little-endian bit stream (PFNC packed formats fill bytes from the least significant bit).
void PutPackedSample(uint8_t* out, size_t bitPos, uint32_t value, uint32_t bits)
{
    for (uint32_t b = 0; b < bits; ++b, ++bitPos)
    {
        const uint8_t mask = static_cast<uint8_t>(1u << (bitPos & 7));
        if (value & (1u << b))
            out[bitPos >> 3] |= mask;
        else
            out[bitPos >> 3] &= static_cast<uint8_t>(~mask);
    }
}

void GreyAt(const void* context, uint32_t x, uint32_t, uint8_t rgb[3])
{
    const uint32_t phase = *static_cast<const uint32_t*>(context);
    rgb[0] = rgb[1] = rgb[2] = static_cast<uint8_t>((x + phase) & 0xFF);
}

void BarAt(const void* context, uint32_t x, uint32_t, uint8_t rgb[3])
{
    const uint32_t width = *static_cast<const uint32_t*>(context);
    const uint8_t* colour = kColorBarRgb[ColorBarIndex(x, width)];
    rgb[0] = colour[0];
    rgb[1] = colour[1];
    rgb[2] = colour[2];
}

struct StampContext_t
{
    uint64_t frameId;
    uint32_t cellWidth;
};

void StampAt(const void* context, uint32_t x, uint32_t, uint8_t rgb[3])
{
    const auto* stamp = static_cast<const StampContext_t*>(context);
    const uint32_t cell = x / stamp->cellWidth;
    const bool bit = cell < kStampBits && ((stamp->frameId >> (kStampBits - 1 - cell)) & 1) != 0;
    rgb[0] = rgb[1] = rgb[2] = bit ? 255 : 0;
}

void LevelAt(const void* context, uint32_t, uint32_t, uint8_t rgb[3])
{
    rgb[0] = rgb[1] = rgb[2] = *static_cast<const uint8_t*>(context);
}

} // namespace

void CPatternRenderer::EncodeLine(uint32_t width, uint32_t y, RgbAt rgbAt, const void* context, uint8_t* out) const
{
    const PixelFormatInfo_t& format = *m_format;
    const uint32_t shift = format.sampleBits - 8;
    uint8_t rgb[3];
    switch (format.kind)
    {
    case EPixelKind_t::Mono:
    case EPixelKind_t::Bayer:
        for (uint32_t x = 0; x < width; ++x)
        {
            rgbAt(context, x, y, rgb);
            const uint8_t level = format.kind == EPixelKind_t::Mono ? Luma(rgb[0], rgb[1], rgb[2])
                                                                    : rgb[BayerChannel(format.bayer, x, y)];
            const uint32_t sample = uint32_t(level) << shift;
            if (format.groupPixels > 1)
                PutPackedSample(out, size_t(x) * format.sampleBits, sample, format.sampleBits);
            else if (format.groupBytes == 1)
                out[x] = static_cast<uint8_t>(sample);
            else
            {
                out[2 * x] = static_cast<uint8_t>(sample);
                out[2 * x + 1] = static_cast<uint8_t>(sample >> 8);
            }
        }
        break;
    case EPixelKind_t::Rgb:
    case EPixelKind_t::Bgr:
    case EPixelKind_t::Bgra:
    {
        const bool bgr = format.kind != EPixelKind_t::Rgb;
        const uint32_t step = format.groupBytes;
        for (uint32_t x = 0; x < width; ++x)
        {
            rgbAt(context, x, y, rgb);
            uint8_t* pixel = out + size_t(x) * step;
            pixel[0] = bgr ? rgb[2] : rgb[0];
            pixel[1] = rgb[1];
            pixel[2] = bgr ? rgb[0] : rgb[2];
            if (step == 4)
                pixel[3] = 255;
        }
        break;
    }
    case EPixelKind_t::YCbCr422:
        // Y0 Cb Y1 Cr: each pair shares the chroma of its first pixel (BT.601 full range).
        for (uint32_t x = 0; x < width; x += 2)
        {
            uint8_t second[3];
            rgbAt(context, x, y, rgb);
            rgbAt(context, x + 1, y, second);
            const int r = rgb[0], g = rgb[1], b = rgb[2];
            uint8_t* pair = out + size_t(x) * 2;
            pair[0] = Luma(rgb[0], rgb[1], rgb[2]);
            pair[1] = static_cast<uint8_t>(std::clamp(128 + ((-43 * r - 85 * g + 128 * b + 128) >> 8), 0, 255));
            pair[2] = Luma(second[0], second[1], second[2]);
            pair[3] = static_cast<uint8_t>(std::clamp(128 + ((128 * r - 107 * g - 21 * b + 128) >> 8), 0, 255));
        }
        break;
    }
}

void CPatternRenderer::Prepare(const CameraSettings_t& settings, const FrameLayout_t& layout)
{
    if (settings.width == m_width && settings.height == m_height && settings.testPattern == m_pattern &&
        layout.format == m_format)
        return;
    m_width = settings.width;
    m_height = settings.height;
    m_pattern = settings.testPattern;
    m_format = layout.format;
    m_lineBytes = layout.lineBytes;
    m_ramp.clear();
    m_barLines[0].clear();
    m_barLines[1].clear();

    const uint32_t group = m_format->groupPixels;
    switch (m_pattern)
    {
    case TestPattern_ColorBar:
    {
        const bool bayer = m_format->kind == EPixelKind_t::Bayer;
        for (uint32_t row = 0; row < (bayer ? 2u : 1u); ++row)
        {
            m_barLines[row].assign(m_lineBytes, 0);
            EncodeLine(m_width, row, BarAt, &m_width, m_barLines[row].data());
        }
        break;
    }
    case TestPattern_FrameCounter:
        m_stampLine.assign(m_lineBytes, 0);
        m_levelLine.assign(m_lineBytes, 0);
        break;
    default:
    {
        // Line y of frame f starts at ramp pixel s = (y + f) & 0xFF. Packed formats cannot
        // start inside a group, so there is one ramp per phase s % group, each starting at
        // that phase; the line then starts at group s / group of it.
        const uint32_t rampPixels = (m_width + 256 + group - 1) / group * group;
        for (uint32_t phase = 0; phase < group; ++phase)
        {
            std::vector<uint8_t> ramp(LineBytes(*m_format, rampPixels), 0);
            EncodeLine(rampPixels, 0, GreyAt, &phase, ramp.data());
            m_ramp.push_back(std::move(ramp));
        }
        break;
    }
    }
}

void CPatternRenderer::Render(uint64_t frameId, uint32_t lines, uint8_t* image)
{
    switch (m_pattern)
    {
    case TestPattern_ColorBar:
        for (uint32_t y = 0; y < lines; ++y)
        {
            const std::vector<uint8_t>& line = m_barLines[m_barLines[1].empty() ? 0 : (y & 1)];
            std::memcpy(image + size_t(y) * m_lineBytes, line.data(), m_lineBytes);
        }
        return;
    case TestPattern_FrameCounter:
    {
        const StampContext_t stamp{frameId, StampCellWidth(m_width)};
        const uint8_t level = static_cast<uint8_t>(frameId & 0xFF);
        const uint32_t stampLines = std::min(lines, kStampLines);
        // Stamp and level are grey, so every Bayer row reads the same: one line of each suffices.
        EncodeLine(m_width, 0, StampAt, &stamp, m_stampLine.data());
        EncodeLine(m_width, 0, LevelAt, &level, m_levelLine.data());
        for (uint32_t y = 0; y < lines; ++y)
            std::memcpy(image + size_t(y) * m_lineBytes, (y < stampLines ? m_stampLine : m_levelLine).data(),
                        m_lineBytes);
        return;
    }
    default:
    {
        const uint32_t group = m_format->groupPixels;
        for (uint32_t y = 0; y < lines; ++y)
        {
            const uint32_t start = static_cast<uint32_t>((y + frameId) & 0xFF);
            const uint8_t* source = m_ramp[start % group].data() + size_t(start / group) * m_format->groupBytes;
            std::memcpy(image + size_t(y) * m_lineBytes, source, m_lineBytes);
        }
        return;
    }
    }
}

} // namespace QvGenTL
