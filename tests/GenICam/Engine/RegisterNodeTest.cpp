#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <GenApi/GenApi.h>

#include "GenApiSnippet.h"

using namespace GenApi;
using QvTest::ErrorOf;
using QvTest::IntReg;
using QvTest::LoadSnippet;

TEST(IntRegNode, DecodesEveryLengthSignAndByteOrder)
{
    struct Case_t
    {
        int length;
        const char* endianess;
        const char* sign;
        int64_t value, minimum, maximum;
    };
    // Memory 81 82 83 ... 88.
    const Case_t cases[] = {
        {1, "LittleEndian", "Unsigned", 129, 0, 255},
        {1, "BigEndian", "Signed", -127, -128, 127},
        {2, "BigEndian", "Unsigned", 33154, 0, 65535},
        {3, "LittleEndian", "Signed", -8158591, -8388608, 8388607},
        {5, "BigEndian", "Unsigned", 556240438405, 0, 1099511627775},
        {7, "LittleEndian", "Signed", -33910564170005887, -36028797018963968, 36028797018963967},
        {8, "LittleEndian", "Unsigned", -8608764254683430271, 0, INT64_MAX},
        {8, "BigEndian", "Signed", -9114578090645354616, INT64_MIN, INT64_MAX},
    };
    for (const Case_t& c : cases)
    {
        CMemoryPort port;
        port.Poke(0, {0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88});
        CNodeMapRef nodeMap = LoadSnippet("<IntReg Name=\"R\"><Address>0</Address><Length>" + std::to_string(c.length) +
                                              "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>" + c.sign +
                                              "</Sign><Endianess>" + c.endianess + "</Endianess></IntReg>",
                                          &port);
        CIntegerPtr node = nodeMap._GetNode("R");
        EXPECT_EQ(node->GetValue(), c.value) << c.length << c.endianess << c.sign;
        EXPECT_EQ(node->GetMin(), c.minimum);
        EXPECT_EQ(node->GetMax(), c.maximum);
        // Unverified writes of a negative value store its two's complement's low bytes.
        node->SetValue(-2, false);
        std::vector<uint8_t> expected = {0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88};
        for (int i = 0; i < c.length; ++i)
            expected[static_cast<size_t>(i)] = 0xFF;
        expected[std::string(c.endianess) == "BigEndian" ? static_cast<size_t>(c.length - 1) : 0] = 0xFE;
        EXPECT_EQ(port.Peek(0, 8), expected) << c.length << c.endianess << c.sign;
    }
}

TEST(IntRegNode, LengthNineLoadsButEveryAccessFails)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet("<IntReg Name=\"R\"><Address>0</Address><Length>9</Length>"
                                      "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>",
                                      &port);
    EXPECT_EQ(ErrorOf([&] { CIntegerPtr(nodeMap._GetNode("R"))->GetValue(); }),
              "Value = 9 must be equal or smaller than Max = 8");
}

TEST(MaskedIntRegNode, NumbersBitsByByteOrder)
{
    struct Case_t
    {
        const char* endianess;
        const char* field;
        const char* sign;
        int64_t value, minimum, maximum;
        std::vector<uint8_t> afterWritingOne;
    };
    const Case_t cases[] = {
        {"LittleEndian", "<LSB>4</LSB><MSB>11</MSB>", "Unsigned", 103, 0, 255, {0x18, 0x50, 0x34, 0x12}},
        {"LittleEndian", "<LSB>0</LSB><MSB>3</MSB>", "Signed", -8, -8, 7, {0x71, 0x56, 0x34, 0x12}},
        {"LittleEndian", "<Bit>4</Bit>", "Unsigned", 1, 0, 1, {0x78, 0x56, 0x34, 0x12}},
        {"BigEndian", "<LSB>7</LSB><MSB>0</MSB>", "Unsigned", 120, 0, 255, {0x01, 0x56, 0x34, 0x12}},
        {"BigEndian", "<LSB>31</LSB><MSB>16</MSB>", "Unsigned", 13330, 0, 65535, {0x78, 0x56, 0x00, 0x01}},
        {"BigEndian", "<Bit>0</Bit>", "Unsigned", 0, 0, 1, {0xF8, 0x56, 0x34, 0x12}},
        {"BigEndian", "<LSB>3</LSB><MSB>0</MSB>", "Signed", 7, -8, 7, {0x18, 0x56, 0x34, 0x12}},
    };
    for (const Case_t& c : cases)
    {
        CMemoryPort port;
        port.Poke(0, {0x78, 0x56, 0x34, 0x12});
        CNodeMapRef nodeMap = LoadSnippet(std::string("<MaskedIntReg Name=\"M\"><Address>0</Address><Length>4</Length>"
                                                      "<AccessMode>RW</AccessMode><pPort>Device</pPort>") +
                                              c.field + "<Sign>" + c.sign + "</Sign><Endianess>" + c.endianess +
                                              "</Endianess></MaskedIntReg>",
                                          &port);
        CIntegerPtr node = nodeMap._GetNode("M");
        EXPECT_EQ(node->GetValue(), c.value) << c.endianess << c.field;
        EXPECT_EQ(node->GetMin(), c.minimum);
        EXPECT_EQ(node->GetMax(), c.maximum);
        node->SetValue(1);
        EXPECT_EQ(port.Peek(0, 4), c.afterWritingOne) << c.endianess << c.field;
    }
}

TEST(MaskedIntRegNode, RefusesFieldsOutsideTheRegisterOrInTheWrongOrder)
{
    auto load = [](const char* endianess, const char* field) {
        return ErrorOf([&] {
            LoadSnippet(std::string("<MaskedIntReg Name=\"M\"><Address>0</Address><Length>4</Length><pPort>Device</pPort>") +
                        field + "<Endianess>" + endianess + "</Endianess></MaskedIntReg>");
        });
    };
    EXPECT_EQ(load("BigEndian", "<LSB>0</LSB><MSB>7</MSB>").find("Node 'M' : For a big endian integer LSB must be greater or equal than MSB"), 0u);
    EXPECT_EQ(load("LittleEndian", "<LSB>7</LSB><MSB>0</MSB>").find("Node 'M' : For a little endian integer MSB must be greater or equal than LSB"), 0u);
    EXPECT_EQ(load("LittleEndian", "<LSB>0</LSB><MSB>63</MSB>").find("Node 'M' : For a little endian integer MSB must be smaller than 8 * Length"), 0u);
}

TEST(MaskedIntRegNode, WriteOnlyFieldCannotBeMerged)
{
    CMemoryPort port;
    port.Poke(0, {0x78, 0x56, 0x34, 0x12});
    CNodeMapRef nodeMap = LoadSnippet("<MaskedIntReg Name=\"M\"><Address>0</Address><Length>4</Length><AccessMode>WO</AccessMode>"
                                      "<pPort>Device</pPort><LSB>8</LSB><MSB>15</MSB></MaskedIntReg>",
                                      &port);
    EXPECT_EQ(ErrorOf([&] { CIntegerPtr(nodeMap._GetNode("M"))->SetValue(0xAB); }), "Node is not readable");
    EXPECT_EQ(port.Peek(0, 4), (std::vector<uint8_t>{0x78, 0x56, 0x34, 0x12}));
}

TEST(RegisterAddress, AddsConstantsNodesFormulasAndIndexedStrides)
{
    struct Case_t
    {
        const char* elements;
        int64_t address;
    };
    const Case_t cases[] = {
        {"<Address>0x10</Address><Address>0x5</Address>", 21},
        {"<Address>0x10</Address><pAddress>Idx</pAddress>", 19},
        {"<Address>0x10</Address><pIndex>Idx</pIndex>", 0x10 + 3 * 4},
        {"<Address>0x10</Address><pIndex Offset=\"8\">Idx</pIndex>", 40},
        {"<Address>0x10</Address><pIndex pOffset=\"Off\">Idx</pIndex>", 31},
        {"<Address>0x20</Address><pIndex Offset=\"8\">Neg</pIndex>", 24},
        {"<Address>0</Address><pIndex Offset=\"8\">Idx</pIndex><pIndex Offset=\"2\">Off</pIndex>", 34},
        {"<Address>0x10</Address><IntSwissKnife Name=\"K\"><pVariable Name=\"I\">Idx</pVariable><Formula>I*4</Formula></IntSwissKnife>", 28},
        {"<Address>0</Address><pIndex Offset=\"0x10\">Sel</pIndex>", 32},
    };
    for (const Case_t& c : cases)
    {
        CMemoryPort port;
        CNodeMapRef nodeMap = LoadSnippet(std::string("<Integer Name=\"Idx\"><Value>3</Value></Integer>"
                                                      "<Integer Name=\"Off\"><Value>5</Value></Integer>"
                                                      "<Integer Name=\"Neg\"><Value>-1</Value></Integer>"
                                                      "<Enumeration Name=\"Sel\"><EnumEntry Name=\"Two\"><Value>2</Value></EnumEntry><Value>2</Value></Enumeration>"
                                                      "<IntReg Name=\"R\">") +
                                              c.elements + "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>",
                                          &port);
        EXPECT_EQ(CRegisterPtr(nodeMap._GetNode("R"))->GetAddress(), c.address) << c.elements;
    }
}

TEST(StringRegNode, PadsWithZerosAndRefusesLongText)
{
    CMemoryPort port;
    port.Poke(0x100, std::vector<uint8_t>(16, 0xFF));
    CNodeMapRef nodeMap = LoadSnippet("<StringReg Name=\"S\"><Address>0x100</Address><Length>8</Length>"
                                      "<AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>"
                                      "<StringReg Name=\"RO\"><Address>0x100</Address><Length>8</Length>"
                                      "<AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>",
                                      &port);
    CStringPtr text = nodeMap._GetNode("S");
    EXPECT_EQ(text->GetValue().size(), 8u);
    text->SetValue("ab");
    EXPECT_EQ(port.Peek(0x100, 10), (std::vector<uint8_t>{'a', 'b', 0, 0, 0, 0, 0, 0, 0xFF, 0xFF}));
    EXPECT_EQ(text->GetValue(), "ab");
    text->SetValue("12345678");
    EXPECT_EQ(text->GetValue(), "12345678");
    EXPECT_EQ(ErrorOf([&] { text->SetValue("123456789", false); }), "String exceeds maximum length. Max length is 8");
    EXPECT_EQ(text->GetMaxLength(), 8);
    EXPECT_EQ(CStringPtr(nodeMap._GetNode("RO"))->GetMaxLength(), 8);
    text->SetValue("hi");
    nodeMap._InvalidateNodes();
    EXPECT_EQ(CStringPtr(nodeMap._GetNode("RO"))->GetMaxLength(), 2);
}

TEST(RegisterNode, TextIsHexInAddressOrder)
{
    CMemoryPort port;
    port.Poke(0, {0xDE, 0xAD, 0x01, 0x02});
    CNodeMapRef nodeMap = LoadSnippet("<Register Name=\"B\"><Address>0</Address><Length>4</Length>"
                                      "<AccessMode>RW</AccessMode><pPort>Device</pPort></Register>",
                                      &port);
    CRegisterPtr bytes = nodeMap._GetNode("B");
    EXPECT_EQ(bytes->ToString(), "0xdead0102");
    bytes->FromString("11223344");
    EXPECT_EQ(port.Peek(0, 4), (std::vector<uint8_t>{0x11, 0x22, 0x33, 0x44}));
    uint8_t buffer[4] = {};
    bytes->Get(buffer, 4);
    EXPECT_EQ(buffer[3], 0x44);
    EXPECT_THROW(bytes->Get(buffer, 3), GenICam::OutOfRangeException);
}

TEST(FloatRegNode, ReadsAndWritesSinglesAndDoublesInBothByteOrders)
{
    CMemoryPort port;
    CNodeMapRef nodeMap = LoadSnippet("<FloatReg Name=\"F\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
                                      "<pPort>Device</pPort><Endianess>BigEndian</Endianess></FloatReg>"
                                      "<FloatReg Name=\"D\"><Address>8</Address><Length>8</Length><AccessMode>RW</AccessMode>"
                                      "<pPort>Device</pPort></FloatReg>",
                                      &port);
    CFloatPtr single = nodeMap._GetNode("F");
    single->SetValue(1.5);
    EXPECT_EQ(port.Peek(0, 4), (std::vector<uint8_t>{0x3F, 0xC0, 0x00, 0x00}));
    EXPECT_DOUBLE_EQ(single->GetValue(), 1.5);
    EXPECT_FLOAT_EQ(static_cast<float>(single->GetMax()), 3.4028234663852886e+38f);
    CFloatPtr wide = nodeMap._GetNode("D");
    wide->SetValue(-0.1);
    EXPECT_DOUBLE_EQ(wide->GetValue(true), -0.1);
}
