#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "drivers/serial/ViscaSenseController.h"

// Controller of the Sony EH4300 zoom block camera on a serial line (VISCA,
// camera address 1, replies in the search form: 90 41 FF or 90 51 FF found in
// a 3-byte read). The module offers the FCB-EV7310's operations without defog
// and highlight compensation; its ranges are the rows of parameterTable().
// At start-up the module is put on internal synchronisation (register 0x56).
class SONYEH4300SenseController : public ViscaSenseController {
public:
    enum { SensorType = SensorTypes::SONYEH4300, SyncRegister = 0x56 };

    SONYEH4300SenseController();
    ~SONYEH4300SenseController() override;

    // The parameter table of this module, ascending by id.
    static const ViscaParameter* parameterTable(size_t& count);

    int initController(int sensorType, const ModuleConfigure& cfg) override;

private:
    // Reads register 0x56 and sets it to 1 when the module runs on external sync.
    bool openInterSync();
};
