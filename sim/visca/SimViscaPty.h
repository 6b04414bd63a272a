#pragma once
// The simulated VISCA block behind a pseudo-terminal: the serial-device pty of
// sim/line, under the name the VISCA tests and tools know it by.
#include "line/SimSerialPty.h"
#include "visca/SimViscaModule.h"

using SimViscaPty = SimSerialPty;
