// Fuzz target for the formula compiler and evaluator.
//
// Input: one flag byte, then text. The first line is the formula; each further line "X=text"
// declares an Expression X, "#K=text" a Constant K (in order). Flags: bit 0 float formula,
// bit 1 schema 1.0, bit 2 converter input TO, bits 3-4 pick the variables' values (ordinary,
// extreme integers, extreme floats, NaN and infinities).

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include <Base/GCException.h>

#include "Engine/Formula/Formula.h"
#include "tests/GenICam/Formula/FakeFormulaNodes.h"

using namespace GenApi::Engine;
using FormulaTest::CFakeFormulaNodes;
using FormulaTest::FakeNode_t;

namespace
{
void AddVariables(CFakeFormulaNodes& nodes, unsigned variant)
{
    constexpr double kInf = std::numeric_limits<double>::infinity();
    switch (variant)
    {
    case 0:
        nodes.AddVariable("A", FakeNode_t::Int(2));
        nodes.AddVariable("B", FakeNode_t::Int(3));
        nodes.AddVariable("X", FakeNode_t::Float(2.5));
        break;
    case 1:
        nodes.AddVariable("A", FakeNode_t::Int(INT64_MIN));
        nodes.AddVariable("B", FakeNode_t::Int(-1));
        nodes.AddVariable("X", FakeNode_t::Int(INT64_MAX));
        break;
    case 2:
        nodes.AddVariable("A", FakeNode_t::Float(1e300));
        nodes.AddVariable("B", FakeNode_t::Float(-9223372036854775808.0));
        nodes.AddVariable("X", FakeNode_t::Float(-0.0));
        break;
    default:
        nodes.AddVariable("A", FakeNode_t::Float(std::nan("")));
        nodes.AddVariable("B", FakeNode_t::Float(kInf));
        nodes.AddVariable("X", FakeNode_t::Float(-kInf));
        break;
    }
    nodes.AddHelperVariable("W", "@R");
    nodes.AddHelperVariable("S", "@EN");
    nodes.AddHelperVariable("F", "@RF");
}

// The outcome of one evaluation, for comparing two runs.
struct Outcome_t
{
    bool failed = false;
    std::string error;
    FormulaValue_t value;

    bool operator==(const Outcome_t& other) const
    {
        if (failed != other.failed || error != other.error || value.isFloat != other.value.isFloat)
            return false;
        if (!value.isFloat)
            return value.intValue == other.value.intValue;
        return (std::isnan(value.floatValue) && std::isnan(other.value.floatValue)) ||
               std::memcmp(&value.floatValue, &other.value.floatValue, sizeof(double)) == 0;
    }
};

Outcome_t Run(const CFormula& formula, CFakeFormulaNodes& nodes, const FormulaValue_t* input)
{
    Outcome_t outcome;
    try
    {
        outcome.value = formula.Evaluate(nodes, input);
    }
    catch (const GenICam::GenericException& e)
    {
        outcome.failed = true;
        outcome.error = e.GetDescription();
    }
    return outcome;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const unsigned flags = data[0];
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);

    FormulaDefinition_t definition;
    definition.nodeName = "K";
    definition.kind = (flags & 1) ? EFormulaKind_t::Float : EFormulaKind_t::Integer;
    definition.upperCaseNames = (flags & 2) != 0;
    if (flags & 4)
    {
        definition.inputName = "TO";
        definition.formulaName = "K_ConvertFrom";
    }
    size_t lineStart = 0;
    bool first = true;
    while (lineStart <= text.size())
    {
        size_t lineEnd = text.find('\n', lineStart);
        if (lineEnd == std::string::npos)
            lineEnd = text.size();
        const std::string line = text.substr(lineStart, lineEnd - lineStart);
        if (first)
            definition.formula = line;
        else
        {
            const size_t equals = line.find('=');
            if (equals != std::string::npos && equals > 0)
            {
                const bool isConstant = line[0] == '#';
                definition.symbols.push_back(
                    {line.substr(isConstant ? 1 : 0, equals - (isConstant ? 1 : 0)), line.substr(equals + 1), !isConstant});
            }
        }
        first = false;
        lineStart = lineEnd + 1;
    }

    CFakeFormulaNodes nodes;
    AddVariables(nodes, (flags >> 3) & 3);
    CFormula formula;
    try
    {
        formula.Compile(definition, [&](const std::string& name, EFormulaKind_t kind) { return nodes.Resolve(name, kind); });
    }
    catch (const GenICam::PropertyException&)
    {
        return 0; // a bad integer Constant: the one load error
    }
    for (int32_t slot : formula.GetDependencies())
        if (slot < 0)
            std::abort();
    const FormulaValue_t input = (flags & 0x20) ? FormulaValue_t::FromFloat(-7.5) : FormulaValue_t::FromInt(7);
    const FormulaValue_t* inputPointer = (flags & 4) ? &input : nullptr;
    // Evaluation is a pure function of the values: two runs must agree.
    const Outcome_t once = Run(formula, nodes, inputPointer);
    const Outcome_t twice = Run(formula, nodes, inputPointer);
    if (!(once == twice))
        std::abort();
    // A parse error reported to ParseSwissKnifes must be the one evaluation reports.
    if (formula.HasParseError())
    {
        try
        {
            formula.ThrowIfParseError();
            std::abort();
        }
        catch (const GenICam::LogicalErrorException& e)
        {
            if (!once.failed || once.error != e.GetDescription())
                std::abort();
        }
    }
    return 0;
}
