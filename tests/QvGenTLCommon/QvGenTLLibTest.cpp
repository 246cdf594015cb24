#include "QvGenTLCommon/QvGenTLLib.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <Base/GCException.h>
#include <QvApi/QvGenTLErrorException.h>
#include <QvApi/QvLinuxErrorException.h>

#include "FaultInjectSupport.h"
#include "ScopedEnvironment.h"

using QvApi::CQvGenTLErrorException;
using QvApi::CQvGenTLLib;
using QvApi::CQvLinuxErrorException;
using QvTest::CScopedEnvironment;

namespace
{
constexpr const char* kProducer = "libqvfault.cti";

// Producer folders made for one test under /tmp: links to the build's producers, files that are
// not producers, empty folders.
class ProducerSearch : public ::testing::Test
{
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/qvgentl.XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_root = pattern;
        chmod(m_root.c_str(), 0755);
        m_fault = QvTest::FaultControl();
        ASSERT_NE(m_fault, nullptr) << "missing " << QvTest::ProducerPath(kProducer);
    }
    void TearDown() override { std::system(("rm -rf '" + m_root + "'").c_str()); }

    std::string Directory(const std::string& name)
    {
        const std::string path = m_root + "/" + name;
        mkdir(path.c_str(), 0755);
        return path;
    }
    // A directory holding a link named `linkName` to the build's producer `target`.
    std::string DirectoryWithProducer(const std::string& name, const char* linkName = kProducer,
                                      const char* target = kProducer)
    {
        const std::string directory = Directory(name);
        EXPECT_EQ(symlink(QvTest::ProducerPath(target).c_str(), (directory + "/" + linkName).c_str()), 0);
        return directory;
    }
    std::string DirectoryWithFile(const std::string& name, const char* fileName, const char* content, mode_t mode)
    {
        const std::string directory = Directory(name);
        const std::string path = directory + "/" + fileName;
        FILE* file = fopen(path.c_str(), "w");
        fputs(content, file);
        fclose(file);
        chmod(path.c_str(), mode);
        return directory;
    }

    // The exception f() throws, or nothing (which fails the test).
    template <typename E, typename F>
    static std::optional<E> Catch(F&& f)
    {
        try
        {
            f();
        }
        catch (const E& e)
        {
            return e;
        }
        ADD_FAILURE() << "no exception";
        return std::nullopt;
    }

    std::string m_root;
    const QvFaultControl* m_fault = nullptr;
};
} // namespace

TEST_F(ProducerSearch, FailsAtOnceWhenTheVariableIsUnsetOrEmpty)
{
    {
        CScopedEnvironment path("GENICAM_GENTL64_PATH", nullptr);
        auto e = Catch<GenICam::RuntimeException>([] { CQvGenTLLib lib(kProducer); });
        ASSERT_TRUE(e);
        EXPECT_STREQ(e->GetDescription(), "File libqvfault.cti not found.");
        EXPECT_STREQ(e->GetSourceFileName(), "QvGenTLCommon/QvGenTLLib.cpp");
        EXPECT_STREQ(e->GetExceptionType(), "RuntimeException");
    }
    {
        CScopedEnvironment path("GENICAM_GENTL64_PATH", "");
        auto e = Catch<GenICam::RuntimeException>([] { CQvGenTLLib lib(kProducer); });
        ASSERT_TRUE(e);
        EXPECT_STREQ(e->GetDescription(), "File libqvfault.cti not found.");
    }
    EXPECT_EQ(m_fault->GetCallCount(QV_FAULT_GCInitLib), 0u);
}

TEST_F(ProducerSearch, NamesTheFileNotThePathListWhenNothingIsFound)
{
    CScopedEnvironment path("GENICAM_GENTL64_PATH", (Directory("a") + ":" + Directory("b")).c_str());
    auto e = Catch<GenICam::RuntimeException>([] { CQvGenTLLib lib("libnothere.cti"); });
    ASSERT_TRUE(e);
    EXPECT_STREQ(e->GetDescription(), "File libnothere.cti not found.");
}

TEST_F(ProducerSearch, TheFirstDirectoryWins)
{
    const std::string first = DirectoryWithProducer("first");
    const std::string second = DirectoryWithProducer("second");
    CScopedEnvironment path("GENICAM_GENTL64_PATH", (first + ":" + second).c_str());
    CQvGenTLLib lib(kProducer);
    EXPECT_EQ(lib.GetFullPath(), first + "/libqvfault.cti");
    EXPECT_EQ(lib.GetFullPathName(), first + "/libqvfault.cti");
    EXPECT_EQ(lib.GetFileName(), kProducer);
}

TEST_F(ProducerSearch, ExaminesEveryDirectoryInOrderAndRepeatedOnesAgain)
{
    const std::string empty = Directory("empty");
    const std::string later = DirectoryWithProducer("later");
    CScopedEnvironment path("GENICAM_GENTL64_PATH", (empty + ":" + empty + ":" + later).c_str());
    CQvGenTLLib lib(kProducer);
    EXPECT_EQ(lib.GetFullPath(), later + "/libqvfault.cti");
}

TEST_F(ProducerSearch, TakesPiecesAsTheyStandSoATrailingSlashDoubles)
{
    const std::string directory = DirectoryWithProducer("slash");
    CScopedEnvironment path("GENICAM_GENTL64_PATH", (directory + "/").c_str());
    CQvGenTLLib lib(kProducer);
    EXPECT_EQ(lib.GetFullPath(), directory + "//libqvfault.cti");
}

// A file name with a directory part makes the root candidate of an empty piece testable: the
// empty piece gives "/" + "tmp/..." which exists, and a piece that is not there gives nothing.
TEST_F(ProducerSearch, AnEmptyPieceIsTheRootButATrailingSeparatorAddsNoPiece)
{
    DirectoryWithProducer("root");
    const std::string relativeName = m_root.substr(1) + "/root/libqvfault.cti"; // "tmp/qvgentl.X/root/..."
    const std::string missing = Directory("missing");
    {
        CScopedEnvironment path("GENICAM_GENTL64_PATH", (missing + ":").c_str());
        auto e = Catch<GenICam::RuntimeException>([&] { CQvGenTLLib lib(relativeName.c_str()); });
        ASSERT_TRUE(e);
        EXPECT_EQ(std::string(e->GetDescription()), "File " + relativeName + " not found.");
    }
    {
        CScopedEnvironment path("GENICAM_GENTL64_PATH", (missing + "::").c_str());
        CQvGenTLLib lib(relativeName.c_str());
        EXPECT_EQ(lib.GetFullPath(), "/" + relativeName);
    }
    {
        CScopedEnvironment path("GENICAM_GENTL64_PATH", (":" + missing).c_str());
        CQvGenTLLib lib(relativeName.c_str());
        EXPECT_EQ(lib.GetFullPath(), "/" + relativeName);
    }
}

TEST_F(ProducerSearch, SkipsAFileTheProcessCannotRead)
{
    const std::string locked = DirectoryWithFile("locked", kProducer, "not readable", 0000);
    const std::string readable = DirectoryWithProducer("readable");
    const std::string searchPath = locked + ":" + readable;
    const std::string expected = readable + "/libqvfault.cti";
    if (geteuid() != 0)
    {
        CScopedEnvironment path("GENICAM_GENTL64_PATH", searchPath.c_str());
        CQvGenTLLib lib(kProducer);
        EXPECT_EQ(lib.GetFullPath(), expected);
        return;
    }
    // access(R_OK) grants root every file, so the check runs in a child that gives up root.
    constexpr uid_t kNobody = 65534;
    if (std::system(("setpriv --reuid=65534 --regid=65534 --clear-groups test -r '" + QvTest::ProducerPath(kProducer) +
                     "' 2>/dev/null")
                        .c_str()) != 0)
        GTEST_SKIP() << "running as root and user 65534 cannot read the build's producer: cannot test unreadable files";
    GTEST_FLAG_SET(death_test_style, "fast"); // the child must see this test's folders
    EXPECT_EXIT(
        {
            if (setgid(kNobody) != 0 || setuid(kNobody) != 0)
                _exit(2);
            setenv("GENICAM_GENTL64_PATH", searchPath.c_str(), 1);
            try
            {
                CQvGenTLLib lib(kProducer);
                _exit(lib.GetFullPath() == expected ? 0 : 3);
            }
            catch (...)
            {
                _exit(4);
            }
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ProducerSearch, AFileThatIsNotAProducerGivesTheLoadersError)
{
    const std::string directory = DirectoryWithFile("text", kProducer, "just text\n", 0644);
    CScopedEnvironment path("GENICAM_GENTL64_PATH", directory.c_str());
    errno = 0;
    auto e = Catch<CQvLinuxErrorException>([] { CQvGenTLLib lib(kProducer); });
    ASSERT_TRUE(e);
    const std::string description = e->GetDescription();
    const std::string fullPath = directory + "/libqvfault.cti";
    EXPECT_EQ(description.substr(0, fullPath.size() + 13), fullPath + " ErrorCode=0x");
    EXPECT_NE(description.find("\" \""), std::string::npos);
    // The loader's own text names the file and what is wrong with it.
    EXPECT_NE(std::string(e->GetFunctionName()).find(fullPath), std::string::npos) << e->GetFunctionName();
    EXPECT_STREQ(e->GetSourceFileName(), "QvGenTLCommon/QvGenTLLib.cpp");
    EXPECT_STREQ(e->GetExceptionType(), "QvLinuxErrorException");
}

TEST_F(ProducerSearch, ThePathIsUsedAsTheMessageFormat)
{
    const std::string directory = DirectoryWithFile("100%%done", kProducer, "text\n", 0644);
    CScopedEnvironment path("GENICAM_GENTL64_PATH", directory.c_str());
    auto e = Catch<CQvLinuxErrorException>([] { CQvGenTLLib lib(kProducer); });
    ASSERT_TRUE(e);
    const std::string printed = m_root + "/100%done/libqvfault.cti ErrorCode=0x";
    EXPECT_EQ(std::string(e->GetDescription()).substr(0, printed.size()), printed);
}

namespace
{
class ProducerLoading : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_fault = QvTest::FaultControl();
        ASSERT_NE(m_fault, nullptr);
    }
    const QvFaultControl* m_fault = nullptr;
};
} // namespace

TEST_F(ProducerLoading, ResolvesEveryEntryPointAndInitialisesTheProducer)
{
    CQvGenTLLib lib(kProducer);
    EXPECT_NE(lib.GetLibraryHandle(), nullptr);
    EXPECT_EQ(lib.GetFullPath(), QvTest::ProducerPath(kProducer));
    int resolved = 0;
#define QV_COUNT_ENTRY(name) resolved += lib.name != nullptr;
    QV_GENTL_ENTRY_POINTS(QV_COUNT_ENTRY)
#undef QV_COUNT_ENTRY
    EXPECT_EQ(resolved, 57);
    EXPECT_EQ(m_fault->GetInitCount(), 1);
    // The table reaches the producer: a real call through it.
    GenTL::TL_HANDLE hTL = nullptr;
    EXPECT_EQ(lib.TLOpen(&hTL), GenTL::GC_ERR_SUCCESS);
    EXPECT_EQ(hTL, m_fault->GetModuleHandle(QV_FAULT_MODULE_SYSTEM));
    EXPECT_EQ(lib.TLClose(hTL), GenTL::GC_ERR_SUCCESS);
}

TEST_F(ProducerLoading, AMissingOptionalEntryIsLeftNull)
{
    QvTest::FaultControl("libqvfault_noregisterevent.cti");
    CQvGenTLLib lib("libqvfault_noregisterevent.cti");
    EXPECT_EQ(lib.GCRegisterEvent, nullptr);
    EXPECT_NE(lib.GCUnregisterEvent, nullptr);
    EXPECT_NE(lib.GCInitLib, nullptr);
}

TEST_F(ProducerLoading, ASecondBindingSharesTheMappedProducerAndInitialisesItAgain)
{
    CQvGenTLLib first(kProducer);
    CQvGenTLLib second(kProducer);
    EXPECT_EQ(first.GetLibraryHandle(), second.GetLibraryHandle());
    EXPECT_EQ(first.TLOpen, second.TLOpen);
    EXPECT_EQ(m_fault->GetCallCount(QV_FAULT_GCInitLib), 2u);
    EXPECT_EQ(m_fault->GetInitCount(), 2);
}

TEST_F(ProducerLoading, TheProducersAnswerToTheSecondInitialisationDecides)
{
    CQvGenTLLib first(kProducer);
    QvFaultRule refuse = QvTest::FailWith(GenTL::GC_ERR_RESOURCE_IN_USE, "Already initialised.");
    m_fault->SetRule(QV_FAULT_GCInitLib, &refuse);
    try
    {
        CQvGenTLLib second(kProducer);
        FAIL() << "no exception";
    }
    catch (const CQvGenTLErrorException& e)
    {
        // No producer text: the reporter is not given the failed binding.
        EXPECT_STREQ(e.GetDescription(), "-1004 = GCInitLib()");
        EXPECT_EQ(e.GetError(), -1004);
        EXPECT_EQ(e.GetFunctionName(), "GCInitLib");
        EXPECT_STREQ(e.GetSourceFileName(), "QvGenTLCommon/QvGenTLLib.cpp");
    }
    EXPECT_NE(first.GetLibraryHandle(), nullptr);
    EXPECT_EQ(m_fault->GetInitCount(), 1);
}

TEST_F(ProducerLoading, AProducerWithoutGCInitLibIsRefusedAsNotImplemented)
{
    const QvFaultControl* noInit = QvTest::FaultControl("libqvfault_noinit.cti");
    ASSERT_NE(noInit, nullptr);
    try
    {
        CQvGenTLLib lib("libqvfault_noinit.cti");
        FAIL() << "no exception";
    }
    catch (const CQvGenTLErrorException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "-1003 = GCInitLib()");
        EXPECT_EQ(e.GetError(), GenTL::GC_ERR_NOT_IMPLEMENTED);
    }
    // Refused before any other call, and not closed either: nothing was opened.
    EXPECT_EQ(noInit->GetCallCount(QV_FAULT_GCCloseLib), 0u);
}

TEST_F(ProducerLoading, UnloadClosesTheProducerOnceAndClearsTheTable)
{
    CQvGenTLLib lib(kProducer);
    lib.UnloadLib();
    EXPECT_EQ(m_fault->GetCallCount(QV_FAULT_GCCloseLib), 1u);
    EXPECT_EQ(m_fault->GetInitCount(), 0);
    EXPECT_EQ(lib.GetLibraryHandle(), nullptr);
    int resolved = 0;
#define QV_COUNT_ENTRY(name) resolved += lib.name != nullptr;
    QV_GENTL_ENTRY_POINTS(QV_COUNT_ENTRY)
#undef QV_COUNT_ENTRY
    EXPECT_EQ(resolved, 0);
    lib.UnloadLib();
    EXPECT_EQ(m_fault->GetCallCount(QV_FAULT_GCCloseLib), 1u);
}

TEST_F(ProducerLoading, DestructionClosesTheProducerEvenIfGCCloseLibFails)
{
    const QvFaultRule failClose = QvTest::FailWith(GenTL::GC_ERR_ERROR);
    {
        CQvGenTLLib lib(kProducer);
        m_fault->SetRule(QV_FAULT_GCCloseLib, &failClose);
    }
    EXPECT_EQ(m_fault->GetCallCount(QV_FAULT_GCCloseLib), 1u);
}
