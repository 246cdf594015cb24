// Rules of the formula language and the CFormula contract beyond the reference vectors.

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <new>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Base/GCException.h>

#include "Engine/Formula/Formula.h"
#include "Engine/Formula/FormulaCompiler.h"
#include "FakeFormulaNodes.h"

using namespace GenApi::Engine;
using FormulaTest::CFakeFormulaNodes;
using FormulaTest::FakeNode_t;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Counts heap allocations so that a test can prove the evaluation path makes none. new and delete
// are replaced as a pair (malloc / free); GCC cannot see the pairing once they are inlined.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
namespace
{
std::atomic<long> g_allocations{0};
}
void* operator new(size_t size)
{
    ++g_allocations;
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept
{
    std::free(memory);
}

namespace
{
class FormulaFixture : public ::testing::Test
{
protected:
    FormulaFixture()
    {
        nodes.AddVariable("A", FakeNode_t::Int(2));
        nodes.AddVariable("B", FakeNode_t::Int(3));
        nodes.AddVariable("C", FakeNode_t::Int(4));
        nodes.AddVariable("F", FakeNode_t::Float(2.5));
    }

    CFormula Compile(const std::string& text, EFormulaKind_t kind = EFormulaKind_t::Integer,
                     std::vector<FormulaSymbol_t> symbols = {}, bool schema10 = false)
    {
        FormulaDefinition_t definition;
        definition.nodeName = "K";
        definition.formula = text;
        definition.kind = kind;
        definition.symbols = std::move(symbols);
        definition.upperCaseNames = schema10;
        CFormula formula;
        formula.Compile(definition, [this](const std::string& name, EFormulaKind_t k) { return nodes.Resolve(name, k); });
        return formula;
    }

    int64_t Integer(const std::string& text, std::vector<FormulaSymbol_t> symbols = {})
    {
        return Compile(text, EFormulaKind_t::Integer, std::move(symbols)).EvaluateInteger(nodes);
    }
    double Float(const std::string& text, std::vector<FormulaSymbol_t> symbols = {})
    {
        return Compile(text, EFormulaKind_t::Float, std::move(symbols)).EvaluateFloat(nodes);
    }
    // The description of the exception an evaluation throws, or "no error".
    std::string ErrorOf(const CFormula& formula, const FormulaValue_t* input = nullptr)
    {
        try
        {
            formula.Evaluate(nodes, input);
        }
        catch (const GenICam::GenericException& e)
        {
            return e.GetDescription();
        }
        return "no error";
    }

    CFakeFormulaNodes nodes;
};

TEST_F(FormulaFixture, BadFormulaCompilesAndFailsAtEveryEvaluation)
{
    const CFormula formula = Compile("A+");
    ASSERT_TRUE(formula.IsCompiled());
    const std::string text = "K : Failed to evaluate formula 'A+' : error message is '#Extra operation!'";
    EXPECT_EQ(ErrorOf(formula), text);
    EXPECT_EQ(ErrorOf(formula), text);
    EXPECT_FALSE(formula.HasParseError());
    EXPECT_NO_THROW(formula.ThrowIfParseError());
}

TEST_F(FormulaFixture, UnknownNameIsAParseErrorThrownAsLogicalErrorOfTheNode)
{
    const CFormula formula = Compile("A+Q");
    EXPECT_TRUE(formula.HasParseError());
    try
    {
        formula.ThrowIfParseError();
        FAIL() << "no exception";
    }
    catch (const GenICam::LogicalErrorException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "K : Failed to parse formula 'A+Q' : error message is '# Q - Unknown function/variable!'");
        EXPECT_STREQ(e.GetNodeName(), "K");
        EXPECT_THAT(e.what(), HasSubstr("LogicalErrorException thrown in node 'K'"));
    }
    EXPECT_THROW(formula.EvaluateInteger(nodes), GenICam::LogicalErrorException);
}

TEST_F(FormulaFixture, ValuesAreReadAtEveryEvaluation)
{
    const CFormula formula = Compile("A*10+B");
    EXPECT_EQ(formula.EvaluateInteger(nodes), 23);
    nodes.SetValue("A", FormulaValue_t::FromInt(7));
    EXPECT_EQ(formula.EvaluateInteger(nodes), 73);
    nodes.SetValue("A", FormulaValue_t::FromFloat(-1.5)); // rounded half away from zero
    EXPECT_EQ(formula.EvaluateInteger(nodes), -17);
}

TEST_F(FormulaFixture, DependenciesListEverySlotOnceIncludingExpressions)
{
    const CFormula formula = Compile("A+X+A", EFormulaKind_t::Integer, {{"X", "B*C", true}, {"Y", "C", true}});
    // The fake numbers slots in resolution order: Expressions first (B 0, C 1), then A 2.
    EXPECT_THAT(formula.GetDependencies(), ElementsAre(0, 1, 2));
    EXPECT_EQ(formula.EvaluateInteger(nodes), 16);
    EXPECT_FALSE(formula.UsesInput());
}

TEST_F(FormulaFixture, DependenciesAreEmptyForALiteralFormula)
{
    EXPECT_TRUE(Compile("1+2").GetDependencies().empty());
    EXPECT_TRUE(Compile("A+Q").GetDependencies().empty()) << "a formula that failed to parse reads nothing";
}

TEST_F(FormulaFixture, ValueSourceExceptionsPassThroughUnchanged)
{
    nodes.AddHelperVariable("S", "@EN");
    const CFormula formula = Compile("1+S.Entry.Missing");
    try
    {
        formula.EvaluateInteger(nodes);
        FAIL() << "no exception";
    }
    catch (const GenICam::RuntimeException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "Variable 'S.Entry.Missing' does not point to EnumEntry 'Missing'");
    }
}

TEST_F(FormulaFixture, ExpressionErrorsNameTheExpression)
{
    EXPECT_EQ(ErrorOf(Compile("X", EFormulaKind_t::Integer, {{"X", "A/(B-3)", true}})),
              "_K_X : Failed to evaluate formula 'A/(B-3)' : error message is '#Infinity somewhere!'");
    EXPECT_EQ(ErrorOf(Compile("X+1", EFormulaKind_t::Float, {{"X", "A+", true}})),
              "_K_X : Failed to evaluate formula 'A+' : error message is '#Extra operation!'");
}

TEST_F(FormulaFixture, MainFormulaErrorsComeBeforeExpressionErrors)
{
    EXPECT_EQ(ErrorOf(Compile("X+", EFormulaKind_t::Integer, {{"X", "Q", true}})),
              "K : Failed to evaluate formula 'X+' : error message is '#Extra operation!'");
}

TEST_F(FormulaFixture, UnusedExpressionIsNeitherEvaluatedNorReported)
{
    // Expressions behave as hidden nodes evaluated when read; one nobody reads never fails.
    EXPECT_EQ(Integer("A+1", {{"Bad", "1/0", true}, {"Unknown", "Q", true}}), 3);
}

TEST_F(FormulaFixture, ExpressionsChainAndReadConstants)
{
    EXPECT_EQ(Integer("Z", {{"K1", "0x10", false}, {"X", "A+K1", true}, {"Y", "X*2", true}, {"Z", "Y-X", true}}), 18);
    EXPECT_DOUBLE_EQ(Float("X*2", {{"Half", " 0.5 ", false}, {"X", "A*Half", true}}), 2.0);
}

TEST_F(FormulaFixture, ManyExpressionsEvaluateInDocumentOrder)
{
    std::vector<FormulaSymbol_t> symbols{{"X0", "A", true}};
    for (int i = 1; i < 40; ++i)
        symbols.push_back({"X" + std::to_string(i), "X" + std::to_string(i - 1) + "+1", true});
    EXPECT_EQ(Integer("X39", symbols), 41);
}

TEST_F(FormulaFixture, IntegerConstantThatIsNotAnIntegerIsALoadError)
{
    for (const char* text : {"1.25", "abc", "", "99999999999999999999", "0x"})
    {
        try
        {
            Compile("K1", EFormulaKind_t::Integer, {{"K1", text, false}});
            ADD_FAILURE() << "'" << text << "' was accepted";
        }
        catch (const GenICam::PropertyException& e)
        {
            EXPECT_EQ(e.GetDescription(),
                      std::string("Error in property of type 'Invalid PropertyID 114': cannot convert '") + text +
                          "' to int64_t");
        }
    }
    EXPECT_EQ(Integer("K1", {{"K1", "-9223372036854775808", false}}), INT64_MIN);
    EXPECT_EQ(Integer("K1", {{"K1", "+0x7f", false}}), 127);
}

TEST_F(FormulaFixture, ConverterInputIsVisibleToTheMainFormulaOnly)
{
    FormulaDefinition_t definition;
    definition.nodeName = "K";
    definition.formulaName = "K_ConvertTo";
    definition.formula = "FROM*2+X";
    definition.kind = EFormulaKind_t::Float;
    definition.inputName = "FROM";
    definition.symbols = {{"X", "A", true}};
    CFormula formula;
    formula.Compile(definition, [this](const std::string& name, EFormulaKind_t k) { return nodes.Resolve(name, k); });
    EXPECT_TRUE(formula.UsesInput());
    const FormulaValue_t input = FormulaValue_t::FromInt(5);
    EXPECT_DOUBLE_EQ(formula.EvaluateFloat(nodes, &input), 12.0);
    EXPECT_THROW(formula.EvaluateFloat(nodes), GenICam::LogicalErrorException) << "input missing";

    definition.symbols = {{"X", "FROM", true}};
    formula.Compile(definition, [this](const std::string& name, EFormulaKind_t k) { return nodes.Resolve(name, k); });
    EXPECT_EQ(ErrorOf(formula, &input),
              "_K_X : Failed to parse formula 'FROM' : error message is '# FROM - Unknown function/variable!'");
}

TEST_F(FormulaFixture, Schema10UpperCasesNamesInExpressionsToo)
{
    nodes.AddVariable("LOW", FakeNode_t::Int(5));
    const CFormula formula = Compile("x", EFormulaKind_t::Integer, {{"X", "low+0x1", true}}, true);
    EXPECT_EQ(formula.EvaluateInteger(nodes), 6);
    EXPECT_EQ(ErrorOf(Compile("k1", EFormulaKind_t::Integer, {{"k1", "1", false}}, true)),
              "K : Failed to parse formula 'k1' : error message is '# K1 - Unknown function/variable!'");
}

TEST_F(FormulaFixture, FloatToIntegerConversionsRoundHalfAwayAndRefuseOutOfRange)
{
    EXPECT_EQ(CFormula::FloatToIntegerForRead(2.5), 3);
    EXPECT_EQ(CFormula::FloatToIntegerForRead(-2.5), -3);
    EXPECT_EQ(CFormula::FloatToIntegerForRead(0.49999999999999994), 0);
    EXPECT_EQ(CFormula::FloatToIntegerForRead(-9223372036854775808.0), INT64_MIN);
    EXPECT_EQ(CFormula::FloatToIntegerForWrite(9223372036854774784.0), 9223372036854774784);
    try
    {
        CFormula::FloatToIntegerForRead(9223372036854775808.0);
        FAIL() << "2^63 accepted";
    }
    catch (const GenICam::RuntimeException& e)
    {
        EXPECT_STREQ(e.GetDescription(),
                     "CIntegerPolyRef::GetValue(): Float value 9223372036854775808.000000 out of integer range");
    }
    EXPECT_THROW(CFormula::FloatToIntegerForRead(NAN), GenICam::RuntimeException);
    EXPECT_THROW(CFormula::FloatToIntegerForWrite(-1e300), GenICam::RuntimeException);
    EXPECT_THROW(CFormula::FloatToIntegerForWrite(INFINITY), GenICam::RuntimeException);
}

TEST_F(FormulaFixture, IntegerPowerIsExactOrInt64Min)
{
    EXPECT_EQ(Integer("(0-2)**63"), INT64_MIN);
    EXPECT_EQ(Integer("(0-3)**39"), -4052555153018976267);
    EXPECT_EQ(Integer("(0-3)**40"), INT64_MIN);
    EXPECT_EQ(Integer("3**41"), INT64_MIN);
    EXPECT_EQ(Integer("7**22"), 3909821048582988049);
    EXPECT_EQ(Integer("1**-5"), 1);
    EXPECT_EQ(Integer("(0-1)**-3"), -1);
    EXPECT_EQ(Integer("(0-1)**-4"), 1);
    EXPECT_EQ(Integer("0**-1"), INT64_MIN);
    EXPECT_EQ(Integer("0**0"), 1);
    EXPECT_EQ(Integer("2**9223372036854775807"), INT64_MIN);
    EXPECT_EQ(Integer("1**9223372036854775807"), 1);
}

TEST_F(FormulaFixture, IntegerArithmeticWrapsInsteadOfTrapping)
{
    EXPECT_EQ(Integer("0-0x7FFFFFFFFFFFFFFF-3"), INT64_MAX - 1);
    EXPECT_EQ(Integer("(0-0x7FFFFFFFFFFFFFFF-1)*(0-1)"), INT64_MIN);
    EXPECT_EQ(Integer("NEG(0-0x7FFFFFFFFFFFFFFF-1)"), INT64_MIN);
    EXPECT_EQ(Integer("(0-0x7FFFFFFFFFFFFFFF-1)/(0-1)"), INT64_MIN);
    EXPECT_EQ(Integer("(0-0x7FFFFFFFFFFFFFFF-1)%(0-1)"), 0);
    EXPECT_EQ(Integer("1<<(0-64)"), 1);
}

TEST_F(FormulaFixture, LooseMinusStopsAtTheFunctionArgumentSeparator)
{
    // "-(" negates up to the end of the enclosing bracket; a parameter list ends it at ','.
    EXPECT_DOUBLE_EQ(Float("ROUND(-(A)+1,0)+1"), -2.0);
    EXPECT_DOUBLE_EQ(Float("ROUND(-(A)+0.25,1)"), -2.3);
}

TEST_F(FormulaFixture, FloatBitOperationsUseThirtyTwoBitsForVariablesToo)
{
    EXPECT_DOUBLE_EQ(Float("F|0"), 2.0);
    EXPECT_DOUBLE_EQ(Float("~F"), -3.0);
    EXPECT_DOUBLE_EQ(Float("(0-1)>>40"), -1.0);
    EXPECT_EQ(ErrorOf(Compile("(F*1e9)&1", EFormulaKind_t::Float)),
              "K : Failed to evaluate formula '(F*1e9)&1' : error message is '#Value too big for operation!'");
}

TEST_F(FormulaFixture, DeeplyNestedFormulaEvaluates)
{
    std::string text;
    for (int i = 0; i < 500; ++i)
        text += "(1+";
    text += "A";
    for (int i = 0; i < 500; ++i)
        text += ")";
    EXPECT_EQ(Integer(text), 502);
    std::string chain = "A";
    for (int i = 0; i < 300; ++i)
        chain = "B-(" + chain + ")";
    EXPECT_DOUBLE_EQ(Float(chain), 2.0);
}

TEST_F(FormulaFixture, TernaryNeedsItsElseAndLeavesNoneBehind)
{
    EXPECT_EQ(ErrorOf(Compile("A?B")), "K : Failed to evaluate formula 'A?B' : error message is '#Invalid formula'");
    EXPECT_EQ(ErrorOf(Compile("(A:B)")),
              "K : Failed to evaluate formula '(A:B)' : error message is '#Logical expression error!'");
    EXPECT_EQ(Integer("A?(B?C:1):2"), 4);
    EXPECT_EQ(Integer("(A=3?B:C)*10"), 40);
}

TEST_F(FormulaFixture, MessagesOfStrayTextAreNotTruncated)
{
    const std::string longName(400, 'Q');
    EXPECT_EQ(ErrorOf(Compile(longName)),
              "K : Failed to parse formula '" + longName + "' : error message is '# " + longName +
                  " - Unknown function/variable!'");
}

TEST_F(FormulaFixture, EvaluationAllocatesNothing)
{
    const CFormula integer = Compile("A>B?X:Y*C<<1", EFormulaKind_t::Integer, {{"X", "A+1", true}, {"Y", "B*2", true}});
    const CFormula floating = Compile("SQRT(F*F)+ROUND(F,1)+(F|3)", EFormulaKind_t::Float);
    int64_t sum = 0;
    const long before = g_allocations.load();
    for (int i = 0; i < 100; ++i)
        sum += integer.EvaluateInteger(nodes) + static_cast<int64_t>(floating.EvaluateFloat(nodes));
    EXPECT_EQ(g_allocations.load(), before);
    EXPECT_EQ(sum, 100 * (48 + 8));
}

TEST_F(FormulaFixture, UncompiledFormulaRefusesToEvaluate)
{
    const CFormula formula;
    EXPECT_FALSE(formula.IsCompiled());
    EXPECT_THROW(formula.Evaluate(nodes), GenICam::LogicalErrorException);
}
} // namespace

TEST_F(FormulaFixture, PlainFunctionResolverAsksForTheSameNames)
{
    // The engine's resolver: a function and a context instead of a std::function.
    struct Context_t
    {
        CFakeFormulaNodes* pNodes;
        std::vector<std::string> asked;
    } context{&nodes, {}};
    const auto resolve = [](void* pContext, std::string_view name, EFormulaKind_t kind) {
        Context_t& c = *static_cast<Context_t*>(pContext);
        c.asked.emplace_back(name);
        return c.pNodes->Resolve(std::string(name), kind);
    };
    FormulaDefinition_t definition;
    definition.nodeName = "K";
    definition.formula = "a + B*SGN(c) + LongVariableNameWellBeyondSixtyFourCharactersSoThatItNeedsTheHeapCopy";
    definition.upperCaseNames = true;
    nodes.AddVariable("LONGVARIABLENAMEWELLBEYONDSIXTYFOURCHARACTERSSOTHATITNEEDSTHEHEAPCOPY", FakeNode_t::Int(10));
    CFormula formula;
    formula.Compile(definition, resolve, &context);
    EXPECT_EQ(formula.EvaluateInteger(nodes), 2 + 3 * 1 + 10);
    EXPECT_THAT(context.asked, ElementsAre("A", "B", "C", "LONGVARIABLENAMEWELLBEYONDSIXTYFOURCHARACTERSSOTHATITNEEDSTHEHEAPCOPY"));

    // No resolver: every variable is unknown, literals still work.
    CFormula literal;
    definition.formula = "2*3";
    literal.Compile(definition, nullptr, nullptr);
    EXPECT_EQ(literal.EvaluateInteger(nodes), 6);
    definition.formula = "2*A";
    literal.Compile(definition, nullptr, nullptr);
    EXPECT_EQ(ErrorOf(literal), "K : Failed to parse formula '2*A' : error message is '# A - Unknown function/variable!'");
}

TEST_F(FormulaFixture, CompileCacheGivesWhatAFreshCompilationGives)
{
    // One cache across "nodes" that bind different variables: what a text compiles to must come
    // out the same as without the cache, errors and their order included.
    CFakeFormulaNodes other;
    other.AddVariable("A", FakeNode_t::Int(7));
    other.AddVariable("Z", FakeNode_t::Int(1));
    const auto resolve = [](void* pContext, std::string_view name, EFormulaKind_t kind) {
        return static_cast<CFakeFormulaNodes*>(pContext)->Resolve(std::string(name), kind);
    };
    const auto outcome = [&](CFakeFormulaNodes& source, const std::string& text, EFormulaKind_t kind, bool schema10,
                             CFormulaCompileCache* pCache) {
        FormulaDefinition_t definition;
        definition.nodeName = "K";
        definition.formula = text;
        definition.kind = kind;
        definition.upperCaseNames = schema10;
        definition.symbols = {{"X", "A*2", true}, {"C1", "3", false}};
        CFormula formula;
        formula.Compile(definition, resolve, &source, pCache);
        try
        {
            const FormulaValue_t value = formula.Evaluate(source);
            return value.isFloat ? std::to_string(value.floatValue) : std::to_string(value.intValue);
        }
        catch (const GenICam::GenericException& e)
        {
            return std::string(e.GetDescription());
        }
    };
    const std::vector<std::string> texts = {
        "A+B",     "A+Z",       "(A+B",         "A+)",     "Q+(A",  "B+(A", "A $ B",   "SGN(A, B)", "A+",
        "X+C1+B",  "a+b",       "A*A+A/A+B*B",  "1.5+A",   "PI*A",  "A#B",  "",        "Z ? A : B", "(A=1)?B:Z",
        "ROUND(A, 2)", "ABS(B)", "0x10+A",      "A/(B-3)",
    };
    CFormulaCompileCache cache;
    for (int pass = 0; pass < 2; ++pass)
        for (const std::string& text : texts)
            for (EFormulaKind_t kind : {EFormulaKind_t::Integer, EFormulaKind_t::Float})
                for (bool schema10 : {false, true})
                    for (CFakeFormulaNodes* pSource : {&nodes, &other})
                        EXPECT_EQ(outcome(*pSource, text, kind, schema10, &cache),
                                  outcome(*pSource, text, kind, schema10, nullptr))
                            << "'" << text << "' " << (kind == EFormulaKind_t::Float ? "float" : "integer")
                            << (schema10 ? " schema 1.0" : "") << (pSource == &nodes ? " A,B,C,F" : " A,Z");
    // Every distinct text, each arithmetic and case: main formulas plus the two Expression texts.
    EXPECT_EQ(cache.Size(), (texts.size() + 1) * 4);
}
