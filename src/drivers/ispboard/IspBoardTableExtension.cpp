#include "drivers/ispboard/IspBoardTableExtension.h"

IspBoardTableExtension::IspBoardTableExtension(const char* controllerName, const IspBoardTable& base,
                                               const IspBoardTable::Register* registers, size_t registerCount,
                                               const IspBoardTable::Parameter* parameters, size_t parameterCount,
                                               std::initializer_list<int> droppedIds) {
    const std::set<int> dropped(droppedIds);
    m_registers.assign(base.registers, base.registers + base.registerCount);
    m_registers.insert(m_registers.end(), registers, registers + registerCount);
    for (size_t i = 0; i < base.parameterCount; ++i)
        if (dropped.count(base.parameters[i].id) == 0) m_parameters.push_back(base.parameters[i]);
    m_parameters.insert(m_parameters.end(), parameters, parameters + parameterCount);
    m_table = {controllerName, m_registers.data(), m_registers.size(), m_parameters.data(), m_parameters.size()};
}
