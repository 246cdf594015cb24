// Runs compare.py --corpus with genicam-dump over the shared corpus and checks the summary line:
// every description loads (or is refused as it must be), apart from the two that are refused on
// purpose, and the node match ratio stays at the level reached.

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>

#include <sys/stat.h>

#include <gtest/gtest.h>

namespace
{
// aravis_v4l2 references nodes it never defines and aravis_tests-genicam gives AccessMode "R":
// both are refused with an error naming the node and the line (no golden exists for them).
constexpr int kRefusedOnPurpose = 2;
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
    EXPECT_GE(loaded, files - kRefusedOnPurpose);
    EXPECT_NE(output.find("duvitech_genicam-simulator_mycamera: refused, as it must be"), std::string::npos);
}
