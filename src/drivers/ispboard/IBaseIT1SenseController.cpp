#include "drivers/ispboard/IBaseIT1SenseController.h"

#include "drivers/serial/SerialLineSettings.h"
#include "platform/GThread.h"
#include "platform/KSLogger.h"
#include "platform/KestraTime.h"

namespace {

bool pauseMs(int64_t ms) { return KestraTime(ms / 1000, (ms % 1000) * 1000).wait(); }

// The four iris values of each iris speed: the board's iris steps in its four
// brightness zones, larger steps for a faster iris.
const uint8_t kIrisSteps[IBaseIT1SenseController::IrisSpeeds][IBaseIT1SenseController::IrisValues] = {
    {4, 8, 12, 16}, {8, 16, 24, 32}, {16, 32, 48, 64}, {32, 64, 96, 128}};

typedef IBaseIT1SenseController B;

const IspBoardTable::Register kRegisters[] = {
    {B::RegBrightness, 8, "Brightness", 50, 0, 100, true},
    {B::RegContrast, 8, "Contrast", 50, 0, 100, true},
    {B::RegSaturation, 8, "Saturation", 50, 0, 100, true},
    {B::RegSharpness, 8, "Sharpness", 8, 0, 15, true},
    {B::RegGamma, 8, "Gamma", 3, 0, 7, true},
    {B::RegMirror, 8, "Mirror", 0x40, 0, 255, true},
    {B::RegShutterMode, 8, "ShutterMode", 0, 0, 1, true},
    {B::RegFixedShutter, 8, "FixedShutter", 6, 0, 15, true},
    {B::RegShutterLimit, 16, "ShutterLimit", 0x000F, 0, 0x0F0F, true},
    {B::RegWhiteBalance, 8, "WhiteBalance", 0, 0, 1, true},
    {B::RegChroma1, 8, "Chroma1", 0x88, 0, 255, true},
    {B::RegChroma1 + 1, 8, "Chroma2", 0x88, 0, 255, true},
    {B::RegChroma1 + 2, 8, "Chroma3", 0x88, 0, 255, true},
    {B::RegChroma1 + 3, 8, "Chroma4", 0x88, 0, 255, true},
    {B::RegDayNight, 8, "DayNight", 0x01, 0, 3, true},
    {B::RegDayNightStatus, 8, "DayNightStatus", 1, 0, 1, false},
    {B::RegDayToNight, 16, "DayToNight", 0x0100, 0, 1023, true},
    {B::RegNightToDay, 16, "NightToDay", 0x0180, 0, 1023, true},
    {B::RegIrisValue1, 8, "IrisValue1", 8, 0, 255, true},
    {B::RegIrisValue1 + 1, 8, "IrisValue2", 16, 0, 255, true},
    {B::RegIrisValue1 + 2, 8, "IrisValue3", 24, 0, 255, true},
    {B::RegIrisValue1 + 3, 8, "IrisValue4", 32, 0, 255, true},
    {B::RegIrisVoltage, 8, "IrisVoltage", 0x80, 0, 255, true},
    {B::RegNightColor, 8, "NightColor", 0, 0, 1, true},
    {B::RegTriggerInput, 8, "TriggerInput", 0, 0, 1, false},
};

const IspBoardTable::Parameter kParameters[] = {
    {1, IspBoardTable::Whole, B::RegBrightness, 0, 0, 100, "p_nBrightness(%d) is out of range",
     "setBrightness error,value is %d"},
    {2, IspBoardTable::Whole, B::RegContrast, 0, 0, 100, "p_nContrast(%d) is out of range",
     "setContrast error,value is %d"},
    {3, IspBoardTable::Whole, B::RegSaturation, 0, 0, 100, "p_nSaturation(%d) is out of range",
     "setSaturation error,value is %d"},
    {4, IspBoardTable::Whole, B::RegSharpness, 0, 0, 15, "p_nSharpness(%d) is out of range",
     "setSharpness error,value is %d"},
    {5, IspBoardTable::Whole, B::RegGamma, 0, 0, 7, "setGama(%d) is out of range\n", "setGama error,value is %d"},
    {B::IdMirror, IspBoardTable::Field, B::RegMirror, 0x03, 0, 3, "p_nMirror(%d) is out of range",
     "setMirror error,value is %d"},
    {B::IdShutterMode, IspBoardTable::Whole, B::RegShutterMode, 0, 0, 1, "p_nShutterMode(%d) is out of range",
     "setShutterMode error,value is %d"},
    {B::IdFixedShutter, IspBoardTable::Own, B::RegFixedShutter, 0, 0, 15, "p_nShutter(%d) is out of range",
     "setShutter error,value is %d"},
    {B::IdMinShutter, IspBoardTable::Own, B::RegShutterLimit, 0, 0, 15, "p_nMinShutter(%d) is out of range",
     "setMinShutter error,value is %d"},
    {B::IdMaxShutter, IspBoardTable::Own, B::RegShutterLimit, 0, 0, 15, "p_nMaxShutter(%d) is out of range",
     "setMaxShutter error,value is %d"},
    {12, IspBoardTable::Whole, B::RegWhiteBalance, 0, 0, 1, "p_nWhiteBalanceMode(%d) is out of range",
     "setWhiteBalanceMode error,value is %d"},
    {B::IdRedChroma, IspBoardTable::Own, B::RegChroma1, 0, 0, 15, "p_nRedChroma(%d) is out of range", nullptr},
    {B::IdBlueChroma, IspBoardTable::Own, B::RegChroma1, 0, 0, 15, "p_nBlueChroma(%d) is out of range", nullptr},
    {B::IdDayNightMode, IspBoardTable::Own, B::RegDayNight, 0, 0, 3, "invalid value", "setDayNightMode error,value is %d"},
    {16, IspBoardTable::Whole, B::RegDayToNight, 0, 0, 1023, "p_nDayToNightTransition(%d) is out of range",
     "base_setDayToNightTransition(%d) failed"},
    {17, IspBoardTable::Whole, B::RegNightToDay, 0, 0, 1023, "p_nNightToDayTransition(%d) is out of range",
     "base_setNightToDayTransition(%d) failed"},
    {B::IdIrisSpeed, IspBoardTable::Own, B::RegIrisValue1, 0, 0, 3, "invalid iris speed value (%d)", nullptr},
    {19, IspBoardTable::Whole, B::RegIrisVoltage, 0, 0, 255, "p_nIrisVoltage(%d) is out of range",
     "setIrisVoltage failed"},
    {22, IspBoardTable::Whole, B::RegNightColor, 0, 0, 1, "p_nNightColor(%d) is out of range", "setNightColor failed"},
};

const IspBoardTable kTable = {"IT1SenseController", kRegisters, sizeof(kRegisters) / sizeof(kRegisters[0]),
                              kParameters, sizeof(kParameters) / sizeof(kParameters[0])};

}  // namespace

const IspBoardTable& IBaseIT1SenseController::it1Table() { return kTable; }

const uint8_t (&IBaseIT1SenseController::irisValuesOf(int speed))[IrisValues] {
    return kIrisSteps[speed < 0 ? 0 : (speed >= IrisSpeeds ? IrisSpeeds - 1 : speed)];
}

IBaseIT1SenseController::IBaseIT1SenseController(int sensorType, const IspBoardTable& table)
    : IspBoardSenseController(sensorType, table) {
    registerIds(table.controllerName);
    m_pAutoThread = new GThread([this] { autoThreadFunc(); }, "IT1AutoThread");
    m_pTriggerThread = new GThread([this] { externalTriggerThreadFunc(); }, "IT1TriggerThread");
}

IBaseIT1SenseController::~IBaseIT1SenseController() {
    // The workers use the port and the register cache: they end before anything goes.
    stopBoardWorkers();
    delete m_pAutoThread;
    delete m_pTriggerThread;
    m_pAutoThread = nullptr;
    m_pTriggerThread = nullptr;
}

void IBaseIT1SenseController::stopBoardWorkers() {
    m_pAutoThread->stop();
    m_pTriggerThread->stop();
}

// ---- start-up ----

bool IBaseIT1SenseController::openPort(const ModuleConfigure& cfg) {
    SerialLineSettings line;
    return openBoardPort(cfg, line, SerialModuleTexts);
}

void IBaseIT1SenseController::readBack() {
    int v = 0;
    if (!readRegister(RegShutterLimit, v)) {
        KSLogger::consolePuts("Init Low Shutter Value failed");
        InitPrintf("Init Low Shutter Value failed");
    }
    if (!readRegister(RegSharpness, v)) {
        KSLogger::consolePuts("Init Low Sharpness Value failed");
        InitPrintf("Init Low Sharpness Value failed");
    }
    if (!readRegister(RegDayNight, v)) {
        KSLogger::consolePuts("Init Day Night Failed");
        InitPrintf("Init Day Night Failed");
    } else {
        m_nBoardDNMode = (v & 0x01) ? BoardDecides : ((v & 0x02) ? AlwaysNight : AlwaysDay);
    }
    if (!readRegister(RegMirror, v)) {
        KSLogger::consolePuts("Init getMirror Value failed");
        InitPrintf("Init getMirror Value failed");
    }
    for (int k = 0; k < ChromaPairs; ++k) {
        if (!readRegister(static_cast<uint16_t>(RegChroma1 + k), v)) {
            KSLogger::consolePuts("Init getChroma Value failed");
            InitPrintf("Init getChroma Value failed");
            break;
        }
    }
}

int IBaseIT1SenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("____IBaseIT1SenseController::init,ModuleConfigure is(%s,%s)\n", cfg.getDetail().c_str(),
                            cfg.getParameters().c_str());
    if (!openPort(cfg)) return 0;
    readBack();
    if (!base_setDayToNightTransition(0)) {
        KSLogger::consolePuts("init base_setDayToNightTransition(0) failed");
        InitPrintf("init base_setDayToNightTransition(0) failed");
    }
    if (!base_setNightToDayTransition(0)) {
        KSLogger::consolePuts("init base_setNightToDayTransition(0) failed");
        InitPrintf("init base_setNightToDayTransition(0) failed");
    }
    m_bBoardReady = true;
    return 1;
}

int IBaseIT1SenseController::NotifySensorInitComplate() {
    // The workers start once start-up has applied the stored parameters, so
    // that they do not compete with it for the line.
    if (!m_bBoardReady.load()) return 0;
    m_pAutoThread->start();
    m_pTriggerThread->start();
    return 1;
}

// ---- day/night ----

int IBaseIT1SenseController::openDayNightMode() {
    return modifyRegister(RegDayNight, [](int current, int& next) {
               next = modifyAppointedBit(static_cast<unsigned char>(current), 0, 1);
               return true;
           }) == 1;
}

int IBaseIT1SenseController::closeDayNightMode() {
    return modifyRegister(RegDayNight, [](int current, int& next) {
               next = modifyAppointedBit(static_cast<unsigned char>(current), 0, 0);
               return true;
           }) == 1;
}

int IBaseIT1SenseController::setNightBit(int on, bool tryOnly) {
    return modifyRegister(
        RegDayNight,
        [on](int current, int& next) {
            next = modifyAppointedBit(static_cast<unsigned char>(current), 1, on);
            return true;
        },
        tryOnly);
}

int IBaseIT1SenseController::enterNightMode() { return setNightBit(1, false) == 1; }
int IBaseIT1SenseController::exitNightMode() { return setNightBit(0, false) == 1; }

int IBaseIT1SenseController::base_setDayToNightTransition(int value) { return writeRegister(RegDayToNight, value); }
int IBaseIT1SenseController::base_setNightToDayTransition(int value) { return writeRegister(RegNightToDay, value); }

int IBaseIT1SenseController::setDayNightModeOfBoard(int mode) {
    int ok = 0;
    switch (mode) {
    case BoardDecides: ok = openDayNightMode(); break;
    case AlwaysDay: ok = closeDayNightMode() && exitNightMode(); break;
    case AlwaysNight: ok = closeDayNightMode() && enterNightMode(); break;
    default: ok = closeDayNightMode(); break;  // the trigger worker follows the input
    }
    if (ok) {
        m_nLastTrigger = -1;  // the trigger worker applies the input's level afresh
        m_nBoardDNMode = mode;
    }
    return ok;
}

int IBaseIT1SenseController::getDNStatusFromSensor(int& status) {
    const int s = m_nBoardDNStatus.load();
    if (s < 0) return 0;
    status = s;
    return 1;
}

int IBaseIT1SenseController::turnPictureToDay() { return exitNightMode(); }
int IBaseIT1SenseController::turnPictureToNight() { return enterNightMode(); }

int IBaseIT1SenseController::getMirrorValue(int& value) { return getParameterFromSensor(IdMirror, value); }

// ---- rows coded here ----

int IBaseIT1SenseController::setShutterLimit(int id, int value) {
    const char* refusal = nullptr;
    int r = modifyRegister(RegShutterLimit, [&](int current, int& next) {
        const int minimum = (current >> 8) & 0xFF, maximum = current & 0xFF;
        if (id == IdMinShutter && value > maximum) {
            refusal = "set MinShutterValue > MaxShutterValue!";
            return false;
        }
        if (id == IdMaxShutter && value < minimum) {
            refusal = "set MaxShutterValue < MinShutterValue!";
            return false;
        }
        next = id == IdMinShutter ? assembleData(static_cast<unsigned char>(value), static_cast<unsigned char>(maximum))
                                  : assembleData(static_cast<unsigned char>(minimum), static_cast<unsigned char>(value));
        return true;
    });
    if (refusal != nullptr) KSLogger::consolePuts(refusal);
    return r == 1;
}

int IBaseIT1SenseController::setChroma(bool red, int value) {
    for (int k = 0; k < ChromaPairs; ++k) {
        int r = modifyRegister(static_cast<uint16_t>(RegChroma1 + k), [&](int current, int& next) {
            const unsigned char c = static_cast<unsigned char>(current);
            next = red ? modifyHighFourBits(c, value) : modifyLowFourBits(c, value);
            return true;
        });
        if (r != 1) {
            if (red)
                KSLogger::consolePrintf("set RY%d failed\n", k + 1);
            else
                KSLogger::consolePrintf("set BY%d failed\n", k + 1);
            return 0;
        }
    }
    return 1;
}

int IBaseIT1SenseController::setIrisSpeed(int value) {
    const uint8_t(&steps)[IrisValues] = irisValuesOf(value);
    for (int k = 0; k < IrisValues; ++k) {
        if (!writeRegister(static_cast<uint16_t>(RegIrisValue1 + k), steps[k])) {
            KSLogger::consolePrintf("setIrisValue%d failed\n", k + 1);
            return 0;
        }
    }
    return 1;
}

int IBaseIT1SenseController::setOwnParameter(const IspBoardTable::Parameter& row, int value) {
    int ok = 0;
    switch (row.id) {
    case IdFixedShutter: {
        int mode = 0;
        if (!currentRegister(RegShutterMode, mode)) break;
        if (mode == 0) {
            KSLogger::consolePuts("set fixed shutter failed : current is shutter mode is auto");
            return 0;
        }
        ok = writeRegister(RegFixedShutter, value);
        break;
    }
    case IdMinShutter:
    case IdMaxShutter: return setShutterLimit(row.id, value);
    case IdRedChroma: return setChroma(true, value);
    case IdBlueChroma: return setChroma(false, value);
    case IdDayNightMode: ok = setDayNightModeOfBoard(value); break;
    case IdIrisSpeed: return setIrisSpeed(value);
    default: return 0;
    }
    if (!ok) printText(row.failText, value);
    return ok;
}

int IBaseIT1SenseController::getOwnParameter(const IspBoardTable::Parameter& row, int& value) {
    int v = 0;
    switch (row.id) {
    case IdFixedShutter:
        if (!readRegister(RegFixedShutter, v)) return 0;
        break;
    case IdMinShutter:
    case IdMaxShutter:
        if (!readRegister(RegShutterLimit, v)) return 0;
        v = row.id == IdMinShutter ? (v >> 8) & 0xFF : v & 0xFF;
        break;
    case IdRedChroma:
    case IdBlueChroma:
        if (!readRegister(RegChroma1, v)) return 0;
        v = row.id == IdRedChroma ? (v >> 4) & 0x0F : v & 0x0F;
        break;
    case IdDayNightMode:
        if (!readRegister(RegDayNight, v)) return 0;
        if (m_nBoardDNMode.load() == ExternalTrigger && !(v & 0x01))
            v = ExternalTrigger;
        else
            v = (v & 0x01) ? BoardDecides : ((v & 0x02) ? AlwaysNight : AlwaysDay);
        break;
    case IdIrisSpeed: {
        if (!readRegister(RegIrisValue1, v)) return 0;
        int speed = -1;
        for (int s = 0; s < IrisSpeeds; ++s)
            if (kIrisSteps[s][0] == v) speed = s;
        if (speed < 0) return 0;
        v = speed;
        break;
    }
    default: return 0;
    }
    value = v;
    return 1;
}

// ---- the workers ----

int IBaseIT1SenseController::autoThreadFunc() {
    ++m_nAutoPasses;
    if (m_bBoardReady.load() && m_nBoardDNMode.load() == BoardDecides) {
        int v = 0;
        if (tryReadRegister(RegDayNightStatus, v) == 1) m_nBoardDNStatus = v ? 1 : 0;
    }
    pauseMs(AutoPeriodMs);
    return 0;
}

int IBaseIT1SenseController::externalTriggerThreadFunc() {
    ++m_nTriggerPasses;
    if (m_bBoardReady.load() && m_nBoardDNMode.load() == ExternalTrigger) {
        int level = 0;
        if (tryReadRegister(RegTriggerInput, level) == 1 && level != m_nLastTrigger.load()) {
            if (setNightBit(level ? 1 : 0, true) == 1) m_nLastTrigger = level;
        }
    }
    pauseMs(TriggerPeriodMs);
    return 0;
}
