#pragma once
#include <cstddef>
#include <cstdint>

// One row of an ASCII register module's parameter table: the register that
// carries a parameter id, how its value becomes the register's data, which
// values are accepted, and the names of its messages. A module's controller is
// a table of these rows and its start-up exchange.
//
// A register of width 2 is written ":W" + 4 hex digits of the address + 2 of
// data and read ":R" + address; a register of width 4 is written ":w" +
// address + 4 digits of data and read ":r" + address + "0000".
struct AsciiParameter {
    int id;
    const char* name;       // "Brightness": "setBrightness error,value is %d"
    const char* rangeName;  // "p_nBrightness": "p_nBrightness(%d) is out of range"
    int minValue;
    int maxValue;
    uint16_t address;
    int width;           // hex digits of the data: 2 (one byte) or 4 (two bytes)
    const int* codes;    // the data of each value minValue..maxValue; nullptr: the data is the value
    bool own;            // the address (and coding) is this library's own definition
    int defaultValue;    // the module's value after power-on

    // The row of `id` in a table, nullptr when none.
    static const AsciiParameter* find(const AsciiParameter* table, size_t count, int id);
    // Whether the value passes the row's range (compared unsigned after the
    // minimum, so a value below it fails).
    bool inRange(int value) const;
    // The register data of an accepted value.
    int dataOf(int value) const;
    // The value of register data; false when no value has that data.
    bool valueOf(int data, int& value) const;
    // The write command's text before the data (":W" or ":w" and the address).
    void writePrefix(char (&out)[8]) const;
    // The read command (":R" + address, or ":r" + address + "0000") and the
    // length of its answer (the command with the data digits filled in).
    int readCommand(char (&out)[12]) const;
};
