#pragma once

#include <map>

#include <QvApi/QvPixelComponent.h>

namespace QvApi
{
class CQvSpecificPixelComponentInfo;

/**
 * \brief The table of the 44 pixel components, keyed by component code.
 *
 * One instance per process, made by QvApiInitialize() and deleted by the last QvApiTerminate()
 * (held in gpCQvPixelComponentInfo). Read-only after construction; any thread.
 */
class CQvPixelComponentInfo
{
public:
    /// Builds every record. \throws std::bad_alloc, leaving nothing behind.
    CQvPixelComponentInfo();
    /// Deletes every record.
    ~CQvPixelComponentInfo();
    CQvPixelComponentInfo(const CQvPixelComponentInfo&) = delete;
    CQvPixelComponentInfo& operator=(const CQvPixelComponentInfo&) = delete;

    /**
     * \return The record of \a value, owned by this table.
     * \throws InvalidArgumentException "EQvPixelComponet_t %u is not supported." otherwise.
     */
    const IQvPixelComponentInfo* GetIQvPixelComponentInfoInside(EQvPixelComponent_t value) const;
    /// \return How many components the table holds.
    size_t GetCount() const { return m_records.size(); }

private:
    void DeleteRecords() noexcept;

    std::map<EQvPixelComponent_t, CQvSpecificPixelComponentInfo*> m_records; // owned records
};
} // namespace QvApi
