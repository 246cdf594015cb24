#include "Engine/Nodes/FloatNode.h"

#include <cstdlib>
#include <cstring>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"

namespace GenApi
{
bool CFloatNode::ConfigureElement(const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::Value)
        m_value = builder.Float(child, this);
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
        m_indexed.push_back({builder.IntText(child.attribute("Index").value(), child, this), builder.Float(child, this), nullptr});
    else if (element == EElement_t::pValueIndexed)
    {
        CNode* pTarget = builder.Ref(child, this);
        AddValueChild(pTarget);
        m_indexed.push_back({builder.IntText(child.attribute("Index").value(), child, this), 0.0, pTarget});
    }
    else if (element == EElement_t::ValueDefault)
        m_defaultValue = builder.Float(child, this);
    else if (element == EElement_t::pValueDefault)
        AddValueChild(m_pDefault = builder.Ref(child, this));
    else if (element == EElement_t::Min)
        m_min = builder.Float(child, this), m_hasMin = true;
    else if (element == EElement_t::Max)
        m_max = builder.Float(child, this), m_hasMax = true;
    else if (element == EElement_t::Inc)
        m_inc = builder.Float(child, this), m_hasInc = true;
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
        const char* p = text.c_str();
        while (*p)
        {
            char* pEnd = nullptr;
            const double value = std::strtod(p, &pEnd);
            if (pEnd == p)
                ++p;
            else
                m_validValues.push_back(value), p = pEnd;
        }
    }
    else
        return CFloatBase::ConfigureElement(child, builder);
    return true;
}

ECachingMode CFloatNode::ComputeCachingModeLocked()
{
    // A float need not read back exactly as written: re-read after a write.
    return Combine(CNode::ComputeCachingModeLocked(), WriteAround);
}

EAccessMode CFloatNode::NaturalAccessLocked(bool structural)
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

CNode* CFloatNode::IndexedTargetLocked()
{
    const IndexedValue_t* pEntry = SelectedEntryLocked(false);
    return pEntry ? pEntry->pValue : m_pDefault;
}

CFloatNode::IndexedValue_t* CFloatNode::SelectedEntryLocked(bool ignoreCache)
{
    if (!IsReadable(m_pIndex->AccessLocked()))
        return nullptr;
    const int64_t index = m_pIndex->IntValueLocked(false, ignoreCache);
    for (IndexedValue_t& entry : m_indexed)
        if (entry.index == index)
            return &entry;
    return nullptr;
}

double CFloatNode::ReadLocked(bool verify, bool ignoreCache)
{
    if (m_pValue)
        return m_pValue->FloatValueLocked(verify, ignoreCache);
    if (m_pIndex)
    {
        const IndexedValue_t* pEntry = SelectedEntryLocked(ignoreCache);
        if (pEntry)
            return pEntry->pValue ? pEntry->pValue->FloatValueLocked(verify, ignoreCache) : pEntry->value;
        return m_pDefault ? m_pDefault->FloatValueLocked(verify, ignoreCache) : m_defaultValue;
    }
    return m_value;
}

void CFloatNode::WriteLocked(double value, bool verify)
{
    if (m_pValue)
    {
        m_pValue->SetFloatValueLocked(value, verify);
        for (CNode* pCopy : m_valueCopies)
            pCopy->SetFloatValueLocked(value, verify);
        return;
    }
    if (m_pIndex)
    {
        IndexedValue_t* pEntry = SelectedEntryLocked(false);
        if (pEntry && pEntry->pValue)
            pEntry->pValue->SetFloatValueLocked(value, verify);
        else if (!pEntry && m_pDefault)
            m_pDefault->SetFloatValueLocked(value, verify);
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

double CFloatNode::RawMinLocked()
{
    if (m_pMin)
        return m_pMin->FloatValueLocked(false, false);
    if (m_hasMin)
        return m_min;
    if (m_pValue)
        return m_pValue->FloatMinLocked();
    if (m_pIndex)
        if (CNode* pTarget = IndexedTargetLocked())
            return pTarget->FloatMinLocked();
    return -DBL_MAX;
}

double CFloatNode::RawMaxLocked()
{
    if (m_pMax)
        return m_pMax->FloatValueLocked(false, false);
    if (m_hasMax)
        return m_max;
    if (m_pValue)
        return m_pValue->FloatMaxLocked();
    if (m_pIndex)
        if (CNode* pTarget = IndexedTargetLocked())
            return pTarget->FloatMaxLocked();
    return DBL_MAX;
}

bool CFloatNode::RawHasIncLocked()
{
    if (m_pInc || m_hasInc)
        return true;
    if (m_pValue)
        return m_pValue->HasFloatIncLocked();
    return false;
}

double CFloatNode::RawIncLocked()
{
    if (m_pInc)
        return m_pInc->FloatValueLocked(false, false);
    if (m_hasInc)
        return m_inc;
    if (m_pValue && m_pValue->HasFloatIncLocked())
        return m_pValue->FloatIncLocked();
    if (m_pIndex)
        if (CNode* pTarget = IndexedTargetLocked())
            return pTarget->FloatIncLocked();
    return 0.0;
}

EIncMode CFloatNode::RawIncModeLocked()
{
    if (m_hasValidValueSet)
        return listIncrement;
    return RawHasIncLocked() ? fixedIncrement : noIncrement;
}
} // namespace GenApi
