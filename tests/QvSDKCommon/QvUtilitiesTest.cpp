#include <QvApi/QvUtilities.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ScopedEnvironment.h"

using QvApi::MakePath;
using QvApi::openTempFile;

namespace
{
class TempDirectory : public ::testing::Test
{
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/qvutil.XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_root = pattern;
    }
    void TearDown() override { std::system(("rm -rf '" + m_root + "'").c_str()); }

    static bool IsDirectory(const std::string& path)
    {
        struct stat info;
        return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
    }
    static bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

    // The name an open descriptor's file had, from /proc.
    static std::string NameOf(FILE* file)
    {
        char link[64];
        snprintf(link, sizeof(link), "/proc/self/fd/%d", fileno(file));
        char target[PATH_MAX] = {};
        const ssize_t length = readlink(link, target, sizeof(target) - 1);
        return length > 0 ? std::string(target, static_cast<size_t>(length)) : std::string();
    }

    std::string m_root;
};
} // namespace

TEST_F(TempDirectory, MakePathOfAFileCreatesItsDirectory)
{
    MakePath((m_root + "/cfg/file.xml").c_str(), true);
    EXPECT_TRUE(IsDirectory(m_root + "/cfg"));
    EXPECT_FALSE(Exists(m_root + "/cfg/file.xml"));
}

TEST_F(TempDirectory, MakePathOfADirectoryCreatesItWhole)
{
    MakePath((m_root + "/cfg").c_str(), false);
    MakePath((m_root + "/cfg/file.xml").c_str(), false);
    EXPECT_TRUE(IsDirectory(m_root + "/cfg/file.xml"));
}

TEST_F(TempDirectory, MakePathCreatesOnlyTheLastLevelAndIgnoresFailures)
{
    MakePath((m_root + "/a/b/c").c_str(), false);
    EXPECT_FALSE(Exists(m_root + "/a"));
    MakePath(m_root.c_str(), false); // exists already: silently nothing
    EXPECT_TRUE(IsDirectory(m_root));
}

TEST_F(TempDirectory, MakePathKeepsAFileNameWithoutADirectoryWhole)
{
    char previous[PATH_MAX];
    ASSERT_NE(getcwd(previous, sizeof(previous)), nullptr);
    ASSERT_EQ(chdir(m_root.c_str()), 0);
    MakePath("leaf", true); // no slash to cut at: created as it stands
    const bool created = IsDirectory(m_root + "/leaf");
    ASSERT_EQ(chdir(previous), 0);
    EXPECT_TRUE(created);
}

TEST_F(TempDirectory, OpenTempFileCreatesAnUnlinkedFileInTMPDIR)
{
    QvTest::CScopedEnvironment tmpdir("TMPDIR", m_root.c_str());
    FILE* file = openTempFile("x");
    ASSERT_NE(file, nullptr);
    const std::string name = NameOf(file);
    EXPECT_EQ(name.substr(0, m_root.size() + 3), m_root + "/x.");
    EXPECT_EQ(name.size(), m_root.size() + 3 + 6 + std::string(" (deleted)").size());
    EXPECT_EQ(name.substr(name.size() - 10), " (deleted)");
    EXPECT_EQ(fputs("scratch", file), 1);
    EXPECT_EQ(fflush(file), 0);
    fclose(file);
    EXPECT_TRUE(std::system(("test -z \"$(ls -A '" + m_root + "')\"").c_str()) == 0);
}

TEST(OpenTempFile, UsesTmpWhenTMPDIRIsUnset)
{
    QvTest::CScopedEnvironment tmpdir("TMPDIR", nullptr);
    FILE* file = openTempFile("x");
    ASSERT_NE(file, nullptr);
    char link[64];
    snprintf(link, sizeof(link), "/proc/self/fd/%d", fileno(file));
    char target[PATH_MAX] = {};
    ASSERT_GT(readlink(link, target, sizeof(target) - 1), 0);
    const std::string name = target;
    EXPECT_EQ(name.substr(0, 7), "/tmp/x.");
    EXPECT_EQ(name.substr(13), " (deleted)");
    fclose(file);
}

TEST(OpenTempFile, ReturnsNullWhenTheFileCannotBeMade)
{
    QvTest::CScopedEnvironment tmpdir("TMPDIR", "/nonexistent/qvapi");
    EXPECT_EQ(openTempFile("x"), nullptr);
    QvTest::CScopedEnvironment shortDir("TMPDIR", "/tmp");
    const std::string longName(300, 'n'); // cut before the XXXXXX: mkstemp refuses it
    EXPECT_EQ(openTempFile(longName.c_str()), nullptr);
}
