// The simulator camera driven as a user drives it: a script, -c commands and
// the demo, each run as its own process on a root directory of the test.
#include <fcntl.h>
#include <ftw.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tools/CamsimChild.h"

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using CamsimRun = CamsimChild::Result;

std::string camsimPath() { return CamsimChild::path(); }

CamsimRun runCamsim(const std::vector<std::string>& args, int timeoutSeconds = 60) {
    return CamsimChild::run(args, timeoutSeconds);
}

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

std::string readFile(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::stringstream ss;
    ss << f.rdbuf();
    return ss.str();
}

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class CamSimTest : public ::testing::Test {
protected:
    void SetUp() override {
        struct stat st {};
        if (::stat(camsimPath().c_str(), &st) != 0) GTEST_FAIL() << "camsim not built at " << camsimPath();
        char tmpl[] = "/tmp/camsim-test-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(tmpl));
        dir = tmpl;
        root = dir + "/camroot";
    }
    void TearDown() override { ::nftw(dir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS); }

    // Skips where the test program cannot start camsim itself (an emulated
    // cross build runs only the test program under the emulator).
    bool startedOrSkip(const CamsimRun& run) {
        if (!run.started) {
            std::cout << "camsim could not be started from this test program (cross build under an emulator)\n";
            return false;
        }
        return true;
    }

    std::string dir;
    std::string root;
};

TEST_F(CamSimTest, ScriptSetsReadsRefusesAndSwitchesToNight) {
    const std::string script = dir + "/day.cam";
    std::ofstream(script) << "# a short session\n"
                             "status\n"
                             "set brightness=70\n"
                             "get brightness 6\n"
                             "set max-shutter 19\n"
                             "set (1,101)\n"
                             "set nonsense=3\n"
                             "frobnicate now\n"
                             "light abc\n"
                             "light 10\n"
                             "run 3s\n"
                             "status\n"
                             "flush\n"
                             "files\n"
                             "quit\n"
                             "echo never reached\n";
    CamsimRun run = runCamsim({"--root", root, "--time", "12:00", script});
    if (!startedOrSkip(run)) GTEST_SKIP();
    const std::string& o = run.output;
    EXPECT_EQ(1, run.exitCode) << o;  // some commands failed, on purpose
    EXPECT_TRUE(contains(o, "(new: fisheye sample configuration installed")) << o;
    EXPECT_TRUE(contains(o, "camsim: camera up")) << o;
    // day at start
    EXPECT_TRUE(contains(o, "day/night      DAY, mode 0, light sensor on the ADC")) << o;
    EXPECT_TRUE(contains(o, "IR-cut filter  gpio 1/5 = 1  (in, day)")) << o;
    EXPECT_TRUE(contains(o, "scheme         0 (auto)")) << o;
    // set and get
    EXPECT_TRUE(contains(o, "ok: brightness=70")) << o;
    EXPECT_TRUE(contains(o, "isp      brightness <- 70")) << o;
    EXPECT_TRUE(contains(o, "    1 brightness           70\n")) << o;
    EXPECT_TRUE(contains(o, "    6 max-shutter          6\n")) << o;
    // refusals with the library's reasons, and nothing sent for them
    EXPECT_TRUE(contains(o, "error: parameter 6 (max-shutter) = 19 refused: p_nMaxShutter(19) out of range\n")) << o;
    EXPECT_TRUE(contains(o, "error: parameter 1 (brightness) = 101 refused: setBrightness ")) << o;
    EXPECT_TRUE(contains(o, "IsAppointRange(101) out of range")) << o;
    EXPECT_FALSE(contains(o, "max shutter <- 19")) << o;
    EXPECT_FALSE(contains(o, "brightness <- 101")) << o;
    EXPECT_TRUE(contains(o, "error: unknown parameter 'nonsense'")) << o;
    EXPECT_TRUE(contains(o, "error: unknown command 'frobnicate' (type 'help')")) << o;
    EXPECT_TRUE(contains(o, "error: usage: light N with N from 0 (dark) to 100 (bright)")) << o;
    // dark scene: night at once, filter out, LEDs on
    EXPECT_TRUE(contains(o, "isp      picture day/night <- 2")) << o;
    EXPECT_TRUE(contains(o, "gpio     1/5 <- 0  IR-cut filter out (night)")) << o;
    EXPECT_TRUE(contains(o, "gpio     2/7 <- 1  IR LEDs on")) << o;
    EXPECT_TRUE(contains(o, "daynight NIGHT")) << o;
    EXPECT_TRUE(contains(o, "day/night      NIGHT")) << o;
    EXPECT_TRUE(contains(o, "IR LEDs        gpio 2/7 = 1  (on)")) << o;
    EXPECT_TRUE(contains(o, "ok: saved")) << o;
    EXPECT_TRUE(contains(o, "/mnt/mtd/code/config_file/sensor_Factory.cfg")) << o;
    EXPECT_FALSE(contains(o, "never reached")) << o;

    // The files of the camera are under the root, the saved value in the day scheme.
    EXPECT_TRUE(contains(readFile(root + "/hd1/moduleConfig/moduleConfig.xml"), "id=\"88\""));
    EXPECT_TRUE(contains(readFile(root + "/mnt/mtd/code/config_file/sensor0.cfg"), "(1,70)"));
    EXPECT_TRUE(contains(readFile(root + "/mnt/mtd/code/config_file/sensor0.cfg"), "(501,6)"));
    EXPECT_TRUE(contains(readFile(root + "/mnt/mtd/code/config_file/sensor1.cfg"), "(501,18)"));
    EXPECT_FALSE(contains(readFile(root + "/mnt/mtd/code/config_file/sensor_Factory.cfg"), "(1,101)"));
}

TEST_F(CamSimTest, CommandsFromTheCommandLineOnAnExistingRoot) {
    CamsimRun first = runCamsim({"--root", root, "--time", "10:00", "-c", "set brightness 64; flush"});
    if (!startedOrSkip(first)) GTEST_SKIP();
    ASSERT_EQ(0, first.exitCode) << first.output;

    CamsimRun second = runCamsim({"--root", root, "--time", "10:00", "-c",
                            "run 2s; get brightness; scheme; daynight night; run 2s; daynight; time 19:30; run 2s; "
                            "scheme; logs error 5; isp 2; help"});
    const std::string& o = second.output;
    EXPECT_EQ(0, second.exitCode) << o;
    EXPECT_TRUE(contains(o, "(existing)")) << o;
    EXPECT_FALSE(contains(o, "first start")) << o;
    EXPECT_TRUE(contains(o, "    1 brightness           64\n")) << o;
    EXPECT_TRUE(contains(o, "scheme mode: auto (by time window); active scheme: 0")) << o;
    EXPECT_TRUE(contains(o, "  scheme 0  06:00-18:00  on")) << o;
    EXPECT_TRUE(contains(o, "  scheme 3  00:00-24:00  off")) << o;
    EXPECT_TRUE(contains(o, "ok: day/night mode night")) << o;
    EXPECT_TRUE(contains(o, "day/night mode 2 (night), state night")) << o;
    EXPECT_TRUE(contains(o, "scheme   0 -> 1  (window 18:00-24:00)")) << o;
    EXPECT_TRUE(contains(o, "-- /mnt/mtd/log/SensorError.log --")) << o;
    EXPECT_TRUE(contains(o, "Auto switch  Scheme to:1")) << o;
    EXPECT_TRUE(contains(o, "commands:")) << o;
}

TEST_F(CamSimTest, WebInterfaceTextsOfTheModule) {
    CamsimRun run = runCamsim({"--root", root, "--time", "10:00", "-c", "ui style; ui lang 2; ui lang 9; ui lang x"});
    if (!startedOrSkip(run)) GTEST_SKIP();
    const std::string& o = run.output;
    EXPECT_EQ(1, run.exitCode) << o;  // the last command is refused
    // The sample diversity file moves the infrared lamp tab (9) after the day/night tab (4).
    EXPECT_TRUE(contains(o, "<SensorStyle")) << o;
    size_t dayNight = o.find("title=\"DayNight\""), lamp = o.find("title=\"InfraredLamp\""),
           noise = o.find("title=\"NoiseReduction\"");
    ASSERT_NE(dayNight, std::string::npos) << o;
    ASSERT_NE(lamp, std::string::npos) << o;
    EXPECT_LT(dayNight, lamp);
    EXPECT_LT(lamp, noise);
    EXPECT_TRUE(contains(o, "-- language text of language 2 --")) << o;
    EXPECT_TRUE(contains(o, "<SensorLanguage language=\"chinese\">")) << o;
    // An unknown language falls back to language 1.
    size_t nine = o.find("-- common text of language 9 --");
    ASSERT_NE(nine, std::string::npos) << o;
    EXPECT_NE(o.find("<SensorCommon language=\"english\">", nine), std::string::npos) << o;
    EXPECT_TRUE(contains(o, "error: usage: ui style | ui lang N")) << o;
}

TEST_F(CamSimTest, DemoRunsACompressedDayInUnderTenSeconds) {
    CamsimRun run = runCamsim({"demo"});
    if (!startedOrSkip(run)) GTEST_SKIP();
    const std::string& o = run.output;
    EXPECT_EQ(0, run.exitCode) << o;
    EXPECT_LT(run.seconds, 10.0);
    EXPECT_TRUE(contains(o, "scheme   2 -> 0  (window 06:00-18:00)")) << o;
    EXPECT_TRUE(contains(o, "scheme   0 -> 1  (window 18:00-24:00)")) << o;
    EXPECT_TRUE(contains(o, "scheme   1 -> 2  (window 00:00-06:00)")) << o;
    EXPECT_TRUE(contains(o, "gpio     2/7 <- 1  IR LEDs on")) << o;
    EXPECT_TRUE(contains(o, "gpio     1/5 <- 1  IR-cut filter in (day)")) << o;
    EXPECT_TRUE(contains(o, "file     /mnt/mtd/code/config_file/sensor0.cfg written")) << o;
    EXPECT_TRUE(contains(o, "summary\n")) << o;
    EXPECT_TRUE(contains(o, "day/night transitions 4 (2 to night, 2 to day)")) << o;
    EXPECT_TRUE(contains(o, "refused commands      2")) << o;
}

TEST_F(CamSimTest, BadInvocationsAreRefused) {
    CamsimRun slash = runCamsim({"--root", "/", "-c", "status"});
    if (!startedOrSkip(slash)) GTEST_SKIP();
    EXPECT_EQ(2, slash.exitCode);
    EXPECT_TRUE(contains(slash.output, "refusing \"/\" as the root")) << slash.output;

    CamsimRun option = runCamsim({"--bogus"});
    EXPECT_EQ(2, option.exitCode);
    EXPECT_TRUE(contains(option.output, "camsim: unknown argument '--bogus'")) << option.output;

    CamsimRun time = runCamsim({"--root", root, "--time", "25:00", "-c", "status"});
    EXPECT_EQ(2, time.exitCode);
    EXPECT_TRUE(contains(time.output, "--time wants HH:MM")) << time.output;

    CamsimRun script = runCamsim({"--root", root, dir + "/no-such-script"});
    EXPECT_EQ(2, script.exitCode);
    EXPECT_TRUE(contains(script.output, "cannot read script")) << script.output;
}

TEST_F(CamSimTest, WrongModuleDoesNotComeUp) {
    ASSERT_EQ(0, ::mkdir(root.c_str(), 0755));
    ASSERT_EQ(0, ::mkdir((root + "/hd1").c_str(), 0755));
    ASSERT_EQ(0, ::mkdir((root + "/hd1/moduleConfig").c_str(), 0755));
    std::ofstream(root + "/hd1/moduleConfig/moduleConfig.xml")
        << "<moduleConfig><module id=\"7\" type=\"sensor\" detail=\"isInfrared=0\"/></moduleConfig>\n";
    CamsimRun run = runCamsim({"--root", root, "-c", "status"});
    if (!startedOrSkip(run)) GTEST_SKIP();
    EXPECT_EQ(2, run.exitCode) << run.output;
    EXPECT_TRUE(contains(run.output, "the camera did not come up with module 7")) << run.output;
}

}  // namespace
