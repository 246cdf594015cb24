#pragma once

#include <vector>

#include "Engine/Nodes/FloatBase.h"

namespace GenApi
{
/**
 * \brief The Float element: a stored value, a forwarder to pValue, or a value selected by pIndex;
 *        Min/Max/Inc constant or from nodes.
 */
class CFloatNode : public CFloatBase
{
public:
    CFloatNode(CNodeMapImpl* pMap, std::string_view name) : CFloatBase(pMap, ENodeKind_t::Float, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    CNode* ForwardsTo() const override { return m_pValue; }
    ECachingMode ComputeCachingModeLocked() override;

protected:
    double ReadLocked(bool verify, bool ignoreCache) override;
    void WriteLocked(double value, bool verify) override;
    double RawMinLocked() override;
    double RawMaxLocked() override;
    bool RawHasIncLocked() override;
    double RawIncLocked() override;
    EIncMode RawIncModeLocked() override;
    std::vector<double> RawValidValuesLocked() override { return m_validValues; }

private:
    struct IndexedValue_t
    {
        int64_t index;
        double value;
        CNode* pValue;
    };
    IndexedValue_t* SelectedEntryLocked(bool ignoreCache);
    /// The node the current index selects (null for a constant).
    CNode* IndexedTargetLocked();

    double m_value = 0.0;
    CNode* m_pValue = nullptr;
    std::vector<CNode*> m_valueCopies;
    CNode* m_pIndex = nullptr;
    std::vector<IndexedValue_t> m_indexed;
    double m_defaultValue = 0.0;
    CNode* m_pDefault = nullptr;
    double m_min = -DBL_MAX, m_max = DBL_MAX, m_inc = 0.0;
    CNode* m_pMin = nullptr;
    CNode* m_pMax = nullptr;
    CNode* m_pInc = nullptr;
    bool m_hasMin = false, m_hasMax = false, m_hasInc = false, m_hasValidValueSet = false;
    std::vector<double> m_validValues;
};
} // namespace GenApi
