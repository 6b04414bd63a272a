#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "drivers/serial/ViscaSenseController.h"

// Controller of the Sony CH3310 zoom block camera on a serial line (VISCA,
// camera address 1, replies in the search form: 90 41 FF or 90 51 FF found in
// a 3-byte read). The module offers the FCB-EV7310's operations without
// defog, highlight compensation, focus steps and power mode; its ranges are
// the rows of parameterTable().
class SONYCH3310SenseController : public ViscaSenseController {
public:
    enum { SensorType = SensorTypes::SONYCH3310 };

    SONYCH3310SenseController();
    ~SONYCH3310SenseController() override;

    // The parameter table of this module, ascending by id.
    static const ViscaParameter* parameterTable(size_t& count);

    int initController(int sensorType, const ModuleConfigure& cfg) override;
};
