#pragma once

#include <QvApi/QvPixelComponent.h>

namespace QvApi
{
/**
 * \brief A component accessor made by this library.
 *
 * Adds nothing to IQvPixelComponentValue; it marks the library's own accessors.
 */
class IQvPixelComponentValueInside : public IQvPixelComponentValue
{
protected:
    ~IQvPixelComponentValueInside() = default;
};
} // namespace QvApi
