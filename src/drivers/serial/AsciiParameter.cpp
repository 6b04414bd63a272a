#include "drivers/serial/AsciiParameter.h"

#include <cstdio>

const AsciiParameter* AsciiParameter::find(const AsciiParameter* table, size_t count, int id) {
    for (size_t i = 0; table != nullptr && i < count; ++i)
        if (table[i].id == id) return &table[i];
    return nullptr;
}

bool AsciiParameter::inRange(int value) const {
    return static_cast<unsigned int>(value - minValue) <= static_cast<unsigned int>(maxValue - minValue);
}

int AsciiParameter::dataOf(int value) const { return codes != nullptr ? codes[value - minValue] : value; }

bool AsciiParameter::valueOf(int data, int& value) const {
    if (codes == nullptr) {
        value = data;
        return true;
    }
    for (int v = minValue; v <= maxValue; ++v) {
        if (codes[v - minValue] == data) {
            value = v;
            return true;
        }
    }
    return false;
}

void AsciiParameter::writePrefix(char (&out)[8]) const {
    std::snprintf(out, sizeof(out), width == 4 ? ":w%04X" : ":W%04X", static_cast<unsigned int>(address));
}

int AsciiParameter::readCommand(char (&out)[12]) const {
    if (width == 4) {
        std::snprintf(out, sizeof(out), ":r%04X0000", static_cast<unsigned int>(address));
        return 10;
    }
    std::snprintf(out, sizeof(out), ":R%04X", static_cast<unsigned int>(address));
    return 8;
}
