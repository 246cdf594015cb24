#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <Base/GCString.h>

namespace GenApi
{
struct INode;
struct IValue;

/**
 * \brief Steps the selectors of one feature through every combination of their values, like an
 *        odometer: the last selector turns fastest, the first slowest.
 *
 * Enumeration selectors take their available entries, integer selectors Min..Max by Inc (at
 * most kMaxValuesPerSelector values), Boolean selectors false and true. Each step writes the
 * selectors through the node map; Restore() writes back the values they had when the walk
 * began. Selectors that are not writable, or of another kind, are not walked.
 *
 * Threads: the caller's; used inside one StoreToBag() call.
 */
class CSelectorOdometer
{
public:
    /// Integer selectors with a wider range are walked over their first values only.
    static constexpr int64_t kMaxValuesPerSelector = 65536;

    /// Takes the walkable selectors among \a selectors (outer first) and their current values.
    explicit CSelectorOdometer(const std::vector<INode*>& selectors);

    /// Whether there is anything to walk.
    bool Empty() const { return m_selectors.empty(); }
    /**
     * \brief Sets every selector to its first value (the last selector first).
     * \return False when some selector has no value to take or a write fails.
     */
    bool Start();
    /**
     * \brief Moves to the next combination.
     * \return False when every combination was visited (the selectors are back at their first
     *         values) or a write failed.
     */
    bool Next();
    /// "{Sel1=v1\tSel2=v2}" for the current combination.
    GenICam::gcstring QualifierText() const;
    /// Writes back the values the selectors had at construction, outer first (errors ignored).
    void Restore();
    /// Number of selectors walked.
    size_t Count() const { return m_selectors.size(); }
    /// Name and original value text of selector \a index (outer first).
    const GenICam::gcstring& Name(size_t index) const { return m_selectors[index].name; }
    const GenICam::gcstring& OriginalText(size_t index) const { return m_selectors[index].originalText; }

private:
    enum class EKind_t
    {
        Enumeration,
        Integer,
        Boolean
    };
    struct Selector_t
    {
        INode* pNode;
        IValue* pValue;
        EKind_t kind;
        GenICam::gcstring name;
        int64_t originalValue;
        GenICam::gcstring originalText;
        std::vector<int64_t> values; // what this selector steps through, computed at each restart
        size_t position;
        GenICam::gcstring currentText;
    };

    /// Fills \a selector.values from the node's current range or entries.
    static void ComputeValues(Selector_t& selector);
    /// Writes \a value and remembers its text; false when the write fails.
    static bool Set(Selector_t& selector, int64_t value);

    std::vector<Selector_t> m_selectors; // outer first
};
} // namespace GenApi
