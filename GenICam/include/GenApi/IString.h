#pragma once

#include <GenApi/IValue.h>

namespace GenApi
{
/**
 * \brief A text feature.
 *
 * Thread: any; each call locks the node map's lock.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IString : virtual public IValue
{
    /// Writes the text. \throws OutOfRangeException when longer than the register.
    virtual void SetValue(const GenICam::gcstring& value, bool verify = true) = 0;
    /// Writes with verification.
    virtual IString& operator=(const GenICam::gcstring& value) = 0;
    /// Reads the text.
    virtual GenICam::gcstring GetValue(bool verify = false, bool ignoreCache = false) = 0;
    /// The text (unverified, cached).
    virtual GenICam::gcstring operator()() = 0;
    /// The text (unverified, cached).
    virtual GenICam::gcstring operator*() = 0;
    /// Longest text the feature holds.
    virtual int64_t GetMaxLength() = 0;
};
} // namespace GenApi
