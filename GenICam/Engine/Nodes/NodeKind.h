#pragma once

#include <cstdint>

namespace GenApi
{
/// Kind of a node, one per XML element that creates a node.
enum class ENodeKind_t : uint8_t
{
    Node,
    Category,
    Integer,
    IntReg,
    MaskedIntReg,
    StructEntry,
    IntConverter,
    IntSwissKnife,
    Float,
    FloatReg,
    Converter,
    SwissKnife,
    Boolean,
    Command,
    Enumeration,
    EnumEntry,
    String,
    StringReg,
    Register,
    Port,
    ConfRom,
    TextDesc,
    IntKey,
    AdvFeatureLock,
    SmartFeature
};

/// The XML element name of a kind (StructEntry nodes come from StructReg elements).
const char* NodeKindName(ENodeKind_t kind);
/// The kind an XML element creates; false for elements that create no node by themselves
/// (Group, StructReg, EnumEntry and unknown elements).
bool NodeKindOfElement(const char* elementName, ENodeKind_t& kind);
} // namespace GenApi
