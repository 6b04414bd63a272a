// The EH4300 controller against the simulated VISCA block with the EH4300's
// model profile, on the virtual clock: the registered ids, the start-up
// exchange (internal synchronisation), every id's packet byte for byte, every
// refusal text, the search-form reply check and bad module records.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "doubles/ViscaControllerFixture.h"
#include "drivers/serial/SONYEH4300SenseController.h"
#include "storage/IdManager.h"
#include "storage/SensorCache.h"

using namespace testutil;

namespace {

const char* kDetail = "RS485=/dev/ttyS1;isInfrared=1";
const char* kParams = "RS485=9600,8,1,0";

class EH4300Test : public ViscaControllerFixture<SONYEH4300SenseController> {
protected:
    void SetUp() override {
        ViscaControllerFixture::SetUp();
        bench.module.setProfile(SimViscaModule::profile("EH4300"));
    }
    int init(const std::string& detail = kDetail, const std::string& params = kParams) {
        return ViscaControllerFixture::init(detail, params);
    }
};

}  // namespace

TEST_F(EH4300Test, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{1, 8}, {10, 30}, {32, 34}, {38, 41}, {44, 51}, {56, 64}}), idsOf({{37, 37}, {52, 55}}));
}

TEST_F(EH4300Test, StartUpPutsTheModuleOnInternalSync) {
    ASSERT_EQ(0, bench.module.registerValue(0x56));  // the model starts on external sync
    ASSERT_EQ(1, init());
    EXPECT_EQ(ISensorController::InitSuccess, ctl->getSensorStatus());
    EXPECT_NE(std::string::npos, initOutput.find(std::string("SONYEH4300SenseController::init,ModuleConfigure is(") +
                                                 kDetail + "," + kParams + ")"));
    EXPECT_NE(std::string::npos, initOutput.find("RS485(/dev/ttyS1) param is (9600,8,1,0)"));
    EXPECT_NE(std::string::npos, initOutput.find("Open inter-sync"));
    auto all = bench.module.receivedPackets();
    ASSERT_GE(all.size(), 2u);
    EXPECT_EQ(bytesOf({0x81, 0x09, 0x04, 0x24, 0x56, 0xFF}), all[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x24, 0x56, 0x00, 0x01, 0xFF}), all[1]);
    // No other register is touched.
    for (size_t i = 2; i < all.size(); ++i) EXPECT_NE(0x24, all[i][3]) << hexOf(all[i]);
    EXPECT_EQ(1, bench.module.registerValue(0x56));
}

TEST_F(EH4300Test, StartUpOnInternalSyncWritesNothing) {
    bench.module.setRegister(0x56, 1);
    ASSERT_EQ(1, init());
    EXPECT_EQ(std::string::npos, initOutput.find("Open inter-sync"));
    auto all = bench.module.receivedPackets();
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(bytesOf({0x81, 0x09, 0x04, 0x24, 0x56, 0xFF}), all[0]);
    for (size_t i = 1; i < all.size(); ++i) EXPECT_NE(0x24, all[i][3]) << hexOf(all[i]);
}

TEST_F(EH4300Test, BadModuleRecordsAndAbsentModulesFailInit) {
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
        EXPECT_EQ(0, init(c.detail, c.params));
        EXPECT_NE(std::string::npos, initOutput.find(c.text)) << initOutput;
        EXPECT_NE(ISensorController::InitSuccess, ctl->getSensorStatus());
    }
    // A module that never answers: three attempts at the register read, then failure.
    ctl.reset();
    bench.module.setFaultProbability(SimViscaModule::Silent, 1.0);
    size_t mark = bench.packetMark();
    EXPECT_EQ(0, init());
    EXPECT_NE(std::string::npos, initOutput.find("read sync register(0x56) failed")) << initOutput;
    EXPECT_NE(std::string::npos, initOutput.find("===recv(3 times) @getParameterValue failed,send:"));
    EXPECT_EQ(3u, bench.packetsSince(mark).size());
}

TEST_F(EH4300Test, EveryTableIdSendsItsPacket) {
    ASSERT_EQ(1, init());
    ASSERT_EQ(1, ctl->setParameter(10, 1));  // manual exposure: shutter, iris and gain are sent
    expectPackets({
        {1, 100, bytesOf({0x81, 0x01, 0x04, 0x42, 0x00, 0x00, 0x00, 0x0F, 0xFF})},
        {2, 3, bytesOf({0x81, 0x01, 0x04, 0x5F, 0x03, 0xFF})},
        {3, 1, bytesOf({0x81, 0x01, 0x04, 0x5B, 0x01, 0xFF})},
        {4, 5, bytesOf({0x81, 0x01, 0x04, 0x53, 0x05, 0xFF})},
        {5, 1, bytesOf({0x81, 0x01, 0x04, 0x52, 0x02, 0xFF})},
        {7, 28, bytesOf({0x81, 0x01, 0x04, 0x21, 0x00, 0x00, 0x01, 0x0C, 0xFF})},
        {8, 0, bytesOf({0x81, 0x01, 0x04, 0x62, 0x03, 0xFF})},
        {11, 21, bytesOf({0x81, 0x01, 0x04, 0x4A, 0x00, 0x00, 0x01, 0x05, 0xFF})},
        {12, 17, bytesOf({0x81, 0x01, 0x04, 0x4B, 0x00, 0x00, 0x01, 0x01, 0xFF})},
        {14, 15, bytesOf({0x81, 0x01, 0x04, 0x4C, 0x00, 0x00, 0x00, 0x0F, 0xFF})},
        {15, 4, bytesOf({0x81, 0x01, 0x04, 0x2C, 0x04, 0xFF})},
        {16, 1, bytesOf({0x81, 0x01, 0x04, 0x5A, 0x02, 0xFF})},
        {17, 14, bytesOf({0x81, 0x01, 0x04, 0x4E, 0x00, 0x00, 0x00, 0x0E, 0xFF})},
        {18, 48, bytesOf({0x81, 0x01, 0x04, 0x5D, 0x30, 0xFF})},
        {19, 1, bytesOf({0x81, 0x01, 0x04, 0x59, 0x02, 0xFF})},
        {20, 3, bytesOf({0x81, 0x01, 0x04, 0x29, 0x00, 0x03, 0x00, 0x00, 0xFF})},
        {21, 12, bytesOf({0x81, 0x01, 0x04, 0x29, 0x00, 0x03, 0x00, 0x0C, 0xFF})},
        {22, 1, bytesOf({0x81, 0x01, 0x04, 0x33, 0x02, 0xFF})},
        {23, 6, bytesOf({0x81, 0x01, 0x04, 0x35, 0x05, 0xFF})},
        {24, 0xAB, bytesOf({0x81, 0x01, 0x04, 0x43, 0x00, 0x00, 0x0A, 0x0B, 0xFF})},
        {25, 255, bytesOf({0x81, 0x01, 0x04, 0x44, 0x00, 0x00, 0x0F, 0x0F, 0xFF})},
        {27, 1, bytesOf({0x81, 0x01, 0x04, 0x11, 0x01, 0xFF})},
        {28, 6, bytesOf({0x81, 0x01, 0x04, 0x3D, 0x06, 0xFF})},
        {29, 0, bytesOf({0x81, 0x01, 0x04, 0x06, 0x03, 0xFF})},
        {30, 1, bytesOf({0x81, 0x01, 0x04, 0x38, 0x03, 0xFF})},
        {32, 2, bytesOf({0x81, 0x01, 0x04, 0x57, 0x02, 0xFF})},
        {33, 1, bytesOf({0x81, 0x01, 0x04, 0x58, 0x02, 0xFF})},
        {34, 15, bytesOf({0x81, 0x01, 0x04, 0x28, 0x0F, 0x00, 0x00, 0x00, 0xFF})},
        {38, 6, bytesOf({0x81, 0x01, 0x04, 0x2D, 0x00, 0x06, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF})},
        {39, 3, bytesOf({0x81, 0x01, 0x04, 0x2D, 0x00, 0x06, 0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF})},
        {40, 2, bytesOf({0x81, 0x01, 0x04, 0x2D, 0x00, 0x06, 0x03, 0x02, 0x00, 0x00, 0x00, 0x00, 0xFF})},
        {41, 1, bytesOf({0x81, 0x01, 0x04, 0x2D, 0x00, 0x06, 0x03, 0x02, 0x01, 0x00, 0x00, 0x00, 0xFF})},
        {44, 2, bytesOf({0x81, 0x01, 0x04, 0x2D, 0x00, 0x06, 0x03, 0x02, 0x01, 0x02, 0x00, 0x00, 0xFF})},
        {45, 0x12, bytesOf({0x81, 0x01, 0x04, 0x27, 0x01, 0x02, 0x00, 0x05, 0xFF})},
        {46, 0x34, bytesOf({0x81, 0x01, 0x04, 0x27, 0x01, 0x02, 0x03, 0x04, 0xFF})},
        {47, 14, bytesOf({0x81, 0x01, 0x04, 0x49, 0x00, 0x00, 0x00, 0x0E, 0xFF})},
        {48, 0, bytesOf({0x81, 0x01, 0x04, 0x4F, 0x00, 0x00, 0x00, 0x00, 0xFF})},
        {49, 1, bytesOf({0x81, 0x01, 0x04, 0x5E, 0x02, 0xFF})},
        {10, 4, bytesOf({0x81, 0x01, 0x04, 0x39, 0x0D, 0xFF})},
        {13, 1, bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x00, 0x05, 0xFF})},
        {56, 100, bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x01, 0x0F, 0xFF})},
        {50, 50, bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x01, 0x01, 0xFF})},
        {10, 1, bytesOf({0x81, 0x01, 0x04, 0x39, 0x03, 0xFF})},
        {52, 1, bytesOf({0x81, 0x01, 0x04, 0x0B, 0x02, 0xFF})},
        {53, 1, bytesOf({0x81, 0x01, 0x04, 0x0B, 0x03, 0xFF})},
        // Commands that complete when the lens stops come last: until then the
        // module takes further commands on its second socket.
        {37, 1, bytesOf({0x81, 0x01, 0x04, 0x18, 0x01, 0xFF})},
        {54, 1, bytesOf({0x81, 0x01, 0x04, 0x08, 0x02, 0xFF})},
    });
    // The module carried them out.
    EXPECT_EQ(0x01, bench.module.nibbleValue(0x5B));
    EXPECT_EQ(0xFF, bench.module.nibbleValue(0x44));
    EXPECT_EQ(0x0E, bench.module.nibbleValue(0x49));
    EXPECT_EQ(0x03, bench.module.aeMode());
    bench.clock.advance(20000);
    ctl->clearUartBuffer();
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x08, 0x03, 0xFF}), set(55, 1)[0]);
    bench.clock.advance(20000);
    ctl->clearUartBuffer();
    // Mirror: reverse, then flip.
    ViscaPackets m = set(6, 2);
    ASSERT_EQ(2u, m.size());
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x61, 0x02, 0xFF}), m[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x66, 0x02, 0xFF}), m[1]);
}

TEST_F(EH4300Test, EveryRefusalTextAndNothingSentOrCached) {
    ASSERT_EQ(1, init());
    EXPECT_GT(expectEveryRefusal(), 55);
    // This module's own ranges.
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameter(3, 2));
    EXPECT_EQ(0, ctl->setParameter(15, 3));
    EXPECT_EQ(0, ctl->setParameter(34, 16));
    std::string o = testing::internal::GetCapturedStdout();
    for (const char* t : {"p_nGamma(2) is out of range", "p_nGainLimit(3) is out of range",
                          "p_nFocusNearLimit(16) is out of range"})
        EXPECT_NE(std::string::npos, o.find(t)) << t;
    // Ids that the module does not have are not its to set: nothing goes out.
    size_t mark = bench.packetMark();
    for (int id : {0, 9, 31, 35, 36, 42, 43, 65, 66, 67, 68}) EXPECT_EQ(0, ctl->setParameter(id, 1)) << id;
    EXPECT_EQ(mark, bench.packetMark());
}

TEST_F(EH4300Test, SearchFormFindsTheAcknowledgementAmongStrayBytes) {
    ASSERT_EQ(1, init());
    // Stray bytes before the acknowledgement push it out of the 3-byte read: the
    // packet goes again after a drain and is acknowledged.
    bench.module.injectOnce(SimViscaModule::Noise);
    testing::internal::CaptureStdout();
    ViscaPackets p = set(2, 2);
    std::string noisy = testing::internal::GetCapturedStdout();
    EXPECT_LE(p.size(), 2u);
    EXPECT_EQ(2, bench.module.nibbleValue(0x5F));
    bench.clock.advance(1000);
    ctl->clearUartBuffer();
    // A refused command (syntax error from the model) costs three attempts and fails.
    bench.module.setFaultProbability(SimViscaModule::BufferFull, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(3u, set(2, 1, 0).size());
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("===setParameterValue(3 times) recv error,recv:0x90,0x60,0x3")) << o;
    EXPECT_NE(std::string::npos, o.find("setLowLightChromaSuppress error,value is 1"));
    EXPECT_EQ(2, bench.module.nibbleValue(0x5F));
}

TEST(EH4300Model, LacksDefogAndHighlightAndHasTwoGammas) {
    VirtualClock clock{12, 0, 0};
    SimViscaModule m;
    m.setProfile(SimViscaModule::profile("EH4300"));
    m.setPacing(false);
    auto exchange = [&](std::vector<uint8_t> p) {
        m.receive(p.data(), static_cast<int>(p.size()), 0);
        uint8_t out[16];
        int n = m.takeOutput(out, sizeof(out), 1000);
        return std::vector<uint8_t>(out, out + n);
    };
    EXPECT_EQ(bytesOf({0x90, 0x60, 0x02, 0xFF}), exchange(bytesOf({0x81, 0x01, 0x04, 0x37, 0x02, 0x01, 0xFF})));
    EXPECT_EQ(bytesOf({0x90, 0x60, 0x02, 0xFF}), exchange(bytesOf({0x81, 0x01, 0x04, 0x14, 0x01, 0x00, 0xFF})));
    EXPECT_EQ(bytesOf({0x90, 0x60, 0x02, 0xFF}), exchange(bytesOf({0x81, 0x01, 0x04, 0x5B, 0x02, 0xFF})));
    EXPECT_EQ(bytesOf({0x90, 0x41, 0xFF, 0x90, 0x51, 0xFF}), exchange(bytesOf({0x81, 0x01, 0x04, 0x5B, 0x01, 0xFF})));
    EXPECT_EQ(0x01, m.nibbleValue(0x5B));
    // The FCB-EV7310 model has them all.
    SimViscaModule fcb;
    fcb.setProfile(SimViscaModule::profile("FCB-EV7310"));
    fcb.setPacing(false);
    std::vector<uint8_t> p = bytesOf({0x81, 0x01, 0x04, 0x37, 0x02, 0x01, 0xFF});
    fcb.receive(p.data(), static_cast<int>(p.size()), 0);
    uint8_t out[16];
    EXPECT_EQ(6, fcb.takeOutput(out, sizeof(out), 1000));
    EXPECT_EQ(0x41, out[1]);
}
