#include "QvApi_TL/QvSpecificPixelInfo.h"

#include <cstdint>
#include <limits>

namespace QvApi
{
namespace
{
// The Bayer formats of one depth and packing, indexed by colour filter - BayerRG: RG, GR, GB, BG.
struct BayerFamily_t
{
    EQvPixelFormatNamingConvention_t phase[4];
    bool oddXSplitsGroup; // packed families whose groups straddle the two columns of a cell
};

constexpr BayerFamily_t kBayerFamilies[] = {
    {{QvPFNC_BayerRG4p, QvPFNC_BayerGR4p, QvPFNC_BayerGB4p, QvPFNC_BayerBG4p}, false},
    {{QvPFNC_BayerRG8, QvPFNC_BayerGR8, QvPFNC_BayerGB8, QvPFNC_BayerBG8}, false},
    {{QvPFNC_BayerRG10, QvPFNC_BayerGR10, QvPFNC_BayerGB10, QvPFNC_BayerBG10}, false},
    {{QvPFNC_BayerRG12, QvPFNC_BayerGR12, QvPFNC_BayerGB12, QvPFNC_BayerBG12}, false},
    {{QvPFNC_BayerRG14, QvPFNC_BayerGR14, QvPFNC_BayerGB14, QvPFNC_BayerBG14}, false},
    {{QvPFNC_BayerRG16, QvPFNC_BayerGR16, QvPFNC_BayerGB16, QvPFNC_BayerBG16}, false},
    {{QvPFNC_BayerRG10p, QvPFNC_BayerGR10p, QvPFNC_BayerGB10p, QvPFNC_BayerBG10p}, true},
    {{QvPFNC_BayerRG12p, QvPFNC_BayerGR12p, QvPFNC_BayerGB12p, QvPFNC_BayerBG12p}, true},
    {{QvPFNC_BayerRG14p, QvPFNC_BayerGR14p, QvPFNC_BayerGB14p, QvPFNC_BayerBG14p}, true},
    {{QvPFNC_GVSP_BayerRG10Packed, QvPFNC_GVSP_BayerGR10Packed, QvPFNC_GVSP_BayerGB10Packed,
      QvPFNC_GVSP_BayerBG10Packed},
     true},
    {{QvPFNC_GVSP_BayerRG12Packed, QvPFNC_GVSP_BayerGR12Packed, QvPFNC_GVSP_BayerGB12Packed,
      QvPFNC_GVSP_BayerBG12Packed},
     true},
};

const BayerFamily_t* FindBayerFamily(EQvPixelFormatNamingConvention_t value)
{
    for (const BayerFamily_t& family : kBayerFamilies)
        for (EQvPixelFormatNamingConvention_t phase : family.phase)
            if (phase == value)
                return &family;
    return nullptr;
}

// Phase of the cell whose top-left pixel has parity k = (x & 1) + 2 * (y & 1), for k = 1..3.
// Odd x swaps the columns of the cell, odd y its rows.
constexpr EQvPixelColorFilter_t kShiftedFilter[6][3] = {
    {QvPixelColorFilter_None, QvPixelColorFilter_None, QvPixelColorFilter_None},
    {QvPixelColorFilter_Mono, QvPixelColorFilter_Mono, QvPixelColorFilter_Mono},
    {QvPixelColorFilter_BayerGR, QvPixelColorFilter_BayerGB, QvPixelColorFilter_BayerBG}, // RG
    {QvPixelColorFilter_BayerRG, QvPixelColorFilter_BayerBG, QvPixelColorFilter_BayerGB}, // GR
    {QvPixelColorFilter_BayerBG, QvPixelColorFilter_BayerRG, QvPixelColorFilter_BayerGR}, // GB
    {QvPixelColorFilter_BayerGB, QvPixelColorFilter_BayerGR, QvPixelColorFilter_BayerRG}, // BG
};
} // namespace

CQvSpecificPixelInfo::CQvSpecificPixelInfo(const PixelFormatRow_t& row)
    : m_value(row.value), m_name(row.name), m_description(row.description),
      m_eachPixelTotalBitCount(row.eachPixelTotalBitCount), m_colorFilter(row.colorFilter),
      m_pixelIncrementX(row.pixelIncrementX), m_pixelIncrementY(1), m_linePitchAlignment(row.linePitchAlignment),
      m_eachComponentValidBitCount(row.eachComponentValidBitCount),
      m_eachComponentTotalBitCount(row.eachComponentTotalBitCount),
      m_eachPixelValidBitCount(row.eachPixelValidBitCount), m_planeCount(row.planeCount), m_isColor(row.isColor),
      m_isBayer(row.isBayer), m_isBGROrder(row.isBGROrder), m_isCompressed(false), m_isGevSp(row.isGevSp),
      m_pBayerFamily(nullptr), m_oddXSplitsGroup(false)
{
    if (const BayerFamily_t* family = FindBayerFamily(m_value))
    {
        m_pBayerFamily = family->phase;
        m_oddXSplitsGroup = family->oddXSplitsGroup;
    }
}

GenICam::gcstring CQvSpecificPixelInfo::GetName() const
{
    return GenICam::gcstring(m_name);
}

GenICam::gcstring CQvSpecificPixelInfo::GetDescription() const
{
    return GenICam::gcstring(m_description);
}

uint64_t CQvSpecificPixelInfo::GetEachPixelTotalComponentCount() const
{
    return m_eachPixelTotalBitCount / m_eachComponentTotalBitCount;
}

uint64_t CQvSpecificPixelInfo::GetEachPixelValidComponentCount() const
{
    return m_eachPixelValidBitCount / m_eachComponentValidBitCount;
}

EQvPixelColorFilter_t CQvSpecificPixelInfo::GetPixelColorFilter(size_t x, size_t y) const
{
    const unsigned k = static_cast<unsigned>((x & 1) + 2 * (y & 1));
    if (k == 0 || m_colorFilter > QvPixelColorFilter_BayerBG)
        return m_colorFilter;
    return kShiftedFilter[m_colorFilter][k - 1];
}

uint64_t CQvSpecificPixelInfo::GetRequiredLinePitch(size_t width, size_t alignment) const
{
    // A planar format's pitch is that of one plane.
    const uint64_t bits = m_planeCount < 2 ? m_eachPixelTotalBitCount : m_eachComponentTotalBitCount;
    // 128-bit so that absurd widths saturate instead of wrapping into a small, wrong pitch.
    unsigned __int128 pitch = (static_cast<unsigned __int128>(width) * bits + 7) / 8;
    if (alignment >= 2)
        pitch = (pitch + alignment - 1) / alignment * alignment;
    constexpr uint64_t kMax = std::numeric_limits<uint64_t>::max();
    return pitch > kMax ? kMax : static_cast<uint64_t>(pitch);
}

EQvPixelFormatNamingConvention_t CQvSpecificPixelInfo::GetOffsettedPixelFormat(size_t x, size_t y) const
{
    if (((x | y) & 1) == 0 || m_pBayerFamily == nullptr)
        return m_value;
    if ((x & 1) != 0 && m_oddXSplitsGroup)
        return QvPFNC_Invalid;
    return m_pBayerFamily[GetPixelColorFilter(x, y) - QvPixelColorFilter_BayerRG];
}
} // namespace QvApi
