// The IT1 zoom board controller against the simulated ISP board with its
// table, on the virtual clock: the registered ids, the port's own texts, the
// lens operations, auto focus and the lens adjustment command.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "doubles/IspBoardFixture.h"
#include "drivers/ispboard/IT1ZoomModuleSenseController.h"

using namespace testutil;

namespace {

const char* kDetail = "RS485=/dev/ttyS1;isInfrared=1";
const char* kParams = "RS485=9600,8,1,0";
typedef IT1ZoomModuleSenseController Z;

class IT1ZoomTest : public IspBoardFixture<IT1ZoomModuleSenseController> {
protected:
    int init() { return IspBoardFixture::init(kDetail, kParams); }
};

}  // namespace

TEST_F(IT1ZoomTest, ConstructionRegistersExactlyItsRanges) {
    expectRegistered(idsOf({{1, 6}, {8, 21}}), idsOf({{22, 22}}));
}

TEST_F(IT1ZoomTest, StartUpReadsBackAndEveryPlainIdReachesItsRegister) {
    ASSERT_EQ(1, init());
    EXPECT_NE(std::string::npos, initOutput.find("____IBaseIT1SenseController::init,ModuleConfigure is("));
    EXPECT_EQ(std::string::npos, initOutput.find("Init getChroma Value failed"));
    expectEveryPlainRowReachesItsRegister();
    EXPECT_GE(expectEveryRefusal(), 40);
}

TEST_F(IT1ZoomTest, PortTextsOfTheZoomBoard) {
    struct Case {
        std::string detail, text;
    };
    const std::vector<Case> cases = {
        {"isInfrared=1", "get RS485DeviceName from detail failed"},
        {"RS485=/dev/ttyS9;isInfrared=1", "RS485 uart open(/dev/ttyS9) failed"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        ctl.reset();
        EXPECT_EQ(0, IspBoardFixture::init(c.detail, kParams));
        EXPECT_NE(std::string::npos, initOutput.find(c.text)) << initOutput;
    }
    ctl.reset();
    EXPECT_EQ(0, IspBoardFixture::init(kDetail, "RS485=9601,8,1,0"));
    EXPECT_NE(std::string::npos, initOutput.find("RS485 setParameter failed(/dev/ttyS1,9601,8,1,0)")) << initOutput;
}

TEST_F(IT1ZoomTest, LensOperationsDriveTheLensRegisters) {
    ASSERT_EQ(1, init());
    struct Op {
        int (IT1ZoomModuleSenseController::*call)(int);
        int command;
    };
    for (const Op& op : {Op{&Z::ZoomIn, Z::LensZoomIn}, Op{&Z::ZoomOut, Z::LensZoomOut},
                         Op{&Z::FocusFar, Z::LensFocusFar}, Op{&Z::FocusNear, Z::LensFocusNear}}) {
        EXPECT_EQ(1, (ctl.get()->*op.call)(3));
        EXPECT_EQ(op.command, board.registerValue(Z::RegLensCommand));
        EXPECT_EQ(1, ctl->StopZoomContrl());
        EXPECT_EQ(Z::LensStop, board.registerValue(Z::RegLensCommand));
    }
    EXPECT_EQ(1, ctl->FocusFar(1));
    EXPECT_EQ(1, ctl->StopFocusContrl());
    EXPECT_EQ(Z::LensStop, board.registerValue(Z::RegLensCommand));
    EXPECT_EQ(1, ctl->setZoomValue(640));
    int zoom = -1, maxZoom = -1;
    EXPECT_EQ(1, ctl->getZoomValue(zoom, maxZoom));
    EXPECT_EQ(640, zoom);
    EXPECT_EQ(Z::MaxZoom, maxZoom);
    EXPECT_EQ(1, ctl->setFocusValue(0x3FF));
    int focus = -1;
    EXPECT_EQ(1, ctl->getFocusValue(focus));
    EXPECT_EQ(0x3FF, focus);
    size_t mark = board.frameMark();
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setZoomValue(1001));
    EXPECT_EQ(0, ctl->setFocusValue(-1));
    EXPECT_EQ(0, ctl->setFocusMode(2));
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_EQ(mark, board.frameMark());
    EXPECT_NE(std::string::npos, o.find("p_nZoom(1001) is out of range"));
    EXPECT_NE(std::string::npos, o.find("p_nFocus(-1) is out of range"));
    EXPECT_NE(std::string::npos, o.find("invalid value"));
}

TEST_F(IT1ZoomTest, FocusModeAutoFocusAndLensAdjustment) {
    ASSERT_EQ(1, init());
    EXPECT_EQ(1, ctl->setFocusMode(1));
    EXPECT_EQ(0, board.registerValue(Z::RegAutoFocus));
    int mode = -1;
    EXPECT_EQ(1, ctl->getFocusMode(mode));
    EXPECT_EQ(1, mode);
    EXPECT_EQ(1, ctl->setParameterToSensor(Z::IdAutoFocus, 1));
    EXPECT_EQ(1, board.registerValue(Z::RegAutoFocus));
    ASSERT_EQ(1, ctl->setParameter(Z::IdAutoFocus, 0));
    ASSERT_EQ(1, ctl->setParameter(Z::IdAutoFocus, 1));
    EXPECT_EQ(1, ctl->getFocusMode(mode));
    EXPECT_EQ(0, mode);
    // The adjustment is a command: sent, never cached.
    ASSERT_EQ(0, board.registerValue(Z::RegLensAdjust));
    EXPECT_EQ(1, ctl->setParameter(Z::IdAdjustLens, 1));
    EXPECT_EQ(1, board.registerValue(Z::RegLensAdjust));
    int cached = 0;
    EXPECT_EQ(0, ctl->getLastValueCache().getSensorValue(Z::IdAdjustLens, cached));
    board.setFaultProbability(SimIspBoard::Silent, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setParameter(Z::IdAutoFocus, 0));
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("setAutoFocus error,value is 0")) << o;
    EXPECT_EQ(1, ctl->getLastValueCache().getSensorValue(Z::IdAutoFocus, cached));
    EXPECT_EQ(1, cached);
}

TEST_F(IT1ZoomTest, ThousandExchangesWithRandomFaultsNeverReportAWrongSuccess) {
    ASSERT_EQ(1, init());
    expectRandomFaultsNeverReportAWrongSuccess(81, false);  // no late answers: see the fixture
}
