// The in-house ISP board controller against the simulated board with its
// table, on the virtual clock: the registered ids, the detail keys "TNF" and
// "HDR", every id's register, the refusals, HDR mode and the noise-reduction modes.
#include <gtest/gtest.h>

#include <string>

#include "doubles/IspBoardFixture.h"
#include "drivers/ispboard/KestraISPSenseController.h"

using namespace testutil;

namespace {

const char* kDetail = "RS485=/dev/ttyS1;isInfrared=1;TNF=1;HDR=2";
const char* kParams = "RS485=9600,8,1,0";
typedef KestraISPSenseController K;

class KestraTest : public IspBoardFixture<KestraISPSenseController> {
protected:
    int init(const std::string& detail = kDetail) { return IspBoardFixture::init(detail, kParams); }
};

}  // namespace

TEST_F(KestraTest, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{1, 12}, {15, 16}, {18, 18}, {24, 30}, {32, 37}, {39, 39}, {57, 62}}), {});
}

TEST_F(KestraTest, StartUpTakesHdrAndTnfFromTheDetail) {
    ASSERT_EQ(1, init());
    EXPECT_NE(std::string::npos, initOutput.find(std::string("____KestraISPSenseController::init,ModuleConfigure is(") +
                                                 kDetail + "," + kParams + ")"));
    EXPECT_EQ(2, board.registerValue(K::RegHdrMode));
    EXPECT_EQ(2, ctl->getHDRModeOfDetail());
    EXPECT_EQ(1, ctl->getTNFSwitch());
    int cached = -1;
    EXPECT_TRUE(ctl->cachedRegister(K::RegMirror, cached));
}

TEST_F(KestraTest, MissingDetailKeysAreReported) {
    ASSERT_EQ(1, init("RS485=/dev/ttyS1;isInfrared=1"));
    EXPECT_NE(std::string::npos, initOutput.find("get TNF from detail failed"));
    EXPECT_NE(std::string::npos, initOutput.find("get HDR from detail failed"));
    EXPECT_EQ(0, board.registerValue(K::RegHdrMode));
}

TEST_F(KestraTest, EveryPlainIdReachesItsRegisterAndEveryRefusalSendsNothing) {
    ASSERT_EQ(1, init());
    expectEveryPlainRowReachesItsRegister();
    EXPECT_GE(expectEveryRefusal(), 80);
}

TEST_F(KestraTest, HdrModeAndNoiseReductionModes) {
    ASSERT_EQ(1, init());
    EXPECT_EQ(1, ctl->setParameterToSensor(K::IdHdrMode, 1));
    EXPECT_EQ(1, board.registerValue(K::RegHdrMode));
    EXPECT_EQ(1, ctl->updateHDRMode(0));
    EXPECT_EQ(0, board.registerValue(K::RegHdrMode));
    int v = -1;
    EXPECT_EQ(1, ctl->getParameterFromSensor(K::IdHdrMode, v));
    EXPECT_EQ(0, v);
    // Automatic NR: the level is taken, manual strengths are refused with nothing sent.
    ASSERT_EQ(0, board.registerValue(K::RegNrMode));
    EXPECT_EQ(1, ctl->setParameterToSensor(K::IdAutoNrLevel, 3));
    EXPECT_EQ(3, board.registerValue(K::RegAutoNrLevel));
    size_t mark = board.frameMark();
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameter(K::IdManualNr2D, 9));
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("set manual NR failed : current NR mode is auto")) << o;
    EXPECT_EQ(mark, board.frameMark());
    // Manual NR: the other way round.
    EXPECT_EQ(1, ctl->setParameter(K::IdNrMode, 1));
    EXPECT_EQ(1, ctl->setParameter(K::IdManualNr2D, 9));
    EXPECT_EQ(1, ctl->setParameter(K::IdManualNr3D, 11));
    EXPECT_EQ(9, board.registerValue(K::RegManualNr2D));
    EXPECT_EQ(11, board.registerValue(K::RegManualNr3D));
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameter(K::IdAutoNrLevel, 1));
    o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("set auto NR failed : current NR mode is manual")) << o;
    EXPECT_EQ(3, board.registerValue(K::RegAutoNrLevel));
}

TEST_F(KestraTest, ThousandExchangesWithRandomFaultsNeverReportAWrongSuccess) {
    ASSERT_EQ(1, init());
    expectRandomFaultsNeverReportAWrongSuccess(84, false);  // no late answers: see the fixture
}
