#pragma once

#include <stdint.h>

#include <QvApi/QvPixelComponent.h>

namespace QvApi
{
/**
 * \brief One pixel component: code, name and depth.
 *
 * Made and owned by CQvPixelComponentInfo, deleted by this concrete type. Immutable; any thread.
 */
class CQvSpecificPixelComponentInfo final : public IQvPixelComponentInfo
{
public:
    /// \param[in] name A string of static storage.
    CQvSpecificPixelComponentInfo(EQvPixelComponent_t value, const char* name, uint64_t bitCount)
        : m_value(value), m_name(name), m_bitCount(bitCount)
    {
    }
    ~CQvSpecificPixelComponentInfo() = default;
    CQvSpecificPixelComponentInfo(const CQvSpecificPixelComponentInfo&) = delete;
    CQvSpecificPixelComponentInfo& operator=(const CQvSpecificPixelComponentInfo&) = delete;

    EQvPixelComponent_t GetValue() const override { return m_value; }
    GenICam::gcstring GetName() const override;
    uint64_t GetBitCount() const override { return m_bitCount; }

private:
    EQvPixelComponent_t m_value;
    const char* m_name; // static storage
    uint64_t m_bitCount;
};
} // namespace QvApi
