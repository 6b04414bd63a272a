#pragma once
#include <string>

// Character-device access of the platform: open, ioctl and close on a device
// node such as "/dev/adc". Paths resolve under the platform root.
class DeviceFile {
public:
    // Opens the device read-only. Returns the descriptor, or -1 on failure.
    static int openReadOnly(const std::string& p_strPath);
    // Issues a device request with an argument record. Returns the system
    // call's result: 0 (or a request-specific non-negative value) on success,
    // -1 on failure. Interrupted calls are repeated.
    static int ioctl(int p_nFd, unsigned long p_ulRequest, void* p_pArg);
    // Closes a descriptor obtained from openReadOnly; a negative one is ignored.
    static void close(int p_nFd);
};
