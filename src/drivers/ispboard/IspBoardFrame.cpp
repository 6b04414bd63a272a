#include "drivers/ispboard/IspBoardFrame.h"

uint8_t IspBoardFrame::sum(const uint8_t* bytes, int length) {
    unsigned int s = 0;
    for (int i = 0; i < length; ++i) s += bytes[i];
    return static_cast<uint8_t>(s & 0xFF);
}

int IspBoardFrame::write(uint16_t address, int width, int value, uint8_t* frame) {
    frame[0] = Start;
    frame[1] = width == 16 ? Write16 : Write8;
    frame[2] = static_cast<uint8_t>(address >> 8);
    frame[3] = static_cast<uint8_t>(address & 0xFF);
    frame[4] = static_cast<uint8_t>(value & 0xFF);
    if (width != 16) {
        frame[5] = 0;
        return 6;
    }
    frame[5] = static_cast<uint8_t>((value >> 8) & 0xFF);
    frame[6] = 0;
    return 7;
}

int IspBoardFrame::read(uint16_t address, int width, uint8_t* frame) {
    frame[0] = Start;
    frame[1] = width == 16 ? Read16 : Read8;
    frame[2] = static_cast<uint8_t>(address >> 8);
    frame[3] = static_cast<uint8_t>(address & 0xFF);
    frame[4] = 0;
    return 5;
}

int IspBoardFrame::commandLength(uint8_t op) {
    switch (op) {
    case Write8: return 6;
    case Write16: return 7;
    case Read8:
    case Read16: return 5;
    default: return 0;
    }
}

bool IspBoardFrame::echoes(const uint8_t* frame, int frameLength, const uint8_t* answer, int length) {
    if (frameLength < 4 || length < 4) return false;
    return answer[1] == frame[1] && answer[2] == frame[2] && answer[3] == frame[3];
}
