#include <gtest/gtest.h>

#include <cstddef>

#include "drivers/fisheye/KsiaDriver.h"

TEST(KsiaDriverTest, PreinitRecordLayout) {
    EXPECT_EQ(256u, sizeof(KsiaPreinitInfo));
    EXPECT_EQ(0u, offsetof(KsiaPreinitInfo, szHardwareModel));
    EXPECT_EQ(32u, offsetof(KsiaPreinitInfo, szHardwareCode));
    EXPECT_EQ(64u, offsetof(KsiaPreinitInfo, szHardwareDescription));
    EXPECT_EQ(128u, offsetof(KsiaPreinitInfo, szProductModel));
    EXPECT_EQ(192u, offsetof(KsiaPreinitInfo, szBarCode));
    EXPECT_EQ(224u, offsetof(KsiaPreinitInfo, szProductionTime));
    EXPECT_EQ(32u, sizeof(KsiaPreinitInfo::szProductionTime));
}

TEST(KsiaDriverTest, CommandNumbers) {
    EXPECT_EQ(0, KSIA_GET);
    EXPECT_EQ(1, KSIA_SET);
    EXPECT_EQ(20, KSIA_VIDEO_SYSTEM);
    EXPECT_EQ(49, KSIA_PICTURE_DAY_NIGHT);
    EXPECT_EQ(177, KSIA_NIGHT_SWITCH_BUSY);
    EXPECT_EQ(241, KSIA_SCENE_LEVEL);
    EXPECT_EQ(273, KSIA_ZOOM_INTERVAL);
    EXPECT_EQ(277, KSIA_FOCUS_MOVE);
    EXPECT_EQ(322, KSIA_ANTI_SHAKE);
}
