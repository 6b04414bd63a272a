#include "drivers/serial/SerialSenseController.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "drivers/serial/SerialLineSettings.h"
#include "platform/KSLogger.h"
#include "platform/ModuleParameterParser.h"

namespace {
const unsigned char kViscaAck1[3] = {0x90, 0x41, 0xFF};
const unsigned char kViscaAck2[3] = {0x90, 0x42, 0xFF};
const unsigned char kViscaDone1[3] = {0x90, 0x51, 0xFF};
const unsigned char kViscaDone2[3] = {0x90, 0x52, 0xFF};
const int kAckLength = 3;

bool isCompletion(const unsigned char* m, int n) {
    return n == 3 && (std::memcmp(m, kViscaDone1, 3) == 0 || std::memcmp(m, kViscaDone2, 3) == 0);
}
}  // namespace

SerialSenseController::SerialSenseController(int sensorType, ReplyForm form)
    : ISensorController(sensorType), m_eForm(form) {
    std::memset(m_szRecvBuf, 0, sizeof(m_szRecvBuf));
    if (form == MessageForm)
        setAckPatterns(kViscaAck1, kViscaAck2);
    else
        setAckPatterns(kViscaAck1, kViscaDone1);
}

void SerialSenseController::setAckPatterns(const unsigned char first[3], const unsigned char second[3]) {
    std::memcpy(m_ack[0], first, 3);
    std::memcpy(m_ack[1], second, 3);
}

bool SerialSenseController::openSerialPort(const ModuleConfigure& cfg) {
    SerialLineSettings line;
    line.missingLineText = m_pszMissingLineText;
    // The device name and the line settings; "isInfrared" from the same detail text.
    SerialLineSettings::readInfrared(cfg, m_nDNDetectSource);
    if (!line.read(cfg)) return false;
    m_strDeviceName = line.device;
    m_nBaudrate = line.value[0];
    m_nDataBits = line.value[1];
    m_nStopBits = line.value[2];
    m_nParity = line.value[3];

    m_nUARTPort = m_pUART->open(m_strDeviceName.c_str());
    if (m_nUARTPort < 0) {
        KSLogger::consolePrintf("open uart (%s) failed\n", m_strDeviceName.c_str());
        return false;
    }
    if (!m_pUART->setParameter(m_nUARTPort, m_nBaudrate, m_nDataBits, m_nStopBits, m_nParity)) {
        KSLogger::consolePrintf("m_pUART->setParameter(m_nUARTIndex,m_nBaudarate,m_nDataBits,m_nStopBits,m_nParity) failed\n");
        return false;
    }
    KSMutexGuard guard(m_UARTMutex);
    clearUartBuffer();
    return true;
}

int SerialSenseController::readViscaMessage(unsigned char* buffer, int capacity, int timeout) {
    unsigned char message[MaxMessageLength];
    int length = 0;
    int discarded = 0;
    bool ended = false;
    while (length < MaxMessageLength) {
        char byte = 0;
        if (m_pUART->read(m_nUARTPort, &byte, 1, timeout) < 1) break;
        unsigned char b = static_cast<unsigned char>(byte);
        if (length == 0 && b != 0x90) {
            // Noise before a message; a line that only ever talks noise ends the read.
            if (++discarded >= MaxMessageLength) break;
            continue;
        }
        message[length++] = b;
        if (b == 0xFF && length > 1) {
            ended = true;
            break;
        }
    }
    if (length == 0 || length > capacity || (!ended && length < MaxMessageLength)) return -1;
    std::memcpy(buffer, message, static_cast<size_t>(length));
    return length;
}

int SerialSenseController::receiveMessage(unsigned char* buffer, int capacity, int timeout) {
    int n = 0;
    for (int skipped = 0; skipped <= MaxSkippedCompletions; ++skipped) {
        n = readViscaMessage(buffer, capacity, timeout);
        if (!isCompletion(buffer, n)) return n;
    }
    return -1;
}

int SerialSenseController::transact(const char* operation, const char* packet, int length, char* answer,
                                    int answerLength) {
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(packet);
    const bool command = answer == nullptr;
    KSMutexGuard guard(m_UARTMutex);
    discardStaleInput();
    for (int attempt = 1; attempt <= AttemptCount; ++attempt) {
        int nSent = m_pUART->write(m_nUARTPort, packet, length);
        if (nSent < length) {
            KSLogger::consolePrintf("===send(%d times) @%s failed,send(%d):\n", attempt, operation, nSent);
            recodeArray(bytes, length);
            clearUartBuffer();
            continue;
        }
        int nRecv = 0;
        if (m_eForm == MessageForm) {
            nRecv = receiveMessage(m_szRecvBuf, answerLength, command ? MessageAckTimeout : MessageInquiryTimeout);
        } else {
            std::memset(m_szRecvBuf, 0, kAckLength);
            nRecv = m_pUART->read(m_nUARTPort, reinterpret_cast<char*>(m_szRecvBuf), answerLength, SearchTimeout);
        }
        if (m_eForm == ByteForm && command)
            Debug_Printf("check(%d times) recv(%d):0x%x,0x%x,0x%x", attempt, nRecv, m_szRecvBuf[0], m_szRecvBuf[1],
                         m_szRecvBuf[2]);
        if (nRecv != answerLength) {
            KSLogger::consolePrintf("===recv(%d times) @%s failed,send:\n", attempt, operation);
            recodeArray(bytes, length);
            KSLogger::consolePrintf("===recv(%d):\n", nRecv);
            recodeArray(m_szRecvBuf, nRecv);
            clearUartBuffer();
            continue;
        }
        if (!command) {
            std::memcpy(answer, m_szRecvBuf, static_cast<size_t>(answerLength));
            return 1;
        }
        if (m_eForm == ByteForm) {
            if (isAckByteByByte()) return 1;
        } else if (checkUARTRecv(m_ack[0], 3, m_szRecvBuf, nRecv) || checkUARTRecv(m_ack[1], 3, m_szRecvBuf, nRecv)) {
            return 1;
        }
        KSLogger::consolePrintf("===send:\n");
        recodeArray(bytes, length);
        KSLogger::consolePrintf("===setParameterValue(%d times) recv error,recv:0x%x,0x%x,0x%x\n", attempt, m_szRecvBuf[0],
                    m_szRecvBuf[1], m_szRecvBuf[2]);
        clearUartBuffer();
    }
    return 0;
}

void SerialSenseController::discardStaleInput() {
    char chunk[MaxMessageLength];
    int total = 0;
    for (int i = 0; i < StaleReadLimit; ++i) {
        int n = m_pUART->read(m_nUARTPort, chunk, static_cast<int>(sizeof(chunk)), 0);
        if (n <= 0) break;
        total += n;
        if (n < static_cast<int>(sizeof(chunk))) break;
    }
    if (total > 0) Debug_Printf("discarded %d stale bytes", total);
}

bool SerialSenseController::isAckByteByByte() const {
    const unsigned char* r = m_szRecvBuf;
    if (r[0] != 0x90) return false;
    for (const unsigned char* pattern : m_ack) {
        if (r[1] == pattern[1] && r[2] == pattern[2]) return true;
    }
    return false;
}

bool SerialSenseController::statusReady() {
    if (m_BaseSensorStatus == InitSuccess) return true;
    ErrorPrintf("m_BaseSensorStatus != ISensorController::InitSuccess!");
    return false;
}

int SerialSenseController::exchange(const char* operation, const unsigned char* packet, int length, int answerLength,
                                    int timeout, const ReplyCheck& check) {
    if (packet == nullptr || length < 1 || answerLength < 1 || answerLength > MaxMessageLength) return 0;
    KSMutexGuard guard(m_UARTMutex);
    discardStaleInput();
    for (int attempt = 1; attempt <= AttemptCount; ++attempt) {
        int nSent = m_pUART->write(m_nUARTPort, reinterpret_cast<const char*>(packet), length);
        if (nSent < length) {
            KSLogger::consolePrintf("===send(%d times) @%s failed,send(%d):\n", attempt, operation, nSent);
            recodeArray(packet, length);
        } else {
            int nRecv = m_pUART->read(m_nUARTPort, reinterpret_cast<char*>(m_szRecvBuf), answerLength, timeout);
            int verdict = check(m_szRecvBuf, nRecv < 0 ? 0 : nRecv, attempt);
            if (verdict == ReplyAccepted) return 1;
            if (verdict == ReplyFinal) {
                clearUartBuffer();
                return 0;
            }
        }
        clearUartBuffer();
    }
    return 0;
}

int SerialSenseController::setParameterValue(const char* packet, int length) {
    return transact("setParameterValue", packet, length, nullptr, kAckLength);
}

int SerialSenseController::getParameterValue(const char* packet, int length, char* answer, int answerLength) {
    if (answer == nullptr || answerLength < 1 || answerLength > MaxMessageLength) return 0;
    return transact("getParameterValue", packet, length, answer, answerLength);
}
