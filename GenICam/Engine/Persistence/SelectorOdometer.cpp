#include "Engine/Persistence/SelectorOdometer.h"

#include <Base/GCException.h>
#include <GenApi/IBoolean.h>
#include <GenApi/IEnumEntry.h>
#include <GenApi/IEnumeration.h>
#include <GenApi/IInteger.h>
#include <GenApi/INode.h>

namespace GenApi
{
CSelectorOdometer::CSelectorOdometer(const std::vector<INode*>& selectors)
{
    for (INode* pNode : selectors)
    {
        if (!IsWritable(pNode) || !IsReadable(pNode))
            continue;
        Selector_t selector{pNode, dynamic_cast<IValue*>(pNode), EKind_t::Integer, pNode->GetName(), 0, "", {}, 0, ""};
        try
        {
            if (IEnumeration* pEnumeration = dynamic_cast<IEnumeration*>(pNode))
            {
                selector.kind = EKind_t::Enumeration;
                selector.originalValue = pEnumeration->GetIntValue();
            }
            else if (IInteger* pInteger = dynamic_cast<IInteger*>(pNode))
                selector.originalValue = pInteger->GetValue();
            else if (IBoolean* pBoolean = dynamic_cast<IBoolean*>(pNode))
            {
                selector.kind = EKind_t::Boolean;
                selector.originalValue = pBoolean->GetValue() ? 1 : 0;
            }
            else
                continue;
            selector.originalText = selector.pValue->ToString();
        }
        catch (const GenICam::GenericException&)
        {
            continue; // a selector that cannot be read cannot be put back either
        }
        m_selectors.push_back(std::move(selector));
    }
}

void CSelectorOdometer::ComputeValues(Selector_t& selector)
{
    selector.values.clear();
    selector.position = 0;
    try
    {
        switch (selector.kind)
        {
        case EKind_t::Enumeration:
        {
            NodeList_t entries;
            dynamic_cast<IEnumeration*>(selector.pNode)->GetEntries(entries);
            for (INode* pEntry : entries)
                if (IsAvailable(pEntry))
                    if (IEnumEntry* pEnumEntry = dynamic_cast<IEnumEntry*>(pEntry))
                        selector.values.push_back(pEnumEntry->GetValue());
            break;
        }
        case EKind_t::Integer:
        {
            IInteger* pInteger = dynamic_cast<IInteger*>(selector.pNode);
            const int64_t min = pInteger->GetMin();
            const int64_t max = pInteger->GetMax();
            const int64_t inc = pInteger->GetInc() > 0 ? pInteger->GetInc() : 1;
            for (int64_t value = min; value <= max && static_cast<int64_t>(selector.values.size()) < kMaxValuesPerSelector;
                 value += inc)
            {
                selector.values.push_back(value);
                if (value > INT64_MAX - inc)
                    break;
            }
            break;
        }
        case EKind_t::Boolean: selector.values = {0, 1}; break;
        }
    }
    catch (const GenICam::GenericException&)
    {
        selector.values.clear();
    }
}

bool CSelectorOdometer::Set(Selector_t& selector, int64_t value)
{
    try
    {
        switch (selector.kind)
        {
        case EKind_t::Enumeration: dynamic_cast<IEnumeration*>(selector.pNode)->SetIntValue(value); break;
        case EKind_t::Integer: dynamic_cast<IInteger*>(selector.pNode)->SetValue(value); break;
        case EKind_t::Boolean: dynamic_cast<IBoolean*>(selector.pNode)->SetValue(value != 0); break;
        }
        selector.currentText = selector.pValue->ToString();
        return true;
    }
    catch (const GenICam::GenericException&)
    {
        return false;
    }
}

bool CSelectorOdometer::Start()
{
    // Innermost first, as the walk leaves them; the ranges are then taken again from the
    // outer selectors' first values and an inner selector moved if its range changed.
    for (size_t i = m_selectors.size(); i-- > 0;)
    {
        ComputeValues(m_selectors[i]);
        if (m_selectors[i].values.empty() || !Set(m_selectors[i], m_selectors[i].values[0]))
            return false;
    }
    for (size_t i = 1; i < m_selectors.size(); ++i)
    {
        Selector_t& selector = m_selectors[i];
        const int64_t current = selector.values[0];
        ComputeValues(selector);
        if (selector.values.empty())
            return false;
        if (selector.values[0] != current && !Set(selector, selector.values[0]))
            return false;
    }
    return true;
}

bool CSelectorOdometer::Next()
{
    for (size_t i = m_selectors.size(); i-- > 0;)
    {
        Selector_t& selector = m_selectors[i];
        if (++selector.position < selector.values.size())
        {
            if (!Set(selector, selector.values[selector.position]))
                return false;
            // Selectors inside this one may offer other values now.
            for (size_t inner = i + 1; inner < m_selectors.size(); ++inner)
            {
                Selector_t& innerSelector = m_selectors[inner];
                const int64_t current = innerSelector.values[0];
                ComputeValues(innerSelector);
                if (innerSelector.values.empty())
                    return false;
                if (innerSelector.values[0] != current && !Set(innerSelector, innerSelector.values[0]))
                    return false;
            }
            return true;
        }
        // Wrapped: back to the first value, and carry to the next selector out.
        selector.position = 0;
        if (!Set(selector, selector.values[0]))
            return false;
    }
    return false;
}

GenICam::gcstring CSelectorOdometer::QualifierText() const
{
    GenICam::gcstring text("{");
    for (size_t i = 0; i < m_selectors.size(); ++i)
    {
        if (i > 0)
            text += '\t';
        text += m_selectors[i].name;
        text += '=';
        text += m_selectors[i].currentText;
    }
    text += '}';
    return text;
}

void CSelectorOdometer::Restore()
{
    for (Selector_t& selector : m_selectors)
        Set(selector, selector.originalValue);
}
} // namespace GenApi
