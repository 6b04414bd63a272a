#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TestRoot.h"
#include "drivers/fisheye/AdcReader.h"

namespace {

// A device that records what the reader asks of it.
struct DeviceLog {
    std::vector<std::string> vecOpened;
    std::vector<int> vecClosed;
    int nRequests = 0;
    unsigned long ulRequest = 0;
    AdcDevice::Record objSeen{-1, -1};
};

class FakeDevice : public AdcDevice {
public:
    FakeDevice(DeviceLog& objLog, int nFd, int nResult, int nReading)
        : m_objLog(objLog), m_nFd(nFd), m_nResult(nResult), m_nReading(nReading) {}
    int openDevice(const std::string& strPath) override {
        m_objLog.vecOpened.push_back(strPath);
        return m_nFd;
    }
    int request(int nFd, unsigned long ulRequest, Record* pRecord) override {
        ++m_objLog.nRequests;
        m_objLog.ulRequest = ulRequest;
        m_objLog.objSeen = *pRecord;
        if (nFd != m_nFd) {
            return -1;
        }
        if (m_nResult == 0) {
            pRecord->nValue = m_nReading;
        }
        return m_nResult;
    }
    void closeDevice(int nFd) override { m_objLog.vecClosed.push_back(nFd); }

private:
    DeviceLog& m_objLog;
    int m_nFd;
    int m_nResult;
    int m_nReading;
};

bool readCapturing(AdcReader& objReader, int& nValue, std::string& strOutput) {
    ::testing::internal::CaptureStdout();
    bool bRet = objReader.read(nValue);
    strOutput = ::testing::internal::GetCapturedStdout();
    return bRet;
}

}  // namespace

TEST(AdcReaderTest, ReadsChannelOneWithPresetRecord) {
    DeviceLog objLog;
    {
        AdcReader objReader(std::unique_ptr<AdcDevice>(new FakeDevice(objLog, 7, 0, 1234)));
        ASSERT_EQ(1u, objLog.vecOpened.size());
        EXPECT_EQ("/dev/adc", objLog.vecOpened[0]);
        EXPECT_TRUE(objReader.isOpen());
        int nValue = 0;
        std::string strOutput;
        ASSERT_TRUE(readCapturing(objReader, nValue, strOutput));
        EXPECT_EQ(1234, nValue);
        EXPECT_EQ("", strOutput);
        EXPECT_EQ(0xC004677FUL, objLog.ulRequest);
        EXPECT_EQ(1, objLog.objSeen.nChannel);
        EXPECT_EQ(0, objLog.objSeen.nValue);
        EXPECT_TRUE(objLog.vecClosed.empty());
    }
    ASSERT_EQ(1u, objLog.vecClosed.size());
    EXPECT_EQ(7, objLog.vecClosed[0]);
}

TEST(AdcReaderTest, OpenFailureIsReportedAtReadAndNothingIsClosed) {
    DeviceLog objLog;
    {
        AdcReader objReader(std::unique_ptr<AdcDevice>(new FakeDevice(objLog, -1, 0, 5)));
        EXPECT_FALSE(objReader.isOpen());
        int nValue = 99;
        std::string strOutput;
        EXPECT_FALSE(readCapturing(objReader, nValue, strOutput));
        EXPECT_EQ("open adc fail ", strOutput);
        EXPECT_EQ(99, nValue);
        EXPECT_EQ(0, objLog.nRequests);
    }
    EXPECT_TRUE(objLog.vecClosed.empty());
}

TEST(AdcReaderTest, RequestFailureIsReported) {
    DeviceLog objLog;
    AdcReader objReader(std::unique_ptr<AdcDevice>(new FakeDevice(objLog, 3, 5, 777)));
    int nValue = 99;
    std::string strOutput;
    EXPECT_FALSE(readCapturing(objReader, nValue, strOutput));
    EXPECT_EQ("enable the adc ADC_GET_DATA error  ", strOutput);
    EXPECT_EQ(99, nValue);
    EXPECT_EQ(1, objLog.nRequests);
}

TEST(AdcReaderTest, BoardDeviceMissingUnderRoot) {
    testutil::TempRoot objRoot;
    AdcReader objReader;
    EXPECT_FALSE(objReader.isOpen());
    int nValue = 99;
    std::string strOutput;
    EXPECT_FALSE(readCapturing(objReader, nValue, strOutput));
    EXPECT_EQ("open adc fail ", strOutput);
    EXPECT_EQ(99, nValue);
}

TEST(AdcReaderTest, BoardDeviceThatRefusesTheRequest) {
    // A plain file stands in for the device node: it opens, but the data
    // request is not a request a plain file answers.
    testutil::TempRoot objRoot;
    objRoot.write("/dev/adc", "");
    AdcReader objReader;
    EXPECT_TRUE(objReader.isOpen());
    int nValue = 99;
    std::string strOutput;
    EXPECT_FALSE(readCapturing(objReader, nValue, strOutput));
    EXPECT_EQ("enable the adc ADC_GET_DATA error  ", strOutput);
    EXPECT_EQ(99, nValue);
}

TEST(AdcReaderTest, InstalledFactoryIsUsedAndCanBeRemoved) {
    DeviceLog objLog;
    AdcDevice::setFactory(
        [&objLog]() { return std::unique_ptr<AdcDevice>(new FakeDevice(objLog, 11, 0, 321)); });
    {
        AdcReader objReader;
        int nValue = 0;
        ASSERT_TRUE(objReader.read(nValue));
        EXPECT_EQ(321, nValue);
    }
    EXPECT_EQ(1u, objLog.vecOpened.size());
    AdcDevice::setFactory(AdcDevice::Factory());

    testutil::TempRoot objRoot;
    AdcReader objBoard;
    EXPECT_FALSE(objBoard.isOpen());
    EXPECT_EQ(1u, objLog.vecOpened.size());
}

TEST(AdcReaderTest, FactoryGivingNothingFallsBackToBoardDevice) {
    AdcDevice::setFactory([]() { return std::unique_ptr<AdcDevice>(); });
    testutil::TempRoot objRoot;
    objRoot.write("/dev/adc", "");
    AdcReader objReader;
    EXPECT_TRUE(objReader.isOpen());
    AdcDevice::setFactory(AdcDevice::Factory());
}
