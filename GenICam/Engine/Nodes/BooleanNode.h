#pragma once

#include <GenApi/IBoolean.h>

#include "Engine/Nodes/Node.h"

namespace GenApi
{
/**
 * \brief The Boolean element: true/false mapped to OnValue/OffValue of a stored value or pValue.
 */
class CBooleanNode : public CNode, public virtual IBoolean
{
public:
    CBooleanNode(CNodeMapImpl* pMap, std::string_view name) : CNode(pMap, ENodeKind_t::Boolean, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    CNode* ForwardsTo() const override { return m_pValue; }
    EInterfaceType GetPrincipalInterfaceType() const override { return intfIBoolean; }

    /// 1 for true, 0 for false.
    int64_t IntValueLocked(bool verify, bool ignoreCache) override;
    void SetIntValueLocked(int64_t value, bool verify) override;
    bool BoolValueLocked(bool verify, bool ignoreCache);
    void SetBoolValueLocked(bool value, bool verify);

    // ---- IValue ----
    INode* GetNode() override { return this; }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override;
    bool IsValueCacheValid() const override { return m_valueValid; }

    // ---- IBoolean ----
    void SetValue(bool value, bool verify = true) override;
    IBoolean& operator=(bool value) override;
    bool GetValue(bool verify = false, bool ignoreCache = false) const override;
    bool operator()() const override;

private:
    int64_t m_value = 0; // stored raw value (OnValue or OffValue)
    int64_t m_onValue = 1;
    int64_t m_offValue = 0;
    bool m_cachedValue = false;
    bool m_hasStoredValue = false;
    CNode* m_pValue = nullptr;
};
} // namespace GenApi
