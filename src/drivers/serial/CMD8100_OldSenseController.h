#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "app/VideoResolution.h"
#include "drivers/serial/CMDSenseController.h"

// Controller of the CMD8100 zoom block camera with its earlier firmware on a
// serial line (VISCA, camera address 1, replies in the search form): the
// CMD8100's operations without the shutter limit, with gamma (18) and without
// commands 65-74. Unlike the later firmware it is told the video format
// (setVideoSystem, register 0x72). Its ids and ranges are the rows of
// parameterTable(); its detail text names its generation ("generation").
class CMD8100_OldSenseController : public CMDSenseController {
public:
    enum { SensorType = SensorTypes::CMD8100_Old, VideoFormatRegister = 0x72 };

    CMD8100_OldSenseController();
    ~CMD8100_OldSenseController() override;

    // The parameter table of this module, ascending by id.
    static const ViscaParameter* parameterTable(size_t& count);
    // The module's video format code of a resolution, -1 for one it has none for.
    static int videoFormatOf(const VideoResolution& res);

    // Writes the video format of the resolution into register 0x72.
    int setVideoSystem(const VideoResolution& res);
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;
};
