#pragma once
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "line/SimSerialDevice.h"

struct AsciiParameter;

// A simulated camera module of the ASCII register protocol: a register file
// behind a text command set, not a script of replies.
//
// ":W" + 4 hex digits of address + 2 of data writes a one-byte register,
// ":w" + address + 4 digits a two-byte one; ":R" + address reads a one-byte
// register, ":r" + address + "0000" a two-byte one. A command starts at ':';
// a ':' inside a command starts a new one, the broken one is lost. The module
// echoes every write it accepted, character for character, one frame after the
// command's last byte; a read is answered with the command with the value's
// digits (upper case) in place of the data. A malformed command, one that
// names a register the module lacks, the wrong width, or data the register
// does not accept, is ignored: no echo, nothing changed.
//
// Fault injection as for every simulated serial device (SimSerialDevice);
// BufferFull makes the module ignore the command (busy).
class SimAsciiModule : public SimSerialDevice {
public:
    struct Register {
        int width = 2;  // hex digits of data: 2 or 4
        int value = 0;
        std::vector<std::pair<int, int>> accepted;  // data ranges a write may carry
    };
    struct Profile {
        std::string name;
        std::map<uint16_t, Register> registers;
        int baud = 9600;
    };
    // The register file of a module by name ("Hitach", "HitachCompat",
    // "SC110N-C", "CMD7200"), from the module's parameter table and its
    // start-up and status registers; an empty one for a name it does not know.
    static Profile profile(const std::string& module);
    // Adds the registers of a parameter table (the data each row accepts, its power-on value).
    static void addTable(Profile& profile, const AsciiParameter* table, size_t count);
    // Adds one register accepting the data of [lo, hi].
    static void addRegister(Profile& profile, uint16_t address, int width, int value, int lo, int hi);

    SimAsciiModule();
    void setProfile(const Profile& profile);
    const std::string& moduleName() const { return m_profile.name; }

    // ---- state, for tests and tools ----
    // A register's value, -1 when the module has no such register.
    int registerValue(uint16_t address) const;
    void setRegister(uint16_t address, int value);
    // Writes carried out so far on a register.
    int writeCount(uint16_t address) const;
    int commandCount() const;  // commands accepted and carried out
    int packetCount() const;   // commands received, any kind
    // The last commands received (at most the 1000 latest), oldest first.
    std::vector<std::string> receivedCommands() const;

protected:
    int moduleBaudLocked() const override;
    void receiveLocked(const uint8_t* data, int length, int64_t nowMs) override;

private:
    void handleCommand(const std::string& text, int64_t at);
    // The reply to a well-formed command; empty when it is to be ignored.
    std::string carryOut(const std::string& text);

    Profile m_profile;
    std::string m_inbuf;
    size_t m_expected = 0;  // length of the command being received, 0 until known
    std::map<uint16_t, int> m_writes;
    int m_commands = 0, m_packets = 0;
    std::vector<std::string> m_received;
};
