#pragma once

#include <vector>

#include <GenApi/ICategory.h>

#include "Engine/Nodes/Node.h"

namespace GenApi
{
/**
 * \brief The Category element: a list of features (pFeature).
 *
 * Read-only; NI when it has no feature or all its features are NI. Its visibility is the least
 * restrictive of its features' (its own only when empty). Its access mode is not cached: it
 * follows its features.
 */
class CCategoryNode : public CNode, public virtual ICategory
{
public:
    CCategoryNode(CNodeMapImpl* pMap, std::string_view name) : CNode(pMap, ENodeKind_t::Category, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    EInterfaceType GetPrincipalInterfaceType() const override { return intfICategory; }
    EVisibility GetVisibility() const override;
    const std::vector<CNode*>& Features() const { return m_features; }

    // ---- IValue ----
    INode* GetNode() override { return this; }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override;
    bool IsValueCacheValid() const override { return true; }

    // ---- ICategory ----
    void GetFeatures(FeatureList_t& features) const override;

private:
    EVisibility VisibilityLocked(int depth) const;

    std::vector<CNode*> m_features;
};
} // namespace GenApi
