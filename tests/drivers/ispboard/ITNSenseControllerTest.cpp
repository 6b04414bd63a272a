// The ITN controller against the simulated board speaking the ITN frames, on
// the virtual clock: the registered ids, the "RS232" port and the GPIO
// day/night input, every id's register, the refusals, the staged answer
// checks with their texts, and random faults.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "doubles/IspBoardFixture.h"
#include "drivers/ispboard/ITNFrame.h"
#include "drivers/ispboard/ITNSenseController.h"

using namespace testutil;

namespace {

const char* kDetail = "RS232=/dev/ttyS1;isInfrared=0;GPIODNLevel=2,7,1";
const char* kParams = "RS232=9600,8,1,0";
typedef ITNSenseController N;

class ITNTest : public IspBoardFixture<ITNSenseController> {
protected:
    int init(const std::string& detail = kDetail, const std::string& params = kParams) {
        return IspBoardFixture::init(detail, params);
    }
    FakeGPIO& fakeGpio() { return *static_cast<FakeGPIO*>(gpio.get()); }
    // A raw exchange through the ITN sendCommand, with its printed texts.
    int raw(uint8_t op, uint16_t address, int value, std::string& out, int capacity = N::AnswerLength) {
        unsigned char frame[ITNFrame::Length];
        unsigned char answer[ITNFrame::Length + 4] = {};
        ITNFrame::build(ITNFrame::Start, op, address, value, frame);
        frame[6] = 0;  // sendCommand computes it
        testing::internal::CaptureStdout();
        const int r = ctl->sendCommand(frame, ITNFrame::Length, answer, capacity);
        out = testing::internal::GetCapturedStdout();
        lastAnswer.assign(answer, answer + ITNFrame::Length);
        return r;
    }
    std::vector<uint8_t> lastAnswer;
};

std::vector<uint8_t> itnFrame(uint8_t op, uint16_t address, int value) {
    uint8_t f[ITNFrame::Length];
    ITNFrame::build(ITNFrame::Start, op, address, value, f);
    return std::vector<uint8_t>(f, f + ITNFrame::Length);
}

}  // namespace

TEST_F(ITNTest, ConstructionRegistersExactlyItsRanges) { expectRegistered(idsOf({{1, 26}}), {}); }

TEST_F(ITNTest, ChecksumIsTheExclusiveOrBetweenTheStartByteAndTheChecksum) {
    unsigned char f[7] = {0x5A, 0x01, 0x10, 0x01, 0x00, 0x20, 0xFF};
    N::computeCheckSum(f, 7);
    EXPECT_EQ(0x01 ^ 0x10 ^ 0x01 ^ 0x00 ^ 0x20, f[6]);
    unsigned char one[1] = {0x77};
    N::computeCheckSum(one, 1);
    EXPECT_EQ(0, one[0]);
}

TEST_F(ITNTest, StartUpOpensTheRs232PortReadsTheGpioAndReadsBack) {
    ASSERT_EQ(1, init());
    EXPECT_EQ(ISensorController::InitSuccess, ctl->getSensorStatus());
    EXPECT_NE(std::string::npos, initOutput.find(std::string("____ITNSenseController::init,ModuleConfigure is(") +
                                                 kDetail + "," + kParams + ")"));
    EXPECT_NE(std::string::npos, initOutput.find("RS232(/dev/ttyS1) param is (9600,8,1,0)")) << initOutput;
    EXPECT_NE(std::string::npos, initOutput.find("GPIO param is (2,7,1)")) << initOutput;
    EXPECT_TRUE(ctl->hasDayNightGpio());
    auto all = board.receivedFrames();
    ASSERT_GE(all.size(), 2u);
    EXPECT_EQ(itnFrame(ITNFrame::Read, N::RegMirror, 0), all[0]) << framesText({all[0]});
    EXPECT_EQ(itnFrame(ITNFrame::Read, N::RegDayNightMode, 0), all[1]) << framesText({all[1]});
    int cached = -1;
    EXPECT_TRUE(ctl->cachedRegister(N::RegMirror, cached));
    EXPECT_EQ(0x80, cached);
    EXPECT_EQ(std::string::npos, initOutput.find("Init getMirror Value failed"));
}

TEST_F(ITNTest, BadPortRecordsFailStartUpWithNothingSent) {
    expectRefusedRecords({
        {"isInfrared=0", kParams, "get RS232DeviceName from detail failed"},
        {kDetail, "RS232=9600,8", "parse RS232 param failed,nRet=2"},
        {kDetail, "RS485=9600,8,1,0", "get RS232Parameter from senseParameter failed"},
        {"RS232=/dev/ttyS9;GPIODNLevel=2,7,1", kParams, "open uart (/dev/ttyS9) failed"},
    });
}

TEST_F(ITNTest, DayNightStatusComesFromTheGpioInput) {
    ASSERT_EQ(1, init());
    int status = -1;
    fakeGpio().levels[{2, 7}] = 1;
    ASSERT_EQ(1, ctl->getDNStatusFromSensor(status));
    EXPECT_EQ(1, status);
    fakeGpio().levels[{2, 7}] = 0;
    ASSERT_EQ(1, ctl->getDNStatusFromSensor(status));
    EXPECT_EQ(0, status);
    fakeGpio().failReads = true;
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->getDNStatusFromSensor(status));
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("get DNLevel failed")) << o;
    // The picture follows the board's night-picture register.
    EXPECT_EQ(1, ctl->turnPictureToNight());
    EXPECT_EQ(1, board.registerValue(N::RegNightPicture));
    EXPECT_EQ(1, ctl->turnPictureToDay());
    EXPECT_EQ(0, board.registerValue(N::RegNightPicture));
}

TEST_F(ITNTest, WithoutTheGpioKeyTheStatusIsNotKnown) {
    ASSERT_EQ(1, init("RS232=/dev/ttyS1;isInfrared=0"));
    EXPECT_NE(std::string::npos, initOutput.find("get GPIODNLevel from detail failed")) << initOutput;
    EXPECT_FALSE(ctl->hasDayNightGpio());
    ctl.reset();
    ASSERT_EQ(1, init("RS232=/dev/ttyS1;GPIODNLevel=2,7"));
    EXPECT_NE(std::string::npos, initOutput.find("get GPIODNLevel from detail failed")) << initOutput;
    int status = -1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->getDNStatusFromSensor(status));
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("get GPIODNLevel from detail failed")) << o;
    EXPECT_EQ(-1, status);
}

TEST_F(ITNTest, EveryPlainIdReachesItsRegisterAndEveryRefusalSendsNothing) {
    ASSERT_EQ(1, init());
    expectEveryPlainRowReachesItsRegister();
    EXPECT_GE(expectEveryRefusal(), 60);
}

TEST_F(ITNTest, MirrorKeepsTheBoardsOtherBits) {
    ASSERT_EQ(1, init());
    IspFrames f = sent([&] { return ctl->setParameterToSensor(N::IdMirror, 3); });
    ASSERT_EQ(1u, f.size());  // the register was cached by start-up: no read
    EXPECT_EQ(itnFrame(ITNFrame::Write, N::RegMirror, 0x83), f[0]) << framesText(f);
    EXPECT_EQ(0x83, board.registerValue(N::RegMirror));
    int v = -1;
    ASSERT_EQ(1, ctl->getMirrorValue(v));
    EXPECT_EQ(3, v);
}

TEST_F(ITNTest, AnswersAreCheckedInStages) {
    ASSERT_EQ(1, init());
    std::string o;
    // A good exchange: seven bytes, the register's value high byte first.
    board.setRegister(0x1009, 0x1234);
    ASSERT_EQ(7, raw(ITNFrame::Read, 0x1009, 0, o));
    EXPECT_EQ(0xA5, lastAnswer[0]);
    EXPECT_EQ(0x12, lastAnswer[4]);
    EXPECT_EQ(0x34, lastAnswer[5]);
    // Stage 2: a refusal (the operation comes back with bit 7 set).
    EXPECT_EQ(IspBoardSenseController::ChecksumMismatch, raw(ITNFrame::Write, 0x1001, 101, o));
    EXPECT_NE(std::string::npos, o.find("2 recv checksum error")) << o;
    ctl->recvLeftData();
    // Stage 3: an answer for another register (left on the line by a late answer).
    board.injectOnce(SimSerialDevice::LateReply);
    EXPECT_EQ(IspBoardSenseController::ReadFailed, raw(ITNFrame::Read, 0x1002, 0, o));
    EXPECT_NE(std::string::npos, o.find("2 recv data failed,nRecvLength=0,nRecvCount=2")) << o;
    clock.advance(2000);
    EXPECT_EQ(IspBoardSenseController::ChecksumMismatch, raw(ITNFrame::Read, 0x1003, 0, o));
    EXPECT_NE(std::string::npos, o.find("3 recv checksum error")) << o;
    clock.advance(2000);
    ctl->recvLeftData();
    // Stage 4: the checksum.
    board.injectFrameFault(SimIspBoard::WrongChecksum);
    EXPECT_EQ(IspBoardSenseController::ChecksumMismatch, raw(ITNFrame::Read, 0x1003, 0, o));
    EXPECT_NE(std::string::npos, o.find("4 recv checksum error")) << o;
    // A short answer; a capacity below seven reads nothing.
    board.injectFrameFault(SimIspBoard::ShortAnswer);
    EXPECT_EQ(IspBoardSenseController::ReadFailed, raw(ITNFrame::Read, 0x1003, 0, o));
    EXPECT_NE(std::string::npos, o.find("4 recv data failed,nRecvLength=1,nRecvCount=3")) << o;
    EXPECT_EQ(IspBoardSenseController::AnswerTooLong, raw(ITNFrame::Read, 0x1003, 0, o, 6));
    ctl->recvLeftData();
    // Through the register path a checksum error is tried once more.
    board.injectFrameFault(SimIspBoard::WrongChecksum);
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, ctl->setParameterToSensor(1, 42));
    o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("4 recv checksum error")) << o;
    EXPECT_EQ(42, board.registerValue(0x1001));
    // A board that does not answer: both attempts fail, nothing cached.
    board.setFaultProbability(SimSerialDevice::Silent, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameter(2, 33));
    o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("ITN write 0x1002 failed,nRet = -2")) << o;
    EXPECT_NE(std::string::npos, o.find("setContrast error,value is 33")) << o;
    int cachedValue = -1;
    EXPECT_FALSE(ctl->getLastValueCache().getSensorValue(2, cachedValue) == 1 && cachedValue == 33);
}

TEST_F(ITNTest, ThousandExchangesWithRandomFaultsNeverReportAWrongSuccess) {
    ASSERT_EQ(1, init());
    expectRandomFaultsNeverReportAWrongSuccess(86);
}
