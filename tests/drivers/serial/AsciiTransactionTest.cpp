// The ASCII register group's shared machinery (AsciiSenseController) against
// the simulated ASCII register module: text helpers, the echo and answer
// checks, three attempts with a drain between them, every fault kind, and
// random faults whose reported successes must match the module's registers.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "doubles/AsciiRig.h"
#include "drivers/serial/AsciiSenseController.h"

using namespace testutil;

namespace {

// A one-byte register at 0110 (0-100) and a two-byte one at 0220 (0-1000).
const AsciiParameter kRows[] = {
    {1, "Level", "p_nLevel", 0, 100, 0x0110, 2, nullptr, true, 50},
    {2, "Limit", "p_nLimit", 0, 1000, 0x0220, 4, nullptr, true, 100},
};

// The engine alone: a module of two registers and nothing of its own.
class LayerController : public AsciiSenseController {
public:
    LayerController() : AsciiSenseController(60, "LayerController", kRows, 2) {}
    int initController(int, const ModuleConfigure& cfg) override { return openModule(cfg) ? 1 : 0; }
    bool open(const ModuleConfigure& cfg) { return openSerialPort(cfg); }
};

class AsciiTransactionTest : public ::testing::Test {
protected:
    AsciiBench bench;
    LayerController ctl;

    void SetUp() override {
        SimAsciiModule::Profile p;
        p.name = "layer";
        SimAsciiModule::addTable(p, kRows, 2);
        bench.module.setProfile(p);
        bench.module.setSeed(5);
        ctl.setOperator(bench.uart, bench.gpio);
        testing::internal::CaptureStdout();
        ASSERT_TRUE(ctl.open(ModuleConfigure(60, "RS485=/dev/ttyS1;isInfrared=0", "RS485=9600,8,1,0")));
        testing::internal::GetCapturedStdout();
    }
    void TearDown() override { ctl.stopWorker(); }
    int writes() const { return bench.uartRaw->writeCalls(); }
};

}  // namespace

// ---- text helpers ----

TEST(AsciiText, AssembleStringPadsTruncatesAndNeverOverflows) {
    EXPECT_EQ(":W011005", AsciiSenseController::assembleString(":W0110", 5, 2));
    EXPECT_EQ(":W0110FF", AsciiSenseController::assembleString(":W0110", 255, 2));
    EXPECT_EQ(":w022003E8", AsciiSenseController::assembleString(":w0220", 1000, 4));
    EXPECT_EQ(":W01101FF", AsciiSenseController::assembleString(":W0110", 0x1FF, 2));  // a wider value keeps its digits
    EXPECT_EQ(":W0", AsciiSenseController::assembleString(":W", 0, 0));
    EXPECT_EQ("FFFFFFFF", AsciiSenseController::assembleString(nullptr, -1, 2));
    EXPECT_EQ("00000001", AsciiSenseController::assembleString("", 1, 99));  // width at most 8
    EXPECT_EQ("7", AsciiSenseController::assembleString("", 7, -3));
    // A prefix longer than a command is cut: the text never exceeds 31 characters.
    std::string longPrefix(100, 'x');
    std::string s = AsciiSenseController::assembleString(longPrefix.c_str(), 0xAB, 2);
    EXPECT_EQ(std::string(31, 'x'), s);
}

TEST(AsciiText, AscToHexTakesHexDigitsOnly) {
    int v = -1;
    EXPECT_EQ(1, AsciiSenseController::ascToHex("00", 2, v));
    EXPECT_EQ(0, v);
    EXPECT_EQ(1, AsciiSenseController::ascToHex("FF", 2, v));
    EXPECT_EQ(255, v);
    EXPECT_EQ(1, AsciiSenseController::ascToHex("fF", 2, v));
    EXPECT_EQ(255, v);
    EXPECT_EQ(1, AsciiSenseController::ascToHex("03E8", 4, v));
    EXPECT_EQ(1000, v);
    EXPECT_EQ(1, AsciiSenseController::ascToHex("7FFFFFFF", 8, v));
    EXPECT_EQ(0x7FFFFFFF, v);
    v = 42;
    for (const char* bad : {"G0", "0G", " 1", "1:", "-1", "0x"}) {
        EXPECT_EQ(0, AsciiSenseController::ascToHex(bad, 2, v)) << bad;
        EXPECT_EQ(42, v);
    }
    EXPECT_EQ(0, AsciiSenseController::ascToHex("1", 0, v));
    EXPECT_EQ(0, AsciiSenseController::ascToHex("123456789", 9, v));
    EXPECT_EQ(0, AsciiSenseController::ascToHex(nullptr, 2, v));
    EXPECT_EQ(42, v);
}

TEST(AsciiText, ReadAnswerCheck) {
    const unsigned char good[] = ":R01102A";
    int v = -1;
    EXPECT_EQ(AsciiSenseController::AnswerOk, AsciiSenseController::checkReadAnswer(":R0110", good, 8, 8, v));
    EXPECT_EQ(0x2A, v);
    v = -1;
    EXPECT_EQ(AsciiSenseController::AnswerLength, AsciiSenseController::checkReadAnswer(":R0110", good, 7, 8, v));
    EXPECT_EQ(AsciiSenseController::AnswerMismatch, AsciiSenseController::checkReadAnswer(":R0111", good, 8, 8, v));
    const unsigned char nonHex[] = ":R0110Z1";
    EXPECT_EQ(AsciiSenseController::AnswerMismatch, AsciiSenseController::checkReadAnswer(":R0110", nonHex, 8, 8, v));
    EXPECT_EQ(-1, v);
    const unsigned char word[] = ":r022003E8";
    EXPECT_EQ(AsciiSenseController::AnswerOk, AsciiSenseController::checkReadAnswer(":r02200000", word, 10, 10, v));
    EXPECT_EQ(1000, v);
    // Expected lengths without room for a value, or with more than 8 digits, are refused.
    EXPECT_EQ(AsciiSenseController::AnswerLength, AsciiSenseController::checkReadAnswer(":R0110", good, 6, 6, v));
    EXPECT_EQ(AsciiSenseController::AnswerLength, AsciiSenseController::checkReadAnswer(":R0110", good, 15, 15, v));
}

// ---- transactions ----

TEST_F(AsciiTransactionTest, AnEchoedWriteChangesTheRegister) {
    EXPECT_EQ(1, ctl.sendData(":W01102A"));
    EXPECT_EQ(0x2A, bench.module.registerValue(0x0110));
    EXPECT_EQ(1, writes());
    EXPECT_EQ(1, ctl.sendData(":w022003e8"));
    EXPECT_EQ(1000, bench.module.registerValue(0x0220));
    int v = -1;
    EXPECT_EQ(1, ctl.recvData(":R0110", 8, v));
    EXPECT_EQ(0x2A, v);
    EXPECT_EQ(1, ctl.recvData(":r02200000", 10, v));
    EXPECT_EQ(1000, v);
}

TEST_F(AsciiTransactionTest, ARefusedCommandCostsThreeAttemptsWithDrains) {
    // The module ignores data its register does not accept: no echo.
    std::string out;
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl.sendData(":W011065"); }));  // 0x65 = 101 > 100
    EXPECT_EQ(50, bench.module.registerValue(0x0110));
    EXPECT_EQ(3, writes());
    for (int n = 1; n <= 3; ++n)
        EXPECT_NE(std::string::npos, out.find("===recv(" + std::to_string(n) + " times) @sendData failed,send:")) << out;
    EXPECT_NE(std::string::npos, out.find("0x3a,0x57,0x30,0x31,0x31,0x30,0x36,0x35"));
    EXPECT_EQ(3u, countOf(out, "Clear UART buffer"));
    // A malformed command and a register the module lacks are ignored the same way.
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl.sendData(":X0110"); }));
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl.sendData(":W999901"); }));
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl.sendData(":w011000ff"); }));  // wrong width
    EXPECT_EQ(50, bench.module.registerValue(0x0110));
    int v = 7;
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl.recvData(":R9999", 8, v); }));
    EXPECT_EQ(7, v);
    EXPECT_NE(std::string::npos, out.find("===recv(3 times) @recvData failed,send:"));
}

TEST_F(AsciiTransactionTest, EachFaultKind) {
    std::string out;
    struct Case {
        SimSerialDevice::Fault fault;
        int writes;         // attempts the write takes
        const char* text;   // the first attempt's failure, or nullptr
    };
    const std::vector<Case> cases = {
        {SimSerialDevice::DropReply, 2, "===recv(1 times) @sendData failed,send:"},
        {SimSerialDevice::Noise, 2, "===check(1 times) @sendData failed,send:"},
        {SimSerialDevice::SplitReply, 1, nullptr},
        {SimSerialDevice::LateReply, 2, "===recv(1 times) @sendData failed,send:"},
        {SimSerialDevice::CorruptByte, 2, "===check(1 times) @sendData failed,send:"},
        {SimSerialDevice::Silent, 2, "===recv(1 times) @sendData failed,send:"},
        {SimSerialDevice::BufferFull, 2, "===recv(1 times) @sendData failed,send:"},
    };
    int value = 1;
    for (const Case& c : cases) {
        SCOPED_TRACE(SimSerialDevice::faultName(c.fault));
        bench.clock.advance(3000);  // a late reply of the case before has come and gone
        ctl.clearUartBuffer();
        const int before = writes();
        bench.module.injectOnce(c.fault);
        std::string text = AsciiSenseController::assembleString(":W0110", ++value, 2);
        EXPECT_EQ(1, capturedOutput(out, [&] { return ctl.sendData(text.c_str()); }));
        EXPECT_EQ(value, bench.module.registerValue(0x0110));
        EXPECT_EQ(c.writes, writes() - before) << out;
        if (c.text != nullptr) {
            EXPECT_NE(std::string::npos, out.find(c.text)) << out;
        } else {
            EXPECT_EQ(std::string::npos, out.find("failed")) << out;
        }
    }
    // A silent module: three attempts, then failure, the register untouched.
    bench.module.setFaultProbability(SimSerialDevice::Silent, 1.0);
    const int before = writes();
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl.sendData(":W011001"); }));
    EXPECT_EQ(3, writes() - before);
    EXPECT_EQ(value, bench.module.registerValue(0x0110));
    EXPECT_NE(std::string::npos, out.find("===recv(3 times) @sendData failed,send:"));
}

TEST_F(AsciiTransactionTest, AShortWriteIsRetried) {
    std::string out;
    bench.uartRaw->limitNextWrite(3);
    EXPECT_EQ(1, capturedOutput(out, [&] { return ctl.sendData(":W011010"); }));
    EXPECT_NE(std::string::npos, out.find("===send(1 times) @sendData failed,send(3):")) << out;
    EXPECT_EQ(0x10, bench.module.registerValue(0x0110));
    EXPECT_EQ(2, writes());
}

TEST_F(AsciiTransactionTest, ACorruptReadAnswerIsRefusedAndRead) {
    std::string out;
    int v = -1;
    bench.module.setRegister(0x0220, 0x0123);
    bench.module.injectOnce(SimSerialDevice::CorruptByte);
    EXPECT_EQ(1, capturedOutput(out, [&] { return ctl.recvData(":r02200000", 10, v); }));
    EXPECT_EQ(0x0123, v);
    EXPECT_NE(std::string::npos, out.find("===check(1 times) @recvData failed,send:")) << out;
}

TEST_F(AsciiTransactionTest, RandomFaultsNeverReportAFalseSuccess) {
    for (int k = 0; k < SimSerialDevice::FaultCount; ++k)
        bench.module.setFaultProbability(static_cast<SimSerialDevice::Fault>(k), 0.04);
    std::mt19937 rng(2026);
    int successes = 0, failures = 0;
    std::string mismatch;
    testing::internal::CaptureStdout();
    for (int i = 0; i < 1000 && mismatch.empty(); ++i) {
        const bool word = (rng() & 1) != 0;
        const int value = static_cast<int>(rng() % (word ? 1001 : 101));
        const AsciiParameter* row = ctl.findRow(word ? 2 : 1);
        const int before = bench.module.registerValue(row->address);
        char prefix[8];
        row->writePrefix(prefix);
        std::string text = AsciiSenseController::assembleString(prefix, value, row->width);
        const int result = ctl.sendData(text.c_str());
        const int now = bench.module.registerValue(row->address);
        result ? ++successes : ++failures;
        // A success is in the register; a failed write may still have been carried out (its echo lost).
        if ((result && now != value) || (!result && now != before && now != value))
            mismatch = std::to_string(i) + " " + text + " result " + std::to_string(result) + " register " +
                       std::to_string(now);
        int back = -1;
        if (i % 10 == 0 && ctl.recvData(word ? ":r02200000" : ":R0110", word ? 10 : 8, back) && back != now)
            mismatch = std::to_string(i) + " read " + std::to_string(back) + " register " + std::to_string(now);
    }
    testing::internal::GetCapturedStdout();
    EXPECT_EQ("", mismatch);
    EXPECT_GT(successes, 900);
    EXPECT_GT(failures + successes, 999);
}
