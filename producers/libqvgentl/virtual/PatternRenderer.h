#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "virtual/FrameLayout.h"

namespace QvGenTL {

/**
 * Draws the test patterns of QvGenTL/VirtualCamera.h straight into a buffer, in any of the
 * camera's pixel formats. Lines that repeat are built once per configuration (Prepare), so a
 * frame is mostly one memcpy per line. Used by one acquisition thread at a time.
 */
class CPatternRenderer
{
public:
    /// Builds the lines of this configuration; cheap to call when nothing changed.
    void Prepare(const CameraSettings_t& settings, const FrameLayout_t& layout);

    /// Writes the first `lines` lines of the image of frame frameId at image.
    void Render(uint64_t frameId, uint32_t lines, uint8_t* image);

private:
    using RgbAt = void (*)(const void* context, uint32_t x, uint32_t y, uint8_t rgb[3]);
    /// Encodes width pixels of line y, whose colours come from rgbAt, in the current format.
    void EncodeLine(uint32_t width, uint32_t y, RgbAt rgbAt, const void* context, uint8_t* out) const;

    // The configuration the tables were built for.
    uint32_t m_width = 0;
    uint32_t m_height = 0;
    uint32_t m_pattern = ~0u;
    const PixelFormatInfo_t* m_format = nullptr;
    size_t m_lineBytes = 0;

    // Moving ramp: one ramp line per packing phase, 256 + width pixels long.
    std::vector<std::vector<uint8_t>> m_ramp;
    // Colour bars: the line of even rows and of odd rows (they differ only for Bayer).
    std::vector<uint8_t> m_barLines[2];
    // Frame counter: scratch lines rebuilt per frame.
    std::vector<uint8_t> m_stampLine;
    std::vector<uint8_t> m_levelLine;
};

} // namespace QvGenTL
