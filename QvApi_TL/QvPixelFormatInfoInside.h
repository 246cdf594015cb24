#pragma once

#include <QvApi/QvPixelFormat.h>

namespace QvApi
{
/**
 * \brief A pixel format record made by this library's format table.
 *
 * Every operation lives on the public IQvPixelFormatInfo; this refinement only tells the
 * library's own records apart from anything else that claims to describe a format.
 */
class IQvPixelFormatInfoInside : public IQvPixelFormatInfo
{
protected:
    ~IQvPixelFormatInfoInside() = default;
};
} // namespace QvApi
