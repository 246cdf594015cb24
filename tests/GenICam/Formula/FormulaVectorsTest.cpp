// Runs every case of the reference's formula vectors (formulas.tsv) through CFormula.

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Base/GCException.h>

#include "Engine/Formula/Formula.h"
#include "FakeFormulaNodes.h"

using namespace GenApi::Engine;
using FormulaTest::CFakeFormulaNodes;
using FormulaTest::FakeNode_t;

namespace
{
std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::string part;
    std::istringstream stream(text);
    while (std::getline(stream, part, separator))
        parts.push_back(part);
    if (!text.empty() && text.back() == separator)
        parts.emplace_back();
    return parts;
}

bool StartsWith(const std::string& text, const char* prefix)
{
    return text.compare(0, std::char_traits<char>::length(prefix), prefix) == 0;
}

bool LooksFloat(const std::string& text)
{
    return text.find_first_of(".eE") != std::string::npos || text == "nan" || text == "inf";
}

FormulaValue_t ParseValue(const std::string& text)
{
    if (LooksFloat(text))
        return FormulaValue_t::FromFloat(std::strtod(text.c_str(), nullptr));
    return FormulaValue_t::FromInt(std::strtoll(text.c_str(), nullptr, 0));
}

struct Case_t
{
    int line = 0;
    std::string kind, formula, variables, result, when, x64;
};

// Which node the case describes, from the "node kind" column.
struct Setup_t
{
    EFormulaKind_t kind = EFormulaKind_t::Integer;
    bool schema10 = false;
    std::string inputName;   // TO / FROM for converters
    std::string formulaName; // K, K_ConvertTo, K_ConvertFrom
    bool inputIsInteger = false;
    bool roundToInteger = false; // Converter writing an integer pValue
};

Setup_t SetupOf(const std::string& kindText)
{
    Setup_t setup;
    setup.formulaName = "K";
    std::string kind = kindText;
    if (kind.size() > 4 && kind.compare(kind.size() - 4, 4, "/1.0") == 0)
    {
        setup.schema10 = true;
        kind.resize(kind.size() - 4);
    }
    const std::vector<std::string> parts = Split(kind, ':');
    const std::string& node = parts[0];
    setup.kind = (node == "IntSwissKnife" || node == "IntConverter") ? EFormulaKind_t::Integer : EFormulaKind_t::Float;
    if (parts.size() > 1)
    {
        const bool from = parts[1] == "from";
        setup.inputName = from ? "TO" : "FROM";
        setup.formulaName = from ? "K_ConvertFrom" : "K_ConvertTo";
        const bool integerPValue = parts.size() > 2 && parts[2] == "int";
        if (node == "IntConverter")
            setup.inputIsInteger = true;
        else if (from)
            setup.inputIsInteger = integerPValue; // TO is the pValue's value
        setup.roundToInteger = !from && integerPValue;
    }
    return setup;
}

// Runs one case; returns an empty string on success, else what went wrong.
std::string RunCase(const Case_t& c)
{
    const Setup_t setup = SetupOf(c.kind);
    CFakeFormulaNodes nodes;
    FormulaDefinition_t definition;
    definition.nodeName = "K";
    definition.formulaName = setup.formulaName;
    definition.formula = c.formula;
    definition.kind = setup.kind;
    definition.upperCaseNames = setup.schema10;
    definition.inputName = setup.inputName;
    bool hasInput = false;
    FormulaValue_t input;
    if (c.variables != "-")
    {
        for (const std::string& item : Split(c.variables, ';'))
        {
            const size_t equals = item.find('=');
            std::string name = item.substr(0, equals);
            const std::string value = item.substr(equals + 1);
            if (StartsWith(name, "const:") || StartsWith(name, "expr:"))
            {
                const bool isExpression = StartsWith(name, "expr:");
                definition.symbols.push_back({name.substr(isExpression ? 5 : 6), value, isExpression});
                continue;
            }
            if (name == "TO" || name == "FROM")
            {
                // The probe wires these into converters only; a SwissKnife never declares them.
                if (!setup.inputName.empty())
                {
                    hasInput = true;
                    input = ParseValue(value);
                    if (setup.inputIsInteger && input.isFloat)
                        input = FormulaValue_t::FromInt(static_cast<int64_t>(input.floatValue));
                }
                continue;
            }
            if (value[0] == '@')
            {
                if (!nodes.AddHelperVariable(name.substr(0, name.find('.')), value))
                    return "unknown helper node " + value;
                continue;
            }
            const FormulaValue_t parsed = ParseValue(value);
            nodes.AddVariable(name, parsed.isFloat ? FakeNode_t::Float(parsed.floatValue) : FakeNode_t::Int(parsed.intValue));
        }
    }

    // Expected: the 64-bit library's value where it gives one (it differs from the 32-bit build
    // in hex literals of float formulas and in the last bit of one ROUND).
    std::string expected = c.result;
    if (c.x64 != "n/a" && !StartsWith(c.x64, "error") && !StartsWith(c.x64, "crash"))
        expected = c.x64;

    CFormula formula;
    try
    {
        formula.Compile(definition, [&](const std::string& name, EFormulaKind_t kind) { return nodes.Resolve(name, kind); });
    }
    catch (const GenICam::GenericException& e)
    {
        if (c.when == "load" && expected == std::string("error: ") + e.GetDescription())
            return "";
        return std::string("load failed: ") + e.GetDescription();
    }
    if (c.when == "load")
        return "load succeeded, expected " + expected;

    std::string got;
    try
    {
        const FormulaValue_t* inputPointer = hasInput ? &input : nullptr;
        if (setup.roundToInteger)
            got = std::to_string(CFormula::FloatToIntegerForWrite(formula.EvaluateFloat(nodes, inputPointer)));
        else
        {
            const FormulaValue_t value = formula.Evaluate(nodes, inputPointer);
            if (!value.isFloat)
                got = std::to_string(value.intValue);
            else
            {
                const double expectedValue = std::strtod(expected.c_str(), nullptr);
                if (!StartsWith(expected, "error") &&
                    ((std::isnan(expectedValue) && std::isnan(value.floatValue)) ||
                     (expectedValue == value.floatValue &&
                      std::signbit(expectedValue) == std::signbit(value.floatValue))))
                    return "";
                std::ostringstream text;
                text.precision(17);
                text << value.floatValue;
                got = text.str();
            }
        }
    }
    catch (const GenICam::GenericException& e)
    {
        got = std::string("error: ") + e.GetDescription();
    }
    return got == expected ? "" : "got '" + got + "', expected '" + expected + "'";
}
} // namespace

TEST(FormulaVectors, EveryReferenceCaseGivesTheReferenceResult)
{
    const char* xmlDir = std::getenv("QV_GENICAM_XML_DIR");
    const std::string path = std::string(xmlDir ? xmlDir : "../shared/genicam-xml") + "/vectors/formulas.tsv";
    std::ifstream file(path);
    if (!file)
        GTEST_SKIP() << "formula vectors not found at " << path;
    std::string line;
    std::getline(file, line); // header
    int lineNumber = 1;
    int total = 0;
    int passed = 0;
    while (std::getline(file, line))
    {
        ++lineNumber;
        if (line.empty())
            continue;
        const std::vector<std::string> columns = Split(line, '\t');
        ASSERT_EQ(columns.size(), 6u) << "line " << lineNumber;
        Case_t c{lineNumber, columns[0], columns[1], columns[2], columns[3], columns[4], columns[5]};
        ++total;
        const std::string failure = RunCase(c);
        if (failure.empty())
            ++passed;
        else
            ADD_FAILURE() << "line " << lineNumber << ": " << c.kind << " '" << c.formula << "' [" << c.variables
                          << "]: " << failure;
    }
    std::cout << "[ formulas ] " << passed << " of " << total << " reference cases pass" << std::endl;
    EXPECT_EQ(total, 574);
}
