#include "Engine/Nodes/CommandNode.h"

#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/EvaluationGuard.h"

namespace GenApi
{
bool CCommandNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::Value)
        m_value = builder.Int(child, this);
    else if (element == EElement_t::pValue)
        AddValueChild(m_pValue = builder.Ref(child, this));
    else if (element == EElement_t::CommandValue)
        m_commandValue = builder.Int(child, this);
    else if (element == EElement_t::pCommandValue)
        AddReference(m_pCommandValue = builder.Ref(child, this));
    else
        return CNode::ConfigureElement(child, builder);
    return true;
}

EAccessMode CCommandNode::NaturalAccessLocked(bool structural)
{
    EAccessMode mode = RW;
    if (m_pValue)
        mode = structural ? m_pValue->StructuralAccessLocked() : m_pValue->AccessLocked();
    if (structural && m_pCommandValue && !IsAvailable(m_pCommandValue->AccessLocked()))
        mode = m_pCommandValue->AccessLocked();
    return mode;
}

int64_t CCommandNode::CommandValueLocked()
{
    return m_pCommandValue ? m_pCommandValue->IntValueLocked(false, false) : m_commandValue;
}

void CCommandNode::OnPollExpiredLocked()
{
    // A busy command only tells its listeners; they call IsDone() to find out.
    if (m_busy)
        m_pMap->QueueCallbacksLocked(this);
}

void CCommandNode::ExecuteLocked(bool verify)
{
    CheckWritableLocked(verify, "Execute");
    CEvaluationGuard guard(this);
    const int64_t commandValue = CommandValueLocked();
    if (m_pValue)
        m_pValue->SetIntValueLocked(commandValue, verify);
    else
        m_value = commandValue;
    // Busy only when completion can be read back.
    m_busy = m_pValue && IsReadable(AccessLocked());
    m_pMap->NotifyChangedLocked(this);
}

bool CCommandNode::IsDoneLocked()
{
    if (!m_busy)
        return true;
    if (!IsReadable(AccessLocked()))
    {
        m_busy = false;
        return true;
    }
    const int64_t value = m_pValue->IntValueLocked(false, true);
    if (value == CommandValueLocked())
        return false;
    m_busy = false;
    m_pMap->NotifyChangedLocked(m_pValue);
    m_pMap->NotifyChangedLocked(this);
    return true;
}

int64_t CCommandNode::IntValueLocked(bool /*verify*/, bool /*ignoreCache*/)
{
    CheckReadableLocked("GetValue");
    return m_busy ? 1 : 0;
}

GenICam::gcstring CCommandNode::ToString(bool /*verify*/, bool /*ignoreCache*/)
{
    AutoLock lock(NodeMapLock());
    if (!IsReadable(AccessLocked()))
        throw ACCESS_EXCEPTION_NODE(NameText(), "ToString")("Node is not readable");
    return m_busy ? "1" : "0";
}

void CCommandNode::FromString(const GenICam::gcstring& valueText, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    CheckWritableLocked(verify, "FromString");
    if (valueText != "1" && valueText != "true")
        throw INVALID_ARGUMENT_EXCEPTION_NODE(NameText(), "FromString")("'%s' does not convert to TRUE", valueText.c_str());
    ExecuteLocked(verify);
}

void CCommandNode::Execute(bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    ExecuteLocked(verify);
}

void CCommandNode::operator()()
{
    Execute(true);
}

bool CCommandNode::IsDone(bool /*verify*/)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    return IsDoneLocked();
}
} // namespace GenApi
