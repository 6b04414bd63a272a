#include "ksia/SimIsp.h"

#include <cstring>

#include "platform/PlatformClock.h"

namespace {

// One command of the library: its set range (when checked), whether it only
// answers gets, and its power-on value.
struct CommandSpec {
    int nCommand;
    bool bChecked;
    int nMin;
    int nMax;
    bool bGetOnly;
    int nDefault;
};

const CommandSpec kCommands[] = {
    {KSIA_BRIGHTNESS, true, 0, 100, false, 50},
    {KSIA_SATURATION, true, 0, 100, false, 50},
    {KSIA_SHARPNESS, true, 0, 100, false, 50},
    {KSIA_CONTRAST, true, 0, 100, false, 50},
    {KSIA_SHUTTER_MODE, true, 0, 1, false, 0},
    {KSIA_MAX_SHUTTER, true, 0, 18, false, 6},
    {KSIA_FIXED_SHUTTER, true, 0, 18, false, 6},
    {KSIA_VIDEO_SYSTEM, true, 0, 1, false, 1},
    {KSIA_GAIN_MODE, true, 0, 1, false, 0},
    {KSIA_MAX_GAIN, true, 0, 100, false, 50},
    {KSIA_FIXED_GAIN, true, 0, 100, false, 0},
    {KSIA_PICTURE_DAY_NIGHT, true, 1, 2, false, 1},
    {KSIA_DTN_THRESHOLD, true, 0, 100, false, 70},
    {KSIA_NTD_THRESHOLD, true, 0, 100, false, 30},
    {KSIA_IRIS_MODE, true, 0, 1, false, 0},
    {KSIA_IRIS_SPEED, true, 0, 100, false, 50},
    {KSIA_INDOOR_OUTDOOR, true, 0, 2, false, 0},
    {KSIA_WDR_MODE, true, 0, 1, false, 0},
    {KSIA_WDR_STRENGTH, true, 0, 100, false, 50},
    {KSIA_PHOTOMETRY, true, 0, 3, false, 0},
    {KSIA_MIRROR, true, 0, 3, false, 0},
    {KSIA_BE_AWAY, true, 0, 1, false, 0},
    {KSIA_NR2D_MODE, true, 0, 2, false, 1},
    {KSIA_NR2D_MAX, true, 0, 100, false, 50},
    {KSIA_NR2D_FIXED, true, 0, 100, false, 50},
    {KSIA_NR3D_MODE, true, 0, 2, false, 1},
    {KSIA_NR3D_MAX, true, 0, 100, false, 50},
    {KSIA_NR3D_FIXED, true, 0, 100, false, 50},
    {KSIA_NIGHT_SWITCH_BUSY, false, 0, 0, true, 0},
    {KSIA_INFRARED_PRESENT, true, 0, 1, false, 0},
    {KSIA_SMART_IR_MODE, true, 1, 2, false, 1},
    {KSIA_IR_MANUAL_POWER, true, 0, 100, false, 50},
    {KSIA_HLC_MODE, true, 0, 1, false, 0},
    {KSIA_HLC_STRENGTH, true, 0, 100, false, 50},
    {KSIA_BLC_MODE, false, 0, 0, false, 0},
    {KSIA_SCENE_LEVEL, false, 0, 0, true, SimIsp::DefaultSceneLevel},
    {KSIA_ZOOM_INTERVAL, true, 0, 4, false, 2},
    {KSIA_ZOOM_MOVE, true, 1, 5, false, 5},
    {KSIA_FOCUS_INTERVAL, false, 0, 0, false, 0},
    {KSIA_FOCUS_MOVE, true, 1, 6, false, 5},
    {KSIA_DEFOG, true, 0, 1, false, 0},
    {KSIA_DEFOG_STRENGTH, true, 0, 100, false, 50},
    {KSIA_ANTI_SHAKE, false, 0, 0, false, 0},
};

const CommandSpec* findSpec(int p_nCommand) {
    for (const CommandSpec& objSpec : kCommands) {
        if (objSpec.nCommand == p_nCommand) {
            return &objSpec;
        }
    }
    return nullptr;
}

}  // namespace

SimIsp& SimIsp::instance() {
    static SimIsp s_objInstance;
    return s_objInstance;
}

SimIsp::SimIsp() {
    resetLocked();
}

void SimIsp::resetLocked() {
    m_mapValues.clear();
    for (const CommandSpec& objSpec : kCommands) {
        m_mapValues[objSpec.nCommand] = objSpec.nDefault;
    }
    m_mapFailures.clear();
    m_vecCalls.clear();
    m_nPreinitCount = 0;
    std::memset(&m_objPreinit, 0, sizeof(m_objPreinit));
    m_nBusyMs = DefaultNightSwitchBusyMs;
    m_bSwitching = false;
    m_nSwitchStartMs = 0;
}

void SimIsp::reset() {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    resetLocked();
}

int SimIsp::preinit(const KsiaPreinitInfo* p_pInfo) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    ++m_nPreinitCount;
    if (p_pInfo == nullptr) {
        return ErrNullValue;
    }
    std::memcpy(&m_objPreinit, p_pInfo, sizeof(m_objPreinit));
    return 0;
}

bool SimIsp::isNightSwitchBusyLocked() const {
    if (!m_bSwitching) {
        return false;
    }
    return PlatformClock::nowMs() - m_nSwitchStartMs < m_nBusyMs;
}

int SimIsp::ioctrl(int p_nCommand, int p_nDirection, int* p_pValue) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    Call objCall;
    objCall.nCommand = p_nCommand;
    objCall.nDirection = p_nDirection;
    objCall.bHasValue = p_pValue != nullptr;
    objCall.nValueIn = p_pValue != nullptr ? *p_pValue : 0;
    objCall.nTimeMs = PlatformClock::nowMs();

    int nResult = 0;
    const CommandSpec* pSpec = findSpec(p_nCommand);
    std::map<int, Failure>::iterator itFailure = m_mapFailures.find(p_nCommand);
    if (itFailure != m_mapFailures.end()) {
        nResult = itFailure->second.nCode;
        if (itFailure->second.nTimes > 0 && --itFailure->second.nTimes == 0) {
            m_mapFailures.erase(itFailure);
        }
    } else if (pSpec == nullptr) {
        nResult = ErrUnknownCommand;
    } else if (p_pValue == nullptr) {
        nResult = ErrNullValue;
    } else if (p_nDirection == KSIA_GET) {
        if (p_nCommand == KSIA_NIGHT_SWITCH_BUSY && isNightSwitchBusyLocked()) {
            *p_pValue = 1;
        } else {
            *p_pValue = m_mapValues[p_nCommand];
        }
    } else if (p_nDirection == KSIA_SET) {
        const int nValue = *p_pValue;
        if (pSpec->bGetOnly) {
            nResult = ErrReadOnly;
        } else if (pSpec->bChecked && (nValue < pSpec->nMin || nValue > pSpec->nMax)) {
            nResult = ErrOutOfRange;
        } else {
            m_mapValues[p_nCommand] = nValue;
            if (p_nCommand == KSIA_PICTURE_DAY_NIGHT && nValue == 2) {
                m_bSwitching = true;
                m_nSwitchStartMs = objCall.nTimeMs;
            }
        }
    } else {
        nResult = ErrDirection;
    }

    objCall.nValueOut = p_pValue != nullptr ? *p_pValue : 0;
    objCall.nResult = nResult;
    m_vecCalls.push_back(objCall);
    return nResult;
}

void SimIsp::setSceneLevel(int p_nLevel) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_mapValues[KSIA_SCENE_LEVEL] = p_nLevel;
}

int SimIsp::sceneLevel() const {
    return value(KSIA_SCENE_LEVEL);
}

void SimIsp::setNightSwitchBusyMs(int64_t p_nMs) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_nBusyMs = p_nMs < 0 ? 0 : p_nMs;
}

bool SimIsp::isNightSwitchBusy() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return isNightSwitchBusyLocked() || m_mapValues.at(KSIA_NIGHT_SWITCH_BUSY) != 0;
}

void SimIsp::failCommand(int p_nCommand, int p_nCode, int p_nTimes) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    if (p_nCode == 0 || p_nTimes == 0) {
        m_mapFailures.erase(p_nCommand);
        return;
    }
    m_mapFailures[p_nCommand] = Failure{p_nCode, p_nTimes};
}

void SimIsp::clearFailure(int p_nCommand) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_mapFailures.erase(p_nCommand);
}

void SimIsp::clearFailures() {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_mapFailures.clear();
}

void SimIsp::setValue(int p_nCommand, int p_nValue) {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    if (findSpec(p_nCommand) != nullptr) {
        m_mapValues[p_nCommand] = p_nValue;
    }
}

bool SimIsp::getValue(int p_nCommand, int& p_nValue) const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    std::map<int, int>::const_iterator it = m_mapValues.find(p_nCommand);
    if (it == m_mapValues.end()) {
        return false;
    }
    p_nValue = it->second;
    return true;
}

int SimIsp::value(int p_nCommand) const {
    int nValue = -1;
    getValue(p_nCommand, nValue);
    return nValue;
}

std::vector<SimIsp::Call> SimIsp::calls() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_vecCalls;
}

void SimIsp::clearCalls() {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    m_vecCalls.clear();
}

int SimIsp::callCount(int p_nCommand, int p_nDirection) const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    int nCount = 0;
    for (const Call& objCall : m_vecCalls) {
        if (objCall.nCommand == p_nCommand && (p_nDirection < 0 || objCall.nDirection == p_nDirection)) {
            ++nCount;
        }
    }
    return nCount;
}

bool SimIsp::lastSet(int p_nCommand, int& p_nValue) const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    for (std::vector<Call>::const_reverse_iterator it = m_vecCalls.rbegin(); it != m_vecCalls.rend(); ++it) {
        if (it->nCommand == p_nCommand && it->nDirection == KSIA_SET && it->nResult == 0) {
            p_nValue = it->nValueIn;
            return true;
        }
    }
    return false;
}

int SimIsp::preinitCount() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_nPreinitCount;
}

KsiaPreinitInfo SimIsp::preinitInfo() const {
    std::lock_guard<std::mutex> objLock(m_objMutex);
    return m_objPreinit;
}

bool SimIsp::isKnownCommand(int p_nCommand) {
    return findSpec(p_nCommand) != nullptr;
}

bool SimIsp::isGetOnly(int p_nCommand) {
    const CommandSpec* pSpec = findSpec(p_nCommand);
    return pSpec != nullptr && pSpec->bGetOnly;
}

bool SimIsp::isAccepted(int p_nCommand, int p_nValue) {
    const CommandSpec* pSpec = findSpec(p_nCommand);
    if (pSpec == nullptr || pSpec->bGetOnly) {
        return false;
    }
    return !pSpec->bChecked || (p_nValue >= pSpec->nMin && p_nValue <= pSpec->nMax);
}
