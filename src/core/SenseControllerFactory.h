#pragma once
#include "core/ISensorController.h"
#include "platform/SafePointer.h"

// Builds the controller for a module id: 88 the fisheye board, anything else
// the do-nothing controller.
class SenseControllerFactory {
public:
    static SafePointer<ISensorController> create(int type);
};
