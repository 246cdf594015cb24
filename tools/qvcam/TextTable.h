#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace QvCam
{
/**
 * \brief Rows of text cells printed with aligned columns (two blanks between columns, the last
 *        column unpadded). Widths count UTF-8 characters, not bytes.
 */
class CTextTable
{
public:
    /// \param[in] header Column titles; an empty list prints no header line.
    explicit CTextTable(std::vector<std::string> header = {});
    /// Appends a row; missing cells print empty, extra cells widen the table.
    void AddRow(std::vector<std::string> cells);
    /// \return Number of rows added (header not counted).
    size_t GetRowCount() const { return m_rows.size(); }
    /// Prints the table to \a out, each line starting with \a indent.
    void Print(FILE* out, const std::string& indent = "") const;

private:
    std::vector<std::string> m_header;
    std::vector<std::vector<std::string>> m_rows;
};

/// \return The number of characters of UTF-8 \a text.
size_t DisplayWidth(const std::string& text);
} // namespace QvCam
