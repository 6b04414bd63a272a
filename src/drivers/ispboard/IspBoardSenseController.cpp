#include "drivers/ispboard/IspBoardSenseController.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "drivers/ispboard/IspBoardFrame.h"
#include "drivers/serial/SerialLineSettings.h"
#include "drivers/serial/SerialTool.h"
#include "platform/GlobalEnv.h"
#include "platform/KSLogger.h"
#include "platform/ModuleParameterParser.h"

namespace {
bool printFlag() { return GlobalEnv::getInstance()->getPrintFlag(); }

// Holds a KSMutex when it was free at construction.
class TryGuard {
public:
    explicit TryGuard(KSMutex& m) : m_mutex(m), m_bLocked(m.TryLock()) {}
    ~TryGuard() {
        if (m_bLocked) m_mutex.Unlock();
    }
    bool locked() const { return m_bLocked; }
    TryGuard(const TryGuard&) = delete;
    TryGuard& operator=(const TryGuard&) = delete;

private:
    KSMutex& m_mutex;
    bool m_bLocked;
};

int lowestBit(int mask) {
    int shift = 0;
    while (shift < 16 && !(mask & (1 << shift))) ++shift;
    return shift;
}
}  // namespace

IspBoardSenseController::IspBoardSenseController(int sensorType, const IspBoardTable& table)
    : ISensorController(sensorType), m_table(table) {}

// ---- the frame exchange ----

void IspBoardSenseController::computeCheckSum(unsigned char* frame, int length) {
    if (frame == nullptr || length < 1) return;
    frame[length - 1] = IspBoardFrame::sum(frame, length - 1);
}

int IspBoardSenseController::writeCommand(unsigned char* frame, int length,
                                          void (*checkSum)(unsigned char*, int)) {
    if (frame == nullptr || length < 1 || length > MaxFrameLength) {
        // Nothing that could be sent: counts as a write that fell short.
        KSLogger::consolePrintf("p_pszSendCommandLen = %d,nSendLength=%d\n", length, 0);
        return ShortWrite;
    }
    checkSum(frame, length);
    const int nSendLength = m_pUART->write(m_nUARTPort, reinterpret_cast<const char*>(frame), length);
    if (nSendLength < length) {
        KSLogger::consolePrintf("p_pszSendCommandLen = %d,nSendLength=%d\n", length, nSendLength);
        return ShortWrite;
    }
    return 0;
}

int IspBoardSenseController::exchange(unsigned char* frame, int length, unsigned char* answer, int capacity) {
    const int sent = writeCommand(frame, length, &computeCheckSum);
    if (sent != 0) return sent;
    char count = 0;
    int nRecvLength = m_pUART->read(m_nUARTPort, &count, 1, ReadTimeout);
    if (nRecvLength != 1) {
        KSLogger::consolePrintf("recv dataCount failed,nRecvLength=%d\n", nRecvLength);
        return ReadFailed;
    }
    const int dataCount = static_cast<unsigned char>(count);
    if (answer == nullptr || dataCount > capacity) {
        // The rest of the answer stays on the line: the caller's drain takes it.
        if (printFlag())
            KSLogger::consolePrintf("recv dataCount failed,dataCount=%d,nResult=0x%02x\n", dataCount, dataCount);
        return AnswerTooLong;
    }
    if (dataCount == 0) {
        // An answer cannot be shorter than its own count byte.
        KSLogger::consolePrintf("recv data failed,nRecvLength=%d,nRecvCount=%d\n", 0, -1);
        return ReadFailed;
    }
    const int nRecvCount = dataCount - 1;
    if (nRecvCount > 0) {
        nRecvLength = m_pUART->read(m_nUARTPort, reinterpret_cast<char*>(answer + 1), nRecvCount, ReadTimeout);
        if (nRecvLength != nRecvCount) {
            KSLogger::consolePrintf("recv data failed,nRecvLength=%d,nRecvCount=%d\n", nRecvLength, nRecvCount);
            return ReadFailed;
        }
    }
    answer[0] = static_cast<unsigned char>(dataCount);
    const unsigned char actual = answer[dataCount - 1];
    computeCheckSum(answer, dataCount);
    const unsigned char expected = answer[dataCount - 1];
    answer[dataCount - 1] = actual;
    if (expected != actual) {
        KSLogger::consolePrintf("checkSum error,nExpectedCheckSum = 0x%02x,actualCheckSum=0x%02x\n", expected, actual);
        return ChecksumMismatch;
    }
    return dataCount;
}

int IspBoardSenseController::exchangeTwice(unsigned char* frame, int length, unsigned char* answer, int capacity) {
    int nCount = exchange(frame, length, answer, capacity);
    if (nCount > 0) return nCount;
    nCount = exchange(frame, length, answer, capacity);
    if (nCount > 0) return nCount;
    if (printFlag()) KSLogger::consolePrintf("second sendCommand failed,nCount=%d\n", nCount);
    return nCount;
}

int IspBoardSenseController::baseSendCommand(unsigned char* frame, int length, unsigned char* answer, int capacity) {
    KSMutexGuard guard(m_FrameMutex);
    return exchange(frame, length, answer, capacity);
}

int IspBoardSenseController::sendCommand(unsigned char* frame, int length, unsigned char* answer, int capacity) {
    KSMutexGuard guard(m_FrameMutex);
    return exchangeTwice(frame, length, answer, capacity);
}

void IspBoardSenseController::drain() {
    for (int i = 0; i < MaxDrainBytes; ++i) {
        char byte = 0;
        if (m_pUART->read(m_nUARTPort, &byte, 1, ReadTimeout) < 1) return;
    }
}

void IspBoardSenseController::recvLeftData() {
    KSMutexGuard guard(m_FrameMutex);
    drain();
}

int IspBoardSenseController::exchangeCopy(const unsigned char* frame, int length, unsigned char* command,
                                          unsigned char (&answer)[AnswerCapacity]) {
    // The caller's frame stays as it is: the checksum goes into a copy.
    const bool sendable = frame != nullptr && length > 0 && length <= MaxFrameLength;
    if (sendable) std::memcpy(command, frame, static_cast<size_t>(length));
    std::memset(answer, 0, sizeof(answer));
    return exchangeTwice(sendable ? command : nullptr, length < 0 ? 0 : length, answer, AnswerCapacity);
}

int IspBoardSenseController::writeFrame(const unsigned char* frame, int length) {
    unsigned char command[MaxFrameLength];
    unsigned char answer[AnswerCapacity];
    const int nRet = exchangeCopy(frame, length, command, answer);
    const int n = length < 0 ? 0 : (length > MaxFrameLength ? MaxFrameLength : length);
    if (nRet == IspBoardFrame::AckLength && IspBoardFrame::echoes(command, n, answer, nRet)) return 1;
    KSLogger::consolePrintf("setParameterValue error,nRet = %d,\n\tsendCommand is:", nRet);
    SerialTool::printArray(frame, n);
    KSLogger::consolePrintf("\trecvCommand:");
    SerialTool::printArray(answer, AnswerCapacity);
    drain();
    return 0;
}

int IspBoardSenseController::readFrame(const unsigned char* frame, int length, int& value) {
    unsigned char command[MaxFrameLength];
    unsigned char answer[AnswerCapacity];
    const int nRet = exchangeCopy(frame, length, command, answer);
    const int n = length < 0 ? 0 : (length > MaxFrameLength ? MaxFrameLength : length);
    if ((nRet == IspBoardFrame::Answer8Length || nRet == IspBoardFrame::Answer16Length) &&
        IspBoardFrame::echoes(command, n, answer, nRet)) {
        value = nRet == IspBoardFrame::Answer8Length ? answer[4] : assembleData(answer[5], answer[4]);
        return 1;
    }
    KSLogger::consolePrintf("getParameterValue error,nRet = %d,command is:", nRet);
    SerialTool::printArray(frame, n);
    drain();
    return 0;
}

int IspBoardSenseController::setParameterValue(const char* frame, int length) {
    KSMutexGuard guard(m_FrameMutex);
    return writeFrame(reinterpret_cast<const unsigned char*>(frame), length);
}

int IspBoardSenseController::getParameterValue(const char* frame, int length, int& value) {
    KSMutexGuard guard(m_FrameMutex);
    return readFrame(reinterpret_cast<const unsigned char*>(frame), length, value);
}

// ---- register bytes ----

int IspBoardSenseController::assembleData(unsigned char high, unsigned char low) { return (high << 8) | low; }

unsigned char IspBoardSenseController::modifyAppointedBit(unsigned char byte, int bit, int value) {
    if (bit < 0 || bit > 7) return byte;
    const unsigned char m = static_cast<unsigned char>(1u << bit);
    return static_cast<unsigned char>(value ? (byte | m) : (byte & ~m));
}

unsigned char IspBoardSenseController::modifyHighFourBits(unsigned char byte, int value) {
    return static_cast<unsigned char>((byte & 0x0F) | ((value & 0x0F) << 4));
}

unsigned char IspBoardSenseController::modifyLowFourBits(unsigned char byte, int value) {
    return static_cast<unsigned char>((byte & 0xF0) | (value & 0x0F));
}

// ---- registers ----

int IspBoardSenseController::writeBoardRegister(const IspBoardTable::Register& reg, int value) {
    unsigned char frame[IspBoardFrame::MaxCommandLength];
    const int n = IspBoardFrame::write(reg.address, reg.width, value, frame);
    return writeFrame(frame, n);
}

int IspBoardSenseController::readBoardRegister(const IspBoardTable::Register& reg, int& value) {
    unsigned char frame[IspBoardFrame::MaxCommandLength];
    const int n = IspBoardFrame::read(reg.address, reg.width, frame);
    return readFrame(frame, n, value);
}

int IspBoardSenseController::writeRegisterLocked(uint16_t address, int value) {
    const IspBoardTable::Register* reg = m_table.findRegister(address);
    if (reg == nullptr) {
        KSLogger::consolePrintf("unknown register 0x%04x\n", address);
        return 0;
    }
    if (!writeBoardRegister(*reg, value)) return 0;
    m_registerCache[address] = reg->width == 16 ? (value & 0xFFFF) : (value & 0xFF);
    return 1;
}

int IspBoardSenseController::readRegisterLocked(uint16_t address, int& value) {
    const IspBoardTable::Register* reg = m_table.findRegister(address);
    if (reg == nullptr) {
        KSLogger::consolePrintf("unknown register 0x%04x\n", address);
        return 0;
    }
    int v = 0;
    if (!readBoardRegister(*reg, v)) return 0;
    m_registerCache[address] = v;
    value = v;
    return 1;
}

int IspBoardSenseController::writeRegister(uint16_t address, int value) {
    KSMutexGuard guard(m_FrameMutex);
    return writeRegisterLocked(address, value);
}

int IspBoardSenseController::readRegister(uint16_t address, int& value) {
    KSMutexGuard guard(m_FrameMutex);
    return readRegisterLocked(address, value);
}

int IspBoardSenseController::tryReadRegister(uint16_t address, int& value) {
    TryGuard guard(m_FrameMutex);
    if (!guard.locked()) return Busy;
    return readRegisterLocked(address, value);
}

bool IspBoardSenseController::currentRegister(uint16_t address, int& value) {
    return cachedRegister(address, value) || readRegister(address, value);
}

int IspBoardSenseController::modifyRegister(uint16_t address,
                                            const std::function<bool(int current, int& next)>& compose, bool tryOnly) {
    if (tryOnly) {
        TryGuard guard(m_FrameMutex);
        if (!guard.locked()) return Busy;
        return modifyRegisterLocked(address, compose);
    }
    KSMutexGuard guard(m_FrameMutex);
    return modifyRegisterLocked(address, compose);
}

int IspBoardSenseController::modifyRegisterLocked(uint16_t address,
                                                  const std::function<bool(int current, int& next)>& compose) {
    int current = 0;
    auto it = m_registerCache.find(address);
    if (it != m_registerCache.end())
        current = it->second;
    else if (!readRegisterLocked(address, current))
        return 0;
    int next = current;
    if (!compose(current, next)) return -1;
    return writeRegisterLocked(address, next);
}

bool IspBoardSenseController::cachedRegister(uint16_t address, int& value) {
    KSMutexGuard guard(m_FrameMutex);
    auto it = m_registerCache.find(address);
    if (it == m_registerCache.end()) return false;
    value = it->second;
    return true;
}

// ---- the parameter path ----

void IspBoardSenseController::printText(const char* text, int value) {
    if (text == nullptr) return;
    std::string s(text);
    size_t at = s.find("%d");
    if (at != std::string::npos) s.replace(at, 2, std::to_string(value));
    if (s.empty() || s.back() != '\n') s += '\n';
    KSLogger::consolePrintf("%s", s.c_str());
}

bool IspBoardSenseController::inRange(const IspBoardTable::Parameter& row, int value) {
    return static_cast<unsigned int>(value) - static_cast<unsigned int>(row.minValue) <=
           static_cast<unsigned int>(row.maxValue) - static_cast<unsigned int>(row.minValue);
}

int IspBoardSenseController::setOwnParameter(const IspBoardTable::Parameter&, int) { return 0; }
int IspBoardSenseController::getOwnParameter(const IspBoardTable::Parameter&, int&) { return 0; }

int IspBoardSenseController::setParameterToSensor(int id, int value) {
    const IspBoardTable::Parameter* row = m_table.findParameter(id);
    if (row == nullptr) return ISensorController::setParameterToSensor(id, value);
    if (!inRange(*row, value)) {
        printText(row->rangeText, value);
        return 0;
    }
    if (m_SensorStatus != InitSuccess) {
        ErrorPrintf("m_SensorStatus != ISensorController::InitSuccess!");
        return 0;
    }
    int ok = 0;
    switch (row->kind) {
    case IspBoardTable::Whole: ok = writeRegister(row->address, value); break;
    case IspBoardTable::Field: {
        const int mask = row->mask;
        const int bits = value << lowestBit(mask);
        ok = modifyRegister(row->address, [mask, bits](int current, int& next) {
            next = (current & ~mask) | (bits & mask);
            return true;
        });
        break;
    }
    case IspBoardTable::Own: return setOwnParameter(*row, value);
    }
    if (!ok) printText(row->failText, value);
    return ok;
}

int IspBoardSenseController::getParameterFromSensor(int id, int& value) {
    const IspBoardTable::Parameter* row = m_table.findParameter(id);
    if (row == nullptr) return ISensorController::getParameterFromSensor(id, value);
    if (m_SensorStatus != InitSuccess) {
        ErrorPrintf("m_SensorStatus != ISensorController::InitSuccess!");
        return 0;
    }
    int v = 0;
    switch (row->kind) {
    case IspBoardTable::Whole:
        if (!readRegister(row->address, v)) return 0;
        break;
    case IspBoardTable::Field:
        if (!readRegister(row->address, v)) return 0;
        v = (v & row->mask) >> lowestBit(row->mask);
        break;
    case IspBoardTable::Own: return getOwnParameter(*row, value);
    }
    value = v;
    return 1;
}

int IspBoardSenseController::setSensorVideoSystem(int, const VideoResolution&) { return 1; }

bool IspBoardSenseController::openBoardPort(const ModuleConfigure& cfg, SerialLineSettings& line,
                                            PortTexts texts) {
    SerialLineSettings::readInfrared(cfg, m_nDNDetectSource);
    if (!line.read(cfg)) return false;
    m_nUARTPort = m_pUART->open(line.device.c_str());
    if (m_nUARTPort < 0) {
        if (texts == RS485Texts)
            KSLogger::consolePrintf("RS485 uart open(%s) failed\n", line.device.c_str());
        else
            KSLogger::consolePrintf("open uart (%s) failed\n", line.device.c_str());
        return false;
    }
    if (!m_pUART->setParameter(m_nUARTPort, line.value[0], line.value[1], line.value[2], line.value[3])) {
        if (texts == RS485Texts)
            KSLogger::consolePrintf("RS485 setParameter failed(%s,%d,%d,%d,%d)\n", line.device.c_str(), line.value[0],
                                    line.value[1], line.value[2], line.value[3]);
        else
            KSLogger::consolePrintf("m_pUART->setParameter(m_nUARTIndex,m_nBaudarate,m_nDataBits,m_nStopBits,m_nParity) "
                                    "failed\n");
        return false;
    }
    recvLeftData();
    return true;
}
