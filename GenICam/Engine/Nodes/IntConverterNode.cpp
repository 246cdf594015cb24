#include "Engine/Nodes/IntConverterNode.h"

#include <cstring>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/Nodes/FloatBase.h"

namespace GenApi
{
bool CIntConverterNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    if (m_binding.ConfigureElement(this, child, builder))
        return true;
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::FormulaTo)
        m_toText = CNodeBuilder::FullText(child), m_toElement = child;
    else if (element == EElement_t::FormulaFrom)
        m_fromText = CNodeBuilder::FullText(child), m_fromElement = child;
    else if (element == EElement_t::pValue)
        AddValueChild(m_pValue = builder.Ref(child, this));
    else if (element == EElement_t::Slope)
        m_slope = builder.Enum<ESlopeClass, ESlope>(child, this);
    else
        return CIntegerBase::ConfigureElement(child, builder);
    return true;
}

void CIntConverterNode::Link(CNodeBuilder& builder)
{
    if (!m_pValue)
        builder.Fail(this, pugi::xml_node(), "converter has no pValue");
    const std::string name(Name());
    m_binding.Compile(this, builder, m_to, m_toText, name + "_ConvertTo", Engine::EFormulaKind_t::Integer, "FROM",
                      m_toElement);
    m_binding.Compile(this, builder, m_from, m_fromText, name + "_ConvertFrom", Engine::EFormulaKind_t::Integer, "TO",
                      m_fromElement);
    m_toElement = m_fromElement = pugi::xml_node();
}

ECachingMode CIntConverterNode::ComputeCachingModeLocked()
{
    // A formula need not give back exactly what was written: re-read after a write.
    return Combine(CNode::ComputeCachingModeLocked(), WriteAround);
}

EAccessMode CIntConverterNode::NaturalAccessLocked(bool structural)
{
    return structural ? m_pValue->StructuralAccessLocked() : m_pValue->AccessLocked();
}

int64_t CIntConverterNode::ReadLocked(bool verify, bool ignoreCache)
{
    const bool isFloat = m_pValue->IsFloatNode();
    const Engine::FormulaValue_t to = isFloat
                                          ? Engine::FormulaValue_t::FromFloat(m_pValue->FloatValueLocked(verify, ignoreCache))
                                          : Engine::FormulaValue_t::FromInt(m_pValue->IntValueLocked(verify, ignoreCache));
    return m_from.EvaluateInteger(m_binding, &to);
}

void CIntConverterNode::WriteLocked(int64_t value, bool verify)
{
    const Engine::FormulaValue_t from = Engine::FormulaValue_t::FromInt(value);
    m_pValue->SetIntValueLocked(m_to.EvaluateInteger(m_binding, &from), verify);
}

void CIntConverterNode::DropCacheLocked()
{
    m_range.Drop();
    CNode::DropCacheLocked();
}

void CIntConverterNode::RangeLocked(int64_t& minimum, int64_t& maximum)
{
    // Whatever changes pValue's range or a variable reaches this node and drops the range,
    // unless a NoCache node among them can change unannounced.
    m_range.Get(
        minimum, maximum, [this](int64_t& low, int64_t& high) { ComputeRangeLocked(low, high); },
        [this] { return ValuesCacheableLocked(); });
}

void CIntConverterNode::ComputeRangeLocked(int64_t& minimum, int64_t& maximum)
{
    if (m_slope == Varying)
    {
        minimum = INT64_MIN;
        maximum = INT64_MAX;
        return;
    }
    const bool isFloat = m_pValue->IsFloatNode();
    const Engine::FormulaValue_t low = isFloat ? Engine::FormulaValue_t::FromFloat(m_pValue->FloatMinLocked())
                                               : Engine::FormulaValue_t::FromInt(m_pValue->IntMinLocked());
    const Engine::FormulaValue_t high = isFloat ? Engine::FormulaValue_t::FromFloat(m_pValue->FloatMaxLocked())
                                                : Engine::FormulaValue_t::FromInt(m_pValue->IntMaxLocked());
    const int64_t a = m_from.EvaluateInteger(m_binding, &low);
    const int64_t b = m_from.EvaluateInteger(m_binding, &high);
    if (m_slope == Increasing)
        minimum = a, maximum = b;
    else if (m_slope == Decreasing)
        minimum = b, maximum = a;
    else
        minimum = a < b ? a : b, maximum = a < b ? b : a;
}

int64_t CIntConverterNode::RawMinLocked()
{
    int64_t minimum, maximum;
    RangeLocked(minimum, maximum);
    return minimum;
}

int64_t CIntConverterNode::RawMaxLocked()
{
    int64_t minimum, maximum;
    RangeLocked(minimum, maximum);
    return maximum;
}

} // namespace GenApi
