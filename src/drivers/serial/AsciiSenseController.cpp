#include "drivers/serial/AsciiSenseController.h"

#include <cstdio>
#include <cstring>

#include "app/ModuleConfigure.h"
#include "platform/GThread.h"
#include "platform/KSLogger.h"
#include "platform/KestraTime.h"

namespace {
// ":R"/":r" and four address digits: the part of a read's answer that repeats the command.
const int kAnswerHead = 6;
}  // namespace

AsciiSenseController::AsciiSenseController(int sensorType, const char* className, const AsciiParameter* table,
                                           size_t count)
    : SerialSenseController(sensorType, SearchForm), m_pszClassName(className), m_pTable(table), m_nTableSize(count) {}

AsciiSenseController::~AsciiSenseController() {
    stopModuleWorker();
    delete m_pWorker;
    m_pWorker = nullptr;
}

// ---- text ----

std::string AsciiSenseController::assembleString(const char* prefix, int value, int width) {
    if (width < 0) width = 0;
    if (width > MaxHexDigits) width = MaxHexDigits;
    // The width goes in as an argument ("%0*X") rather than into a format built
    // at run time, so the format stays a literal; digits in upper case, as the
    // modules' command lists write them (":WFFE6C0").
    char text[CommandCapacity];
    std::snprintf(text, sizeof(text), "%s%0*X", prefix != nullptr ? prefix : "", width, static_cast<unsigned int>(value));
    return text;
}

int AsciiSenseController::ascToHex(const char* text, int length, int& value) {
    if (text == nullptr || length < 1 || length > MaxHexDigits) return 0;
    unsigned int v = 0;
    for (int i = 0; i < length; ++i) {
        char c = text[i];
        unsigned int d = 0;
        if (c >= '0' && c <= '9')
            d = static_cast<unsigned int>(c - '0');
        else if (c >= 'A' && c <= 'F')
            d = static_cast<unsigned int>(c - 'A' + 10);
        else if (c >= 'a' && c <= 'f')
            d = static_cast<unsigned int>(c - 'a' + 10);
        else
            return 0;
        v = (v << 4) | d;
    }
    value = static_cast<int>(v);
    return 1;
}

// ---- transactions ----

void AsciiSenseController::reportAnswer(const char* what, const char* operation, int attempt,
                                       const unsigned char* packet, int length, const unsigned char* reply, int n) {
    // "===recv(%d times) @sendData failed,send:" for a wrong length,
    // "===check(%d times) @sendData failed,send:" for a wrong answer.
    KSLogger::consolePrintf("===%s(%d times) @%s failed,send:\n", what, attempt, operation);
    recodeArray(packet, length);
    KSLogger::consolePrintf("===recv(%d):\n", n);
    recodeArray(reply, n);
}

int AsciiSenseController::sendData(const char* text) {
    if (text == nullptr) return 0;
    const int length = static_cast<int>(strnlen(text, CommandCapacity));
    if (length < 1 || length >= CommandCapacity) return 0;
    const unsigned char* packet = reinterpret_cast<const unsigned char*>(text);
    return exchange("sendData", packet, length, length, ReadTimeout,
                    [&](const unsigned char* reply, int n, int attempt) {
                        if (n == length && std::memcmp(reply, packet, static_cast<size_t>(length)) == 0)
                            return ReplyAccepted;
                        reportAnswer(n == length ? "check" : "recv", "sendData", attempt, packet, length, reply, n);
                        return ReplyRetry;
                    });
}

int AsciiSenseController::checkReadAnswer(const char* command, const unsigned char* answer, int length,
                                          int expectedLength, int& value) {
    if (answer == nullptr || length != expectedLength || expectedLength <= kAnswerHead ||
        expectedLength - kAnswerHead > MaxHexDigits)
        return AnswerLength;
    if (command == nullptr || strnlen(command, kAnswerHead) < static_cast<size_t>(kAnswerHead) ||
        std::memcmp(answer, command, kAnswerHead) != 0)
        return AnswerMismatch;
    int v = 0;
    if (!ascToHex(reinterpret_cast<const char*>(answer) + kAnswerHead, expectedLength - kAnswerHead, v))
        return AnswerMismatch;
    value = v;
    return AnswerOk;
}

int AsciiSenseController::recvData(const char* text, int expectedLength, int& value) {
    if (text == nullptr) return 0;
    const int length = static_cast<int>(strnlen(text, CommandCapacity));
    if (length < kAnswerHead || length >= CommandCapacity || expectedLength <= kAnswerHead ||
        expectedLength - kAnswerHead > MaxHexDigits)
        return 0;
    const unsigned char* packet = reinterpret_cast<const unsigned char*>(text);
    int v = 0;
    int result = exchange("recvData", packet, length, expectedLength, ReadTimeout,
                          [&](const unsigned char* reply, int n, int attempt) {
                              int check = checkReadAnswer(text, reply, n, expectedLength, v);
                              if (check == AnswerOk) return ReplyAccepted;
                              reportAnswer(check == AnswerLength ? "recv" : "check", "recvData", attempt, packet,
                                           length, reply, n);
                              return ReplyRetry;
                          });
    if (result) value = v;
    return result;
}

int AsciiSenseController::writeRegister(const char* prefix, int data, int width) {
    return sendData(assembleString(prefix, data, width).c_str());
}

// ---- start-up ----

bool AsciiSenseController::openModule(const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("__%s::init,ModuleConfigure is(%s,%s)\n", m_pszClassName, cfg.getDetail().c_str(),
                            cfg.getParameters().c_str());
    return openSerialPort(cfg);
}

int AsciiSenseController::setSensorVideoSystem(int, const VideoResolution&) {
    // The module keeps its own video format.
    return 1;
}

// ---- parameter access ----

int AsciiSenseController::setParameterToSensor(int id, int value) {
    Debug_Printf("%s set id(%d) value(%d)", m_pszClassName, id, value);
    int base = ISensorController::setParameterToSensor(id, value);
    if (base == 1) return 1;
    const AsciiParameter* row = findRow(id);
    if (row == nullptr) return base;
    if (!statusReady()) return 0;
    if (!row->inRange(value)) {
        KSLogger::consolePrintf("%s(%d) is out of range\n", row->rangeName, value);
        return 0;
    }
    char prefix[8];
    row->writePrefix(prefix);
    if (!writeRegister(prefix, row->dataOf(value), row->width)) {
        KSLogger::consolePrintf("set%s error,value is %d\n", row->name, value);
        return 0;
    }
    return 1;
}

int AsciiSenseController::getParameterFromSensor(int id, int& value) {
    if (id >= 500 && id <= 504) return ISensorController::getParameterFromSensor(id, value);
    const AsciiParameter* row = findRow(id);
    if (row == nullptr) return 0;
    if (!statusReady()) return 0;
    char command[12];
    int answerLength = row->readCommand(command);
    int data = 0;
    int v = 0;
    if (!recvData(command, answerLength, data) || !row->valueOf(data, v)) {
        KSLogger::consolePrintf("get%s error,value is %d\n", row->name, value);
        return 0;
    }
    value = v;
    return 1;
}

int AsciiSenseController::getMirrorValue(int& value) {
    for (size_t i = 0; i < m_nTableSize; ++i)
        if (std::strcmp(m_pTable[i].name, "Mirror") == 0) return getParameterFromSensor(m_pTable[i].id, value);
    return 0;
}

// ---- status worker ----

void AsciiSenseController::setStatusRegister(const char* readCommand, int answerLength, const char* workerName) {
    m_strStatusRead = readCommand;
    m_nStatusLength = answerLength;
    if (m_pWorker == nullptr)
        m_pWorker = new GThread([this] { threadBody(); }, workerName, GThread::emptyFun, GThread::emptyFun);
}

int AsciiSenseController::readStatus() {
    if (m_strStatusRead.empty()) return 0;
    int status = 0;
    if (!recvData(m_strStatusRead.c_str(), m_nStatusLength, status)) return 0;
    m_nModuleDN = (status & StatusNightBit) ? 0 : 1;
    return 1;
}

void AsciiSenseController::threadBody() {
    ++m_nWorkerPasses;
    if (!readStatus()) KSLogger::consolePrintf("%s read status failed\n", m_pszClassName);
    KestraTime(StatusPeriodSeconds, 0).wait();
}

int AsciiSenseController::NotifySensorInitComplate() {
    if (m_pWorker != nullptr) m_pWorker->start();
    return 1;
}

void AsciiSenseController::stopModuleWorker() {
    if (m_pWorker != nullptr) m_pWorker->stop();
}

bool AsciiSenseController::isModuleWorkerRunning() const { return m_pWorker != nullptr && m_pWorker->isRunning(); }

int AsciiSenseController::getDNStatusFromSensor(int& status) {
    if (m_strStatusRead.empty()) return 0;
    int state = m_nModuleDN.load();
    if (state < 0 && readStatus()) state = m_nModuleDN.load();
    if (state < 0) return 0;
    status = state;
    return 1;
}
