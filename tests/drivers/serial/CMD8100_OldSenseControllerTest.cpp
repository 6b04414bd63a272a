// The controller of the CMD8100's earlier firmware against the simulated VISCA
// block with that model's profile, on the virtual clock: the registered ids,
// the start-up with its video format, every id's packet and the module's state
// after it, every refusal text, faults, and the records that fail its start-up.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "doubles/CMDControllerFixture.h"
#include "drivers/serial/CMD8100_OldSenseController.h"

using namespace testutil;

namespace {

class CMD8100OldTest : public CMDControllerFixture<CMD8100_OldSenseController> {
protected:
    const char* model() const override { return "CMD8100_Old"; }
    const char* detail() const override { return "RS485=/dev/ttyS1;isInfrared=1;generation=1"; }
};

}  // namespace

TEST_F(CMD8100OldTest, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{0, 7}, {9, 19}, {56, 63}}), idsOf({{52, 55}, {64, 64}}));
}

TEST_F(CMD8100OldTest, StartUpPrintsItsLineAndSetsTheVideoFormatFirst) {
    bench.module.setRegister(CMD8100_OldSenseController::VideoFormatRegister, 0x0A);
    expectStartUp("CMD8100_OldSenseController");
    EXPECT_EQ(1, ctl->getGeneration());
    // The first packet of the start-up: the video format of 1920x1080.
    auto all = bench.module.receivedPackets();
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(bytesOf({0x81, 0x01, 0x04, 0x24, 0x72, 0x00, 0x07, 0xFF}), all[0]);
    for (size_t i = 1; i < all.size(); ++i) EXPECT_NE(0x24, all[i][3]) << hexOf(all[i]);
    EXPECT_EQ(0x07, bench.module.registerValue(CMD8100_OldSenseController::VideoFormatRegister));
}

TEST_F(CMD8100OldTest, VideoSystemOfEachResolution) {
    ASSERT_EQ(1, init());
    ViscaPackets p = sent([&] { return ctl->setVideoSystem(VideoResolution(1280, 720)); });
    EXPECT_EQ((ViscaPackets{bytesOf({0x81, 0x01, 0x04, 0x24, 0x72, 0x00, 0x0A, 0xFF})}), p);
    EXPECT_EQ(0x0A, bench.module.registerValue(CMD8100_OldSenseController::VideoFormatRegister));
    testing::internal::CaptureStdout();
    EXPECT_TRUE(sent([&] { return ctl->setVideoSystem(VideoResolution(640, 480)); }, 0).empty());
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("setVideoSystem(640*480) is not supported"));
    // A module that refuses it: three attempts, then failure.
    bench.module.setFaultProbability(SimViscaModule::BufferFull, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(3u, sent([&] { return ctl->setVideoSystem(VideoResolution(1920, 1080)); }, 0).size());
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("setVideoSystem(1920*1080) failed"));
    EXPECT_EQ(0x0A, bench.module.registerValue(CMD8100_OldSenseController::VideoFormatRegister));
}

TEST_F(CMD8100OldTest, EachMissingKeyFailsInitWithItsText) {
    std::vector<RecordCase> cases = commonBadRecords(true);
    cases.push_back({"RS485=/dev/ttyS1;isInfrared=1", params(), "get generation from detail failed"});
    expectInitFailures(cases);
}

TEST_F(CMD8100OldTest, EveryTableIdChangesTheModule) {
    ASSERT_EQ(1, init());
    expectSharedRows();
    expectPacketsApplied({{18, 1, bytesOf({0x81, 0x01, 0x04, 0x5B, 0x01, 0xFF})}});
}

TEST_F(CMD8100OldTest, EveryRefusalTextAndNoShutterLimit) {
    ASSERT_EQ(1, init());
    expectRefusals(50, {8, 20, 21, 65, 66, 74});
}

TEST_F(CMD8100OldTest, FaultsCostThreeAttemptsAndLeaveTheCache) {
    ASSERT_EQ(1, init());
    expectFaults();
}
