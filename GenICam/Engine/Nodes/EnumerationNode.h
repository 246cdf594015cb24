#pragma once

#include <vector>

#include <GenApi/IEnumeration.h>

#include "Engine/Nodes/Node.h"

namespace GenApi
{
class CEnumEntryNode;

/**
 * \brief The Enumeration element: an integer value (stored or through pValue) named by entries.
 *
 * Text is the exact symbolic of an entry. Writing an NA entry needs Verify=false; NI entries are
 * never written.
 */
class CEnumerationNode : public CNode, public virtual IEnumeration
{
public:
    CEnumerationNode(CNodeMapImpl* pMap, std::string_view name) : CNode(pMap, ENodeKind_t::Enumeration, name) {}

    bool ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder) override;
    void Link(CNodeBuilder& builder) override;
    EAccessMode NaturalAccessLocked(bool structural) override;
    CNode* ForwardsTo() const override { return m_pValue; }
    EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumeration; }

    /// Entry by its Name (or symbolic), for formula variables "E.Entry.<Name>".
    CEnumEntryNode* FindEntryNode(const std::string& entryName) const;
    /// NumericValue of the current entry (float formulas read enumerations so).
    double NumericValueLocked();
    const std::vector<CEnumEntryNode*>& Entries() const { return m_entries; }

    int64_t IntValueLocked(bool verify, bool ignoreCache) override;
    void SetIntValueLocked(int64_t value, bool verify) override;
    double FloatValueLocked(bool verify, bool ignoreCache) override;

    // ---- IValue ----
    INode* GetNode() override { return this; }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override;
    bool IsValueCacheValid() const override { return m_valueValid; }

    // ---- IEnumeration ----
    void GetSymbolics(StringList_t& symbolics) override;
    void GetEntries(NodeList_t& entries) override;
    IEnumeration& operator=(const GenICam::gcstring& valueText) override;
    void SetIntValue(int64_t value, bool verify = true) override;
    GenICam::gcstring operator*() override;
    int64_t GetIntValue(bool verify = false, bool ignoreCache = false) override;
    IEnumEntry* GetEntryByName(const GenICam::gcstring& symbolic) override;
    IEnumEntry* GetEntry(const int64_t intValue) override;
    IEnumEntry* GetCurrentEntry(bool verify = false, bool ignoreCache = false) override;

private:
    CEnumEntryNode* EntryByValue(int64_t value) const;
    /// Writes an entry after the entry checks.
    void WriteEntryLocked(CEnumEntryNode* pEntry, bool verify);
    [[noreturn]] void ThrowInvalidValue(const char* method, const char* valueText) const;

    std::vector<CEnumEntryNode*> m_entries;
    int64_t m_value = 0;
    int64_t m_cachedValue = 0;
    CNode* m_pValue = nullptr;
};
} // namespace GenApi
