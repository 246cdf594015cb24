#pragma once

#include <functional>
#include <string>

#include "Engine/Formula/FormulaProgram.h"
#include "Engine/Formula/FormulaTypes.h"

namespace GenApi
{
namespace Engine
{
/**
 * \brief Turns one formula text into a postfix program.
 *
 * Stateless; used by CFormula at load time. Two phases, as the reference reports them: the
 * lexer (numbers, names, operators; unknown names, stray characters and unbalanced brackets are
 * parse errors) and the structure pass (signs, precedence, function calls; errors there are
 * evaluation errors). A failed compilation leaves an empty program with the error stored.
 */
class CFormulaCompiler
{
public:
    /// Fills `load` with the instruction that reads `name` (LoadSlot, LoadInput, LoadExpression
    /// or PushLiteral); false if the name is unknown. Functions and PI / E are handled before.
    using NameLookup_t = std::function<bool(const std::string& name, FormulaInstruction_t& load)>;

    /**
     * \brief Compiles `text`.
     * \param[in] upperCaseNames Upper-case name tokens before looking them up (schema 1.0).
     * \return The program, or an empty one with errorPhase and errorMessage set.
     */
    static FormulaProgram_t Compile(const std::string& text, const std::string& name,
                                    EFormulaKind_t kind, bool upperCaseNames,
                                    const NameLookup_t& lookup);
};
} // namespace Engine
} // namespace GenApi
