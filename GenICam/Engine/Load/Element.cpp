#include "Engine/Load/Element.h"

#include <cstring>

namespace GenApi
{
namespace
{
struct ElementName_t
{
    const char* name;
    EElement_t element;
};

const ElementName_t kElements[] = {
    {"AccessMode", EElement_t::AccessMode},
    {"Address", EElement_t::Address},
    {"Bit", EElement_t::Bit},
    {"Cachable", EElement_t::Cachable},
    {"CacheChunkData", EElement_t::CacheChunkData},
    {"ChunkID", EElement_t::ChunkID},
    {"CommandValue", EElement_t::CommandValue},
    {"Constant", EElement_t::Constant},
    {"Description", EElement_t::Description},
    {"DisplayName", EElement_t::DisplayName},
    {"DisplayNotation", EElement_t::DisplayNotation},
    {"DisplayPrecision", EElement_t::DisplayPrecision},
    {"DocuURL", EElement_t::DocuURL},
    {"Endianess", EElement_t::Endianess},
    {"EnumEntry", EElement_t::EnumEntry},
    {"EventID", EElement_t::EventID},
    {"ExposeStatic", EElement_t::ExposeStatic},
    {"Expression", EElement_t::Expression},
    {"Extension", EElement_t::Extension},
    {"Formula", EElement_t::Formula},
    {"FormulaFrom", EElement_t::FormulaFrom},
    {"FormulaTo", EElement_t::FormulaTo},
    {"ImposedAccessMode", EElement_t::ImposedAccessMode},
    {"Inc", EElement_t::Inc},
    {"IntSwissKnife", EElement_t::IntSwissKnife},
    {"IsDeprecated", EElement_t::IsDeprecated},
    {"IsLinear", EElement_t::IsLinear},
    {"IsSelfClearing", EElement_t::IsSelfClearing},
    {"LSB", EElement_t::LSB},
    {"Length", EElement_t::Length},
    {"MSB", EElement_t::MSB},
    {"Max", EElement_t::Max},
    {"MergePriority", EElement_t::MergePriority},
    {"Min", EElement_t::Min},
    {"NumericValue", EElement_t::NumericValue},
    {"OffValue", EElement_t::OffValue},
    {"OnValue", EElement_t::OnValue},
    {"PollingTime", EElement_t::PollingTime},
    {"Representation", EElement_t::Representation},
    {"Sign", EElement_t::Sign},
    {"Slope", EElement_t::Slope},
    {"Streamable", EElement_t::Streamable},
    {"SwapEndianess", EElement_t::SwapEndianess},
    {"Symbolic", EElement_t::Symbolic},
    {"ToolTip", EElement_t::ToolTip},
    {"Unit", EElement_t::Unit},
    {"ValidValueSet", EElement_t::ValidValueSet},
    {"Value", EElement_t::Value},
    {"ValueDefault", EElement_t::ValueDefault},
    {"ValueIndexed", EElement_t::ValueIndexed},
    {"Visibility", EElement_t::Visibility},
    {"pAddress", EElement_t::pAddress},
    {"pAlias", EElement_t::pAlias},
    {"pBlockPolling", EElement_t::pBlockPolling},
    {"pCastAlias", EElement_t::pCastAlias},
    {"pChunkID", EElement_t::pChunkID},
    {"pCommandValue", EElement_t::pCommandValue},
    {"pEnumEntry", EElement_t::pEnumEntry},
    {"pError", EElement_t::pError},
    {"pFeature", EElement_t::pFeature},
    {"pInc", EElement_t::pInc},
    {"pIndex", EElement_t::pIndex},
    {"pInvalidator", EElement_t::pInvalidator},
    {"pIsAvailable", EElement_t::pIsAvailable},
    {"pIsImplemented", EElement_t::pIsImplemented},
    {"pIsLocked", EElement_t::pIsLocked},
    {"pLength", EElement_t::pLength},
    {"pMax", EElement_t::pMax},
    {"pMin", EElement_t::pMin},
    {"pPort", EElement_t::pPort},
    {"pSelected", EElement_t::pSelected},
    {"pValue", EElement_t::pValue},
    {"pValueCopy", EElement_t::pValueCopy},
    {"pValueDefault", EElement_t::pValueDefault},
    {"pValueIndexed", EElement_t::pValueIndexed},
    {"pVariable", EElement_t::pVariable},
};

constexpr unsigned kSlots = 512;

unsigned SlotOf(const char* name, size_t length)
{
    // Length and three letters separate the names; collisions probe to the next slot.
    const unsigned char first = static_cast<unsigned char>(name[0]);
    const unsigned char second = length > 1 ? static_cast<unsigned char>(name[1]) : 0;
    const unsigned char last = static_cast<unsigned char>(name[length - 1]);
    return (static_cast<unsigned>(length) * 131u + first * 31u + second * 7u + last * 3u) % kSlots;
}

struct Table_t
{
    const ElementName_t* slots[kSlots] = {};
    Table_t()
    {
        for (const ElementName_t& item : kElements)
        {
            unsigned slot = SlotOf(item.name, std::strlen(item.name));
            while (slots[slot])
                slot = (slot + 1) % kSlots;
            slots[slot] = &item;
        }
    }
};

const Table_t& Table()
{
    static const Table_t table;
    return table;
}
} // namespace

EElement_t ElementOf(const char* elementName)
{
    const size_t length = std::strlen(elementName);
    if (length == 0)
        return EElement_t::Unknown;
    const Table_t& table = Table();
    for (unsigned slot = SlotOf(elementName, length);; slot = (slot + 1) % kSlots)
    {
        const ElementName_t* pItem = table.slots[slot];
        if (!pItem)
            return EElement_t::Unknown;
        if (std::strcmp(pItem->name, elementName) == 0)
            return pItem->element;
    }
}
} // namespace GenApi
