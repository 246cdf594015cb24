// Runs compare.py --corpus with genicam-dump over the shared corpus and checks the summary line:
// every description loads (the duplicate-name one is refused, as it must be) and the node match
// ratio stays at the level reached. The two descriptions that break the schema load with the
// warnings expected of them.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>

#include <sys/stat.h>

#include <gtest/gtest.h>

namespace
{
// Reached: 77561 of 77562. The one difference is deliberate (an IntConverter without a Slope
// element reports its real range; the reference reports 0..0).
constexpr double kMinimumMatchPercent = 99.99;

bool Exists(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

std::string RunCommand(const std::string& command)
{
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return output;
    char buffer[4096];
    size_t got;
    while ((got = fread(buffer, 1, sizeof(buffer), pipe)) > 0)
        output.append(buffer, got);
    pclose(pipe);
    return output;
}
} // namespace

TEST(GenICamCorpus, DescriptionsLoadAndMatchTheGoldenDumps)
{
    const char* corpusDir = std::getenv("QV_GENICAM_XML_DIR");
    const char* dumpTool = std::getenv("QV_GENICAM_DUMP");
    if (!corpusDir || !Exists(std::string(corpusDir) + "/compare.py"))
        GTEST_SKIP() << "shared GenICam corpus not found (QV_GENICAM_XML_DIR)";
    ASSERT_NE(dumpTool, nullptr);
    if (system("python3 --version > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "python3 is not available";

    const std::string output = RunCommand(std::string("python3 '") + corpusDir + "/compare.py' --corpus --dir '" + corpusDir +
                                   "' --tool '" + dumpTool + "' 2>&1");
    std::printf("%s", output.c_str());
    const std::regex summary(R"(corpus: (\d+) of (\d+) nodes match \([0-9.]+%\), (\d+) of (\d+) files load)");
    std::smatch match;
    ASSERT_TRUE(std::regex_search(output, match, summary)) << output;
    const double matched = std::stod(match[1]);
    const double total = std::stod(match[2]);
    const int loaded = std::stoi(match[3]);
    const int files = std::stoi(match[4]);
    ASSERT_GT(total, 0);
    EXPECT_GE(100.0 * matched / total, kMinimumMatchPercent);
    EXPECT_EQ(loaded, files);
    EXPECT_NE(output.find("duvitech_genicam-simulator_mycamera: refused, as it must be"), std::string::npos);
}

TEST(GenICamCorpus, DescriptionsBreakingTheSchemaLoadWithWarnings)
{
    const char* corpusDir = std::getenv("QV_GENICAM_XML_DIR");
    const char* dumpTool = std::getenv("QV_GENICAM_DUMP");
    if (!corpusDir || !Exists(std::string(corpusDir) + "/aravis_v4l2.xml"))
        GTEST_SKIP() << "shared GenICam corpus not found (QV_GENICAM_XML_DIR)";
    ASSERT_NE(dumpTool, nullptr);
    const auto warningsOf = [&](const char* file) {
        // Warnings go to stderr, the dump to stdout (dropped); the exit status is appended.
        return RunCommand(std::string("'") + dumpTool + "' --warnings '" + corpusDir + "/" + file +
                          "' 2>&1 >/dev/null; echo \"exit $?\"");
    };

    // Five pFeatures and two pIsAvailable name nodes the file never defines.
    const std::string v4l2 = warningsOf("aravis_v4l2.xml");
    EXPECT_NE(v4l2.find("warning: Node 'ImageFormatControl' : pFeature 'SensorWidth' names no node; left out of the "
                        "category (line 81)"),
              std::string::npos)
        << v4l2;
    EXPECT_NE(v4l2.find("warning: Node 'Gain' : pIsAvailable 'GainAvailable' names no node; the condition is ignored (line 360)"),
              std::string::npos)
        << v4l2;
    EXPECT_EQ(std::count(v4l2.begin(), v4l2.end(), '\n'), 8) << v4l2;
    EXPECT_NE(v4l2.find("exit 0"), std::string::npos) << v4l2;

    // Four registers have no pPort, four give their AccessMode as "R".
    const std::string tests = warningsOf("aravis_tests-genicam.xml");
    EXPECT_NE(tests.find("warning: Node 'ROIntRegisterA' : register has no pPort; it is not implemented (line 143)"),
              std::string::npos)
        << tests;
    EXPECT_NE(tests.find("warning: Node 'ChunkInt' : AccessMode 'R' read as RO (line 358)"), std::string::npos) << tests;
    EXPECT_EQ(std::count(tests.begin(), tests.end(), '\n'), 9) << tests;
    EXPECT_NE(tests.find("exit 0"), std::string::npos) << tests;
}
