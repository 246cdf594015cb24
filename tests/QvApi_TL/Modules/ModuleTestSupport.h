#pragma once

// Shared by the module-tree tests: library session, producer folders for the vendor file
// names, fault-producer access and exception capture.

#include <dirent.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QvApi_TL.h>

#include "FaultInjectSupport.h"
#include "ScopedEnvironment.h"

namespace QvModuleTest
{
/// What an exception said: its type's description, and for GenTL errors the code and function.
struct SCaught_
{
    bool thrown = false;
    std::string description;
    int32_t code = 0;
    std::string function;
    std::string sourceFile;
};

/// Runs \a body and reports the exception of type \a E it throws (thrown false when none).
template <class E>
SCaught_ Catch(const std::function<void()>& body)
{
    SCaught_ caught;
    try
    {
        body();
    }
    catch (const E& e)
    {
        caught.thrown = true;
        caught.description = e.GetDescription();
        caught.sourceFile = e.GetSourceFileName();
        if constexpr (std::is_base_of_v<QvApi::CQvGenTLErrorException, E>)
        {
            caught.code = e.GetError();
            caught.function = e.GetFunctionName().c_str();
        }
    }
    return caught;
}

/// The text a printf format gives, for messages with the glibc rendering of "%I64u".
template <typename... Args>
std::string Format(const char* format, Args... args)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
#pragma GCC diagnostic ignored "-Wformat-security"
    char text[1024];
    snprintf(text, sizeof(text), format, args...);
#pragma GCC diagnostic pop
    return text;
}

/// Number of threads of this process (entries of /proc/self/task).
inline int ThreadCount()
{
    int count = 0;
    if (DIR* dir = opendir("/proc/self/task"))
    {
        while (dirent* entry = readdir(dir))
        {
            if (entry->d_name[0] != '.')
                ++count;
        }
        closedir(dir);
    }
    return count;
}

/**
 * \brief A temporary folder put first on GENICAM_GENTL64_PATH, holding symbolic links with the
 *        names CreateIQvSystem() looks for ("libqvgentl.cti", "coaxlink.cti", ...) to producers
 *        of the build. A link names the same file, so the loader and a test's control table
 *        share one instance of the producer.
 */
class CProducerFolder
{
public:
    CProducerFolder()
    {
        char pattern[] = "/tmp/qvmodulesXXXXXX";
        const char* path = mkdtemp(pattern);
        if (path != nullptr)
            m_path = path;
        const std::string search = m_path + ":" + QvTest::ProducerDirectory();
        m_pEnvironment.emplace("GENICAM_GENTL64_PATH", search.c_str());
    }
    ~CProducerFolder()
    {
        for (const std::string& link : m_links)
            unlink(link.c_str());
        rmdir(m_path.c_str());
    }
    CProducerFolder(const CProducerFolder&) = delete;
    CProducerFolder& operator=(const CProducerFolder&) = delete;

    /// Makes \a linkName name the build's producer \a producerFile (e.g. "libqvfault.cti").
    void Link(const char* linkName, const char* producerFile)
    {
        const std::string link = m_path + "/" + linkName;
        unlink(link.c_str());
        ASSERT_EQ(symlink(QvTest::ProducerPath(producerFile).c_str(), link.c_str()), 0) << link;
        m_links.push_back(link);
    }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
    std::vector<std::string> m_links;
    std::optional<QvTest::CScopedEnvironment> m_pEnvironment;
};

/// The library initialised for one test.
class CModuleTest : public ::testing::Test
{
protected:
    void SetUp() override { QvApi::QvApiInitialize(QVAPI_VERSION); }
    void TearDown() override { QvApi::QvApiTerminate(); }
};

/// The library initialised and the fault producer reset, reachable under the vendor names.
class CFaultModuleTest : public CModuleTest
{
protected:
    void SetUp() override
    {
        CModuleTest::SetUp();
        m_pControl = QvTest::FaultControl();
        ASSERT_NE(m_pControl, nullptr) << "libqvfault.cti is missing from " << QvTest::ProducerDirectory();
        m_folder.Link("libqvgentl.cti", "libqvfault.cti");
        m_folder.Link("coaxlink.cti", "libqvfault.cti");
    }
    /// A rule failing \a function with \a result on every call.
    void Fail(QvFaultFunction function, int32_t result, int32_t module = QV_FAULT_MODULE_ANY)
    {
        QvFaultRule rule = QvTest::FailWith(result);
        rule.module = module;
        m_pControl->SetRule(function, &rule);
    }
    /// Sets a module's string information answer.
    void SetInfoText(QvFaultModule module, int32_t command, const char* text)
    {
        ASSERT_EQ(m_pControl->SetModuleInfo(module, command, GenTL::INFO_DATATYPE_STRING, text, strlen(text) + 1), 0);
    }

    const QvFaultControl* m_pControl = nullptr;
    CProducerFolder m_folder;
};
} // namespace QvModuleTest
