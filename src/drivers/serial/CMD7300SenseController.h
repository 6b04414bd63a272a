#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "drivers/serial/CMDSenseController.h"

// Controller of the CMD7300 zoom block camera on a serial line (VISCA, camera
// address 1, replies in the search form): the CMD8100's operations with the
// CMD modules' numbering of the ids; it has gamma (18) and none of commands
// 65-74. Its ids and ranges are the rows of parameterTable().
class CMD7300SenseController : public CMDSenseController {
public:
    enum { SensorType = SensorTypes::CMD7300 };

    CMD7300SenseController();
    ~CMD7300SenseController() override;

    // The parameter table of this module, ascending by id.
    static const ViscaParameter* parameterTable(size_t& count);
};
