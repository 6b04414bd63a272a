// Controller start-up: the order of init's steps, the configuration files it
// creates, checks, rebuilds and migrates, and the ways it fails.
#include <gtest/gtest.h>
#include <utime.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "doubles/ControllerRig.h"
#include "platform/KSFile.h"
#include "platform/SensorParameterParser.h"
#include "storage/ParamScheme.h"
#include "storage/SensorConfigFile.h"

using testutil::ControllerRig;
using testutil::countOf;

namespace {

const char* const kFactory = "/mnt/mtd/code/config_file/sensor_Factory.cfg";
const char* const kScheme0 = "/mnt/mtd/code/config_file/sensor0.cfg";
const char* const kScheme1 = "/mnt/mtd/code/config_file/sensor1.cfg";
const char* const kOldFile = "/mnt/mtd/code/config_file/sensor.cfg";
const char* const kSchemeXml = "/mnt/mtd/code/config_file/sensor.xml";

std::map<int, int> readPairs(const testutil::TempRoot& root, const std::string& path) {
    std::map<int, int> m;
    SensorParameterParser::parseSensorParameter(root.read(path), m);
    return m;
}

// Position of `needle` in `hay`, or npos; for order checks of console output.
size_t at(const std::string& hay, const std::string& needle) {
    return hay.find(needle);
}

class ControllerInitTest : public ::testing::Test {
protected:
    ControllerRig rig;
};

}  // namespace

TEST_F(ControllerInitTest, StepsRunInTheirOrderOnAFirstStart) {
    testutil::writeSchemeCount(rig.root, 2);
    ProbeController& c = rig.make();
    c.setIrCutGpio(1, 7, 1);

    bool errorLogReadyBeforeDriver = false;
    int statusAtDriver = -1, dnDefaultAtDriver = -1;
    c.onInitController = [&](ProbeController& self) {
        // The logs are open and the ISP tables were loaded (and failed: no
        // ISPParam.xml) before the driver's own initialisation.
        std::vector<std::string> err = rig.errorLog();
        errorLogReadyBeforeDriver = !err.empty() && err.front() == "objISPParamParse.parse failed";
        statusAtDriver = self.getSensorStatus();
        dnDefaultAtDriver = self.dnDefault();
    };
    int statusAtVideo = -1, baseAtVideo = -1, dnDefaultAtVideo = -1;
    c.onVideoSystem = [&](ProbeController& self) {
        statusAtVideo = self.getSensorStatus();
        baseAtVideo = self.getBaseSensorStatus();
        dnDefaultAtVideo = self.dnDefault();
    };
    int baseAtPicture = -1;
    c.onPictureDay = [&](ProbeController& self) { baseAtPicture = self.getBaseSensorStatus(); };
    int baseAtFactory = -1;
    bool xmlBeforeFactory = false, factoryBeforeFactory = true;
    c.onFirstSensorRead = [&](ProbeController& self) {
        baseAtFactory = self.getBaseSensorStatus();
        xmlBeforeFactory = rig.root.exists(kSchemeXml);
        factoryBeforeFactory = rig.root.exists(kFactory);
    };
    size_t schemesAtNotify = 0;
    bool filesAtNotify = false, threadAtNotify = true, initialisedAtNotify = true;
    c.onNotify = [&](ProbeController& self) {
        schemesAtNotify = self.getSchemeList().size();
        filesAtNotify = rig.root.exists(kFactory) && rig.root.exists(kScheme0) && rig.root.exists(kScheme1);
        threadAtNotify = self.getDayNightThread().isRunning();
        initialisedAtNotify = self.isInitialised();
    };

    testing::internal::CaptureStdout();
    int r = rig.init("RS485=/dev/ttyS1;DNDefault=2;isInfrared=1");
    std::string out = testing::internal::GetCapturedStdout();

    EXPECT_EQ(1, r);
    EXPECT_TRUE(errorLogReadyBeforeDriver);
    EXPECT_EQ(1, statusAtDriver);
    EXPECT_EQ(0, dnDefaultAtDriver);
    EXPECT_EQ(2, statusAtVideo);
    EXPECT_EQ(1, baseAtVideo);
    EXPECT_EQ(2, dnDefaultAtVideo);
    EXPECT_EQ(1, baseAtPicture);
    EXPECT_EQ(2, baseAtFactory);
    EXPECT_TRUE(xmlBeforeFactory);
    EXPECT_FALSE(factoryBeforeFactory);
    EXPECT_EQ(2u, schemesAtNotify);
    EXPECT_TRUE(filesAtNotify);
    EXPECT_FALSE(threadAtNotify);
    EXPECT_FALSE(initialisedAtNotify);

    // Driver, video system, day mode (filter to its day level, then the
    // picture), factory file read from the sensor, completion notice.
    std::vector<std::string> names = rig.events.names();
    std::vector<std::string> expected = {"initController", "setSensorVideoSystem",
                                         "gpio:1,7=1",     "turnPictureToDay",
                                         "readSensor",     "NotifySensorInitComplate"};
    ASSERT_GE(names.size(), expected.size());
    EXPECT_EQ(expected, std::vector<std::string>(names.begin(), names.begin() + expected.size()));

    // Console: detail, day mode, version check (scheme count read while the
    // factory file is missing), then the files.
    size_t dnDefault = at(out, "strDNDefault:2 m_nDNDefault(2)\n");
    size_t dayMode = at(out, "!!!enterDayMode\n");
    size_t versionCheck = at(out, "p_nSchemeNum=2\n");
    size_t xml = at(out, "ISensorController::createSensorXML success\n");
    size_t handler =
        at(out,
           "ISensorController::initSensorFilesHandler() szFileName(/mnt/mtd/code/config_file/sensor0.cfg)\n");
    ASSERT_NE(std::string::npos, dnDefault);
    ASSERT_NE(std::string::npos, dayMode);
    ASSERT_NE(std::string::npos, versionCheck);
    ASSERT_NE(std::string::npos, xml);
    ASSERT_NE(std::string::npos, handler);
    EXPECT_LT(dnDefault, dayMode);
    EXPECT_LT(dayMode, versionCheck);
    EXPECT_LT(versionCheck, xml);
    EXPECT_LT(xml, handler);
    EXPECT_NE(std::string::npos,
              at(out, "initSensorFilesHandler() szFileName(/mnt/mtd/code/config_file/sensor1.cfg)\n"));

    // Thread started, controller initialised, success line last in the error log.
    EXPECT_TRUE(c.getDayNightThread().isRunning());
    EXPECT_TRUE(c.isInitialised());
    EXPECT_EQ(2, c.getSensorStatus());
    EXPECT_EQ(2, c.getBaseSensorStatus());
    EXPECT_GE(c.dependCalls, 1);
    std::vector<std::string> err = rig.errorLog();
    // (The worker's first scheme step may log concurrently with the last line.)
    EXPECT_EQ(1u, countOf(err, "ISensorController::initSensor  success"));
    EXPECT_EQ(1u, countOf(err, "objISPParamParse.parse failed"));
    EXPECT_TRUE(rig.initLog().empty());
}

TEST_F(ControllerInitTest, DebugMarkerPrintsTheDetail) {
    testutil::writeSchemeCount(rig.root, 1);
    rig.root.write("/factory_setting/SensorControlDebug", "");
    testing::internal::CaptureStdout();
    ProbeController& c = rig.make();
    EXPECT_EQ(1, c.getDebugFlag());
    rig.init("DNDefault=1");
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos,
              at(out, "*********In sensor debug mode (/factory_setting/SensorControlDebug)*********\n"));
    EXPECT_NE(std::string::npos, at(out, "detail:DNDefault=1\n"));
}

TEST_F(ControllerInitTest, WithoutDebugMarkerTheDetailIsNotPrinted) {
    testutil::writeSchemeCount(rig.root, 1);
    testing::internal::CaptureStdout();
    ProbeController& c = rig.make();
    rig.init("DNDefault=1");
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(0, c.getDebugFlag());
    EXPECT_EQ(std::string::npos, at(out, "detail:"));
    EXPECT_NE(std::string::npos, at(out, "strDNDefault:1 m_nDNDefault(1)\n"));
}

TEST_F(ControllerInitTest, SerialPanTiltModuleIsStoppedBeforeTheVideoSystem) {
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make();
    c.setIrCutGpio(1, 7, 1);
    c.onInitController = [](ProbeController& self) {
        self.setSerialPTZ(true);
        self.setUARTPort(3);
    };
    ASSERT_EQ(1, rig.init());
    std::vector<std::string> names = rig.events.names();
    std::vector<std::string> expected = {"initController", "uart:MENUON", "setSensorVideoSystem",
                                         "turnPictureToDay"};
    ASSERT_GE(names.size(), expected.size());
    EXPECT_EQ(expected, std::vector<std::string>(names.begin(), names.begin() + expected.size()));
    // Behind a pan/tilt unit the filter is not driven by GPIO.
    EXPECT_EQ(0u, rig.gpioRaw->writeCount());
    EXPECT_TRUE(rig.initLog().empty());
}

TEST_F(ControllerInitTest, ShortPanTiltStopIsLoggedAndStartUpGoesOn) {
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make();
    c.onInitController = [](ProbeController& self) { self.setSerialPTZ(true); };
    rig.uartRaw->writeLimit = 5;
    ASSERT_EQ(1, rig.init());
    EXPECT_EQ(1u, countOf(rig.errorLog(), "stop PTZ @getAllParameters failed"));
    EXPECT_EQ(1u, countOf(rig.initLog(), "stop PTZ @ISensorController::init failed"));
    EXPECT_TRUE(c.isInitialised());
    EXPECT_EQ(1u, rig.events.count("setSensorVideoSystem"));
}

TEST_F(ControllerInitTest, FailedVideoSystemIsLoggedAndStartUpGoesOn) {
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make();
    c.videoSystemResult = 0;
    ASSERT_EQ(1, rig.init());
    std::vector<std::string> initLog = rig.initLog();
    EXPECT_EQ(1u, countOf(initLog, "init setSensorVideoSystem failed"));
    EXPECT_NE(
        std::string::npos,
        rig.root.read("/mnt/mtd/log/SensorInit.log").find("[SensorInit] init setSensorVideoSystem failed\n"));
    EXPECT_NE(std::string::npos, rig.root.read("/mnt/mtd/log/SensorError.log")
                                     .find("[SensorError] ISensorController::initSensor  success\n"));
    EXPECT_TRUE(c.isInitialised());
    EXPECT_TRUE(c.getDayNightThread().isRunning());
}

namespace {
class NoticeFailingController : public ProbeController {
public:
    using ProbeController::ProbeController;
    int NotifySensorInitComplate() override {
        ProbeController::NotifySensorInitComplate();
        return 0;
    }
};
}  // namespace

TEST_F(ControllerInitTest, FailedNoticeIsLoggedAndStartUpGoesOn) {
    testutil::writeSchemeCount(rig.root, 1);
    rig.ctl.reset(new NoticeFailingController(rig.events));
    rig.ctl->setOperator(rig.uart, rig.gpio);
    ASSERT_EQ(1, rig.init());
    EXPECT_EQ(1u, countOf(rig.initLog(), "NotifySensorInitComplate failed"));
    EXPECT_TRUE(rig.ctl->getDayNightThread().isRunning());
    EXPECT_TRUE(rig.ctl->isInitialised());
}

TEST_F(ControllerInitTest, ThreadThatCannotStartIsLoggedAndStartUpGoesOn) {
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make();
    // A worker that is already running cannot be started a second time.
    c.setDNSwitchEnable(false);
    ASSERT_TRUE(c.getDayNightThread().start());
    ASSERT_TRUE(PlatformClock::waitForSleepers(1));
    ASSERT_EQ(1, rig.init());
    EXPECT_EQ(1u, countOf(rig.initLog(), "m_DNChangeThread->start() failed"));
    EXPECT_TRUE(c.isInitialised());
}

TEST_F(ControllerInitTest, FirstStartCreatesStateFileFactoryFileAndEverySchemeFile) {
    testutil::writeSchemeCount(rig.root, 3);
    ProbeController& c = rig.make();
    c.sensor[1] = 11;
    c.sensor[13] = 77;
    ASSERT_EQ(1, rig.init());

    ASSERT_TRUE(rig.root.exists(kSchemeXml));
    std::string xml = rig.root.read(kSchemeXml);
    EXPECT_NE(std::string::npos, xml.find("<sensor"));
    EXPECT_NE(std::string::npos, xml.find("paramScheme"));
    EXPECT_NE(std::string::npos, xml.find("SchemeMode"));

    // The factory file holds what the sensor reported for every cached id
    // (common, especial, keep-default; not the set-only id), with both versions.
    std::map<int, int> factory = readPairs(rig.root, kFactory);
    EXPECT_EQ(11, factory[1]);
    EXPECT_EQ(20, factory[2]);
    EXPECT_EQ(100, factory[10]);
    EXPECT_EQ(120, factory[12]);
    EXPECT_EQ(77, factory[13]);
    EXPECT_EQ(0u, factory.count(11));
    EXPECT_EQ(1, factory[500]);
    EXPECT_EQ(24, factory[503]);
    EXPECT_EQ(0, factory[10000]);
    EXPECT_EQ(3, factory[10001]);

    // Every scheme file is the factory set; only scheme 0 is enabled.
    for (int i = 0; i < 3; ++i) {
        std::string path = "/mnt/mtd/code/config_file/sensor" + std::to_string(i) + ".cfg";
        ASSERT_TRUE(rig.root.exists(path)) << path;
        std::map<int, int> scheme = readPairs(rig.root, path);
        std::map<int, int> expected = factory;
        expected[500] = i == 0 ? 1 : 0;
        EXPECT_EQ(expected, scheme) << path;
    }
    ASSERT_EQ(3u, c.getSchemeFiles().size());
    ASSERT_EQ(3u, c.getSchemeList().size());
    int enable = -1, start = -1, end = -1;
    c.getSchemeList()[0].getEnableFlag(enable);
    c.getSchemeList()[0].getStartTime(start);
    c.getSchemeList()[0].getEndTime(end);
    EXPECT_EQ(1, enable);
    EXPECT_EQ(0, start);
    EXPECT_EQ(2400, end);
    c.getSchemeList()[1].getEnableFlag(enable);
    EXPECT_EQ(0, enable);
}

TEST_F(ControllerInitTest, RestartWithEqualVersionsKeepsEveryFile) {
    testutil::writeSchemeCount(rig.root, 2);
    rig.make();
    ASSERT_EQ(1, rig.init());
    rig.ctl.reset();
    // A user's values in scheme 1 and a sensor that now reports other values.
    rig.root.write(kScheme1, "(1,555)(500,1)(10000,0)(10001,3)");
    std::string factoryBefore = rig.root.read(kFactory);
    std::string scheme0Before = rig.root.read(kScheme0);

    ProbeController& c = rig.make();
    c.sensor[1] = 999;
    testing::internal::CaptureStdout();
    ASSERT_EQ(1, rig.init());
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(std::string::npos, out.find("sensor configure version 2 changed"));
    EXPECT_EQ(0u, rig.events.count("readSensor"));
    EXPECT_EQ(factoryBefore, rig.root.read(kFactory));
    EXPECT_EQ(scheme0Before, rig.root.read(kScheme0));
    EXPECT_EQ("(1,555)(500,1)(10000,0)(10001,3)", rig.root.read(kScheme1));
}

TEST_F(ControllerInitTest, StartUpSweepsStaleTemporaryFilesOfTheConfigurationDirectory) {
    testutil::writeSchemeCount(rig.root, 2);
    rig.make();
    ASSERT_EQ(1, rig.init());
    rig.ctl.reset();
    const std::string dir = "/mnt/mtd/code/config_file/";
    // Left by replacements a power cut interrupted: beside files that the
    // start-up does not rewrite, and of a file that is gone.
    const std::vector<std::string> stale = {"sensor.xml.kstmp.Ab12Cd", "sensor1.cfg.kstmp.x1y2z3",
                                            "gone.cfg.kstmp.QQQQQQ"};
    // Not stale: another pattern, or written within the last minute (a write in progress).
    const std::vector<std::string> kept = {"notes.kstmp", "a.cfg.kstmp.toolong", ".kstmp.abcdef",
                                           "sensor0.cfg.kstmp.fresh1"};
    const time_t old = std::time(nullptr) - 120;
    for (const std::string& name : stale) {
        rig.root.write(dir + name, "(1,");
        struct utimbuf t {old, old};
        ASSERT_EQ(0, ::utime(rig.root.real(dir + name).c_str(), &t));
    }
    for (const std::string& name : kept) {
        rig.root.write(dir + name, "keep");
        if (name == "sensor0.cfg.kstmp.fresh1") continue;
        struct utimbuf t {old, old};
        ASSERT_EQ(0, ::utime(rig.root.real(dir + name).c_str(), &t));
    }
    std::string scheme1Before = rig.root.read(kScheme1);

    rig.make();
    ASSERT_EQ(1, rig.init());
    for (const std::string& name : stale) EXPECT_FALSE(rig.root.exists(dir + name)) << name;
    for (const std::string& name : kept) EXPECT_EQ("keep", rig.root.read(dir + name)) << name;
    EXPECT_EQ(scheme1Before, rig.root.read(kScheme1));
}

TEST_F(ControllerInitTest, RestartWithChangedVersion2RebuildsOnlyTheFactoryFile) {
    testutil::writeSchemeCount(rig.root, 2);
    rig.make();
    ASSERT_EQ(1, rig.init());
    rig.ctl.reset();
    rig.root.write(kScheme1, "(1,555)(500,1)(10000,0)(10001,3)");
    std::string scheme0Before = rig.root.read(kScheme0);

    ProbeController& c = rig.make();
    c.sensor[1] = 999;
    c.onInitController = [](ProbeController& self) { self.setSensorConfigVersion2(4); };
    testing::internal::CaptureStdout();
    ASSERT_EQ(1, rig.init());
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("sensor configure version 2 changed delete configure files \n"));

    // The factory file is rebuilt from the sensor in the same start-up...
    std::map<int, int> factory = readPairs(rig.root, kFactory);
    EXPECT_EQ(999, factory[1]);
    EXPECT_EQ(0, factory[10000]);
    EXPECT_EQ(4, factory[10001]);
    EXPECT_EQ(1u, rig.events.count("readSensor"));
    // ...and the scheme files stay as they were.
    EXPECT_EQ(scheme0Before, rig.root.read(kScheme0));
    EXPECT_EQ("(1,555)(500,1)(10000,0)(10001,3)", rig.root.read(kScheme1));

    // The next start with the same versions leaves everything alone.
    rig.ctl.reset();
    std::string factoryNow = rig.root.read(kFactory);
    ProbeController& again = rig.make();
    again.sensor[1] = 4242;
    again.onInitController = [](ProbeController& self) { self.setSensorConfigVersion2(4); };
    ASSERT_EQ(1, rig.init());
    EXPECT_EQ(factoryNow, rig.root.read(kFactory));
}

TEST_F(ControllerInitTest, RestartWithChangedVersionRebuildsFactoryAndSchemeFiles) {
    testutil::writeSchemeCount(rig.root, 2);
    rig.make();
    ASSERT_EQ(1, rig.init());
    rig.ctl.reset();
    rig.root.write(kScheme1, "(1,555)(500,1)(10000,0)(10001,3)");

    ProbeController& c = rig.make();
    c.sensor[1] = 999;
    c.onInitController = [](ProbeController& self) { self.setSensorConfigVersion(1); };
    testing::internal::CaptureStdout();
    ASSERT_EQ(1, rig.init());
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(std::string::npos, out.find("sensor configure version 2 changed"));

    std::map<int, int> factory = readPairs(rig.root, kFactory);
    EXPECT_EQ(999, factory[1]);
    EXPECT_EQ(1, factory[10000]);
    EXPECT_EQ(3, factory[10001]);
    // Both scheme files were removed and copied anew from the new factory set.
    std::map<int, int> s0 = readPairs(rig.root, kScheme0);
    std::map<int, int> s1 = readPairs(rig.root, kScheme1);
    std::map<int, int> expected0 = factory, expected1 = factory;
    expected0[500] = 1;
    expected1[500] = 0;
    EXPECT_EQ(expected0, s0);
    EXPECT_EQ(expected1, s1);
}

TEST_F(ControllerInitTest, ChangedVersionRemovesSchemeFilesEvenWhenTheFactoryFileIsGone) {
    testutil::writeSchemeCount(rig.root, 2);
    rig.make();
    ASSERT_EQ(1, rig.init());
    rig.ctl.reset();
    rig.root.remove(kFactory);
    rig.root.write(kScheme1, "(1,555)(500,1)(10000,0)(10001,3)");
    ProbeController& c = rig.make();
    c.sensor[1] = 31;
    ASSERT_EQ(1, rig.init());
    // Without a factory file the versions cannot match: everything is rebuilt.
    EXPECT_EQ(31, readPairs(rig.root, kScheme1)[1]);
    EXPECT_EQ(0, readPairs(rig.root, kScheme1)[500]);
}

TEST_F(ControllerInitTest, OldSingleFileBecomesSchemeZeroAndGainsTheFactoryParameters) {
    testutil::writeSchemeCount(rig.root, 2);
    // Left over from the single-file layout: two user values, one id the
    // sensor no longer has, no window ids and no versions.
    rig.root.write(kOldFile, "(1,5)(2,6)(99,1)");
    ProbeController& c = rig.make();
    testing::internal::CaptureStdout();
    ASSERT_EQ(1, rig.init());
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(
        std::string::npos,
        out.find("command: mv /mnt/mtd/code/config_file/sensor.cfg /mnt/mtd/code/config_file/sensor0.cfg\n"));
    EXPECT_FALSE(rig.root.exists(kOldFile));

    std::map<int, int> factory = readPairs(rig.root, kFactory);
    std::map<int, int> scheme0 = readPairs(rig.root, kScheme0);
    std::map<int, int> expected = factory;
    expected[1] = 5;
    expected[2] = 6;
    EXPECT_EQ(expected, scheme0);
    EXPECT_EQ(0u, scheme0.count(99));
    // Scheme 0 gained the window ids, so it is the enabled all-day scheme.
    ASSERT_EQ(2u, c.getSchemeList().size());
    int enable = 0;
    c.getSchemeList()[0].getEnableFlag(enable);
    EXPECT_EQ(1, enable);
    // The worker applies it.
    EXPECT_EQ(0, c.getCurrentParamSchemeIndex());
}

TEST_F(ControllerInitTest, OldSingleFileIsMigratedOverAnExistingSchemeZero) {
    testutil::writeSchemeCount(rig.root, 2);
    rig.make();
    ASSERT_EQ(1, rig.init());
    rig.ctl.reset();
    std::string scheme1Before = rig.root.read(kScheme1);
    rig.root.write(kOldFile, "(3,33)(500,0)");
    rig.make();
    ASSERT_EQ(1, rig.init());
    EXPECT_FALSE(rig.root.exists(kOldFile));
    std::map<int, int> factory = readPairs(rig.root, kFactory);
    std::map<int, int> expected = factory;
    expected[3] = 33;
    expected[500] = 0;
    EXPECT_EQ(expected, readPairs(rig.root, kScheme0));
    EXPECT_EQ(scheme1Before, rig.root.read(kScheme1));
}

TEST_F(ControllerInitTest, DetailWithoutDNDefaultLeavesTheModeAtZero) {
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make();
    testing::internal::CaptureStdout();
    ASSERT_EQ(1, rig.init("RS485=/dev/ttyS1;isInfrared=1"));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("strDNDefault: m_nDNDefault(0)\n"));
    EXPECT_EQ(0, c.dnDefault());
    int mode = -1;
    EXPECT_EQ(1, c.getDayNightMode(mode));
    EXPECT_EQ(0, mode);
}

TEST_F(ControllerInitTest, DNDefaultIsReadAsDecimal) {
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make();
    ASSERT_EQ(1, rig.init("DNDefault=010;isInfrared=1"));
    EXPECT_EQ(10, c.dnDefault());
    int mode = -1;
    c.getDayNightMode(mode);
    EXPECT_EQ(10, mode);
    // The configured default is reported; the worker's mode is not changed by it.
    EXPECT_EQ(0, c.getStoredDayNightMode());
}

TEST_F(ControllerInitTest, UnparsableDetailStopsStartUp) {
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make();
    EXPECT_EQ(0, rig.init("RS485=/dev/ttyS1;broken"));
    EXPECT_EQ(1u, countOf(rig.errorLog(), "parse detail failed"));
    EXPECT_EQ(1, c.getSensorStatus());
    EXPECT_EQ(1, c.getBaseSensorStatus());
    EXPECT_FALSE(c.getDayNightThread().isRunning());
    EXPECT_FALSE(c.isInitialised());
    EXPECT_FALSE(rig.root.exists("/mnt/mtd/code/config_file"));
    EXPECT_EQ(0u, rig.events.count("setSensorVideoSystem"));
}

TEST_F(ControllerInitTest, FailingDriverInitStopsStartUpBeforeAnythingElse) {
    testutil::writeSchemeCount(rig.root, 2);
    ProbeController& c = rig.make();
    c.initControllerResult = 0;
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, rig.init("DNDefault=2"));
    std::string out = testing::internal::GetCapturedStdout();
    std::vector<std::string> err = rig.errorLog();
    ASSERT_EQ(2u, err.size());
    EXPECT_EQ("objISPParamParse.parse failed", err[0]);
    EXPECT_EQ("initController failed", err[1]);
    EXPECT_EQ(1, c.getSensorStatus());
    EXPECT_EQ(1, c.getBaseSensorStatus());
    EXPECT_EQ(0, c.dnDefault());
    EXPECT_FALSE(c.getDayNightThread().isRunning());
    EXPECT_FALSE(c.isInitialised());
    EXPECT_EQ(std::vector<std::string>{"initController"}, rig.events.names());
    EXPECT_EQ(std::string::npos, out.find("strDNDefault"));
    EXPECT_FALSE(rig.root.exists("/mnt/mtd/code/config_file"));
    EXPECT_EQ(0u, rig.gpioRaw->writeCount());
    // Nothing runs later either.
    rig.clock.advance(10000);
    EXPECT_EQ(0, c.dependCalls);
}

TEST_F(ControllerInitTest, SensorType17NeverGetsInitSuccessFromTheBase) {
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make(17);
    int statusAtVideo = -1;
    c.onVideoSystem = [&](ProbeController& self) { statusAtVideo = self.getSensorStatus(); };
    ASSERT_EQ(1, rig.init("DNDefault=0", 17));
    EXPECT_EQ(1, statusAtVideo);
    EXPECT_EQ(1, c.getSensorStatus());
    EXPECT_EQ(2, c.getBaseSensorStatus());
    EXPECT_TRUE(c.isInitialised());
    rig.clock.advance(3000);
    EXPECT_EQ(1, c.getSensorStatus());
}

TEST_F(ControllerInitTest, TheConstructorsTypeDecidesNotInitsArgument) {
    testutil::writeSchemeCount(rig.root, 1);
    ProbeController& c = rig.make(16);
    // init is told 17, the controller was made as 16.
    ASSERT_EQ(1, rig.init("DNDefault=0", 17));
    EXPECT_EQ(2, c.getSensorStatus());
}

TEST_F(ControllerInitTest, MalformedISPParamFileLeavesTablesEmptyAndStartUpGoesOn) {
    testutil::writeSchemeCount(rig.root, 1);
    rig.root.write("/hd1/program/config/ISPParam.xml",
                   "<config realTimeUpdate=\"1\" time=\"0\"><DN enable=\"1\">");
    ProbeController& c = rig.make();
    ASSERT_EQ(1, rig.init());
    EXPECT_TRUE(c.ispTables().empty());
    EXPECT_FALSE(c.ispRealTimeUpdate());
    EXPECT_EQ(1, c.ispDelayTime());
    EXPECT_EQ(1u, countOf(rig.errorLog(), "objISPParamParse.parse failed"));
}

TEST_F(ControllerInitTest, ISPParamFileIsLoadedBeforeTheDriver) {
    testutil::writeSchemeCount(rig.root, 1);
    rig.root.write("/hd1/program/config/ISPParam.xml",
                   "<config realTimeUpdate=\"1\" time=\"4\"><DN enable=\"1\"><day min=\"1\" max=\"2\">"
                   "<item name=\"EE\" value=\"45\"/></day></DN></config>");
    ProbeController& c = rig.make();
    bool loadedAtDriver = false;
    c.onInitController = [&](ProbeController& self) {
        int v = 0;
        loadedAtDriver = self.ispTables().getParam("DN", "EE", 1, v) && v == 45;
    };
    ASSERT_EQ(1, rig.init());
    EXPECT_TRUE(loadedAtDriver);
    EXPECT_TRUE(c.ispRealTimeUpdate());
    EXPECT_EQ(4, c.ispDelayTime());
    EXPECT_EQ(0u, countOf(rig.errorLog(), "objISPParamParse.parse failed"));
}

TEST_F(ControllerInitTest, MissingSchemeCountStillStarts) {
    // Without the ability file there are no scheme files; the factory set is used.
    ProbeController& c = rig.make();
    ASSERT_EQ(1, rig.init());
    EXPECT_TRUE(rig.root.exists(kFactory));
    EXPECT_FALSE(rig.root.exists(kScheme0));
    EXPECT_TRUE(c.getSchemeFiles().empty());
    EXPECT_TRUE(c.isInitialised());
    EXPECT_EQ(-1, c.getCurrentParamSchemeIndex());
}

TEST_F(ControllerInitTest, VersionsReachEverySchemeFileAndBothOwnFiles) {
    testutil::writeSchemeCount(rig.root, 2);
    ProbeController& c = rig.make();
    ASSERT_EQ(1, rig.init());
    c.setSensorConfigVersion(7);
    c.setSensorConfigVersion2(8);
    EXPECT_EQ(7, c.getConfigVersion());
    EXPECT_EQ(8, c.getConfigVersion2());
    for (const std::shared_ptr<SensorConfigFile>& f : c.getSchemeFiles()) {
        EXPECT_EQ(7, f->getVersion());
        EXPECT_EQ(8, f->getVersion2());
    }
    EXPECT_EQ(7, c.factoryFile().getVersion());
    EXPECT_EQ(8, c.especialFile().getVersion2());
}

TEST_F(ControllerInitTest, OperatorsHandedOverBeforeInitAreTheOnesUsed) {
    ProbeController& c = rig.make();
    // Handing the same pointers over again keeps them.
    c.setOperator(rig.uart, rig.gpio);
    c.setIrCutGpio(2, 3, 0);
    c.onInitController = [](ProbeController& self) { self.setSerialPTZ(true); };
    c.onVideoSystem = [](ProbeController& self) { self.setSerialPTZ(false); };
    testutil::writeSchemeCount(rig.root, 1);
    ASSERT_EQ(1, rig.init());
    ASSERT_EQ(1u, rig.uartRaw->written.size());
    EXPECT_EQ("MENUON", rig.uartRaw->written[0]);
    ASSERT_EQ(1u, rig.gpioRaw->writeCount());
    EXPECT_EQ(2, rig.gpioRaw->writes[0].group);
    EXPECT_EQ(3, rig.gpioRaw->writes[0].pin);
    EXPECT_EQ(0, rig.gpioRaw->writes[0].level);
}

TEST_F(ControllerInitTest, MessageWritersCutLongMessagesAtTheirBuffers) {
    testutil::writeSchemeCount(rig.root, 1);
    rig.root.write("/factory_setting/SensorControlDebug", "");
    ProbeController& c = rig.make();
    ASSERT_EQ(1, rig.init());
    const std::string longText(150, 'x');
    testing::internal::CaptureStdout();
    c.ErrorPrintf("%s", longText.c_str());
    c.InitPrintf("%s", longText.c_str());
    c.Debug_Printf("%s", longText.c_str());
    c.Debug_Printf("short %d", 7);
    std::string out = testing::internal::GetCapturedStdout();
    const std::string cut99(99, 'x'), cut55(55, 'x');
    EXPECT_EQ(cut99 + "\n" + cut99 + "\n" + cut55 + "\nshort 7\n", out);
    EXPECT_EQ(cut99, rig.errorLog().back());
    EXPECT_EQ(cut99, rig.initLog().back());
}

TEST_F(ControllerInitTest, DebugPrintfIsSilentOutsideDebugMode) {
    ProbeController& c = rig.make();
    testing::internal::CaptureStdout();
    c.Debug_Printf("hidden %d", 1);
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST_F(ControllerInitTest, DebugDumpRunsEveryThirdCycleWhileTheSignExists) {
    testutil::writeSchemeCount(rig.root, 2);
    ProbeController& c = rig.make();
    c.logCycles = false;
    ASSERT_EQ(1, rig.init());
    testing::internal::CaptureStdout();
    rig.clock.advance(6000);
    EXPECT_EQ(std::string::npos, testing::internal::GetCapturedStdout().find("m_nParamMode("));

    rig.root.write("/mnt/mtd/sign/Debug.sign", "");
    testing::internal::CaptureStdout();
    rig.clock.advance(9000);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(3u, testutil::countSubstr(out, "m_nParamMode(1) m_nCurrentParamScheme(0)\n"));
    EXPECT_EQ(3u, testutil::countSubstr(out, "m_pSensorLastValueCache:(1,10)(2,20)"));
    EXPECT_EQ(3u, testutil::countSubstr(out, "(504,0) \n\n\n"));
    EXPECT_EQ(
        3u, testutil::countSubstr(out, "m_pUsrFileOperatorList[0]  /mnt/mtd/code/config_file/sensor0.cfg\n"));
    EXPECT_EQ(
        3u, testutil::countSubstr(out, "m_pUsrFileOperatorList[1]  /mnt/mtd/code/config_file/sensor1.cfg\n"));
    EXPECT_EQ(3u, testutil::countSubstr(out, "m_pParamSchemeList[0]: nEnable(1) 0 -- 2400 \n\n"));
    EXPECT_EQ(3u, testutil::countSubstr(out, "m_pParamSchemeList[1]: nEnable(0) 0 -- 2400 \n\n"));
    EXPECT_EQ(3u, testutil::countSubstr(out, std::string(75, '-') + "\n"));
    (void)c;
}

// A power cut during the migration must leave either the old file (merged again at the
// next start) or the merged scheme file: the merge is written before the old file goes.
TEST_F(ControllerInitTest, OldSingleFileMigrationSurvivesACutBeforeTheOldFileGoes) {
    testutil::writeSchemeCount(rig.root, 2);
    rig.make();
    ASSERT_EQ(1, rig.init());
    rig.ctl.reset();
    rig.root.write(kOldFile, "(1,5)(2,6)(99,1)");
    // The cut: no file replacement gets past its temporary file.
    KSFile::simulateCrashBeforeRename(true);
    rig.make();
    testing::internal::CaptureStdout();
    rig.init();
    testing::internal::GetCapturedStdout();
    KSFile::simulateCrashBeforeRename(false);
    rig.ctl.reset();
    // Nothing was merged, so the old file is still there and scheme 0 is not its bytes.
    ASSERT_TRUE(rig.root.exists(kOldFile));
    EXPECT_NE(rig.root.read(kScheme0), "(1,5)(2,6)(99,1)");
    // The next start merges it.
    rig.make();
    testing::internal::CaptureStdout();
    ASSERT_EQ(1, rig.init());
    testing::internal::GetCapturedStdout();
    EXPECT_FALSE(rig.root.exists(kOldFile));
    std::map<int, int> expected = readPairs(rig.root, kFactory);
    expected[1] = 5;
    expected[2] = 6;
    EXPECT_EQ(expected, readPairs(rig.root, kScheme0));
}
