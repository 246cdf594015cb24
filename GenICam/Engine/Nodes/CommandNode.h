#pragma once

#include <GenApi/ICommand.h>

#include "Engine/Nodes/Node.h"

namespace GenApi
{
/**
 * \brief The Command element: Execute writes CommandValue to pValue; IsDone polls pValue until it
 *        differs from CommandValue.
 */
class CCommandNode : public CNode, public virtual ICommand
{
public:
    CCommandNode(CNodeMapImpl* pMap, std::string_view name) : CNode(pMap, ENodeKind_t::Command, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    CNode* ForwardsTo() const override { return m_pValue; }
    void OnPollExpiredLocked() override;
    EInterfaceType GetPrincipalInterfaceType() const override { return intfICommand; }
    int64_t IntValueLocked(bool verify, bool ignoreCache) override;

    // ---- IValue ----
    INode* GetNode() override { return this; }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override;
    bool IsValueCacheValid() const override { return !m_busy; }

    // ---- ICommand ----
    void Execute(bool verify = true) override;
    void operator()() override;
    bool IsDone(bool verify = true) override;

private:
    void ExecuteLocked(bool verify);
    bool IsDoneLocked();
    int64_t CommandValueLocked();

    CNode* m_pValue = nullptr;
    CNode* m_pCommandValue = nullptr;
    int64_t m_value = 0;
    int64_t m_commandValue = 1;
    bool m_busy = false;
};
} // namespace GenApi
