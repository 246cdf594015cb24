#pragma once

#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace GenApi
{
/**
 * \brief Append-only storage for the texts of a node map (names, help texts, units).
 *
 * Copies each text once into large blocks, so thousands of nodes need a handful of allocations
 * and a node keeps only a string_view. Texts live as long as the arena. One thread at a time
 * (used while loading).
 */
class CStringArena
{
public:
    /// Copies \a text and returns a view of the copy (zero-terminated).
    std::string_view Store(std::string_view text)
    {
        if (text.empty())
            return std::string_view();
        const size_t needed = text.size() + 1;
        if (m_used + needed > m_capacity)
            NewBlock(needed);
        char* pCopy = m_pCurrent + m_used;
        std::memcpy(pCopy, text.data(), text.size());
        pCopy[text.size()] = '\0';
        m_used += needed;
        return std::string_view(pCopy, text.size());
    }

private:
    static constexpr size_t kBlockBytes = 64 * 1024;

    void NewBlock(size_t needed)
    {
        m_capacity = needed > kBlockBytes ? needed : kBlockBytes;
        m_blocks.emplace_back(new char[m_capacity]);
        m_pCurrent = m_blocks.back().get();
        m_used = 0;
    }

    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_pCurrent = nullptr;
    size_t m_used = 0;
    size_t m_capacity = 0;
};
} // namespace GenApi
