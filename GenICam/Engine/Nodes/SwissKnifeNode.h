#pragma once

#include "Engine/Nodes/FloatBase.h"
#include "Engine/Nodes/FormulaBinding.h"

namespace GenApi
{
/**
 * \brief The SwissKnife element: a read-only float computed by a formula.
 */
class CSwissKnifeNode : public CFloatBase
{
public:
    CSwissKnifeNode(CNodeMapImpl* pMap, std::string_view name) : CFloatBase(pMap, ENodeKind_t::SwissKnife, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    ECachingMode ComputeCachingModeLocked() override;
    EAccessMode NaturalAccessLocked(bool /*structural*/) override { return RO; }
    void SetFloatValueLocked(double value, bool verify) override;
    bool HasParseError() const { return m_formula.HasParseError(); }
    void ThrowIfParseError() const { m_formula.ThrowIfParseError(); }

protected:
    double ReadLocked(bool verify, bool ignoreCache) override;
    void WriteLocked(double value, bool verify) override;
    CNode* PropertySourceLocked() const override { return nullptr; }

private:
    CFormulaBinding m_binding;
    Engine::CFormula m_formula;
    std::string m_formulaText;
    pugi::xml_node m_formulaElement; // valid while loading only
};
} // namespace GenApi
