#pragma once
#include <cstdint>
#include <deque>
#include <list>
#include <mutex>
#include <random>
#include <vector>

// A simulated device at the far end of a serial line: what every simulated
// module shares, whatever protocol it speaks. Bytes go in with receive() and
// come out with takeOutput(), each stamped with a time in milliseconds that
// the caller supplies (the platform clock for the in-process port, the host
// clock at the far end of a pseudo-terminal), so one device serves both.
//
// A module queues its replies with reply()/replyFaulted(); they go on the wire
// one byte after the other at the module's baud (10 bits a byte) when pacing
// is on. While the local end of the line runs at another baud than the
// module's, the line carries nothing intelligible.
//
// Fault injection, each kind as a probability per reply or as a one-shot.
class SimSerialDevice {
public:
    enum Fault {
        DropReply,   // the packet is carried out, its reply is lost
        Noise,       // stray bytes before the reply
        SplitReply,  // the reply's bytes come one by one with gaps
        LateReply,   // the reply comes after the reader's time-out
        CorruptByte, // one byte of the reply is changed
        Silent,      // the module ignores the packet altogether
        BufferFull,  // the module is busy and refuses the packet (each protocol its own way)
        FaultCount
    };
    enum { SplitGapMs = 40, LateByMs = 1500, FrameMs = 17 };

    SimSerialDevice();
    virtual ~SimSerialDevice();
    SimSerialDevice(const SimSerialDevice&) = delete;
    SimSerialDevice& operator=(const SimSerialDevice&) = delete;

    // ---- the line ----
    void receive(const uint8_t* data, int length, int64_t nowMs);
    // Up to `capacity` bytes that are on the line by `untilMs`; returns the count.
    int takeOutput(uint8_t* out, int capacity, int64_t untilMs);
    // The time at which `count` bytes will have arrived, or -1 when fewer than
    // `count` are on their way by `untilMs`.
    int64_t timeOfByte(int count, int64_t untilMs);
    // The earliest time of a byte still to come, -1 when none is scheduled.
    int64_t nextOutputTime();
    // The baud of the local end of the line; the module's own is the module's.
    void setLineBaud(int baud);
    int getLineBaud() const;
    int getModuleBaud() const;
    // Bytes take their wire time at the module's baud (10 bits a byte) when set.
    void setPacing(bool on);
    // Time from the end of a command to its reply (default one frame).
    void setReplyDelayMs(int ms);

    // ---- faults ----
    void setFaultProbability(Fault kind, double probability);
    void injectOnce(Fault kind);
    void clearFaults();
    void setSeed(uint32_t seed);
    static const char* faultName(Fault kind);

protected:
    // Called with m_mutex held. The module's state at `nowMs` (moves ending, restarts).
    virtual void settleLocked(int64_t nowMs);
    // The module's baud.
    virtual int moduleBaudLocked() const = 0;
    // Bytes that reached the module intact (the line at the module's baud);
    // the last byte is on the module's side `wireUs` per byte after `nowMs`.
    virtual void receiveLocked(const uint8_t* data, int length, int64_t nowMs) = 0;

    // Called with m_mutex held.
    int byteTimeUs() const;
    bool lineGarbled() const;
    // Queues a reply as it is.
    void reply(int64_t at, std::vector<uint8_t> bytes);
    // Queues a reply through the fault injection; `at` becomes the time it was
    // queued for. `dropAll` is set when the reply was dropped.
    void replyFaulted(int64_t& at, std::vector<uint8_t> bytes, bool& dropAll);
    // Whether a fault of this kind strikes now (one-shots first).
    bool roll(Fault kind);
    // Forgets every reply not yet read (a module that restarts).
    void clearOutput();
    // Removes the first queued reply with these bytes due at `at`; true when there was one.
    bool cancelReply(const std::vector<uint8_t>& bytes, int64_t at);

    mutable std::mutex m_mutex;  // guards the line and the module's whole state
    std::mt19937 m_rng;
    int m_replyDelayMs = FrameMs;

private:
    struct Message {
        int64_t at;
        std::vector<uint8_t> bytes;
        int gapMs;  // between single bytes (split reply)
    };
    void materialise(int64_t untilMs);

    double m_probability[FaultCount] = {};
    int m_oneShot[FaultCount] = {};
    int m_lineBaud = 9600;
    bool m_pacing = true;
    std::list<Message> m_pending;                    // replies not yet on the wire, by time
    std::deque<std::pair<int64_t, uint8_t>> m_wire;  // bytes with their arrival times (microseconds)
    int64_t m_wireEndUs = 0;                         // when the line is free again
};
