#pragma once

#include <QvApi/QvImage.h>

namespace QvApi
{
/**
 * \brief An image made by this library (image buffer, ROI view, stream buffer image).
 *
 * Adds no operation; CQvImageBuffer::CopyImage() accepts only such images, because it trusts
 * their geometry to describe memory it may read.
 */
class IQvImageInside : public IQvImage
{
protected:
    ~IQvImageInside() = default;
};
} // namespace QvApi
