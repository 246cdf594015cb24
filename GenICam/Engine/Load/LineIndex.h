#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace GenApi
{
/**
 * \brief Line and column of byte offsets in a description, for error and warning texts.
 *
 * The offsets of the line starts are found on the first question, so that a clean load pays
 * nothing and a description with thousands of warnings does not rescan the text for each.
 * Borrows the text, which must outlive it. One thread.
 */
class CLineIndex
{
public:
    explicit CLineIndex(std::string_view text) : m_text(text) {}

    /// 1-based line of \a offset (offsets past the end count as the end).
    unsigned LineOf(size_t offset) const;
    /// 1-based column of \a offset.
    unsigned ColumnOf(size_t offset) const;

private:
    void Build() const;

    std::string_view m_text;
    mutable std::vector<size_t> m_lineStarts; // empty until the first question
};
} // namespace GenApi
