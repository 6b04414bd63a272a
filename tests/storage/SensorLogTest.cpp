#include "storage/SensorLog.h"

#include <gtest/gtest.h>

#include "TestRoot.h"

TEST(SensorLogTest, MirrorsToStandardOutputAndWritesTheLog) {
    testutil::TempRoot root;
    SensorLog log;
    ASSERT_EQ(log.init("/mnt/mtd/log/SensorError.log", 10240, 3), 1);
    testing::internal::CaptureStdout();
    EXPECT_EQ(log.WriteSensorLog("SensorError", "initController failed"), 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "initController failed\n");
    EXPECT_NE(root.read("/mnt/mtd/log/SensorError.log").find("[SensorError] initController failed"), std::string::npos);
}

TEST(SensorLogTest, PrintsEvenWhenTheLogCannotBeWritten) {
    testutil::TempRoot root;
    root.write("/mnt/mtd/log", "a file in the way");
    SensorLog log;
    EXPECT_EQ(log.init("/mnt/mtd/log/SensorError.log", 10240, 3), 0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(log.WriteSensorLog("SensorError", "still shown"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "still shown\n");
}
