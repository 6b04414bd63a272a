#pragma once
#include <cstdint>

// The frames that this library sends to an ISP board and the answers it
// expects back (docs/ispboard.md). A command frame ends with its checksum, the
// sum modulo 256 of every byte before it; an answer starts with its own length
// (count byte and checksum included) and ends with its checksum.
//
//   write 8 bits   AA 01 aH aL v cs        answer 05 01 aH aL cs
//   write 16 bits  AA 02 aH aL lo hi cs    answer 05 02 aH aL cs
//   read 8 bits    AA 11 aH aL cs          answer 06 11 aH aL v cs
//   read 16 bits   AA 12 aH aL cs          answer 07 12 aH aL lo hi cs
//   refused                                answer 04 op|80 code cs
class IspBoardFrame {
public:
    enum : uint8_t { Start = 0xAA, Write8 = 0x01, Write16 = 0x02, Read8 = 0x11, Read16 = 0x12, Refused = 0x80 };
    // Refusal codes of the board.
    enum : uint8_t { UnknownRegister = 1, ValueOutOfRange = 2, ReadOnly = 3, BadFrame = 4 };
    enum { MaxCommandLength = 7, AckLength = 5, Answer8Length = 6, Answer16Length = 7, RefusalLength = 4 };

    // The checksum of the `length` bytes at `bytes`: their sum modulo 256.
    static uint8_t sum(const uint8_t* bytes, int length);
    // Builds a register write (width 8 or 16) or read; the frame's length,
    // checksum byte included but not yet computed (0).
    static int write(uint16_t address, int width, int value, uint8_t* frame);
    static int read(uint16_t address, int width, uint8_t* frame);
    // The length of a command frame from its operation byte, 0 for an unknown one.
    static int commandLength(uint8_t op);
    // Whether an answer of `length` bytes echoes the operation and register of `frame`.
    static bool echoes(const uint8_t* frame, int frameLength, const uint8_t* answer, int length);
};
