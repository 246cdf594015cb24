#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/**
 * Writes one image as a file people can open: PGM for mono and Bayer formats (16-bit PGM for
 * samples deeper than 8 bits, packed formats unpacked), PPM for RGB, BGR(a) and YCbCr422_8.
 * Other formats are written as raw bytes. Returns the path written (stem plus the extension
 * the format got); throws std::runtime_error when the file cannot be written.
 */
std::string WriteImage(const std::string& stem, uint64_t pfnc, uint32_t width, uint32_t height, const uint8_t* data,
                       size_t size);

/// Name of a PFNC code the writer knows, or its hex value.
std::string PixelFormatName(uint64_t pfnc);
