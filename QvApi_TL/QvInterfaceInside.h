#pragma once

#include <cstdint>

#include <GenTL/GenTL.h>
#include <QvApi/QvInterface.h>
#include <QvApi/QvSystem.h>

namespace QvApi
{
class IQvSystemInside;

/**
 * \brief What the system and the devices of an interface use of it: its parent, its handle,
 *        its type and its reference count (the system holds one reference for its list entry,
 *        each open device one more).
 */
class IQvInterfaceInside : public IQvInterface
{
public:
    /// \return The owning system; borrowed.
    virtual IQvSystemInside* GetIQvSystemInside() = 0;
    /// \return The open interface handle.
    virtual GenTL::IF_HANDLE GetInterfaceHandle() = 0;
    /// \return The interface's transport layer as a bit of _EQvInterfaceType_t, 0 when unknown.
    virtual _EQvInterfaceType_t GetQvInterfaceType() = 0;
    /// \brief Adds a reference. \return The new count. Any thread.
    virtual int64_t AddRef() = 0;
    /// \brief Drops a reference; the last one closes the interface (IFClose). Any thread.
    virtual void Release() = 0;

protected:
    virtual ~IQvInterfaceInside() = default; // ended by Release()
};
} // namespace QvApi
