// The ISP-board frame exchange against a scripted serial port: checksums, the
// four negative codes of baseSendCommand with their texts, the one retry of
// sendCommand, the 8- and 16-bit answers, the drain, and bad frames.
#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "doubles/FakeGPIO.h"
#include "doubles/FakeUART.h"
#include "drivers/ispboard/IT1SenseController.h"
#include "drivers/ispboard/IspBoardFrame.h"
#include "platform/GlobalEnv.h"
#include "platform/SafePointer.h"

namespace {

// A serial port whose answers are scripted per read call, recording every call:
// each read takes the next scripted answer (what does not fit is lost).
class ScriptedUART : public FakeUART {
public:
    std::deque<std::string> answers;  // none left: the read gets nothing
    std::vector<int> readCapacities;
    int readCalls = 0;
    int read(int, char* buffer, int capacity, int) override {
        readCapacities.push_back(capacity);
        ++readCalls;
        if (answers.empty()) return 0;
        std::string a = answers.front();
        answers.pop_front();
        int n = static_cast<int>(a.size()) < capacity ? static_cast<int>(a.size()) : capacity;
        for (int i = 0; i < n; ++i) buffer[i] = a[static_cast<size_t>(i)];
        return n;
    }
};

std::string bytes(std::initializer_list<int> v) {
    std::string s;
    for (int b : v) s.push_back(static_cast<char>(b));
    return s;
}

// An answer with its count byte and checksum filled in.
std::string answerOf(std::initializer_list<int> payload) {
    std::string s(1, static_cast<char>(payload.size() + 2));
    for (int b : payload) s.push_back(static_cast<char>(b));
    unsigned int sum = 0;
    for (char c : s) sum += static_cast<unsigned char>(c);
    s.push_back(static_cast<char>(sum & 0xFF));
    return s;
}

class IspBoardExchangeTest : public ::testing::Test {
protected:
    ScriptedUART* port = new ScriptedUART();
    SafePointer<IUARTController> uart{port};
    SafePointer<IGPIO> gpio{new FakeGPIO()};
    SafePointer<IT1SenseController> ctl{new IT1SenseController()};

    void SetUp() override { ctl->setOperator(uart, gpio); }
    void TearDown() override {
        GlobalEnv::getInstance()->setPrintFlag(false);
        ctl->stopWorker();
    }
    // Scripts an answer as the two reads of baseSendCommand: count byte, then the rest.
    void script(const std::string& answer) {
        port->answers.push_back(answer.substr(0, 1));
        if (answer.size() > 1) port->answers.push_back(answer.substr(1));
    }
    int exchange(std::vector<unsigned char> frame, unsigned char* answer, int capacity, std::string& out) {
        testing::internal::CaptureStdout();
        int r = ctl->baseSendCommand(frame.data(), static_cast<int>(frame.size()), answer, capacity);
        out = testing::internal::GetCapturedStdout();
        return r;
    }
};

}  // namespace

TEST_F(IspBoardExchangeTest, ChecksumIsTheSumOfTheBytesBeforeIt) {
    unsigned char f[6] = {0xAA, 0x01, 0x00, 0x10, 0x80, 0x00};
    IT1SenseController::computeCheckSum(f, 6);
    EXPECT_EQ((0xAA + 0x01 + 0x10 + 0x80) & 0xFF, f[5]);
    unsigned char one[1] = {0x37};
    IT1SenseController::computeCheckSum(one, 1);
    EXPECT_EQ(0, one[0]);
    unsigned char wrap[3] = {0xFF, 0xFF, 0x12};
    IT1SenseController::computeCheckSum(wrap, 3);
    EXPECT_EQ(0xFE, wrap[2]);
    IT1SenseController::computeCheckSum(nullptr, 4);  // nothing to do, no crash
    IT1SenseController::computeCheckSum(one, 0);
    EXPECT_EQ(0, one[0]);
}

TEST_F(IspBoardExchangeTest, SixteenBitAnswerCarriesLowByteFirst) {
    script(answerOf({0x12, 0x00, 0x32, 0x34, 0x12}));  // 07 12 00 32 34 12 cs
    int value = 0;
    unsigned char frame[5];
    int n = IspBoardFrame::read(0x0032, 16, frame);
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, ctl->getParameterValue(reinterpret_cast<const char*>(frame), n, value));
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(0x1234, value);
    ASSERT_EQ(1u, port->written.size());
    EXPECT_EQ(bytes({0xAA, 0x12, 0x00, 0x32, (0xAA + 0x12 + 0x32) & 0xFF}), port->written[0]);
}

TEST_F(IspBoardExchangeTest, EightBitAnswer) {
    script(answerOf({0x11, 0x00, 0x13, 0x0B}));
    int value = 0;
    unsigned char frame[5];
    int n = IspBoardFrame::read(0x0013, 8, frame);
    EXPECT_EQ(1, ctl->getParameterValue(reinterpret_cast<const char*>(frame), n, value));
    EXPECT_EQ(11, value);
}

TEST_F(IspBoardExchangeTest, AnswerLongerThanCapacityGivesMinusFourWithoutReadingFurther) {
    std::string eleven = answerOf({1, 2, 3, 4, 5, 6, 7, 8, 9});
    ASSERT_EQ(11u, eleven.size());
    script(eleven);
    unsigned char answer[10] = {0};
    std::string out;
    GlobalEnv::getInstance()->setPrintFlag(true);
    EXPECT_EQ(-4, exchange({0xAA, 0x11, 0x00, 0x10, 0x00}, answer, 10, out));
    EXPECT_EQ(1, port->readCalls);  // the count byte only
    EXPECT_EQ(1u, port->answers.size());  // the rest is still on the line
    port->answers.clear();
    EXPECT_NE(std::string::npos, out.find("recv dataCount failed,dataCount=11,nResult=0x0b")) << out;
    for (unsigned char b : answer) EXPECT_EQ(0, b);
    // Without the print flag the same code comes silently.
    GlobalEnv::getInstance()->setPrintFlag(false);
    script(eleven);
    EXPECT_EQ(-4, exchange({0xAA, 0x11, 0x00, 0x10, 0x00}, answer, 10, out));
    EXPECT_EQ(std::string::npos, out.find("recv dataCount failed")) << out;
    port->answers.clear();
    // Exactly the capacity is fine.
    script(answerOf({1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(10, exchange({0xAA, 0x11, 0x00, 0x10, 0x00}, answer, 10, out));
}

TEST_F(IspBoardExchangeTest, ShortWriteGivesMinusOne) {
    port->writeLimit = 3;
    unsigned char answer[10];
    std::string out;
    EXPECT_EQ(-1, exchange({0xAA, 0x11, 0x00, 0x10, 0x00}, answer, 10, out));
    EXPECT_NE(std::string::npos, out.find("p_pszSendCommandLen = 5,nSendLength=3")) << out;
    EXPECT_EQ(0, port->readCalls);
}

TEST_F(IspBoardExchangeTest, FailedAndShortReadsGiveMinusTwo) {
    unsigned char answer[10];
    std::string out;
    EXPECT_EQ(-2, exchange({0xAA, 0x11, 0x00, 0x10, 0x00}, answer, 10, out));  // silence
    EXPECT_NE(std::string::npos, out.find("recv dataCount failed,nRecvLength=0")) << out;
    port->answers.push_back(bytes({6}));
    port->answers.push_back(bytes({0x11, 0x00}));  // 2 of 5
    EXPECT_EQ(-2, exchange({0xAA, 0x11, 0x00, 0x10, 0x00}, answer, 10, out));
    EXPECT_NE(std::string::npos, out.find("recv data failed,nRecvLength=2,nRecvCount=5")) << out;
    // A count of 0 cannot be an answer.
    port->answers.push_back(bytes({0}));
    EXPECT_EQ(-2, exchange({0xAA, 0x11, 0x00, 0x10, 0x00}, answer, 10, out));
}

TEST_F(IspBoardExchangeTest, ChecksumMismatchGivesMinusThree) {
    std::string a = answerOf({0x11, 0x00, 0x10, 0x32});
    a.back() = static_cast<char>(a.back() ^ 0x01);
    script(a);
    unsigned char answer[10];
    std::string out;
    EXPECT_EQ(-3, exchange({0xAA, 0x11, 0x00, 0x10, 0x00}, answer, 10, out));
    char expect[80];
    std::snprintf(expect, sizeof(expect), "checkSum error,nExpectedCheckSum = 0x%02x,actualCheckSum=0x%02x",
                  static_cast<unsigned char>(a.back() ^ 0x01), static_cast<unsigned char>(a.back()));
    EXPECT_NE(std::string::npos, out.find(expect)) << out;
    // A one-byte answer's checksum is 0, so a count byte of 1 never matches itself.
    port->answers.push_back(bytes({1}));
    EXPECT_EQ(-3, exchange({0xAA, 0x11, 0x00, 0x10, 0x00}, answer, 10, out));
}

TEST_F(IspBoardExchangeTest, SendCommandRetriesOnceAfterAChecksumMismatch) {
    std::string good = answerOf({0x11, 0x00, 0x10, 0x32});
    std::string bad = good;
    bad.back() = static_cast<char>(bad.back() + 1);
    script(bad);
    script(good);
    unsigned char frame[5] = {0xAA, 0x11, 0x00, 0x10, 0x00};
    unsigned char answer[10];
    testing::internal::CaptureStdout();
    EXPECT_EQ(6, ctl->sendCommand(frame, 5, answer, 10));
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(2u, port->written.size());
    EXPECT_EQ(0x32, answer[4]);
}

TEST_F(IspBoardExchangeTest, SendCommandGivesUpAfterTheSecondAttemptAndSaysSoUnderThePrintFlag) {
    unsigned char frame[5] = {0xAA, 0x11, 0x00, 0x10, 0x00};
    unsigned char answer[10];
    testing::internal::CaptureStdout();
    EXPECT_EQ(-2, ctl->sendCommand(frame, 5, answer, 10));
    std::string quiet = testing::internal::GetCapturedStdout();
    EXPECT_EQ(2u, port->written.size());
    EXPECT_EQ(std::string::npos, quiet.find("second sendCommand failed"));
    GlobalEnv::getInstance()->setPrintFlag(true);
    std::string a = answerOf({0x11, 0x00, 0x10, 0x32});
    a.back() = static_cast<char>(a.back() + 1);
    script(a);
    script(a);
    testing::internal::CaptureStdout();
    EXPECT_EQ(-3, ctl->sendCommand(frame, 5, answer, 10));
    std::string loud = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, loud.find("second sendCommand failed,nCount=-3")) << loud;
    EXPECT_EQ(4u, port->written.size());
}

TEST_F(IspBoardExchangeTest, WriteIsAcknowledgedByFiveBytesThatEchoTheFrame) {
    unsigned char frame[6];
    int n = IspBoardFrame::write(0x0010, 8, 70, frame);
    script(answerOf({0x01, 0x00, 0x10}));
    EXPECT_EQ(1, ctl->setParameterValue(reinterpret_cast<const char*>(frame), n));
    // A 5-byte answer for another register is no acknowledgement: printed, drained, 0.
    script(answerOf({0x01, 0x00, 0x11}));
    script(answerOf({0x01, 0x00, 0x11}));
    port->answers.push_back(bytes({0x55}));  // left on the line, taken by the drain
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameterValue(reinterpret_cast<const char*>(frame), n));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("setParameterValue error,nRet = 5,\n\tsendCommand is:0xaa\t0x01\t0x00\t0x10"))
        << out;
    EXPECT_NE(std::string::npos, out.find("\trecvCommand:0x05\t0x01\t0x00\t0x11")) << out;
    // The drain read single bytes until the line was quiet.
    EXPECT_EQ(1, port->readCapacities.back());
    EXPECT_TRUE(port->answers.empty());
}

TEST_F(IspBoardExchangeTest, ReadFailurePrintsTheFrameAndDrains) {
    unsigned char frame[5];
    int n = IspBoardFrame::read(0x0010, 8, frame);
    script(answerOf({0x01, 0x00, 0x10}));  // an acknowledgement is no value
    script(answerOf({0x01, 0x00, 0x10}));
    int value = 1234;
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->getParameterValue(reinterpret_cast<const char*>(frame), n, value));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("getParameterValue error,nRet = 5,command is:0xaa\t0x11\t0x00\t0x10")) << out;
    EXPECT_EQ(1234, value);
}

TEST_F(IspBoardExchangeTest, BadFramesOfLengthZeroAndTwoHundredFiftyFive) {
    unsigned char answer[10];
    std::string out;
    EXPECT_EQ(-1, exchange({}, answer, 10, out));
    EXPECT_TRUE(port->written.empty());
    EXPECT_EQ(0, ctl->setParameterValue(nullptr, 0));
    EXPECT_EQ(0, ctl->setParameterValue("x", -5));
    EXPECT_TRUE(port->written.empty());
    std::vector<unsigned char> big(255, 0x5A);
    EXPECT_EQ(-2, exchange(big, answer, 10, out));  // written whole, nothing answers
    ASSERT_EQ(1u, port->written.size());
    EXPECT_EQ(255u, port->written[0].size());
    // A count of 255 with a buffer of 255 reads 254 more.
    std::vector<unsigned char> huge(255);
    std::string a(1, static_cast<char>(255));
    a += std::string(253, '\x01');
    unsigned int sum = 255 + 253;
    a.push_back(static_cast<char>(sum & 0xFF));
    script(a);
    EXPECT_EQ(255, exchange({0xAA, 0x11, 0x00, 0x10, 0x00}, huge.data(), 255, out));
    EXPECT_EQ(255, huge[0]);
}

TEST_F(IspBoardExchangeTest, RegisterBytes) {
    EXPECT_EQ(0x1234, IT1SenseController::assembleData(0x12, 0x34));
    EXPECT_EQ(0xFF00, IT1SenseController::assembleData(0xFF, 0x00));
    EXPECT_EQ(0x41, IT1SenseController::modifyAppointedBit(0x40, 0, 1));
    EXPECT_EQ(0x40, IT1SenseController::modifyAppointedBit(0x41, 0, 0));
    EXPECT_EQ(0xC0, IT1SenseController::modifyAppointedBit(0x40, 7, 5));
    EXPECT_EQ(0x40, IT1SenseController::modifyAppointedBit(0x40, 8, 1));  // no such bit: unchanged
    EXPECT_EQ(0xA5, IT1SenseController::modifyHighFourBits(0x35, 0x0A));
    EXPECT_EQ(0xF5, IT1SenseController::modifyHighFourBits(0x35, 0x1F));  // the low 4 bits of the value
    EXPECT_EQ(0x3C, IT1SenseController::modifyLowFourBits(0x35, 0x0C));
    EXPECT_EQ(0x30, IT1SenseController::modifyLowFourBits(0x35, 0x10));
}
