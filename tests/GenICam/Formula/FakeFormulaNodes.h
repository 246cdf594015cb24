#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Engine/Formula/FormulaTypes.h"

namespace FormulaTest
{
using GenApi::Engine::EFormulaKind_t;
using GenApi::Engine::FormulaValue_t;

/// A node a formula variable can point to, with the properties the suffix forms read.
struct FakeNode_t
{
    enum class EType_t
    {
        Integer,
        Float,
        Enumeration,
        Other
    };
    EType_t type = EType_t::Integer;
    FormulaValue_t value;
    double numericValue = 0.0; // an enumeration's current entry in float formulas
    FormulaValue_t min = FormulaValue_t::FromInt(INT64_MIN);
    FormulaValue_t max = FormulaValue_t::FromInt(INT64_MAX);
    FormulaValue_t inc = FormulaValue_t::FromInt(1);
    int64_t accessMode = 4; // RW
    int64_t visibility = 0;
    int64_t cachingMode = 1;
    std::map<std::string, int64_t> entries;

    static FakeNode_t Int(int64_t value);
    static FakeNode_t Float(double value);
};

/**
 * \brief Plays the engine for formula tests: resolves names (with the suffix forms) to slots and
 * serves slot values.
 *
 * Helper nodes as the reference probe defines them: "@R" an Integer (10 in [2, 100] step 4, RW,
 * Expert, WriteThrough), "@REG" a register (7, RO, Guru, NoCache), "@EN" an Enumeration (3, entry
 * NumericValue 2.5, entries Big = 256 and On = 1), "@RF" a Float (2.5 in [-1.5, 7.25] step
 * 0.25), "@K2" a read-only node.
 */
class CFakeFormulaNodes : public GenApi::Engine::IFormulaValueSource
{
public:
    /// Adds pVariable `name` pointing to `node`.
    void AddVariable(const std::string& name, const FakeNode_t& node);
    /// Adds pVariable `name` pointing to a helper node ("@R", ...); false if the helper is unknown.
    bool AddHelperVariable(const std::string& name, const std::string& helper);
    /// Changes the value of a variable's node.
    void SetValue(const std::string& name, const FormulaValue_t& value);

    /// The resolver to hand to CFormula::Compile.
    int32_t Resolve(const std::string& name, EFormulaKind_t kind);
    GenApi::Engine::FormulaValue_t GetFormulaSlotValue(int32_t slot) override;

    /// How many slot reads happened.
    int reads = 0;

private:
    enum class EWhat_t
    {
        Value,
        Min,
        Max,
        Inc,
        AccessMode,
        Visibility,
        CachingMode,
        Entry,
        Error
    };
    struct Slot_t
    {
        std::string variable;
        EWhat_t what;
        EFormulaKind_t kind;
        int64_t entryValue = 0;
        std::string error;
    };
    int32_t AddSlot(Slot_t slot);
    int32_t ResolveNew(const std::string& name, EFormulaKind_t kind);

    std::map<std::string, std::shared_ptr<FakeNode_t>> m_variables;
    std::vector<Slot_t> m_slots;
    std::map<std::pair<std::string, EFormulaKind_t>, int32_t> m_resolved; // one slot per name and kind
};
} // namespace FormulaTest
