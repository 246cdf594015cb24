// The pixel component table.
#include <set>

#include <gtest/gtest.h>

#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvPixelComponent.h>

#include "tests/QvApi_TL/Images/ImageTestSupport.h"

using namespace QvApi;
using QvApiTest::DescriptionOf;

namespace
{
struct ExpectedComponent
{
    const char* name;
    uint32_t code;
    uint64_t bits;
};

const ExpectedComponent kExpected[] = {
    {"Unknown", 0x00000000u, 0},
    {"Mono1", 0x01010000u, 1},
    {"Mono2", 0x01020000u, 2},
    {"Mono4", 0x01040000u, 4},
    {"Mono8", 0x01080000u, 8},
    {"Mono10", 0x010A0000u, 10},
    {"Mono12", 0x010C0000u, 12},
    {"Mono14", 0x010E0000u, 14},
    {"Mono16", 0x01100000u, 16},
    {"R4", 0x02040000u, 4},
    {"R8", 0x02080000u, 8},
    {"R10", 0x020A0000u, 10},
    {"R12", 0x020C0000u, 12},
    {"R14", 0x020E0000u, 14},
    {"R16", 0x02100000u, 16},
    {"G4", 0x03040000u, 4},
    {"G8", 0x03080000u, 8},
    {"G10", 0x030A0000u, 10},
    {"G12", 0x030C0000u, 12},
    {"G14", 0x030E0000u, 14},
    {"G16", 0x03100000u, 16},
    {"B4", 0x04040000u, 4},
    {"B8", 0x04080000u, 8},
    {"B10", 0x040A0000u, 10},
    {"B12", 0x040C0000u, 12},
    {"B14", 0x040E0000u, 14},
    {"B16", 0x04100000u, 16},
    {"Gr4", 0x05040000u, 4},
    {"Gr8", 0x05080000u, 8},
    {"Gr10", 0x050A0000u, 10},
    {"Gr12", 0x050C0000u, 12},
    {"Gr14", 0x050E0000u, 14},
    {"Gr16", 0x05100000u, 16},
    {"Gb4", 0x06040000u, 4},
    {"Gb8", 0x06080000u, 8},
    {"Gb10", 0x060A0000u, 10},
    {"Gb12", 0x060C0000u, 12},
    {"Gb14", 0x060E0000u, 14},
    {"Gb16", 0x06100000u, 16},
    {"Y8", 0x07080000u, 8},
    {"Cb8", 0x08080000u, 8},
    {"Cr8", 0x09080000u, 8},
    {"U8", 0x0A080000u, 8},
    {"V8", 0x0B080000u, 8},
};

using PixelComponentTable = QvApiTest::ImageTest;
} // namespace

TEST_F(PixelComponentTable, EveryRowMatchesTheTable)
{
    ASSERT_EQ(sizeof(kExpected) / sizeof(kExpected[0]), 44u);
    std::set<uint32_t> codes;
    for (const ExpectedComponent& row : kExpected)
    {
        SCOPED_TRACE(row.name);
        codes.insert(row.code);
        const IQvPixelComponentInfo* pInfo = GetIQvPixelComponentInfo(static_cast<EQvPixelComponent_t>(row.code));
        EXPECT_EQ(pInfo->GetValue(), row.code);
        EXPECT_STREQ(pInfo->GetName().c_str(), row.name);
        EXPECT_EQ(pInfo->GetBitCount(), row.bits);
        // channel x 2^24 + bits x 2^16
        EXPECT_EQ(row.code & 0xFFFF, 0u);
        EXPECT_EQ((row.code >> 16) & 0xFF, row.bits);
    }
    EXPECT_EQ(codes.size(), 44u);
    EXPECT_EQ(QvPixelComponent_Gb14, 0x060E0000u);
    EXPECT_EQ(QvPixelComponent_V8, 0x0B080000u);
}

TEST_F(PixelComponentTable, RejectsAnUnknownCodeNamingItInDecimal)
{
    // The type name is misspelt in the message on purpose: applications match on the text.
    EXPECT_EQ(DescriptionOf<GenICam::InvalidArgumentException>(
                  [] { GetIQvPixelComponentInfo(static_cast<EQvPixelComponent_t>(0x01030000)); }),
              "EQvPixelComponet_t 16973824 is not supported.");
}

TEST(PixelComponentTableUninitialised, RefusesLookupsBeforeInitialisation)
{
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([] { GetIQvPixelComponentInfo(QvPixelComponent_Mono8); }),
              "QvApi is not initialized.");
}
