// The controller without sensor UI: its do-nothing overrides, the line set-up
// with swapped settings, and the "getDN" thread that follows the module's
// day/night state, on the virtual clock.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "doubles/FakeUART.h"
#include "doubles/ViscaRig.h"
#include "drivers/serial/NoSensorUIController.h"
#include "platform/GThread.h"
#include "platform/PlatformClock.h"

using namespace testutil;

namespace {

// The controller with its port index settable, to run single passes without the thread.
class NoUIProbe : public NoSensorUIController {
public:
    void setPort(int port) { m_nUARTPort = port; }
};

struct Pass {
    int64_t pausedMs;
    std::string out;
};

Pass runPass(NoUIProbe& c) {
    testing::internal::CaptureStdout();
    int64_t t0 = PlatformClock::nowMs();
    EXPECT_EQ(0, c.getDNbody());
    Pass p{PlatformClock::nowMs() - t0, testing::internal::GetCapturedStdout()};
    return p;
}

class NoUITest : public ::testing::Test {
protected:
    TempRoot root;
    VirtualClock clock;
    FakeUART* uart = new FakeUART();
    NoUIProbe ctl;
    void SetUp() override {
        ctl.setOperator(SafePointer<IUARTController>(uart), SafePointer<IGPIO>(new FakeGPIO()));
        ctl.setPort(0);
    }
};

}  // namespace

TEST_F(NoUITest, EveryParameterOperationSucceedsWithoutEffect) {
    int v = 42;
    EXPECT_EQ(1, ctl.getMirrorValue(v));
    EXPECT_EQ(1, ctl.getParameterFromSensor(3, v));
    EXPECT_EQ(42, v);
    EXPECT_EQ(1, ctl.setParameterToSensor(3, 9));
    EXPECT_EQ(1, ctl.setSensorVideoSystem(0, VideoResolution(1920, 1080)));
    EXPECT_EQ(1, ctl.NotifySensorInitComplate());
    EXPECT_EQ(1, ctl.initFactorySetting());
    EXPECT_TRUE(uart->written.empty());
    EXPECT_EQ("getDN", ctl.getDNThread().getName());
    EXPECT_FALSE(ctl.getDNThread().isRunning());
}

TEST_F(NoUITest, NightAndDayRepliesSetTheStateAndPauseOneSecond) {
    uart->toRead = std::string("\x90\x50\x02\xFF", 4);
    int status = -1;
    EXPECT_EQ(0, ctl.getDNStatusFromSensor(status));  // nothing read yet
    Pass p = runPass(ctl);
    EXPECT_EQ(0, ctl.getModuleDNState());
    EXPECT_EQ(1, ctl.getDNStatusFromSensor(status));
    EXPECT_EQ(0, status);
    EXPECT_EQ(1000, p.pausedMs);
    ASSERT_EQ(1u, uart->written.size());
    EXPECT_EQ(std::string("\x81\x09\x04\x01\xFF", 5), uart->written[0]);
    uart->toRead = std::string("\x90\x50\x03\xFF", 4);
    p = runPass(ctl);
    EXPECT_EQ(1, ctl.getModuleDNState());
    EXPECT_EQ(1000, p.pausedMs);
}

TEST_F(NoUITest, OutOfRangeValueIsReportedStateUnchanged) {
    uart->toRead = std::string("\x90\x50\x02\xFF", 4);
    runPass(ctl);
    uart->toRead = std::string("\x90\x50\x04\xFF", 4);
    Pass p = runPass(ctl);
    EXPECT_NE(std::string::npos, p.out.find("get daynight value out of range value = 4\n"));
    EXPECT_EQ(3000, p.pausedMs);
    EXPECT_EQ(0, ctl.getModuleDNState());
}

TEST_F(NoUITest, ShortReplyIsReportedWithItsCount) {
    uart->toRead = std::string("\x90\x50\x02", 3);
    Pass p = runPass(ctl);
    EXPECT_NE(std::string::npos, p.out.find("recv @getDNbody failed,nRet = 3\n"));
    EXPECT_EQ(3000, p.pausedMs);
}

TEST_F(NoUITest, FailedWriteReportsTheBytesAndPausesWithoutReading) {
    uart->writeLimit = 2;
    uart->toRead = std::string("\x90\x50\x02\xFF", 4);
    Pass p = runPass(ctl);
    EXPECT_NE(std::string::npos, p.out.find("sendData !! send data failed , sendcommand=0x81,0x9,0x4,0x1,0xff  ,nRet=2\n"));
    EXPECT_EQ(3000, p.pausedMs);
    EXPECT_EQ(4u, uart->toRead.size());  // nothing read
}

namespace {
struct Record {
    const char* detail;
    const char* params;
    const char* message;
};
}  // namespace

TEST(NoUIInit, BadRecordsFailWithTheirMessage) {
    TempRoot root;
    VirtualClock clock;
    const Record records[] = {
        {"RS485", "RS485=9600,8,0,1", "parse detail failed"},
        {"isInfrared=1", "RS485=9600,8,0,1", "get RS232DeviceName from detail failed"},
        {"RS485=/dev/ttyS1", "RS485", "parse senseParameter failed"},
        {"RS485=/dev/ttyS1", "baud=9600", "get RS232Parameter from senseParameter failed"},
        {"RS485=/dev/ttyS1", "RS485=9600,8,0", "parse RS485 param failed,nRet=3\n"},
        {"RS485=/dev/ttyS7", "RS485=9600,8,0,1", "open uart (/dev/ttyS7) failed\n"},
    };
    for (const Record& r : records) {
        SCOPED_TRACE(r.message);
        SimViscaModule module;
        SafePointer<IUARTController> uart(new SimViscaUART(module, "/dev/ttyS1"));
        NoSensorUIController c;
        c.setOperator(uart, SafePointer<IGPIO>(new FakeGPIO()));
        testing::internal::CaptureStdout();
        int result = c.initController(99, ModuleConfigure(99, r.detail, r.params));
        std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(0, result);
        EXPECT_NE(std::string::npos, out.find(std::string("NoSenseUIController::init,ModuleConfigure is(") + r.detail + "," +
                                              r.params + ")\n"));
        EXPECT_NE(std::string::npos, out.find(r.message)) << out;
        EXPECT_FALSE(c.getDNThread().isRunning());
    }
}

TEST(NoUIInit, LineSettingsArePassedWithStopBitsAndParitySwapped) {
    ViscaBench bench;
    NoSensorUIController c;
    c.setOperator(bench.uart, bench.gpio);
    testing::internal::CaptureStdout();
    ASSERT_EQ(1, c.initController(99, ModuleConfigure(99, "RS485=/dev/ttyS1", "RS485=9600,8,0,1")));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("RS485(/dev/ttyS1) param is (9600,8,0,1)\n"));
    int line[4];
    bench.uartRaw->lastLine(line);
    EXPECT_EQ(9600, line[0]);
    EXPECT_EQ(8, line[1]);
    EXPECT_EQ(1, line[2]);  // stop bits: the text's fourth number
    EXPECT_EQ(0, line[3]);  // parity: the text's third number
    EXPECT_TRUE(c.getDNThread().isRunning());
    c.getDNThread().stop();
}

TEST(NoUIThread, FollowsTheModuleOnTheVirtualClockAndStopsBeforeDestruction) {
    ViscaBench bench;
    auto* c = new NoSensorUIController();
    SafePointer<ISensorController> owner(c);
    c->setOperator(bench.uart, bench.gpio);
    testing::internal::CaptureStdout();
    int r = runPumped([&] {
        return c->init(99, ModuleConfigure(99, "RS485=/dev/ttyS1", "RS485=9600,8,0,1"), VideoResolution(1920, 1080));
    });
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(1, r);
    // Night at the module: the thread sees it within a pass (inquiry, answer,
    // one-second pause), and the day/night worker follows after its switch delay.
    bench.module.setNight(true);
    for (int i = 0; i < 50 && c->getModuleDNState() != 0; ++i) bench.clock.advance(100);
    EXPECT_EQ(0, c->getModuleDNState());
    int status = -1;
    EXPECT_EQ(1, c->getDNStatusFromSensor(status));
    EXPECT_EQ(0, status);
    int passes = c->getDNPassCount();
    bench.clock.advance(5000);
    EXPECT_GE(c->getDNPassCount() - passes, 3);
    // A module that goes silent: failed reads, three-second pauses, the state kept.
    bench.module.setFaultProbability(SimViscaModule::Silent, 1.0);
    testing::internal::CaptureStdout();
    bench.clock.advance(10000);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("recv @getDNbody failed,nRet = 0"));
    EXPECT_EQ(0, c->getModuleDNState());
    auto t0 = std::chrono::steady_clock::now();
    c->stopWorker();  // the owner's part; the destructor ends the module thread
    owner.reset();
    auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - t0).count();
    EXPECT_LT(ms, 1000);
}
