// End to end on a real kernel tty: the CMD7200 (ASCII register) and Effio
// controllers on the termios serial port, their simulated module at the far end
// of a pseudo-terminal.
#include <unistd.h>

#include <gtest/gtest.h>

#include <string>

#include "TestRoot.h"
#include "ascii/SimAsciiModule.h"
#include "doubles/FakeGPIO.h"
#include "drivers/serial/CMD7200SenseController.h"
#include "drivers/serial/EffioSenseController.h"
#include "effio/SimEffioProcessor.h"
#include "line/SimSerialPty.h"
#include "platform/FsUtil.h"
#include "platform/SafePointer.h"
#include "platform/TermiosUARTController.h"

using namespace testutil;

TEST(AsciiOverPty, TheCMD7200ControllerWritesAndReadsRegisters) {
    TempRoot root;
    SimAsciiModule module;
    module.setProfile(SimAsciiModule::profile("CMD7200"));
    SimSerialPty far(module);
    if (!far.start()) GTEST_SKIP() << "no pseudo-terminal";
    FsUtil::makeDirs(root.real("/dev"));
    ASSERT_EQ(0, ::symlink(far.slaveName().c_str(), root.real("/dev/ttyS1").c_str()));

    CMD7200SenseController ctl;
    ctl.setOperator(SafePointer<IUARTController>(new TermiosUARTController()), SafePointer<IGPIO>(new FakeGPIO()));
    testing::internal::CaptureStdout();
    int init = ctl.initController(CMD7200SenseController::SensorType,
                                  ModuleConfigure(84, "RS485=/dev/ttyS1;isInfrared=0", "RS485=9600,8,1,0"));
    std::string out = testing::internal::GetCapturedStdout();
    ASSERT_EQ(1, init) << out;
    EXPECT_EQ(":R0210", module.receivedCommands().at(0));
    EXPECT_EQ(1, ctl.sendData(":w022003E8"));
    EXPECT_EQ(1000, module.registerValue(0x0220));
    int value = -1;
    EXPECT_EQ(1, ctl.recvData(":r02200000", 10, value));
    EXPECT_EQ(1000, value);
    far.stop();
}

TEST(EffioOverPty, TheEffioControllerWritesAndReadsTheStore) {
    TempRoot root;
    SimEffioProcessor processor;
    SimSerialPty far(processor);
    if (!far.start()) GTEST_SKIP() << "no pseudo-terminal";
    FsUtil::makeDirs(root.real("/dev"));
    ASSERT_EQ(0, ::symlink(far.slaveName().c_str(), root.real("/dev/ttyS1").c_str()));

    EffioSenseController ctl;
    ctl.setOperator(SafePointer<IUARTController>(new TermiosUARTController()), SafePointer<IGPIO>(new FakeGPIO()));
    testing::internal::CaptureStdout();
    int init = ctl.initController(EffioSenseController::SensorType,
                                  ModuleConfigure(85, "RS485=/dev/ttyS1;isInfrared=0", "RS485=9600,8,1,0"));
    std::string out = testing::internal::GetCapturedStdout();
    ASSERT_EQ(1, init) << out;
    EXPECT_NE(std::string::npos, out.find("Effio version 1.2"));
    const unsigned char agcLimit[2] = {0x03, 0x21};
    EXPECT_EQ(1, ctl.setParameters(3, 3, agcLimit, 2));
    EXPECT_EQ(0x03, processor.byteAt(3, 3));
    EXPECT_EQ(0x21, processor.byteAt(3, 4));
    unsigned char back[2] = {0, 0};
    EXPECT_EQ(1, ctl.getParameters(3, 3, 2, back));
    EXPECT_EQ(0x21, back[1]);
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, ctl.setParameters(9, 0, agcLimit, 1));
    out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("setParameters::send command failed (Category number error)"));
    far.stop();
}
