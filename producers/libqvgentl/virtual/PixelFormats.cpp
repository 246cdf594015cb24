#include "virtual/PixelFormats.h"

namespace QvGenTL {

const PixelFormatInfo_t kPixelFormats[] = {
    {0x01080001, "Mono8", EPixelKind_t::Mono, EBayerPattern_t::None, 8, 1, 1},
    {0x01100003, "Mono10", EPixelKind_t::Mono, EBayerPattern_t::None, 10, 1, 2},
    {0x01100005, "Mono12", EPixelKind_t::Mono, EBayerPattern_t::None, 12, 1, 2},
    {0x01100007, "Mono16", EPixelKind_t::Mono, EBayerPattern_t::None, 16, 1, 2},
    {0x010A0046, "Mono10p", EPixelKind_t::Mono, EBayerPattern_t::None, 10, 4, 5},
    {0x010C0047, "Mono12p", EPixelKind_t::Mono, EBayerPattern_t::None, 12, 2, 3},
    {0x01080008, "BayerGR8", EPixelKind_t::Bayer, EBayerPattern_t::GR, 8, 1, 1},
    {0x01080009, "BayerRG8", EPixelKind_t::Bayer, EBayerPattern_t::RG, 8, 1, 1},
    {0x0108000A, "BayerGB8", EPixelKind_t::Bayer, EBayerPattern_t::GB, 8, 1, 1},
    {0x0108000B, "BayerBG8", EPixelKind_t::Bayer, EBayerPattern_t::BG, 8, 1, 1},
    {0x01100010, "BayerGR12", EPixelKind_t::Bayer, EBayerPattern_t::GR, 12, 1, 2},
    {0x01100011, "BayerRG12", EPixelKind_t::Bayer, EBayerPattern_t::RG, 12, 1, 2},
    {0x01100012, "BayerGB12", EPixelKind_t::Bayer, EBayerPattern_t::GB, 12, 1, 2},
    {0x01100013, "BayerBG12", EPixelKind_t::Bayer, EBayerPattern_t::BG, 12, 1, 2},
    {0x02180014, "RGB8", EPixelKind_t::Rgb, EBayerPattern_t::None, 8, 1, 3},
    {0x02180015, "BGR8", EPixelKind_t::Bgr, EBayerPattern_t::None, 8, 1, 3},
    {0x02200017, "BGRa8", EPixelKind_t::Bgra, EBayerPattern_t::None, 8, 1, 4},
    {0x0210003B, "YCbCr422_8", EPixelKind_t::YCbCr422, EBayerPattern_t::None, 8, 2, 4},
};
const size_t kPixelFormatCount = sizeof(kPixelFormats) / sizeof(kPixelFormats[0]);

const PixelFormatInfo_t* FindPixelFormat(uint32_t code)
{
    for (const PixelFormatInfo_t& format : kPixelFormats)
        if (format.code == code)
            return &format;
    return nullptr;
}

} // namespace QvGenTL
