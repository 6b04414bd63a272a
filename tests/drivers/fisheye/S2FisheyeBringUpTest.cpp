// The fisheye board brought up by the manager on the simulated board, as the
// camera application does it, then driven through its day/night cycle and its
// parameter paths.
#include <gtest/gtest.h>

#include <string>

#include "core/SensorControllerManager.h"
#include "doubles/ControllerFixture.h"
#include "doubles/FakeGPIO.h"
#include "doubles/FakeUART.h"
#include "drivers/fisheye/FisheyeTestSupport.h"
#include "storage/SensorPaths.h"

using testutil::IspCall;

namespace {

const char* kInfraredDetail =
    "RS485=/dev/ttyS1;isInfrared=1;GPIOInfraredLight=2,7,0;GPIO=1,5,1;autoFocus=1;manualFocus=0;fisheye=1;"
    "autoIris=0;DNDefault=0";
const char* kPlainDetail = "isInfrared=0;GPIO=1,5,1;autoFocus=1;manualFocus=0;fisheye=1;autoIris=0";

class FisheyeBringUpTest : public ::testing::Test {
protected:
    void SetUp() override {
        testutil::resetBoard();
        testutil::writeSchemeCount(root, 4);
        root.write("/hd1/moduleConfig/machineInfo.xml",
                   "<machineInfo hardwareModel=\"KS-S2-FE\" hardwareCode=\"0x5a17\" "
                   "hardwareDescription=\"S2 fisheye board\" productModel=\"IPC-FE12\" barCode=\"6901234567892\" "
                   "productionTime=\"2024-05-01 08:30:00\"/>\n");
        gpio = new FakeGPIO();
        manager.setUARTController(SafePointer<IUARTController>(new FakeUART()));
        manager.setGPIO(SafePointer<IGPIO>(gpio));
    }
    void TearDown() override { SimAdc::uninstall(); }

    void bringUp(const char* detail) {
        ModuleConfigure cfg(88, detail, "RS485=9600,8,1,0");
        testutil::runOnVirtualClock([&] { manager.init(0, VideoResolution(1920, 1080), cfg); }, 50);
        controller = manager.getSensorController();
        ASSERT_FALSE(controller.isNull());
        fisheye = dynamic_cast<S2FisheyeSenseController*>(controller.get());
        ASSERT_NE(nullptr, fisheye);
    }
    // Lets the day/night worker run for the given simulated time, moving the
    // clock only while the worker waits on it.
    void run(int64_t ms) {
        for (int64_t t = 0; t < ms; t += 100) {
            ASSERT_TRUE(PlatformClock::waitForSleepers(1));
            clock.advance(100);
        }
    }
    std::vector<FakeGPIO::Write> writesSince(size_t from) {
        std::lock_guard<std::mutex> l(gpio->mu);
        return std::vector<FakeGPIO::Write>(gpio->writes.begin() + static_cast<long>(from), gpio->writes.end());
    }
    static bool same(const FakeGPIO::Write& w, int g, int p, int l) { return w.group == g && w.pin == p && w.level == l; }

    testutil::TempRoot root;
    testutil::VirtualClock clock{12, 0};
    FakeGPIO* gpio = nullptr;
    SafePointer<ISensorController> controller;
    S2FisheyeSenseController* fisheye = nullptr;
    SensorControllerManager manager;
};

TEST_F(FisheyeBringUpTest, ManagerBringsTheInfraredBoardUp) {
    bringUp(kInfraredDetail);
    EXPECT_EQ(ISensorController::InitSuccess, controller->getSensorStatus());
    EXPECT_EQ(ISensorController::InitSuccess, controller->getBaseSensorStatus());
    EXPECT_TRUE(controller->isInitialised());
    EXPECT_TRUE(controller->getDayNightThread().isRunning());

    // Pre-initialisation with the machine information, infrared light announced.
    SimIsp& isp = SimIsp::instance();
    EXPECT_EQ(1, isp.preinitCount());
    EXPECT_STREQ("KS-S2-FE", isp.preinitInfo().szHardwareModel);
    int v = -1;
    ASSERT_TRUE(isp.lastSet(KSIA_INFRARED_PRESENT, v));
    EXPECT_EQ(1, v);
    // Video system 0 goes to the ISP as 1.
    ASSERT_TRUE(isp.lastSet(KSIA_VIDEO_SYSTEM, v));
    EXPECT_EQ(1, v);

    // Day mode at start: LEDs to their day level, the IR-cut filter in, the picture to day.
    auto writes = writesSince(0);
    ASSERT_GE(writes.size(), 2u);
    EXPECT_TRUE(same(writes[0], 2, 7, 0));
    EXPECT_TRUE(same(writes[1], 1, 5, 1));
    ASSERT_TRUE(isp.lastSet(KSIA_PICTURE_DAY_NIGHT, v));
    EXPECT_EQ(1, v);
    EXPECT_EQ(1, controller->getCurrentDNState());
    EXPECT_EQ(1, gpio->notifyCalls);

    // The factory file holds what the board reported.
    std::string factory = root.read(SensorPaths::kFactoryFile);
    EXPECT_NE(std::string::npos, factory.find("(1,50)")) << factory;
    EXPECT_NE(std::string::npos, factory.find("(6,6)")) << factory;
    EXPECT_NE(std::string::npos, factory.find("(32,70)(33,30)")) << factory;
    EXPECT_NE(std::string::npos, factory.find("(56,0)")) << factory;
    EXPECT_EQ(std::string::npos, factory.find("(43,")) << factory;
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(root.exists("/mnt/mtd/code/config_file/sensor" + std::to_string(i) + ".cfg"));
}

TEST_F(FisheyeBringUpTest, InfraredBoardFollowsTheLightSensor) {
    bringUp(kInfraredDetail);
    run(1500);  // the first cycle applies the scheme in force, thresholds included
    EXPECT_EQ(70, fisheye->getStoredInfraredDTNThreshold());
    EXPECT_EQ(30, fisheye->getStoredInfraredNTDThreshold());
    EXPECT_EQ(1, controller->getCurrentDNState());

    size_t mark = gpio->writeCount();
    SimAdc::instance().setPercent(20);
    run(2000);
    EXPECT_EQ(0, controller->getCurrentDNState());
    EXPECT_EQ(2, SimIsp::instance().value(KSIA_PICTURE_DAY_NIGHT));
    auto writes = writesSince(mark);
    ASSERT_EQ(2u, writes.size());
    EXPECT_TRUE(same(writes[0], 1, 5, 0));  // filter out
    EXPECT_TRUE(same(writes[1], 2, 7, 1));  // LEDs on

    // Between the thresholds nothing changes; above 70 percent day returns after the delay.
    mark = gpio->writeCount();
    SimAdc::instance().setPercent(50);
    run(8000);
    EXPECT_EQ(0, controller->getCurrentDNState());
    EXPECT_EQ(mark, gpio->writeCount());
    SimAdc::instance().setPercent(75);
    run(3000);
    EXPECT_EQ(0, controller->getCurrentDNState());
    run(4000);
    EXPECT_EQ(1, controller->getCurrentDNState());
    EXPECT_EQ(1, SimIsp::instance().value(KSIA_PICTURE_DAY_NIGHT));
    writes = writesSince(mark);
    ASSERT_EQ(2u, writes.size());
    EXPECT_TRUE(same(writes[0], 2, 7, 0));
    EXPECT_TRUE(same(writes[1], 1, 5, 1));
}

TEST_F(FisheyeBringUpTest, PlainBoardFollowsTheIspSceneLevel) {
    bringUp(kPlainDetail);
    int v = -1;
    ASSERT_TRUE(SimIsp::instance().lastSet(KSIA_INFRARED_PRESENT, v));
    EXPECT_EQ(0, v);
    run(1500);
    EXPECT_EQ(1, controller->getCurrentDNState());
    EXPECT_EQ(70, SimIsp::instance().value(KSIA_DTN_THRESHOLD));
    EXPECT_EQ(30, SimIsp::instance().value(KSIA_NTD_THRESHOLD));

    size_t mark = gpio->writeCount();
    SimIsp::instance().setSceneLevel(85);
    run(2000);
    EXPECT_EQ(0, controller->getCurrentDNState());
    EXPECT_EQ(2, SimIsp::instance().value(KSIA_PICTURE_DAY_NIGHT));
    auto writes = writesSince(mark);
    ASSERT_EQ(1u, writes.size());  // no infrared light: only the filter moves
    EXPECT_TRUE(same(writes[0], 1, 5, 0));

    SimIsp::instance().setSceneLevel(20);
    run(7000);
    EXPECT_EQ(1, controller->getCurrentDNState());
    EXPECT_EQ(1, SimIsp::instance().value(KSIA_PICTURE_DAY_NIGHT));
}

TEST_F(FisheyeBringUpTest, EveryIdThroughTheManagerAndBack) {
    bringUp(kPlainDetail);
    run(1500);
    // In-range values for ids 1-56 (the switch times keep day-to-night apart from night-to-day).
    std::string list;
    const int values[57] = {0,  11, 12, 13, 14, 1, 17, 16, 1, 19, 20, 0, 60, 20, 1,  25, 2, 1, 28, 3,
                            3,  1,  2,  33, 34, 0, 36, 37, 19, 10, 7, 20, 80, 10, 5, 2, 45, 1, 48, 9,
                            3,  7,  0,  1,  1,  0, 1,  1,  1,  1,  1, 1,  1,  1,  1, 55, 6};
    // Id 42 is not a parameter of this board: the pipeline refuses it by its type.
    for (int id = 1; id <= 56; ++id)
        if (id != 42) list += "(" + std::to_string(id) + "," + std::to_string(values[id]) + ")";
    SafePointer<ISensorController> c = manager.getSensorController();
    EXPECT_EQ(0, c->setParameters(list));
    SimIsp& isp = SimIsp::instance();
    EXPECT_EQ(11, isp.value(KSIA_BRIGHTNESS));
    EXPECT_EQ(13, isp.value(KSIA_CONTRAST));
    EXPECT_EQ(14, isp.value(KSIA_SHARPNESS));
    EXPECT_EQ(55, isp.value(KSIA_DEFOG_STRENGTH));
    EXPECT_EQ(6, isp.value(KSIA_ANTI_SHAKE));
    EXPECT_EQ(3, isp.value(KSIA_ZOOM_INTERVAL));
    EXPECT_EQ(5, isp.value(KSIA_FOCUS_MOVE));  // the reset of id 53 came last among the moves

    std::string all;
    EXPECT_EQ(1, c->getAllParameters(all));
    EXPECT_NE(std::string::npos, all.find("(1,11)")) << all;
    EXPECT_NE(std::string::npos, all.find("(56,6)")) << all;
    EXPECT_EQ(std::string::npos, all.find("(43,")) << all;  // one-shot actions are not kept

    // An out-of-range value stops the list at its id and reaches nothing.
    isp.clearCalls();
    EXPECT_EQ(-42, c->setParameters("(42,0)"));
    EXPECT_TRUE(isp.calls().empty());
    EXPECT_EQ(-6, c->setParameters("(6,19)(1,12)"));
    EXPECT_EQ(0, isp.callCount(KSIA_MAX_SHUTTER));
    EXPECT_EQ(17, isp.value(KSIA_MAX_SHUTTER));
}

// The manager owns the controller: it stops the worker before letting go of
// it (the driver's destructor does not), on a second init and when destroyed,
// even while somebody else still holds the controller.
TEST_F(FisheyeBringUpTest, ManagerStopsTheWorkerBeforeLettingGoOfTheController) {
    bringUp(kInfraredDetail);
    SafePointer<ISensorController> first = controller;
    ASSERT_TRUE(first->getDayNightThread().isRunning());
    bringUp(kInfraredDetail);
    EXPECT_NE(first.get(), controller.get());
    EXPECT_FALSE(first->getDayNightThread().isRunning());
    EXPECT_TRUE(controller->getDayNightThread().isRunning());
    first.reset();

    SafePointer<ISensorController> kept;
    {
        SensorControllerManager local;
        local.setUARTController(SafePointer<IUARTController>(new FakeUART()));
        local.setGPIO(SafePointer<IGPIO>(new FakeGPIO()));
        controller->stopWorker();  // one worker on the clock at a time
        ModuleConfigure cfg(88, kInfraredDetail, "RS485=9600,8,1,0");
        testutil::runOnVirtualClock([&] { local.init(0, VideoResolution(1920, 1080), cfg); }, 50);
        kept = local.getSensorController();
        ASSERT_FALSE(kept.isNull());
        ASSERT_TRUE(kept->getDayNightThread().isRunning());
    }
    EXPECT_FALSE(kept->getDayNightThread().isRunning());
}

TEST_F(FisheyeBringUpTest, ModuleWithoutGpioFailsToStart) {
    ModuleConfigure cfg(88, "isInfrared=0", "");
    testutil::runOnVirtualClock([&] { manager.init(0, VideoResolution(1920, 1080), cfg); }, 50);
    SafePointer<ISensorController> c = manager.getSensorController();
    EXPECT_EQ(1, c->getSensorStatus());
    EXPECT_FALSE(c->getDayNightThread().isRunning());
    EXPECT_FALSE(root.exists(SensorPaths::kFactoryFile));
    EXPECT_EQ(0, gpio->notifyCalls);
}

}  // namespace
