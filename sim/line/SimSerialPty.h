#pragma once
#include <atomic>
#include <string>
#include <thread>

class SimSerialDevice;

// A simulated serial device at the far end of a pseudo-terminal: a thread
// holds the master side, feeds what arrives to the module and writes the
// module's bytes when they are due, on the host clock. The serial port under
// test opens the slave side (slaveName()) like any serial device; the module
// follows the baud that the slave is set to (a mismatch with its own baud
// makes the line unintelligible, as on a real wire).
class SimSerialPty {
public:
    explicit SimSerialPty(SimSerialDevice& module);
    ~SimSerialPty();
    SimSerialPty(const SimSerialPty&) = delete;
    SimSerialPty& operator=(const SimSerialPty&) = delete;

    // Opens the pseudo-terminal and starts the thread; false when no pty could be had.
    bool start();
    void stop();
    const std::string& slaveName() const { return m_strSlave; }
    // Milliseconds on the clock the module runs on here (host monotonic).
    static int64_t nowMs();

private:
    void run();

    SimSerialDevice& m_module;
    int m_nMaster = -1;
    int m_nSlaveKeep = -1;  // keeps the slave side open so the master never sees a hang-up
    std::string m_strSlave;
    std::atomic<bool> m_bStop{false};
    std::thread m_thread;
};
