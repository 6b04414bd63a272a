#include "drivers/ispboard/ITNSenseController.h"

#include <cstdio>
#include <string>

#include "drivers/serial/SerialLineSettings.h"
#include "platform/KSLogger.h"
#include "platform/ModuleParameterParser.h"

namespace {

typedef ITNSenseController N;

// Register n + 0x1000 holds parameter id n.
const IspBoardTable::Register kRegisters[] = {
    {0x1001, 8, "Brightness", 50, 0, 100, true},
    {0x1002, 8, "Contrast", 50, 0, 100, true},
    {0x1003, 8, "Saturation", 50, 0, 100, true},
    {0x1004, 8, "Sharpness", 8, 0, 15, true},
    {0x1005, 8, "Hue", 50, 0, 100, true},
    {N::RegMirror, 8, "ImageFlags", 0x80, 0, 255, true},
    {0x1007, 8, "Gamma", 3, 0, 7, true},
    {0x1008, 8, "ShutterMode", 0, 0, 1, true},
    {0x1009, 16, "Shutter", 40, 1, 10000, true},
    {0x100A, 8, "GainMode", 0, 0, 1, true},
    {0x100B, 8, "Gain", 0, 0, 100, true},
    {0x100C, 8, "MaxGain", 80, 0, 100, true},
    {0x100D, 8, "WhiteBalance", 0, 0, 4, true},
    {0x100E, 8, "RedGain", 128, 0, 255, true},
    {0x100F, 8, "BlueGain", 128, 0, 255, true},
    {0x1010, 8, "Backlight", 0, 0, 1, true},
    {0x1011, 8, "WideDynamic", 8, 0, 15, true},
    {0x1012, 8, "Defog", 0, 0, 3, true},
    {0x1013, 8, "Nr2D", 4, 0, 15, true},
    {0x1014, 8, "Nr3D", 4, 0, 15, true},
    {N::RegDayNightMode, 8, "DayNightMode", 0, 0, 2, true},
    {0x1016, 8, "DayNightDelay", 5, 0, 30, true},
    {0x1017, 8, "IrCut", 1, 0, 1, true},
    {0x1018, 8, "AntiFlicker", 0, 0, 2, true},
    {0x1019, 8, "SlowShutter", 0, 0, 1, true},
    {0x101A, 8, "AeTarget", 96, 0, 255, true},
    {N::RegNightPicture, 8, "NightPicture", 0, 0, 1, true},
};

const IspBoardTable::Parameter kParameters[] = {
    ISP_BOARD_ROW(1, 0x1001, 0, 100, "Brightness"),
    ISP_BOARD_ROW(2, 0x1002, 0, 100, "Contrast"),
    ISP_BOARD_ROW(3, 0x1003, 0, 100, "Saturation"),
    ISP_BOARD_ROW(4, 0x1004, 0, 15, "Sharpness"),
    ISP_BOARD_ROW(5, 0x1005, 0, 100, "Hue"),
    {N::IdMirror, IspBoardTable::Field, N::RegMirror, 0x03, 0, 3, "p_nMirror(%d) is out of range",
     "setMirror error,value is %d"},
    {7, IspBoardTable::Whole, 0x1007, 0, 0, 7, "setGama(%d) is out of range\n", "setGama error,value is %d"},
    ISP_BOARD_ROW(8, 0x1008, 0, 1, "ShutterMode"),
    ISP_BOARD_ROW(9, 0x1009, 1, 10000, "Shutter"),
    ISP_BOARD_ROW(10, 0x100A, 0, 1, "GainMode"),
    ISP_BOARD_ROW(11, 0x100B, 0, 100, "Gain"),
    ISP_BOARD_ROW(12, 0x100C, 0, 100, "MaxGain"),
    ISP_BOARD_ROW(13, 0x100D, 0, 4, "WhiteBalanceMode"),
    ISP_BOARD_ROW(14, 0x100E, 0, 255, "RedGain"),
    ISP_BOARD_ROW(15, 0x100F, 0, 255, "BlueGain"),
    ISP_BOARD_ROW(16, 0x1010, 0, 1, "Backlight"),
    ISP_BOARD_ROW(17, 0x1011, 0, 15, "WideDynamic"),
    ISP_BOARD_ROW(18, 0x1012, 0, 3, "Defog"),
    ISP_BOARD_ROW(19, 0x1013, 0, 15, "NR2D"),
    ISP_BOARD_ROW(20, 0x1014, 0, 15, "NR3D"),
    ISP_BOARD_ROW(N::IdDayNightMode, N::RegDayNightMode, 0, 2, "DayNightMode"),
    ISP_BOARD_ROW(22, 0x1016, 0, 30, "DayNightDelay"),
    ISP_BOARD_ROW(23, 0x1017, 0, 1, "IrCut"),
    ISP_BOARD_ROW(24, 0x1018, 0, 2, "AntiFlicker"),
    ISP_BOARD_ROW(25, 0x1019, 0, 1, "SlowShutter"),
    ISP_BOARD_ROW(26, 0x101A, 0, 255, "AETarget"),
};

const IspBoardTable kTable = {"ITNSenseController",
                              kRegisters,
                              sizeof(kRegisters) / sizeof(kRegisters[0]),
                              kParameters,
                              sizeof(kParameters) / sizeof(kParameters[0]),
                              IspBoardTable::ITNFrames};

}  // namespace

const IspBoardTable& ITNSenseController::boardTable() { return kTable; }

ITNSenseController::ITNSenseController() : IspBoardSenseController(SensorType, kTable) {
    registerIds(kTable.controllerName);
}

ITNSenseController::~ITNSenseController() {}

// ---- the frame exchange ----

void ITNSenseController::computeCheckSum(unsigned char* frame, int length) {
    if (frame == nullptr || length < 1) return;
    frame[length - 1] = ITNFrame::checksum(frame, length);
}

int ITNSenseController::sendCommand(unsigned char* frame, int length, unsigned char* answer, int capacity) {
    KSMutexGuard guard(m_FrameMutex);
    return exchange(frame, length, answer, capacity);
}

int ITNSenseController::exchange(unsigned char* frame, int length, unsigned char* answer, int capacity) {
    const int sent = writeCommand(frame, length, &computeCheckSum);
    if (sent != 0) return sent;
    if (answer == nullptr || capacity < AnswerLength) return AnswerTooLong;
    // The answer comes in three pieces, each checked before the next is read,
    // so that a refusal or a stray answer is known at its first bytes.
    static const int kStart[] = {0, 2, 4};
    static const int kCount[] = {2, 2, 3};
    for (int stage = 0; stage < 3; ++stage) {
        const int nRecvCount = kCount[stage];
        unsigned char* piece = answer + kStart[stage];
        const int nRecvLength = m_pUART->read(m_nUARTPort, reinterpret_cast<char*>(piece), nRecvCount, ReadTimeout);
        if (nRecvLength != nRecvCount) {
            KSLogger::consolePrintf("%d recv data failed,nRecvLength=%d,nRecvCount=%d\n", stage + 2, nRecvLength,
                                    nRecvCount);
            return ReadFailed;
        }
        bool ok = true;
        switch (stage) {
        case 0: ok = piece[0] == ITNFrame::AnswerStart && piece[1] == frame[1]; break;
        case 1: ok = length >= 4 && piece[0] == frame[2] && piece[1] == frame[3]; break;
        default: ok = piece[2] == ITNFrame::checksum(answer, AnswerLength); break;
        }
        if (!ok) {
            KSLogger::consolePrintf("%d recv checksum error\n", stage + 2);
            return ChecksumMismatch;
        }
    }
    return AnswerLength;
}

int ITNSenseController::transact(uint8_t op, uint16_t address, int value, int& answerValue) {
    unsigned char frame[ITNFrame::Length];
    unsigned char answer[ITNFrame::Length];
    int nRet = 0;
    for (int attempt = 0; attempt < 2; ++attempt) {
        ITNFrame::build(ITNFrame::Start, op, address, value, frame);
        nRet = exchange(frame, ITNFrame::Length, answer, ITNFrame::Length);
        // A write's answer carries the register after it: the value written, or
        // it is an answer to an earlier frame.
        if (nRet == AnswerLength && (op != ITNFrame::Write || ITNFrame::value(answer) == (value & 0xFFFF))) {
            answerValue = ITNFrame::value(answer);
            return 1;
        }
        drain();
    }
    KSLogger::consolePrintf("ITN %s 0x%04x failed,nRet = %d\n", op == ITNFrame::Write ? "write" : "read", address,
                            nRet);
    return 0;
}

int ITNSenseController::writeBoardRegister(const IspBoardTable::Register& reg, int value) {
    int stored = -1;
    return transact(ITNFrame::Write, reg.address, value, stored);
}

int ITNSenseController::readBoardRegister(const IspBoardTable::Register& reg, int& value) {
    return transact(ITNFrame::Read, reg.address, 0, value);
}

// ---- operations ----

int ITNSenseController::getMirrorValue(int& value) { return getParameterFromSensor(IdMirror, value); }

int ITNSenseController::getDNStatusFromSensor(int& status) {
    const int pin = m_nGpioPin.load();
    if (pin < 0) {
        ErrorPrintf("get GPIODNLevel from detail failed");
        return 0;
    }
    int level = -1;
    if (!readGpio(m_nGpioGroup.load(), pin, level)) {
        ErrorPrintf("GPIO(%d) get DNLevel failed value = %d", pin, level);
        return 0;
    }
    status = level == m_nGpioDayLevel.load() ? 1 : 0;
    return 1;
}

int ITNSenseController::turnPictureToDay() { return writeRegister(RegNightPicture, 0); }
int ITNSenseController::turnPictureToNight() { return writeRegister(RegNightPicture, 1); }

void ITNSenseController::readDayNightGpio(const ModuleConfigure& cfg) {
    ModuleParameterParser objDetail;
    std::string value;
    int v[3] = {0, 0, 0};
    if (!objDetail.parse(cfg.getDetail()) || !objDetail.getValue("GPIODNLevel", value) ||
        std::sscanf(value.c_str(), "%d,%d,%d", &v[0], &v[1], &v[2]) != 3) {
        KSLogger::consolePuts("get GPIODNLevel from detail failed");
        m_nGpioPin = -1;
        return;
    }
    KSLogger::consolePrintf("GPIO param is (%d,%d,%d)\n", v[0], v[1], v[2]);
    m_nGpioGroup = v[0];
    m_nGpioDayLevel = v[2];
    m_nGpioPin = v[1];
}

int ITNSenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("____ITNSenseController::init,ModuleConfigure is(%s,%s)\n", cfg.getDetail().c_str(),
                            cfg.getParameters().c_str());
    SerialLineSettings line;
    line.key = "RS232";
    if (!openBoardPort(cfg, line, SerialModuleTexts)) return 0;
    readDayNightGpio(cfg);
    int value = 0;
    if (!readRegister(RegMirror, value)) KSLogger::consolePuts("Init getMirror Value failed");
    if (!readRegister(RegDayNightMode, value)) KSLogger::consolePuts("Init Day Night Failed");
    return 1;
}
