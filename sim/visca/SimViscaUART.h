#pragma once
// The simulated VISCA block's in-process port: the serial-device port of
// sim/line, under the name the VISCA tests and tools know it by.
#include "line/SimSerialUART.h"
#include "visca/SimViscaModule.h"

using SimViscaUART = SimSerialUART;
