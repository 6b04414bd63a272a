// `camsim replay`: every shipped scenario replayed through the simulator camera
// on the virtual clock, guard off and on, against the outcome written beside it
// (sim/scenarios/NAME.expect); and the guard's bargain over all of them.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "camsim/ScenarioReplay.h"

namespace {

using camsim::ReplayReport;
using camsim::Scenario;
using camsim::ScenarioReplay;

const char* const kScenarios[] = {"clear-day", "overcast-day", "dusk-headlights", "porch-ir-reflection",
                                  "streetlamp-night"};

std::string scenarioPath(const std::string& name, const char* ext) {
    return std::string(SENSORCTL_SOURCE_DIR) + "/sim/scenarios/" + name + ext;
}

ReplayReport replay(const std::string& name, bool guard) {
    Scenario scenario;
    std::string error;
    EXPECT_TRUE(scenario.load(scenarioPath(name, ".csv"), error)) << error;
    ScenarioReplay::Options options;
    if (guard) {
        options.guardHoldOff = ScenarioReplay::kDefaultHoldOff;
        options.guardCeiling = ScenarioReplay::kDefaultCeiling;
    }
    ReplayReport report;
    EXPECT_TRUE(ScenarioReplay::run(scenario, options, report, error)) << error;
    return report;
}

std::string listTransitions(const ReplayReport& r) {
    std::string out;
    for (size_t i = 0; i < r.transitions.size() && i < 40; ++i)
        out += Scenario::clockText(r.transitions[i].seconds) + (r.transitions[i].state ? " day\n" : " night\n");
    return out;
}

void checkAgainstExpectations(const std::string& name, bool guard, const ReplayReport& r) {
    std::ifstream in(scenarioPath(name, ".expect"));
    ASSERT_TRUE(in) << "no expectations for " << name;
    std::string line;
    int checked = 0;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream words(line);
        std::string who, key;
        words >> who >> key;
        if (who != "both" && who != (guard ? "on" : "off")) continue;
        ++checked;
        SCOPED_TRACE(name + (guard ? " guard on: " : " guard off: ") + line);
        if (key == "at") {
            std::string clock, state;
            int tolerance = 3;
            words >> clock >> state;
            if (!(words >> tolerance)) tolerance = 3;
            int at = 0;
            ASSERT_TRUE(Scenario::parseClock(clock, at));
            bool found = false;
            for (const ReplayReport::Transition& t : r.transitions)
                if (std::abs(t.seconds - at) <= tolerance && t.state == (state == "day" ? 1 : 0)) found = true;
            EXPECT_TRUE(found) << "transitions:\n" << listTransitions(r);
            continue;
        }
        double lo = 0, hi = 0;
        words >> lo;
        if (!(words >> hi)) hi = lo;
        double value = 0;
        if (key == "to_night") value = r.toNight();
        else if (key == "to_day") value = r.toDay();
        else if (key == "worst_hour") value = r.worstHourFlips();
        else if (key == "mean_flips") value = r.meanFlipsPerHour();
        else if (key == "wrong") value = r.wrongSeconds;
        else ADD_FAILURE() << "unknown key " << key;
        EXPECT_GE(value, lo) << "transitions:\n" << listTransitions(r);
        EXPECT_LE(value, hi) << "transitions:\n" << listTransitions(r);
    }
    EXPECT_GT(checked, 4);
}

void checkConsistent(const ReplayReport& r) {
    EXPECT_EQ(static_cast<size_t>(r.endSeconds - r.startSeconds), r.samples.size());
    EXPECT_EQ(r.wrongSeconds, r.wrongDaySeconds + r.wrongNightSeconds);
    // Every switch drives the IR-cut filter and the lamps (two GPIO writes) and turns
    // the picture (one ISP command); a switch in the camera's first cycle, during its
    // start, is not counted.
    EXPECT_LE(2 * static_cast<int>(r.transitions.size()) - 2, r.gpioWrites);
    EXPECT_GE(2 * static_cast<int>(r.transitions.size()), r.gpioWrites);
    EXPECT_GE(r.ispSets, static_cast<int>(r.transitions.size()) - 1);
    EXPECT_GT(r.ispReads, 0);
    // The light sensor sees the lamps: scene + reflection while they are lit.
    for (const ReplayReport::Sample& s : r.samples)
        ASSERT_NEAR(std::min(100.0, s.scene + (s.lamps ? r.reflection : 0.0)), s.sensor, 1e-3);
    const std::string svg = r.svg();
    EXPECT_EQ(0u, svg.find("<svg "));
    EXPECT_NE(std::string::npos, svg.find("night threshold 30"));
    EXPECT_NE(std::string::npos, svg.find("</svg>"));
}

class ScenarioReplayTest : public ::testing::TestWithParam<const char*> {};

// Each shipped scenario, guard off and on, against its expectations; and the guard's
// bargain: the flapping porch calms down to at most 2 flips in its worst hour, and no
// other scenario loses more than a minute of right-mode time.
TEST_P(ScenarioReplayTest, MatchesTheExpectationsGuardOffAndOn) {
    const std::string name = GetParam();
    const ReplayReport off = replay(name, false);
    const ReplayReport on = replay(name, true);
    checkAgainstExpectations(name, false, off);
    checkAgainstExpectations(name, true, on);
    checkConsistent(off);
    checkConsistent(on);
    std::printf("  %-20s off: %4zu flips, worst hour %3d, mean %6.2f/h, wrong %4d s | on: %3zu flips, worst hour "
                "%3d, mean %5.2f/h, wrong %4d s\n",
                name.c_str(), off.transitions.size(), off.worstHourFlips(), off.meanFlipsPerHour(), off.wrongSeconds,
                on.transitions.size(), on.worstHourFlips(), on.meanFlipsPerHour(), on.wrongSeconds);
    if (name == "porch-ir-reflection") {
        EXPECT_GT(off.worstHourFlips(), 100);
        EXPECT_LE(on.worstHourFlips(), 2);
    } else {
        EXPECT_LE(on.wrongSeconds - off.wrongSeconds, 60);
    }
}

INSTANTIATE_TEST_SUITE_P(Shipped, ScenarioReplayTest, ::testing::ValuesIn(kScenarios),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             std::string n;
                             for (const char* p = info.param; *p; ++p) n += (*p == '-') ? '_' : *p;
                             return n;
                         });

TEST(ScenarioReplayOptionTest, ReflectionOptionOverridesTheScenario) {
    // The porch's dusk: with its own reflection (50) the camera flaps; with the option's 5
    // (a wall painted black) it turns to night once, when the scene reads 30.
    Scenario scenario;
    std::string error;
    ASSERT_TRUE(scenario.parse("reflection,50\n18:00:00,40\n19:00:00,2\n", "dusk", error)) << error;
    ReplayReport r;
    ASSERT_TRUE(ScenarioReplay::run(scenario, ScenarioReplay::Options(), r, error)) << error;
    EXPECT_EQ(50, r.reflection);
    EXPECT_GT(r.transitions.size(), 200u);
    ScenarioReplay::Options options;
    options.reflection = 5;
    ASSERT_TRUE(ScenarioReplay::run(scenario, options, r, error)) << error;
    EXPECT_EQ(5, r.reflection);
    ASSERT_EQ(1u, r.transitions.size()) << listTransitions(r);
    // 40 - 38 * s / 3600 < 30.5 from 18:15:00 on: night in the next second.
    EXPECT_NEAR(18 * 3600 + 15 * 60 + 2, r.transitions[0].seconds, 2);
    EXPECT_EQ(0, r.transitions[0].state);
}

// The gain column reaches the library: the simulated ISP reports it, the fisheye
// controller reads it, and the gain-indexed table of the camera's ISPParam.xml picks its
// band (temporal noise reduction A0: -1 below 24, 24 below 48, 40 below 72, 64 above).
TEST(ScenarioReplayOptionTest, GainColumnPicksTheGainTableRow) {
    Scenario scenario;
    std::string error;
    ASSERT_TRUE(scenario.parse("time,light,gain\n12:00:00,80,10\n12:01:00,80,10\n12:01:01,80,60\n"
                               "12:02:00,80,60\n12:02:01,80,90\n12:03:00,80,90\n12:03:01,80,30\n12:04:00,80,30\n",
                               "gain", error))
        << error;
    ReplayReport r;
    ASSERT_TRUE(ScenarioReplay::run(scenario, ScenarioReplay::Options(), r, error)) << error;
    ASSERT_EQ(240u, r.samples.size());
    // The ISP loop runs once a second: each band is in force a few seconds after the change.
    const struct {
        int second;
        int gain;
        int a0;
    } expected[] = {{50, 10, -1}, {110, 60, 40}, {170, 90, 64}, {230, 30, 24}};
    for (const auto& e : expected) {
        SCOPED_TRACE(e.second);
        EXPECT_EQ(e.gain, r.samples[static_cast<size_t>(e.second)].gain);
        EXPECT_EQ(e.a0, r.samples[static_cast<size_t>(e.second)].a0);
    }
}

}  // namespace
