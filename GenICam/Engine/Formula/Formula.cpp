#include "Engine/Formula/Formula.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <locale.h>
#include <memory>

#include <Base/GCException.h>

#include "Engine/Formula/FormulaCompiler.h"
#include "Engine/Formula/FormulaEvaluator.h"

namespace GenApi
{
namespace Engine
{
namespace
{
bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

std::string Trimmed(const std::string& text)
{
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && IsBlank(text[begin]))
        ++begin;
    while (end > begin && IsBlank(text[end - 1]))
        --end;
    return text.substr(begin, end - begin);
}

// A Constant of an integer formula: decimal or 0x hexadecimal, optionally signed, within int64.
bool ParseIntegerConstant(const std::string& text, int64_t& value)
{
    const std::string trimmed = Trimmed(text);
    size_t i = 0;
    bool negative = false;
    if (i < trimmed.size() && (trimmed[i] == '+' || trimmed[i] == '-'))
        negative = trimmed[i++] == '-';
    unsigned base = 10;
    if (i + 1 < trimmed.size() && trimmed[i] == '0' && (trimmed[i + 1] == 'x' || trimmed[i + 1] == 'X'))
    {
        base = 16;
        i += 2;
    }
    if (i >= trimmed.size())
        return false;
    uint64_t magnitude = 0;
    for (; i < trimmed.size(); ++i)
    {
        const char c = trimmed[i];
        unsigned digit;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned>(c - '0');
        else if (base == 16 && c >= 'a' && c <= 'f')
            digit = static_cast<unsigned>(c - 'a' + 10);
        else if (base == 16 && c >= 'A' && c <= 'F')
            digit = static_cast<unsigned>(c - 'A' + 10);
        else
            return false;
        if (magnitude > (UINT64_MAX - digit) / base)
            return false;
        magnitude = magnitude * base + digit;
    }
    const uint64_t limit = negative ? (uint64_t{1} << 63) : (uint64_t{1} << 63) - 1;
    if (magnitude > limit)
        return false;
    value = negative ? static_cast<int64_t>(0 - magnitude) : static_cast<int64_t>(magnitude);
    return true;
}

// A Constant of a float formula: anything strtod reads completely (C locale).
bool ParseFloatConstant(const std::string& text, double& value)
{
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    const std::string trimmed = Trimmed(text);
    if (trimmed.empty())
        return false;
    char* end = nullptr;
    value = strtod_l(trimmed.c_str(), &end, cLocale);
    return end == trimmed.c_str() + trimmed.size();
}

[[gnu::cold, gnu::noinline, noreturn]] void ThrowBadConstant(const std::string& text, const char* typeName)
{
    throw PROPERTY_EXCEPTION("Error in property of type 'Invalid PropertyID 114': cannot convert '%s' to %s",
                             text.c_str(), typeName);
}

size_t CountSlotLoads(const FormulaProgram_t& program)
{
    size_t count = 0;
    for (const FormulaInstruction_t& instruction : program.code)
        count += instruction.op == EFormulaOp_t::LoadSlot;
    return count;
}

// Appends the slots a program reads (the caller sorts and removes duplicates).
void CollectSlots(const FormulaProgram_t& program, std::vector<int32_t>& slots)
{
    for (const FormulaInstruction_t& instruction : program.code)
        if (instruction.op == EFormulaOp_t::LoadSlot)
            slots.push_back(instruction.index);
}

struct Symbol_t
{
    const std::string* name;
    FormulaInstruction_t load;
};

// What one compilation looks names up in: TO / FROM, then the Constants and Expressions written
// so far (the latest first), then the engine's resolver.
struct LookupContext_t
{
    const std::string* pInputName; // null where the input is not visible (Expressions)
    const std::vector<Symbol_t>* pSymbols;
    FormulaResolveFunction_t pResolve;
    void* pResolveContext;
    EFormulaKind_t kind;
};

bool LookUp(void* pContext, std::string_view name, FormulaInstruction_t& load)
{
    const LookupContext_t& lookup = *static_cast<const LookupContext_t*>(pContext);
    if (lookup.pInputName && name == *lookup.pInputName)
    {
        load.op = EFormulaOp_t::LoadInput;
        return true;
    }
    for (auto symbol = lookup.pSymbols->rbegin(); symbol != lookup.pSymbols->rend(); ++symbol)
        if (*symbol->name == name)
        {
            load = symbol->load;
            return true;
        }
    const int32_t slot = lookup.pResolve ? lookup.pResolve(lookup.pResolveContext, name, lookup.kind) : kUnknownFormulaSlot;
    if (slot < 0)
        return false;
    load.op = EFormulaOp_t::LoadSlot;
    load.index = slot;
    return true;
}

void CompileText(std::string_view text, EFormulaKind_t kind, bool upperCaseNames, LookupContext_t* pLookup,
                 FormulaProgram_t& program, CFormulaCompileCache* pCache)
{
    if (pCache)
        CFormulaCompiler::Compile(text, kind, upperCaseNames, &LookUp, pLookup, program, *pCache);
    else
        CFormulaCompiler::Compile(text, kind, upperCaseNames, &LookUp, pLookup, program);
}

// The std::function resolver behind the plain-function interface.
int32_t ResolveThroughFunction(void* pContext, std::string_view name, EFormulaKind_t kind)
{
    return (*static_cast<const FormulaResolver_t*>(pContext))(std::string(name), kind);
}

// Expression values for one evaluation: on the caller's stack unless a node has very many.
template <typename T>
class CExpressionValues
{
public:
    explicit CExpressionValues(size_t count)
    {
        if (count > kLocal)
        {
            m_heap.reset(new T[count]);
            m_data = m_heap.get();
        }
    }
    T* Get() { return m_data; }

private:
    static constexpr size_t kLocal = 16;
    T m_local[kLocal];
    std::unique_ptr<T[]> m_heap;
    T* m_data = m_local;
};
} // namespace

CFormula::CFormula() = default;
CFormula::~CFormula() = default;
CFormula::CFormula(CFormula&&) noexcept = default;
CFormula& CFormula::operator=(CFormula&&) noexcept = default;

void CFormula::Compile(const FormulaDefinition_t& definition, const FormulaResolver_t& resolver)
{
    Compile(definition, resolver ? &ResolveThroughFunction : nullptr, const_cast<FormulaResolver_t*>(&resolver));
}

void CFormula::Compile(const FormulaDefinition_t& definition, FormulaResolveFunction_t pResolve, void* pContext,
                       CFormulaCompileCache* pCache)
{
    m_compiled = false;
    m_kind = definition.kind;
    m_nodeName = definition.nodeName;
    m_expressions.clear();
    m_neededExpressions.clear();
    m_dependencies.clear();

    // Constants first: a bad integer Constant is a load error, whatever the formula is.
    std::vector<Symbol_t> symbols;
    symbols.reserve(definition.symbols.size());
    for (const FormulaSymbol_t& symbol : definition.symbols)
    {
        if (symbol.isExpression)
            continue;
        int64_t intValue;
        double floatValue;
        if (m_kind == EFormulaKind_t::Integer)
        {
            if (!ParseIntegerConstant(symbol.text, intValue))
                ThrowBadConstant(symbol.text, "int64_t");
        }
        else if (!ParseFloatConstant(symbol.text, floatValue))
            ThrowBadConstant(symbol.text, "double");
    }

    LookupContext_t lookup{nullptr, &symbols, pResolve, pContext, m_kind};

    // Symbols in document order: each Expression sees what was written before it.
    for (const FormulaSymbol_t& symbol : definition.symbols)
    {
        Symbol_t entry;
        entry.name = &symbol.name;
        if (symbol.isExpression)
        {
            m_expressions.emplace_back();
            FormulaProgram_t& expression = m_expressions.back();
            CompileText(symbol.text, m_kind, definition.upperCaseNames, &lookup, expression, pCache);
            expression.text = symbol.text;
            expression.name = "_" + definition.nodeName + "_" + symbol.name;
            entry.load.op = EFormulaOp_t::LoadExpression;
            entry.load.index = static_cast<int32_t>(m_expressions.size() - 1);
        }
        else
        {
            entry.load.op = EFormulaOp_t::PushLiteral;
            if (m_kind == EFormulaKind_t::Integer)
                ParseIntegerConstant(symbol.text, entry.load.intValue);
            else
                ParseFloatConstant(symbol.text, entry.load.floatValue);
        }
        symbols.push_back(entry);
    }

    // Only the main formula sees the converter's TO / FROM.
    lookup.pInputName = definition.inputName.empty() ? nullptr : &definition.inputName;
    CompileText(definition.formula, m_kind, definition.upperCaseNames, &lookup, m_main, pCache);
    m_main.text = definition.formula;
    m_main.name = definition.formulaName.empty() ? definition.nodeName : definition.formulaName;

    // Expressions needed by the main formula: an Expression reads only earlier ones, so one
    // backward pass closes the set.
    std::vector<bool> needed(m_expressions.size(), false);
    m_usesInput = false;
    for (const FormulaInstruction_t& instruction : m_main.code)
    {
        if (instruction.op == EFormulaOp_t::LoadExpression)
            needed[static_cast<size_t>(instruction.index)] = true;
        else if (instruction.op == EFormulaOp_t::LoadInput)
            m_usesInput = true;
    }
    for (size_t k = m_expressions.size(); k-- > 0;)
        if (needed[k])
            for (const FormulaInstruction_t& instruction : m_expressions[k].code)
                if (instruction.op == EFormulaOp_t::LoadExpression)
                    needed[static_cast<size_t>(instruction.index)] = true;
    for (size_t k = 0; k < needed.size(); ++k)
        if (needed[k])
            m_neededExpressions.push_back(static_cast<int32_t>(k));

    size_t loads = CountSlotLoads(m_main);
    for (const FormulaProgram_t& expression : m_expressions)
        loads += CountSlotLoads(expression);
    m_dependencies.reserve(loads);
    CollectSlots(m_main, m_dependencies);
    for (const FormulaProgram_t& expression : m_expressions)
        CollectSlots(expression, m_dependencies);
    std::sort(m_dependencies.begin(), m_dependencies.end());
    m_dependencies.erase(std::unique(m_dependencies.begin(), m_dependencies.end()), m_dependencies.end());
    m_compiled = true;
}

FormulaValue_t CFormula::Evaluate(IFormulaValueSource& source, const FormulaValue_t* input) const
{
    if (QV_UNLIKELY(!m_compiled))
        ThrowNotCompiled();
    if (QV_UNLIKELY(m_main.errorPhase != EFormulaErrorPhase_t::None))
        CFormulaEvaluator::ThrowStoredError(m_main);
    if (m_kind == EFormulaKind_t::Integer)
    {
        CExpressionValues<int64_t> values(m_expressions.size());
        for (int32_t k : m_neededExpressions)
        {
            const FormulaProgram_t& expression = m_expressions[static_cast<size_t>(k)];
            if (QV_UNLIKELY(expression.errorPhase != EFormulaErrorPhase_t::None))
                CFormulaEvaluator::ThrowStoredError(expression);
            values.Get()[k] = CFormulaEvaluator::RunInteger(expression, source, nullptr, values.Get());
        }
        return FormulaValue_t::FromInt(CFormulaEvaluator::RunInteger(m_main, source, input, values.Get()));
    }
    CExpressionValues<double> values(m_expressions.size());
    for (int32_t k : m_neededExpressions)
    {
        const FormulaProgram_t& expression = m_expressions[static_cast<size_t>(k)];
        if (QV_UNLIKELY(expression.errorPhase != EFormulaErrorPhase_t::None))
            CFormulaEvaluator::ThrowStoredError(expression);
        values.Get()[k] = CFormulaEvaluator::RunFloat(expression, source, nullptr, values.Get());
    }
    return FormulaValue_t::FromFloat(CFormulaEvaluator::RunFloat(m_main, source, input, values.Get()));
}

int64_t CFormula::EvaluateInteger(IFormulaValueSource& source, const FormulaValue_t* input) const
{
    const FormulaValue_t value = Evaluate(source, input);
    return value.isFloat ? FloatToIntegerForWrite(value.floatValue) : value.intValue;
}

double CFormula::EvaluateFloat(IFormulaValueSource& source, const FormulaValue_t* input) const
{
    const FormulaValue_t value = Evaluate(source, input);
    return value.isFloat ? value.floatValue : static_cast<double>(value.intValue);
}

bool CFormula::HasParseError() const
{
    return m_compiled && m_main.errorPhase == EFormulaErrorPhase_t::Parse;
}

void CFormula::ThrowIfParseError() const
{
    if (HasParseError())
        CFormulaEvaluator::ThrowStoredError(m_main);
}

void CFormula::ThrowNotCompiled() const
{
    throw LOGICAL_ERROR_EXCEPTION_NODE(m_nodeName.c_str(), "")("The formula has not been compiled.");
}

int64_t CFormula::FloatToIntegerForRead(double value)
{
    // 2^63 itself is out of range; NaN fails both comparisons and is refused too.
    if (QV_UNLIKELY(!(value >= -9223372036854775808.0 && value < 9223372036854775808.0)))
        throw RUNTIME_EXCEPTION("CIntegerPolyRef::GetValue(): Float value %f out of integer range", value);
    // Exact rounding (0.49999999999999994 gives 0), unlike the formula function ROUND().
    return static_cast<int64_t>(std::round(value));
}

int64_t CFormula::FloatToIntegerForWrite(double value)
{
    if (QV_UNLIKELY(!(value >= -9223372036854775808.0 && value < 9223372036854775808.0)))
        throw RUNTIME_EXCEPTION("CIntegerPolyRef::SetValue(): double value outside int64 range");
    return static_cast<int64_t>(std::round(value));
}
} // namespace Engine
} // namespace GenApi
