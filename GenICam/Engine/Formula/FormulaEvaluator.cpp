#include "Engine/Formula/FormulaEvaluator.h"

#include <cmath>
#include <limits>
#include <memory>

#include <Base/GCException.h>

#include "Engine/Formula/Formula.h"

namespace GenApi
{
namespace Engine
{
namespace
{
constexpr const char* kInfinity = "#Infinity somewhere!";
constexpr const char* kTooBig = "#Value too big for operation!";
constexpr int64_t kInt64Min = std::numeric_limits<int64_t>::min();

[[gnu::cold, gnu::noinline, noreturn]] void ThrowFormulaError(const FormulaProgram_t& program,
                                                               const char* phase, const char* message)
{
    const std::string description = program.name + " : Failed to " + phase + " formula '" + program.text +
                                    "' : error message is '" + message + "'";
    throw LOGICAL_ERROR_EXCEPTION_NODE(program.name.c_str(), "")(GenICam::gcstring(description));
}

[[gnu::cold, gnu::noinline, noreturn]] void ThrowNoInput()
{
    throw LOGICAL_ERROR_EXCEPTION("A converter formula was evaluated without its TO / FROM value.");
}

// Value and else stacks: on the caller's stack for every formula seen in real descriptions.
template <typename T>
class CScratch
{
public:
    explicit CScratch(uint32_t size)
    {
        if (size > kLocal)
        {
            m_heap.reset(new T[size]);
            m_data = m_heap.get();
        }
    }
    T* Get() { return m_data; }

private:
    static constexpr uint32_t kLocal = 32;
    T m_local[kLocal];
    std::unique_ptr<T[]> m_heap;
    T* m_data = m_local;
};

int64_t Wrap(uint64_t value)
{
    return static_cast<int64_t>(value);
}

// Exact while the result fits; a fractional result truncates; anything outside int64 is
// INT64_MIN (the x86 conversion of an out-of-range double, which the reference relies on).
int64_t IntegerPower(int64_t base, int64_t exponent)
{
    if (exponent < 0)
    {
        if (base == 1)
            return 1;
        if (base == -1)
            return (exponent & 1) ? -1 : 1;
        if (base == 0) // pow(0, negative) is infinite
            return kInt64Min;
        return 0;
    }
    const bool negative = base < 0 && (exponent & 1);
    uint64_t factor = base < 0 ? 0 - static_cast<uint64_t>(base) : static_cast<uint64_t>(base);
    uint64_t result = 1;
    while (exponent > 0)
    {
        if ((exponent & 1) && __builtin_mul_overflow(result, factor, &result))
            return kInt64Min;
        exponent >>= 1;
        // A square that overflows is always multiplied in later (a higher bit is set).
        if (exponent > 0 && __builtin_mul_overflow(factor, factor, &factor))
            return kInt64Min;
    }
    if (negative)
        return result <= static_cast<uint64_t>(kInt64Min) ? Wrap(0 - result) : kInt64Min;
    return result <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) ? static_cast<int64_t>(result)
                                                                                 : kInt64Min;
}

// Bitwise operators of float formulas work on 32-bit signed integers.
int32_t ToInt32(const FormulaProgram_t& program, double value)
{
    if (value > 2147483647.0 || value < -2147483648.0)
        ThrowFormulaError(program, "evaluate", kTooBig);
    if (std::isnan(value)) // what the x86 conversion gives
        return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(value);
}

double RoundHalfAway(double value)
{
    return value < 0 ? -std::floor(-value + 0.5) : std::floor(value + 0.5);
}

int64_t ReadInteger(const FormulaValue_t& value)
{
    return value.isFloat ? CFormula::FloatToIntegerForRead(value.floatValue) : value.intValue;
}

double ReadFloat(const FormulaValue_t& value)
{
    return value.isFloat ? value.floatValue : static_cast<double>(value.intValue);
}
} // namespace

void CFormulaEvaluator::ThrowStoredError(const FormulaProgram_t& program)
{
    ThrowFormulaError(program, program.errorPhase == EFormulaErrorPhase_t::Parse ? "parse" : "evaluate",
                      program.errorMessage.c_str());
}

int64_t CFormulaEvaluator::RunInteger(const FormulaProgram_t& program, IFormulaValueSource& source,
                                      const FormulaValue_t* input, const int64_t* expressionValues)
{
    CScratch<int64_t> valueScratch(program.maxStackDepth);
    CScratch<int64_t> elseScratch(program.maxElseDepth);
    int64_t* stack = valueScratch.Get();
    int64_t* elseStack = elseScratch.Get();
    size_t top = 0; // number of values on the stack
    size_t elseTop = 0;
    for (const FormulaInstruction_t& instruction : program.code)
    {
        switch (instruction.op)
        {
        case EFormulaOp_t::PushLiteral:
            stack[top++] = instruction.intValue;
            continue;
        case EFormulaOp_t::LoadSlot:
            stack[top++] = ReadInteger(source.GetFormulaSlotValue(instruction.index));
            continue;
        case EFormulaOp_t::LoadInput:
            if (QV_UNLIKELY(!input))
                ThrowNoInput();
            stack[top++] = ReadInteger(*input);
            continue;
        case EFormulaOp_t::LoadExpression:
            stack[top++] = expressionValues[instruction.index];
            continue;
        case EFormulaOp_t::Negate:
            stack[top - 1] = Wrap(0 - static_cast<uint64_t>(stack[top - 1]));
            continue;
        case EFormulaOp_t::BitNot:
            stack[top - 1] = ~stack[top - 1];
            continue;
        case EFormulaOp_t::Sgn:
            stack[top - 1] = stack[top - 1] > 0 ? 1 : (stack[top - 1] < 0 ? -1 : 0);
            continue;
        case EFormulaOp_t::Else:
            elseStack[elseTop++] = stack[--top];
            continue;
        case EFormulaOp_t::Select:
        {
            const int64_t chosen = stack[--top];
            const int64_t otherwise = elseStack[--elseTop];
            stack[top - 1] = stack[top - 1] != 0 ? chosen : otherwise;
            continue;
        }
        default:
            break;
        }
        // Binary operators.
        const int64_t b = stack[--top];
        const int64_t a = stack[top - 1];
        int64_t result;
        switch (instruction.op)
        {
        case EFormulaOp_t::Add:
            result = Wrap(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
            break;
        case EFormulaOp_t::Subtract:
            result = Wrap(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
            break;
        case EFormulaOp_t::Multiply:
            result = Wrap(static_cast<uint64_t>(a) * static_cast<uint64_t>(b));
            break;
        case EFormulaOp_t::Divide:
            if (QV_UNLIKELY(b == 0))
                ThrowFormulaError(program, "evaluate", kInfinity);
            result = (b == -1) ? Wrap(0 - static_cast<uint64_t>(a)) : a / b;
            break;
        case EFormulaOp_t::Remainder:
            if (QV_UNLIKELY(b == 0))
                ThrowFormulaError(program, "evaluate", kInfinity);
            result = (b == -1) ? 0 : a % b;
            break;
        case EFormulaOp_t::Power:
            result = IntegerPower(a, b);
            break;
        case EFormulaOp_t::ShiftLeft:
            result = Wrap(static_cast<uint64_t>(a) << (static_cast<uint64_t>(b) & 63));
            break;
        case EFormulaOp_t::ShiftRight:
            result = a >> (static_cast<uint64_t>(b) & 63);
            break;
        case EFormulaOp_t::BitAnd:
            result = a & b;
            break;
        case EFormulaOp_t::BitOr:
            result = a | b;
            break;
        case EFormulaOp_t::BitXor:
            result = a ^ b;
            break;
        case EFormulaOp_t::Equal:
            result = a == b;
            break;
        case EFormulaOp_t::NotEqual:
            result = a != b;
            break;
        case EFormulaOp_t::Less:
            result = a < b;
            break;
        case EFormulaOp_t::Greater:
            result = a > b;
            break;
        case EFormulaOp_t::LessEqual:
            result = a <= b;
            break;
        case EFormulaOp_t::GreaterEqual:
            result = a >= b;
            break;
        case EFormulaOp_t::LogicalAnd:
            result = a != 0 && b != 0;
            break;
        case EFormulaOp_t::LogicalOr:
            result = a != 0 || b != 0;
            break;
        default: // the compiler emits no other instruction for integer formulas
            result = 0;
            break;
        }
        stack[top - 1] = result;
    }
    return stack[0];
}

double CFormulaEvaluator::RunFloat(const FormulaProgram_t& program, IFormulaValueSource& source,
                                   const FormulaValue_t* input, const double* expressionValues)
{
    CScratch<double> valueScratch(program.maxStackDepth);
    CScratch<double> elseScratch(program.maxElseDepth);
    double* stack = valueScratch.Get();
    double* elseStack = elseScratch.Get();
    size_t top = 0;
    size_t elseTop = 0;
    for (const FormulaInstruction_t& instruction : program.code)
    {
        switch (instruction.op)
        {
        case EFormulaOp_t::PushLiteral:
            stack[top++] = instruction.floatValue;
            continue;
        case EFormulaOp_t::LoadSlot:
            stack[top++] = ReadFloat(source.GetFormulaSlotValue(instruction.index));
            continue;
        case EFormulaOp_t::LoadInput:
            if (QV_UNLIKELY(!input))
                ThrowNoInput();
            stack[top++] = ReadFloat(*input);
            continue;
        case EFormulaOp_t::LoadExpression:
            stack[top++] = expressionValues[instruction.index];
            continue;
        default:
            break;
        }
        double& x = stack[top - 1]; // every other instruction has an operand
        switch (instruction.op)
        {
        case EFormulaOp_t::Negate:
            x = -x;
            continue;
        case EFormulaOp_t::BitNot:
            x = static_cast<double>(~ToInt32(program, x));
            continue;
        case EFormulaOp_t::Sgn:
            x = x > 0 ? 1.0 : (x < 0 ? -1.0 : 0.0);
            continue;
        case EFormulaOp_t::Abs:
            x = std::fabs(x);
            continue;
        case EFormulaOp_t::Sqrt:
            x = std::sqrt(x);
            continue;
        case EFormulaOp_t::Exp:
            x = std::exp(x);
            continue;
        case EFormulaOp_t::Ln:
            x = std::log(x);
            continue;
        case EFormulaOp_t::Lg:
            x = std::log10(x);
            continue;
        case EFormulaOp_t::Sin:
            x = std::sin(x);
            continue;
        case EFormulaOp_t::Cos:
            x = std::cos(x);
            continue;
        case EFormulaOp_t::Tan:
            x = std::tan(x);
            continue;
        case EFormulaOp_t::Asin:
            x = std::asin(x);
            continue;
        case EFormulaOp_t::Acos:
            x = std::acos(x);
            continue;
        case EFormulaOp_t::Atan:
            x = std::atan(x);
            continue;
        case EFormulaOp_t::Trunc:
            x = std::trunc(x);
            continue;
        case EFormulaOp_t::Floor:
            x = std::floor(x);
            continue;
        case EFormulaOp_t::Ceil:
            x = std::ceil(x);
            continue;
        case EFormulaOp_t::Round:
            x = RoundHalfAway(x);
            continue;
        case EFormulaOp_t::Frac:
            x = x - std::trunc(x);
            continue;
        case EFormulaOp_t::Else:
            elseStack[elseTop++] = stack[--top];
            continue;
        case EFormulaOp_t::Select:
        {
            const double chosen = stack[--top];
            const double otherwise = elseStack[--elseTop];
            stack[top - 1] = stack[top - 1] != 0 ? chosen : otherwise;
            continue;
        }
        default:
            break;
        }
        const double b = stack[--top];
        const double a = stack[top - 1];
        double result;
        switch (instruction.op)
        {
        case EFormulaOp_t::Add:
            result = a + b;
            break;
        case EFormulaOp_t::Subtract:
            result = a - b;
            break;
        case EFormulaOp_t::Multiply:
            result = a * b;
            break;
        case EFormulaOp_t::Divide:
            if (QV_UNLIKELY(b == 0))
                ThrowFormulaError(program, "evaluate", kInfinity);
            result = a / b;
            break;
        case EFormulaOp_t::Remainder:
            if (QV_UNLIKELY(b == 0))
                ThrowFormulaError(program, "evaluate", kInfinity);
            result = std::fmod(a, b);
            break;
        case EFormulaOp_t::Power:
            result = std::pow(a, b);
            break;
        case EFormulaOp_t::ShiftLeft:
        {
            const int32_t value = ToInt32(program, a);
            const int32_t count = ToInt32(program, b);
            result = static_cast<int32_t>(static_cast<uint32_t>(value) << (static_cast<uint32_t>(count) & 31));
            break;
        }
        case EFormulaOp_t::ShiftRight:
        {
            const int32_t value = ToInt32(program, a);
            const int32_t count = ToInt32(program, b);
            result = value >> (static_cast<uint32_t>(count) & 31);
            break;
        }
        case EFormulaOp_t::BitAnd:
            result = ToInt32(program, a) & ToInt32(program, b);
            break;
        case EFormulaOp_t::BitOr:
            result = ToInt32(program, a) | ToInt32(program, b);
            break;
        case EFormulaOp_t::BitXor:
            result = ToInt32(program, a) ^ ToInt32(program, b);
            break;
        case EFormulaOp_t::Equal:
            result = a == b;
            break;
        case EFormulaOp_t::NotEqual:
            result = a != b;
            break;
        case EFormulaOp_t::Less:
            result = a < b;
            break;
        case EFormulaOp_t::Greater:
            result = a > b;
            break;
        case EFormulaOp_t::LessEqual:
            result = a <= b;
            break;
        case EFormulaOp_t::GreaterEqual:
            result = a >= b;
            break;
        case EFormulaOp_t::LogicalAnd:
            result = a != 0 && b != 0;
            break;
        case EFormulaOp_t::LogicalOr:
            result = a != 0 || b != 0;
            break;
        case EFormulaOp_t::Round2:
        {
            // ROUND(x, n): n truncated to an integer; clamped so that the cast stays defined.
            double digits = std::isnan(b) ? 0.0 : std::trunc(b);
            digits = digits > 1000.0 ? 1000.0 : (digits < -1000.0 ? -1000.0 : digits);
            const double scale = std::pow(10.0, digits);
            result = RoundHalfAway(a * scale) / scale;
            break;
        }
        default:
            result = 0;
            break;
        }
        stack[top - 1] = result;
    }
    return stack[0];
}
} // namespace Engine
} // namespace GenApi
