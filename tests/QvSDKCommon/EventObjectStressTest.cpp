// Many threads signalling and waiting on the same events. Runs in a few seconds by default;
// QV_STRESS_SCALE=<n> multiplies the rounds. A watchdog aborts the process instead of hanging.
#include <QvApi/EventObject.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using namespace QvApi;
using namespace std::chrono_literals;

namespace
{
int Scale()
{
    const char* text = getenv("QV_STRESS_SCALE");
    const int scale = text != nullptr ? atoi(text) : 1;
    return scale > 0 ? scale : 1;
}

// Aborts the process if the test body has not finished within the limit.
class CWatchdog
{
public:
    explicit CWatchdog(std::chrono::seconds limit)
        : m_thread([this, limit] {
              std::unique_lock<std::mutex> lock(m_mutex);
              if (!m_condition.wait_for(lock, limit, [this] { return m_done; }))
              {
                  fprintf(stderr, "watchdog: no progress for %lld s, aborting\n", static_cast<long long>(limit.count()));
                  abort();
              }
          })
    {
    }
    ~CWatchdog()
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_done = true;
        }
        m_condition.notify_all();
        m_thread.join();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_done = false;
    std::thread m_thread;
};
} // namespace

// Two threads hand a token back and forth through auto-reset events with infinite multi-object
// waits: a single lost wake-up would stop the game, which the watchdog turns into a failure.
TEST(EventObjectStress, PingPongThroughInfiniteMultiObjectWaitsLosesNoSignal)
{
    CWatchdog watchdog(120s);
    const int rounds = 20000 * Scale();
    CEventObject ping(nullptr, false, false, nullptr), pong(nullptr, false, false, nullptr);
    void* pingHandles[] = {&ping};
    void* pongHandles[] = {&pong};
    std::atomic<int> failures{0};

    std::thread server([&] {
        for (int i = 0; i < rounds; ++i)
        {
            if (WaitForMultipleObjects(1, pingHandles, false, kWaitInfinite) != kWaitObject0)
                ++failures;
            pong.SetEvent();
        }
    });
    for (int i = 0; i < rounds; ++i)
    {
        ping.SetEvent();
        if (WaitForMultipleObjects(1, pongHandles, false, kWaitInfinite) != kWaitObject0)
            ++failures;
    }
    server.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_TRUE(ping.waiters.empty());
    EXPECT_TRUE(pong.waiters.empty());
}

// Two producers each set their own event; a consumer waits for both at once.
TEST(EventObjectStress, WaitForAllCollectsPairsFromTwoSignallers)
{
    CWatchdog watchdog(120s);
    const int rounds = 10000 * Scale();
    CEventObject left(nullptr, false, false, nullptr), right(nullptr, false, false, nullptr);
    CEventObject leftAck(nullptr, false, false, nullptr), rightAck(nullptr, false, false, nullptr);
    void* pair[] = {&left, &right};
    std::atomic<int> failures{0};

    auto signaller = [&](CEventObject& event, CEventObject& ack) {
        void* ackHandles[] = {&ack};
        for (int i = 0; i < rounds; ++i)
        {
            event.SetEvent();
            if (WaitForMultipleObjects(1, ackHandles, false, kWaitInfinite) != kWaitObject0)
                ++failures;
        }
    };
    std::thread a(signaller, std::ref(left), std::ref(leftAck));
    std::thread b(signaller, std::ref(right), std::ref(rightAck));
    for (int i = 0; i < rounds; ++i)
    {
        if (WaitForMultipleObjects(2, pair, true, kWaitInfinite) != kWaitObject0)
            ++failures;
        leftAck.SetEvent();
        rightAck.SetEvent();
    }
    a.join();
    b.join();
    EXPECT_EQ(failures.load(), 0);
}

// Signallers set and reset random events while waiters of every kind race for them with short
// time-outs. Every answer must be a valid index or a time-out, and no auto-reset signal may be
// taken twice: the successful waits on auto-reset events never outnumber the SetEvent calls.
TEST(EventObjectStress, RandomSignallersAndWaitersKeepTheirInvariants)
{
    CWatchdog watchdog(180s);
    constexpr unsigned int kEvents = 6; // 0..3 auto reset, 4..5 manual reset
    constexpr unsigned int kAutoEvents = 4;
    std::vector<std::unique_ptr<CEventObject>> events;
    for (unsigned int i = 0; i < kEvents; ++i)
        events.push_back(std::make_unique<CEventObject>(nullptr, i >= kAutoEvents, false, nullptr));
    std::array<void*, kEvents> handles{};
    for (unsigned int i = 0; i < kEvents; ++i)
        handles[i] = events[i].get();

    std::array<std::atomic<long>, kEvents> sets{};
    std::array<std::atomic<long>, kEvents> taken{};
    std::atomic<long> badResults{0};
    std::atomic<long> waits{0};
    std::atomic<bool> stop{false};

    const int roundsPerSignaller = 30000 * Scale();
    std::vector<std::thread> threads;
    for (int s = 0; s < 3; ++s)
    {
        threads.emplace_back([&, s] {
            std::mt19937 random(1234 + s);
            for (int round = 0; round < roundsPerSignaller; ++round)
            {
                const unsigned int i = random() % kEvents;
                if (i >= kAutoEvents && random() % 3 == 0)
                    events[i]->ResetEvent();
                else
                {
                    // Counted before the signal can be taken, so taken <= sets holds at all times.
                    sets[i].fetch_add(1);
                    events[i]->SetEvent();
                }
                if (round % 64 == 0)
                    std::this_thread::yield();
            }
        });
    }
    auto record = [&](unsigned int result, unsigned int count, const unsigned int* indices) {
        waits.fetch_add(1);
        if (result == kWaitTimeout)
            return;
        if (result >= count)
        {
            badResults.fetch_add(1);
            return;
        }
        const unsigned int event = indices[result];
        if (event < kAutoEvents)
            taken[event].fetch_add(1);
    };
    // Single-object waiters, polling and with short time-outs.
    for (int w = 0; w < 2; ++w)
    {
        threads.emplace_back([&, w] {
            std::mt19937 random(99 + w);
            while (!stop.load())
            {
                const unsigned int i = random() % kEvents;
                const unsigned int result = WaitForSingleObject(handles[i], random() % 2 ? 0 : 1 + random() % 3);
                record(result == kWaitObject0 ? 0 : result, 1, &i);
            }
        });
    }
    // Multi-object waiters for any of a random subset, and for all of a pair.
    for (int w = 0; w < 3; ++w)
    {
        threads.emplace_back([&, w] {
            std::mt19937 random(7 + w);
            while (!stop.load())
            {
                const bool waitAll = w == 2;
                const unsigned int count = waitAll ? 2 : 1 + random() % kEvents;
                unsigned int indices[kEvents];
                void* subset[kEvents];
                for (unsigned int k = 0; k < count; ++k)
                {
                    indices[k] = (random() % kEvents);
                    subset[k] = handles[indices[k]];
                }
                if (waitAll && indices[0] == indices[1])
                    continue; // the same auto-reset event twice can never be all-signaled
                const unsigned int result =
                    WaitForMultipleObjects(count, subset, waitAll, random() % 4 == 0 ? 0 : 1 + random() % 3);
                record(result, count, indices);
            }
        });
    }
    for (int s = 0; s < 3; ++s)
        threads[s].join();
    stop.store(true);
    for (size_t t = 3; t < threads.size(); ++t)
        threads[t].join();

    EXPECT_EQ(badResults.load(), 0);
    EXPECT_GT(waits.load(), 0);
    for (unsigned int i = 0; i < kAutoEvents; ++i)
        EXPECT_LE(taken[i].load(), sets[i].load()) << "event " << i;
    for (unsigned int i = 0; i < kEvents; ++i)
        EXPECT_TRUE(events[i]->waiters.empty()) << "event " << i;
}
