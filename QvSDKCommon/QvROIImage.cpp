#include "QvSDKCommon/QvROIImage.h"

#include <cstdint>
#include <new>

#include <QvApi/QvApiFunctions.h>

#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
CQvROIImage::CQvROIImage(IQvImage* pParent) : m_pParent(pParent)
{
    QV_ASSERT(m_pParent != nullptr, "m_pParent != NULL");
}

CQvROIImage::~CQvROIImage() = default;

void CQvROIImage::SetROI(size_t x, size_t y, size_t width, size_t height)
{
    const size_t parentWidth = m_pParent->GetImageWidth();
    const size_t parentHeight = m_pParent->GetImageHeight();
    // The increments of the format as this view sees it now, before the new offsets apply.
    const IQvPixelFormatInfo* pInfo = GetIQvPixelFormatInfo(GetImagePixelFormat());
    const uint64_t incX = pInfo->GetPixelIncrementX();
    const uint64_t incY = pInfo->GetPixelIncrementY();

    QV_CHECK_MIN("size_t Width", static_cast<long>(width), incX);
    QV_CHECK_MAX("size_t Width", static_cast<long>(width), parentWidth);
    if (QV_UNLIKELY(incX == 0))
        QV_THROW(LogicalErrorException, "Increment must not equal 0!");
    if (QV_UNLIKELY((width - incX) % incX != 0))
        QV_THROW_NOT_DIVIDABLE("size_t Width", width, incX, incX);
    QV_CHECK_MIN("size_t x", static_cast<long>(x), 0L);
    QV_CHECK_MAX("size_t x", static_cast<long>(x), parentWidth - width);
    if (QV_UNLIKELY(x % incX != 0))
        QV_THROW_NOT_DIVIDABLE("size_t x", x, 0, incX);
    // Stored before the vertical checks: a vertical failure keeps the new horizontal values.
    m_offsetX = x;
    m_width = width;

    QV_CHECK_MIN("size_t Height", static_cast<long>(height), incY);
    QV_CHECK_MAX("size_t Height", static_cast<long>(height), parentHeight);
    if (QV_UNLIKELY(incY == 0))
        QV_THROW(LogicalErrorException, "Increment must not equal 0!");
    if (QV_UNLIKELY((height - incY) % incY != 0))
        QV_THROW_NOT_DIVIDABLE("size_t Height", height, incY, incY);
    QV_CHECK_MIN("size_t y", static_cast<long>(y), 0L);
    QV_CHECK_MAX("size_t y", static_cast<long>(y), parentHeight - height);
    if (QV_UNLIKELY(y % incY != 0))
        QV_THROW_NOT_DIVIDABLE("size_t y", y, 0, incY);
    m_offsetY = y;
    m_height = height;
}

size_t CQvROIImage::GetImageLinePitch()
{
    return m_pParent->GetImageLinePitch();
}

size_t CQvROIImage::GetImagePlanePitch()
{
    return m_pParent->GetImagePlanePitch();
}

EQvPixelFormatNamingConvention_t CQvROIImage::GetImagePixelFormat()
{
    const EQvPixelFormatNamingConvention_t parentFormat = m_pParent->GetImagePixelFormat();
    // Even offsets keep every format's phase; skipping the lookup also lets a view at the
    // origin pass through a code the table does not know.
    if (((m_offsetX | m_offsetY) & 1) == 0)
        return parentFormat;
    return GetIQvPixelFormatInfo(parentFormat)->GetOffsettedPixelFormat(m_offsetX, m_offsetY);
}

void* CQvROIImage::GetImageBuffer()
{
    auto* pParentBuffer = static_cast<uint8_t*>(m_pParent->GetImageBuffer());
    if (pParentBuffer == nullptr || (m_offsetX | m_offsetY) == 0)
        return pParentBuffer;
    const IQvPixelFormatInfo* pInfo = GetIQvPixelFormatInfo(GetImagePixelFormat());
    const uint64_t bits =
        pInfo->GetPlaneCount() < 2 ? pInfo->GetEachPixelTotalBitCount() : pInfo->GetEachComponentTotalBitCount();
    return pParentBuffer + m_offsetY * m_pParent->GetImageLinePitch() + (bits * m_offsetX) / 8;
}

void* CQvROIImage::GetUserContext()
{
    return m_pParent->GetUserContext();
}

IQvImage* CQvROIImage::GetROIImage(size_t x, size_t y, size_t width, size_t height)
{
    if (!m_pChildROI)
    {
        try
        {
            m_pChildROI.reset(new CQvROIImage(this));
        }
        QV_CATCH_BAD_ALLOC()
    }
    m_pChildROI->SetROI(x, y, width, height);
    return m_pChildROI.get();
}

IQvPixelComponentValue* CQvROIImage::GetIQvPixelComponentValue(size_t x, size_t y)
{
    // Checked against this view, not only the parent, so a pixel outside the view is refused.
    QV_CHECK_MIN("size_t x", static_cast<long>(x), 0L);
    QV_CHECK_BELOW("size_t x", static_cast<long>(x), m_width);
    QV_CHECK_MIN("size_t y", static_cast<long>(y), 0L);
    QV_CHECK_BELOW("size_t y", static_cast<long>(y), m_height);
    return m_pParent->GetIQvPixelComponentValue(x + m_offsetX, y + m_offsetY);
}
} // namespace QvApi
