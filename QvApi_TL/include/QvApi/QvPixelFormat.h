#pragma once

#include <stdint.h>

#include <Base/GCString.h>
#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief A pixel format by its 32-bit GenICam PFNC code.
 *
 * The enumerators are the 98 formats the library knows, in the order of its format table.
 * "CBGR10p32" carries a private code with the high bit set. QvPFNC_Invalid is what a crop that
 * would split a packing group reports (IQvPixelFormatInfo::GetOffsettedPixelFormat()) and what an
 * image without a buffer reports as its format.
 */
enum EQvPixelFormatNamingConvention_t : uint32_t
{
    QvPFNC_Mono1p = 0x01010037u,
    QvPFNC_Mono2p = 0x01020038u,
    QvPFNC_Mono4p = 0x01040039u,
    QvPFNC_Mono8 = 0x01080001u,
    QvPFNC_Mono10 = 0x01100003u,
    QvPFNC_Mono10p = 0x010A0046u,
    QvPFNC_Mono12 = 0x01100005u,
    QvPFNC_Mono12p = 0x010C0047u,
    QvPFNC_Mono14 = 0x01100025u,
    QvPFNC_Mono14p = 0x010E0104u,
    QvPFNC_Mono16 = 0x01100007u,
    QvPFNC_BayerGR4p = 0x0104010Du,
    QvPFNC_BayerRG4p = 0x0104010Eu,
    QvPFNC_BayerGB4p = 0x0104010Fu,
    QvPFNC_BayerBG4p = 0x01040110u,
    QvPFNC_BayerGR8 = 0x01080008u,
    QvPFNC_BayerGR10 = 0x0110000Cu,
    QvPFNC_BayerGR10p = 0x010A0056u,
    QvPFNC_BayerGR12 = 0x01100010u,
    QvPFNC_BayerGR12p = 0x010C0057u,
    QvPFNC_BayerGR14 = 0x01100109u,
    QvPFNC_BayerGR14p = 0x010E0105u,
    QvPFNC_BayerGR16 = 0x0110002Eu,
    QvPFNC_BayerRG8 = 0x01080009u,
    QvPFNC_BayerRG10 = 0x0110000Du,
    QvPFNC_BayerRG10p = 0x010A0058u,
    QvPFNC_BayerRG12 = 0x01100011u,
    QvPFNC_BayerRG12p = 0x010C0059u,
    QvPFNC_BayerRG14 = 0x0110010Au,
    QvPFNC_BayerRG14p = 0x010E0106u,
    QvPFNC_BayerRG16 = 0x0110002Fu,
    QvPFNC_BayerGB8 = 0x0108000Au,
    QvPFNC_BayerGB10 = 0x0110000Eu,
    QvPFNC_BayerGB10p = 0x010A0054u,
    QvPFNC_BayerGB12 = 0x01100012u,
    QvPFNC_BayerGB12p = 0x010C0055u,
    QvPFNC_BayerGB14 = 0x0110010Bu,
    QvPFNC_BayerGB14p = 0x010E0107u,
    QvPFNC_BayerGB16 = 0x01100030u,
    QvPFNC_BayerBG8 = 0x0108000Bu,
    QvPFNC_BayerBG10 = 0x0110000Fu,
    QvPFNC_BayerBG10p = 0x010A0052u,
    QvPFNC_BayerBG12 = 0x01100013u,
    QvPFNC_BayerBG12p = 0x010C0053u,
    QvPFNC_BayerBG14 = 0x0110010Cu,
    QvPFNC_BayerBG14p = 0x010E0108u,
    QvPFNC_BayerBG16 = 0x01100031u,
    QvPFNC_GVSP_Mono10Packed = 0x010C0004u,
    QvPFNC_GVSP_Mono12Packed = 0x010C0006u,
    QvPFNC_GVSP_BayerGR10Packed = 0x010C0026u,
    QvPFNC_GVSP_BayerGR12Packed = 0x010C002Au,
    QvPFNC_GVSP_BayerRG10Packed = 0x010C0027u,
    QvPFNC_GVSP_BayerRG12Packed = 0x010C002Bu,
    QvPFNC_GVSP_BayerGB10Packed = 0x010C0028u,
    QvPFNC_GVSP_BayerGB12Packed = 0x010C002Cu,
    QvPFNC_GVSP_BayerBG10Packed = 0x010C0029u,
    QvPFNC_GVSP_BayerBG12Packed = 0x010C002Du,
    QvPFNC_RGB8 = 0x02180014u,
    QvPFNC_BGR8 = 0x02180015u,
    QvPFNC_BGR10 = 0x02300019u,
    QvPFNC_BGR12 = 0x0230001Bu,
    QvPFNC_BGR14 = 0x0230004Au,
    QvPFNC_BGR16 = 0x0230004Bu,
    QvPFNC_RGBa8 = 0x02200016u,
    QvPFNC_BGRa8 = 0x02200017u,
    QvPFNC_BGRa10 = 0x0240004Cu,
    QvPFNC_BGRa12 = 0x0240004Eu,
    QvPFNC_BGRa14 = 0x02400050u,
    QvPFNC_BGRa16 = 0x02400051u,
    QvPFNC_RGB10p32 = 0x0220001Du,
    QvPFNC_CBGR10p32 = 0x82200001u,
    QvPFNC_YCbCr8 = 0x0218005Bu,
    QvPFNC_YCbCr411_8 = 0x020C005Au,
    QvPFNC_YCbCr422_8 = 0x0210003Bu,
    QvPFNC_YCbCr709_422_8 = 0x02100041u,
    QvPFNC_RGB8_Planar = 0x02180021u,
    QvPFNC_RGB10_Planar = 0x02300022u,
    QvPFNC_RGB12_Planar = 0x02300023u,
    QvPFNC_RGB16_Planar = 0x02300024u,
    QvPFNC_RGB16 = 0x02300033u,
    QvPFNC_BGR10p = 0x021E0048u,
    QvPFNC_BGR12p = 0x02240049u,
    QvPFNC_RGB10p = 0x021E005Cu,
    QvPFNC_RGB12p = 0x0224005Du,
    QvPFNC_YCbCr601_422_8 = 0x0210003Eu,
    QvPFNC_YCbCr411_8_CbYYCrYY = 0x020C003Cu,
    QvPFNC_YCbCr601_411_8_CbYYCrYY = 0x020C003Fu,
    QvPFNC_YCbCr709_411_8_CbYYCrYY = 0x020C0042u,
    QvPFNC_YCbCr422_8_CbYCrY = 0x02100043u,
    QvPFNC_YCbCr601_422_8_CbYCrY = 0x02100044u,
    QvPFNC_YCbCr709_422_8_CbYCrY = 0x02100045u,
    QvPFNC_YCbCr8_CbYCr = 0x0218003Au,
    QvPFNC_YCbCr601_8_CbYCr = 0x0218003Du,
    QvPFNC_YCbCr709_8_CbYCr = 0x02180040u,
    QvPFNC_YUV411_8_UYYVYY = 0x020C001Eu,
    QvPFNC_YUV422_8_UYVY = 0x0210001Fu,
    QvPFNC_YUV8_UYV = 0x02180020u,
    QvPFNC_YUV422_8 = 0x02100032u,
    QvPFNC_Invalid = 0xFFFFFFFFu
};

/// The Bayer phase of a pixel: which colour the top-left site of its 2 x 2 cell has.
enum EQvPixelColorFilter_t : uint32_t
{
    QvPixelColorFilter_None = 0,    ///< A colour format without a mosaic.
    QvPixelColorFilter_Mono = 1,    ///< A monochrome format.
    QvPixelColorFilter_BayerRG = 2, ///< Red, green / green, blue.
    QvPixelColorFilter_BayerGR = 3, ///< Green, red / blue, green.
    QvPixelColorFilter_BayerGB = 4, ///< Green, blue / red, green.
    QvPixelColorFilter_BayerBG = 5  ///< Blue, green / green, red.
};

/**
 * \brief Layout of one pixel format: bit counts, packing, line pitch, Bayer phase.
 *
 * Records belong to the library's format table, which QvApiInitialize() builds and the last
 * QvApiTerminate() destroys; never delete one. Immutable, so any thread may read them.
 * Counts are in bits unless a name says otherwise.
 */
class IQvPixelFormatInfo
{
public:
    /// \return The PFNC code.
    virtual EQvPixelFormatNamingConvention_t GetValue() const = 0;
    /// \return The PFNC name, e.g. "Mono8".
    virtual GenICam::gcstring GetName() const = 0;
    /// \return A short English description, e.g. "Monochrome 8-bit".
    virtual GenICam::gcstring GetDescription() const = 0;
    /// \return Bits one pixel occupies in memory; for a planar format the sum over its planes.
    virtual uint64_t GetEachPixelTotalBitCount() const = 0;
    /// \return Bits one component (sample) occupies in memory.
    virtual uint64_t GetEachComponentTotalBitCount() const = 0;
    /// \return Significant bits of one component.
    virtual uint64_t GetEachComponentValidBitCount() const = 0;
    /// \return Pixel total bits divided by component total bits (integer division).
    virtual uint64_t GetEachPixelTotalComponentCount() const = 0;
    /// \return 3 for the planar formats, 1 otherwise.
    virtual uint64_t GetPlaneCount() const = 0;
    /// \return Horizontally adjacent pixels that form one indivisible packing group; ROI
    ///         offsets and widths must be multiples of it.
    virtual uint64_t GetPixelIncrementX() const = 0;
    /// \return Rows that form one packing group (1 for every format).
    virtual uint64_t GetPixelIncrementY() const = 0;
    /// \return True for colour formats, Bayer formats included.
    virtual bool IsColor() const = 0;
    /// \return Exactly !IsColor(): Bayer formats are not mono.
    virtual bool IsMono() const = 0;
    /// \return True for the Bayer mosaic formats.
    virtual bool IsBayer() const = 0;
    /// \return False for every format the library knows.
    virtual bool IsCompressed() const = 0;
    /**
     * \brief The Bayer phase of the 2 x 2 cell whose top-left pixel is (x, y).
     * \return The stored phase for even x and y, the shifted one otherwise; None and Mono
     *         formats answer their own filter everywhere.
     */
    virtual EQvPixelColorFilter_t GetPixelColorFilter(size_t x, size_t y) const = 0;
    /// \return The byte multiple to which an image buffer rounds its line pitch by default.
    virtual uint64_t GetLinePitchAlignment() const = 0;
    /**
     * \brief Bytes one line of \a width pixels needs.
     * \param[in] width     Pixels per line.
     * \param[in] alignment Byte multiple to round up to; 0 or 1 rounds only to whole bytes.
     * \return The pitch in bytes; a planar format answers the pitch of one plane. Saturates at
     *         SIZE_MAX instead of wrapping for absurd widths.
     */
    virtual uint64_t GetRequiredLinePitch(size_t width, size_t alignment) const = 0;
    /// \return Significant bits of one pixel (alpha not counted).
    virtual uint64_t GetEachPixelValidBitCount() const = 0;
    /// \return Pixel valid bits divided by component valid bits (integer division).
    virtual uint64_t GetEachPixelValidComponentCount() const = 0;
    /**
     * \brief The format of a crop that starts at (x, y).
     * \return This format for even offsets and for formats without a mosaic; the re-phased
     *         Bayer format otherwise; QvPFNC_Invalid when an odd x would split a packing group.
     *         Never throws.
     */
    virtual EQvPixelFormatNamingConvention_t GetOffsettedPixelFormat(size_t x, size_t y) const = 0;
    /// \return False only for the RGB-ordered formats.
    virtual bool IsBGROrder() const = 0;
    /// \return True for the GigE-Vision-specific packed formats.
    virtual bool IsGevSp() const = 0;

protected:
    ~IQvPixelFormatInfo() = default;
};
} // namespace QvApi
