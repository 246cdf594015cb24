#pragma once

#include <GenApi/Container.h>
#include <GenApi/IValue.h>

namespace GenApi
{
struct IEnumEntry;

/**
 * \brief A feature with a fixed set of symbolic values.
 *
 * Thread: any; each call locks the node map's lock.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IEnumeration : virtual public IValue
{
    /// Symbolic names of the available entries.
    virtual void GetSymbolics(StringList_t& symbolics) = 0;
    /// All entries (available or not).
    virtual void GetEntries(NodeList_t& entries) = 0;
    /// Writes the entry with this symbolic name (verified).
    virtual IEnumeration& operator=(const GenICam::gcstring& valueText) = 0;
    /// Writes the entry with this integer value.
    virtual void SetIntValue(int64_t value, bool verify = true) = 0;
    /// Symbolic name of the current entry.
    virtual GenICam::gcstring operator*() = 0;
    /// Integer value of the current entry.
    virtual int64_t GetIntValue(bool verify = false, bool ignoreCache = false) = 0;
    /// Entry with this symbolic name, or null.
    virtual IEnumEntry* GetEntryByName(const GenICam::gcstring& symbolic) = 0;
    /// Entry with this integer value, or null.
    virtual IEnumEntry* GetEntry(const int64_t intValue) = 0;
    /// Current entry, or null when the value has no entry.
    virtual IEnumEntry* GetCurrentEntry(bool verify = false, bool ignoreCache = false) = 0;
};
} // namespace GenApi
