#include "Engine/Nodes/StringNode.h"

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"

namespace GenApi
{
bool CStringNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::Value)
        m_value = child.text().get();
    else if (element == EElement_t::pValue)
    {
        CNode* pTarget = builder.Ref(child, this);
        m_pValue = dynamic_cast<CStringBase*>(pTarget);
        if (!m_pValue)
            builder.Fail(this, child, "pValue of a String must name a string node");
        AddValueChild(pTarget);
    }
    else
        return CNode::ConfigureElement(child, builder);
    return true;
}

EAccessMode CStringNode::NaturalAccessLocked(bool structural)
{
    if (m_pValue)
        return structural ? m_pValue->StructuralAccessLocked() : m_pValue->AccessLocked();
    return RW;
}

int64_t CStringNode::MaxLengthLocked()
{
    if (m_pValue)
        return m_pValue->MaxLengthLocked();
    // A read-only text cannot grow: its length is all there is.
    if (AccessLocked() == RO)
        return static_cast<int64_t>(StringValueLocked(false, false).size());
    return 1073741820;
}

std::string CStringNode::ReadLocked(bool verify, bool ignoreCache)
{
    if (m_pValue)
        return m_pValue->StringValueLocked(verify, ignoreCache);
    return m_value;
}

void CStringNode::WriteLocked(const std::string& value, bool verify)
{
    if (m_pValue)
    {
        m_pValue->SetStringValueLocked(value, verify);
        return;
    }
    m_value = value;
    m_pMap->NotifyChangedLocked(this);
}
} // namespace GenApi
