#include <QvApi/Worker.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>
#include <sched.h>

#include <Base/GCException.h>

#include "PthreadInitFaults.h"

using namespace QvApi;
using namespace std::chrono_literals;

namespace
{
// Polls for the stop request like the event listeners do, counting its runs.
class CPollingWorker : public CWorker
{
public:
    CPollingWorker() : CWorker("PollingWorker") {}
    ~CPollingWorker() override { Stop(); }

    std::atomic<int> runs{0};
    std::atomic<int> concurrent{0};
    std::atomic<int> maxConcurrent{0};
    std::atomic<bool> started{false};

protected:
    uint32_t mWork() override
    {
        ++runs;
        const int now = ++concurrent;
        maxConcurrent = std::max(maxConcurrent.load(), now);
        started = true;
        while (!IsStopRequest(0))
            std::this_thread::sleep_for(1ms);
        --concurrent;
        return 7;
    }
};

// Returns at once, without a stop request.
class CShortWorker : public CWorker
{
public:
    CShortWorker() : CWorker("ShortWorker") {}
    ~CShortWorker() override { Stop(); }
    std::atomic<int> runs{0};

protected:
    uint32_t mWork() override
    {
        ++runs;
        return 42;
    }
};

void WaitFor(const std::atomic<bool>& flag)
{
    for (int i = 0; i < 5000 && !flag.load(); ++i)
        std::this_thread::sleep_for(1ms);
}
} // namespace

TEST(CWorker, StopOnANeverStartedWorkerDoesNothing)
{
    CPollingWorker worker;
    worker.Stop();
    EXPECT_EQ(worker.runs.load(), 0);
    EXPECT_FALSE(worker.IsWorking());
    EXPECT_STREQ(worker.GetName(), "PollingWorker");
    EXPECT_NE(worker.GetStopRequestEvent(), nullptr);
}

TEST(CWorker, StartRunsTheWorkUntilStopJoinsIt)
{
    CPollingWorker worker;
    worker.Start();
    WaitFor(worker.started);
    EXPECT_TRUE(worker.IsWorking());
    EXPECT_FALSE(worker.IsStopRequest(0));
    worker.Stop();
    EXPECT_FALSE(worker.IsWorking());
    EXPECT_EQ(worker.runs.load(), 1);
    // The stop event is manual reset: it stays set until the next Start.
    EXPECT_TRUE(worker.IsStopRequest(0));
    EXPECT_TRUE(worker.IsStopRequest(0));
    worker.started = false;
    worker.Start();
    EXPECT_FALSE(worker.IsStopRequest(0));
    WaitFor(worker.started);
    worker.Stop();
    EXPECT_EQ(worker.runs.load(), 2);
}

TEST(CWorker, StartTwiceStopsAndJoinsTheFirstThreadBeforeTheSecond)
{
    CPollingWorker worker;
    worker.Start();
    WaitFor(worker.started);
    worker.started = false;
    worker.Start();
    WaitFor(worker.started);
    worker.Stop();
    EXPECT_EQ(worker.runs.load(), 2);
    EXPECT_EQ(worker.maxConcurrent.load(), 1);
}

TEST(CWorker, AWorkThatEndsByItselfIsJoinedByTheNextStartOrStop)
{
    CShortWorker worker;
    worker.Start();
    for (int i = 0; i < 5000 && (worker.runs.load() == 0 || worker.IsWorking()); ++i)
        std::this_thread::sleep_for(1ms);
    EXPECT_EQ(worker.runs.load(), 1);
    EXPECT_FALSE(worker.IsWorking());
    worker.Start();
    worker.Stop();
    EXPECT_EQ(worker.runs.load(), 2);
}

TEST(CWorker, ThreadStartReturnsTheWorksCode)
{
    CShortWorker worker;
    EXPECT_EQ(worker.ThreadStart(), 42u);
    EXPECT_FALSE(worker.IsWorking());
}

TEST(CWorker, PriorityOfTwoOrMoreIsClampedIntoTheRoundRobinRange)
{
    CShortWorker worker;
    EXPECT_EQ(worker.GetPriority(), 1);
    worker.SetPriority(5);
    worker.Start();
    worker.Stop();
    EXPECT_EQ(worker.GetPriority(), std::clamp(5, sched_get_priority_min(SCHED_RR), sched_get_priority_max(SCHED_RR)));
    worker.SetPriority(1000);
    worker.Start();
    worker.Stop();
    EXPECT_EQ(worker.GetPriority(), sched_get_priority_max(SCHED_RR));
}

TEST(CWorker, DefaultPriorityIsKeptAsGiven)
{
    CShortWorker worker;
    worker.SetPriority(-3);
    worker.Start();
    worker.Stop();
    EXPECT_EQ(worker.GetPriority(), -3);
}

TEST(CWorker, DestructorStopsARunningThread)
{
    auto worker = std::make_unique<CPollingWorker>();
    worker->Start();
    WaitFor(worker->started);
    worker.reset(); // must return: the destructor stops and joins
    SUCCEED();
}

TEST(CWorker, AFailedStopEventIsReportedAsBadAlloc)
{
    QvTest::FailNextPthreadCondInit(ENOMEM);
    EXPECT_THROW(CShortWorker worker, GenICam::BadAllocException);
}
