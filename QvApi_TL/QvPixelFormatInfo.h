#pragma once

#include <map>
#include <utility>
#include <vector>

#include <QvApi/QvPixelFormat.h>

namespace QvApi
{
class CQvSpecificPixelInfo;
class IQvPixelFormatInfoInside;

/**
 * \brief The table of the 98 pixel formats the library knows, keyed by PFNC code.
 *
 * One instance per process, made by QvApiInitialize() and deleted by the last QvApiTerminate()
 * (held in gpCQvPixelFormatInfo). Filled completely by the constructor and read-only afterwards,
 * so any thread may look formats up without a lock.
 */
class CQvPixelFormatInfo
{
public:
    /// Builds every record. \throws std::bad_alloc, leaving nothing behind.
    CQvPixelFormatInfo();
    /// Deletes every record.
    ~CQvPixelFormatInfo();
    CQvPixelFormatInfo(const CQvPixelFormatInfo&) = delete;
    CQvPixelFormatInfo& operator=(const CQvPixelFormatInfo&) = delete;

    /**
     * \return The record of \a value, owned by this table.
     * \throws RuntimeException "Unknown pixelformat 0x%X" for a code not in the table.
     */
    IQvPixelFormatInfoInside* GetIQvPixelFormatInfoInside(EQvPixelFormatNamingConvention_t value) const;
    /// \return The record of \a value, or null; never throws.
    const CQvSpecificPixelInfo* Find(EQvPixelFormatNamingConvention_t value) const;
    /// \return How many formats the table holds.
    size_t GetCount() const { return m_records.size(); }

private:
    void DeleteRecords() noexcept;

    std::map<EQvPixelFormatNamingConvention_t, CQvSpecificPixelInfo*> m_records; // owned records
    // The same records as one sorted array: Find() runs once per pixel access, and a binary
    // search over contiguous keys costs a fraction of a walk through tree nodes.
    std::vector<std::pair<EQvPixelFormatNamingConvention_t, const CQvSpecificPixelInfo*>> m_sorted;
};
} // namespace QvApi
