#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace GenApi
{
namespace Engine
{
/// Instructions of a compiled formula (postfix order, evaluated on a value stack).
enum class EFormulaOp_t : uint8_t
{
    // Operands.
    PushLiteral,    ///< intValue or floatValue, by the program's kind
    LoadSlot,       ///< index = engine slot
    LoadInput,      ///< the converter's TO / FROM
    LoadExpression, ///< index = Expression number
    // Unary.
    Negate,
    BitNot,
    // Binary.
    Add,
    Subtract,
    Multiply,
    Divide,
    Remainder,
    Power,
    ShiftLeft,
    ShiftRight,
    BitAnd,
    BitOr,
    BitXor,
    Equal,
    NotEqual,
    Less,
    Greater,
    LessEqual,
    GreaterEqual,
    LogicalAnd,
    LogicalOr,
    Else,   ///< ':' moves its right operand to the else stack
    Select, ///< '?' picks the value left by ':' or the one on the else stack
    // Functions (float formulas know all of them, integer formulas only Sgn and Negate).
    Sgn,
    Abs,
    Sqrt,
    Exp,
    Ln,
    Lg,
    Sin,
    Cos,
    Tan,
    Asin,
    Acos,
    Atan,
    Trunc,
    Floor,
    Ceil,
    Round,
    Round2,
    Frac,
    Invalid ///< '$': an operator no formula can use
};

/// One instruction: 16 bytes.
struct FormulaInstruction_t
{
    EFormulaOp_t op = EFormulaOp_t::Invalid;
    int32_t index = 0;
    union
    {
        int64_t intValue = 0;
        double floatValue;
    };
};

/// Where a stored error belongs: the reference reports unknown names, stray characters and
/// unbalanced brackets as "Failed to parse", structural errors as "Failed to evaluate".
enum class EFormulaErrorPhase_t : uint8_t
{
    None,
    Parse,
    Evaluate
};

/// One compiled text (the main formula or an Expression).
struct FormulaProgram_t
{
    std::vector<FormulaInstruction_t> code;
    uint32_t maxStackDepth = 0;
    uint32_t maxElseDepth = 0;
    EFormulaErrorPhase_t errorPhase = EFormulaErrorPhase_t::None;
    std::string errorMessage; ///< "#Extra operation!", "# Q - Unknown function/variable!"
    std::string text;         ///< as written
    std::string name;         ///< "K", "K_ConvertTo", "_K_X"
};
} // namespace Engine
} // namespace GenApi
