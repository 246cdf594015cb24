#include "Engine/Nodes/SwissKnifeNode.h"

#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"

namespace GenApi
{
bool CSwissKnifeNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    if (m_binding.ConfigureElement(this, child, builder))
        return true;
    if (builder.ElementOf(child) == EElement_t::Formula)
    {
        m_formulaText = CNodeBuilder::FullText(child);
        m_formulaElement = child;
        return true;
    }
    return CFloatBase::ConfigureElement(child, builder);
}

void CSwissKnifeNode::Link(CNodeBuilder& builder)
{
    m_binding.Compile(this, builder, m_formula, m_formulaText, std::string(Name()), Engine::EFormulaKind_t::Float, "",
                      m_formulaElement);
    m_formulaElement = pugi::xml_node();
}

ECachingMode CSwissKnifeNode::ComputeCachingModeLocked()
{
    return Combine(CNode::ComputeCachingModeLocked(), WriteAround);
}

void CSwissKnifeNode::SetFloatValueLocked(double value, bool verify)
{
    if (!verify)
        throw ACCESS_EXCEPTION_NODE(NameText(), "SetValue")("SwissKnife is read only.");
    CFloatBase::SetFloatValueLocked(value, verify);
}

double CSwissKnifeNode::ReadLocked(bool /*verify*/, bool /*ignoreCache*/)
{
    return m_formula.EvaluateFloat(m_binding);
}

void CSwissKnifeNode::WriteLocked(double /*value*/, bool /*verify*/)
{
    throw ACCESS_EXCEPTION_NODE(NameText(), "SetValue")("SwissKnife is read only.");
}
} // namespace GenApi
