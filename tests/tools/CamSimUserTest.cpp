// The simulator camera as a new user meets it: what it keeps, what it says,
// how it behaves in a long run. Each case drives camsim as its own process.
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "camsim/CommandLine.h"
#include "platform/ModuleParameterParser.h"
#include "tools/CamsimChild.h"

#include <tinyxml2.h>
#include <thread>

namespace {

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::string readFile(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::stringstream ss;
    ss << f.rdbuf();
    return ss.str();
}

class CamSimUserTest : public ::testing::Test {
protected:
    void SetUp() override {
        struct stat st {};
        if (::stat(CamsimChild::path().c_str(), &st) != 0) GTEST_FAIL() << "camsim not built";
        char tmpl[] = "/tmp/camsim-user-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(tmpl));
        dir = tmpl;
        root = dir + "/camroot";
    }
    void TearDown() override { ::nftw(dir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS); }

    // camsim on the test's root at 10:00 with commands given by -c.
    CamsimChild::Result commands(const std::string& text, const std::vector<std::string>& more = {}) {
        std::vector<std::string> args = {"--root", root, "--time", "10:00"};
        args.insert(args.end(), more.begin(), more.end());
        args.push_back("-c");
        args.push_back(text);
        return CamsimChild::run(args);
    }
    // Brings up a fresh root once, so that a test starts on an existing one.
    void prepareRoot() {
        CamsimChild::Result r = commands("status");
        ASSERT_EQ(0, r.exitCode) << r.output;
    }
    void writeRootFile(const std::string& cameraPath, const std::string& content) {
        std::ofstream(root + cameraPath, std::ios::binary | std::ios::trunc) << content;
    }

    std::string dir;
    std::string root;
};

// Files written are learnt from the platform's file layer: a file that the
// library did not write is not reported, however long the camera runs.
TEST_F(CamSimUserTest, TimelineReportsTheLibrarysWritesOnlyWithoutScanningTheRoot) {
    prepareRoot();
    CamsimChild child;
    ASSERT_TRUE(child.start({"--root", root, "--time", "10:00"}));
    child.send("echo ready\n");
    ASSERT_TRUE(child.waitFor("ready\n")) << child.output();
    writeRootFile("/hd1/stranger.txt", "not the library's");
    child.send("run 3s\nset brightness 61\nflush\nrun 2s\n");
    child.closeInput();
    CamsimChild::Result r = child.finish();
    EXPECT_EQ(0, r.exitCode) << r.output;
    EXPECT_FALSE(contains(r.output, "stranger.txt")) << r.output;
    EXPECT_TRUE(contains(r.output, "file     /mnt/mtd/code/config_file/sensor0.cfg written")) << r.output;
    // Output that is not a terminal gets no progress line.
    EXPECT_FALSE(contains(r.output, "\r")) << r.output;
}

// 20: the worker pauses on the virtual clock with the day/night lock held
// while it switches to night; a command waiting for that lock lets the time
// pass instead of hanging.
TEST_F(CamSimUserTest, RestartAfterASavedNightModeAnswersAtOnce) {
    CamsimChild::Result first = commands("daynight night; run 2s; flush");
    ASSERT_EQ(0, first.exitCode) << first.output;
    CamsimChild::Result second = commands("status; get 11; daynight auto; status");
    EXPECT_EQ(0, second.exitCode) << second.output;
    EXPECT_FALSE(contains(second.output, "[killed: timeout]")) << second.output;
    EXPECT_TRUE(contains(second.output, "day/night      DAY, mode 2")) << second.output;  // switch under way
    EXPECT_TRUE(contains(second.output, "   11 daynight-mode        2\n")) << second.output;
    EXPECT_TRUE(contains(second.output, "ok: day/night mode auto")) << second.output;
    // The saved night switch ended while 'daynight auto' waited for the lock.
    EXPECT_TRUE(contains(second.output, "gpio     1/5 <- 0  IR-cut filter out (night)")) << second.output;
    EXPECT_TRUE(contains(second.output, "day/night      NIGHT, mode 0")) << second.output;
}

// 12: the virtual time of a script does not depend on how fast the machine
// runs it: the same script on two fresh roots prints the same, byte for byte.
TEST_F(CamSimUserTest, AScriptIsRepeatableBitForBit) {
    const std::string script = "run 5s; status; light 10; run 8s; status; set brightness 66; flush; isp 4";
    std::string outputs[2];
    for (int i = 0; i < 2; ++i) {
        const std::string r = dir + "/root" + std::to_string(i);
        CamsimChild::Result run = CamsimChild::run({"--root", r, "--time", "10:00", "-c", script});
        ASSERT_EQ(0, run.exitCode) << run.output;
        std::string o = run.output;
        for (size_t at = o.find(r); at != std::string::npos; at = o.find(r)) o.replace(at, r.size(), "ROOT");
        outputs[i] = o;
    }
    EXPECT_EQ(outputs[0], outputs[1]);
    // The first command comes when the start-up's own waits have passed, no later.
    EXPECT_TRUE(contains(outputs[0], "[10:00:04] > run 5s\n")) << outputs[0];
}

// 1: the demo never runs on a root that it did not make.
TEST_F(CamSimUserTest, DemoRefusesARootOfTheUser) {
    ASSERT_EQ(0, ::mkdir(root.c_str(), 0755));
    std::ofstream(root + "/mine.txt") << "the user's";
    CamsimChild::Result r = CamsimChild::run({"--root", root, "demo"});
    EXPECT_EQ(2, r.exitCode) << r.output;
    EXPECT_TRUE(contains(r.output, "the demo runs in a temporary root of its own and never touches yours")) << r.output;
    EXPECT_EQ("the user's", readFile(root + "/mine.txt"));
    struct stat st {};
    EXPECT_NE(0, ::stat((root + "/mnt").c_str(), &st));
}

// 2: flush names the files written, and with the factory set in force says
// which values were not saved and why.
TEST_F(CamSimUserTest, FlushSaysWhatWasSavedAndWhatWasNot) {
    CamsimChild::Result r = commands("set brightness 72; flush; scheme off; run 2s; set brightness 71; flush");
    EXPECT_EQ(1, r.exitCode) << r.output;
    EXPECT_TRUE(contains(r.output, "ok: saved to scheme 0: /mnt/mtd/code/config_file/sensor0.cfg")) << r.output;
    EXPECT_TRUE(contains(r.output, "scheme   0 -> -1")) << r.output;
    EXPECT_TRUE(contains(r.output, "saved only the values kept outside the schemes")) << r.output;
    EXPECT_TRUE(contains(r.output, "error: not saved: brightness=71: the factory set is in force (scheme -1")) << r.output;
    EXPECT_FALSE(contains(r.output, "ok: saved (scheme file, factory and especial files)")) << r.output;
}

// 3: the scheme mode and scheme saved in sensor.xml are in force after a restart.
TEST_F(CamSimUserTest, TheSavedSchemeChoiceSurvivesARestart) {
    CamsimChild::Result first = commands("scheme 2");
    ASSERT_EQ(0, first.exitCode) << first.output;
    CamsimChild::Result second = commands("run 2s; scheme");
    EXPECT_EQ(0, second.exitCode) << second.output;
    EXPECT_TRUE(contains(second.output, "camsim: restored from sensor.xml: scheme mode manual, scheme 2")) << second.output;
    EXPECT_TRUE(contains(second.output, "scheme mode: manual; active scheme: 2")) << second.output;
    const std::string xml = readFile(root + "/mnt/mtd/code/config_file/sensor.xml");
    EXPECT_TRUE(contains(xml, "\"SchemeIndex\" value=\"2\"")) << xml;
}

// 4: an empty factory file makes the library rebuild every scheme: camsim says so.
TEST_F(CamSimUserTest, AnEmptyFactoryFileIsNamedAsTheCauseOfTheRebuild) {
    prepareRoot();
    writeRootFile("/mnt/mtd/code/config_file/sensor_Factory.cfg", "");
    CamsimChild::Result r = commands("status");
    EXPECT_TRUE(contains(r.output, "warning: /mnt/mtd/code/config_file/sensor_Factory.cfg was empty: the library took "
                                   "it for another version and rebuilt the factory set and the scheme files"))
        << r.output;
    EXPECT_TRUE(contains(r.output, "sensor0.cfg")) << r.output;
}

// 5: a garbage sensor.xml: 'scheme 2' reports the failure and its cause, and
// 'repair' recreates the file through the library.
TEST_F(CamSimUserTest, AGarbageSchemeStateFileIsReportedAndRepaired) {
    prepareRoot();
    writeRootFile("/mnt/mtd/code/config_file/sensor.xml", "garbage<<<");
    CamsimChild::Result r = commands("scheme 2; repair; scheme 2; scheme");
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;
    EXPECT_TRUE(contains(o, "error: could not turn automatic switching off: the library could not write the scheme "
                            "mode to /mnt/mtd/code/config_file/sensor.xml"))
        << o;
    EXPECT_TRUE(contains(o, "'repair' recreates the file")) << o;
    const size_t repaired = o.find("ok: /mnt/mtd/code/config_file/sensor.xml recreated");
    ASSERT_NE(std::string::npos, repaired) << o;
    EXPECT_EQ(o.find("ok: scheme 2 active"), o.find("ok: scheme 2 active", repaired)) << o;  // only after the repair
    EXPECT_TRUE(contains(o, "scheme mode: manual; active scheme: 2")) << o;
}

// 6: values set and not saved are not lost without a word.
TEST_F(CamSimUserTest, UnsavedValuesAreWarnedOfWhenLeaving) {
    CamsimChild::Result end = commands("set brightness 70");
    EXPECT_TRUE(contains(end.output, "warning: leaving with values set and not saved: brightness=70")) << end.output;
    CamsimChild::Result quit = commands("set contrast 40; quit");
    EXPECT_TRUE(contains(quit.output, "warning: leaving with values set and not saved: contrast=40")) << quit.output;
    CamsimChild::Result forced = commands("set brightness 70; quit!");
    EXPECT_FALSE(contains(forced.output, "not saved")) << forced.output;
    EXPECT_EQ(0, forced.exitCode) << forced.output;
    CamsimChild::Result saved = commands("set brightness 70; flush");
    EXPECT_FALSE(contains(saved.output, "not saved")) << saved.output;
}

// 7: a second camsim on the same root is refused, naming the holder.
TEST_F(CamSimUserTest, ASecondCamsimOnTheRootIsRefusedWithTheHoldersProcessId) {
    CamsimChild holder;
    ASSERT_TRUE(holder.start({"--root", root, "--time", "10:00"}));
    ASSERT_TRUE(holder.waitFor("camsim: camera up")) << holder.output();
    CamsimChild::Result second = commands("set brightness 10; flush");
    EXPECT_EQ(2, second.exitCode) << second.output;
    EXPECT_TRUE(contains(second.output, "is in use by camsim process " + std::to_string(holder.pid()))) << second.output;
    holder.send("quit!\n");
    holder.closeInput();
    EXPECT_EQ(0, holder.finish().exitCode);
    // The lock goes with the process.
    EXPECT_EQ(0, commands("status").exitCode);
}

// 8: Ctrl-C stops a run and comes back for the next command; Ctrl-C while
// camsim waits for a command leaves, with the unsaved-values warning.
TEST_F(CamSimUserTest, CtrlCStopsARunAndASecondOneLeaves) {
    CamsimChild child;
    ASSERT_TRUE(child.start({"--root", root, "--time", "10:00"}));
    child.send("set brightness 70\nrun 48h\n");
    ASSERT_TRUE(child.waitFor("> run 48h\n")) << child.output();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    child.interrupt();
    ASSERT_TRUE(child.waitFor("interrupted (Ctrl-C) after ")) << child.output();
    child.send("echo after the run\n");
    ASSERT_TRUE(child.waitFor("after the run\n")) << child.output();
    child.interrupt();
    CamsimChild::Result r = child.finish();
    EXPECT_EQ(0, r.exitCode) << r.output;
    EXPECT_TRUE(contains(r.output, "camsim: Ctrl-C at the prompt: leaving")) << r.output;
    EXPECT_TRUE(contains(r.output, "warning: leaving with values set and not saved: brightness=70")) << r.output;
}

// 9: reset reports the scheme mode in force and the windows it left.
TEST_F(CamSimUserTest, ResetReportsWhatTheLibraryDid) {
    CamsimChild::Result r = commands("reset; scheme");
    const std::string& o = r.output;
    EXPECT_FALSE(contains(o, "scheme 0 active, manual mode")) << o;
    EXPECT_TRUE(contains(o, "scheme mode in force: auto (sensor.xml now says manual: the next start runs that)")) << o;
    EXPECT_TRUE(contains(o, "scheme mode: auto (by time window)")) << o;
    EXPECT_TRUE(contains(o, "scheme windows now: 0 00:00-24:00 on, 1 00:00-24:00 off")) << o;
    EXPECT_TRUE(contains(o, "camsim's windows are gone")) << o;
}

// 10: the timeline shows what the pins did, not what the state implies.
TEST_F(CamSimUserTest, TheDayNightLineShowsThePins) {
    CamsimChild::Result r = commands("light 10; run 3s; light 90; daynight sensor; run 12s; status", {"--light", "80"});
    const std::string& o = r.output;
    EXPECT_TRUE(contains(o, "daynight NIGHT (pins: IR-cut filter out, IR LEDs on)")) << o;
    EXPECT_TRUE(contains(o, "daynight DAY   (pins: IR-cut filter out, IR LEDs on)")) << o;
    EXPECT_FALSE(contains(o, "colour picture, IR-cut filter in")) << o;
}

// 11: a refused value names exactly what was applied (ascending ids) and what not.
TEST_F(CamSimUserTest, ARefusedValueNamesWhatWasAppliedAndWhatNot) {
    CamsimChild::Result r = commands("set (6,19)(1,64)(7,3); get 1");
    const std::string& o = r.output;
    EXPECT_TRUE(contains(o, "error: parameter 6 (max-shutter) = 19 refused")) << o;
    EXPECT_TRUE(contains(o, "; applied: brightness=64; not applied: max-shutter=19, ")) << o;
    EXPECT_FALSE(contains(o, "the values before it in the list")) << o;
    EXPECT_TRUE(contains(o, "    1 brightness           64\n")) << o;
}

// 13: a directory is no script; a script splits commands at ';' as -c does.
TEST_F(CamSimUserTest, ScriptsAreFilesAndSplitAtSemicolons) {
    CamsimChild::Result d = CamsimChild::run({"--root", root, dir});
    EXPECT_EQ(2, d.exitCode) << d.output;
    EXPECT_TRUE(contains(d.output, "cannot read script " + dir + ": it is a directory")) << d.output;
    std::ofstream(dir + "/two.cam") << "echo first; echo second\n# a comment; echo never\n";
    CamsimChild::Result s = CamsimChild::run({"--root", root, "--time", "10:00", dir + "/two.cam"});
    EXPECT_EQ(0, s.exitCode) << s.output;
    EXPECT_TRUE(contains(s.output, "first\nsecond\n")) << s.output;
    EXPECT_FALSE(contains(s.output, "never")) << s.output;
}

// 14: malformed sample files are named with the line, and --reset-root rewrites them.
TEST_F(CamSimUserTest, MalformedSampleFilesAreNamedAndResetRootRepairsThem) {
    prepareRoot();
    writeRootFile("/hd1/moduleConfig/sensorAbility.xml", "<sensorAbility>\n<paramScheme>\njunk");
    CamsimChild::Result bad = commands("scheme 1");
    EXPECT_EQ(2, bad.exitCode) << bad.output;
    EXPECT_TRUE(contains(bad.output, "/hd1/moduleConfig/sensorAbility.xml of the root is malformed (line ")) << bad.output;
    EXPECT_TRUE(contains(bad.output, "--reset-root' rewrites camsim's sample files")) << bad.output;
    EXPECT_FALSE(contains(bad.output, "schemes are 0 to -1")) << bad.output;
    writeRootFile("/hd1/moduleConfig/moduleConfig.xml", "<moduleConfig><module id=\"88\"");
    CamsimChild::Result module = commands("status");
    EXPECT_EQ(2, module.exitCode) << module.output;
    EXPECT_TRUE(contains(module.output, "/hd1/moduleConfig/moduleConfig.xml of the root is malformed (line 1")) << module.output;
    CamsimChild::Result fixed = commands("scheme 1", {"--reset-root"});
    EXPECT_EQ(0, fixed.exitCode) << fixed.output;
    EXPECT_TRUE(contains(fixed.output, "camsim's sample files rewritten")) << fixed.output;
    EXPECT_TRUE(contains(fixed.output, "ok: scheme 1 active")) << fixed.output;
}

// 15: every block of the shipped style diversity sample applies to at least one
// module of the shipped module configuration.
TEST_F(CamSimUserTest, EveryBlockOfTheSampleStylesAppliesToAShippedModule) {
    CamsimChild::Result r = commands("ui style");
    ASSERT_EQ(0, r.exitCode) << r.output;
    EXPECT_TRUE(contains(r.output, "title=\"Dewarp\"")) << r.output;
    std::vector<ModuleParameterParser> details;
    tinyxml2::XMLDocument modules;
    ASSERT_EQ(tinyxml2::XML_SUCCESS, modules.LoadFile((root + "/hd1/moduleConfig/moduleConfig.xml").c_str()));
    for (auto* m = modules.RootElement()->FirstChildElement("module"); m; m = m->NextSiblingElement("module")) {
        details.emplace_back();
        ASSERT_TRUE(details.back().parse(m->Attribute("detail") ? m->Attribute("detail") : ""));
    }
    ASSERT_FALSE(details.empty());
    tinyxml2::XMLDocument styles;
    const std::string path = root + "/hd1/moduleConfig/sensorConfig/styleDiversity/S2StyleDiversity.xml";
    ASSERT_EQ(tinyxml2::XML_SUCCESS, styles.LoadFile(path.c_str()));
    int blocks = 0;
    for (auto* block = styles.FirstChildElement("Module"); block; block = block->NextSiblingElement("Module")) {
        ++blocks;
        bool applies = false;
        for (ModuleParameterParser& detail : details) {
            bool all = true;
            for (const tinyxml2::XMLAttribute* a = block->FirstAttribute(); a; a = a->Next()) {
                std::string value;
                all = all && detail.getValue(a->Name(), value) && value == a->Value();
            }
            applies = applies || all;
        }
        EXPECT_TRUE(applies) << "block " << blocks << " of " << path << " applies to no shipped module";
    }
    EXPECT_GT(blocks, 0);
}

// 16: control bytes from scripts and files are shown escaped.
TEST_F(CamSimUserTest, ControlBytesAreShownEscaped) {
    prepareRoot();
    writeRootFile("/hd1/odd.txt", std::string("ab\0cd\x1b[2J", 9));
    std::ofstream(dir + "/odd.cam") << "echo x\x1b[2Jy\ncat /hd1/odd.txt\n";
    CamsimChild::Result r = CamsimChild::run({"--root", root, "--time", "10:00", dir + "/odd.cam"});
    EXPECT_TRUE(contains(r.output, "x\\x1b[2Jy\n")) << r.output;
    EXPECT_TRUE(contains(r.output, "ab\\x00cd\\x1b[2J")) << r.output;
    EXPECT_FALSE(contains(r.output, "\x1b")) << r.output;
}

// 17: the start-up timeline: no stale factory window, the follow-up switch of
// the scheme set-up shown, a repeated picture command on one line.
TEST_F(CamSimUserTest, TheStartUpTimelineTellsWhatHappened) {
    CamsimChild::Result r = commands("status");
    const std::string& o = r.output;
    EXPECT_FALSE(contains(o, "(window 00:00-24:00)")) << o;
    EXPECT_TRUE(contains(o, "scheme   3 -> 0  (window 06:00-18:00)")) << o;
    EXPECT_TRUE(contains(o, "isp      picture day/night <- 1 (sent 2 times)")) << o;
    EXPECT_FALSE(contains(o, "isp      picture day/night <- 1\n")) << o;
    CamsimChild::Result again = commands("status");
    EXPECT_TRUE(contains(again.output, "scheme   0 in force at start  (window 06:00-18:00)")) << again.output;
}

// 18: small words: an absent log, an unknown id, durations.
TEST_F(CamSimUserTest, LogsUnknownIdsAndDurationsSayOneThing) {
    CamsimChild::Result r = commands("logs init; get 9999; set 9999 1; time 10:00; run 1.5s; time; run 1 s; time; run 0.5m; time");
    const std::string& o = r.output;
    EXPECT_TRUE(contains(o, "-- /mnt/mtd/log/SensorInit.log --\n  (no entries")) << o;
    EXPECT_TRUE(contains(o, "9999                      -   (not a parameter of this camera)")) << o;
    EXPECT_TRUE(contains(o, "error: parameter 9999 = 1 refused: not a parameter of this camera")) << o;
    EXPECT_FALSE(contains(o, "no value kept")) << o;
    EXPECT_TRUE(contains(o, " 10:00:01\n")) << o;
    EXPECT_TRUE(contains(o, " 10:00:02\n")) << o;
    EXPECT_TRUE(contains(o, " 10:00:32\n")) << o;
    EXPECT_FALSE(contains(o, "usage: run")) << o;
}

TEST(CamSimCommandLineTest, DurationsTakeFractionsAndDays) {
    int64_t ms = 0;
    EXPECT_TRUE(camsim::parseDuration("1.5s", ms));
    EXPECT_EQ(1500, ms);
    EXPECT_TRUE(camsim::parseDuration("1d", ms));
    EXPECT_EQ(86400000, ms);
    EXPECT_TRUE(camsim::parseDuration("0.25h", ms));
    EXPECT_EQ(900000, ms);
    EXPECT_TRUE(camsim::parseDuration("250ms", ms));
    EXPECT_EQ(250, ms);
    EXPECT_FALSE(camsim::parseDuration("1.s", ms));
    EXPECT_FALSE(camsim::parseDuration("-1s", ms));
    EXPECT_FALSE(camsim::parseDuration("1x", ms));
    EXPECT_FALSE(camsim::parseDuration("d", ms));
}

// 21: a window value that cannot be saved is named when flush is refused.
TEST_F(CamSimUserTest, ARefusedSaveNamesTheWindowValueToFix) {
    CamsimChild::Result r = commands("set (501,99); flush");
    EXPECT_EQ(1, r.exitCode) << r.output;
    EXPECT_TRUE(contains(r.output, "error: not saved (505): the scheme's start time 99:00 (501 start hour = 99, 502 "
                                   "start minutes/10 = 0) is past 24:00; fix the window"))
        << r.output;
}

}  // namespace
