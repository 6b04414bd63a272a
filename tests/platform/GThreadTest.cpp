#include "platform/GThread.h"

#include <gtest/gtest.h>

#include <atomic>

#include "TestRoot.h"
#include "platform/KestraTime.h"

TEST(GThreadTest, HooksRunOnceAroundTheBodyLoop) {
    testutil::VirtualClock clock;
    std::atomic<int> starts{0}, ends{0}, bodies{0};
    {
        GThread t([&] {
            ++bodies;
            KestraTime(1, 0).wait();
        },
                  "hooks", [&] { ++starts; }, [&] { ++ends; });
        EXPECT_EQ(t.getName(), "hooks");
        EXPECT_FALSE(t.isRunning());
        ASSERT_TRUE(t.start());
        EXPECT_TRUE(t.isRunning());
        EXPECT_FALSE(t.start());  // already running
        ASSERT_TRUE(PlatformClock::waitForSleepers(1));
        clock.advance(4000);
        t.stop();
        EXPECT_FALSE(t.isRunning());
    }
    EXPECT_EQ(starts.load(), 1);
    EXPECT_EQ(ends.load(), 1);
    EXPECT_EQ(bodies.load(), 5);
}

TEST(GThreadTest, StopWithoutStartAndDoubleStopAreHarmless) {
    GThread t(GThread::emptyFun, "idle");
    t.stop();
    t.stop();
    EXPECT_FALSE(t.isRunning());
}

TEST(GThreadTest, CanBeRestartedAfterStop) {
    testutil::VirtualClock clock;
    std::atomic<int> bodies{0};
    GThread t([&] {
        ++bodies;
        KestraTime(1, 0).wait();
    },
              "again");
    ASSERT_TRUE(t.start());
    ASSERT_TRUE(PlatformClock::waitForSleepers(1));
    t.stop();
    int afterFirst = bodies.load();
    ASSERT_TRUE(t.start());
    ASSERT_TRUE(PlatformClock::waitForSleepers(1));
    t.stop();
    EXPECT_GT(bodies.load(), afterFirst);
}

TEST(GThreadTest, StopFlagIsVisibleOnlyInsideTheStoppedThread) {
    EXPECT_FALSE(GThread::currentStopRequested());
}
