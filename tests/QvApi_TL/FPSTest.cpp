#include <QvApi/FPS.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include <gtest/gtest.h>

using QvApi::CFPS;

namespace
{
constexpr int64_t kMs = 1000000; // nanoseconds
}

TEST(CFPS, OneSampleGivesZero)
{
    CFPS fps;
    EXPECT_EQ(fps.GetFPS(), 0.0);
    fps.RcvAt(5 * kMs);
    EXPECT_EQ(fps.GetFPS(), 0.0);
}

TEST(CFPS, TwoSamples100MsApartGiveTen)
{
    CFPS fps;
    fps.RcvAt(1000 * kMs);
    fps.RcvAt(1100 * kMs);
    EXPECT_DOUBLE_EQ(fps.GetFPS(), 10.0);
}

TEST(CFPS, SamplesLessThanAMicrosecondApartGiveZero)
{
    CFPS fps;
    fps.RcvAt(1000 * kMs);
    fps.RcvAt(1000 * kMs + 999);
    EXPECT_EQ(fps.GetFPS(), 0.0);
    fps.RcvAt(1000 * kMs + 1000); // now 1 µs spans two intervals
    EXPECT_DOUBLE_EQ(fps.GetFPS(), 2000000.0); // two intervals in 0.001 ms
}

TEST(CFPS, TheWindowSlidesAfter500Samples)
{
    CFPS fps;
    // Sample 0 long before the others, then one every 10 ms.
    fps.RcvAt(0);
    for (int i = 1; i < 500; ++i)
        fps.RcvAt((1000 + 10 * (i - 1)) * kMs);
    // 500 samples: the window still opens at sample 0 (t = 0, newest at 5980 ms).
    EXPECT_DOUBLE_EQ(fps.GetFPS(), 499.0 * 1000.0 / 5980.0);
    // The 501st overwrites slot 0; the oldest is slot 1 (t = 1000 ms), newest 5990 ms.
    fps.RcvAt(5990 * kMs);
    EXPECT_DOUBLE_EQ(fps.GetFPS(), 100.0);
}

TEST(CFPS, TheOldestSlotWrapsToZeroWhenTheNewestIsTheLast)
{
    CFPS fps;
    for (int i = 0; i < 1000; ++i) // newest in slot 499 after two full rounds
        fps.RcvAt(static_cast<int64_t>(i) * 20 * kMs);
    EXPECT_DOUBLE_EQ(fps.GetFPS(), 50.0);
    fps.RcvAt(1000LL * 20 * kMs); // slot 0 again, oldest slot 1
    EXPECT_DOUBLE_EQ(fps.GetFPS(), 50.0);
}

TEST(CFPS, ResetStartsANewWindowAtSlotZero)
{
    CFPS fps;
    for (int i = 0; i < 600; ++i)
        fps.RcvAt(static_cast<int64_t>(i) * 10 * kMs);
    fps.Reset();
    EXPECT_EQ(fps.GetFPS(), 0.0);
    fps.RcvAt(100000 * kMs);
    EXPECT_EQ(fps.GetFPS(), 0.0);
    fps.RcvAt(100250 * kMs);
    EXPECT_DOUBLE_EQ(fps.GetFPS(), 4.0);
}

TEST(CFPS, MeasuresRealTime)
{
    CFPS fps;
    fps.Rcv();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    fps.Rcv(12345UL); // the argument is ignored
    const double rate = fps.GetFPS();
    EXPECT_GT(rate, 2.0);
    EXPECT_LE(rate, 20.0 + 1e-9); // at least 50 ms passed
    const double before = fps.GetCurrentMSec();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_GE(fps.GetCurrentMSec() - before, 19.0);
}

TEST(CFPS, RecordsAndReadsFromSeveralThreads)
{
    CFPS fps;
    std::atomic<bool> stop{false};
    std::thread reader([&] {
        while (!stop)
        {
            const double rate = fps.GetFPS();
            EXPECT_GE(rate, 0.0);
        }
    });
    std::thread resetter([&] {
        for (int i = 0; i < 50; ++i)
        {
            fps.Reset();
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 5000; ++i)
        fps.RcvAt(static_cast<int64_t>(i) * kMs);
    stop = true;
    reader.join();
    resetter.join();
    fps.Reset();
    fps.RcvAt(0);
    fps.RcvAt(kMs);
    EXPECT_DOUBLE_EQ(fps.GetFPS(), 1000.0);
}
