#include "drivers/fisheye/AdcReader.h"

#include <cstdio>

#include "platform/KSLogger.h"

AdcReader::AdcReader() : AdcReader(AdcDevice::create()) {}

AdcReader::AdcReader(std::unique_ptr<AdcDevice> p_pDevice) : m_pDevice(std::move(p_pDevice)) {
    if (!m_pDevice) {
        m_pDevice = AdcDevice::create();
    }
    m_nFd = m_pDevice->openDevice(AdcDevice::DevicePath);
}

AdcReader::~AdcReader() {
    if (m_nFd >= 0) {
        m_pDevice->closeDevice(m_nFd);
    }
}

bool AdcReader::read(int& p_nValue) {
    if (m_nFd < 0) {
        KSLogger::consolePrintf("open adc fail ");
        return false;
    }
    AdcDevice::Record objRecord;
    objRecord.nChannel = Channel;
    objRecord.nValue = 0;
    if (m_pDevice->request(m_nFd, AdcDevice::GetDataRequest, &objRecord) != 0) {
        KSLogger::consolePrintf("enable the adc ADC_GET_DATA error  ");
        return false;
    }
    p_nValue = objRecord.nValue;
    return true;
}
