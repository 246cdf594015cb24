#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>

#include "GenApiSnippet.h"

using namespace GenApi;
using QvTest::ErrorOf;
using QvTest::IntReg;
using QvTest::LoadSnippet;

TEST(FloatNode, TextFollowsNotationPrecisionAndRange)
{
    struct Case_t
    {
        const char* extra;
        double value;
        const char* text;
    };
    const Case_t cases[] = {
        {"", 123456.789, "123457"},
        {"", 1234567.891, "1.23457e+06"},
        {"", 1e-7, "1e-07"},
        {"<DisplayPrecision>0</DisplayPrecision>", -1.5, "-2"},
        {"<DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>2</DisplayPrecision>", 3.14159265358979, "3.14"},
        {"<DisplayNotation>Scientific</DisplayNotation>", 100, "1.000000e+02"},
        {"<Min>0</Min><Max>0.99999999</Max>", 0.99999999, "0.5"},
        {"<Min>0</Min><Max>5.55555555</Max>", 5.55555555, "5.55555"},
        {"<Min>1.00000001</Min><Max>5</Max>", 1.00000001, "1.5"},
    };
    for (const Case_t& c : cases)
    {
        CNodeMapRef nodeMap = LoadSnippet(std::string("<Float Name=\"F\"><Value>0</Value>") + c.extra + "</Float>");
        CFloatPtr node = nodeMap._GetNode("F");
        node->SetValue(c.value, false);
        EXPECT_EQ(node->ToString(), c.text) << c.extra << " " << c.value;
    }
}

TEST(FloatNode, FromStringAndVerification)
{
    CNodeMapRef nodeMap = LoadSnippet("<Float Name=\"F\"><Value>1</Value><Min>0</Min><Max>100</Max><Inc>0.1</Inc></Float>");
    CFloatPtr node = nodeMap._GetNode("F");
    for (const auto& c : std::vector<std::pair<const char*, double>>{{" 2.5", 2.5}, {"1e1", 10}, {".5", 0.5}, {"0x10", 16}, {"2,5", 2}})
    {
        node->FromString(c.first);
        EXPECT_DOUBLE_EQ(node->GetValue(), c.second) << c.first;
    }
    for (const char* bad : {"inf", "nan", ""})
        EXPECT_EQ(ErrorOf([&] { node->FromString(bad); }), std::string("Node 'F' : cannot convert string '") + bad + "' to double.");
    EXPECT_EQ(ErrorOf([&] { node->SetValue(101); }), "Value 101.000000 must be smaller than or equal 100.000000.");
    node->SetValue(0.35); // float increments are not enforced
    EXPECT_TRUE(node->HasInc());
}

TEST(FloatNode, OverAnIntegerTakesItsRangeAndRounds)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet(IntReg("R", 0) + "<Integer Name=\"I\"><pValue>R</pValue><Min>10</Min><Max>100</Max></Integer>"
                                                       "<Float Name=\"F\"><pValue>I</pValue></Float>",
                                      &port);
    CFloatPtr node = nodeMap._GetNode("F");
    EXPECT_DOUBLE_EQ(node->GetMin(), 10);
    EXPECT_TRUE(node->HasInc());
    node->SetValue(12.5);
    EXPECT_EQ(port.Peek(0, 1)[0], 13);
    node->SetValue(12.4);
    EXPECT_EQ(port.Peek(0, 1)[0], 12);
}

TEST(BooleanNode, MapsOnAndOffValues)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet(IntReg("R", 0, "<Cachable>NoCache</Cachable>") +
                                          "<Boolean Name=\"B\"><pValue>R</pValue><OnValue>3</OnValue><OffValue>0</OffValue></Boolean>",
                                      &port);
    CBooleanPtr node = nodeMap._GetNode("B");
    EXPECT_FALSE(node->GetValue());
    node->SetValue(true);
    EXPECT_EQ(port.Peek(0, 4), (std::vector<uint8_t>{3, 0, 0, 0}));
    EXPECT_EQ(node->ToString(), "1");
    port.Poke(0, {7});
    EXPECT_EQ(ErrorOf([&] { node->GetValue(); }), "Value '7' is neither true (3) nor false (0)");
    node->FromString(" 0");
    EXPECT_EQ(ErrorOf([&] { node->FromString("True"); }), "Node 'B' : cannot convert string 'True' to boolean");
    EXPECT_NE(ErrorOf([] { LoadSnippet("<Boolean Name=\"B\"><Value>true</Value><OnValue>1</OnValue><OffValue>1</OffValue></Boolean>"); })
                  .find("Boolean node 'B' has identical on and off value"),
              std::string::npos);
}

TEST(EnumerationNode, WritesOnlyExactSymbolicsOfUsableEntries)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet("<Integer Name=\"Zero\"><Value>0</Value></Integer>" +
                                          IntReg("R", 0, "<Cachable>NoCache</Cachable>") +
                                          "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>1</Value></EnumEntry>"
                                          "<EnumEntry Name=\"B\"><pIsAvailable>Zero</pIsAvailable><Value>2</Value></EnumEntry>"
                                          "<EnumEntry Name=\"C\"><pIsImplemented>Zero</pIsImplemented><Value>3</Value></EnumEntry>"
                                          "<pValue>R</pValue></Enumeration>",
                                      &port);
    CEnumerationPtr node = nodeMap._GetNode("E");
    node->FromString("A");
    EXPECT_EQ(node->GetIntValue(), 1);
    for (const char* bad : {"a", " A", "1", "EnumEntry_E_A", "Nope"})
        EXPECT_EQ(ErrorOf([&] { node->FromString(bad); }), std::string("Feature 'E' : cannot convert value '") + bad + "', the value is invalid.");
    EXPECT_EQ(ErrorOf([&] { node->FromString("B"); }), "Failed to write enumeration value. Enum entry is not writable");
    node->FromString("B", false);
    EXPECT_EQ(port.Peek(0, 1)[0], 2);
    EXPECT_EQ(node->ToString(), "B");
    EXPECT_EQ(ErrorOf([&] { node->ToString(true); }), "Enumeration value 'EnumEntry_E_B' is not available.");
    EXPECT_EQ(ErrorOf([&] { node->SetIntValue(3, false); }), "Failed to write enumeration value. Enum entry is not implemented");
    EXPECT_THROW(node->SetIntValue(9, false), GenICam::InvalidArgumentException);
    port.Poke(0, {9});
    EXPECT_EQ(node->GetIntValue(), 9);
    EXPECT_EQ(node->GetCurrentEntry(), nullptr);
    EXPECT_EQ(ErrorOf([&] { node->ToString(); }), "Feature 'E' : cannot convert value '9', the value is invalid.");

    StringList_t symbolics;
    node->GetSymbolics(symbolics);
    EXPECT_EQ(symbolics, (StringList_t{"A"}));
    NodeList_t entries;
    node->GetEntries(entries);
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[2]->GetName(), "EnumEntry_E_C");
    EXPECT_EQ(entries[2]->GetAccessMode(), NI);
    EXPECT_NE(node->GetEntryByName("B"), nullptr);
    EXPECT_EQ(node->GetEntryByName("X"), nullptr);
    EXPECT_EQ(CEnumEntryPtr(nodeMap._GetNode("EnumEntry_E_A"))->GetSymbolic(), "A");
}

TEST(CommandNode, ExecutesAndPollsForCompletion)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet(IntReg("R", 0, "<Cachable>NoCache</Cachable>") +
                                          "<Command Name=\"C\"><pValue>R</pValue><CommandValue>5</CommandValue><PollingTime>50</PollingTime></Command>",
                                      &port);
    CCommandPtr command = nodeMap._GetNode("C");
    int fired = 0;
    Register(command->GetNode(), [&](INode*) { ++fired; });
    EXPECT_EQ(command->ToString(), "0");
    command->Execute();
    EXPECT_EQ(port.Peek(0, 1)[0], 5);
    EXPECT_EQ(fired, 1);
    port.ResetCounts();
    EXPECT_FALSE(command->IsDone());
    EXPECT_EQ(port.GetReadCount(), 1);
    EXPECT_EQ(command->ToString(), "1");
    nodeMap._Poll(60); // a busy command only notifies
    EXPECT_EQ(fired, 2);
    EXPECT_EQ(port.GetReadCount(), 1);
    port.Poke(0, {0});
    EXPECT_TRUE(command->IsDone());
    EXPECT_EQ(fired, 3);
    port.Poke(0, {5});
    EXPECT_TRUE(command->IsDone()); // done stays done until the next Execute
    command->FromString("true");
    EXPECT_EQ(ErrorOf([&] { command->FromString("0"); }), "'0' does not convert to TRUE");
}

TEST(StringNode, StoresTextAndForwards)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet("<String Name=\"S\"><Value>x</Value></String>"
                                      "<StringReg Name=\"SR\"><Address>0</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>"
                                      "<String Name=\"Fwd\"><pValue>SR</pValue></String>",
                                      &port);
    CStringPtr text = nodeMap._GetNode("S");
    text->SetValue("  spaced  ");
    EXPECT_EQ(text->GetValue(), "  spaced  ");
    EXPECT_EQ(text->GetMaxLength(), 1073741820);
    CStringPtr forwarder = nodeMap._GetNode("Fwd");
    forwarder->SetValue("abc");
    EXPECT_EQ(CStringPtr(nodeMap._GetNode("SR"))->GetValue(), "abc");
    EXPECT_EQ(forwarder->GetMaxLength(), 16);
}

TEST(ConverterNode, ConvertsThroughBothFormulas)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet(IntReg("R", 0) + "<Integer Name=\"P\"><pValue>R</pValue><Min>-10</Min><Max>100</Max></Integer>"
                                                       "<Converter Name=\"C\"><FormulaTo>FROM*4</FormulaTo><FormulaFrom>TO/4</FormulaFrom>"
                                                       "<pValue>P</pValue><Slope>Increasing</Slope></Converter>",
                                      &port);
    CFloatPtr node = nodeMap._GetNode("C");
    EXPECT_DOUBLE_EQ(node->GetMin(), -2.5);
    EXPECT_DOUBLE_EQ(node->GetMax(), 25);
    node->SetValue(2.5); // 10 written
    EXPECT_EQ(port.Peek(0, 1)[0], 10);
    node->SetValue(0.6); // 2.4 rounds to 2
    EXPECT_EQ(port.Peek(0, 1)[0], 2);
    EXPECT_DOUBLE_EQ(node->GetValue(), 0.5);
    EXPECT_EQ(node->GetNode()->GetCachingMode(), WriteAround);
}

TEST(EnumClasses, ConvertToAndFromDescriptionText)
{
    EAccessMode mode = NI;
    EXPECT_TRUE(EAccessModeClass::FromString("RO", &mode));
    EXPECT_EQ(mode, RO);
    EXPECT_FALSE(EAccessModeClass::FromString("R", &mode));
    EXPECT_EQ(EDisplayNotationClass::ToString(fnScientific), "Scientific");
    EXPECT_EQ(ERepresentationClass::ToString(HexNumber), "HexNumber");
}
