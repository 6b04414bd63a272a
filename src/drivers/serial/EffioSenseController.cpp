#include "drivers/serial/EffioSenseController.h"

#include <cstring>

#include "app/ModuleConfigure.h"
#include "platform/KSLogger.h"

namespace {

// The processor's store as this library defines it (the processor's own
// category list is not public; every location is this library's own, own = true):
// category 1 picture, 2 orientation, 3 exposure and AGC, 4 white balance,
// 5 ATR and noise reduction, 6 day/night transitions, 7 HDR; category 0 holds
// the processor's version (read only).
// id, name, range name, first and last value, category, byte, start bit, bits, own, power-on value.
const EffioParameter kTable[] = {
    {1, "Brightness", "p_nBrightness", 0, 255, 1, 0, 0, 8, true, 128},
    {2, "Contrast", "p_nContrast", 0, 255, 1, 1, 0, 8, true, 128},
    {3, "Saturation", "p_nSaturation", 0, 255, 1, 2, 0, 8, true, 128},
    {4, "Sharpness", "p_nSharpness", 0, 15, 1, 3, 0, 4, true, 8},
    {5, "Hue", "p_nHue", 0, 255, 1, 4, 0, 8, true, 128},
    {6, "Mirror", "p_nMirror", 0, 3, 2, 0, 0, 2, true, 0},
    {7, "AGC", "p_nAGC", 0, 15, 3, 0, 0, 4, true, 8},
    {8, "AGCMode", "p_nAGCMode", 0, 1, 3, 0, 7, 1, true, 1},
    {9, "Shutter", "p_nShutter", 0, 15, 3, 1, 0, 8, true, 0},
    {10, "BackLight", "p_nBackLight", 0, 1, 3, 2, 0, 1, true, 0},
    {12, "WBMode", "p_nWBMode", 0, 4, 4, 0, 0, 3, true, 0},
    {13, "RGain", "p_nRGain", 0, 255, 4, 1, 0, 8, true, 128},
    {14, "BGain", "p_nBGain", 0, 255, 4, 2, 0, 8, true, 128},
    {15, "ATR", "p_nATR", 0, 1, 5, 0, 0, 1, true, 0},
    {16, "ATRLevel", "p_nATRLevel", 0, 3, 5, 0, 4, 2, true, 1},
    {17, "DNR", "p_nDNR", 0, 3, 5, 1, 0, 2, true, 1},
    {18, "DNMode", "p_nDNMode", 0, 2, 6, 0, 0, 2, true, 0},
    {19, "DayToNightLevel", "p_nDayToNightLevel", 0, 255, 6, 1, 0, 8, true, 32},
    {21, "NightToDayLevel", "p_nNightToDayLevel", 0, 255, 6, 2, 0, 8, true, 96},
    {57, "HDR", "p_nHDR", 0, 1, 7, 0, 0, 1, true, 0},
    {58, "HDRLevel", "p_nHDRLevel", 0, 7, 7, 0, 1, 3, true, 3},
    {59, "DayToNightDelay", "p_nDayToNightDelay", 0, 60, 6, 3, 0, 8, true, 5},
    {60, "NightToDayDelay", "p_nNightToDayDelay", 0, 60, 6, 4, 0, 8, true, 5},
    {61, "AGCLimit", "p_nAGCLimit", 0, 1023, 3, 3, 0, 16, true, 512},
};
const size_t kTableSize = sizeof(kTable) / sizeof(kTable[0]);

const int kMirrorId = 6;
const int kHDRId = 57;

}  // namespace

EffioSenseController::EffioSenseController() : SerialSenseController(SensorType, SearchForm) {
    registerIds("EffioSenseController");
}

EffioSenseController::~EffioSenseController() { stopWorker(); }

const EffioParameter* EffioSenseController::parameterTable(size_t& count) {
    count = kTableSize;
    return kTable;
}

const EffioParameter* EffioSenseController::findRow(int id) const { return EffioParameter::find(kTable, kTableSize, id); }

// ---- frames ----

unsigned char EffioSenseController::checksum(const unsigned char* bytes, int length) {
    unsigned int sum = 0;
    for (int i = 0; bytes != nullptr && i < length; ++i) sum += bytes[i];
    return static_cast<unsigned char>(sum & 0xFF);
}

int EffioSenseController::assembleData(unsigned char* frame, int capacity, int command, int category, int byteNo,
                                       const unsigned char* data, int count) {
    const int length = 6 + (command == WriteCommand ? count : 0);
    if (frame == nullptr || count < 0 || count > MaxData || length > capacity) return 0;
    if (command == WriteCommand && count > 0 && data == nullptr) return 0;
    frame[0] = StartByte;
    frame[1] = static_cast<unsigned char>(command);
    frame[2] = static_cast<unsigned char>(category);
    frame[3] = static_cast<unsigned char>(byteNo);
    frame[4] = static_cast<unsigned char>(count);
    if (command == WriteCommand && count > 0) std::memcpy(frame + 5, data, static_cast<size_t>(count));
    frame[length - 1] = checksum(frame, length - 1);
    return length;
}

void EffioSenseController::splitData(int value, int count, unsigned char* out) {
    if (out == nullptr) return;
    const unsigned int v = static_cast<unsigned int>(value);
    for (int i = 0; i < count; ++i) {
        const int shift = 8 * (count - 1 - i);
        out[i] = shift < 32 ? static_cast<unsigned char>((v >> shift) & 0xFF) : 0;
    }
}

unsigned char EffioSenseController::modifyAppointedBits(unsigned char original, int value, int startBit, int bitCount) {
    if (startBit < 0 || startBit > 7 || bitCount < 1) return original;
    if (startBit + bitCount > 8) bitCount = 8 - startBit;
    const unsigned int mask = ((1u << bitCount) - 1u) << startBit;
    return static_cast<unsigned char>((original & ~mask) | ((static_cast<unsigned int>(value) << startBit) & mask));
}

const char* EffioSenseController::statusText(int status) {
    switch (status) {
    case CommunicationError: return "Communication error";
    case CategoryError: return "Category number error";
    case ByteError: return "Byte number error";
    default: return "Other error";
    }
}

int EffioSenseController::checkReadAnswer(const unsigned char* answer, int length, int count, unsigned char requestSum,
                                          unsigned char* data) {
    if (answer == nullptr || count < 1 || count > MaxData || length != count + 3 || answer[0] != StartByte ||
        answer[1] != ReadCommand) {
        KSLogger::consolePuts("getParmaters recv len error");
        return 0;
    }
    const unsigned char expect = static_cast<unsigned char>((checksum(answer, length - 1) + requestSum) & 0xFF);
    if (expect != answer[length - 1]) {
        KSLogger::consolePrintf("check sum error expect=%d , but actual = %d\n", expect, answer[length - 1]);
        return -1;
    }
    if (data != nullptr) std::memcpy(data, answer + 2, static_cast<size_t>(count));
    return 1;
}

// ---- transactions ----

int EffioSenseController::setParameters(int category, int byteNo, const unsigned char* data, int count) {
    unsigned char frame[FrameCapacity];
    const int length = assembleData(frame, sizeof(frame), WriteCommand, category, byteNo, data, count);
    if (length == 0) return 0;
    return exchange("setParameters", frame, length, StatusLength, ReadTimeout,
                    [&](const unsigned char* reply, int n, int) {
                        if (n != StatusLength) {
                            KSLogger::consolePrintf("setParameters : recv len failed expectlen=3,actuallen=%d\n", n);
                            return ReplyRetry;
                        }
                        // A status that is no status frame is a damaged answer: tried again.
                        const bool frameOk =
                            reply[0] == StartByte && ((checksum(reply, 2) + frame[length - 1]) & 0xFF) == reply[2];
                        const int status = frameOk ? static_cast<int>(reply[1]) : static_cast<int>(CommunicationError);
                        if (status == StatusDone) return ReplyAccepted;
                        KSLogger::consolePrintf("setParameters::send command failed (%s)\n", statusText(status));
                        return status == CommunicationError ? ReplyRetry : ReplyFinal;
                    });
}

int EffioSenseController::getParameters(int category, int byteNo, int count, unsigned char* data) {
    unsigned char frame[FrameCapacity];
    const int length = assembleData(frame, sizeof(frame), ReadCommand, category, byteNo, nullptr, count);
    if (length == 0 || count < 1 || data == nullptr) return 0;
    return exchange("getParameters", frame, length, count + 3, ReadTimeout,
                    [&](const unsigned char* reply, int n, int) {
                        return checkReadAnswer(reply, n, count, frame[length - 1], data) == 1 ? ReplyAccepted
                                                                                              : ReplyRetry;
                    });
}

// ---- start-up ----

int EffioSenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("__EffioSenseController::init,ModuleConfigure is(%s,%s)\n", cfg.getDetail().c_str(),
                            cfg.getParameters().c_str());
    if (!openSerialPort(cfg)) return 0;
    unsigned char version[VersionLength] = {0, 0};
    if (!getParameters(VersionCategory, 0, VersionLength, version)) {
        KSLogger::consolePuts("Effio read version failed");
        return 0;
    }
    KSLogger::consolePrintf("Effio version %d.%d\n", version[0], version[1]);
    return 1;
}

int EffioSenseController::setSensorVideoSystem(int, const VideoResolution&) {
    // The processor keeps its own video format.
    return 1;
}

// ---- parameter access ----

int EffioSenseController::writeRow(const EffioParameter& row, int value) {
    unsigned char bytes[2] = {0, 0};
    const int n = row.byteCount();
    if (row.isBitField()) {
        // The other bits of the byte belong to other parameters: read, change, write back.
        if (!getParameters(row.category, row.byteNo, 1, bytes)) return 0;
        bytes[0] = modifyAppointedBits(bytes[0], value, row.startBit, row.bitCount);
    } else {
        splitData(value, n, bytes);
    }
    return setParameters(row.category, row.byteNo, bytes, n);
}

int EffioSenseController::readRow(const EffioParameter& row, int& value) {
    unsigned char bytes[2] = {0, 0};
    const int n = row.byteCount();
    if (!getParameters(row.category, row.byteNo, n, bytes)) return 0;
    if (row.isBitField())
        value = (bytes[0] >> row.startBit) & ((1 << row.bitCount) - 1);
    else
        value = n == 2 ? (bytes[0] << 8 | bytes[1]) : bytes[0];
    return 1;
}

int EffioSenseController::setParameterToSensor(int id, int value) {
    Debug_Printf("Effio set id(%d) value(%d)", id, value);
    int base = ISensorController::setParameterToSensor(id, value);
    if (base == 1) return 1;
    const EffioParameter* row = findRow(id);
    if (row == nullptr) return base;
    if (!statusReady()) return 0;
    if (!row->inRange(value)) {
        KSLogger::consolePrintf("%s(%d) is out of range\n", row->rangeName, value);
        return 0;
    }
    if (!writeRow(*row, value)) {
        KSLogger::consolePrintf("set%s error,value is %d\n", row->name, value);
        return 0;
    }
    return 1;
}

int EffioSenseController::getParameterFromSensor(int id, int& value) {
    if (id >= 500 && id <= 504) return ISensorController::getParameterFromSensor(id, value);
    const EffioParameter* row = findRow(id);
    if (row == nullptr) return 0;
    if (!statusReady()) return 0;
    int v = 0;
    if (!readRow(*row, v)) {
        KSLogger::consolePrintf("get%s error,value is %d\n", row->name, value);
        return 0;
    }
    value = v;
    return 1;
}

int EffioSenseController::getMirrorValue(int& value) { return getParameterFromSensor(kMirrorId, value); }

int EffioSenseController::updateHDRMode(int mode) { return setParameterToSensor(kHDRId, mode != 0 ? 1 : 0); }
