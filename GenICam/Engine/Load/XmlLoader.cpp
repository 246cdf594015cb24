#include "Engine/Load/XmlLoader.h"

#include <cstring>
#include <sstream>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <pugixml.hpp>

#include <Base/GCException.h>

#include "Engine/Load/LineIndex.h"
#include "Engine/Load/NodeBuilder.h"
#include "Engine/NodeMap/NodeMapImpl.h"
#include "Engine/Nodes/BooleanNode.h"
#include "Engine/Nodes/CategoryNode.h"
#include "Engine/Nodes/CommandNode.h"
#include "Engine/Nodes/ConverterNode.h"
#include "Engine/Nodes/EnumEntryNode.h"
#include "Engine/Nodes/EnumerationNode.h"
#include "Engine/Nodes/FloatNode.h"
#include "Engine/Nodes/FloatRegNode.h"
#include "Engine/Nodes/IntConverterNode.h"
#include "Engine/Nodes/IntRegNode.h"
#include "Engine/Nodes/IntSwissKnifeNode.h"
#include "Engine/Nodes/IntegerNode.h"
#include "Engine/Nodes/PortNode.h"
#include "Engine/Nodes/RegisterNode.h"
#include "Engine/Nodes/StringNode.h"
#include "Engine/Nodes/StringRegNode.h"
#include "Engine/Nodes/SwissKnifeNode.h"
#include "Engine/Nodes/ValueNode.h"

namespace GenApi
{
namespace
{
bool Is(const pugi::xml_node& node, const char* name)
{
    return std::strcmp(node.name(), name) == 0;
}

// Reference elements are p + an upper-case letter: pValue, pFeature, pInvalidator, ...
bool IsReferenceElement(const char* name)
{
    return name[0] == 'p' && name[1] >= 'A' && name[1] <= 'Z';
}

std::unique_ptr<CNode> CreateNode(ENodeKind_t kind, CNodeMapImpl* pMap, std::string_view name)
{
    switch (kind)
    {
    case ENodeKind_t::Category:
        return std::make_unique<CCategoryNode>(pMap, name);
    case ENodeKind_t::Integer:
        return std::make_unique<CIntegerNode>(pMap, name);
    case ENodeKind_t::IntReg:
    case ENodeKind_t::MaskedIntReg:
    case ENodeKind_t::StructEntry:
        return std::make_unique<CIntRegNode>(pMap, kind, name);
    case ENodeKind_t::IntConverter:
        return std::make_unique<CIntConverterNode>(pMap, name);
    case ENodeKind_t::IntSwissKnife:
        return std::make_unique<CIntSwissKnifeNode>(pMap, name);
    case ENodeKind_t::Float:
        return std::make_unique<CFloatNode>(pMap, name);
    case ENodeKind_t::FloatReg:
        return std::make_unique<CFloatRegNode>(pMap, name);
    case ENodeKind_t::Converter:
        return std::make_unique<CConverterNode>(pMap, name);
    case ENodeKind_t::SwissKnife:
        return std::make_unique<CSwissKnifeNode>(pMap, name);
    case ENodeKind_t::Boolean:
        return std::make_unique<CBooleanNode>(pMap, name);
    case ENodeKind_t::Command:
        return std::make_unique<CCommandNode>(pMap, name);
    case ENodeKind_t::Enumeration:
        return std::make_unique<CEnumerationNode>(pMap, name);
    case ENodeKind_t::EnumEntry:
        return std::make_unique<CEnumEntryNode>(pMap, name, name);
    case ENodeKind_t::String:
        return std::make_unique<CStringNode>(pMap, name);
    case ENodeKind_t::StringReg:
        return std::make_unique<CStringRegNode>(pMap, name);
    case ENodeKind_t::Register:
        return std::make_unique<CRegisterNode>(pMap, name);
    case ENodeKind_t::Port:
        return std::make_unique<CPortNode>(pMap, name);
    default:
        return std::make_unique<CValueNode>(pMap, kind, name);
    }
}

/// One node to configure in the second pass.
struct PendingNode_t
{
    CNode* pNode;
    pugi::xml_node element;
    pugi::xml_node structReg; // StructEntry: the StructReg holding the shared register settings
};

class CLoadPass
{
public:
    CLoadPass(CNodeMapImpl& map, const std::string& text) : m_map(map), m_lines(text) {}

    unsigned LineOf(size_t offset) const { return m_lines.LineOf(offset); }
    unsigned ColumnOf(size_t offset) const { return m_lines.ColumnOf(offset); }

    CNode* Create(ENodeKind_t kind, std::string_view name, const pugi::xml_node& element,
                  std::unique_ptr<CNode> pPrepared = nullptr)
    {
        if (name.empty())
            throw RUNTIME_EXCEPTION("Error while parsing XML stream at line %u and column %u : 'a %s element has no Name'",
                                    LineOf(static_cast<size_t>(element.offset_debug())),
                                    ColumnOf(static_cast<size_t>(element.offset_debug())), element.name());
        if (QV_UNLIKELY(m_map.OwnedNodes().size() >= CXmlLoader::kMaxNodes))
            throw RUNTIME_EXCEPTION("Error while parsing XML stream at line %u and column %u : 'more than %zu nodes are refused'",
                                    LineOf(static_cast<size_t>(element.offset_debug())),
                                    ColumnOf(static_cast<size_t>(element.offset_debug())), CXmlLoader::kMaxNodes);
        // One look-up both finds a duplicate and reserves the name.
        CNameTable::Entry_t* pEntry = m_map.ClaimName(name);
        if (pEntry->pNode)
        {
            const std::string copy(name);
            throw RUNTIME_EXCEPTION("XML Parse error at line %u and column %u, Found a duplicate node'%s'.",
                                    LineOf(static_cast<size_t>(element.offset_debug())),
                                    ColumnOf(static_cast<size_t>(element.offset_debug())), copy.c_str());
        }
        CNode* pNode = m_map.AddNode(pPrepared ? std::move(pPrepared) : CreateNode(kind, &m_map, name), pEntry);
        pNode->SetSourceOffset(static_cast<uint32_t>(element.offset_debug()));
        if (std::strcmp(element.attribute("NameSpace").value(), "Standard") == 0)
            pNode->SetNameSpace(Standard);
        return pNode;
    }

    // Pass 1 for one node element: create it and what it embeds, note name order.
    void Scan(const pugi::xml_node& element, ENodeKind_t kind)
    {
        CNode* pNode = Create(kind, element.attribute("Name").value(), element);
        m_pending.push_back({pNode, element, pugi::xml_node()});
        for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling())
        {
            if (child.type() != pugi::node_element)
                continue;
            const char* name = child.name();
            if (IsReferenceElement(name))
                NoteReference(child);
            else if (kind == ENodeKind_t::Enumeration && name[0] == 'E' && Is(child, "EnumEntry"))
            {
                const std::string_view storedEntry(child.attribute("Name").value());
                const std::string fullName = std::string("EnumEntry_") + std::string(pNode->Name()) + "_" + std::string(storedEntry);
                std::string_view storedFull = m_map.Arena().Store(fullName);
                Create(ENodeKind_t::EnumEntry, storedFull, child,
                       std::make_unique<CEnumEntryNode>(&m_map, storedFull, storedEntry));
                ScanReferences(child);
            }
            else if (name[0] == 'I' && Is(child, "IntSwissKnife") && child.attribute("Name"))
                Nested(child, [&] { Scan(child, ENodeKind_t::IntSwissKnife); });
        }
    }

    void ScanStructReg(const pugi::xml_node& structReg)
    {
        for (pugi::xml_node child = structReg.first_child(); child; child = child.next_sibling())
        {
            if (child.type() != pugi::node_element)
                continue;
            if (Is(child, "StructEntry"))
            {
                CNode* pNode = Create(ENodeKind_t::StructEntry, child.attribute("Name").value(), child);
                m_pending.push_back({pNode, child, structReg});
                ScanReferences(child);
            }
            else if (Is(child, "IntSwissKnife") && child.attribute("Name"))
                Scan(child, ENodeKind_t::IntSwissKnife);
            else if (IsReferenceElement(child.name()))
                NoteReference(child);
        }
    }

    void ScanReferences(const pugi::xml_node& element)
    {
        for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling())
            if (child.type() == pugi::node_element && IsReferenceElement(child.name()))
                NoteReference(child);
    }

    void NoteReference(const pugi::xml_node& reference)
    {
        m_map.ReserveOrder(CNodeBuilder::TrimmedView(reference.text().get()));
        if (reference.first_attribute()) // only pIndex has one (pOffset), and rarely
            if (pugi::xml_attribute pOffset = reference.attribute("pOffset"))
                m_map.ReserveOrder(CNodeBuilder::TrimmedView(pOffset.value()));
    }

    void ScanChildren(const pugi::xml_node& parent)
    {
        for (pugi::xml_node child = parent.first_child(); child; child = child.next_sibling())
        {
            if (child.type() != pugi::node_element)
                continue;
            ENodeKind_t kind;
            if (Is(child, "Group"))
                Nested(child, [&] { ScanChildren(child); });
            else if (Is(child, "StructReg"))
                ScanStructReg(child);
            else if (NodeKindOfElement(child.name(), kind))
                Scan(child, kind);
            // Anything else (vendor extensions at top level) is ignored.
        }
    }

    void Configure(CNodeBuilder& builder)
    {
        for (const PendingNode_t& pending : m_pending)
        {
            if (pending.pNode->Kind() == ENodeKind_t::EnumEntry && Is(pending.element.parent(), "Enumeration"))
                continue; // configured by its enumeration
            if (pending.structReg)
            {
                // Shared register settings first, then the entry's own elements.
                for (pugi::xml_node child = pending.structReg.first_child(); child; child = child.next_sibling())
                    if (child.type() == pugi::node_element && !Is(child, "StructEntry"))
                        pending.pNode->ConfigureElement(child, builder);
            }
            pending.pNode->Configure(pending.element, builder);
        }
    }

    const std::vector<PendingNode_t>& Pending() const { return m_pending; }

private:
    // Groups and embedded formulas are scanned recursively: bound the depth so that a hostile
    // description cannot exhaust the stack (real ones nest a level or two).
    static constexpr unsigned kMaxNesting = 64;

    template <class F>
    void Nested(const pugi::xml_node& element, F scan)
    {
        if (QV_UNLIKELY(++m_nesting > kMaxNesting))
            throw RUNTIME_EXCEPTION("Error while parsing XML stream at line %u and column %u : 'elements nest more than %u deep'",
                                    LineOf(static_cast<size_t>(element.offset_debug())),
                                    ColumnOf(static_cast<size_t>(element.offset_debug())), kMaxNesting);
        scan();
        --m_nesting;
    }

    CNodeMapImpl& m_map;
    CLineIndex m_lines; // of the description as given (the parsed copy is changed in place)
    std::vector<PendingNode_t> m_pending;
    unsigned m_nesting = 0;
};

// Caching modes depend on children: resolve them children first, a cycle counting as WriteThrough.
// Each node's load mark holds its state: 0 not seen, 1 resolving, 2 done.
void ResolveCachingModes(const std::vector<std::unique_ptr<CNode>>& nodes)
{
    std::vector<std::pair<CNode*, size_t>> stack;
    for (const std::unique_ptr<CNode>& pRoot : nodes)
    {
        if (pRoot->m_loadMark == 2)
            continue;
        stack.push_back({pRoot.get(), 0});
        pRoot->m_loadMark = 1;
        while (!stack.empty())
        {
            CNode* pNode = stack.back().first;
            size_t& next = stack.back().second;
            const std::vector<CNode*>& children = pNode->ValueChildren();
            if (next < children.size())
            {
                CNode* pChild = children[next++];
                if (pChild->m_loadMark == 0)
                {
                    pChild->m_loadMark = 1;
                    stack.push_back({pChild, 0});
                }
                continue;
            }
            pNode->SetCachingMode(pNode->ComputeCachingModeLocked());
            pNode->m_loadMark = 2;
            stack.pop_back();
        }
    }
    for (const std::unique_ptr<CNode>& pNode : nodes)
        pNode->m_loadMark = 0;
}

// A node forwarding its value to itself through pValue chains can never be read.
void CheckForwardingCycles(const std::vector<std::unique_ptr<CNode>>& nodes, CLoadPass& pass)
{
    // Each node forwards to at most one other, so one walk per chain is linear overall: a walk
    // stops at a node an earlier walk reached, and a cycle is a node met twice in the same walk.
    // A node's load mark is 1 + the index of the walk that reached it (0: none yet).
    for (size_t i = 0; i < nodes.size(); ++i)
    {
        if (!nodes[i]->ForwardsTo())
            continue; // most nodes: nothing to walk
        const uint32_t walk = static_cast<uint32_t>(i + 1);
        for (CNode* pNode = nodes[i].get(); pNode; pNode = pNode->ForwardsTo())
        {
            uint32_t& seen = pNode->m_loadMark;
            if (seen == walk)
            {
                const std::string name(nodes[i]->Name());
                throw RUNTIME_EXCEPTION("Node '%s' : its pValue references form a cycle (line %u)", name.c_str(),
                                        pass.LineOf(nodes[i]->SourceOffset()));
            }
            if (seen != 0)
                break; // an earlier walk went on from here
            seen = walk;
        }
    }
    for (const std::unique_ptr<CNode>& pNode : nodes)
        pNode->m_loadMark = 0;
}

void MarkFeatures(CNodeMapImpl& map)
{
    CNode* pRoot = map.FindNode("Root");
    if (!pRoot)
        return;
    // The feature flag marks what was visited.
    std::vector<CNode*> stack{pRoot};
    pRoot->SetIsFeature();
    while (!stack.empty())
    {
        CNode* pNode = stack.back();
        stack.pop_back();
        if (pNode->Kind() == ENodeKind_t::Category)
            for (CNode* pFeature : static_cast<CCategoryNode*>(pNode)->Features())
                if (!pFeature->IsFeature())
                {
                    pFeature->SetIsFeature();
                    stack.push_back(pFeature);
                }
    }
}

void ReadHeader(const pugi::xml_node& root, DeviceInfo_t& info)
{
    info.modelName = root.attribute("ModelName").value();
    info.vendorName = root.attribute("VendorName").value();
    info.toolTip = root.attribute("ToolTip").value();
    EStandardNameSpaceClass::FromString(root.attribute("StandardNameSpace").value(), &info.standardNameSpace);
    info.schemaVersion = {static_cast<uint16_t>(root.attribute("SchemaMajorVersion").as_uint(1)),
                          static_cast<uint16_t>(root.attribute("SchemaMinorVersion").as_uint(1)),
                          static_cast<uint16_t>(root.attribute("SchemaSubMinorVersion").as_uint(0))};
    info.deviceVersion = {static_cast<uint16_t>(root.attribute("MajorVersion").as_uint(0)),
                          static_cast<uint16_t>(root.attribute("MinorVersion").as_uint(0)),
                          static_cast<uint16_t>(root.attribute("SubMinorVersion").as_uint(0))};
    info.productGuid = root.attribute("ProductGuid").value();
    info.versionGuid = root.attribute("VersionGuid").value();
}

bool IsSchema10(const pugi::xml_node& root)
{
    for (pugi::xml_attribute attribute = root.first_attribute(); attribute; attribute = attribute.next_attribute())
        if (std::strncmp(attribute.name(), "xmlns", 5) == 0 && std::strstr(attribute.value(), "/GenApi/") != nullptr)
            return std::strstr(attribute.value(), "Version_1_0") != nullptr;
    return root.attribute("SchemaMajorVersion").as_uint(1) == 1 && root.attribute("SchemaMinorVersion").as_uint(1) == 0;
}

// Root element name without a namespace prefix.
bool IsRegisterDescription(const pugi::xml_node& root)
{
    const char* name = root.name();
    const char* colon = std::strchr(name, ':');
    return std::strcmp(colon ? colon + 1 : name, "RegisterDescription") == 0;
}

pugi::xml_node ParseDocument(pugi::xml_document& document, std::vector<char>& buffer, const std::string& text,
                             CLoadPass& pass)
{
    const pugi::xml_parse_result result =
        document.load_buffer_inplace(buffer.data(), buffer.size(), pugi::parse_cdata | pugi::parse_escapes, pugi::encoding_auto);
    if (!result)
        throw RUNTIME_EXCEPTION("Error while parsing XML stream at line %u and column %u : '%s'",
                                pass.LineOf(static_cast<size_t>(result.offset)),
                                pass.ColumnOf(static_cast<size_t>(result.offset)), result.description());
    pugi::xml_node root = document.document_element();
    if (!root || !IsRegisterDescription(root))
    {
        const size_t offset = root && root.offset_debug() > 0 ? static_cast<size_t>(root.offset_debug()) - 1 : 0;
        throw RUNTIME_EXCEPTION("Error while parsing XML stream at line %u and column %u : 'unexpected element encountered'",
                                pass.LineOf(offset), pass.ColumnOf(offset));
    }
    (void)text;
    return root;
}
} // namespace

std::unique_ptr<CNodeMapImpl> CXmlLoader::Load(const std::string& xmlText, const GenICam::gcstring& deviceName,
                                               CLock* pUserLock)
{
    if (xmlText.size() > kMaxDescriptionBytes)
        throw RUNTIME_EXCEPTION("The description is %zu bytes long; more than %zu bytes are refused", xmlText.size(),
                                kMaxDescriptionBytes);
    auto pMap = std::make_unique<CNodeMapImpl>(deviceName, pUserLock);
    CLoadPass pass(*pMap, xmlText);
    // pugixml parses in place: work on a copy so that the original stays usable for line numbers.
    std::vector<char> buffer(xmlText.begin(), xmlText.end());
    pugi::xml_document document;
    const pugi::xml_node root = ParseDocument(document, buffer, xmlText, pass);
    // pugixml parses UTF-16, UTF-32 and Latin-1 text from a converted copy that dies with the
    // document, yet names must stay views into the buffer we keep: load such text as UTF-8.
    if (root.name() < buffer.data() || root.name() >= buffer.data() + buffer.size())
    {
        std::ostringstream utf8;
        document.save(utf8, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
        return Load(utf8.str(), deviceName, pUserLock);
    }
    ReadHeader(root, pMap->Info());
    // Real descriptions spend roughly 250 to 400 bytes per node.
    pMap->Reserve(xmlText.size() / 250 + 16);

    pass.ScanChildren(root);
    CNodeBuilder builder(*pMap, xmlText, IsSchema10(root));
    pass.Configure(builder);
    for (const PendingNode_t& pending : pass.Pending())
        pending.pNode->Link(builder);
    CheckForwardingCycles(pMap->OwnedNodes(), pass);
    ResolveCachingModes(pMap->OwnedNodes());
    MarkFeatures(*pMap);
    pMap->FinishLoading();
    pMap->AdoptSourceText(std::move(buffer));
    return pMap;
}

namespace
{
// Top-level element of every node name, for the sub-tree walk.
void IndexElements(const pugi::xml_node& parent, std::unordered_map<std::string, pugi::xml_node>& elements)
{
    for (pugi::xml_node child = parent.first_child(); child; child = child.next_sibling())
    {
        if (child.type() != pugi::node_element)
            continue;
        ENodeKind_t kind;
        if (Is(child, "Group"))
            IndexElements(child, elements);
        else if (Is(child, "StructReg"))
        {
            for (pugi::xml_node entry = child.child("StructEntry"); entry; entry = entry.next_sibling("StructEntry"))
                elements.emplace(entry.attribute("Name").value(), child);
        }
        else if (NodeKindOfElement(child.name(), kind))
        {
            elements.emplace(child.attribute("Name").value(), child);
            for (pugi::xml_node inner = child.first_child(); inner; inner = inner.next_sibling())
                if (Is(inner, "IntSwissKnife") && inner.attribute("Name"))
                    elements.emplace(inner.attribute("Name").value(), child);
        }
    }
}

// Every reference below the element, in document order. Iterative: vendor extensions may nest
// deeper than the stack allows recursion.
void CollectReferences(const pugi::xml_node& element, std::vector<std::string>& names)
{
    pugi::xml_node node = element.first_child();
    while (node)
    {
        if (node.type() == pugi::node_element && IsReferenceElement(node.name()))
        {
            names.emplace_back(CNodeBuilder::TrimmedView(node.text().get()));
            if (pugi::xml_attribute pOffset = node.attribute("pOffset"))
                names.emplace_back(CNodeBuilder::TrimmedView(pOffset.value()));
        }
        if (node.first_child())
        {
            node = node.first_child();
            continue;
        }
        while (node != element && !node.next_sibling())
            node = node.parent();
        if (node == element)
            break;
        node = node.next_sibling();
    }
}
} // namespace

std::string CXmlLoader::ExtractSubtree(const std::string& xmlText, const std::string& rootName, bool renameToRoot)
{
    CNodeMapImpl scratch("", nullptr);
    CLoadPass pass(scratch, xmlText);
    std::vector<char> buffer(xmlText.begin(), xmlText.end());
    pugi::xml_document document;
    pugi::xml_node root = ParseDocument(document, buffer, xmlText, pass);

    std::unordered_map<std::string, pugi::xml_node> elements;
    IndexElements(root, elements);
    auto start = elements.find(rootName);
    if (start == elements.end())
        throw RUNTIME_EXCEPTION("Node '%s' does not exist; no sub-tree can be extracted", rootName.c_str());

    std::unordered_set<const void*> chosen;
    std::vector<std::string> pending{rootName};
    while (!pending.empty())
    {
        const std::string name = pending.back();
        pending.pop_back();
        auto it = elements.find(name);
        if (it == elements.end())
            continue; // a dangling reference is reported when the sub-tree is loaded
        if (!chosen.insert(it->second.internal_object()).second)
            continue;
        CollectReferences(it->second, pending);
    }

    pugi::xml_document subtree;
    pugi::xml_node newRoot = subtree.append_child(root.name());
    for (pugi::xml_attribute attribute = root.first_attribute(); attribute; attribute = attribute.next_attribute())
        newRoot.append_attribute(attribute.name()) = attribute.value();
    // Keep document order (it decides the node order of the new map).
    std::vector<pugi::xml_node> ordered;
    struct Walker : pugi::xml_tree_walker
    {
        std::unordered_set<const void*>* pChosen;
        std::vector<pugi::xml_node>* pOrdered;
        bool for_each(pugi::xml_node& node) override
        {
            if (pChosen->count(node.internal_object()))
                pOrdered->push_back(node);
            return true;
        }
    } walker;
    walker.pChosen = &chosen;
    walker.pOrdered = &ordered;
    root.traverse(walker);
    for (const pugi::xml_node& element : ordered)
    {
        pugi::xml_node copy = newRoot.append_copy(element);
        if (renameToRoot && std::strcmp(copy.attribute("Name").value(), rootName.c_str()) == 0)
            copy.attribute("Name").set_value("Root");
    }
    std::ostringstream out;
    subtree.save(out, "", pugi::format_raw | pugi::format_no_declaration);
    return out.str();
}
} // namespace GenApi
