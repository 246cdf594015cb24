#include "QvApi_TL/QvPixelComponentInfo.h"

#include <new>

#include "QvApi_TL/QvSpecificPixelComponentInfo.h"
#include "QvSDKCommon/QvExceptionMacros.h"

namespace QvApi
{
namespace
{
struct PixelComponentRow_t
{
    EQvPixelComponent_t value;
    const char* name;
    uint64_t bitCount;
};

constexpr PixelComponentRow_t kPixelComponentRows[] = {
    {QvPixelComponent_Unknown, "Unknown", 0},
    {QvPixelComponent_Mono1, "Mono1", 1},
    {QvPixelComponent_Mono2, "Mono2", 2},
    {QvPixelComponent_Mono4, "Mono4", 4},
    {QvPixelComponent_Mono8, "Mono8", 8},
    {QvPixelComponent_Mono10, "Mono10", 10},
    {QvPixelComponent_Mono12, "Mono12", 12},
    {QvPixelComponent_Mono14, "Mono14", 14},
    {QvPixelComponent_Mono16, "Mono16", 16},
    {QvPixelComponent_R4, "R4", 4},
    {QvPixelComponent_R8, "R8", 8},
    {QvPixelComponent_R10, "R10", 10},
    {QvPixelComponent_R12, "R12", 12},
    {QvPixelComponent_R14, "R14", 14},
    {QvPixelComponent_R16, "R16", 16},
    {QvPixelComponent_G4, "G4", 4},
    {QvPixelComponent_G8, "G8", 8},
    {QvPixelComponent_G10, "G10", 10},
    {QvPixelComponent_G12, "G12", 12},
    {QvPixelComponent_G14, "G14", 14},
    {QvPixelComponent_G16, "G16", 16},
    {QvPixelComponent_B4, "B4", 4},
    {QvPixelComponent_B8, "B8", 8},
    {QvPixelComponent_B10, "B10", 10},
    {QvPixelComponent_B12, "B12", 12},
    {QvPixelComponent_B14, "B14", 14},
    {QvPixelComponent_B16, "B16", 16},
    {QvPixelComponent_Gr4, "Gr4", 4},
    {QvPixelComponent_Gr8, "Gr8", 8},
    {QvPixelComponent_Gr10, "Gr10", 10},
    {QvPixelComponent_Gr12, "Gr12", 12},
    {QvPixelComponent_Gr14, "Gr14", 14},
    {QvPixelComponent_Gr16, "Gr16", 16},
    {QvPixelComponent_Gb4, "Gb4", 4},
    {QvPixelComponent_Gb8, "Gb8", 8},
    {QvPixelComponent_Gb10, "Gb10", 10},
    {QvPixelComponent_Gb12, "Gb12", 12},
    {QvPixelComponent_Gb14, "Gb14", 14},
    {QvPixelComponent_Gb16, "Gb16", 16},
    {QvPixelComponent_Y8, "Y8", 8},
    {QvPixelComponent_Cb8, "Cb8", 8},
    {QvPixelComponent_Cr8, "Cr8", 8},
    {QvPixelComponent_U8, "U8", 8},
    {QvPixelComponent_V8, "V8", 8},
};
} // namespace

CQvPixelComponentInfo::CQvPixelComponentInfo()
{
    try
    {
        for (const PixelComponentRow_t& row : kPixelComponentRows)
        {
            auto* pRecord = new CQvSpecificPixelComponentInfo(row.value, row.name, row.bitCount);
            try
            {
                m_records.emplace(row.value, pRecord);
            }
            catch (...)
            {
                delete pRecord;
                throw;
            }
        }
    }
    catch (...)
    {
        DeleteRecords();
        throw;
    }
}

CQvPixelComponentInfo::~CQvPixelComponentInfo()
{
    DeleteRecords();
}

void CQvPixelComponentInfo::DeleteRecords() noexcept
{
    for (auto& entry : m_records)
        delete entry.second;
    m_records.clear();
}

const IQvPixelComponentInfo* CQvPixelComponentInfo::GetIQvPixelComponentInfoInside(EQvPixelComponent_t value) const
{
    const auto it = m_records.find(value);
    if (QV_UNLIKELY(it == m_records.end()))
        QV_THROW(InvalidArgumentException, "EQvPixelComponet_t %u is not supported.", static_cast<unsigned>(value));
    return it->second;
}
} // namespace QvApi
