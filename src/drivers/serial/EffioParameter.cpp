#include "drivers/serial/EffioParameter.h"

const EffioParameter* EffioParameter::find(const EffioParameter* table, size_t count, int id) {
    for (size_t i = 0; table != nullptr && i < count; ++i)
        if (table[i].id == id) return &table[i];
    return nullptr;
}

bool EffioParameter::inRange(int value) const {
    return static_cast<unsigned int>(value - minValue) <= static_cast<unsigned int>(maxValue - minValue);
}
