// An application runs a controller that it constructed itself through the
// manager: the same calls as for the factory's controllers.
#include <gtest/gtest.h>

#include <chrono>

#include "core/SensorControllerManager.h"
#include "doubles/ViscaRig.h"
#include "drivers/serial/FCBEV7310SenseController.h"
#include "drivers/serial/NoSensorUIController.h"
#include "platform/KSRuntimeError.h"

using namespace testutil;

TEST(OwnController, ManagerBringsUpTheApplicationsSerialController) {
    ViscaBench bench;
    auto* raw = new FCBEV7310SenseController();
    {
        SensorControllerManager manager;
        manager.setUARTController(bench.uart);
        manager.setGPIO(bench.gpio);
        manager.setSensorController(SafePointer<ISensorController>(raw));
        ModuleConfigure cfg(73, "RS485=/dev/ttyS1;isInfrared=1", "RS485=9600,8,1,0");
        testing::internal::CaptureStdout();
        runPumped([&] {
            manager.init(FCBEV7310SenseController::SensorType, VideoResolution(1920, 1080), cfg);
            return 0;
        });
        testing::internal::GetCapturedStdout();
        SafePointer<ISensorController> camera = manager.getSensorController();
        ASSERT_FALSE(camera.isNull());
        EXPECT_EQ(raw, camera.get());
        EXPECT_EQ(ISensorController::InitSuccess, camera->getSensorStatus());
        EXPECT_EQ(1, bench.gpioRaw->notifyCalls);
        EXPECT_EQ(bytesOf({0x81, 0x09, 0x04, 0x24, 0x00, 0xFF}), bench.module.receivedPackets().at(0));
        EXPECT_TRUE(camera->getDayNightThread().isRunning());
        camera.reset();  // the application's copies go first
    }
    // The manager stopped the worker and released the controller, then the GPIO and the port.
    EXPECT_EQ(1, bench.gpio.useCount());
    EXPECT_EQ(1, bench.uart.useCount());
}

TEST(OwnController, ModuleIdZeroStillRunsTheOwnController) {
    ViscaBench bench;
    SensorControllerManager manager;
    manager.setUARTController(bench.uart);
    manager.setGPIO(bench.gpio);
    auto* raw = new NoSensorUIController();
    manager.setSensorController(SafePointer<ISensorController>(raw));
    testing::internal::CaptureStdout();
    runPumped([&] {
        manager.init(NoSensorUIController::SensorType, VideoResolution(1920, 1080),
                     ModuleConfigure(0, "RS485=/dev/ttyS1", "RS485=9600,8,0,1"));
        return 0;
    });
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(raw, manager.getSensorController().get());
    EXPECT_EQ(ISensorController::InitSuccess, raw->getSensorStatus());
    EXPECT_TRUE(raw->getDNThread().isRunning());
    // A second init without a controller of its own goes back to the factory.
    // The first controller is held here, so that the new one cannot be made
    // at the address the first one was freed from.
    SafePointer<ISensorController> first = manager.getSensorController();
    testing::internal::CaptureStdout();
    runPumped([&] {
        manager.init(0, VideoResolution(1920, 1080), ModuleConfigure(0, "", ""));
        return 0;
    });
    testing::internal::GetCapturedStdout();
    EXPECT_NE(static_cast<ISensorController*>(raw), manager.getSensorController().get());
    EXPECT_EQ(0, manager.getSensorController()->getSensorType());
    EXPECT_FALSE(raw->getDayNightThread().isRunning());  // stopped by the manager before it let go
}

TEST(OwnController, EmptyControllerIsRefused) {
    SensorControllerManager manager;
    EXPECT_THROW(manager.setSensorController(SafePointer<ISensorController>()), KSRuntimeError);
}
