#pragma once

#include <string>

#include "Engine/Nodes/StringBase.h"

namespace GenApi
{
/**
 * \brief The String element: a stored text or a forwarder to another string node.
 */
class CStringNode : public CStringBase
{
public:
    CStringNode(CNodeMapImpl* pMap, std::string_view name) : CStringBase(pMap, ENodeKind_t::String, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    CNode* ForwardsTo() const override { return m_pValue; }
    int64_t MaxLengthLocked() override;

protected:
    std::string ReadLocked(bool verify, bool ignoreCache) override;
    void WriteLocked(const std::string& value, bool verify) override;

private:
    std::string m_value;
    CStringBase* m_pValue = nullptr;
};
} // namespace GenApi
