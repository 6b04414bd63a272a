#pragma once
#include <string>

class ModuleConfigure;

// The serial line of a camera module as its module record gives it: the device
// name under the detail key `key` ("RS485" unless the module says otherwise)
// and four numbers "%d,%d,%d,%d" under the parameter key of the same name. What the four numbers mean is the caller's: the serial
// module controllers read baud, data bits, stop bits, parity; the controller
// without sensor UI reads baud, data bits, parity, stop bits.
class SerialLineSettings {
public:
    // Reads both keys, printing the reason of a failure ("parse detail failed",
    // "get RS232DeviceName from detail failed", "parse senseParameter failed",
    // "get RS232Parameter from senseParameter failed", "parse RS485 param
    // failed,nRet=%d") and the settings on success ("RS485(%s) param is
    // (%d,%d,%d,%d)"). A failed scan reports how many numbers it found.
    bool read(const ModuleConfigure& cfg);
    // The detail's "isInfrared" (decimal) into `value`; "get isInfrared from
    // detail failed" and `value` untouched when it is missing.
    static void readInfrared(const ModuleConfigure& cfg, int& value);

    std::string device;
    int value[4] = {0, 0, 0, 0};
    // The texts printed when the detail has no device and when the parameter
    // string has no line settings (the modules differ in how they name them).
    const char* missingDeviceText = "get RS232DeviceName from detail failed";
    const char* missingLineText = "get RS232Parameter from senseParameter failed";
    // The key of the device in the detail and of the line in the parameters
    // (also the name in "parse %s param failed" and "%s(%s) param is").
    const char* key = "RS485";
};
