#include "drivers/fisheye/S2FisheyeSenseController.h"

S2FisheyeSenseController::S2FisheyeSenseController() : ISensorController(SensorType) {
    registerIds("S2FisheyeSenseController");
    setSensorConfigVersion(ConfigVersion);
    setSensorConfigVersion2(ConfigVersion2);
}

S2FisheyeSenseController::~S2FisheyeSenseController() = default;

int S2FisheyeSenseController::getMirrorValue(int&) { return 1; }

int S2FisheyeSenseController::initFactorySetting() { return 1; }

// The board's hardware bring-up is not wired yet: the shell accepts the
// video system and initialisation so the shared machinery can run.
int S2FisheyeSenseController::setSensorVideoSystem(int, const VideoResolution&) { return 1; }

int S2FisheyeSenseController::initController(int, const ModuleConfigure&) { return 1; }
