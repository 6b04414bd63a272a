#include "drivers/fisheye/AdcDevice.h"

#include <mutex>

#include "platform/DeviceFile.h"

namespace {

std::mutex g_factoryMutex;
AdcDevice::Factory g_factory;

}  // namespace

const char* const AdcDevice::DevicePath = "/dev/adc";
const unsigned long AdcDevice::GetDataRequest = 0xC004677FUL;

AdcDevice::AdcDevice() = default;

AdcDevice::~AdcDevice() = default;

int AdcDevice::openDevice(const std::string& p_strPath) {
    return DeviceFile::openReadOnly(p_strPath);
}

int AdcDevice::request(int p_nFd, unsigned long p_ulRequest, Record* p_pRecord) {
    return DeviceFile::ioctl(p_nFd, p_ulRequest, p_pRecord);
}

void AdcDevice::closeDevice(int p_nFd) {
    DeviceFile::close(p_nFd);
}

std::unique_ptr<AdcDevice> AdcDevice::create() {
    Factory objFactory;
    {
        std::lock_guard<std::mutex> objLock(g_factoryMutex);
        objFactory = g_factory;
    }
    if (objFactory) {
        std::unique_ptr<AdcDevice> pDevice = objFactory();
        if (pDevice) {
            return pDevice;
        }
    }
    return std::unique_ptr<AdcDevice>(new AdcDevice());
}

void AdcDevice::setFactory(Factory p_objFactory) {
    std::lock_guard<std::mutex> objLock(g_factoryMutex);
    g_factory = std::move(p_objFactory);
}
