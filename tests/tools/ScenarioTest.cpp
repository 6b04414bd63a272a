// Scenario files of `camsim replay`: the rows, the interpolation and every refusal.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "TestRoot.h"
#include "camsim/Scenario.h"

namespace {

using camsim::Scenario;

std::string refusal(const std::string& text) {
    Scenario s;
    std::string error;
    EXPECT_FALSE(s.parse(text, "s.csv", error)) << text;
    EXPECT_TRUE(s.rows().empty());
    return error;
}

TEST(ScenarioTest, ReadsRowsHeaderReflectionAndInterpolates) {
    Scenario s;
    std::string error;
    ASSERT_TRUE(s.parse("# a comment\n\nreflection, 40\ntime,light\n06:00:00,10\n07:00:00,70\r\n"
                        "24:30:00, 0\n",
                        "s.csv", error))
        << error;
    ASSERT_EQ(3u, s.rows().size());
    EXPECT_EQ(40, s.reflection());
    EXPECT_FALSE(s.hasGain());
    EXPECT_EQ(6 * 3600, s.startSeconds());
    EXPECT_EQ(24 * 3600 + 1800, s.endSeconds());
    EXPECT_DOUBLE_EQ(10, s.lightAt(0));          // flat before the first row
    EXPECT_DOUBLE_EQ(40, s.lightAt(6.5 * 3600));  // half way
    EXPECT_DOUBLE_EQ(70, s.lightAt(7 * 3600));
    EXPECT_DOUBLE_EQ(35, s.lightAt(7 * 3600 + 17.5 * 3600 / 2));
    EXPECT_DOUBLE_EQ(0, s.lightAt(40 * 3600));    // flat after the last
    EXPECT_DOUBLE_EQ(-1, s.gainAt(7 * 3600));
}

TEST(ScenarioTest, GainColumnIsInterpolatedToo) {
    Scenario s;
    std::string error;
    ASSERT_TRUE(s.parse("time,light,gain\n00:00:00,0,100\n00:00:10,50,0\n", "s.csv", error)) << error;
    EXPECT_TRUE(s.hasGain());
    EXPECT_DOUBLE_EQ(50, s.gainAt(5));
    EXPECT_DOUBLE_EQ(25, s.lightAt(5));
}

TEST(ScenarioTest, RefusesUnsortedTimesNamingBothLines) {
    const std::string e = refusal("00:00:00,1\n06:00:00,5\n05:59:59,9\n");
    EXPECT_NE(std::string::npos, e.find("s.csv:3:")) << e;
    EXPECT_NE(std::string::npos, e.find("not after the previous row's 06:00:00 (line 2)")) << e;
    EXPECT_NE(std::string::npos, refusal("00:00:00,1\n00:00:00,5\n").find("s.csv:2:"));
}

TEST(ScenarioTest, RefusesLevelsOutsideTheScale) {
    EXPECT_NE(std::string::npos, refusal("00:00:00,1\n01:00:00,101\n").find("s.csv:2: light '101'"));
    EXPECT_NE(std::string::npos, refusal("00:00:00,-1\n01:00:00,1\n").find("s.csv:1: light '-1'"));
    EXPECT_NE(std::string::npos, refusal("00:00:00,1,0\n01:00:00,1,120\n").find("s.csv:2: gain '120'"));
    EXPECT_NE(std::string::npos, refusal("00:00:00,bright\n01:00:00,1\n").find("s.csv:1: light 'bright'"));
    EXPECT_NE(std::string::npos, refusal("reflection,200\n00:00:00,1\n01:00:00,1\n").find("s.csv:1:"));
}

TEST(ScenarioTest, RefusesMissingAndExtraColumns) {
    EXPECT_NE(std::string::npos, refusal("00:00:00,1\n01:00:00\n").find("s.csv:2: missing column"));
    EXPECT_NE(std::string::npos, refusal("00:00:00,1\n01:00:00,\n").find("s.csv:2: light ''"));
    EXPECT_NE(std::string::npos, refusal("00:00:00,1,5\n01:00:00,3\n").find("s.csv:2: missing column: gain"));
    EXPECT_NE(std::string::npos, refusal("00:00:00,1\n01:00:00,3,4,5\n").find("s.csv:2: 4 columns"));
    EXPECT_NE(std::string::npos, refusal("6:00,1\n07:00:00,3\n").find("s.csv:1: time '6:00'"));
    EXPECT_NE(std::string::npos, refusal("48:00:00,1\n49:00:00,3\n").find("s.csv:1: time '48:00:00'"));
    EXPECT_NE(std::string::npos, refusal("00:00:00,1\ntime,light\n01:00:00,3\n").find("s.csv:2: the header"));
    EXPECT_NE(std::string::npos, refusal("00:00:00,1\nreflection,5\n01:00:00,3\n").find("s.csv:2:"));
}

TEST(ScenarioTest, RefusesAnEmptyFileAndASingleRow) {
    EXPECT_NE(std::string::npos, refusal("").find("s.csv: no rows"));
    EXPECT_NE(std::string::npos, refusal("# only comments\ntime,light\n").find("s.csv: no rows"));
    EXPECT_NE(std::string::npos, refusal("00:00:00,1\n").find("only one row"));
}

TEST(ScenarioTest, RefusesBinaryJunkWithLineAndColumn) {
    std::string junk = "00:00:00,1\n01:00:00,2\n\x7f" "ELF\x02\x01";
    junk += std::string(1, '\0');
    const std::string e = refusal(junk);
    EXPECT_NE(std::string::npos, e.find("s.csv:3: byte 0x7f at column 1: not a text line")) << e;
    EXPECT_NE(std::string::npos, refusal(std::string("00:00:00,1\n01:00:\x00", 18)).find("s.csv:2: byte 0x00"));
}

TEST(ScenarioTest, LoadNamesTheFileAndTakesItsStem) {
    testutil::TempRoot root;
    const std::string path = root.dir() + "/porch.csv";
    {
        std::ofstream f(path);
        f << "00:00:00,1\n00:01:00,x\n";
    }
    Scenario s;
    std::string error;
    EXPECT_FALSE(s.load(path, error));
    EXPECT_EQ(path + ":2: light 'x' is not a level from 0 to 100", error);
    {
        std::ofstream f(path);
        f << "00:00:00,1\n00:01:00,2\n";
    }
    ASSERT_TRUE(s.load(path, error)) << error;
    EXPECT_EQ("porch", s.name());
    EXPECT_FALSE(s.load(root.dir() + "/missing.csv", error));
    EXPECT_NE(std::string::npos, error.find("cannot read scenario"));
}

TEST(ScenarioTest, ShippedScenariosAllParse) {
    for (const char* name : {"clear-day", "overcast-day", "dusk-headlights", "porch-ir-reflection", "streetlamp-night"}) {
        Scenario s;
        std::string error;
        EXPECT_TRUE(s.load(std::string(SENSORCTL_SOURCE_DIR) + "/sim/scenarios/" + name + ".csv", error)) << error;
        EXPECT_EQ(name, s.name());
    }
}

}  // namespace
