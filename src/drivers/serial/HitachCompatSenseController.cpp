#include "drivers/serial/HitachCompatSenseController.h"

namespace {

// The iris step register carries 01 (open a step) or 02 (close a step).
const int kIrisOpen[] = {0x01};
const int kIrisClose[] = {0x02};

// The Hitachi-compatible module's parameters: the Hitachi rows it shares (same
// registers) and its own. Every address is this library's own definition.
// id, name, range name, first and last value, address, width, codes, own, power-on value.
const AsciiParameter kTable[] = {
    {1, "Brightness", "p_nBrightness", 0, 100, 0x0110, 2, nullptr, true, 50},
    {2, "Contrast", "p_nContrast", 0, 100, 0x0111, 2, nullptr, true, 50},
    {3, "Saturation", "p_nSaturation", 0, 100, 0x0112, 2, nullptr, true, 50},
    {4, "Sharpness", "p_nSharpness", 0, 15, 0x0113, 2, nullptr, true, 8},
    {6, "Mirror", "p_nMirror", 0, 3, 0x0120, 2, nullptr, true, 0},
    {7, "ExposalMode", "p_nExposalMode", 0, 3, 0x0130, 2, nullptr, true, 0},
    {9, "AGC", "p_nAGC", 0, 15, 0x0132, 2, nullptr, true, 8},
    {10, "BackLight", "p_nBackLight", 0, 1, 0x0133, 2, nullptr, true, 0},
    {12, "VerticalSharpness", "p_nVerticalSharpness", 0, 15, 0x0114, 2, nullptr, true, 8},
    {13, "RGain", "p_nRGain", 0, 255, 0x0141, 2, nullptr, true, 128},
    {14, "BGain", "p_nBGain", 0, 255, 0x0142, 2, nullptr, true, 128},
    {16, "WDR", "p_nWDR", 0, 1, 0x0151, 2, nullptr, true, 0},
    {17, "ColorMode", "p_nColorMode", 0, 2, 0x0160, 2, nullptr, true, 0},
    {18, "AutoIris", "p_nAutoIris", 0, 1, 0x0170, 2, nullptr, true, 1},
    {19, "IrisVoltage", "p_nIrisVoltage", 0, 255, 0x0171, 2, nullptr, true, 128},
    {20, "LensAdjust", "p_nLensAdjust", 1, 1, 0x0172, 2, nullptr, true, 0},
    {21, "LensType", "p_nLensType", 0, 1, 0x0173, 2, nullptr, true, 0},
    {54, "IrisOpen", "p_nIrisOpen", 1, 1, 0x0174, 2, kIrisOpen, true, 1},
    {55, "IrisClose", "p_nIrisClose", 1, 1, 0x0174, 2, kIrisClose, true, 1},
};

}  // namespace

HitachCompatSenseController::HitachCompatSenseController()
    : HitachSenseController(SensorType, "HitachCompatSenseController", kTable, sizeof(kTable) / sizeof(kTable[0])) {}

HitachCompatSenseController::~HitachCompatSenseController() {
    stopModuleWorker();
    stopWorker();
}

const AsciiParameter* HitachCompatSenseController::parameterTable(size_t& count) {
    count = sizeof(kTable) / sizeof(kTable[0]);
    return kTable;
}
