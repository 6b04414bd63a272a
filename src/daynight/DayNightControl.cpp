// The day/night members of ISensorController: the worker's cycle, the
// decision (sensor, GPIO, light sensor board, fixed choice or timetable), the
// switch delay, and the switching of picture, IR-cut filter and infrared lamps.
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "core/ISensorController.h"
#include "platform/KSDeviceTime.h"
#include "platform/KSLogger.h"
#include "platform/KestraTime.h"

namespace {
const int kDay = 1;
const int kNight = 0;

double nowSeconds() {
    KestraTime t = KestraTime::currentTime();
    return static_cast<double>(t.getSeconds()) + static_cast<double>(t.getMicroseconds()) / 1e6;
}

void pause(int64_t ms) { KestraTime(ms / 1000, (ms % 1000) * 1000).wait(); }
}  // namespace

bool ISensorController::writeGpio(int group, int pin, int level) {
    return !m_pGPIO.isNull() && m_pGPIO->setLevel(group, pin, level) != 0;
}

bool ISensorController::readGpio(int group, int pin, int& level) {
    return !m_pGPIO.isNull() && m_pGPIO->getLevel(group, pin, level) != 0;
}

void ISensorController::DNChangeThreadBody() {
    paramSchemeSwitchBody();
    doDependOnThread();
    if (m_bDNSwitchEnable) DNSwitchHandle();
    pause(1000);
}

int ISensorController::setDayNightMode(int mode) {
    KSMutexGuard lock(m_DNMutex);
    if (mode == 0)
        turnToAutoDayNightMode();
    else if (mode >= 1 && mode <= 3)
        turnToManualDayNightMode();
    m_nDayNightMode = mode;
    reInitDelayStartTime();
    return 1;
}

void ISensorController::setDNAntiFlap(int holdOffSeconds, int ceilingSeconds) {
    KSMutexGuard lock(m_DNMutex);
    m_antiFlap.configure(holdOffSeconds, ceilingSeconds);
}

int ISensorController::getDNAntiFlapDelay() {
    KSMutexGuard lock(m_DNMutex);
    return m_antiFlap.raisedDelay();
}

void ISensorController::reInitDelayStartTime() { m_dDelayStartTime = nowSeconds(); }

int ISensorController::DNSwitchHandle() {
    KSMutexGuard lock(m_DNMutex);
    int status = -1;
    if (!DNSwitchJudge(status)) {
        m_nLastDayNightMode = m_nDayNightMode;
        return 1;
    }
    set2AParam(status);
    if (m_nDayNightMode == 4) {
        m_nLastDayNightMode = 4;
        m_nCurrentDNStatus = status;
        return 1;
    }
    const int before = m_nCurrentDNStatus;
    if (status == kDay) {
        if (!enterDayMode()) {
            KSLogger::consolePuts("enterDayMode failed");
            return 0;
        }
        m_nLastDayNightMode = m_nDayNightMode;
        if (before != kDay && m_nDayNightMode == 0) m_antiFlap.switched(kDay, nowSeconds());
        return 1;
    }
    if (status == kNight) {
        if (!enterNightMode()) {
            KSLogger::consolePuts("enterNightMode failed");
            return 0;
        }
        m_nLastDayNightMode = m_nDayNightMode;
        if (before != kNight && m_nDayNightMode == 0) m_antiFlap.switched(kNight, nowSeconds());
        return 1;
    }
    KSLogger::consolePrintf("=====error!=====nCurrentDNStatus out of range,nCurrentDNStatus=%d\n", status);
    return 0;
}

int ISensorController::DNSwitchJudge(int& status) {
    switch (m_nDayNightMode) {
        case 0:
            if (!getCurrentDNStatus(status)) {
                KSLogger::consolePuts("getCurrentDNStatus false");
                return 0;
            }
            if ((m_nDNDetectSource == 0 || m_bLDRBoard) && !isTimeToSwitch(status)) return 0;
            return 1;
        case 1:
            status = kDay;
            return 1;
        case 2:
            status = kNight;
            return 1;
        case 3:
            DNSwitchByTime(status);
            return 1;
        case 4:
            if (m_nLastDayNightMode != 4) enterAutoMode();
            if (!getCurrentDNStatus(status)) {
                KSLogger::consolePuts("getCurrentDNStatus false");
                return 0;
            }
            return 1;
        default:
            ErrorPrintf("====error=====,m_nDayNightMode out of range");
            return 0;
    }
}

int ISensorController::isTimeToSwitch(int status) {
    if (m_nDNDetectSource != 0 && !m_bLDRBoard) return 1;
    double now = nowSeconds();
    if (status != m_nPendingDNStatus) {
        m_dDelayStartTime = now;
        m_nPendingDNStatus = status;
        if (status == kNight) return 1;
    }
    // Both times are whole microseconds held as seconds in a double, whose
    // difference is not exact (8.2 - 3.2 < 5): compare in whole microseconds,
    // so that a status that has persisted exactly the delay passes.
    const long long elapsedUs = std::llabs(std::llround((now - m_dDelayStartTime) * 1e6));
    // The anti-flap guard (when on) may ask a day status that began right after a
    // switch to night to persist longer.
    const int delay = status == kDay ? m_antiFlap.dayDelay(m_nDNSwitchDelay, m_dDelayStartTime) : m_nDNSwitchDelay;
    return elapsedUs >= static_cast<long long>(delay) * 1000000LL ? 1 : 0;
}

int ISensorController::getCurrentDNStatus(int& status) {
    if (m_nDNDetectSource == 0 || m_bSerialPTZModule) {
        if (!getDNStatusFromSensor(status)) {
            ErrorPrintf("getDNStatusFromSensor failed");
            return 0;
        }
        return 1;
    }
    if (m_nDNDetectSource == 1 && !m_bLDRBoard) {
        int level = -1;
        if (!readGpio(m_nIrCutGroup, m_nIrCutPin, level)) {
            ErrorPrintf("GPIO(%d) get DNLevel failed value = %d", m_nIrCutPin, level);
            return 0;
        }
        status = level == m_nIrCutDayLevel ? kDay : kNight;
        return 1;
    }
    if (m_bLDRBoard) {
        if (!getDNStatusFromLDR(status)) {
            ErrorPrintf("getDNStatusFromLDR failed");
            return 0;
        }
        return 1;
    }
    return 0;
}

int ISensorController::getDNStatusFromLDR(int& status) {
    int level = -1;
    if (!readGpio(m_nLDRGroup, m_nLDRPin, level)) {
        ErrorPrintf("GPIO(%d) get DNLevel failed value = %d", m_nLDRPin, level);
        return 0;
    }
    status = level == m_nLDRDayLevel ? kDay : kNight;
    return 1;
}

int ISensorController::DNSwitchByTime(int& status) {
    m_CurrentTime = KSDeviceTime::getCurrentTime();
    const int now = m_CurrentTime.m_nHour * 100 + m_CurrentTime.m_nMinute;
    if (m_nDTNTime > m_nNTDTime) {
        status = (now >= m_nDTNTime || now < m_nNTDTime) ? kNight : kDay;
    } else if (m_nDTNTime < m_nNTDTime) {
        status = (m_nDTNTime <= now && now < m_nNTDTime) ? kNight : kDay;
    } else {
        KSLogger::consolePuts("Error @ DNSwitchByTime");
        return 0;
    }
    return 1;
}

int ISensorController::enterDayMode() {
    if (m_nCurrentDNStatus == kDay && m_nLastDayNightMode == m_nDayNightMode) return 1;
    KSLogger::consolePuts("!!!enterDayMode");
    if (m_nHDRMode == 3) updateHDRMode(1);
    if (!SwitchInfraredIrCutToDay()) {
        ErrorPrintf("SwitchInfraredIrCutToDay failed\n");
        return 0;
    }
    if (!turnPictureToDay()) {
        ErrorPrintf("turnPictureToDay failed\n");
        return 0;
    }
    m_nCurrentDNStatus = kDay;
    m_nDayNightState = kDay;
    return 1;
}

int ISensorController::enterNightMode() {
    if (m_nCurrentDNStatus == kNight && m_nLastDayNightMode == m_nDayNightMode) return 1;
    KSLogger::consolePuts("!!!enterNightMode");
    if (m_nHDRMode == 3) updateHDRMode(2);
    if (!turnPictureToNight()) {
        ErrorPrintf("turnPictureToNight failed\n");
        return 0;
    }
    if (!SwitchInfraredIrCutToNight()) {
        ErrorPrintf("SwitchInfraredIrCutToNight failed\n");
        return 0;
    }
    m_nCurrentDNStatus = kNight;
    m_nDayNightState = kNight;
    return 1;
}

int ISensorController::SwitchInfraredIrCutToDay() {
    if (m_bSerialPTZModule) return 1;
    if (m_bLDRBoard && m_nDNDetectSource != 2) {
        if (!writeGpio(m_nInfraredGroup, m_nInfraredPin, m_nInfraredDayLevel)) {
            ErrorPrintf("gpio set infrared failed");
            pause(1000);
            return 0;
        }
    }
    pause(100);
    if (m_nDNDetectSource != 0 && m_nDNDetectSource != 2 && !m_bLDRBoard) return 1;
    if (!writeGpio(m_nIrCutGroup, m_nIrCutPin, m_nIrCutDayLevel)) {
        ErrorPrintf("gpio set filter failed");
        pause(1000);
        return 0;
    }
    return 1;
}

int ISensorController::SwitchInfraredIrCutToNight() {
    if (m_bSerialPTZModule) return 1;
    if (m_nDNDetectSource == 0 || m_nDNDetectSource == 2 || m_bLDRBoard) {
        if (!writeGpio(m_nIrCutGroup, m_nIrCutPin, 1 - m_nIrCutDayLevel)) {
            ErrorPrintf("gpio set filter failed");
            pause(1000);
            return 0;
        }
    }
    pause(100);
    if (!m_bLDRBoard || m_nDNDetectSource == 2) return 1;
    if (!writeGpio(m_nInfraredGroup, m_nInfraredPin, 1 - m_nInfraredDayLevel)) {
        ErrorPrintf("gpio set infrared failed");
        pause(1000);
        return 0;
    }
    return 1;
}

namespace {
// Lamp-board packet: start, address, length, class, command, value, checksum, end.
void buildLampPacket(unsigned char (&packet)[8], unsigned char command, int value) {
    packet[0] = 0xFE;
    packet[1] = 0x01;
    packet[2] = 0x1E;
    packet[3] = 0x02;
    packet[4] = command;
    packet[5] = static_cast<unsigned char>(value);
    packet[7] = 0xFF;
    ISensorController::computeSum(packet, 8);
}
}  // namespace

int ISensorController::sendLampCommand(unsigned char command, int value, unsigned int maxValue, const char* what) {
    if (static_cast<unsigned int>(value) > maxValue) {
        ErrorPrintf("%s(%d) out of range", what, value);
        return 0;
    }
    if (m_nDNDetectSource == 0) return 1;
    unsigned char packet[8];
    buildLampPacket(packet, command, value);
    return setParameterValue(reinterpret_cast<const char*>(packet), 8);
}

int ISensorController::setPowerMode(int mode) { return sendLampCommand(1, mode, 1, "setPowerMode"); }
int ISensorController::setNearLight(int level) { return sendLampCommand(6, level, 100, "setNearLight"); }
int ISensorController::setMiddleLight(int level) { return sendLampCommand(7, level, 100, "setMiddleLight"); }
int ISensorController::setFarLight(int level) { return sendLampCommand(8, level, 100, "setFarLight"); }

int ISensorController::setTimeChecked(int& target, int other, int value, const char* label) {
    if (m_bInitialised && !m_bResetting && value == other) {
        ErrorPrintf("failed:DTNTIME == NTDTIME,value = %d\n", other);
        return 0;
    }
    KSLogger::consolePrintf("set %s time:%d\n", label, value);
    target = value;
    return 1;
}

int ISensorController::setDTNTime_H(int hour) {
    return setTimeChecked(m_nDTNTime, m_nNTDTime, hour * 100 + m_nDTNTime % 100, "DTN");
}
int ISensorController::setDTNTime_M(int minute) {
    return setTimeChecked(m_nDTNTime, m_nNTDTime, (m_nDTNTime / 100) * 100 + minute, "DTN");
}
int ISensorController::setNTDTime_H(int hour) {
    return setTimeChecked(m_nNTDTime, m_nDTNTime, hour * 100 + m_nNTDTime % 100, "NTD");
}
int ISensorController::setNTDTime_M(int minute) {
    return setTimeChecked(m_nNTDTime, m_nDTNTime, (m_nNTDTime / 100) * 100 + minute, "NTD");
}
