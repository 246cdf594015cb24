#pragma once

// Reads and writes simple features of a GenICam description through raw register access, by
// following the description itself (Integer/Float/Enumeration/Boolean/Command -> pValue ->
// IntReg/FloatReg/StringReg with Address, pIndex, Length, Endianess and Sign). This is not a
// node-map engine: it covers the node kinds the producer's descriptions use, so a test can
// check that the description and the register map agree.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include <GenTL/GenTL.h>

namespace QvGenTLTest {

class CDescriptionFeatures
{
public:
    using ReadFn = std::function<GenTL::GC_ERROR(uint64_t address, void* buffer, size_t size)>;
    using WriteFn = std::function<GenTL::GC_ERROR(uint64_t address, const void* buffer, size_t size)>;

    /// Parses xml; Ok() tells whether it is well-formed.
    CDescriptionFeatures(const std::string& xml, ReadFn read, WriteFn write);

    bool Ok() const { return m_ok; }
    std::string ParseError() const { return m_parseError; }

    /// Every reference (pValue, pFeature, pPort, ...) names an existing node; returns the dangling ones.
    std::vector<std::string> DanglingReferences() const;
    /// Names of all nodes of the given element kind (e.g. "Port").
    std::vector<std::string> NodesOfKind(const char* kind) const;
    bool Has(const std::string& name) const;
    std::string Kind(const std::string& name) const;
    /// Text of a child element of a node ("" if absent).
    std::string Child(const std::string& name, const char* element) const;

    int64_t GetInt(const std::string& name);
    GenTL::GC_ERROR SetInt(const std::string& name, int64_t value);
    double GetFloat(const std::string& name);
    GenTL::GC_ERROR SetFloat(const std::string& name, double value);
    std::string GetString(const std::string& name);
    GenTL::GC_ERROR SetString(const std::string& name, const std::string& value);
    GenTL::GC_ERROR Execute(const std::string& name);
    /// Value of an enumeration entry; throws std::runtime_error if there is none.
    int64_t EntryValue(const std::string& enumeration, const std::string& entry) const;
    std::vector<std::string> Entries(const std::string& enumeration) const;
    GenTL::GC_ERROR SetEnum(const std::string& enumeration, const std::string& entry);
    std::string GetEnum(const std::string& enumeration);

    /// Last register result of a read made by a Get call.
    GenTL::GC_ERROR LastReadResult() const { return m_lastRead; }

private:
    struct Register_t
    {
        uint64_t address;
        size_t length;
        bool littleEndian;
        bool isSigned;
    };
    pugi::xml_node Node(const std::string& name) const;
    /// The register a feature ends in (following pValue).
    Register_t Resolve(const std::string& name);

    pugi::xml_document m_document;
    bool m_ok = false;
    std::string m_parseError;
    ReadFn m_read;
    WriteFn m_write;
    GenTL::GC_ERROR m_lastRead = GenTL::GC_ERR_SUCCESS;
};

} // namespace QvGenTLTest
