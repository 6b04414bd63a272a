// The Seawolf controller against the simulated board speaking the Seawolf
// frames, on the virtual clock: the registered ids, start-up, every id's
// register, the refusals, the answer checks with their texts, the resolution
// from the video system, and random faults.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "doubles/IspBoardFixture.h"
#include "drivers/ispboard/SeawolfFrame.h"
#include "drivers/ispboard/SeawolfSenseController.h"

using namespace testutil;

namespace {

const char* kDetail = "RS485=/dev/ttyS1;isInfrared=1";
const char* kParams = "RS485=9600,8,1,0";
typedef SeawolfSenseController W;

class SeawolfTest : public IspBoardFixture<SeawolfSenseController> {
protected:
    int init(const std::string& detail = kDetail, const std::string& params = kParams) {
        return IspBoardFixture::init(detail, params);
    }
    // A raw exchange through the Seawolf sendCommand, with its printed texts.
    int raw(uint8_t command, int dataLength, int value, std::string& out, int capacity = 10) {
        unsigned char frame[SeawolfFrame::MaxLength];
        const int n = SeawolfFrame::build(command, dataLength, value, frame);
        frame[n - 1] = 0;  // sendCommand computes it
        unsigned char answer[16] = {};
        testing::internal::CaptureStdout();
        const int r = ctl->sendCommand(frame, n, answer, capacity);
        out = testing::internal::GetCapturedStdout();
        lastAnswer.assign(answer, answer + (r > 0 ? r : 0));
        return r;
    }
    std::vector<uint8_t> lastAnswer;
};

std::vector<uint8_t> swFrame(uint8_t command, int dataLength, int value) {
    uint8_t f[SeawolfFrame::MaxLength];
    const int n = SeawolfFrame::build(command, dataLength, value, f);
    return std::vector<uint8_t>(f, f + n);
}

}  // namespace

TEST_F(SeawolfTest, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{1, 14}, {16, 20}, {29, 30}, {57, 61}}), idsOf({{22, 28}}));
}

TEST_F(SeawolfTest, ChecksumIsTheComplementOfTheSumOfTheBytesBeforeIt) {
    unsigned char f[6] = {0xFF, 0x09, 0x02, 0x27, 0x10, 0x00};
    W::computeCheckSum(f, 6);
    EXPECT_EQ(~(0xFF + 0x09 + 0x02 + 0x27 + 0x10) & 0xFF, f[5]);
    EXPECT_EQ(swFrame(0x09, 2, 10000), std::vector<uint8_t>(f, f + 6));
}

TEST_F(SeawolfTest, StartUpReadsBackMirrorAndLensTypeAndSetsTheResolution) {
    board.setRegister(W::RegResolution, 2);
    ASSERT_EQ(1, init());
    EXPECT_EQ(ISensorController::InitSuccess, ctl->getSensorStatus());
    EXPECT_NE(std::string::npos, initOutput.find(std::string("____SeawolfSenseController::init,ModuleConfigure is(") +
                                                 kDetail + "," + kParams + ")"));
    EXPECT_NE(std::string::npos, initOutput.find("RS485(/dev/ttyS1) param is (9600,8,1,0)")) << initOutput;
    auto all = board.receivedFrames();
    ASSERT_GE(all.size(), 3u);
    EXPECT_EQ(swFrame(W::RegMirror | 0x80, 0, 0), all[0]) << framesText({all[0]});
    EXPECT_EQ(swFrame(W::RegLensType | 0x80, 0, 0), all[1]) << framesText({all[1]});
    EXPECT_EQ(swFrame(W::RegResolution, 1, W::Resolution1080), all[2]) << framesText({all[2]});
    EXPECT_EQ(W::Resolution1080, board.registerValue(W::RegResolution));
    int cached = -1;
    EXPECT_TRUE(ctl->cachedRegister(W::RegMirror, cached));
    EXPECT_EQ(0x40, cached);
    for (const char* t : {"Init getMirror Value failed", "Init getLensType Value failed", "setResolution error"})
        EXPECT_EQ(std::string::npos, initOutput.find(t)) << t;
    EXPECT_EQ(1, ctl->setSensorVideoSystem(W::SensorType, VideoResolution(1280, 720)));
    EXPECT_EQ(W::Resolution720, board.registerValue(W::RegResolution));
    EXPECT_EQ(1, ctl->setSensorVideoSystem(W::SensorType, VideoResolution(704, 576)));
    EXPECT_EQ(W::ResolutionD1, board.registerValue(W::RegResolution));
}

TEST_F(SeawolfTest, StartUpAgainstASilentBoardSaysWhatFailed) {
    board.setFaultProbability(SimSerialDevice::Silent, 1.0);
    ASSERT_EQ(1, init());
    for (const char* t : {"Init getMirror Value failed", "Init getLensType Value failed",
                          "recv head failed,nRecvLength=0", "command , data length or checksum error"})
        EXPECT_NE(std::string::npos, initOutput.find(t)) << t;
    int cached = -1;
    EXPECT_FALSE(ctl->cachedRegister(W::RegMirror, cached));
}

TEST_F(SeawolfTest, BadModuleRecordsFailStartUpWithNothingSent) {
    expectRefusedRecords({
        {"isInfrared=1", kParams, "get RS232DeviceName from detail failed"},
        {kDetail, "RS485=9600", "parse RS485 param failed,nRet=1"},
        {"RS485=/dev/ttyS9", kParams, "open uart (/dev/ttyS9) failed"},
    });
}

TEST_F(SeawolfTest, EveryIdReachesItsRegisterAndEveryRefusalSendsNothing) {
    ASSERT_EQ(1, init());
    expectEveryPlainRowReachesItsRegister();
    EXPECT_GE(expectEveryRefusal(), 60);
    // The commands are set-only: sent, never cached.
    int v = -1;
    EXPECT_EQ(1, ctl->setParameter(22, 1));
    EXPECT_EQ(0, ctl->getLastValueCache().getSensorValue(22, v));
}

TEST_F(SeawolfTest, MirrorKeepsTheBoardsOtherBits) {
    ASSERT_EQ(1, init());
    IspFrames f = sent([&] { return ctl->setParameterToSensor(W::IdMirror, 2); });
    ASSERT_EQ(1u, f.size());
    EXPECT_EQ(swFrame(W::RegMirror, 1, 0x42), f[0]) << framesText(f);
    EXPECT_EQ(0x42, board.registerValue(W::RegMirror));
    int v = -1;
    ASSERT_EQ(1, ctl->getMirrorValue(v));
    EXPECT_EQ(2, v);
}

TEST_F(SeawolfTest, AnswerChecksAndTheirTexts) {
    ASSERT_EQ(1, init());
    std::string o;
    // A 16-bit read: the value high byte first.
    board.setRegister(0x09, 0x1234);
    ASSERT_EQ(6, raw(0x89, 0, 0, o));
    EXPECT_EQ(swFrame(0x89, 2, 0x1234), lastAnswer);
    // A wrong checksum.
    board.injectFrameFault(SimIspBoard::WrongChecksum);
    EXPECT_EQ(IspBoardSenseController::ChecksumMismatch, raw(0x89, 0, 0, o));
    EXPECT_NE(std::string::npos, o.find("the checksum get from sensor is error!")) << o;
    // A data length above the capacity: nothing more read.
    board.injectFrameFault(SimIspBoard::TooLong);
    EXPECT_EQ(IspBoardSenseController::AnswerTooLong, raw(0x89, 0, 0, o));
    ctl->recvLeftData();
    // A short answer.
    board.injectFrameFault(SimIspBoard::ShortAnswer);
    EXPECT_EQ(IspBoardSenseController::ReadFailed, raw(0x89, 0, 0, o));
    EXPECT_NE(std::string::npos, o.find("recv data failed,nRecvLength=1,nRecvCount=3")) << o;
    // A refusal is a good frame with another command: the register path says
    // so, drains, tries once more, and gives up.
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->writeRegister(0x01, 101));
    o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("command , data length or checksum error")) << o;
    EXPECT_EQ(50, board.registerValue(0x01));
    // A checksum error on the register path is tried once more.
    board.injectFrameFault(SimIspBoard::WrongChecksum);
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, ctl->setParameterToSensor(1, 42));
    o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("the checksum get from sensor is error!")) << o;
    EXPECT_NE(std::string::npos, o.find("command , data length or checksum error")) << o;
    EXPECT_EQ(42, board.registerValue(0x01));
}

TEST_F(SeawolfTest, ThousandExchangesWithRandomFaultsNeverReportAWrongSuccess) {
    ASSERT_EQ(1, init());
    expectRandomFaultsNeverReportAWrongSuccess(87);
}
