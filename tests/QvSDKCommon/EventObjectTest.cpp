#include <QvApi/EventObject.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <future>
#include <thread>

#include <gtest/gtest.h>

#include <Base/GCException.h>

#include "PthreadInitFaults.h"
#include "QvSDKCommon/WaitDeadline.h"

using namespace QvApi;
using namespace std::chrono_literals;

namespace
{
using Clock = std::chrono::steady_clock;

// Sets the event every few milliseconds until the future is ready: robust against a SetEvent
// that lands before the waiter blocks (WaitForSingleObject only sees later signals then).
template <typename T>
T SignalUntilDone(CEventObject& event, std::future<T>& result)
{
    while (result.wait_for(5ms) != std::future_status::ready)
        event.SetEvent();
    return result.get();
}

long ElapsedMs(Clock::time_point start)
{
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}
} // namespace

TEST(WaitForSingleObject, FailsOnANullHandle)
{
    EXPECT_EQ(WaitForSingleObject(nullptr, 0), kWaitFailed);
    EXPECT_EQ(WaitForSingleObject(nullptr, 10), kWaitFailed);
    EXPECT_EQ(WaitForSingleObject(nullptr, kWaitInfinite), kWaitFailed);
}

TEST(WaitForSingleObject, ManualResetEventStaysSignaledUntilReset)
{
    CEventObject event(nullptr, true, false, nullptr);
    EXPECT_EQ(WaitForSingleObject(&event, 0), kWaitTimeout);
    event.SetEvent();
    EXPECT_EQ(WaitForSingleObject(&event, 0), kWaitObject0);
    EXPECT_EQ(WaitForSingleObject(&event, 0), kWaitObject0);
    EXPECT_EQ(WaitForSingleObject(&event, 20), kWaitObject0);
    event.ResetEvent();
    EXPECT_EQ(WaitForSingleObject(&event, 0), kWaitTimeout);
}

TEST(WaitForSingleObject, AutoResetEventIsConsumedByTheFirstPoll)
{
    CEventObject event(nullptr, false, false, nullptr);
    event.SetEvent();
    event.SetEvent(); // signals do not accumulate
    EXPECT_EQ(WaitForSingleObject(&event, 0), kWaitObject0);
    EXPECT_EQ(WaitForSingleObject(&event, 0), kWaitTimeout);
}

TEST(WaitForSingleObject, InitialStateSignals)
{
    CEventObject manual(nullptr, true, true, "started");
    CEventObject automatic(nullptr, false, true, nullptr);
    EXPECT_EQ(WaitForSingleObject(&manual, 0), kWaitObject0);
    EXPECT_EQ(WaitForSingleObject(&automatic, 0), kWaitObject0);
    EXPECT_EQ(WaitForSingleObject(&automatic, 0), kWaitTimeout);
    EXPECT_STREQ(manual.name, "started");
}

TEST(WaitForSingleObject, TimesOutAfterRoughlyTheTimeout)
{
    CEventObject event(nullptr, false, false, nullptr);
    const auto start = Clock::now();
    EXPECT_EQ(WaitForSingleObject(&event, 60), kWaitTimeout);
    const long elapsed = ElapsedMs(start);
    EXPECT_GE(elapsed, 55);
    EXPECT_LT(elapsed, 2000);
}

TEST(WaitForSingleObject, TimedWaitWakesOnSetEvent)
{
    CEventObject event(nullptr, false, false, nullptr);
    const auto start = Clock::now();
    auto result = std::async(std::launch::async, [&] { return WaitForSingleObject(&event, 10000); });
    EXPECT_EQ(SignalUntilDone(event, result), kWaitObject0);
    EXPECT_LT(ElapsedMs(start), 5000);
}

TEST(WaitForSingleObject, InfiniteWaitWakesOnSetEvent)
{
    CEventObject event(nullptr, true, false, nullptr);
    auto result = std::async(std::launch::async, [&] { return WaitForSingleObject(&event, kWaitInfinite); });
    EXPECT_EQ(SignalUntilDone(event, result), kWaitObject0);
}

TEST(WaitForSingleObject, SetEventWakesOnlyOneBlockedWaiterEvenWhenManualReset)
{
    CEventObject event(nullptr, true, false, nullptr);
    auto first = std::async(std::launch::async, [&] { return WaitForSingleObject(&event, 600); });
    auto second = std::async(std::launch::async, [&] { return WaitForSingleObject(&event, 600); });
    std::this_thread::sleep_for(200ms); // both are blocked by now
    event.SetEvent();
    const unsigned int a = first.get();
    const unsigned int b = second.get();
    // One wakes; the other sleeps until its time-out, which reports a time-out even though the
    // manual-reset event is still signaled.
    EXPECT_EQ(a + b, kWaitObject0 + kWaitTimeout) << a << " " << b;
    EXPECT_EQ(WaitForSingleObject(&event, 0), kWaitObject0);
}

TEST(WaitDeadline, SplitsSecondsOnlyFromOneSecondUp)
{
    const timespec now{10, 500};
    timespec deadline = MakeWaitDeadline(1000, now);
    EXPECT_EQ(deadline.tv_sec, 11);
    EXPECT_EQ(deadline.tv_nsec, 500);
    deadline = MakeWaitDeadline(999, timespec{10, 0});
    EXPECT_EQ(deadline.tv_sec, 10);
    EXPECT_EQ(deadline.tv_nsec, 999000000);
    deadline = MakeWaitDeadline(2500, timespec{10, 600000000});
    EXPECT_EQ(deadline.tv_sec, 13);
    EXPECT_EQ(deadline.tv_nsec, 100000000);
}

TEST(WaitDeadline, CarriesOnlyBeyondExactlyOneSecondOfNanoseconds)
{
    timespec deadline = MakeWaitDeadline(999, timespec{10, 2000000});
    EXPECT_EQ(deadline.tv_sec, 11);
    EXPECT_EQ(deadline.tv_nsec, 1000000);
    deadline = MakeWaitDeadline(999, timespec{10, 1000000});
    EXPECT_EQ(deadline.tv_sec, 10);
    EXPECT_EQ(deadline.tv_nsec, 1000000000);
}

TEST(WaitForMultipleObjects, FailsOnBadArguments)
{
    CEventObject event(nullptr, false, true, nullptr);
    void* handles[] = {&event, nullptr};
    EXPECT_EQ(WaitForMultipleObjects(0, handles, false, 0), kWaitFailed);
    EXPECT_EQ(WaitForMultipleObjects(1, nullptr, false, 0), kWaitFailed);
    EXPECT_EQ(WaitForMultipleObjects(2, handles, false, 10), kWaitFailed);
    // Refused before anything is consumed.
    EXPECT_EQ(WaitForSingleObject(&event, 0), kWaitObject0);
}

TEST(WaitForMultipleObjects, PollForAnyReturnsTheFirstAndConsumesEverySignaledAutoResetEvent)
{
    CEventObject a(nullptr, false, true, nullptr), b(nullptr, false, true, nullptr);
    void* handles[] = {&a, &b};
    EXPECT_EQ(WaitForMultipleObjects(2, handles, false, 0), kWaitObject0 + 0);
    EXPECT_EQ(WaitForSingleObject(&a, 0), kWaitTimeout);
    EXPECT_EQ(WaitForSingleObject(&b, 0), kWaitTimeout);
}

TEST(WaitForMultipleObjects, PollReportsTheLowestSignaledIndex)
{
    CEventObject a(nullptr, false, false, nullptr), b(nullptr, true, false, nullptr), c(nullptr, false, true, nullptr);
    void* handles[] = {&a, &b, &c};
    EXPECT_EQ(WaitForMultipleObjects(3, handles, false, 0), kWaitObject0 + 2);
    b.SetEvent();
    c.SetEvent();
    EXPECT_EQ(WaitForMultipleObjects(3, handles, false, 0), kWaitObject0 + 1);
    EXPECT_EQ(WaitForSingleObject(&b, 0), kWaitObject0); // manual reset: untouched
    EXPECT_EQ(WaitForMultipleObjects(3, handles, false, 0), kWaitObject0 + 1);
    EXPECT_EQ(WaitForMultipleObjects(3, handles, false, 20), kWaitObject0 + 1);
}

TEST(WaitForMultipleObjects, PollForAllTimesOutAndKeepsAPartialSignal)
{
    CEventObject a(nullptr, false, true, nullptr), b(nullptr, false, false, nullptr);
    void* handles[] = {&a, &b};
    EXPECT_EQ(WaitForMultipleObjects(2, handles, true, 0), kWaitTimeout);
    EXPECT_EQ(WaitForSingleObject(&a, 0), kWaitObject0);
}

TEST(WaitForMultipleObjects, TimedWaitForAllTimesOutAndConsumesAPartialSignal)
{
    CEventObject a(nullptr, false, true, nullptr), b(nullptr, false, false, nullptr);
    void* handles[] = {&a, &b};
    const auto start = Clock::now();
    EXPECT_EQ(WaitForMultipleObjects(2, handles, true, 50), kWaitTimeout);
    EXPECT_GE(ElapsedMs(start), 45);
    EXPECT_EQ(WaitForSingleObject(&a, 0), kWaitTimeout);
}

TEST(WaitForMultipleObjects, TimedWaitForAnyWakesOnTheEventThatIsSet)
{
    CEventObject a(nullptr, false, false, nullptr), b(nullptr, false, false, nullptr);
    void* handles[] = {&a, &b};
    auto result = std::async(std::launch::async, [&] { return WaitForMultipleObjects(2, handles, false, 10000); });
    std::this_thread::sleep_for(20ms);
    b.SetEvent(); // once is enough: the wait registers itself before it looks
    EXPECT_EQ(result.get(), kWaitObject0 + 1);
    EXPECT_EQ(WaitForSingleObject(&b, 0), kWaitTimeout);
    EXPECT_TRUE(a.waiters.empty());
    EXPECT_TRUE(b.waiters.empty());
}

TEST(WaitForMultipleObjects, InfiniteWaitForAllEndsWhenTheLastEventIsSet)
{
    CEventObject a(nullptr, false, false, nullptr), b(nullptr, true, false, nullptr);
    void* handles[] = {&a, &b};
    auto result = std::async(std::launch::async, [&] { return WaitForMultipleObjects(2, handles, true, kWaitInfinite); });
    a.SetEvent();
    EXPECT_EQ(result.wait_for(50ms), std::future_status::timeout);
    b.SetEvent();
    EXPECT_EQ(result.get(), kWaitObject0);
    EXPECT_EQ(WaitForSingleObject(&a, 0), kWaitTimeout);  // auto reset: consumed
    EXPECT_EQ(WaitForSingleObject(&b, 0), kWaitObject0); // manual reset: kept
}

TEST(WaitForMultipleObjects, ASignalBeforeTheWaitIsNotLost)
{
    for (int round = 0; round < 200; ++round)
    {
        CEventObject event(nullptr, false, false, nullptr);
        void* handles[] = {&event};
        auto result = std::async(std::launch::async, [&] { return WaitForMultipleObjects(1, handles, false, kWaitInfinite); });
        event.SetEvent();
        ASSERT_EQ(result.wait_for(5s), std::future_status::ready) << "round " << round;
        ASSERT_EQ(result.get(), kWaitObject0);
    }
}

TEST(WaitForMultipleObjects, TimesOutWhenNothingIsSignaled)
{
    CEventObject a(nullptr, false, false, nullptr);
    void* handles[] = {&a, &a};
    const auto start = Clock::now();
    EXPECT_EQ(WaitForMultipleObjects(2, handles, false, 40), kWaitTimeout);
    EXPECT_GE(ElapsedMs(start), 35);
    EXPECT_TRUE(a.waiters.empty());
}

TEST(EventObject, ReportsAFailedConditionOrMutexAsBadAlloc)
{
    QvTest::FailNextPthreadCondInit(ENOMEM);
    try
    {
        CEventObject event(nullptr, false, false, nullptr);
        FAIL() << "no exception";
    }
    catch (const GenICam::BadAllocException& e)
    {
        EXPECT_STREQ(e.GetDescription(), "");
        EXPECT_STREQ(e.GetSourceFileName(), "QvSDKCommon/EventObject.cpp");
    }
    QvTest::FailNextPthreadMutexInit(EAGAIN);
    EXPECT_THROW(CEventObject(nullptr, true, false, nullptr), GenICam::BadAllocException);
}

TEST(WaitForMultipleObjects, ReportsAFailedPrivateConditionAsBadAlloc)
{
    CEventObject a(nullptr, false, true, nullptr);
    void* handles[] = {&a};
    QvTest::FailNextPthreadCondInit(ENOMEM);
    EXPECT_THROW(WaitForMultipleObjects(1, handles, false, 10), GenICam::BadAllocException);
    EXPECT_EQ(WaitForSingleObject(&a, 0), kWaitObject0); // nothing consumed
}
