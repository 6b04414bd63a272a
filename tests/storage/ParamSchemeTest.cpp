#include "storage/ParamScheme.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "TestRoot.h"
#include "doubles/ControllerFixture.h"
#include "doubles/FakeController.h"
#include "doubles/FakeGPIO.h"
#include "doubles/FakeUART.h"
#include "platform/KSFile.h"
#include "platform/PlatformClock.h"
#include "storage/SensorCache.h"
#include "storage/SensorConfigFile.h"

using testutil::TempRoot;
using testutil::VirtualClock;

namespace {
const char kFactory[] = "/mnt/mtd/code/config_file/sensor_Factory.cfg";
const char kXml[] = "/mnt/mtd/code/config_file/sensor.xml";

std::string schemePath(int i) { return "/mnt/mtd/code/config_file/sensor" + std::to_string(i) + ".cfg"; }

// A scheme file: brightness (id 1) marks which scheme is in force.
std::string scheme(int brightness, int enable, int sh, int sm, int eh, int em) {
    return "(1," + std::to_string(brightness) + ")(500," + std::to_string(enable) + ")(501," + std::to_string(sh) +
           ")(502," + std::to_string(sm) + ")(503," + std::to_string(eh) + ")(504," + std::to_string(em) + ")";
}

std::atomic<int> g_reads{0};
void countRead(const std::string&) { ++g_reads; }

// A controller with its files set up as a camera start would leave them.
struct SchemeSetup {
    TempRoot root;
    FakeController c;
    explicit SchemeSetup(const std::vector<std::string>& schemes) {
        testutil::writeSchemeCount(root, static_cast<int>(schemes.size()));
        root.write(kFactory, "(1,0)(13,0)");
        for (size_t i = 0; i < schemes.size(); ++i) root.write(schemePath(static_cast<int>(i)), schemes[i]);
        testing::internal::CaptureStdout();
        c.createSensorXML();
        c.initSensorFilesHandler();
        c.loadSchemeParamToMemory();
        testing::internal::GetCapturedStdout();
    }
    int brightness() {
        int v = -1;
        c.getLastValueCache().getSensorValue(1, v);
        return v;
    }
    int step() {
        testing::internal::CaptureStdout();
        int r = c.paramSchemeSwitchBody();
        testing::internal::GetCapturedStdout();
        return r;
    }
};
// Runs `writer` on one thread while `other` and the worker's scheme step run in a loop
// on two more (at least 20 times each, and until the writer is done).
template <class Writer, class Other>
void writeWhileOtherAndStepRun(SchemeSetup& s, Writer writer, Other other) {
    std::atomic<bool> writerDone{false};
    std::thread w([&] {
        writer();
        writerDone = true;
    });
    std::thread o([&] {
        for (int i = 0; i < 20 || !writerDone; ++i) other();
    });
    std::thread stepper([&] {
        for (int i = 0; i < 20 || !writerDone; ++i) s.c.paramSchemeSwitchBody();
    });
    w.join();
    o.join();
    stepper.join();
}
}  // namespace

TEST(ParamSchemeTest, RecordAccessors) {
    ParamScheme s;
    int v = 9;
    s.getStartTime(v);
    EXPECT_EQ(v, 0);
    s.setStartTime(830);
    s.setEndTime(1800);
    s.setEnableFlag(1);
    int a = 0, b = 0, e = 0;
    s.getStartTime(a);
    s.getEndTime(b);
    s.getEnableFlag(e);
    EXPECT_EQ(a, 830);
    EXPECT_EQ(b, 1800);
    EXPECT_EQ(e, 1);
}

TEST(ParamSchemeTest, OverlappingWindowsLowestEnabledIndexWins) {
    VirtualClock clock(12, 30);
    SchemeSetup s({scheme(100, 1, 8, 0, 18, 0), scheme(101, 1, 12, 0, 20, 0)});
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
    EXPECT_EQ(s.brightness(), 100);
    clock.setTime(18, 0);
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 1);
    EXPECT_EQ(s.brightness(), 101);
    clock.setTime(20, 0);
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), -1);
    EXPECT_EQ(s.brightness(), 0);
    int fromFile = 5;
    EXPECT_EQ(s.c.getParamSchemeFromFile(fromFile), 1);
    EXPECT_EQ(fromFile, -1);
}

TEST(ParamSchemeTest, MinuteIdsCountInTensOfMinutes) {
    VirtualClock clock(18, 5);
    SchemeSetup s({scheme(100, 1, 8, 3, 18, 1)});
    int start = 0, end = 0;
    s.c.getSchemeList()[0].getStartTime(start);
    s.c.getSchemeList()[0].getEndTime(end);
    EXPECT_EQ(start, 830);
    EXPECT_EQ(end, 1810);
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
    clock.setTime(18, 10);
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), -1);
    clock.setTime(8, 29);
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), -1);
    clock.setTime(8, 30);
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
}

TEST(ParamSchemeTest, WindowOverMidnightNeverMatches) {
    VirtualClock clock(23, 0);
    SchemeSetup s({scheme(100, 1, 22, 0, 6, 0)});
    for (int h : {23, 0, 3, 22, 5}) {
        clock.setTime(h, 0);
        s.step();
        EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), -1) << h;
    }
}

TEST(ParamSchemeTest, DisabledSchemeNeverMatchesAndMissingIdsReadAsZero) {
    VirtualClock clock(12, 0);
    SchemeSetup s({scheme(100, 0, 0, 0, 24, 0), "(1,5)(501,0)(503,24)"});
    int enable = 7;
    s.c.getSchemeList()[1].getEnableFlag(enable);
    EXPECT_EQ(enable, 0);
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), -1);
}

TEST(ParamSchemeTest, SetParamSchemeWithTheCurrentIndexDoesNothing) {
    VirtualClock clock(12, 0);
    SchemeSetup s({scheme(100, 1, 0, 0, 24, 0), scheme(101, 1, 0, 0, 24, 0)});
    testing::internal::CaptureStdout();
    EXPECT_EQ(s.c.setParamScheme(1), 1);
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 1);
    size_t sets = s.c.sets.size();
    EXPECT_EQ(s.c.setParamScheme(1), 1);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(s.c.sets.size(), sets);
    EXPECT_NE(out.find("#########ISensorController::setParamScheme 1\n"), std::string::npos);
    int fromFile = -5;
    s.c.getParamSchemeFromFile(fromFile);
    EXPECT_EQ(fromFile, 1);
}

TEST(ParamSchemeTest, FailingSwitchKeepsTheNewIndexAndBlocksAutomaticSwitching) {
    VirtualClock clock(12, 0);
    SchemeSetup s({scheme(100, 1, 0, 0, 24, 0), scheme(101, 1, 0, 0, 24, 0)});
    s.c.failSet.insert(1);
    testing::internal::CaptureStdout();
    EXPECT_EQ(s.c.switchScheme(1), 0);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 1);
    EXPECT_TRUE(s.c.isResetting());
    std::string xml = s.root.read(kXml);
    EXPECT_NE(xml.find("value=\"-2\""), std::string::npos);  // "SchemeIndex" not written
    s.c.failSet.clear();
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 1);  // blocked: scheme 0 would win
}

TEST(ParamSchemeTest, ZeroSchemesAppliesTheFactorySetOnceThenKeepsIt) {
    VirtualClock clock(12, 0);
    SchemeSetup s({});
    EXPECT_TRUE(s.c.getSchemeFiles().empty());
    EXPECT_TRUE(s.c.getSchemeList().empty());
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), -1);
    size_t sets = s.c.sets.size();
    EXPECT_EQ(sets, 2u);  // ids 1 and 13 from the factory set
    s.step();
    s.step();
    EXPECT_EQ(s.c.sets.size(), sets);
}

TEST(ParamSchemeTest, ManualModeAndResettingStopTheStep) {
    VirtualClock clock(12, 0);
    SchemeSetup s({scheme(100, 1, 0, 0, 24, 0)});
    testing::internal::CaptureStdout();
    EXPECT_EQ(s.c.setParamMode(0), 1);
    testing::internal::GetCapturedStdout();
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), -2);
    int mode = 7;
    EXPECT_EQ(s.c.getParamSchemeModeFromFile(mode), 1);
    EXPECT_EQ(mode, 0);
    s.c.setParamMode(1);
    s.c.setResettingFlag(true);
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), -2);
    s.c.setResettingFlag(false);
    s.step();
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
}

TEST(ParamSchemeTest, AFullDayOverThreeSchemesSwitchesToTheMinute) {
    VirtualClock clock(0, 0);
    // 06:30-12:00 scheme 0, 12:00-18:20 scheme 1, 18:20-23:50 scheme 2, the rest factory.
    SchemeSetup s({scheme(100, 1, 6, 3, 12, 0), scheme(101, 1, 12, 0, 18, 2), scheme(102, 1, 18, 2, 23, 5)});
    s.c.getDayNightThread();  // the step is driven directly, once a simulated minute
    std::vector<std::pair<int, int>> switches;  // (minute of day, index)
    int last = s.c.getCurrentParamSchemeIndex();
    for (int minute = 0; minute < 24 * 60; ++minute) {
        clock.setTime(minute / 60, minute % 60);
        s.step();
        if (s.c.getCurrentParamSchemeIndex() != last) {
            last = s.c.getCurrentParamSchemeIndex();
            switches.emplace_back(minute, last);
        }
    }
    std::vector<std::pair<int, int>> expected{
        {0, -1}, {6 * 60 + 30, 0}, {12 * 60, 1}, {18 * 60 + 20, 2}, {23 * 60 + 50, -1}};
    EXPECT_EQ(switches, expected);
}

TEST(ParamSchemeTest, WorkerThreadSwitchesOnTheVirtualClock) {
    VirtualClock clock(11, 59, 0);
    SchemeSetup s({scheme(100, 1, 0, 0, 12, 0), scheme(101, 1, 12, 0, 24, 0)});
    s.c.setOperator(SafePointer<IUARTController>(new FakeUART()), SafePointer<IGPIO>(new FakeGPIO()));
    s.c.enterDayMode();  // as init leaves it, so the worker's cycles take no extra pauses
    ASSERT_TRUE(s.c.getDayNightThread().start());
    ASSERT_TRUE(PlatformClock::waitForSleepers(1));
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
    clock.advance(58 * 1000);
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
    clock.advance(3000);  // past 12:00:00
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 1);
    EXPECT_EQ(s.brightness(), 101);
    s.c.getDayNightThread().stop();
}

TEST(ParamSchemeTest, IdleStepReadsNoFile) {
    VirtualClock clock(12, 0);
    SchemeSetup s({scheme(100, 1, 0, 0, 24, 0), scheme(101, 1, 0, 0, 24, 0)});
    s.step();
    ASSERT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
    g_reads = 0;
    KSFile::setBeforeReadHook(countRead);
    for (int i = 0; i < 10; ++i) s.step();
    KSFile::setBeforeReadHook(nullptr);
    EXPECT_EQ(g_reads.load(), 0);
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
}

TEST(ParamSchemeTest, SchemeFileDeletedBehindTheControllersBack) {
    VirtualClock clock(8, 0);
    SchemeSetup s({scheme(100, 1, 0, 0, 10, 0), scheme(101, 1, 10, 0, 24, 0)});
    s.step();
    ASSERT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
    s.root.remove(schemePath(1));
    clock.setTime(10, 0);
    s.step();  // the switch cannot read the file: nothing changes, nothing crashes
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
    EXPECT_EQ(s.brightness(), 100);
    EXPECT_EQ(s.c.isSensorSchemeFilesExist(), 0);
    // A restart repairs the set from the factory file.
    testing::internal::CaptureStdout();
    s.c.initConfigFile();
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("sensor config file /mnt/mtd/code/config_file/sensor1.cfg not exist"), std::string::npos);
    EXPECT_TRUE(s.root.exists(schemePath(1)));
    EXPECT_EQ(s.root.read(schemePath(1)), "(1,0)(13,0)");  // copied from the factory file
}

TEST(ParamSchemeTest, ResetParametersFromUserSchemes) {
    VirtualClock clock(12, 0);
    SchemeSetup s({scheme(100, 0, 1, 0, 2, 0), scheme(101, 1, 0, 0, 24, 0), scheme(102, 1, 0, 0, 24, 0)});
    s.root.write(kFactory, "(1,7)(13,0)(500,1)(501,0)(502,0)(503,24)(504,0)");
    testing::internal::CaptureStdout();
    s.c.setParamScheme(2);
    ASSERT_EQ(s.c.getCurrentParamSchemeIndex(), 2);
    EXPECT_EQ(s.c.resetParameters(), 1);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("resetParameters success"), std::string::npos);
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
    EXPECT_FALSE(s.c.isResetting());
    EXPECT_EQ(s.brightness(), 7);
    int v = -1;
    SensorConfigFile f0(schemePath(0)), f2(schemePath(2));
    f0.readParameterById(500, v);
    EXPECT_EQ(v, 1);
    f2.readParameterById(500, v);
    EXPECT_EQ(v, 0);
    f2.readParameterById(1, v);
    EXPECT_EQ(v, 7);
    int mode = -1;
    s.c.getParamSchemeModeFromFile(mode);
    EXPECT_EQ(mode, 0);
    EXPECT_EQ(s.c.paramMode(), 1);  // the file says manual, the mode in force is unchanged
}

TEST(ParamSchemeTest, SchemeStateFileShape) {
    TempRoot root;
    FakeController c;
    testing::internal::CaptureStdout();
    ASSERT_EQ(c.createSensorXML(), 1);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("ISensorController::createSensorXML success"), std::string::npos);
    std::string xml = root.read(kXml);
    EXPECT_NE(xml.find("<sensor>"), std::string::npos);
    EXPECT_NE(xml.find("<paramScheme>"), std::string::npos);
    EXPECT_LT(xml.find("SchemeIndex"), xml.find("SchemeMode"));
    int index = 0, mode = 0;
    EXPECT_EQ(c.getParamSchemeFromFile(index), 1);
    EXPECT_EQ(index, -2);
    EXPECT_EQ(c.getParamSchemeModeFromFile(mode), 1);
    EXPECT_EQ(mode, 1);
    EXPECT_EQ(c.setParamSchemeToFile(3), 1);
    EXPECT_EQ(c.getParamSchemeFromFile(index), 1);
    EXPECT_EQ(index, 3);
}

TEST(ParamSchemeTest, MissingFilesAreReported) {
    TempRoot root;
    FakeController c;
    int n = 5, v = 5;
    testing::internal::CaptureStdout();
    EXPECT_EQ(c.getParamSchemeNum(n), 0);
    EXPECT_EQ(c.getParamSchemeFromFile(v), 0);
    EXPECT_EQ(c.setParamMode(0), 0);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(n, 5);
    EXPECT_EQ(v, 5);
    EXPECT_NE(out.find("open sensorAbility.xml failed\n"), std::string::npos);
    EXPECT_NE(out.find("open /mnt/mtd/code/config_file/sensor.xml failed\n"), std::string::npos);
    EXPECT_EQ(c.paramMode(), 1);
    EXPECT_EQ(c.initSensorFilesHandler(), 0);
}

TEST(ParamSchemeTest, SchemeCountAndFileList) {
    TempRoot root;
    testutil::writeSchemeCount(root, 3);
    FakeController c;
    testing::internal::CaptureStdout();
    int n = 0;
    EXPECT_EQ(c.getParamSchemeNum(n), 1);
    EXPECT_EQ(n, 3);
    EXPECT_EQ(c.initSensorFilesHandler(), 1);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("p_nSchemeNum=3\n"), std::string::npos);
    EXPECT_NE(out.find("ISensorController::initSensorFilesHandler() szFileName(/mnt/mtd/code/config_file/sensor2.cfg)\n"),
              std::string::npos);
    ASSERT_EQ(c.getSchemeFiles().size(), 3u);
    EXPECT_EQ(c.getSchemeFiles()[2]->getFilePath(), schemePath(2));
    std::string text;
    EXPECT_EQ(c.readParamByScheme(3, text), 0);
    EXPECT_EQ(c.readParamByScheme(-5, text), 0);
}

TEST(ParamSchemeTest, ConcurrentSetParametersWhileTheStepRuns) {
    VirtualClock clock(11, 0);
    SchemeSetup s({scheme(100, 1, 0, 0, 12, 0), scheme(101, 1, 12, 0, 24, 0)});
    testing::internal::CaptureStdout();
    std::atomic<bool> done{false};
    auto writer = [&](int id) {
        for (int i = 0; i < 200; ++i) s.c.setParameters("(" + std::to_string(id) + "," + std::to_string(i) + ")");
    };
    std::thread stepper([&] {
        // At least a few steps, and on until the writers are through.
        for (int i = 0; i < 20 || !done; ++i) {
            s.c.paramSchemeSwitchBody();
            int idx = s.c.getCurrentParamSchemeIndex();
            (void)idx;
        }
    });
    std::thread a(writer, 2), b(writer, 3);
    a.join();
    b.join();
    done = true;
    stepper.join();
    testing::internal::GetCapturedStdout();
    int v = 0;
    s.c.getLastValueCache().getSensorValue(2, v);
    EXPECT_EQ(v, 199);
    s.c.getLastValueCache().getSensorValue(3, v);
    EXPECT_EQ(v, 199);
    EXPECT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
}

// flush writes the selected scheme's record while loadSchemeParamToMemory
// rebuilds the list and the worker's step reads it; run under the thread
// sanitizer (make tsan), an unguarded access shows as a race or a use after free.
TEST(ParamSchemeTest, FlushReloadAndStepOnThreeThreads) {
    VirtualClock clock(12, 0);
    SchemeSetup s({scheme(100, 1, 0, 0, 24, 0), scheme(101, 1, 0, 0, 24, 0), scheme(102, 1, 0, 0, 24, 0)});
    s.step();
    ASSERT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
    testing::internal::CaptureStdout();
    constexpr int kRounds = 150;
    std::atomic<int> setFailures{0}, flushFailures{0};
    writeWhileOtherAndStepRun(
        s,
        [&] {
            for (int i = 0; i < kRounds; ++i) {
                // Toggling the enable flag of the selected scheme makes the step switch schemes.
                const std::string list = "(1," + std::to_string(i) + ")(500," + std::to_string(i % 2) +
                                         ")(501,0)(502,0)(503,24)(504,0)";
                if (s.c.setParameters(list) != 0) ++setFailures;
                if (s.c.flush() != 0) ++flushFailures;
            }
        },
        [&] { s.c.loadSchemeParamToMemory(); });
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(setFailures.load(), 0);
    EXPECT_EQ(flushFailures.load(), 0);
    ASSERT_EQ(s.c.getSchemeList().size(), 3u);
    // The records in memory are those of the files, as a fresh load gives them.
    std::vector<ParamScheme> before = s.c.getSchemeList();
    s.c.loadSchemeParamToMemory();
    std::vector<ParamScheme> after = s.c.getSchemeList();
    for (size_t i = 0; i < 3; ++i) {
        int a = 0, b = 0;
        before[i].getEnableFlag(a);
        after[i].getEnableFlag(b);
        EXPECT_EQ(a, b) << "scheme " << i;
    }
}

TEST(ParamSchemeTest, SchemeFileListRebuiltWhileFlushAndStepUseIt) {
    // A reset or a new start-up rebuilds the list of scheme-file handlers while a
    // flush and the worker's scheme step (on other threads) read and write through it.
    VirtualClock clock(12, 0);
    SchemeSetup s({scheme(100, 1, 0, 0, 24, 0), scheme(101, 1, 0, 0, 24, 0), scheme(102, 1, 0, 0, 24, 0)});
    s.step();
    ASSERT_EQ(s.c.getCurrentParamSchemeIndex(), 0);
    testing::internal::CaptureStdout();
    constexpr int kRounds = 150;
    std::atomic<int> flushFailures{0}, readFailures{0};
    writeWhileOtherAndStepRun(
        s,
        [&] {
            for (int i = 0; i < kRounds; ++i) {
                s.c.setParameters("(1," + std::to_string(i) + ")(500,1)(501,0)(502,0)(503,24)(504,0)");
                if (s.c.flush() != 0) ++flushFailures;
                std::string text;
                if (!s.c.readParamByScheme(1, text)) ++readFailures;
            }
        },
        [&] { s.c.initSensorFilesHandler(); });
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(flushFailures.load(), 0);
    EXPECT_EQ(readFailures.load(), 0);
    ASSERT_EQ(s.c.getSchemeFiles().size(), 3u);
    // The last flush reached scheme 0's file through whichever handler was current.
    EXPECT_NE(s.root.read(schemePath(0)).find("(1," + std::to_string(kRounds - 1) + ")"), std::string::npos);
}
