#include "drivers/serial/ViscaSenseController.h"

#include <cstdio>
#include <cstring>

#include "platform/KSLogger.h"
#include "storage/SensorCache.h"

namespace {

// The exposure mode in which the bright value is the module's to set.
const unsigned char kModeBright = 1 << 4;
// VISCA exposure mode values of modes 0-4.
const unsigned char kAeModes[5] = {0x00, 0x03, 0x0A, 0x0B, 0x0D};
// Zoom positions of the digital zoom ratios 1x to 12x.
const int kZoomRatioTable[ViscaSenseController::ZoomRatioCount] = {
    16384, 24576, 27264, 28672, 29440, 30016, 30400, 30720, 30912, 31104, 31232, 31424};
// The ids of the wide-dynamic parameter group (81 01 04 2D 00 0q 0r 0s 0t 0u 00 00 FF), in byte order.
const int kWideDynamicIds[5] = {38, 39, 40, 41, 44};

}  // namespace

ViscaSenseController::ViscaSenseController(int sensorType, ReplyForm form, const char* moduleName,
                                           const ViscaParameter* table, size_t count)
    : SerialSenseController(sensorType, form), m_eReplyForm(form), m_pszModuleName(moduleName), m_pTable(table), m_nTableSize(count) {}

int ViscaSenseController::zoomRatioOf(int position) {
    if (position <= kZoomRatioTable[0]) return 1000;
    for (int k = 1; k < ZoomRatioCount; ++k) {
        if (kZoomRatioTable[k - 1] < position && position <= kZoomRatioTable[k])
            return (k + 1) * 1000 -
                   1000 * (kZoomRatioTable[k] - position) / (kZoomRatioTable[k] - kZoomRatioTable[k - 1]);
    }
    // Beyond the table's last row: the top ratio.
    return ZoomRatioCount * 1000;
}

int ViscaSenseController::setModuleRow(const ViscaParameter&, int, int&) { return 0; }

// ---- transactions ----

int ViscaSenseController::sendPacket(const unsigned char* packet, int length) {
    return setParameterValue(reinterpret_cast<const char*>(packet), length);
}

int ViscaSenseController::sendCommand(unsigned char code, const unsigned char* values, int count) {
    unsigned char packet[16];
    int n = ViscaParameter::command(code, values, count, packet);
    return sendPacket(packet, n);
}

int ViscaSenseController::setParameterValue(const char* packet, int length) {
    int result = SerialSenseController::setParameterValue(packet, length);
    if (result && m_eReplyForm != MessageForm) awaitCompletion();
    return result;
}

void ViscaSenseController::awaitCompletion() {
    static const unsigned char kAck[3] = {0x90, 0x41, 0xFF};
    KSMutexGuard guard(m_UARTMutex);
    if (std::memcmp(m_szRecvBuf, kAck, sizeof(kAck)) != 0) return;
    char completion[3];
    m_pUART->read(m_nUARTPort, completion, sizeof(completion), SearchTimeout);
}

void ViscaSenseController::drainUnderLock() {
    KSMutexGuard guard(m_UARTMutex);
    clearUartBuffer();
}

bool ViscaSenseController::statusReady() {
    if (m_BaseSensorStatus == InitSuccess) return true;
    ErrorPrintf("m_BaseSensorStatus != ISensorController::InitSuccess!");
    return false;
}

int ViscaSenseController::sendRow(const ViscaParameter& row, int value) {
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

int ViscaSenseController::inquireRow(const ViscaParameter& row, int& value) {
    const int n = row.answerLength();
    if (n == 0) return 0;
    unsigned char inquiry[5] = {0x81, 0x09, 0x04, row.code, 0xFF};
    unsigned char answer[8] = {0};
    if (!getParameterValue(reinterpret_cast<const char*>(inquiry), 5, reinterpret_cast<char*>(answer), n)) return 0;
    return row.decodeAnswer(answer, value) ? 1 : 0;
}

int ViscaSenseController::groupValue(int id) {
    int value = 0;
    if (m_pSensorLastValueCache->getSensorValue(id, value)) return value;
    const ViscaParameter* row = findRow(id);
    return row != nullptr ? row->defaultValue : 0;
}

// ---- rows that the controller codes itself ----

int ViscaSenseController::sendSharpness(int value) {
    unsigned char v[4];
    ViscaParameter::nibbles(value * 15 / 100, 4, v);
    return sendCommand(0x42, v, 4);
}

int ViscaSenseController::sendFocusNearLimit(int value) {
    unsigned char v[4] = {static_cast<unsigned char>(value & 0x0F), 0, 0, 0};
    return sendCommand(0x28, v, 4);
}

int ViscaSenseController::sendPairGroup(unsigned char code, int firstId, int secondId, int id, int value) {
    int first = id == firstId ? value : groupValue(firstId);
    int second = id == secondId ? value : groupValue(secondId);
    unsigned char v[4];
    ViscaParameter::nibbles(first, 2, v);
    ViscaParameter::nibbles(second, 2, v + 2);
    return sendCommand(code, v, 4);
}

int ViscaSenseController::sendWideDynamicGroup(int id, int value) {
    unsigned char v[8] = {0, 0, 0, 0, 0, 0, 0, 0};
    for (int i = 0; i < 5; ++i) {
        int x = kWideDynamicIds[i] == id ? value : groupValue(kWideDynamicIds[i]);
        v[1 + i] = static_cast<unsigned char>(x & 0x0F);
    }
    return sendCommand(0x2D, v, 8);
}

int ViscaSenseController::sendHighlight(int id, int value) {
    int on = id == 68 ? value : groupValue(68);
    int level = id == 66 ? value : groupValue(66);
    int mask = id == 67 ? value : groupValue(67);
    unsigned char v[2] = {static_cast<unsigned char>(on != 0 ? level & 0x0F : 0),
                          static_cast<unsigned char>(mask & 0x0F)};
    return sendCommand(0x14, v, 2);
}

int ViscaSenseController::sendDefog(int value) {
    unsigned char v[2] = {0x03, 0x00};
    if (value != 0) {
        v[0] = 0x02;
        v[1] = static_cast<unsigned char>(value);
    }
    return sendCommand(0x37, v, 2);
}

int ViscaSenseController::setWhiteBalanceMode(int value) {
    unsigned char v = static_cast<unsigned char>(value - 1);
    return sendCommand(0x35, &v, 1);
}

int ViscaSenseController::sendSwitchPair(const char* rangeName, int value, const SwitchPair* pairs, int count,
                                         unsigned char firstCode, unsigned char secondCode) {
    if (static_cast<unsigned int>(value) >= static_cast<unsigned int>(count)) {
        KSLogger::consolePrintf("%s(%d) is out of range\n", rangeName, value);
        return 0;
    }
    unsigned char first = pairs[value].first ? 0x02 : 0x03;
    if (!sendCommand(firstCode, &first, 1)) return 0;
    unsigned char second = pairs[value].second ? 0x02 : 0x03;
    return sendCommand(secondCode, &second, 1);
}

int ViscaSenseController::setMirror(int p_nMirror) {
    // (horizontal reverse, vertical flip) of mirror values 0-3.
    static const SwitchPair kMirror[4] = {{false, false}, {true, false}, {true, true}, {false, true}};
    return sendSwitchPair("p_nMirror", p_nMirror, kMirror, 4, 0x61, 0x66);
}

int ViscaSenseController::setExposalMode(int p_nMode) {
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

int ViscaSenseController::setBright(int p_nBright) {
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
    // The remote sensor's scale of the same value, where the module's table has it.
    const ViscaParameter* remote = findRow(50);
    if (remote == nullptr || remote->op() != 50) return 1;
    int scaled = 100 * p_nBright / 27;
    m_pSensorCache->setSensorValue(50, scaled);
    m_pSensorLastValueCache->setSensorValue(50, scaled);
    return 1;
}

int ViscaSenseController::setBrightScaled(int value) { return setBright(value * 27 / 100); }

int ViscaSenseController::OnePushTrigger() {
    unsigned char v = 0x01;
    return sendCommand(0x18, &v, 1);
}

int ViscaSenseController::setBaseOperation(int operation, int value, int& result) {
    switch (operation) {
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

int ViscaSenseController::setParameterToSensor(int id, int value) {
    Debug_Printf("%s set id(%d) value(%d)", m_pszModuleName, id, value);
    int base = ISensorController::setParameterToSensor(id, value);
    if (base == 1) return 1;
    const ViscaParameter* row = findRow(id);
    if (row == nullptr) return base;
    if (!statusReady()) return 0;
    if (!row->inRange(value)) {
        KSLogger::consolePrintf("%s(%d) is out of range\n", row->rangeName, value);
        return 0;
    }
    int result = 0;
    if (row->shape == ViscaParameter::Controller && setModuleRow(*row, value, result)) {
        // coded by the module's controller
    } else if (row->shape == ViscaParameter::Controller && setBaseOperation(row->op(), value, result)) {
        // the base operation reports its own failures
    } else if (row->shape != ViscaParameter::Controller) {
        result = sendRow(*row, value);
    } else {
        switch (row->op()) {
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

int ViscaSenseController::getParameterFromSensor(int id, int& value) {
    if (id >= 500 && id <= 504) return ISensorController::getParameterFromSensor(id, value);
    const ViscaParameter* row = findRow(id);
    if (row == nullptr) return 0;
    if (!statusReady()) return 0;
    int result = 0;
    int v = 0;
    if (row->answerLength() != 0) {
        result = inquireRow(*row, v);
    } else if (row->op() == 6) {
        result = getMirrorValue(v);
    } else if (row->op() == 10) {
        v = m_nExposureMode;
        result = 1;
    } else if (row->op() == 30) {
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

int ViscaSenseController::getMirrorValue(int& value) {
    const ViscaParameter reverse = {6, "Mirror", nullptr, 0, 0, ViscaParameter::OnOff, 0x61, 0, 0, 0};
    const ViscaParameter flip = {6, "Mirror", nullptr, 0, 0, ViscaParameter::OnOff, 0x66, 0, 0, 0};
    int h = 0, v = 0;
    if (!inquireRow(reverse, h) || !inquireRow(flip, v)) return 0;
    value = h ? (v ? 2 : 1) : (v ? 3 : 0);
    return 1;
}

int ViscaSenseController::getStillImageValue(int& value) {
    const ViscaParameter freeze = {8, "StillImage", nullptr, 0, 0, ViscaParameter::OnOff, 0x62, 0, 0, 0};
    return inquireRow(freeze, value);
}

int ViscaSenseController::IrisUp() {
    unsigned char v = 0x02;
    return sendCommand(0x0B, &v, 1);
}

int ViscaSenseController::IrisDown() {
    unsigned char v = 0x03;
    return sendCommand(0x0B, &v, 1);
}

int ViscaSenseController::FocusFar(int speed) {
    unsigned char v = static_cast<unsigned char>(0x20 | (speed & 0x0F));
    return sendCommand(0x08, &v, 1);
}

int ViscaSenseController::FocusNear(int speed) {
    unsigned char v = static_cast<unsigned char>(0x30 | (speed & 0x0F));
    return sendCommand(0x08, &v, 1);
}

int ViscaSenseController::ZoomIn(int speed) {
    if (static_cast<unsigned int>(speed) > 8) {
        KSLogger::consolePrintf("ZoomUp(%d) is out of range\n", speed);
        return 0;
    }
    unsigned char v = static_cast<unsigned char>(0x20 | speed);
    return sendCommand(0x07, &v, 1);
}

int ViscaSenseController::ZoomOut(int speed) {
    if (static_cast<unsigned int>(speed) > 8) {
        KSLogger::consolePrintf("ZoomOut(%d) is out of range\n", speed);
        return 0;
    }
    unsigned char v = static_cast<unsigned char>(0x30 | speed);
    return sendCommand(0x07, &v, 1);
}

int ViscaSenseController::StopZoomContrl() {
    unsigned char v = 0x00;
    return sendCommand(0x07, &v, 1);
}

int ViscaSenseController::StopFocusContrl() {
    unsigned char v = 0x00;
    return sendCommand(0x08, &v, 1);
}

int ViscaSenseController::setZoomValue(int position) {
    unsigned char v[4];
    ViscaParameter::nibbles(position, 4, v);
    return sendCommand(0x47, v, 4);
}

int ViscaSenseController::setFocusValue(int position) {
    unsigned char v[4];
    ViscaParameter::nibbles(position, 4, v);
    return sendCommand(0x48, v, 4);
}

int ViscaSenseController::setZoomAndFocusValue(int zoom, int focus) {
    unsigned char v[8];
    ViscaParameter::nibbles(zoom, 4, v);
    ViscaParameter::nibbles(focus, 4, v + 4);
    return sendCommand(0x47, v, 8);
}

int ViscaSenseController::getZoomValue(int& position, int& ratio) {
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

int ViscaSenseController::getFocusValue(int& position) {
    const ViscaParameter focus = {0, "FocusValue", nullptr, 0, 0, ViscaParameter::Nibbles, 0x48, 0, 0, 0};
    return inquireRow(focus, position);
}

int ViscaSenseController::setFocusMode(int mode) {
    if (static_cast<unsigned int>(mode) > 1) {
        KSLogger::consolePrintf("p_nFocusMode(%d) is out of range\n", mode);
        return 0;
    }
    unsigned char v = mode == 0 ? 0x02 : 0x03;
    return sendCommand(0x38, &v, 1);
}

int ViscaSenseController::getFocusMode(int& mode) {
    const ViscaParameter row = {30, "FocusMode", nullptr, 0, 0, ViscaParameter::OnOff, 0x38, 0, 0, 0};
    int on = 0;
    if (!inquireRow(row, on)) return 0;
    mode = on ? 0 : 1;
    return 1;
}

// ---- day/night ----

int ViscaSenseController::getDNStatusFromSensor(int& status) {
    const ViscaParameter row = {26, "DNStatus", nullptr, 0, 0, ViscaParameter::OnOff, 0x01, 0, 0, 0};
    int night = 0;
    if (!inquireRow(row, night)) return 0;
    status = night ? 0 : 1;
    return 1;
}

int ViscaSenseController::turnPictureToDay() {
    unsigned char v = 0x03;
    return sendCommand(0x01, &v, 1);
}

int ViscaSenseController::turnPictureToNight() {
    unsigned char v = 0x02;
    return sendCommand(0x01, &v, 1);
}

int ViscaSenseController::setSensorVideoSystem(int, const VideoResolution&) {
    // The module's video format is set on the module itself.
    return 1;
}

