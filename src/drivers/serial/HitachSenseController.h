#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "drivers/serial/AsciiSenseController.h"

// Controller of the Hitachi block camera on a serial line (ASCII register
// protocol, every accepted command echoed). The detail key "isThridGeneration"
// says whether the module is of the third generation, which runs PAL
// 1280x720; earlier ones are set to NTSC 1280x960 or 1280x720 by the video
// resolution. The worker (threadBody) follows the module's status register.
class HitachSenseController : public AsciiSenseController {
public:
    enum { SensorType = SensorTypes::Hitach, StatusRegister = 0x0F00, StatusAnswerLength = 8 };

    HitachSenseController();
    ~HitachSenseController() override;

    // The parameter table of this module, ascending by id.
    static const AsciiParameter* parameterTable(size_t& count);

    int initController(int sensorType, const ModuleConfigure& cfg) override;
    // ":W170101" (third generation, "_______set PAL & 1280*720"), else
    // ":WFCC000" for a 960-line picture ("_______set NTSC & 1280*960") and
    // ":WFCC001" for any other ("_______set NTSC & 1280*720").
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;

    int isThridGeneration() const { return m_nThridGeneration; }

protected:
    // For a module of the same family with a table of its own.
    HitachSenseController(int sensorType, const char* className, const AsciiParameter* table, size_t count);

private:
    int m_nThridGeneration = 0;
};
