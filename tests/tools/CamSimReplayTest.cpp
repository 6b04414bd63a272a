// `camsim replay` as a user runs it: the report, --json, --svg, and bad
// scenarios refused with their line before anything runs.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "TestRoot.h"
#include "tools/CamsimChild.h"

namespace {

std::string scenario(const char* name) { return std::string(SENSORCTL_SOURCE_DIR) + "/sim/scenarios/" + name; }

TEST(CamSimReplayTest, PrintsTheReportAndDrawsTheTimeline) {
    testutil::TempRoot dir;
    const std::string svg = dir.dir() + "/street.svg";
    CamsimChild::Result r =
        CamsimChild::run({"replay", scenario("streetlamp-night.csv"), "--svg", svg}, 120);
    ASSERT_TRUE(r.started);
    EXPECT_EQ(0, r.exitCode) << r.output;
    EXPECT_NE(std::string::npos, r.output.find("transitions: 1 to night, 1 to day")) << r.output;
    EXPECT_NE(std::string::npos, r.output.find("to night")) << r.output;
    EXPECT_NE(std::string::npos, r.output.find("flips per hour: worst 1")) << r.output;
    EXPECT_NE(std::string::npos, r.output.find("GPIO writes: ")) << r.output;
    EXPECT_NE(std::string::npos, r.output.find("flash: ")) << r.output;
    std::ifstream in(svg);
    std::stringstream text;
    text << in.rdbuf();
    EXPECT_EQ(0u, text.str().find("<svg ")) << text.str().substr(0, 200);
    EXPECT_NE(std::string::npos, text.str().find("IR lamps"));
}

TEST(CamSimReplayTest, JsonIsOneObjectWithTheFigures) {
    CamsimChild::Result r =
        CamsimChild::run({"replay", scenario("dusk-headlights.csv"), "--json", "--anti-flap=600,1800"}, 120);
    ASSERT_TRUE(r.started);
    EXPECT_EQ(0, r.exitCode) << r.output;
    EXPECT_EQ('{', r.output.front()) << r.output;
    EXPECT_EQ("}\n", r.output.substr(r.output.size() - 2)) << r.output;
    for (const char* key : {"\"to_night\":5", "\"to_day\":4", "\"guard\":{\"on\":true,\"hold_off_s\":600",
                            "\"flips_per_hour\":{\"worst\":4", "\"wrong_mode_s\":", "\"latency_s\":",
                            "\"gpio_writes\":18", "\"flash_bytes\":"})
        EXPECT_NE(std::string::npos, r.output.find(key)) << key << "\n" << r.output;
}

TEST(CamSimReplayTest, BadScenariosAreRefusedWithTheirLineAndNothingRuns) {
    testutil::TempRoot dir;
    struct Case {
        std::string text;
        std::string message;
    } cases[] = {
        {"00:00:00,1\n02:00:00,5\n01:00:00,9\n", "bad.csv:3: time 01:00:00 is not after the previous row's 02:00:00"},
        {"00:00:00,1\n02:00:00,500\n", "bad.csv:2: light '500' is not a level from 0 to 100"},
        {"00:00:00,1\n02:00:00\n", "bad.csv:2: missing column"},
        {"", "bad.csv: no rows"},
        {std::string("\x89PNG\r\n\x1a\n\0\0", 10), "bad.csv:1: byte 0x89 at column 1: not a text line"},
    };
    for (const Case& c : cases) {
        const std::string path = dir.dir() + "/bad.csv";
        {
            std::ofstream f(path, std::ios::binary | std::ios::trunc);
            f << c.text;
        }
        CamsimChild::Result r = CamsimChild::run({"replay", path}, 30);
        ASSERT_TRUE(r.started);
        EXPECT_EQ(2, r.exitCode) << r.output;
        EXPECT_NE(std::string::npos, r.output.find(c.message)) << r.output;
        EXPECT_EQ(std::string::npos, r.output.find("transitions")) << r.output;
    }
    CamsimChild::Result r = CamsimChild::run({"replay"}, 30);
    EXPECT_EQ(2, r.exitCode);
    EXPECT_NE(std::string::npos, r.output.find("usage: camsim replay")) << r.output;
    r = CamsimChild::run({"replay", scenario("clear-day.csv"), "--reflection", "101"}, 30);
    EXPECT_EQ(2, r.exitCode);
    EXPECT_NE(std::string::npos, r.output.find("--reflection wants 0-100")) << r.output;
}

}  // namespace
