#include "tests/producers/DescriptionFeatures.h"

#include <cstring>
#include <set>
#include <stdexcept>

namespace QvGenTLTest {

namespace {

int64_t ParseInteger(const std::string& text)
{
    return std::stoll(text, nullptr, 0);
}

} // namespace

CDescriptionFeatures::CDescriptionFeatures(const std::string& xml, ReadFn read, WriteFn write)
    : m_read(std::move(read)), m_write(std::move(write))
{
    const pugi::xml_parse_result result = m_document.load_buffer(xml.data(), xml.size());
    m_ok = static_cast<bool>(result);
    if (!m_ok)
        m_parseError = std::string(result.description()) + " at offset " + std::to_string(result.offset);
}

pugi::xml_node CDescriptionFeatures::Node(const std::string& name) const
{
    return m_document.child("RegisterDescription").find_child_by_attribute("Name", name.c_str());
}

bool CDescriptionFeatures::Has(const std::string& name) const
{
    return static_cast<bool>(Node(name));
}

std::string CDescriptionFeatures::Kind(const std::string& name) const
{
    return Node(name).name();
}

std::string CDescriptionFeatures::Child(const std::string& name, const char* element) const
{
    return Node(name).child_value(element);
}

std::vector<std::string> CDescriptionFeatures::NodesOfKind(const char* kind) const
{
    std::vector<std::string> names;
    for (pugi::xml_node node : m_document.child("RegisterDescription").children(kind))
        names.push_back(node.attribute("Name").value());
    return names;
}

std::vector<std::string> CDescriptionFeatures::DanglingReferences() const
{
    std::set<std::string> names;
    for (pugi::xml_node node : m_document.child("RegisterDescription").children())
        names.insert(node.attribute("Name").value());
    std::vector<std::string> dangling;
    // Every element whose name starts with a lower-case p followed by an upper-case letter
    // refers to a node (pValue, pFeature, pIsLocked, pIndex, pVariable, pInvalidator, ...).
    for (pugi::xpath_node reference : m_document.select_nodes("//*"))
    {
        const std::string element = reference.node().name();
        if (element.size() > 1 && element[0] == 'p' && std::isupper(static_cast<unsigned char>(element[1])) &&
            names.count(reference.node().child_value()) == 0)
            dangling.push_back(element + " -> " + reference.node().child_value());
    }
    return dangling;
}

CDescriptionFeatures::Register_t CDescriptionFeatures::Resolve(const std::string& name)
{
    pugi::xml_node node = Node(name);
    if (!node)
        throw std::runtime_error("no node " + name);
    const std::string kind = node.name();
    if (kind != "IntReg" && kind != "FloatReg" && kind != "StringReg")
    {
        const char* value = node.child_value("pValue");
        if (*value == 0)
            throw std::runtime_error(name + " has no pValue");
        return Resolve(value);
    }
    Register_t reg{};
    for (pugi::xml_node address : node.children("Address"))
        reg.address += static_cast<uint64_t>(ParseInteger(address.child_value()));
    for (pugi::xml_node index : node.children("pIndex"))
        reg.address += static_cast<uint64_t>(GetInt(index.child_value()) * ParseInteger(index.attribute("Offset").value()));
    reg.length = static_cast<size_t>(ParseInteger(node.child_value("Length")));
    reg.littleEndian = std::string(node.child_value("Endianess")) != "BigEndian";
    reg.isSigned = std::string(node.child_value("Sign")) == "Signed";
    return reg;
}

int64_t CDescriptionFeatures::GetInt(const std::string& name)
{
    const Register_t reg = Resolve(name);
    uint8_t bytes[8] = {};
    m_lastRead = m_read(reg.address, bytes, reg.length);
    if (m_lastRead != GenTL::GC_ERR_SUCCESS)
        return 0;
    uint64_t value = 0;
    for (size_t i = 0; i < reg.length; ++i)
        value |= uint64_t(bytes[reg.littleEndian ? i : reg.length - 1 - i]) << (8 * i);
    if (reg.isSigned && reg.length < 8 && (value >> (8 * reg.length - 1)) != 0)
        value |= ~uint64_t(0) << (8 * reg.length);
    return static_cast<int64_t>(value);
}

GenTL::GC_ERROR CDescriptionFeatures::SetInt(const std::string& name, int64_t value)
{
    const Register_t reg = Resolve(name);
    uint8_t bytes[8] = {};
    for (size_t i = 0; i < reg.length; ++i)
        bytes[reg.littleEndian ? i : reg.length - 1 - i] = static_cast<uint8_t>(uint64_t(value) >> (8 * i));
    return m_write(reg.address, bytes, reg.length);
}

double CDescriptionFeatures::GetFloat(const std::string& name)
{
    const Register_t reg = Resolve(name);
    uint8_t bytes[8] = {};
    m_lastRead = m_read(reg.address, bytes, 8);
    uint64_t bits = 0;
    for (size_t i = 0; i < 8; ++i)
        bits |= uint64_t(bytes[reg.littleEndian ? i : 7 - i]) << (8 * i);
    double value;
    std::memcpy(&value, &bits, 8);
    return value;
}

GenTL::GC_ERROR CDescriptionFeatures::SetFloat(const std::string& name, double value)
{
    const Register_t reg = Resolve(name);
    uint64_t bits;
    std::memcpy(&bits, &value, 8);
    uint8_t bytes[8];
    for (size_t i = 0; i < 8; ++i)
        bytes[reg.littleEndian ? i : 7 - i] = static_cast<uint8_t>(bits >> (8 * i));
    return m_write(reg.address, bytes, 8);
}

std::string CDescriptionFeatures::GetString(const std::string& name)
{
    const Register_t reg = Resolve(name);
    std::vector<char> text(reg.length + 1, 0);
    m_lastRead = m_read(reg.address, text.data(), reg.length);
    return text.data();
}

GenTL::GC_ERROR CDescriptionFeatures::SetString(const std::string& name, const std::string& value)
{
    const Register_t reg = Resolve(name);
    std::vector<char> text(reg.length, 0);
    std::memcpy(text.data(), value.data(), std::min(value.size(), reg.length));
    return m_write(reg.address, text.data(), reg.length);
}

GenTL::GC_ERROR CDescriptionFeatures::Execute(const std::string& name)
{
    return SetInt(name, ParseInteger(Node(name).child_value("CommandValue")));
}

int64_t CDescriptionFeatures::EntryValue(const std::string& enumeration, const std::string& entry) const
{
    pugi::xml_node node = Node(enumeration).find_child_by_attribute("EnumEntry", "Name", entry.c_str());
    if (!node)
        throw std::runtime_error(enumeration + " has no entry " + entry);
    return ParseInteger(node.child_value("Value"));
}

std::vector<std::string> CDescriptionFeatures::Entries(const std::string& enumeration) const
{
    std::vector<std::string> entries;
    for (pugi::xml_node entry : Node(enumeration).children("EnumEntry"))
        entries.push_back(entry.attribute("Name").value());
    return entries;
}

GenTL::GC_ERROR CDescriptionFeatures::SetEnum(const std::string& enumeration, const std::string& entry)
{
    return SetInt(enumeration, EntryValue(enumeration, entry));
}

std::string CDescriptionFeatures::GetEnum(const std::string& enumeration)
{
    const int64_t value = GetInt(enumeration);
    for (const std::string& entry : Entries(enumeration))
        if (EntryValue(enumeration, entry) == value)
            return entry;
    return "<" + std::to_string(value) + ">";
}

} // namespace QvGenTLTest
