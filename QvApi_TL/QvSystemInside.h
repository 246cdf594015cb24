#pragma once

#include <GenTL/GenTL.h>
#include <QvApi/QvSystem.h>

namespace QvApi
{
/**
 * \brief What the interfaces of a system use of it.
 */
class IQvSystemInside : public IQvSystemReleasable
{
public:
    /// \return The open transport-layer handle; null once closed.
    virtual GenTL::TL_HANDLE GetSystemHandle() = 0;

protected:
    virtual ~IQvSystemInside() = default; // ended by Release()
};
} // namespace QvApi
