// The CMD8100 controller against the simulated VISCA block with the CMD8100's
// model profile, on the virtual clock: the registered ids (numbered from 0),
// the start-up, every id's packet and the module's state after it, every
// refusal text, faults, and the records that fail its start-up.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "doubles/CMDControllerFixture.h"
#include "drivers/serial/CMD8100SenseController.h"
#include "drivers/serial/SerialTool.h"

using namespace testutil;

namespace {

class CMD8100Test : public CMDControllerFixture<CMD8100SenseController> {
protected:
    const char* model() const override { return "CMD8100"; }
    const char* detail() const override { return "RS485=/dev/ttyS1;isInfrared=1;generation=2"; }
};

}  // namespace

TEST_F(CMD8100Test, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{0, 7}, {9, 17}, {19, 20}, {56, 63}}), idsOf({{52, 55}, {64, 64}, {66, 74}}),
                     idsOf({{65, 65}}));
}

TEST_F(CMD8100Test, StartUpPrintsItsLineReadsTheGenerationAndSendsNothing) {
    expectStartUp("CMD8100SenseController");
    EXPECT_EQ(2, ctl->getGeneration());
}

TEST_F(CMD8100Test, EachMissingKeyFailsInitWithItsText) {
    std::vector<RecordCase> cases = commonBadRecords(true);
    cases.push_back({"RS485=/dev/ttyS1;isInfrared=1", params(), "get generation from detail failed"});
    cases.push_back({"RS485=/dev/ttyS1;isInfrared=1;generation=new", params(), "get generation from detail failed"});
    expectInitFailures(cases);
}

TEST_F(CMD8100Test, EveryTableIdChangesTheModule) {
    ASSERT_EQ(1, init());
    expectSharedRows();
    expectPacketsApplied({
        {20, 21, bytesOf({0x81, 0x01, 0x04, 0x2A, 0x00, 0x00, 0x01, 0x05, 0xFF})},
        {71, 1, bytesOf({0x81, 0x01, 0x04, 0x0B, 0x00, 0xFF})},
        {67, 1, bytesOf({0x81, 0x01, 0x04, 0x10, 0x05, 0xFF})},
        {68, 1, bytesOf({0x81, 0x01, 0x04, 0x0E, 0x00, 0xFF})},
        {69, 1, bytesOf({0x81, 0x01, 0x04, 0x0E, 0x02, 0xFF})},
        {70, 1, bytesOf({0x81, 0x01, 0x04, 0x0E, 0x03, 0xFF})},
        {74, 1, bytesOf({0x81, 0x01, 0x04, 0x07, 0x00, 0xFF})},
    });
    EXPECT_EQ(7, bench.module.nibbleValue(0x4E));  // reset (7), up, down
    expectMove(72, bytesOf({0x81, 0x01, 0x04, 0x07, 0x02, 0xFF}));
    EXPECT_EQ(SimViscaModule::MaxZoom, bench.module.zoomPosition(PlatformClock::nowMs()));
    expectMove(73, bytesOf({0x81, 0x01, 0x04, 0x07, 0x03, 0xFF}));
    EXPECT_EQ(0, bench.module.zoomPosition(PlatformClock::nowMs()));
    // Auto mode: full auto exposure, automatic white balance, auto focus.
    ViscaPackets autoMode = set(66, 1);
    EXPECT_EQ((ViscaPackets{bytesOf({0x81, 0x01, 0x04, 0x39, 0x00, 0xFF}), bytesOf({0x81, 0x01, 0x04, 0x35, 0x00, 0xFF}),
                            bytesOf({0x81, 0x01, 0x04, 0x38, 0x02, 0xFF})}),
              autoMode);
    EXPECT_EQ(0x00, bench.module.aeMode());
    EXPECT_EQ(bytesOf({0x00}), bench.module.valueOf(0x35));
    EXPECT_EQ(bytesOf({0x02}), bench.module.valueOf(0x38));
}

TEST_F(CMD8100Test, EveryRefusalTextAndNothingSentOrCached) {
    ASSERT_EQ(1, init());
    expectRefusals(45, {8, 18, 21, 51, 75});
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameter(20, 22));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("p_nShutterLimit(22) is out of range"));
}

TEST_F(CMD8100Test, InquiriesReadTheModule) {
    ASSERT_EQ(1, init());
    ASSERT_EQ(1, ctl->setParameter(20, 9));
    int v = -1;
    ViscaPackets p = sent([&] { return ctl->getParameterFromSensor(20, v); });
    ASSERT_EQ(1u, p.size());
    EXPECT_EQ(bytesOf({0x81, 0x09, 0x04, 0x2A, 0xFF}), p[0]);
    EXPECT_EQ(9, v);
    ASSERT_EQ(1, ctl->setParameter(15, 1));
    EXPECT_EQ(1, ctl->getParameterFromSensor(15, v));
    EXPECT_EQ(1, v);
    // A model without the shutter limit answers a syntax error: the read fails.
    bench.module.setProfile(SimViscaModule::profile("CMD8100_Old"));
    testing::internal::CaptureStdout();
    v = 5;
    EXPECT_EQ(0, ctl->getParameterFromSensor(20, v));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("getShutterLimit error,value is 5"));
}

TEST_F(CMD8100Test, FaultsCostThreeAttemptsAndLeaveTheCache) {
    ASSERT_EQ(1, init());
    expectFaults();
}

TEST(CMD8100Tool, PrintArrayWritesEachByteThenANewline) {
    const unsigned char bytes[] = {0x81, 0x01, 0xFF};
    testing::internal::CaptureStdout();
    CMD8100_TOOL::printArray(bytes, 3);
    CMD8100_TOOL::printArray(bytes, 0);
    EXPECT_EQ("0x81\t0x01\t0xff\t\n\n", testing::internal::GetCapturedStdout());
}
