#pragma once
#include <vector>

#include "storage/IRPowerItem.h"

// The infrared lamp power table: its rows in zoom order as they were handed
// over (the day/night control picks the row for the current zoom).
class IRPowerParam {
public:
    void setIrPower(const std::vector<IRPowerItem>& p_rows) { m_rows = p_rows; }
    const std::vector<IRPowerItem>& getIrPower() const { return m_rows; }

private:
    std::vector<IRPowerItem> m_rows;
};
