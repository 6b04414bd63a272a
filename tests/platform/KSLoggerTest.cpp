#include "platform/KSLogger.h"

#include <gtest/gtest.h>

#include "TestRoot.h"

using testutil::TempRoot;

TEST(KSLoggerTest, LinesCarryTimeStampAndTag) {
    TempRoot root;
    testutil::VirtualClock clock(9, 5, 7);
    KSLogger log;
    ASSERT_TRUE(log.init("/mnt/mtd/log/Test.log", 10240, 3));
    EXPECT_TRUE(log.writeLog("SensorError", "something failed"));
    std::string content = root.read("/mnt/mtd/log/Test.log");
    EXPECT_NE(content.find("09:05:07"), std::string::npos);
    EXPECT_NE(content.find("[SensorError] something failed\n"), std::string::npos);
}

TEST(KSLoggerTest, RotatesAtTheSizeAndKeepsAtMostCountFiles) {
    TempRoot root;
    KSLogger log;
    ASSERT_TRUE(log.init("/mnt/mtd/log/R.log", 200, 3));
    for (int i = 0; i < 40; ++i) {
        std::string msg = "message number " + std::to_string(i);
        log.writeLog("T", msg.c_str());
    }
    EXPECT_TRUE(root.exists("/mnt/mtd/log/R.log"));
    EXPECT_TRUE(root.exists("/mnt/mtd/log/R.log.1"));
    EXPECT_TRUE(root.exists("/mnt/mtd/log/R.log.2"));
    EXPECT_FALSE(root.exists("/mnt/mtd/log/R.log.3"));
    EXPECT_LE(root.read("/mnt/mtd/log/R.log").size(), 200u);
    EXPECT_LE(root.read("/mnt/mtd/log/R.log.1").size(), 200u);
    EXPECT_NE(root.read("/mnt/mtd/log/R.log").find("message number 39"), std::string::npos);
    EXPECT_EQ(root.read("/mnt/mtd/log/R.log.2").find("message number 0\n"), std::string::npos);
}

TEST(KSLoggerTest, UnwritableLogNeverFailsHard) {
    TempRoot root;
    root.write("/mnt/blocker", "a file where a directory should be");
    KSLogger log;
    EXPECT_FALSE(log.init("/mnt/blocker/x.log", 100, 2));
    EXPECT_FALSE(log.writeLog("T", "lost"));
    KSLogger uninitialised;
    EXPECT_FALSE(uninitialised.writeLog("T", "lost"));
    EXPECT_FALSE(uninitialised.writeLog(nullptr, nullptr));
}

TEST(KSLoggerTest, OverlongLineIsCut) {
    TempRoot root;
    KSLogger log;
    ASSERT_TRUE(log.init("/log/L.log", 64, 2));
    log.writeLog("T", std::string(500, 'x').c_str());
    EXPECT_LE(root.read("/log/L.log").size(), 64u);
}

TEST(KSLoggerConsoleTest, ConsoleLinesCanBeSwitchedOffAndOn) {
    ASSERT_TRUE(KSLogger::isConsoleEnabled());
    testing::internal::CaptureStdout();
    EXPECT_EQ(KSLogger::consolePrintf("a%d\n", 1), 3);
    KSLogger::setConsoleEnabled(false);
    EXPECT_FALSE(KSLogger::isConsoleEnabled());
    EXPECT_EQ(KSLogger::consolePrintf("b%d\n", 2), 0);
    EXPECT_EQ(KSLogger::consolePuts("c"), 0);
    KSLogger::setConsoleEnabled(true);
    EXPECT_GE(KSLogger::consolePuts("d"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a1\nd\n");
}
