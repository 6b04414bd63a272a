#include "drivers/serial/HitachSenseController.h"

#include <cstdlib>
#include <string>

#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "platform/KSLogger.h"
#include "platform/ModuleParameterParser.h"

namespace {

// The Hitachi module's parameters. The module's register list is not public:
// every address here is this library's own definition (own = true).
// id, name, range name, first and last value, address, width, codes, own, power-on value.
const AsciiParameter kTable[] = {
    {1, "Brightness", "p_nBrightness", 0, 100, 0x0110, 2, nullptr, true, 50},
    {2, "Contrast", "p_nContrast", 0, 100, 0x0111, 2, nullptr, true, 50},
    {3, "Saturation", "p_nSaturation", 0, 100, 0x0112, 2, nullptr, true, 50},
    {4, "Sharpness", "p_nSharpness", 0, 15, 0x0113, 2, nullptr, true, 8},
    {6, "Mirror", "p_nMirror", 0, 3, 0x0120, 2, nullptr, true, 0},
    {7, "ExposalMode", "p_nExposalMode", 0, 3, 0x0130, 2, nullptr, true, 0},
    {8, "Shutter", "p_nShutter", 0, 15, 0x0131, 2, nullptr, true, 0},
    {9, "AGC", "p_nAGC", 0, 15, 0x0132, 2, nullptr, true, 8},
    {10, "BackLight", "p_nBackLight", 0, 1, 0x0133, 2, nullptr, true, 0},
    {11, "WBMode", "p_nWBMode", 0, 4, 0x0140, 2, nullptr, true, 0},
    {13, "RGain", "p_nRGain", 0, 255, 0x0141, 2, nullptr, true, 128},
    {14, "BGain", "p_nBGain", 0, 255, 0x0142, 2, nullptr, true, 128},
    {15, "DNR", "p_nDNR", 0, 3, 0x0150, 2, nullptr, true, 1},
    {16, "WDR", "p_nWDR", 0, 1, 0x0151, 2, nullptr, true, 0},
    {17, "ColorMode", "p_nColorMode", 0, 2, 0x0160, 2, nullptr, true, 0},
};

}  // namespace

HitachSenseController::HitachSenseController()
    : HitachSenseController(SensorType, "HitachSenseController", kTable, sizeof(kTable) / sizeof(kTable[0])) {}

HitachSenseController::HitachSenseController(int sensorType, const char* className, const AsciiParameter* table,
                                             size_t count)
    : AsciiSenseController(sensorType, className, table, count) {
    registerIds(className);
    setStatusRegister(":R0F00", StatusAnswerLength, "threadBody");
}

HitachSenseController::~HitachSenseController() {
    // The workers use the port: both end before any part of the controller goes.
    stopModuleWorker();
    stopWorker();
}

const AsciiParameter* HitachSenseController::parameterTable(size_t& count) {
    count = sizeof(kTable) / sizeof(kTable[0]);
    return kTable;
}

int HitachSenseController::initController(int, const ModuleConfigure& cfg) {
    if (!openModule(cfg)) return 0;
    ModuleParameterParser objDetail;
    std::string strGeneration;
    if (!objDetail.parse(cfg.getDetail()) || !objDetail.getValue("isThridGeneration", strGeneration)) {
        KSLogger::consolePuts("get isThridGeneration from detail failed");
        return 0;
    }
    m_nThridGeneration = static_cast<int>(std::strtol(strGeneration.c_str(), nullptr, 10));
    return 1;
}

int HitachSenseController::setSensorVideoSystem(int, const VideoResolution& res) {
    const char* command = ":WFCC001";
    const char* line = "_______set NTSC & 1280*720";
    if (m_nThridGeneration) {
        command = ":W170101";
        line = "_______set PAL & 1280*720";
    } else if (res.getVideoHeight() == 960) {
        command = ":WFCC000";
        line = "_______set NTSC & 1280*960";
    }
    Debug_Printf("%s", line);
    if (!sendData(command)) {
        ErrorPrintf("Hitach setSensorVideoSystem failed");
        KSLogger::consolePuts("Hitach setSensorVideoSystem failed");
        return 0;
    }
    return 1;
}
