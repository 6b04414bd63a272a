#pragma once
#include <cstdint>
#include <deque>
#include <list>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <vector>

// A simulated VISCA zoom block camera (Sony FCB series, camera address 1): the
// state behind every packet, not a script of replies.
//
// Bytes go in with receive() and come out with takeOutput(), each stamped with
// a time in milliseconds that the caller supplies (the platform clock for the
// in-process port, the host clock at the far end of a pseudo-terminal). A
// command is acknowledged (90 4y FF) after the reply delay and completed
// (90 5y FF) when it has been carried out; a zoom or focus move completes when
// the lens gets there. Inquiries are answered from the state (90 50 .. FF).
// Malformed or unknown packets get a syntax error (90 60 02 FF), commands that
// the exposure mode does not allow "not executable" (90 6y 41 FF), a third
// command while two sockets are busy "buffer full" (90 60 03 FF).
//
// The module's baud is its register 0x00 (0 9600, 1 19200, 2 38400, 3 115200),
// which takes effect at the next restart (FE 05 03 01 01 0A FF, 20 s without an
// answer). While the local end of the line runs at another baud the line
// carries nothing intelligible: the module hears garbage and what it sends
// arrives as garbage.
//
// Fault injection, each kind as a probability per reply or as a one-shot.
class SimViscaModule {
public:
    enum Fault {
        DropReply,   // the packet is carried out, its reply is lost
        Noise,       // stray bytes before the reply
        SplitReply,  // the reply's bytes come one by one with gaps
        LateReply,   // the reply comes after the reader's time-out
        CorruptByte, // one byte of the reply is changed
        Silent,      // the module ignores the packet altogether
        BufferFull,  // "buffer full" instead of an acknowledgement, not carried out
        FaultCount
    };
    enum { SplitGapMs = 40, LateByMs = 1500, RestartMs = 20000, FrameMs = 17 };
    enum : uint16_t { MaxZoom = 0x7AC0, MaxFocus = 0xF000 };

    // What sets one model of the family apart: the commands it lacks (it answers
    // a syntax error to them, commands and inquiries alike), the commands of this
    // library's own codes that it has (`extra`; every other model lacks them),
    // the upper ends of value ranges that differ from the FCB-EV7310's (by
    // command byte), and the registers' values after power-on.
    struct Profile {
        std::string name;
        std::vector<uint8_t> lacking;
        std::vector<uint8_t> extra;
        std::map<uint8_t, int> maxValues;
        std::map<uint8_t, int> registers;
    };
    // The profile of a model by name ("FCB-EV7310", "EH4300", "CV7500", "CH3310", "CMD8100",
    // "CMD8100_Old", "CMD7300", "CMD8300"); the FCB-EV7310's for a name it does not know.
    static Profile profile(const std::string& model);

    SimViscaModule();

    // Makes the module that model, as at power-on of its registers.
    void setProfile(const Profile& profile);
    const std::string& modelName() const { return m_profile.name; }
    // Sets a register as if written by a command.
    void setRegister(uint8_t reg, int value);

    // ---- the line ----
    void receive(const uint8_t* data, int length, int64_t nowMs);
    // Up to `capacity` bytes that are on the line by `untilMs`; returns the count.
    int takeOutput(uint8_t* out, int capacity, int64_t untilMs);
    // The time at which `count` bytes will have arrived, or -1 when fewer than
    // `count` are on their way by `untilMs`.
    int64_t timeOfByte(int count, int64_t untilMs);
    // The earliest time of a byte still to come, -1 when none is scheduled.
    int64_t nextOutputTime();
    // The baud of the local end of the line; the module's own comes from its register.
    void setLineBaud(int baud);
    int getModuleBaud() const;
    int getLineBaud() const;
    // Bytes take their wire time at the module's baud (10 bits a byte) when set.
    void setPacing(bool on);
    // Time from the end of a command to its acknowledgement (default one frame).
    void setReplyDelayMs(int ms);

    // The module switches day/night by itself (its own automatic IR-cut mode).
    void setNight(bool night);
    // Puts the module at a baud at once (register 0x00 and the line), as if restarted there.
    void setBaudIndex(int index);

    // ---- faults ----
    void setFaultProbability(Fault kind, double probability);
    void injectOnce(Fault kind);
    void clearFaults();
    void setSeed(uint32_t seed);
    static const char* faultName(Fault kind);

    // ---- state, for tests and tools ----
    int aeMode() const;  // VISCA AE mode value (0x00, 0x03, 0x0A, 0x0B, 0x0D)
    // The value bytes last set with command `code` (81 01 04 code ... FF); empty when never set.
    std::vector<uint8_t> valueOf(uint8_t code) const;
    // The value of nibble-coded commands (0p 0q 0r 0s -> pqrs; 0p -> p; on/off -> 2/3).
    int nibbleValue(uint8_t code) const;
    int zoomPosition(int64_t nowMs);
    int focusPosition(int64_t nowMs);
    bool isNight() const;
    int registerValue(uint8_t reg) const;
    bool isRestarting(int64_t nowMs);
    int commandCount() const;      // packets understood and carried out
    int packetCount() const;       // packets received (complete to 0xFF), any kind
    int restartCount() const;
    // The last packets received (at most the 1000 latest), oldest first.
    std::vector<std::vector<uint8_t>> receivedPackets() const;

private:
    struct Message {
        int64_t at;
        std::vector<uint8_t> bytes;
        int gapMs;  // between single bytes (split reply)
    };
    struct Move {
        bool active = false;
        int64_t startMs = 0;
        int from = 0, to = 0;
        int64_t endMs = 0;
        int socket = 0;
    };

    void handlePacket(const std::vector<uint8_t>& p, int64_t at);
    void handleCommand(const std::vector<uint8_t>& p, int64_t at, int socket, bool& ok, bool& notExecutable,
                       int64_t& doneAt);
    bool handleInquiry(const std::vector<uint8_t>& p, std::vector<uint8_t>& answer, int64_t at);
    void reply(int64_t at, std::vector<uint8_t> bytes);
    // Queues a reply through the fault injection; `at` becomes the time it was queued for.
    void replyFaulted(int64_t& at, std::vector<uint8_t> bytes, bool& dropAll);
    bool isRestartingLocked(int64_t nowMs) const;
    int nibbleValueLocked(uint8_t code) const;
    bool roll(Fault kind);
    int freeSocket(int64_t at);
    void startMove(Move& m, int current, int target, int64_t at, int speedUnitsPerMs, int socket);
    void stopMove(Move& m, int64_t at);
    int positionOf(Move& m, int stored, int64_t at);
    void settle(int64_t nowMs);
    int byteTimeUs() const;
    void materialise(int64_t untilMs);
    bool lineGarbled() const;

    bool lacks(uint8_t code) const;
    int maxValueOf(uint8_t code, int standard) const;

    Profile m_profile;
    mutable std::mutex m_mutex;
    std::mt19937 m_rng;
    double m_probability[FaultCount] = {};
    int m_oneShot[FaultCount] = {};

    int m_lineBaud = 9600;
    bool m_pacing = true;
    int m_replyDelayMs = FrameMs;

    std::vector<uint8_t> m_inbuf;
    std::list<Message> m_pending;             // replies not yet on the wire, by time
    std::deque<std::pair<int64_t, uint8_t>> m_wire;  // bytes with their arrival times
    int64_t m_wireEndUs = 0;                   // when the line is free again (microseconds)

    std::map<uint8_t, std::vector<uint8_t>> m_values;
    int m_aeMode = 0x00;
    bool m_night = false;
    int m_zoom = 0, m_focus = 0x1000;
    Move m_zoomMove, m_focusMove;
    std::map<uint8_t, int> m_registers;
    int m_moduleBaudIndex = 0;
    int64_t m_restartUntil = -1;
    int64_t m_socketBusyUntil[3] = {0, 0, 0};
    int m_commands = 0, m_packets = 0, m_restarts = 0;
    std::vector<std::vector<uint8_t>> m_received;
};
