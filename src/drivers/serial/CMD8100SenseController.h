#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "drivers/serial/CMDSenseController.h"

// Controller of the CMD8100 zoom block camera on a serial line (VISCA, camera
// address 1, replies in the search form). The CMD modules' numbering of the
// ids (from 0); this module has the shutter limit, sensitivity, wide dynamic
// range and photometry, and commands 64-74; its ids and ranges are the rows of
// parameterTable(). Its detail text names its generation ("generation").
class CMD8100SenseController : public CMDSenseController {
public:
    enum { SensorType = SensorTypes::CMD8100 };

    CMD8100SenseController();
    ~CMD8100SenseController() override;

    // The parameter table of this module, ascending by id.
    static const ViscaParameter* parameterTable(size_t& count);
};
