// The CMD7300 controller against the simulated VISCA block with the CMD7300's
// model profile, on the virtual clock: the registered ids, the start-up, every
// id's packet and the module's state after it, every refusal text, faults.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "doubles/CMDControllerFixture.h"
#include "drivers/serial/CMD7300SenseController.h"

using namespace testutil;

namespace {

class CMD7300Test : public CMDControllerFixture<CMD7300SenseController> {
protected:
    const char* model() const override { return "CMD7300"; }
    const char* detail() const override { return "RS485=/dev/ttyS1;isInfrared=1"; }
};

}  // namespace

TEST_F(CMD7300Test, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{0, 7}, {9, 20}, {56, 63}}), idsOf({{52, 55}, {64, 64}}));
}

TEST_F(CMD7300Test, StartUpPrintsItsLineAndSendsNothing) { expectStartUp("CMD7300SenseController"); }

TEST_F(CMD7300Test, EachMissingKeyFailsInitWithItsText) { expectInitFailures(commonBadRecords(false)); }

TEST_F(CMD7300Test, EveryTableIdChangesTheModule) {
    ASSERT_EQ(1, init());
    expectSharedRows();
    expectPacketsApplied({
        {18, 1, bytesOf({0x81, 0x01, 0x04, 0x5B, 0x01, 0xFF})},
        {20, 3, bytesOf({0x81, 0x01, 0x04, 0x2A, 0x00, 0x00, 0x00, 0x03, 0xFF})},
    });
}

TEST_F(CMD7300Test, EveryRefusalTextAndNothingSentOrCached) {
    ASSERT_EQ(1, init());
    expectRefusals(50, {8, 21, 51, 65, 66, 74});
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameter(18, 2));
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("p_nGamma(2) is out of range"));
}

TEST_F(CMD7300Test, FaultsCostThreeAttemptsAndLeaveTheCache) {
    ASSERT_EQ(1, init());
    expectFaults();
}
