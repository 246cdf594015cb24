#include "Engine/Load/NodeBuilder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include <Base/GCException.h>

#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/Node.h"

namespace GenApi
{
namespace
{
bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}
} // namespace

CNodeBuilder::CNodeBuilder(CNodeMapImpl& map, std::string_view sourceText, bool isSchema10)
    : m_map(map), m_lines(sourceText), m_isSchema10(isSchema10)
{
}

std::string_view CNodeBuilder::TrimmedView(const char* pText)
{
    while (IsSpace(*pText))
        ++pText;
    size_t length = std::strlen(pText);
    while (length > 0 && IsSpace(pText[length - 1]))
        --length;
    return std::string_view(pText, length);
}

GenICam::gcstring CNodeBuilder::Trimmed(const char* pText)
{
    const std::string_view view = TrimmedView(pText);
    return GenICam::gcstring(view.data(), view.size());
}

std::string CNodeBuilder::FullText(const pugi::xml_node& element)
{
    std::string text;
    for (pugi::xml_node piece = element.first_child(); piece; piece = piece.next_sibling())
        if (piece.type() == pugi::node_pcdata || piece.type() == pugi::node_cdata)
            text += piece.value();
    return text;
}

CNode* CNodeBuilder::Ref(const pugi::xml_node& element, const CNode* pFrom)
{
    return RefName(TrimmedView(element.text().get()), element, pFrom);
}

CNode* CNodeBuilder::RefName(std::string_view name, const pugi::xml_node& where, const CNode* pFrom)
{
    if (CNode* pNode = m_map.FindNode(name))
        return pNode;
    const size_t offset = where ? static_cast<size_t>(where.offset_debug()) : (pFrom ? pFrom->SourceOffset() : 0);
    const std::string text(name);
    throw RUNTIME_EXCEPTION("Error in XML stream : dangling node reference '%s' (in node '%s' at line %u)", text.c_str(),
                            pFrom ? pFrom->Name().data() : "", LineOf(offset));
}

CNode* CNodeBuilder::OptionalRef(const pugi::xml_node& element, const CNode* pFrom, const char* consequence)
{
    const std::string_view name = TrimmedView(element.text().get());
    if (CNode* pNode = m_map.FindNode(name))
        return pNode;
    Warn(pFrom, element, std::string(element.name()) + " '" + std::string(name) + "' names no node; " + consequence);
    return nullptr;
}

EAccessMode CNodeBuilder::AccessMode(const pugi::xml_node& element, const CNode* pFrom)
{
    const std::string_view text = TrimmedView(element.text().get());
    // Hand-written descriptions abbreviate the one operation allowed; no other mode starts alike.
    const EAccessMode abbreviated = text == "R" ? RO : text == "W" ? WO : _UndefinedAccesMode;
    if (abbreviated == _UndefinedAccesMode)
        return Enum<EAccessModeClass, EAccessMode>(element, pFrom);
    Warn(pFrom, element,
         std::string(element.name()) + " '" + std::string(text) + "' read as " + (abbreviated == RO ? "RO" : "WO"));
    return abbreviated;
}

void CNodeBuilder::Warn(const CNode* pNode, const pugi::xml_node& where, const std::string& text)
{
    const size_t offset = where ? static_cast<size_t>(where.offset_debug()) : (pNode ? pNode->SourceOffset() : 0);
    m_map.AddLoadWarning(offset, "Node '" + std::string(pNode ? pNode->Name() : std::string_view()) + "' : " + text + " (line " +
                         std::to_string(LineOf(offset)) + ")");
}

int64_t CNodeBuilder::Int(const pugi::xml_node& element, const CNode* pFrom)
{
    return IntText(TrimmedView(element.text().get()), element, pFrom);
}

int64_t CNodeBuilder::IntText(std::string_view text, const pugi::xml_node& where, const CNode* pFrom)
{
    // HexOrDecimal: 0x/0X + hex digits (may set the sign bit), or an optionally signed decimal.
    while (!text.empty() && IsSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back()))
        text.remove_suffix(1);
    size_t i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+'))
        negative = text[i++] == '-';
    uint64_t value = 0;
    bool any = false;
    if (i + 1 < text.size() && text[i] == '0' && (text[i + 1] == 'x' || text[i + 1] == 'X'))
    {
        for (i += 2; i < text.size(); ++i)
        {
            const char c = text[i];
            int digit;
            if (c >= '0' && c <= '9')
                digit = c - '0';
            else if (c >= 'a' && c <= 'f')
                digit = c - 'a' + 10;
            else if (c >= 'A' && c <= 'F')
                digit = c - 'A' + 10;
            else
                break;
            value = (value << 4) | static_cast<uint64_t>(digit);
            any = true;
        }
    }
    else
    {
        for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
        {
            value = value * 10 + static_cast<uint64_t>(text[i] - '0');
            any = true;
        }
    }
    if (!any || i != text.size())
    {
        const std::string copy(text);
        const size_t offset = where ? static_cast<size_t>(where.offset_debug()) : 0;
        throw RUNTIME_EXCEPTION("Node '%s' : cannot convert '%s' to an integer (line %u)", pFrom ? pFrom->Name().data() : "",
                                copy.c_str(), LineOf(offset));
    }
    return negative ? static_cast<int64_t>(0 - value) : static_cast<int64_t>(value);
}

double CNodeBuilder::Float(const pugi::xml_node& element, const CNode* pFrom)
{
    const std::string text(TrimmedView(element.text().get()));
    char* pEnd = nullptr;
    const double value = std::strtod(text.c_str(), &pEnd);
    if (text.empty() || *pEnd != '\0')
    {
        // HexOrDecimal is accepted where a float is expected.
        if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
            return static_cast<double>(IntText(text, element, pFrom));
        FailBadValue(element, pFrom);
    }
    return value;
}

bool CNodeBuilder::Bool(const pugi::xml_node& element, const CNode* pFrom)
{
    const std::string_view text = TrimmedView(element.text().get());
    if (text == "true" || text == "1")
        return true;
    if (text == "false" || text == "0")
        return false;
    FailBadValue(element, pFrom);
}

bool CNodeBuilder::YesNo(const pugi::xml_node& element, const CNode* pFrom)
{
    const std::string_view text = TrimmedView(element.text().get());
    if (text == "Yes")
        return true;
    // An empty element means the default, No.
    if (text == "No" || text.empty())
        return false;
    FailBadValue(element, pFrom);
}

std::string_view CNodeBuilder::Text(const pugi::xml_node& element)
{
    // The parsed description stays alive with the map: no copy needed.
    return std::string_view(element.text().get());
}

std::string_view CNodeBuilder::Store(std::string_view text)
{
    return m_map.Arena().Store(text);
}

void CNodeBuilder::Fail(const CNode* pNode, const pugi::xml_node& where, const char* text)
{
    const size_t offset = where ? static_cast<size_t>(where.offset_debug()) : (pNode ? pNode->SourceOffset() : 0);
    if (pNode && std::strstr(text, pNode->Name().data()) != nullptr && std::strncmp(text, "Node '", 6) != 0 &&
        std::strstr(text, "node '") != nullptr)
        throw RUNTIME_EXCEPTION("%s (line %u)", text, LineOf(offset));
    throw RUNTIME_EXCEPTION("Node '%s' : %s (line %u)", pNode ? pNode->Name().data() : "", text, LineOf(offset));
}

void CNodeBuilder::FailBadValue(const pugi::xml_node& element, const CNode* pFrom)
{
    const std::string text(TrimmedView(element.text().get()));
    const std::string message = std::string("invalid value '") + text + "' in element " + element.name();
    Fail(pFrom, element, message.c_str());
}

unsigned CNodeBuilder::LineOf(size_t offset) const
{
    return m_lines.LineOf(offset);
}

unsigned CNodeBuilder::ColumnOf(size_t offset) const
{
    return m_lines.ColumnOf(offset);
}
} // namespace GenApi
