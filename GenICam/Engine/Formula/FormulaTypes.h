#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <Base/GCLinkage.h>

namespace GenApi
{
namespace Engine
{
/// Arithmetic of a formula: int64 (IntSwissKnife, IntConverter) or double (SwissKnife, Converter).
enum class EFormulaKind_t : uint8_t
{
    Integer,
    Float
};

/**
 * \brief One value handed to or returned by a formula: an integer or a float.
 *
 * The evaluator converts it to the formula's arithmetic: a float read by an integer formula is
 * rounded half away from zero (outside int64 it throws), an integer read by a float formula is
 * converted to double.
 */
struct FormulaValue_t
{
    bool isFloat = false;
    int64_t intValue = 0;
    double floatValue = 0.0;

    static FormulaValue_t FromInt(int64_t value)
    {
        FormulaValue_t result;
        result.intValue = value;
        return result;
    }
    static FormulaValue_t FromFloat(double value)
    {
        FormulaValue_t result;
        result.isFloat = true;
        result.floatValue = value;
        return result;
    }
};

/// A `<Constant>` or an `<Expression>` of a formula node, as written in the description.
struct FormulaSymbol_t
{
    std::string name;
    std::string text;
    bool isExpression = false;
};

/// The resolver's answer for a name it does not know.
constexpr int32_t kUnknownFormulaSlot = -1;

/**
 * \brief Maps a variable name as written in a formula to a slot number chosen by the engine.
 *
 * Called at compile time only. `name` is the whole name token, suffix included ("W", "W.Min",
 * "S.Entry.On"; upper-cased first in a schema-1.0 description); `kind` is the arithmetic of the
 * formula that reads it, so the same name may map to different slots in integer and float
 * formulas (an enumeration reads as its integer value in one and its entry's NumericValue in the
 * other). Return a slot >= 0, or kUnknownFormulaSlot for a name that is not a variable of the
 * node. Names that exist but cannot be read ("S.Entry.Missing") should get a slot whose read
 * throws: the reference reports those at the first evaluation, not at load.
 */
using FormulaResolver_t = std::function<int32_t(const std::string& name, EFormulaKind_t kind)>;

/**
 * \brief FormulaResolver_t as a plain function and a context pointer: what the engine uses, as it
 *        costs no std::function call and no std::string per name. `name` is valid during the call.
 */
using FormulaResolveFunction_t = int32_t (*)(void* pContext, std::string_view name, EFormulaKind_t kind);

/**
 * \brief Supplies slot values while a formula is evaluated.
 *
 * Implemented by the engine. Called once per variable occurrence on every evaluation, under the
 * caller's lock; may throw (the exception passes through the evaluator unchanged).
 */
class IFormulaValueSource
{
public:
    virtual ~IFormulaValueSource() = default;
    /// The current value of a slot returned by the resolver.
    virtual FormulaValue_t GetFormulaSlotValue(int32_t slot) = 0;
};

/// Everything a formula is compiled from (one `Formula`, `FormulaTo` or `FormulaFrom`).
struct FormulaDefinition_t
{
    /// The owning node ("K"). Expression X is reported as "_K_X".
    std::string nodeName;
    /// The name in the main formula's error texts: "K" for a SwissKnife, "K_ConvertTo" /
    /// "K_ConvertFrom" for the two formulas of a converter. Empty means nodeName.
    std::string formulaName;
    /// The formula text as written.
    std::string formula;
    EFormulaKind_t kind = EFormulaKind_t::Integer;
    /// Schema 1.0: names are upper-cased before they are looked up (variable names are not).
    bool upperCaseNames = false;
    /// Constants and Expressions in document order; an Expression sees the variables, the
    /// Constants and the Expressions written before it.
    std::vector<FormulaSymbol_t> symbols;
    /// The converter's own variable: "TO" in FormulaFrom, "FROM" in FormulaTo, empty otherwise.
    /// Its value is the `input` argument of the evaluation. Expressions do not see it.
    std::string inputName;
};
} // namespace Engine
} // namespace GenApi
