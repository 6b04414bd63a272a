#pragma once

// The serial-port controller that the camera application hands to the library.
// The slot order of the virtual functions is part of the interface.
class IUARTController {
public:
    virtual ~IUARTController() {}
    // Opens the serial device (e.g. "/dev/ttyS1"); the port index, negative on failure.
    virtual int open(const char* device) = 0;
    // Line settings of an open port; non-zero on success.
    virtual int setParameter(int port, int baudRate, int dataBits, int stopBits, int parity) = 0;
    // Writes `length` bytes; the number of bytes written (negative on error).
    virtual int write(int port, const char* data, int length) = 0;
    // Reads up to `capacity` bytes, waiting at most `timeout` (platform units);
    // the number of bytes read (0 when nothing came, negative on error).
    virtual int read(int port, char* buffer, int capacity, int timeout) = 0;
};
