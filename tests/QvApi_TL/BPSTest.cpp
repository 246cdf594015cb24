#include <QvApi/BPS.h>

#include <cstdint>

#include <gtest/gtest.h>

using QvApi::CBPS;

namespace
{
constexpr int64_t kMs = 1000000; // nanoseconds
}

TEST(CBPS, TheFirstSampleOnlyOpensTheInterval)
{
    CBPS bps;
    bps.RcvAt(1000, 1000 * kMs);
    EXPECT_EQ(bps.GetBPS(), 0.0);
    bps.RcvAt(3000, 1500 * kMs);
    EXPECT_DOUBLE_EQ(bps.GetBPS(), 6000.0);
}

TEST(CBPS, SamplesLessThanAMicrosecondApartGiveZero)
{
    CBPS bps;
    bps.RcvAt(1000, 0);
    bps.RcvAt(1000, 500);
    EXPECT_EQ(bps.GetBPS(), 0.0);
}

TEST(CBPS, TheWindowSlidesAndDropsTheBytesOfTheOldestSample)
{
    CBPS bps;
    // 500 samples 10 ms apart; sample i carries i bytes.
    for (int i = 0; i < 500; ++i)
        bps.RcvAt(static_cast<unsigned long>(i), static_cast<int64_t>(i) * 10 * kMs);
    const double sum = 499.0 * 500.0 / 2.0; // 1 + ... + 499; sample 0 opens the window
    EXPECT_DOUBLE_EQ(bps.GetBPS(), sum * 1000.0 / 4990.0);
    // The 501st (1000 bytes) replaces sample 0; sample 1 now opens the window.
    bps.RcvAt(1000, 5000 * kMs);
    const double slid = sum - 1.0 + 1000.0;
    EXPECT_DOUBLE_EQ(bps.GetBPS(), slid * 1000.0 / 4990.0);
}

TEST(CBPS, ResetStartsAgainFromZero)
{
    CBPS bps;
    for (int i = 0; i < 10; ++i)
        bps.RcvAt(100, static_cast<int64_t>(i) * kMs);
    bps.Reset();
    EXPECT_EQ(bps.GetBPS(), 0.0);
    bps.RcvAt(5, 0);
    bps.RcvAt(7, 1000 * kMs);
    EXPECT_DOUBLE_EQ(bps.GetBPS(), 7.0);
}

TEST(CBPS, RcvUsesTheSteadyClock)
{
    CBPS bps;
    const double before = bps.GetCurrentMSec();
    bps.Rcv(10);
    bps.Rcv(10);
    EXPECT_GE(bps.GetBPS(), 0.0);
    EXPECT_GE(bps.GetCurrentMSec(), before);
}
