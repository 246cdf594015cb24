#pragma once

#include <stdint.h>

#include <QvApi/QvPixelFormat.h>

#include "QvApi_TL/QvPixelFormatInfoInside.h"

namespace QvApi
{
/// One row of the pixel format table, as the table's source lists it.
struct PixelFormatRow_t
{
    EQvPixelFormatNamingConvention_t value;
    const char* name;
    const char* description;
    uint64_t eachPixelTotalBitCount;
    uint64_t eachPixelValidBitCount;
    uint64_t eachComponentTotalBitCount;
    uint64_t eachComponentValidBitCount;
    uint64_t pixelIncrementX;
    uint64_t linePitchAlignment;
    uint64_t planeCount;
    EQvPixelColorFilter_t colorFilter;
    bool isColor;
    bool isBayer;
    bool isBGROrder;
    bool isGevSp;
};

/**
 * \brief One pixel format: the immutable record behind IQvPixelFormatInfo.
 *
 * Made and owned by CQvPixelFormatInfo, which deletes it by this concrete type. Read-only after
 * construction, so any thread may use it.
 */
class CQvSpecificPixelInfo final : public IQvPixelFormatInfoInside
{
public:
    explicit CQvSpecificPixelInfo(const PixelFormatRow_t& row);
    ~CQvSpecificPixelInfo() = default;
    CQvSpecificPixelInfo(const CQvSpecificPixelInfo&) = delete;
    CQvSpecificPixelInfo& operator=(const CQvSpecificPixelInfo&) = delete;

    EQvPixelFormatNamingConvention_t GetValue() const override { return m_value; }
    GenICam::gcstring GetName() const override;
    GenICam::gcstring GetDescription() const override;
    uint64_t GetEachPixelTotalBitCount() const override { return m_eachPixelTotalBitCount; }
    uint64_t GetEachComponentTotalBitCount() const override { return m_eachComponentTotalBitCount; }
    uint64_t GetEachComponentValidBitCount() const override { return m_eachComponentValidBitCount; }
    uint64_t GetEachPixelTotalComponentCount() const override;
    uint64_t GetPlaneCount() const override { return m_planeCount; }
    uint64_t GetPixelIncrementX() const override { return m_pixelIncrementX; }
    uint64_t GetPixelIncrementY() const override { return m_pixelIncrementY; }
    bool IsColor() const override { return m_isColor; }
    bool IsMono() const override { return !m_isColor; }
    bool IsBayer() const override { return m_isBayer; }
    bool IsCompressed() const override { return m_isCompressed; }
    EQvPixelColorFilter_t GetPixelColorFilter(size_t x, size_t y) const override;
    uint64_t GetLinePitchAlignment() const override { return m_linePitchAlignment; }
    uint64_t GetRequiredLinePitch(size_t width, size_t alignment) const override;
    uint64_t GetEachPixelValidBitCount() const override { return m_eachPixelValidBitCount; }
    uint64_t GetEachPixelValidComponentCount() const override;
    EQvPixelFormatNamingConvention_t GetOffsettedPixelFormat(size_t x, size_t y) const override;
    bool IsBGROrder() const override { return m_isBGROrder; }
    bool IsGevSp() const override { return m_isGevSp; }

    /// The stored C string of the name, for messages that need no copy.
    const char* GetNameText() const { return m_name; }

private:
    EQvPixelFormatNamingConvention_t m_value;
    const char* m_name;        // static storage
    const char* m_description; // static storage
    uint64_t m_eachPixelTotalBitCount;
    EQvPixelColorFilter_t m_colorFilter;
    uint64_t m_pixelIncrementX;
    uint64_t m_pixelIncrementY;
    uint64_t m_linePitchAlignment;
    uint64_t m_eachComponentValidBitCount;
    uint64_t m_eachComponentTotalBitCount;
    uint64_t m_eachPixelValidBitCount;
    uint64_t m_planeCount;
    bool m_isColor;
    bool m_isBayer;
    bool m_isBGROrder;
    bool m_isCompressed;
    bool m_isGevSp;

    // Derived once from the code: the four phases of this format's Bayer family (indexed by
    // filter - BayerRG), null for formats without a mosaic; and whether an odd x would split
    // a packing group of the family.
    const EQvPixelFormatNamingConvention_t* m_pBayerFamily;
    bool m_oddXSplitsGroup;
};
} // namespace QvApi
