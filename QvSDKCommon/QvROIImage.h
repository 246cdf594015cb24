#pragma once

#include <memory>

#include <QvApi/QvImage.h>

#include "QvSDKCommon/QvImageInside.h"

namespace QvApi
{
/**
 * \brief A rectangular view into another image: no memory of its own.
 *
 * Owned by the image it views (an image buffer, a stream buffer's image or another view) and
 * reused: every GetROIImage() of the parent reconfigures the same view. Offsets and width must
 * be multiples of the pixel increment of the view's format, so a view never splits a packing
 * group; a Bayer view reports the phase its accumulated offset gives. One thread at a time,
 * together with its parent.
 */
class CQvROIImage final : public IQvImageInside
{
public:
    /// \param[in] pParent The viewed image; it owns this view and outlives it.
    explicit CQvROIImage(IQvImage* pParent);
    ~CQvROIImage();
    CQvROIImage(const CQvROIImage&) = delete;
    CQvROIImage& operator=(const CQvROIImage&) = delete;

    /**
     * \brief Moves the view to (x, y, width, height) of the parent.
     *
     * Horizontal values are checked and stored before the vertical ones are checked, so a
     * vertical failure leaves the new x and width in place.
     * \throws OutOfRangeException for a rectangle outside the parent or off the pixel increment.
     * \throws LogicalErrorException when the format's increment is 0.
     * \throws RuntimeException "Unknown pixelformat 0x%X" when the view's format is not known.
     */
    void SetROI(size_t x, size_t y, size_t width, size_t height);

    size_t GetImageWidth() override { return m_width; }
    size_t GetImageHeight() override { return m_height; }
    size_t GetImageLinePitch() override;
    size_t GetImagePlanePitch() override;
    EQvPixelFormatNamingConvention_t GetImagePixelFormat() override;
    void* GetImageBuffer() override;
    void* GetUserContext() override;
    IQvImage* GetROIImage(size_t x, size_t y, size_t width, size_t height) override;
    IQvPixelComponentValue* GetIQvPixelComponentValue(size_t x, size_t y) override;

private:
    IQvImage* const m_pParent; // borrowed: the parent owns this view
    size_t m_offsetX = 0;
    size_t m_offsetY = 0;
    size_t m_width = 0;
    size_t m_height = 0;
    std::unique_ptr<CQvROIImage> m_pChildROI; // owned; made by the first GetROIImage()
};
} // namespace QvApi
