#pragma once

#include <GenApi/IValue.h>

namespace GenApi
{
/**
 * \brief A feature that is on or off.
 *
 * Thread: any; each call locks the node map's lock.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IBoolean : virtual public IValue
{
    /// Writes the on or off value. \throws AccessException when not writable.
    virtual void SetValue(bool value, bool verify = true) = 0;
    /// Writes with verification.
    virtual IBoolean& operator=(bool value) = 0;
    /// Reads the value. \throws LogicalErrorException when the value read is neither on nor off.
    virtual bool GetValue(bool verify = false, bool ignoreCache = false) const = 0;
    /// The value (unverified, cached).
    virtual bool operator()() const = 0;
};
} // namespace GenApi
