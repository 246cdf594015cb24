#include <QvApi/CLockBySemaphore.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <QvApi/QvLinuxErrorException.h>

#include "PthreadInitFaults.h"

using QvApi::CLockBySemaphore;
using QvApi::CQvLinuxErrorException;
using namespace std::chrono_literals;

TEST(CLockBySemaphore, StartsFullyTakenSoTheFirstLockWaitsForAnUnlock)
{
    CLockBySemaphore lock(1);
    EXPECT_EQ(lock.GetCount(), 1);
    std::atomic<bool> locked{false};
    std::thread locker([&] {
        lock.Lock();
        locked = true;
    });
    std::this_thread::sleep_for(80ms);
    EXPECT_FALSE(locked.load());
    lock.Unlock();
    locker.join();
    EXPECT_TRUE(locked.load());
    EXPECT_EQ(lock.GetCount(), 1);
}

TEST(CLockBySemaphore, UnlockWithNothingTakenDoesNothing)
{
    CLockBySemaphore lock(1);
    lock.Unlock();
    EXPECT_EQ(lock.GetCount(), 0);
    lock.Unlock();
    EXPECT_EQ(lock.GetCount(), 0);
    lock.Lock(); // a unit is free: no wait
    EXPECT_EQ(lock.GetCount(), 1);
}

TEST(CLockBySemaphore, CountsUpToItsMaximum)
{
    CLockBySemaphore lock(3);
    lock.Unlock();
    lock.Unlock();
    lock.Unlock();
    EXPECT_EQ(lock.GetCount(), 0);
    lock.Lock();
    lock.Lock();
    lock.Lock();
    EXPECT_EQ(lock.GetCount(), 3);
}

TEST(CLockBySemaphore, LockMaxMinusOneTakesOneUnitOnly)
{
    CLockBySemaphore lock(3);
    lock.UnlockMaxMinusOne(); // gives back two units
    EXPECT_EQ(lock.GetCount(), 1);
    lock.LockMaxMinusOne(); // two free passes, then one unit
    EXPECT_EQ(lock.GetCount(), 2);
}

TEST(CLockBySemaphore, UnlockMaxMinusOneStopsAtZero)
{
    CLockBySemaphore lock(4);
    lock.Unlock();
    lock.Unlock();
    EXPECT_EQ(lock.GetCount(), 2);
    lock.UnlockMaxMinusOne(); // up to three, but only two are taken
    EXPECT_EQ(lock.GetCount(), 0);
}

TEST(CLockBySemaphore, LockMaxMinusOneOfAOneUnitLockTakesAUnitWithoutWaiting)
{
    CLockBySemaphore lock(1); // full, yet mLock(0) never waits
    lock.LockMaxMinusOne();
    EXPECT_EQ(lock.GetCount(), 2);
}

TEST(CLockBySemaphore, HandsUnitsBetweenThreads)
{
    CLockBySemaphore lock(2);
    lock.Unlock();
    lock.Unlock();
    std::atomic<int> inside{0};
    std::atomic<int> maximum{0};
    std::thread threads[4];
    for (auto& thread : threads)
    {
        thread = std::thread([&] {
            for (int i = 0; i < 200; ++i)
            {
                lock.Lock();
                const int now = ++inside;
                int seen = maximum.load();
                while (now > seen && !maximum.compare_exchange_weak(seen, now))
                {
                }
                --inside;
                lock.Unlock();
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_LE(maximum.load(), 2);
    EXPECT_EQ(lock.GetCount(), 0);
}

TEST(CLockBySemaphore, ReportsAFailedMutexInitialisation)
{
    errno = EPERM;
    QvTest::FailNextPthreadMutexInit(EAGAIN);
    try
    {
        CLockBySemaphore lock(1);
        FAIL() << "no exception";
    }
    catch (const CQvLinuxErrorException& e)
    {
        const std::string text = strerror(EPERM);
        EXPECT_EQ(std::string(e.GetDescription()), "0 != pthread_mutex_init(&m_sem.mutex) [Error=0x1 " + text +
                                                       "] ErrorCode=0x0000000b \" \"" + text);
        EXPECT_EQ(e.GetFunctionName(), "pthread_mutex_init");
        EXPECT_EQ(e.GetError(), EAGAIN);
        EXPECT_STREQ(e.GetSourceFileName(), "QvSDKCommon/CLockBySemaphore.cpp");
        EXPECT_STREQ(e.GetExceptionType(), "QvLinuxErrorException");
    }
}

TEST(CLockBySemaphore, ReportsAFailedConditionInitialisation)
{
    errno = ENOMEM;
    QvTest::FailNextPthreadCondInit(ENOMEM);
    try
    {
        CLockBySemaphore lock(1);
        FAIL() << "no exception";
    }
    catch (const CQvLinuxErrorException& e)
    {
        const std::string text = strerror(ENOMEM);
        EXPECT_EQ(std::string(e.GetDescription()), "0 != pthread_cond_init(&m_sem.condition) [Error=0xc " + text +
                                                       "] ErrorCode=0x0000000c \" \"" + text);
        EXPECT_EQ(e.GetFunctionName(), "pthread_cond_init");
    }
}
