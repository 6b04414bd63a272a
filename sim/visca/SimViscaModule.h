#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "line/SimSerialDevice.h"

// A simulated VISCA zoom block camera (Sony FCB series, camera address 1): the
// state behind every packet, not a script of replies.
//
// The line, its pacing and the fault injection are SimSerialDevice's. A
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
// arrives as garbage. The fault BufferFull answers "buffer full" instead of an
// acknowledgement, the command not carried out.
class SimViscaModule : public SimSerialDevice {
public:
    enum { RestartMs = 20000 };
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

    // The module switches day/night by itself (its own automatic IR-cut mode).
    void setNight(bool night);
    // Puts the module at a baud at once (register 0x00 and the line), as if restarted there.
    void setBaudIndex(int index);

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

protected:
    void settleLocked(int64_t nowMs) override;
    int moduleBaudLocked() const override;
    void receiveLocked(const uint8_t* data, int length, int64_t nowMs) override;

private:
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
    bool isRestartingLocked(int64_t nowMs) const;
    int nibbleValueLocked(uint8_t code) const;
    int freeSocket(int64_t at);
    void startMove(Move& m, int current, int target, int64_t at, int speedUnitsPerMs, int socket);
    void stopMove(Move& m, int64_t at);
    int positionOf(Move& m, int stored, int64_t at);

    bool lacks(uint8_t code) const;
    int maxValueOf(uint8_t code, int standard) const;

    Profile m_profile;
    std::vector<uint8_t> m_inbuf;

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
