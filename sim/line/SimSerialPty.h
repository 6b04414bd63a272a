#pragma once
#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

class SimSerialDevice;

// A simulated serial device at the far end of a pseudo-terminal: a thread
// holds the master side, feeds what arrives to the module and writes the
// module's bytes when they are due, on the host clock. The serial port under
// test opens the slave side (slaveName()) like any serial device; the module
// follows the baud that the slave is set to (a mismatch with its own baud
// makes the line unintelligible, as on a real wire).
//
// The module's time comes from `clock`: the host clock by default; the
// platform clock for a simulator whose device time is virtual (the module's
// moves and restarts then take device time; its replies had better come at
// once, since the reads of a real port wait in host time while the virtual
// clock stands).
class SimSerialPty {
public:
    using Clock = int64_t (*)();

    explicit SimSerialPty(SimSerialDevice& module, Clock clock = &SimSerialPty::nowMs);
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
    Clock m_clock;
    int m_nMaster = -1;
    int m_nSlaveKeep = -1;  // keeps the slave side open so the master never sees a hang-up
    std::string m_strSlave;
    std::atomic<bool> m_bStop{false};
    std::thread m_thread;
};
