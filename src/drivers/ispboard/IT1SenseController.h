#pragma once
#include "core/SensorTypes.h"
#include "drivers/ispboard/IBaseIT1SenseController.h"

// The IT1 board: the family base with the IT1 table, nothing else.
class IT1SenseController : public IBaseIT1SenseController {
public:
    enum { SensorType = SensorTypes::IT1 };
    IT1SenseController();
    static const IspBoardTable& boardTable() { return it1Table(); }
};
