#pragma once
#include <cstddef>

// One row of the Effio camera processor's parameter table: where a parameter
// id lives in the processor's category/byte store (a bit field of one byte,
// or a value over consecutive bytes, high byte first), which values are
// accepted, and the names of its messages.
struct EffioParameter {
    int id;
    const char* name;       // "AGC": "setAGC error,value is %d"
    const char* rangeName;  // "p_nAGC": "p_nAGC(%d) is out of range"
    int minValue;
    int maxValue;
    int category;
    int byteNo;
    int startBit;  // the field's lowest bit within the byte (0 for whole bytes)
    int bitCount;  // bits of the field: 1-8 within one byte, 16 for two bytes
    bool own;      // the location is this library's own definition
    int defaultValue;

    // The row of `id` in a table, nullptr when none.
    static const EffioParameter* find(const EffioParameter* table, size_t count, int id);
    // Compared unsigned after the minimum, so a value below it fails.
    bool inRange(int value) const;
    // Bytes the field spans (1 or 2).
    int byteCount() const { return bitCount > 8 ? 2 : 1; }
    // Whether the field is part of a byte (the other bits must be kept).
    bool isBitField() const { return bitCount < 8; }
};
