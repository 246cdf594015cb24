// The pixel format table, row by row, and the layout questions it answers.
#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include <QvApi/QvApiFunctions.h>
#include <QvApi/QvPixelFormat.h>

#include "tests/QvApi_TL/Images/ImageTestSupport.h"

using namespace QvApi;
using QvApiTest::DescriptionOf;
using QvApiTest::ImageTest;

namespace
{
struct ExpectedFormat
{
    const char* name;
    uint32_t code;
    const char* description;
    uint64_t pixelTotal, pixelValid, componentTotal, componentValid, incX, align, planes;
    const char* filter;
    int color, bayer, bgr, gevSp;
};

// clang-format off
const ExpectedFormat kExpected[] = {
    {"Mono1p", 0x01010037u, "Monochrome 1-bit packed", 1, 1, 1, 1, 8, 1, 1, "mono", 0, 0, 1, 0},
    {"Mono2p", 0x01020038u, "Monochrome 2-bit packed", 2, 2, 2, 2, 4, 1, 1, "mono", 0, 0, 1, 0},
    {"Mono4p", 0x01040039u, "Monochrome 4-bit packed", 4, 4, 4, 4, 2, 1, 1, "mono", 0, 0, 1, 0},
    {"Mono8", 0x01080001u, "Monochrome 8-bit", 8, 8, 8, 8, 1, 1, 1, "mono", 0, 0, 1, 0},
    {"Mono10", 0x01100003u, "Monochrome 10-bit unpacked", 16, 10, 16, 10, 1, 2, 1, "mono", 0, 0, 1, 0},
    {"Mono10p", 0x010A0046u, "Monochrome 10-bit packed", 10, 10, 10, 10, 4, 1, 1, "mono", 0, 0, 1, 0},
    {"Mono12", 0x01100005u, "Monochrome 12-bit unpacked", 16, 12, 16, 12, 1, 2, 1, "mono", 0, 0, 1, 0},
    {"Mono12p", 0x010C0047u, "Monochrome 12-bit packed", 12, 12, 12, 12, 2, 1, 1, "mono", 0, 0, 1, 0},
    {"Mono14", 0x01100025u, "Monochrome 14-bit unpacked", 16, 14, 16, 14, 1, 2, 1, "mono", 0, 0, 1, 0},
    {"Mono14p", 0x010E0104u, "Monochrome 14-bit packed", 14, 14, 14, 14, 4, 1, 1, "mono", 0, 0, 1, 0},
    {"Mono16", 0x01100007u, "Monochrome 16-bit", 16, 16, 16, 16, 1, 2, 1, "mono", 0, 0, 1, 0},
    {"BayerGR4p", 0x0104010Du, "Bayer Green-Red 4-bit packed", 4, 4, 4, 4, 2, 1, 1, "GR", 1, 1, 1, 0},
    {"BayerRG4p", 0x0104010Eu, "Bayer Red-Green 4-bit packed", 4, 4, 4, 4, 2, 1, 1, "RG", 1, 1, 1, 0},
    {"BayerGB4p", 0x0104010Fu, "Bayer Green-Blue 4-bit packed", 4, 4, 4, 4, 2, 1, 1, "GB", 1, 1, 1, 0},
    {"BayerBG4p", 0x01040110u, "Bayer Blue-Green 4-bit packed", 4, 4, 4, 4, 2, 1, 1, "BG", 1, 1, 1, 0},
    {"BayerGR8", 0x01080008u, "Bayer Green-Red 8-bit", 8, 8, 8, 8, 1, 1, 1, "GR", 1, 1, 1, 0},
    {"BayerGR10", 0x0110000Cu, "Bayer Green-Red 10-bit unpacked", 16, 10, 16, 10, 1, 2, 1, "GR", 1, 1, 1, 0},
    {"BayerGR10p", 0x010A0056u, "Bayer Blue-Green 10-bit packed", 10, 10, 10, 10, 4, 1, 1, "GR", 1, 1, 1, 0},
    {"BayerGR12", 0x01100010u, "Bayer Green-Red 12-bit unpacked", 16, 12, 16, 12, 1, 2, 1, "GR", 1, 1, 1, 0},
    {"BayerGR12p", 0x010C0057u, "Bayer Blue-Green 12-bit packed", 12, 12, 12, 12, 2, 1, 1, "GR", 1, 1, 1, 0},
    {"BayerGR14", 0x01100109u, "Bayer Green-Red 14-bit unpacked", 16, 14, 14, 14, 1, 2, 1, "GR", 1, 1, 1, 0},
    {"BayerGR14p", 0x010E0105u, "Bayer Blue-Green 14-bit packed", 14, 14, 14, 14, 8, 1, 1, "GR", 1, 1, 1, 0},
    {"BayerGR16", 0x0110002Eu, "Bayer Green-Red 16-bit", 16, 16, 16, 16, 1, 2, 1, "GR", 1, 1, 1, 0},
    {"BayerRG8", 0x01080009u, "Bayer Red-Green 8-bit", 8, 8, 8, 8, 1, 1, 1, "RG", 1, 1, 1, 0},
    {"BayerRG10", 0x0110000Du, "Bayer Red-Green 10-bit unpacked", 16, 10, 16, 10, 1, 2, 1, "RG", 1, 1, 1, 0},
    {"BayerRG10p", 0x010A0058u, "Bayer Green-Blue 10-bit packed", 10, 10, 10, 10, 4, 1, 1, "RG", 1, 1, 1, 0},
    {"BayerRG12", 0x01100011u, "Bayer Red-Green 12-bit unpacked", 16, 12, 16, 12, 1, 2, 1, "RG", 1, 1, 1, 0},
    {"BayerRG12p", 0x010C0059u, "Bayer Green-Blue 12-bit packed", 12, 12, 12, 12, 2, 1, 1, "RG", 1, 1, 1, 0},
    {"BayerRG14", 0x0110010Au, "Bayer Red-Green 14-bit unpacked", 16, 14, 14, 14, 1, 2, 1, "RG", 1, 1, 1, 0},
    {"BayerRG14p", 0x010E0106u, "Bayer Green-Blue 14-bit packed", 14, 14, 14, 14, 8, 1, 1, "RG", 1, 1, 1, 0},
    {"BayerRG16", 0x0110002Fu, "Bayer Red-Green 16-bit", 16, 16, 16, 16, 1, 2, 1, "RG", 1, 1, 1, 0},
    {"BayerGB8", 0x0108000Au, "Bayer Green-Blue 8-bit", 8, 8, 8, 8, 1, 1, 1, "GB", 1, 1, 1, 0},
    {"BayerGB10", 0x0110000Eu, "Bayer Green-Blue 10-bit unpacked", 16, 10, 16, 10, 1, 2, 1, "GB", 1, 1, 1, 0},
    {"BayerGB10p", 0x010A0054u, "Bayer Green-Red 10-bit packed", 10, 10, 10, 10, 4, 1, 1, "GB", 1, 1, 1, 0},
    {"BayerGB12", 0x01100012u, "Bayer Green-Blue 12-bit unpacked", 16, 12, 16, 12, 1, 2, 1, "GB", 1, 1, 1, 0},
    {"BayerGB12p", 0x010C0055u, "Bayer Green-Red 12-bit packed", 12, 12, 12, 12, 2, 1, 1, "GB", 1, 1, 1, 0},
    {"BayerGB14", 0x0110010Bu, "Bayer Green-Blue 14-bit unpacked", 16, 14, 14, 14, 1, 2, 1, "GB", 1, 1, 1, 0},
    {"BayerGB14p", 0x010E0107u, "Bayer Green-Red 14-bit packed", 14, 14, 14, 14, 8, 1, 1, "GB", 1, 1, 1, 0},
    {"BayerGB16", 0x01100030u, "Bayer Green-Blue 16-bit", 16, 16, 16, 16, 1, 2, 1, "GB", 1, 1, 1, 0},
    {"BayerBG8", 0x0108000Bu, "Bayer Blue-Green 8-bit", 8, 8, 8, 8, 1, 1, 1, "BG", 1, 1, 1, 0},
    {"BayerBG10", 0x0110000Fu, "Bayer Blue-Green 10-bit unpacked", 16, 10, 16, 10, 1, 2, 1, "BG", 1, 1, 1, 0},
    {"BayerBG10p", 0x010A0052u, "Bayer Red-Green 10-bit packed", 10, 10, 10, 10, 4, 1, 1, "BG", 1, 1, 1, 0},
    {"BayerBG12", 0x01100013u, "Bayer Blue-Green 12-bit unpacked", 16, 12, 16, 12, 1, 2, 1, "BG", 1, 1, 1, 0},
    {"BayerBG12p", 0x010C0053u, "Bayer Red-Green 12-bit packed", 12, 12, 12, 12, 2, 1, 1, "BG", 1, 1, 1, 0},
    {"BayerBG14", 0x0110010Cu, "Bayer Blue-Green 14-bit unpacked", 16, 14, 14, 14, 1, 2, 1, "BG", 1, 1, 1, 0},
    {"BayerBG14p", 0x010E0108u, "Bayer Red-Green 14-bit packed", 14, 14, 14, 14, 8, 1, 1, "BG", 1, 1, 1, 0},
    {"BayerBG16", 0x01100031u, "Bayer Blue-Green 16-bit", 16, 16, 16, 16, 1, 2, 1, "BG", 1, 1, 1, 0},
    {"GVSP_Mono10Packed", 0x010C0004u, "GigE Vision specific format, Monochrome 10-bit packed", 12, 10, 12, 10, 2, 1, 1, "mono", 0, 0, 1, 1},
    {"GVSP_Mono12Packed", 0x010C0006u, "GigE Vision specific format, Monochrome 12-bit packed", 12, 12, 12, 12, 2, 1, 1, "mono", 0, 0, 1, 1},
    {"GVSP_BayerGR10Packed", 0x010C0026u, "GigE Vision specific format, Bayer Green-Red 10-bit packed", 12, 10, 12, 10, 2, 1, 1, "GR", 1, 1, 1, 1},
    {"GVSP_BayerGR12Packed", 0x010C002Au, "GigE Vision specific format, Bayer Green-Red 12-bit packed", 12, 12, 12, 12, 2, 1, 1, "GR", 1, 1, 1, 1},
    {"GVSP_BayerRG10Packed", 0x010C0027u, "GigE Vision specific format, Bayer Red-Green 10-bit packed", 12, 10, 12, 10, 2, 1, 1, "RG", 1, 1, 1, 1},
    {"GVSP_BayerRG12Packed", 0x010C002Bu, "GigE Vision specific format, Bayer Red-Green 12-bit packed", 12, 12, 12, 12, 2, 1, 1, "RG", 1, 1, 1, 1},
    {"GVSP_BayerGB10Packed", 0x010C0028u, "GigE Vision specific format, Bayer Green-Blue 10-bit packed", 12, 10, 12, 10, 2, 1, 1, "GB", 1, 1, 1, 1},
    {"GVSP_BayerGB12Packed", 0x010C002Cu, "GigE Vision specific format, Bayer Green-Blue 12-bit packed", 12, 12, 12, 12, 2, 1, 1, "GB", 1, 1, 1, 1},
    {"GVSP_BayerBG10Packed", 0x010C0029u, "GigE Vision specific format, Bayer Blue-Green 10-bit packed", 12, 10, 12, 10, 2, 1, 1, "BG", 1, 1, 1, 1},
    {"GVSP_BayerBG12Packed", 0x010C002Du, "GigE Vision specific format, Bayer Blue-Green 12-bit packed", 12, 12, 12, 12, 2, 1, 1, "BG", 1, 1, 1, 1},
    {"RGB8", 0x02180014u, "Red-Green-Blue 8-bit", 24, 24, 8, 8, 1, 4, 1, "none", 1, 0, 0, 0},
    {"BGR8", 0x02180015u, "Blue-Green-Red 8-bit", 24, 24, 8, 8, 1, 4, 1, "none", 1, 0, 1, 0},
    {"BGR10", 0x02300019u, "Blue-Green-Red 10-bit unpacked", 48, 30, 16, 10, 1, 4, 1, "none", 1, 0, 1, 0},
    {"BGR12", 0x0230001Bu, "Blue-Green-Red 12-bit unpacked", 48, 36, 16, 12, 1, 4, 1, "none", 1, 0, 1, 0},
    {"BGR14", 0x0230004Au, "Blue-Green-Red 14-bit unpacked", 48, 42, 16, 14, 1, 4, 1, "none", 1, 0, 1, 0},
    {"BGR16", 0x0230004Bu, "Blue-Green-Red 16-bit", 48, 48, 16, 16, 1, 4, 1, "none", 1, 0, 1, 0},
    {"RGBa8", 0x02200016u, "Red-Green-Blue-alpha 8-bit", 32, 24, 8, 8, 1, 4, 1, "none", 1, 0, 0, 0},
    {"BGRa8", 0x02200017u, "Blue-Green-Red-alpha 8-bit", 32, 24, 8, 8, 1, 4, 1, "none", 1, 0, 1, 0},
    {"BGRa10", 0x0240004Cu, "Blue-Green-Red-alpha 10-bit unpacked", 64, 30, 16, 10, 1, 4, 1, "none", 1, 0, 1, 0},
    {"BGRa12", 0x0240004Eu, "Blue-Green-Red-alpha 12-bit unpacked", 64, 36, 16, 12, 1, 4, 1, "none", 1, 0, 1, 0},
    {"BGRa14", 0x02400050u, "Blue-Green-Red-alpha 14-bit unpacked", 64, 42, 16, 14, 1, 4, 1, "none", 1, 0, 1, 0},
    {"BGRa16", 0x02400051u, "Blue-Green-Red-alpha 16-bit", 64, 48, 16, 16, 1, 4, 1, "none", 1, 0, 1, 0},
    {"RGB10p32", 0x0220001Du, "Red-Green-Blue 10-bit packed into 32-bit", 32, 30, 10, 10, 1, 4, 1, "none", 1, 0, 0, 0},
    {"CBGR10p32", 0x82200001u, "Blue-Green-Red 10-bit packed into 32-bit", 32, 30, 10, 10, 1, 4, 1, "none", 1, 0, 1, 0},
    {"YCbCr8", 0x0218005Bu, "YCbCr 4:4:4 8-bit", 24, 24, 8, 8, 1, 3, 1, "none", 1, 0, 1, 0},
    {"YCbCr411_8", 0x020C005Au, "YCbCr 4:1:1 8-bit", 12, 12, 8, 8, 4, 3, 1, "none", 1, 0, 1, 0},
    {"YCbCr422_8", 0x0210003Bu, "YCbCr 4:2:2 8-bit", 16, 16, 8, 8, 2, 3, 1, "none", 1, 0, 1, 0},
    {"YCbCr709_422_8", 0x02100041u, "YCbCr 4:2:2 8-bit BT.709", 16, 16, 8, 8, 2, 3, 1, "none", 1, 0, 1, 0},
    {"RGB8_Planar", 0x02180021u, "Red-Green-Blue 8-bit planar", 24, 24, 8, 8, 1, 4, 3, "none", 1, 0, 0, 0},
    {"RGB10_Planar", 0x02300022u, "Red-Green-Blue 10-bit unpacked planar", 48, 30, 16, 10, 1, 4, 3, "none", 1, 0, 0, 0},
    {"RGB12_Planar", 0x02300023u, "Red-Green-Blue 12-bit unpacked planar", 48, 36, 16, 12, 1, 4, 3, "none", 1, 0, 0, 0},
    {"RGB16_Planar", 0x02300024u, "Red-Green-Blue 16-bit planar", 48, 48, 16, 16, 1, 4, 3, "none", 1, 0, 0, 0},
    {"RGB16", 0x02300033u, "Red-Green-Blue 16-bit", 48, 48, 16, 16, 1, 4, 1, "none", 1, 0, 0, 0},
    {"BGR10p", 0x021E0048u, "Blue-Green-Red 10-bit packed", 30, 30, 10, 10, 4, 4, 1, "none", 1, 0, 1, 0},
    {"BGR12p", 0x02240049u, "Blue-Green-Red 12-bit packed", 36, 36, 12, 12, 2, 4, 1, "none", 1, 0, 1, 0},
    {"RGB10p", 0x021E005Cu, "Red-Green-Blue 10-bit packed", 30, 30, 10, 10, 4, 4, 1, "none", 1, 0, 0, 0},
    {"RGB12p", 0x0224005Du, "Red-Green-Blue 12-bit packed", 36, 36, 12, 12, 2, 4, 1, "none", 1, 0, 0, 0},
    {"YCbCr601_422_8", 0x0210003Eu, "YCbCr 4:2:2 8-bit BT.601", 16, 16, 8, 8, 2, 4, 1, "none", 1, 0, 1, 0},
    {"YCbCr411_8_CbYYCrYY", 0x020C003Cu, "YCbCr 4:1:1 8-bit", 12, 12, 8, 8, 4, 6, 1, "none", 1, 0, 1, 0},
    {"YCbCr601_411_8_CbYYCrYY", 0x020C003Fu, "YCbCr 4:1:1 8-bit BT.601", 12, 12, 8, 8, 4, 6, 1, "none", 1, 0, 1, 0},
    {"YCbCr709_411_8_CbYYCrYY", 0x020C0042u, "YCbCr 4:1:1 8-bit BT.709", 12, 12, 8, 8, 4, 6, 1, "none", 1, 0, 1, 0},
    {"YCbCr422_8_CbYCrY", 0x02100043u, "YCbCr 4:2:2 8-bit", 16, 16, 8, 8, 2, 4, 1, "none", 1, 0, 1, 0},
    {"YCbCr601_422_8_CbYCrY", 0x02100044u, "YCbCr 4:2:2 8-bit BT.601", 16, 16, 8, 8, 2, 4, 1, "none", 1, 0, 1, 0},
    {"YCbCr709_422_8_CbYCrY", 0x02100045u, "YCbCr 4:2:2 8-bit BT.709", 16, 16, 8, 8, 2, 4, 1, "none", 1, 0, 1, 0},
    {"YCbCr8_CbYCr", 0x0218003Au, "YCbCr 4:4:4 8-bit", 24, 24, 8, 8, 1, 3, 1, "none", 1, 0, 1, 0},
    {"YCbCr601_8_CbYCr", 0x0218003Du, "YCbCr 4:4:4 8-bit BT.601", 24, 24, 8, 8, 1, 3, 1, "none", 1, 0, 1, 0},
    {"YCbCr709_8_CbYCr", 0x02180040u, "YCbCr 4:4:4 8-bit BT.709", 24, 24, 8, 8, 1, 3, 1, "none", 1, 0, 1, 0},
    {"YUV411_8_UYYVYY", 0x020C001Eu, "YUV 4:1:1 8-bit", 12, 12, 8, 8, 4, 6, 1, "none", 1, 0, 1, 0},
    {"YUV422_8_UYVY", 0x0210001Fu, "YUV 4:2:2 8-bit", 16, 16, 8, 8, 2, 4, 1, "none", 1, 0, 1, 0},
    {"YUV8_UYV", 0x02180020u, "YUV 4:4:4 8-bit", 24, 24, 8, 8, 1, 3, 1, "none", 1, 0, 1, 0},
    {"YUV422_8", 0x02100032u, "YUV 4:2:2 8-bit", 16, 16, 8, 8, 2, 4, 1, "none", 1, 0, 1, 0},
};
// clang-format on

EQvPixelColorFilter_t FilterOf(const std::string& text)
{
    static const std::map<std::string, EQvPixelColorFilter_t> filters = {
        {"none", QvPixelColorFilter_None},       {"mono", QvPixelColorFilter_Mono},
        {"RG", QvPixelColorFilter_BayerRG},      {"GR", QvPixelColorFilter_BayerGR},
        {"GB", QvPixelColorFilter_BayerGB},      {"BG", QvPixelColorFilter_BayerBG}};
    return filters.at(text);
}

const IQvPixelFormatInfo* Info(EQvPixelFormatNamingConvention_t code)
{
    return GetIQvPixelFormatInfo(code);
}

using PixelFormatTable = ImageTest;
} // namespace

TEST_F(PixelFormatTable, EveryRowMatchesTheTable)
{
    ASSERT_EQ(sizeof(kExpected) / sizeof(kExpected[0]), 98u);
    std::set<uint32_t> codes;
    for (const ExpectedFormat& row : kExpected)
    {
        SCOPED_TRACE(row.name);
        codes.insert(row.code);
        const IQvPixelFormatInfo* pInfo = Info(static_cast<EQvPixelFormatNamingConvention_t>(row.code));
        ASSERT_NE(pInfo, nullptr);
        EXPECT_EQ(pInfo->GetValue(), row.code);
        EXPECT_STREQ(pInfo->GetName().c_str(), row.name);
        EXPECT_STREQ(pInfo->GetDescription().c_str(), row.description);
        EXPECT_EQ(pInfo->GetEachPixelTotalBitCount(), row.pixelTotal);
        EXPECT_EQ(pInfo->GetEachPixelValidBitCount(), row.pixelValid);
        EXPECT_EQ(pInfo->GetEachComponentTotalBitCount(), row.componentTotal);
        EXPECT_EQ(pInfo->GetEachComponentValidBitCount(), row.componentValid);
        EXPECT_EQ(pInfo->GetPixelIncrementX(), row.incX);
        EXPECT_EQ(pInfo->GetPixelIncrementY(), 1u);
        EXPECT_EQ(pInfo->GetLinePitchAlignment(), row.align);
        EXPECT_EQ(pInfo->GetPlaneCount(), row.planes);
        EXPECT_EQ(pInfo->GetPixelColorFilter(0, 0), FilterOf(row.filter));
        EXPECT_EQ(pInfo->IsColor(), row.color != 0);
        EXPECT_EQ(pInfo->IsMono(), row.color == 0);
        EXPECT_EQ(pInfo->IsBayer(), row.bayer != 0);
        EXPECT_EQ(pInfo->IsBGROrder(), row.bgr != 0);
        EXPECT_EQ(pInfo->IsGevSp(), row.gevSp != 0);
        EXPECT_FALSE(pInfo->IsCompressed());
        EXPECT_EQ(pInfo->GetEachPixelTotalComponentCount(), row.pixelTotal / row.componentTotal);
        EXPECT_EQ(pInfo->GetEachPixelValidComponentCount(), row.pixelValid / row.componentValid);
        // The enumerator carries the same code.
        EXPECT_EQ(GetIQvPixelFormatInfo(pInfo->GetValue()), pInfo);
    }
    EXPECT_EQ(codes.size(), 98u);
}

TEST_F(PixelFormatTable, KeepsTheIrregularRowsAsTheyStand)
{
    EXPECT_STREQ(Info(QvPFNC_BayerGR10p)->GetDescription().c_str(), "Bayer Blue-Green 10-bit packed");
    EXPECT_EQ(Info(QvPFNC_BayerGR10p)->GetPixelColorFilter(0, 0), QvPixelColorFilter_BayerGR);
    EXPECT_EQ(Info(QvPFNC_BayerBG14)->GetEachComponentTotalBitCount(), 14u);
    EXPECT_EQ(Info(QvPFNC_BayerBG14)->GetEachPixelTotalComponentCount(), 1u);
    EXPECT_EQ(Info(QvPFNC_Mono14)->GetEachComponentTotalBitCount(), 16u);
    EXPECT_EQ(Info(QvPFNC_BayerRG14p)->GetPixelIncrementX(), 8u);
    EXPECT_EQ(Info(QvPFNC_Mono14p)->GetPixelIncrementX(), 4u);
    EXPECT_EQ(static_cast<uint32_t>(QvPFNC_CBGR10p32), 0x82200001u);
    EXPECT_FALSE(Info(QvPFNC_RGB8_Planar)->IsBGROrder());
    EXPECT_TRUE(Info(QvPFNC_YUV422_8)->IsBGROrder());
    EXPECT_EQ(Info(QvPFNC_YCbCr422_8)->GetLinePitchAlignment(), 3u);
    EXPECT_EQ(Info(QvPFNC_YCbCr601_422_8)->GetLinePitchAlignment(), 4u);
}

TEST_F(PixelFormatTable, DerivesComponentCountsByIntegerDivision)
{
    EXPECT_EQ(Info(QvPFNC_YCbCr422_8)->GetEachPixelTotalComponentCount(), 2u);
    EXPECT_EQ(Info(QvPFNC_YCbCr422_8)->GetEachPixelValidComponentCount(), 2u);
    EXPECT_EQ(Info(QvPFNC_YCbCr411_8)->GetEachPixelTotalComponentCount(), 1u);
    EXPECT_EQ(Info(QvPFNC_YCbCr411_8)->GetEachPixelValidComponentCount(), 1u);
    EXPECT_EQ(Info(QvPFNC_RGBa8)->GetEachPixelTotalComponentCount(), 4u);
    EXPECT_EQ(Info(QvPFNC_RGBa8)->GetEachPixelValidComponentCount(), 3u);
    EXPECT_EQ(Info(QvPFNC_BGR10)->GetEachPixelTotalComponentCount(), 3u);
    EXPECT_EQ(Info(QvPFNC_BGR10)->GetEachPixelValidComponentCount(), 3u);
}

TEST_F(PixelFormatTable, ComputesTheRequiredLinePitch)
{
    EXPECT_EQ(Info(QvPFNC_Mono12p)->GetRequiredLinePitch(5, 1), 8u);
    EXPECT_EQ(Info(QvPFNC_Mono12p)->GetRequiredLinePitch(5, 4), 8u);
    EXPECT_EQ(Info(QvPFNC_RGB8)->GetRequiredLinePitch(3, 4), 12u);
    EXPECT_EQ(Info(QvPFNC_RGB8)->GetRequiredLinePitch(3, 0), 9u);
    EXPECT_EQ(Info(QvPFNC_RGB10_Planar)->GetRequiredLinePitch(10, 1), 20u);
    EXPECT_EQ(Info(QvPFNC_Mono1p)->GetRequiredLinePitch(9, 1), 2u);
    EXPECT_EQ(Info(QvPFNC_YCbCr411_8_CbYYCrYY)->GetRequiredLinePitch(4, 6), 6u);
    EXPECT_EQ(Info(QvPFNC_YCbCr411_8_CbYYCrYY)->GetRequiredLinePitch(8, 6), 12u);
    EXPECT_EQ(Info(QvPFNC_YCbCr8)->GetRequiredLinePitch(5, 3), 15u);
    // Absurd widths saturate instead of wrapping into a small pitch.
    EXPECT_EQ(Info(QvPFNC_BGRa16)->GetRequiredLinePitch(SIZE_MAX, 4), UINT64_MAX);
}

TEST_F(PixelFormatTable, GivesTheBayerPhaseOfEveryCell)
{
    struct Row
    {
        EQvPixelColorFilter_t stored, oddX, oddY, both;
    };
    const Row rows[] = {
        {QvPixelColorFilter_BayerRG, QvPixelColorFilter_BayerGR, QvPixelColorFilter_BayerGB, QvPixelColorFilter_BayerBG},
        {QvPixelColorFilter_BayerGR, QvPixelColorFilter_BayerRG, QvPixelColorFilter_BayerBG, QvPixelColorFilter_BayerGB},
        {QvPixelColorFilter_BayerGB, QvPixelColorFilter_BayerBG, QvPixelColorFilter_BayerRG, QvPixelColorFilter_BayerGR},
        {QvPixelColorFilter_BayerBG, QvPixelColorFilter_BayerGB, QvPixelColorFilter_BayerGR, QvPixelColorFilter_BayerRG},
    };
    const EQvPixelFormatNamingConvention_t byFilter[] = {QvPFNC_BayerRG8, QvPFNC_BayerGR8, QvPFNC_BayerGB8,
                                                         QvPFNC_BayerBG8};
    for (const Row& row : rows)
    {
        const IQvPixelFormatInfo* pInfo = Info(byFilter[row.stored - QvPixelColorFilter_BayerRG]);
        SCOPED_TRACE(pInfo->GetName().c_str());
        EXPECT_EQ(pInfo->GetPixelColorFilter(2, 4), row.stored);
        EXPECT_EQ(pInfo->GetPixelColorFilter(3, 0), row.oddX);
        EXPECT_EQ(pInfo->GetPixelColorFilter(0, 7), row.oddY);
        EXPECT_EQ(pInfo->GetPixelColorFilter(5, 9), row.both);
    }
    for (size_t x = 0; x < 3; ++x)
        for (size_t y = 0; y < 3; ++y)
        {
            EXPECT_EQ(Info(QvPFNC_Mono8)->GetPixelColorFilter(x, y), QvPixelColorFilter_Mono);
            EXPECT_EQ(Info(QvPFNC_RGB8)->GetPixelColorFilter(x, y), QvPixelColorFilter_None);
        }
}

TEST_F(PixelFormatTable, OffsetsUnpackedBayerFormatsToTheShiftedPhase)
{
    EXPECT_EQ(Info(QvPFNC_BayerRG8)->GetOffsettedPixelFormat(1, 0), QvPFNC_BayerGR8);
    EXPECT_EQ(Info(QvPFNC_BayerRG8)->GetOffsettedPixelFormat(0, 1), QvPFNC_BayerGB8);
    EXPECT_EQ(Info(QvPFNC_BayerRG8)->GetOffsettedPixelFormat(1, 1), QvPFNC_BayerBG8);
    EXPECT_EQ(Info(QvPFNC_BayerRG8)->GetPixelColorFilter(1, 1), QvPixelColorFilter_BayerBG);
    EXPECT_EQ(Info(QvPFNC_BayerGR12)->GetOffsettedPixelFormat(1, 0), QvPFNC_BayerRG12);
    EXPECT_EQ(Info(QvPFNC_BayerRG4p)->GetOffsettedPixelFormat(1, 1), QvPFNC_BayerBG4p);
    EXPECT_EQ(Info(QvPFNC_BayerBG16)->GetOffsettedPixelFormat(4, 2), QvPFNC_BayerBG16);
    EXPECT_EQ(Info(QvPFNC_BayerGB14)->GetOffsettedPixelFormat(3, 2), QvPFNC_BayerBG14);

    // Every family keeps its depth and packing: the offsetted code's record has the same bits.
    for (const ExpectedFormat& row : kExpected)
    {
        const IQvPixelFormatInfo* pInfo = Info(static_cast<EQvPixelFormatNamingConvention_t>(row.code));
        if (!pInfo->IsBayer())
            continue;
        SCOPED_TRACE(row.name);
        for (size_t x = 0; x < 2; ++x)
            for (size_t y = 0; y < 2; ++y)
            {
                const EQvPixelFormatNamingConvention_t offset = pInfo->GetOffsettedPixelFormat(x, y);
                if (offset == QvPFNC_Invalid)
                    continue;
                const IQvPixelFormatInfo* pOffset = Info(offset);
                EXPECT_EQ(pOffset->GetEachPixelTotalBitCount(), pInfo->GetEachPixelTotalBitCount());
                EXPECT_EQ(pOffset->IsGevSp(), pInfo->IsGevSp());
                EXPECT_EQ(pOffset->GetPixelColorFilter(0, 0), pInfo->GetPixelColorFilter(x, y));
            }
    }
}

TEST_F(PixelFormatTable, RefusesToSplitPackedBayerGroupsAtOddX)
{
    EXPECT_EQ(Info(QvPFNC_BayerGB10p)->GetOffsettedPixelFormat(1, 0), QvPFNC_Invalid);
    EXPECT_EQ(Info(QvPFNC_BayerGB10p)->GetOffsettedPixelFormat(1, 1), QvPFNC_Invalid);
    EXPECT_EQ(Info(QvPFNC_BayerGB10p)->GetOffsettedPixelFormat(0, 1), QvPFNC_BayerRG10p);
    EXPECT_EQ(Info(QvPFNC_BayerGR14p)->GetOffsettedPixelFormat(0, 1), QvPFNC_BayerBG14p);
    EXPECT_EQ(Info(QvPFNC_GVSP_BayerRG12Packed)->GetOffsettedPixelFormat(0, 1), QvPFNC_GVSP_BayerGB12Packed);
    EXPECT_EQ(Info(QvPFNC_GVSP_BayerRG12Packed)->GetOffsettedPixelFormat(3, 0), QvPFNC_Invalid);
    // The 4-bit packed family is shifted like the unpacked ones.
    EXPECT_EQ(Info(QvPFNC_BayerGR4p)->GetOffsettedPixelFormat(1, 0), QvPFNC_BayerRG4p);
}

TEST_F(PixelFormatTable, OffsetsEveryOtherFormatToItself)
{
    for (const ExpectedFormat& row : kExpected)
    {
        const IQvPixelFormatInfo* pInfo = Info(static_cast<EQvPixelFormatNamingConvention_t>(row.code));
        if (pInfo->IsBayer())
            continue;
        for (size_t x = 0; x < 3; ++x)
            for (size_t y = 0; y < 3; ++y)
                EXPECT_EQ(pInfo->GetOffsettedPixelFormat(x, y), row.code) << row.name;
    }
}

TEST_F(PixelFormatTable, RejectsAnUnknownCodeNamingItInHexadecimal)
{
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>(
                  [] { GetIQvPixelFormatInfo(static_cast<EQvPixelFormatNamingConvention_t>(0x01080002)); }),
              "Unknown pixelformat 0x1080002");
    try
    {
        GetIQvPixelFormatInfo(QvPFNC_Invalid);
        FAIL() << "nothing thrown";
    }
    catch (const GenICam::RuntimeException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "Unknown pixelformat 0xFFFFFFFF");
        EXPECT_STREQ(e.GetSourceFileName(), "QvApi_TL/QvPixelFormatInfo.cpp");
    }
}

TEST(PixelFormatTableUninitialised, RefusesLookupsBeforeInitialisation)
{
    EXPECT_EQ(DescriptionOf<GenICam::RuntimeException>([] { GetIQvPixelFormatInfo(QvPFNC_Mono8); }),
              "QvApi is not initialized.");
}
