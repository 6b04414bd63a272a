#include "drivers/ispboard/SeawolfFrame.h"

uint8_t SeawolfFrame::checksum(const uint8_t* frame, int length) {
    unsigned int s = 0;
    for (int i = 0; i < length - 1; ++i) s += frame[i];
    return static_cast<uint8_t>(~s & 0xFF);
}

int SeawolfFrame::build(uint8_t command, int dataLength, int value, uint8_t* frame) {
    frame[0] = Start;
    frame[1] = command;
    frame[2] = static_cast<uint8_t>(dataLength);
    for (int i = 0; i < dataLength; ++i)
        frame[HeadLength + i] = static_cast<uint8_t>((value >> (8 * (dataLength - 1 - i))) & 0xFF);
    const int n = HeadLength + dataLength + 1;
    frame[n - 1] = checksum(frame, n);
    return n;
}

int SeawolfFrame::value(const uint8_t* frame) {
    int v = 0;
    for (int i = 0; i < frame[2] && i < MaxDataLength; ++i) v = (v << 8) | frame[HeadLength + i];
    return v;
}
