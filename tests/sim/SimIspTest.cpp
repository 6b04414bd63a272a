#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "TestRoot.h"
#include "drivers/fisheye/KsiaDriver.h"
#include "ksia/SimIsp.h"

namespace {

class SimIspTest : public ::testing::Test {
protected:
    void SetUp() override { SimIsp::instance().reset(); }
    void TearDown() override { SimIsp::instance().reset(); }

    static int set(int nCommand, int nValue) { return ksia_ioctrl(nCommand, KSIA_SET, &nValue); }
    static int get(int nCommand, int& nValue) { return ksia_ioctrl(nCommand, KSIA_GET, &nValue); }

    SimIsp& m_objIsp = SimIsp::instance();
};

}  // namespace

TEST_F(SimIspTest, AnswersDefaultsAndStoresSets) {
    int nValue = -7;
    ASSERT_EQ(0, get(KSIA_BRIGHTNESS, nValue));
    EXPECT_EQ(50, nValue);
    ASSERT_EQ(0, set(KSIA_BRIGHTNESS, 80));
    ASSERT_EQ(0, get(KSIA_BRIGHTNESS, nValue));
    EXPECT_EQ(80, nValue);
    EXPECT_EQ(80, m_objIsp.value(KSIA_BRIGHTNESS));
    // Other commands keep their own values.
    ASSERT_EQ(0, get(KSIA_CONTRAST, nValue));
    EXPECT_EQ(50, nValue);
    ASSERT_EQ(0, get(KSIA_DTN_THRESHOLD, nValue));
    EXPECT_EQ(70, nValue);
    ASSERT_EQ(0, get(KSIA_NTD_THRESHOLD, nValue));
    EXPECT_EQ(30, nValue);
}

TEST_F(SimIspTest, RecordsEveryCall) {
    int nValue = 0;
    set(KSIA_SATURATION, 33);
    get(KSIA_SATURATION, nValue);
    set(KSIA_SATURATION, 101);
    std::vector<SimIsp::Call> vecCalls = m_objIsp.calls();
    ASSERT_EQ(3u, vecCalls.size());
    EXPECT_EQ(KSIA_SATURATION, vecCalls[0].nCommand);
    EXPECT_EQ(KSIA_SET, vecCalls[0].nDirection);
    EXPECT_EQ(33, vecCalls[0].nValueIn);
    EXPECT_EQ(0, vecCalls[0].nResult);
    EXPECT_EQ(KSIA_GET, vecCalls[1].nDirection);
    EXPECT_EQ(33, vecCalls[1].nValueOut);
    EXPECT_EQ(101, vecCalls[2].nValueIn);
    EXPECT_EQ(SimIsp::ErrOutOfRange, vecCalls[2].nResult);
    EXPECT_EQ(3, m_objIsp.callCount(KSIA_SATURATION));
    EXPECT_EQ(2, m_objIsp.callCount(KSIA_SATURATION, KSIA_SET));
    EXPECT_EQ(1, m_objIsp.callCount(KSIA_SATURATION, KSIA_GET));
    EXPECT_EQ(0, m_objIsp.callCount(KSIA_CONTRAST));
    int nLast = 0;
    ASSERT_TRUE(m_objIsp.lastSet(KSIA_SATURATION, nLast));
    EXPECT_EQ(33, nLast);  // the refused 101 is not a successful set
    EXPECT_FALSE(m_objIsp.lastSet(KSIA_CONTRAST, nLast));
    m_objIsp.clearCalls();
    EXPECT_TRUE(m_objIsp.calls().empty());
    EXPECT_EQ(33, m_objIsp.value(KSIA_SATURATION));
}

TEST_F(SimIspTest, RefusesValuesOutOfRange) {
    EXPECT_EQ(SimIsp::ErrOutOfRange, set(KSIA_BRIGHTNESS, -1));
    EXPECT_EQ(SimIsp::ErrOutOfRange, set(KSIA_BRIGHTNESS, 101));
    EXPECT_EQ(50, m_objIsp.value(KSIA_BRIGHTNESS));
    EXPECT_EQ(0, set(KSIA_BRIGHTNESS, 0));
    EXPECT_EQ(0, set(KSIA_BRIGHTNESS, 100));
    EXPECT_EQ(0, set(KSIA_MAX_SHUTTER, 18));
    EXPECT_EQ(SimIsp::ErrOutOfRange, set(KSIA_MAX_SHUTTER, 19));
    EXPECT_EQ(SimIsp::ErrOutOfRange, set(KSIA_VIDEO_SYSTEM, 2));
    EXPECT_EQ(SimIsp::ErrOutOfRange, set(KSIA_PICTURE_DAY_NIGHT, 0));
    EXPECT_EQ(SimIsp::ErrOutOfRange, set(KSIA_SMART_IR_MODE, 0));
    EXPECT_EQ(0, set(KSIA_SMART_IR_MODE, 2));
    EXPECT_EQ(SimIsp::ErrOutOfRange, set(KSIA_ZOOM_INTERVAL, 5));
    EXPECT_EQ(SimIsp::ErrOutOfRange, set(KSIA_ZOOM_MOVE, 6));
    EXPECT_EQ(0, set(KSIA_FOCUS_MOVE, 6));
    EXPECT_EQ(SimIsp::ErrOutOfRange, set(KSIA_FOCUS_MOVE, 7));
    // Unchecked commands take anything.
    EXPECT_EQ(0, set(KSIA_BLC_MODE, -5));
    EXPECT_EQ(0, set(KSIA_FOCUS_INTERVAL, 100000));
    EXPECT_EQ(0, set(KSIA_ANTI_SHAKE, -1));
    EXPECT_EQ(-1, m_objIsp.value(KSIA_ANTI_SHAKE));

    EXPECT_TRUE(SimIsp::isAccepted(KSIA_MIRROR, 3));
    EXPECT_FALSE(SimIsp::isAccepted(KSIA_MIRROR, 4));
    EXPECT_FALSE(SimIsp::isAccepted(KSIA_SCENE_LEVEL, 1));
    EXPECT_FALSE(SimIsp::isAccepted(999, 1));
}

TEST_F(SimIspTest, RefusesMalformedCalls) {
    int nValue = 12;
    EXPECT_EQ(SimIsp::ErrUnknownCommand, ksia_ioctrl(999, KSIA_GET, &nValue));
    EXPECT_EQ(12, nValue);
    EXPECT_EQ(SimIsp::ErrUnknownCommand, ksia_ioctrl(0, KSIA_SET, &nValue));
    EXPECT_EQ(SimIsp::ErrNullValue, ksia_ioctrl(KSIA_BRIGHTNESS, KSIA_GET, nullptr));
    EXPECT_EQ(SimIsp::ErrDirection, ksia_ioctrl(KSIA_BRIGHTNESS, 2, &nValue));
    EXPECT_EQ(SimIsp::ErrReadOnly, set(KSIA_SCENE_LEVEL, 3));
    EXPECT_EQ(SimIsp::ErrReadOnly, set(KSIA_NIGHT_SWITCH_BUSY, 1));
    std::vector<SimIsp::Call> vecCalls = m_objIsp.calls();
    ASSERT_EQ(6u, vecCalls.size());
    EXPECT_FALSE(vecCalls[2].bHasValue);
    EXPECT_TRUE(vecCalls[3].bHasValue);
    EXPECT_FALSE(SimIsp::isKnownCommand(999));
    EXPECT_TRUE(SimIsp::isGetOnly(KSIA_SCENE_LEVEL));
    EXPECT_FALSE(SimIsp::isGetOnly(KSIA_BRIGHTNESS));
}

TEST_F(SimIspTest, SceneLevel) {
    int nLevel = -1;
    ASSERT_EQ(0, get(KSIA_SCENE_LEVEL, nLevel));
    EXPECT_EQ(SimIsp::DefaultSceneLevel, nLevel);
    m_objIsp.setSceneLevel(85);
    ASSERT_EQ(0, get(KSIA_SCENE_LEVEL, nLevel));
    EXPECT_EQ(85, nLevel);
    EXPECT_EQ(85, m_objIsp.sceneLevel());
}

TEST_F(SimIspTest, NightSwitchKeepsBusyFlagForSwitchTime) {
    testutil::VirtualClock objClock;
    m_objIsp.setNightSwitchBusyMs(500);
    int nBusy = -1;
    ASSERT_EQ(0, get(KSIA_NIGHT_SWITCH_BUSY, nBusy));
    EXPECT_EQ(0, nBusy);

    ASSERT_EQ(0, set(KSIA_PICTURE_DAY_NIGHT, 2));
    EXPECT_TRUE(m_objIsp.isNightSwitchBusy());
    ASSERT_EQ(0, get(KSIA_NIGHT_SWITCH_BUSY, nBusy));
    EXPECT_EQ(1, nBusy);
    objClock.advance(499);
    ASSERT_EQ(0, get(KSIA_NIGHT_SWITCH_BUSY, nBusy));
    EXPECT_EQ(1, nBusy);
    objClock.advance(1);
    ASSERT_EQ(0, get(KSIA_NIGHT_SWITCH_BUSY, nBusy));
    EXPECT_EQ(0, nBusy);
    EXPECT_FALSE(m_objIsp.isNightSwitchBusy());

    // A day switch starts no busy period.
    ASSERT_EQ(0, set(KSIA_PICTURE_DAY_NIGHT, 1));
    ASSERT_EQ(0, get(KSIA_NIGHT_SWITCH_BUSY, nBusy));
    EXPECT_EQ(0, nBusy);

    // A second night switch starts a new period.
    ASSERT_EQ(0, set(KSIA_PICTURE_DAY_NIGHT, 2));
    objClock.advance(200);
    ASSERT_EQ(0, get(KSIA_NIGHT_SWITCH_BUSY, nBusy));
    EXPECT_EQ(1, nBusy);
}

TEST_F(SimIspTest, ZeroSwitchTimeIsNeverBusyAndStuckFlagStaysBusy) {
    testutil::VirtualClock objClock;
    m_objIsp.setNightSwitchBusyMs(0);
    ASSERT_EQ(0, set(KSIA_PICTURE_DAY_NIGHT, 2));
    int nBusy = -1;
    ASSERT_EQ(0, get(KSIA_NIGHT_SWITCH_BUSY, nBusy));
    EXPECT_EQ(0, nBusy);

    m_objIsp.setValue(KSIA_NIGHT_SWITCH_BUSY, 1);
    objClock.advance(10000);
    ASSERT_EQ(0, get(KSIA_NIGHT_SWITCH_BUSY, nBusy));
    EXPECT_EQ(1, nBusy);
    EXPECT_TRUE(m_objIsp.isNightSwitchBusy());
}

TEST_F(SimIspTest, FailedCommandChangesNothing) {
    m_objIsp.failCommand(KSIA_CONTRAST, 0x55);
    EXPECT_EQ(0x55, set(KSIA_CONTRAST, 10));
    EXPECT_EQ(50, m_objIsp.value(KSIA_CONTRAST));
    int nValue = -3;
    EXPECT_EQ(0x55, get(KSIA_CONTRAST, nValue));
    EXPECT_EQ(-3, nValue);
    EXPECT_EQ(0x55, set(KSIA_CONTRAST, 10));
    // Other commands are unaffected.
    EXPECT_EQ(0, set(KSIA_BRIGHTNESS, 10));
    m_objIsp.clearFailure(KSIA_CONTRAST);
    EXPECT_EQ(0, set(KSIA_CONTRAST, 10));
    EXPECT_EQ(10, m_objIsp.value(KSIA_CONTRAST));
}

TEST_F(SimIspTest, FailureForANumberOfCalls) {
    m_objIsp.failCommand(KSIA_MIRROR, SimIsp::ErrInjected, 2);
    EXPECT_EQ(SimIsp::ErrInjected, set(KSIA_MIRROR, 1));
    EXPECT_EQ(SimIsp::ErrInjected, set(KSIA_MIRROR, 1));
    EXPECT_EQ(0, set(KSIA_MIRROR, 1));
    EXPECT_EQ(1, m_objIsp.value(KSIA_MIRROR));

    m_objIsp.failCommand(KSIA_MIRROR);
    m_objIsp.failCommand(KSIA_DEFOG);
    m_objIsp.clearFailures();
    EXPECT_EQ(0, set(KSIA_MIRROR, 2));
    EXPECT_EQ(0, set(KSIA_DEFOG, 1));
}

TEST_F(SimIspTest, InjectedFailureOfUnknownCommandUsesGivenCode) {
    m_objIsp.failCommand(4242, 0x77);
    int nValue = 0;
    EXPECT_EQ(0x77, ksia_ioctrl(4242, KSIA_GET, &nValue));
}

TEST_F(SimIspTest, ForcedValueIsAnsweredPastTheRange) {
    m_objIsp.setValue(KSIA_ZOOM_INTERVAL, 5);
    int nValue = 0;
    ASSERT_EQ(0, get(KSIA_ZOOM_INTERVAL, nValue));
    EXPECT_EQ(5, nValue);
    m_objIsp.setValue(999, 1);
    EXPECT_FALSE(m_objIsp.getValue(999, nValue));
    EXPECT_EQ(-1, m_objIsp.value(999));
}

TEST_F(SimIspTest, PreinitKeepsTheRecord) {
    EXPECT_EQ(0, m_objIsp.preinitCount());
    KsiaPreinitInfo objInfo;
    std::memset(&objInfo, 0, sizeof(objInfo));
    std::strcpy(objInfo.szHardwareModel, "S2-FE");
    std::strcpy(objInfo.szProductModel, "FE-360");
    std::strcpy(objInfo.szProductionTime, "2025-11-02");
    EXPECT_EQ(0, ksia_preinit(&objInfo));
    EXPECT_EQ(1, m_objIsp.preinitCount());
    KsiaPreinitInfo objSeen = m_objIsp.preinitInfo();
    EXPECT_STREQ("S2-FE", objSeen.szHardwareModel);
    EXPECT_STREQ("FE-360", objSeen.szProductModel);
    EXPECT_STREQ("2025-11-02", objSeen.szProductionTime);
    EXPECT_STREQ("", objSeen.szBarCode);
    EXPECT_NE(0, ksia_preinit(nullptr));
    EXPECT_EQ(2, m_objIsp.preinitCount());
}

TEST_F(SimIspTest, ResetRestoresPowerOnState) {
    testutil::VirtualClock objClock;
    set(KSIA_BRIGHTNESS, 1);
    m_objIsp.setSceneLevel(99);
    m_objIsp.failCommand(KSIA_SHARPNESS);
    m_objIsp.setNightSwitchBusyMs(100000);
    set(KSIA_PICTURE_DAY_NIGHT, 2);
    KsiaPreinitInfo objInfo{};
    ksia_preinit(&objInfo);
    m_objIsp.reset();
    EXPECT_EQ(50, m_objIsp.value(KSIA_BRIGHTNESS));
    EXPECT_EQ(SimIsp::DefaultSceneLevel, m_objIsp.sceneLevel());
    EXPECT_EQ(1, m_objIsp.value(KSIA_PICTURE_DAY_NIGHT));
    EXPECT_FALSE(m_objIsp.isNightSwitchBusy());
    EXPECT_EQ(0, set(KSIA_SHARPNESS, 5));
    EXPECT_EQ(0, m_objIsp.preinitCount());
    EXPECT_EQ(1u, m_objIsp.calls().size());
}

TEST_F(SimIspTest, ConcurrentCallersAreAllRecorded) {
    const int nPerThread = 500;
    std::vector<std::thread> vecThreads;
    for (int t = 0; t < 4; ++t) {
        vecThreads.emplace_back([t]() {
            for (int i = 0; i < nPerThread; ++i) {
                int nValue = (t * 7 + i) % 101;
                ksia_ioctrl(KSIA_BRIGHTNESS + t, KSIA_SET, &nValue);
            }
        });
    }
    for (std::thread& objThread : vecThreads) {
        objThread.join();
    }
    EXPECT_EQ(4u * nPerThread, m_objIsp.calls().size());
    for (int t = 0; t < 4; ++t) {
        EXPECT_EQ(nPerThread, m_objIsp.callCount(KSIA_BRIGHTNESS + t, KSIA_SET));
        EXPECT_EQ((t * 7 + nPerThread - 1) % 101, m_objIsp.value(KSIA_BRIGHTNESS + t));
    }
}
