// The FCB-EV7310 controller against the simulated VISCA block, on the virtual
// clock: its table's packets byte for byte, every refusal, the exposure-mode
// rules, bright, mirror, zoom readout, baud changer and restart, bad module
// records, faults.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "doubles/ViscaControllerFixture.h"
#include "drivers/serial/FCBEV7310SenseController.h"
#include "platform/CameraLensZMAAlgorithm.h"
#include "platform/PlatformClock.h"
#include "storage/SensorCache.h"

using namespace testutil;

namespace {

const char* kDetail = "RS485=/dev/ttyS1;isInfrared=1;isNewInfrared=1";
const char* kParams = "RS485=9600,8,1,0;toDayADCVal=300;toNightADCVal=100;toDayDelay=5;DCDay=1;DCNight=2";

typedef ViscaPackets Packets;

std::string out(const Packets& p) { return packetsText(p); }

class FCBTest : public ViscaControllerFixture<FCBEV7310SenseController> {
protected:
    int init(const std::string& detail = kDetail, const std::string& params = kParams) {
        return ViscaControllerFixture::init(detail, params);
    }
};

}  // namespace

TEST_F(FCBTest, InitOpensThePortAsksTheBaudAndComesUp) {
    ASSERT_EQ(1, init());
    EXPECT_EQ(ISensorController::InitSuccess, ctl->getSensorStatus());
    EXPECT_NE(std::string::npos,
              initOutput.find(std::string("FCBEV7310SenseController::init,ModuleConfigure is(") + kDetail + "," + kParams + ")"));
    EXPECT_NE(std::string::npos, initOutput.find("RS485(/dev/ttyS1) param is (9600,8,1,0)"));
    auto all = bench.module.receivedPackets();
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(bytesOf({0x81, 0x09, 0x04, 0x24, 0x00, 0xFF}), all[0]);
    EXPECT_EQ(0, bench.module.restartCount());
    EXPECT_EQ(300, ctl->getToDayADCVal());
    EXPECT_EQ(100, ctl->getToNightADCVal());
    EXPECT_EQ(5, ctl->getToDayDelay());
    EXPECT_EQ(1, ctl->getDCDay());
    EXPECT_EQ(2, ctl->getDCNight());
    EXPECT_EQ(1, ctl->getNewInfrared());
    // The factory file was made from the module's answers.
    std::string factory = bench.root.read("/mnt/mtd/code/config_file/sensor_Factory.cfg");
    EXPECT_NE(std::string::npos, factory.find("(15,15)"));  // gain limit, the module's power-on value
    EXPECT_NE(std::string::npos, factory.find("(4,2)(5,0)")) << factory;  // noise reduction, high resolution
    EXPECT_NE(std::string::npos, factory.find("(29,1)")) << factory;      // digital zoom on
}

TEST_F(FCBTest, MissingDayNightKeysAreReported) {
    ASSERT_EQ(1, init("RS485=/dev/ttyS1;isInfrared=1", "RS485=9600,8,1,0"));
    for (const char* text : {"get isNewInfrared from detail failed", "get toDayADCVal from senseParameter failed",
                             "get toNightADCVal from senseParameter failed", "get toDayDelay from senseParameter failed",
                             "get DCDay from senseParameter failed", "get DCNight from senseParameter failed"})
        EXPECT_NE(std::string::npos, initOutput.find(text)) << text;
}

TEST_F(FCBTest, EveryTableRowSendsItsPacket) {
    ASSERT_EQ(1, init());
    struct Case {
        int id, value;
        std::vector<uint8_t> packet;
    };
    const std::vector<Case> cases = {
        {1, 100, bytesOf({0x81, 0x01, 0x04, 0x42, 0x00, 0x00, 0x00, 0x0F, 0xFF})},
        {1, 50, bytesOf({0x81, 0x01, 0x04, 0x42, 0x00, 0x00, 0x00, 0x07, 0xFF})},
        {2, 3, bytesOf({0x81, 0x01, 0x04, 0x5F, 0x03, 0xFF})},
        {3, 5, bytesOf({0x81, 0x01, 0x04, 0x5B, 0x05, 0xFF})},
        {4, 4, bytesOf({0x81, 0x01, 0x04, 0x53, 0x04, 0xFF})},
        {5, 1, bytesOf({0x81, 0x01, 0x04, 0x52, 0x02, 0xFF})},
        {5, 0, bytesOf({0x81, 0x01, 0x04, 0x52, 0x03, 0xFF})},
        {7, 28, bytesOf({0x81, 0x01, 0x04, 0x21, 0x00, 0x00, 0x01, 0x0C, 0xFF})},
        {8, 7, bytesOf({0x81, 0x01, 0x04, 0x62, 0x02, 0xFF})},
        {8, 0, bytesOf({0x81, 0x01, 0x04, 0x62, 0x03, 0xFF})},
        {15, 4, bytesOf({0x81, 0x01, 0x04, 0x2C, 0x04, 0xFF})},
        {16, 1, bytesOf({0x81, 0x01, 0x04, 0x5A, 0x02, 0xFF})},
        {17, 14, bytesOf({0x81, 0x01, 0x04, 0x4E, 0x00, 0x00, 0x00, 0x0E, 0xFF})},
        {18, 48, bytesOf({0x81, 0x01, 0x04, 0x5D, 0x30, 0xFF})},
        {19, 1, bytesOf({0x81, 0x01, 0x04, 0x59, 0x02, 0xFF})},
        {20, 3, bytesOf({0x81, 0x01, 0x04, 0x29, 0x00, 0x03, 0x00, 0x00, 0xFF})},
        {21, 12, bytesOf({0x81, 0x01, 0x04, 0x29, 0x00, 0x03, 0x00, 0x0C, 0xFF})},
        {22, 1, bytesOf({0x81, 0x01, 0x04, 0x33, 0x02, 0xFF})},
        {23, 6, bytesOf({0x81, 0x01, 0x04, 0x35, 0x05, 0xFF})},
        {23, 1, bytesOf({0x81, 0x01, 0x04, 0x35, 0x00, 0xFF})},
        {24, 0xAB, bytesOf({0x81, 0x01, 0x04, 0x43, 0x00, 0x00, 0x0A, 0x0B, 0xFF})},
        {25, 255, bytesOf({0x81, 0x01, 0x04, 0x44, 0x00, 0x00, 0x0F, 0x0F, 0xFF})},
        {27, 1, bytesOf({0x81, 0x01, 0x04, 0x11, 0x01, 0xFF})},
        {28, 6, bytesOf({0x81, 0x01, 0x04, 0x3D, 0x06, 0xFF})},
        {29, 0, bytesOf({0x81, 0x01, 0x04, 0x06, 0x03, 0xFF})},
        {30, 1, bytesOf({0x81, 0x01, 0x04, 0x38, 0x03, 0xFF})},
        {30, 0, bytesOf({0x81, 0x01, 0x04, 0x38, 0x02, 0xFF})},
        {32, 2, bytesOf({0x81, 0x01, 0x04, 0x57, 0x02, 0xFF})},
        {33, 1, bytesOf({0x81, 0x01, 0x04, 0x58, 0x02, 0xFF})},
        {33, 2, bytesOf({0x81, 0x01, 0x04, 0x58, 0x03, 0xFF})},
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
        {65, 2, bytesOf({0x81, 0x01, 0x04, 0x37, 0x02, 0x02, 0xFF})},
        {65, 0, bytesOf({0x81, 0x01, 0x04, 0x37, 0x03, 0x00, 0xFF})},
        {68, 1, bytesOf({0x81, 0x01, 0x04, 0x14, 0x00, 0x00, 0xFF})},
        {66, 3, bytesOf({0x81, 0x01, 0x04, 0x14, 0x03, 0x00, 0xFF})},
        {67, 2, bytesOf({0x81, 0x01, 0x04, 0x14, 0x03, 0x02, 0xFF})},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("id " + std::to_string(c.id) + " value " + std::to_string(c.value));
        // Group rows take the other ids' values from the cache, as the pipeline leaves them.
        size_t mark = bench.packetMark();
        ASSERT_EQ(1, ctl->setParameter(c.id, c.value));
        Packets p = bench.packetsSince(mark);
        ASSERT_EQ(1u, p.size()) << out(p);
        EXPECT_EQ(c.packet, p[0]) << hexOf(p[0]);
    }
    // The module carried every one of them out.
    EXPECT_EQ(0x05, bench.module.nibbleValue(0x5B));
    EXPECT_EQ(0xFF, bench.module.nibbleValue(0x44));
}

TEST_F(FCBTest, FixedCommandsAndMotion) {
    ASSERT_EQ(1, init());
    // Iris steps need manual or iris priority on the module: refused in full auto.
    testing::internal::CaptureStdout();
    EXPECT_EQ(3u, set(52, 1, 0).size());
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("setIrisUp error,value is 1"));
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x18, 0x01, 0xFF}), set(37, 1)[0]);
    ASSERT_EQ(1, ctl->setParameter(10, 1));
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x0B, 0x02, 0xFF}), set(52, 1)[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x0B, 0x03, 0xFF}), set(53, 1)[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x08, 0x02, 0xFF}), set(54, 1)[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x08, 0x03, 0xFF}), set(55, 1)[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x07, 0x23, 0xFF}), sent([&] { return ctl->ZoomIn(3); })[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x07, 0x00, 0xFF}), sent([&] { return ctl->StopZoomContrl(); })[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x07, 0x35, 0xFF}), sent([&] { return ctl->ZoomOut(5); })[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x08, 0x24, 0xFF}), sent([&] { return ctl->FocusFar(0x14); })[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x08, 0x00, 0xFF}), sent([&] { return ctl->StopFocusContrl(); })[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x08, 0x31, 0xFF}), sent([&] { return ctl->FocusNear(1); })[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x0B, 0x02, 0xFF}), sent([&] { return ctl->IrisUp(); })[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x0B, 0x03, 0xFF}), sent([&] { return ctl->IrisDown(); })[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x18, 0x01, 0xFF}), sent([&] { return ctl->OnePushTrigger(); })[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x48, 0x01, 0x02, 0x03, 0x04, 0xFF}),
              sent([&] { return ctl->setFocusValue(0x1234); })[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x47, 0x06, 0x00, 0x00, 0x00, 0x01, 0x02, 0x03, 0x04, 0xFF}),
              sent([&] { return ctl->setZoomAndFocusValue(0x6000, 0x1234); })[0]);
    // Speeds out of range are refused before anything is sent.
    testing::internal::CaptureStdout();
    EXPECT_TRUE(sent([&] { return ctl->ZoomIn(9); }, 0).empty());
    EXPECT_TRUE(sent([&] { return ctl->ZoomOut(-1); }, 0).empty());
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("ZoomUp(9) is out of range"));
    EXPECT_NE(std::string::npos, o.find("ZoomOut(-1) is out of range"));
}

TEST_F(FCBTest, EveryRefusalTextAndNothingSentOrCached) {
    ASSERT_EQ(1, init());
    EXPECT_GT(expectEveryRefusal(), 60);
    // The texts the module table names.
    testing::internal::CaptureStdout();
    ctl->setParameter(3, 6);
    ctl->setParameter(11, 22);
    ctl->setParameter(15, 3);
    ctl->setParameter(4, 6);
    ctl->setParameter(12, 18);
    ctl->setParameter(20, 16);
    ctl->setParameter(23, 7);
    ctl->setParameter(1, 101);
    std::string o = testing::internal::GetCapturedStdout();
    for (const char* t : {"p_nGamma(6) is out of range", "p_nShutter(22) is out of range", "p_nGainLimit(3) is out of range",
                          "p_nNR(6) is out of range", "p_nIri(18) is out of range", "p_nX(16) is out of range",
                          "p_nWBMode(7) is out of range", "p_Sharpness(101) is out of range"})
        EXPECT_NE(std::string::npos, o.find(t)) << t;
}

TEST_F(FCBTest, ExposureValuesAreSentOnlyInTheirModes) {
    ASSERT_EQ(1, init());
    // Full auto: shutter, gain and bright are the module's own.
    EXPECT_TRUE(set(11, 5).empty());
    EXPECT_TRUE(set(14, 5).empty());
    EXPECT_TRUE(set(13, 5).empty());
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x39, 0x03, 0xFF}), set(10, 1)[0]);  // manual
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x4A, 0x00, 0x00, 0x01, 0x05, 0xFF}), set(11, 21)[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x4C, 0x00, 0x00, 0x00, 0x0F, 0xFF}), set(14, 15)[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x4B, 0x00, 0x00, 0x01, 0x01, 0xFF}), set(12, 17)[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x39, 0x0A, 0xFF}), set(10, 2)[0]);  // shutter priority
    EXPECT_EQ(1u, set(11, 3).size());
    EXPECT_TRUE(set(14, 3).empty());
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x39, 0x0B, 0xFF}), set(10, 3)[0]);  // iris priority
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x39, 0x00, 0xFF}), set(10, 0)[0]);
    // Iris in full auto: the module refuses ("not executable"), three attempts, failure.
    testing::internal::CaptureStdout();
    EXPECT_EQ(3u, set(12, 4, 0).size());
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("setIris error,value is 4"));
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x39, 0x0D, 0xFF}), set(10, 4)[0]);  // bright
    EXPECT_EQ(0x0D, bench.module.aeMode());
    testing::internal::CaptureStdout();
    EXPECT_TRUE(set(10, 5, 0).empty());
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("p_nExposalMode(5) is out of range"));
}

TEST_F(FCBTest, BrightCodesItsValueAndUpdatesId50InBothCaches) {
    ASSERT_EQ(1, init());
    ASSERT_EQ(1, ctl->setParameter(10, 4));
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x00, 0x00, 0xFF}), set(13, 0)[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x00, 0x05, 0xFF}), set(13, 1)[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x01, 0x0F, 0xFF}), set(13, 27)[0]);
    ASSERT_EQ(1, ctl->setParameter(13, 10));
    int v = -1;
    ASSERT_EQ(1, ctl->getLastValueCache().getSensorValue(50, v));
    EXPECT_EQ(37, v);  // 100 * 10 / 27
    ASSERT_EQ(1, ctl->getRequestCache().getSensorValue(50, v));
    EXPECT_EQ(37, v);
    // Ids 50 and 56 on the 0-100 scale go out as bright.
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x01, 0x0F, 0xFF}), set(56, 100)[0]);
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x01, 0x01, 0xFF}), set(50, 50)[0]);  // 13 + 4
    // A failed bright leaves id 50 as it was.
    bench.module.setFaultProbability(SimViscaModule::Silent, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameter(13, 20));
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(1, ctl->getLastValueCache().getSensorValue(50, v));
    EXPECT_EQ(48, v);  // from bright 13 (id 50 = 50): 100 * 13 / 27
}

TEST_F(FCBTest, MirrorSendsReverseThenFlip) {
    ASSERT_EQ(1, init());
    const std::vector<std::pair<int, std::pair<int, int>>> map = {{0, {3, 3}}, {1, {2, 3}}, {2, {2, 2}}, {3, {3, 2}}};
    for (auto& m : map) {
        Packets p = set(6, m.first);
        ASSERT_EQ(2u, p.size());
        EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x61, m.second.first, 0xFF}), p[0]);
        EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x66, m.second.second, 0xFF}), p[1]);
        int value = -1;
        ASSERT_EQ(1, ctl->getMirrorValue(value));
        EXPECT_EQ(m.first, value);
    }
    // A failed reverse stops the operation: three attempts of 0x61, no 0x66.
    bench.module.setFaultProbability(SimViscaModule::Silent, 1.0);
    testing::internal::CaptureStdout();
    Packets p = set(6, 1, 0);
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(3u, p.size());
    for (auto& x : p) EXPECT_EQ(0x61, x[3]);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(set(6, 4, 0).empty());
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("p_nMirror(4) is out of range"));
}

TEST_F(FCBTest, AutoIrisTakesTheFullAutoPathForBright) {
    ASSERT_EQ(1, init(std::string(kDetail) + ";autoIris=1"));
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x39, 0x00, 0xFF}), set(10, 4)[0]);
    EXPECT_EQ(0, bench.module.aeMode());
    bench.module.setFaultProbability(SimViscaModule::Silent, 1.0);
    testing::internal::CaptureStdout();
    set(10, 4, 0);
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("setExposalMode failed"));
}

TEST(FCBZoomRatio, RatioTableBoundedBeyondItsEnd) {
    EXPECT_EQ(1000, FCBEV7310SenseController::zoomRatioOf(0));
    EXPECT_EQ(1000, FCBEV7310SenseController::zoomRatioOf(16384));
    EXPECT_EQ(2000, FCBEV7310SenseController::zoomRatioOf(24576));
    EXPECT_EQ(1500, FCBEV7310SenseController::zoomRatioOf(20480));
    EXPECT_EQ(3000, FCBEV7310SenseController::zoomRatioOf(27264));
    EXPECT_EQ(12000, FCBEV7310SenseController::zoomRatioOf(31424));
    EXPECT_EQ(12000, FCBEV7310SenseController::zoomRatioOf(31425));
    EXPECT_EQ(12000, FCBEV7310SenseController::zoomRatioOf(65535));
}

TEST_F(FCBTest, ZoomToAPositionTakesTimeAndReadsItsRatio) {
    ASSERT_EQ(1, init());
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x47, 0x06, 0x00, 0x00, 0x00, 0xFF}),
              sent([&] { return ctl->setZoomValue(0x6000); })[0]);
    int position = -1, ratio = -1;
    ASSERT_EQ(1, ctl->getZoomValue(position, ratio));
    EXPECT_GT(position, 0);
    EXPECT_LT(position, 0x6000);  // still moving
    bench.clock.advance(3000);
    ASSERT_EQ(1, ctl->getZoomValue(position, ratio));
    EXPECT_EQ(0x6000, position);
    EXPECT_EQ(2000, ratio);
    // A garbled answer: the port is drained and the read fails.
    bench.module.setFaultProbability(SimViscaModule::CorruptByte, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->getZoomValue(position, ratio));
    testing::internal::GetCapturedStdout();
}

TEST_F(FCBTest, BaudAlreadyInUseSendsNothingButTheInquiry) {
    ASSERT_EQ(1, init());
    size_t mark = bench.packetMark();
    EXPECT_EQ(1, ctl->changeCameraBuadrate(9600));
    Packets p = bench.packetsSince(mark);
    ASSERT_EQ(1u, p.size());
    EXPECT_EQ(bytesOf({0x81, 0x09, 0x04, 0x24, 0x00, 0xFF}), p[0]);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->changeCameraBuadrate(4800));
    EXPECT_EQ(0, ctl->setCameraBuadRate(4));
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("p_nBuadrate out of range, p_nBuadrate = 4800"));
    EXPECT_NE(std::string::npos, o.find("setCameraBuadRate(4) is out of range"));
}

TEST_F(FCBTest, InitFindsTheCameraAtAnotherBaudAndBringsItBack) {
    bench.module.setBaudIndex(2);  // the camera runs at 38400
    int64_t t0 = PlatformClock::nowMs();
    ASSERT_EQ(1, init());
    EXPECT_NE(std::string::npos, initOutput.find("the camera baudrate is 38400"));
    EXPECT_NE(std::string::npos, initOutput.find("Restarting sensor"));
    EXPECT_NE(std::string::npos, initOutput.find("restart camera successed "));
    EXPECT_EQ(1, bench.module.restartCount());
    EXPECT_EQ(9600, bench.module.getModuleBaud());
    EXPECT_EQ(9600, bench.uartRaw->lastBaud());
    EXPECT_GE(PlatformClock::nowMs() - t0, 20000);
    // The register write went out at 38400, the module's baud then.
    bool sawWrite = false;
    for (auto& p : bench.module.receivedPackets())
        if (p == bytesOf({0x81, 0x01, 0x04, 0x24, 0x00, 0x00, 0x00, 0xFF})) sawWrite = true;
    EXPECT_TRUE(sawWrite);
    // After the restart the camera answers at the configured baud.
    int index = -1;
    ASSERT_EQ(1, ctl->getCameraBaudRate(index));
    EXPECT_EQ(0, index);
}

TEST_F(FCBTest, ChangeToAnotherBaudRestartsTheCamera) {
    // Configured at 19200: the camera (at 9600) is moved there at init.
    ASSERT_EQ(1, init(kDetail, "RS485=19200,8,1,0"));
    EXPECT_EQ(19200, bench.module.getModuleBaud());
    EXPECT_EQ(1, bench.module.restartCount());
    EXPECT_EQ(1, ctl->setParameter(3, 2));
}

TEST_F(FCBTest, RestartWaitsTwentySecondsOnThePlatformClock) {
    ASSERT_EQ(1, init());
    int64_t t0 = PlatformClock::nowMs();
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, ctl->restartCamera());
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("Restarting sensor"));
    EXPECT_GE(PlatformClock::nowMs() - t0, 20000);
    EXPECT_LT(PlatformClock::nowMs() - t0, 21000);
    EXPECT_EQ(bytesOf({0xFE, 0x05, 0x03, 0x01, 0x01, 0x0A, 0xFF}), bench.module.receivedPackets().back());
    // A short write: a one-second pause and failure.
    bench.uartRaw->limitNextWrite(3);
    t0 = PlatformClock::nowMs();
    EXPECT_EQ(0, ctl->restartCamera());
    EXPECT_EQ(1000, PlatformClock::nowMs() - t0);
}

TEST_F(FCBTest, RequestBeforeInitIsRefused) {
    make();
    EXPECT_EQ(0, ctl->setParameterToSensor(3, 1));
    int v = 0;
    EXPECT_EQ(0, ctl->getParameterFromSensor(3, v));
    EXPECT_EQ(-1, ctl->setParameterToSensor(9, 1));  // not a row of the table
    EXPECT_EQ(1, ctl->setParameterToSensor(500, 1));
}

TEST_F(FCBTest, InquiriesReadTheModuleState) {
    ASSERT_EQ(1, init());
    ASSERT_EQ(1, ctl->setParameter(24, 200));
    ASSERT_EQ(1, ctl->setParameter(18, 33));
    ASSERT_EQ(1, ctl->setParameter(16, 1));
    int v = -1;
    EXPECT_EQ(1, ctl->getParameterFromSensor(24, v));
    EXPECT_EQ(200, v);
    EXPECT_EQ(1, ctl->getParameterFromSensor(18, v));
    EXPECT_EQ(33, v);
    EXPECT_EQ(1, ctl->getParameterFromSensor(16, v));
    EXPECT_EQ(1, v);
    EXPECT_EQ(1, ctl->getStillImageValue(v));
    EXPECT_EQ(0, v);
    EXPECT_EQ(1, ctl->getFocusMode(v));
    EXPECT_EQ(0, v);
    // The module's day/night state.
    EXPECT_EQ(1, ctl->turnPictureToNight());
    EXPECT_TRUE(bench.module.isNight());
    EXPECT_EQ(1, ctl->getDNStatusFromSensor(v));
    EXPECT_EQ(0, v);
    EXPECT_EQ(1, ctl->turnPictureToDay());
    EXPECT_EQ(1, ctl->getDNStatusFromSensor(v));
    EXPECT_EQ(1, v);
    bench.module.setFaultProbability(SimViscaModule::Silent, 1.0);
    testing::internal::CaptureStdout();
    v = 77;
    EXPECT_EQ(0, ctl->getParameterFromSensor(3, v));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("getGamma error,value is 77"));
}

TEST_F(FCBTest, FailedTransactionLeavesCachesAndFilesUnchanged) {
    ASSERT_EQ(1, init());
    ASSERT_EQ(0, ctl->setParameters("(3,2)(4,3)"));
    const std::string factory = bench.root.read("/mnt/mtd/code/config_file/sensor_Factory.cfg");
    const std::string especial = bench.root.read("/mnt/mtd/code/config_file/sensor_Especial.cfg");
    std::string cached;
    ctl->getLastValueCache().getAllSensorValues(cached);
    for (int k = 0; k < SimViscaModule::FaultCount; ++k) {
        SimViscaModule::Fault kind = static_cast<SimViscaModule::Fault>(k);
        if (kind == SimViscaModule::Noise || kind == SimViscaModule::SplitReply) continue;  // these get through
        SCOPED_TRACE(SimViscaModule::faultName(kind));
        bench.module.clearFaults();
        // Late replies of the round before have come by now: drain them.
        bench.clock.advance(5000);
        testing::internal::CaptureStdout();
        ctl->clearUartBuffer();
        bench.module.setFaultProbability(kind, 1.0);
        int64_t t0 = PlatformClock::nowMs();
        int result = ctl->setParameters("(3,4)(4,5)");
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(-3, result);
        EXPECT_LT(PlatformClock::nowMs() - t0, 3000);  // three attempts, no hang
        std::string now;
        ctl->getLastValueCache().getAllSensorValues(now);
        EXPECT_EQ(cached, now);
        EXPECT_EQ(factory, bench.root.read("/mnt/mtd/code/config_file/sensor_Factory.cfg"));
        EXPECT_EQ(especial, bench.root.read("/mnt/mtd/code/config_file/sensor_Especial.cfg"));
    }
}

TEST_F(FCBTest, ThousandTransactionsWithRandomFaultsKeepTheModuleEqualToTheCache) {
    ASSERT_EQ(1, init());
    ASSERT_EQ(1, ctl->setParameter(10, 1));  // manual: every exposure value goes out
    for (int k = 0; k < SimViscaModule::FaultCount; ++k)
        bench.module.setFaultProbability(static_cast<SimViscaModule::Fault>(k), 0.06);
    // Ids whose value the module keeps exactly as one command's value.
    struct Row {
        int id;
        uint8_t code;
        int min, max;
    };
    const Row rows[] = {{2, 0x5F, 0, 3},   {3, 0x5B, 0, 5},     {4, 0x53, 0, 5},     {7, 0x21, 0, 28},
                        {11, 0x4A, 0, 21}, {12, 0x4B, 0, 17},   {14, 0x4C, 0, 15},   {15, 0x2C, 4, 15},
                        {17, 0x4E, 0, 14}, {18, 0x5D, 1, 48},   {24, 0x43, 0, 255},  {25, 0x44, 0, 255},
                        {27, 0x11, 0, 1},  {28, 0x3D, 0, 15},   {32, 0x57, 0, 2},    {47, 0x49, 0, 14},
                        {48, 0x4F, 0, 14}};
    std::mt19937 rng(2024);
    std::map<int, bool> lastOk;
    int successes = 0, failures = 0;
    testing::internal::CaptureStdout();
    for (int i = 0; i < 1000; ++i) {
        const Row& r = rows[std::uniform_int_distribution<size_t>(0, sizeof(rows) / sizeof(rows[0]) - 1)(rng)];
        int value = std::uniform_int_distribution<int>(r.min, r.max)(rng);
        int packets = bench.module.packetCount();
        int result = ctl->setParameter(r.id, value);
        if (bench.module.packetCount() == packets) continue;  // the cache already held it: no transaction
        lastOk[r.id] = result == 1;
        (result == 1 ? successes : failures)++;
        if (i % 50 == 0) bench.clock.advance(2000);  // late replies arrive in between
    }
    testing::internal::GetCapturedStdout();
    EXPECT_GT(successes, 500);
    EXPECT_GT(failures, 0);
    int compared = 0;
    for (const Row& r : rows) {
        if (!lastOk.count(r.id) || !lastOk[r.id]) continue;
        int cached = -1;
        ASSERT_EQ(1, ctl->getLastValueCache().getSensorValue(r.id, cached));
        EXPECT_EQ(cached, bench.module.nibbleValue(r.code)) << "id " << r.id;
        ++compared;
    }
    EXPECT_GE(compared, 10);
}

TEST_F(FCBTest, LensTableGivesTheFocusForAZoomPosition) {
    bench.root.write("/hd1/program/config/ZMAParam.txt", "# zoom focus\n0x0000 0x1000\n0x4000 0x3000\n");
    ASSERT_EQ(1, init());
    ASSERT_TRUE(ctl->hasLensTable());
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x47, 0x02, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0xFF}),
              sent([&] { return ctl->setZoomValueTracked(0x2000); })[0]);
}

TEST_F(FCBTest, BadLensTableLeavesTheAlgorithmWithoutATable) {
    bench.root.write("/hd1/program/config/ZMAParam.txt", "0 100\n10 x\n");
    ASSERT_EQ(1, init());
    EXPECT_FALSE(ctl->hasLensTable());
    EXPECT_NE(std::string::npos, initOutput.find("objZMAFileToArray.get(m_objZMAParam;) failed"));
    EXPECT_NE(std::string::npos, initOutput.find("ZMAParam line 2: focus 'x' is not a number"));
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x47, 0x02, 0x00, 0x00, 0x00, 0xFF}),
              sent([&] { return ctl->setZoomValueTracked(0x2000); })[0]);
}

// ---- bad module records and modules ----

namespace {
struct BadRecord {
    const char* detail;
    const char* params;
    const char* message;
};
}  // namespace

TEST_F(FCBTest, BadModuleRecordsFailInitWithTheirMessage) {
    const BadRecord records[] = {
        {"isInfrared=1", kParams, "get RS232DeviceName from detail failed"},
        {kDetail, "toDayADCVal=3", "get RS232Parameter from senseParameter failed"},
        {kDetail, "RS485=9600,8,1", "parse RS485 param failed,nRet=3"},
        {kDetail, "RS485=fast,8,1,0", "parse RS485 param failed,nRet=0"},
        {kDetail, "RS485=-9600,8,1,0",
         "m_pUART->setParameter(m_nUARTIndex,m_nBaudarate,m_nDataBits,m_nStopBits,m_nParity) failed"},
        {"RS485=/dev/ttyS9;isInfrared=1", kParams, "open uart (/dev/ttyS9) failed"},
        {"RS485/dev/ttyS1", kParams, "parse detail failed"},
        {kDetail, "RS485", "parse senseParameter failed"},
    };
    for (const BadRecord& r : records) {
        SCOPED_TRACE(r.message);
        make();
        EXPECT_EQ(0, init(r.detail, r.params));
        EXPECT_NE(std::string::npos, initOutput.find(r.message)) << initOutput;
        EXPECT_NE(ISensorController::InitSuccess, ctl->getSensorStatus());
        std::string cached;
        ctl->getLastValueCache().getAllSensorValues(cached);
        EXPECT_EQ("", cached);
        ctl.reset();
    }
}

TEST_F(FCBTest, ModuleThatAnswersGarbageFailsInit) {
    bench.module.setFaultProbability(SimViscaModule::CorruptByte, 1.0);
    bench.module.setFaultProbability(SimViscaModule::Noise, 1.0);
    EXPECT_EQ(0, init());
    EXPECT_NE(std::string::npos, initOutput.find("getCameraBaudRate szRecvBuf error"));
    EXPECT_NE(std::string::npos, initOutput.find("changeCameraBuadrate(9600)failed"));
    EXPECT_NE(ISensorController::InitSuccess, ctl->getSensorStatus());
    EXPECT_EQ(0, bench.module.restartCount());
}

TEST_F(FCBTest, CommandRowsOutsideItsRegisteredIdsGoOutButSetParametersReportsThem) {
    // Ids 37 and 52-56 are rows of the table (the operations reach them) but not
    // registered ids of this controller: the pipeline sends the packet, then
    // refuses the id for its unknown type and caches nothing.
    ASSERT_EQ(1, init());
    ASSERT_EQ(1, ctl->setParameter(10, 1));  // manual: the module takes iris steps
    struct Case {
        int id;
        std::vector<uint8_t> packet;
    };
    const Case cases[] = {{37, bytesOf({0x81, 0x01, 0x04, 0x18, 0x01, 0xFF})},
                          {52, bytesOf({0x81, 0x01, 0x04, 0x0B, 0x02, 0xFF})},
                          {53, bytesOf({0x81, 0x01, 0x04, 0x0B, 0x03, 0xFF})}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(0, ctl->getIdManager().getIdType(c.id));
        size_t mark = bench.packetMark();
        testing::internal::CaptureStdout();
        EXPECT_EQ(-c.id, ctl->setParameters("(" + std::to_string(c.id) + ",1)"));
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(ViscaPackets{c.packet}, bench.packetsSince(mark));
        int cached = -1;
        EXPECT_EQ(0, ctl->getLastValueCache().getSensorValue(c.id, cached));
    }
}
