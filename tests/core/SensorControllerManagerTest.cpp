#include "core/SensorControllerManager.h"

#include <gtest/gtest.h>

#include "TestRoot.h"
#include "core/NullSenseController.h"
#include "core/SenseControllerFactory.h"
#include "doubles/ControllerFixture.h"
#include "doubles/FakeGPIO.h"
#include "doubles/FakeUART.h"
#include "drivers/fisheye/S2FisheyeSenseController.h"
#include "platform/GlobalEnv.h"
#include "platform/KSRuntimeError.h"

namespace {
struct PrintFlag {
    explicit PrintFlag(bool on) { GlobalEnv::getInstance()->setPrintFlag(on); }
    ~PrintFlag() { GlobalEnv::getInstance()->setPrintFlag(false); }
};
}  // namespace

TEST(SenseControllerFactoryTest, ModuleIdSelectsTheController) {
    PrintFlag flag(true);
    testing::internal::CaptureStdout();
    SafePointer<ISensorController> c = SenseControllerFactory::create(88);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "SenseController: SensorType = 88\n");
    EXPECT_NE(dynamic_cast<S2FisheyeSenseController*>(c.get()), nullptr);
    EXPECT_EQ(c->getSensorType(), 88);
    for (int type : {0, 5, 17, -1}) {
        SafePointer<ISensorController> n = SenseControllerFactory::create(type);
        EXPECT_NE(dynamic_cast<NullSenseController*>(n.get()), nullptr) << type;
        EXPECT_EQ(n->getSensorType(), 0);
    }
}

TEST(SenseControllerFactoryTest, SilentWithoutThePrintFlag) {
    PrintFlag flag(false);
    testing::internal::CaptureStdout();
    SafePointer<ISensorController> c = SenseControllerFactory::create(5);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(SensorControllerManagerTest, BeforeInitGettersFailAndVideoSystemThrows) {
    PrintFlag flag(true);
    SensorControllerManager m;
    int v = 3;
    testing::internal::CaptureStdout();
    EXPECT_EQ(m.getMirrorValue(v), 0);
    EXPECT_EQ(m.getStillImageValue(v), 0);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("SensorControllerManager::getMirrorValue:m_pSensorController is NULL"), std::string::npos);
    EXPECT_NE(out.find("SensorControllerManager::getStillImageValue:m_pSensorController is NULL"), std::string::npos);
    EXPECT_EQ(v, 3);
    EXPECT_TRUE(m.getSensorController().isNull());
    testing::internal::CaptureStdout();
    try {
        m.updateSensorVideoSystem(1, VideoResolution(1920, 1080));
        ADD_FAILURE() << "expected a safe-pointer error";
    } catch (const KSRuntimeError& e) {
        EXPECT_NE(std::string(e.what()).find("Use NULL pointer ->"), std::string::npos);
    }
    testing::internal::GetCapturedStdout();
}

TEST(SensorControllerManagerTest, EmptyPointersCannotBeAssigned) {
    SensorControllerManager m;
    testing::internal::CaptureStdout();
    EXPECT_THROW(m.setUARTController(SafePointer<IUARTController>()), KSRuntimeError);
    EXPECT_THROW(m.setGPIO(SafePointer<IGPIO>()), KSRuntimeError);
    testing::internal::GetCapturedStdout();
}

TEST(SensorControllerManagerTest, ModuleIdZeroBuildsAnUninitialisedNullController) {
    testutil::TempRoot root;
    PrintFlag flag(true);
    FakeGPIO* gpio = new FakeGPIO();
    SensorControllerManager m;
    m.setGPIO(SafePointer<IGPIO>(gpio));
    m.setUARTController(SafePointer<IUARTController>(new FakeUART()));
    testing::internal::CaptureStdout();
    m.init(0, VideoResolution(1920, 1080), ModuleConfigure(0, "", ""));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, "SenseController: SensorType = 0\n");
    SafePointer<ISensorController> c = m.getSensorController();
    ASSERT_FALSE(c.isNull());
    EXPECT_NE(dynamic_cast<NullSenseController*>(c.get()), nullptr);
    EXPECT_EQ(c->getSensorStatus(), ISensorController::NotInitialised);
    EXPECT_FALSE(c->isInitialised());
    EXPECT_EQ(gpio->notifyCalls, 0);
    EXPECT_FALSE(root.exists("/mnt/mtd/log/SensorError.log"));  // init never ran
}

TEST(SensorControllerManagerTest, UnknownModuleIdInitialisesANullControllerThatFails) {
    testutil::TempRoot root;
    testutil::VirtualClock clock;
    PrintFlag flag(true);
    FakeGPIO* gpio = new FakeGPIO();
    SensorControllerManager m;
    m.setGPIO(SafePointer<IGPIO>(gpio));
    m.setUARTController(SafePointer<IUARTController>(new FakeUART()));
    testing::internal::CaptureStdout();
    m.init(5, VideoResolution(1920, 1080), ModuleConfigure(5, "", ""));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("SensorControllerManager::initController error"), std::string::npos);
    EXPECT_EQ(gpio->notifyCalls, 0);
    EXPECT_NE(root.read("/mnt/mtd/log/SensorError.log").find("initController failed"), std::string::npos);
    EXPECT_EQ(m.getSensorController()->getSensorStatus(), 1);
}

TEST(SensorControllerManagerTest, ControllerOutlivesTheManagerWhileShared) {
    testutil::TempRoot root;
    SafePointer<ISensorController> kept;
    {
        SensorControllerManager m;
        m.init(0, VideoResolution(1, 1), ModuleConfigure(0, "", ""));
        kept = m.getSensorController();
    }
    int v = 0;
    EXPECT_EQ(kept->getNearLight(v), 1);
    EXPECT_EQ(v, 50);
}
