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
        g.switched(0, i * 10.0);
        EXPECT_EQ(5, g.dayDelay(5, i * 10.0 + 1));
        g.switched(1, i * 10.0 + 6);
    }
    EXPECT_EQ(0, g.raisedDelay());
}

TEST(AntiFlapGuardTest, ADayStatusRightAfterANightWaitsAnHourOthersTheConfiguredDelay) {
    AntiFlapGuard g;
    g.configure(60, 14400);
    EXPECT_EQ(5, g.dayDelay(5, 100));  // no night yet
    g.switched(0, 1000);
    EXPECT_EQ(3600, g.raisedDelay());
    EXPECT_EQ(3600, g.dayDelay(5, 1000.5));  // the lamps have just come on
    EXPECT_EQ(3600, g.dayDelay(5, 1060));    // the end of the hold-off
    EXPECT_EQ(5, g.dayDelay(5, 1060.5));     // later: a real change of light
    EXPECT_EQ(5000, g.dayDelay(5000, 1001)); // a longer configured delay is never shortened
}

TEST(AntiFlapGuardTest, AHeldDayThatFlapsAgainDoublesTheDelayUpToTheCeiling) {
    AntiFlapGuard g;
    g.configure(60, 14400);
    double t = 0;
    g.switched(0, t);
    const std::vector<int> expected = {3600, 7200, 14400, 14400};
    for (int want : expected) {
        const int delay = g.dayDelay(5, t + 1);
        EXPECT_EQ(want, delay);
        g.switched(1, t += 1 + delay);
        g.switched(0, t += 1);  // the lamps went off: night at once
    }
}

TEST(AntiFlapGuardTest, AFlapTheGuardDidNotHoldDoesNotDoubleAndADayThatHoldsResets) {
    AntiFlapGuard g;
    g.configure(60, 14400);
    g.switched(0, 0);
    EXPECT_EQ(5, g.dayDelay(5, 7200));  // dawn, hours after the night: not held
    g.switched(1, 7205);
    g.switched(0, 7206);                 // flapped, but the guard had not held it
    EXPECT_EQ(3600, g.dayDelay(5, 7207));
    g.switched(1, 7207 + 3600);
    g.switched(0, 7208 + 3600);          // held, and flapped again
    EXPECT_EQ(7200, g.raisedDelay());
    EXPECT_EQ(7200, g.dayDelay(5, 7209 + 3600));
    g.switched(1, 7209 + 3600 + 7200);
    g.switched(0, 7209 + 3600 + 7200 + 61);  // that day held longer than the hold-off
    EXPECT_EQ(3600, g.raisedDelay());
}

TEST(AntiFlapGuardTest, ACeilingBelowTheHourIsTheOnlyDelay) {
    AntiFlapGuard g;
    g.configure(60, 40);
    g.switched(0, 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(40, g.dayDelay(5, i * 50 + 1));
        g.switched(1, i * 50 + 41);
        g.switched(0, i * 50 + 50);
    }
    g.configure(0, 40);
    EXPECT_FALSE(g.enabled());
    EXPECT_EQ(5, g.dayDelay(5, 151));
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

TEST(AntiFlapGuardTest, WorkerWithTheDetailKeyHoldsTheDayAfterEachNight) {
    // A ceiling of 40 s, below the hour: each day status that follows a switch to night
    // waits 40 s. The first entry is the day of the start; then each cycle is the night
    // switch, 40 s of day readings, the day switch (plus the switches' pauses).
    const std::vector<int64_t> days = flappingDays("RS485=/dev/ttyS1;isInfrared=0;DNAntiFlap=60,40", 200);
    ASSERT_GE(days.size(), 4u);
    for (size_t i = 1; i + 1 < days.size(); ++i) EXPECT_NEAR(42000, days[i + 1] - days[i], 600) << i;
}

TEST(AntiFlapGuardTest, WorkerWithTheHourFloorFlipsAtMostTwiceAnHour) {
    // The start's day, night in the first cycle, day readings held an hour, day; night in
    // the next cycle, and the held day flapped: the next one is held two hours.
    const std::vector<int64_t> days = flappingDays("RS485=/dev/ttyS1;isInfrared=0;DNAntiFlap=60,14400", 3 * 3600 + 1200);
    ASSERT_EQ(3u, days.size());
    EXPECT_NEAR(3601000, days[1] - days[0], 1500);
    EXPECT_NEAR(7202000, days[2] - days[1], 1500);
}

TEST(AntiFlapGuardTest, MalformedDetailKeyLeavesTheGuardOffAndSaysSo) {
    const std::vector<int64_t> days = flappingDays("RS485=/dev/ttyS1;isInfrared=0;DNAntiFlap=600", 60);
    EXPECT_GT(days.size(), 6u);
}
