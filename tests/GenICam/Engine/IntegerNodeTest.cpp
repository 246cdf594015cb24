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
CNodeMapRef ValueNode(const char* representation, const char* extra = "<Min>-1000</Min><Max>1000000000000</Max>")
{
    return LoadSnippet(std::string("<Integer Name=\"I\"><Value>0</Value>") + extra + "<Representation>" + representation +
                       "</Representation></Integer>");
}
} // namespace

TEST(IntegerNode, ToStringFollowsTheRepresentation)
{
    struct Case_t
    {
        const char* representation;
        int64_t value;
        const char* text;
    };
    const Case_t cases[] = {
        {"PureNumber", -1, "-1"},
        {"Linear", 81985529216486895, "81985529216486895"},
        {"HexNumber", 0, "0"},
        {"HexNumber", 14, "0xe"},
        {"HexNumber", -1, "0xffffffffffffffff"},
        {"IPV4Address", 0x123456789ABCDEF, "137.171.205.239"},
        {"IPV4Address", -1, "255.255.255.255"},
        {"MACAddress", 0x1000000000000, "00:00:00:00:00:00"},
        {"MACAddress", 0x123456789ABC, "12:34:56:78:9a:bc"},
        {"Boolean", 0, "false"},
        {"Boolean", 14, "true"},
    };
    for (const Case_t& c : cases)
    {
        CNodeMapRef nodeMap = ValueNode(c.representation, "");
        CIntegerPtr node = nodeMap._GetNode("I");
        node->SetValue(c.value, false);
        EXPECT_EQ(node->ToString(), c.text) << c.representation << " " << c.value;
    }
}

TEST(IntegerNode, FromStringParsesByRepresentation)
{
    struct Case_t
    {
        const char* representation;
        const char* text;
        int64_t value; // INT64_MIN: must fail with InvalidArgumentException
    };
    const Case_t cases[] = {
        {"PureNumber", " 42 ", 42},     {"PureNumber", "0X2a", 42},      {"PureNumber", "-0x2A", 0},
        {"PureNumber", "052", 52},      {"PureNumber", "4.9", 4},        {"PureNumber", "42abc", 42},
        {"PureNumber", "abc", INT64_MIN}, {"PureNumber", "", INT64_MIN}, {"PureNumber", "true", INT64_MIN},
        {"HexNumber", "-42", -42},      {"IPV4Address", "192.168.0.1", 3232235521}, {"IPV4Address", "42", INT64_MIN},
        {"MACAddress", "0:0:0:0:e8:d4", 0xe8d4}, {"MACAddress", "01-02-03-04-05-06", INT64_MIN},
        {"Boolean", "true", 1},         {"Boolean", "1", INT64_MIN},
    };
    for (const Case_t& c : cases)
    {
        CNodeMapRef nodeMap = ValueNode(c.representation);
        CIntegerPtr node = nodeMap._GetNode("I");
        if (c.value == INT64_MIN)
        {
            EXPECT_EQ(ErrorOf([&] { node->FromString(c.text); }),
                      std::string("Node 'I' : cannot convert string '") + c.text + "' to int.")
                << c.representation << " '" << c.text << "'";
            continue;
        }
        node->FromString(c.text);
        EXPECT_EQ(node->GetValue(), c.value) << c.representation << " '" << c.text << "'";
    }
}

TEST(IntegerNode, VerifiedWritesCheckMinMaxAndIncrement)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet(IntReg("R", 0) + "<Integer Name=\"I\"><pValue>R</pValue><Min>10</Min><Max>100</Max>"
                                                       "<Inc>5</Inc></Integer>",
                                      &port);
    CIntegerPtr node = nodeMap._GetNode("I");
    node->SetValue(15);
    EXPECT_EQ(node->GetValue(), 15);
    EXPECT_EQ(ErrorOf([&] { node->SetValue(17); }),
              "The difference between Value = 17 and Min = 10 must be dividable without rest by Inc = 5.");
    EXPECT_EQ(ErrorOf([&] { node->SetValue(105); }), "Value = 105 must be equal or smaller than Max = 100.");
    EXPECT_EQ(ErrorOf([&] { node->SetValue(5); }), "Value = 5 must be equal or greater than Min = 10.");
    EXPECT_THROW(node->SetValue(0), GenICam::OutOfRangeException);
    // Without verification the value is written, and a verified read then complains.
    node->SetValue(17, false);
    EXPECT_EQ(node->GetValue(), 17);
    EXPECT_THROW(node->GetValue(true), GenICam::OutOfRangeException);
    EXPECT_THROW(node->ToString(true), GenICam::OutOfRangeException);
    EXPECT_EQ(port.Peek(0, 4), (std::vector<uint8_t>{17, 0, 0, 0}));
}

TEST(IntegerNode, ZeroIncrementFailsEveryVerifiedAccess)
{
    CNodeMapRef nodeMap = LoadSnippet("<Integer Name=\"Z\"><Value>20</Value><Inc>0</Inc></Integer>");
    CIntegerPtr node = nodeMap._GetNode("Z");
    EXPECT_EQ(node->GetInc(), 0);
    EXPECT_EQ(ErrorOf([&] { node->SetValue(20); }), "Increment must be larger than 0.");
    EXPECT_THROW(node->GetValue(true), GenICam::LogicalErrorException);
}

TEST(IntegerNode, ValidValueSetListsValuesButIsNotEnforced)
{
    CNodeMapRef nodeMap = LoadSnippet("<Integer Name=\"L\"><Value>10</Value><Min>10</Min><Max>100</Max>"
                                      "<ValidValueSet>10;20;35;200</ValidValueSet></Integer>");
    CIntegerPtr node = nodeMap._GetNode("L");
    EXPECT_EQ(node->GetIncMode(), listIncrement);
    EXPECT_EQ(node->GetInc(), 1);
    EXPECT_EQ(node->GetListOfValidValues(), (int64_autovector_t{10, 20, 35}));
    EXPECT_EQ(node->GetListOfValidValues(false), (int64_autovector_t{10, 20, 35, 200}));
    node->SetValue(25);
    EXPECT_EQ(node->GetValue(true), 25);
    EXPECT_THROW(node->SetValue(200), GenICam::OutOfRangeException);
}

TEST(IntegerNode, ForwardsToAFloatRoundingHalfAwayFromZero)
{
    CNodeMapRef nodeMap = LoadSnippet("<Float Name=\"F\"><Value>2.5</Value><Min>-10</Min><Max>10</Max></Float>"
                                      "<Integer Name=\"I\"><pValue>F</pValue></Integer>"
                                      "<Float Name=\"Wide\"><Value>1</Value></Float>"
                                      "<Integer Name=\"W\"><pValue>Wide</pValue></Integer>");
    CIntegerPtr node = nodeMap._GetNode("I");
    EXPECT_EQ(node->GetValue(), 3);
    CFloatPtr(nodeMap._GetNode("F"))->SetValue(-2.5);
    EXPECT_EQ(node->GetValue(), -3);
    EXPECT_EQ(node->GetMin(), -10);
    // The float's default limits do not fit an integer.
    EXPECT_NE(ErrorOf([&] { CIntegerPtr(nodeMap._GetNode("W"))->GetMax(); }).find("out of integer range"),
              std::string::npos);
}

TEST(IntegerNode, IndexedValueFollowsTheSelector)
{
    CNodeMapRef nodeMap = LoadSnippet("<Integer Name=\"Sel\"><Value>0</Value></Integer>"
                                      "<Integer Name=\"Two\"><Value>200</Value><Min>0</Min><Max>500</Max></Integer>"
                                      "<Integer Name=\"I\"><pIndex>Sel</pIndex><ValueIndexed Index=\"1\">100</ValueIndexed>"
                                      "<pValueIndexed Index=\"2\">Two</pValueIndexed><ValueDefault>7</ValueDefault></Integer>");
    CIntegerPtr node = nodeMap._GetNode("I");
    CIntegerPtr selector = nodeMap._GetNode("Sel");
    EXPECT_EQ(node->GetValue(), 7);
    selector->SetValue(1);
    EXPECT_EQ(node->GetValue(), 100);
    selector->SetValue(2);
    EXPECT_EQ(node->GetValue(), 200);
    EXPECT_EQ(node->GetMax(), 500);
    node->SetValue(250);
    EXPECT_EQ(CIntegerPtr(nodeMap._GetNode("Two"))->GetValue(), 250);
}

TEST(IntegerNode, WritesAreCopiedToEveryValueCopy)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet(IntReg("A", 0) + IntReg("B", 4) + IntReg("C", 8, "", "WO") +
                                          "<Integer Name=\"I\"><pValue>A</pValue><pValueCopy>B</pValueCopy>"
                                          "<pValueCopy>C</pValueCopy></Integer>",
                                      &port);
    CIntegerPtr(nodeMap._GetNode("I"))->SetValue(0x55);
    EXPECT_EQ(port.Peek(0, 12), (std::vector<uint8_t>{0x55, 0, 0, 0, 0x55, 0, 0, 0, 0x55, 0, 0, 0}));
}

TEST(IntegerNode, ImposedRangeNarrowsTheDescription)
{
    CNodeMapRef nodeMap = LoadSnippet("<Integer Name=\"I\"><Value>5</Value><Min>0</Min><Max>10</Max></Integer>");
    CIntegerPtr node = nodeMap._GetNode("I");
    node->ImposeMin(2);
    node->ImposeMax(20);
    EXPECT_EQ(node->GetMin(), 2);
    EXPECT_EQ(node->GetMax(), 10);
    EXPECT_THROW(node->SetValue(1), GenICam::OutOfRangeException);
}

TEST(SwissKnife, ComputesFromVariablesAndIsReadOnly)
{
    CNodeMapRef nodeMap = LoadSnippet("<Integer Name=\"A\"><Value>6</Value></Integer>"
                                      "<Enumeration Name=\"E\"><EnumEntry Name=\"X\"><Value>1</Value><NumericValue>2.5</NumericValue></EnumEntry>"
                                      "<EnumEntry Name=\"Y\"><Value>4</Value></EnumEntry><Value>1</Value></Enumeration>"
                                      "<IntSwissKnife Name=\"K\"><pVariable Name=\"A\">A</pVariable><pVariable Name=\"E\">E</pVariable>"
                                      "<Constant Name=\"C\">3</Constant><Expression Name=\"D\">A*C</Expression>"
                                      "<Formula>D+E+E.Entry.Y</Formula></IntSwissKnife>"
                                      "<SwissKnife Name=\"S\"><pVariable Name=\"EN\">E</pVariable><Formula>EN*2</Formula></SwissKnife>");
    CIntegerPtr knife = nodeMap._GetNode("K");
    EXPECT_EQ(knife->GetValue(), 18 + 1 + 4);
    EXPECT_DOUBLE_EQ(CFloatPtr(nodeMap._GetNode("S"))->GetValue(), 5.0);
    CIntegerPtr(nodeMap._GetNode("A"))->SetValue(1);
    EXPECT_EQ(knife->GetValue(), 3 + 1 + 4);
    EXPECT_EQ(knife->GetAccessMode(), RO);
    EXPECT_EQ(knife->GetMin(), INT64_MIN);
    EXPECT_EQ(ErrorOf([&] { knife->SetValue(1, false); }), "IntSwissKnife is read only.");
    EXPECT_EQ(ErrorOf([&] { knife->SetValue(1); }), "Node is not writable.");
}

TEST(IntConverter, ConvertsBothWaysAndOrdersItsRangeBySlope)
{
    CMemoryPort port;
    const std::string base = IntReg("R", 0, "<Sign>Signed</Sign>") +
                             "<Integer Name=\"P\"><pValue>R</pValue><Min>-10</Min><Max>100</Max></Integer>";
    auto converter = [&](const char* slope, const char* from) {
        return std::string("<IntConverter Name=\"C\"><FormulaTo>FROM/2</FormulaTo><FormulaFrom>") + from +
               "</FormulaFrom><pValue>P</pValue>" + slope + "</IntConverter>";
    };
    CNodeMapRef increasing = LoadSnippet(base + converter("<Slope>Increasing</Slope>", "TO*2"), &port);
    CIntegerPtr node = increasing._GetNode("C");
    EXPECT_EQ(node->GetMin(), -20);
    EXPECT_EQ(node->GetMax(), 200);
    node->SetValue(8);
    EXPECT_EQ(port.Peek(0, 4), (std::vector<uint8_t>{4, 0, 0, 0}));
    EXPECT_EQ(node->GetValue(), 8);

    CNodeMapRef decreasing = LoadSnippet(base + converter("<Slope>Decreasing</Slope>", "TO*2"), &port);
    EXPECT_EQ(CIntegerPtr(decreasing._GetNode("C"))->GetMin(), 200);
    CNodeMapRef varying = LoadSnippet(base + converter("<Slope>Varying</Slope>", "TO*2"), &port);
    EXPECT_EQ(CIntegerPtr(varying._GetNode("C"))->GetMax(), INT64_MAX);
    // No Slope element: the automatic order, right for falling formulas too.
    CNodeMapRef automatic = LoadSnippet(base + converter("", "0-TO"), &port);
    EXPECT_EQ(CIntegerPtr(automatic._GetNode("C"))->GetMin(), -100);
    EXPECT_EQ(CIntegerPtr(automatic._GetNode("C"))->GetMax(), 10);
}
