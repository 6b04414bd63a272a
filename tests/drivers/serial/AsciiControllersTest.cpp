// The ASCII register controllers (Hitachi, Hitachi-compatible, SC110N-C,
// CMD7200) against the simulated ASCII register module with each module's
// register file, on the virtual clock: registered ids, the start line, the
// start-up exchange, every id of each table (its register changes, its
// refusals send nothing), init failures per missing key, the status workers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "doubles/AsciiRig.h"
#include "drivers/serial/CMD7200SenseController.h"
#include "drivers/serial/HitachCompatSenseController.h"
#include "drivers/serial/HitachSenseController.h"
#include "drivers/serial/SC110N_CSenseController.h"

using namespace testutil;

namespace {

const char* kParams = "RS485=9600,8,1,0";
const char* kDetail = "RS485=/dev/ttyS1;isInfrared=0";
const char* kHitachDetail = "RS485=/dev/ttyS1;isInfrared=0;isThridGeneration=0";

class HitachTest : public AsciiControllerFixture<HitachSenseController> {
protected:
    const char* profileName() const override { return "Hitach"; }
};
class HitachCompatTest : public AsciiControllerFixture<HitachCompatSenseController> {
protected:
    const char* profileName() const override { return "HitachCompat"; }
};
class SC110NCTest : public AsciiControllerFixture<SC110N_CSenseController> {
protected:
    const char* profileName() const override { return "SC110N-C"; }
};
class CMD7200Test : public AsciiControllerFixture<CMD7200SenseController> {
protected:
    const char* profileName() const override { return "CMD7200"; }
};

}  // namespace

// ---- Hitachi ----

TEST_F(HitachTest, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{1, 4}, {6, 11}, {13, 17}}), {}, {});
}

TEST_F(HitachTest, StartUpSetsTheVideoSystem) {
    bench.root.write("/factory_setting/SensorControlDebug", "");
    ASSERT_EQ(1, init(kHitachDetail, kParams));
    EXPECT_EQ(ISensorController::InitSuccess, ctl->getSensorStatus());
    EXPECT_NE(std::string::npos, initOutput.find(std::string("__HitachSenseController::init,ModuleConfigure is(") +
                                                 kHitachDetail + "," + kParams + ")"));
    EXPECT_NE(std::string::npos, initOutput.find("_______set NTSC & 1280*720")) << initOutput;
    auto all = bench.module.receivedCommands();
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(":WFCC001", all[0]);
    EXPECT_EQ(1, bench.module.registerValue(0xFCC0));
    // After it only the table's registers are written and read, and the status read.
    for (size_t i = 1; i < all.size(); ++i) EXPECT_TRUE(isTableCommand(all[i]) || all[i] == ":R0F00") << all[i];
    EXPECT_EQ(0, ctl->isThridGeneration());
}

TEST_F(HitachTest, VideoSystemCommandsByGenerationAndResolution) {
    bench.root.write("/factory_setting/SensorControlDebug", "");
    ASSERT_EQ(1, init("RS485=/dev/ttyS1;isInfrared=0;isThridGeneration=1", kParams));
    EXPECT_EQ(1, ctl->isThridGeneration());
    EXPECT_EQ(":W170101", bench.module.receivedCommands().at(0));
    EXPECT_EQ(1, bench.module.registerValue(0x1701));
    EXPECT_NE(std::string::npos, initOutput.find("_______set PAL & 1280*720"));

    resetController();
    size_t mark = bench.commandMark();
    testing::internal::CaptureStdout();
    make();
    ModuleConfigure cfg(HitachSenseController::SensorType, kHitachDetail, kParams);
    HitachSenseController* c = ctl.get();
    ASSERT_EQ(1, runPumped([&] { return c->init(HitachSenseController::SensorType, cfg, VideoResolution(1280, 960)); }));
    stopWorkers();
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(":WFCC000", bench.commandsSince(mark).at(0));
    EXPECT_EQ(0, bench.module.registerValue(0xFCC0));
    EXPECT_NE(std::string::npos, out.find("_______set NTSC & 1280*960"));
}

TEST_F(HitachTest, AFailedVideoSystemCommandIsReported) {
    ASSERT_EQ(1, init(kHitachDetail, kParams));
    bench.module.setFaultProbability(SimSerialDevice::Silent, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setSensorVideoSystem(HitachSenseController::SensorType, VideoResolution(1280, 720)));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("Hitach setSensorVideoSystem failed")) << out;
    EXPECT_EQ(3u, countOf(out, "@sendData failed"));
}

TEST_F(HitachTest, EveryIdChangesTheModuleAndRefusalsSendNothing) {
    ASSERT_EQ(1, init(kHitachDetail, kParams));
    expectEveryIdChangesTheModule();
    EXPECT_EQ(45, expectEveryRefusal());
    // A row's command text: brightness 100 is ":W011064".
    size_t mark = bench.commandMark();
    ASSERT_EQ(1, ctl->setParameterToSensor(1, 99));
    ASSERT_EQ(1, ctl->setParameterToSensor(1, 100));
    EXPECT_EQ(":W011064", bench.commandsSince(mark).back());
}

TEST_F(HitachTest, InitFailsForEachMissingKey) {
    expectInitFailures({
        {"isInfrared=0;isThridGeneration=0", kParams, "get RS232DeviceName from detail failed"},
        {kHitachDetail, "toDayADCVal=3", "get RS232Parameter from senseParameter failed"},
        {kDetail, kParams, "get isThridGeneration from detail failed"},
        {kHitachDetail, "RS485=9600,8", "parse RS485 param failed,nRet=2"},
        {"RS485=/dev/ttyS9;isThridGeneration=0", kParams, "open uart (/dev/ttyS9) failed"},
    });
}

TEST_F(HitachTest, TheWorkerFollowsTheStatusRegister) {
    ASSERT_EQ(1, init(kHitachDetail, kParams));
    EXPECT_FALSE(ctl->isModuleWorkerRunning());
    bench.module.setRegister(HitachSenseController::StatusRegister, 0x01);  // night
    ASSERT_EQ(1, ctl->NotifySensorInitComplate());  // starts the worker
    EXPECT_TRUE(ctl->isModuleWorkerRunning());
    PlatformClock::waitForSleepers(1);
    bench.clock.advance(3000);
    EXPECT_GE(ctl->workerPassCount(), 2);
    EXPECT_EQ(0, ctl->moduleDNState());
    int status = -1;
    EXPECT_EQ(1, ctl->getDNStatusFromSensor(status));
    EXPECT_EQ(0, status);
    bench.module.setRegister(HitachSenseController::StatusRegister, 0x00);  // day
    bench.clock.advance(2000);
    EXPECT_EQ(1, ctl->moduleDNState());
    // The destructor stops the worker before anything else goes.
    const int passes = ctl->workerPassCount();
    ctl.reset();
    EXPECT_GE(passes, 3);
}

// ---- Hitachi-compatible ----

TEST_F(HitachCompatTest, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{1, 4}, {6, 7}, {9, 10}, {12, 14}, {16, 19}, {21, 21}}), idsOf({{20, 20}, {54, 55}}), {});
}

TEST_F(HitachCompatTest, StartUpLikeTheHitachiModule) {
    ASSERT_EQ(1, init(kHitachDetail, kParams));
    EXPECT_NE(std::string::npos, initOutput.find("__HitachCompatSenseController::init,ModuleConfigure is("));
    auto all = bench.module.receivedCommands();
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(":WFCC001", all[0]);
    for (size_t i = 1; i < all.size(); ++i) EXPECT_TRUE(isTableCommand(all[i]) || all[i] == ":R0F00") << all[i];
}

TEST_F(HitachCompatTest, EveryIdChangesTheModuleAndRefusalsSendNothing) {
    ASSERT_EQ(1, init(kHitachDetail, kParams));
    expectEveryIdChangesTheModule();
    EXPECT_EQ(57, expectEveryRefusal());
    // The iris steps share one register: 01 opens, 02 closes.
    size_t mark = bench.commandMark();
    ASSERT_EQ(1, ctl->setParameterToSensor(54, 1));
    ASSERT_EQ(1, ctl->setParameterToSensor(55, 1));
    EXPECT_EQ((std::vector<std::string>{":W017401", ":W017402"}), bench.commandsSince(mark));
}

TEST_F(HitachCompatTest, InitFailsForEachMissingKey) {
    expectInitFailures({
        {"isInfrared=0;isThridGeneration=0", kParams, "get RS232DeviceName from detail failed"},
        {kHitachDetail, "toDayADCVal=3", "get RS232Parameter from senseParameter failed"},
        {kDetail, kParams, "get isThridGeneration from detail failed"},
    });
}

// ---- SC110N-C ----

TEST_F(SC110NCTest, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{1, 4}, {6, 11}, {13, 18}}), idsOf({{20, 20}, {22, 29}}), {19});
}

TEST_F(SC110NCTest, StartUpReadsTheStatusAndSelectsThePage) {
    ASSERT_EQ(1, init(kDetail, kParams));
    EXPECT_EQ(ISensorController::InitSuccess, ctl->getSensorStatus());
    EXPECT_NE(std::string::npos, initOutput.find(std::string("__SC110N_CSenseController::init,ModuleConfigure is(") +
                                                 kDetail + "," + kParams + ")"));
    auto all = bench.module.receivedCommands();
    ASSERT_GE(all.size(), 2u);
    EXPECT_EQ(":rE1ED0000", all[0]);
    EXPECT_EQ(":WFBFF02", all[1]);
    EXPECT_EQ(2, bench.module.registerValue(0xFBFF));
    for (size_t i = 2; i < all.size(); ++i) EXPECT_TRUE(isTableCommand(all[i]) || all[i] == ":rE1ED0000") << all[i];
}

TEST_F(SC110NCTest, TheModuleRegisterWrites) {
    ASSERT_EQ(1, init(kDetail, kParams));
    struct Case {
        int id, value;
        const char* command;
    };
    const std::vector<Case> cases = {
        {1, 0x12, ":WFC1012"}, {2, 0x34, ":WFC1134"}, {3, 0, ":WFC1200"},  {4, 0xFF, ":WFC13FF"},
        {6, 0x80, ":WFC1480"}, {7, 2, ":WFBF902"},    {8, 15, ":WFBF60F"}, {9, 0, ":WFCC800"},
        {9, 1, ":WFCC801"},    {9, 2, ":WFCC810"},    {9, 3, ":WFCC820"},  {9, 4, ":WFCC831"},
        {20, 1, ":WFFE6C0"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.command);
        size_t mark = bench.commandMark();
        ASSERT_EQ(1, ctl->setParameterToSensor(c.id, c.value));
        EXPECT_EQ(std::vector<std::string>{c.command}, bench.commandsSince(mark));
    }
    EXPECT_EQ(0x31, bench.module.registerValue(0xFCC8));
    EXPECT_EQ(0xC0, bench.module.registerValue(0xFFE6));
    int mode = -1;
    ASSERT_EQ(1, ctl->getParameterFromSensor(9, mode));
    EXPECT_EQ(4, mode);
}

TEST_F(SC110NCTest, EveryIdChangesTheModuleAndRefusalsSendNothing) {
    ASSERT_EQ(1, init(kDetail, kParams));
    expectEveryIdChangesTheModule();
    EXPECT_EQ(78, expectEveryRefusal());
}

TEST_F(SC110NCTest, InitFailsForEachMissingKeyAndASilentModule) {
    expectInitFailures({
        {"isInfrared=0", kParams, "get RS232DeviceName from detail failed"},
        {kDetail, "toDayADCVal=3", "get RS232Parameter from senseParameter failed"},
    });
    resetController();
    bench.module.setFaultProbability(SimSerialDevice::Silent, 1.0);
    size_t mark = bench.commandMark();
    EXPECT_EQ(0, init(kDetail, kParams));
    EXPECT_NE(std::string::npos, initOutput.find("SC110N_C read status failed")) << initOutput;
    EXPECT_NE(std::string::npos, initOutput.find("===recv(3 times) @recvData failed,send:"));
    EXPECT_EQ((std::vector<std::string>{":rE1ED0000", ":rE1ED0000", ":rE1ED0000"}), bench.commandsSince(mark));
}

TEST_F(SC110NCTest, TheWorkerReadsTheStatusWord) {
    ASSERT_EQ(1, init(kDetail, kParams));
    bench.module.setRegister(SC110N_CSenseController::StatusRegister, 0x0101);  // night
    size_t mark = bench.commandMark();
    ASSERT_EQ(1, ctl->NotifySensorInitComplate());
    PlatformClock::waitForSleepers(1);
    bench.clock.advance(2500);
    ctl->stopModuleWorker();
    auto sent = bench.commandsSince(mark);
    ASSERT_GE(sent.size(), 2u);
    for (auto& c : sent) EXPECT_EQ(":rE1ED0000", c);
    EXPECT_EQ(0, ctl->moduleDNState());
}

// ---- CMD7200 ----

TEST_F(CMD7200Test, ConstructionRegistersExactlyItsRanges) { expectRegistered(idsOf({{1, 10}}), {}, {}); }

TEST_F(CMD7200Test, StartUpReadsTheShutterMode) {
    ASSERT_EQ(1, init(kDetail, kParams));
    EXPECT_NE(std::string::npos, initOutput.find(std::string("__CMD7200SenseController::init,ModuleConfigure is(") +
                                                 kDetail + "," + kParams + ")"));
    auto all = bench.module.receivedCommands();
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(":R0210", all[0]);
    for (size_t i = 1; i < all.size(); ++i) EXPECT_TRUE(isTableCommand(all[i])) << all[i];
}

TEST_F(CMD7200Test, EveryIdChangesTheModuleAndRefusalsSendNothing) {
    ASSERT_EQ(1, init(kDetail, kParams));
    expectEveryIdChangesTheModule();
    EXPECT_EQ(30, expectEveryRefusal());
    size_t mark = bench.commandMark();
    ASSERT_EQ(1, ctl->setParameterToSensor(7, 999));
    ASSERT_EQ(1, ctl->setParameterToSensor(7, 1000));
    EXPECT_EQ(":w022003E8", bench.commandsSince(mark).back());
}

TEST_F(CMD7200Test, InitFailsForEachMissingKeyAndAnAbsentModule) {
    expectInitFailures({
        {"isInfrared=0", kParams, "get RS232DeviceName from detail failed"},
        {kDetail, "toDayADCVal=3", "get RS232Parameter from senseParameter failed"},
        {kDetail, "RS485=9600,8,1", "parse RS485 param failed,nRet=3"},
    });
    resetController();
    bench.module.setFaultProbability(SimSerialDevice::Silent, 1.0);
    EXPECT_EQ(0, init(kDetail, kParams));
    EXPECT_NE(std::string::npos, initOutput.find("CMD7200 read shutter mode failed")) << initOutput;
}
