#pragma once

// The serial-port controller that the camera application hands to the library.
// The slot order of the virtual functions is part of the interface.
class IUARTController {
public:
    // The unit of the read time-out, in milliseconds. The library passes small
    // counts of it (1 to 4); every serial port of this code base, the real one and
    // the simulated ones, counts its time-outs in this unit.
    static constexpr int TimeoutUnitMs = 100;

    virtual ~IUARTController() {}
    // Opens the serial device (e.g. "/dev/ttyS1"); the port index, negative on failure.
    virtual int open(const char* device) = 0;
    // Line settings of an open port; non-zero on success.
    virtual int setParameter(int port, int baudRate, int dataBits, int stopBits, int parity) = 0;
    // Writes `length` bytes; the number of bytes written (negative on error).
    virtual int write(int port, const char* data, int length) = 0;
    // Reads up to `capacity` bytes, waiting at most `timeout` units of TimeoutUnitMs;
    // the number of bytes read (0 when nothing came, negative on error).
    virtual int read(int port, char* buffer, int capacity, int timeout) = 0;
};
