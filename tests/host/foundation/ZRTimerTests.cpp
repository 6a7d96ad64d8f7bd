#include <zrbase/host/foundation/ZRTimer.h>

#include <gtest/gtest.h>

#include <atomic>

using namespace std::chrono_literals;

namespace {

// Counts firings; waits generously so that a loaded machine cannot fail the test.
struct Firings {
    void fire()
    {
        const std::lock_guard lock(mutex);
        ++count;
        condition.notify_all();
    }
    bool waitFor(int expected)
    {
        std::unique_lock lock(mutex);
        return condition.wait_for(lock, 30s, [&] { return count >= expected; });
    }
    std::mutex mutex;
    std::condition_variable condition;
    int count = 0;
};

}

TEST(ZRTimer, firesOnceTheIntervalAfterTheLastSchedule)
{
    Firings firings;
    ZRTimer timer([&] { firings.fire(); });
    EXPECT_FALSE(timer.isScheduled());
    for (int burst = 0; burst < 10; ++burst)
        timer.schedule(1h);
    EXPECT_TRUE(timer.isScheduled());
    timer.schedule(1ms); // the last schedule replaces the hour-long ones
    ASSERT_TRUE(firings.waitFor(1));
    EXPECT_FALSE(timer.isScheduled());
    EXPECT_EQ(firings.count, 1);

    timer.schedule(1h);
    timer.invalidate();
    EXPECT_FALSE(timer.isScheduled());
    timer.schedule(1ms);
    ASSERT_TRUE(firings.waitFor(2));
}

TEST(ZRTimer, actionMayRescheduleOrInvalidateItsOwnTimer)
{
    Firings firings;
    std::atomic<ZRTimer*> self = nullptr;
    ZRTimer timer([&] {
        self.load()->invalidate();
        if (firings.count < 2)
            self.load()->schedule(1ms);
        firings.fire();
    });
    self = &timer;
    timer.schedule(1ms);
    ASSERT_TRUE(firings.waitFor(3));
}

TEST(ZRTimer, destructionCancelsAPendingFiring)
{
    std::atomic<bool> fired = false;
    {
        ZRTimer timer([&] { fired = true; });
        timer.schedule(1h);
    }
    EXPECT_FALSE(fired);
}
