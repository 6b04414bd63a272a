#include "drivers/fisheye/S2FisheyeSenseController.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "drivers/fisheye/AdcReader.h"
#include "drivers/fisheye/KsiaDriver.h"
#include "platform/KSLogger.h"
#include "platform/KestraTime.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleParameterParser.h"
#include "platform/SystemInfoParser.h"

namespace {

// False when the pause was cut short because the calling thread is being stopped.
bool pauseMs(int64_t ms) { return KestraTime(ms / 1000, (ms % 1000) * 1000).wait(); }

// Copies a machine-information text into a fixed record field, cut to the
// field width less one so that the terminating zero always fits.
void copyField(char* field, size_t width, const std::string& text) {
    size_t n = text.size() < width - 1 ? text.size() : width - 1;
    std::memcpy(field, text.data(), n);
    field[n] = '\0';
}

// Reads a detail key; a missing key prints its message and leaves the value empty.
void readDetail(const ModuleParameterParser& parser, const char* key, const char* missingText, std::string& value) {
    value.clear();
    if (!parser.getValue(key, value)) {
        KSLogger::consolePuts(missingText);
        value.clear();
    }
}

const int kDay = 1;
const int kNight = 0;

// How long turnPictureToNight waits for the ISP's night switch to finish.
const int64_t kNightSwitchPollLimitMs = 1000;
const int64_t kNightSwitchPollMs = 20;
const int64_t kNightSwitchSettleMs = 40;
// The ISP needs this long to settle after a change of video system.
const int64_t kVideoSystemSettleMs = 3000;

}  // namespace

S2FisheyeSenseController::S2FisheyeSenseController() : ISensorController(SensorType) {
    registerIds("S2FisheyeSenseController");
    setSensorConfigVersion(ConfigVersion);
    setSensorConfigVersion2(ConfigVersion2);
    m_pAdc.reset(new AdcReader());
}

S2FisheyeSenseController::~S2FisheyeSenseController() {
    // The owner has stopped the worker (stopWorker), so nothing reads the light sensor any more.
    m_pAdc.reset();
}

bool S2FisheyeSenseController::isAdcOpen() const { return m_pAdc && m_pAdc->isOpen(); }

// ---- ISP command helpers ----

int S2FisheyeSenseController::CheckKSEWFIResult(int p_nCode, const char* p_szFunction, int p_nLine) {
    if (p_nCode == 0) return 1;
    ErrorPrintf("%s  %dCheckKSEWFIResult are failed! errcode:0x%x\n", p_szFunction, p_nLine,
                static_cast<unsigned int>(p_nCode));
    return 0;
}

int S2FisheyeSenseController::sendSet(int p_nCommand, int p_nValue, const char* p_szFunction, int p_nLine) {
    int nValue = p_nValue;  // the library reads a copy, never the caller's variable
    return CheckKSEWFIResult(ksia_ioctrl(p_nCommand, KSIA_SET, &nValue), p_szFunction, p_nLine);
}

int S2FisheyeSenseController::sendGet(int p_nCommand, int& p_nValue, const char* p_szFunction, int p_nLine) {
    return CheckKSEWFIResult(ksia_ioctrl(p_nCommand, KSIA_GET, &p_nValue), p_szFunction, p_nLine);
}

void S2FisheyeSenseController::sendSetUnchecked(int p_nCommand, int p_nValue) {
    int nValue = p_nValue;
    (void)ksia_ioctrl(p_nCommand, KSIA_SET, &nValue);
}

void S2FisheyeSenseController::sendGetUnchecked(int p_nCommand, int& p_nValue) {
    (void)ksia_ioctrl(p_nCommand, KSIA_GET, &p_nValue);
}

bool S2FisheyeSenseController::isAppointRange(int p_nValue, const char* p_szFunction, int p_nLine) {
    if (isWithin(p_nValue, 100)) return true;
    KSLogger::consolePrintf("%s   %d IsAppointRange(%d) out of range\n", p_szFunction, p_nLine, p_nValue);
    return false;
}

// ---- picture ----

int S2FisheyeSenseController::setBrightness(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_BRIGHTNESS, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getBrightness(int& p_nValue) { return sendGet(KSIA_BRIGHTNESS, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setSaturation(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_SATURATION, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getSaturation(int& p_nValue) { return sendGet(KSIA_SATURATION, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setContrast(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_CONTRAST, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getContrast(int& p_nValue) { return sendGet(KSIA_CONTRAST, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setSharpness(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_SHARPNESS, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getSharpness(int& p_nValue) { return sendGet(KSIA_SHARPNESS, p_nValue, __func__, __LINE__); }

// ---- exposure ----

int S2FisheyeSenseController::setShutterMode(int p_nValue) {
    if (!isWithin(p_nValue, 1)) {
        KSLogger::consolePrintf("p_nShutterMode(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_SHUTTER_MODE, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getShutterMode(int& p_nValue) {
    return sendGet(KSIA_SHUTTER_MODE, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setMaxShutter(int p_nValue) {
    if (!isWithin(p_nValue, 18)) {
        KSLogger::consolePrintf("p_nMaxShutter(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_MAX_SHUTTER, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getMaxShutter(int& p_nValue) { return sendGet(KSIA_MAX_SHUTTER, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setFixShutter(int p_nValue) {
    if (!isWithin(p_nValue, 18)) {
        KSLogger::consolePrintf("p_nFixShutter(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_FIXED_SHUTTER, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getFixShutter(int& p_nValue) {
    return sendGet(KSIA_FIXED_SHUTTER, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setGainMode(int p_nValue) {
    if (!isWithin(p_nValue, 1)) {
        KSLogger::consolePrintf("p_nGainMode(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_GAIN_MODE, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getGainMode(int& p_nValue) { return sendGet(KSIA_GAIN_MODE, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setMaxGain(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_MAX_GAIN, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getMaxGain(int& p_nValue) { return sendGet(KSIA_MAX_GAIN, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setFixGain(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_FIXED_GAIN, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getFixGain(int& p_nValue) { return sendGet(KSIA_FIXED_GAIN, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setIrisMode(int p_nValue) {
    if (!isWithin(p_nValue, 1)) {
        KSLogger::consolePrintf("p_nIrisMode(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_IRIS_MODE, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getIrisMode(int& p_nValue) { return sendGet(KSIA_IRIS_MODE, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setIrisSpeed(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_IRIS_SPEED, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getIrisSpeed(int& p_nValue) { return sendGet(KSIA_IRIS_SPEED, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setRoomInnerOrOutMode(int p_nValue) {
    if (!isWithin(p_nValue, 2)) {
        KSLogger::consolePrintf("p_nRoomIntOrOutMode(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_INDOOR_OUTDOOR, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getRoomInnerOrOutMode(int& p_nValue) {
    return sendGet(KSIA_INDOOR_OUTDOOR, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setWDRMode(int p_nValue) {
    if (!isWithin(p_nValue, 1)) {
        KSLogger::consolePrintf("p_nShutterMode(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_WDR_MODE, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getWDRMode(int& p_nValue) { return sendGet(KSIA_WDR_MODE, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setWDRContrast(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_WDR_STRENGTH, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getWDRContrast(int& p_nValue) {
    return sendGet(KSIA_WDR_STRENGTH, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setPhotometry(int p_nValue) {
    if (!isWithin(p_nValue, 3)) {
        KSLogger::consolePrintf("p_nPhotometry(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_PHOTOMETRY, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getPhotometry(int& p_nValue) { return sendGet(KSIA_PHOTOMETRY, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setHLCMode(int p_nValue) {
    if (!isWithin(p_nValue, 1)) {
        KSLogger::consolePrintf("p_nHLCMode(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_HLC_MODE, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getHLCMode(int& p_nValue) { return sendGet(KSIA_HLC_MODE, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setHLCContrast(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_HLC_STRENGTH, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getHLCContrast(int& p_nValue) {
    return sendGet(KSIA_HLC_STRENGTH, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setBLCMode(int p_nValue) { return sendSet(KSIA_BLC_MODE, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::getBLCMode(int& p_nValue) {
    sendGet(KSIA_BLC_MODE, p_nValue, __func__, __LINE__);
    if (!turnPictureToDay()) {
        KSLogger::consolePrintf("turnPictureToDay failed\n");
        return 0;
    }
    m_nDayNightState = kDay;
    return 1;
}

// ---- day/night thresholds ----

int S2FisheyeSenseController::setDTNThreshold(int p_nValue) {
    if (m_nDNDetectSource != 0) return 1;  // an infrared board keeps its own thresholds (ids 32, 33)
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    // The partner is compared only when a value for it is known.
    int nNTD = 0;
    if (getParameter(13, nNTD) && p_nValue <= nNTD) {
        KSLogger::consolePuts("Error:DTN<NTD @setDTNThreshold");
        return 0;
    }
    return sendSet(KSIA_DTN_THRESHOLD, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getDTNThreshold(int& p_nValue) {
    return sendGet(KSIA_DTN_THRESHOLD, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setNTDThreshold(int p_nValue) {
    if (m_nDNDetectSource != 0) return 1;
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    int nDTN = 0;
    if (getParameter(12, nDTN) && nDTN <= p_nValue) {
        KSLogger::consolePuts("Error:DTN<NTD @setNTDThreshold");
        return 0;
    }
    return sendSet(KSIA_NTD_THRESHOLD, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getNTDThreshold(int& p_nValue) {
    return sendGet(KSIA_NTD_THRESHOLD, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setInfraredDTNThreshold(int p_nValue) {
    if (m_nDNDetectSource == 0) {
        sendSetUnchecked(KSIA_DTN_THRESHOLD, p_nValue);
        return 1;
    }
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    int nNTD = 0;
    if (getParameter(33, nNTD) && p_nValue <= nNTD) {
        KSLogger::consolePrintf("Error:DTN(%d)<NTD(%d) @setInfraredDTNThreshold\n", p_nValue, nNTD);
        return 0;
    }
    m_nInfraredDTNThreshold = p_nValue;
    return 1;
}
int S2FisheyeSenseController::getInfraredDTNThreshold(int& p_nValue) {
    p_nValue = InfraredDTNReading;
    return 1;
}

int S2FisheyeSenseController::setInfraredNTDThreshold(int p_nValue) {
    if (m_nDNDetectSource == 0) {
        sendSetUnchecked(KSIA_NTD_THRESHOLD, p_nValue);
        return 1;
    }
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    int nDTN = 0;
    if (getParameter(32, nDTN) && nDTN <= p_nValue) {
        KSLogger::consolePrintf("Error:DTN(%d)<NTD(%d) @setInfraredNTDThreshold \n", nDTN, p_nValue);
        return 0;
    }
    m_nInfraredNTDThreshold = p_nValue;
    return 1;
}
int S2FisheyeSenseController::getInfraredNTDThreshold(int& p_nValue) {
    p_nValue = InfraredNTDReading;
    return 1;
}

int S2FisheyeSenseController::setSmartInfraredMode(int p_nValue) {
    if (!isWithin(p_nValue, 2)) return 0;
    m_nSmartInfraredMode = p_nValue;
    if (p_nValue == 1 || p_nValue == 2) return sendSet(KSIA_SMART_IR_MODE, p_nValue, __func__, __LINE__);
    return 0;
}
int S2FisheyeSenseController::getSmartInfraredMode(int& p_nValue) {
    return sendGet(KSIA_SMART_IR_MODE, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setInfraredManualValue(int p_nValue) {
    if (!isWithin(p_nValue, 100)) return 0;
    m_nInfraredManualValue = p_nValue;
    return sendSet(KSIA_IR_MANUAL_POWER, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getInfraredManualValue(int& p_nValue) {
    return sendGet(KSIA_IR_MANUAL_POWER, p_nValue, __func__, __LINE__);
}

// ---- fisheye mounting ----
// A ceiling-mounted fisheye (be-away mode 1) sees the scene upside down, so
// the ISP's horizontal and vertical flips (mirror 1 and 2) trade places.

int S2FisheyeSenseController::setMirror(int p_nValue) {
    if (!isWithin(p_nValue, 3)) {
        KSLogger::consolePrintf("p_nMirror(%d) out of range\n", p_nValue);
        return 0;
    }
    int nBeAway = 0;
    sendGet(KSIA_BE_AWAY, nBeAway, __func__, __LINE__);
    int nSend = p_nValue;
    if (nBeAway == 1) {
        if (p_nValue == 1)
            nSend = 2;
        else if (p_nValue == 2)
            nSend = 1;
    }
    return sendSet(KSIA_MIRROR, nSend, __func__, __LINE__);
}
int S2FisheyeSenseController::getMirror(int& p_nValue) { return sendGet(KSIA_MIRROR, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setBeAwayMode(int p_nValue) {
    if (!isWithin(p_nValue, 1)) {
        KSLogger::consolePrintf("setBeAwayMode(%d) out of range\n", p_nValue);
        return 0;
    }
    int nMirror = 0;
    int nBeAway = 0;
    sendGet(KSIA_MIRROR, nMirror, __func__, __LINE__);
    sendGet(KSIA_BE_AWAY, nBeAway, __func__, __LINE__);
    const bool bRestore = nMirror != 0 && nBeAway != p_nValue;
    int nRestoreMirror = nMirror;
    if (bRestore) {
        sendSet(KSIA_MIRROR, 0, __func__, __LINE__);
        if (p_nValue == 0) {
            if (nMirror == 1)
                nRestoreMirror = 2;
            else if (nMirror == 2)
                nRestoreMirror = 1;
        }
    }
    int nResult = sendSet(KSIA_BE_AWAY, p_nValue, __func__, __LINE__);
    if (bRestore) setMirror(nRestoreMirror);
    return nResult;
}
int S2FisheyeSenseController::getBeAwayMode(int& p_nValue) { return sendGet(KSIA_BE_AWAY, p_nValue, __func__, __LINE__); }

// ---- noise reduction, defog, anti-shake ----

int S2FisheyeSenseController::setNR2DMode(int p_nValue) {
    if (!isWithin(p_nValue, 2)) {
        KSLogger::consolePrintf("p_nNR2DMode(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_NR2D_MODE, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getNR2DMode(int& p_nValue) { return sendGet(KSIA_NR2D_MODE, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setNR2DMaxContrast(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_NR2D_MAX, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getNR2DMaxContrast(int& p_nValue) {
    return sendGet(KSIA_NR2D_MAX, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setNR2DFixContrast(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_NR2D_FIXED, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getNR2DFixContrast(int& p_nValue) {
    return sendGet(KSIA_NR2D_FIXED, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setNR3DMode(int p_nValue) {
    if (!isWithin(p_nValue, 2)) {
        KSLogger::consolePrintf("p_nNR3DMode(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_NR3D_MODE, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getNR3DMode(int& p_nValue) { return sendGet(KSIA_NR3D_MODE, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setNR3DMaxContrast(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_NR3D_MAX, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getNR3DMaxContrast(int& p_nValue) {
    return sendGet(KSIA_NR3D_MAX, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setNR3DFixContrast(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_NR3D_FIXED, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getNR3DFixContrast(int& p_nValue) {
    return sendGet(KSIA_NR3D_FIXED, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setDeFog(int p_nValue) {
    if (!isWithin(p_nValue, 1)) {
        KSLogger::consolePrintf("p_nShutterMode(%d) out of range\n", p_nValue);
        return 0;
    }
    return sendSet(KSIA_DEFOG, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getDeFog(int& p_nValue) { return sendGet(KSIA_DEFOG, p_nValue, __func__, __LINE__); }

int S2FisheyeSenseController::setDeFogStrength(int p_nValue) {
    if (!isAppointRange(p_nValue, __func__, __LINE__)) return 0;
    return sendSet(KSIA_DEFOG_STRENGTH, p_nValue, __func__, __LINE__);
}
int S2FisheyeSenseController::getDeFogStrength(int& p_nValue) {
    return sendGet(KSIA_DEFOG_STRENGTH, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::setAntiShake(int p_nValue) { return sendSet(KSIA_ANTI_SHAKE, p_nValue, __func__, __LINE__); }
int S2FisheyeSenseController::getAntiShake(int& p_nValue) { return sendGet(KSIA_ANTI_SHAKE, p_nValue, __func__, __LINE__); }

// ---- zoom and focus ----

int S2FisheyeSenseController::setZoomMoveInterval(int p_nValue) {
    if (!isWithin(p_nValue, 4)) return 0;
    return sendSet(KSIA_ZOOM_INTERVAL, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::getZoomMoveInterval(int& p_nValue) {
    if (!sendGet(KSIA_ZOOM_INTERVAL, p_nValue, __func__, __LINE__)) return 0;
    return isWithin(p_nValue, 4) ? 1 : 0;
}

int S2FisheyeSenseController::setFocusMoveInterval(int p_nValue) {
    return sendSet(KSIA_FOCUS_INTERVAL, p_nValue, __func__, __LINE__);
}

int S2FisheyeSenseController::getFocusMoveInterval(int& p_nValue) {
    // Reports the remembered interval and sends it to the ISP again; the ISP
    // itself is not asked.
    p_nValue = m_nFocusMoveInterval;
    return sendSet(KSIA_FOCUS_INTERVAL, m_nFocusMoveInterval, __func__, __LINE__);
}

int S2FisheyeSenseController::ZoomWideSlow() { return sendSet(KSIA_ZOOM_MOVE, 2, __func__, __LINE__); }
int S2FisheyeSenseController::ZoomTeleSlow() { return sendSet(KSIA_ZOOM_MOVE, 4, __func__, __LINE__); }
int S2FisheyeSenseController::ZoomWideFast() { return sendSet(KSIA_ZOOM_MOVE, 1, __func__, __LINE__); }
int S2FisheyeSenseController::ZoomTeleFast() { return sendSet(KSIA_ZOOM_MOVE, 3, __func__, __LINE__); }
int S2FisheyeSenseController::FocusFarSlow() { return sendSet(KSIA_FOCUS_MOVE, 4, __func__, __LINE__); }
int S2FisheyeSenseController::FocusNearSlow() { return sendSet(KSIA_FOCUS_MOVE, 2, __func__, __LINE__); }
int S2FisheyeSenseController::FocusFarFast() { return sendSet(KSIA_FOCUS_MOVE, 3, __func__, __LINE__); }
int S2FisheyeSenseController::FocusNearFast() { return sendSet(KSIA_FOCUS_MOVE, 1, __func__, __LINE__); }
int S2FisheyeSenseController::runAutoFocus() { return sendSet(KSIA_FOCUS_MOVE, 6, __func__, __LINE__); }

int S2FisheyeSenseController::ResetAll() {
    sendSetUnchecked(KSIA_ZOOM_MOVE, 5);
    return sendSet(KSIA_FOCUS_MOVE, 5, __func__, __LINE__);
}

// ---- overridden operations ----

int S2FisheyeSenseController::updateSensorVideoSystem(int videoSystem, const VideoResolution&) {
    if (videoSystem != 0 && videoSystem != 1) {
        KSLogger::consolePuts("not PAL or NTSC param!");
        return 0;
    }
    // The ISP numbers the two video systems the other way round.
    return sendSet(KSIA_VIDEO_SYSTEM, videoSystem == 1 ? 0 : 1, __func__, __LINE__);
}

int S2FisheyeSenseController::getMirrorValue(int&) { return 1; }

int S2FisheyeSenseController::initFactorySetting() { return 1; }

int S2FisheyeSenseController::setSensorVideoSystem(int videoSystem, const VideoResolution& res) {
    int nResult = updateSensorVideoSystem(videoSystem, res);
    pauseMs(kVideoSystemSettleMs);
    return nResult;
}

int S2FisheyeSenseController::setParameterToSensor(int id, int value) {
    if (m_BaseSensorStatus != InitSuccess) return 0;
    int nBase = ISensorController::setParameterToSensor(id, value);
    if (nBase != -1) return nBase;

    const char* szFailure = nullptr;
    int nResult = 1;
    switch (id) {
        case 1: nResult = setBrightness(value), szFailure = "setBrightness failed"; break;
        case 2: nResult = setSaturation(value), szFailure = "setSaturation failed"; break;
        case 3: nResult = setContrast(value), szFailure = "setContrast failed"; break;
        case 4: nResult = setSharpness(value), szFailure = "setSharpness failed "; break;
        case 5: nResult = setShutterMode(value), szFailure = "setShutterMode failed "; break;
        case 6: nResult = setMaxShutter(value), szFailure = "setMaxShutter failed "; break;
        case 7: nResult = setFixShutter(value), szFailure = "setFixShutter failed "; break;
        case 8: nResult = setGainMode(value), szFailure = "setGainMode failed "; break;
        case 9: nResult = setMaxGain(value), szFailure = "setMaxGain failed "; break;
        case 10: nResult = setFixGain(value), szFailure = "setFixGain failed "; break;
        case 11: nResult = setDayNightMode(value), szFailure = "setDayNightMode failed "; break;
        case 12: nResult = setDTNThreshold(value), szFailure = "setDTNThreshold failed "; break;
        case 13: nResult = setNTDThreshold(value), szFailure = "setNTDThreshold failed "; break;
        case 14: nResult = setIrisMode(value), szFailure = "setIrisMode failed "; break;
        case 15: nResult = setIrisSpeed(value), szFailure = "setIrisSpeed failed "; break;
        case 16: nResult = setRoomInnerOrOutMode(value), szFailure = "setRoomInnerOrOutMode failed "; break;
        case 17: nResult = setWDRMode(value), szFailure = "setNRMode failed "; break;
        case 18: nResult = setWDRContrast(value), szFailure = "setWDRContrast failed "; break;
        case 19: nResult = setPhotometry(value), szFailure = "setPhotometry failed "; break;
        case 20: nResult = setMirror(value), szFailure = "setMirror failed "; break;
        case 21: nResult = setBeAwayMode(value), szFailure = "setBeAwayMode failed"; break;
        case 22: nResult = setNR2DMode(value), szFailure = "setNR2DMode failed "; break;
        case 23: nResult = setNR2DMaxContrast(value), szFailure = "setNR2DMaxContrast failed "; break;
        case 24: nResult = setNR2DFixContrast(value), szFailure = "setNR2DFixContrast failed "; break;
        case 25: nResult = setNR3DMode(value), szFailure = "setNR3DMode failed "; break;
        case 26: nResult = setNR3DMaxContrast(value), szFailure = "setNR3DMaxContrast failed "; break;
        case 27: nResult = setNR3DFixContrast(value), szFailure = "setNR3DFixContrast failed "; break;
        case 28: nResult = setDTNTime_H(value), szFailure = "getDTNTime_H failed"; break;
        case 29: nResult = setDTNTime_M(value), szFailure = "getDTNTime_M failed"; break;
        case 30: nResult = setNTDTime_H(value), szFailure = "getNTDTime_H failed"; break;
        case 31: nResult = setNTDTime_M(value), szFailure = "getNTDTime_M failed"; break;
        case 32: nResult = setInfraredDTNThreshold(value), szFailure = "getInfraredDayNightMode failed "; break;
        case 33: nResult = setInfraredNTDThreshold(value), szFailure = "getInfraredNTDThreshold failed "; break;
        case 34: nResult = setDNSwitchDelay(value), szFailure = "getDNSwitchDelay failed "; break;
        case 35: nResult = setSmartInfraredMode(value), szFailure = "setSmartInfraredMode failed "; break;
        case 36: nResult = setInfraredManualValue(value), szFailure = "setInfraredManualValue failed "; break;
        case 37: nResult = setHLCMode(value), szFailure = "setHLCMode failed "; break;
        case 38: nResult = setHLCContrast(value), szFailure = "setHLCContrast failed "; break;
        case 39: nResult = setBLCMode(value), szFailure = "setBLCMode failed "; break;
        case 40: nResult = setZoomMoveInterval(value), szFailure = "setZoomInterval failed "; break;
        case 41: nResult = setFocusMoveInterval(value), szFailure = "setFocusInterval failed "; break;
        case 43: nResult = ZoomWideSlow(), szFailure = "ZoomWideSlow failed "; break;
        case 44: nResult = ZoomTeleSlow(), szFailure = "ZoomTeleSlow failed "; break;
        case 46: nResult = FocusFarSlow(), szFailure = "FocusFarSlow failed "; break;
        case 47: nResult = FocusNearSlow(), szFailure = "FocusNearSlow failed "; break;
        case 48: nResult = ZoomWideFast(), szFailure = "ZoomWideFast failed "; break;
        case 49: nResult = ZoomTeleFast(), szFailure = "ZoomTeleFast failed "; break;
        case 50: nResult = FocusFarFast(), szFailure = "FocusFarFast failed "; break;
        case 51: nResult = FocusNearFast(), szFailure = "FocusNearFast failed "; break;
        case 52: nResult = runAutoFocus(), szFailure = "RunAutoFocus failed "; break;
        case 53: nResult = ResetAll(), szFailure = "ResetZoomFocus failed "; break;
        case 54: nResult = setDeFog(value), szFailure = "setDeFog failed "; break;
        case 55: nResult = setDeFogStrength(value), szFailure = "setDeFogStrength failed "; break;
        case 56: nResult = setAntiShake(value), szFailure = "setAntiShake failed "; break;
        default: break;  // 42, 45 and ids outside 1-56: nothing to do
    }
    if (nResult == 0 && szFailure != nullptr) {
        KSLogger::consolePuts(szFailure);
        return 0;
    }
    return 1;
}

int S2FisheyeSenseController::getParameterFromSensor(int id, int& value) {
    if (m_BaseSensorStatus != InitSuccess) return 0;
    if (ISensorController::getParameterFromSensor(id, value) != 0 || id < 1 || id > LastParameterId) return 1;

    const char* szFailure = nullptr;
    int nResult = 1;
    switch (id) {
        case 1: nResult = getBrightness(value), szFailure = "getBrightness failed"; break;
        case 2: nResult = getSaturation(value), szFailure = "getSaturation failed"; break;
        case 3: nResult = getContrast(value), szFailure = "getContrast failed"; break;
        case 4: nResult = getSharpness(value), szFailure = "getSharpness failed "; break;
        case 5: nResult = getShutterMode(value), szFailure = "getShutterMode failed "; break;
        case 6: nResult = getMaxShutter(value), szFailure = "getMaxShutter failed "; break;
        case 7: nResult = getFixShutter(value), szFailure = "getFixShutter failed "; break;
        case 8: nResult = getGainMode(value), szFailure = "getGainMode failed "; break;
        case 9: nResult = getMaxGain(value), szFailure = "getMaxGain failed "; break;
        case 10: nResult = getFixGain(value), szFailure = "getFixGain failed "; break;
        case 11: nResult = getDayNightMode(value), szFailure = "getDayNightMode failed "; break;
        case 12: nResult = getDTNThreshold(value), szFailure = "getDTNThreshold failed "; break;
        case 13: nResult = getNTDThreshold(value), szFailure = "getNTDThreshold failed "; break;
        case 14: nResult = getIrisMode(value), szFailure = "getIrisMode failed "; break;
        case 15: nResult = getIrisSpeed(value), szFailure = "getIrisSpeed failed "; break;
        case 16: nResult = getRoomInnerOrOutMode(value), szFailure = "getRoomInnerOrOutMode failed "; break;
        case 17: nResult = getWDRMode(value), szFailure = "getNRMode failed "; break;
        case 18: nResult = getWDRContrast(value), szFailure = "getWDRContrast failed "; break;
        case 19: nResult = getPhotometry(value), szFailure = "getPhotometry failed "; break;
        case 20: nResult = getMirror(value), szFailure = "getMirror failed "; break;
        case 21: nResult = getBeAwayMode(value), szFailure = "getBeAwayMode failed"; break;
        case 22: nResult = getNR2DMode(value), szFailure = "getNR2DMode failed "; break;
        case 23: nResult = getNR2DMaxContrast(value), szFailure = "getNR2DMaxContrast failed "; break;
        case 24: nResult = getNR2DFixContrast(value), szFailure = "getNR2DFixContrast failed "; break;
        case 25: nResult = getNR3DMode(value), szFailure = "getNR3DMode failed "; break;
        case 26: nResult = getNR3DMaxContrast(value), szFailure = "getNR3DMaxContrast failed "; break;
        case 27: nResult = getNR3DFixContrast(value), szFailure = "getNR3DFixContrast failed "; break;
        case 28: nResult = getDTNTime_H(value), szFailure = "getDTNTime_H failed"; break;
        case 29: nResult = getDTNTime_M(value), szFailure = "getDTNTime_M failed"; break;
        case 30: nResult = getNTDTime_H(value), szFailure = "getNTDTime_H failed"; break;
        case 31: nResult = getNTDTime_M(value), szFailure = "getNTDTime_M failed"; break;
        case 32: nResult = getInfraredDTNThreshold(value), szFailure = "getInfraredDayNightMode failed "; break;
        case 33: nResult = getInfraredNTDThreshold(value), szFailure = "getInfraredNTDThreshold failed "; break;
        case 34: nResult = getDNSwitchDelay(value), szFailure = "getDNSwitchDelay failed "; break;
        case 35: nResult = getSmartInfraredMode(value), szFailure = "getSmartInfraredMode failed "; break;
        case 36: nResult = getInfraredManualValue(value), szFailure = "getInfraredManualValue failed "; break;
        case 37: nResult = getHLCMode(value), szFailure = "getHLCMode failed "; break;
        case 38: nResult = getHLCContrast(value), szFailure = "getHLCContrast failed "; break;
        case 39: nResult = getBLCMode(value), szFailure = "getBLCMode failed "; break;
        case 54: nResult = getDeFog(value), szFailure = "getDeFog failed "; break;
        case 55: nResult = getDeFogStrength(value), szFailure = "getDeFogStrength failed "; break;
        case 56: nResult = getAntiShake(value), szFailure = "getAntiShake failed "; break;
        default: break;  // 40-53 are actions and intervals without a reading
    }
    if (nResult == 0 && szFailure != nullptr) {
        KSLogger::consolePuts(szFailure);
        return 0;
    }
    return 1;
}

int S2FisheyeSenseController::getDNStatusFromSensor(int& status) {
    int nLevel = -1;
    int nDTN = -1;
    int nNTD = -1;
    sendGetUnchecked(KSIA_SCENE_LEVEL, nLevel);
    sendGetUnchecked(KSIA_DTN_THRESHOLD, nDTN);
    sendGetUnchecked(KSIA_NTD_THRESHOLD, nNTD);
    if (nLevel >= nDTN)
        status = kNight;
    else if (nLevel <= nNTD)
        status = kDay;
    return 1;
}

int S2FisheyeSenseController::getDNStatusFromLDR(int& status) {
    int nReading = 0;
    if (!m_pAdc || !m_pAdc->read(nReading)) {
        KSLogger::consolePrintf("getADCValue failed %d\n", 0);
        return 0;
    }
    const int nPercent = static_cast<int>(100 * nReading / static_cast<double>(AdcFullScale));
    if (nPercent >= 100 - m_nInfraredNTDThreshold)
        m_nLastLDRStatus = kDay;
    else if (nPercent <= 100 - m_nInfraredDTNThreshold)
        m_nLastLDRStatus = kNight;
    status = m_nLastLDRStatus;
    return 1;
}

int S2FisheyeSenseController::turnPictureToDay() { return sendSet(KSIA_PICTURE_DAY_NIGHT, 1, __func__, __LINE__); }

int S2FisheyeSenseController::turnPictureToNight() {
    int nResult = sendSet(KSIA_PICTURE_DAY_NIGHT, 2, __func__, __LINE__);
    if (!nResult) return nResult;
    // Wait for the ISP to finish the switch, at most about a second.
    const int64_t nStartMs = KestraTime::currentTime().toMs();
    for (;;) {
        int nBusy = -1;
        sendGetUnchecked(KSIA_NIGHT_SWITCH_BUSY, nBusy);
        if (nBusy == 0 || KestraTime::currentTime().toMs() - nStartMs >= kNightSwitchPollLimitMs) {
            pauseMs(kNightSwitchSettleMs);
            break;
        }
        // Once the thread is asked to stop every pause returns at once: the
        // poll ends there rather than asking the ISP as fast as it can.
        if (!pauseMs(kNightSwitchPollMs)) break;
    }
    return nResult;
}

int S2FisheyeSenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePuts("S2FisheyeSenseController::initController");

    ModuleParameterParser objDetail;
    if (!objDetail.parse(cfg.getDetail())) {
        KSLogger::consolePuts("parse detail failed");
        return 0;
    }
    readDetail(objDetail, "autoFocus", "get autoFocus from detail failed", m_strAutoFocus);
    readDetail(objDetail, "manualFocus", "get manualFocus from detail failed", m_strManualFocus);
    readDetail(objDetail, "fisheye", "get fisheye from detail failed", m_strFisheye);

    MachineInfo objInfo;
    if (SystemInfoParser::parseMachineInfo(objInfo)) {
        KsiaPreinitInfo objRecord;
        std::memset(&objRecord, 0, sizeof(objRecord));
        copyField(objRecord.szHardwareModel, sizeof(objRecord.szHardwareModel), objInfo.getHardwareModel());
        copyField(objRecord.szHardwareCode, sizeof(objRecord.szHardwareCode), objInfo.getHardwareCode());
        copyField(objRecord.szHardwareDescription, sizeof(objRecord.szHardwareDescription),
                  objInfo.getHardwareDescription());
        copyField(objRecord.szProductModel, sizeof(objRecord.szProductModel), objInfo.getProductModel());
        copyField(objRecord.szBarCode, sizeof(objRecord.szBarCode), objInfo.getBarCode());
        copyField(objRecord.szProductionTime, sizeof(objRecord.szProductionTime), objInfo.getProductionTime());
        (void)ksia_preinit(&objRecord);
    }

    std::string strValue;
    readDetail(objDetail, "isInfrared", "get isInfrared from detail failed", strValue);
    m_nDNDetectSource = static_cast<int>(std::strtol(strValue.c_str(), nullptr, 10));
    if (m_nDNDetectSource == 0) {
        sendSetUnchecked(KSIA_INFRARED_PRESENT, 0);
    } else {
        readDetail(objDetail, "GPIOInfraredLight", "get GPIOInfraredLight from detail failed", strValue);
        std::sscanf(strValue.c_str(), "%d,%d,%d", &m_nInfraredGroup, &m_nInfraredPin, &m_nInfraredDayLevel);
        m_bLDRBoard = 1;
        sendSetUnchecked(KSIA_INFRARED_PRESENT, 1);
        KSLogger::consolePrintf("=====*****==============initController========gpio group %d pin  %d  val %d \n",
                    m_nInfraredGroup, m_nInfraredPin, m_nInfraredDayLevel);
    }

    readDetail(objDetail, "autoIris", "get autoIris from detail failed", strValue);
    m_nAutoIris = static_cast<int>(std::strtol(strValue.c_str(), nullptr, 10));

    std::string strGPIO;
    readDetail(objDetail, "GPIO", "get GPIO from detail failed", strGPIO);
    ModuleParameterParser objParameters;
    if (!objParameters.parse(cfg.getParameters())) {
        KSLogger::consolePuts("parse senseParameter failed");
        return 0;
    }
    // The IR-cut filter's GPIO, which is also the day/night input of a GPIO-driven board.
    int nGroup = 0, nPin = 0, nLevel = 0;
    int nScanned = std::sscanf(strGPIO.c_str(), "%d,%d,%d", &nGroup, &nPin, &nLevel);
    if (nScanned < 3) {
        KSLogger::consolePrintf("parse GPIO param failed,nRet=%d\n", nScanned);
        return 0;
    }
    m_nIrCutGroup = nGroup;
    m_nIrCutPin = nPin;
    m_nIrCutDayLevel = nLevel;
    return 1;
}
