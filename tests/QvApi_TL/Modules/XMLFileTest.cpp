// Description loading: the URL grammar, reading plain and zipped descriptions from a port,
// saving them, sub-trees and the chunk factory.
#include "QvSDKCommon/QvXMLFile.h"

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>

#include "FaultPortFixture.h"

using QvApi::CQvXMLFile;
using QvModuleTest::Catch;
using QvModuleTest::CFaultPortTest;
using QvModuleTest::Format;

namespace
{
struct SURLCase_
{
    const char* url;
    int location;
    const char* filePath;
    uint64_t address;
    uint64_t length;
};

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::string TempPath(const char* name)
{
    return std::string("/tmp/qvxmlfile_") + std::to_string(getpid()) + "_" + name;
}
} // namespace

TEST(XMLFileURL, SplitsSchemePathAddressAndLengthByPlainSearch)
{
    const SURLCase_ cases[] = {
        {"LOCAL:Device.xml;0;100", 0, "Device.xml", 0, 0x100},
        {"Local:Device.xml;0;100", 0, "Device.xml", 0, 0x100},
        {"local:///Camera.zip;8000;1A3F", 0, "///Camera.zip", 0x8000, 0x1A3F},
        {"local:Dir\\Cam.ZIP;1000;2000", 0, "Dir\\Cam.ZIP", 0x1000, 0x2000},
        {"http://host/x.xml", 1, "//host/x.xml", 0, 0},
        // Without a ';' the whole URL is read as hexadecimal: "f" of "file" is 15.
        {"file:///x.xml", 2, "///x.xml", 0xF, 0xF},
        {"FILE:x.xml;1;2", 2, "x.xml", 1, 2},
        // An unknown scheme counts as local.
        {"foo:x;10;20", 0, "x", 0x10, 0x20},
        {";10;20", 0, "", 0x10, 0x20},
        {"local:x.xml;0x20;0x30", 0, "x.xml", 0x20, 0x30},
        {"local:x.xml;10", 0, "x.xml", 0x10, 0},
    };
    for (const SURLCase_& c : cases)
    {
        SCOPED_TRACE(c.url);
        EXPECT_EQ(CQvXMLFile::ParseURLLocation(c.url), c.location);
        EXPECT_STREQ(CQvXMLFile::ParseURLFilePath(c.url).c_str(), c.filePath);
        EXPECT_EQ(CQvXMLFile::ParseURLLocalAddress(c.url), c.address);
        EXPECT_EQ(CQvXMLFile::ParseURLLocalLength(c.url), c.length);
    }
    // Without any ';' the whole URL is read as the number.
    EXPECT_EQ(CQvXMLFile::ParseURLLocalAddress("abc"), 0xABCu);
}

TEST(XMLFileURL, NamesTheFileAfterTheLastBackslashAndDetectsZipByItsLastThreeLetters)
{
    EXPECT_STREQ(CQvXMLFile::ParseURLFileName("Dir\\Sub\\Cam.ZIP").c_str(), "Cam.ZIP");
    EXPECT_STREQ(CQvXMLFile::ParseURLFileName("///Camera.zip").c_str(), "///Camera.zip");
    EXPECT_TRUE(CQvXMLFile::IsZipFileName("Cam.ZIP"));
    EXPECT_TRUE(CQvXMLFile::IsZipFileName("a.ZiP"));
    EXPECT_TRUE(CQvXMLFile::IsZipFileName("camxzip")); // the dot is not examined
    EXPECT_TRUE(CQvXMLFile::IsZipFileName("zip"));
    EXPECT_FALSE(CQvXMLFile::IsZipFileName("ip"));
    EXPECT_FALSE(CQvXMLFile::IsZipFileName("cam.xml"));
    EXPECT_FALSE(CQvXMLFile::IsZipFileName("cam.zip.xml"));
}

using XMLFile = CFaultPortTest;

TEST_F(XMLFile, LoadsThePlainDescriptionOfItsURLAndNamesTheNodeMapAfterThePrefix)
{
    QvApi::CQvPort& port = Port();
    GenApi::INodeMap* pNodeMap = port.GetINodeMap();
    ASSERT_NE(pNodeMap, nullptr);
    EXPECT_NE(pNodeMap->GetNode("QvFaultModuleValue"), nullptr);
    EXPECT_STREQ(pNodeMap->GetDeviceName().c_str(), "System_T");
    EXPECT_STREQ(port.GetXMLFileName().c_str(), "QvFaultSystem.xml");
    EXPECT_EQ(port.GetXMLFile().GetContentType(), GenApi::ContentType_Xml);
    // Created once: a second call does not read the port again.
    const uint32_t reads = Calls(QV_FAULT_GCReadPort);
    EXPECT_EQ(port.GetINodeMap(), pNodeMap);
    EXPECT_EQ(Calls(QV_FAULT_GCReadPort), reads);
}

TEST_F(XMLFile, LoadsAZippedDescriptionAndSavesItsBytesUnchanged)
{
    const std::string xml = QvModuleTest::OneRegisterDescription("Zipped");
    const std::vector<uint8_t> zip = QvModuleTest::StoredZip("Cam.xml", xml);
    Describe(zip.data(), zip.size(), "Dir\\Cam.ZIP");
    QvApi::CQvPort& port = Port();
    ASSERT_NE(port.GetINodeMap()->GetNode("Zipped"), nullptr);
    EXPECT_EQ(port.GetXMLFile().GetContentType(), GenApi::ContentType_ZippedXml);
    EXPECT_STREQ(port.GetXMLFileName().c_str(), "Cam.ZIP");
    const std::string path = TempPath("zipped.zip");
    port.SaveXMLFile(path.c_str());
    EXPECT_EQ(ReadFile(path), std::string(zip.begin(), zip.end()));
    unlink(path.c_str());
}

TEST_F(XMLFile, SavesPlainTextWithoutTheTrailingZeros)
{
    const std::string xml = QvModuleTest::OneRegisterDescription();
    Describe(xml + std::string(7, '\0'));
    QvApi::CQvPort& port = Port();
    const std::string path = TempPath("plain.xml");
    port.SaveXMLFile(path.c_str());
    EXPECT_EQ(ReadFile(path), xml);
    unlink(path.c_str());
}

TEST_F(XMLFile, KeepsAShorterAnswerOfTheProducerWithoutError)
{
    const std::string xml = QvModuleTest::OneRegisterDescription();
    Describe(xml + std::string(16, '\0'));
    Rule(QV_FAULT_GCReadPort, 0, -8);
    QvApi::CQvPort& port = Port();
    ASSERT_NE(port.GetINodeMap(), nullptr);
    EXPECT_EQ(port.GetXMLFile().GetDescriptionSize(), xml.size() + 8);
}

TEST_F(XMLFile, ReportsAFailedReadWithTheAddressAndKeepsNothing)
{
    Rule(QV_FAULT_GCReadPort, GenTL::GC_ERR_IO);
    QvApi::CQvPort& port = Port();
    const auto caught = Catch<QvApi::CQvGenTLErrorException>([&] { port.GetINodeMap(); });
    ASSERT_TRUE(caught.thrown);
    EXPECT_EQ(caught.code, GenTL::GC_ERR_IO);
    EXPECT_EQ(caught.function, "GCReadPort");
    EXPECT_EQ(caught.description.rfind(Format("%d = GCReadPort(0x%p, %I64u, 0x", GenTL::GC_ERR_IO, m_hTL, 0x10000u), 0),
              0u)
        << caught.description;
    EXPECT_EQ(caught.sourceFile, "QvSDKCommon/QvXMLFile.cpp");
    EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { port.GetXMLFile().GetXMLFileName(); }).description,
              "XML File is not loaded.");
    // Nothing was created: the next use reads again.
    m_pControl->ClearRule(QV_FAULT_GCReadPort);
    EXPECT_NE(port.GetINodeMap(), nullptr);
}

TEST_F(XMLFile, RefusesHttpAndFileLocations)
{
    SetURL("file:///tmp/x.xml");
    EXPECT_EQ(Catch<GenICam::InvalidArgumentException>([&] { Port().GetINodeMap(); }).description,
              "URL location 2 is not supported.");
    SetURL("http://host/x.xml;0;10");
    EXPECT_EQ(Catch<GenICam::InvalidArgumentException>([&] { Port().GetINodeMap(); }).description,
              "URL location 1 is not supported.");
    EXPECT_EQ(Calls(QV_FAULT_GCReadPort), 0u);
}

TEST_F(XMLFile, RetriesAfterAFaultyDescription)
{
    Describe(std::string("<RegisterDescription><IntReg Name=\"Broken\">"));
    QvApi::CQvPort& port = Port();
    EXPECT_THROW(port.GetINodeMap(), GenICam::GenericException);
    EXPECT_EQ(port.GetXMLFile().GetNodeMap(), nullptr);
    Describe(QvModuleTest::OneRegisterDescription("Fixed"));
    EXPECT_NE(port.GetINodeMap()->GetNode("Fixed"), nullptr);
    EXPECT_EQ(Calls(QV_FAULT_GCReadPort), 2u);
}

TEST_F(XMLFile, RefusesToSaveBeforeLoadingAndNamesAnUnopenableFile)
{
    CQvXMLFile xmlFile(m_pLib.get(), m_hTL, GenApi::RW, "System_T");
    EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { xmlFile.SaveToFile("/tmp/never.xml"); }).description,
              "XML File is not loaded.");
    QvApi::CQvPort& port = Port();
    EXPECT_EQ(Catch<GenICam::RuntimeException>([&] { port.SaveXMLFile("/nonexistent/dir/x.xml"); }).description,
              "File /nonexistent/dir/x.xml could not be opened.");
}

TEST_F(XMLFile, BuildsSubTreeNodeMapsConnectedToTheSamePort)
{
    QvApi::CQvPort& port = Port();
    GenApi::CIntegerPtr value(port.GetINodeMap()->GetNode("QvFaultModuleValue"));
    value->SetValue(1234);
    GenApi::CNodeMapRef subTree;
    port.CreateSubTreeNodeMap("QvFaultModuleValue", subTree, false);
    GenApi::CIntegerPtr copy(subTree._GetNode("QvFaultModuleValue"));
    ASSERT_TRUE(copy.IsValid());
    EXPECT_EQ(copy->GetValue(), 1234);
    EXPECT_EQ(subTree._GetNode("Root"), nullptr);
}

TEST_F(XMLFile, StartsEachChunkNodeMapWithTheTransportLayerParametersLocked)
{
    const char* chunk = "  <Category Name=\"ChunkData\"><pFeature>TLParamsLock</pFeature></Category>\n"
                        "  <IntReg Name=\"TLParamsLock\"><Address>8</Address><Length>4</Length>"
                        "<AccessMode>RW</AccessMode><pPort>TLPort</pPort><Sign>Unsigned</Sign>"
                        "<Endianess>LittleEndian</Endianess></IntReg>\n";
    Describe(QvModuleTest::OneRegisterDescription("Value", "TLPort", chunk));
    QvApi::CQvPort& port = Port();
    GenApi::CNodeMapRef chunkMap;
    port.CreateSubTreeNodeMapForChunkData(chunkMap);
    ASSERT_NE(chunkMap._Ptr, nullptr);
    EXPECT_FALSE(port.GetXMLFile().IsChunkFactoryEmpty());
    GenApi::CIntegerPtr lock(chunkMap._GetNode("TLParamsLock"));
    ASSERT_TRUE(lock.IsValid());
    uint32_t registerValue = 0;
    ASSERT_EQ(m_pControl->ReadPortMemory(QV_FAULT_MODULE_SYSTEM, 8, &registerValue, 4), 0);
    EXPECT_EQ(registerValue, 1u);
    EXPECT_EQ(chunkMap._GetNode("Value"), nullptr);
}
