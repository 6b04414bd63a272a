#pragma once
#include <cstdint>

// The frames of the ITN board (docs/ispboard.md): seven bytes both ways, the
// value always 16 bits, high byte first.
//
//   command  5A op aH aL vH vL cs     op 01 write, 02 read (value 0)
//   answer   A5 op aH aL vH vL cs     the register's value after the command
//   refused  A5 op|80 aH aL 00 code cs
//
// The checksum is the exclusive or of the bytes between the start byte and
// the checksum.
class ITNFrame {
public:
    enum : uint8_t { Start = 0x5A, AnswerStart = 0xA5, Write = 0x01, Read = 0x02, Refused = 0x80 };
    enum { Length = 7 };

    static uint8_t checksum(const uint8_t* frame, int length);
    // A command (Start) or an answer (AnswerStart) with its checksum; its length.
    static int build(uint8_t start, uint8_t op, uint16_t address, int value, uint8_t* frame);
    static uint16_t address(const uint8_t* frame) { return static_cast<uint16_t>((frame[2] << 8) | frame[3]); }
    static int value(const uint8_t* frame) { return (frame[4] << 8) | frame[5]; }
};
