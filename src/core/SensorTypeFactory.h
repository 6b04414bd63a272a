#pragma once
#include "core/ISensorController.h"
#include "platform/SafePointer.h"

// Builds any controller of this library by its sensor type (SensorTypes), as a
// board other than the fisheye one needs: the fisheye board's factory
// (SenseControllerFactory) builds the fisheye controller only. An unknown type
// gives the do-nothing controller.
class SensorTypeFactory {
public:
    static SafePointer<ISensorController> create(int type);
};
