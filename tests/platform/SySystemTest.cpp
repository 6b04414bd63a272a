#include "platform/SySystem.h"

#include <gtest/gtest.h>

#include <chrono>

#include "TestRoot.h"

using testutil::TempRoot;

TEST(SySystemTest, CopyMoveRemoveRunUnderTheRoot) {
    TempRoot root;
    root.write("/mnt/mtd/code/config_file/sensor_Factory.cfg", "(1,2)");
    EXPECT_EQ(sy_system("cp /mnt/mtd/code/config_file/sensor_Factory.cfg /mnt/mtd/code/config_file/sensor0.cfg", 30), 0);
    EXPECT_EQ(root.read("/mnt/mtd/code/config_file/sensor0.cfg"), "(1,2)");
    EXPECT_EQ(sy_system("mv /mnt/mtd/code/config_file/sensor0.cfg /mnt/mtd/code/config_file/sensor1.cfg", 30), 0);
    EXPECT_FALSE(root.exists("/mnt/mtd/code/config_file/sensor0.cfg"));
    EXPECT_EQ(root.read("/mnt/mtd/code/config_file/sensor1.cfg"), "(1,2)");
    EXPECT_EQ(sy_system("rm /mnt/mtd/code/config_file/sensor1.cfg", 30), 0);
    EXPECT_FALSE(root.exists("/mnt/mtd/code/config_file/sensor1.cfg"));
}

TEST(SySystemTest, FailuresOfTheBuiltinsAreReported) {
    TempRoot root;
    EXPECT_NE(sy_system("rm /mnt/none", 30), 0);
    EXPECT_EQ(sy_system("rm -f /mnt/none", 30), 0);
    EXPECT_NE(sy_system("cp /mnt/none /mnt/other", 30), 0);
    EXPECT_NE(sy_system("mv /mnt/none /mnt/other", 30), 0);
    EXPECT_NE(sy_system("", 30), 0);
    EXPECT_NE(sy_system(nullptr, 30), 0);
}

TEST(SySystemTest, CopyIntoADirectoryKeepsTheName) {
    TempRoot root;
    root.write("/a/file.cfg", "x");
    root.write("/b/keep", "");
    EXPECT_EQ(sy_system("cp /a/file.cfg /b", 30), 0);
    EXPECT_EQ(root.read("/b/file.cfg"), "x");
}

TEST(SySystemTest, ShellCommandsAreRefusedUnderATestRoot) {
    TempRoot root;
    testing::internal::CaptureStdout();
    EXPECT_NE(sy_system("echo hi > /tmp/should-not-exist", 30), 0);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("refused"), std::string::npos);
}

TEST(SySystemTest, ShellCommandRunsAndReportsItsStatus) {
    PlatformRoot::set("/");
    EXPECT_EQ(sy_system("true", 5), 0);
    EXPECT_EQ(sy_system("exit 3", 5), 3);
}

TEST(SySystemTest, CommandOutlivingItsLimitIsKilled) {
    PlatformRoot::set("/");
    auto start = std::chrono::steady_clock::now();
    testing::internal::CaptureStdout();
    int rc = sy_system("sleep 30", 1);
    std::string out = testing::internal::GetCapturedStdout();
    auto s = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start).count();
    EXPECT_NE(rc, 0);
    EXPECT_LT(s, 5);
    EXPECT_NE(out.find("killed"), std::string::npos);
}
