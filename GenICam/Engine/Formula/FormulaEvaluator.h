#pragma once

#include <cstdint>

#include "Engine/Formula/FormulaProgram.h"
#include "Engine/Formula/FormulaTypes.h"

namespace GenApi
{
namespace Engine
{
/**
 * \brief Runs compiled programs with integer or float arithmetic.
 *
 * Stateless; the value and else stacks live on the caller's stack (on the heap only for
 * programs deeper than any real description writes). Any thread; the value source decides.
 */
class CFormulaEvaluator
{
public:
    /// Runs an error-free integer program. `expressionValues[k]` is Expression k's value.
    static int64_t RunInteger(const FormulaProgram_t& program, IFormulaValueSource& source,
                              const FormulaValue_t* input, const int64_t* expressionValues);
    /// Runs an error-free float program.
    static double RunFloat(const FormulaProgram_t& program, IFormulaValueSource& source,
                           const FormulaValue_t* input, const double* expressionValues);
    /// Throws the program's stored compile error as the reference reports it.
    [[noreturn]] static void ThrowStoredError(const FormulaProgram_t& program);
};
} // namespace Engine
} // namespace GenApi
