// What the loader tolerates in a description, how it records it (ILoadWarnings), and what it
// still refuses.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>

#include "GenApiSnippet.h"

using namespace GenApi;
using QvTest::ErrorOf;
using QvTest::IntReg;
using QvTest::LoadSnippet;

namespace
{
std::vector<std::string> WarningsOf(CNodeMapRef& nodeMap)
{
    CLoadWarningsPtr pWarnings(nodeMap._Ptr);
    GenICam::gcstring_vector texts;
    texts.push_back("left over from the caller");
    pWarnings->GetLoadWarnings(texts);
    std::vector<std::string> result;
    for (const GenICam::gcstring& text : texts)
        result.push_back(text.str());
    return result;
}

std::vector<std::string> FeatureNames(CNodeMapRef& nodeMap, const char* category)
{
    FeatureList_t features;
    CCategoryPtr(nodeMap._GetNode(category))->GetFeatures(features);
    std::vector<std::string> names;
    for (IValue* pFeature : features)
        names.push_back(pFeature->GetNode()->GetName().str());
    return names;
}
} // namespace

TEST(LoadWarnings, CleanDescriptionHasNone)
{
    CNodeMapRef nodeMap = LoadSnippet("<Category Name=\"Root\"><pFeature>A</pFeature></Category>"
                                      "<Integer Name=\"A\"><Value>1</Value></Integer>");
    EXPECT_TRUE(WarningsOf(nodeMap).empty());
}

TEST(LoadWarnings, CategoryLeavesOutFeaturesThatDoNotExist)
{
    CNodeMapRef nodeMap = LoadSnippet("<Category Name=\"Root\"><pFeature>A</pFeature>\n"
                                      "<pFeature>SensorWidth</pFeature><pFeature>B</pFeature></Category>"
                                      "<Integer Name=\"A\"><Value>1</Value></Integer>"
                                      "<Integer Name=\"B\"><Value>2</Value></Integer>");
    EXPECT_EQ(FeatureNames(nodeMap, "Root"), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(nodeMap._GetNode("SensorWidth"), nullptr);
    NodeList_t nodes;
    nodeMap._GetNodes(nodes);
    EXPECT_EQ(nodes.size(), 4u); // Root, A, B, Device
    EXPECT_TRUE(nodeMap._GetNode("B")->IsFeature());
    EXPECT_EQ(WarningsOf(nodeMap), (std::vector<std::string>{
                                       "Node 'Root' : pFeature 'SensorWidth' names no node; left out of the category (line 4)"}));
}

TEST(LoadWarnings, CategoryWhoseFeaturesAllDoNotExistIsNotImplemented)
{
    CNodeMapRef nodeMap = LoadSnippet("<Category Name=\"Root\"><pFeature>Gone</pFeature></Category>");
    EXPECT_EQ(nodeMap._GetNode("Root")->GetAccessMode(), NI);
    EXPECT_EQ(WarningsOf(nodeMap).size(), 1u);
}

TEST(LoadWarnings, FlagsAndAliasesNamingNoNodeAreIgnored)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet("<Float Name=\"Gain\"><pIsImplemented>GainImplemented</pIsImplemented>"
                                      "<pIsAvailable>GainAvailable</pIsAvailable><pIsLocked>GainLocked</pIsLocked>"
                                      "<pBlockPolling>GainBlocked</pBlockPolling><pAlias>GainAlias</pAlias>"
                                      "<pCastAlias>GainCast</pCastAlias><Value>1.5</Value></Float>"
                                      "<Integer Name=\"Flag\"><Value>0</Value></Integer>"
                                      "<Float Name=\"Other\"><pIsAvailable>Flag</pIsAvailable><Value>1</Value></Float>",
                                      &port);
    CFloatPtr gain = nodeMap._GetNode("Gain");
    EXPECT_EQ(gain->GetAccessMode(), RW);
    gain->SetValue(2.5);
    EXPECT_EQ(gain->GetValue(), 2.5);
    EXPECT_EQ(gain->GetNode()->GetAlias(), nullptr);
    EXPECT_EQ(gain->GetNode()->GetCastAlias(), nullptr);
    // A flag that exists still counts.
    EXPECT_EQ(nodeMap._GetNode("Other")->GetAccessMode(), NA);

    const std::vector<std::string> warnings = WarningsOf(nodeMap);
    ASSERT_EQ(warnings.size(), 6u);
    EXPECT_EQ(warnings[0], "Node 'Gain' : pIsImplemented 'GainImplemented' names no node; the condition is ignored (line 3)");
    EXPECT_EQ(warnings[1], "Node 'Gain' : pIsAvailable 'GainAvailable' names no node; the condition is ignored (line 3)");
    EXPECT_EQ(warnings[4], "Node 'Gain' : pAlias 'GainAlias' names no node; the node has no alias (line 3)");
}

TEST(LoadWarnings, AbbreviatedAccessModesReadAsReadOnlyAndWriteOnly)
{
    CMemoryPort port;
    port.Poke(0, {7, 0, 0, 0});
    CNodeMapRef nodeMap = LoadSnippet(IntReg("ReadOnly", 0, "", "R") + "\n" + IntReg("WriteOnly", 4, "", "W") +
                                          "<Integer Name=\"Imposed\"><ImposedAccessMode>R</ImposedAccessMode><Value>3</Value></Integer>",
                                      &port);
    CIntegerPtr readOnly = nodeMap._GetNode("ReadOnly");
    EXPECT_EQ(readOnly->GetAccessMode(), RO);
    EXPECT_EQ(readOnly->GetValue(), 7);
    EXPECT_THROW(readOnly->SetValue(1), GenICam::AccessException);
    CIntegerPtr writeOnly = nodeMap._GetNode("WriteOnly");
    EXPECT_EQ(writeOnly->GetAccessMode(), WO);
    writeOnly->SetValue(9);
    EXPECT_EQ(port.Peek(4, 1)[0], 9);
    EXPECT_EQ(nodeMap._GetNode("Imposed")->GetAccessMode(), RO);
    EXPECT_EQ(WarningsOf(nodeMap), (std::vector<std::string>{"Node 'ReadOnly' : AccessMode 'R' read as RO (line 3)",
                                                             "Node 'WriteOnly' : AccessMode 'W' read as WO (line 4)",
                                                             "Node 'Imposed' : ImposedAccessMode 'R' read as RO (line 4)"}));
}

TEST(LoadWarnings, DanglingReferencesWhereValuesAreReadStayLoadErrors)
{
    const std::string reg = IntReg("R", 0);
    const std::vector<std::string> snippets = {
        "<Integer Name=\"N\"><pValue>Nowhere</pValue></Integer>",
        "<Integer Name=\"N\"><Value>1</Value><pMin>Nowhere</pMin></Integer>",
        "<Integer Name=\"N\"><Value>1</Value><pMax>Nowhere</pMax></Integer>",
        "<Integer Name=\"N\"><Value>1</Value><pInc>Nowhere</pInc></Integer>",
        "<Integer Name=\"N\"><pIndex>Nowhere</pIndex><ValueIndexed Index=\"1\">1</ValueIndexed><ValueDefault>0</ValueDefault></Integer>",
        "<IntReg Name=\"N\"><pAddress>Nowhere</pAddress><Length>4</Length><pPort>Device</pPort></IntReg>",
        "<IntReg Name=\"N\"><Address>0</Address><Length>4</Length><pPort>Nowhere</pPort></IntReg>",
        "<IntSwissKnife Name=\"N\"><pVariable Name=\"X\">Nowhere</pVariable><Formula>X</Formula></IntSwissKnife>",
        "<Integer Name=\"N\"><Value>1</Value><pInvalidator>Nowhere</pInvalidator></Integer>",
        "<Integer Name=\"N\"><Value>1</Value><pSelected>Nowhere</pSelected></Integer>",
        "<Integer Name=\"N\"><Value>1</Value><pError>Nowhere</pError></Integer>",
        "<Command Name=\"N\"><Value>0</Value><pCommandValue>Nowhere</pCommandValue></Command>",
    };
    for (const std::string& snippet : snippets)
    {
        const std::string error = ErrorOf([&] { LoadSnippet(reg + snippet); });
        EXPECT_EQ(error.find("Error in XML stream : dangling node reference 'Nowhere' (in node 'N' at line 3)"), 0u)
            << snippet << "\n" << error;
    }
}

TEST(LoadWarnings, OtherInvalidEnumeratedTextsStayLoadErrors)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"AccessMode", "Read"}, {"AccessMode", "r"},         {"AccessMode", "RX"},     {"AccessMode", ""},
        {"Cachable", "Yes"},    {"Endianess", "Big"},        {"Sign", "S"},            {"Representation", "Lin"},
        {"Visibility", "expert"},
    };
    for (const auto& c : cases)
    {
        const std::string snippet =
            c.first == "Visibility"
                ? "<Integer Name=\"N\"><Visibility>" + c.second + "</Visibility><Value>1</Value></Integer>"
                : "<IntReg Name=\"N\"><Address>0</Address><Length>4</Length><pPort>Device</pPort><" + c.first + ">" +
                      c.second + "</" + c.first + "></IntReg>";
        const std::string error = ErrorOf([&] { LoadSnippet(snippet); });
        EXPECT_EQ(error, "Node 'N' : invalid value '" + c.second + "' in element " + c.first + " (line 3)") << snippet;
    }
}

TEST(LoadWarnings, RegisterWithoutPortIsNotImplemented)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet("<IntReg Name=\"Lost\"><Address>0</Address><Length>4</Length>"
                                      "<AccessMode>RW</AccessMode></IntReg>"
                                      "<Integer Name=\"Front\"><pValue>Lost</pValue></Integer>" +
                                          IntReg("Kept", 0),
                                      &port);
    CIntegerPtr lost = nodeMap._GetNode("Lost");
    EXPECT_EQ(lost->GetAccessMode(), NI);
    EXPECT_EQ(nodeMap._GetNode("Front")->GetAccessMode(), NI);
    EXPECT_EQ(ErrorOf([&] { lost->GetValue(); }), "Node is not readable.");
    EXPECT_EQ(ErrorOf([&] { lost->SetValue(1, false); }), "Node is not writable.");
    EXPECT_EQ(nodeMap._GetNode("Kept")->GetAccessMode(), RW);
    EXPECT_EQ(WarningsOf(nodeMap),
              (std::vector<std::string>{"Node 'Lost' : register has no pPort; it is not implemented (line 3)"}));
}

TEST(LoadWarnings, WarningsFollowTheDocumentOrder)
{
    // The category is read before the register's port is found missing, yet comes later.
    CNodeMapRef nodeMap = LoadSnippet("<IntReg Name=\"Lost\"><Address>0</Address><Length>4</Length></IntReg>\n"
                                      "<Category Name=\"Root\"><pFeature>Gone</pFeature></Category>");
    const std::vector<std::string> warnings = WarningsOf(nodeMap);
    ASSERT_EQ(warnings.size(), 2u);
    EXPECT_EQ(warnings[0].find("Node 'Lost'"), 0u);
    EXPECT_EQ(warnings[1].find("Node 'Root'"), 0u);
}

TEST(LoadWarnings, ThousandsOfDefectsLoadQuicklyAndAreCounted)
{
    // One warning per dangling feature, each naming its line: the line numbers must not cost a
    // scan of the text per warning, and the list stops growing at a thousand.
    std::string nodes = "<Category Name=\"Root\">\n";
    for (int i = 0; i < 5000; ++i)
        nodes += "<pFeature>Gone" + std::to_string(i) + "</pFeature>\n";
    nodes += "<pFeature>Kept</pFeature></Category><Integer Name=\"Kept\"><Value>1</Value></Integer>";
    CNodeMapRef nodeMap = LoadSnippet(nodes);
    EXPECT_EQ(FeatureNames(nodeMap, "Root"), (std::vector<std::string>{"Kept"}));
    const std::vector<std::string> warnings = WarningsOf(nodeMap);
    ASSERT_EQ(warnings.size(), 1001u);
    EXPECT_EQ(warnings[0], "Node 'Root' : pFeature 'Gone0' names no node; left out of the category (line 4)");
    EXPECT_EQ(warnings[999], "Node 'Root' : pFeature 'Gone999' names no node; left out of the category (line 1003)");
    EXPECT_EQ(warnings[1000], "... and 4000 more warnings");
}
