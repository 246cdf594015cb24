#include "Engine/Nodes/EnumerationNode.h"

#include <cstring>
#include <string>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/EnumEntryNode.h"
#include "Engine/Nodes/EvaluationGuard.h"

namespace GenApi
{
bool CEnumerationNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::EnumEntry)
    {
        // The loader created the entry node in its first pass; configure it from its element.
        const std::string entryName = std::string("EnumEntry_") + std::string(Name()) + "_" + child.attribute("Name").value();
        CEnumEntryNode* pEntry = dynamic_cast<CEnumEntryNode*>(builder.Map().FindNode(entryName));
        if (!pEntry)
            builder.Fail(this, child, "enumeration entry was not created");
        pEntry->Configure(child, builder);
        m_entries.push_back(pEntry);
        m_accessInputs.push_back(pEntry);
        pEntry->AddDependent(this);
    }
    else if (element == EElement_t::pEnumEntry)
    {
        CEnumEntryNode* pEntry = dynamic_cast<CEnumEntryNode*>(builder.Ref(child, this));
        if (!pEntry)
            builder.Fail(this, child, "pEnumEntry does not name an EnumEntry");
        m_entries.push_back(pEntry);
        m_accessInputs.push_back(pEntry);
        pEntry->AddDependent(this);
    }
    else if (element == EElement_t::Value)
        m_value = builder.Int(child, this);
    else if (element == EElement_t::pValue)
        AddValueChild(m_pValue = builder.Ref(child, this));
    else
        return CNode::ConfigureElement(child, builder);
    return true;
}

void CEnumerationNode::Link(CNodeBuilder& /*builder*/)
{
}

EAccessMode CEnumerationNode::NaturalAccessLocked(bool structural)
{
    // With no entry implemented the enumeration is not either; with none available, neither.
    if (!m_entries.empty())
    {
        bool anyImplemented = false, anyAvailable = false;
        for (CEnumEntryNode* pEntry : m_entries)
        {
            const EAccessMode entryMode = pEntry->AccessLocked();
            anyImplemented = anyImplemented || entryMode != NI;
            anyAvailable = anyAvailable || IsAvailable(entryMode);
            if (anyAvailable)
                break;
        }
        if (!anyImplemented)
            return NI;
        if (!anyAvailable && !structural)
            return NA;
    }
    if (m_pValue)
        return structural ? m_pValue->StructuralAccessLocked() : m_pValue->AccessLocked();
    return RW;
}

CEnumEntryNode* CEnumerationNode::FindEntryNode(const std::string& entryName) const
{
    for (CEnumEntryNode* pEntry : m_entries)
        if (pEntry->EntryName() == entryName)
            return pEntry;
    for (CEnumEntryNode* pEntry : m_entries)
        if (pEntry->Symbolic() == entryName)
            return pEntry;
    return nullptr;
}

CEnumEntryNode* CEnumerationNode::EntryByValue(int64_t value) const
{
    for (CEnumEntryNode* pEntry : m_entries)
        if (pEntry->Value() == value)
            return pEntry;
    return nullptr;
}

double CEnumerationNode::NumericValueLocked()
{
    const int64_t value = IntValueLocked(false, false);
    CEnumEntryNode* pEntry = EntryByValue(value);
    return pEntry ? pEntry->NumericValue() : static_cast<double>(value);
}

void CEnumerationNode::ThrowInvalidValue(const char* method, const char* valueText) const
{
    throw INVALID_ARGUMENT_EXCEPTION_NODE(NameText(), method)("Feature '%s' : cannot convert value '%s', the value is invalid.",
                                                             NameText(), valueText);
}

// ---------------------------------------------------------------- value protocol

int64_t CEnumerationNode::IntValueLocked(bool verify, bool ignoreCache)
{
    if (!verify && !ignoreCache && m_valueValid && ReadableLocked())
        return m_cachedValue;
    CheckReadableLocked("GetValue");
    CEvaluationGuard guard(this);
    const int64_t value = m_pValue ? m_pValue->IntValueLocked(verify, ignoreCache || verify) : m_value;
    if (verify)
        CheckErrorsLocked();
    if (CachingMode() != NoCache)
    {
        m_cachedValue = value;
        m_valueValid = true;
    }
    return value;
}

double CEnumerationNode::FloatValueLocked(bool verify, bool ignoreCache)
{
    return static_cast<double>(IntValueLocked(verify, ignoreCache));
}

void CEnumerationNode::SetIntValueLocked(int64_t value, bool verify)
{
    CheckWritableLocked(verify, "SetIntValue");
    CEnumEntryNode* pEntry = EntryByValue(value);
    if (!pEntry)
        ThrowInvalidValue("SetIntValue", std::to_string(value).c_str());
    WriteEntryLocked(pEntry, verify);
}

void CEnumerationNode::WriteEntryLocked(CEnumEntryNode* pEntry, bool verify)
{
    const EAccessMode entryMode = pEntry->AccessLocked();
    if (entryMode == NI || (verify && entryMode == NA))
    {
        if (verify)
            throw ACCESS_EXCEPTION_NODE(NameText(), "SetIntValue")("Failed to write enumeration value. Enum entry is not writable");
        throw ACCESS_EXCEPTION_NODE(NameText(), "SetIntValue")("Failed to write enumeration value. Enum entry is not implemented");
    }
    CEvaluationGuard guard(this);
    m_valueValid = false;
    const int64_t value = pEntry->Value();
    if (m_pValue)
        m_pValue->SetIntValueLocked(value, verify);
    else
    {
        m_value = value;
        m_pMap->NotifyChangedLocked(this);
    }
    if (verify)
        CheckErrorsLocked();
    // A self-clearing entry reads back as something else: never cache it.
    if (CachingMode() == WriteThrough && !pEntry->SelfClearing())
    {
        m_cachedValue = value;
        m_valueValid = true;
    }
}

// ---------------------------------------------------------------- IValue

GenICam::gcstring CEnumerationNode::ToString(bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    const int64_t value = IntValueLocked(verify, ignoreCache);
    CEnumEntryNode* pEntry = EntryByValue(value);
    if (!pEntry)
        ThrowInvalidValue("ToString", std::to_string(value).c_str());
    if (verify && !IsAvailable(pEntry->AccessLocked()))
        throw ACCESS_EXCEPTION_NODE(NameText(), "ToString")("Enumeration value '%s' is not available.",
                                                           pEntry->GetName().c_str());
    const std::string_view symbolic = pEntry->Symbolic();
    return GenICam::gcstring(symbolic.data(), symbolic.size());
}

void CEnumerationNode::FromString(const GenICam::gcstring& valueText, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    CheckWritableLocked(verify, "FromString");
    CEnumEntryNode* pEntry = nullptr;
    for (CEnumEntryNode* pCandidate : m_entries)
        if (pCandidate->Symbolic() == valueText.c_str())
        {
            pEntry = pCandidate;
            break;
        }
    if (!pEntry)
        ThrowInvalidValue("FromString", valueText.c_str());
    WriteEntryLocked(pEntry, verify);
}

// ---------------------------------------------------------------- IEnumeration

void CEnumerationNode::GetSymbolics(StringList_t& symbolics)
{
    AutoLock lock(NodeMapLock());
    symbolics.clear();
    for (CEnumEntryNode* pEntry : m_entries)
        if (IsAvailable(pEntry->AccessLocked()))
            symbolics.push_back(GenICam::gcstring(pEntry->Symbolic().data(), pEntry->Symbolic().size()));
}

void CEnumerationNode::GetEntries(NodeList_t& entries)
{
    AutoLock lock(NodeMapLock());
    entries.clear();
    for (CEnumEntryNode* pEntry : m_entries)
        entries.push_back(pEntry);
}

IEnumeration& CEnumerationNode::operator=(const GenICam::gcstring& valueText)
{
    FromString(valueText, true);
    return *this;
}

void CEnumerationNode::SetIntValue(int64_t value, bool verify)
{
    CNodeMapImpl::CCallbackScope scope(m_pMap);
    SetIntValueLocked(value, verify);
}

GenICam::gcstring CEnumerationNode::operator*()
{
    return ToString();
}

int64_t CEnumerationNode::GetIntValue(bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    if (QV_LIKELY(!verify && !ignoreCache && m_valueValid && m_readState == kReadYes))
        return m_cachedValue;
    return IntValueLocked(verify, ignoreCache);
}

IEnumEntry* CEnumerationNode::GetEntryByName(const GenICam::gcstring& symbolic)
{
    for (CEnumEntryNode* pEntry : m_entries)
        if (pEntry->Symbolic() == symbolic.c_str())
            return pEntry;
    return nullptr;
}

IEnumEntry* CEnumerationNode::GetEntry(const int64_t intValue)
{
    return EntryByValue(intValue);
}

IEnumEntry* CEnumerationNode::GetCurrentEntry(bool verify, bool ignoreCache)
{
    AutoLock lock(NodeMapLock());
    return EntryByValue(IntValueLocked(verify, ignoreCache));
}
} // namespace GenApi
