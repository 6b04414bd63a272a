#include "core/ISensorController.h"

#include <gtest/gtest.h>

#include <atomic>

#include "TestRoot.h"
#include "core/NullSenseController.h"
#include "doubles/FakeController.h"
#include "doubles/FakeGPIO.h"
#include "doubles/FakeUART.h"
#include "storage/SensorConfigFile.h"
#include "storage/SensorLog.h"
#include "storage/IdManager.h"
#include "storage/SensorCache.h"

using testutil::TempRoot;

namespace {
// A driver that does nothing in its destructor: stopping the worker is its owner's job.
class BareDriver : public ISensorController {
public:
    BareDriver() : ISensorController(50) {}
    ~BareDriver() override {}
    int getMirrorValue(int& v) override {
        v = 0;
        return 1;
    }
    int setSensorVideoSystem(int, const VideoResolution&) override { return 1; }
    int initController(int, const ModuleConfigure&) override { return 1; }
    void doDependOnThread() override { ++cycles; }
    std::atomic<int> cycles{0};
};

// Starts a bare driver's worker on the virtual clock and deletes the driver
// without stopping the worker first.
void deleteWithTheWorkerRunning() {
    TempRoot root;
    testutil::VirtualClock clock;
    BareDriver* d = new BareDriver();
    d->getDayNightThread().start();
    PlatformClock::waitForSleepers(1);
    delete d;
}
}  // namespace

TEST(ISensorControllerTest, OwnerStopsTheWorkerOfADriverWhoseDestructorDoesNothing) {
    TempRoot root;
    testutil::VirtualClock clock;
    BareDriver* d = new BareDriver();
    ASSERT_TRUE(d->getDayNightThread().start());
    ASSERT_TRUE(PlatformClock::waitForSleepers(1));
    clock.advance(3000);
    EXPECT_GE(d->cycles.load(), 1);
    d->stopWorker();
    EXPECT_FALSE(d->getDayNightThread().isRunning());
    const int cycles = d->cycles.load();
    clock.advance(3000);
    EXPECT_EQ(cycles, d->cycles.load());
    d->stopWorker();  // a second call does nothing
    delete d;
}

TEST(ISensorControllerDeathTest, DeletingAControllerWhoseWorkerRunsAssertsInDebugBuilds) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // Release builds stop the worker in the base destructor as a last resort.
    EXPECT_DEBUG_DEATH(deleteWithTheWorkerRunning(), "isRunning");
}

TEST(ISensorControllerTest, FieldsAfterConstruction) {
    TempRoot root;
    FakeController c(42);
    EXPECT_EQ(c.getSensorType(), 42);
    EXPECT_EQ(c.getSensorStatus(), 1);
    EXPECT_EQ(c.getBaseSensorStatus(), 1);
    EXPECT_EQ(c.getStoredDayNightMode(), 0);
    EXPECT_EQ(c.getLastDayNightMode(), -1);
    EXPECT_EQ(c.pendingStatus(), -1);
    EXPECT_EQ(c.dnsSwitchDelayStored(), 5);
    EXPECT_EQ(c.dtnTime(), 6677);
    EXPECT_EQ(c.ntdTime(), 8899);
    EXPECT_EQ(c.getCurrentParamSchemeIndex(), -2);
    EXPECT_EQ(c.paramMode(), 1);
    EXPECT_FALSE(c.isInitialised());
    EXPECT_FALSE(c.isResetting());
    EXPECT_EQ(c.getDebugFlag(), 0);
    EXPECT_EQ(c.getConfigVersion(), 0);
    EXPECT_EQ(c.getConfigVersion2(), 0);
    EXPECT_EQ(c.getLastEE(), -100);
    EXPECT_EQ(c.getLastA0(), -100);
    EXPECT_FALSE(c.getDayNightThread().isRunning());
    EXPECT_EQ(c.getDayNightThread().getName(), "DayNightChangeThread");
    EXPECT_TRUE(c.getSchemeFiles().empty());
    EXPECT_EQ(c.factoryFile().getFilePath(), "/mnt/mtd/code/config_file/sensor_Factory.cfg");
    EXPECT_EQ(c.especialFile().getFilePath(), "/mnt/mtd/code/config_file/sensor_Especial.cfg");
    for (int id = 500; id <= 504; ++id) EXPECT_EQ(c.getIdManager().getIdType(id), 1);
}

TEST(ISensorControllerTest, DebugMarkerTurnsOnDebugMode) {
    TempRoot root;
    root.write("/factory_setting/SensorControlDebug", "");
    testing::internal::CaptureStdout();
    FakeController c;
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(c.getDebugFlag(), 1);
    EXPECT_NE(out.find("*********In sensor debug mode (/factory_setting/SensorControlDebug)*********"), std::string::npos);
}

TEST(ISensorControllerTest, OptionalHardwareFailsAndHooksSucceedByDefault) {
    TempRoot root;
    NullSenseController c;
    int v = 7, w = 8;
    std::string s = "keep";
    EXPECT_EQ(c.set2AParam(1), 0);
    EXPECT_EQ(c.getCameraVerInf(s), 0);
    EXPECT_EQ(s, "keep");
    EXPECT_EQ(c.restoreAeMode(), 0);
    EXPECT_EQ(c.setRunAutoIris(), 0);
    EXPECT_EQ(c.IrisUp(), 0);
    EXPECT_EQ(c.IrisDown(), 0);
    EXPECT_EQ(c.FocusFar(1), 0);
    EXPECT_EQ(c.FocusNear(1), 0);
    EXPECT_EQ(c.ZoomIn(1), 0);
    EXPECT_EQ(c.ZoomOut(1), 0);
    EXPECT_EQ(c.getZoomValue(v, w), 0);
    EXPECT_EQ(c.setZoomValue(1), 0);
    EXPECT_EQ(c.setFocusValue(1), 0);
    EXPECT_EQ(c.getFocusValue(v), 0);
    EXPECT_EQ(c.setFocusMode(1), 0);
    EXPECT_EQ(c.getFocusMode(v), 0);
    EXPECT_EQ(c.StopZoomContrl(), 0);
    EXPECT_EQ(c.StopFocusContrl(), 0);
    EXPECT_EQ(c.StopIris(), 0);
    EXPECT_EQ(c.setZoomAndFocusValue(1, 1), 0);
    EXPECT_EQ(c.getDayNightState(v), 0);
    EXPECT_EQ(c.getCameraFocusMode(v), 0);
    EXPECT_EQ(c.getStillImageValue(v), 0);
    EXPECT_EQ(c.getCurrentGain(v), 0);
    EXPECT_EQ(v, 7);
    EXPECT_EQ(w, 8);
    EXPECT_EQ(c.updateSensorVideoSystem(1, VideoResolution(1, 1)), 1);
    EXPECT_EQ(c.enterAutoMode(), 1);
    EXPECT_EQ(c.NotifySensorInitComplate(), 1);
    EXPECT_EQ(c.UpdateParameters(s), 1);
    char buf[4] = {};
    EXPECT_EQ(c.getParameterValue("x", 1, buf, 4), 1);
    EXPECT_EQ(c.setParameterValue("x", 1), 1);
    EXPECT_EQ(c.turnPictureToDay(), 1);
    EXPECT_EQ(c.turnPictureToNight(), 1);
    EXPECT_EQ(c.turnToAutoDayNightMode(), 1);
    EXPECT_EQ(c.turnToManualDayNightMode(), 1);
    EXPECT_EQ(c.initFactorySetting(), 1);
    EXPECT_EQ(c.updateHDRMode(3), 1);
    v = 9;
    EXPECT_EQ(c.getDNStatusFromSensor(v), 1);
    EXPECT_EQ(v, 9);
}

TEST(ISensorControllerTest, NullControllerOverridesFailAndDoNothing) {
    TempRoot root;
    NullSenseController c;
    int v = 5;
    EXPECT_EQ(c.getMirrorValue(v), 0);
    EXPECT_EQ(c.getParameterFromSensor(500, v), 0);
    EXPECT_EQ(c.setParameterToSensor(500, 1), 0);
    EXPECT_EQ(c.setSensorVideoSystem(0, VideoResolution(1, 1)), 0);
    EXPECT_EQ(c.initController(0, ModuleConfigure()), 0);
    EXPECT_EQ(v, 5);
}

TEST(ISensorControllerTest, LampGettersAndFixedGettersIgnoreTheSetters) {
    TempRoot root;
    NullSenseController c;
    int v = 0;
    EXPECT_EQ(c.getNearLight(v), 1);
    EXPECT_EQ(v, 50);
    v = 0;
    EXPECT_EQ(c.getMiddleLight(v), 1);
    EXPECT_EQ(v, 50);
    v = 0;
    EXPECT_EQ(c.getFarLight(v), 1);
    EXPECT_EQ(v, 50);
    v = 9;
    EXPECT_EQ(c.getPowerMode(v), 1);
    EXPECT_EQ(v, 0);
    EXPECT_EQ(c.setDNSwitchDelay(9), 1);
    EXPECT_EQ(c.getDNSwitchDelay(v), 1);
    EXPECT_EQ(v, 5);
    c.setDTNTime_H(20);
    c.setNTDTime_H(7);
    int h = 0, m = 1;
    c.getDTNTime_H(h);
    c.getDTNTime_M(m);
    EXPECT_EQ(h, 18);
    EXPECT_EQ(m, 0);
    c.getNTDTime_H(h);
    c.getNTDTime_M(m);
    EXPECT_EQ(h, 6);
    EXPECT_EQ(m, 0);
}

TEST(ISensorControllerTest, BaseSensorAccessAnswersSchemeIdsOnly) {
    TempRoot root;
    FakeController c;
    ISensorController& base = c;
    EXPECT_EQ(base.ISensorController::setParameterToSensor(504, 3), 1);
    EXPECT_EQ(base.ISensorController::setParameterToSensor(500, 3), 1);
    EXPECT_EQ(base.ISensorController::setParameterToSensor(505, 3), -1);
    EXPECT_EQ(base.ISensorController::setParameterToSensor(499, 3), -1);
    EXPECT_EQ(base.ISensorController::setParameterToSensor(-2147483647 - 1, 3), -1);
    int v = -1;
    EXPECT_EQ(base.ISensorController::getParameterFromSensor(500, v), 1);
    EXPECT_EQ(v, 1);
    EXPECT_EQ(base.ISensorController::getParameterFromSensor(501, v), 1);
    EXPECT_EQ(v, 0);
    EXPECT_EQ(base.ISensorController::getParameterFromSensor(502, v), 1);
    EXPECT_EQ(v, 0);
    EXPECT_EQ(base.ISensorController::getParameterFromSensor(503, v), 1);
    EXPECT_EQ(v, 24);
    EXPECT_EQ(base.ISensorController::getParameterFromSensor(504, v), 1);
    EXPECT_EQ(v, 0);
    v = 77;
    EXPECT_EQ(base.ISensorController::getParameterFromSensor(505, v), 0);
    EXPECT_EQ(v, 77);
}

TEST(ISensorControllerTest, GetDayNightModeReportsTheConfiguredDefault) {
    TempRoot root;
    FakeController c;
    c.setDayNightMode(2);
    int v = -1;
    EXPECT_EQ(c.getDayNightMode(v), 1);
    EXPECT_EQ(v, 0);
}

TEST(ISensorControllerTest, MessageWritersTruncateLongMessages) {
    TempRoot root;
    root.write("/factory_setting/SensorControlDebug", "");
    testing::internal::CaptureStdout();
    FakeController c;
    testing::internal::GetCapturedStdout();
    c.getDayNightThread();  // nothing started
    SensorLog* unused = nullptr;
    (void)unused;
    std::string longText(500, 'x');
    testing::internal::CaptureStdout();
    c.Debug_Printf("%s", longText.c_str());
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, std::string(55, 'x') + "\n");
    ModuleConfigure cfg(1, "", "");
    // Error and init messages go to their logs cut at 99 characters.
    testing::internal::CaptureStdout();
    c.init(50, cfg, VideoResolution(1, 1));  // opens the logs
    c.ErrorPrintf("%s", longText.c_str());
    c.InitPrintf("%s", longText.c_str());
    testing::internal::GetCapturedStdout();
    std::string err = root.read("/mnt/mtd/log/SensorError.log");
    EXPECT_NE(err.find("[SensorError] " + std::string(99, 'x') + "\n"), std::string::npos);
    EXPECT_EQ(err.find(std::string(100, 'x')), std::string::npos);
    std::string ini = root.read("/mnt/mtd/log/SensorInit.log");
    EXPECT_NE(ini.find("[SensorInit] " + std::string(99, 'x') + "\n"), std::string::npos);
}

TEST(ISensorControllerTest, DebugPrintfIsSilentOutsideDebugMode) {
    TempRoot root;
    FakeController c;
    testing::internal::CaptureStdout();
    c.Debug_Printf("hidden %d", 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(ISensorControllerTest, StopPTZSendsMenuOnOnlyForSerialPanTiltModules) {
    TempRoot root;
    FakeController c;
    FakeUART* uart = new FakeUART();
    c.setOperator(SafePointer<IUARTController>(uart), SafePointer<IGPIO>(new FakeGPIO()));
    EXPECT_EQ(c.stopPTZ(), 1);
    EXPECT_TRUE(uart->written.empty());
    c.setSerialPTZ(true);
    c.setUARTPort(2);
    EXPECT_EQ(c.stopPTZ(), 1);
    ASSERT_EQ(uart->written.size(), 1u);
    EXPECT_EQ(uart->written[0], "MENUON");
    uart->writeLimit = 3;
    testing::internal::CaptureStdout();
    EXPECT_EQ(c.stopPTZ(), 0);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("stop PTZ @getAllParameters failed"), std::string::npos);
}

TEST(ISensorControllerTest, SetOperatorWithItsOwnPointersIsHarmless) {
    TempRoot root;
    FakeController c;
    SafePointer<IUARTController> u(new FakeUART());
    SafePointer<IGPIO> g(new FakeGPIO());
    EXPECT_EQ(c.setOperator(u, g), 1);
    EXPECT_EQ(c.setOperator(u, g), 1);
}

TEST(ISensorControllerTest, VersionsReachEveryFileObject) {
    TempRoot root;
    FakeController c;
    c.setSensorConfigVersion(4);
    c.setSensorConfigVersion2(9);
    EXPECT_EQ(c.factoryFile().getVersion(), 4);
    EXPECT_EQ(c.especialFile().getVersion2(), 9);
    EXPECT_EQ(c.getConfigVersion(), 4);
}

TEST(ISensorControllerTest, DestructionOrderStopsTheWorkerFirst) {
    TempRoot root;
    testutil::VirtualClock clock;
    auto* c = new FakeController();
    ASSERT_TRUE(c->getDayNightThread().start());
    ASSERT_TRUE(PlatformClock::waitForSleepers(1));
    auto start = std::chrono::steady_clock::now();
    delete c;
    auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(ms, 100);
}
