// A scripted qvcam session against the virtual cameras of libqvgentl.cti, as a user would type
// it: list, info, get/set, grab to PNG/PGM/raw, features save/load, xml, genicam-dump, stream.

#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <string>

#include <stb_image.h>

#include "ToolRunner.h"

namespace
{
class QvCamSession : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (QvCamPath().empty())
            GTEST_SKIP() << "QV_QVCAM is not set";
    }
    ToolResult_t Run(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment = {})
    {
        ToolResult_t result = RunTool(QvCamPath(), arguments, environment);
        EXPECT_TRUE(result.exitCode == 0 || !result.err.empty()) << "failure without a message";
        return result;
    }
    CTempFolder m_folder;
};

TEST_F(QvCamSession, ListShowsProducersInterfacesAndDevices)
{
    const ToolResult_t list = Run({"list"});
    ASSERT_EQ(list.exitCode, 0) << list.err;
    // The status column's position depends on the longest path listed.
    EXPECT_TRUE(std::regex_search(list.out, std::regex("libqvgentl\\.cti +opened: QvApi"))) << list.out;
    EXPECT_NE(list.out.find("QvVirtual-GEV0  GEV"), std::string::npos) << list.out;
    EXPECT_NE(list.out.find("  0  QVU3V0000  QvApi   QvVirtualCamera-U3V  QVU3V0000  -          available"),
              std::string::npos)
        << list.out;
    EXPECT_NE(list.out.find("  2  QVCXP0000"), std::string::npos) << list.out;

    // A .cti the SDK has no vendor for is still listed, and shadowed copies are marked.
    const std::string foreign = m_folder / "other.cti";
    ASSERT_EQ(RunTool("/bin/sh", {"-c", "echo x > " + foreign}).exitCode, 0);
    const std::string path = std::string(std::getenv("GENICAM_GENTL64_PATH")) + ":" + m_folder.Path() + ":" +
                             std::getenv("GENICAM_GENTL64_PATH");
    const ToolResult_t mixed = Run({"list"}, {{"GENICAM_GENTL64_PATH", path}});
    ASSERT_EQ(mixed.exitCode, 0) << mixed.err;
    const size_t row = mixed.out.find(foreign);
    ASSERT_NE(row, std::string::npos) << mixed.out;
    const std::string foreignStatus = "found; not one of the SDK's vendor producers";
    EXPECT_EQ(mixed.out.compare(mixed.out.find_first_not_of(' ', row + foreign.size()), foreignStatus.size(), foreignStatus), 0)
        << mixed.out;
    EXPECT_NE(mixed.out.find("shadowed by an earlier folder"), std::string::npos) << mixed.out;
}

TEST_F(QvCamSession, InfoGetAndSetByIndexIdSerialAndDefault)
{
    const ToolResult_t info = Run({"info", "QVGEV0000"});
    ASSERT_EQ(info.exitCode, 0) << info.err;
    EXPECT_NE(info.out.find("Model            QvVirtualCamera-GEV"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("Features of the remote device (VirtualCamera_GEV.zip)"), std::string::npos);
    EXPECT_TRUE(std::regex_search(info.out, std::regex("\n  ExposureTime +1000 +RW +us\n")))
        << info.out;

    EXPECT_EQ(Run({"get", "Width"}).out, "1280\n");
    EXPECT_EQ(Run({"get", "2", "DeviceModelName"}).out, "QvVirtualCamera-CXP\n");
    EXPECT_EQ(Run({"get", "QVGEV0000", "DeviceSerialNumber"}).out, "QVGEV0000\n");
    EXPECT_EQ(Run({"get", "--module", "system", "TLType"}).exitCode, 0);
    EXPECT_EQ(Run({"get", "--module", "stream", "StreamID"}).out, "Stream0\n");
    EXPECT_EQ(Run({"set", "Width", "640"}).out, "Width = 640\n");
    EXPECT_EQ(Run({"set", "1", "PixelFormat", "BayerRG8"}).out, "PixelFormat = BayerRG8\n");
    EXPECT_EQ(Run({"set", "ExposureTime", "2500.5"}).out, "ExposureTime = 2500.5\n");
    EXPECT_EQ(Run({"exec", "TimestampLatch"}).exitCode, 0);
}

TEST_F(QvCamSession, GrabWritesColourBarsAsPngAndFullDepthPgmAndRawBytes)
{
    const ToolResult_t grab = Run({"grab", "--count", "2", "--out", m_folder / "png", "--set", "PixelFormat=BayerRG8",
                                   "--set", "TestPattern=ColorBar"});
    ASSERT_EQ(grab.exitCode, 0) << grab.err;
    EXPECT_NE(grab.out.find("Grabbed 2 frame(s) (1280x960 BayerRG8) from QVU3V0000"), std::string::npos) << grab.out;
    EXPECT_NE(grab.out.find("frames/s"), std::string::npos);
    EXPECT_TRUE(grab.err.empty()) << "no progress bar when stderr is not a terminal: " << grab.err;

    int width = 0, height = 0, channels = 0;
    unsigned char* pixels = stbi_load((m_folder / "png/QVU3V0000-0002.png").c_str(), &width, &height, &channels, 0);
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(width, 1280);
    EXPECT_EQ(height, 960);
    ASSERT_EQ(channels, 3);
    // Eight bars of 160 pixels: white, yellow, cyan, green, magenta, red, blue, black.
    const int expected[8][3] = {{1, 1, 1}, {1, 1, 0}, {0, 1, 1}, {0, 1, 0}, {1, 0, 1}, {1, 0, 0}, {0, 0, 1}, {0, 0, 0}};
    for (int bar = 0; bar < 8; ++bar)
    {
        const unsigned char* pixel = pixels + (480 * width + bar * 160 + 80) * 3;
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(pixel[c] > 128, expected[bar][c] == 1) << "bar " << bar << " channel " << c;
    }
    stbi_image_free(pixels);

    ASSERT_EQ(Run({"grab", "-n", "1", "-o", m_folder.Path(), "-f", "pgm", "--set", "PixelFormat=Mono12"}).exitCode, 0);
    const std::string pgm = ReadFile(m_folder / "QVU3V0000-0001.pgm");
    const std::string header = "P5\n1280 960\n4095\n";
    ASSERT_EQ(pgm.substr(0, header.size()), header);
    EXPECT_EQ(pgm.size(), header.size() + 1280 * 960 * 2);

    ASSERT_EQ(Run({"grab", "QVGEV0000", "-n", "1", "-o", m_folder.Path(), "-f", "raw"}).exitCode, 0);
    EXPECT_EQ(ReadFile(m_folder / "QVGEV0000-0001.raw").size(), 1280u * 960u);
}

TEST_F(QvCamSession, FeaturesSaveAndLoadRoundTrip)
{
    const std::string file = m_folder / "settings.txt";
    const ToolResult_t save = Run({"features", "save", file});
    ASSERT_EQ(save.exitCode, 0) << save.err;
    const std::string text = ReadFile(file);
    ASSERT_EQ(text.rfind("# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n# GenApi persistence file (version 3.0.0)\n", 0), 0u);
    EXPECT_NE(text.find("\nExposureTime\t1000"), std::string::npos) << text;
    EXPECT_NE(text.find("\nPixelFormat\tMono8\n"), std::string::npos) << text;

    const size_t count = std::strtoul(save.out.c_str() + std::string("Saved ").size(), nullptr, 10);
    ASSERT_GT(count, 10u);
    const ToolResult_t load = Run({"features", "load", "QVCXP0000", file});
    ASSERT_EQ(load.exitCode, 0) << load.err;
    EXPECT_EQ(load.out, "Loaded " + std::to_string(count) + " feature values from " + file +
                            " into QVCXP0000 (remote device)\n");
}

TEST_F(QvCamSession, XmlSavesDescriptionsThatGenICamDumpReads)
{
    ASSERT_EQ(Run({"xml", m_folder / "camera.zip"}).exitCode, 0);
    EXPECT_EQ(ReadFile(m_folder / "camera.zip").substr(0, 2), "PK");
    const ToolResult_t local = Run({"xml", "--module", "local", m_folder / "local.xml"});
    ASSERT_EQ(local.exitCode, 0) << local.err;
    EXPECT_EQ(local.out, "Saved the local device description LocalDevice.xml to " + (m_folder / "local.xml") + "\n");
    EXPECT_EQ(ReadFile(m_folder / "local.xml").rfind("<?xml", 0), 0u);

    const ToolResult_t dump = Run({"genicam-dump", m_folder / "camera.zip"});
    ASSERT_EQ(dump.exitCode, 0) << dump.err;
    EXPECT_NE(dump.out.find("{\"name\":\"ExposureTime\",\"type\":\"intfIFloat\""), std::string::npos);
}

TEST_F(QvCamSession, StreamCountsFramesAndDroppedFrames)
{
    const ToolResult_t stream = Run({"stream", "--seconds", "1.5", "--set", "TestDroppedFrameInterval=5"});
    ASSERT_EQ(stream.exitCode, 0) << stream.err;
    EXPECT_NE(stream.out.find("frames/s"), std::string::npos) << stream.out;
    EXPECT_NE(stream.out.find("MB/s"), std::string::npos);
    const size_t summary = stream.out.rfind(" frames in ");
    ASSERT_NE(summary, std::string::npos) << stream.out;
    const size_t droppedAt = stream.out.find(" dropped", summary);
    ASSERT_NE(droppedAt, std::string::npos);
    const size_t numberAt = stream.out.rfind(", ", droppedAt) + 2;
    // Every fifth frame is dropped by the camera: about 9 of 45 at 30 frames/s.
    EXPECT_GT(std::strtoul(stream.out.c_str() + numberAt, nullptr, 10), 3u) << stream.out;
}
} // namespace
