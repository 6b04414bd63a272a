#pragma once
#include <cstddef>
#include <cstdint>

// The register map of one ISP board and the parameter ids that its controller
// maps onto it, as data (docs/ispboard.md). The simulated board builds its
// register file from the same table, so a board with other addresses is one
// table changed.
struct IspBoardTable {
    // One register of the board.
    struct Register {
        uint16_t address;
        uint8_t width;     // 8 or 16 bits
        const char* name;  // for traces and the documentation
        int powerOn;       // the board's value after power-on
        int minValue;      // the values that the board accepts in a write
        int maxValue;
        bool writable;     // false: a status register that the board sets itself
    };

    // How a parameter id sits in its register.
    enum Kind {
        Whole,  // the register holds the value
        Field,  // bits `mask` of a register that carries other fields too (cached)
        Own     // coded by the controller (several registers, rules between ids)
    };

    // One parameter id.
    struct Parameter {
        int id;
        Kind kind;
        uint16_t address;       // the register (Own: the first one the controller uses)
        uint8_t mask;           // Field: the bits of the value, lowest bit first
        int minValue;           // the values accepted before anything is sent
        int maxValue;
        const char* rangeText;  // refusal text, "%d" replaced by the value
        const char* failText;   // failed write, "%d" replaced by the value
    };

    // The frames that the board speaks: the family's (IspBoardFrame) or a
    // board's own (ITNFrame, SeawolfFrame).
    enum FrameShape { FamilyFrames, ITNFrames, SeawolfFrames };

    const char* controllerName;
    const Register* registers;
    size_t registerCount;
    const Parameter* parameters;
    size_t parameterCount;
    FrameShape frames = FamilyFrames;

    const Register* findRegister(uint16_t address) const;
    const Parameter* findParameter(int id) const;
};

// A parameter row of kind Whole whose texts name the value `name`:
// "p_n<name>(%d) is out of range" and "set<name> error,value is %d".
#define ISP_BOARD_ROW(id, address, lo, hi, name)                                                            \
    {                                                                                                        \
        id, IspBoardTable::Whole, address, 0, lo, hi, "p_n" name "(%d) is out of range",                     \
            "set" name " error,value is %d"                                                                  \
    }
