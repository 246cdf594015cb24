#include "QvSDKCommon/QvCallbackManager.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include <Base/GCException.h>

#include "QvSDKCommon/QvCallbackParamBase.h"

using namespace QvApi;
using namespace std::chrono_literals;

namespace
{
// Records every Invoke and Release in a shared journal.
struct SJournal
{
    std::vector<int> invoked;          // callback ids in call order
    std::map<int, int> releases;       // id -> Release() count
    std::vector<EQvCallbackType_t> types;
};

class CRecordingCallback : public IQvCallback
{
public:
    CRecordingCallback(int id, SJournal& journal) : m_id(id), m_journal(journal) {}
    void Invoke(IQvCallbackParamBase* param) override
    {
        m_journal.invoked.push_back(m_id);
        m_journal.types.push_back(param->GetCallbackType());
    }
    void Release() override { ++m_journal.releases[m_id]; }

private:
    int m_id;
    SJournal& m_journal;
};

class CNewBufferParam : public CQvCallbackParamBase<IQvCallbackParamGenTLEventNewBuffer>
{
public:
    CNewBufferParam() : CQvCallbackParamBase(QvCallbackTypeGenTLEventNewBuffer) {}
    IQvDataStream* GetIQvDataStream() const override { return nullptr; }
};
} // namespace

TEST(EQvCallbackType, HasTheSixEventValues)
{
    EXPECT_EQ(QvCallbackTypeGenTLEventErrorTL, 0);
    EXPECT_EQ(QvCallbackTypeGenTLEventErrorIF, 1);
    EXPECT_EQ(QvCallbackTypeGenTLEventErrorDEV, 2);
    EXPECT_EQ(QvCallbackTypeGenTLEventErrorDS, 3);
    EXPECT_EQ(QvCallbackTypeGenTLEventErrorSB, 4);
    EXPECT_EQ(QvCallbackTypeGenTLEventNewBuffer, 5);
}

TEST(CQvCallbackManager, RunCallbackWithNoRegistrationsDoesNothing)
{
    CQvCallbackManager manager;
    CNewBufferParam param;
    manager.RunCallback(&param);
    EXPECT_EQ(manager.GetCallbackCount(), 0u);
}

TEST(CQvCallbackManager, DispatchesInAscendingHandleOrderWithTheParameter)
{
    SJournal journal;
    CRecordingCallback first(1, journal), second(2, journal), third(3, journal);
    CQvCallbackManager manager;
    std::map<void*, int> byHandle;
    byHandle[manager.RegisterCallback(&first)] = 1;
    byHandle[manager.RegisterCallback(&second)] = 2;
    byHandle[manager.RegisterCallback(&third)] = 3;
    CNewBufferParam param;
    manager.RunCallback(&param);
    std::vector<int> expected;
    for (const auto& [handle, id] : byHandle)
        expected.push_back(id);
    EXPECT_EQ(journal.invoked, expected);
    EXPECT_EQ(journal.types, std::vector<EQvCallbackType_t>(3, QvCallbackTypeGenTLEventNewBuffer));
    EXPECT_TRUE(journal.releases.empty());
}

TEST(CQvCallbackManager, TheSameCallbackRegisteredTwiceGetsTwoHandlesAndRunsTwice)
{
    SJournal journal;
    CRecordingCallback callback(1, journal);
    CQvCallbackManager manager;
    void* a = manager.RegisterCallback(&callback);
    void* b = manager.RegisterCallback(&callback);
    EXPECT_NE(a, b);
    CNewBufferParam param;
    manager.RunCallback(&param);
    EXPECT_EQ(journal.invoked, (std::vector<int>{1, 1}));
    manager.DeregisterCallback(a);
    EXPECT_EQ(journal.releases[1], 1);
    manager.RunCallback(&param);
    EXPECT_EQ(journal.invoked.size(), 3u);
}

TEST(CQvCallbackManager, DeregisteringTwiceThrowsTheSecondTimeAndKeepsTheOthers)
{
    SJournal journal;
    CRecordingCallback one(1, journal), two(2, journal);
    CQvCallbackManager manager;
    void* first = manager.RegisterCallback(&one);
    manager.RegisterCallback(&two);
    manager.DeregisterCallback(first);
    EXPECT_EQ(journal.releases[1], 1);
    try
    {
        manager.DeregisterCallback(first);
        FAIL() << "no exception";
    }
    catch (const GenICam::InvalidArgumentException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "hCallback is invalid.");
        EXPECT_STREQ(e.GetSourceFileName(), "QvSDKCommon/QvCallbackManager.cpp");
    }
    EXPECT_EQ(journal.releases[1], 1);
    EXPECT_EQ(manager.GetCallbackCount(), 1u);
    CNewBufferParam param;
    manager.RunCallback(&param);
    EXPECT_EQ(journal.invoked, std::vector<int>{2});
}

TEST(CQvCallbackManager, AnUnknownHandleLeavesTheManagerUnlocked)
{
    SJournal journal;
    CRecordingCallback callback(1, journal);
    CQvCallbackManager manager;
    EXPECT_THROW(manager.DeregisterCallback(nullptr), GenICam::InvalidArgumentException);
    int notAHandle = 0;
    EXPECT_THROW(manager.DeregisterCallback(&notAHandle), GenICam::InvalidArgumentException);
    auto registration = std::async(std::launch::async, [&] { return manager.RegisterCallback(&callback); });
    ASSERT_EQ(registration.wait_for(5s), std::future_status::ready);
    EXPECT_NE(registration.get(), nullptr);
}

TEST(CQvCallbackManager, DestructionReleasesEveryCallbackExactlyOnce)
{
    SJournal journal;
    CRecordingCallback one(1, journal), two(2, journal);
    {
        CQvCallbackManager manager;
        manager.RegisterCallback(&one);
        manager.RegisterCallback(&two);
        manager.RegisterCallback(&two);
        manager.DeregisterCallback(manager.RegisterCallback(&one));
        EXPECT_EQ(journal.releases[1], 1);
    }
    EXPECT_EQ(journal.releases[1], 2);
    EXPECT_EQ(journal.releases[2], 2);
}

TEST(CQvCallbackManager, ACallbackMayDeregisterItselfDuringDispatch)
{
    struct CSelfRemoving : IQvCallback
    {
        CQvCallbackManager* manager = nullptr;
        void* handle = nullptr;
        int invokes = 0;
        int releases = 0;
        void Invoke(IQvCallbackParamBase*) override
        {
            ++invokes;
            manager->DeregisterCallback(handle);
        }
        void Release() override { ++releases; }
    } selfRemoving;
    SJournal journal;
    CRecordingCallback other(2, journal);
    CQvCallbackManager manager;
    selfRemoving.manager = &manager;
    selfRemoving.handle = manager.RegisterCallback(&selfRemoving);
    manager.RegisterCallback(&other);
    CNewBufferParam param;
    manager.RunCallback(&param);
    EXPECT_EQ(selfRemoving.invokes, 1);
    EXPECT_EQ(selfRemoving.releases, 1);
    EXPECT_EQ(journal.invoked, std::vector<int>{2});
    manager.RunCallback(&param);
    EXPECT_EQ(selfRemoving.invokes, 1);
    EXPECT_EQ(journal.invoked.size(), 2u);
}

TEST(CQvCallbackManager, RegistrationFromAnotherThreadWaitsForTheDispatch)
{
    struct CBlocking : IQvCallback
    {
        std::promise<void> entered;
        std::shared_future<void> proceed;
        void Invoke(IQvCallbackParamBase*) override
        {
            entered.set_value();
            proceed.wait();
        }
        void Release() override {}
    } blocking;
    std::promise<void> release;
    blocking.proceed = release.get_future().share();
    SJournal journal;
    CRecordingCallback late(9, journal);
    CQvCallbackManager manager;
    manager.RegisterCallback(&blocking);
    CNewBufferParam param;
    auto dispatch = std::async(std::launch::async, [&] { manager.RunCallback(&param); });
    blocking.entered.get_future().wait();
    auto registration = std::async(std::launch::async, [&] { return manager.RegisterCallback(&late); });
    EXPECT_EQ(registration.wait_for(100ms), std::future_status::timeout);
    release.set_value();
    dispatch.get();
    ASSERT_EQ(registration.wait_for(5s), std::future_status::ready);
    EXPECT_NE(registration.get(), nullptr);
    EXPECT_TRUE(journal.invoked.empty()); // registered after the dispatch
}

TEST(CQvCallbackManagerDeathTest, AnExceptionEscapingACallbackTerminates)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    struct CThrowing : IQvCallback
    {
        void Invoke(IQvCallbackParamBase*) override { throw std::runtime_error("callback failed"); }
        void Release() override {}
    };
    EXPECT_DEATH(
        {
            CThrowing throwing;
            CQvCallbackManager manager;
            manager.RegisterCallback(&throwing);
            CNewBufferParam param;
            manager.RunCallback(&param);
        },
        "");
}
