#pragma once
#include <atomic>
#include <functional>
#include <mutex>
#include <string>

#include "app/IUARTController.h"

class SimSerialDevice;

// A simulated serial device as a serial port inside the process: what the
// library writes goes to the module at once, and a read waits on the platform
// clock, so on the virtual clock a test spends no real time in the library's
// read time-outs (units of IUARTController::TimeoutUnitMs) or in the module's
// reply delays and moves.
//
// One port: open() gives index 0 for the configured device name and -1 for any
// other; setParameter takes the line settings of TermiosUARTController and puts
// the module's line at that baud.
class SimSerialUART : public IUARTController {
public:
    // A listener of the traffic: outgoing (true) or incoming bytes, with the clock time.
    using Trace = std::function<void(bool toModule, const unsigned char* bytes, int length, int64_t ms)>;

    explicit SimSerialUART(SimSerialDevice& module, const std::string& device = "/dev/ttyS1");

    int open(const char* device) override;
    int setParameter(int port, int baudRate, int dataBits, int stopBits, int parity) override;
    int write(int port, const char* data, int length) override;
    int read(int port, char* buffer, int capacity, int timeout) override;

    void setTrace(Trace trace);
    // At most this many bytes of the next write go out (a short write), once; -1 = off.
    void limitNextWrite(int bytes);
    // Calls of each operation so far.
    int writeCalls() const { return m_nWrites.load(); }
    int readCalls() const { return m_nReads.load(); }
    int setParameterCalls() const { return m_nSetParameters.load(); }
    int lastBaud() const { return m_nLastBaud.load(); }
    // The arguments of the last accepted setParameter: baud, data bits, stop bits, parity.
    void lastLine(int (&line)[4]) const;

private:
    SimSerialDevice& m_module;
    std::string m_strDevice;
    std::atomic<bool> m_bOpen{false};
    std::atomic<int> m_nWriteLimit{-1};
    std::atomic<int> m_nWrites{0}, m_nReads{0}, m_nSetParameters{0}, m_nLastBaud{0};
    int m_line[4] = {0, 0, 0, 0};
    mutable std::mutex m_traceMutex;  // also guards m_line
    Trace m_trace;
};
