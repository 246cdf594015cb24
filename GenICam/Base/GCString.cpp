#include <Base/GCString.h>

#include <cstring>
#include <istream>
#include <ostream>

#include <Base/GCException.h>
#include <Base/GCStringVector.h>

namespace GenICam
{
gcstring::gcstring() = default;
gcstring::gcstring(const char* text) : m_text(text ? text : "") {}
gcstring::gcstring(const char* text, size_t count) : m_text(text ? std::string(text, count) : std::string()) {}
gcstring::gcstring(size_t count, char ch) : m_text(count, ch) {}
gcstring::gcstring(const std::string& text) : m_text(text) {}
gcstring::gcstring(std::string&& text) noexcept : m_text(std::move(text)) {}
gcstring::gcstring(const gcstring& other) = default;
gcstring::gcstring(gcstring&& other) noexcept : m_text(std::move(other.m_text)) {}
gcstring::~gcstring() = default;

gcstring& gcstring::operator=(const gcstring& other) = default;
gcstring& gcstring::operator=(gcstring&& other) noexcept
{
    m_text = std::move(other.m_text);
    return *this;
}
gcstring& gcstring::operator=(const char* text)
{
    m_text = text ? text : "";
    return *this;
}
gcstring& gcstring::operator=(const std::string& text)
{
    m_text = text;
    return *this;
}

gcstring& gcstring::operator+=(const gcstring& other)
{
    m_text += other.m_text;
    return *this;
}
gcstring& gcstring::operator+=(const char* text)
{
    if (text)
        m_text += text;
    return *this;
}
gcstring& gcstring::operator+=(char ch)
{
    m_text += ch;
    return *this;
}
gcstring gcstring::operator+(const gcstring& other) const
{
    return gcstring(m_text + other.m_text);
}
gcstring gcstring::operator+(const char* text) const
{
    gcstring result(*this);
    result += text;
    return result;
}

bool gcstring::operator==(const char* text) const
{
    return m_text == (text ? text : "");
}

char& gcstring::at(size_t pos)
{
    if (pos >= m_text.size())
        throw OUT_OF_RANGE_EXCEPTION("Index %zu is beyond the end of a string of %zu characters", pos,
                                     m_text.size());
    return m_text[pos];
}
const char& gcstring::at(size_t pos) const
{
    return const_cast<gcstring*>(this)->at(pos);
}

gcstring& gcstring::assign(const char* text)
{
    m_text.assign(text ? text : "");
    return *this;
}

gcstring gcstring::substr(size_t pos, size_t count) const
{
    if (pos > m_text.size())
        throw OUT_OF_RANGE_EXCEPTION("Position %zu is beyond the end of a string of %zu characters", pos,
                                     m_text.size());
    return gcstring(m_text.substr(pos, count));
}

gcstring operator+(const char* left, const gcstring& right)
{
    gcstring result(left);
    result += right;
    return result;
}
bool operator==(const char* left, const gcstring& right)
{
    return right == left;
}
bool operator!=(const char* left, const gcstring& right)
{
    return !(right == left);
}
std::ostream& operator<<(std::ostream& os, const gcstring& text)
{
    return os << text.str();
}
std::istream& operator>>(std::istream& is, gcstring& text)
{
    std::string word;
    is >> word;
    text = word;
    return is;
}
std::istream& getline(std::istream& is, gcstring& text)
{
    return getline(is, text, '\n');
}
std::istream& getline(std::istream& is, gcstring& text, char delimiter)
{
    std::string line;
    std::getline(is, line, delimiter);
    text = line;
    return is;
}

bool gcstring_vector::contains(const gcstring& text) const
{
    for (const gcstring& item : *this)
        if (item == text)
            return true;
    return false;
}
} // namespace GenICam
