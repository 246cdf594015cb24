#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include <Base/GCLinkage.h>
#include <Base/GCNamespace.h>

#define GCSTRING_NPOS size_t(-1)

namespace GenICam
{
/**
 * \brief The text type of every GenICam and SDK operation that carries text.
 *
 * A value type with the familiar std::string operations. It converts implicitly to
 * `const char*` (as GenApi code expects) and explicitly from and to std::string.
 * Not thread-safe: one thread at a time per object.
 */
class GENICAM_API gcstring
{
public:
    typedef size_t size_type;
    static constexpr size_t npos = GCSTRING_NPOS;
    /// The npos value, for code that calls it as a function.
    static size_t _npos() { return npos; }

    gcstring();
    /// Copies a zero-terminated text; a null pointer gives the empty string.
    gcstring(const char* text);
    gcstring(const char* text, size_t count);
    gcstring(size_t count, char ch);
    gcstring(const std::string& text);
    gcstring(std::string&& text) noexcept;
    gcstring(const gcstring& other);
    gcstring(gcstring&& other) noexcept;
    virtual ~gcstring();

    gcstring& operator=(const gcstring& other);
    gcstring& operator=(gcstring&& other) noexcept;
    gcstring& operator=(const char* text);
    gcstring& operator=(const std::string& text);

    gcstring& operator+=(const gcstring& other);
    gcstring& operator+=(const char* text);
    gcstring& operator+=(char ch);
    gcstring operator+(const gcstring& other) const;
    gcstring operator+(const char* text) const;

    bool operator==(const gcstring& other) const { return m_text == other.m_text; }
    bool operator!=(const gcstring& other) const { return m_text != other.m_text; }
    bool operator<(const gcstring& other) const { return m_text < other.m_text; }
    bool operator>(const gcstring& other) const { return m_text > other.m_text; }
    bool operator<=(const gcstring& other) const { return m_text <= other.m_text; }
    bool operator>=(const gcstring& other) const { return m_text >= other.m_text; }
    bool operator==(const char* text) const;
    bool operator!=(const char* text) const { return !(*this == text); }

    operator const char*() const { return m_text.c_str(); }
    /// The text as std::string (a copy).
    explicit operator std::string() const { return m_text; }
    const std::string& str() const { return m_text; }

    const char* c_str() const { return m_text.c_str(); }
    const char* data() const { return m_text.data(); }
    size_t size() const { return m_text.size(); }
    size_t length() const { return m_text.length(); }
    size_t max_size() const { return m_text.max_size(); }
    size_t capacity() const { return m_text.capacity(); }
    bool empty() const { return m_text.empty(); }
    void clear() { m_text.clear(); }
    void reserve(size_t count) { m_text.reserve(count); }
    void resize(size_t count, char ch = '\0') { m_text.resize(count, ch); }

    char& operator[](size_t pos) { return m_text[pos]; }
    const char& operator[](size_t pos) const { return m_text[pos]; }
    char& operator[](int pos) { return m_text[static_cast<size_t>(pos)]; }
    const char& operator[](int pos) const { return m_text[static_cast<size_t>(pos)]; }
    /// Bounds-checked access; throws OutOfRangeException.
    char& at(size_t pos);
    const char& at(size_t pos) const;

    gcstring& append(const gcstring& other) { m_text.append(other.m_text); return *this; }
    gcstring& append(const char* text, size_t count) { m_text.append(text, count); return *this; }
    gcstring& append(size_t count, char ch) { m_text.append(count, ch); return *this; }
    gcstring& assign(const gcstring& other) { m_text.assign(other.m_text); return *this; }
    gcstring& assign(const char* text);
    gcstring& assign(const char* text, size_t count) { m_text.assign(text, count); return *this; }
    gcstring& assign(size_t count, char ch) { m_text.assign(count, ch); return *this; }
    gcstring& insert(size_t pos, const gcstring& other) { m_text.insert(pos, other.m_text); return *this; }
    gcstring& erase(size_t pos = 0, size_t count = npos) { m_text.erase(pos, count); return *this; }
    gcstring& replace(size_t pos, size_t count, const gcstring& other)
    {
        m_text.replace(pos, count, other.m_text);
        return *this;
    }
    void swap(gcstring& other) noexcept { m_text.swap(other.m_text); }

    int compare(const gcstring& other) const { return m_text.compare(other.m_text); }
    int compare(size_t pos, size_t count, const gcstring& other) const
    {
        return m_text.compare(pos, count, other.m_text);
    }

    size_t find(char ch, size_t pos = 0) const { return m_text.find(ch, pos); }
    size_t find(const gcstring& text, size_t pos = 0) const { return m_text.find(text.m_text, pos); }
    size_t find(const char* text, size_t pos = 0) const { return m_text.find(text, pos); }
    size_t find(const char* text, size_t pos, size_t count) const { return m_text.find(text, pos, count); }
    size_t rfind(char ch, size_t pos = npos) const { return m_text.rfind(ch, pos); }
    size_t rfind(const gcstring& text, size_t pos = npos) const { return m_text.rfind(text.m_text, pos); }
    size_t find_first_of(const gcstring& chars, size_t pos = 0) const
    {
        return m_text.find_first_of(chars.m_text, pos);
    }
    size_t find_first_not_of(const gcstring& chars, size_t pos = 0) const
    {
        return m_text.find_first_not_of(chars.m_text, pos);
    }
    size_t find_last_of(const gcstring& chars, size_t pos = npos) const
    {
        return m_text.find_last_of(chars.m_text, pos);
    }
    size_t find_last_not_of(const gcstring& chars, size_t pos = npos) const
    {
        return m_text.find_last_not_of(chars.m_text, pos);
    }
    /// Part of the text; throws OutOfRangeException when pos is beyond the end.
    gcstring substr(size_t pos = 0, size_t count = npos) const;

    std::string::iterator begin() { return m_text.begin(); }
    std::string::iterator end() { return m_text.end(); }
    std::string::const_iterator begin() const { return m_text.begin(); }
    std::string::const_iterator end() const { return m_text.end(); }

private:
    std::string m_text;
};

GENICAM_API gcstring operator+(const char* left, const gcstring& right);
GENICAM_API bool operator==(const char* left, const gcstring& right);
GENICAM_API bool operator!=(const char* left, const gcstring& right);
GENICAM_API std::ostream& operator<<(std::ostream& os, const gcstring& text);
GENICAM_API std::istream& operator>>(std::istream& is, gcstring& text);
/// Reads one line (up to '\n' or the delimiter) into text.
GENICAM_API std::istream& getline(std::istream& is, gcstring& text);
GENICAM_API std::istream& getline(std::istream& is, gcstring& text, char delimiter);
} // namespace GenICam

namespace std
{
template <>
struct hash<GenICam::gcstring>
{
    size_t operator()(const GenICam::gcstring& text) const noexcept
    {
        return std::hash<std::string>()(text.str());
    }
};
} // namespace std
