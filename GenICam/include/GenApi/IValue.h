#pragma once

#include <GenApi/IBase.h>

namespace GenApi
{
struct INode;

/**
 * \brief A node whose value can be read and written as text.
 *
 * Thread: any; each call locks the node map's lock.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IValue : virtual public IBase
{
    /// The node behind this value.
    virtual INode* GetNode() = 0;
    /**
     * \brief The value as text.
     * \param[in] verify      Also check the value read (range, errors) and bypass the cache.
     * \param[in] ignoreCache Read from the device even when a cached value is valid.
     * \throws AccessException when the node is not readable.
     */
    virtual GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) = 0;
    /**
     * \brief Sets the value from text.
     * \param[in] valueText The text, in the form ToString produces.
     * \param[in] verify    Check availability, range and errors.
     * \throws InvalidArgumentException for text that does not convert, AccessException when the node
     *         is not writable, OutOfRangeException for a value outside the range.
     */
    virtual void FromString(const GenICam::gcstring& valueText, bool verify = true) = 0;
    /// Whether a read would be answered from the cache.
    virtual bool IsValueCacheValid() const = 0;
};
} // namespace GenApi
