#pragma once

#include <QvApi/QvApiDefs.h>
#include <QvApi/QvPixelFormat.h>

namespace QvApi
{
class IQvPixelComponentValue;

/**
 * \brief Read access to an image: geometry, pixel format, memory and per-pixel components.
 *
 * Implemented by image buffers, their ROI views and the images of stream buffers. The image
 * owns the objects it hands out (ROI view, component accessor) and reuses them on every call.
 * One thread at a time per image, views included.
 */
class IQvImage
{
public:
    /// \return Width in pixels.
    virtual size_t GetImageWidth() = 0;
    /// \return Height in pixels (rows of one plane).
    virtual size_t GetImageHeight() = 0;
    /// \return Bytes from the start of one line to the start of the next.
    virtual size_t GetImageLinePitch() = 0;
    /// \return Bytes from the start of one plane to the start of the next.
    virtual size_t GetImagePlanePitch() = 0;
    /// \return The pixel format of this image (for a view, as seen from its offset).
    virtual EQvPixelFormatNamingConvention_t GetImagePixelFormat() = 0;
    /// \return Address of the image's first byte; the memory belongs to the image.
    virtual void* GetImageBuffer() = 0;
    /// \return The context the allocator returned with the memory, or null.
    virtual void* GetUserContext() = 0;
    /**
     * \brief A view of the rectangle (x, y, width, height) of this image.
     *
     * The image owns the view and returns the same object on every call, reconfigured; a view
     * obtained earlier shows the new rectangle. Coordinates are relative to this image.
     * \return The view; valid until the image's memory is reallocated or the image ends.
     * \throws OutOfRangeException when the rectangle does not fit, or offset or width are not
     *         multiples of the format's pixel increment; the view keeps its previous rectangle
     *         when the horizontal checks fail (a vertical failure keeps the new x and width).
     * \throws BadAllocException when the view cannot be created.
     */
    virtual IQvImage* GetROIImage(size_t x, size_t y, size_t width, size_t height) = 0;
    /**
     * \brief The component accessor, positioned on pixel (x, y).
     * \return The image's one accessor (owned by the image, reused by every call).
     * \throws OutOfRangeException when (x, y) lies outside the image.
     * \throws RuntimeException when the pixel format cannot be decoded.
     */
    virtual IQvPixelComponentValue* GetIQvPixelComponentValue(size_t x, size_t y) = 0;

protected:
    ~IQvImage() = default;
};
} // namespace QvApi
