#pragma once
#include <cstdint>
#include <map>
#include <vector>

#include "drivers/ispboard/IspBoardTable.h"
#include "line/SimSerialDevice.h"

// A simulated ISP board on a serial line: a register file made from a board's
// register table (IspBoardTable), driven by the frames that the table names:
// the family's (IspBoardFrame), the ITN board's (ITNFrame) or the Seawolf
// board's (SeawolfFrame). What follows is said for the family's frames; the
// other two answer in their own shapes with the same checks and faults.
//
// A frame starts with AA; its operation byte gives its length. A frame with a
// wrong checksum, an unknown operation, or a pause of more than FrameGapMs in
// its middle is refused or dropped; writes of a value the register does not
// accept, writes to status registers and reads or writes of unknown registers
// are refused (answer 04 op|80 code cs). A write is acknowledged with 5 bytes,
// a read answered with 6 (8 bits) or 7 (16 bits, low byte first), one video
// frame after the command has crossed the line, each byte at the board's baud.
//
// Faults: those of every simulated serial device (SimSerialDevice: a lost
// answer, noise before it, a split or late answer, a changed byte, silence -
// the frame is ignored, not carried out - and "busy", a refusal with code 5,
// not carried out), and those of the answer frame itself: a wrong checksum, an
// answer longer than the reader's buffer (11 bytes), a short answer (its last
// two bytes lost); each as a probability per answer or as a one-shot.
class SimIspBoard : public SimSerialDevice {
public:
    enum FrameFault { WrongChecksum, TooLong, ShortAnswer, FrameFaultCount };
    enum { FrameGapMs = 50, LongAnswerLength = 11, BusyCode = 5 };
    // Room for an answer or refusal in any of the shapes (ITN's 7 bytes the longest).
    enum { MaxAnswerLength = 16 };

    explicit SimIspBoard(const IspBoardTable& table);

    // The board's own baud (9600 by default); another baud at the local end garbles the line.
    void setBoardBaud(int baud);

    // ---- faults of the answer frame ----
    void setFrameFaultProbability(FrameFault kind, double probability);
    void injectFrameFault(FrameFault kind);
    void clearFrameFaults();
    static const char* frameFaultName(FrameFault kind);

    // ---- the register file ----
    // -1 for a register the board does not have.
    int registerValue(uint16_t address) const;
    // Sets a register as the board itself would (status registers included).
    void setRegister(uint16_t address, int value);
    // Every register at its power-on value.
    void powerOn();
    const IspBoardTable& table() const { return m_table; }
    // Whether the last byte of `length` bytes is their checksum in the frames
    // of `shape` (what the bytes of a command or an answer say of themselves).
    static bool checksumOk(IspBoardTable::FrameShape shape, const uint8_t* bytes, int length);
    // The first byte of every command in the frames that the table names.
    uint8_t startByte() const;

    // ---- what happened ----
    int writeCount() const;    // writes carried out
    int readCount() const;     // reads answered
    int refusalCount() const;  // frames refused
    // The complete frames received (at most the 1000 latest), oldest first.
    std::vector<std::vector<uint8_t>> receivedFrames() const;
    // The number of frames received so far, and the frames received since such a mark.
    size_t frameMark() const;
    std::vector<std::vector<uint8_t>> framesSince(size_t mark) const;

protected:
    int moduleBaudLocked() const override { return m_boardBaud; }
    void receiveLocked(const uint8_t* data, int length, int64_t nowMs) override;

private:
    // A command as the board understood it.
    struct Command {
        bool write = false;
        uint16_t address = 0;
        int width = 0;  // the register width that the frame implies
        int value = 0;
    };
    // The frame shapes of the table (IspBoardTable::frames).
    // The length of the frame being received (m_inbuf), -1 while unknown.
    int frameLength() const;
    // The checksum that the last byte of a frame of `length` bytes must carry.
    static uint8_t checksumOf(IspBoardTable::FrameShape shape, const uint8_t* bytes, int length);
    uint8_t checksumOf(const std::vector<uint8_t>& f) const;
    bool decode(const std::vector<uint8_t>& f, Command& c) const;
    std::vector<uint8_t> reply(const std::vector<uint8_t>& f, const Command& c, int value) const;
    std::vector<uint8_t> refusal(const std::vector<uint8_t>& f, uint8_t code) const;
    void padTooLong(std::vector<uint8_t>& bytes) const;

    void handleFrame(const std::vector<uint8_t>& f, int64_t at);
    void answer(int64_t at, std::vector<uint8_t> bytes);
    void refuse(int64_t at, const std::vector<uint8_t>& f, uint8_t code);
    bool rollFrame(FrameFault kind);

    const IspBoardTable& m_table;
    int m_boardBaud = 9600;
    double m_frameProbability[FrameFaultCount] = {};
    int m_frameOneShot[FrameFaultCount] = {};

    std::vector<uint8_t> m_inbuf;
    int64_t m_lastByteMs = 0;
    std::map<uint16_t, int> m_registers;
    int m_writes = 0, m_reads = 0, m_refusals = 0;
    std::vector<std::vector<uint8_t>> m_received;
    size_t m_receivedTotal = 0;
};
