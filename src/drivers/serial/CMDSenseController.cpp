#include "drivers/serial/CMDSenseController.h"

#include <cstdio>

#include "drivers/serial/FCBEV7310SenseController.h"
#include "platform/KSLogger.h"
#include "platform/ModuleParameterParser.h"

namespace {

typedef ViscaParameter P;

// Exposure modes in which a value is sent.
const unsigned char kModeManual = 1 << 1;
const unsigned char kModeShutter = 1 << 2;

// The rows of the CMD modules' numbering (this library's definition: which
// image parameter each id is, its packet and its accepted values): id, name of
// the messages, name of the range message (nullptr: every value is taken),
// accepted values, packet shape, command byte, fixed argument, exposure modes
// that send it, power-on value, operation of a Controller row (see
// ViscaParameter::operation). A module takes the rows it has with its own
// accepted values.
const ViscaParameter kCatalogue[] = {
    {0, "ExposalMode", "p_nExposalMode", 0, 4, P::Controller, 0x39, 0, 0, 0, 10},
    {1, "Bright", "p_nBright", 0, 27, P::Controller, 0x4D, 0, 0, 0, 13},
    {2, "Gain", "p_nGain", 0, 15, P::Nibbles, 0x4C, 0, kModeManual, 0},
    {3, "GainLimit", "p_nGainLimit", 4, 15, P::Nibble, 0x2C, 0, 0, 15},
    {4, "Shutter", "p_nShutter", 0, 21, P::Nibbles, 0x4A, 0, kModeManual | kModeShutter, 0},
    {5, "Iris", "p_nIri", 0, 17, P::Nibbles, 0x4B, 0, 0, 0},
    {6, "WBMode", "p_nWBMode", 1, 6, P::Controller, 0x35, 0, 0, 1, 23},
    {7, "RGain", "p_nRGain", 0, 255, P::Nibbles, 0x43, 0, 0, 0},
    {9, "BGain", "p_nBGain", 0, 255, P::Nibbles, 0x44, 0, 0, 0},
    {10, "Mirror", "p_nMirror", 0, 3, P::Controller, 0x61, 0, 0, 0, 6},
    {11, "FocusMode", "p_nFocusMode", 0, 1, P::Controller, 0x38, 0, 0, 0, 30},
    {12, "FocusNearLimit", "p_nFocusNearLimit", 1, 15, P::Controller, 0x28, 0, 0, 1, 34},
    {13, "DayNightMode", nullptr, 0, 0, P::Controller, 0, 0, 0, 0, 26},
    {14, "Sensitivity", "p_nSensitivity", 0, 1, P::OnOff, 0x5E, 0, 0, 0},
    {15, "WDR", "p_nWDR", 0, 1, P::OnOff, 0x3D, 0, 0, 0},
    {16, "Photometry", "p_nPhotometry", 0, 2, P::Controller, 0x59, 0, 0, 0, CMDSenseController::OpPhotometry},
    {17, "NR", "p_nNR", 0, 5, P::Nibble, 0x53, 0, 0, 2},
    {18, "Gamma", "p_nGamma", 0, 1, P::Nibble, 0x5B, 0, 0, 0},
    {19, "Sharpness", "p_Sharpness", 0, 100, P::Controller, 0x42, 0, 0, 46, 1},
    {20, "ShutterLimit", "p_nShutterLimit", 0, 21, P::Nibbles, 0x2A, 0, 0, 0},
    {52, "IrisUp", nullptr, 0, 0, P::Fixed, 0x0B, 0x02, 0, 0},
    {53, "IrisDown", nullptr, 0, 0, P::Fixed, 0x0B, 0x03, 0, 0},
    {54, "FocusUp", nullptr, 0, 0, P::Fixed, 0x08, 0x02, 0, 0},
    {55, "FocusDown", nullptr, 0, 0, P::Fixed, 0x08, 0x03, 0, 0},
    {56, "Brightness", "p_nBrightness", 0, 100, P::Controller, 0x4D, 0, 0, 0},
    {64, "OnePushTrigger", nullptr, 0, 0, P::Fixed, 0x18, 0x01, 0, 0},
    {65, "PowerMode", nullptr, 0, 0, P::Controller, 0, 0, 0, 0, 64},
    {66, "EnterAutoMode", nullptr, 0, 0, P::Controller, 0, 0, 0, 0, CMDSenseController::OpEnterAutoMode},
    {67, "OnePushWB", nullptr, 0, 0, P::Fixed, 0x10, 0x05, 0, 0},
    {68, "ExposureCompensationReset", nullptr, 0, 0, P::Fixed, 0x0E, 0x00, 0, 0},
    {69, "ExposureCompensationUp", nullptr, 0, 0, P::Fixed, 0x0E, 0x02, 0, 0},
    {70, "ExposureCompensationDown", nullptr, 0, 0, P::Fixed, 0x0E, 0x03, 0, 0},
    {71, "IrisReset", nullptr, 0, 0, P::Fixed, 0x0B, 0x00, 0, 0},
    {72, "ZoomTele", nullptr, 0, 0, P::Fixed, 0x07, 0x02, 0, 0},
    {73, "ZoomWide", nullptr, 0, 0, P::Fixed, 0x07, 0x03, 0, 0},
    {74, "ZoomStop", nullptr, 0, 0, P::Fixed, 0x07, 0x00, 0, 0},
};
// Lamps (57-59) and day/night switch times (60-63): the base controller's
// operations, rows of the same ids as the FCB-EV7310's.
const ViscaParameter::Range kBaseRows[] = {{57, 0, 0}, {58, 0, 0}, {59, 0, 0}, {60, 0, 0},
                                           {61, 0, 0}, {62, 0, 0}, {63, 0, 0}};

const std::vector<ViscaParameter>& catalogue() {
    static const std::vector<ViscaParameter> rows = [] {
        std::vector<ViscaParameter> r(kCatalogue, kCatalogue + sizeof(kCatalogue) / sizeof(kCatalogue[0]));
        std::vector<ViscaParameter> base =
            FCBEV7310SenseController::rowsWithRanges(kBaseRows, sizeof(kBaseRows) / sizeof(kBaseRows[0]));
        r.insert(r.end(), base.begin(), base.end());
        return r;
    }();
    return rows;
}

}  // namespace

CMDSenseController::CMDSenseController(int sensorType, const char* className, const char* moduleName,
                                       const ViscaParameter* table, size_t count, bool readsGeneration)
    : ViscaSenseController(sensorType, SearchForm, moduleName, table, count),
      m_pszClassName(className),
      m_bReadsGeneration(readsGeneration) {
    registerIds(className);
}

std::vector<ViscaParameter> CMDSenseController::rowsWithRanges(const ViscaParameter::Range* ranges, size_t count) {
    return ViscaParameter::compose(catalogue().data(), catalogue().size(), ranges, count);
}

int CMDSenseController::setPhotometry(int p_nPhotometry) {
    // (back light compensation, spot AE) of metering 0-2.
    static const SwitchPair kPhotometry[3] = {{false, false}, {true, false}, {false, true}};
    return sendSwitchPair("p_nPhotometry", p_nPhotometry, kPhotometry, 3, 0x33, 0x59);
}

int CMDSenseController::enterAutoMode() {
    unsigned char autoWhiteBalance = 0x00;
    return setExposalMode(0) && sendCommand(0x35, &autoWhiteBalance, 1) && setFocusMode(0) ? 1 : 0;
}

int CMDSenseController::setModuleRow(const ViscaParameter& row, int value, int& result) {
    switch (row.op()) {
    case OpPhotometry: result = setPhotometry(value); return 1;
    case OpEnterAutoMode: result = enterAutoMode(); return 1;
    default: return 0;
    }
}

int CMDSenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("__%s::init,ModuleConfigure is(%s,%s)\n", m_pszClassName, cfg.getDetail().c_str(),
                            cfg.getParameters().c_str());
    if (!openSerialPort(cfg)) return 0;
    if (!m_bReadsGeneration) return 1;
    ModuleParameterParser objDetail;
    int generation = 0;
    if (!objDetail.parse(cfg.getDetail()) || !objDetail.getValue("generation", generation)) {
        KSLogger::consolePuts("get generation from detail failed");
        return 0;
    }
    m_nGeneration = generation;
    return 1;
}
