#pragma once
#include <atomic>
#include <mutex>
#include <vector>

#include "app/IUARTController.h"

// A serial-port controller for Linux serial devices (termios), for an
// application that has no serial controller of its own.
//
// open() resolves the device name under the platform root ("/dev/ttyS1" on the
// camera), opens it without making it the controlling terminal and puts it in
// raw mode: no echo, no line editing, no signals, no character translation, no
// software or hardware flow control, receiver on, modem control lines ignored;
// 9600 baud, 8 data bits, 1 stop bit, no parity until setParameter says
// otherwise. Several ports can be open at once; each has an index.
//
// setParameter(port, baud, data bits, stop bits, parity):
//   baud       1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200
//   data bits  5, 6, 7 or 8
//   stop bits  1 or 2
//   parity     0 none, 1 odd, 2 even
// Anything else is refused (0) and leaves the line as it was.
//
// write() writes the whole buffer, finishing partial writes and retrying after
// EINTR (waiting while the port's output queue is full); it returns the bytes
// written, which is less than asked only when the port fails. read() collects
// bytes until `capacity` have come or the time-out (units of TimeoutUnitMs) has
// passed; it returns the bytes read, 0 when nothing came. Every operation on a
// port that is not open returns -1.
class TermiosUARTController : public IUARTController {
public:
    enum { MaxPorts = 16 };

    TermiosUARTController() = default;
    ~TermiosUARTController() override;
    TermiosUARTController(const TermiosUARTController&) = delete;
    TermiosUARTController& operator=(const TermiosUARTController&) = delete;

    int open(const char* device) override;
    int setParameter(int port, int baudRate, int dataBits, int stopBits, int parity) override;
    int write(int port, const char* data, int length) override;
    int read(int port, char* buffer, int capacity, int timeout) override;
    // Closes a port; 1 when it was open, -1 otherwise. Its index may be reused.
    int close(int port);

    // Whether the line settings are ones that setParameter accepts.
    static bool isValidLine(int baudRate, int dataBits, int stopBits, int parity);
    // The number of system calls made by write and read so far (for measurements).
    unsigned long getSystemCallCount() const;

private:
    int fdOf(int port);

    std::mutex m_mutex;  // guards the descriptor table, not the I/O
    std::vector<int> m_fds;
    std::atomic<unsigned long> m_nSyscalls{0};
};
