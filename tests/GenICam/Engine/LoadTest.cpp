#include <cstdio>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <zip.h>

#include <GenApi/GenApi.h>

#include "GenApiSnippet.h"

using namespace GenApi;
using QvTest::DescriptionWith;
using QvTest::ErrorOf;
using QvTest::LoadSnippet;

namespace
{
const char* kTwoIntegers = "<Category Name=\"Root\"><pFeature>B</pFeature></Category>"
                           "<Integer Name=\"A\"><Value>1</Value></Integer>"
                           "<Integer Name=\"B\"><pValue>A</pValue></Integer>";

std::string Zip(const std::vector<std::pair<std::string, std::string>>& entries)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* pSource = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_source_keep(pSource);
    zip_t* pZip = zip_open_from_source(pSource, ZIP_TRUNCATE, &error);
    for (const auto& entry : entries)
    {
        zip_source_t* pData = zip_source_buffer(pZip, entry.second.data(), entry.second.size(), 0);
        zip_file_add(pZip, entry.first.c_str(), pData, ZIP_FL_ENC_UTF_8);
    }
    zip_close(pZip);
    zip_source_open(pSource);
    zip_source_seek(pSource, 0, SEEK_END);
    const zip_int64_t size = zip_source_tell(pSource);
    zip_source_seek(pSource, 0, SEEK_SET);
    std::string bytes(static_cast<size_t>(size), '\0');
    zip_source_read(pSource, &bytes[0], static_cast<zip_uint64_t>(size));
    zip_source_close(pSource);
    zip_source_free(pSource);
    return bytes;
}

int64_t ValueOf(CNodeMapRef& nodeMap, const char* name)
{
    return CIntegerPtr(nodeMap._GetNode(name))->GetValue();
}
} // namespace

TEST(Load, AcceptsByteOrderMarkMissingDeclarationAndAnyLineEnding)
{
    std::string text = DescriptionWith(kTwoIntegers);
    std::string withBom = "\xEF\xBB\xBF" + text;
    std::string noDeclaration = text.substr(text.find('\n') + 1);
    std::string crlf;
    for (char c : text)
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    for (const std::string& variant : {withBom, noDeclaration, crlf})
    {
        CNodeMapRef nodeMap;
        nodeMap._LoadXMLFromString(variant.c_str());
        EXPECT_EQ(ValueOf(nodeMap, "B"), 1);
    }
}

TEST(Load, ReadsZippedDescriptionsFromMemoryAndFile)
{
    const std::string zip = Zip({{"readme.txt", "not the description"}, {"Camera.xml", DescriptionWith(kTwoIntegers)}});
    CNodeMapRef fromMemory;
    fromMemory._LoadXMLFromZIPData(zip.data(), zip.size());
    EXPECT_EQ(ValueOf(fromMemory, "B"), 1);

    const std::string fileName = ::testing::TempDir() + "qv_engine_test.zip";
    std::ofstream(fileName, std::ios::binary) << zip;
    CNodeMapRef fromFile;
    fromFile._LoadXMLFromZIPFile(fileName.c_str());
    EXPECT_EQ(ValueOf(fromFile, "A"), 1);
    std::remove(fileName.c_str());
}

TEST(Load, RefusesDamagedZipData)
{
    std::string zip = Zip({{"Camera.xml", DescriptionWith(kTwoIntegers)}});
    CNodeMapRef nodeMap;
    EXPECT_THROW(nodeMap._LoadXMLFromZIPData("PK\x03\x04garbage", 12), GenICam::RuntimeException);
    zip[zip.size() / 2] ^= 0x55;
    EXPECT_THROW(nodeMap._LoadXMLFromZIPData(zip.data(), zip.size()), GenICam::RuntimeException);
}

TEST(Load, ReportsMalformedXmlWithLineAndColumn)
{
    const std::string error = ErrorOf([] {
        CNodeMapRef nodeMap;
        nodeMap._LoadXMLFromString("<RegisterDescription>\n<Integer Name=\"A\">\n</RegisterDescription>");
    });
    EXPECT_NE(error.find("Error while parsing XML stream at line 3"), std::string::npos) << error;
    EXPECT_EQ(ErrorOf([] {
                  CNodeMapRef nodeMap;
                  nodeMap._LoadXMLFromString("<Foo/>");
              }),
              "Error while parsing XML stream at line 1 and column 1 : 'unexpected element encountered'");
}

TEST(Load, DanglingReferenceNamesTheTargetTheNodeAndTheLine)
{
    const std::string error = ErrorOf([] { LoadSnippet("<Integer Name=\"A\">\n<pValue>Nowhere</pValue></Integer>"); });
    EXPECT_EQ(error.find("Error in XML stream : dangling node reference 'Nowhere'"), 0u) << error;
    EXPECT_NE(error.find("'A'"), std::string::npos) << error;
    EXPECT_NE(error.find("line 4"), std::string::npos) << error;
}

TEST(Load, DuplicateNameIsALoadError)
{
    const std::string error = ErrorOf([] {
        LoadSnippet("<Integer Name=\"A\"><Value>1</Value></Integer>\n<Integer Name=\"A\"><Value>2</Value></Integer>");
    });
    EXPECT_EQ(error.find("XML Parse error at line 4 and column"), 0u) << error;
    EXPECT_NE(error.find("Found a duplicate node'A'."), std::string::npos) << error;
}

TEST(Load, ValueReferenceCycleIsALoadErrorAndOtherCyclesDoNotHang)
{
    EXPECT_NE(ErrorOf([] {
                  LoadSnippet("<Integer Name=\"A\"><pValue>B</pValue></Integer><Integer Name=\"B\"><pValue>A</pValue></Integer>");
              }).find("cycle"),
              std::string::npos);
    // A max depending on a value whose max depends back: legal, and must not recurse for ever.
    CNodeMapRef nodeMap = LoadSnippet("<Integer Name=\"W\"><Value>4</Value><pMax>WMax</pMax></Integer>"
                                      "<IntSwissKnife Name=\"WMax\"><pVariable Name=\"X\">X</pVariable><Formula>10-X</Formula></IntSwissKnife>"
                                      "<Integer Name=\"X\"><Value>2</Value><pMax>XMax</pMax></Integer>"
                                      "<IntSwissKnife Name=\"XMax\"><pVariable Name=\"W\">W</pVariable><Formula>10-W</Formula></IntSwissKnife>");
    CIntegerPtr width = nodeMap._GetNode("W");
    EXPECT_EQ(width->GetAccessMode(), RW);
    EXPECT_EQ(width->GetMax(), 8);
    width->SetValue(6);
    EXPECT_EQ(CIntegerPtr(nodeMap._GetNode("X"))->GetMax(), 4);
}

TEST(Load, NodeOrderFollowsFirstMentionInTheText)
{
    CNodeMapRef nodeMap = LoadSnippet("<Category Name=\"Root\"><pFeature>Z</pFeature><pFeature>E</pFeature></Category>"
                                      "<Integer Name=\"A\"><Value>1</Value></Integer>"
                                      "<Enumeration Name=\"E\"><EnumEntry Name=\"On\"><Value>1</Value></EnumEntry><Value>1</Value></Enumeration>"
                                      "<Integer Name=\"Z\"><pValue>A</pValue></Integer>");
    NodeList_t nodes;
    nodeMap._GetNodes(nodes);
    std::vector<std::string> names;
    for (INode* pNode : nodes)
        names.push_back(pNode->GetName().str());
    EXPECT_EQ(names, (std::vector<std::string>{"Root", "Z", "E", "A", "EnumEntry_E_On", "Device"}));
}

TEST(Load, FlattensGroupsAndExpandsStructRegs)
{
    CNodeMapRef nodeMap =
        LoadSnippet("<Group Comment=\"g\"><Integer Name=\"A\"><Value>1</Value></Integer></Group>"
                    "<StructReg Comment=\"s\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
                    "<pPort>Device</pPort><StructEntry Name=\"Low\"><LSB>0</LSB><MSB>7</MSB></StructEntry>"
                    "<StructEntry Name=\"High\"><LSB>8</LSB><MSB>15</MSB><AccessMode>RO</AccessMode></StructEntry></StructReg>");
    CMemoryPort port;
    port.Poke(0, {0x12, 0x34, 0, 0});
    nodeMap._Connect(&port);
    EXPECT_EQ(ValueOf(nodeMap, "A"), 1);
    EXPECT_EQ(ValueOf(nodeMap, "Low"), 0x12);
    EXPECT_EQ(ValueOf(nodeMap, "High"), 0x34);
    EXPECT_EQ(nodeMap._GetNode("High")->GetAccessMode(), RO);
    EXPECT_EQ(nodeMap._GetNode("Low")->GetAccessMode(), RW);
}

TEST(Load, ReadsTheDescriptionHeader)
{
    CNodeMapRef nodeMap = LoadSnippet(kTwoIntegers);
    CDeviceInfoPtr info(nodeMap._Ptr);
    ASSERT_TRUE(info.IsValid());
    EXPECT_EQ(info->GetModelName(), "Test");
    EXPECT_EQ(info->GetVendorName(), "Qv");
    Version_t version;
    info->GetDeviceVersion(version);
    EXPECT_EQ(version.Major, 1);
    EXPECT_EQ(version.SubMinor, 3);
}

TEST(NodeMapRef, RefusesASecondLoadAndCallsWithoutAMap)
{
    CNodeMapRef nodeMap = LoadSnippet(kTwoIntegers);
    EXPECT_EQ(ErrorOf([&] { nodeMap._LoadXMLFromString(DescriptionWith(kTwoIntegers).c_str()); }),
              "Node map already created");
    CNodeMapRef empty;
    EXPECT_THROW(empty._GetNode("A"), GenICam::AccessException);
    EXPECT_EQ(ErrorOf([&] { empty._GetNode("A"); }), "Feature not present (reference not valid)");
}

TEST(NodeMapRef, CopiesShareOneMapUntilTheLastGoes)
{
    CNodeMapRef first = LoadSnippet(kTwoIntegers);
    CNodeMapRef second(first);
    CIntegerPtr(first._GetNode("A"))->SetValue(5);
    EXPECT_EQ(ValueOf(second, "B"), 5);
    first._Destroy();
    EXPECT_EQ(ValueOf(second, "A"), 5);
    EXPECT_EQ(second._GetNode("Nope"), nullptr);
}

TEST(NodeMapFactory, MakesIndependentMapsAndExtractsASubtree)
{
    const std::string text = DescriptionWith(
        "<Category Name=\"Root\"><pFeature>ChunkData</pFeature><pFeature>Other</pFeature></Category>"
        "<Category Name=\"ChunkData\"><pFeature>ChunkWidth</pFeature></Category>"
        "<IntReg Name=\"ChunkWidth\"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode>"
        "<pPort>ChunkPort</pPort></IntReg><Port Name=\"ChunkPort\"><ChunkID>0000a1b2</ChunkID></Port>"
        "<Integer Name=\"Other\"><Value>3</Value></Integer>");
    CNodeMapFactory factory(GenICam::gcstring(text.c_str()));
    INodeMap* pFirst = factory.CreateNodeMap("Cam", false);
    INodeMap* pSecond = factory.CreateNodeMap("Cam", false);
    CIntegerPtr(pFirst->GetNode("Other"))->SetValue(7);
    EXPECT_EQ(CIntegerPtr(pSecond->GetNode("Other"))->GetValue(), 3);
    EXPECT_EQ(pFirst->GetDeviceName(), "Cam");
    dynamic_cast<IDestroy*>(pFirst)->Destroy();
    dynamic_cast<IDestroy*>(pSecond)->Destroy();

    CNodeMapFactory chunks = factory.ExtractSubtree("ChunkData", true);
    CNodeMapRef chunkMap(chunks.CreateNodeMap("Chunks"));
    EXPECT_NE(chunkMap._GetNode("Root"), nullptr);
    EXPECT_NE(chunkMap._GetNode("ChunkWidth"), nullptr);
    EXPECT_EQ(CChunkPortPtr(chunkMap._GetNode("ChunkPort"))->GetChunkID(), "0000a1b2");
    EXPECT_EQ(chunkMap._GetNode("Other"), nullptr);
    EXPECT_EQ(chunkMap._GetNode("ChunkData"), nullptr);

    factory.ReleaseCameraDescriptionFileData();
    EXPECT_TRUE(factory.IsCameraDescriptionFileDataReleased());
    EXPECT_THROW(factory.CreateNodeMap(), GenICam::GenericException);
    EXPECT_THROW(CNodeMapFactory(ContentType_Xml, nullptr, 0), GenICam::InvalidArgumentException);
}

TEST(NodeMapFactory, InjectionReplacesAndAddsNodes)
{
    CNodeMapRef nodeMap;
    nodeMap._LoadXMLFromStringInject(DescriptionWith(kTwoIntegers).c_str(),
                                     DescriptionWith("<Integer Name=\"A\"><Value>9</Value></Integer>"
                                                     "<Integer Name=\"C\"><Value>4</Value></Integer>")
                                         .c_str());
    EXPECT_EQ(ValueOf(nodeMap, "B"), 9);
    EXPECT_EQ(ValueOf(nodeMap, "C"), 4);
}

TEST(Load, SchemaOneZeroUpperCasesFormulaNames)
{
    const std::string nodes = "<Integer Name=\"a\"><Value>2</Value></Integer>"
                              "<IntSwissKnife Name=\"Lower\"><pVariable Name=\"a\">a</pVariable><Formula>a+1</Formula></IntSwissKnife>"
                              "<IntSwissKnife Name=\"Upper\"><pVariable Name=\"A\">a</pVariable><Formula>A+1</Formula></IntSwissKnife>";
    CNodeMapRef old;
    old._LoadXMLFromString(DescriptionWith(nodes, "0").c_str());
    EXPECT_EQ(ValueOf(old, "Upper"), 3);
    EXPECT_NE(ErrorOf([&] { ValueOf(old, "Lower"); }).find("# A - Unknown function/variable!"), std::string::npos);
    CNodeMapRef current;
    current._LoadXMLFromString(DescriptionWith(nodes, "1").c_str());
    EXPECT_EQ(ValueOf(current, "Lower"), 3);
}

TEST(Load, FormulaErrorsAppearWhenReadAndInParseSwissKnifes)
{
    CNodeMapRef nodeMap = LoadSnippet("<Integer Name=\"A\"><Value>1</Value></Integer>"
                                      "<IntSwissKnife Name=\"Unknown\"><pVariable Name=\"A\">A</pVariable><Formula>A+Q</Formula></IntSwissKnife>"
                                      "<IntSwissKnife Name=\"Bad\"><pVariable Name=\"A\">A</pVariable><Formula>A+</Formula></IntSwissKnife>");
    EXPECT_EQ(ErrorOf([&] { ValueOf(nodeMap, "Unknown"); }),
              "Unknown : Failed to parse formula 'A+Q' : error message is '# Q - Unknown function/variable!'");
    EXPECT_EQ(ErrorOf([&] { ValueOf(nodeMap, "Bad"); }),
              "Bad : Failed to evaluate formula 'A+' : error message is '#Extra operation!'");
    GenICam::gcstring_vector errors;
    EXPECT_FALSE(nodeMap._ParseSwissKnifes(&errors));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].find("Error while parsing equation for node 'Unknown': "), 0u);
}

TEST(Load, SurvivesDamagedDescriptions)
{
    // A description exercising most node kinds; each round damages a copy and loads it: a load
    // error or a value error is fine, a crash or a hang is not.
    const std::string text = DescriptionWith(
        "<Category Name=\"Root\"><pFeature>I</pFeature><pFeature>E</pFeature><pFeature>C</pFeature></Category>"
        "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
        "<Integer Name=\"I\"><pValue>R</pValue><pMax>K</pMax><Inc>2</Inc></Integer>"
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">I</pVariable><Formula>X*2+100</Formula></IntSwissKnife>"
        "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry><pValue>R</pValue></Enumeration>"
        "<Converter Name=\"C\"><FormulaTo>FROM*2</FormulaTo><FormulaFrom>TO/2</FormulaFrom><pValue>I</pValue></Converter>"
        "<StringReg Name=\"S\"><Address>8</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>");
    uint32_t random = 12345;
    auto next = [&random] { return random = random * 1103515245u + 12345u; };
    int loaded = 0;
    for (int round = 0; round < 2000; ++round)
    {
        std::string damaged = text;
        const int edits = 1 + static_cast<int>(next() % 4);
        for (int e = 0; e < edits; ++e)
        {
            const size_t at = next() % damaged.size();
            switch (next() % 3)
            {
            case 0:
                damaged[at] = static_cast<char>(next() & 0xFF);
                break;
            case 1:
                damaged.erase(at, 1 + next() % 8);
                break;
            default:
                damaged.insert(at, damaged.substr(next() % damaged.size(), 1 + next() % 16));
                break;
            }
        }
        try
        {
            CNodeMapRef nodeMap;
            nodeMap._LoadXMLFromString(damaged.c_str());
            ++loaded;
            CMemoryPort port;
            nodeMap._Connect(&port);
            NodeList_t nodes;
            nodeMap._GetNodes(nodes);
            for (INode* pNode : nodes)
            {
                try
                {
                    if (CValuePtr value = pNode)
                        if (IsReadable(value))
                            value->FromString(value->ToString());
                }
                catch (const GenICam::GenericException&)
                {
                }
            }
        }
        catch (const GenICam::GenericException&)
        {
        }
    }
    EXPECT_GT(loaded, 0);
}
