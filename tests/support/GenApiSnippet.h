#pragma once

// Builds node maps from short hand-written descriptions for engine tests.

#include <string>

#include <GenApi/GenApi.h>
#include <GenApi/MemoryPort.h>

namespace QvTest
{
/// A complete schema 1.1 description around \a nodes, with a Port node named "Device".
inline std::string DescriptionWith(const std::string& nodes, const char* schemaMinor = "1")
{
    return std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                       "<RegisterDescription ModelName=\"Test\" VendorName=\"Qv\" ToolTip=\"t\" "
                       "StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"") +
           schemaMinor +
           "\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"2\" SubMinorVersion=\"3\" "
           "ProductGuid=\"11111111-2222-3333-4444-555555555555\" "
           "VersionGuid=\"66666666-7777-8888-9999-000000000000\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_" +
           schemaMinor + "\">\n" + nodes + "\n<Port Name=\"Device\"/>\n</RegisterDescription>\n";
}

/// A node map loaded from \a nodes, connected to \a port when one is given.
inline GenApi::CNodeMapRef LoadSnippet(const std::string& nodes, GenApi::IPort* pPort = nullptr)
{
    GenApi::CNodeMapRef nodeMap;
    nodeMap._LoadXMLFromString(DescriptionWith(nodes).c_str());
    if (pPort)
        nodeMap._Connect(pPort, "Device");
    return nodeMap;
}

/// The description of the exception \a action throws, or "" when it throws none.
template <class F>
std::string ErrorOf(F action)
{
    try
    {
        action();
    }
    catch (const GenICam::GenericException& error)
    {
        return error.GetDescription();
    }
    return std::string();
}

/// An IntReg snippet at \a address (4 bytes, little endian) with extra elements.
inline std::string IntReg(const std::string& name, int address, const std::string& extra = "",
                          const char* accessMode = "RW")
{
    return "<IntReg Name=\"" + name + "\"><Address>" + std::to_string(address) +
           "</Address><Length>4</Length><AccessMode>" + accessMode + "</AccessMode><pPort>Device</pPort>" + extra +
           "</IntReg>";
}
} // namespace QvTest
