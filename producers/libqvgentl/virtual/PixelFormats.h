#pragma once

#include <cstddef>
#include <cstdint>

namespace QvGenTL {

/// How the samples of a pixel format relate to colour.
enum class EPixelKind_t
{
    Mono,
    Bayer,
    Rgb,
    Bgr,
    Bgra,
    YCbCr422,
};

/// Colour of the top-left filter of a Bayer pattern, then its right neighbour (e.g. RG).
enum class EBayerPattern_t
{
    None,
    GR,
    RG,
    GB,
    BG,
};

/// One pixel format the virtual camera delivers.
struct PixelFormatInfo_t
{
    uint32_t code; ///< PFNC
    const char* name;
    EPixelKind_t kind;
    EBayerPattern_t bayer;
    uint32_t sampleBits;  ///< significant bits per sample
    uint32_t groupPixels; ///< pixels packed together (4 for Mono10p, 2 for Mono12p, else 1)
    uint32_t groupBytes;  ///< bytes of one group
};

/// The formats of the PixelFormat feature, in the order of its entries.
extern const PixelFormatInfo_t kPixelFormats[];
extern const size_t kPixelFormatCount;

/// The format with this PFNC code, or null if the camera does not deliver it.
const PixelFormatInfo_t* FindPixelFormat(uint32_t code);

constexpr uint32_t kPfncMono8 = 0x01080001;
constexpr uint32_t kPfncMono10p = 0x010A0046;

/// Bytes of one line of width pixels (width a multiple of groupPixels).
inline size_t LineBytes(const PixelFormatInfo_t& format, uint32_t width)
{
    return size_t(width) / format.groupPixels * format.groupBytes;
}

} // namespace QvGenTL
