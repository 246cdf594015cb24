#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <pugixml.hpp>

#include "Engine/Formula/Formula.h"

namespace GenApi
{
class CNode;
class CNodeBuilder;

/**
 * \brief The formula part of SwissKnife, IntSwissKnife, Converter and IntConverter nodes:
 *        pVariable/Constant/Expression elements, the compiled formulas and the slot values.
 *
 * Owned by its node. Variables resolve to slots at load; evaluation reads the bound nodes (lock
 * held) and does no text work.
 */
class CFormulaBinding : public Engine::IFormulaValueSource
{
public:
    /// Reads pVariable, Constant and Expression; false for other elements.
    bool ConfigureElement(CNode* pOwner, const pugi::xml_node& child, CNodeBuilder& builder);
    /**
     * \brief Compiles one formula of the node.
     * \param[in] formulaName Name used in error texts ("K", "K_ConvertTo", "K_ConvertFrom").
     * \param[in] inputName   "TO", "FROM" or empty.
     */
    void Compile(CNode* pOwner, CNodeBuilder& builder, Engine::CFormula& formula, const std::string& text,
                 const std::string& formulaName, Engine::EFormulaKind_t kind, const std::string& inputName,
                 const pugi::xml_node& where);

    Engine::FormulaValue_t GetFormulaSlotValue(int32_t slot) override;

private:
    enum class ESlotKind_t : uint8_t
    {
        Value,
        Min,
        Max,
        Inc,
        AccessMode,
        Visibility,
        CachingMode,
        Entry,
        MissingEntry,
        NotEnumeration
    };
    struct Slot_t
    {
        CNode* pNode;
        ESlotKind_t kind;
        Engine::EFormulaKind_t formulaKind;
        CNode* pEntry;     // Entry: the enum entry
        std::string name;  // MissingEntry, NotEnumeration: the name as written, for the error text
        std::string entry; // MissingEntry, NotEnumeration: the entry name asked for
    };
    static int32_t ResolveSlot(void* pContext, std::string_view name, Engine::EFormulaKind_t kind);
    int32_t Resolve(std::string_view name, Engine::EFormulaKind_t kind);

    std::vector<std::pair<std::string_view, CNode*>> m_variables;
    std::vector<Engine::FormulaSymbol_t> m_symbols;
    std::vector<Slot_t> m_slots;
};
} // namespace GenApi
