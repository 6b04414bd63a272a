#pragma once
#include <cstdint>

// The frames of the Seawolf board (docs/ispboard.md): a command byte per
// register, a data length, the data high byte first.
//
//   write    FF cmd len d.. cs        cmd the register (01-7E), len 1 or 2
//   read     FF cmd|80 00 cs
//   answers  FF cmd len d.. cs        a write acknowledged with the register's value
//            FF cmd|80 len d.. cs     a read: the register's value
//            FF 7F 01 code cs         refused
//
// The checksum is the complement of the sum modulo 256 of every byte before
// it, start byte included: an answer cut short and followed by another one
// (FF cmd 01 | FF cmd ...) does not pass for a whole answer carrying FF.
class SeawolfFrame {
public:
    enum : uint8_t { Start = 0xFF, ReadFlag = 0x80, Refused = 0x7F };
    enum { HeadLength = 3, MaxDataLength = 2, MaxLength = HeadLength + MaxDataLength + 1 };

    static uint8_t checksum(const uint8_t* frame, int length);
    // A frame of `dataLength` (0-2) bytes of `value` with its checksum; its length.
    static int build(uint8_t command, int dataLength, int value, uint8_t* frame);
    // The value of a frame's data (high byte first).
    static int value(const uint8_t* frame);
};
