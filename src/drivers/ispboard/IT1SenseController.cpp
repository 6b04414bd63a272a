#include "drivers/ispboard/IT1SenseController.h"

IT1SenseController::IT1SenseController() : IBaseIT1SenseController(SensorType, it1Table()) {}
