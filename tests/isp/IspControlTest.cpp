// The controller's use of the ISP tuning tables: loading them, one pass of
// the application loop by day/night state and gain, and the temporal noise
// reduction operations.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "TestRoot.h"
#include "doubles/ClockPump.h"
#include "doubles/ControllerRig.h"
#include "doubles/ProbeController.h"
#include "platform/GThread.h"
#include "platform/KestraTime.h"

using testutil::countOf;

namespace {

const char* const kISPFile = "/hd1/program/config/ISPParam.xml";

// A table set in the file's form. Bands are (name, min, max, items).
std::string band(const std::string& name, int min, int max, const std::string& items) {
    return "<" + name + " min=\"" + std::to_string(min) + "\" max=\"" + std::to_string(max) + "\">" + items +
           "</" + name + ">";
}
std::string item(const std::string& name, int value) {
    return "<item name=\"" + name + "\" value=\"" + std::to_string(value) + "\"/>";
}
std::string table(const std::string& name, const std::string& enable, const std::string& bands) {
    return "<" + name + (enable.empty() ? std::string() : " enable=\"" + enable + "\"") + ">" + bands + "</" +
           name + ">";
}
std::string file(const std::string& tables, int time = 0, bool realTime = false) {
    return "<?xml version=\"1.0\"?>\n<config realTimeUpdate=\"" + std::string(realTime ? "1" : "0") +
           "\" time=\"" + std::to_string(time) + "\">" + tables + "</config>\n";
}

// Day band EE 45 DC 1 A0 16 TM 4; night band EE 20 DC 0 A0 48 TM 12.
std::string dnTable(const std::string& enable = "1") {
    return table("DN", enable,
                 band("night", 0, 1, item("EE", 20) + item("DC", 0) + item("A0", 48) + item("TM", 12)) +
                     band("day", 1, 2, item("EE", 45) + item("DC", 1) + item("A0", 16) + item("TM", 4)));
}

class IspControlTest : public ::testing::Test {
protected:
    ProbeController& make(int sensorType = 50) {
        ctl.reset(new ProbeController(events, sensorType));
        ctl->openLogs();
        return *ctl;
    }

    // Loads `content` as the ISP file into a fresh controller.
    ProbeController& load(const std::string& content, int sensorType = 50) {
        root.write(kISPFile, content);
        ProbeController& c = make(sensorType);
        testing::internal::CaptureStdout();
        bool ok = c.ISPParamThreadInit();
        testing::internal::GetCapturedStdout();
        EXPECT_TRUE(ok);
        return c;
    }

    // One pass with the clock pumped through its pause; the console output
    // lands in `out` and the virtual time it took in `pausedMs`.
    int pass(ProbeController& c) {
        testing::internal::CaptureStdout();
        int r = testutil::runPumped([&] { return c.ISPParamBody(); });
        out = testing::internal::GetCapturedStdout();
        pausedMs = testutil::lastPumpedMs();
        return r;
    }

    std::vector<std::string> errorLog() const { return testutil::logMessages(root, testutil::kErrorLogPath); }

    testutil::TempRoot root;
    testutil::VirtualClock clock;
    EventLog events;
    std::unique_ptr<ProbeController> ctl;
    std::string out;
    int64_t pausedMs = -1;
};

}  // namespace

// ---- loading ----

TEST_F(IspControlTest, LoadCopiesTablesAndRootProperties) {
    root.write(kISPFile, file(dnTable(), 3, true));
    ProbeController& c = make();
    EXPECT_TRUE(c.ISPParamThreadInit());
    EXPECT_TRUE(c.ispRealTimeUpdate());
    EXPECT_EQ(3, c.ispDelayTime());
    int v = 0;
    EXPECT_TRUE(c.ispTables().getParam("DN", "EE", 1, v));
    EXPECT_EQ(45, v);
    EXPECT_TRUE(errorLog().empty());
}

TEST_F(IspControlTest, MissingFileEmptiesTheTablesAndIsLogged) {
    ProbeController& c = load(file(dnTable(), 3, true));
    root.remove(kISPFile);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(c.ISPParamThreadInit());
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, printed.find("open ISPParam.xml failed\n"));
    EXPECT_TRUE(c.ispTables().empty());
    // The root properties keep what the last good read gave.
    EXPECT_TRUE(c.ispRealTimeUpdate());
    EXPECT_EQ(3, c.ispDelayTime());
    EXPECT_EQ(1u, countOf(errorLog(), "objISPParamParse.parse failed"));
}

TEST_F(IspControlTest, MalformedFileEmptiesTheTablesAndIsLogged) {
    ProbeController& c = load(file(dnTable()));
    root.write(kISPFile, "<config><DN enable=\"1\"><day min=\"1\" max=\"2\"></DN>");
    testing::internal::CaptureStdout();
    EXPECT_FALSE(c.ISPParamThreadInit());
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(c.ispTables().empty());
    EXPECT_EQ(1u, countOf(errorLog(), "objISPParamParse.parse failed"));
    // Nothing is applied from empty tables.
    EXPECT_EQ(0, pass(c));
    EXPECT_EQ("", out);
    EXPECT_EQ(-100, c.getLastEE());
}

// ---- the day/night table ----

TEST_F(IspControlTest, DayNightTableFollowsTheStateAndAnnouncesOnlyChanges) {
    ProbeController& c = load(file(dnTable()));
    c.setDayNightStateValue(1);
    EXPECT_EQ(0, pass(c));
    // EE, DC, then the noise reduction; A0 comes before any TM was applied.
    EXPECT_EQ("set ee=45\nset DC=1\nset A0=16,TM=-100\nset TM=4,A0=16\n", out);
    EXPECT_EQ(1, c.lastISPDayNightState());
    EXPECT_EQ(45, c.getLastEE());
    EXPECT_EQ(1, c.getLastDC());
    EXPECT_EQ(16, c.getLastA0());
    EXPECT_EQ(4, c.getLastTM());

    EXPECT_EQ(0, pass(c));
    EXPECT_EQ("", out);

    c.setDayNightStateValue(0);
    pass(c);
    EXPECT_EQ("set ee=20\nset DC=0\nset A0=48,TM=4\nset TM=12,A0=48\n", out);
    EXPECT_EQ(0, c.lastISPDayNightState());
    pass(c);
    EXPECT_EQ("", out);
}

TEST_F(IspControlTest, DayNightTableDisabledIsNeverApplied) {
    ProbeController& c = load(file(dnTable("0")));
    for (int state : {1, 0, 1}) {
        c.setDayNightStateValue(state);
        pass(c);
        EXPECT_EQ("", out);
    }
    EXPECT_EQ(-100, c.getLastEE());
    EXPECT_EQ(-1, c.lastISPDayNightState());
}

TEST_F(IspControlTest, DayNightTableWithoutEnableIsNeverApplied) {
    ProbeController& c = load(file(dnTable("")));
    pass(c);
    EXPECT_EQ("", out);
    EXPECT_EQ(-100, c.getLastDC());
    EXPECT_EQ(-1, c.lastISPDayNightState());
}

TEST_F(IspControlTest, OnlyEnabledTablesCount) {
    // A "DN"-like table under another name, enabled, is never looked at.
    ProbeController& c = load(file(table("DAYNIGHT", "1", band("day", 1, 2, item("EE", 45)))));
    pass(c);
    EXPECT_EQ("", out);
    EXPECT_EQ(-1, c.lastISPDayNightState());
}

// ---- the gain table ----

TEST_F(IspControlTest, FailingGainReadIsLoggedAndSkipsThePause) {
    ProbeController& c = load(file(dnTable() + table("GAIN", "1", band("g0", 0, 100, item("EE", 60))), 5));
    c.gainResult = 0;
    EXPECT_EQ(0, pass(c));
    EXPECT_EQ(0, pausedMs);
    // The day/night table of the same pass was applied first.
    EXPECT_EQ(0u, out.find("set ee=45\n"));
    EXPECT_EQ(std::string::npos, out.find("set ee=60"));
    EXPECT_EQ(1u, countOf(errorLog(), "get current gain failed"));
}

TEST_F(IspControlTest, PassPausesTheFilesTime) {
    ProbeController& c = load(file(table("GAIN", "1", band("g0", 0, 100, item("EE", 60))), 5));
    EXPECT_EQ(0, pass(c));
    EXPECT_EQ(5000, pausedMs);
    EXPECT_EQ("set ee=60\n", out);
}

TEST_F(IspControlTest, PassPausesExactlyItsTimeOnTheClock) {
    ProbeController& c = load(file(table("GAIN", "1", band("g0", 0, 100, item("EE", 60))), 2));
    std::atomic<bool> done{false};
    std::thread t([&] {
        testing::internal::CaptureStdout();
        c.ISPParamBody();
        testing::internal::GetCapturedStdout();
        PlatformClock::threadLeaving();
        done = true;
    });
    ASSERT_TRUE(PlatformClock::waitForSleepers(1));
    clock.advance(1999);
    EXPECT_FALSE(done.load());
    clock.advance(1);
    t.join();
    EXPECT_TRUE(done.load());
}

TEST_F(IspControlTest, GainBandsWithGapsAndOverlaps) {
    const std::string gain =
        table("GAIN", "1",
              band("g0", 0, 16, item("EE", 10) + item("DC", 0)) + band("g1", 16, 32, item("EE", 20)) +
                  band("g2", 24, 40, item("EE", 99) + item("DC", 7)) + band("g3", 50, 64, item("EE", 30)) +
                  // A repeated band name adds to the first band and keeps its bounds.
                  band("g1", 100, 200, item("DC", 5)));
    ProbeController& c = load(file(gain));
    struct Step {
        int gain;
        const char* printed;
    } steps[] = {
        {0, "set ee=10\nset DC=0\n"},
        {15, ""},
        {16, "set ee=20\nset DC=5\n"},  // key equal to g0's max falls into g1
        {24, ""},                       // g1 came first: the overlap is g1's
        {31, ""},
        {32, "set ee=99\nset DC=7\n"},  // past g1, inside g2
        {45, ""},                       // gap: nothing found, nothing changes
        {50, "set ee=30\n"},            // g3 has no DC: DC keeps 7
        {64, ""},
        {150, ""},  // g1's later bounds were not taken
        {-5, ""},
        {0, "set ee=10\nset DC=0\n"},
    };
    for (const Step& s : steps) {
        c.gain = s.gain;
        pass(c);
        EXPECT_EQ(s.printed, out) << "gain " << s.gain;
    }
    EXPECT_EQ(10, c.getLastEE());
    EXPECT_EQ(0, c.getLastDC());
}

TEST_F(IspControlTest, GainTableWinsOverTheDayNightTableInTheSamePass) {
    ProbeController& c = load(file(dnTable() + table("GAIN", "1", band("g0", 0, 100, item("EE", 60)))));
    pass(c);
    EXPECT_EQ("set ee=45\nset DC=1\nset A0=16,TM=-100\nset TM=4,A0=16\nset ee=60\n", out);
    EXPECT_EQ(60, c.getLastEE());
    // Each pass applies both again; the day/night value differs from the one
    // left in force, so both are announced again.
    pass(c);
    EXPECT_EQ("set ee=45\nset ee=60\n", out);
}

// ---- edge enhancement ----

TEST_F(IspControlTest, EdgeEnhancementMinusOneIsRememberedButNotAnnounced) {
    ProbeController& c =
        load(file(table("GAIN", "1",
                        band("a", 0, 10, item("EE", 30)) + band("off", 10, 20, item("EE", -1)) +
                            band("keep", 20, 30, item("EE", -2)))));
    c.gain = 15;
    pass(c);
    EXPECT_EQ("", out);
    EXPECT_EQ(-1, c.getLastEE());
    c.gain = 5;
    pass(c);
    EXPECT_EQ("set ee=30\n", out);
    c.gain = 25;
    pass(c);
    EXPECT_EQ("", out);
    EXPECT_EQ(-2, c.getLastEE());
    c.gain = 5;
    pass(c);
    EXPECT_EQ("set ee=30\n", out);
}

TEST_F(IspControlTest, SensorTypesFourFiveSixTakeNoEdgeEnhancement) {
    for (int type : {4, 5, 6}) {
        ProbeController& c = load(file(dnTable()), type);
        pass(c);
        EXPECT_EQ("set DC=1\nset A0=16,TM=-100\nset TM=4,A0=16\n", out) << type;
        EXPECT_EQ(-100, c.getLastEE()) << type;
        c.setTNFMode(1);
        c.setDayNightStateValue(0);
        pass(c);
        EXPECT_EQ("set DC=0\n", out) << type;
        EXPECT_EQ(-100, c.getLastEE()) << type;
        ctl.reset();
    }
}

TEST_F(IspControlTest, SensorType21InTNFMode1ForcesEdgeEnhancementOff) {
    ProbeController& c = load(file(dnTable()), 21);
    pass(c);
    EXPECT_EQ(45, c.getLastEE());
    c.setTNFMode(1);
    pass(c);
    EXPECT_EQ("", out);
    EXPECT_EQ(-1, c.getLastEE());
    // Forced even where the table has no EE for the key.
    c.setDayNightStateValue(5);
    pass(c);
    EXPECT_EQ(-1, c.getLastEE());
    c.setDayNightStateValue(1);
    c.setTNFMode(0);
    pass(c);
    EXPECT_EQ("set ee=45\nclose TNF\nset TM=4,A0=16\n", out);
}

TEST_F(IspControlTest, OtherSensorTypesInTNFMode1KeepTheirEdgeEnhancement) {
    ProbeController& c = load(file(dnTable()), 22);
    c.setTNFMode(1);
    pass(c);
    EXPECT_EQ("set ee=45\nset DC=1\n", out);
}

// ---- temporal noise reduction ----

TEST_F(IspControlTest, TNFMode1HoldsA0AndTMAndThenAnnouncesBothAfresh) {
    ProbeController& c = load(file(dnTable()));
    pass(c);
    ASSERT_EQ(16, c.getLastA0());
    c.setTNFMode(1);
    EXPECT_EQ(1, c.tnfMode());
    EXPECT_EQ(-1, c.getLastA0());
    EXPECT_EQ(-1, c.getLastTM());
    c.setDayNightStateValue(0);
    pass(c);
    EXPECT_EQ("set ee=20\nset DC=0\n", out);
    EXPECT_EQ(-1, c.getLastA0());
    EXPECT_EQ(-1, c.getLastTM());
    c.setTNFMode(3);
    pass(c);
    EXPECT_EQ("close TNF\nset TM=12,A0=48\n", out);
    EXPECT_EQ(48, c.getLastA0());
    EXPECT_EQ(12, c.getLastTM());
}

TEST_F(IspControlTest, TNFMode2HoldsA0AndTMAndTheNextModeAnnouncesTheTable) {
    ProbeController& c = load(file(dnTable()));
    testing::internal::CaptureStdout();
    c.setTNFMode(2);
    EXPECT_EQ("", testing::internal::GetCapturedStdout());  // level 0: nothing to set
    pass(c);
    EXPECT_EQ("set ee=45\nset DC=1\n", out);
    EXPECT_EQ(-100, c.getLastA0());
    c.setTNFMode(0);
    pass(c);
    EXPECT_EQ("set A0=16,TM=-100\nset TM=4,A0=16\n", out);
}

TEST_F(IspControlTest, TNFMode2AppliesTheStoredLevel) {
    ProbeController& c = make();
    testing::internal::CaptureStdout();
    c.setTNF(50);
    c.setTNFMode(2);
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ("setTNF=129\nsetTNF=129\n", printed);
    EXPECT_EQ(2, c.tnfMode());
    EXPECT_EQ(50, c.tnfLevel());
}

TEST_F(IspControlTest, OffValuesCloseTemporalNoiseReduction) {
    ProbeController& c = load(file(table("GAIN", "1",
                                         band("on", 0, 10, item("A0", 16) + item("TM", 4)) +
                                             band("a0off", 10, 20, item("A0", -1) + item("TM", 4)) +
                                             band("tmoff", 20, 30, item("A0", 16) + item("TM", -1)) +
                                             band("tmonly", 30, 40, item("TM", 9)))));
    c.gain = 0;
    pass(c);
    EXPECT_EQ("set A0=16,TM=-100\nset TM=4,A0=16\n", out);
    c.gain = 15;
    pass(c);
    EXPECT_EQ("close TNF\n", out);  // A0 off; TM unchanged
    c.gain = 25;
    pass(c);
    EXPECT_EQ("set A0=16,TM=4\nclose TNF\n", out);
    c.gain = 35;
    pass(c);
    EXPECT_EQ("set TM=9,A0=16\n", out);
    c.gain = 15;
    pass(c);
    EXPECT_EQ("close TNF\nclose TNF\n", out);
}

TEST_F(IspControlTest, SetTNFPrintsTheInvertedStrength) {
    ProbeController& c = make();
    struct Case {
        int level;
        const char* printed;
    } cases[] = {
        {1, "setTNF=255\n"}, {100, "setTNF=0\n"}, {50, "setTNF=129\n"}, {0, ""}, {200, "setTNF=257\n"}};
    for (const Case& k : cases) {
        testing::internal::CaptureStdout();
        EXPECT_TRUE(c.setTNF(k.level));
        EXPECT_EQ(k.printed, testing::internal::GetCapturedStdout()) << k.level;
        EXPECT_EQ(k.level, c.tnfLevel());
    }
}

TEST_F(IspControlTest, GetTNFModeReportsTheSwitchClassification) {
    for (int type : {50, 11, 16, 19, 24}) {
        ProbeController& c = make(type);
        c.setTNFMode(2);
        int mode = -1;
        c.setTNFSwitch(0);
        EXPECT_TRUE(c.getTNFMode(mode));
        EXPECT_EQ(1, mode) << type;
        c.setTNFSwitch(1);
        c.getTNFMode(mode);
        EXPECT_EQ(type == 50 ? 0 : 1, mode) << type;
        ctl.reset();
    }
}

TEST_F(IspControlTest, GetTNFReportsZeroWhenSwitchedOff) {
    ProbeController& c = make();
    c.setTNF(40);
    int level = 77;
    c.setTNFSwitch(1);
    EXPECT_TRUE(c.getTNF(level));
    EXPECT_EQ(77, level);
    c.setTNFSwitch(0);
    EXPECT_TRUE(c.getTNF(level));
    EXPECT_EQ(0, level);
}

// ---- reloading ----

TEST_F(IspControlTest, RealTimeUpdateRereadsTheFileEveryPass) {
    ProbeController& c = load(file(table("GAIN", "1", band("g", 0, 100, item("EE", 60))), 0, true));
    pass(c);
    EXPECT_EQ("set ee=60\n", out);
    root.write(kISPFile, file(table("GAIN", "1", band("g", 0, 100, item("EE", 61))), 0, true));
    pass(c);
    EXPECT_EQ("set ee=61\n", out);
    // A broken file empties the tables until a later read succeeds.
    root.write(kISPFile, "<config");
    pass(c);
    EXPECT_EQ(std::string::npos, out.find("set ee"));
    EXPECT_TRUE(c.ispTables().empty());
    EXPECT_EQ(1u, countOf(errorLog(), "objISPParamParse.parse failed"));
    root.write(kISPFile, file(table("GAIN", "1", band("g", 0, 100, item("EE", 62))), 0, true));
    pass(c);
    EXPECT_EQ("set ee=62\n", out);
}

TEST_F(IspControlTest, WithoutRealTimeUpdateTheFileIsReadOnce) {
    ProbeController& c = load(file(table("GAIN", "1", band("g", 0, 100, item("EE", 60)))));
    pass(c);
    root.write(kISPFile, file(table("GAIN", "1", band("g", 0, 100, item("EE", 61)))));
    pass(c);
    EXPECT_EQ("", out);
    EXPECT_EQ(60, c.getLastEE());
}

TEST_F(IspControlTest, SetISPParamOnAnUnknownTableChangesNothing) {
    ProbeController& c = load(file(dnTable()));
    testing::internal::CaptureStdout();
    EXPECT_TRUE(c.setISPParam("NOPE", 1));
    EXPECT_TRUE(c.setEEParam("NOPE", 1));
    EXPECT_TRUE(c.setDCParam("NOPE", 1));
    EXPECT_TRUE(c.set3DNRParam("NOPE", 1));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ(-100, c.getLastEE());
    EXPECT_EQ(-100, c.getLastDC());
    EXPECT_EQ(-100, c.getLastA0());
    EXPECT_EQ(-100, c.getLastTM());
}

// ---- with a running controller ----

TEST(IspControlRunningTest, DayNightStateFromTheWorkerReachesTheTable) {
    testutil::ControllerRig rig;
    testutil::writeSchemeCount(rig.root, 1);
    rig.root.write(kISPFile, file(dnTable()));
    ProbeController& c = rig.make();
    ASSERT_EQ(1, rig.init());
    testing::internal::CaptureStdout();
    testutil::runPumped([&] { return c.ISPParamBody(); });
    std::string first = testing::internal::GetCapturedStdout();
    EXPECT_EQ(0u, first.find("set ee=45\n"));
    c.setDayNightMode(2);
    rig.clock.advance(2000);
    ASSERT_EQ(0, c.getDayNightState());
    testing::internal::CaptureStdout();
    testutil::runPumped([&] { return c.ISPParamBody(); });
    std::string second = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, second.find("set ee=20\n"));
    EXPECT_EQ(0, c.lastISPDayNightState());
}

TEST(IspControlRunningTest, OwnersLoopRunsBesideTheDayNightWorker) {
    testutil::ControllerRig rig;
    testutil::writeSchemeCount(rig.root, 1);
    rig.root.write(kISPFile, file(dnTable()));
    ProbeController& c = rig.make();
    c.logCycles = false;
    ASSERT_EQ(1, rig.init());
    // The owner's loop: one pass (no pause of its own with time 0), then 1 ms,
    // so that its passes coincide with every cycle of the worker.
    std::atomic<int> passes{0};
    GThread owner(
        [&] {
            c.ISPParamBody();
            ++passes;
            KestraTime(0, 1000).wait();
        },
        "ISPLoop");
    testing::internal::CaptureStdout();
    ASSERT_TRUE(owner.start());
    ASSERT_TRUE(PlatformClock::waitForSleepers(2));
    c.setDayNightMode(2);
    rig.clock.advance(3000);
    c.setTNFMode(1);
    c.setDayNightMode(1);
    rig.clock.advance(3000);
    c.setTNFMode(0);
    rig.clock.advance(1000);
    owner.stop();
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_GE(passes.load(), 7);
    // Day, night, day again: each table value announced as the state changed.
    size_t day1 = out.find("set ee=45\n");
    size_t night = out.find("set ee=20\n", day1);
    size_t day2 = out.find("set ee=45\n", night);
    EXPECT_NE(std::string::npos, day1);
    EXPECT_NE(std::string::npos, night);
    EXPECT_NE(std::string::npos, day2);
    EXPECT_NE(std::string::npos, out.find("close TNF\nset TM=4,A0=16\n", day2));
    EXPECT_EQ(1, c.getDayNightState());
    EXPECT_EQ(16, c.getLastA0());
}
