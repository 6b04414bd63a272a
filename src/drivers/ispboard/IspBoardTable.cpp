#include "drivers/ispboard/IspBoardTable.h"

const IspBoardTable::Register* IspBoardTable::findRegister(uint16_t address) const {
    for (size_t i = 0; i < registerCount; ++i)
        if (registers[i].address == address) return &registers[i];
    return nullptr;
}

const IspBoardTable::Parameter* IspBoardTable::findParameter(int id) const {
    for (size_t i = 0; i < parameterCount; ++i)
        if (parameters[i].id == id) return &parameters[i];
    return nullptr;
}
