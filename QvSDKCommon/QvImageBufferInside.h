#pragma once

#include <QvApi/QvImageBuffer.h>

namespace QvApi
{
/// An image buffer made by this library; adds no operation to IQvImageBufferReleasable.
class IQvImageBufferInside : public IQvImageBufferReleasable
{
protected:
    ~IQvImageBufferInside() = default;
};
} // namespace QvApi
