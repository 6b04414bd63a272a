#pragma once
#include <cstddef>
#include <initializer_list>
#include <set>
#include <vector>

#include "drivers/ispboard/IspBoardTable.h"

// A board's table made of another board's table with registers and parameter
// rows added (the rows of `droppedIds` left out first): a board that is
// another one plus a lens, plus masks.
class IspBoardTableExtension {
public:
    IspBoardTableExtension(const char* controllerName, const IspBoardTable& base,
                           const IspBoardTable::Register* registers, size_t registerCount,
                           const IspBoardTable::Parameter* parameters, size_t parameterCount,
                           std::initializer_list<int> droppedIds = {});
    IspBoardTableExtension(const IspBoardTableExtension&) = delete;
    IspBoardTableExtension& operator=(const IspBoardTableExtension&) = delete;

    const IspBoardTable& table() const { return m_table; }

private:
    std::vector<IspBoardTable::Register> m_registers;
    std::vector<IspBoardTable::Parameter> m_parameters;
    IspBoardTable m_table;
};
