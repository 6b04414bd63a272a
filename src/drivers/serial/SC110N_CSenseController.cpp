#include "drivers/serial/SC110N_CSenseController.h"

#include "platform/KSLogger.h"

namespace {

// Exposure modes 0-4 as the data of register FCC8 (":WFCC800" ... ":WFCC831").
const int kExposureCodes[] = {0x00, 0x01, 0x10, 0x20, 0x31};
// One-push white balance: ":WFFE6C0".
const int kOnePushWB[] = {0xC0};
// Lens movements: register FD00 (zoom) and FD01 (focus), 01 tele/near, 02 wide/far, 00 stop.
const int kMoveIn[] = {0x01};
const int kMoveOut[] = {0x02};
const int kMoveStop[] = {0x00};

// The SC110N-C's parameters. The module's command list names the registers
// FBF9, FBF6, FC10-FC14, FCC8 and FFE6 (own = false); what each of them
// does, and every other address (own = true), is this library's own definition.
// id, name, range name, first and last value, address, width, codes, own, power-on value.
const AsciiParameter kTable[] = {
    {1, "Brightness", "p_nBrightness", 0, 255, 0xFC10, 2, nullptr, false, 128},
    {2, "Contrast", "p_nContrast", 0, 255, 0xFC11, 2, nullptr, false, 128},
    {3, "Saturation", "p_nSaturation", 0, 255, 0xFC12, 2, nullptr, false, 128},
    {4, "Sharpness", "p_nSharpness", 0, 255, 0xFC13, 2, nullptr, false, 128},
    {6, "Hue", "p_nHue", 0, 255, 0xFC14, 2, nullptr, false, 128},
    {7, "Mirror", "p_nMirror", 0, 3, 0xFBF9, 2, nullptr, false, 0},
    {8, "Shutter", "p_nShutter", 0, 15, 0xFBF6, 2, nullptr, false, 0},
    {9, "ExposalMode", "p_nExposalMode", 0, 4, 0xFCC8, 2, kExposureCodes, false, 0},
    {10, "AGC", "p_nAGC", 0, 15, 0xFC20, 2, nullptr, true, 8},
    {11, "WBMode", "p_nWBMode", 0, 3, 0xFC21, 2, nullptr, true, 0},
    {13, "RGain", "p_nRGain", 0, 255, 0xFC22, 2, nullptr, true, 128},
    {14, "BGain", "p_nBGain", 0, 255, 0xFC23, 2, nullptr, true, 128},
    {15, "DNR", "p_nDNR", 0, 3, 0xFC24, 2, nullptr, true, 1},
    {16, "WDR", "p_nWDR", 0, 1, 0xFC25, 2, nullptr, true, 0},
    {17, "BackLight", "p_nBackLight", 0, 1, 0xFC26, 2, nullptr, true, 0},
    {18, "Defog", "p_nDefog", 0, 1, 0xFC27, 2, nullptr, true, 0},
    {19, "AntiFlicker", "p_nAntiFlicker", 0, 1, 0xFC28, 2, nullptr, true, 0},
    {20, "OnePushWB", "p_nOnePushWB", 1, 1, 0xFFE6, 2, kOnePushWB, false, 1},
    {22, "ZoomTele", "p_nZoomTele", 1, 1, 0xFD00, 2, kMoveIn, true, 1},
    {23, "ZoomWide", "p_nZoomWide", 1, 1, 0xFD00, 2, kMoveOut, true, 1},
    {24, "ZoomStop", "p_nZoomStop", 1, 1, 0xFD00, 2, kMoveStop, true, 1},
    {25, "FocusNear", "p_nFocusNear", 1, 1, 0xFD01, 2, kMoveIn, true, 1},
    {26, "FocusFar", "p_nFocusFar", 1, 1, 0xFD01, 2, kMoveOut, true, 1},
    {27, "FocusStop", "p_nFocusStop", 1, 1, 0xFD01, 2, kMoveStop, true, 1},
    {28, "OnePushAF", "p_nOnePushAF", 1, 1, 0xFD02, 2, nullptr, true, 1},
    {29, "ColorBar", "p_nColorBar", 0, 1, 0xFD03, 2, nullptr, true, 0},
};

}  // namespace

SC110N_CSenseController::SC110N_CSenseController()
    : AsciiSenseController(SensorType, "SC110N_CSenseController", kTable, sizeof(kTable) / sizeof(kTable[0])) {
    registerIds("SC110N_CSenseController");
    setStatusRegister(":rE1ED0000", StatusAnswerLength, "SC110N_CStatus");
}

SC110N_CSenseController::~SC110N_CSenseController() {
    // The workers use the port: both end before any part of the controller goes.
    stopModuleWorker();
    stopWorker();
}

const AsciiParameter* SC110N_CSenseController::parameterTable(size_t& count) {
    count = sizeof(kTable) / sizeof(kTable[0]);
    return kTable;
}

int SC110N_CSenseController::initController(int, const ModuleConfigure& cfg) {
    if (!openModule(cfg)) return 0;
    if (!readStatus()) {
        KSLogger::consolePuts("SC110N_C read status failed");
        return 0;
    }
    if (!sendData(":WFBFF02")) {
        KSLogger::consolePuts("SC110N_C select register page failed");
        return 0;
    }
    return 1;
}
