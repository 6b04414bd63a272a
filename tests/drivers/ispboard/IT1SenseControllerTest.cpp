// The IT1 controller (the family base with the IT1 table) against the simulated
// ISP board, on the virtual clock: the registered ids, the start-up read-backs,
// every id's register, the refusals, the shutter-limit rules, the chroma pairs,
// the board's day/night modes, the workers, random faults and bad records.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "doubles/IspBoardFixture.h"
#include "drivers/ispboard/IT1SenseController.h"
#include "drivers/ispboard/IspBoardFrame.h"
#include "platform/GThread.h"
#include "platform/PlatformClock.h"

using namespace testutil;

namespace {

const char* kDetail = "RS485=/dev/ttyS1;isInfrared=1";
const char* kParams = "RS485=9600,8,1,0";
typedef IBaseIT1SenseController B;

class IT1Test : public IspBoardFixture<IT1SenseController> {
protected:
    int init(bool keepWorkers = false) { return IspBoardFixture::init(kDetail, kParams, keepWorkers); }
    std::string setText(int id, int value, int expect) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(expect, ctl->setParameter(id, value));
        return testing::internal::GetCapturedStdout();
    }
};

std::vector<uint8_t> readFrame(uint16_t address, int width) {
    uint8_t f[8];
    int n = IspBoardFrame::read(address, width, f);
    f[n - 1] = IspBoardFrame::sum(f, n - 1);
    return std::vector<uint8_t>(f, f + n);
}
std::vector<uint8_t> writeFrame(uint16_t address, int width, int value) {
    uint8_t f[8];
    int n = IspBoardFrame::write(address, width, value, f);
    f[n - 1] = IspBoardFrame::sum(f, n - 1);
    return std::vector<uint8_t>(f, f + n);
}

}  // namespace

TEST_F(IT1Test, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{1, 6}, {8, 19}, {22, 22}}), {});
}

TEST_F(IT1Test, StartUpReadsBackTheComposedRegistersAndClearsTheTransitions) {
    ASSERT_EQ(1, init());
    EXPECT_EQ(ISensorController::InitSuccess, ctl->getSensorStatus());
    EXPECT_NE(std::string::npos, initOutput.find(std::string("____IBaseIT1SenseController::init,ModuleConfigure is(") +
                                                 kDetail + "," + kParams + ")"));
    EXPECT_NE(std::string::npos, initOutput.find("RS485(/dev/ttyS1) param is (9600,8,1,0)"));
    auto all = board.receivedFrames();
    ASSERT_GE(all.size(), 10u);
    const std::vector<std::vector<uint8_t>> expect = {
        readFrame(B::RegShutterLimit, 16), readFrame(B::RegSharpness, 8),  readFrame(B::RegDayNight, 8),
        readFrame(B::RegMirror, 8),        readFrame(B::RegChroma1, 8),    readFrame(B::RegChroma1 + 1, 8),
        readFrame(B::RegChroma1 + 2, 8),   readFrame(B::RegChroma1 + 3, 8), writeFrame(B::RegDayToNight, 16, 0),
        writeFrame(B::RegNightToDay, 16, 0)};
    for (size_t i = 0; i < expect.size(); ++i) EXPECT_EQ(expect[i], all[i]) << i << ": " << framesText({all[i]});
    EXPECT_EQ(0, board.registerValue(B::RegDayToNight));
    EXPECT_EQ(0, board.registerValue(B::RegNightToDay));
    int cached = -1;
    EXPECT_TRUE(ctl->cachedRegister(B::RegMirror, cached));
    EXPECT_EQ(0x40, cached);
    EXPECT_EQ(B::BoardDecides, ctl->getDayNightModeOfBoard());
    for (const char* t : {"Init Low Shutter Value failed", "Init Day Night Failed", "Init getChroma Value failed"})
        EXPECT_EQ(std::string::npos, initOutput.find(t)) << t;
}

TEST_F(IT1Test, StartUpAgainstASilentBoardSaysWhatFailed) {
    board.setFaultProbability(SimIspBoard::Silent, 1.0);
    ASSERT_EQ(1, init());
    for (const char* t : {"Init Low Shutter Value failed", "Init Low Sharpness Value failed", "Init Day Night Failed",
                          "Init getMirror Value failed", "Init getChroma Value failed",
                          "init base_setDayToNightTransition(0) failed", "init base_setNightToDayTransition(0) failed"})
        EXPECT_NE(std::string::npos, initOutput.find(t)) << t;
    EXPECT_NE(std::string::npos, initOutput.find("recv dataCount failed,nRecvLength=0"));
    int cached = -1;
    EXPECT_FALSE(ctl->cachedRegister(B::RegMirror, cached));
    EXPECT_FALSE(ctl->cachedRegister(B::RegShutterLimit, cached));
}

TEST_F(IT1Test, BadModuleRecordsAndAbsentDevicesFailInit) {
    struct Case {
        std::string detail, params, text;
    };
    const std::vector<Case> cases = {
        {"isInfrared=1", kParams, "get RS232DeviceName from detail failed"},
        {kDetail, "toDayADCVal=3", "get RS232Parameter from senseParameter failed"},
        {kDetail, "RS485=9600,8", "parse RS485 param failed,nRet=2"},
        {"RS485=/dev/ttyS9;isInfrared=1", kParams, "open uart (/dev/ttyS9) failed"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        ctl.reset();
        EXPECT_EQ(0, IspBoardFixture::init(c.detail, c.params));
        EXPECT_NE(std::string::npos, initOutput.find(c.text)) << initOutput;
        EXPECT_FALSE(ctl->getAutoThread().isRunning());
    }
    EXPECT_EQ(0u, board.frameMark());
}

TEST_F(IT1Test, EveryPlainIdReachesItsRegister) {
    ASSERT_EQ(1, init());
    expectEveryPlainRowReachesItsRegister();
}

TEST_F(IT1Test, MirrorKeepsTheBoardsOtherBits) {
    ASSERT_EQ(1, init());
    IspFrames f = sent([&] { return ctl->setParameterToSensor(B::IdMirror, 3); });
    ASSERT_EQ(1u, f.size());  // composed from the read-back, no read first
    EXPECT_EQ(writeFrame(B::RegMirror, 8, 0x43), f[0]);
    EXPECT_EQ(0x43, board.registerValue(B::RegMirror));
    int v = -1;
    EXPECT_EQ(1, ctl->getMirrorValue(v));
    EXPECT_EQ(3, v);
}

TEST_F(IT1Test, EveryRefusalSendsAndCachesNothing) {
    ASSERT_EQ(1, init());
    EXPECT_GE(expectEveryRefusal(), 40);
    std::string o = setText(5, 8, 0);
    EXPECT_NE(std::string::npos, o.find("setGama(8) is out of range\n"));
    o = setText(4, 16, 0);
    EXPECT_NE(std::string::npos, o.find("p_nSharpness(16) is out of range"));
    o = setText(18, 4, 0);
    EXPECT_NE(std::string::npos, o.find("invalid iris speed value (4)"));
    o = setText(15, 4, 0);
    EXPECT_NE(std::string::npos, o.find("invalid value"));
}

TEST_F(IT1Test, NothingIsSentBeforeInit) {
    make();
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameterToSensor(1, 10));
    int v = 0;
    EXPECT_EQ(0, ctl->getParameterFromSensor(1, v));
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(0u, board.frameMark());
    EXPECT_EQ(-1, ctl->setParameterToSensor(7, 1));  // not a parameter of the board
    EXPECT_EQ(1, ctl->setParameterToSensor(502, 1));
}

TEST_F(IT1Test, ShutterLimitRules) {
    ASSERT_EQ(1, init());
    ASSERT_EQ(0x000F, board.registerValue(B::RegShutterLimit));  // minimum 0, maximum 15
    EXPECT_EQ(1, ctl->setParameter(B::IdMinShutter, 5));
    EXPECT_EQ(0x050F, board.registerValue(B::RegShutterLimit));
    EXPECT_EQ(1, ctl->setParameter(B::IdMaxShutter, 9));
    EXPECT_EQ(0x0509, board.registerValue(B::RegShutterLimit));
    size_t mark = board.frameMark();
    std::string o = setText(B::IdMinShutter, 10, 0);
    EXPECT_NE(std::string::npos, o.find("set MinShutterValue > MaxShutterValue!")) << o;
    o = setText(B::IdMaxShutter, 4, 0);
    EXPECT_NE(std::string::npos, o.find("set MaxShutterValue < MinShutterValue!")) << o;
    EXPECT_EQ(mark, board.frameMark());
    EXPECT_EQ(0x0509, board.registerValue(B::RegShutterLimit));
    int v = 0;
    EXPECT_EQ(1, ctl->getLastValueCache().getSensorValue(B::IdMinShutter, v));
    EXPECT_EQ(5, v);
    // Equal limits are allowed.
    EXPECT_EQ(1, ctl->setParameter(B::IdMinShutter, 9));
    EXPECT_EQ(0x0909, board.registerValue(B::RegShutterLimit));
    EXPECT_EQ(1, ctl->getParameterFromSensor(B::IdMaxShutter, v));
    EXPECT_EQ(9, v);
    // A fixed shutter only in the fixed shutter mode.
    ASSERT_EQ(0, board.registerValue(B::RegShutterMode));
    o = setText(B::IdFixedShutter, 3, 0);
    EXPECT_NE(std::string::npos, o.find("set fixed shutter failed : current is shutter mode is auto")) << o;
    EXPECT_EQ(6, board.registerValue(B::RegFixedShutter));
    EXPECT_EQ(1, ctl->setParameter(B::IdShutterMode, 1));
    EXPECT_EQ(1, ctl->setParameter(B::IdFixedShutter, 3));
    EXPECT_EQ(3, board.registerValue(B::RegFixedShutter));
}

TEST_F(IT1Test, ChromaPairsCarryRedAndBlue) {
    ASSERT_EQ(1, init());
    IspFrames f = sent([&] { return ctl->setParameterToSensor(B::IdRedChroma, 0x3); });
    ASSERT_EQ(4u, f.size());
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(writeFrame(static_cast<uint16_t>(B::RegChroma1 + k), 8, 0x38), f[static_cast<size_t>(k)]);
        EXPECT_EQ(0x38, board.registerValue(static_cast<uint16_t>(B::RegChroma1 + k)));
    }
    EXPECT_EQ(1, ctl->setParameterToSensor(B::IdBlueChroma, 0xC));
    for (int k = 0; k < 4; ++k) EXPECT_EQ(0x3C, board.registerValue(static_cast<uint16_t>(B::RegChroma1 + k)));
    int v = 0;
    EXPECT_EQ(1, ctl->getParameterFromSensor(B::IdRedChroma, v));
    EXPECT_EQ(3, v);
    EXPECT_EQ(1, ctl->getParameterFromSensor(B::IdBlueChroma, v));
    EXPECT_EQ(12, v);
    // A pair that the board refuses names itself; the pairs before it were set.
    board.setFaultProbability(SimIspBoard::Silent, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameterToSensor(B::IdBlueChroma, 1));
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("set BY1 failed")) << o;
    EXPECT_EQ(0x3C, board.registerValue(B::RegChroma1));
    board.clearFaults();
    // The second pair fails after the first was written.
    EXPECT_EQ(1, ctl->setParameterToSensor(B::IdRedChroma, 5));
    ASSERT_EQ(0x5C, board.registerValue(B::RegChroma1 + 1));
}

TEST_F(IT1Test, IrisSpeedWritesTheFourIrisValues) {
    ASSERT_EQ(1, init());
    EXPECT_EQ(1, ctl->setParameterToSensor(B::IdIrisSpeed, 3));
    const uint8_t(&steps)[4] = B::irisValuesOf(3);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(steps[k], board.registerValue(static_cast<uint16_t>(B::RegIrisValue1 + k)));
    int v = -1;
    EXPECT_EQ(1, ctl->getParameterFromSensor(B::IdIrisSpeed, v));
    EXPECT_EQ(3, v);
    board.setFaultProbability(SimIspBoard::Silent, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameterToSensor(B::IdIrisSpeed, 0));
    EXPECT_EQ(0, ctl->setParameterToSensor(19, 7));
    EXPECT_EQ(0, ctl->setParameterToSensor(22, 1));
    EXPECT_EQ(0, ctl->setParameterToSensor(1, 7));
    std::string o = testing::internal::GetCapturedStdout();
    for (const char* t : {"setIrisValue1 failed", "setIrisVoltage failed", "setNightColor failed",
                          "setBrightness error,value is 7"})
        EXPECT_NE(std::string::npos, o.find(t)) << t;
}

TEST_F(IT1Test, DayNightModesOfTheBoard) {
    ASSERT_EQ(1, init());
    ASSERT_EQ(0x01, board.registerValue(B::RegDayNight));
    EXPECT_EQ(1, ctl->setParameter(B::IdDayNightMode, B::AlwaysNight));
    EXPECT_EQ(0x02, board.registerValue(B::RegDayNight));
    int v = -1;
    EXPECT_EQ(1, ctl->getParameterFromSensor(B::IdDayNightMode, v));
    EXPECT_EQ(B::AlwaysNight, v);
    EXPECT_EQ(1, ctl->setParameter(B::IdDayNightMode, B::AlwaysDay));
    EXPECT_EQ(0x00, board.registerValue(B::RegDayNight));
    EXPECT_EQ(1, ctl->setParameter(B::IdDayNightMode, B::BoardDecides));
    EXPECT_EQ(0x01, board.registerValue(B::RegDayNight));
    EXPECT_EQ(1, ctl->enterNightMode());
    EXPECT_EQ(0x03, board.registerValue(B::RegDayNight));
    EXPECT_EQ(1, ctl->closeDayNightMode());
    EXPECT_EQ(0x02, board.registerValue(B::RegDayNight));
    EXPECT_EQ(1, ctl->exitNightMode());
    EXPECT_EQ(0x00, board.registerValue(B::RegDayNight));
    EXPECT_EQ(1, ctl->openDayNightMode());
    EXPECT_EQ(0x01, board.registerValue(B::RegDayNight));
    EXPECT_EQ(1, ctl->turnPictureToNight());
    EXPECT_EQ(0x03, board.registerValue(B::RegDayNight));
    EXPECT_EQ(1, ctl->turnPictureToDay());
    EXPECT_EQ(0x01, board.registerValue(B::RegDayNight));
    board.setFaultProbability(SimIspBoard::Silent, 1.0);
    std::string o = setText(B::IdDayNightMode, B::AlwaysNight, 0);
    EXPECT_NE(std::string::npos, o.find("setDayNightMode error,value is 2")) << o;
    EXPECT_EQ(B::BoardDecides, ctl->getDayNightModeOfBoard());
}

TEST_F(IT1Test, WorkersStartWithTheControllerFollowTheBoardAndStopWithIt) {
    ASSERT_EQ(1, init(true));
    ASSERT_TRUE(ctl->getAutoThread().isRunning());
    ASSERT_TRUE(ctl->getTriggerThread().isRunning());
    int status = -1;
    // The board decides: the auto worker reads its status once a second.
    auto statusWithin = [&](int64_t ms, int want) {
        for (int64_t t = 0; t < ms; t += 50) {
            clock.advance(50);
            if (ctl->getDNStatusFromSensor(status) == 1 && status == want) return true;
        }
        return false;
    };
    board.setRegister(B::RegDayNightStatus, 0);
    EXPECT_TRUE(statusWithin(1500, 0));
    const int autoPasses = ctl->getAutoPassCount();
    board.setRegister(B::RegDayNightStatus, 1);
    EXPECT_TRUE(statusWithin(1500, 1));
    EXPECT_GE(ctl->getAutoPassCount(), autoPasses + 1);
    EXPECT_LE(ctl->getAutoPassCount(), autoPasses + 2);  // once a second, not more
    // The external trigger: night while the input is high.
    stopBoardWorkers();
    ASSERT_EQ(1, ctl->setParameter(B::IdDayNightMode, B::ExternalTrigger));
    EXPECT_EQ(0x00, board.registerValue(B::RegDayNight));
    board.setRegister(B::RegTriggerInput, 1);
    const int passes = ctl->getTriggerPassCount();
    ASSERT_TRUE(ctl->getAutoThread().start());
    ASSERT_TRUE(ctl->getTriggerThread().start());
    ASSERT_TRUE(PlatformClock::waitForSleepers(2));
    for (int i = 0; i < 5; ++i) clock.advance(100);
    EXPECT_GE(ctl->getTriggerPassCount(), passes + 2);
    EXPECT_EQ(0x02, board.registerValue(B::RegDayNight));
    board.setRegister(B::RegTriggerInput, 0);
    for (int i = 0; i < 5; ++i) clock.advance(100);
    EXPECT_EQ(0x00, board.registerValue(B::RegDayNight));
    // The destructor stops both first; nothing pauses it.
    GThread* autoThread = &ctl->getAutoThread();
    EXPECT_TRUE(autoThread->isRunning());
    ctl.reset();
    EXPECT_TRUE(ctl.isNull());
}

TEST_F(IT1Test, ThousandExchangesWithRandomFaultsNeverReportAWrongSuccess) {
    ASSERT_EQ(1, init());
    expectRandomFaultsNeverReportAWrongSuccess(2024, false);  // no late answers: see the fixture
}

TEST_F(IT1Test, GarbageOnTheLineIsNeverTakenForAnAnswer) {
    ASSERT_EQ(1, init());
    // The board refuses a frame with a wrong checksum; the library reads the refusal as no acknowledgement.
    std::vector<uint8_t> f = writeFrame(B::RegBrightness, 8, 30);
    f.back() = static_cast<uint8_t>(f.back() + 1);
    testing::internal::CaptureStdout();
    // setParameterValue computes the checksum itself: the frame goes out right.
    EXPECT_EQ(1, ctl->setParameterValue(reinterpret_cast<const char*>(f.data()), static_cast<int>(f.size())));
    EXPECT_EQ(30, board.registerValue(B::RegBrightness));
    // A write to a status register is refused by the board: 4 bytes, no acknowledgement.
    std::vector<uint8_t> ro = writeFrame(B::RegDayNightStatus, 8, 0);
    EXPECT_EQ(0, ctl->setParameterValue(reinterpret_cast<const char*>(ro.data()), static_cast<int>(ro.size())));
    // Bytes the board does not understand get no answer at all.
    const char junk[] = {0x01, 0x02, 0x03};
    EXPECT_EQ(0, ctl->setParameterValue(junk, 3));
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("setParameterValue error,nRet = 4,")) << o;
    EXPECT_NE(std::string::npos, o.find("setParameterValue error,nRet = -2,")) << o;
    EXPECT_EQ(1, board.registerValue(B::RegDayNightStatus));
    // Noise before the answer, a short answer, an over-long answer, a wrong
    // checksum: a reported success is always the board's value. An answer left
    // on the line by a retry is not taken for the next frame's (it does not echo
    // that frame): that exchange fails and drains, and the one after succeeds.
    struct Case {
        const char* name;
        std::function<void()> inject;
    };
    const std::vector<Case> cases = {
        {"noise", [&] { board.injectOnce(SimSerialDevice::Noise); }},
        {"late", [&] { board.injectOnce(SimSerialDevice::LateReply); }},
        {"corrupt", [&] { board.injectOnce(SimSerialDevice::CorruptByte); }},
        {"busy", [&] { board.injectOnce(SimSerialDevice::BufferFull); }},
        {"short", [&] { board.injectFrameFault(SimIspBoard::ShortAnswer); }},
        {"long", [&] { board.injectFrameFault(SimIspBoard::TooLong); }},
        {"checksum", [&] { board.injectFrameFault(SimIspBoard::WrongChecksum); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        c.inject();
        testing::internal::CaptureStdout();
        if (ctl->setParameterToSensor(2, 77) == 1) {
            EXPECT_EQ(77, board.registerValue(B::RegContrast));
        }
        int v = -1, ok = 0;
        for (int i = 0; i < 3 && !ok; ++i) {
            ok = ctl->getParameterFromSensor(2, v);
            if (ok) {
                EXPECT_EQ(board.registerValue(B::RegContrast), v);
            }
        }
        EXPECT_EQ(1, ok);
        ok = 0;
        for (int i = 0; i < 3 && !ok; ++i) ok = ctl->setParameterToSensor(2, 11);
        EXPECT_EQ(1, ok);
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(11, board.registerValue(B::RegContrast));
    }
}
