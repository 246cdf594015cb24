#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace GenApi
{
class CNode;

/**
 * \brief Open-addressing hash table from node name to node.
 *
 * Loading looks names up about twenty times per node; a flat table with linear probing keeps
 * each lookup within a cache line or two. Keys are views that must outlive the table (they point
 * into the parsed description or the node map's arena). Entries are never removed.
 * One thread at a time while loading; read-only (any thread) afterwards.
 */
class CNameTable
{
public:
    struct Entry_t
    {
        std::string_view key;
        CNode* pNode = nullptr; // null while the name was only referenced
        uint64_t hash = 0;
    };

    /// Makes room for \a count names without rehashing.
    void Reserve(size_t count)
    {
        size_t capacity = 16;
        while (capacity < 2 * count)
            capacity *= 2;
        if (capacity > m_entries.size())
            Rehash(capacity);
    }

    /// The entry of \a key, created (with a null node) when absent; second is true when created.
    std::pair<Entry_t*, bool> Emplace(std::string_view key)
    {
        if (2 * (m_count + 1) > m_entries.size())
            Rehash(m_entries.empty() ? 16 : 2 * m_entries.size());
        const uint64_t hash = Hash(key);
        size_t index = static_cast<size_t>(hash) & (m_entries.size() - 1);
        for (;; index = (index + 1) & (m_entries.size() - 1))
        {
            Entry_t& entry = m_entries[index];
            if (entry.key.data() == nullptr)
            {
                entry.key = key.data() ? key : std::string_view("", 0);
                entry.hash = hash;
                ++m_count;
                return {&entry, true};
            }
            if (entry.hash == hash && entry.key == key)
                return {&entry, false};
        }
    }

    /// The entry of \a key, or null.
    const Entry_t* Find(std::string_view key) const
    {
        if (m_entries.empty())
            return nullptr;
        const uint64_t hash = Hash(key);
        for (size_t index = static_cast<size_t>(hash) & (m_entries.size() - 1);;
             index = (index + 1) & (m_entries.size() - 1))
        {
            const Entry_t& entry = m_entries[index];
            if (entry.key.data() == nullptr)
                return nullptr;
            if (entry.hash == hash && entry.key == key)
                return &entry;
        }
    }

private:
    static uint64_t Hash(std::string_view key)
    {
        // Eight bytes per step, mixed by multiplication: names are short and mostly ASCII.
        uint64_t hash = 0x9E3779B97F4A7C15ull ^ key.size();
        const char* p = key.data();
        size_t left = key.size();
        while (left >= 8)
        {
            uint64_t word;
            std::memcpy(&word, p, 8);
            hash = (hash ^ word) * 0xFF51AFD7ED558CCDull;
            hash ^= hash >> 32;
            p += 8;
            left -= 8;
        }
        uint64_t tail = 0;
        std::memcpy(&tail, p, left);
        hash = (hash ^ tail) * 0xC4CEB9FE1A85EC53ull;
        return hash ^ (hash >> 29);
    }

    void Rehash(size_t capacity)
    {
        std::vector<Entry_t> old;
        old.swap(m_entries);
        m_entries.resize(capacity);
        m_count = 0;
        for (const Entry_t& entry : old)
            if (entry.key.data() != nullptr)
            {
                std::pair<Entry_t*, bool> placed = Emplace(entry.key);
                placed.first->pNode = entry.pNode;
            }
    }

    std::vector<Entry_t> m_entries; // size is a power of two (or zero)
    size_t m_count = 0;
};
} // namespace GenApi
