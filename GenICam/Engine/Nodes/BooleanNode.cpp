#include "Engine/Nodes/BooleanNode.h"

#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/EvaluationGuard.h"

namespace GenApi
{
bool CBooleanNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::Value)
        m_hasStoredValue = true, m_value = builder.Bool(child, this) ? 1 : 0;
    else if (element == EElement_t::pValue)
        AddValueChild(m_pValue = builder.Ref(child, this));
    else if (element == EElement_t::OnValue)
        m_onValue = builder.Int(child, this);
    else if (element == EElement_t::OffValue)
        m_offValue = builder.Int(child, this);
    else
        return CNode::ConfigureElement(child, builder);
    return true;
}

void CBooleanNode::Link(CNodeBuilder& builder)
{
    if (m_onValue == m_offValue)
    {
        const std::string text = "Boolean node '" + std::string(Name()) + "' has identical on and off value";
        builder.Fail(this, pugi::xml_node(), text.c_str());
    }
    // The stored value is true/false; keep it as the raw on/off value.
    if (m_hasStoredValue)
        m_value = m_value ? m_onValue : m_offValue;
}

EAccessMode CBooleanNode::NaturalAccessLocked(bool structural)
{
    if (m_pValue)
        return structural ? m_pValue->StructuralAccessLocked() : m_pValue->AccessLocked();
    return RW;
}

bool CBooleanNode::BoolValueLocked(bool verify, bool ignoreCache)
{
    if (!verify && !ignoreCache && m_valueValid && ReadableLocked())
        return m_cachedValue;
    CheckReadableLocked("GetValue");
    CEvaluationGuard guard(this);
    const int64_t raw = m_pValue ? m_pValue->IntValueLocked(verify, ignoreCache || verify) : m_value;
    bool value;
    if (raw == m_onValue)
        value = true;
    else if (raw == m_offValue)
        value = false;
    else
        throw LOGICAL_ERROR_EXCEPTION_NODE(NameText(), "GetValue")("Value '%lld' is neither true (%lld) nor false (%lld)",
                                                                  static_cast<long long>(raw),
                                                                  static_cast<long long>(m_onValue),
                                                                  static_cast<long long>(m_offValue));
    if (verify)
        CheckErrorsLocked();
    if (CachingMode() != NoCache)
    {
        m_cachedValue = value;
        m_valueValid = true;
    }
    return value;
}

void CBooleanNode::SetBoolValueLocked(bool value, bool verify)
{
    CheckWritableLocked(verify, "SetValue");
    CEvaluationGuard guard(this);
    m_valueValid = false;
    const int64_t raw = value ? m_onValue : m_offValue;
    if (m_pValue)
        m_pValue->SetIntValueLocked(raw, verify);
    else
    {
        m_value = raw;
        m_pMap->NotifyChangedLocked(this);
    }
    if (verify)
        CheckErrorsLocked();
    if (CachingMode() == WriteThrough)
    {
        m_cachedValue = value;
        m_valueValid = true;
    }
}

int64_t CBooleanNode::IntValueLocked(bool verify, bool ignoreCache)
{
    return BoolValueLocked(verify, ignoreCache) ? 1 : 0;
}

void CBooleanNode::SetIntValueLocked(int64_t value, bool verify)
{
    SetBoolValueLocked(value != 0, verify);
}

GenICam::gcstring CBooleanNode::ToString(bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    return BoolValueLocked(verify, ignoreCache) ? "1" : "0";
}

void CBooleanNode::FromString(const GenICam::gcstring& valueText, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    const char* p = valueText.c_str();
    while (*p == ' ' || *p == '\t')
        ++p;
    bool value;
    if (std::strcmp(p, "1") == 0 || std::strcmp(p, "true") == 0)
        value = true;
    else if (std::strcmp(p, "0") == 0 || std::strcmp(p, "false") == 0)
        value = false;
    else
        throw INVALID_ARGUMENT_EXCEPTION_NODE(NameText(), "FromString")("Node '%s' : cannot convert string '%s' to boolean",
                                                                       NameText(), valueText.c_str());
    SetBoolValueLocked(value, verify);
}

void CBooleanNode::SetValue(bool value, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    SetBoolValueLocked(value, verify);
}

IBoolean& CBooleanNode::operator=(bool value)
{
    SetValue(value, true);
    return *this;
}

bool CBooleanNode::GetValue(bool verify, bool ignoreCache) const
{
    AutoLock lock(NodeMapLock());
    return const_cast<CBooleanNode*>(this)->BoolValueLocked(verify, ignoreCache);
}

bool CBooleanNode::operator()() const
{
    return GetValue();
}
} // namespace GenApi
