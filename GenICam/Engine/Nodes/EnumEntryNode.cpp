#include "Engine/Nodes/EnumEntryNode.h"

#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"

namespace GenApi
{
bool CEnumEntryNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::Value)
        m_value = builder.Int(child, this);
    else if (element == EElement_t::NumericValue)
        m_numericValue = builder.Float(child, this), m_hasNumericValue = true;
    else if (element == EElement_t::Symbolic)
        m_symbolic = CNodeBuilder::TrimmedView(child.text().get());
    else if (element == EElement_t::IsSelfClearing)
        m_selfClearing = builder.YesNo(child, this);
    else
        return CNode::ConfigureElement(child, builder);
    return true;
}

int64_t CEnumEntryNode::IntValueLocked(bool /*verify*/, bool /*ignoreCache*/)
{
    return m_value;
}

double CEnumEntryNode::FloatValueLocked(bool /*verify*/, bool /*ignoreCache*/)
{
    return NumericValue();
}

GenICam::gcstring CEnumEntryNode::ToString(bool /*verify*/, bool /*ignoreCache*/)
{
    AutoLock lock(NodeMapLock());
    CheckReadableLocked("ToString");
    return GenICam::gcstring(std::to_string(m_value));
}

void CEnumEntryNode::FromString(const GenICam::gcstring& /*valueText*/, bool /*verify*/)
{
    throw ACCESS_EXCEPTION_NODE(NameText(), "FromString")("Node is not writable.");
}

GenICam::gcstring CEnumEntryNode::GetSymbolic() const
{
    return GenICam::gcstring(m_symbolic.data(), m_symbolic.size());
}
} // namespace GenApi
