// The CMD8300 controller against the simulated VISCA block with the CMD8300's
// model profile, on the virtual clock: the registered ids, the start-up and its
// own port handling, every id's packet and the module's state after it, every
// refusal text, the byte-by-byte reply check (on a scripted port too), faults,
// and automatic noise reduction as the worker's periodic work.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "doubles/FakeGPIO.h"
#include "doubles/FakeUART.h"
#include "doubles/ViscaControllerFixture.h"
#include "drivers/serial/CMD8300SenseController.h"

using namespace testutil;

namespace {

const char* kDetail = "RS485=/dev/ttyS1;isInfrared=1";
const char* kParams = "RS485=9600,8,1,0;GUIConfigName=CMD8300Style";
const char* kDebugMarker = "/factory_setting/SensorControlDebug";

class CMD8300Test : public ViscaControllerFixture<CMD8300SenseController> {
protected:
    void SetUp() override {
        ViscaControllerFixture::SetUp();
        bench.module.setProfile(SimViscaModule::profile("CMD8300"));
    }
    int init(const std::string& detail = kDetail, const std::string& params = kParams) {
        return ViscaControllerFixture::init(detail, params);
    }
};

const unsigned char kNR2[] = {0x81, 0x01, 0x04, 0x53, 0x02, 0xFF};

}  // namespace

TEST_F(CMD8300Test, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{1, 27}, {29, 32}, {57, 66}}), idsOf({{28, 28}}));
}

TEST_F(CMD8300Test, StartUpPrintsItsLineReadsItsKeyAndSendsNothing) {
    make();
    ModuleConfigure cfg(CMD8300SenseController::SensorType, kDetail, kParams);
    testing::internal::CaptureStdout();
    int r = ctl->initController(CMD8300SenseController::SensorType, cfg);
    std::string out = testing::internal::GetCapturedStdout();
    ASSERT_EQ(1, r);
    EXPECT_EQ(0, out.find(std::string("__CMD8300SenseController::init,ModuleConfigure is(") + kDetail + "," +
                          kParams + ")\n"))
        << out;
    EXPECT_NE(std::string::npos, out.find("RS485(/dev/ttyS1) param is (9600,8,1,0)"));
    EXPECT_EQ("CMD8300Style", ctl->getGUIConfigName());
    EXPECT_EQ(0, ctl->getUARTPort());
    EXPECT_TRUE(bench.module.receivedPackets().empty());
    ctl.reset();
    ASSERT_EQ(1, init());
    EXPECT_EQ(ISensorController::InitSuccess, ctl->getSensorStatus());
}

TEST_F(CMD8300Test, EachMissingKeyFailsInitWithItsTextAndLeavesThePortClosed) {
    expectInitFailures({
        {"isInfrared=1", kParams, "get RS232DeviceName from detail failed"},
        {kDetail, "GUIConfigName=CMD8300Style", "get RS232Parameter from senseParameter failed"},
        {kDetail, "RS485=9600,8,1,0", "get GUIConfigName from senseParameter failed"},
        {"RS485=/dev/ttyS4", kParams, "open uart (/dev/ttyS4) failed"},
    });
    EXPECT_EQ(-1, ctl->getUARTPort());
    // The port was open when the key was found missing: it is closed again.
    ctl.reset();
    EXPECT_EQ(0, init(kDetail, "RS485=9600,8,1,0"));
    EXPECT_EQ(-1, ctl->getUARTPort());
}

TEST_F(CMD8300Test, ClosedPortSendsNothing) {
    ASSERT_EQ(1, init());
    ctl->closeUART();
    testing::internal::CaptureStdout();
    EXPECT_EQ(0u, set(2, 3, 0).size());
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(-1, bench.module.nibbleValue(0x5B));
}

TEST_F(CMD8300Test, EveryTableIdChangesTheModule) {
    ASSERT_EQ(1, init());
    expectPacketsApplied({
        {1, 100, bytesOf({0x81, 0x01, 0x04, 0x42, 0x00, 0x00, 0x00, 0x0F, 0xFF})},
        {2, 5, bytesOf({0x81, 0x01, 0x04, 0x5B, 0x05, 0xFF})},
        {3, 4, bytesOf({0x81, 0x01, 0x04, 0x53, 0x04, 0xFF})},
        {5, 1, bytesOf({0x81, 0x01, 0x04, 0x39, 0x03, 0xFF})},  // manual: shutter, iris and gain go out
        {6, 21, bytesOf({0x81, 0x01, 0x04, 0x4A, 0x00, 0x00, 0x01, 0x05, 0xFF})},
        {7, 17, bytesOf({0x81, 0x01, 0x04, 0x4B, 0x00, 0x00, 0x01, 0x01, 0xFF})},
        {8, 15, bytesOf({0x81, 0x01, 0x04, 0x4C, 0x00, 0x00, 0x00, 0x0F, 0xFF})},
        {10, 4, bytesOf({0x81, 0x01, 0x04, 0x2C, 0x04, 0xFF})},
        {11, 1, bytesOf({0x81, 0x01, 0x04, 0x5A, 0x02, 0xFF})},
        {12, 14, bytesOf({0x81, 0x01, 0x04, 0x4E, 0x00, 0x00, 0x00, 0x0E, 0xFF})},
        {13, 1, bytesOf({0x81, 0x01, 0x04, 0x33, 0x02, 0xFF})},
        {14, 6, bytesOf({0x81, 0x01, 0x04, 0x35, 0x05, 0xFF})},
        {15, 0x12, bytesOf({0x81, 0x01, 0x04, 0x43, 0x00, 0x00, 0x01, 0x02, 0xFF})},
        {16, 0xFE, bytesOf({0x81, 0x01, 0x04, 0x44, 0x00, 0x00, 0x0F, 0x0E, 0xFF})},
        {18, 1, bytesOf({0x81, 0x01, 0x04, 0x38, 0x03, 0xFF})},
        {19, 9, bytesOf({0x81, 0x01, 0x04, 0x28, 0x09, 0x00, 0x00, 0x00, 0xFF})},
        {20, 6, bytesOf({0x81, 0x01, 0x04, 0x3D, 0x06, 0xFF})},
        {21, 2, bytesOf({0x81, 0x01, 0x04, 0x37, 0x02, 0x02, 0xFF})},
        {22, 3, bytesOf({0x81, 0x01, 0x04, 0x14, 0x03, 0x00, 0xFF})},
        {24, 20, bytesOf({0x81, 0x01, 0x04, 0x1A, 0x00, 0x00, 0x01, 0x04, 0xFF})},
        {25, 28, bytesOf({0x81, 0x01, 0x04, 0x21, 0x00, 0x00, 0x01, 0x0C, 0xFF})},
        {26, 1, bytesOf({0x81, 0x01, 0x04, 0x11, 0x01, 0xFF})},
        {27, 1, bytesOf({0x81, 0x01, 0x04, 0x5E, 0x02, 0xFF})},
        {29, 14, bytesOf({0x81, 0x01, 0x04, 0x49, 0x00, 0x00, 0x00, 0x0E, 0xFF})},
        {30, 0, bytesOf({0x81, 0x01, 0x04, 0x4F, 0x00, 0x00, 0x00, 0x00, 0xFF})},
        {31, 48, bytesOf({0x81, 0x01, 0x04, 0x5D, 0x30, 0xFF})},
        {32, 0, bytesOf({0x81, 0x01, 0x04, 0x06, 0x03, 0xFF})},
        {66, 3, bytesOf({0x81, 0x01, 0x04, 0x5F, 0x03, 0xFF})},
        {5, 4, bytesOf({0x81, 0x01, 0x04, 0x39, 0x0D, 0xFF})},  // bright mode: bright goes out
        {9, 27, bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x01, 0x0F, 0xFF})},
        {65, 50, bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x01, 0x01, 0xFF})},
        {21, 0, bytesOf({0x81, 0x01, 0x04, 0x37, 0x03, 0x00, 0xFF})},
        {22, 0, bytesOf({0x81, 0x01, 0x04, 0x14, 0x00, 0x00, 0xFF})},
        {28, 1, bytesOf({0x81, 0x01, 0x04, 0x18, 0x01, 0xFF})},
    });
    expectMirror(17);
    // Noise reduction mode: automatic is the worker's (nothing sent now); manual
    // sends the manual level again.
    EXPECT_EQ(0u, set(4, 1).size());
    EXPECT_EQ(1, ctl->getNRMode());
    ViscaPackets manual = set(4, 0);
    ASSERT_EQ(1u, manual.size());
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x53, 0x04, 0xFF}), manual[0]);
    // Day/night mode and its switch times are the controller's.
    expectControllersOwn({{23, 1}, {60, 20}, {61, 30}, {62, 5}, {63, 10}});
}

TEST_F(CMD8300Test, EveryRefusalTextAndNothingSentOrCached) {
    ASSERT_EQ(1, init());
    EXPECT_GT(expectEveryRefusal(), 60);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameter(24, 29));
    EXPECT_EQ(0, ctl->setParameter(22, 4));
    EXPECT_EQ(0, ctl->setParameter(4, 2));
    std::string o = testing::internal::GetCapturedStdout();
    for (const char* t : {"p_nDTNSensitivity(29) is out of range", "p_nHighlightHold(4) is out of range",
                          "p_nNRMode(2) is out of range"})
        EXPECT_NE(std::string::npos, o.find(t)) << t;
    size_t mark = bench.packetMark();
    for (int id : {0, 33, 37, 52, 56, 67}) EXPECT_EQ(0, ctl->setParameter(id, 1)) << id;
    EXPECT_EQ(mark, bench.packetMark());
}

TEST_F(CMD8300Test, ByteFormTakesStrayBytesForAFailedAttemptWithADebugLineEach) {
    bench.root.write(kDebugMarker, "");
    ASSERT_EQ(1, init());
    // Stray bytes before the acknowledgement: the first byte read is not 0x90,
    // the attempt fails and the packet goes again.
    bench.module.injectOnce(SimViscaModule::Noise);
    testing::internal::CaptureStdout();
    ViscaPackets p = set(2, 4);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(2u, p.size());
    EXPECT_EQ(4, bench.module.nibbleValue(0x5B));
    EXPECT_NE(std::string::npos, out.find("check(1 times) recv(3):")) << out;
    EXPECT_NE(std::string::npos, out.find("check(2 times) recv(3):0x90,0x41,0xff")) << out;
    EXPECT_NE(std::string::npos, out.find("===setParameterValue(1 times) recv error,recv:")) << out;
    // A module that never answers: a debug line for each of the three attempts.
    settleLine();
    bench.module.setFaultProbability(SimViscaModule::Silent, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(3u, set(2, 1, 0).size());
    out = testing::internal::GetCapturedStdout();
    for (const char* t : {"check(1 times) recv(0):0x0,0x0,0x0", "check(2 times) recv(0)", "check(3 times) recv(0)"})
        EXPECT_NE(std::string::npos, out.find(t)) << t << "\n" << out;
}

TEST(CMD8300ByteForm, EachByteIsTestedFromAFirstByte0x90) {
    TempRoot root;
    VirtualClock clock{12, 0, 0};
    root.write(kDebugMarker, "");
    FakeUART* raw = new FakeUART();
    SafePointer<IUARTController> uart(raw);
    SafePointer<CMD8300SenseController> ctl(new CMD8300SenseController());
    ctl->setOperator(uart, SafePointer<IGPIO>(new FakeGPIO()));
    testing::internal::CaptureStdout();
    ASSERT_TRUE(ctl->openUART(ModuleConfigure(80, kDetail, kParams)));
    testing::internal::GetCapturedStdout();
    struct Case {
        std::string reply;
        int result;
    };
    const std::vector<Case> cases = {
        {std::string("\x90\x41\xFF", 3), 1},      // acknowledgement
        {std::string("\x90\x51\xFF", 3), 1},      // completion
        {std::string("\x90\x42\xFF", 3), 0},      // acknowledgement of the second socket
        {std::string("\xA0\x41\xFF", 3), 0},      // first byte not 0x90
        {std::string("\x90\x41\xFE", 3), 0},      // no terminator
        {std::string("\x41\xFF\x90", 3), 0},      // the acknowledgement's bytes, shifted
        {std::string("\x00\x90\x41\xFF", 4), 0},  // a stray byte first
        {std::string("\x90\x60\x02\xFF", 4), 0},  // syntax error
        {std::string("\x90\x41", 2), 0},          // short
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testutil::hexOf(std::vector<uint8_t>(c.reply.begin(), c.reply.end())));
        raw->written.clear();
        raw->reply = c.reply;
        testing::internal::CaptureStdout();
        EXPECT_EQ(c.result, ctl->setParameterValue(reinterpret_cast<const char*>(kNR2), 6));
        std::string out = testing::internal::GetCapturedStdout();
        // A refused reply: three attempts, each with its debug line.
        EXPECT_EQ(c.result ? 1u : 3u, raw->written.size());
        EXPECT_NE(std::string::npos, out.find("check(1 times) recv(")) << out;
        if (!c.result) {
            EXPECT_NE(std::string::npos, out.find("check(3 times) recv(")) << out;
        }
    }
    raw->reply = std::string("\x90\x60\x02", 3);
    testing::internal::CaptureStdout();
    ctl->setParameterValue(reinterpret_cast<const char*>(kNR2), 6);
    EXPECT_NE(std::string::npos,
              testing::internal::GetCapturedStdout().find("===setParameterValue(1 times) recv error,recv:0x90,0x60,0x2"));
}

TEST_F(CMD8300Test, FaultsCostThreeAttemptsAndLeaveTheCache) {
    ASSERT_EQ(1, init());
    expectFaultsRefuse(2, 3);
    expectOneShotFaultsGetThrough(2, 0x5B, 1, 3);
}

TEST_F(CMD8300Test, AutomaticNoiseReductionFollowsTheGainOnItsPeriod) {
    ASSERT_EQ(1, init());
    ASSERT_EQ(1, ctl->setParameter(5, 1));   // manual exposure
    ASSERT_EQ(1, ctl->setParameter(8, 12));  // gain 12
    ASSERT_EQ(1, ctl->setParameter(3, 2));
    // Manual noise reduction: the worker's pass sends nothing.
    bench.clock.advance(CMD8300SenseController::AutoNRPeriodMs);
    EXPECT_TRUE(sent([&] { ctl->doDependOnThread(); return 1; }).empty());
    ASSERT_EQ(1, ctl->setParameter(4, 1));
    ViscaPackets p = sent([&] { ctl->doDependOnThread(); return 1; });
    ASSERT_EQ(2u, p.size()) << packetsText(p);
    EXPECT_EQ(bytesOf({0x81, 0x09, 0x04, 0x4C, 0xFF}), p[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x53, 0x05, 0xFF}), p[1]);
    EXPECT_EQ(5, bench.module.nibbleValue(0x53));
    // Within the period nothing; after it the gain is read, the same level not sent again.
    EXPECT_TRUE(sent([&] { ctl->doDependOnThread(); return 1; }).empty());
    bench.clock.advance(CMD8300SenseController::AutoNRPeriodMs);
    EXPECT_EQ(1u, sent([&] { ctl->doDependOnThread(); return 1; }).size());
    // A lower gain, a lower level.
    ASSERT_EQ(1, ctl->setParameter(8, 2));
    bench.clock.advance(CMD8300SenseController::AutoNRPeriodMs);
    p = sent([&] { ctl->doDependOnThread(); return 1; });
    ASSERT_EQ(2u, p.size());
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x53, 0x01, 0xFF}), p[1]);
    EXPECT_EQ(1, bench.module.nibbleValue(0x53));
    // A module that does not answer the gain: the level stays, a message says why.
    bench.module.setFaultProbability(SimViscaModule::Silent, 1.0);
    bench.clock.advance(CMD8300SenseController::AutoNRPeriodMs);
    testing::internal::CaptureStdout();
    ctl->doDependOnThread();
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("CMD8300 auto NR: get gain failed"));
    EXPECT_EQ(1, bench.module.nibbleValue(0x53));
}

TEST(CMD8300Levels, GainToNoiseReductionLevel) {
    EXPECT_EQ(1, CMD8300SenseController::autoNRLevelOf(0));
    EXPECT_EQ(1, CMD8300SenseController::autoNRLevelOf(4));
    EXPECT_EQ(3, CMD8300SenseController::autoNRLevelOf(5));
    EXPECT_EQ(3, CMD8300SenseController::autoNRLevelOf(9));
    EXPECT_EQ(5, CMD8300SenseController::autoNRLevelOf(10));
    EXPECT_EQ(5, CMD8300SenseController::autoNRLevelOf(15));
    EXPECT_EQ(5, CMD8300SenseController::autoNRLevelOf(40));
}

TEST(CMD8300Worker, RunsOnThePlatformClockAndStopsFirstInTheDestructor) {
    ViscaBench bench;
    bench.module.setProfile(SimViscaModule::profile("CMD8300"));
    auto* c = new CMD8300SenseController();
    SafePointer<CMD8300SenseController> owner(c);
    c->setOperator(bench.uart, bench.gpio);
    testing::internal::CaptureStdout();
    int r = runPumped([&] {
        return c->init(80, ModuleConfigure(80, kDetail, kParams), VideoResolution(1920, 1080));
    });
    ASSERT_EQ(1, r);
    // The worker's first cycles apply the active scheme's values.
    ASSERT_TRUE(PlatformClock::waitForSleepers(1));
    bench.clock.advance(3000);
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(1, c->setParameter(5, 1));
    ASSERT_EQ(1, c->setParameter(8, 7));
    ASSERT_EQ(1, c->setParameter(4, 1));
    // The day/night worker runs the pass within its next one-second cycle.
    for (int i = 0; i < 30 && bench.module.nibbleValue(0x53) != 3; ++i) bench.clock.advance(100);
    EXPECT_EQ(3, bench.module.nibbleValue(0x53));
    ASSERT_EQ(1, c->setParameter(8, 12));
    bench.clock.advance(CMD8300SenseController::AutoNRPeriodMs + 1500);
    EXPECT_EQ(5, bench.module.nibbleValue(0x53));
    // The destructor stops the worker before anything else goes, promptly.
    auto t0 = std::chrono::steady_clock::now();
    owner.reset();
    auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - t0).count();
    EXPECT_LT(ms, 1000);
    const int packets = bench.module.packetCount();
    bench.clock.advance(20000);
    EXPECT_EQ(packets, bench.module.packetCount());
}
