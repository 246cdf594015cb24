#pragma once

#include <memory>
#include <string_view>

#include <Base/GCLinkage.h>

#include "Engine/Formula/FormulaProgram.h"
#include "Engine/Formula/FormulaTypes.h"

namespace GenApi
{
namespace Engine
{
/**
 * \brief Formula texts already compiled during one load, keyed by text, arithmetic and name case.
 *
 * Descriptions repeat formulas over many nodes (half the formula text of a large camera's
 * description is repeated), so each text is lexed and structured once; a node using it again only
 * has its names looked up. Owned by the loader for one load; one thread at a time.
 */
class GENICAM_API CFormulaCompileCache
{
public:
    CFormulaCompileCache();
    ~CFormulaCompileCache();
    CFormulaCompileCache(const CFormulaCompileCache&) = delete;
    CFormulaCompileCache& operator=(const CFormulaCompileCache&) = delete;
    /// Number of distinct texts kept.
    size_t Size() const;

private:
    friend class CFormulaCompiler;
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};

/**
 * \brief Turns one formula text into a postfix program.
 *
 * Stateless; used by CFormula at load time. Two phases, as the reference reports them: the
 * lexer (numbers, names, operators; unknown names, stray characters and unbalanced brackets are
 * parse errors) and the structure pass (signs, precedence, function calls; errors there are
 * evaluation errors). A failed compilation leaves an empty program with the error stored.
 * Descriptions hold a thousand formulas or more, so the token and operator stacks are kept per
 * thread between calls and names are looked up as views into the text.
 */
class CFormulaCompiler
{
public:
    /// Fills `load` with the instruction that reads `name` (LoadSlot, LoadInput, LoadExpression
    /// or PushLiteral); false if the name is unknown. Functions and PI / E are handled before.
    /// `name` is a view into the formula text (or into an upper-cased copy), valid for the call.
    using NameLookup_t = bool (*)(void* pContext, std::string_view name, FormulaInstruction_t& load);

    /**
     * \brief Compiles `text` into `program` (code, depths, error); the caller sets its name and text.
     * \param[in] upperCaseNames Upper-case name tokens before looking them up (schema 1.0).
     * \param[in] lookup, pContext Resolve names; called during this call only.
     */
    static void Compile(std::string_view text, EFormulaKind_t kind, bool upperCaseNames, NameLookup_t lookup,
                        void* pContext, FormulaProgram_t& program);
    /// The same, reusing what \a cache learnt from an earlier compilation of the same text.
    static void Compile(std::string_view text, EFormulaKind_t kind, bool upperCaseNames, NameLookup_t lookup,
                        void* pContext, FormulaProgram_t& program, CFormulaCompileCache& cache);
};
} // namespace Engine
} // namespace GenApi
