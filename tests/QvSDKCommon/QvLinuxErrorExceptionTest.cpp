#include <QvApi/QvLinuxErrorException.h>

#include <cerrno>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "QvSDKCommon/QvExceptionMacros.h"
#include "QvSDKCommon/QvLinuxErrorExceptionReporter.h"

using QvApi::CQvLinuxErrorException;
using QvApi::CQvLinuxErrorExceptionReporter;

TEST(LinuxErrorReport, EndsWithTheCodeInEightHexDigitsAndTheErrnoText)
{
    errno = EACCES;
    CQvLinuxErrorException e = CQvLinuxErrorExceptionReporter("QvSDKCommon/CLockBySemaphore.cpp", 32,
                                                               "QvLinuxErrorException")
                                   .Report(0x1f, "pthread_mutex_init", "0 != pthread_mutex_init(&m_sem.mutex) [Error=0x%x %s]",
                                           EACCES, "Permission denied");
    EXPECT_STREQ(e.GetDescription(), "0 != pthread_mutex_init(&m_sem.mutex) [Error=0xd Permission denied] "
                                     "ErrorCode=0x0000001f \" \"Permission denied");
    EXPECT_EQ(e.GetError(), 0x1f);
    EXPECT_EQ(e.GetFunctionName(), "pthread_mutex_init");
    EXPECT_STREQ(e.GetSourceFileName(), "QvSDKCommon/CLockBySemaphore.cpp");
    EXPECT_EQ(e.GetSourceLine(), 32u);
    EXPECT_STREQ(e.GetExceptionType(), "QvLinuxErrorException");
}

TEST(LinuxErrorReport, PrintsTheCodeGivenButTheTextOfTheCurrentErrno)
{
    errno = ENOENT;
    CQvLinuxErrorException e =
        CQvLinuxErrorExceptionReporter("a.cpp", 1, "QvLinuxErrorException").Report(EIO, "read", "read failed");
    EXPECT_EQ(std::string(e.GetDescription()), "read failed ErrorCode=0x00000005 \" \"" + std::string(strerror(ENOENT)));
    EXPECT_EQ(e.GetError(), EIO);
}

TEST(LinuxErrorReport, PrintsNegativeCodesAsTheirTwosComplement)
{
    errno = 0;
    CQvLinuxErrorException e = CQvLinuxErrorExceptionReporter("a.cpp", 1, "QvLinuxErrorException").Report(-2, "f", "x");
    EXPECT_EQ(std::string(e.GetDescription()), "x ErrorCode=0xfffffffe \" \"" + std::string(strerror(0)));
}

TEST(LinuxErrorReport, KeepsTheMessageWithin1023Characters)
{
    errno = EPERM;
    const std::string longText(1100, 'z');
    CQvLinuxErrorException e =
        CQvLinuxErrorExceptionReporter("a.cpp", 1, "QvLinuxErrorException").Report(1, "f", "%s", longText.c_str());
    EXPECT_EQ(std::string(e.GetDescription()), std::string(1023, 'z'));

    const std::string nearlyFull(1010, 'y');
    CQvLinuxErrorException partial =
        CQvLinuxErrorExceptionReporter("a.cpp", 1, "QvLinuxErrorException").Report(1, "f", "%s", nearlyFull.c_str());
    EXPECT_EQ(std::string(partial.GetDescription()), nearlyFull + " ErrorCode=0x"); // 1010 + 13 = 1023
}

TEST(LinuxErrorReport, ThrowMacroReportsTheCallSite)
{
    errno = EINVAL;
    const int line = __LINE__ + 3;
    try
    {
        QV_THROW_LINUX(EBUSY, "pthread_cond_init", "0 != pthread_cond_init(&m_sem.condition) [Error=0x%x %s]", 0x16, "x");
    }
    catch (const CQvLinuxErrorException& e)
    {
        EXPECT_EQ(std::string(e.GetDescription()),
                  "0 != pthread_cond_init(&m_sem.condition) [Error=0x16 x] ErrorCode=0x00000010 \" \"" +
                      std::string(strerror(EINVAL)));
        EXPECT_EQ(e.GetSourceLine(), static_cast<unsigned>(line));
        EXPECT_STREQ(e.GetSourceFileName(), "tests/QvSDKCommon/QvLinuxErrorExceptionTest.cpp");
        return;
    }
    FAIL() << "no exception";
}
