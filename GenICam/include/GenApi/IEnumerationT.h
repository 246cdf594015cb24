#pragma once

#include <cstdint>
#include <vector>

#include <Base/GCException.h>
#include <GenApi/IEnumEntry.h>
#include <GenApi/IEnumeration.h>
#include <GenApi/INode.h>
#include <GenApi/Reference.h>

namespace GenApi
{
/**
 * \brief An Enumeration read and written as values of the application's C++ enumeration EnumT.
 *
 * Thread: as the node behind it (any thread; the node map locks).
 */
template <typename EnumT>
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IEnumerationT : public IEnumeration
{
    using IEnumeration::GetEntry;

    /// Writes the entry bound to \a value. \throws AccessException when none is bound.
    virtual void SetValue(EnumT value, bool verify = true) = 0;
    /// SetValue(value) with verification.
    virtual IEnumeration& operator=(EnumT value) = 0;
    /// The C++ value bound to the current entry. \throws AccessException when none is.
    virtual EnumT GetValue(bool verify = false, bool ignoreCache = false) = 0;
    /// GetValue().
    virtual EnumT operator()() = 0;
    /// Writes the entry with this symbolic name (verified).
    virtual IEnumeration& operator=(const GenICam::gcstring& valueText) = 0;
    /// The entry bound to \a value, or null.
    virtual IEnumEntry* GetEntry(const EnumT value) = 0;
    /// The current entry, or null when the value has no entry.
    virtual IEnumEntry* GetCurrentEntry(bool verify = false, bool ignoreCache = false) = 0;
};

/**
 * \brief IEnumerationT bound at run time to an Enumeration node, the way generated parameter
 *        classes expose enumerations:
 *
 *     enum EGainAutoEnums { GainAuto_Off, GainAuto_Once, GainAuto_Continuous };
 *     CEnumerationTRef<EGainAutoEnums> GainAuto;
 *     GainAuto.SetReference(nodeMap._GetNode("GainAuto"));
 *     GainAuto.SetNumEnums(3);
 *     GainAuto.SetEnumReference(GainAuto_Off, "Off");   // ... one call per value
 *     GainAuto = GainAuto_Once;
 *
 * Bindings are looked up once, when SetEnumReference runs (so bind the node first). Unbound, the
 * object reports NI and every other call throws AccessException "Feature not present (reference
 * not valid)". Borrows the node; the node map must outlive the binding.
 */
template <typename EnumT>
class CEnumerationTRef : public IEnumerationT<EnumT>, public IReference, public IEnumReference
{
public:
    CEnumerationTRef() = default;
    ~CEnumerationTRef() override = default;

    // ---- IReference / IEnumReference ----
    void SetReference(IBase* pBase) override { m_pEnumeration = dynamic_cast<IEnumeration*>(pBase); }
    void SetNumEnums(int number) override
    {
        m_values.assign(number > 0 ? static_cast<size_t>(number) : 0, 0);
        m_bound.assign(m_values.size(), false);
    }
    void SetEnumReference(int index, GenICam::gcstring name) override
    {
        if (index < 0 || static_cast<size_t>(index) >= m_values.size())
            throw OUT_OF_RANGE_EXCEPTION("Enum index %d is outside 0 .. %d (SetNumEnums first)", index,
                                         static_cast<int>(m_values.size()) - 1);
        m_bound[static_cast<size_t>(index)] = false;
        if (!m_pEnumeration)
            return;
        if (IEnumEntry* pEntry = m_pEnumeration->GetEntryByName(name))
        {
            m_values[static_cast<size_t>(index)] = pEntry->GetValue();
            m_bound[static_cast<size_t>(index)] = true;
        }
    }

    // ---- IEnumerationT ----
    void SetValue(EnumT value, bool verify = true) override { Target()->SetIntValue(IntValueOf(value), verify); }
    IEnumeration& operator=(EnumT value) override
    {
        SetValue(value);
        return *this;
    }
    EnumT GetValue(bool verify = false, bool ignoreCache = false) override
    {
        const int64_t intValue = Target()->GetIntValue(verify, ignoreCache);
        for (size_t i = 0; i < m_values.size(); ++i)
            if (m_bound[i] && m_values[i] == intValue)
                return static_cast<EnumT>(i);
        throw ACCESS_EXCEPTION("Value %lld of the enumeration has no enum value bound to it",
                               static_cast<long long>(intValue));
    }
    EnumT operator()() override { return GetValue(); }
    IEnumeration& operator=(const GenICam::gcstring& valueText) override
    {
        *Target() = valueText;
        return *this;
    }
    IEnumEntry* GetEntry(const EnumT value) override
    {
        const size_t index = static_cast<size_t>(value);
        if (index >= m_values.size() || !m_bound[index])
            return nullptr;
        return Target()->GetEntry(m_values[index]);
    }
    IEnumEntry* GetCurrentEntry(bool verify = false, bool ignoreCache = false) override
    {
        return Target()->GetCurrentEntry(verify, ignoreCache);
    }

    // ---- IEnumeration ----
    void GetSymbolics(StringList_t& symbolics) override { Target()->GetSymbolics(symbolics); }
    void GetEntries(NodeList_t& entries) override { Target()->GetEntries(entries); }
    void SetIntValue(int64_t value, bool verify = true) override { Target()->SetIntValue(value, verify); }
    GenICam::gcstring operator*() override { return **Target(); }
    int64_t GetIntValue(bool verify = false, bool ignoreCache = false) override
    {
        return Target()->GetIntValue(verify, ignoreCache);
    }
    IEnumEntry* GetEntryByName(const GenICam::gcstring& symbolic) override { return Target()->GetEntryByName(symbolic); }
    IEnumEntry* GetEntry(const int64_t intValue) override { return Target()->GetEntry(intValue); }

    // ---- IValue / IBase ----
    INode* GetNode() override { return Target()->GetNode(); }
    GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override
    {
        return Target()->ToString(verify, ignoreCache);
    }
    void FromString(const GenICam::gcstring& valueText, bool verify = true) override
    {
        Target()->FromString(valueText, verify);
    }
    bool IsValueCacheValid() const override { return Target()->IsValueCacheValid(); }
    EAccessMode GetAccessMode() const override { return m_pEnumeration ? m_pEnumeration->GetAccessMode() : NI; }

private:
    IEnumeration* Target() const
    {
        if (!m_pEnumeration)
            throw ACCESS_EXCEPTION("Feature not present (reference not valid)");
        return m_pEnumeration;
    }
    int64_t IntValueOf(EnumT value) const
    {
        const size_t index = static_cast<size_t>(value);
        if (index >= m_values.size() || !m_bound[index])
            throw ACCESS_EXCEPTION("Enum value %d is not bound to an entry of the enumeration", static_cast<int>(value));
        return m_values[index];
    }

    IEnumeration* m_pEnumeration = nullptr; // borrowed from the node map, which outlives the binding
    std::vector<int64_t> m_values;          // entry value of each C++ value
    std::vector<bool> m_bound;              // whether that entry exists
};
} // namespace GenApi
