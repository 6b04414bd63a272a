#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

// The board's analogue-to-digital converter device as seen by AdcReader: open,
// one request, close. The default implementation is the character device of
// the board, reached through the platform. A simulator replaces it by
// installing a factory; AdcReader then talks to whatever the factory makes.
class AdcDevice {
public:
    // The record of the read request: channel in, reading out.
    struct Record {
        int32_t nChannel;
        int32_t nValue;
    };

    static const char* const DevicePath;        // "/dev/adc"
    static const unsigned long GetDataRequest;  // 0xC004677F

    using Factory = std::function<std::unique_ptr<AdcDevice>()>;

    AdcDevice();
    virtual ~AdcDevice();
    AdcDevice(const AdcDevice&) = delete;
    AdcDevice& operator=(const AdcDevice&) = delete;

    // Opens the device read-only; the descriptor, negative on failure.
    virtual int openDevice(const std::string& p_strPath);
    // Issues a request on an open descriptor; 0 on success.
    virtual int request(int p_nFd, unsigned long p_ulRequest, Record* p_pRecord);
    // Closes a descriptor from openDevice.
    virtual void closeDevice(int p_nFd);

    // A device from the installed factory, or the board device when none is installed.
    static std::unique_ptr<AdcDevice> create();
    // Installs a factory; an empty one restores the board device.
    static void setFactory(Factory p_objFactory);
};
