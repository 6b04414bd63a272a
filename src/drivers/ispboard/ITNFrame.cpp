#include "drivers/ispboard/ITNFrame.h"

uint8_t ITNFrame::checksum(const uint8_t* frame, int length) {
    uint8_t x = 0;
    for (int i = 1; i < length - 1; ++i) x = static_cast<uint8_t>(x ^ frame[i]);
    return x;
}

int ITNFrame::build(uint8_t start, uint8_t op, uint16_t address, int value, uint8_t* frame) {
    frame[0] = start;
    frame[1] = op;
    frame[2] = static_cast<uint8_t>(address >> 8);
    frame[3] = static_cast<uint8_t>(address & 0xFF);
    frame[4] = static_cast<uint8_t>((value >> 8) & 0xFF);
    frame[5] = static_cast<uint8_t>(value & 0xFF);
    frame[6] = checksum(frame, Length);
    return Length;
}
