#include "drivers/serial/CMD7200SenseController.h"

#include "platform/KSLogger.h"

namespace {

// The CMD7200's parameters. The module's register list is not public: every
// address here is this library's own definition (own = true).
// id, name, range name, first and last value, address, width, codes, own, power-on value.
const AsciiParameter kTable[] = {
    {1, "Brightness", "p_nBrightness", 0, 100, 0x0200, 2, nullptr, true, 50},
    {2, "Contrast", "p_nContrast", 0, 100, 0x0201, 2, nullptr, true, 50},
    {3, "Saturation", "p_nSaturation", 0, 100, 0x0202, 2, nullptr, true, 50},
    {4, "Sharpness", "p_nSharpness", 0, 15, 0x0203, 2, nullptr, true, 8},
    {5, "ShutterMode", "p_nShutterMode", 0, 1, 0x0210, 2, nullptr, true, 0},
    {6, "FixedShutter", "p_nFixedShutter", 0, 15, 0x0211, 2, nullptr, true, 0},
    {7, "FocusLimit", "p_nFocusLimit", 0, 1000, 0x0220, 4, nullptr, true, 100},
    {8, "WBMode", "p_nWBMode", 0, 5, 0x0230, 2, nullptr, true, 0},
    {9, "RGain", "p_nRGain", 0, 255, 0x0231, 2, nullptr, true, 128},
    {10, "BGain", "p_nBGain", 0, 255, 0x0232, 2, nullptr, true, 128},
};

const int kShutterModeId = 5;

}  // namespace

CMD7200SenseController::CMD7200SenseController()
    : AsciiSenseController(SensorType, "CMD7200SenseController", kTable, sizeof(kTable) / sizeof(kTable[0])) {
    registerIds("CMD7200SenseController");
}

CMD7200SenseController::~CMD7200SenseController() { stopWorker(); }

const AsciiParameter* CMD7200SenseController::parameterTable(size_t& count) {
    count = sizeof(kTable) / sizeof(kTable[0]);
    return kTable;
}

int CMD7200SenseController::initController(int, const ModuleConfigure& cfg) {
    if (!openModule(cfg)) return 0;
    char command[12];
    int answerLength = findRow(kShutterModeId)->readCommand(command);
    int mode = 0;
    if (!recvData(command, answerLength, mode)) {
        KSLogger::consolePuts("CMD7200 read shutter mode failed");
        return 0;
    }
    return 1;
}
