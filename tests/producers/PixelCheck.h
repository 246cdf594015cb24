#pragma once

// Independent decoding of the virtual camera's images for the tests: each pixel format is
// read sample by sample (packing, byte order, colour order) and compared with the patterns of
// QvGenTL/VirtualCamera.h.

#include <cstddef>
#include <cstdint>
#include <string>

namespace QvGenTLTest {

/// Bytes of a line of width pixels in a PFNC format the camera delivers (0 if unknown).
size_t LineBytesOf(uint32_t pfnc, uint32_t width);

/// The 8-bit level of pixel (x, y) as the format stores it for a grey image, or -1 if the
/// pixel is not grey (channels differ, chroma not neutral, alpha not opaque, low bits set).
int GreyLevelAt(uint32_t pfnc, const uint8_t* image, uint32_t width, uint32_t x, uint32_t y);

/// RGB of pixel (x, y) of an RGB/BGR(a) image; for mono and Bayer formats the one sample goes
/// to all three. Returns false for formats it cannot read that way.
bool ColourAt(uint32_t pfnc, const uint8_t* image, uint32_t width, uint32_t x, uint32_t y, uint8_t rgb[3]);

/// Empty if the image is the moving ramp of frameId; otherwise the first wrong pixel.
std::string CheckRamp(uint32_t pfnc, const uint8_t* image, uint32_t width, uint32_t height, uint64_t frameId);

/// Empty if the image shows the colour bars; otherwise the first wrong pixel.
std::string CheckColorBars(uint32_t pfnc, const uint8_t* image, uint32_t width, uint32_t height);

} // namespace QvGenTLTest
