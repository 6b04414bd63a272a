// The day/night worker of the controller: its one-second cycle, the decision
// by sensor, GPIO, light sensor board, fixed choice or timetable, the switch
// delay, the switching sequence of IR-cut filter, lamps and picture, and the
// infrared lamp commands.
#include <gtest/gtest.h>

#include <cstring>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "doubles/ControllerRig.h"
#include "platform/KestraTime.h"

using testutil::ControllerRig;
using testutil::countOf;
using testutil::countSubstr;

namespace {

// Worker cycles are one second apart; a switch adds the 100 ms IR-cut pause.
const int64_t kCycle = 1000;

class DayNightTest : public ::testing::Test {
protected:
    // A started controller: IR-cut filter on group 1 pin 7 (day level 1),
    // infrared LEDs on group 1 pin 8 (day level 0), LDR on group 2 pin 3
    // (day level 1), plus whatever `setup` changes inside initController.
    ProbeController& start(std::function<void(ProbeController&)> setup = nullptr, int hour = 12,
                           int minute = 0) {
        rig.clock.setTime(hour, minute, 0);
        testutil::writeSchemeCount(rig.root, 1);
        ProbeController& c = rig.make();
        c.setIrCutGpio(1, 7, 1);
        c.setInfraredGpio(1, 8, 0);
        c.setLDRGpio(2, 3, 1);
        c.onInitController = setup;
        EXPECT_EQ(1, rig.init());
        std::vector<ProbeEvent> cycles = rig.events.only("cycle");
        lastCycleAfterInit = cycles.empty() ? PlatformClock::nowMs() : cycles.back().ms;
        rig.events.clear();
        rig.gpioRaw->writes.clear();
        c.twoA.clear();
        return c;
    }

    // Time of the worker's next cycle start, given that the last one did not switch.
    int64_t nextCycle() {
        std::vector<ProbeEvent> cycles = rig.events.only("cycle");
        return cycles.empty() ? lastCycleAfterInit + kCycle : cycles.back().ms + kCycle;
    }

    // Advances the clock until the worker has started its next cycle and run
    // it up to its next wait.
    void toNextCycle() {
        size_t n = rig.events.count("cycle");
        for (int i = 0; i < 5000 && rig.events.count("cycle") == n; ++i) rig.clock.advance(1);
        ASSERT_GT(rig.events.count("cycle"), n);
    }

    // Advances whole seconds in steps of one second.
    void seconds(int n) {
        for (int i = 0; i < n; ++i) rig.clock.advance(kCycle);
    }

    static int64_t firstAt(const std::vector<ProbeEvent>& ev, const std::string& what,
                           int64_t from = INT64_MIN) {
        for (const ProbeEvent& e : ev)
            if (e.what == what && e.ms >= from) return e.ms;
        return -1;
    }

    ControllerRig rig;
    int64_t lastCycleAfterInit = 0;
};

// Replays the readings the worker took and works out when a controller with
// the switch delay must switch: night at once, day once a day reading has
// persisted `delayMs`. Returns the expected switches as (time, 1 day / 0 night).
std::vector<std::pair<int64_t, int>> expectedSwitches(const std::vector<std::pair<int64_t, int>>& samples,
                                                      int64_t delayMs, int pendingAtStart,
                                                      int64_t restartAtStart) {
    std::vector<std::pair<int64_t, int>> out;
    int state = 1, pending = pendingAtStart;
    int64_t restart = restartAtStart;
    for (const auto& s : samples) {
        bool decided;
        if (s.second != pending) {
            pending = s.second;
            restart = s.first;
            decided = s.second == 0 || s.first - restart >= delayMs;
        } else {
            decided = s.first - restart >= delayMs;
        }
        if (decided && s.second != state) {
            // The picture turns to colour after the filter's 100 ms pause.
            out.emplace_back(s.first + (s.second == 1 ? 100 : 0), s.second);
            state = s.second;
        }
    }
    return out;
}

std::vector<std::pair<int64_t, int>> pictureSwitches(const std::vector<ProbeEvent>& ev) {
    std::vector<std::pair<int64_t, int>> out;
    for (const ProbeEvent& e : ev) {
        if (e.what == "turnPictureToDay") out.emplace_back(e.ms, 1);
        if (e.what == "turnPictureToNight") out.emplace_back(e.ms, 0);
    }
    return out;
}

// A deterministic light level: runs of random length (1 to `maxRun` seconds,
// offset by a few hundred ms so they do not line up with the worker's cycle),
// alternating between day and night.
std::function<int(int64_t)> flicker(int64_t startMs, int maxRunS, uint32_t seed) {
    std::vector<std::pair<int64_t, int>> edges;  // (from, level)
    uint32_t x = seed;
    int64_t t = startMs;
    int level = 0;
    while (t < startMs + 2 * 3600 * 1000) {
        edges.emplace_back(t, level);
        x = x * 1664525u + 1013904223u;
        t += 1000 * (1 + static_cast<int64_t>((x >> 8) % static_cast<uint32_t>(maxRunS))) + (x >> 24) % 700;
        level = 1 - level;
    }
    return [edges](int64_t now) {
        int level = 1;
        for (const auto& e : edges) {
            if (e.first > now) break;
            level = e.second;
        }
        return level;
    };
}

}  // namespace

// ---- the worker's cycle ----

TEST_F(DayNightTest, WorkerRunsOncePerSimulatedSecond) {
    ProbeController& c = start();
    int before = c.dependCalls;
    seconds(60);
    EXPECT_EQ(before + 60, c.dependCalls);
    std::vector<ProbeEvent> cycles = rig.events.only("cycle");
    ASSERT_EQ(60u, cycles.size());
    for (size_t i = 1; i < cycles.size(); ++i) EXPECT_EQ(kCycle, cycles[i].ms - cycles[i - 1].ms);
}

TEST_F(DayNightTest, SwitchingDisabledSkipsTheHandling) {
    ProbeController& c = start();
    c.setDNSwitchEnable(false);
    c.dnStatus = 0;
    seconds(5);
    EXPECT_EQ(0u, rig.events.count("turnPictureToNight"));
    EXPECT_EQ(0u, rig.events.count("dn:0"));
    EXPECT_EQ(1, c.getCurrentDNState());
    EXPECT_EQ(5u, rig.events.count("cycle"));
}

// ---- automatic mode with the sensor deciding ----

TEST_F(DayNightTest, SensorNightSwitchesInTheSameCycleDayOnlyAfterFiveSeconds) {
    ProbeController& c = start();
    const int64_t nightFrom = nextCycle();
    const int64_t dayFrom = nightFrom + 2 * kCycle;
    c.sensorDNAt = [=](int64_t now) { return now >= nightFrom && now < dayFrom ? 0 : 1; };
    seconds(12);

    std::vector<ProbeEvent> ev = rig.events.events();
    // Night: the first night reading switches at once, picture before filter.
    int64_t firstNight = firstAt(ev, "dn:0");
    ASSERT_EQ(nightFrom, firstNight);
    EXPECT_EQ(firstNight, firstAt(ev, "turnPictureToNight"));
    EXPECT_EQ(firstNight, firstAt(ev, "gpio:1,7=0"));
    // Day: only when the day reading has persisted five seconds.
    int64_t firstDay = firstAt(ev, "dn:1", firstNight);
    ASSERT_GT(firstDay, 0);
    // The reading five seconds after the first day reading decides; the filter
    // goes in after the 100 ms pause, then the picture turns to colour.
    ASSERT_GE(c.decisions.size(), 2u);
    EXPECT_EQ(firstDay + 5000, c.decisions[1]);
    int64_t dayAt = firstAt(ev, "turnPictureToDay");
    EXPECT_EQ(firstDay + 5000 + 100, dayAt);
    EXPECT_EQ(dayAt, firstAt(ev, "gpio:1,7=1"));
    std::vector<std::string> names = rig.events.names();
    auto pos = [&](const std::string& n) { return std::find(names.begin(), names.end(), n) - names.begin(); };
    EXPECT_LT(pos("turnPictureToNight"), pos("gpio:1,7=0"));
    EXPECT_LT(pos("gpio:1,7=1"), pos("turnPictureToDay"));
    EXPECT_EQ(1u, rig.events.count("turnPictureToNight"));
    EXPECT_EQ(1u, rig.events.count("turnPictureToDay"));
    EXPECT_EQ(1, c.getCurrentDNState());
    // Each later day reading is a decision too (with nothing left to drive).
    ASSERT_GE(c.twoA.size(), 2u);
    EXPECT_EQ(0, c.twoA[0]);
    EXPECT_EQ(1, c.twoA[1]);
}

TEST_F(DayNightTest, ShorterSwitchDelayIsHonoured) {
    ProbeController& c = start();
    c.setDNSwitchDelay(2);
    const int64_t nightFrom = nextCycle();
    c.sensorDNAt = [=](int64_t now) { return now >= nightFrom && now < nightFrom + 1500 ? 0 : 1; };
    seconds(8);
    std::vector<ProbeEvent> ev = rig.events.events();
    int64_t firstDay = firstAt(ev, "dn:1", nightFrom);
    EXPECT_EQ(firstDay + 2000 + 100, firstAt(ev, "turnPictureToDay"));
    int reported = 0;
    c.getDNSwitchDelay(reported);
    EXPECT_EQ(5, reported);
}

TEST_F(DayNightTest, SensorReadingThatFlickersForAnHourNeverSwitchesToDayEarly) {
    ProbeController& c = start();
    const int64_t from = nextCycle();
    c.sensorDNAt = flicker(from, 7, 12345u);
    for (int m = 0; m < 60; ++m) rig.clock.advance(60 * kCycle);

    std::vector<ProbeEvent> ev = rig.events.events();
    std::vector<std::pair<int64_t, int>> samples;
    for (const ProbeEvent& e : ev)
        if (e.what == "dn:0" || e.what == "dn:1") samples.emplace_back(e.ms, e.what == "dn:1" ? 1 : 0);
    ASSERT_GT(samples.size(), 3500u);
    // The first cycle after init saw day and restarted the delay then.
    std::vector<std::pair<int64_t, int>> expected = expectedSwitches(samples, 5000, 1, lastCycleAfterInit);
    std::vector<std::pair<int64_t, int>> actual = pictureSwitches(ev);
    EXPECT_EQ(expected, actual);
    // The flicker holds runs long enough to switch back to day now and then.
    size_t days = 0;
    for (const auto& s : actual) days += s.second;
    EXPECT_GT(days, 5u);
    EXPECT_LT(days, actual.size());
}

TEST_F(DayNightTest, FailingSensorReadingDecidesNothing) {
    ProbeController& c = start();
    c.dnStatusResult = 0;
    testing::internal::CaptureStdout();
    seconds(3);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(3u, countSubstr(out, "getCurrentDNStatus false\n"));
    EXPECT_EQ(3u, countOf(rig.errorLog(), "getDNStatusFromSensor failed"));
    EXPECT_TRUE(pictureSwitches(rig.events.events()).empty());
    EXPECT_TRUE(c.twoA.empty());
}

// ---- automatic mode with a light sensor board or a GPIO level ----

TEST_F(DayNightTest, LightSensorBoardThatFlickersForAnHourNeverSwitchesToDayEarly) {
    ProbeController& c = start([](ProbeController& self) {
        self.setDetectSource(2);
        self.setLDRBoard(true);
    });
    const int64_t from = nextCycle();
    rig.gpioRaw->levelPin = {2, 3};
    rig.gpioRaw->levelAt = flicker(from, 8, 777u);
    for (int m = 0; m < 60; ++m) rig.clock.advance(60 * kCycle);

    std::vector<std::pair<int64_t, int>> samples;
    for (const auto& s : rig.gpioRaw->samples)
        if (s.ms >= from) samples.emplace_back(s.ms, s.level == 1 ? 1 : 0);
    ASSERT_GT(samples.size(), 3500u);
    std::vector<ProbeEvent> ev = rig.events.events();
    std::vector<std::pair<int64_t, int>> actual = pictureSwitches(ev);
    // The first cycle after init could not read the board (no level yet): nothing pending.
    EXPECT_EQ(expectedSwitches(samples, 5000, -1, 0), actual);
    size_t days = 0;
    for (const auto& s : actual) days += s.second;
    EXPECT_GT(days, 5u);
    // With the board as the source, only the filter is driven (LEDs follow the board).
    EXPECT_EQ(0u, rig.events.count("gpio:1,8=0") + rig.events.count("gpio:1,8=1"));
    EXPECT_EQ(actual.size(), rig.events.count("gpio:1,7=0") + rig.events.count("gpio:1,7=1"));
    (void)c;
}

TEST_F(DayNightTest, GpioLevelWithLightSensorBoardAlsoWaitsForTheDelay) {
    start([](ProbeController& self) {
        self.setDetectSource(1);
        self.setLDRBoard(true);
    });
    const int64_t from = nextCycle();
    rig.gpioRaw->levelPin = {2, 3};
    rig.gpioRaw->levelAt = [=](int64_t now) { return now >= from && now < from + 1500 ? 0 : 1; };
    seconds(10);
    std::vector<ProbeEvent> ev = rig.events.events();
    int64_t night = firstAt(ev, "turnPictureToNight");
    EXPECT_EQ(from, night);
    // Night: picture, filter out, 100 ms, LEDs on. Day: LEDs off, 100 ms, filter in, picture.
    EXPECT_EQ(night, firstAt(ev, "gpio:1,7=0"));
    EXPECT_EQ(night + 100, firstAt(ev, "gpio:1,8=1"));
    int64_t day = firstAt(ev, "turnPictureToDay");
    EXPECT_EQ(from + 2 * kCycle + 100 + 5000 + 100, day);
    EXPECT_EQ(day - 100, firstAt(ev, "gpio:1,8=0"));
    EXPECT_EQ(day, firstAt(ev, "gpio:1,7=1"));
    std::vector<std::string> names = rig.events.names();
    auto pos = [&](const std::string& n) { return std::find(names.begin(), names.end(), n) - names.begin(); };
    EXPECT_LT(pos("turnPictureToNight"), pos("gpio:1,7=0"));
    EXPECT_LT(pos("gpio:1,7=0"), pos("gpio:1,8=1"));
    EXPECT_LT(pos("gpio:1,8=0"), pos("gpio:1,7=1"));
    EXPECT_LT(pos("gpio:1,7=1"), pos("turnPictureToDay"));
}

TEST_F(DayNightTest, GpioLevelWithoutBoardIsTakenAtOnceAndDrivesNoPin) {
    ProbeController& c = start([](ProbeController& self) { self.setDetectSource(1); });
    const int64_t from = nextCycle();
    rig.gpioRaw->levelPin = {1, 7};
    rig.gpioRaw->levelAt = [=](int64_t now) { return now >= from && now < from + 1500 ? 0 : 1; };
    seconds(6);
    std::vector<ProbeEvent> ev = rig.events.events();
    int64_t night = firstAt(ev, "turnPictureToNight");
    EXPECT_EQ(from, night);
    // No delay towards day either: the next cycle reading day switches.
    EXPECT_EQ(from + 2 * kCycle + 100 + 100, firstAt(ev, "turnPictureToDay"));
    // The filter pin is read, not driven.
    EXPECT_EQ(0u, rig.gpioRaw->writeCount());
    EXPECT_EQ(1, c.getCurrentDNState());
}

TEST_F(DayNightTest, UnreadableLevelsAreLogged) {
    ProbeController& c = start([](ProbeController& self) { self.setDetectSource(1); });
    rig.gpioRaw->failReads = true;
    size_t before = countOf(rig.errorLog(), "GPIO(7) get DNLevel failed value = -1");
    seconds(1);
    EXPECT_EQ(before + 1, countOf(rig.errorLog(), "GPIO(7) get DNLevel failed value = -1"));
    c.setLDRBoard(true);
    seconds(1);
    EXPECT_EQ(1u, countOf(rig.errorLog(), "GPIO(3) get DNLevel failed value = -1"));
    EXPECT_EQ(1u, countOf(rig.errorLog(), "getDNStatusFromLDR failed"));
    // A board source without a board gives no status and no message.
    c.setLDRBoard(false);
    c.setDetectSource(2);
    size_t lines = rig.errorLog().size();
    testing::internal::CaptureStdout();
    seconds(1);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(lines, rig.errorLog().size());
    EXPECT_EQ(1u, countSubstr(out, "getCurrentDNStatus false\n"));
    EXPECT_TRUE(pictureSwitches(rig.events.events()).empty());
}

TEST_F(DayNightTest, SerialPanTiltModuleAsksTheSensorAndDrivesNoPin) {
    ProbeController& c = start([](ProbeController& self) {
        self.setDetectSource(1);
        self.setSerialPTZ(true);
    });
    c.dnStatus = 0;
    seconds(2);
    EXPECT_EQ(1u, rig.events.count("turnPictureToNight"));
    EXPECT_GE(rig.events.count("dn:0"), 1u);
    EXPECT_EQ(0u, rig.gpioRaw->writeCount());
}

// ---- fixed modes and the sensor's own switching ----

TEST_F(DayNightTest, FixedModesSwitchAtOnceAndAModeChangeDrivesTheHardwareAgain) {
    ProbeController& c = start();
    EXPECT_EQ(1, c.setDayNightMode(2));
    EXPECT_EQ(1, c.manualCalls.load());
    EXPECT_EQ(2, c.getStoredDayNightMode());
    seconds(1);
    EXPECT_EQ(1u, rig.events.count("turnPictureToNight"));
    seconds(3);
    EXPECT_EQ(0, c.getCurrentDNState());
    EXPECT_EQ(1u, rig.events.count("turnPictureToNight"));
    EXPECT_EQ(2, c.getLastDayNightMode());

    c.setDayNightMode(1);
    seconds(2);
    EXPECT_EQ(1u, rig.events.count("turnPictureToDay"));
    EXPECT_EQ(1, c.getCurrentDNState());
    // Back to automatic while the sensor says day: the mode change restarts
    // the delay, the cycles without a decision take the new mode over, so the
    // day state is not driven again.
    c.setDayNightMode(0);
    EXPECT_EQ(1, c.autoCalls.load());
    seconds(1);
    EXPECT_EQ(0, c.getLastDayNightMode());
    seconds(6);
    EXPECT_EQ(1u, rig.events.count("turnPictureToDay"));
    // Fixed day while already day: the mode change alone re-drives day once.
    c.setDayNightMode(1);
    seconds(3);
    EXPECT_EQ(2u, rig.events.count("turnPictureToDay"));
    EXPECT_EQ(3, c.manualCalls.load());
}

TEST_F(DayNightTest, SensorDecidesModeCallsEnterAutoModeOnceAndDrivesNothing) {
    ProbeController& c = start();
    c.setDayNightMode(4);
    EXPECT_EQ(0, c.autoCalls.load());
    EXPECT_EQ(0, c.manualCalls.load());
    c.dnStatus = 0;
    seconds(1);
    EXPECT_EQ(1, c.enterAutoCalls);
    EXPECT_EQ(0, c.getCurrentDNState());
    EXPECT_EQ(4, c.getLastDayNightMode());
    c.dnStatus = 1;
    seconds(1);
    EXPECT_EQ(1, c.getCurrentDNState());
    seconds(3);
    EXPECT_EQ(1, c.enterAutoCalls);
    EXPECT_EQ((std::vector<int>{0, 1, 1, 1, 1}), c.twoA);
    EXPECT_TRUE(pictureSwitches(rig.events.events()).empty());
    EXPECT_EQ(0u, rig.gpioRaw->writeCount());
}

TEST_F(DayNightTest, ModeOutOfRangeIsReportedEverySecondAndNothingSwitches) {
    ProbeController& c = start();
    EXPECT_EQ(1, c.setDayNightMode(7));
    EXPECT_EQ(7, c.getStoredDayNightMode());
    EXPECT_EQ(0, c.autoCalls.load());
    EXPECT_EQ(0, c.manualCalls.load());
    c.dnStatus = 0;
    seconds(10);
    EXPECT_EQ(10u, countOf(rig.errorLog(), "====error=====,m_nDayNightMode out of range"));
    EXPECT_TRUE(pictureSwitches(rig.events.events()).empty());
    EXPECT_EQ(0u, rig.gpioRaw->writeCount());
    EXPECT_TRUE(c.twoA.empty());
    EXPECT_EQ(7, c.getLastDayNightMode());
    EXPECT_EQ(1, c.getCurrentDNState());
}

TEST_F(DayNightTest, ErrorLogKeepsThreeFilesOf10240Bytes) {
    ProbeController& c = start();
    c.logCycles = false;
    c.setDayNightMode(9);
    for (int m = 0; m < 10; ++m) rig.clock.advance(60 * kCycle);
    const std::string log = testutil::kErrorLogPath;
    ASSERT_TRUE(rig.root.exists(log + ".1"));
    ASSERT_TRUE(rig.root.exists(log + ".2"));
    EXPECT_FALSE(rig.root.exists(log + ".3"));
    size_t total = 0;
    for (const std::string& f : {log, log + ".1", log + ".2"}) {
        std::string text = rig.root.read(f);
        EXPECT_LE(text.size(), 10240u) << f;
        EXPECT_GT(text.size(), 0u) << f;
        total += testutil::countSubstr(text, "[SensorError] ====error=====,m_nDayNightMode out of range\n");
    }
    // The newest lines are kept: at least the last two full files' worth.
    EXPECT_GT(total, 2u * 10240u / 100u);
}

TEST_F(DayNightTest, HighDynamicRangeModeThreeFollowsTheState) {
    ProbeController& c = start([](ProbeController& self) { self.setHDRMode(3); });
    c.setDayNightMode(2);
    seconds(2);
    c.setDayNightMode(1);
    seconds(2);
    // Day at start-up, then night and day again.
    EXPECT_EQ((std::vector<int>{1, 2, 1}), c.hdrModes);
    std::vector<std::string> names = rig.events.names();
    auto pos = [&](const std::string& n) { return std::find(names.begin(), names.end(), n) - names.begin(); };
    EXPECT_LT(pos("updateHDRMode:2"), pos("turnPictureToNight"));
    EXPECT_LT(pos("updateHDRMode:1"), pos("gpio:1,7=1"));
}

TEST_F(DayNightTest, ModeChangeWaitsForTheSwitchInProgress) {
    ProbeController& c = start();
    c.setDayNightMode(2);
    toNextCycle();
    // The worker has driven the filter and holds the switch through its 100 ms pause.
    ASSERT_EQ(1u, rig.events.count("turnPictureToNight"));
    ASSERT_EQ(1, c.getCurrentDNState());
    std::atomic<bool> done{false};
    std::atomic<int> stateSeen{-1};
    std::thread app([&] {
        c.setDayNightMode(1);
        stateSeen = c.getCurrentDNState();
        done = true;
    });
    for (int i = 0; i < 20 && !done.load(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_FALSE(done.load());
    rig.clock.advance(100);
    app.join();
    // The mode was stored only once the night switch had finished.
    EXPECT_EQ(0, stateSeen.load());
    EXPECT_EQ(1, c.getStoredDayNightMode());
    seconds(2);
    EXPECT_EQ(1u, rig.events.count("turnPictureToDay"));
}

// ---- failures of the hardware steps ----

TEST_F(DayNightTest, FailingFilterWritePausesOneSecondAndIsRetriedNextCycle) {
    ProbeController& c = start();
    toNextCycle();
    rig.events.clear();
    rig.gpioRaw->failNextWrites = 1;
    c.setDayNightMode(2);
    testing::internal::CaptureStdout();
    seconds(4);
    std::string out = testing::internal::GetCapturedStdout();
    std::vector<ProbeEvent> ev = rig.events.events();
    int64_t failed = firstAt(ev, "gpio-fail:1,7=0");
    ASSERT_GT(failed, 0);
    // The failed cycle: one second of pause, then the cycle's own second.
    int64_t retried = firstAt(ev, "gpio:1,7=0");
    EXPECT_EQ(failed + 2000, retried);
    std::vector<ProbeEvent> cycles = rig.events.only("cycle");
    ASSERT_GE(cycles.size(), 2u);
    EXPECT_EQ(failed, cycles[0].ms);
    EXPECT_EQ(retried, cycles[1].ms);
    EXPECT_EQ(2u, rig.events.count("turnPictureToNight"));
    EXPECT_EQ(0, c.getCurrentDNState());
    std::vector<std::string> err = rig.errorLog();
    EXPECT_EQ(1u, countOf(err, "gpio set filter failed"));
    EXPECT_EQ(1u, countOf(err, "SwitchInfraredIrCutToNight failed"));
    EXPECT_EQ(1u, countSubstr(out, "enterNightMode failed\n"));
    EXPECT_EQ(2u, countSubstr(out, "!!!enterNightMode\n"));
}

TEST_F(DayNightTest, FailingLampWriteOnTheWayToDayIsRetriedNextCycle) {
    ProbeController& c = start([](ProbeController& self) {
        self.setDetectSource(1);
        self.setLDRBoard(true);
    });
    rig.gpioRaw->levelPin = {2, 3};
    rig.gpioRaw->levelAt = [](int64_t) { return 1; };
    c.setDayNightMode(2);
    seconds(2);
    ASSERT_EQ(0, c.getCurrentDNState());
    toNextCycle();
    rig.events.clear();
    rig.gpioRaw->failNextWrites = 1;
    c.setDayNightMode(1);
    testing::internal::CaptureStdout();
    seconds(4);
    std::string out = testing::internal::GetCapturedStdout();
    std::vector<ProbeEvent> ev = rig.events.events();
    int64_t failed = firstAt(ev, "gpio-fail:1,8=0");
    ASSERT_GT(failed, 0);
    EXPECT_EQ(failed + 2000, firstAt(ev, "gpio:1,8=0", failed));
    EXPECT_EQ(1u, countOf(rig.errorLog(), "gpio set infrared failed"));
    EXPECT_EQ(1u, countOf(rig.errorLog(), "SwitchInfraredIrCutToDay failed"));
    EXPECT_EQ(1u, countSubstr(out, "enterDayMode failed\n"));
    EXPECT_EQ(1, c.getCurrentDNState());
    // The picture was not touched by the failed attempt.
    EXPECT_EQ(failed + 2000 + 100, firstAt(ev, "turnPictureToDay", failed));
}

// ---- timetable ----

TEST_F(DayNightTest, TimetableAroundBothSwitchTimes) {
    ProbeController& c = start();
    EXPECT_EQ(1, c.setDTNTime_H(18));
    EXPECT_EQ(1, c.setDTNTime_M(0));
    EXPECT_EQ(1, c.setNTDTime_H(6));
    EXPECT_EQ(1, c.setNTDTime_M(0));
    ASSERT_EQ(1800, c.dtnTime());
    ASSERT_EQ(600, c.ntdTime());
    struct Case {
        int h, m, status;
    } cases[] = {{17, 59, 1}, {18, 0, 0}, {23, 59, 0}, {0, 0, 0}, {5, 59, 0}, {6, 0, 1}, {12, 0, 1}};
    for (const Case& k : cases) {
        rig.clock.setTime(k.h, k.m, 30);
        int status = -1;
        EXPECT_EQ(1, c.DNSwitchByTime(status));
        EXPECT_EQ(k.status, status) << k.h << ":" << k.m;
        EXPECT_EQ(k.h * 100 + k.m, c.dnsTime());
    }
}

TEST_F(DayNightTest, TimetableWithNightInsideTheDay) {
    ProbeController& c = start();
    c.setSwitchTimes(100, 500);
    struct Case {
        int h, m, status;
    } cases[] = {{0, 59, 1}, {1, 0, 0}, {4, 59, 0}, {5, 0, 1}, {18, 0, 1}};
    for (const Case& k : cases) {
        rig.clock.setTime(k.h, k.m);
        int status = -1;
        EXPECT_EQ(1, c.DNSwitchByTime(status));
        EXPECT_EQ(k.status, status) << k.h << ":" << k.m;
    }
}

TEST_F(DayNightTest, TimetableNeverSetIsAlwaysDay) {
    ProbeController& c = start();
    ASSERT_EQ(6677, c.dtnTime());
    ASSERT_EQ(8899, c.ntdTime());
    for (int minute = 0; minute < 24 * 60; ++minute) {
        rig.clock.setTime(minute / 60, minute % 60);
        int status = -1;
        EXPECT_EQ(1, c.DNSwitchByTime(status));
        EXPECT_EQ(1, status) << minute;
    }
    int h = -1, m = -1;
    c.getDTNTime_H(h);
    c.getDTNTime_M(m);
    EXPECT_EQ(18, h);
    EXPECT_EQ(0, m);
    c.getNTDTime_H(h);
    c.getNTDTime_M(m);
    EXPECT_EQ(6, h);
    EXPECT_EQ(0, m);
}

TEST_F(DayNightTest, TimetableWithEqualTimesDecidesNothing) {
    ProbeController& c = start();
    c.setSwitchTimes(1200, 1200);
    int status = -1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, c.DNSwitchByTime(status));
    EXPECT_EQ(-1, status);
    c.setDayNightMode(3);
    seconds(2);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(3u, countSubstr(out, "Error @ DNSwitchByTime\n"));
    EXPECT_EQ(2u, countSubstr(out, "=====error!=====nCurrentDNStatus out of range,nCurrentDNStatus=-1\n"));
    EXPECT_TRUE(pictureSwitches(rig.events.events()).empty());
    EXPECT_EQ((std::vector<int>{-1, -1}), c.twoA);
}

TEST_F(DayNightTest, TimetableOverFortyEightHours) {
    ProbeController& c = start(nullptr, 12, 0);
    c.logCycles = false;
    c.setDTNTime_H(18);
    c.setDTNTime_M(0);
    c.setNTDTime_H(6);
    c.setNTDTime_M(0);
    c.setDayNightMode(3);
    for (int h = 0; h < 48; ++h) rig.clock.advance(3600 * kCycle);

    std::vector<ProbeEvent> ev;
    for (const ProbeEvent& e : rig.events.events())
        if (e.what == "turnPictureToDay" || e.what == "turnPictureToNight") ev.push_back(e);
    // The new mode re-drives day at once, then night at 18:00 and day at 06:00, twice.
    ASSERT_EQ(5u, ev.size());
    EXPECT_EQ("turnPictureToDay", ev[0].what);
    EXPECT_EQ(12, ev[0].hour);
    const char* names[] = {"turnPictureToNight", "turnPictureToDay", "turnPictureToNight",
                           "turnPictureToDay"};
    const int hours[] = {18, 6, 18, 6};
    for (int i = 0; i < 4; ++i) {
        const ProbeEvent& e = ev[static_cast<size_t>(i) + 1];
        EXPECT_EQ(names[i], e.what) << i;
        EXPECT_EQ(hours[i], e.hour) << i;
        EXPECT_EQ(0, e.minute) << i;
        EXPECT_LE(e.second, 1) << i;
    }
    // 18:00 on the first day to 18:00 on the second day, within a cycle.
    EXPECT_NEAR(static_cast<double>(ev[3].ms - ev[1].ms), 24.0 * 3600 * 1000, 1100.0);
    EXPECT_NEAR(static_cast<double>(ev[2].ms - ev[1].ms), 12.0 * 3600 * 1000, 1100.0);
    EXPECT_EQ(1, c.getCurrentDNState());
    EXPECT_EQ(3, c.getLastDayNightMode());
}

TEST_F(DayNightTest, EqualSwitchTimesAreRefusedAfterInit) {
    ProbeController& c = start();
    c.setDTNTime_H(18);
    c.setDTNTime_M(0);
    c.setNTDTime_H(6);
    c.setNTDTime_M(0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, c.setDTNTime_H(6));
    EXPECT_EQ(0, c.setNTDTime_H(18));
    EXPECT_EQ(1, c.setDTNTime_M(30));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(1800 + 30, c.dtnTime());
    EXPECT_EQ(600, c.ntdTime());
    std::vector<std::string> err = rig.errorLog();
    EXPECT_EQ(1u, countOf(err, "failed:DTNTIME == NTDTIME,value = 600"));
    EXPECT_EQ(1u, countOf(err, "failed:DTNTIME == NTDTIME,value = 1800"));
    EXPECT_EQ(std::string::npos, out.find("set DTN time:600"));
    EXPECT_NE(std::string::npos, out.find("set DTN time:1830\n"));

    // During a reset the times arrive one part at a time: no check.
    c.setResettingFlag(true);
    EXPECT_EQ(1, c.setNTDTime_H(18));
    EXPECT_EQ(1, c.setNTDTime_M(30));
    EXPECT_EQ(1830, c.ntdTime());
    c.setResettingFlag(false);
}

TEST_F(DayNightTest, EqualSwitchTimesAreAcceptedBeforeInit) {
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make();
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, c.setDTNTime_H(88));
    EXPECT_EQ(1, c.setDTNTime_M(99));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(8899, c.dtnTime());
    EXPECT_NE(std::string::npos, out.find("set DTN time:8877\nset DTN time:8899\n"));
}

// ---- infrared lamp commands ----

TEST_F(DayNightTest, LampCommandsCheckTheirRangeFirst) {
    ProbeController& c = start([](ProbeController& self) { self.setDetectSource(2); });
    EXPECT_EQ(0, c.setNearLight(101));
    EXPECT_EQ(0, c.setNearLight(-1));
    EXPECT_EQ(0, c.setMiddleLight(200));
    EXPECT_EQ(0, c.setFarLight(-5));
    EXPECT_EQ(0, c.setPowerMode(2));
    EXPECT_TRUE(c.lampPackets.empty());
    std::vector<std::string> err = rig.errorLog();
    EXPECT_EQ(1u, countOf(err, "setNearLight(101) out of range"));
    EXPECT_EQ(1u, countOf(err, "setNearLight(-1) out of range"));
    EXPECT_EQ(1u, countOf(err, "setMiddleLight(200) out of range"));
    EXPECT_EQ(1u, countOf(err, "setFarLight(-5) out of range"));
    EXPECT_EQ(1u, countOf(err, "setPowerMode(2) out of range"));
}

TEST_F(DayNightTest, LampCommandsWithoutInfraredBoardSendNothing) {
    ProbeController& c = start();
    EXPECT_EQ(0, c.setNearLight(101));
    EXPECT_EQ(1, c.setNearLight(100));
    EXPECT_EQ(1, c.setMiddleLight(0));
    EXPECT_EQ(1, c.setFarLight(50));
    EXPECT_EQ(1, c.setPowerMode(1));
    EXPECT_TRUE(c.lampPackets.empty());
    int v = -1;
    c.getNearLight(v);
    EXPECT_EQ(50, v);
    c.getPowerMode(v);
    EXPECT_EQ(0, v);
}

TEST_F(DayNightTest, LampPacketsCarryCommandValueAndChecksum) {
    ProbeController& c = start([](ProbeController& self) { self.setDetectSource(1); });
    EXPECT_EQ(1, c.setPowerMode(1));
    EXPECT_EQ(1, c.setNearLight(100));
    EXPECT_EQ(1, c.setMiddleLight(0));
    EXPECT_EQ(1, c.setFarLight(55));
    ASSERT_EQ(4u, c.lampPackets.size());
    auto bytes = [](const std::string& s) {
        std::vector<int> out;
        for (char ch : s) out.push_back(static_cast<unsigned char>(ch));
        return out;
    };
    EXPECT_EQ((std::vector<int>{0xFE, 0x01, 0x1E, 0x02, 1, 1, 0x23, 0xFF}), bytes(c.lampPackets[0]));
    EXPECT_EQ((std::vector<int>{0xFE, 0x01, 0x1E, 0x02, 6, 100, 0x8B, 0xFF}), bytes(c.lampPackets[1]));
    EXPECT_EQ((std::vector<int>{0xFE, 0x01, 0x1E, 0x02, 7, 0, 0x28, 0xFF}), bytes(c.lampPackets[2]));
    EXPECT_EQ((std::vector<int>{0xFE, 0x01, 0x1E, 0x02, 8, 55, 0x60, 0xFF}), bytes(c.lampPackets[3]));
    for (const std::string& p : c.lampPackets) {
        unsigned char u[8];
        std::memcpy(u, p.data(), 8);
        u[6] = 0x5A;
        ISensorController::computeSum(u, 8);
        EXPECT_EQ(static_cast<unsigned char>(p[6]), u[6]);
    }
}

// ---- destruction while the worker waits ----

namespace {
int64_t realMsToDestroy(ControllerRig& rig) {
    auto t0 = std::chrono::steady_clock::now();
    rig.ctl.reset();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - t0)
        .count();
}
}  // namespace

TEST_F(DayNightTest, DestroyWhileTheWorkerWaitsForItsNextCycle) {
    start();
    seconds(3);
    ASSERT_TRUE(rig.ctl->getDayNightThread().isRunning());
    EXPECT_LT(realMsToDestroy(rig), 100);
}

TEST_F(DayNightTest, DestroyWhileTheWorkerIsInTheFilterPause) {
    ProbeController& c = start();
    c.setDayNightMode(2);
    toNextCycle();
    // The cycle has driven the filter and waits its 100 ms.
    ASSERT_EQ(1u, rig.events.count("gpio:1,7=0"));
    ASSERT_EQ(1, c.getCurrentDNState());
    EXPECT_LT(realMsToDestroy(rig), 100);
}

TEST_F(DayNightTest, DestroyWhileTheWorkerPausesAfterAFailedWrite) {
    ProbeController& c = start();
    rig.gpioRaw->failWrites = true;
    c.setDayNightMode(2);
    toNextCycle();
    rig.clock.advance(500);
    ASSERT_EQ(1u, countOf(rig.errorLog(), "gpio set filter failed"));
    ASSERT_EQ(0u, countOf(rig.errorLog(), "SwitchInfraredIrCutToNight failed"));
    EXPECT_LT(realMsToDestroy(rig), 100);
}

TEST_F(DayNightTest, DestroyWhileTheDriversPeriodicWorkWaits) {
    ProbeController& c = start();
    c.dependWork = [] { KestraTime(3600, 0).wait(); };
    toNextCycle();
    rig.clock.advance(10 * kCycle);
    EXPECT_EQ(1u, rig.events.count("cycle"));
    EXPECT_LT(realMsToDestroy(rig), 100);
}
