#pragma once
#include "core/ISensorController.h"

// Controller of the S2 fisheye ISP board (module id 88, sensor type 88).
class S2FisheyeSenseController : public ISensorController {
public:
    enum { SensorType = 88, ConfigVersion = 0, ConfigVersion2 = 3 };

    S2FisheyeSenseController();
    ~S2FisheyeSenseController() override;

    int getMirrorValue(int& value) override;
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;
    int initController(int sensorType, const ModuleConfigure& cfg) override;
    int initFactorySetting() override;
};
