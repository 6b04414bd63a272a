#include "adc/SimAdc.h"

#include <memory>

#include "drivers/fisheye/AdcDevice.h"

namespace {

// The device object handed to AdcReader while the simulation is installed.
class SimAdcDevice : public AdcDevice {
public:
    int openDevice(const std::string& p_strPath) override { return SimAdc::instance().open(p_strPath); }
    int request(int p_nFd, unsigned long p_ulRequest, Record* p_pRecord) override {
        if (p_pRecord == nullptr) {
            return SimAdc::ErrRequest;
        }
        return SimAdc::instance().request(p_nFd, p_ulRequest, &p_pRecord->nChannel, &p_pRecord->nValue);
    }
    void closeDevice(int p_nFd) override { SimAdc::instance().close(p_nFd); }
};

}  // namespace

SimAdc& SimAdc::instance() {
    static SimAdc s_objInstance;
    return s_objInstance;
}

void SimAdc::install() {
    AdcDevice::setFactory([]() { return std::unique_ptr<AdcDevice>(new SimAdcDevice()); });
}

void SimAdc::uninstall() {
    AdcDevice::setFactory(AdcDevice::Factory());
}

void SimAdc::resetLocked() {
    m_nReading = DefaultReading;
    m_bOpenFails = false;
    m_bRequestFails = false;
    m_nOpenCount = 0;
    m_nCloseCount = 0;
    m_nRequestCount = 0;
    m_strLastOpenPath.clear();
    m_ulLastRequest = 0;
    m_nLastChannel = -1;
    // Descriptors still held by readers stay valid across a reset.
}

void SimAdc::reset() {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    resetLocked();
}

void SimAdc::setReading(int p_nValue) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_nReading = p_nValue;
}

int SimAdc::reading() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_nReading;
}

void SimAdc::setPercent(int p_nPercent) {
    setReading(p_nPercent * FullScale / 100);
}

void SimAdc::setOpenFails(bool p_bFail) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_bOpenFails = p_bFail;
}

void SimAdc::setRequestFails(bool p_bFail) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_bRequestFails = p_bFail;
}

int SimAdc::openCount() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_nOpenCount;
}

int SimAdc::closeCount() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_nCloseCount;
}

int SimAdc::requestCount() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_nRequestCount;
}

int SimAdc::openDescriptors() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_nOpenDescriptors;
}

std::string SimAdc::lastOpenPath() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_strLastOpenPath;
}

unsigned long SimAdc::lastRequest() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_ulLastRequest;
}

int SimAdc::lastChannel() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_nLastChannel;
}

int SimAdc::open(const std::string& p_strPath) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    ++m_nOpenCount;
    m_strLastOpenPath = p_strPath;
    if (m_bOpenFails || p_strPath != AdcDevice::DevicePath) {
        return -1;
    }
    ++m_nOpenDescriptors;
    return m_nNextFd++;
}

int SimAdc::request(int p_nFd, unsigned long p_ulRequest, int32_t* p_pChannel, int32_t* p_pValue) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    ++m_nRequestCount;
    m_ulLastRequest = p_ulRequest;
    m_nLastChannel = *p_pChannel;
    if (m_bRequestFails || p_nFd < 0 || p_ulRequest != AdcDevice::GetDataRequest || *p_pChannel != 1) {
        return ErrRequest;
    }
    *p_pValue = m_nReading;
    return 0;
}

void SimAdc::close(int p_nFd) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    ++m_nCloseCount;
    if (p_nFd >= 0 && m_nOpenDescriptors > 0) {
        --m_nOpenDescriptors;
    }
}
