#pragma once

#include "Engine/Nodes/FloatBase.h"
#include "Engine/Nodes/CachedRange.h"
#include "Engine/Nodes/FormulaBinding.h"

namespace GenApi
{
/**
 * \brief The Converter element: a float whose value is FormulaFrom(pValue) and whose writes store
 *        FormulaTo(value) into pValue. Min/Max follow the Slope.
 */
class CConverterNode : public CFloatBase
{
public:
    CConverterNode(CNodeMapImpl* pMap, std::string_view name) : CFloatBase(pMap, ENodeKind_t::Converter, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    ECachingMode ComputeCachingModeLocked() override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    CNode* ForwardsTo() const override { return m_pValue; }
    void DropCacheLocked() override;
    bool HasParseError() const { return m_from.HasParseError() || m_to.HasParseError(); }
    void ThrowIfParseError() const { m_to.ThrowIfParseError(), m_from.ThrowIfParseError(); }

protected:
    double ReadLocked(bool verify, bool ignoreCache) override;
    void WriteLocked(double value, bool verify) override;
    double RawMinLocked() override;
    double RawMaxLocked() override;
    bool RawHasIncLocked() override;
    double RawIncLocked() override;

private:
    /// FormulaFrom of pValue's minimum and maximum, ordered by the Slope.
    void RangeLocked(double& minimum, double& maximum);
    void ComputeRangeLocked(double& minimum, double& maximum);

    CFormulaBinding m_binding;
    Engine::CFormula m_to;
    Engine::CFormula m_from;
    std::string m_toText, m_fromText;
    pugi::xml_node m_toElement, m_fromElement; // valid while loading only
    CNode* m_pValue = nullptr;
    ESlope m_slope = Automatic;
    bool m_isLinear = false;
    CCachedRange<double> m_range;
};
} // namespace GenApi
