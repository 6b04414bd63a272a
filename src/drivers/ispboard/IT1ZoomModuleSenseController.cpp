#include "drivers/ispboard/IT1ZoomModuleSenseController.h"

#include "drivers/ispboard/IspBoardTableExtension.h"
#include "drivers/serial/SerialLineSettings.h"
#include "platform/KSLogger.h"

namespace {

typedef IT1ZoomModuleSenseController Z;

const IspBoardTable::Register kLensRegisters[] = {
    {Z::RegLensCommand, 8, "LensCommand", 0, 0, 4, true},
    {Z::RegAutoFocus, 8, "AutoFocus", 1, 0, 1, true},
    {Z::RegZoomPosition, 16, "ZoomPosition", 0, 0, Z::MaxZoom, true},
    {Z::RegFocusPosition, 16, "FocusPosition", 0x0200, 0, Z::MaxFocus, true},
    {Z::RegZoomSpeed, 8, "ZoomSpeed", 3, 0, 7, true},
    {Z::RegLensAdjust, 8, "LensAdjust", 0, 0, 1, true},
};

const IspBoardTable::Parameter kLensParameters[] = {
    {Z::IdZoomSpeed, IspBoardTable::Whole, Z::RegZoomSpeed, 0, 0, 7, "p_nZoomSpeed(%d) is out of range",
     "setZoomSpeed error,value is %d"},
    {Z::IdAutoFocus, IspBoardTable::Own, Z::RegAutoFocus, 0, 0, 1, "p_nAutoFocus(%d) is out of range",
     "setAutoFocus error,value is %d"},
    {Z::IdAdjustLens, IspBoardTable::Own, Z::RegLensAdjust, 0, 1, 1, "p_nAdjustLens(%d) is out of range",
     "setAdjustLens error,value is %d"},
};

}  // namespace

const IspBoardTable& IT1ZoomModuleSenseController::boardTable() {
    // The IT1 table with the lens registers and rows; the IT1's id 22 (night
    // colour) is the lens adjustment here.
    static const IspBoardTableExtension zoom("IT1ZoomModuleSenseController", it1Table(), kLensRegisters,
                                             sizeof(kLensRegisters) / sizeof(kLensRegisters[0]), kLensParameters,
                                             sizeof(kLensParameters) / sizeof(kLensParameters[0]), {IdAdjustLens});
    return zoom.table();
}

IT1ZoomModuleSenseController::IT1ZoomModuleSenseController() : IBaseIT1SenseController(SensorType, boardTable()) {}

IT1ZoomModuleSenseController::IT1ZoomModuleSenseController(int sensorType, const IspBoardTable& table)
    : IBaseIT1SenseController(sensorType, table) {}

bool IT1ZoomModuleSenseController::openPort(const ModuleConfigure& cfg) {
    SerialLineSettings line;
    line.missingDeviceText = "get RS485DeviceName from detail failed";
    return openBoardPort(cfg, line, RS485Texts);
}

int IT1ZoomModuleSenseController::lensCommand(int command) { return writeRegister(RegLensCommand, command); }

int IT1ZoomModuleSenseController::FocusFar(int) { return lensCommand(LensFocusFar); }
int IT1ZoomModuleSenseController::FocusNear(int) { return lensCommand(LensFocusNear); }
int IT1ZoomModuleSenseController::ZoomIn(int) { return lensCommand(LensZoomIn); }
int IT1ZoomModuleSenseController::ZoomOut(int) { return lensCommand(LensZoomOut); }
int IT1ZoomModuleSenseController::StopZoomContrl() { return lensCommand(LensStop); }
int IT1ZoomModuleSenseController::StopFocusContrl() { return lensCommand(LensStop); }

int IT1ZoomModuleSenseController::getZoomValue(int& zoom, int& maxZoom) {
    int v = 0;
    if (!readRegister(RegZoomPosition, v)) return 0;
    zoom = v;
    maxZoom = MaxZoom;
    return 1;
}

int IT1ZoomModuleSenseController::setZoomValue(int zoom) {
    if (static_cast<unsigned int>(zoom) > MaxZoom) {
        KSLogger::consolePrintf("p_nZoom(%d) is out of range\n", zoom);
        return 0;
    }
    return writeRegister(RegZoomPosition, zoom);
}

int IT1ZoomModuleSenseController::setFocusValue(int focus) {
    if (static_cast<unsigned int>(focus) > MaxFocus) {
        KSLogger::consolePrintf("p_nFocus(%d) is out of range\n", focus);
        return 0;
    }
    return writeRegister(RegFocusPosition, focus);
}

int IT1ZoomModuleSenseController::getFocusValue(int& focus) { return readRegister(RegFocusPosition, focus); }

int IT1ZoomModuleSenseController::setAutoFocus(int on) { return writeRegister(RegAutoFocus, on ? 1 : 0); }

int IT1ZoomModuleSenseController::setFocusMode(int mode) {
    if (static_cast<unsigned int>(mode) > 1) {
        KSLogger::consolePuts("invalid value");
        return 0;
    }
    return setAutoFocus(mode == 0 ? 1 : 0);
}

int IT1ZoomModuleSenseController::getFocusMode(int& mode) {
    int v = 0;
    if (!readRegister(RegAutoFocus, v)) return 0;
    mode = v ? 0 : 1;
    return 1;
}

int IT1ZoomModuleSenseController::setAdjustLens() { return writeRegister(RegLensAdjust, 1); }

int IT1ZoomModuleSenseController::setOwnParameter(const IspBoardTable::Parameter& row, int value) {
    int ok = 0;
    switch (row.id) {
    case IdAutoFocus: ok = setAutoFocus(value); break;
    case IdAdjustLens: ok = setAdjustLens(); break;
    default: return IBaseIT1SenseController::setOwnParameter(row, value);
    }
    if (!ok) printText(row.failText, value);
    return ok;
}

int IT1ZoomModuleSenseController::getOwnParameter(const IspBoardTable::Parameter& row, int& value) {
    switch (row.id) {
    case IdAutoFocus: return readRegister(RegAutoFocus, value);
    case IdAdjustLens: return 0;  // a command: nothing to read
    default: return IBaseIT1SenseController::getOwnParameter(row, value);
    }
}
