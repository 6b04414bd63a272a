#include "line/SimSerialUART.h"

#include "platform/PlatformClock.h"
#include "platform/TermiosUARTController.h"
#include "line/SimSerialDevice.h"

SimSerialUART::SimSerialUART(SimSerialDevice& module, const std::string& device) : m_module(module), m_strDevice(device) {}

int SimSerialUART::open(const char* device) {
    if (device == nullptr || m_strDevice != device) return -1;
    m_bOpen = true;
    return 0;
}

int SimSerialUART::setParameter(int port, int baudRate, int dataBits, int stopBits, int parity) {
    ++m_nSetParameters;
    if (port != 0 || !m_bOpen) return -1;
    if (!TermiosUARTController::isValidLine(baudRate, dataBits, stopBits, parity)) return 0;
    m_nLastBaud = baudRate;
    {
        std::lock_guard<std::mutex> lock(m_traceMutex);
        m_line[0] = baudRate;
        m_line[1] = dataBits;
        m_line[2] = stopBits;
        m_line[3] = parity;
    }
    m_module.setLineBaud(baudRate);
    return 1;
}

void SimSerialUART::setTrace(Trace trace) {
    std::lock_guard<std::mutex> lock(m_traceMutex);
    m_trace = std::move(trace);
}

void SimSerialUART::limitNextWrite(int bytes) { m_nWriteLimit = bytes; }

int SimSerialUART::write(int port, const char* data, int length) {
    ++m_nWrites;
    if (port != 0 || !m_bOpen || data == nullptr || length < 0) return -1;
    int n = length;
    int limit = m_nWriteLimit.exchange(-1);
    if (limit >= 0 && limit < n) n = limit;
    const int64_t now = PlatformClock::nowMs();
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(data);
    {
        std::lock_guard<std::mutex> lock(m_traceMutex);
        if (m_trace && n > 0) m_trace(true, bytes, n, now);
    }
    m_module.receive(bytes, n, now);
    return n;
}

int SimSerialUART::read(int port, char* buffer, int capacity, int timeout) {
    ++m_nReads;
    if (port != 0 || !m_bOpen) return -1;
    if (buffer == nullptr || capacity < 1) return 0;
    const int64_t start = PlatformClock::nowMs();
    const int64_t deadline = start + static_cast<int64_t>(timeout < 0 ? 0 : timeout) * TimeoutUnitMs;
    // Wait until the last byte asked for has come, or until the time-out.
    int64_t until = m_module.timeOfByte(capacity, deadline);
    if (until < 0) until = deadline;
    if (until > start) PlatformClock::sleepMs(until - start);
    int64_t now = PlatformClock::nowMs();
    int n = m_module.takeOutput(reinterpret_cast<unsigned char*>(buffer), capacity, now < until ? now : until);
    if (n > 0) {
        std::lock_guard<std::mutex> lock(m_traceMutex);
        if (m_trace) m_trace(false, reinterpret_cast<unsigned char*>(buffer), n, now);
    }
    return n;
}

void SimSerialUART::lastLine(int (&line)[4]) const {
    std::lock_guard<std::mutex> lock(m_traceMutex);
    for (int i = 0; i < 4; ++i) line[i] = m_line[i];
}
