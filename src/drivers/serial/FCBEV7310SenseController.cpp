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

// The camera's baud register: index -> baud.
const int kBauds[FCBEV7310SenseController::BaudCount] = {9600, 19200, 38400, 115200};
const unsigned char kRestartPacket[7] = {0xFE, 0x05, 0x03, 0x01, 0x01, 0x0A, 0xFF};
const char* const kLensTablePath = "/hd1/program/config/ZMAParam.txt";

}  // namespace

FCBEV7310SenseController::FCBEV7310SenseController()
    : ViscaSenseController(SensorType, MessageForm, "FCBEV7310", kTable, kTableSize), m_pZMAAlgorithm(new CameraLensZMAAlgorithm()) {
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

std::vector<ViscaParameter> FCBEV7310SenseController::rowsWithRanges(const ViscaParameter::Range* ranges,
                                                                     size_t count) {
    return ViscaParameter::compose(kTable, kTableSize, ranges, count);
}

int FCBEV7310SenseController::baudOfIndex(int index) { return index >= 0 && index < BaudCount ? kBauds[index] : -1; }

int FCBEV7310SenseController::indexOfBaud(int baud) {
    for (int i = 0; i < BaudCount; ++i)
        if (kBauds[i] == baud) return i;
    return -1;
}

bool FCBEV7310SenseController::hasLensTable() const { return m_pZMAAlgorithm->hasTable(); }

int FCBEV7310SenseController::setZoomValueTracked(int position) {
    int focus = 0;
    if (m_pZMAAlgorithm->getFocusForZoom(position, focus)) return setZoomAndFocusValue(position, focus);
    return setZoomValue(position);
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
