// The transaction layer of the serial module controllers against the simulated
// VISCA block: reply forms, three attempts with a drain, every fault kind.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "doubles/FakeGPIO.h"
#include "doubles/FakeUART.h"
#include "doubles/ViscaRig.h"
#include "drivers/serial/SerialSenseController.h"
#include "platform/KSRuntimeError.h"
#include "platform/PlatformClock.h"

using namespace testutil;

namespace {

// The layer alone: a serial controller with nothing of a module's own.
class LayerController : public SerialSenseController {
public:
    explicit LayerController(ReplyForm form = MessageForm) : SerialSenseController(60, form) {}
    int getMirrorValue(int&) override { return 0; }
    int setSensorVideoSystem(int, const VideoResolution&) override { return 1; }
    int initController(int, const ModuleConfigure& cfg) override { return openSerialPort(cfg) ? 1 : 0; }
    bool open(const ModuleConfigure& cfg) { return openSerialPort(cfg); }
};

const unsigned char kGamma2[] = {0x81, 0x01, 0x04, 0x5B, 0x02, 0xFF};
const unsigned char kGammaInquiry[] = {0x81, 0x09, 0x04, 0x5B, 0xFF};

int send(LayerController& c, const unsigned char* p, int n) { return c.setParameterValue(reinterpret_cast<const char*>(p), n); }

class SerialTransactionTest : public ::testing::Test {
protected:
    ViscaBench bench;
    LayerController ctl;

    void SetUp() override {
        bench.module.setSeed(7);
        ctl.setOperator(bench.uart, bench.gpio);
        testing::internal::CaptureStdout();
        ASSERT_TRUE(ctl.open(ModuleConfigure(60, "RS485=/dev/ttyS1;isInfrared=0", "RS485=9600,8,1,0")));
        testing::internal::GetCapturedStdout();
    }
    // The owner stops the worker a test's init started before the controller goes.
    void TearDown() override { ctl.stopWorker(); }
    int writes() const { return bench.uartRaw->writeCalls(); }
};

size_t count(const std::string& hay, const std::string& needle) {
    size_t n = 0;
    for (size_t p = hay.find(needle); p != std::string::npos; p = hay.find(needle, p + 1)) ++n;
    return n;
}

}  // namespace

// ---- the shared operations ----

TEST(SerialOperations, CheckUARTRecvFindsThePatternAnywhere) {
    const unsigned char ack[] = {0x90, 0x41, 0xFF};
    const unsigned char stray[] = {0x12, 0x90, 0x90, 0x41, 0xFF};
    EXPECT_EQ(1, ISensorController::checkUARTRecv(ack, 3, stray, 5));
    const unsigned char cut[] = {0x12, 0x90, 0x41};
    EXPECT_EQ(0, ISensorController::checkUARTRecv(ack, 3, cut, 3));
    EXPECT_EQ(0, ISensorController::checkUARTRecv(ack, 3, stray, 0));
    EXPECT_EQ(0, ISensorController::checkUARTRecv(ack, 3, stray, -1));
    // An expected length of 1 matches on the first byte alone.
    const unsigned char first[] = {0x90};
    EXPECT_EQ(1, ISensorController::checkUARTRecv(first, 1, cut, 3));
    const unsigned char other[] = {0x91};
    EXPECT_EQ(0, ISensorController::checkUARTRecv(other, 1, cut, 3));
}

TEST(SerialOperations, ComputeSumWritesTheByteBeforeTheEnd) {
    unsigned char p[] = {0xA0, 0x01, 0x02, 0x03, 0x04, 0x77, 0xAF};
    ISensorController::computeSum(p, 7);
    EXPECT_EQ(0x0A, p[5]);
    EXPECT_EQ(0xA0, p[0]);
    EXPECT_EQ(0xAF, p[6]);
    unsigned char q[] = {0x00, 0xFF, 0xFF, 0x01, 0x00, 0x00};  // 0x1FF
    ISensorController::computeSum(q, 6);
    EXPECT_EQ(0xFF, q[4]);
    unsigned char s[] = {0x00, 0x55, 0x66};
    ISensorController::computeSum(s, 3);
    EXPECT_EQ(0x00, s[1]);
    EXPECT_EQ(0x66, s[2]);
}

TEST_F(SerialTransactionTest, RecodeArrayPrintsHexTextToTheErrorLog) {
    const unsigned char p[] = {0x81, 0x01, 0x04, 0xFF};
    ctl.init(60, ModuleConfigure(60, "RS485=/dev/ttyS1", "RS485=9600,8,1,0"), VideoResolution(1920, 1080));
    ctl.recodeArray(p, 4);
    ctl.recodeArray(p, 0);
    std::string log = bench.root.read("/mnt/mtd/log/SensorError.log");
    EXPECT_NE(std::string::npos, log.find("0x81,0x1,0x4,0xff"));
    EXPECT_EQ(1u, count(log, "0x81,"));
}

TEST_F(SerialTransactionTest, ClearUartBufferReadsChunksUntilAShortOne) {
    bench.module.setPacing(false);
    // Ten inquiries whose answers (4 bytes each) nobody reads fill the line.
    for (int i = 0; i < 10; ++i) bench.module.receive(kGammaInquiry, 5, PlatformClock::nowMs());
    bench.clock.advance(100);
    int before = bench.uartRaw->readCalls();
    testing::internal::CaptureStdout();
    ctl.clearUartBuffer();
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ("Clear UART buffer\n", out);
    EXPECT_EQ(3, bench.uartRaw->readCalls() - before);  // 40 bytes = 20 + 20, then 0
    char b[4];
    EXPECT_EQ(0, bench.uartRaw->read(0, b, 4, 1));
}

// ---- the message form ----

TEST_F(SerialTransactionTest, AcknowledgedCommandSucceedsAtOnce) {
    int64_t t0 = PlatformClock::nowMs();
    EXPECT_EQ(1, send(ctl, kGamma2, 6));
    EXPECT_EQ(1, writes());
    EXPECT_EQ(2, bench.module.nibbleValue(0x5B));
    // One frame of reply delay and the wire time of 6 + 3 bytes at 9600 baud.
    EXPECT_LT(PlatformClock::nowMs() - t0, 40);
}

TEST_F(SerialTransactionTest, CompletionBeforeTheAcknowledgementIsReadThrough) {
    // A zoom move's completion arrives while nothing reads; the next command's
    // reader skips it and takes the acknowledgement behind it.
    const unsigned char zoom[] = {0x81, 0x01, 0x04, 0x47, 0x00, 0x04, 0x00, 0x00, 0xFF};
    ASSERT_EQ(1, send(ctl, zoom, 9));
    bench.clock.advance(2000);
    ASSERT_LT(bench.module.timeOfByte(4, PlatformClock::nowMs()), 0);
    ASSERT_GE(bench.module.timeOfByte(3, PlatformClock::nowMs()), 0);  // 90 51 FF waiting
    EXPECT_EQ(1, send(ctl, kGamma2, 6));
    EXPECT_EQ(1, writes() - 1);
}

TEST_F(SerialTransactionTest, MessageReaderSkipsNoiseAndRefusesLongMessages) {
    // Noise, then an inquiry answer of 4 bytes.
    bench.module.injectOnce(SimViscaModule::Noise);
    char answer[4];
    EXPECT_EQ(1, ctl.getParameterValue(reinterpret_cast<const char*>(kGammaInquiry), 5, answer, 4));
    EXPECT_EQ(bytesOf({0x90, 0x50, 0x00, 0xFF}), std::vector<uint8_t>(answer, answer + 4));
    // The same answer is longer than a 3-byte capacity: a failed read.
    bench.module.receive(kGammaInquiry, 5, PlatformClock::nowMs());
    unsigned char buf[8];
    EXPECT_EQ(-1, ctl.readViscaMessage(buf, 3, 3));
    // Nothing at all: a failed read after the time-out.
    int64_t t0 = PlatformClock::nowMs();
    EXPECT_EQ(-1, ctl.readViscaMessage(buf, 3, 3));
    EXPECT_EQ(3 * IUARTController::TimeoutUnitMs, PlatformClock::nowMs() - t0);
}

TEST_F(SerialTransactionTest, ModuleThatNeverAnswersCostsThreeAttemptsWithDrains) {
    bench.module.setFaultProbability(SimViscaModule::Silent, 1.0);
    int64_t t0 = PlatformClock::nowMs();
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, send(ctl, kGamma2, 6));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(3, writes());
    EXPECT_EQ(3u, count(out, "Clear UART buffer"));
    EXPECT_NE(std::string::npos, out.find("===recv(1 times) @setParameterValue failed,send:"));
    EXPECT_NE(std::string::npos, out.find("===recv(3 times) @setParameterValue failed,send:"));
    EXPECT_NE(std::string::npos, out.find("===recv(-1):"));
    // Each attempt: the acknowledgement's time-out, then a drain of one time-out.
    EXPECT_EQ(3 * (3 + 1) * IUARTController::TimeoutUnitMs, PlatformClock::nowMs() - t0);
    EXPECT_EQ(-1, bench.module.nibbleValue(0x5B));
}

namespace {
struct FaultCase {
    SimViscaModule::Fault kind;
    bool failsAlways;     // with probability 1 the command never gets through
    bool firstAttemptOk;  // a one-shot of it still lets the first attempt succeed
};
}  // namespace

TEST_F(SerialTransactionTest, EachFaultKindFailsAfterThreeAttemptsOrSucceedsLater) {
    const FaultCase cases[] = {
        {SimViscaModule::DropReply, true, false},  {SimViscaModule::Noise, false, true},
        {SimViscaModule::SplitReply, false, true}, {SimViscaModule::LateReply, true, false},
        {SimViscaModule::CorruptByte, true, false}, {SimViscaModule::Silent, true, false},
        {SimViscaModule::BufferFull, true, false},
    };
    for (const FaultCase& fc : cases) {
        SCOPED_TRACE(SimViscaModule::faultName(fc.kind));
        // One-shot: a later attempt (or the first) gets through.
        bench.module.clearFaults();
        bench.clock.advance(3000);  // late replies of earlier rounds have come
        ctl.clearUartBuffer();
        int w0 = writes();
        bench.module.injectOnce(fc.kind);
        testing::internal::CaptureStdout();
        EXPECT_EQ(1, send(ctl, kGamma2, 6));
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(fc.firstAttemptOk ? 1 : 2, writes() - w0);

        // Probability 1: three attempts, a drain after each, result 0.
        bench.clock.advance(3000);
        ctl.clearUartBuffer();
        w0 = writes();
        bench.module.setFaultProbability(fc.kind, 1.0);
        const unsigned char gamma4[] = {0x81, 0x01, 0x04, 0x5B, 0x04, 0xFF};
        testing::internal::CaptureStdout();
        int r = send(ctl, gamma4, 6);
        std::string out = testing::internal::GetCapturedStdout();
        if (fc.failsAlways) {
            EXPECT_EQ(0, r);
            EXPECT_EQ(3, writes() - w0);
            EXPECT_EQ(3u, count(out, "Clear UART buffer"));
        } else {
            EXPECT_EQ(1, r);
            EXPECT_EQ(1, writes() - w0);
        }
    }
}

TEST_F(SerialTransactionTest, ShortWriteIsReportedAndRetried) {
    bench.uartRaw->limitNextWrite(2);
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, send(ctl, kGamma2, 6));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("===send(1 times) @setParameterValue failed,send(2):"));
    EXPECT_EQ(2, writes());
}

TEST_F(SerialTransactionTest, ReplyThatIsNotAnAcknowledgementIsAnError) {
    // Shutter in full auto: the module says "not executable" (4 bytes): a failed read.
    const unsigned char shutter[] = {0x81, 0x01, 0x04, 0x4A, 0x00, 0x00, 0x00, 0x05, 0xFF};
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, send(ctl, shutter, 9));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(3, writes());
    EXPECT_NE(std::string::npos, out.find("===recv(2 times) @setParameterValue failed"));
}

namespace {
// The layer on a scripted port that answers what the test puts into it.
struct Scripted {
    TempRoot root;
    VirtualClock clock;
    FakeUART* raw = new FakeUART();
    SafePointer<IUARTController> uart{raw};
    LayerController ctl;
    explicit Scripted(SerialSenseController::ReplyForm form) : ctl(form) {
        ctl.setOperator(uart, SafePointer<IGPIO>(new FakeGPIO()));
        testing::internal::CaptureStdout();
        bool opened = ctl.open(ModuleConfigure(60, "RS485=/dev/ttyS1", "RS485=9600,8,1,0"));
        testing::internal::GetCapturedStdout();
        EXPECT_TRUE(opened);
    }
};
}  // namespace

TEST(SerialTransactionScripted, ThreeByteReplyThatIsNoAckPrintsTheRecvError) {
    Scripted s(SerialSenseController::MessageForm);
    FakeUART* raw = s.raw;
    LayerController& ctl = s.ctl;
    testing::internal::CaptureStdout();
    raw->reply = std::string("\x90\x60\xFF", 3);
    EXPECT_EQ(0, send(ctl, kGamma2, 6));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("===setParameterValue(1 times) recv error,recv:0x90,0x60,0xff"));
}

TEST(SerialTransactionScripted, SearchFormFindsEitherPatternInThreeBytes) {
    Scripted s(SerialSenseController::SearchForm);
    FakeUART* raw = s.raw;
    LayerController& ctl = s.ctl;
    testing::internal::CaptureStdout();
    raw->reply = std::string("\x90\x51\xFF", 3);
    EXPECT_EQ(1, send(ctl, kGamma2, 6));
    raw->reply = std::string("\x90\x41\xFF", 3);
    EXPECT_EQ(1, send(ctl, kGamma2, 6));
    // Two bytes only: the wrong length, three attempts.
    raw->reply = std::string("\x90\x41", 2);
    size_t w0 = raw->written.size();
    EXPECT_EQ(0, send(ctl, kGamma2, 6));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(3u, raw->written.size() - w0);
    EXPECT_NE(std::string::npos, out.find("===recv(1 times) @setParameterValue failed,send:")) << out;
    EXPECT_NE(std::string::npos, out.find("===recv(2):")) << out;
}

TEST_F(SerialTransactionTest, InquiryCopiesExactlyTheAnswerLength) {
    char answer[7] = {0};
    EXPECT_EQ(1, ctl.getParameterValue(reinterpret_cast<const char*>(kGammaInquiry), 5, answer, 4));
    EXPECT_EQ(0x50, static_cast<unsigned char>(answer[1]));
    // Asking for 7 bytes of a 4-byte answer: three failed attempts.
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl.getParameterValue(reinterpret_cast<const char*>(kGammaInquiry), 5, answer, 7));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("===recv(3 times) @getParameterValue failed,send:"));
    bench.uartRaw->limitNextWrite(1);
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, ctl.getParameterValue(reinterpret_cast<const char*>(kGammaInquiry), 5, answer, 4));
    out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("===send(1 times) @getParameterValue failed,send(1):"));
}

TEST(SerialTransactionNull, NullPortThrowsWithTheMutexReleased) {
    TempRoot root;
    VirtualClock clock;
    LayerController ctl;
    try {
        send(ctl, kGamma2, 6);
        FAIL() << "no exception";
    } catch (const KSRuntimeError& e) {
        EXPECT_NE(std::string::npos, std::string(e.what()).find("Use NULL pointer ->"));
    }
    // The mutex is free again: a port handed in later works.
    FakeUART* raw = new FakeUART();
    ctl.setOperator(SafePointer<IUARTController>(raw), SafePointer<IGPIO>(new FakeGPIO()));
    raw->reply = std::string("\x90\x41\xFF", 3);
    EXPECT_EQ(1, send(ctl, kGamma2, 6));
}

TEST_F(SerialTransactionTest, LateReplyIsNotTakenForTheNextCommandsAcknowledgement) {
    for (SerialSenseController::ReplyForm form : {SerialSenseController::MessageForm, SerialSenseController::SearchForm}) {
        SCOPED_TRACE(form == SerialSenseController::MessageForm ? "message form" : "search form");
        LayerController c(form);
        c.setOperator(bench.uart, bench.gpio);
        testing::internal::CaptureStdout();
        ASSERT_TRUE(c.open(ModuleConfigure(60, "RS485=/dev/ttyS1;isInfrared=0", "RS485=9600,8,1,0")));
        // The first attempt's acknowledgement comes after its time-out: the second
        // attempt gets through, and the late one arrives while the line is idle.
        bench.module.injectOnce(SimViscaModule::LateReply);
        EXPECT_EQ(1, send(c, kGamma2, 6));
        bench.clock.advance(3000);
        // The module is gone now: the late acknowledgement still waiting in the
        // port is no reply to the next command.
        bench.module.setFaultProbability(SimViscaModule::Silent, 1.0);
        int w0 = writes();
        const unsigned char gamma3[] = {0x81, 0x01, 0x04, 0x5B, 0x03, 0xFF};
        EXPECT_EQ(0, send(c, gamma3, 6));
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(3, writes() - w0);
        bench.module.clearFaults();
        c.stopWorker();
    }
}

TEST(SerialTransactionScripted, InputWaitingBeforeTheCommandIsNoReplyToIt) {
    Scripted s(SerialSenseController::SearchForm);
    s.raw->toRead = std::string("\x90\x41\xFF", 3);  // a late acknowledgement of something earlier
    s.raw->reply = std::string("\x90\x60\x02\xFF", 4);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, send(s.ctl, kGamma2, 6));
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(3u, s.raw->written.size());
    s.raw->reply = std::string("\x90\x41\xFF", 3);
    EXPECT_EQ(1, send(s.ctl, kGamma2, 6));
}

TEST_F(SerialTransactionTest, ChatteringLineEndsTheReadInsteadOfHanging) {
    // A module that answers garbage only (every reply corrupted and preceded by noise).
    bench.module.setFaultProbability(SimViscaModule::Noise, 1.0);
    bench.module.setFaultProbability(SimViscaModule::CorruptByte, 1.0);
    bench.module.setFaultProbability(SimViscaModule::LateReply, 1.0);
    int64_t t0 = PlatformClock::nowMs();
    testing::internal::CaptureStdout();
    send(ctl, kGamma2, 6);
    testing::internal::GetCapturedStdout();
    EXPECT_LE(PlatformClock::nowMs() - t0, 5000);
    EXPECT_EQ(3, writes());
}
