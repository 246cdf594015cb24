#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include <Base/GCBase.h>

using namespace GenICam;

TEST(GcString, ConvertsToAndFromCStrings)
{
    gcstring text("Width");
    const char* raw = text;
    EXPECT_STREQ(raw, "Width");
    EXPECT_EQ(text.size(), 5u);
    EXPECT_EQ(text.length(), 5u);
    EXPECT_TRUE(gcstring(nullptr).empty());
    EXPECT_EQ(gcstring("abc", 2), "ab");
    EXPECT_EQ(gcstring(3, 'x'), "xxx");
}

TEST(GcString, ComparesConcatenatesAndSearches)
{
    gcstring a("Gain"), b("GainAuto");
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(b > a);
    EXPECT_TRUE(a != b);
    EXPECT_TRUE("Gain" == a);
    EXPECT_EQ(a + "Auto", b);
    EXPECT_EQ("Auto" + a, "AutoGain");
    EXPECT_EQ(b.find("Auto"), 4u);
    EXPECT_EQ(b.find('x'), gcstring::npos);
    EXPECT_EQ(b.substr(4), "Auto");
    EXPECT_EQ(b.substr(0, 2), "Ga");
    EXPECT_THROW(b.substr(9), OutOfRangeException);
    std::ostringstream os;
    os << b;
    EXPECT_EQ(os.str(), "GainAuto");
}

TEST(GcString, ReadsLinesFromStreams)
{
    std::istringstream is("first line\nsecond");
    gcstring line;
    getline(is, line);
    EXPECT_EQ(line, "first line");
    getline(is, line);
    EXPECT_EQ(line, "second");
}

TEST(GcStringVector, BehavesAsAList)
{
    gcstring_vector names{"A", "B"};
    names.push_back("C");
    EXPECT_EQ(names.size(), 3u);
    EXPECT_EQ(names.at(2), "C");
    EXPECT_TRUE(names.contains("B"));
    EXPECT_FALSE(names.contains("D"));
}

TEST(Exception, WhatCombinesDescriptionTypeFileAndLine)
{
    try
    {
        throw RUNTIME_EXCEPTION("Node %s not found.", "Gain");
    }
    catch (const GenericException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "Node Gain not found.");
        EXPECT_STREQ(e.GetSourceFileName(), "tests/GenICam/GCBaseTest.cpp");
        EXPECT_GT(e.GetSourceLine(), 0u);
        std::string expected = std::string("Node Gain not found. : RuntimeException thrown (file "
                                           "'tests/GenICam/GCBaseTest.cpp', line ") +
                               std::to_string(e.GetSourceLine()) + ")";
        EXPECT_EQ(std::string(e.what()), expected);
    }
}

TEST(Exception, NodeErrorsNameTheNodeAndMethod)
{
    AccessException e = ACCESS_EXCEPTION_NODE("R", "SetValue")("Node is not writable.");
    EXPECT_STREQ(e.GetDescription(), "Node is not writable.");
    EXPECT_NE(std::string(e.what()).find("AccessException thrown in node 'R' while calling 'R.SetValue()'"),
              std::string::npos);
}

TEST(Exception, ReporterCutsDescriptionsAt256CharactersAndAllowsEmpty)
{
    std::string longText(400, 'x');
    RuntimeException e = RUNTIME_EXCEPTION("%s", longText.c_str());
    EXPECT_EQ(std::string(e.GetDescription()).size(), 256u);
    RuntimeException empty = RUNTIME_EXCEPTION();
    EXPECT_STREQ(empty.GetDescription(), "");
}

TEST(Exception, DerivedTypesAreCaughtAsGenericAndStdException)
{
    EXPECT_THROW(throw OUT_OF_RANGE_EXCEPTION("x"), GenericException);
    EXPECT_THROW(throw TIMEOUT_EXCEPTION("x"), std::exception);
    try
    {
        throw BAD_ALLOC_EXCEPTION("%s", "std::bad_alloc");
    }
    catch (const BadAllocException& e)
    {
        EXPECT_STREQ(e.GetExceptionType(), "BadAllocException");
    }
}

TEST(Lock, IsRecursiveAndTryLockFailsFromAnotherThread)
{
    CLock lock;
    lock.Lock();
    EXPECT_TRUE(lock.TryLock());
    bool otherGotIt = true;
    std::thread other([&] { otherGotIt = lock.TryLock(); });
    other.join();
    EXPECT_FALSE(otherGotIt);
    lock.Unlock();
    lock.Unlock();
    std::thread after([&] {
        otherGotIt = lock.TryLock();
        if (otherGotIt)
            lock.Unlock();
    });
    after.join();
    EXPECT_TRUE(otherGotIt);
    {
        AutoLock held(lock);
        EXPECT_TRUE(lock.TryLock());
        lock.Unlock();
    }
}
