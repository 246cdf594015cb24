#pragma once

#include "Engine/Nodes/FormulaBinding.h"
#include "Engine/Nodes/IntegerBase.h"

namespace GenApi
{
/**
 * \brief The IntSwissKnife element: a read-only integer computed by a formula (also embedded in
 *        register address lists).
 */
class CIntSwissKnifeNode : public CIntegerBase
{
public:
    CIntSwissKnifeNode(CNodeMapImpl* pMap, std::string_view name) : CIntegerBase(pMap, ENodeKind_t::IntSwissKnife, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    ECachingMode ComputeCachingModeLocked() override;
    EAccessMode NaturalAccessLocked(bool /*structural*/) override { return RO; }
    void SetIntValueLocked(int64_t value, bool verify) override;
    /// Whether the formula has an unknown name (for INodeMap::ParseSwissKnifes).
    bool HasParseError() const { return m_formula.HasParseError(); }
    void ThrowIfParseError() const { m_formula.ThrowIfParseError(); }

protected:
    int64_t ReadLocked(bool verify, bool ignoreCache) override;
    void WriteLocked(int64_t value, bool verify) override;

private:
    CFormulaBinding m_binding;
    Engine::CFormula m_formula;
    std::string m_formulaText;
    pugi::xml_node m_formulaElement; // valid while loading only
};
} // namespace GenApi
