#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <pugixml.hpp>

#include <GenApi/EnumClasses.h>

#include "Engine/Formula/FormulaCompiler.h"
#include "Engine/Load/Element.h"
#include "Engine/Load/LineIndex.h"

namespace GenApi
{
class CNode;
class CNodeMapImpl;
class CStringArena;

/**
 * \brief What node classes need while loading: reference resolution, value parsing and error
 *        reporting with the node name and the line.
 *
 * Lives for one load, on the loader's stack. One thread.
 */
class CNodeBuilder
{
public:
    CNodeBuilder(CNodeMapImpl& map, std::string_view sourceText, bool isSchema10);

    /// The interned name of \a element (remembered for the element last asked about).
    EElement_t ElementOf(const pugi::xml_node& element)
    {
        if (element.internal_object() != m_pLastElement)
        {
            m_pLastElement = element.internal_object();
            m_lastElement = GenApi::ElementOf(element.name());
        }
        return m_lastElement;
    }

    /// The node named by the element's text. \throws RuntimeException for an unknown name.
    CNode* Ref(const pugi::xml_node& element, const CNode* pFrom);
    /// The node named \a name (an attribute value). \throws RuntimeException for an unknown name.
    CNode* RefName(std::string_view name, const pugi::xml_node& where, const CNode* pFrom);
    /**
     * \brief The node named by the element's text, or null for an unknown name, which is then
     *        recorded as a load warning ending in \a consequence.
     *
     * Only for references whose absence leaves the node well defined (a category's features, the
     * availability flags, aliases); see ILoadWarnings for the list.
     */
    CNode* OptionalRef(const pugi::xml_node& element, const CNode* pFrom, const char* consequence);

    /// HexOrDecimal text of the element as int64 (0x... may set the sign bit).
    int64_t Int(const pugi::xml_node& element, const CNode* pFrom);
    /// Same for attribute or other text.
    int64_t IntText(std::string_view text, const pugi::xml_node& where, const CNode* pFrom);
    /// xs:float text.
    double Float(const pugi::xml_node& element, const CNode* pFrom);
    /// xs:boolean text (true/false/1/0).
    bool Bool(const pugi::xml_node& element, const CNode* pFrom);
    /// Yes/No text.
    bool YesNo(const pugi::xml_node& element, const CNode* pFrom);
    /// All text of the element (PCDATA and CDATA pieces around comments), as written.
    static std::string FullText(const pugi::xml_node& element);
    /// The element's text, copied into the node map's arena.
    std::string_view Text(const pugi::xml_node& element);
    std::string_view Store(std::string_view text);

    /// An enumeration value spelled as in descriptions (EAccessModeClass and friends).
    template <class EnumClass, class E>
    E Enum(const pugi::xml_node& element, const CNode* pFrom)
    {
        E value{};
        if (!EnumClass::FromString(Trimmed(element.text().get()), &value))
            FailBadValue(element, pFrom);
        return value;
    }

    /// AccessMode / ImposedAccessMode text; "R" and "W" read as RO and WO with a load warning.
    EAccessMode AccessMode(const pugi::xml_node& element, const CNode* pFrom);

    /// Records "Node '<name>' : <text> (line L)" as a load warning of the node map.
    void Warn(const CNode* pNode, const pugi::xml_node& where, const std::string& text);

    /**
     * \brief Throws RuntimeException "Node '<name>' : <text> (line L)".
     */
    [[noreturn]] void Fail(const CNode* pNode, const pugi::xml_node& where, const char* text);
    [[noreturn]] void FailBadValue(const pugi::xml_node& element, const CNode* pFrom);

    /// 1-based line of a byte offset of the description.
    unsigned LineOf(size_t offset) const;
    /// 1-based column of a byte offset.
    unsigned ColumnOf(size_t offset) const;

    bool IsSchema10() const { return m_isSchema10; }
    /// Formula texts compiled so far in this load (shared by the nodes repeating them).
    Engine::CFormulaCompileCache& FormulaCache() { return m_formulaCache; }
    CNodeMapImpl& Map() { return m_map; }

    /// Text without leading and trailing white space.
    static GenICam::gcstring Trimmed(const char* pText);
    static std::string_view TrimmedView(const char* pText);

private:
    CNodeMapImpl& m_map;
    CLineIndex m_lines; // of the description as loaded
    bool m_isSchema10;
    const void* m_pLastElement = nullptr;
    EElement_t m_lastElement = EElement_t::Unknown;
    Engine::CFormulaCompileCache m_formulaCache;
};
} // namespace GenApi
