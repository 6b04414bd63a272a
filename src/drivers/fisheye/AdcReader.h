#pragma once
#include <memory>

#include "drivers/fisheye/AdcDevice.h"

// Reads the light level from the board's ADC, channel 1.
//
// The device "/dev/adc" is opened read-only when the reader is made and stays
// open for the reader's life; the destructor closes it. A read issues the
// device's data request with the record {channel 1, reading 0} and hands out
// the reading. Failures are reported on the console: "open adc fail " when
// the device could not be opened, "enable the adc ADC_GET_DATA error  " when
// the request failed; the output is then left untouched.
class AdcReader {
public:
    static const int Channel = 1;

    // Opens the device made by AdcDevice::create().
    AdcReader();
    // Opens the given device (tests).
    explicit AdcReader(std::unique_ptr<AdcDevice> p_pDevice);
    ~AdcReader();
    AdcReader(const AdcReader&) = delete;
    AdcReader& operator=(const AdcReader&) = delete;

    bool isOpen() const { return m_nFd >= 0; }
    // One reading of channel 1; false (output untouched) on failure.
    bool read(int& p_nValue);

private:
    std::unique_ptr<AdcDevice> m_pDevice;
    int m_nFd = -1;
};
