#pragma once
#include "core/ISensorController.h"

// The do-nothing controller for every module id the factory does not know.
class NullSenseController : public ISensorController {
public:
    NullSenseController();

    int getMirrorValue(int& value) override;
    int getParameterFromSensor(int id, int& value) override;
    int setParameterToSensor(int id, int value) override;
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;
    int initController(int sensorType, const ModuleConfigure& cfg) override;
};
