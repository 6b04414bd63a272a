// End to end on a real kernel tty: the IT1 controller on the termios serial
// port, the simulated ISP board at the far end of a pseudo-terminal.
#include <unistd.h>

#include <gtest/gtest.h>

#include <string>

#include "TestRoot.h"
#include "doubles/FakeGPIO.h"
#include "drivers/ispboard/IT1SenseController.h"
#include "ispboard/SimIspBoard.h"
#include "platform/FsUtil.h"
#include "platform/SafePointer.h"
#include "platform/TermiosUARTController.h"
#include "line/SimSerialPty.h"

using namespace testutil;

TEST(IspBoardOverPty, ControllerDrivesTheBoardThroughTheRealSerialPort) {
    TempRoot root;
    SimIspBoard board(IT1SenseController::boardTable());
    SimSerialPty far(board);
    if (!far.start()) GTEST_SKIP() << "no pseudo-terminal";
    FsUtil::makeDirs(root.real("/dev"));
    ASSERT_EQ(0, ::symlink(far.slaveName().c_str(), root.real("/dev/ttyS1").c_str()));

    SafePointer<IUARTController> uart(new TermiosUARTController());
    IT1SenseController ctl;
    ctl.setOperator(uart, SafePointer<IGPIO>(new FakeGPIO()));
    testing::internal::CaptureStdout();
    int init = ctl.initController(IT1SenseController::SensorType,
                                  ModuleConfigure(80, "RS485=/dev/ttyS1;isInfrared=1", "RS485=9600,8,1,0"));
    std::string out = testing::internal::GetCapturedStdout();
    ASSERT_EQ(1, init) << out;
    ctl.stopBoardWorkers();
    EXPECT_EQ(std::string::npos, out.find("Init getChroma Value failed")) << out;
    EXPECT_EQ(0, board.registerValue(IBaseIT1SenseController::RegDayToNight));

    // A 16-bit write and read back, a composed register, a refusal by the board.
    EXPECT_EQ(1, ctl.writeRegister(IBaseIT1SenseController::RegNightToDay, 0x0234));
    EXPECT_EQ(0x0234, board.registerValue(IBaseIT1SenseController::RegNightToDay));
    int v = -1;
    EXPECT_EQ(1, ctl.readRegister(IBaseIT1SenseController::RegNightToDay, v));
    EXPECT_EQ(0x0234, v);
    EXPECT_EQ(1, ctl.enterNightMode());
    EXPECT_EQ(0x03, board.registerValue(IBaseIT1SenseController::RegDayNight));
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl.writeRegister(IBaseIT1SenseController::RegBrightness, 101));
    // A wrong checksum on the line: the second attempt gets the value.
    board.injectFrameFault(SimIspBoard::WrongChecksum);
    EXPECT_EQ(1, ctl.readRegister(IBaseIT1SenseController::RegNightToDay, v));
    out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("setParameterValue error,nRet = 4,")) << out;
    EXPECT_NE(std::string::npos, out.find("checkSum error")) << out;
    EXPECT_EQ(0x0234, v);
    EXPECT_EQ(50, board.registerValue(IBaseIT1SenseController::RegBrightness));
    far.stop();
}
