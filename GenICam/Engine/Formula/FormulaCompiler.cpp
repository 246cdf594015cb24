#include "Engine/Formula/FormulaCompiler.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale.h>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace GenApi
{
namespace Engine
{
namespace
{
constexpr const char* kSyntaxError = "#Syntax error!";
constexpr const char* kExtraOperation = "#Extra operation!";
constexpr const char* kInvalidFormula = "#Invalid formula";
constexpr const char* kBracketsError = "#Brackets do not match!";
constexpr const char* kLogicalError = "#Logical expression error!";
constexpr const char* kInternalError = "#Internal error!";
constexpr const char* kParameterCount = "#Invalid parameters count for function call!";

// Binary priorities, highest first; equal levels group left to right.
constexpr int kPrefixTight = 6; // '~' and a sign written before a number or a name
constexpr int kPrefixLoose = 0; // a '-' before '(' or a function: negates up to the closing bracket

int BinaryPriority(EFormulaOp_t op)
{
    switch (op)
    {
    case EFormulaOp_t::Power:
    case EFormulaOp_t::ShiftLeft:
    case EFormulaOp_t::ShiftRight:
    case EFormulaOp_t::BitAnd:
    case EFormulaOp_t::BitOr:
    case EFormulaOp_t::BitXor:
        return 5;
    case EFormulaOp_t::Multiply:
    case EFormulaOp_t::Divide:
    case EFormulaOp_t::Remainder:
        return 4;
    case EFormulaOp_t::Add:
    case EFormulaOp_t::Subtract:
        return 3;
    case EFormulaOp_t::Select:
        return 1;
    default: // comparisons, && || and ':'
        return 2;
    }
}

struct FunctionInfo_t
{
    const char* name;
    EFormulaOp_t op;
    uint8_t maxArguments; // 1, or 2 for ROUND
    bool integerToo;      // also known to integer formulas
};

constexpr FunctionInfo_t kFunctions[] = {
    {"SGN", EFormulaOp_t::Sgn, 1, true},      {"NEG", EFormulaOp_t::Negate, 1, true},
    {"ABS", EFormulaOp_t::Abs, 1, false},     {"SQRT", EFormulaOp_t::Sqrt, 1, false},
    {"EXP", EFormulaOp_t::Exp, 1, false},     {"LN", EFormulaOp_t::Ln, 1, false},
    {"LG", EFormulaOp_t::Lg, 1, false},       {"SIN", EFormulaOp_t::Sin, 1, false},
    {"COS", EFormulaOp_t::Cos, 1, false},     {"TAN", EFormulaOp_t::Tan, 1, false},
    {"ASIN", EFormulaOp_t::Asin, 1, false},   {"ACOS", EFormulaOp_t::Acos, 1, false},
    {"ATAN", EFormulaOp_t::Atan, 1, false},   {"TRUNC", EFormulaOp_t::Trunc, 1, false},
    {"FLOOR", EFormulaOp_t::Floor, 1, false}, {"CEIL", EFormulaOp_t::Ceil, 1, false},
    {"ROUND", EFormulaOp_t::Round, 2, false}, {"FRAC", EFormulaOp_t::Frac, 1, false},
};

bool EqualsIgnoringCase(std::string_view text, const char* upper)
{
    size_t i = 0;
    for (; i < text.size() && upper[i]; ++i)
    {
        char c = text[i];
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
        if (c != upper[i])
            return false;
    }
    return i == text.size() && upper[i] == '\0';
}

// Up to eight letters of a name, upper-cased, packed into one word (0 when the name is longer or
// holds anything but letters), so that a name is compared with a function name in one step.
constexpr uint64_t PackUpper(std::string_view name)
{
    if (name.empty() || name.size() > 8)
        return 0;
    uint64_t packed = 0;
    for (char c : name)
    {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
        else if (c < 'A' || c > 'Z')
            return 0;
        packed = (packed << 8) | static_cast<unsigned char>(c);
    }
    return packed;
}

const FunctionInfo_t* FindFunction(std::string_view name, EFormulaKind_t kind)
{
    // Function names have two to five letters; most variable names are skipped right here.
    if (name.size() < 2 || name.size() > 5)
        return nullptr;
    static const struct PackedNames_t
    {
        uint64_t packed[sizeof(kFunctions) / sizeof(kFunctions[0])];
        PackedNames_t()
        {
            for (size_t i = 0; i < sizeof(kFunctions) / sizeof(kFunctions[0]); ++i)
                packed[i] = PackUpper(kFunctions[i].name);
        }
    } table;
    const uint64_t packed = PackUpper(name);
    if (packed == 0)
        return nullptr;
    for (size_t i = 0; i < sizeof(kFunctions) / sizeof(kFunctions[0]); ++i)
        if (table.packed[i] == packed && (kFunctions[i].integerToo || kind == EFormulaKind_t::Float))
            return &kFunctions[i];
    return nullptr;
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}
bool IsHexDigit(char c)
{
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool IsNameStart(char c)
{
    return IsLetter(c) || c == '_' || c == '.';
}
bool IsNameChar(char c)
{
    return IsNameStart(c) || IsDigit(c);
}
bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}
int HexDigitValue(char c)
{
    if (IsDigit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c - 'A' + 10;
}

// Accumulates digits into an int64 that saturates at INT64_MAX, as strtoll does.
struct SaturatingInt64_t
{
    uint64_t value = 0;
    void Append(unsigned digit, unsigned base)
    {
        constexpr uint64_t kMax = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
        if (value > (kMax - digit) / base)
            value = kMax;
        else
            value = value * base + digit;
    }
    int64_t Get() const { return static_cast<int64_t>(value); }
};

// strtod in the C locale whatever the application's locale is.
double ParseDecimalDouble(const char* begin, size_t length)
{
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    char local[128];
    std::string heap;
    const char* text;
    if (length < sizeof(local))
    {
        std::memcpy(local, begin, length);
        local[length] = '\0';
        text = local;
    }
    else
    {
        heap.assign(begin, length);
        text = heap.c_str();
    }
    return strtod_l(text, nullptr, cLocale);
}

enum class ETokenKind_t : uint8_t
{
    Operand,
    Function,
    Operator,
    LeftParen,
    RightParen,
    Comma
};

struct Token_t
{
    ETokenKind_t kind;
    EFormulaOp_t op = EFormulaOp_t::Invalid; // Operator: the binary meaning; Function: the function
    uint8_t maxArguments = 1;                // Function
    FormulaInstruction_t load;               // Operand
};

enum class EEntryKind_t : uint8_t
{
    Operator, // binary or prefix, popped by priority
    LeftParen,
    Call // a function's '(' (the function itself before the '(' arrives)
};

struct StackEntry_t
{
    EEntryKind_t kind;
    EFormulaOp_t op;
    int priority;
    uint8_t maxArguments;
    uint32_t arguments;
};

/// Working storage of one compilation, kept per thread so that a load of a thousand formulas
/// does not grow fresh vectors for each.
struct Scratch_t
{
    std::vector<Token_t> tokens;
    std::vector<StackEntry_t> stack;
    std::string upperName; // a long name token upper-cased for a schema-1.0 lookup
    bool inUse = false;    // a compilation started from a lookup callback gets its own
};

class CCompilation
{
public:
    CCompilation(std::string_view text, EFormulaKind_t kind, bool upperCaseNames, CFormulaCompiler::NameLookup_t lookup,
                 void* pLookupContext, FormulaProgram_t& program, Scratch_t& scratch)
        : m_text(text), m_kind(kind), m_upperCaseNames(upperCaseNames), m_lookup(lookup),
          m_pLookupContext(pLookupContext), m_program(program), m_tokens(scratch.tokens), m_stack(scratch.stack),
          m_upperName(scratch.upperName)
    {
        m_tokens.clear();
        m_stack.clear();
    }

    void Run()
    {
        if (!Lex())
            return;
        if (!Structure())
            return;
        CheckStack();
    }

private:
    bool FailParse(std::string message)
    {
        m_program.errorPhase = EFormulaErrorPhase_t::Parse;
        m_program.errorMessage = std::move(message);
        m_program.code.clear();
        return false;
    }
    bool FailEvaluate(const char* message)
    {
        m_program.errorPhase = EFormulaErrorPhase_t::Evaluate;
        m_program.errorMessage = message;
        m_program.code.clear();
        return false;
    }

    // ---- Lexer -----------------------------------------------------------------------------

    bool Lex()
    {
        const size_t length = m_text.size();
        int depth = 0;
        size_t i = 0;
        while (i < length)
        {
            const char c = m_text[i];
            if (IsSpace(c))
            {
                ++i;
                continue;
            }
            if (IsDigit(c))
            {
                i = LexNumber(i);
                continue;
            }
            if (IsNameStart(c))
            {
                size_t end = i;
                while (end < length && IsNameChar(m_text[end]))
                    ++end;
                if (!LexName(m_text.substr(i, end - i)))
                    return false;
                i = end;
                continue;
            }
            const char next = i + 1 < length ? m_text[i + 1] : '\0';
            Token_t token;
            token.kind = ETokenKind_t::Operator;
            size_t width = 1;
            switch (c)
            {
            case '(':
                token.kind = ETokenKind_t::LeftParen;
                ++depth;
                break;
            case ')':
                token.kind = ETokenKind_t::RightParen;
                if (--depth < 0)
                    return FailParse(kBracketsError);
                break;
            case ',':
                token.kind = ETokenKind_t::Comma;
                break;
            case '+':
                token.op = EFormulaOp_t::Add;
                break;
            case '-':
                token.op = EFormulaOp_t::Subtract;
                break;
            case '*':
                token.op = next == '*' ? EFormulaOp_t::Power : EFormulaOp_t::Multiply;
                break;
            case '/':
                token.op = EFormulaOp_t::Divide;
                break;
            case '%':
                token.op = EFormulaOp_t::Remainder;
                break;
            case '&':
                token.op = next == '&' ? EFormulaOp_t::LogicalAnd : EFormulaOp_t::BitAnd;
                break;
            case '|':
                token.op = next == '|' ? EFormulaOp_t::LogicalOr : EFormulaOp_t::BitOr;
                break;
            case '^':
                token.op = EFormulaOp_t::BitXor;
                break;
            case '~':
                token.op = EFormulaOp_t::BitNot;
                break;
            case '=':
                token.op = EFormulaOp_t::Equal;
                break;
            case '<':
                token.op = next == '<'   ? EFormulaOp_t::ShiftLeft
                           : next == '>' ? EFormulaOp_t::NotEqual
                           : next == '=' ? EFormulaOp_t::LessEqual
                                         : EFormulaOp_t::Less;
                break;
            case '>':
                token.op = next == '>'   ? EFormulaOp_t::ShiftRight
                           : next == '=' ? EFormulaOp_t::GreaterEqual
                                         : EFormulaOp_t::Greater;
                break;
            case '?':
                token.op = EFormulaOp_t::Select;
                break;
            case ':':
                token.op = EFormulaOp_t::Else;
                break;
            case '$':
                token.op = EFormulaOp_t::Invalid;
                break;
            default:
                return FailParse(kSyntaxError);
            }
            if (token.kind == ETokenKind_t::Operator)
            {
                switch (token.op)
                {
                case EFormulaOp_t::Power:
                case EFormulaOp_t::LogicalAnd:
                case EFormulaOp_t::LogicalOr:
                case EFormulaOp_t::ShiftLeft:
                case EFormulaOp_t::ShiftRight:
                case EFormulaOp_t::NotEqual:
                case EFormulaOp_t::LessEqual:
                case EFormulaOp_t::GreaterEqual:
                    width = 2;
                    break;
                default:
                    break;
                }
            }
            m_tokens.push_back(token);
            i += width;
        }
        if (depth != 0)
            return FailParse(kBracketsError);
        if (m_tokens.empty())
            return FailParse(kInvalidFormula);
        // Every token emits at most one instruction.
        m_program.code.reserve(m_tokens.size());
        return true;
    }

    size_t LexNumber(size_t begin)
    {
        const size_t length = m_text.size();
        const char* text = m_text.data();
        Token_t token;
        token.kind = ETokenKind_t::Operand;
        token.load.op = EFormulaOp_t::PushLiteral;
        size_t i = begin;
        const bool floatKind = m_kind == EFormulaKind_t::Float;
        const bool hexPrefix = text[i] == '0' && i + 2 < length &&
                               (text[i + 1] == 'x' || (floatKind && text[i + 1] == 'X')) &&
                               IsHexDigit(text[i + 2]);
        if (hexPrefix)
        {
            SaturatingInt64_t value;
            for (i += 2; i < length && IsHexDigit(text[i]); ++i)
                value.Append(static_cast<unsigned>(HexDigitValue(text[i])), 16);
            if (floatKind) // a 32-bit integer: keep the low 32 bits of the saturated value
                token.load.floatValue = static_cast<double>(static_cast<int32_t>(static_cast<uint32_t>(value.value)));
            else
                token.load.intValue = value.Get();
        }
        else if (!floatKind)
        {
            SaturatingInt64_t value;
            for (; i < length && IsDigit(text[i]); ++i)
                value.Append(static_cast<unsigned>(text[i] - '0'), 10);
            token.load.intValue = value.Get();
        }
        else
        {
            while (i < length && IsDigit(text[i]))
                ++i;
            if (i < length && text[i] == '.')
                for (++i; i < length && IsDigit(text[i]); ++i)
                {
                }
            if (i < length && (text[i] == 'e' || text[i] == 'E'))
            {
                size_t exponent = i + 1;
                if (exponent < length && (text[exponent] == '+' || text[exponent] == '-'))
                    ++exponent;
                if (exponent < length && IsDigit(text[exponent]))
                {
                    i = exponent;
                    while (i < length && IsDigit(text[i]))
                        ++i;
                }
            }
            token.load.floatValue = ParseDecimalDouble(text + begin, i - begin);
        }
        m_tokens.push_back(token);
        return i;
    }

    bool LexName(std::string_view name)
    {
        char upper[64];
        if (m_upperCaseNames)
        {
            char* pUpper = upper;
            if (name.size() > sizeof(upper))
            {
                m_upperName.resize(name.size());
                pUpper = &m_upperName[0];
            }
            for (size_t i = 0; i < name.size(); ++i)
            {
                const char c = name[i];
                pUpper[i] = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
            }
            name = std::string_view(pUpper, name.size());
        }
        Token_t token;
        if (const FunctionInfo_t* function = FindFunction(name, m_kind))
        {
            token.kind = ETokenKind_t::Function;
            token.op = function->op;
            token.maxArguments = function->maxArguments;
            m_tokens.push_back(token);
            return true;
        }
        token.kind = ETokenKind_t::Operand;
        if (m_kind == EFormulaKind_t::Float && (EqualsIgnoringCase(name, "PI") || EqualsIgnoringCase(name, "E")))
        {
            token.load.op = EFormulaOp_t::PushLiteral;
            token.load.floatValue = name.size() == 2 ? 3.141592653589793 : 2.718281828459045;
            m_tokens.push_back(token);
            return true;
        }
        if (!m_lookup || !m_lookup(m_pLookupContext, name, token.load))
            return FailParse("# " + std::string(name) + " - Unknown function/variable!");
        m_tokens.push_back(token);
        return true;
    }

    // ---- Structure: signs, precedence, calls -----------------------------------------------

    enum class EPrevious_t : uint8_t
    {
        Start,
        Operand,
        RightParen,
        Function,
        Binary,
        BinaryPlusMinus,
        Sign,
        Tilde,
        LeftParen,
        Comma
    };

    void Emit(EFormulaOp_t op)
    {
        FormulaInstruction_t instruction;
        instruction.op = op;
        m_program.code.push_back(instruction);
    }

    // Pops operators down to the innermost bracket (or the bottom) whose priority is >= floor.
    void PopOperators(int floor)
    {
        while (!m_stack.empty() && m_stack.back().kind == EEntryKind_t::Operator &&
               m_stack.back().priority >= floor)
        {
            Emit(m_stack.back().op);
            m_stack.pop_back();
        }
    }

    static bool EndsOperand(EPrevious_t previous)
    {
        return previous == EPrevious_t::Operand || previous == EPrevious_t::RightParen;
    }

    bool Structure()
    {
        EPrevious_t previous = EPrevious_t::Start;
        for (size_t i = 0; i < m_tokens.size(); ++i)
        {
            const Token_t& token = m_tokens[i];
            switch (token.kind)
            {
            case ETokenKind_t::Operand:
                if (EndsOperand(previous))
                    return FailEvaluate(kInvalidFormula);
                if (previous == EPrevious_t::Function)
                    return FailEvaluate(kExtraOperation);
                m_program.code.push_back(token.load);
                previous = EPrevious_t::Operand;
                break;

            case ETokenKind_t::Function:
                if (EndsOperand(previous))
                    return FailEvaluate(kInvalidFormula);
                if (previous == EPrevious_t::Function)
                    return FailEvaluate(kExtraOperation);
                m_stack.push_back({EEntryKind_t::Call, token.op, 0, token.maxArguments, 0});
                previous = EPrevious_t::Function;
                break;

            case ETokenKind_t::Operator:
                if (!HandleOperator(i, previous))
                    return false;
                break;

            case ETokenKind_t::LeftParen:
                if (previous == EPrevious_t::Operand)
                    return FailEvaluate(kInvalidFormula);
                if (previous == EPrevious_t::RightParen)
                    return FailEvaluate(kInternalError);
                if (previous != EPrevious_t::Function) // a call's entry is already on the stack
                    m_stack.push_back({EEntryKind_t::LeftParen, EFormulaOp_t::Invalid, 0, 0, 0});
                previous = EPrevious_t::LeftParen;
                break;

            case ETokenKind_t::RightParen:
            {
                if (previous == EPrevious_t::LeftParen)
                    return FailEvaluate(kInvalidFormula);
                if (!EndsOperand(previous))
                    return FailEvaluate(kExtraOperation);
                PopOperators(std::numeric_limits<int>::min());
                // The lexer balanced the brackets, so an opening entry is there.
                const StackEntry_t open = m_stack.back();
                m_stack.pop_back();
                if (open.kind == EEntryKind_t::Call)
                {
                    const uint32_t count = open.arguments + 1;
                    if (count > open.maxArguments)
                        return FailEvaluate(kParameterCount);
                    Emit(open.op == EFormulaOp_t::Round && count == 2 ? EFormulaOp_t::Round2 : open.op);
                }
                previous = EPrevious_t::RightParen;
                break;
            }

            case ETokenKind_t::Comma:
            {
                // Only a call of a function with more than one parameter takes a list.
                size_t open = m_stack.size();
                while (open > 0 && m_stack[open - 1].kind == EEntryKind_t::Operator)
                    --open;
                if (open == 0 || m_stack[open - 1].kind != EEntryKind_t::Call ||
                    m_stack[open - 1].maxArguments < 2)
                    return FailEvaluate(kSyntaxError);
                if (!EndsOperand(previous))
                    return FailEvaluate(kExtraOperation);
                PopOperators(std::numeric_limits<int>::min());
                ++m_stack.back().arguments;
                previous = EPrevious_t::Comma;
                break;
            }
            }
        }
        if (!EndsOperand(previous))
            return FailEvaluate(kExtraOperation);
        PopOperators(std::numeric_limits<int>::min());
        return true;
    }

    bool HandleOperator(size_t index, EPrevious_t& previous)
    {
        const Token_t& token = m_tokens[index];
        const bool plusMinus = token.op == EFormulaOp_t::Add || token.op == EFormulaOp_t::Subtract;
        if (plusMinus && !EndsOperand(previous) && previous != EPrevious_t::Function)
        {
            // A sign. Right after a binary '+'/'-' or another sign the reference refuses it.
            if (previous == EPrevious_t::Sign || previous == EPrevious_t::BinaryPlusMinus)
                return FailEvaluate(kExtraOperation);
            if (index + 1 >= m_tokens.size())
                return FailEvaluate(kExtraOperation);
            const Token_t& next = m_tokens[index + 1];
            int priority;
            if (next.kind == ETokenKind_t::Operand ||
                (next.kind == ETokenKind_t::Operator && next.op == EFormulaOp_t::BitNot))
                priority = kPrefixTight;
            else if (next.kind == ETokenKind_t::LeftParen || next.kind == ETokenKind_t::Function)
                priority = kPrefixLoose;
            else
                return FailEvaluate(kExtraOperation);
            if (token.op == EFormulaOp_t::Subtract)
                m_stack.push_back({EEntryKind_t::Operator, EFormulaOp_t::Negate, priority, 0, 0});
            previous = EPrevious_t::Sign;
            return true;
        }
        if (token.op == EFormulaOp_t::BitNot)
        {
            if (EndsOperand(previous))
                return FailEvaluate(kInvalidFormula);
            if (previous == EPrevious_t::Function)
                return FailEvaluate(kExtraOperation);
            m_stack.push_back({EEntryKind_t::Operator, EFormulaOp_t::BitNot, kPrefixTight, 0, 0});
            previous = EPrevious_t::Tilde;
            return true;
        }
        if (!EndsOperand(previous) || token.op == EFormulaOp_t::Invalid)
            return FailEvaluate(kExtraOperation);
        const int priority = BinaryPriority(token.op);
        PopOperators(priority);
        m_stack.push_back({EEntryKind_t::Operator, token.op, priority, 0, 0});
        previous = plusMinus ? EPrevious_t::BinaryPlusMinus : EPrevious_t::Binary;
        return true;
    }

    // ---- Stack check: depths for the evaluator, '?' and ':' pairing -------------------------

    bool CheckStack()
    {
        int64_t depth = 0;
        int64_t elseDepth = 0;
        uint32_t maxDepth = 0;
        uint32_t maxElseDepth = 0;
        for (const FormulaInstruction_t& instruction : m_program.code)
        {
            int pops;
            int pushes = 1;
            switch (instruction.op)
            {
            case EFormulaOp_t::PushLiteral:
            case EFormulaOp_t::LoadSlot:
            case EFormulaOp_t::LoadInput:
            case EFormulaOp_t::LoadExpression:
                pops = 0;
                break;
            case EFormulaOp_t::Negate:
            case EFormulaOp_t::BitNot:
            case EFormulaOp_t::Sgn:
            case EFormulaOp_t::Abs:
            case EFormulaOp_t::Sqrt:
            case EFormulaOp_t::Exp:
            case EFormulaOp_t::Ln:
            case EFormulaOp_t::Lg:
            case EFormulaOp_t::Sin:
            case EFormulaOp_t::Cos:
            case EFormulaOp_t::Tan:
            case EFormulaOp_t::Asin:
            case EFormulaOp_t::Acos:
            case EFormulaOp_t::Atan:
            case EFormulaOp_t::Trunc:
            case EFormulaOp_t::Floor:
            case EFormulaOp_t::Ceil:
            case EFormulaOp_t::Round:
            case EFormulaOp_t::Frac:
                pops = 1;
                break;
            case EFormulaOp_t::Else:
                pops = 2;
                ++elseDepth;
                break;
            case EFormulaOp_t::Select:
                pops = 2;
                if (elseDepth == 0)
                    return FailEvaluate(kInvalidFormula);
                --elseDepth;
                break;
            default: // binary operators and ROUND(x, n)
                pops = 2;
                break;
            }
            if (depth < pops)
                return FailEvaluate(kExtraOperation);
            depth += pushes - pops;
            if (static_cast<uint64_t>(depth) > maxDepth)
                maxDepth = static_cast<uint32_t>(depth);
            if (static_cast<uint64_t>(elseDepth) > maxElseDepth)
                maxElseDepth = static_cast<uint32_t>(elseDepth);
        }
        if (elseDepth != 0)
            return FailEvaluate(kLogicalError);
        if (depth != 1)
            return FailEvaluate(kInvalidFormula);
        m_program.maxStackDepth = maxDepth;
        m_program.maxElseDepth = maxElseDepth;
        return true;
    }

    const std::string_view m_text;
    const EFormulaKind_t m_kind;
    const bool m_upperCaseNames;
    const CFormulaCompiler::NameLookup_t m_lookup;
    void* const m_pLookupContext;
    FormulaProgram_t& m_program;
    std::vector<Token_t>& m_tokens;
    std::vector<StackEntry_t>& m_stack;
    std::string& m_upperName;
};
} // namespace

void CFormulaCompiler::Compile(std::string_view text, EFormulaKind_t kind, bool upperCaseNames, NameLookup_t lookup,
                               void* pContext, FormulaProgram_t& program)
{
    static thread_local Scratch_t t_scratch;
    Scratch_t local;
    Scratch_t& scratch = t_scratch.inUse ? local : t_scratch;
    scratch.inUse = true;
    struct Release_t
    {
        Scratch_t& scratch;
        ~Release_t() { scratch.inUse = false; }
    } release{scratch};
    program.code.clear();
    program.errorPhase = EFormulaErrorPhase_t::None;
    program.errorMessage.clear();
    CCompilation(text, kind, upperCaseNames, lookup, pContext, program, scratch).Run();
}
} // namespace Engine
} // namespace GenApi

namespace GenApi
{
namespace Engine
{
namespace
{
// A text compiled with every name standing for itself: LoadSlot k is the k-th distinct name.
// Whatever fails in it besides unknown names fails alike for every node using the text.
struct Template_t
{
    std::string text;
    std::vector<std::string> names; // distinct, in order of first occurrence (as looked up)
    FormulaProgram_t program;
};

bool CollectName(void* pContext, std::string_view name, FormulaInstruction_t& load)
{
    std::vector<std::string>& names = *static_cast<std::vector<std::string>*>(pContext);
    size_t index = 0;
    while (index < names.size() && names[index] != name)
        ++index;
    if (index == names.size())
        names.emplace_back(name);
    load.op = EFormulaOp_t::LoadSlot;
    load.index = static_cast<int32_t>(index);
    return true;
}
} // namespace

struct CFormulaCompileCache::Impl
{
    // One table per arithmetic and name case; keys are views into the templates' own texts.
    std::unordered_map<std::string_view, std::unique_ptr<Template_t>> templates[4];
};

CFormulaCompileCache::CFormulaCompileCache() : m_pImpl(std::make_unique<Impl>())
{
}

CFormulaCompileCache::~CFormulaCompileCache() = default;

size_t CFormulaCompileCache::Size() const
{
    size_t size = 0;
    for (const auto& table : m_pImpl->templates)
        size += table.size();
    return size;
}

void CFormulaCompiler::Compile(std::string_view text, EFormulaKind_t kind, bool upperCaseNames, NameLookup_t lookup,
                               void* pContext, FormulaProgram_t& program, CFormulaCompileCache& cache)
{
    auto& table = cache.m_pImpl->templates[(kind == EFormulaKind_t::Float ? 2 : 0) + (upperCaseNames ? 1 : 0)];
    auto found = table.find(text);
    if (found == table.end())
    {
        auto pTemplate = std::make_unique<Template_t>();
        pTemplate->text.assign(text.data(), text.size());
        Compile(pTemplate->text, kind, upperCaseNames, &CollectName, &pTemplate->names, pTemplate->program);
        const std::string_view key = pTemplate->text;
        found = table.emplace(key, std::move(pTemplate)).first;
    }
    const Template_t& compiled = *found->second;

    // Names first, in text order: an unknown one is the first error, as a lexer meets it.
    FormulaInstruction_t localLoads[16];
    std::vector<FormulaInstruction_t> heapLoads;
    FormulaInstruction_t* pLoads = localLoads;
    if (compiled.names.size() > 16)
    {
        heapLoads.resize(compiled.names.size());
        pLoads = heapLoads.data();
    }
    program.code.clear();
    program.maxStackDepth = program.maxElseDepth = 0;
    program.errorPhase = EFormulaErrorPhase_t::None;
    program.errorMessage.clear();
    for (size_t i = 0; i < compiled.names.size(); ++i)
        if (!lookup || !lookup(pContext, compiled.names[i], pLoads[i]))
        {
            program.errorPhase = EFormulaErrorPhase_t::Parse;
            program.errorMessage = "# " + compiled.names[i] + " - Unknown function/variable!";
            return;
        }
    if (compiled.program.errorPhase != EFormulaErrorPhase_t::None)
    {
        program.errorPhase = compiled.program.errorPhase;
        program.errorMessage = compiled.program.errorMessage;
        return;
    }
    program.code.reserve(compiled.program.code.size());
    for (const FormulaInstruction_t& instruction : compiled.program.code)
        program.code.push_back(instruction.op == EFormulaOp_t::LoadSlot ? pLoads[instruction.index] : instruction);
    program.maxStackDepth = compiled.program.maxStackDepth;
    program.maxElseDepth = compiled.program.maxElseDepth;
}
} // namespace Engine
} // namespace GenApi
