#pragma once

#include "Engine/Nodes/CachedRange.h"
#include "Engine/Nodes/FormulaBinding.h"
#include "Engine/Nodes/IntegerBase.h"

namespace GenApi
{
/**
 * \brief The IntConverter element: an integer whose value is FormulaFrom(pValue) and whose writes
 *        store FormulaTo(value) into pValue. Min/Max follow the Slope (Automatic when absent).
 */
class CIntConverterNode : public CIntegerBase
{
public:
    CIntConverterNode(CNodeMapImpl* pMap, std::string_view name) : CIntegerBase(pMap, ENodeKind_t::IntConverter, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    ECachingMode ComputeCachingModeLocked() override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    CNode* ForwardsTo() const override { return m_pValue; }
    void DropCacheLocked() override;
    bool HasParseError() const { return m_from.HasParseError() || m_to.HasParseError(); }
    void ThrowIfParseError() const { m_to.ThrowIfParseError(), m_from.ThrowIfParseError(); }

protected:
    int64_t ReadLocked(bool verify, bool ignoreCache) override;
    void WriteLocked(int64_t value, bool verify) override;
    int64_t RawMinLocked() override;
    int64_t RawMaxLocked() override;

private:
    void RangeLocked(int64_t& minimum, int64_t& maximum);
    void ComputeRangeLocked(int64_t& minimum, int64_t& maximum);

    CFormulaBinding m_binding;
    Engine::CFormula m_to;
    Engine::CFormula m_from;
    std::string m_toText, m_fromText;
    pugi::xml_node m_toElement, m_fromElement; // valid while loading only
    CNode* m_pValue = nullptr;
    ESlope m_slope = Automatic;
    CCachedRange<int64_t> m_range;
};
} // namespace GenApi
