#pragma once

#include <vector>

#include "Engine/Nodes/IntegerBase.h"

namespace GenApi
{
/**
 * \brief The Integer element: a stored value, a forwarder to pValue (with pValueCopy), or a value
 *        selected by pIndex; Min/Max/Inc constant or from nodes; ValidValueSet.
 */
class CIntegerNode : public CIntegerBase
{
public:
    CIntegerNode(CNodeMapImpl* pMap, std::string_view name) : CIntegerBase(pMap, ENodeKind_t::Integer, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    CNode* ForwardsTo() const override { return m_pValue; }

protected:
    int64_t ReadLocked(bool verify, bool ignoreCache) override;
    void WriteLocked(int64_t value, bool verify) override;
    int64_t RawMinLocked() override;
    int64_t RawMaxLocked() override;
    int64_t RawIncLocked() override;
    EIncMode RawIncModeLocked() override;
    std::vector<int64_t> RawValidValuesLocked() override;

private:
    struct IndexedValue_t
    {
        int64_t index;
        int64_t value;
        CNode* pValue; // null: the constant value
    };
    /// The entry selected by the current pIndex value, or null for the default.
    IndexedValue_t* SelectedEntryLocked(bool ignoreCache);
    /// The node the current index selects (null for a constant).
    CNode* IndexedTargetLocked();

    int64_t m_value = 0;
    CNode* m_pValue = nullptr;
    std::vector<CNode*> m_valueCopies;
    CNode* m_pIndex = nullptr;
    std::vector<IndexedValue_t> m_indexed;
    int64_t m_defaultValue = 0;
    CNode* m_pDefault = nullptr;
    int64_t m_min = INT64_MIN, m_max = INT64_MAX, m_inc = 1;
    CNode* m_pMin = nullptr;
    CNode* m_pMax = nullptr;
    CNode* m_pInc = nullptr;
    bool m_hasMin = false, m_hasMax = false, m_hasInc = false, m_hasValidValueSet = false;
    std::vector<int64_t> m_validValues;
};
} // namespace GenApi
