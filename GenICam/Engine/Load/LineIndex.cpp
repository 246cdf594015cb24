#include "Engine/Load/LineIndex.h"

#include <algorithm>
#include <cstring>

namespace GenApi
{
void CLineIndex::Build() const
{
    m_lineStarts.push_back(0);
    const char* const pBegin = m_text.data();
    const char* const pEnd = pBegin + m_text.size();
    for (const char* p = pBegin; p < pEnd;)
    {
        const void* pNewline = std::memchr(p, '\n', static_cast<size_t>(pEnd - p));
        if (!pNewline)
            break;
        p = static_cast<const char*>(pNewline) + 1;
        m_lineStarts.push_back(static_cast<size_t>(p - pBegin));
    }
}

unsigned CLineIndex::LineOf(size_t offset) const
{
    if (m_lineStarts.empty())
        Build();
    offset = std::min(offset, m_text.size());
    // The line is the number of line starts at or before the offset.
    return static_cast<unsigned>(std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), offset) - m_lineStarts.begin());
}

unsigned CLineIndex::ColumnOf(size_t offset) const
{
    if (m_lineStarts.empty())
        Build();
    offset = std::min(offset, m_text.size());
    const size_t line = static_cast<size_t>(std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), offset) -
                                            m_lineStarts.begin());
    return static_cast<unsigned>(offset - m_lineStarts[line - 1] + 1);
}
} // namespace GenApi
