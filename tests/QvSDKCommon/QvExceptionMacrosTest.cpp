#include "QvSDKCommon/QvExceptionMacros.h"

#include <cstdint>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include <Base/GCException.h>

using namespace GenICam;

namespace
{
template <typename E, typename F>
std::string DescriptionOf(F&& f)
{
    try
    {
        f();
    }
    catch (const E& e)
    {
        return e.GetDescription();
    }
    return "<no exception>";
}

enum ETestVendor_t
{
    VendorA = 0,
    VendorD = 3
};

// Shaped like CQvGenTLLib's table, for QV_GENTL_CALL.
struct SFakeBinding
{
    GenTL::PTLOpen TLOpen = nullptr;
    GenTL::PGCInitLib GCInitLib = nullptr;
};

GenTL::GC_ERROR OpenGivingSeven(GenTL::TL_HANDLE* phTL)
{
    *phTL = reinterpret_cast<GenTL::TL_HANDLE>(7);
    return GenTL::GC_ERR_SUCCESS;
}
} // namespace

TEST(RangeCheck, LowerBoundUsesTheEqualOrGreaterTemplate)
{
    EXPECT_EQ(DescriptionOf<OutOfRangeException>([] { QV_CHECK_MIN("eQvSystemVendor", -1, 0); }),
              "eQvSystemVendor = -1 must be equal or greater than Min = 0");
    EXPECT_NO_THROW(QV_CHECK_MIN("nIndex", size_t(0), 0));
}

TEST(RangeCheck, InclusiveUpperBoundUsesTheEqualOrSmallerTemplate)
{
    EXPECT_EQ(DescriptionOf<OutOfRangeException>([] { QV_CHECK_MAX("eDeviceAccessFlags", 5, 4); }),
              "eDeviceAccessFlags = 5 must be equal or smaller than Max = 4");
    EXPECT_NO_THROW(QV_CHECK_MAX("eDeviceAccessFlags", 4, 4));
}

TEST(RangeCheck, ExclusiveUpperBoundUsesTheSmallerThanTemplate)
{
    EXPECT_EQ(DescriptionOf<OutOfRangeException>([] { QV_CHECK_BELOW("nIndex", size_t(3), size_t(3)); }),
              "nIndex = 3 must be smaller than Max = 3");
    EXPECT_NO_THROW(QV_CHECK_BELOW("nIndex", size_t(2), size_t(3)));
    // An empty list refuses every index.
    EXPECT_EQ(DescriptionOf<OutOfRangeException>([] { QV_CHECK_BELOW("GetInterface", 0u, 0u); }),
              "GetInterface = 0 must be smaller than Max = 0");
}

TEST(RangeCheck, StrictLowerBoundUsesTheGreaterThanTemplate)
{
    EXPECT_EQ(DescriptionOf<OutOfRangeException>([] { QV_CHECK_ABOVE("size_t nWidth", size_t(0), 0); }),
              "size_t nWidth = 0 must be greater than Min = 0");
    EXPECT_NO_THROW(QV_CHECK_ABOVE("size_t nWidth", size_t(1), 0));
}

TEST(RangeCheck, ComparesMixedSignednessByValue)
{
    // -1 is below a size_t bound of 0 and of 3, though its unsigned image is huge.
    EXPECT_THROW(QV_CHECK_MIN("nIndex", -1, size_t(0)), OutOfRangeException);
    EXPECT_NO_THROW(QV_CHECK_BELOW("nIndex", -1, size_t(3)));
    EXPECT_THROW(QV_CHECK_MAX("nCount", uint64_t(1) << 63, int64_t(5)), OutOfRangeException);
    EXPECT_NO_THROW(QV_CHECK_MIN("nCount", uint64_t(1) << 63, int64_t(-5)));
}

TEST(RangeCheck, AcceptsEnumerationsAsTheirInteger)
{
    EXPECT_NO_THROW(QV_CHECK_MAX("eQvSystemVendor", VendorD, 3));
    EXPECT_EQ(DescriptionOf<OutOfRangeException>(
                  [] { QV_CHECK_MAX("eQvSystemVendor", static_cast<ETestVendor_t>(4), VendorD); }),
              "eQvSystemVendor = 4 must be equal or smaller than Max = 3");
}

TEST(RangeCheck, NotDividableTemplateNamesValueMinAndInc)
{
    EXPECT_EQ(DescriptionOf<OutOfRangeException>([] { QV_THROW_NOT_DIVIDABLE("size_t x", 5, 0, 2); }),
              "The difference between size_t x = 5 and Min = 0 must be dividable without rest by Inc = 2");
}

TEST(RangeCheck, ReportsTheCallersFileAndLine)
{
    const int line = __LINE__ + 3;
    try
    {
        QV_CHECK_BELOW("nURLIndex", 4, 2);
    }
    catch (const OutOfRangeException& e)
    {
        EXPECT_STREQ(e.GetSourceFileName(), "tests/QvSDKCommon/QvExceptionMacrosTest.cpp");
        EXPECT_EQ(e.GetSourceLine(), static_cast<unsigned>(line));
        EXPECT_STREQ(e.GetExceptionType(), "OutOfRangeException");
        return;
    }
    FAIL() << "no exception";
}

TEST(ThrowMacro, ThrowsEachGenICamTypeWithItsName)
{
    auto typeOf = [](auto&& thrower) -> std::string {
        try
        {
            thrower();
        }
        catch (const GenericException& e)
        {
            return e.GetExceptionType();
        }
        return "<none>";
    };
    EXPECT_EQ(typeOf([] { QV_THROW(RuntimeException, "x"); }), "RuntimeException");
    EXPECT_EQ(typeOf([] { QV_THROW(InvalidArgumentException, "x"); }), "InvalidArgumentException");
    EXPECT_EQ(typeOf([] { QV_THROW(OutOfRangeException, "x"); }), "OutOfRangeException");
    EXPECT_EQ(typeOf([] { QV_THROW(LogicalErrorException, "x"); }), "LogicalErrorException");
    EXPECT_EQ(typeOf([] { QV_THROW(AccessException, "x"); }), "AccessException");
    EXPECT_EQ(typeOf([] { QV_THROW(TimeoutException, "x"); }), "TimeoutException");
    EXPECT_EQ(typeOf([] { QV_THROW(BadAllocException, "x"); }), "BadAllocException");
    EXPECT_THROW(QV_THROW(TimeoutException, "t"), TimeoutException);
    EXPECT_THROW(QV_THROW(InvalidArgumentException, "hCallback is invalid."), InvalidArgumentException);
}

TEST(ThrowMacro, FormatsTheTemplateAndCutsAt256Characters)
{
    EXPECT_EQ(DescriptionOf<RuntimeException>([] { QV_THROW(RuntimeException, "File %s not found.", "x.cti"); }),
              "File x.cti not found.");
    const std::string longName(400, 'n');
    EXPECT_EQ(DescriptionOf<RuntimeException>([&] { QV_THROW(RuntimeException, "Node %s not found.", longName.c_str()); }),
              "Node " + std::string(251, 'n'));
    EXPECT_EQ(DescriptionOf<BadAllocException>([] { QV_THROW_EMPTY(BadAllocException); }), "");
}

TEST(ThrowMacro, CatchBadAllocKeepsTheAllocationFailuresText)
{
    auto thrower = [] {
        try
        {
            throw std::bad_alloc();
        }
        QV_CATCH_BAD_ALLOC()
    };
    EXPECT_EQ(DescriptionOf<BadAllocException>(thrower), std::bad_alloc().what());
}

TEST(GenTLCallMacro, CallsThePresentEntryAndCountsAMissingOneAsNotImplemented)
{
    SFakeBinding binding;
    GenTL::TL_HANDLE hTL = nullptr;
    EXPECT_EQ(QV_GENTL_CALL(&binding, TLOpen, &hTL), GenTL::GC_ERR_NOT_IMPLEMENTED);
    EXPECT_EQ(QV_GENTL_CALL(&binding, GCInitLib), GenTL::GC_ERR_NOT_IMPLEMENTED);
    binding.TLOpen = &OpenGivingSeven;
    EXPECT_EQ(QV_GENTL_CALL(&binding, TLOpen, &hTL), GenTL::GC_ERR_SUCCESS);
    EXPECT_EQ(hTL, reinterpret_cast<GenTL::TL_HANDLE>(7));
}

TEST(AssertMacroDeathTest, PrintsTheMemberAndAborts)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const void* pCQvGenTL = nullptr;
    EXPECT_DEATH(QV_ASSERT(pCQvGenTL != nullptr, "m_pCQvGenTL != NULL"),
                 "QvApi assertion failed: m_pCQvGenTL != NULL \\(file 'tests/QvSDKCommon/QvExceptionMacrosTest.cpp'");
    QV_ASSERT(pCQvGenTL == nullptr, "pCQvGenTL == NULL"); // holds: nothing happens
}
