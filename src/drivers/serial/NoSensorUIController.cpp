#include "drivers/serial/NoSensorUIController.h"

#include <cstdio>
#include <vector>

#include "drivers/serial/SerialLineSettings.h"
#include "platform/GThread.h"
#include "platform/KSLogger.h"
#include "platform/KestraTime.h"

NoSensorUIController::NoSensorUIController() : ISensorController(SensorType) {
    m_pGetDNThread = new GThread([this] { getDNbody(); }, "getDN", GThread::emptyFun, GThread::emptyFun);
}

NoSensorUIController::~NoSensorUIController() {
    // The thread reads the port and the day/night state: it ends before anything goes.
    m_pGetDNThread->stop();
    delete m_pGetDNThread;
    m_pGetDNThread = nullptr;
}

int NoSensorUIController::getMirrorValue(int&) { return 1; }
int NoSensorUIController::getParameterFromSensor(int, int&) { return 1; }
int NoSensorUIController::setParameterToSensor(int, int) { return 1; }
int NoSensorUIController::setSensorVideoSystem(int, const VideoResolution&) { return 1; }
int NoSensorUIController::NotifySensorInitComplate() { return 1; }
int NoSensorUIController::initFactorySetting() { return 1; }

int NoSensorUIController::getDNStatusFromSensor(int& status) {
    int state = m_nModuleDNState.load();
    if (state < 0) return 0;
    status = state;
    return 1;
}

int NoSensorUIController::setParameterValue(const char* bytes, int length) {
    int nRet = 0;
    {
        KSMutexGuard guard(m_UARTMutex);
        nRet = m_pUART->write(m_nUARTPort, bytes, length);
    }
    if (nRet != length) {
        // The bytes as text: "0x%x" each, separated by ",".
        std::vector<char> text(static_cast<size_t>(length > 0 ? length : 0) * 5 + 1, '\0');
        size_t used = 0;
        for (int i = 0; i < length; ++i)
            used += static_cast<size_t>(std::snprintf(text.data() + used, text.size() - used, i ? ",0x%x" : "0x%x",
                                                      static_cast<unsigned char>(bytes[i])));
        KSLogger::consolePrintf("sendData !! send data failed , sendcommand=%s  ,nRet=%d\n", text.data(), nRet);
        return 0;
    }
    return 1;
}

int NoSensorUIController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("NoSenseUIController::init,ModuleConfigure is(%s,%s)\n", cfg.getDetail().c_str(),
                cfg.getParameters().c_str());
    SerialLineSettings line;
    if (!line.read(cfg)) return 0;
    m_nUARTPort = m_pUART->open(line.device.c_str());
    if (m_nUARTPort < 0) {
        KSLogger::consolePrintf("open uart (%s) failed\n", line.device.c_str());
        return 0;
    }
    // The text reads baud, data bits, parity, stop bits; the port takes stop bits before parity.
    if (!m_pUART->setParameter(m_nUARTPort, line.value[0], line.value[1], line.value[3], line.value[2])) return 0;
    m_pGetDNThread->start();
    return 1;
}

int NoSensorUIController::getDNbody() {
    ++m_nDNPasses;
    static const unsigned char kInquiry[InquiryLength] = {0x81, 0x09, 0x04, 0x01, 0xFF};
    if (!setParameterValue(reinterpret_cast<const char*>(kInquiry), InquiryLength)) {
        KestraTime(3, 0).wait();
        return 0;
    }
    char answer[AnswerLength] = {0, 0, 0, 0};
    int nRet = m_pUART->read(m_nUARTPort, answer, AnswerLength, ReadTimeout);
    if (nRet == AnswerLength) {
        unsigned char state = static_cast<unsigned char>(answer[2]);
        if (state == 0x02 || state == 0x03) {
            m_nModuleDNState = state == 0x02 ? 0 : 1;
            KestraTime(1, 0).wait();
        } else {
            KSLogger::consolePrintf("get daynight value out of range value = %d\n", state);
            KestraTime(3, 0).wait();
        }
    } else {
        KSLogger::consolePrintf("recv @getDNbody failed,nRet = %d\n", nRet);
        KestraTime(3, 0).wait();
    }
    return 0;
}
