// Every bad invocation ends with one clear line on stderr and its own exit code, never a crash
// or a stack of messages. Runs the real qvcam binary against the virtual cameras.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ToolRunner.h"

namespace
{
struct BadInvocation_t
{
    const char* what;
    std::vector<std::string> arguments;
    std::map<std::string, std::string> environment;
    int exitCode;
    const char* message; // must appear in the line
};

int CountLines(const std::string& text)
{
    int lines = 0;
    for (char c : text)
        lines += c == '\n';
    return lines;
}

class QvCamErrors : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (QvCamPath().empty())
            GTEST_SKIP() << "QV_QVCAM is not set";
    }
    CTempFolder m_folder;
};

TEST_F(QvCamErrors, EachBadInvocationGivesOneLineAndItsExitCode)
{
    const std::string folder = m_folder.Path();
    // A folder holding only a producer the SDK has no vendor for.
    const std::string foreign = folder + "/foreign";
    ASSERT_EQ(RunTool("/bin/mkdir", {foreign}).exitCode, 0);
    ASSERT_EQ(RunTool("/bin/sh", {"-c", "echo not a library > " + foreign + "/other_vendor.cti"}).exitCode, 0);
    ASSERT_EQ(RunTool("/bin/sh", {"-c", "printf 'Width\\t640\\n' > " + folder + "/noheader.txt"}).exitCode, 0);
    ASSERT_EQ(RunTool("/bin/sh", {"-c", "printf '<not xml' > " + folder + "/broken.xml"}).exitCode, 0);
    ASSERT_EQ(RunTool("/bin/sh",
                      {"-c", "printf '# {05D8C294-F295-4dfb-9D01-096BD04049F4}\\n# GenApi persistence file (version "
                             "3.0.0)\\n# \\nExposureTime\\t3\\n' > " + folder + "/outofrange.txt"})
                  .exitCode,
              0);

    const std::vector<BadInvocation_t> cases = {
        {"no command", {}, {}, 2, "subcommand is required"},
        {"unknown command", {"frobnicate"}, {}, 2, "unknown command 'frobnicate'"},
        {"unknown option", {"list", "--bogus"}, {}, 2, "--bogus"},
        {"missing feature name", {"get"}, {}, 2, "missing argument: usage: qvcam get [DEVICE] FEATURE"},
        {"too many arguments", {"set", "0", "Width", "640", "extra"}, {}, 2, "too many arguments"},
        {"unknown module", {"get", "--module", "camera", "Width"}, {}, 2, "unknown module 'camera'"},
        {"bad frame format", {"grab", "--format", "jpeg"}, {}, 2, "unknown frame format 'jpeg'"},
        {"no producer path", {"list"}, {{"GENICAM_GENTL64_PATH", kUnset}}, 3, "GENICAM_GENTL64_PATH is not set"},
        {"empty producer folder", {"info"}, {{"GENICAM_GENTL64_PATH", folder}}, 3, "no GenTL producer (.cti file) found"},
        {"only foreign producers", {"info"}, {{"GENICAM_GENTL64_PATH", foreign}}, 3, "no GenTL producer the SDK can open"},
        {"producer refuses to open", {"get", "Width"}, {{"QVGENTL_VIRTUAL", "bogus"}}, 3, "cannot open the GenTL producer"},
        {"no camera at all", {"info"}, {{"QVGENTL_VIRTUAL", ""}}, 4, "no device found"},
        {"unknown device", {"get", "NoSuchCamera", "Width"}, {}, 4, "no device 'NoSuchCamera'"},
        {"device index out of range", {"get", "7", "Width"}, {}, 4, "no device #7: 3 device(s) found"},
        {"unknown feature", {"get", "Widht"}, {}, 6, "no feature 'Widht' in the remote device node map (did you mean 'Width'?)"},
        {"value out of range", {"set", "ExposureTime", "5"}, {}, 7, "ExposureTime = 5 is out of range [10, 1000000]"},
        {"value off the increment", {"set", "Width", "101"}, {}, 7, "Width = 101 is not 64 plus a multiple of 2"},
        {"not a number", {"set", "Gain", "loud"}, {}, 7, "'loud' is not a number"},
        {"unknown entry", {"set", "PixelFormat", "Mono9"}, {}, 7, "'Mono9' is not an entry of PixelFormat"},
        {"command as value", {"set", "AcquisitionStart", "1"}, {}, 7, "is a command"},
        {"read-only feature", {"set", "DeviceVendorName", "Me"}, {}, 8, "DeviceVendorName is read-only"},
        {"feature not available", {"get", "ChunkFrameID"}, {}, 8, "ChunkFrameID cannot be read (access mode NA"},
        {"device lost", {"grab", "--exec", "TestDeviceLost", "--out", folder}, {}, 9, "device QVU3V0000 was lost"},
        {"no frame in time", {"grab", "--set", "TriggerMode=On", "--timeout", "300", "--out", folder}, {}, 10,
         "no frame from QVU3V0000 within 300 ms"},
        {"missing output folder", {"grab", "--out", folder + "/no/such/folder"}, {}, 11, "its parent folder does not exist"},
        {"missing feature file", {"features", "load", folder + "/absent.txt"}, {}, 11, "No such file or directory"},
        {"not a feature file", {"features", "load", folder + "/noheader.txt"}, {}, 11, "is not a feature file"},
        {"save into a missing folder", {"features", "save", folder + "/no/settings.txt"}, {}, 11, "does not exist"},
        {"features the device refuses", {"features", "load", folder + "/outofrange.txt"}, {}, 12,
         "1 of 1 feature values"},
        {"description that does not load", {"genicam-dump", folder + "/broken.xml"}, {}, 13, "cannot load"},
    };
    for (const BadInvocation_t& bad : cases)
    {
        SCOPED_TRACE(bad.what);
        const ToolResult_t result = RunTool(QvCamPath(), bad.arguments, bad.environment);
        EXPECT_EQ(result.exitCode, bad.exitCode) << result.err;
        ASSERT_FALSE(result.err.empty());
        const std::string firstLine = result.err.substr(0, result.err.find('\n'));
        EXPECT_EQ(firstLine.rfind("qvcam: ", 0), 0u) << firstLine;
        EXPECT_NE(firstLine.find(bad.message), std::string::npos) << firstLine;
        // One line, except the per-feature details that an incomplete load lists below it.
        if (bad.exitCode != 12)
        {
            EXPECT_EQ(CountLines(result.err), 1) << result.err;
        }
        EXPECT_EQ(result.err.find("terminate called"), std::string::npos);
    }
}

TEST_F(QvCamErrors, HelpAndVersionSucceed)
{
    const ToolResult_t help = RunTool(QvCamPath(), {"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("Exit codes:"), std::string::npos);
    const ToolResult_t version = RunTool(QvCamPath(), {"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_NE(version.out.find("qvcam 1."), std::string::npos);
}
} // namespace
