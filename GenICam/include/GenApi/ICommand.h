#pragma once

#include <GenApi/IValue.h>

namespace GenApi
{
/**
 * \brief A feature that triggers an action in the device.
 *
 * Thread: any; each call locks the node map's lock.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT ICommand : virtual public IValue
{
    /// Starts the action. \throws AccessException when not writable.
    virtual void Execute(bool verify = true) = 0;
    /// Same as Execute().
    virtual void operator()() = 0;
    /// Whether the last Execute() has finished (reads the device while it is busy).
    virtual bool IsDone(bool verify = true) = 0;
};
} // namespace GenApi
