#include "core/NullSenseController.h"

NullSenseController::NullSenseController() : ISensorController(0) {}

int NullSenseController::getMirrorValue(int&) { return 0; }
int NullSenseController::getParameterFromSensor(int, int&) { return 0; }
int NullSenseController::setParameterToSensor(int, int) { return 0; }
int NullSenseController::setSensorVideoSystem(int, const VideoResolution&) { return 0; }
int NullSenseController::initController(int, const ModuleConfigure&) { return 0; }
