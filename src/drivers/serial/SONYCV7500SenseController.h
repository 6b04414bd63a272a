#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "drivers/serial/ViscaSenseController.h"

// Controller of the Sony CV7500 zoom block camera on a serial line (VISCA,
// camera address 1, replies in the search form). The module offers most of
// the FCB-EV7310's operations (same ids, same packets) and adds point-light
// focus (focus that ignores point light sources) and a bright compensation
// with its level in one value; its ranges are the rows of parameterTable().
class SONYCV7500SenseController : public ViscaSenseController {
public:
    enum { SensorType = SensorTypes::SONYCV7500, PointLightFocusCode = 0x5C };

    SONYCV7500SenseController();
    ~SONYCV7500SenseController() override;

    // The parameter table of this module, ascending by id.
    static const ViscaParameter* parameterTable(size_t& count);

    int initController(int sensorType, const ModuleConfigure& cfg) override;

    int OpenPointLightFocus();
    int ClosePointLightFocus();
    // 1 and `mode` (1 on, 0 off) from the module; 0 when it does not answer.
    int checkPointLightFocusMode(int& mode);

protected:
    int setModuleRow(const ViscaParameter& row, int value, int& result) override;
};
