// The simulated camera's threads share one CPU, under the batch policy, while it
// runs; the CPU set and policy of the thread that ran it come back afterwards.
#include <gtest/gtest.h>
#include <sched.h>

#include <thread>

#include "camsim/SimScheduling.h"

namespace {
int cpusOfThisThread() {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (::sched_getaffinity(0, sizeof(set), &set) != 0) return -1;
    return CPU_COUNT(&set);
}
}  // namespace

TEST(SimSchedulingTest, ThreadsStartedMeanwhileRunOnOneCpuInBatchAndTheOldSettingsComeBack) {
    const int before = cpusOfThisThread();
    const int policyBefore = ::sched_getscheduler(0);
    ASSERT_GT(before, 0);
    ASSERT_EQ(policyBefore, SCHED_OTHER);
    {
        SimScheduling scheduling;
        ASSERT_TRUE(scheduling.isPinned());
        ASSERT_TRUE(scheduling.isBatch());
        EXPECT_EQ(cpusOfThisThread(), 1);
        EXPECT_EQ(::sched_getscheduler(0), SCHED_BATCH);
        int cpusInThread = -1, policyInThread = -1;
        std::thread t([&] {
            cpusInThread = cpusOfThisThread();
            policyInThread = ::sched_getscheduler(0);
        });
        t.join();
        EXPECT_EQ(cpusInThread, 1);
        EXPECT_EQ(policyInThread, SCHED_BATCH);
    }
    EXPECT_EQ(cpusOfThisThread(), before);
    EXPECT_EQ(::sched_getscheduler(0), policyBefore);
}
