#include "Engine/Nodes/FormulaBinding.h"

#include <cstring>

#include <Base/GCException.h>

#include "Engine/Load/NodeBuilder.h"
#include "Engine/Nodes/EnumEntryNode.h"
#include "Engine/Nodes/EnumerationNode.h"
#include "Engine/Nodes/FloatBase.h"
#include "Engine/Nodes/Node.h"

namespace GenApi
{
bool CFormulaBinding::ConfigureElement(CNode* pOwner, const pugi::xml_node& child, CNodeBuilder& builder)
{
    const EElement_t element = builder.ElementOf(child);
    if (element == EElement_t::pVariable)
    {
        CNode* pVariable = builder.Ref(child, pOwner);
        m_variables.emplace_back(std::string_view(child.attribute("Name").value()), pVariable);
        pOwner->AddValueChild(pVariable);
    }
    else if (element == EElement_t::Constant)
        m_symbols.push_back({child.attribute("Name").value(), std::string(CNodeBuilder::TrimmedView(CNodeBuilder::FullText(child).c_str())), false});
    else if (element == EElement_t::Expression)
        m_symbols.push_back({child.attribute("Name").value(), CNodeBuilder::FullText(child), true});
    else
        return false;
    return true;
}

void CFormulaBinding::Compile(CNode* pOwner, CNodeBuilder& builder, Engine::CFormula& formula, const std::string& text,
                              const std::string& formulaName, Engine::EFormulaKind_t kind,
                              const std::string& inputName, const pugi::xml_node& where)
{
    Engine::FormulaDefinition_t definition;
    definition.nodeName = std::string(pOwner->Name());
    definition.formulaName = formulaName;
    definition.formula = text;
    definition.kind = kind;
    definition.upperCaseNames = builder.IsSchema10();
    definition.symbols = m_symbols;
    definition.inputName = inputName;
    try
    {
        formula.Compile(definition, &CFormulaBinding::ResolveSlot, this, &builder.FormulaCache());
    }
    catch (const GenICam::GenericException& error)
    {
        builder.Fail(pOwner, where, error.GetDescription());
    }
}

int32_t CFormulaBinding::ResolveSlot(void* pContext, std::string_view name, Engine::EFormulaKind_t kind)
{
    return static_cast<CFormulaBinding*>(pContext)->Resolve(name, kind);
}

int32_t CFormulaBinding::Resolve(std::string_view name, Engine::EFormulaKind_t kind)
{
    std::string_view base = name;
    std::string_view suffix;
    const size_t dot = name.find('.');
    if (dot != std::string_view::npos)
    {
        base = name.substr(0, dot);
        suffix = name.substr(dot + 1);
    }
    CNode* pNode = nullptr;
    for (const auto& variable : m_variables)
        if (variable.first == base)
            pNode = variable.second;
    if (!pNode)
        return Engine::kUnknownFormulaSlot;
    Slot_t slot{pNode, ESlotKind_t::Value, kind, nullptr, std::string(), std::string()};
    if (suffix.empty() || suffix == "Value")
        slot.kind = ESlotKind_t::Value;
    else if (suffix == "Min")
        slot.kind = ESlotKind_t::Min;
    else if (suffix == "Max")
        slot.kind = ESlotKind_t::Max;
    else if (suffix == "Inc")
        slot.kind = ESlotKind_t::Inc;
    else if (suffix == "AccessMode")
        slot.kind = ESlotKind_t::AccessMode;
    else if (suffix == "Visibility")
        slot.kind = ESlotKind_t::Visibility;
    else if (suffix == "CachingMode")
        slot.kind = ESlotKind_t::CachingMode;
    else if (suffix.compare(0, 6, "Entry.") == 0)
    {
        const std::string_view entry = suffix.substr(6);
        CEnumerationNode* pEnumeration = dynamic_cast<CEnumerationNode*>(pNode);
        if (!pEnumeration)
            slot.kind = ESlotKind_t::NotEnumeration;
        else if ((slot.pEntry = pEnumeration->FindEntryNode(std::string(entry))) != nullptr)
            slot.kind = ESlotKind_t::Entry;
        else
            slot.kind = ESlotKind_t::MissingEntry;
        if (!slot.pEntry)
        {
            // Only reads of these throw, naming what the formula asked for.
            slot.name.assign(name.data(), name.size());
            slot.entry.assign(entry.data(), entry.size());
        }
    }
    else
        return Engine::kUnknownFormulaSlot;
    if (m_slots.empty())
        m_slots.reserve(m_variables.size()); // usually one slot per variable
    // The same variable read the same way by the same arithmetic shares one slot.
    for (size_t i = 0; i < m_slots.size(); ++i)
    {
        const Slot_t& existing = m_slots[i];
        if (existing.pNode == slot.pNode && existing.kind == slot.kind && existing.formulaKind == kind &&
            existing.pEntry == slot.pEntry && existing.name == slot.name)
            return static_cast<int32_t>(i);
    }
    m_slots.push_back(std::move(slot));
    return static_cast<int32_t>(m_slots.size() - 1);
}

Engine::FormulaValue_t CFormulaBinding::GetFormulaSlotValue(int32_t slotIndex)
{
    const Slot_t& slot = m_slots[static_cast<size_t>(slotIndex)];
    CNode* pNode = slot.pNode;
    const bool isFloatNode = pNode->IsFloatNode();
    switch (slot.kind)
    {
    case ESlotKind_t::Value:
        if (slot.formulaKind == Engine::EFormulaKind_t::Float && pNode->Kind() == ENodeKind_t::Enumeration)
            return Engine::FormulaValue_t::FromFloat(static_cast<CEnumerationNode*>(pNode)->NumericValueLocked());
        if (isFloatNode)
            return Engine::FormulaValue_t::FromFloat(pNode->FloatValueLocked(false, false));
        return Engine::FormulaValue_t::FromInt(pNode->IntValueLocked(false, false));
    case ESlotKind_t::Min:
        return isFloatNode ? Engine::FormulaValue_t::FromFloat(pNode->FloatMinLocked())
                           : Engine::FormulaValue_t::FromInt(pNode->IntMinLocked());
    case ESlotKind_t::Max:
        return isFloatNode ? Engine::FormulaValue_t::FromFloat(pNode->FloatMaxLocked())
                           : Engine::FormulaValue_t::FromInt(pNode->IntMaxLocked());
    case ESlotKind_t::Inc:
        return isFloatNode ? Engine::FormulaValue_t::FromFloat(pNode->FloatIncLocked())
                           : Engine::FormulaValue_t::FromInt(pNode->IntIncLocked());
    case ESlotKind_t::AccessMode:
        return Engine::FormulaValue_t::FromInt(pNode->AccessLocked());
    case ESlotKind_t::Visibility:
        return Engine::FormulaValue_t::FromInt(pNode->GetVisibility());
    case ESlotKind_t::CachingMode:
        return Engine::FormulaValue_t::FromInt(pNode->CachingMode());
    case ESlotKind_t::Entry:
        return Engine::FormulaValue_t::FromInt(slot.pEntry->IntValueLocked(false, false));
    case ESlotKind_t::MissingEntry:
        throw RUNTIME_EXCEPTION("Variable '%s' does not point to EnumEntry '%s'", slot.name.c_str(), slot.entry.c_str());
    case ESlotKind_t::NotEnumeration:
    default:
        throw RUNTIME_EXCEPTION("Variable '%s' does not point to enumeration", slot.name.c_str());
    }
}
} // namespace GenApi
