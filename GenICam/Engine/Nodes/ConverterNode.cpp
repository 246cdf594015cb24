#include "Engine/Nodes/ConverterNode.h"

#include <cfloat>
#include <cstring>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/Nodes/FloatBase.h"

namespace GenApi
{

bool CConverterNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
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
    else if (element == EElement_t::IsLinear)
        m_isLinear = builder.YesNo(child, this);
    else
        return CFloatBase::ConfigureElement(child, builder);
    return true;
}

void CConverterNode::Link(CNodeBuilder& builder)
{
    if (!m_pValue)
        builder.Fail(this, pugi::xml_node(), "converter has no pValue");
    const std::string name(Name());
    m_binding.Compile(this, builder, m_to, m_toText, name + "_ConvertTo", Engine::EFormulaKind_t::Float, "FROM", m_toElement);
    m_binding.Compile(this, builder, m_from, m_fromText, name + "_ConvertFrom", Engine::EFormulaKind_t::Float, "TO",
                      m_fromElement);
    m_toElement = m_fromElement = pugi::xml_node();
}

ECachingMode CConverterNode::ComputeCachingModeLocked()
{
    // A formula need not give back exactly what was written: re-read after a write.
    return Combine(CNode::ComputeCachingModeLocked(), WriteAround);
}

EAccessMode CConverterNode::NaturalAccessLocked(bool structural)
{
    return structural ? m_pValue->StructuralAccessLocked() : m_pValue->AccessLocked();
}

double CConverterNode::ReadLocked(bool verify, bool ignoreCache)
{
    const bool isFloat = m_pValue->IsFloatNode();
    const Engine::FormulaValue_t to = isFloat
                                          ? Engine::FormulaValue_t::FromFloat(m_pValue->FloatValueLocked(verify, ignoreCache))
                                          : Engine::FormulaValue_t::FromInt(m_pValue->IntValueLocked(verify, ignoreCache));
    return m_from.EvaluateFloat(m_binding, &to);
}

void CConverterNode::WriteLocked(double value, bool verify)
{
    const Engine::FormulaValue_t from = Engine::FormulaValue_t::FromFloat(value);
    m_pValue->SetFloatValueLocked(m_to.EvaluateFloat(m_binding, &from), verify);
}

void CConverterNode::DropCacheLocked()
{
    m_range.Drop();
    CNode::DropCacheLocked();
}

void CConverterNode::RangeLocked(double& minimum, double& maximum)
{
    // Whatever changes pValue's range or a variable reaches this node and drops the range,
    // unless a NoCache node among them can change unannounced.
    m_range.Get(
        minimum, maximum, [this](double& low, double& high) { ComputeRangeLocked(low, high); },
        [this] { return ValuesCacheableLocked(); });
}

void CConverterNode::ComputeRangeLocked(double& minimum, double& maximum)
{
    if (m_slope == Varying)
    {
        minimum = -DBL_MAX;
        maximum = DBL_MAX;
        return;
    }
    const bool isFloat = m_pValue->IsFloatNode();
    const Engine::FormulaValue_t low = isFloat ? Engine::FormulaValue_t::FromFloat(m_pValue->FloatMinLocked())
                                               : Engine::FormulaValue_t::FromInt(m_pValue->IntMinLocked());
    const Engine::FormulaValue_t high = isFloat ? Engine::FormulaValue_t::FromFloat(m_pValue->FloatMaxLocked())
                                                : Engine::FormulaValue_t::FromInt(m_pValue->IntMaxLocked());
    const double a = m_from.EvaluateFloat(m_binding, &low);
    const double b = m_from.EvaluateFloat(m_binding, &high);
    if (m_slope == Increasing)
        minimum = a, maximum = b;
    else if (m_slope == Decreasing)
        minimum = b, maximum = a;
    else
        minimum = a < b ? a : b, maximum = a < b ? b : a;
}

bool CConverterNode::RawHasIncLocked()
{
    // Only a linear formula maps pValue's increment to a constant step of its own.
    return m_isLinear && m_pValue->HasFloatIncLocked();
}

double CConverterNode::RawIncLocked()
{
    if (!RawHasIncLocked())
        return 0.0;
    const bool isFloat = m_pValue->IsFloatNode();
    Engine::FormulaValue_t low, next;
    if (isFloat)
    {
        const double minimum = m_pValue->FloatMinLocked();
        low = Engine::FormulaValue_t::FromFloat(minimum);
        next = Engine::FormulaValue_t::FromFloat(minimum + m_pValue->FloatIncLocked());
    }
    else
    {
        const int64_t minimum = m_pValue->IntMinLocked();
        low = Engine::FormulaValue_t::FromInt(minimum);
        next = Engine::FormulaValue_t::FromInt(minimum + m_pValue->IntIncLocked());
    }
    const double step = m_from.EvaluateFloat(m_binding, &next) - m_from.EvaluateFloat(m_binding, &low);
    return step < 0 ? -step : step;
}

double CConverterNode::RawMinLocked()
{
    double minimum, maximum;
    RangeLocked(minimum, maximum);
    return minimum;
}

double CConverterNode::RawMaxLocked()
{
    double minimum, maximum;
    RangeLocked(minimum, maximum);
    return maximum;
}
} // namespace GenApi
