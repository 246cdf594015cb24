#pragma once

// Formulas of SwissKnife, IntSwissKnife, Converter and IntConverter nodes.
//
// Usage (engine, at load time, once per Formula / FormulaTo / FormulaFrom):
//
//     Engine::FormulaDefinition_t definition;
//     definition.nodeName = "K";                       // formulaName "K_ConvertTo" for converters
//     definition.formula = "W.Max - A * 2";
//     definition.kind = Engine::EFormulaKind_t::Integer;
//     definition.upperCaseNames = isSchema10;
//     definition.symbols = {{"C", "5", false}, {"X", "A+C", true}};   // document order
//     definition.inputName = "";                       // "TO" (FormulaFrom) / "FROM" (FormulaTo)
//     Engine::CFormula formula;
//     formula.Compile(definition, [&](const std::string& name, Engine::EFormulaKind_t kind) {
//         return slotOf(name, kind);                   // or Engine::kUnknownFormulaSlot
//     });                                              // or (definition, function, context)
//     for (int32_t slot : formula.GetDependencies()) addInvalidatingEdge(slot);
//
// and on every read (no allocation, no text work):
//
//     int64_t value = formula.EvaluateInteger(valueSource);          // valueSource: IFormulaValueSource
//     double to = formula.EvaluateFloat(valueSource, &fromValue);    // converters pass TO / FROM
//
// Compile() throws only for an integer Constant that is not an integer (a load error, as the
// reference does). A bad formula compiles and throws LogicalErrorException at every evaluation
// ("K : Failed to parse formula 'A+Q' : error message is '# Q - Unknown function/variable!'").

#include <cstdint>
#include <string>
#include <vector>

#include <Base/GCLinkage.h>

#include "Engine/Formula/FormulaProgram.h"
#include "Engine/Formula/FormulaTypes.h"

namespace GenApi
{
namespace Engine
{
class CFormulaCompileCache;

/**
 * \brief A compiled formula with its Constants and Expressions.
 *
 * Owned by the node that holds the formula. Compile() once, then Evaluate*() any number of
 * times; evaluation is const and keeps no state, so it is safe from any thread as long as the
 * value source is (the engine calls it under the node map's lock).
 */
class GENICAM_API CFormula
{
public:
    CFormula();
    ~CFormula();
    CFormula(CFormula&&) noexcept;
    CFormula& operator=(CFormula&&) noexcept;
    CFormula(const CFormula&) = delete;
    CFormula& operator=(const CFormula&) = delete;

    /**
     * \brief Compiles the formula, its Constants and its Expressions.
     * \param[in] definition Text, kind, names; copied.
     * \param[in] resolver Maps variable names to slots; called during this call only.
     * \throws PropertyException for a Constant of an integer formula that is not an integer
     *         ("Error in property of type 'Invalid PropertyID 114': cannot convert '1.25' to
     *         int64_t"). Every other error is stored and thrown by the evaluations.
     */
    void Compile(const FormulaDefinition_t& definition, const FormulaResolver_t& resolver);
    /**
     * \brief The same with a plain function as resolver (\a pResolve may be null: no variables)
     *        and, optionally, the texts already compiled during the same load.
     */
    void Compile(const FormulaDefinition_t& definition, FormulaResolveFunction_t pResolve, void* pContext,
                 CFormulaCompileCache* pCache = nullptr);

    /// Whether Compile() has run.
    bool IsCompiled() const { return m_compiled; }
    /// The arithmetic chosen at compile time.
    EFormulaKind_t GetKind() const { return m_kind; }

    /**
     * \brief Evaluates with the formula's own arithmetic.
     * \param[in] source Supplies the slot values.
     * \param[in] input Value of TO / FROM for converters; may be null when the formula does not
     *            use it (see UsesInput()).
     * \return isFloat true for a float formula.
     * \throws LogicalErrorException for a bad formula ("Failed to parse" / "Failed to evaluate"),
     *         RuntimeException for a float slot value outside int64 in an integer formula, and
     *         whatever the value source throws.
     */
    FormulaValue_t Evaluate(IFormulaValueSource& source, const FormulaValue_t* input = nullptr) const;
    /// Evaluate() of an integer formula; a float formula's result is rounded half away from zero
    /// (RuntimeException "CIntegerPolyRef::SetValue(): double value outside int64 range").
    int64_t EvaluateInteger(IFormulaValueSource& source, const FormulaValue_t* input = nullptr) const;
    /// Evaluate() of a float formula; an integer formula's result is converted to double.
    double EvaluateFloat(IFormulaValueSource& source, const FormulaValue_t* input = nullptr) const;

    /// Every slot the formula or any of its Expressions reads, sorted, without duplicates.
    const std::vector<int32_t>& GetDependencies() const { return m_dependencies; }
    /// Whether the main formula reads TO / FROM.
    bool UsesInput() const { return m_usesInput; }

    /// Whether the main formula failed in the parse phase (unknown name, stray character,
    /// brackets): what `INodeMap::ParseSwissKnifes` lists.
    bool HasParseError() const;
    /// Throws the main formula's parse-phase error if it has one (LogicalErrorException).
    void ThrowIfParseError() const;

    /// A float value read as an integer: rounded half away from zero; outside int64 throws
    /// RuntimeException "CIntegerPolyRef::GetValue(): Float value <%f> out of integer range".
    static int64_t FloatToIntegerForRead(double value);
    /// A float value written to an integer: rounded half away from zero; outside int64 throws
    /// RuntimeException "CIntegerPolyRef::SetValue(): double value outside int64 range".
    static int64_t FloatToIntegerForWrite(double value);

private:
    [[noreturn]] void ThrowNotCompiled() const;

    bool m_compiled = false;
    bool m_usesInput = false;
    EFormulaKind_t m_kind = EFormulaKind_t::Integer;
    std::string m_nodeName;
    FormulaProgram_t m_main;
    std::vector<FormulaProgram_t> m_expressions;
    /// Expressions the main formula reads, directly or through other Expressions, ascending
    /// (document order is a valid evaluation order: an Expression reads only earlier ones).
    std::vector<int32_t> m_neededExpressions;
    std::vector<int32_t> m_dependencies;
};
} // namespace Engine
} // namespace GenApi
