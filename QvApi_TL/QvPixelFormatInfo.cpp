#include "QvApi_TL/QvPixelFormatInfo.h"

#include <algorithm>
#include <new>

#include "QvApi_TL/QvSpecificPixelInfo.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
// clang-format off
// Value, name, description, pixel total and valid bits, component total and valid bits,
// pixel increment X, line pitch alignment, planes, colour filter at (0,0), colour, Bayer,
// BGR order, GigE-Vision-specific. Irregular rows (descriptions of the packed Bayer formats,
// the 14-bit Bayer component sizes, the alignments) are data, not typos: applications match on
// them.
constexpr PixelFormatRow_t kPixelFormatRows[] = {
    {QvPFNC_Mono1p, "Mono1p", "Monochrome 1-bit packed", 1, 1, 1, 1, 8, 1, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_Mono2p, "Mono2p", "Monochrome 2-bit packed", 2, 2, 2, 2, 4, 1, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_Mono4p, "Mono4p", "Monochrome 4-bit packed", 4, 4, 4, 4, 2, 1, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_Mono8, "Mono8", "Monochrome 8-bit", 8, 8, 8, 8, 1, 1, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_Mono10, "Mono10", "Monochrome 10-bit unpacked", 16, 10, 16, 10, 1, 2, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_Mono10p, "Mono10p", "Monochrome 10-bit packed", 10, 10, 10, 10, 4, 1, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_Mono12, "Mono12", "Monochrome 12-bit unpacked", 16, 12, 16, 12, 1, 2, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_Mono12p, "Mono12p", "Monochrome 12-bit packed", 12, 12, 12, 12, 2, 1, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_Mono14, "Mono14", "Monochrome 14-bit unpacked", 16, 14, 16, 14, 1, 2, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_Mono14p, "Mono14p", "Monochrome 14-bit packed", 14, 14, 14, 14, 4, 1, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_Mono16, "Mono16", "Monochrome 16-bit", 16, 16, 16, 16, 1, 2, 1, QvPixelColorFilter_Mono, false, false, true, false},
    {QvPFNC_BayerGR4p, "BayerGR4p", "Bayer Green-Red 4-bit packed", 4, 4, 4, 4, 2, 1, 1, QvPixelColorFilter_BayerGR, true, true, true, false},
    {QvPFNC_BayerRG4p, "BayerRG4p", "Bayer Red-Green 4-bit packed", 4, 4, 4, 4, 2, 1, 1, QvPixelColorFilter_BayerRG, true, true, true, false},
    {QvPFNC_BayerGB4p, "BayerGB4p", "Bayer Green-Blue 4-bit packed", 4, 4, 4, 4, 2, 1, 1, QvPixelColorFilter_BayerGB, true, true, true, false},
    {QvPFNC_BayerBG4p, "BayerBG4p", "Bayer Blue-Green 4-bit packed", 4, 4, 4, 4, 2, 1, 1, QvPixelColorFilter_BayerBG, true, true, true, false},
    {QvPFNC_BayerGR8, "BayerGR8", "Bayer Green-Red 8-bit", 8, 8, 8, 8, 1, 1, 1, QvPixelColorFilter_BayerGR, true, true, true, false},
    {QvPFNC_BayerGR10, "BayerGR10", "Bayer Green-Red 10-bit unpacked", 16, 10, 16, 10, 1, 2, 1, QvPixelColorFilter_BayerGR, true, true, true, false},
    {QvPFNC_BayerGR10p, "BayerGR10p", "Bayer Blue-Green 10-bit packed", 10, 10, 10, 10, 4, 1, 1, QvPixelColorFilter_BayerGR, true, true, true, false},
    {QvPFNC_BayerGR12, "BayerGR12", "Bayer Green-Red 12-bit unpacked", 16, 12, 16, 12, 1, 2, 1, QvPixelColorFilter_BayerGR, true, true, true, false},
    {QvPFNC_BayerGR12p, "BayerGR12p", "Bayer Blue-Green 12-bit packed", 12, 12, 12, 12, 2, 1, 1, QvPixelColorFilter_BayerGR, true, true, true, false},
    {QvPFNC_BayerGR14, "BayerGR14", "Bayer Green-Red 14-bit unpacked", 16, 14, 14, 14, 1, 2, 1, QvPixelColorFilter_BayerGR, true, true, true, false},
    {QvPFNC_BayerGR14p, "BayerGR14p", "Bayer Blue-Green 14-bit packed", 14, 14, 14, 14, 8, 1, 1, QvPixelColorFilter_BayerGR, true, true, true, false},
    {QvPFNC_BayerGR16, "BayerGR16", "Bayer Green-Red 16-bit", 16, 16, 16, 16, 1, 2, 1, QvPixelColorFilter_BayerGR, true, true, true, false},
    {QvPFNC_BayerRG8, "BayerRG8", "Bayer Red-Green 8-bit", 8, 8, 8, 8, 1, 1, 1, QvPixelColorFilter_BayerRG, true, true, true, false},
    {QvPFNC_BayerRG10, "BayerRG10", "Bayer Red-Green 10-bit unpacked", 16, 10, 16, 10, 1, 2, 1, QvPixelColorFilter_BayerRG, true, true, true, false},
    {QvPFNC_BayerRG10p, "BayerRG10p", "Bayer Green-Blue 10-bit packed", 10, 10, 10, 10, 4, 1, 1, QvPixelColorFilter_BayerRG, true, true, true, false},
    {QvPFNC_BayerRG12, "BayerRG12", "Bayer Red-Green 12-bit unpacked", 16, 12, 16, 12, 1, 2, 1, QvPixelColorFilter_BayerRG, true, true, true, false},
    {QvPFNC_BayerRG12p, "BayerRG12p", "Bayer Green-Blue 12-bit packed", 12, 12, 12, 12, 2, 1, 1, QvPixelColorFilter_BayerRG, true, true, true, false},
    {QvPFNC_BayerRG14, "BayerRG14", "Bayer Red-Green 14-bit unpacked", 16, 14, 14, 14, 1, 2, 1, QvPixelColorFilter_BayerRG, true, true, true, false},
    {QvPFNC_BayerRG14p, "BayerRG14p", "Bayer Green-Blue 14-bit packed", 14, 14, 14, 14, 8, 1, 1, QvPixelColorFilter_BayerRG, true, true, true, false},
    {QvPFNC_BayerRG16, "BayerRG16", "Bayer Red-Green 16-bit", 16, 16, 16, 16, 1, 2, 1, QvPixelColorFilter_BayerRG, true, true, true, false},
    {QvPFNC_BayerGB8, "BayerGB8", "Bayer Green-Blue 8-bit", 8, 8, 8, 8, 1, 1, 1, QvPixelColorFilter_BayerGB, true, true, true, false},
    {QvPFNC_BayerGB10, "BayerGB10", "Bayer Green-Blue 10-bit unpacked", 16, 10, 16, 10, 1, 2, 1, QvPixelColorFilter_BayerGB, true, true, true, false},
    {QvPFNC_BayerGB10p, "BayerGB10p", "Bayer Green-Red 10-bit packed", 10, 10, 10, 10, 4, 1, 1, QvPixelColorFilter_BayerGB, true, true, true, false},
    {QvPFNC_BayerGB12, "BayerGB12", "Bayer Green-Blue 12-bit unpacked", 16, 12, 16, 12, 1, 2, 1, QvPixelColorFilter_BayerGB, true, true, true, false},
    {QvPFNC_BayerGB12p, "BayerGB12p", "Bayer Green-Red 12-bit packed", 12, 12, 12, 12, 2, 1, 1, QvPixelColorFilter_BayerGB, true, true, true, false},
    {QvPFNC_BayerGB14, "BayerGB14", "Bayer Green-Blue 14-bit unpacked", 16, 14, 14, 14, 1, 2, 1, QvPixelColorFilter_BayerGB, true, true, true, false},
    {QvPFNC_BayerGB14p, "BayerGB14p", "Bayer Green-Red 14-bit packed", 14, 14, 14, 14, 8, 1, 1, QvPixelColorFilter_BayerGB, true, true, true, false},
    {QvPFNC_BayerGB16, "BayerGB16", "Bayer Green-Blue 16-bit", 16, 16, 16, 16, 1, 2, 1, QvPixelColorFilter_BayerGB, true, true, true, false},
    {QvPFNC_BayerBG8, "BayerBG8", "Bayer Blue-Green 8-bit", 8, 8, 8, 8, 1, 1, 1, QvPixelColorFilter_BayerBG, true, true, true, false},
    {QvPFNC_BayerBG10, "BayerBG10", "Bayer Blue-Green 10-bit unpacked", 16, 10, 16, 10, 1, 2, 1, QvPixelColorFilter_BayerBG, true, true, true, false},
    {QvPFNC_BayerBG10p, "BayerBG10p", "Bayer Red-Green 10-bit packed", 10, 10, 10, 10, 4, 1, 1, QvPixelColorFilter_BayerBG, true, true, true, false},
    {QvPFNC_BayerBG12, "BayerBG12", "Bayer Blue-Green 12-bit unpacked", 16, 12, 16, 12, 1, 2, 1, QvPixelColorFilter_BayerBG, true, true, true, false},
    {QvPFNC_BayerBG12p, "BayerBG12p", "Bayer Red-Green 12-bit packed", 12, 12, 12, 12, 2, 1, 1, QvPixelColorFilter_BayerBG, true, true, true, false},
    {QvPFNC_BayerBG14, "BayerBG14", "Bayer Blue-Green 14-bit unpacked", 16, 14, 14, 14, 1, 2, 1, QvPixelColorFilter_BayerBG, true, true, true, false},
    {QvPFNC_BayerBG14p, "BayerBG14p", "Bayer Red-Green 14-bit packed", 14, 14, 14, 14, 8, 1, 1, QvPixelColorFilter_BayerBG, true, true, true, false},
    {QvPFNC_BayerBG16, "BayerBG16", "Bayer Blue-Green 16-bit", 16, 16, 16, 16, 1, 2, 1, QvPixelColorFilter_BayerBG, true, true, true, false},
    {QvPFNC_GVSP_Mono10Packed, "GVSP_Mono10Packed", "GigE Vision specific format, Monochrome 10-bit packed", 12, 10, 12, 10, 2, 1, 1, QvPixelColorFilter_Mono, false, false, true, true},
    {QvPFNC_GVSP_Mono12Packed, "GVSP_Mono12Packed", "GigE Vision specific format, Monochrome 12-bit packed", 12, 12, 12, 12, 2, 1, 1, QvPixelColorFilter_Mono, false, false, true, true},
    {QvPFNC_GVSP_BayerGR10Packed, "GVSP_BayerGR10Packed", "GigE Vision specific format, Bayer Green-Red 10-bit packed", 12, 10, 12, 10, 2, 1, 1, QvPixelColorFilter_BayerGR, true, true, true, true},
    {QvPFNC_GVSP_BayerGR12Packed, "GVSP_BayerGR12Packed", "GigE Vision specific format, Bayer Green-Red 12-bit packed", 12, 12, 12, 12, 2, 1, 1, QvPixelColorFilter_BayerGR, true, true, true, true},
    {QvPFNC_GVSP_BayerRG10Packed, "GVSP_BayerRG10Packed", "GigE Vision specific format, Bayer Red-Green 10-bit packed", 12, 10, 12, 10, 2, 1, 1, QvPixelColorFilter_BayerRG, true, true, true, true},
    {QvPFNC_GVSP_BayerRG12Packed, "GVSP_BayerRG12Packed", "GigE Vision specific format, Bayer Red-Green 12-bit packed", 12, 12, 12, 12, 2, 1, 1, QvPixelColorFilter_BayerRG, true, true, true, true},
    {QvPFNC_GVSP_BayerGB10Packed, "GVSP_BayerGB10Packed", "GigE Vision specific format, Bayer Green-Blue 10-bit packed", 12, 10, 12, 10, 2, 1, 1, QvPixelColorFilter_BayerGB, true, true, true, true},
    {QvPFNC_GVSP_BayerGB12Packed, "GVSP_BayerGB12Packed", "GigE Vision specific format, Bayer Green-Blue 12-bit packed", 12, 12, 12, 12, 2, 1, 1, QvPixelColorFilter_BayerGB, true, true, true, true},
    {QvPFNC_GVSP_BayerBG10Packed, "GVSP_BayerBG10Packed", "GigE Vision specific format, Bayer Blue-Green 10-bit packed", 12, 10, 12, 10, 2, 1, 1, QvPixelColorFilter_BayerBG, true, true, true, true},
    {QvPFNC_GVSP_BayerBG12Packed, "GVSP_BayerBG12Packed", "GigE Vision specific format, Bayer Blue-Green 12-bit packed", 12, 12, 12, 12, 2, 1, 1, QvPixelColorFilter_BayerBG, true, true, true, true},
    {QvPFNC_RGB8, "RGB8", "Red-Green-Blue 8-bit", 24, 24, 8, 8, 1, 4, 1, QvPixelColorFilter_None, true, false, false, false},
    {QvPFNC_BGR8, "BGR8", "Blue-Green-Red 8-bit", 24, 24, 8, 8, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_BGR10, "BGR10", "Blue-Green-Red 10-bit unpacked", 48, 30, 16, 10, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_BGR12, "BGR12", "Blue-Green-Red 12-bit unpacked", 48, 36, 16, 12, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_BGR14, "BGR14", "Blue-Green-Red 14-bit unpacked", 48, 42, 16, 14, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_BGR16, "BGR16", "Blue-Green-Red 16-bit", 48, 48, 16, 16, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_RGBa8, "RGBa8", "Red-Green-Blue-alpha 8-bit", 32, 24, 8, 8, 1, 4, 1, QvPixelColorFilter_None, true, false, false, false},
    {QvPFNC_BGRa8, "BGRa8", "Blue-Green-Red-alpha 8-bit", 32, 24, 8, 8, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_BGRa10, "BGRa10", "Blue-Green-Red-alpha 10-bit unpacked", 64, 30, 16, 10, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_BGRa12, "BGRa12", "Blue-Green-Red-alpha 12-bit unpacked", 64, 36, 16, 12, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_BGRa14, "BGRa14", "Blue-Green-Red-alpha 14-bit unpacked", 64, 42, 16, 14, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_BGRa16, "BGRa16", "Blue-Green-Red-alpha 16-bit", 64, 48, 16, 16, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_RGB10p32, "RGB10p32", "Red-Green-Blue 10-bit packed into 32-bit", 32, 30, 10, 10, 1, 4, 1, QvPixelColorFilter_None, true, false, false, false},
    {QvPFNC_CBGR10p32, "CBGR10p32", "Blue-Green-Red 10-bit packed into 32-bit", 32, 30, 10, 10, 1, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr8, "YCbCr8", "YCbCr 4:4:4 8-bit", 24, 24, 8, 8, 1, 3, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr411_8, "YCbCr411_8", "YCbCr 4:1:1 8-bit", 12, 12, 8, 8, 4, 3, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr422_8, "YCbCr422_8", "YCbCr 4:2:2 8-bit", 16, 16, 8, 8, 2, 3, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr709_422_8, "YCbCr709_422_8", "YCbCr 4:2:2 8-bit BT.709", 16, 16, 8, 8, 2, 3, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_RGB8_Planar, "RGB8_Planar", "Red-Green-Blue 8-bit planar", 24, 24, 8, 8, 1, 4, 3, QvPixelColorFilter_None, true, false, false, false},
    {QvPFNC_RGB10_Planar, "RGB10_Planar", "Red-Green-Blue 10-bit unpacked planar", 48, 30, 16, 10, 1, 4, 3, QvPixelColorFilter_None, true, false, false, false},
    {QvPFNC_RGB12_Planar, "RGB12_Planar", "Red-Green-Blue 12-bit unpacked planar", 48, 36, 16, 12, 1, 4, 3, QvPixelColorFilter_None, true, false, false, false},
    {QvPFNC_RGB16_Planar, "RGB16_Planar", "Red-Green-Blue 16-bit planar", 48, 48, 16, 16, 1, 4, 3, QvPixelColorFilter_None, true, false, false, false},
    {QvPFNC_RGB16, "RGB16", "Red-Green-Blue 16-bit", 48, 48, 16, 16, 1, 4, 1, QvPixelColorFilter_None, true, false, false, false},
    {QvPFNC_BGR10p, "BGR10p", "Blue-Green-Red 10-bit packed", 30, 30, 10, 10, 4, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_BGR12p, "BGR12p", "Blue-Green-Red 12-bit packed", 36, 36, 12, 12, 2, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_RGB10p, "RGB10p", "Red-Green-Blue 10-bit packed", 30, 30, 10, 10, 4, 4, 1, QvPixelColorFilter_None, true, false, false, false},
    {QvPFNC_RGB12p, "RGB12p", "Red-Green-Blue 12-bit packed", 36, 36, 12, 12, 2, 4, 1, QvPixelColorFilter_None, true, false, false, false},
    {QvPFNC_YCbCr601_422_8, "YCbCr601_422_8", "YCbCr 4:2:2 8-bit BT.601", 16, 16, 8, 8, 2, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr411_8_CbYYCrYY, "YCbCr411_8_CbYYCrYY", "YCbCr 4:1:1 8-bit", 12, 12, 8, 8, 4, 6, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr601_411_8_CbYYCrYY, "YCbCr601_411_8_CbYYCrYY", "YCbCr 4:1:1 8-bit BT.601", 12, 12, 8, 8, 4, 6, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr709_411_8_CbYYCrYY, "YCbCr709_411_8_CbYYCrYY", "YCbCr 4:1:1 8-bit BT.709", 12, 12, 8, 8, 4, 6, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr422_8_CbYCrY, "YCbCr422_8_CbYCrY", "YCbCr 4:2:2 8-bit", 16, 16, 8, 8, 2, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr601_422_8_CbYCrY, "YCbCr601_422_8_CbYCrY", "YCbCr 4:2:2 8-bit BT.601", 16, 16, 8, 8, 2, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr709_422_8_CbYCrY, "YCbCr709_422_8_CbYCrY", "YCbCr 4:2:2 8-bit BT.709", 16, 16, 8, 8, 2, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr8_CbYCr, "YCbCr8_CbYCr", "YCbCr 4:4:4 8-bit", 24, 24, 8, 8, 1, 3, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr601_8_CbYCr, "YCbCr601_8_CbYCr", "YCbCr 4:4:4 8-bit BT.601", 24, 24, 8, 8, 1, 3, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YCbCr709_8_CbYCr, "YCbCr709_8_CbYCr", "YCbCr 4:4:4 8-bit BT.709", 24, 24, 8, 8, 1, 3, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YUV411_8_UYYVYY, "YUV411_8_UYYVYY", "YUV 4:1:1 8-bit", 12, 12, 8, 8, 4, 6, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YUV422_8_UYVY, "YUV422_8_UYVY", "YUV 4:2:2 8-bit", 16, 16, 8, 8, 2, 4, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YUV8_UYV, "YUV8_UYV", "YUV 4:4:4 8-bit", 24, 24, 8, 8, 1, 3, 1, QvPixelColorFilter_None, true, false, true, false},
    {QvPFNC_YUV422_8, "YUV422_8", "YUV 4:2:2 8-bit", 16, 16, 8, 8, 2, 4, 1, QvPixelColorFilter_None, true, false, true, false},
};
// clang-format on
} // namespace

CQvPixelFormatInfo::CQvPixelFormatInfo()
{
    try
    {
        for (const PixelFormatRow_t& row : kPixelFormatRows)
        {
            auto* pRecord = new CQvSpecificPixelInfo(row);
            try
            {
                m_records.emplace(row.value, pRecord);
            }
            catch (...)
            {
                delete pRecord;
                throw;
            }
        }
    }
    catch (...)
    {
        DeleteRecords();
        throw;
    }
    try
    {
        m_sorted.reserve(m_records.size());
        for (const auto& entry : m_records) // the map iterates in key order
            m_sorted.emplace_back(entry.first, entry.second);
    }
    catch (...)
    {
        DeleteRecords();
        throw;
    }
}

CQvPixelFormatInfo::~CQvPixelFormatInfo()
{
    DeleteRecords();
}

void CQvPixelFormatInfo::DeleteRecords() noexcept
{
    m_sorted.clear();
    for (auto& entry : m_records)
        delete entry.second;
    m_records.clear();
}

IQvPixelFormatInfoInside* CQvPixelFormatInfo::GetIQvPixelFormatInfoInside(EQvPixelFormatNamingConvention_t value) const
{
    const auto it = m_records.find(value);
    if (QV_UNLIKELY(it == m_records.end()))
        QV_THROW(RuntimeException, "Unknown pixelformat 0x%X", static_cast<unsigned>(value));
    return it->second;
}

const CQvSpecificPixelInfo* CQvPixelFormatInfo::Find(EQvPixelFormatNamingConvention_t value) const
{
    const auto it = std::lower_bound(m_sorted.begin(), m_sorted.end(), value,
                                     [](const auto& entry, EQvPixelFormatNamingConvention_t key) { return entry.first < key; });
    return it != m_sorted.end() && it->first == value ? it->second : nullptr;
}
} // namespace QvApi
