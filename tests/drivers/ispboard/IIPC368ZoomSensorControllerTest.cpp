// The zoom board with privacy masks against the simulated board with its
// table, on the virtual clock: the ids of the zoom board, mask regions snapped
// to the board's steps, showing, hiding and clearing masks, refusals.
#include <gtest/gtest.h>

#include <string>

#include "doubles/IspBoardFixture.h"
#include "drivers/ispboard/IIPC368ZoomSensorController.h"
#include "drivers/ispboard/IspBoardFrame.h"

using namespace testutil;

namespace {

typedef IIPC368ZoomSensorController M;

class IIPC368Test : public IspBoardFixture<IIPC368ZoomSensorController> {
protected:
    int init() { return IspBoardFixture::init("RS485=/dev/ttyS1;isInfrared=1", "RS485=9600,8,1,0"); }
    int region(int mask, int i) { return board.registerValue(static_cast<uint16_t>(M::RegMaskRegion + 4 * mask + i)); }
};

}  // namespace

TEST_F(IIPC368Test, ConstructionRegistersTheZoomBoardsRanges) {
    expectRegistered(idsOf({{1, 6}, {8, 21}}), idsOf({{22, 22}}));
}

TEST_F(IIPC368Test, MasksAreRegionsAndEnableBits) {
    ASSERT_EQ(1, init());
    EXPECT_EQ(8, ctl->getMaskWidthStep());
    EXPECT_EQ(4, ctl->getMaskHeightStep());
    IspFrames f = sent([&] { return ctl->setMask(2, 103, 51, 200, 98); });
    // Four region registers, then the enable bit (read first, as nothing is cached yet).
    ASSERT_EQ(6u, f.size()) << framesText(f);
    EXPECT_EQ(IspBoardFrame::Read8, f[4][1]);
    EXPECT_EQ(IspBoardFrame::Write8, f[5][1]);
    EXPECT_EQ(96, region(2, 0));
    EXPECT_EQ(48, region(2, 1));
    EXPECT_EQ(200, region(2, 2));
    EXPECT_EQ(96, region(2, 3));
    EXPECT_EQ(0x04, board.registerValue(M::RegMaskEnable));
    EXPECT_EQ(1, ctl->setMask(7, 0, 0, 1920, 1080));
    EXPECT_EQ(0x84, board.registerValue(M::RegMaskEnable));
    EXPECT_EQ(1, ctl->hideMask(2));
    EXPECT_EQ(0x80, board.registerValue(M::RegMaskEnable));
    EXPECT_EQ(96, region(2, 0));  // hidden, not forgotten
    EXPECT_EQ(1, ctl->showMask(2));
    EXPECT_EQ(0x84, board.registerValue(M::RegMaskEnable));
    EXPECT_EQ(1, ctl->clearMask(2));
    EXPECT_EQ(0x80, board.registerValue(M::RegMaskEnable));
    for (int i = 0; i < 4; ++i) EXPECT_EQ(0, region(2, i));
    EXPECT_EQ(1, ctl->setRegion(5, 8, 4, 16, 8));
    EXPECT_EQ(0x80, board.registerValue(M::RegMaskEnable));
    EXPECT_EQ(1, ctl->clearAllMask());
    EXPECT_EQ(0, board.registerValue(M::RegMaskEnable));
    for (int n : {5, 7})
        for (int i = 0; i < 4; ++i) EXPECT_EQ(0, region(n, i));
}

TEST_F(IIPC368Test, RefusedMasksSendNothing) {
    ASSERT_EQ(1, init());
    size_t mark = board.frameMark();
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setMask(8, 0, 0, 8, 8));
    EXPECT_EQ(0, ctl->showMask(-1));
    EXPECT_EQ(0, ctl->setMask(0, 1900, 0, 40, 8));
    EXPECT_EQ(0, ctl->setRegion(0, 0, -4, 8, 8));
    std::string o = testing::internal::GetCapturedStdout();
    EXPECT_EQ(mark, board.frameMark());
    EXPECT_NE(std::string::npos, o.find("invalid value"));
    EXPECT_NE(std::string::npos, o.find("invalid mask region(1900,0,40,8)"));
    // A board that does not answer: the register is named.
    board.setFaultProbability(SimIspBoard::Silent, 1.0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl->setMask(1, 8, 8, 8, 8));
    o = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, o.find("KSSendParam failed,address=0x00b4,value=8")) << o;
}
