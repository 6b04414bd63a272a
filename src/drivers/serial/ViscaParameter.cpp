#include "drivers/serial/ViscaParameter.h"

const ViscaParameter* ViscaParameter::find(const ViscaParameter* table, size_t count, int id) {
    for (size_t i = 0; i < count; ++i)
        if (table[i].id == id) return &table[i];
    return nullptr;
}

std::vector<ViscaParameter> ViscaParameter::compose(const ViscaParameter* catalogue, size_t count, const Range* ranges,
                                                    size_t rangeCount) {
    std::vector<ViscaParameter> rows;
    rows.reserve(rangeCount);
    for (size_t i = 0; i < rangeCount; ++i) {
        const ViscaParameter* row = find(catalogue, count, ranges[i].id);
        if (row == nullptr) continue;
        rows.push_back(*row);
        rows.back().minValue = ranges[i].minValue;
        rows.back().maxValue = ranges[i].maxValue;
    }
    return rows;
}

bool ViscaParameter::inRange(int value) const {
    if (rangeName == nullptr) return true;
    return static_cast<unsigned int>(value) - static_cast<unsigned int>(minValue) <=
           static_cast<unsigned int>(maxValue - minValue);
}

void ViscaParameter::nibbles(int value, int count, unsigned char* out) {
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<unsigned char>((static_cast<unsigned int>(value) >> (4 * (count - 1 - i))) & 0x0F);
}

int ViscaParameter::command(unsigned char code, const unsigned char* values, int count, unsigned char* packet) {
    packet[0] = 0x81;
    packet[1] = 0x01;
    packet[2] = 0x04;
    packet[3] = code;
    for (int i = 0; i < count; ++i) packet[4 + i] = values[i];
    packet[4 + count] = 0xFF;
    return count + 5;
}

int ViscaParameter::buildCommand(int value, unsigned char* packet) const {
    unsigned char v[4];
    switch (shape) {
    case Nibble:
        v[0] = static_cast<unsigned char>(value & 0x0F);
        return command(code, v, 1, packet);
    case OnOff:
        v[0] = value != 0 ? 0x02 : 0x03;
        return command(code, v, 1, packet);
    case OneIsOn:
        v[0] = value == 1 ? 0x02 : 0x03;
        return command(code, v, 1, packet);
    case Byte:
        v[0] = static_cast<unsigned char>(value & 0xFF);
        return command(code, v, 1, packet);
    case Nibbles:
        nibbles(value, 4, v);
        return command(code, v, 4, packet);
    case Fixed:
        v[0] = argument;
        return command(code, v, 1, packet);
    case Controller:
        break;
    }
    return 0;
}

int ViscaParameter::answerLength() const {
    switch (shape) {
    case Nibble:
    case OnOff:
    case OneIsOn:
    case Byte:
        return 4;
    case Nibbles:
        return 7;
    default:
        return 0;
    }
}

bool ViscaParameter::decodeAnswer(const unsigned char* a, int& value) const {
    int n = answerLength();
    if (n == 0 || a[0] != 0x90 || a[1] != 0x50 || a[n - 1] != 0xFF) return false;
    switch (shape) {
    case Nibble:
        if (a[2] > 0x0F) return false;
        value = a[2];
        return true;
    case Byte:
        value = a[2];
        return true;
    case OnOff:
    case OneIsOn:
        if (a[2] != 0x02 && a[2] != 0x03) return false;
        value = a[2] == 0x02 ? 1 : 0;
        return true;
    case Nibbles:
        value = 0;
        for (int i = 2; i < 6; ++i) {
            if (a[i] > 0x0F) return false;
            value = (value << 4) | a[i];
        }
        return true;
    default:
        return false;
    }
}
