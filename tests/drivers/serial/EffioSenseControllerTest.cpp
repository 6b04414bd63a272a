// The Effio controller against the simulated camera processor on the virtual
// clock: the frame helpers on their boundaries, the registered ids, the start
// line and start-up exchange, every id of the table (its field in the store
// changes, refusals send nothing), each status error text, the length and
// checksum checks, every fault kind, and random faults whose reported
// successes must match the processor's store.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "TestRoot.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "doubles/CapturedOutput.h"
#include "doubles/ClockPump.h"
#include "doubles/FakeGPIO.h"
#include "drivers/serial/EffioSenseController.h"
#include "effio/SimEffioProcessor.h"
#include "line/SimSerialUART.h"
#include "platform/SafePointer.h"
#include "storage/IdManager.h"
#include "storage/SensorCache.h"

using namespace testutil;

namespace {

const char* kDetail = "RS485=/dev/ttyS1;isInfrared=0";
const char* kParams = "RS485=9600,8,1,0";

typedef std::vector<uint8_t> Bytes;

class EffioTest : public ::testing::Test {
protected:
    TempRoot root;
    VirtualClock clock{12, 0, 0};
    SimEffioProcessor processor;
    SimSerialUART* uartRaw = nullptr;
    SafePointer<IUARTController> uart;
    SafePointer<IGPIO> gpio;
    SafePointer<EffioSenseController> ctl;
    std::string initOutput;

    void SetUp() override {
        processor.setSeed(3);
        uartRaw = new SimSerialUART(processor, "/dev/ttyS1");
        uart = SafePointer<IUARTController>(uartRaw);
        gpio = SafePointer<IGPIO>(new FakeGPIO());
    }
    void TearDown() override { reset(); }
    void reset() {
        if (!ctl.isNull()) ctl->stopWorker();
        ctl.reset();
    }
    EffioSenseController& make() {
        ctl.reset(new EffioSenseController());
        ctl->setOperator(uart, gpio);
        return *ctl;
    }
    int init(const std::string& detail = kDetail, const std::string& params = kParams) {
        if (ctl.isNull()) make();
        EffioSenseController* c = ctl.get();
        ModuleConfigure cfg(EffioSenseController::SensorType, detail, params);
        testing::internal::CaptureStdout();
        int r = runPumped([&] { return c->init(EffioSenseController::SensorType, cfg, VideoResolution(1920, 1080)); });
        c->stopWorker();
        clock.advance(2000);
        if (c->getUARTPort() >= 0) c->clearUartBuffer();
        initOutput = testing::internal::GetCapturedStdout();
        return r;
    }
    // The value of a row's field in the processor's store.
    int fieldOf(const EffioParameter& row) const {
        int b0 = processor.byteAt(row.category, row.byteNo);
        if (row.bitCount == 16) return b0 << 8 | processor.byteAt(row.category, row.byteNo + 1);
        if (row.bitCount == 8) return b0;
        return (b0 >> row.startBit) & ((1 << row.bitCount) - 1);
    }
};

}  // namespace

// ---- frame helpers ----

TEST(EffioFrame, ChecksumOnBoundaries) {
    EXPECT_EQ(0, EffioSenseController::checksum(nullptr, 0));
    const unsigned char zero[] = {0x00};
    EXPECT_EQ(0x00, EffioSenseController::checksum(zero, 1));
    const unsigned char ff[] = {0xFF};
    EXPECT_EQ(0xFF, EffioSenseController::checksum(ff, 1));
    const unsigned char carry[] = {0xFF, 0x01};
    EXPECT_EQ(0x00, EffioSenseController::checksum(carry, 2));
    const unsigned char twoCarries[] = {0xFF, 0xFF, 0xFF};
    EXPECT_EQ(0xFD, EffioSenseController::checksum(twoCarries, 3));
}

TEST(EffioFrame, AssembleData) {
    unsigned char f[EffioSenseController::FrameCapacity];
    const unsigned char d[] = {0x12, 0xFF};
    ASSERT_EQ(8, EffioSenseController::assembleData(f, sizeof(f), 0x01, 3, 3, d, 2));
    EXPECT_EQ((Bytes{0xA5, 0x01, 0x03, 0x03, 0x02, 0x12, 0xFF, 0xBF}), Bytes(f, f + 8));  // 0x1BF: the carry is dropped
    ASSERT_EQ(6, EffioSenseController::assembleData(f, sizeof(f), 0x02, 0, 0, nullptr, 2));
    EXPECT_EQ((Bytes{0xA5, 0x02, 0x00, 0x00, 0x02, 0xA9}), Bytes(f, f + 6));
    const unsigned char zeros[16] = {0};
    ASSERT_EQ(22, EffioSenseController::assembleData(f, sizeof(f), 0x01, 0xFF, 0xFF, zeros, 16));
    EXPECT_EQ((0xA5 + 0x01 + 0xFF + 0xFF + 16) & 0xFF, f[21]);
    // A frame that does not fit, a count beyond 16 or below 0, no data for a write.
    EXPECT_EQ(0, EffioSenseController::assembleData(f, 7, 0x01, 1, 0, d, 2));
    EXPECT_EQ(0, EffioSenseController::assembleData(f, sizeof(f), 0x01, 1, 0, zeros, 17));
    EXPECT_EQ(0, EffioSenseController::assembleData(f, sizeof(f), 0x01, 1, 0, zeros, -1));
    EXPECT_EQ(0, EffioSenseController::assembleData(f, sizeof(f), 0x01, 1, 0, nullptr, 1));
    EXPECT_EQ(0, EffioSenseController::assembleData(nullptr, 22, 0x01, 1, 0, d, 1));
}

TEST(EffioFrame, SplitData) {
    unsigned char b[4] = {9, 9, 9, 9};
    EffioSenseController::splitData(0x1234, 2, b);
    EXPECT_EQ((Bytes{0x12, 0x34}), Bytes(b, b + 2));
    EffioSenseController::splitData(0xFF, 1, b);
    EXPECT_EQ(0xFF, b[0]);
    EffioSenseController::splitData(0x100, 1, b);  // only the low byte
    EXPECT_EQ(0x00, b[0]);
    EffioSenseController::splitData(0x100, 2, b);
    EXPECT_EQ((Bytes{0x01, 0x00}), Bytes(b, b + 2));
    EffioSenseController::splitData(-1, 2, b);
    EXPECT_EQ((Bytes{0xFF, 0xFF}), Bytes(b, b + 2));
    EffioSenseController::splitData(0, 4, b);
    EXPECT_EQ((Bytes{0, 0, 0, 0}), Bytes(b, b + 4));
}

TEST(EffioFrame, ModifyAppointedBits) {
    EXPECT_EQ(0x80, EffioSenseController::modifyAppointedBits(0x00, 1, 7, 1));
    EXPECT_EQ(0x7F, EffioSenseController::modifyAppointedBits(0xFF, 0, 7, 1));
    EXPECT_EQ(0x00, EffioSenseController::modifyAppointedBits(0xFF, 0, 0, 8));
    EXPECT_EQ(0xFF, EffioSenseController::modifyAppointedBits(0x00, 0xFF, 0, 8));
    EXPECT_EQ(0xCF, EffioSenseController::modifyAppointedBits(0xFF, 0, 4, 2));
    EXPECT_EQ(0x35, EffioSenseController::modifyAppointedBits(0x05, 3, 4, 2));
    // A value wider than its field keeps to the field; a field past bit 7 is cut at the byte.
    EXPECT_EQ(0x0E, EffioSenseController::modifyAppointedBits(0x00, 0xFF, 1, 3));
    EXPECT_EQ(0xC0, EffioSenseController::modifyAppointedBits(0x00, 0xFF, 6, 4));
    // Nothing to change outside the byte.
    EXPECT_EQ(0x5A, EffioSenseController::modifyAppointedBits(0x5A, 1, 8, 1));
    EXPECT_EQ(0x5A, EffioSenseController::modifyAppointedBits(0x5A, 1, -1, 1));
    EXPECT_EQ(0x5A, EffioSenseController::modifyAppointedBits(0x5A, 1, 0, 0));
}

TEST(EffioFrame, ReadAnswerAndStatusTexts) {
    unsigned char data[2] = {0, 0};
    const unsigned char good[] = {0xA5, 0x02, 0x01, 0xFF, 0xA7};  // A5+02+01+FF = 0x1A7
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, EffioSenseController::checkReadAnswer(good, 5, 2, 0, data));
    EXPECT_EQ((Bytes{0x01, 0xFF}), Bytes(data, data + 2));
    EXPECT_EQ(0, EffioSenseController::checkReadAnswer(good, 4, 2, 0, data));
    const unsigned char bad[] = {0xA5, 0x02, 0x01, 0xFF, 0xA6};
    EXPECT_EQ(-1, EffioSenseController::checkReadAnswer(bad, 5, 2, 0, data));
    const unsigned char status[] = {0xA5, 0x02, 0xA7};
    EXPECT_EQ(0, EffioSenseController::checkReadAnswer(status, 3, 2, 0, data));
    const unsigned char noStart[] = {0x25, 0x02, 0x01, 0xFF, 0x27};
    EXPECT_EQ(0, EffioSenseController::checkReadAnswer(noStart, 5, 2, 0, data));
    // The answer to another request (its checksum counted in) fails the check.
    const unsigned char toRequest9[] = {0xA5, 0x02, 0x01, 0xFF, 0xB0};  // 0x1A7 + 9
    EXPECT_EQ(1, EffioSenseController::checkReadAnswer(toRequest9, 5, 2, 9, data));
    EXPECT_EQ(-1, EffioSenseController::checkReadAnswer(toRequest9, 5, 2, 10, data));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(3u, countOf(out, "getParmaters recv len error"));
    EXPECT_NE(std::string::npos, out.find("check sum error expect=167 , but actual = 166"));
    EXPECT_NE(std::string::npos, out.find("check sum error expect=177 , but actual = 176"));
    EXPECT_STREQ("Communication error", EffioSenseController::statusText(1));
    EXPECT_STREQ("Category number error", EffioSenseController::statusText(2));
    EXPECT_STREQ("Byte number error", EffioSenseController::statusText(3));
    EXPECT_STREQ("Other error", EffioSenseController::statusText(4));
    EXPECT_STREQ("Other error", EffioSenseController::statusText(0x7F));
}

// ---- the controller ----

TEST_F(EffioTest, ConstructionRegistersExactlyItsRanges) {
    make();
    std::set<int> c, s, e, k;
    ctl->getIdManager().getCommonIdList(c);
    ctl->getIdManager().getSetOnlyIdList(s);
    ctl->getIdManager().getEspecialIdList(e);
    ctl->getIdManager().getKeepDefaultValueList(k);
    std::set<int> expected;
    for (int id : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 12, 13, 14, 15, 16, 17, 18, 19, 21, 57, 58, 59, 60, 61}) expected.insert(id);
    std::set<int> rows;
    size_t count = 0;
    const EffioParameter* table = EffioSenseController::parameterTable(count);
    for (size_t i = 0; i < count; ++i) rows.insert(table[i].id);
    EXPECT_EQ(expected, rows);
    for (int id = 500; id <= 504; ++id) expected.insert(id);
    EXPECT_EQ(expected, c);
    EXPECT_TRUE(s.empty());
    EXPECT_TRUE(e.empty());
    EXPECT_TRUE(k.empty());
}

TEST_F(EffioTest, StartUpReadsTheVersion) {
    ASSERT_EQ(1, init());
    EXPECT_EQ(ISensorController::InitSuccess, ctl->getSensorStatus());
    EXPECT_NE(std::string::npos, initOutput.find(std::string("__EffioSenseController::init,ModuleConfigure is(") +
                                                 kDetail + "," + kParams + ")"));
    EXPECT_NE(std::string::npos, initOutput.find("Effio version 1.2"));
    auto frames = processor.receivedFrames();
    ASSERT_FALSE(frames.empty());
    EXPECT_EQ((Bytes{0xA5, 0x02, 0x00, 0x00, 0x02, 0xA9}), frames[0]);
    // After it, only frames of the table's categories.
    for (size_t i = 1; i < frames.size(); ++i) EXPECT_NE(0, frames[i][2]);
}

TEST_F(EffioTest, EveryIdChangesTheStoreAndRefusalsSendNothing) {
    ASSERT_EQ(1, init());
    size_t count = 0;
    const EffioParameter* table = EffioSenseController::parameterTable(count);
    for (size_t i = 0; i < count; ++i) {
        const EffioParameter& row = table[i];
        for (int value : {row.maxValue, row.minValue, (row.minValue + row.maxValue) / 2 + 1}) {
            if (!row.inRange(value)) continue;
            SCOPED_TRACE(std::string(row.name) + " " + std::to_string(value));
            const int writes = processor.writeCount();
            // The other fields of the byte keep their values.
            std::vector<int> others;
            for (size_t j = 0; j < count; ++j)
                if (j != i) others.push_back(fieldOf(table[j]));
            ASSERT_EQ(1, ctl->setParameterToSensor(row.id, value));
            EXPECT_EQ(value, fieldOf(row));
            EXPECT_EQ(writes + 1, processor.writeCount());
            for (size_t j = 0, k = 0; j < count; ++j) {
                if (j == i) continue;
                EXPECT_EQ(others[k++], fieldOf(table[j])) << table[j].name;
            }
            int back = -1;
            ASSERT_EQ(1, ctl->getParameterFromSensor(row.id, back));
            EXPECT_EQ(value, back);
        }
    }
    // Refusals: the values just outside each range, with the row's text, nothing sent or cached.
    std::string before;
    ctl->getLastValueCache().getAllSensorValues(before);
    for (size_t i = 0; i < count; ++i) {
        const EffioParameter& row = table[i];
        for (int bad : {row.maxValue + 1, row.minValue - 1, -1}) {
            SCOPED_TRACE(std::string(row.name) + " " + std::to_string(bad));
            const int frames = processor.frameCount();
            const int writes = uartRaw->writeCalls();
            std::string out;
            EXPECT_EQ(0, capturedOutput(out, [&] { return ctl->setParameter(row.id, bad); }));
            EXPECT_NE(std::string::npos, out.find(std::string(row.rangeName) + "(" + std::to_string(bad) + ") is out of range"))
                << out;
            EXPECT_EQ(frames, processor.frameCount());
            EXPECT_EQ(writes, uartRaw->writeCalls());
        }
    }
    std::string after;
    ctl->getLastValueCache().getAllSensorValues(after);
    EXPECT_EQ(before, after);
}

TEST_F(EffioTest, ABitFieldIsReadChangedAndWrittenBack) {
    ASSERT_EQ(1, init());
    processor.setByte(3, 0, 0x85);  // AGC mode on (bit 7), AGC 5
    auto mark = processor.receivedFrames().size();
    ASSERT_EQ(1, ctl->setParameterToSensor(7, 0x0C));
    auto frames = processor.receivedFrames();
    ASSERT_EQ(mark + 2, frames.size());
    EXPECT_EQ((Bytes{0xA5, 0x02, 0x03, 0x00, 0x01, 0xAB}), frames[mark]);
    EXPECT_EQ((Bytes{0xA5, 0x01, 0x03, 0x00, 0x01, 0x8C, 0x36}), frames[mark + 1]);  // 0x236
    EXPECT_EQ(0x8C, processor.byteAt(3, 0));
    // A two-byte value is written whole, high byte first.
    mark = frames.size();
    ASSERT_EQ(1, ctl->setParameterToSensor(61, 0x3FF));
    frames = processor.receivedFrames();
    ASSERT_EQ(mark + 1, frames.size());
    EXPECT_EQ((Bytes{0xA5, 0x01, 0x03, 0x03, 0x02, 0x03, 0xFF, 0xB0}), frames[mark]);
    // HDR through its operation.
    ASSERT_EQ(1, ctl->updateHDRMode(5));
    EXPECT_EQ(1, processor.byteAt(7, 0) & 0x01);
}

TEST_F(EffioTest, EachStatusErrorText) {
    ASSERT_EQ(1, init());
    const unsigned char one[] = {0x10};
    std::string out;
    // Final errors: one attempt each.
    const int before = uartRaw->writeCalls();
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl->setParameters(9, 0, one, 1); }));
    EXPECT_NE(std::string::npos, out.find("setParameters::send command failed (Category number error)")) << out;
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl->setParameters(1, 7, one, 1); }));
    EXPECT_NE(std::string::npos, out.find("setParameters::send command failed (Byte number error)")) << out;
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl->setParameters(0, 0, one, 1); }));
    EXPECT_NE(std::string::npos, out.find("setParameters::send command failed (Other error)")) << out;
    EXPECT_EQ(3, uartRaw->writeCalls() - before);
    EXPECT_EQ(1, processor.statusCount(SimEffioProcessor::CategoryError));
    EXPECT_EQ(1, processor.statusCount(SimEffioProcessor::ByteError));
    EXPECT_EQ(1, processor.statusCount(SimEffioProcessor::OtherError));
    EXPECT_EQ(1, processor.byteAt(0, 0));  // the version is read only
    // A communication error (the processor busy) is tried again.
    processor.injectOnce(SimSerialDevice::BufferFull);
    EXPECT_EQ(1, capturedOutput(out, [&] { return ctl->setParameters(1, 0, one, 1); }));
    EXPECT_NE(std::string::npos, out.find("setParameters::send command failed (Communication error)")) << out;
    EXPECT_EQ(0x10, processor.byteAt(1, 0));
    // A frame with a wrong checksum is answered with a communication error.
    const char broken[] = {static_cast<char>(0xA5), 0x01, 0x01, 0x00, 0x01, 0x20, 0x00};
    ASSERT_EQ(7, uart->write(0, broken, 7));
    char answer[3] = {0, 0, 0};
    ASSERT_EQ(3, uart->read(0, answer, 3, 4));
    EXPECT_EQ((Bytes{0xA5, 0x01, 0xA6}), Bytes(answer, answer + 3));
    EXPECT_EQ(0x10, processor.byteAt(1, 0));
}

TEST_F(EffioTest, LengthAndChecksumFailuresAndEveryFault) {
    ASSERT_EQ(1, init());
    std::string out;
    const unsigned char v[] = {0x42};
    // No answer: three attempts, each with its length text and a drain.
    processor.setFaultProbability(SimSerialDevice::Silent, 1.0);
    int before = uartRaw->writeCalls();
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl->setParameters(1, 0, v, 1); }));
    EXPECT_EQ(3, uartRaw->writeCalls() - before);
    EXPECT_EQ(3u, countOf(out, "setParameters : recv len failed expectlen=3,actuallen=0"));
    EXPECT_GE(countOf(out, "Clear UART buffer"), 3u);
    unsigned char data[2] = {0, 0};
    EXPECT_EQ(0, capturedOutput(out, [&] { return ctl->getParameters(1, 0, 1, data); }));
    EXPECT_EQ(3u, countOf(out, "getParmaters recv len error"));
    processor.clearFaults();
    clock.advance(3000);
    ctl->clearUartBuffer();

    // A corrupt read answer fails its checksum, the next attempt reads it.
    processor.setByte(1, 0, 0x33);
    processor.injectOnce(SimSerialDevice::CorruptByte);
    EXPECT_EQ(1, capturedOutput(out, [&] { return ctl->getParameters(1, 0, 1, data); }));
    EXPECT_EQ(0x33, data[0]);
    EXPECT_TRUE(out.find("check sum error expect=") != std::string::npos ||
                out.find("getParmaters recv len error") != std::string::npos)
        << out;

    for (int k = 0; k < SimSerialDevice::FaultCount; ++k) {
        const SimSerialDevice::Fault f = static_cast<SimSerialDevice::Fault>(k);
        SCOPED_TRACE(SimSerialDevice::faultName(f));
        clock.advance(3000);
        ctl->clearUartBuffer();
        processor.injectOnce(f);
        const unsigned char value[] = {static_cast<unsigned char>(0x50 + k)};
        before = uartRaw->writeCalls();
        EXPECT_EQ(1, capturedOutput(out, [&] { return ctl->setParameters(1, 1, value, 1); }));
        EXPECT_EQ(0x50 + k, processor.byteAt(1, 1));
        EXPECT_EQ(f == SimSerialDevice::SplitReply ? 1 : 2, uartRaw->writeCalls() - before) << out;
    }
}

TEST_F(EffioTest, InitFailsForEachMissingKeyAndASilentProcessor) {
    struct Case {
        std::string detail, params, text;
    };
    const std::vector<Case> cases = {
        {"isInfrared=0", kParams, "get RS232DeviceName from detail failed"},
        {kDetail, "toDayADCVal=3", "get RS232Parameter from senseParameter failed"},
        {kDetail, "RS485=9600", "parse RS485 param failed,nRet=1"},
        {"RS485=/dev/ttyS7", kParams, "open uart (/dev/ttyS7) failed"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        reset();
        EXPECT_EQ(0, init(c.detail, c.params));
        EXPECT_NE(std::string::npos, initOutput.find(c.text)) << initOutput;
        EXPECT_NE(ISensorController::InitSuccess, ctl->getSensorStatus());
    }
    reset();
    processor.setFaultProbability(SimSerialDevice::Silent, 1.0);
    EXPECT_EQ(0, init());
    EXPECT_NE(std::string::npos, initOutput.find("Effio read version failed")) << initOutput;
    EXPECT_EQ(3u, countOf(initOutput, "getParmaters recv len error"));
}

TEST_F(EffioTest, RandomFaultsNeverReportAFalseSuccess) {
    ASSERT_EQ(1, init());
    for (int k = 0; k < SimSerialDevice::FaultCount; ++k)
        processor.setFaultProbability(static_cast<SimSerialDevice::Fault>(k), 0.04);
    size_t count = 0;
    const EffioParameter* table = EffioSenseController::parameterTable(count);
    std::mt19937 rng(77);
    int successes = 0;
    std::string mismatch;
    testing::internal::CaptureStdout();
    for (int i = 0; i < 1000 && mismatch.empty(); ++i) {
        const EffioParameter& row = table[rng() % count];
        const int value = row.minValue + static_cast<int>(rng() % static_cast<unsigned>(row.maxValue - row.minValue + 1));
        const int before = fieldOf(row);
        const int result = ctl->setParameterToSensor(row.id, value);
        const int now = fieldOf(row);
        if (result) ++successes;
        // A success is in the store; a failed write may still have been carried out (its answer lost).
        if ((result && now != value) || (!result && now != before && now != value))
            mismatch = std::to_string(i) + " " + row.name + " result " + std::to_string(result) + " value " +
                       std::to_string(value) + " store " + std::to_string(now) + " before " + std::to_string(before);
    }
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ("", mismatch) << out.substr(out.size() > 3000 ? out.size() - 3000 : 0);
    EXPECT_GT(successes, 850);
}
