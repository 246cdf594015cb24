#include <QvApi/QvGenTLErrorException.h>

#include <cstdio>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "FaultInjectSupport.h"
#include "QvGenTLCommon/QvGenTLLib.h"
#include "QvSDKCommon/QvExceptionMacros.h"
#include "QvSDKCommon/QvGenTLErrorExceptionReporter.h"

using QvApi::CQvGenTLErrorException;
using QvApi::CQvGenTLErrorExceptionReporter;
using QvApi::CQvGenTLLib;

namespace
{
// A loaded fault producer with an open system, whose TLOpen a test can make fail.
class GenTLErrorReport : public ::testing::Test
{
protected:
    void SetUp() override { Load("libqvfault.cti"); }

    void Load(const char* fileName)
    {
        m_fault = QvTest::FaultControl(fileName);
        ASSERT_NE(m_fault, nullptr) << "missing producer " << QvTest::ProducerPath(fileName);
        m_lib = std::make_unique<CQvGenTLLib>(fileName);
    }

    // Makes TLOpen fail with `rule`, then reports the failure exactly as a module does.
    CQvGenTLErrorException FailTLOpen(const QvFaultRule& rule)
    {
        m_fault->SetRule(QV_FAULT_TLOpen, &rule);
        const GenTL::GC_ERROR err = QV_GENTL_CALL(m_lib.get(), TLOpen, &m_hTL);
        EXPECT_EQ(err, rule.result);
        return CQvGenTLErrorExceptionReporter("QvApi_TL/QvSystem.cpp", 77, "QvGenTLErrorException")
            .Report(m_lib.get(), err, "TLOpen", "%d = TLOpen(0x%p)", err, static_cast<void*>(&m_hTL));
    }

    std::string Call(GenTL::GC_ERROR err) const
    {
        char text[128];
        snprintf(text, sizeof(text), "%d = TLOpen(0x%p)", err, static_cast<const void*>(&m_hTL));
        return text;
    }

    const QvFaultControl* m_fault = nullptr;
    std::unique_ptr<CQvGenTLLib> m_lib;
    GenTL::TL_HANDLE m_hTL = nullptr;
};
} // namespace

TEST(GenTLErrorReportWithoutBinding, CarriesTheFormattedTextAndWhereItWasThrown)
{
    CQvGenTLErrorException e = CQvGenTLErrorExceptionReporter("QvGenTLCommon/QvGenTLLib.cpp", 42,
                                                               "QvGenTLErrorException")
                                   .Report(nullptr, -1003, "GCInitLib", "%d = GCInitLib()", -1003);
    EXPECT_STREQ(e.GetDescription(), "-1003 = GCInitLib()");
    EXPECT_EQ(e.GetError(), -1003);
    EXPECT_EQ(e.GetFunctionName(), "GCInitLib");
    EXPECT_STREQ(e.GetSourceFileName(), "QvGenTLCommon/QvGenTLLib.cpp");
    EXPECT_EQ(e.GetSourceLine(), 42u);
    EXPECT_STREQ(e.GetExceptionType(), "QvGenTLErrorException");
    EXPECT_STREQ(e.what(), "-1003 = GCInitLib() : QvGenTLErrorException thrown (file "
                           "'QvGenTLCommon/QvGenTLLib.cpp', line 42)");
}

TEST(GenTLErrorReportWithoutBinding, CutsTheMessageAt1023Characters)
{
    const std::string longArgument(3000, 'x');
    CQvGenTLErrorException e = CQvGenTLErrorExceptionReporter("a.cpp", 1, "QvGenTLErrorException")
                                   .Report(nullptr, -1001, "TLOpen", "%d = TLOpen(%s)", -1001, longArgument.c_str());
    const std::string description = e.GetDescription();
    EXPECT_EQ(description.size(), 1023u);
    EXPECT_EQ(description.substr(0, 14), "-1001 = TLOpen");
}

TEST_F(GenTLErrorReport, AppendsTheProducersTextWhenItBelongsToTheReportedCode)
{
    CQvGenTLErrorException e = FailTLOpen(QvTest::FailWith(GenTL::GC_ERR_RESOURCE_IN_USE, "Opened by someone else."));
    EXPECT_EQ(std::string(e.GetDescription()), Call(-1004) + " Opened by someone else.");
    EXPECT_EQ(e.GetError(), -1004);
    EXPECT_EQ(e.GetFunctionName(), "TLOpen");
    EXPECT_STREQ(e.GetSourceFileName(), "QvApi_TL/QvSystem.cpp");
    EXPECT_EQ(e.GetSourceLine(), 77u);
}

TEST_F(GenTLErrorReport, LeavesTheTextOutWhenTheProducersLastErrorIsAnotherCode)
{
    QvFaultRule rule = QvTest::FailWith(GenTL::GC_ERR_RESOURCE_IN_USE, "About something else.");
    rule.lastErrorCode = GenTL::GC_ERR_IO;
    CQvGenTLErrorException e = FailTLOpen(rule);
    EXPECT_EQ(std::string(e.GetDescription()), Call(-1004));
    // The code of the report, not the one read back.
    EXPECT_EQ(e.GetError(), -1004);
}

TEST_F(GenTLErrorReport, LeavesTheTextOutWhenGCGetLastErrorFails)
{
    const QvFaultRule lastErrorFails = QvTest::FailWith(GenTL::GC_ERR_ERROR);
    m_fault->SetRule(QV_FAULT_GCGetLastError, &lastErrorFails);
    CQvGenTLErrorException e = FailTLOpen(QvTest::FailWith(GenTL::GC_ERR_ACCESS_DENIED, "Denied."));
    EXPECT_EQ(std::string(e.GetDescription()), Call(-1005));
    EXPECT_EQ(m_fault->GetCallCount(QV_FAULT_GCGetLastError), 1u);
}

TEST_F(GenTLErrorReport, LeavesTheTextOutWhenTheTextQueryFails)
{
    QvFaultRule textQueryFails = QvTest::FailWith(GenTL::GC_ERR_ERROR);
    textQueryFails.skipCalls = 1; // the size query succeeds
    m_fault->SetRule(QV_FAULT_GCGetLastError, &textQueryFails);
    CQvGenTLErrorException e = FailTLOpen(QvTest::FailWith(GenTL::GC_ERR_ACCESS_DENIED, "Denied."));
    EXPECT_EQ(std::string(e.GetDescription()), Call(-1005));
    EXPECT_EQ(m_fault->GetCallCount(QV_FAULT_GCGetLastError), 2u);
}

TEST_F(GenTLErrorReport, LeavesTheTextOutWhenTheCodeChangesBetweenTheTwoQueries)
{
    QvFaultRule otherCodeSecondTime = QvTest::FailWith(GenTL::GC_ERR_SUCCESS);
    otherCodeSecondTime.skipCalls = 1;
    otherCodeSecondTime.lastErrorCode = GenTL::GC_ERR_IO;
    m_fault->SetRule(QV_FAULT_GCGetLastError, &otherCodeSecondTime);
    CQvGenTLErrorException e = FailTLOpen(QvTest::FailWith(GenTL::GC_ERR_ACCESS_DENIED, "Denied."));
    EXPECT_EQ(std::string(e.GetDescription()), Call(-1005));
}

TEST_F(GenTLErrorReport, LeavesTheTextOutWhenTheSizeAnswerIsTooShortForTheText)
{
    QvFaultRule shortSize = QvTest::FailWith(GenTL::GC_ERR_SUCCESS);
    shortSize.fireCalls = 1; // only the size query under-reports; the text query then finds no room
    shortSize.sizeAdjust = -4;
    m_fault->SetRule(QV_FAULT_GCGetLastError, &shortSize);
    CQvGenTLErrorException e = FailTLOpen(QvTest::FailWith(GenTL::GC_ERR_ACCESS_DENIED, "Denied, at length."));
    EXPECT_EQ(std::string(e.GetDescription()), Call(-1005));
}

TEST_F(GenTLErrorReport, KeepsTheWholeMessageWithin1023Characters)
{
    const std::string longText(400, 'p');
    CQvGenTLErrorException e = FailTLOpen(QvTest::FailWith(GenTL::GC_ERR_IO, longText.c_str()));
    EXPECT_EQ(std::string(e.GetDescription()), Call(-1010) + " " + std::string(255, 'p')); // rule text is 255 max

    const std::string longArgument(1000, 'a');
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_lib.get(), TLOpen, &m_hTL);
    CQvGenTLErrorException cut = CQvGenTLErrorExceptionReporter("a.cpp", 1, "QvGenTLErrorException")
                                     .Report(m_lib.get(), err, "TLOpen", "%d = TLOpen(%s)", err, longArgument.c_str());
    const std::string description = cut.GetDescription();
    EXPECT_EQ(description.size(), 1023u);
    EXPECT_EQ(description.substr(description.size() - 5), "ppppp");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(GenTLErrorReport, SwallowsAnAllocationFailureWhileFetchingTheText)
{
    QvFaultRule hugeSize = QvTest::FailWith(GenTL::GC_ERR_SUCCESS);
    hugeSize.fireCalls = 1;
    hugeSize.sizeAdjust = int64_t(1) << 52; // 4 PiB: the allocation fails
    m_fault->SetRule(QV_FAULT_GCGetLastError, &hugeSize);
    CQvGenTLErrorException e = FailTLOpen(QvTest::FailWith(GenTL::GC_ERR_IO, "I/O."));
    EXPECT_EQ(std::string(e.GetDescription()), Call(-1010));
}
#endif

TEST_F(GenTLErrorReport, LeavesTheTextOutWhenTheProducerHasNoGCGetLastError)
{
    Load("libqvfault_nolasterror.cti");
    ASSERT_EQ(m_lib->GCGetLastError, nullptr);
    CQvGenTLErrorException e = FailTLOpen(QvTest::FailWith(GenTL::GC_ERR_IO, "I/O."));
    EXPECT_EQ(std::string(e.GetDescription()), Call(-1010));
}

TEST_F(GenTLErrorReport, CheckMacroThrowsWithTheCallSiteAndProducerText)
{
    const QvFaultRule rule = QvTest::FailWith(GenTL::GC_ERR_INVALID_HANDLE, "No such interface.");
    m_fault->SetRule(QV_FAULT_TLOpen, &rule);
    const GenTL::GC_ERROR err = QV_GENTL_CALL(m_lib.get(), TLOpen, &m_hTL);
    int line = 0;
    try
    {
        line = __LINE__ + 1;
        QV_CHECK_GENTL(m_lib.get(), err, "TLOpen", "%d = TLOpen(0x%p)", err, static_cast<void*>(&m_hTL));
        FAIL() << "no exception";
    }
    catch (const CQvGenTLErrorException& e)
    {
        EXPECT_EQ(std::string(e.GetDescription()), Call(-1006) + " No such interface.");
        EXPECT_STREQ(e.GetSourceFileName(), "tests/QvSDKCommon/QvGenTLErrorExceptionTest.cpp");
        EXPECT_EQ(e.GetSourceLine(), static_cast<unsigned>(line));
        EXPECT_STREQ(e.GetExceptionType(), "QvGenTLErrorException");
    }
    EXPECT_NO_THROW(QV_CHECK_GENTL(m_lib.get(), GenTL::GC_ERR_SUCCESS, "TLOpen", "%d = TLOpen(0x%p)", 0,
                                   static_cast<void*>(&m_hTL)));
}
