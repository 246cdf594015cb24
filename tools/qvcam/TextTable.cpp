#include "TextTable.h"

#include <algorithm>

namespace QvCam
{
size_t DisplayWidth(const std::string& text)
{
    size_t width = 0;
    for (unsigned char c : text)
        if ((c & 0xC0) != 0x80) // continuation bytes do not start a character
            ++width;
    return width;
}

CTextTable::CTextTable(std::vector<std::string> header) : m_header(std::move(header)) {}

void CTextTable::AddRow(std::vector<std::string> cells)
{
    m_rows.push_back(std::move(cells));
}

void CTextTable::Print(FILE* out, const std::string& indent) const
{
    std::vector<size_t> widths(m_header.size(), 0);
    auto measure = [&](const std::vector<std::string>& row) {
        if (widths.size() < row.size())
            widths.resize(row.size(), 0);
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
    };
    measure(m_header);
    for (const auto& row : m_rows)
        measure(row);

    auto printRow = [&](const std::vector<std::string>& row) {
        std::string line = indent;
        for (size_t i = 0; i < widths.size(); ++i)
        {
            const std::string cell = i < row.size() ? row[i] : std::string();
            line += cell;
            if (i + 1 < widths.size())
                line += std::string(widths[i] - DisplayWidth(cell) + 2, ' ');
        }
        while (!line.empty() && line.back() == ' ')
            line.pop_back();
        std::fprintf(out, "%s\n", line.c_str());
    };
    if (!m_header.empty())
        printRow(m_header);
    for (const auto& row : m_rows)
        printRow(row);
}
} // namespace QvCam
