#include "Engine/Nodes/CategoryNode.h"

#include <cstring>

#include <Base/GCException.h>
#include <GenApi/IValue.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/EvaluationGuard.h"

namespace GenApi
{
bool CCategoryNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    if (builder.ElementOf(child) == EElement_t::pFeature)
    {
        // A feature that does not exist cannot be shown; the rest of the category still can.
        CNode* pFeature = builder.OptionalRef(child, this, "left out of the category");
        if (!pFeature)
            return true;
        m_features.push_back(pFeature);
        m_accessInputs.push_back(pFeature);
        pFeature->AddDependent(this);
        return true;
    }
    return CNode::ConfigureElement(child, builder);
}

void CCategoryNode::Link(CNodeBuilder& /*builder*/)
{
}

EAccessMode CCategoryNode::NaturalAccessLocked(bool /*structural*/)
{
    CEvaluationGuard guard(this);
    for (CNode* pFeature : m_features)
        if (pFeature->AccessLocked() != NI)
            return RO;
    return NI;
}

EVisibility CCategoryNode::VisibilityLocked(int depth) const
{
    // An empty category has nothing to show unless its own Visibility says otherwise.
    if (m_features.empty() || depth > 64)
        return m_hasVisibility ? OwnVisibility() : Invisible;
    EVisibility visibility = Invisible;
    for (CNode* pFeature : m_features)
    {
        const CCategoryNode* pCategory =
            pFeature->Kind() == ENodeKind_t::Category ? static_cast<const CCategoryNode*>(pFeature) : nullptr;
        const EVisibility featureVisibility = pCategory ? pCategory->VisibilityLocked(depth + 1) : pFeature->GetVisibility();
        if (featureVisibility < visibility)
            visibility = featureVisibility;
    }
    return visibility;
}

EVisibility CCategoryNode::GetVisibility() const
{
    AutoLock lock(NodeMapLock());
    return VisibilityLocked(0);
}

GenICam::gcstring CCategoryNode::ToString(bool /*verify*/, bool /*ignoreCache*/)
{
    return GetName();
}

void CCategoryNode::FromString(const GenICam::gcstring& /*valueText*/, bool /*verify*/)
{
    throw ACCESS_EXCEPTION_NODE(NameText(), "FromString")("Node is not writable.");
}

void CCategoryNode::GetFeatures(FeatureList_t& features) const
{
    features.clear();
    for (CNode* pFeature : m_features)
        if (IValue* pValue = dynamic_cast<IValue*>(pFeature))
            features.push_back(pValue);
}
} // namespace GenApi
