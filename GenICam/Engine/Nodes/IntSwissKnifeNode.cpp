#include "Engine/Nodes/IntSwissKnifeNode.h"

#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"

namespace GenApi
{
bool CIntSwissKnifeNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    if (m_binding.ConfigureElement(this, child, builder))
        return true;
    if (builder.ElementOf(child) == EElement_t::Formula)
    {
        m_formulaText = CNodeBuilder::FullText(child);
        m_formulaElement = child;
        return true;
    }
    return CIntegerBase::ConfigureElement(child, builder);
}

void CIntSwissKnifeNode::Link(CNodeBuilder& builder)
{
    m_binding.Compile(this, builder, m_formula, m_formulaText, std::string(Name()), Engine::EFormulaKind_t::Integer, "",
                      m_formulaElement);
    m_formulaElement = pugi::xml_node();
}

ECachingMode CIntSwissKnifeNode::ComputeCachingModeLocked()
{
    // Never written, so only whether the inputs may be cached matters.
    return CNode::ComputeCachingModeLocked() == NoCache ? NoCache : WriteThrough;
}

void CIntSwissKnifeNode::SetIntValueLocked(int64_t value, bool verify)
{
    if (!verify)
        throw ACCESS_EXCEPTION_NODE(NameText(), "SetValue")("IntSwissKnife is read only.");
    CIntegerBase::SetIntValueLocked(value, verify);
}

int64_t CIntSwissKnifeNode::ReadLocked(bool /*verify*/, bool /*ignoreCache*/)
{
    return m_formula.EvaluateInteger(m_binding);
}

void CIntSwissKnifeNode::WriteLocked(int64_t /*value*/, bool /*verify*/)
{
    throw ACCESS_EXCEPTION_NODE(NameText(), "SetValue")("IntSwissKnife is read only.");
}
} // namespace GenApi
