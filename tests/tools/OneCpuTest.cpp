// The simulated camera's threads share one CPU while it runs; the CPU set of the
// thread that ran it comes back afterwards.
#include <gtest/gtest.h>
#include <sched.h>

#include <thread>

#include "camsim/OneCpu.h"

namespace {
int cpusOfThisThread() {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (::sched_getaffinity(0, sizeof(set), &set) != 0) return -1;
    return CPU_COUNT(&set);
}
}  // namespace

TEST(OneCpuTest, ThreadsStartedMeanwhileRunOnOneCpuAndTheOldSetComesBack) {
    const int before = cpusOfThisThread();
    ASSERT_GT(before, 0);
    {
        OneCpu one;
        ASSERT_TRUE(one.isPinned());
        EXPECT_EQ(cpusOfThisThread(), 1);
        int inThread = -1;
        std::thread t([&] { inThread = cpusOfThisThread(); });
        t.join();
        EXPECT_EQ(inThread, 1);
    }
    EXPECT_EQ(cpusOfThisThread(), before);
}
