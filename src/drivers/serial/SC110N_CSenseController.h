#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "drivers/serial/AsciiSenseController.h"

// Controller of the SC110N-C camera on a serial line (ASCII register protocol,
// every accepted command echoed). At start-up the module's status word is read
// (":rE1ED0000": the module answers once it is ready) and its register page is
// selected (":WFBFF02"); a worker run through GThread then reads the status
// word once a second.
class SC110N_CSenseController : public AsciiSenseController {
public:
    enum { SensorType = SensorTypes::SC110N_C, StatusRegister = 0xE1ED, StatusAnswerLength = 10 };

    SC110N_CSenseController();
    ~SC110N_CSenseController() override;

    // The parameter table of this module, ascending by id.
    static const AsciiParameter* parameterTable(size_t& count);

    int initController(int sensorType, const ModuleConfigure& cfg) override;
};
