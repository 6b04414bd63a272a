#pragma once
#include "drivers/ispboard/IBaseIT1SenseController.h"

// The IT1 board: the family base with the IT1 table, nothing else.
class IT1SenseController : public IBaseIT1SenseController {
public:
    enum { SensorType = 80 };
    IT1SenseController();
    static const IspBoardTable& boardTable() { return it1Table(); }
};
