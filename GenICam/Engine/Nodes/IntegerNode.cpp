#include "Engine/Nodes/IntegerNode.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"

namespace GenApi
{
bool CIntegerNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::Value)
        m_value = builder.Int(child, this);
    else if (element == EElement_t::pValue)
        AddValueChild(m_pValue = builder.Ref(child, this));
    else if (element == EElement_t::pValueCopy)
    {
        m_valueCopies.push_back(builder.Ref(child, this));
        AddValueChild(m_valueCopies.back());
    }
    else if (element == EElement_t::pIndex)
        AddValueChild(m_pIndex = builder.Ref(child, this));
    else if (element == EElement_t::ValueIndexed)
        m_indexed.push_back({builder.IntText(child.attribute("Index").value(), child, this), builder.Int(child, this), nullptr});
    else if (element == EElement_t::pValueIndexed)
    {
        CNode* pTarget = builder.Ref(child, this);
        AddValueChild(pTarget);
        m_indexed.push_back({builder.IntText(child.attribute("Index").value(), child, this), 0, pTarget});
    }
    else if (element == EElement_t::ValueDefault)
        m_defaultValue = builder.Int(child, this);
    else if (element == EElement_t::pValueDefault)
        AddValueChild(m_pDefault = builder.Ref(child, this));
    else if (element == EElement_t::Min)
        m_min = builder.Int(child, this), m_hasMin = true;
    else if (element == EElement_t::Max)
        m_max = builder.Int(child, this), m_hasMax = true;
    else if (element == EElement_t::Inc)
        m_inc = builder.Int(child, this), m_hasInc = true;
    else if (element == EElement_t::pMin)
        AddReference(m_pMin = builder.Ref(child, this));
    else if (element == EElement_t::pMax)
        AddReference(m_pMax = builder.Ref(child, this));
    else if (element == EElement_t::pInc)
        AddReference(m_pInc = builder.Ref(child, this));
    else if (element == EElement_t::ValidValueSet)
    {
        m_hasValidValueSet = true;
        const std::string text = CNodeBuilder::Trimmed(child.text().get()).str();
        size_t start = 0;
        while (start <= text.size())
        {
            size_t end = text.find(';', start);
            if (end == std::string::npos)
                end = text.size();
            const std::string item = text.substr(start, end - start);
            if (item.find_first_not_of(" \t\r\n") != std::string::npos)
                m_validValues.push_back(builder.IntText(item, child, this));
            start = end + 1;
        }
    }
    else
        return CIntegerBase::ConfigureElement(child, builder);
    return true;
}

void CIntegerNode::Link(CNodeBuilder& builder)
{
    if (m_pIndex && m_indexed.empty())
        builder.Fail(this, pugi::xml_node(), "pIndex needs ValueIndexed or pValueIndexed entries");
}

EAccessMode CIntegerNode::NaturalAccessLocked(bool structural)
{
    if (m_pValue)
        return structural ? m_pValue->StructuralAccessLocked() : m_pValue->AccessLocked();
    if (m_pIndex)
    {
        const IndexedValue_t* pEntry = SelectedEntryLocked(false);
        CNode* pTarget = pEntry ? pEntry->pValue : m_pDefault;
        if (pTarget)
            return structural ? pTarget->StructuralAccessLocked() : pTarget->AccessLocked();
    }
    return RW;
}

CNode* CIntegerNode::IndexedTargetLocked()
{
    const IndexedValue_t* pEntry = SelectedEntryLocked(false);
    return pEntry ? pEntry->pValue : m_pDefault;
}

CIntegerNode::IndexedValue_t* CIntegerNode::SelectedEntryLocked(bool ignoreCache)
{
    if (!IsReadable(m_pIndex->AccessLocked()))
        return nullptr;
    const int64_t index = m_pIndex->IntValueLocked(false, ignoreCache);
    for (IndexedValue_t& entry : m_indexed)
        if (entry.index == index)
            return &entry;
    return nullptr;
}

int64_t CIntegerNode::ReadLocked(bool verify, bool ignoreCache)
{
    if (m_pValue)
        return m_pValue->IntValueLocked(verify, ignoreCache);
    if (m_pIndex)
    {
        const IndexedValue_t* pEntry = SelectedEntryLocked(ignoreCache);
        if (pEntry)
            return pEntry->pValue ? pEntry->pValue->IntValueLocked(verify, ignoreCache) : pEntry->value;
        return m_pDefault ? m_pDefault->IntValueLocked(verify, ignoreCache) : m_defaultValue;
    }
    return m_value;
}

void CIntegerNode::WriteLocked(int64_t value, bool verify)
{
    if (m_pValue)
    {
        m_pValue->SetIntValueLocked(value, verify);
        for (CNode* pCopy : m_valueCopies)
            pCopy->SetIntValueLocked(value, verify);
        return;
    }
    if (m_pIndex)
    {
        IndexedValue_t* pEntry = SelectedEntryLocked(false);
        if (pEntry && pEntry->pValue)
            pEntry->pValue->SetIntValueLocked(value, verify);
        else if (!pEntry && m_pDefault)
            m_pDefault->SetIntValueLocked(value, verify);
        else if (pEntry)
            pEntry->value = value;
        else
            m_defaultValue = value;
        m_pMap->NotifyChangedLocked(this);
        return;
    }
    m_value = value;
    m_pMap->NotifyChangedLocked(this);
}

int64_t CIntegerNode::RawMinLocked()
{
    if (m_pMin)
        return m_pMin->IntValueLocked(false, false);
    if (m_hasMin)
        return m_min;
    if (m_pValue)
    {
        // Every node the value is copied to must accept it.
        int64_t minimum = m_pValue->IntMinLocked();
        for (CNode* pCopy : m_valueCopies)
            minimum = std::max(minimum, pCopy->IntMinLocked());
        return minimum;
    }
    if (m_pIndex)
        if (CNode* pTarget = IndexedTargetLocked())
            return pTarget->IntMinLocked();
    return INT64_MIN;
}

int64_t CIntegerNode::RawMaxLocked()
{
    if (m_pMax)
        return m_pMax->IntValueLocked(false, false);
    if (m_hasMax)
        return m_max;
    if (m_pValue)
    {
        int64_t maximum = m_pValue->IntMaxLocked();
        for (CNode* pCopy : m_valueCopies)
            maximum = std::min(maximum, pCopy->IntMaxLocked());
        return maximum;
    }
    if (m_pIndex)
        if (CNode* pTarget = IndexedTargetLocked())
            return pTarget->IntMaxLocked();
    return INT64_MAX;
}

int64_t CIntegerNode::RawIncLocked()
{
    if (m_pInc)
        return m_pInc->IntValueLocked(false, false);
    if (m_hasInc)
        return m_inc;
    if (m_pValue)
        return m_pValue->IntIncLocked();
    if (m_pIndex)
        if (CNode* pTarget = IndexedTargetLocked())
            return pTarget->IntIncLocked();
    return 1;
}

EIncMode CIntegerNode::RawIncModeLocked()
{
    if (m_hasValidValueSet)
        return listIncrement;
    if (m_pValue && !m_pInc && !m_hasInc)
        return m_pValue->IncModeLocked() == listIncrement ? listIncrement : fixedIncrement;
    return fixedIncrement;
}

std::vector<int64_t> CIntegerNode::RawValidValuesLocked()
{
    if (m_hasValidValueSet)
        return m_validValues;
    if (CIntegerBase* pSource = dynamic_cast<CIntegerBase*>(m_pValue))
        return pSource->ValidValuesLocked();
    return {};
}
} // namespace GenApi
