#include "Engine/Nodes/NodeKind.h"

#include <cstring>

namespace GenApi
{
namespace
{
struct KindName_t
{
    const char* elementName;
    ENodeKind_t kind;
};

// The one place mapping description elements to node kinds.
const KindName_t kKinds[] = {
    {"Node", ENodeKind_t::Node},
    {"Category", ENodeKind_t::Category},
    {"Integer", ENodeKind_t::Integer},
    {"IntReg", ENodeKind_t::IntReg},
    {"MaskedIntReg", ENodeKind_t::MaskedIntReg},
    {"StructEntry", ENodeKind_t::StructEntry},
    {"IntConverter", ENodeKind_t::IntConverter},
    {"IntSwissKnife", ENodeKind_t::IntSwissKnife},
    {"Float", ENodeKind_t::Float},
    {"FloatReg", ENodeKind_t::FloatReg},
    {"Converter", ENodeKind_t::Converter},
    {"SwissKnife", ENodeKind_t::SwissKnife},
    {"Boolean", ENodeKind_t::Boolean},
    {"Command", ENodeKind_t::Command},
    {"Enumeration", ENodeKind_t::Enumeration},
    {"EnumEntry", ENodeKind_t::EnumEntry},
    {"String", ENodeKind_t::String},
    {"StringReg", ENodeKind_t::StringReg},
    {"Register", ENodeKind_t::Register},
    {"Port", ENodeKind_t::Port},
    {"ConfRom", ENodeKind_t::ConfRom},
    {"TextDesc", ENodeKind_t::TextDesc},
    {"IntKey", ENodeKind_t::IntKey},
    {"AdvFeatureLock", ENodeKind_t::AdvFeatureLock},
    {"SmartFeature", ENodeKind_t::SmartFeature},
};
} // namespace

const char* NodeKindName(ENodeKind_t kind)
{
    for (const KindName_t& item : kKinds)
        if (item.kind == kind)
            return item.elementName;
    return "Node";
}

bool NodeKindOfElement(const char* elementName, ENodeKind_t& kind)
{
    // Called for every top-level element: the first letter leaves one to four names to compare.
    for (const KindName_t& item : kKinds)
        if (item.elementName[0] == elementName[0] && item.kind != ENodeKind_t::StructEntry &&
            std::strcmp(item.elementName, elementName) == 0)
        {
            kind = item.kind;
            return true;
        }
    return false;
}
} // namespace GenApi
