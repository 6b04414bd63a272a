#pragma once
#include "drivers/fisheye/S2FisheyeSenseController.h"

namespace camsim {

// camsim's fisheye board: the library's fisheye controller, plus an answer to
// the current-gain question from the simulated ISP's gain read. The fisheye
// controller itself has no current-gain read, so on a real board a "GAIN" table
// of ISPParam.xml is never applied; camsim answers it so that the gain-indexed
// ISP tables (and a scenario's gain column) can be tried on a PC. Everything
// else is the library's controller unchanged.
class GainReadingFisheyeController : public S2FisheyeSenseController {
public:
    int getCurrentGain(int& gain) override { return getFixGain(gain); }
};

}  // namespace camsim
