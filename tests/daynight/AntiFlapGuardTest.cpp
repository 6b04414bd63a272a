// The optional anti-flap guard of the automatic day/night mode: alone, and in
// the controller's worker on the virtual clock.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "daynight/AntiFlapGuard.h"
#include "doubles/ControllerRig.h"

using testutil::ControllerRig;

TEST(AntiFlapGuardTest, OffChangesNothing) {
    AntiFlapGuard g;
    EXPECT_FALSE(g.enabled());
    for (int i = 0; i < 10; ++i) {
        g.switched(0, i * 10.0, 5);
        g.switched(1, i * 10.0 + 6, 5);
    }
    EXPECT_EQ(5, g.dayDelay(5, 100));
    EXPECT_EQ(0, g.raisedDelay());
}

TEST(AntiFlapGuardTest, QuickReturnsToDayDoubleTheDelayUpToTheCeiling) {
    AntiFlapGuard g;
    g.configure(600, 30);
    double t = 1000;
    g.switched(1, t, 5);  // a day without a night before it raises nothing
    EXPECT_EQ(5, g.dayDelay(5, t));
    const std::vector<int> expected = {10, 20, 30, 30};
    for (int want : expected) {
        g.switched(0, t += 1, 5);
        g.switched(1, t += g.dayDelay(5, t) + 1, 5);
        EXPECT_EQ(want, g.dayDelay(5, t));
    }
}

TEST(AntiFlapGuardTest, ADayOutsideTheHoldOffRaisesNothingAndAStableHourResets) {
    AntiFlapGuard g;
    g.configure(600, 1800);
    g.switched(0, 0, 5);
    g.switched(1, 601, 5);  // outside the hold-off
    EXPECT_EQ(5, g.dayDelay(5, 602));
    g.switched(0, 700, 5);
    g.switched(1, 706, 5);
    EXPECT_EQ(10, g.dayDelay(5, 707));
    EXPECT_EQ(10, g.dayDelay(5, 706 + 3599));
    EXPECT_EQ(5, g.dayDelay(5, 706 + 3600));  // an hour without a switch
    EXPECT_EQ(0, g.raisedDelay());
    // A longer configured delay is never shortened.
    g.switched(0, 9000, 8);
    g.switched(1, 9009, 8);
    EXPECT_EQ(16, g.dayDelay(8, 9010));
    EXPECT_EQ(20, g.dayDelay(20, 9010));
}

namespace {

// Runs a controller whose sensor flaps: night for one second after each
// switch to night, then day (its own lamps); returns the day switch times.
std::vector<int64_t> flappingDays(const std::string& detail, int seconds) {
    ControllerRig rig;
    rig.clock.setTime(12, 0, 0);
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make();
    c.setIrCutGpio(1, 7, 1);
    c.setInfraredGpio(1, 8, 0);
    EXPECT_EQ(1, rig.init(detail, 50));
    // Night whenever the camera is in day (its lamps are off), day when it is in night.
    c.sensorDNAt = [&c](int64_t) { return c.getCurrentDNState() == 1 ? 0 : 1; };
    for (int i = 0; i < seconds; ++i) rig.clock.advance(1000);
    std::vector<int64_t> days;
    for (const ProbeEvent& e : rig.events.events())
        if (e.what == "turnPictureToDay") days.push_back(e.ms);
    return days;
}

}  // namespace

// A cycle of flapping: night in the cycle after the day switch, day readings from the
// next cycle on, day once they have persisted the delay (plus the switches' pauses).
TEST(AntiFlapGuardTest, WorkerWithoutTheDetailKeyFlapsEverySevenSeconds) {
    const std::vector<int64_t> days = flappingDays("RS485=/dev/ttyS1;isInfrared=0", 120);
    ASSERT_GT(days.size(), 12u);
    for (size_t i = 1; i < days.size(); ++i) EXPECT_NEAR(7000, days[i] - days[i - 1], 600) << i;
}

TEST(AntiFlapGuardTest, WorkerWithTheDetailKeyDoublesTheDayDelay) {
    const std::vector<int64_t> days = flappingDays("RS485=/dev/ttyS1;isInfrared=0;DNAntiFlap=600,40", 300);
    // The first entry is the day of the start. The first day switch follows the first
    // night within the hold-off: the delay doubles to 10 s, then 20 s, then the ceiling of 40 s.
    ASSERT_GE(days.size(), 6u);
    const std::vector<int64_t> gaps = {7000, 12000, 22000, 42000, 42000};
    for (size_t i = 0; i < gaps.size(); ++i) EXPECT_NEAR(gaps[i], days[i + 1] - days[i], 600) << i;
}

TEST(AntiFlapGuardTest, MalformedDetailKeyLeavesTheGuardOffAndSaysSo) {
    const std::vector<int64_t> days = flappingDays("RS485=/dev/ttyS1;isInfrared=0;DNAntiFlap=600", 60);
    EXPECT_GT(days.size(), 6u);
}
