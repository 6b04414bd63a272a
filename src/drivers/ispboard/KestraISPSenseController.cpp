#include "drivers/ispboard/KestraISPSenseController.h"

#include <cstdlib>
#include <string>

#include "drivers/serial/SerialLineSettings.h"
#include "platform/KSLogger.h"
#include "platform/ModuleParameterParser.h"

namespace {

typedef KestraISPSenseController K;

const IspBoardTable::Register kRegisters[] = {
    {0x0101, 8, "Brightness", 50, 0, 100, true},
    {0x0102, 8, "Contrast", 50, 0, 100, true},
    {0x0103, 8, "Saturation", 50, 0, 100, true},
    {0x0104, 8, "Sharpness", 50, 0, 100, true},
    {0x0105, 8, "Hue", 50, 0, 100, true},
    {K::RegMirror, 8, "Mirror", 0x80, 0, 255, true},
    {0x0107, 8, "Gamma", 3, 0, 7, true},
    {0x0108, 8, "ShutterMode", 0, 0, 1, true},
    {0x0109, 16, "Shutter", 40, 1, 10000, true},
    {0x010A, 8, "GainMode", 0, 0, 1, true},
    {0x010B, 8, "Gain", 0, 0, 100, true},
    {0x010C, 8, "WhiteBalance", 0, 0, 4, true},
    {0x010F, 8, "Backlight", 0, 0, 1, true},
    {0x0110, 8, "WideDynamic", 8, 0, 15, true},
    {0x0112, 8, "Defog", 0, 0, 3, true},
    {K::RegHdrMode, 8, "HdrMode", 0, 0, 2, true},
    {K::RegRunMode, 8, "RunMode", 0, 0, 2, true},
    {0x011A, 8, "DoorMode", 1, 0, 1, true},
    {0x011B, 8, "PowerFrequency", 0, 0, 1, true},
    {0x011C, 8, "HighlightHold", 0, 0, 1, true},
    {0x011D, 8, "HighlightLevel", 8, 0, 15, true},
    {K::RegNrMode, 8, "NrMode", 0, 0, 1, true},
    {K::RegManualNr2D, 8, "ManualNr2D", 4, 0, 15, true},
    {K::RegManualNr3D, 8, "ManualNr3D", 4, 0, 15, true},
    {K::RegAutoNrLevel, 8, "AutoNrLevel", 1, 0, 3, true},
    {0x0123, 8, "RedGain", 128, 0, 255, true},
    {0x0124, 8, "BlueGain", 128, 0, 255, true},
    {0x0125, 8, "AeTarget", 96, 0, 255, true},
    {0x0127, 8, "AntiFlicker", 0, 0, 1, true},
    {0x0139, 8, "DayNightMode", 0, 0, 2, true},
    {0x013A, 8, "DayNightDelay", 5, 0, 30, true},
    {0x013B, 8, "IrCut", 1, 0, 1, true},
    {0x013C, 8, "ColorToBw", 40, 0, 255, true},
    {0x013D, 8, "BwToColor", 80, 0, 255, true},
    {0x013E, 8, "SlowShutter", 0, 0, 1, true},
};

#define KROW ISP_BOARD_ROW

const IspBoardTable::Parameter kParameters[] = {
    KROW(1, 0x0101, 0, 100, "Brightness"),
    KROW(2, 0x0102, 0, 100, "Contrast"),
    KROW(3, 0x0103, 0, 100, "Saturation"),
    {4, IspBoardTable::Whole, 0x0104, 0, 0, 100, "p_nSharpness(%d) is out of range", "setSharpness error,value is %d"},
    KROW(5, 0x0105, 0, 100, "Hue"),
    {K::IdMirror, IspBoardTable::Field, K::RegMirror, 0x03, 0, 3, "p_nMirror(%d) is out of range",
     "setMirror error,value is %d"},
    {7, IspBoardTable::Whole, 0x0107, 0, 0, 7, "setGama(%d) is out of range\n", "setGama error,value is %d"},
    KROW(8, 0x0108, 0, 1, "ShutterMode"),
    KROW(9, 0x0109, 1, 10000, "Shutter"),
    KROW(10, 0x010A, 0, 1, "GainMode"),
    KROW(11, 0x010B, 0, 100, "Gain"),
    KROW(12, 0x010C, 0, 4, "WhiteBalanceMode"),
    KROW(15, 0x010F, 0, 1, "Backlight"),
    KROW(16, 0x0110, 0, 15, "WideDynamic"),
    KROW(18, 0x0112, 0, 3, "Defog"),
    {K::IdHdrMode, IspBoardTable::Own, K::RegHdrMode, 0, 0, 2, "p_nHDRMode(%d) is out of range",
     "setHDRMode error,value is %d"},
    KROW(25, K::RegRunMode, 0, 2, "RunMode"),
    KROW(26, 0x011A, 0, 1, "DoorMode"),
    KROW(27, 0x011B, 0, 1, "PowerFrequency"),
    KROW(28, 0x011C, 0, 1, "HighlightHold"),
    KROW(29, 0x011D, 0, 15, "HighlightLevel"),
    KROW(K::IdNrMode, K::RegNrMode, 0, 1, "NRMode"),
    {K::IdManualNr2D, IspBoardTable::Own, K::RegManualNr2D, 0, 0, 15, "p_nManualNR2D(%d) is out of range",
     "setManualNR2D error,value is %d"},
    {K::IdManualNr3D, IspBoardTable::Own, K::RegManualNr3D, 0, 0, 15, "p_nManualNR3D(%d) is out of range",
     "setManualNR3D error,value is %d"},
    {K::IdAutoNrLevel, IspBoardTable::Own, K::RegAutoNrLevel, 0, 0, 3, "p_nAutoNRLevel(%d) is out of range",
     "setAutoNRLevel error,value is %d"},
    KROW(35, 0x0123, 0, 255, "RedGain"),
    KROW(36, 0x0124, 0, 255, "BlueGain"),
    KROW(37, 0x0125, 0, 255, "AETarget"),
    KROW(39, 0x0127, 0, 1, "AntiFlicker"),
    KROW(57, 0x0139, 0, 2, "DayNightMode"),
    KROW(58, 0x013A, 0, 30, "DayNightDelay"),
    KROW(59, 0x013B, 0, 1, "IrCut"),
    KROW(60, 0x013C, 0, 255, "ColorToBW"),
    KROW(61, 0x013D, 0, 255, "BWToColor"),
    KROW(62, 0x013E, 0, 1, "SlowShutter"),
};

#undef KROW

const IspBoardTable kTable = {"KestraISPSenseController", kRegisters, sizeof(kRegisters) / sizeof(kRegisters[0]),
                              kParameters, sizeof(kParameters) / sizeof(kParameters[0])};

}  // namespace

const IspBoardTable& KestraISPSenseController::boardTable() { return kTable; }

KestraISPSenseController::KestraISPSenseController() : IspBoardSenseController(SensorType, kTable) {
    registerIds(kTable.controllerName);
}

KestraISPSenseController::~KestraISPSenseController() {}

int KestraISPSenseController::getMirrorValue(int& value) { return getParameterFromSensor(IdMirror, value); }

int KestraISPSenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("____KestraISPSenseController::init,ModuleConfigure is(%s,%s)\n", cfg.getDetail().c_str(),
                            cfg.getParameters().c_str());
    SerialLineSettings line;
    if (!openBoardPort(cfg, line, SerialModuleTexts)) return 0;
    ModuleParameterParser objDetail;
    objDetail.parse(cfg.getDetail());
    std::string value;
    if (objDetail.getValue("TNF", value))
        m_nTNFSwitch = static_cast<int>(std::strtol(value.c_str(), nullptr, 10));
    else
        KSLogger::consolePuts("get TNF from detail failed");
    if (objDetail.getValue("HDR", value)) {
        const int mode = static_cast<int>(std::strtol(value.c_str(), nullptr, 10));
        if (!updateHDRMode(mode)) KSLogger::consolePrintf("setHDRMode error,value is %d\n", mode);
    } else {
        KSLogger::consolePuts("get HDR from detail failed");
    }
    int mirror = 0;
    if (!readRegister(RegMirror, mirror)) KSLogger::consolePuts("Init getMirror Value failed");
    return 1;
}

int KestraISPSenseController::updateHDRMode(int mode) {
    if (static_cast<unsigned int>(mode) > 2) {
        KSLogger::consolePrintf("p_nHDRMode(%d) is out of range\n", mode);
        return 0;
    }
    if (!writeRegister(RegHdrMode, mode)) return 0;
    m_nHDRMode = mode;
    return 1;
}

int KestraISPSenseController::setOwnParameter(const IspBoardTable::Parameter& row, int value) {
    int ok = 0;
    switch (row.id) {
    case IdHdrMode: ok = updateHDRMode(value); break;
    case IdManualNr2D:
    case IdManualNr3D:
    case IdAutoNrLevel: {
        // The manual strengths belong to the manual mode, the automatic level
        // to the automatic mode: the other mode's values are refused.
        int mode = 0;
        if (!currentRegister(RegNrMode, mode)) break;
        if (row.id == IdAutoNrLevel && mode != 0) {
            KSLogger::consolePuts("set auto NR failed : current NR mode is manual");
            return 0;
        }
        if (row.id != IdAutoNrLevel && mode == 0) {
            KSLogger::consolePuts("set manual NR failed : current NR mode is auto");
            return 0;
        }
        ok = writeRegister(row.address, value);
        break;
    }
    default: return 0;
    }
    if (!ok) printText(row.failText, value);
    return ok;
}

int KestraISPSenseController::getOwnParameter(const IspBoardTable::Parameter& row, int& value) {
    return readRegister(row.address, value);
}
