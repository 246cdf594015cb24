#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

namespace QvApi
{
class IQvImage;
}

namespace QvCam
{
/**
 * \brief An 8-bit picture a person can look at: grey (one channel) or RGB (three), tightly
 *        packed rows.
 *
 * FromImage() converts any format the SDK knows: mono scaled to 8 bits, Bayer mosaics
 * interpolated to RGB (bilinear), RGB/BGR(a) reordered, YCbCr/YUV converted (BT.601). The common
 * 8- and 16-bit layouts are read directly; every other format through the SDK's pixel
 * component accessor, which is slower but knows all of them.
 */
struct ViewImage_t
{
    size_t width = 0;
    size_t height = 0;
    int channels = 1;
    std::vector<uint8_t> pixels;

    /// \throws GenICam exceptions of the SDK for an image whose format it cannot decode.
    static ViewImage_t FromImage(QvApi::IQvImage* pImage);
};

/// Grey or colour sample of one Bayer site: which colour (0 R, 1 G, 2 B) site (x, y) carries
/// for a mosaic whose top-left 2 x 2 cell is \a phase (QvPixelColorFilter_BayerRG ...).
int BayerSiteColour(uint32_t phase, size_t x, size_t y);

/// Interpolates a Bayer mosaic of 8-bit samples to RGB (bilinear, edges from the sites inside).
std::vector<uint8_t> DemosaicBilinear(const uint8_t* mosaic, size_t width, size_t height, uint32_t phase);
} // namespace QvCam
