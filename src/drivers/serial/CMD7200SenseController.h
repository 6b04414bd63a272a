#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "drivers/serial/AsciiSenseController.h"

// Controller of the CMD7200 camera on a serial line (ASCII register protocol,
// every accepted command echoed): picture, shutter mode and fixed shutter,
// focus limit (a two-byte register) and white balance. At start-up the shutter
// mode register is read, so that an absent or silent module fails the start-up.
class CMD7200SenseController : public AsciiSenseController {
public:
    enum { SensorType = SensorTypes::CMD7200 };

    CMD7200SenseController();
    ~CMD7200SenseController() override;

    // The parameter table of this module, ascending by id.
    static const AsciiParameter* parameterTable(size_t& count);

    int initController(int sensorType, const ModuleConfigure& cfg) override;
};
