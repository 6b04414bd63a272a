#include <gtest/gtest.h>

#include "TestRoot.h"
#include "adc/SimAdc.h"
#include "drivers/fisheye/AdcDevice.h"
#include "drivers/fisheye/AdcReader.h"

namespace {

class SimAdcTest : public ::testing::Test {
protected:
    void SetUp() override {
        SimAdc::instance().reset();
        SimAdc::install();
    }
    void TearDown() override {
        SimAdc::uninstall();
        SimAdc::instance().reset();
    }

    static bool readWithOutput(AdcReader& objReader, int& nValue, std::string& strOutput) {
        ::testing::internal::CaptureStdout();
        bool bRet = objReader.read(nValue);
        strOutput = ::testing::internal::GetCapturedStdout();
        return bRet;
    }

    SimAdc& m_objAdc = SimAdc::instance();
};

}  // namespace

TEST_F(SimAdcTest, ReaderOpensSimulatedDeviceAndReadsChannelOne) {
    m_objAdc.setReading(857);
    {
        AdcReader objReader;
        ASSERT_TRUE(objReader.isOpen());
        EXPECT_EQ(1, m_objAdc.openCount());
        EXPECT_EQ(1, m_objAdc.openDescriptors());
        EXPECT_EQ("/dev/adc", m_objAdc.lastOpenPath());
        int nValue = -1;
        std::string strOutput;
        ASSERT_TRUE(readWithOutput(objReader, nValue, strOutput));
        EXPECT_EQ(857, nValue);
        EXPECT_EQ("", strOutput);
        EXPECT_EQ(1, m_objAdc.lastChannel());
        EXPECT_EQ(0xC004677FUL, m_objAdc.lastRequest());

        m_objAdc.setPercent(100);
        ASSERT_TRUE(objReader.read(nValue));
        EXPECT_EQ(SimAdc::FullScale, nValue);
        m_objAdc.setPercent(30);
        ASSERT_TRUE(objReader.read(nValue));
        EXPECT_EQ(514, nValue);
        EXPECT_EQ(3, m_objAdc.requestCount());
        // One open for the reader's whole life.
        EXPECT_EQ(1, m_objAdc.openCount());
        EXPECT_EQ(0, m_objAdc.closeCount());
    }
    EXPECT_EQ(1, m_objAdc.closeCount());
    EXPECT_EQ(0, m_objAdc.openDescriptors());
}

TEST_F(SimAdcTest, FailedOpenReportsOnEveryRead) {
    m_objAdc.setOpenFails(true);
    AdcReader objReader;
    EXPECT_FALSE(objReader.isOpen());
    int nValue = 42;
    std::string strOutput;
    EXPECT_FALSE(readWithOutput(objReader, nValue, strOutput));
    EXPECT_EQ("open adc fail ", strOutput);
    EXPECT_EQ(42, nValue);
    EXPECT_EQ(0, m_objAdc.requestCount());
    // The failed open is not retried by a later read.
    m_objAdc.setOpenFails(false);
    EXPECT_FALSE(readWithOutput(objReader, nValue, strOutput));
    EXPECT_EQ(1, m_objAdc.openCount());
}

TEST_F(SimAdcTest, FailedOpenIsNotClosed) {
    m_objAdc.setOpenFails(true);
    { AdcReader objReader; }
    EXPECT_EQ(0, m_objAdc.closeCount());
}

TEST_F(SimAdcTest, FailedRequestReportsAndLeavesOutput) {
    AdcReader objReader;
    m_objAdc.setRequestFails(true);
    int nValue = 42;
    std::string strOutput;
    EXPECT_FALSE(readWithOutput(objReader, nValue, strOutput));
    EXPECT_EQ("enable the adc ADC_GET_DATA error  ", strOutput);
    EXPECT_EQ(42, nValue);
    m_objAdc.setRequestFails(false);
    m_objAdc.setReading(10);
    EXPECT_TRUE(readWithOutput(objReader, nValue, strOutput));
    EXPECT_EQ(10, nValue);
}

TEST_F(SimAdcTest, SimulationRefusesOtherRequestsAndChannels) {
    int32_t nChannel = 2, nValue = 0;
    int nFd = m_objAdc.open("/dev/adc");
    ASSERT_GE(nFd, 0);
    EXPECT_NE(0, m_objAdc.request(nFd, AdcDevice::GetDataRequest, &nChannel, &nValue));
    nChannel = 1;
    EXPECT_NE(0, m_objAdc.request(nFd, 0x1234, &nChannel, &nValue));
    EXPECT_EQ(0, m_objAdc.request(nFd, AdcDevice::GetDataRequest, &nChannel, &nValue));
    EXPECT_EQ(SimAdc::DefaultReading, nValue);
    m_objAdc.close(nFd);
    EXPECT_LT(m_objAdc.open("/dev/other"), 0);
}

TEST_F(SimAdcTest, UninstallRestoresBoardDevice) {
    testutil::TempRoot objRoot;
    SimAdc::uninstall();
    // The board device resolves under the platform root, where the test root
    // has no device: the open fails without reaching the simulation.
    AdcReader objReader;
    EXPECT_FALSE(objReader.isOpen());
    EXPECT_EQ(0, m_objAdc.openCount());
}
