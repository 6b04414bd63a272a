#include "drivers/serial/CMD8300SenseController.h"

#include <cstdio>
#include <vector>

#include "drivers/serial/FCBEV7310SenseController.h"
#include "platform/KSLogger.h"
#include "platform/ModuleParameterParser.h"
#include "platform/PlatformClock.h"

namespace {

typedef ViscaParameter P;

// Exposure modes in which a value is sent.
const unsigned char kModeManual = 1 << 1;
const unsigned char kModeShutter = 1 << 2;

const int kManualNRId = 3;
const unsigned char kNRCode = 0x53;

// The CMD8300's parameters up to id 32 (this library's definition: which image parameter
// each id is, its packet and its accepted values): id, name of the messages,
// name of the range message (nullptr: every value is taken), accepted values,
// packet shape, command byte, fixed argument, exposure modes that send it,
// power-on value, operation of a Controller row (see ViscaParameter::operation).
const ViscaParameter kTable[] = {
    {1, "Sharpness", "p_Sharpness", 0, 100, P::Controller, 0x42, 0, 0, 46, 1},
    {2, "Gamma", "p_nGamma", 0, 5, P::Nibble, 0x5B, 0, 0, 0},
    {kManualNRId, "NR", "p_nNR", 0, 5, P::Nibble, kNRCode, 0, 0, 2},
    {4, "NRMode", "p_nNRMode", 0, 1, P::Controller, kNRCode, 0, 0, 0, CMD8300SenseController::OpNRMode},
    {5, "ExposalMode", "p_nExposalMode", 0, 4, P::Controller, 0x39, 0, 0, 0, 10},
    {6, "Shutter", "p_nShutter", 0, 21, P::Nibbles, 0x4A, 0, kModeManual | kModeShutter, 0},
    {7, "Iris", "p_nIri", 0, 17, P::Nibbles, 0x4B, 0, 0, 0},
    {8, "Gain", "p_nGain", 0, 15, P::Nibbles, 0x4C, 0, kModeManual, 0},
    {9, "Bright", "p_nBright", 0, 27, P::Controller, 0x4D, 0, 0, 0, 13},
    {10, "GainLimit", "p_nGainLimit", 4, 15, P::Nibble, 0x2C, 0, 0, 15},
    {11, "AutoSlowShutter", nullptr, 0, 0, P::OnOff, 0x5A, 0, 0, 0},
    {12, "ExposureCompensation", "p_nExposureCompensation", 0, 14, P::Nibbles, 0x4E, 0, 0, 7},
    {13, "BackLight", nullptr, 0, 0, P::OnOff, 0x33, 0, 0, 0},
    {14, "WBMode", "p_nWBMode", 1, 6, P::Controller, 0x35, 0, 0, 1, 23},
    {15, "RGain", "p_nRGain", 0, 255, P::Nibbles, 0x43, 0, 0, 0},
    {16, "BGain", "p_nBGain", 0, 255, P::Nibbles, 0x44, 0, 0, 0},
    {17, "Mirror", "p_nMirror", 0, 3, P::Controller, 0x61, 0, 0, 0, 6},
    {18, "FocusMode", "p_nFocusMode", 0, 1, P::Controller, 0x38, 0, 0, 0, 30},
    {19, "FocusNearLimit", "p_nFocusNearLimit", 1, 15, P::Controller, 0x28, 0, 0, 1, 34},
    {20, "WDMode", "p_nWDMode", 0, 15, P::Nibble, 0x3D, 0, 0, 3},
    {21, "Defog", "p_nDefog", 0, 3, P::Controller, 0x37, 0, 0, 0, 65},
    {22, "HighlightHold", "p_nHighlightHold", 0, 3, P::Controller, 0x14, 0, 0, 0,
     CMD8300SenseController::OpHighlightHold},
    {23, "DayNightMode", nullptr, 0, 0, P::Controller, 0, 0, 0, 0, 26},
    {24, "DTNSensitivity", "p_nDTNSensitivity", 0, 28, P::Nibbles, 0x1A, 0, 0, 0},
    {25, "NTDSensitivity", "p_nNTDSensitivity", 0, 28, P::Nibbles, 0x21, 0, 0, 0},
    {26, "Infrared", "p_nInfrared", 0, 1, P::Nibble, 0x11, 0, 0, 0},
    {27, "HighSensitivity", nullptr, 0, 0, P::OnOff, 0x5E, 0, 0, 0},
    {28, "OnePushTrigger", nullptr, 0, 0, P::Fixed, 0x18, 0x01, 0, 0},
    {29, "Saturation", "p_nSaturation", 0, 14, P::Nibbles, 0x49, 0, 0, 4},
    {30, "Hue", "p_nHue", 0, 14, P::Nibbles, 0x4F, 0, 0, 7},
    {31, "AEResponse", "p_nAEResponse", 1, 48, P::Byte, 0x5D, 0, 0, 1},
    {32, "DigitalZoom", nullptr, 0, 0, P::OnOff, 0x06, 0, 0, 1},
};
// The rows after the base controller's operations (57-64).
const ViscaParameter kTail[] = {
    {65, "Brightness", "p_nBrightness", 0, 100, P::Controller, 0x4D, 0, 0, 0, 56},
    {66, "LowLightChromaSuppress", "p_nLowLightChromaSuppress", 0, 3, P::Nibble, 0x5F, 0, 0, 0},
};
// Lamps (57-59), day/night switch times (60-63) and power mode (64): the base
// controller's operations, rows of the same ids as the FCB-EV7310's.
const ViscaParameter::Range kBaseRows[] = {{57, 0, 0}, {58, 0, 0}, {59, 0, 0}, {60, 0, 0},
                                           {61, 0, 0}, {62, 0, 0}, {63, 0, 0}, {64, 0, 0}};

const std::vector<ViscaParameter>& table() {
    static const std::vector<ViscaParameter> rows = [] {
        std::vector<ViscaParameter> r(kTable, kTable + sizeof(kTable) / sizeof(kTable[0]));
        std::vector<ViscaParameter> base =
            FCBEV7310SenseController::rowsWithRanges(kBaseRows, sizeof(kBaseRows) / sizeof(kBaseRows[0]));
        r.insert(r.end(), base.begin(), base.end());
        r.insert(r.end(), kTail, kTail + sizeof(kTail) / sizeof(kTail[0]));
        return r;
    }();
    return rows;
}

// Automatic noise reduction: the level for gains up to each bound.
struct GainLevel {
    int maxGain, level;
};
const GainLevel kAutoNR[] = {{4, 1}, {9, 3}, {15, 5}};

}  // namespace

CMD8300SenseController::CMD8300SenseController()
    : ViscaSenseController(SensorType, ByteForm, "CMD8300", table().data(), table().size()) {
    registerIds("CMD8300SenseController");
}

CMD8300SenseController::~CMD8300SenseController() {
    // The worker (automatic noise reduction) may be in a transaction: stop it
    // before the port and anything else goes.
    stopWorker();
    closeUART();
}

const ViscaParameter* CMD8300SenseController::parameterTable(size_t& count) {
    count = table().size();
    return table().data();
}

int CMD8300SenseController::autoNRLevelOf(int gain) {
    for (const GainLevel& g : kAutoNR)
        if (gain <= g.maxGain) return g.level;
    return kAutoNR[sizeof(kAutoNR) / sizeof(kAutoNR[0]) - 1].level;
}

bool CMD8300SenseController::openUART(const ModuleConfigure& cfg) { return openSerialPort(cfg); }

void CMD8300SenseController::closeUART() {
    KSMutexGuard guard(m_UARTMutex);
    m_nUARTPort = -1;
}

int CMD8300SenseController::setNRMode(int p_nNRMode) {
    if (static_cast<unsigned int>(p_nNRMode) > 1) {
        KSLogger::consolePrintf("p_nNRMode(%d) is out of range\n", p_nNRMode);
        return 0;
    }
    if (p_nNRMode == 1) {
        // The next pass of the worker looks at the gain at once.
        m_nAutoNRLevel = -1;
        m_nLastAutoNRMs = -1;
        m_nNRMode = 1;
        return 1;
    }
    // Manual: the module goes back to the manual level.
    m_nNRMode = 0;
    unsigned char level = static_cast<unsigned char>(groupValue(kManualNRId) & 0x0F);
    return sendCommand(kNRCode, &level, 1);
}

int CMD8300SenseController::setHighlightHold(int p_nHighlightHold) {
    if (static_cast<unsigned int>(p_nHighlightHold) > 3) {
        KSLogger::consolePrintf("p_nHighlightHold(%d) is out of range\n", p_nHighlightHold);
        return 0;
    }
    // 81 01 04 14 0p 00 FF: p = level, 0 off; no mask.
    unsigned char v[2] = {static_cast<unsigned char>(p_nHighlightHold), 0x00};
    return sendCommand(0x14, v, 2);
}

int CMD8300SenseController::setModuleRow(const ViscaParameter& row, int value, int& result) {
    switch (row.op()) {
    case OpNRMode: result = setNRMode(value); return 1;
    case OpHighlightHold: result = setHighlightHold(value); return 1;
    default: return 0;
    }
}

int CMD8300SenseController::followGain() {
    const ViscaParameter* gainRow = findRow(8);
    int gain = 0;
    if (!inquireRow(*gainRow, gain)) {
        KSLogger::consolePrintf("CMD8300 auto NR: get gain failed\n");
        return 0;
    }
    const int level = autoNRLevelOf(gain);
    if (level == m_nAutoNRLevel.load()) return 1;
    unsigned char v = static_cast<unsigned char>(level);
    if (!sendCommand(kNRCode, &v, 1)) {
        KSLogger::consolePrintf("CMD8300 auto NR: set NR(%d) failed\n", level);
        return 0;
    }
    Debug_Printf("CMD8300 auto NR: gain %d, NR %d", gain, level);
    m_nAutoNRLevel = level;
    return 1;
}

void CMD8300SenseController::doDependOnThread() {
    if (m_nNRMode.load() != 1 || m_BaseSensorStatus != InitSuccess) return;
    const int64_t now = PlatformClock::nowMs();
    const int64_t last = m_nLastAutoNRMs.load();
    if (last >= 0 && now - last < AutoNRPeriodMs) return;
    m_nLastAutoNRMs = now;
    followGain();
}

int CMD8300SenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("__CMD8300SenseController::init,ModuleConfigure is(%s,%s)\n", cfg.getDetail().c_str(),
                            cfg.getParameters().c_str());
    if (!openUART(cfg)) {
        closeUART();
        return 0;
    }
    ModuleParameterParser objParameters;
    if (!objParameters.parse(cfg.getParameters()) || !objParameters.getValue("GUIConfigName", m_strGUIConfigName)) {
        KSLogger::consolePuts("get GUIConfigName from senseParameter failed");
        closeUART();
        return 0;
    }
    return 1;
}
