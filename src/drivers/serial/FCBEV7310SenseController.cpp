#include "drivers/serial/FCBEV7310SenseController.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/CameraLensZMAAlgorithm.h"
#include "platform/KSLogger.h"
#include "platform/KestraTime.h"
#include "platform/ModuleParameterParser.h"
#include "platform/ZMAParamFileToArray.h"
#include "storage/SensorCache.h"

namespace {

typedef ViscaParameter P;

// Exposure modes (id 10) and the modes in which a value is sent.
const unsigned char kModeManual = 1 << 1;
const unsigned char kModeShutter = 1 << 2;
const unsigned char kModeBright = 1 << 4;

// The parameter table of the FCB-EV7310: id, name of the messages, name of the
// range message (nullptr: every value is taken), accepted values, packet shape,
// command byte, fixed argument, exposure modes that send it, power-on value.
// Rows of shape Controller are coded by the controller itself (groups, scaled
// values, the base controller's operations).
const ViscaParameter kTable[] = {
    {1, "Sharpness", "p_Sharpness", 0, 100, P::Controller, 0x42, 0, 0, 46},
    {2, "LowLightChromaSuppress", "p_nLowLightChromaSuppress", 0, 3, P::Nibble, 0x5F, 0, 0, 0},
    {3, "Gamma", "p_nGamma", 0, 5, P::Nibble, 0x5B, 0, 0, 0},
    {4, "NR", "p_nNR", 0, 5, P::Nibble, 0x53, 0, 0, 2},
    {5, "HighResolution", nullptr, 0, 0, P::OnOff, 0x52, 0, 0, 0},
    {6, "Mirror", "p_nMirror", 0, 3, P::Controller, 0x61, 0, 0, 0},
    {7, "Threshold", "p_nThreshold", 0, 28, P::Nibbles, 0x21, 0, 0, 0},
    {8, "StillImage", nullptr, 0, 0, P::OnOff, 0x62, 0, 0, 0},
    {10, "ExposalMode", "p_nExposalMode", 0, 4, P::Controller, 0x39, 0, 0, 0},
    {11, "Shutter", "p_nShutter", 0, 21, P::Nibbles, 0x4A, 0, kModeManual | kModeShutter, 0},
    {12, "Iris", "p_nIri", 0, 17, P::Nibbles, 0x4B, 0, 0, 0},
    {13, "Bright", "p_nBright", 0, 27, P::Controller, 0x4D, 0, kModeBright, 0},
    {14, "Gain", "p_nGain", 0, 15, P::Nibbles, 0x4C, 0, kModeManual, 0},
    {15, "GainLimit", "p_nGainLimit", 4, 15, P::Nibble, 0x2C, 0, 0, 15},
    {16, "AutoSlowShutter", nullptr, 0, 0, P::OnOff, 0x5A, 0, 0, 0},
    {17, "ExposureCompensation", "p_nExposureCompensation", 0, 14, P::Nibbles, 0x4E, 0, 0, 0},
    {18, "AEResponse", "p_nAEResponse", 1, 48, P::Byte, 0x5D, 0, 0, 1},
    {19, "SpotAE", nullptr, 0, 0, P::OnOff, 0x59, 0, 0, 0},
    {20, "SpotAEPositionX", "p_nX", 0, 15, P::Controller, 0x29, 0, 0, 0},
    {21, "SpotAEPositionY", "p_nY", 0, 15, P::Controller, 0x29, 0, 0, 0},
    {22, "BackLight", nullptr, 0, 0, P::OnOff, 0x33, 0, 0, 0},
    {23, "WBMode", "p_nWBMode", 1, 6, P::Controller, 0x35, 0, 0, 1},
    {24, "RGain", "p_nRGain", 0, 255, P::Nibbles, 0x43, 0, 0, 0},
    {25, "BGain", "p_nBGain", 0, 255, P::Nibbles, 0x44, 0, 0, 0},
    {26, "DayNightMode", nullptr, 0, 0, P::Controller, 0, 0, 0, 0},
    {27, "IRCorrection", "p_nIRCorrection", 0, 1, P::Nibble, 0x11, 0, 0, 0},
    {28, "WDMode", "p_nWDMode", 0, 15, P::Nibble, 0x3D, 0, 0, 3},
    {29, "DigitalZoom", nullptr, 0, 0, P::OnOff, 0x06, 0, 0, 1},
    {30, "FocusMode", "p_nFocusMode", 0, 1, P::Controller, 0x38, 0, 0, 0},
    {32, "FocusAutoMode", "p_nAFMode", 0, 2, P::Nibble, 0x57, 0, 0, 0},
    {33, "AFSensitivity", nullptr, 0, 0, P::OneIsOn, 0x58, 0, 0, 1},
    {34, "FocusNearLimit", "p_nFocusNearLimit", 1, 15, P::Controller, 0x28, 0, 0, 1},
    {37, "OnePushTrigger", nullptr, 0, 0, P::Fixed, 0x18, 0x01, 0, 0},
    {38, "Display", "p_nDisplay", 0, 6, P::Controller, 0x2D, 0, 0, 0},
    {39, "Sensitivity", "p_nSensitivity", 0, 3, P::Controller, 0x2D, 0, 0, 0},
    {40, "BlackIntensity", "p_nBlackIntensity", 0, 2, P::Controller, 0x2D, 0, 0, 0},
    {41, "WhiteIntensity", "p_nWhiteIntensity", 0, 2, P::Controller, 0x2D, 0, 0, 0},
    {44, "ShortExposure", "p_nShortExposure", 0, 2, P::Controller, 0x2D, 0, 0, 0},
    {45, "LensMovement", "p_nLensMovement", 0, 255, P::Controller, 0x27, 0, 0, 5},
    {46, "LensInterval", "p_nLensInterval", 0, 255, P::Controller, 0x27, 0, 0, 5},
    {47, "Saturation", "p_nSaturation", 0, 14, P::Nibbles, 0x49, 0, 0, 4},
    {48, "Hue", "p_nHue", 0, 14, P::Nibbles, 0x4F, 0, 0, 7},
    {49, "HighSensitivity", nullptr, 0, 0, P::OnOff, 0x5E, 0, 0, 0},
    {50, "RemoteBright", "p_nBright", 0, 100, P::Controller, 0x4D, 0, 0, 0},
    {51, "TNFMode", nullptr, 0, 0, P::Controller, 0, 0, 0, 0},
    {52, "IrisUp", nullptr, 0, 0, P::Fixed, 0x0B, 0x02, 0, 0},
    {53, "IrisDown", nullptr, 0, 0, P::Fixed, 0x0B, 0x03, 0, 0},
    {54, "FocusUp", nullptr, 0, 0, P::Fixed, 0x08, 0x02, 0, 0},
    {55, "FocusDown", nullptr, 0, 0, P::Fixed, 0x08, 0x03, 0, 0},
    {56, "Brightness", "p_nBrightness", 0, 100, P::Controller, 0x4D, 0, 0, 0},
    {57, "NearLight", nullptr, 0, 0, P::Controller, 0, 0, 0, 50},
    {58, "MiddleLight", nullptr, 0, 0, P::Controller, 0, 0, 0, 50},
    {59, "FarLight", nullptr, 0, 0, P::Controller, 0, 0, 0, 50},
    {60, "DTNTime_H", nullptr, 0, 0, P::Controller, 0, 0, 0, 18},
    {61, "DTNTime_M", nullptr, 0, 0, P::Controller, 0, 0, 0, 0},
    {62, "NTDTime_H", nullptr, 0, 0, P::Controller, 0, 0, 0, 6},
    {63, "NTDTime_M", nullptr, 0, 0, P::Controller, 0, 0, 0, 0},
    {64, "PowerMode", nullptr, 0, 0, P::Controller, 0, 0, 0, 0},
    {65, "Defog", "p_nDefog", 0, 3, P::Controller, 0x37, 0, 0, 0},
    {66, "HLCLevel", "p_nHLCLevel", 0, 3, P::Controller, 0x14, 0, 0, 0},
    {67, "HLCMaskLevel", "p_nHLCMaskLevel", 0, 3, P::Controller, 0x14, 0, 0, 0},
    {68, "HLC", nullptr, 0, 0, P::Controller, 0x14, 0, 0, 0},
};
const size_t kTableSize = sizeof(kTable) / sizeof(kTable[0]);

// VISCA exposure mode values of modes 0-4.
const unsigned char kAeModes[5] = {0x00, 0x03, 0x0A, 0x0B, 0x0D};
// The camera's baud register: index -> baud.
const int kBauds[FCBEV7310SenseController::BaudCount] = {9600, 19200, 38400, 115200};
// Zoom positions of the digital zoom ratios 1x to 12x.
const int kZoomRatioTable[FCBEV7310SenseController::ZoomRatioCount] = {
    16384, 24576, 27264, 28672, 29440, 30016, 30400, 30720, 30912, 31104, 31232, 31424};
// The ids of the wide-dynamic parameter group (81 01 04 2D 00 0q 0r 0s 0t 0u 00 00 FF), in byte order.
const int kWideDynamicIds[5] = {38, 39, 40, 41, 44};
const unsigned char kRestartPacket[7] = {0xFE, 0x05, 0x03, 0x01, 0x01, 0x0A, 0xFF};
const char* const kLensTablePath = "/hd1/program/config/ZMAParam.txt";

}  // namespace

FCBEV7310SenseController::FCBEV7310SenseController()
    : SerialSenseController(SensorType, MessageForm), m_pZMAAlgorithm(new CameraLensZMAAlgorithm()) {
    registerIds("FCBEV7310SenseController");
}

FCBEV7310SenseController::~FCBEV7310SenseController() {
    // The worker may be in a transaction: stop it while the port is still here.
    getDayNightThread().stop();
}

const ViscaParameter* FCBEV7310SenseController::parameterTable(size_t& count) {
    count = kTableSize;
    return kTable;
}

int FCBEV7310SenseController::zoomRatioOf(int position) {
    if (position <= kZoomRatioTable[0]) return 1000;
    for (int k = 1; k < ZoomRatioCount; ++k) {
        if (kZoomRatioTable[k - 1] < position && position <= kZoomRatioTable[k])
            return (k + 1) * 1000 -
                   1000 * (kZoomRatioTable[k] - position) / (kZoomRatioTable[k] - kZoomRatioTable[k - 1]);
    }
    // Beyond the table's last row: the top ratio.
    return ZoomRatioCount * 1000;
}

int FCBEV7310SenseController::baudOfIndex(int index) { return index >= 0 && index < BaudCount ? kBauds[index] : -1; }

int FCBEV7310SenseController::indexOfBaud(int baud) {
    for (int i = 0; i < BaudCount; ++i)
        if (kBauds[i] == baud) return i;
    return -1;
}

bool FCBEV7310SenseController::hasLensTable() const { return m_pZMAAlgorithm->hasTable(); }

// ---- transactions ----

int FCBEV7310SenseController::sendPacket(const unsigned char* packet, int length) {
    return setParameterValue(reinterpret_cast<const char*>(packet), length);
}

int FCBEV7310SenseController::sendCommand(unsigned char code, const unsigned char* values, int count) {
    unsigned char packet[16];
    int n = ViscaParameter::command(code, values, count, packet);
    return sendPacket(packet, n);
}

void FCBEV7310SenseController::drainUnderLock() {
    KSMutexGuard guard(m_UARTMutex);
    clearUartBuffer();
}

bool FCBEV7310SenseController::statusReady() {
    if (m_BaseSensorStatus == InitSuccess) return true;
    ErrorPrintf("m_BaseSensorStatus != ISensorController::InitSuccess!");
    return false;
}

int FCBEV7310SenseController::sendRow(const ViscaParameter& row, int value) {
    unsigned char packet[16];
    int n = row.buildCommand(value, packet);
    if (n == 0) return 0;
    if (row.modeMask != 0 && !(row.modeMask & (1u << m_nExposureMode))) {
        // The exposure mode decides this value itself: nothing to send.
        Debug_Printf("set%s(%d) not sent in exposure mode %d", row.name, value, m_nExposureMode.load());
        return 1;
    }
    return sendPacket(packet, n);
}

int FCBEV7310SenseController::inquireRow(const ViscaParameter& row, int& value) {
    const int n = row.answerLength();
    if (n == 0) return 0;
    unsigned char inquiry[5] = {0x81, 0x09, 0x04, row.code, 0xFF};
    unsigned char answer[8] = {0};
    if (!getParameterValue(reinterpret_cast<const char*>(inquiry), 5, reinterpret_cast<char*>(answer), n)) return 0;
    return row.decodeAnswer(answer, value) ? 1 : 0;
}

int FCBEV7310SenseController::groupValue(int id) {
    int value = 0;
    if (m_pSensorLastValueCache->getSensorValue(id, value)) return value;
    const ViscaParameter* row = ViscaParameter::find(kTable, kTableSize, id);
    return row != nullptr ? row->defaultValue : 0;
}

// ---- rows that the controller codes itself ----

int FCBEV7310SenseController::sendSharpness(int value) {
    unsigned char v[4];
    ViscaParameter::nibbles(value * 15 / 100, 4, v);
    return sendCommand(0x42, v, 4);
}

int FCBEV7310SenseController::sendFocusNearLimit(int value) {
    unsigned char v[4] = {static_cast<unsigned char>(value & 0x0F), 0, 0, 0};
    return sendCommand(0x28, v, 4);
}

int FCBEV7310SenseController::sendPairGroup(unsigned char code, int firstId, int secondId, int id, int value) {
    int first = id == firstId ? value : groupValue(firstId);
    int second = id == secondId ? value : groupValue(secondId);
    unsigned char v[4];
    ViscaParameter::nibbles(first, 2, v);
    ViscaParameter::nibbles(second, 2, v + 2);
    return sendCommand(code, v, 4);
}

int FCBEV7310SenseController::sendWideDynamicGroup(int id, int value) {
    unsigned char v[8] = {0, 0, 0, 0, 0, 0, 0, 0};
    for (int i = 0; i < 5; ++i) {
        int x = kWideDynamicIds[i] == id ? value : groupValue(kWideDynamicIds[i]);
        v[1 + i] = static_cast<unsigned char>(x & 0x0F);
    }
    return sendCommand(0x2D, v, 8);
}

int FCBEV7310SenseController::sendHighlight(int id, int value) {
    int on = id == 68 ? value : groupValue(68);
    int level = id == 66 ? value : groupValue(66);
    int mask = id == 67 ? value : groupValue(67);
    unsigned char v[2] = {static_cast<unsigned char>(on != 0 ? level & 0x0F : 0),
                          static_cast<unsigned char>(mask & 0x0F)};
    return sendCommand(0x14, v, 2);
}

int FCBEV7310SenseController::sendDefog(int value) {
    unsigned char v[2] = {0x03, 0x00};
    if (value != 0) {
        v[0] = 0x02;
        v[1] = static_cast<unsigned char>(value);
    }
    return sendCommand(0x37, v, 2);
}

int FCBEV7310SenseController::setWhiteBalanceMode(int value) {
    unsigned char v = static_cast<unsigned char>(value - 1);
    return sendCommand(0x35, &v, 1);
}

int FCBEV7310SenseController::setMirror(int p_nMirror) {
    // (horizontal reverse, vertical flip) of mirror values 0-3.
    static const bool kReverse[4] = {false, true, true, false};
    static const bool kFlip[4] = {false, false, true, true};
    if (static_cast<unsigned int>(p_nMirror) > 3) {
        KSLogger::consolePrintf("p_nMirror(%d) is out of range\n", p_nMirror);
        return 0;
    }
    unsigned char h = kReverse[p_nMirror] ? 0x02 : 0x03;
    if (!sendCommand(0x61, &h, 1)) return 0;
    unsigned char v = kFlip[p_nMirror] ? 0x02 : 0x03;
    return sendCommand(0x66, &v, 1);
}

int FCBEV7310SenseController::setExposalMode(int p_nMode) {
    if (static_cast<unsigned int>(p_nMode) > 4) {
        KSLogger::consolePrintf("p_nExposalMode(%d) is out of range\n", p_nMode);
        return 0;
    }
    if (p_nMode == 4 && (m_nAutoIris == 1 || m_nAutoIris == 3)) {
        // With an auto-iris lens the module runs full auto and the lens keeps
        // the brightness: the bright value is then not the module's to set.
        unsigned char fullAuto = 0x00;
        if (!sendCommand(0x39, &fullAuto, 1)) {
            KSLogger::consolePrintf("setExposalMode failed\n");
            return 0;
        }
        m_nExposureMode = 0;
        return 1;
    }
    unsigned char m = kAeModes[p_nMode];
    if (!sendCommand(0x39, &m, 1)) return 0;
    m_nExposureMode = p_nMode;
    return 1;
}

int FCBEV7310SenseController::setBright(int p_nBright) {
    if (static_cast<unsigned int>(p_nBright) > 27) {
        KSLogger::consolePrintf("p_nBright(%d) is out of range\n", p_nBright);
        return 0;
    }
    if (!(kModeBright & (1u << m_nExposureMode))) {
        Debug_Printf("setBright(%d) not sent in exposure mode %d", p_nBright, m_nExposureMode.load());
        return 1;
    }
    int coded = p_nBright == 0 ? 0 : p_nBright + 4;
    unsigned char v[4] = {0, 0, static_cast<unsigned char>((coded >> 4) & 0x0F), static_cast<unsigned char>(coded & 0x0F)};
    if (!sendCommand(0x4D, v, 4)) return 0;
    // The remote sensor's scale of the same value.
    int scaled = 100 * p_nBright / 27;
    m_pSensorCache->setSensorValue(50, scaled);
    m_pSensorLastValueCache->setSensorValue(50, scaled);
    return 1;
}

int FCBEV7310SenseController::setBrightScaled(int value) { return setBright(value * 27 / 100); }

int FCBEV7310SenseController::OnePushTrigger() {
    unsigned char v = 0x01;
    return sendCommand(0x18, &v, 1);
}

int FCBEV7310SenseController::setBaseOperation(int id, int value, int& result) {
    switch (id) {
    case 26: result = setDayNightMode(value); return 1;
    case 30: result = setFocusMode(value); return 1;
    case 51: result = setTNFMode(value) ? 1 : 0; return 1;
    case 57: result = setNearLight(value); return 1;
    case 58: result = setMiddleLight(value); return 1;
    case 59: result = setFarLight(value); return 1;
    case 60: result = setDTNTime_H(value); return 1;
    case 61: result = setDTNTime_M(value); return 1;
    case 62: result = setNTDTime_H(value); return 1;
    case 63: result = setNTDTime_M(value); return 1;
    case 64: result = setPowerMode(value); return 1;
    default: return 0;
    }
}

// ---- parameter access ----

int FCBEV7310SenseController::setParameterToSensor(int id, int value) {
    Debug_Printf("FCBEV7310 set id(%d) value(%d)", id, value);
    int base = ISensorController::setParameterToSensor(id, value);
    if (base == 1) return 1;
    const ViscaParameter* row = ViscaParameter::find(kTable, kTableSize, id);
    if (row == nullptr) return base;
    if (!statusReady()) return 0;
    if (!row->inRange(value)) {
        KSLogger::consolePrintf("%s(%d) is out of range\n", row->rangeName, value);
        return 0;
    }
    int result = 0;
    if (setBaseOperation(id, value, result)) {
        // the base operation reports its own failures
    } else if (row->shape != ViscaParameter::Controller) {
        result = sendRow(*row, value);
    } else {
        switch (id) {
        case 1: result = sendSharpness(value); break;
        case 6: result = setMirror(value); break;
        case 10: result = setExposalMode(value); break;
        case 13: result = setBright(value); break;
        case 20:
        case 21: result = sendPairGroup(0x29, 20, 21, id, value); break;
        case 23: result = setWhiteBalanceMode(value); break;
        case 34: result = sendFocusNearLimit(value); break;
        case 38:
        case 39:
        case 40:
        case 41:
        case 44: result = sendWideDynamicGroup(id, value); break;
        case 45:
        case 46: result = sendPairGroup(0x27, 45, 46, id, value); break;
        case 50:
        case 56: result = setBrightScaled(value); break;
        case 65: result = sendDefog(value); break;
        case 66:
        case 67:
        case 68: result = sendHighlight(id, value); break;
        default: result = 0; break;
        }
    }
    if (!result) KSLogger::consolePrintf("set%s error,value is %d\n", row->name, value);
    return result ? 1 : 0;
}

int FCBEV7310SenseController::getParameterFromSensor(int id, int& value) {
    if (id >= 500 && id <= 504) return ISensorController::getParameterFromSensor(id, value);
    const ViscaParameter* row = ViscaParameter::find(kTable, kTableSize, id);
    if (row == nullptr) return 0;
    if (!statusReady()) return 0;
    int result = 0;
    int v = 0;
    if (row->answerLength() != 0) {
        result = inquireRow(*row, v);
    } else if (id == 6) {
        result = getMirrorValue(v);
    } else if (id == 10) {
        v = m_nExposureMode;
        result = 1;
    } else if (id == 30) {
        result = getFocusMode(v);
    } else {
        // Values that the module has no inquiry for: what was last set, else its power-on value.
        v = groupValue(id);
        result = 1;
    }
    if (!result) {
        KSLogger::consolePrintf("get%s error,value is %d\n", row->name, value);
        return 0;
    }
    value = v;
    return 1;
}

// ---- picture, lens and focus ----

int FCBEV7310SenseController::getMirrorValue(int& value) {
    const ViscaParameter reverse = {6, "Mirror", nullptr, 0, 0, ViscaParameter::OnOff, 0x61, 0, 0, 0};
    const ViscaParameter flip = {6, "Mirror", nullptr, 0, 0, ViscaParameter::OnOff, 0x66, 0, 0, 0};
    int h = 0, v = 0;
    if (!inquireRow(reverse, h) || !inquireRow(flip, v)) return 0;
    value = h ? (v ? 2 : 1) : (v ? 3 : 0);
    return 1;
}

int FCBEV7310SenseController::getStillImageValue(int& value) {
    const ViscaParameter* row = ViscaParameter::find(kTable, kTableSize, 8);
    return inquireRow(*row, value);
}

int FCBEV7310SenseController::IrisUp() {
    unsigned char v = 0x02;
    return sendCommand(0x0B, &v, 1);
}

int FCBEV7310SenseController::IrisDown() {
    unsigned char v = 0x03;
    return sendCommand(0x0B, &v, 1);
}

int FCBEV7310SenseController::FocusFar(int speed) {
    unsigned char v = static_cast<unsigned char>(0x20 | (speed & 0x0F));
    return sendCommand(0x08, &v, 1);
}

int FCBEV7310SenseController::FocusNear(int speed) {
    unsigned char v = static_cast<unsigned char>(0x30 | (speed & 0x0F));
    return sendCommand(0x08, &v, 1);
}

int FCBEV7310SenseController::ZoomIn(int speed) {
    if (static_cast<unsigned int>(speed) > 8) {
        KSLogger::consolePrintf("ZoomUp(%d) is out of range\n", speed);
        return 0;
    }
    unsigned char v = static_cast<unsigned char>(0x20 | speed);
    return sendCommand(0x07, &v, 1);
}

int FCBEV7310SenseController::ZoomOut(int speed) {
    if (static_cast<unsigned int>(speed) > 8) {
        KSLogger::consolePrintf("ZoomOut(%d) is out of range\n", speed);
        return 0;
    }
    unsigned char v = static_cast<unsigned char>(0x30 | speed);
    return sendCommand(0x07, &v, 1);
}

int FCBEV7310SenseController::StopZoomContrl() {
    unsigned char v = 0x00;
    return sendCommand(0x07, &v, 1);
}

int FCBEV7310SenseController::StopFocusContrl() {
    unsigned char v = 0x00;
    return sendCommand(0x08, &v, 1);
}

int FCBEV7310SenseController::setZoomValue(int position) {
    unsigned char v[4];
    ViscaParameter::nibbles(position, 4, v);
    return sendCommand(0x47, v, 4);
}

int FCBEV7310SenseController::setFocusValue(int position) {
    unsigned char v[4];
    ViscaParameter::nibbles(position, 4, v);
    return sendCommand(0x48, v, 4);
}

int FCBEV7310SenseController::setZoomAndFocusValue(int zoom, int focus) {
    unsigned char v[8];
    ViscaParameter::nibbles(zoom, 4, v);
    ViscaParameter::nibbles(focus, 4, v + 4);
    return sendCommand(0x47, v, 8);
}

int FCBEV7310SenseController::setZoomValueTracked(int position) {
    int focus = 0;
    if (m_pZMAAlgorithm->getFocusForZoom(position, focus)) return setZoomAndFocusValue(position, focus);
    return setZoomValue(position);
}

int FCBEV7310SenseController::getZoomValue(int& position, int& ratio) {
    const unsigned char inquiry[5] = {0x81, 0x09, 0x04, 0x47, 0xFF};
    unsigned char a[7] = {0};
    if (!getParameterValue(reinterpret_cast<const char*>(inquiry), 5, reinterpret_cast<char*>(a), 7) ||
        (a[0] & 0xF0) != 0x90 || (a[0] & 0x0F) != 0 || a[1] != 0x50 || a[6] != 0xFF) {
        drainUnderLock();
        return 0;
    }
    position = (a[2] & 0x0F) << 12 | (a[3] & 0x0F) << 8 | (a[4] & 0x0F) << 4 | (a[5] & 0x0F);
    ratio = zoomRatioOf(position);
    return 1;
}

int FCBEV7310SenseController::getFocusValue(int& position) {
    const ViscaParameter focus = {0, "FocusValue", nullptr, 0, 0, ViscaParameter::Nibbles, 0x48, 0, 0, 0};
    return inquireRow(focus, position);
}

int FCBEV7310SenseController::setFocusMode(int mode) {
    if (static_cast<unsigned int>(mode) > 1) {
        KSLogger::consolePrintf("p_nFocusMode(%d) is out of range\n", mode);
        return 0;
    }
    unsigned char v = mode == 0 ? 0x02 : 0x03;
    return sendCommand(0x38, &v, 1);
}

int FCBEV7310SenseController::getFocusMode(int& mode) {
    const ViscaParameter row = {30, "FocusMode", nullptr, 0, 0, ViscaParameter::OnOff, 0x38, 0, 0, 0};
    int on = 0;
    if (!inquireRow(row, on)) return 0;
    mode = on ? 0 : 1;
    return 1;
}

// ---- day/night ----

int FCBEV7310SenseController::getDNStatusFromSensor(int& status) {
    const ViscaParameter row = {26, "DNStatus", nullptr, 0, 0, ViscaParameter::OnOff, 0x01, 0, 0, 0};
    int night = 0;
    if (!inquireRow(row, night)) return 0;
    status = night ? 0 : 1;
    return 1;
}

int FCBEV7310SenseController::turnPictureToDay() {
    unsigned char v = 0x03;
    return sendCommand(0x01, &v, 1);
}

int FCBEV7310SenseController::turnPictureToNight() {
    unsigned char v = 0x02;
    return sendCommand(0x01, &v, 1);
}

int FCBEV7310SenseController::setSensorVideoSystem(int, const VideoResolution&) {
    // The module's video format is set on the module itself.
    return 1;
}

// ---- baud and restart ----

int FCBEV7310SenseController::setCameraBuadRate(int p_nIndex) {
    if (static_cast<unsigned int>(p_nIndex) >= BaudCount) {
        KSLogger::consolePrintf("setCameraBuadRate(%d) is out of range\n", p_nIndex);
        return 0;
    }
    unsigned char v[3] = {0x00, 0x00, static_cast<unsigned char>(p_nIndex)};
    return sendCommand(0x24, v, 3);
}

int FCBEV7310SenseController::getCameraBaudRate(int& p_nIndex) {
    const unsigned char inquiry[6] = {0x81, 0x09, 0x04, 0x24, 0x00, 0xFF};
    unsigned char a[5] = {0};
    if (!getParameterValue(reinterpret_cast<const char*>(inquiry), 6, reinterpret_cast<char*>(a), 5) ||
        a[0] != 0x90 || a[1] != 0x50 || a[4] != 0xFF || a[2] > 0x0F || a[3] > 0x0F) {
        KSLogger::consolePrintf("getCameraBaudRate szRecvBuf error\n");
        return 0;
    }
    p_nIndex = a[2] << 4 | a[3];
    return 1;
}

int FCBEV7310SenseController::restartCamera() {
    int n = 0;
    {
        KSMutexGuard guard(m_UARTMutex);
        n = m_pUART->write(m_nUARTPort, reinterpret_cast<const char*>(kRestartPacket), 7);
    }
    if (n != 7) {
        KestraTime(1, 0).wait();
        return 0;
    }
    KSLogger::consolePuts("Restarting sensor");
    KestraTime(RestartSeconds, 0).wait();
    drainUnderLock();
    return 1;
}

int FCBEV7310SenseController::changeCameraBuadrate(int p_nBuadrate) {
    const int wanted = indexOfBaud(p_nBuadrate);
    if (wanted < 0) {
        KSLogger::consolePrintf("p_nBuadrate out of range, p_nBuadrate = %d\n", p_nBuadrate);
        return 0;
    }
    int current = -1;
    if (getCameraBaudRate(current) && current == wanted) return 1;
    int result = 0;
    for (int i = 0; i < BaudCount && !result; ++i) {
        if (!m_pUART->setParameter(m_nUARTPort, kBauds[i], m_nDataBits, m_nStopBits, m_nParity)) {
            KSLogger::consolePrintf("m_pUART->setParameter(m_nUARTIndex,m_nBaudarate,m_nDataBits,m_nStopBits,m_nParity) failed\n");
            continue;
        }
        if (!getCameraBaudRate(current) || current != i) continue;
        KSLogger::consolePrintf("the camera baudrate is %d\n", kBauds[i]);
        if (!setCameraBuadRate(wanted) || !restartCamera()) break;
        KSLogger::consolePrintf("restart camera successed ");
        result = 1;
    }
    // The local port goes back to the configured line in every case.
    m_pUART->setParameter(m_nUARTPort, m_nBaudrate, m_nDataBits, m_nStopBits, m_nParity);
    return result;
}

// ---- start-up ----

void FCBEV7310SenseController::readDayNightKeys(const ModuleConfigure& cfg) {
    ModuleParameterParser objDetail;
    objDetail.parse(cfg.getDetail());
    if (!objDetail.getValue("isNewInfrared", m_nNewInfrared)) KSLogger::consolePuts("get isNewInfrared from detail failed");
    int autoIris = 0;
    if (objDetail.getValue("autoIris", autoIris)) m_nAutoIris = autoIris;
    ModuleParameterParser objParameters;
    objParameters.parse(cfg.getParameters());
    if (!objParameters.getValue("toDayADCVal", m_nToDayADCVal)) KSLogger::consolePuts("get toDayADCVal from senseParameter failed");
    if (!objParameters.getValue("toNightADCVal", m_nToNightADCVal))
        KSLogger::consolePuts("get toNightADCVal from senseParameter failed");
    if (!objParameters.getValue("toDayDelay", m_nToDayDelay)) KSLogger::consolePuts("get toDayDelay from senseParameter failed");
    if (!objParameters.getValue("DCDay", m_nDCDay)) KSLogger::consolePuts("get DCDay from senseParameter failed");
    if (!objParameters.getValue("DCNight", m_nDCNight)) KSLogger::consolePuts("get DCNight from senseParameter failed");
}

void FCBEV7310SenseController::loadLensTable() {
    ZMAParamFileToArray objZMAFileToArray;
    std::vector<ZMAParam> m_objZMAParam;
    if (!objZMAFileToArray.setFilePath(kLensTablePath)) {
        KSLogger::consolePrintf("objZMAFileToArray.setFilePath(%s) failed\n", kLensTablePath);
        return;
    }
    if (!objZMAFileToArray.get(m_objZMAParam)) {
        KSLogger::consolePrintf("objZMAFileToArray.get(m_objZMAParam;) failed\n");
        KSLogger::consolePrintf("%s\n", objZMAFileToArray.getError().c_str());
        return;
    }
    m_pZMAAlgorithm->setZMAParam(m_objZMAParam);
}

int FCBEV7310SenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("FCBEV7310SenseController::init,ModuleConfigure is(%s,%s)\n", cfg.getDetail().c_str(),
                cfg.getParameters().c_str());
    if (!openSerialPort(cfg)) return 0;
    readDayNightKeys(cfg);
    loadLensTable();
    if (!changeCameraBuadrate(m_nBaudrate)) {
        KSLogger::consolePrintf("changeCameraBuadrate(%d)failed\n", m_nBaudrate);
        return 0;
    }
    return 1;
}
