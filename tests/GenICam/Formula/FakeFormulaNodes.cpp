#include "FakeFormulaNodes.h"

#include <Base/GCException.h>

namespace FormulaTest
{
FakeNode_t FakeNode_t::Int(int64_t value)
{
    FakeNode_t node;
    node.value = FormulaValue_t::FromInt(value);
    return node;
}

FakeNode_t FakeNode_t::Float(double value)
{
    FakeNode_t node;
    node.type = EType_t::Float;
    node.value = FormulaValue_t::FromFloat(value);
    node.min = FormulaValue_t::FromFloat(-1.7976931348623157e308);
    node.max = FormulaValue_t::FromFloat(1.7976931348623157e308);
    return node;
}

void CFakeFormulaNodes::AddVariable(const std::string& name, const FakeNode_t& node)
{
    m_variables[name] = std::make_shared<FakeNode_t>(node);
}

bool CFakeFormulaNodes::AddHelperVariable(const std::string& name, const std::string& helper)
{
    FakeNode_t node;
    if (helper == "@R")
    {
        node = FakeNode_t::Int(10);
        node.min = FormulaValue_t::FromInt(2);
        node.max = FormulaValue_t::FromInt(100);
        node.inc = FormulaValue_t::FromInt(4);
        node.accessMode = 4;
        node.visibility = 1;
        node.cachingMode = 1;
    }
    else if (helper == "@REG")
    {
        node = FakeNode_t::Int(7);
        node.type = FakeNode_t::EType_t::Other;
        node.accessMode = 3;
        node.visibility = 2;
        node.cachingMode = 0;
    }
    else if (helper == "@EN")
    {
        node = FakeNode_t::Int(3);
        node.type = FakeNode_t::EType_t::Enumeration;
        node.numericValue = 2.5;
        node.entries = {{"Big", 256}, {"On", 1}, {"Three", 3}};
    }
    else if (helper == "@RF")
    {
        node = FakeNode_t::Float(2.5);
        node.min = FormulaValue_t::FromFloat(-1.5);
        node.max = FormulaValue_t::FromFloat(7.25);
        node.inc = FormulaValue_t::FromFloat(0.25);
    }
    else if (helper == "@K2")
    {
        node = FakeNode_t::Int(0);
        node.type = FakeNode_t::EType_t::Other;
        node.accessMode = 3;
    }
    else
        return false;
    AddVariable(name, node);
    return true;
}

void CFakeFormulaNodes::SetValue(const std::string& name, const FormulaValue_t& value)
{
    m_variables.at(name)->value = value;
}

int32_t CFakeFormulaNodes::AddSlot(Slot_t slot)
{
    m_slots.push_back(std::move(slot));
    return static_cast<int32_t>(m_slots.size() - 1);
}

int32_t CFakeFormulaNodes::Resolve(const std::string& name, EFormulaKind_t kind)
{
    const auto known = m_resolved.find({name, kind});
    if (known != m_resolved.end())
        return known->second;
    const int32_t slot = ResolveNew(name, kind);
    if (slot >= 0)
        m_resolved[{name, kind}] = slot;
    return slot;
}

int32_t CFakeFormulaNodes::ResolveNew(const std::string& name, EFormulaKind_t kind)
{
    const size_t dot = name.find('.');
    const std::string variable = name.substr(0, dot);
    const auto found = m_variables.find(variable);
    if (found == m_variables.end())
        return GenApi::Engine::kUnknownFormulaSlot;
    const FakeNode_t& node = *found->second;
    Slot_t slot;
    slot.variable = variable;
    slot.kind = kind;
    if (dot == std::string::npos)
    {
        slot.what = EWhat_t::Value;
        return AddSlot(slot);
    }
    const std::string suffix = name.substr(dot + 1);
    static const std::map<std::string, EWhat_t> kSuffixes = {
        {"Value", EWhat_t::Value},           {"Min", EWhat_t::Min},
        {"Max", EWhat_t::Max},               {"Inc", EWhat_t::Inc},
        {"AccessMode", EWhat_t::AccessMode}, {"Visibility", EWhat_t::Visibility},
        {"CachingMode", EWhat_t::CachingMode}};
    const auto what = kSuffixes.find(suffix);
    if (what != kSuffixes.end())
    {
        slot.what = what->second;
        if (slot.what == EWhat_t::Inc && kind == EFormulaKind_t::Float &&
            node.type == FakeNode_t::EType_t::Enumeration)
        {
            slot.what = EWhat_t::Error;
            slot.error = "CFloatPolyRef::GetInc(): uninitialized pointer";
        }
        return AddSlot(slot);
    }
    if (suffix.compare(0, 6, "Entry.") == 0)
    {
        const std::string entry = suffix.substr(6);
        if (node.type != FakeNode_t::EType_t::Enumeration)
        {
            slot.what = EWhat_t::Error;
            slot.error = "Variable '" + name + "' does not point to enumeration";
        }
        else if (node.entries.count(entry) == 0)
        {
            slot.what = EWhat_t::Error;
            slot.error = "Variable '" + name + "' does not point to EnumEntry '" + entry + "'";
        }
        else
        {
            slot.what = EWhat_t::Entry;
            slot.entryValue = node.entries.at(entry);
        }
        return AddSlot(slot);
    }
    return GenApi::Engine::kUnknownFormulaSlot;
}

FormulaValue_t CFakeFormulaNodes::GetFormulaSlotValue(int32_t index)
{
    ++reads;
    const Slot_t& slot = m_slots.at(static_cast<size_t>(index));
    const FakeNode_t& node = *m_variables.at(slot.variable);
    switch (slot.what)
    {
    case EWhat_t::Value:
        if (node.type == FakeNode_t::EType_t::Enumeration && slot.kind == EFormulaKind_t::Float)
            return FormulaValue_t::FromFloat(node.numericValue);
        return node.value;
    case EWhat_t::Min:
        return node.min;
    case EWhat_t::Max:
        return node.max;
    case EWhat_t::Inc:
        return node.inc;
    case EWhat_t::AccessMode:
        return FormulaValue_t::FromInt(node.accessMode);
    case EWhat_t::Visibility:
        return FormulaValue_t::FromInt(node.visibility);
    case EWhat_t::CachingMode:
        return FormulaValue_t::FromInt(node.cachingMode);
    case EWhat_t::Entry:
        return FormulaValue_t::FromInt(slot.entryValue);
    case EWhat_t::Error:
        break;
    }
    throw RUNTIME_EXCEPTION(GenICam::gcstring(slot.error));
}
} // namespace FormulaTest
