#pragma once

#include <QvApi/QvApiDefs.h>

namespace QvApi
{
/**
 * \brief An object the application received from a factory and ends with Release().
 *
 * Never delete such an object: Release() knows how it was made and what else it must let go.
 */
class IQvReleasable
{
public:
    /// Ends the object (or gives it back to its owner); the pointer is invalid afterwards.
    virtual void Release() = 0;

protected:
    ~IQvReleasable() = default;
};
} // namespace QvApi
