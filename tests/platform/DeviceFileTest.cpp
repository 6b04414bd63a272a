#include <gtest/gtest.h>

#include "TestRoot.h"
#include "platform/DeviceFile.h"

TEST(DeviceFileTest, OpensUnderThePlatformRoot) {
    testutil::TempRoot objRoot;
    EXPECT_LT(DeviceFile::openReadOnly("/dev/adc"), 0);
    objRoot.write("/dev/adc", "x");
    int nFd = DeviceFile::openReadOnly("/dev/adc");
    ASSERT_GE(nFd, 0);
    DeviceFile::close(nFd);
}

TEST(DeviceFileTest, RequestOnAPlainFileFails) {
    testutil::TempRoot objRoot;
    objRoot.write("/dev/adc", "");
    int nFd = DeviceFile::openReadOnly("/dev/adc");
    ASSERT_GE(nFd, 0);
    int anRecord[2] = {1, 0};
    EXPECT_EQ(-1, DeviceFile::ioctl(nFd, 0xC004677FUL, anRecord));
    DeviceFile::close(nFd);
    EXPECT_EQ(-1, DeviceFile::ioctl(-1, 0xC004677FUL, anRecord));
    DeviceFile::close(-1);
}
