// End to end on a real kernel tty: the FCB-EV7310 controller on the termios
// serial port, the simulated VISCA block at the far end of a pseudo-terminal.
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "TestRoot.h"
#include "doubles/FakeGPIO.h"
#include "drivers/serial/FCBEV7310SenseController.h"
#include "platform/FsUtil.h"
#include "platform/SafePointer.h"
#include "platform/TermiosUARTController.h"
#include "visca/SimViscaModule.h"
#include "visca/SimViscaPty.h"

using namespace testutil;

namespace {
// The far end reads the line settings on its own thread: waits (bounded, in
// real time) until it has seen the given baud, so a loaded machine does not
// fail the check.
bool waitForLineBaud(SimViscaModule& module, int baud) {
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (module.getLineBaud() != baud && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return module.getLineBaud() == baud;
}
}  // namespace

TEST(ViscaOverPty, ControllerDrivesTheModuleThroughTheRealSerialPort) {
    TempRoot root;
    SimViscaModule module;
    SimViscaPty far(module);
    if (!far.start()) GTEST_SKIP() << "no pseudo-terminal";
    FsUtil::makeDirs(root.real("/dev"));
    ASSERT_EQ(0, ::symlink(far.slaveName().c_str(), root.real("/dev/ttyS1").c_str()));

    auto* port = new TermiosUARTController();
    SafePointer<IUARTController> uart(port);
    FCBEV7310SenseController ctl;
    ctl.setOperator(uart, SafePointer<IGPIO>(new FakeGPIO()));
    testing::internal::CaptureStdout();
    int init = ctl.initController(FCBEV7310SenseController::SensorType,
                                  ModuleConfigure(73, "RS485=/dev/ttyS1;isInfrared=1", "RS485=9600,8,1,0"));
    std::string out = testing::internal::GetCapturedStdout();
    ASSERT_EQ(1, init) << out;
    EXPECT_EQ(9600, module.getLineBaud());

    // Commands go through, acknowledged, and change the module's state.
    EXPECT_EQ(1, ctl.setMirror(2));
    EXPECT_EQ(0x02, module.valueOf(0x61).at(0));
    EXPECT_EQ(0x02, module.valueOf(0x66).at(0));
    int mirror = -1;
    EXPECT_EQ(1, ctl.getMirrorValue(mirror));
    EXPECT_EQ(2, mirror);

    // Zoom to 0x6000: the module moves, the position and ratio read back.
    ASSERT_EQ(1, ctl.setZoomValue(0x6000));
    int position = -1, ratio = -1;
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (std::chrono::steady_clock::now() < end) {
        ASSERT_EQ(1, ctl.getZoomValue(position, ratio));
        if (position == 0x6000) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_EQ(0x6000, position);
    EXPECT_EQ(2000, ratio);

    // The port at another baud than the module: nothing intelligible comes back.
    ASSERT_EQ(1, port->setParameter(ctl.getUARTPort(), 19200, 8, 1, 0));
    EXPECT_TRUE(waitForLineBaud(module, 19200)) << module.getLineBaud();
    int index = -1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl.getCameraBaudRate(index));
    out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("getCameraBaudRate szRecvBuf error"));
    ASSERT_EQ(1, port->setParameter(ctl.getUARTPort(), 9600, 8, 1, 0));
    ASSERT_TRUE(waitForLineBaud(module, 9600)) << module.getLineBaud();
    EXPECT_EQ(1, ctl.getCameraBaudRate(index));
    EXPECT_EQ(0, index);
    far.stop();
}
