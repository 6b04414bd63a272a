#pragma once
#include <cstddef>
#include <vector>

// One row of a VISCA module's parameter table: which command carries a
// parameter id, how its value is coded, which values are accepted, and the
// names of its messages. A module's controller is a table of these rows and
// the few operations that no row shape covers.
struct ViscaParameter {
    // How the value travels (p q r s are 4-bit nibbles, high first).
    enum Shape {
        Nibble,     // 81 01 04 cc 0p FF
        OnOff,      // 81 01 04 cc 02|03 FF: 0 off, anything else on
        OneIsOn,    // 81 01 04 cc 02|03 FF: 1 on, anything else off
        Byte,       // 81 01 04 cc vv FF
        Nibbles,    // 81 01 04 cc 0p 0q 0r 0s FF
        Fixed,      // 81 01 04 cc aa FF, a command without a value
        Controller  // the controller's own code (groups, scaled values, base operations)
    };

    int id;
    const char* name;       // "Sharpness": "setSharpness error,value is %d", "getSharpness error,value is %d"
    const char* rangeName;  // "p_Sharpness": "p_Sharpness(%d) is out of range"; nullptr: no range
    int minValue;
    int maxValue;
    Shape shape;
    unsigned char code;       // the command byte after 81 01 04 (inquiry: 81 09 04 cc FF)
    unsigned char argument;   // Fixed: the value byte
    unsigned char modeMask;   // bit m: sent in exposure mode m; 0: sent in every mode
    int defaultValue;         // the module's value after power-on
    // Rows of shape Controller: the operation that codes the row, named by the id
    // that the Sony block cameras' numbering gives it (13 bright, 6 mirror, 57 near
    // light, ...), so that a module with its own numbering reuses the operation;
    // 0: the row's own id. The group operations (spot AE position, the 2D and 27
    // groups, highlight compensation) find their partner values by the Sony ids,
    // so only tables of that numbering have them.
    int operation = 0;

    // The operation of the row (see `operation`).
    int op() const { return operation != 0 ? operation : id; }

    // A module's row taken from another module's table: the id and the values
    // that this module accepts.
    struct Range {
        int id;
        int minValue;
        int maxValue;
    };
    // The rows of `catalogue` with the ids of `ranges`, in that order, each with
    // the accepted values of its range; ids that the catalogue lacks are left out.
    static std::vector<ViscaParameter> compose(const ViscaParameter* catalogue, size_t count, const Range* ranges,
                                               size_t rangeCount);

    // The row of `id` in a table, nullptr when none.
    static const ViscaParameter* find(const ViscaParameter* table, size_t count, int id);
    // Whether the value passes the row's range (compared unsigned after the minimum,
    // so a negative value fails).
    bool inRange(int value) const;
    // Builds the command packet of a row with a value shape; its length, 0 for other shapes.
    int buildCommand(int value, unsigned char* packet) const;
    // The length of the inquiry's answer (90 50 ... FF), 0 when the row has no inquiry.
    int answerLength() const;
    // Decodes an inquiry answer of answerLength() bytes; false when it is not one.
    bool decodeAnswer(const unsigned char* answer, int& value) const;

    // 81 01 04 code, the value bytes, FF; the packet length.
    static int command(unsigned char code, const unsigned char* values, int count, unsigned char* packet);
    // Writes `count` nibbles of value, high first.
    static void nibbles(int value, int count, unsigned char* out);
};
