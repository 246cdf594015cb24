#pragma once

#include <GenApi/IEnumEntry.h>

#include "Engine/Nodes/Node.h"

namespace GenApi
{
/**
 * \brief One EnumEntry of an Enumeration, named EnumEntry_<Enumeration>_<Entry> in the map.
 *
 * Read-only; has its own pIsImplemented/pIsAvailable. ToString gives the integer value.
 */
class CEnumEntryNode : public CNode, public virtual IEnumEntry
{
public:
    CEnumEntryNode(CNodeMapImpl* pMap, std::string_view name, std::string_view entryName)
        : CNode(pMap, ENodeKind_t::EnumEntry, name), m_entryName(entryName), m_symbolic(entryName)
    {
    }

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumEntry; }
    std::string_view EntryName() const { return m_entryName; }
    std::string_view Symbolic() const { return m_symbolic; }
    int64_t Value() const { return m_value; }
    double NumericValue() const { return m_hasNumericValue ? m_numericValue : static_cast<double>(m_value); }
    bool SelfClearing() const { return m_selfClearing; }

    int64_t IntValueLocked(bool verify, bool ignoreCache) override;
    double FloatValueLocked(bool verify, bool ignoreCache) override;

    // ---- IValue ----
    INode* GetNode() override { return this; }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override;
    bool IsValueCacheValid() const override { return true; }

    // ---- IEnumEntry ----
    int64_t GetValue() override { return m_value; }
    GenICam::gcstring GetSymbolic() const override;
    double GetNumericValue() override { return NumericValue(); }
    bool IsSelfClearing() override { return m_selfClearing; }

private:
    std::string_view m_entryName;
    std::string_view m_symbolic;
    int64_t m_value = 0;
    double m_numericValue = 0.0;
    bool m_hasNumericValue = false;
    bool m_selfClearing = false;
};
} // namespace GenApi
