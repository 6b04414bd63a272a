#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "drivers/serial/HitachSenseController.h"

// Controller of a Hitachi-compatible block camera: the Hitachi module's start-up,
// video-system commands and status worker, with a table of its own that adds
// lens adjustment, auto iris and iris voltage, vertical sharpness and iris
// steps, and lacks the shutter, white balance mode and noise reduction.
class HitachCompatSenseController : public HitachSenseController {
public:
    enum { SensorType = SensorTypes::HitachCompat };

    HitachCompatSenseController();
    ~HitachCompatSenseController() override;

    // The parameter table of this module, ascending by id.
    static const AsciiParameter* parameterTable(size_t& count);
};
