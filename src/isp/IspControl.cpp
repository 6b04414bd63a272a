// The ISP tuning members of ISensorController: loading the tables and the
// application pass that looks settings up by day/night state and gain.
#include <cstdio>

#include "core/ISensorController.h"
#include "isp/EE.h"
#include "isp/ISPParam.h"
#include "isp/ISPParamParse.h"
#include "platform/KSLogger.h"
#include "platform/KestraTime.h"

bool ISensorController::ISPParamThreadInit() {
    ISPParamParse parser;
    m_pISPParam->clear();
    if (!parser.parse()) {
        ErrorPrintf("objISPParamParse.parse failed");
        return false;
    }
    parser.getISPParam(*m_pISPParam);
    m_bIspRealTimeUpdate = parser.getRealTimeUpdate();
    m_nIspDelayTime = parser.getDelayTime();
    return true;
}

int ISensorController::ISPParamBody() {
    if (m_bIspRealTimeUpdate) ISPParamThreadInit();
    bool enabled = false;
    if (m_pISPParam->getEnableFlag("DN", enabled) && enabled) {
        setISPParam("DN", m_nDayNightState);
        m_nLastISPDayNightState = m_nDayNightState.load();
    }
    enabled = false;
    if (m_pISPParam->getEnableFlag("GAIN", enabled) && enabled) {
        int gain = 0;
        if (!getCurrentGain(gain)) {
            ErrorPrintf("get current gain failed\n");
            return 0;
        }
        setISPParam("GAIN", gain);
    }
    KestraTime(m_nIspDelayTime, 0).wait();
    return 0;
}

bool ISensorController::setISPParam(const std::string& table, int key) {
    if (!setEEParam(table, key)) KSLogger::consolePuts("setEEParam failed");
    if (!setDCParam(table, key)) KSLogger::consolePuts("setDCParam failed");
    if (!set3DNRParam(table, key)) KSLogger::consolePuts("set3DNRParam failed");
    return true;
}

bool ISensorController::setDCParam(const std::string& table, int key) {
    int v = -100;
    if (!m_pISPParam->getParam(table, "DC", key, v)) return true;
    if (v == m_nLastDC) return true;
    KSLogger::consolePrintf("set DC=%d\n", v);
    m_nLastDC = v;
    return true;
}

bool ISensorController::setEEParam(const std::string& table, int key) {
    if (m_nSensorType == 4 || m_nSensorType == 5 || m_nSensorType == 6) return true;
    int v = -100;
    if (m_nTNFMode == 1 && m_nSensorType == 21) {
        v = -1;
    } else if (!m_pISPParam->getParam(table, "EE", key, v)) {
        return true;
    }
    if (v == m_nLastEE) return true;
    if (v != -1 && v != -2) {
        KSLogger::consolePrintf("set ee=%d\n", v);
        m_pEE->setEE(v);
    }
    m_nLastEE = v;
    return true;
}

bool ISensorController::set3DNRParam(const std::string& table, int key) {
    if (m_nTNFMode == 1 || m_nTNFMode == 2) return true;
    int a0 = -100;
    if (m_pISPParam->getParam(table, "A0", key, a0) && a0 != m_nLastA0) {
        if (a0 != -1 && m_nLastTM != -1)
            KSLogger::consolePrintf("set A0=%d,TM=%d\n", a0, m_nLastTM.load());
        else
            KSLogger::consolePuts("close TNF");
        m_nLastA0 = a0;
    }
    int tm = -100;
    if (!m_pISPParam->getParam(table, "TM", key, tm) || tm == m_nLastTM) return true;
    if (m_nLastA0 != -1 && tm != -1)
        KSLogger::consolePrintf("set TM=%d,A0=%d\n", tm, m_nLastA0.load());
    else
        KSLogger::consolePuts("close TNF");
    m_nLastTM = tm;
    return true;
}

bool ISensorController::setTNF(int level) {
    if (level != 0) {
        int t = ((level - 1) * 255) / 99;
        int a = t - 255, b = 255 - t;
        KSLogger::consolePrintf("setTNF=%d\n", a > b ? a : b);
    }
    m_nTNFLevel = level;
    return true;
}

bool ISensorController::setTNFMode(int mode) {
    if (mode == 1) {
        m_nLastA0 = -1;
        m_nLastTM = -1;
    } else if (mode == 2) {
        setTNF(m_nTNFLevel);
    }
    m_nTNFMode = mode;
    return true;
}

bool ISensorController::getTNFMode(int& mode) {
    const int t = m_nSensorType;
    mode = (m_nTNFSwitch != 0 && t != 11 && t != 16 && t != 19 && t != 24) ? 0 : 1;
    return true;
}

bool ISensorController::getTNF(int& level) {
    if (m_nTNFSwitch == 0) level = 0;
    return true;
}
