#include "drivers/ispboard/SeawolfSenseController.h"

#include "app/VideoResolution.h"
#include "drivers/serial/SerialLineSettings.h"
#include "platform/GlobalEnv.h"
#include "platform/KSLogger.h"

namespace {

typedef SeawolfSenseController W;

// The register of id n is command byte n.
const IspBoardTable::Register kRegisters[] = {
    {0x01, 8, "Brightness", 50, 0, 100, true},
    {0x02, 8, "Contrast", 50, 0, 100, true},
    {0x03, 8, "Saturation", 50, 0, 100, true},
    {0x04, 8, "Sharpness", 8, 0, 15, true},
    {0x05, 8, "Hue", 50, 0, 100, true},
    {W::RegMirror, 8, "Orientation", 0x40, 0, 255, true},
    {0x07, 8, "Gamma", 3, 0, 7, true},
    {0x08, 8, "ShutterMode", 0, 0, 1, true},
    {0x09, 16, "Shutter", 40, 1, 10000, true},
    {0x0A, 8, "GainMode", 0, 0, 1, true},
    {0x0B, 8, "Gain", 0, 0, 100, true},
    {0x0C, 8, "WhiteBalance", 0, 0, 4, true},
    {0x0D, 8, "Backlight", 0, 0, 1, true},
    {0x0E, 8, "WideDynamic", 8, 0, 15, true},
    {W::RegLensType, 8, "LensType", 2, 0, 3, true},
    {0x11, 8, "FluorescentCompensation", 0, 0, 1, true},
    {0x12, 8, "ExposureArea", 0, 0, 4, true},
    {0x13, 8, "ExposurePreference", 0, 0, 2, true},
    {0x14, 8, "GainBoost", 0, 0, 1, true},
    {0x16, 8, "OnePushWhiteBalance", 0, 0, 1, true},
    {0x17, 8, "RestoreDefaults", 0, 0, 1, true},
    {0x18, 8, "SaveSettings", 0, 0, 1, true},
    {0x19, 8, "IrisOpen", 0, 0, 1, true},
    {0x1A, 8, "IrisClose", 0, 0, 1, true},
    {0x1B, 8, "LensCalibration", 0, 0, 1, true},
    {0x1C, 8, "Restart", 0, 0, 1, true},
    {W::RegResolution, 8, "Resolution", 0, 0, 2, true},
    {0x1E, 8, "NoiseReduction", 4, 0, 15, true},
    {0x39, 8, "DayNightMode", 0, 0, 2, true},
    {0x3A, 8, "DayNightDelay", 5, 0, 30, true},
    {0x3B, 8, "IrCut", 1, 0, 1, true},
    {0x3C, 8, "ColorToBw", 40, 0, 255, true},
    {0x3D, 8, "BwToColor", 80, 0, 255, true},
};

const IspBoardTable::Parameter kParameters[] = {
    ISP_BOARD_ROW(1, 0x01, 0, 100, "Brightness"),
    ISP_BOARD_ROW(2, 0x02, 0, 100, "Contrast"),
    ISP_BOARD_ROW(3, 0x03, 0, 100, "Saturation"),
    ISP_BOARD_ROW(4, 0x04, 0, 15, "Sharpness"),
    ISP_BOARD_ROW(5, 0x05, 0, 100, "Hue"),
    {W::IdMirror, IspBoardTable::Field, W::RegMirror, 0x03, 0, 3, "p_nMirror(%d) is out of range",
     "setMirror error,value is %d"},
    {7, IspBoardTable::Whole, 0x07, 0, 0, 7, "setGama(%d) is out of range\n", "setGama error,value is %d"},
    ISP_BOARD_ROW(8, 0x08, 0, 1, "ShutterMode"),
    ISP_BOARD_ROW(9, 0x09, 1, 10000, "Shutter"),
    ISP_BOARD_ROW(10, 0x0A, 0, 1, "GainMode"),
    ISP_BOARD_ROW(11, 0x0B, 0, 100, "Gain"),
    ISP_BOARD_ROW(12, 0x0C, 0, 4, "WhiteBalanceMode"),
    ISP_BOARD_ROW(13, 0x0D, 0, 1, "Backlight"),
    ISP_BOARD_ROW(14, 0x0E, 0, 15, "WideDynamic"),
    ISP_BOARD_ROW(W::IdLensType, W::RegLensType, 0, 3, "LensType"),
    ISP_BOARD_ROW(17, 0x11, 0, 1, "FluorescentCompensation"),
    ISP_BOARD_ROW(18, 0x12, 0, 4, "ExposureArea"),
    ISP_BOARD_ROW(19, 0x13, 0, 2, "ExposurePreference"),
    ISP_BOARD_ROW(20, 0x14, 0, 1, "GainBoost"),
    ISP_BOARD_ROW(22, 0x16, 1, 1, "OnePushWhiteBalance"),
    ISP_BOARD_ROW(23, 0x17, 1, 1, "RestoreDefaults"),
    ISP_BOARD_ROW(24, 0x18, 1, 1, "SaveSettings"),
    ISP_BOARD_ROW(25, 0x19, 1, 1, "IrisOpen"),
    ISP_BOARD_ROW(26, 0x1A, 1, 1, "IrisClose"),
    ISP_BOARD_ROW(27, 0x1B, 1, 1, "LensCalibration"),
    ISP_BOARD_ROW(28, 0x1C, 1, 1, "Restart"),
    ISP_BOARD_ROW(W::IdResolution, W::RegResolution, 0, 2, "Resolution"),
    ISP_BOARD_ROW(30, 0x1E, 0, 15, "NoiseReduction"),
    ISP_BOARD_ROW(57, 0x39, 0, 2, "DayNightMode"),
    ISP_BOARD_ROW(58, 0x3A, 0, 30, "DayNightDelay"),
    ISP_BOARD_ROW(59, 0x3B, 0, 1, "IrCut"),
    ISP_BOARD_ROW(60, 0x3C, 0, 255, "ColorToBW"),
    ISP_BOARD_ROW(61, 0x3D, 0, 255, "BWToColor"),
};

const IspBoardTable kTable = {"SeawolfSenseController",
                              kRegisters,
                              sizeof(kRegisters) / sizeof(kRegisters[0]),
                              kParameters,
                              sizeof(kParameters) / sizeof(kParameters[0]),
                              IspBoardTable::SeawolfFrames};

}  // namespace

const IspBoardTable& SeawolfSenseController::boardTable() { return kTable; }

SeawolfSenseController::SeawolfSenseController() : IspBoardSenseController(SensorType, kTable) {
    registerIds(kTable.controllerName);
}

SeawolfSenseController::~SeawolfSenseController() {}

// ---- the frame exchange ----

void SeawolfSenseController::computeCheckSum(unsigned char* frame, int length) {
    if (frame == nullptr || length < 1) return;
    frame[length - 1] = SeawolfFrame::checksum(frame, length);
}

int SeawolfSenseController::sendCommand(unsigned char* frame, int length, unsigned char* answer, int capacity) {
    KSMutexGuard guard(m_FrameMutex);
    return exchange(frame, length, answer, capacity);
}

int SeawolfSenseController::exchange(unsigned char* frame, int length, unsigned char* answer, int capacity) {
    const int sent = writeCommand(frame, length, &computeCheckSum);
    if (sent != 0) return sent;
    if (answer == nullptr || capacity < SeawolfFrame::HeadLength + 1) return AnswerTooLong;
    int nRecvLength =
        m_pUART->read(m_nUARTPort, reinterpret_cast<char*>(answer), SeawolfFrame::HeadLength, ReadTimeout);
    if (nRecvLength != SeawolfFrame::HeadLength || answer[0] != SeawolfFrame::Start) {
        KSLogger::consolePrintf("recv head failed,nRecvLength=%d,head=0x%02x\n", nRecvLength,
                                nRecvLength > 0 ? answer[0] : 0);
        return ReadFailed;
    }
    const int total = SeawolfFrame::HeadLength + answer[2] + 1;
    if (total > capacity) {
        // The rest of the answer stays on the line: the caller's drain takes it.
        if (GlobalEnv::getInstance()->getPrintFlag())
            KSLogger::consolePrintf("recv data length failed,dataLength=%d\n", answer[2]);
        return AnswerTooLong;
    }
    const int nRecvCount = total - SeawolfFrame::HeadLength;
    nRecvLength =
        m_pUART->read(m_nUARTPort, reinterpret_cast<char*>(answer + SeawolfFrame::HeadLength), nRecvCount, ReadTimeout);
    if (nRecvLength != nRecvCount) {
        KSLogger::consolePrintf("recv data failed,nRecvLength=%d,nRecvCount=%d\n", nRecvLength, nRecvCount);
        return ReadFailed;
    }
    if (answer[total - 1] != SeawolfFrame::checksum(answer, total)) {
        KSLogger::consolePuts("the checksum get from sensor is error!");
        return ChecksumMismatch;
    }
    return total;
}

int SeawolfSenseController::transact(uint8_t command, const IspBoardTable::Register& reg, int value,
                                     uint8_t answerCommand, int expectValue, int& answerValue) {
    unsigned char frame[SeawolfFrame::MaxLength];
    unsigned char answer[AnswerCapacity];
    const int dataLength = reg.width / 8;
    for (int attempt = 0; attempt < 2; ++attempt) {
        const int n = SeawolfFrame::build(command, command & SeawolfFrame::ReadFlag ? 0 : dataLength, value, frame);
        const int nRet = exchange(frame, n, answer, AnswerCapacity);
        if (nRet > 0 && answer[1] == answerCommand && answer[2] == dataLength &&
            (expectValue < 0 || SeawolfFrame::value(answer) == expectValue)) {
            answerValue = SeawolfFrame::value(answer);
            return 1;
        }
        KSLogger::consolePuts("command , data length or checksum error");
        drain();
    }
    return 0;
}

int SeawolfSenseController::writeBoardRegister(const IspBoardTable::Register& reg, int value) {
    const int written = value & (reg.width == 16 ? 0xFFFF : 0xFF);
    int stored = -1;
    const uint8_t command = static_cast<uint8_t>(reg.address);
    return transact(command, reg, written, command, written, stored);
}

int SeawolfSenseController::readBoardRegister(const IspBoardTable::Register& reg, int& value) {
    const uint8_t command = static_cast<uint8_t>(reg.address | SeawolfFrame::ReadFlag);
    return transact(command, reg, 0, command, -1, value);
}

// ---- operations ----

int SeawolfSenseController::getMirrorValue(int& value) { return getParameterFromSensor(IdMirror, value); }

int SeawolfSenseController::setSensorVideoSystem(int, const VideoResolution& res) {
    const int height = res.getVideoHeight();
    const int resolution = height >= 1080 ? Resolution1080 : (height >= 720 ? Resolution720 : ResolutionD1);
    if (writeRegister(RegResolution, resolution)) return 1;
    KSLogger::consolePrintf("setResolution error,value is %d\n", resolution);
    return 0;
}

int SeawolfSenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("____SeawolfSenseController::init,ModuleConfigure is(%s,%s)\n", cfg.getDetail().c_str(),
                            cfg.getParameters().c_str());
    SerialLineSettings line;
    if (!openBoardPort(cfg, line, SerialModuleTexts)) return 0;
    int value = 0;
    if (!readRegister(RegMirror, value)) KSLogger::consolePuts("Init getMirror Value failed");
    if (!readRegister(RegLensType, value)) KSLogger::consolePuts("Init getLensType Value failed");
    return 1;
}
