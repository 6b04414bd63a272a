#pragma once
#include <atomic>

#include "core/SensorTypes.h"
#include "core/ISensorController.h"
#include "platform/KSMutex.h"

class GThread;

// The controller of a camera whose image module offers no image settings:
// every parameter operation succeeds without effect, and the "getDN" thread
// follows the module's day/night state over an RS-485 line (VISCA day/night
// inquiry 81 09 04 01 FF, answer 90 50 02|03 FF). The factory does not build
// it; an application constructs it itself (README, "Running a controller of
// your own").
class NoSensorUIController : public ISensorController {
public:
    enum { SensorType = SensorTypes::NoSensorUI, InquiryLength = 5, AnswerLength = 4, ReadTimeout = 3 };

    NoSensorUIController();
    ~NoSensorUIController() override;

    // ---- overridden operations, in slot order ----
    int getMirrorValue(int& value) override;
    int getParameterFromSensor(int id, int& value) override;
    int setParameterToSensor(int id, int value) override;
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;
    int NotifySensorInitComplate() override;
    int setParameterValue(const char* bytes, int length) override;
    // The module's day/night state as the "getDN" thread last read it (1 day, 0
    // night), so that the day/night worker switches the camera after it; 0 (and
    // the status untouched) until a first answer came.
    int getDNStatusFromSensor(int& status) override;
    int initController(int sensorType, const ModuleConfigure& cfg) override;
    int initFactorySetting() override;

    // One pass of the "getDN" thread; always 0.
    int getDNbody();
    GThread& getDNThread() { return *m_pGetDNThread; }
    // Passes of the "getDN" thread so far (for tests and tools).
    int getDNPassCount() const { return m_nDNPasses.load(); }
    // The module's state as last read: 1 day, 0 night, -1 not yet known.
    int getModuleDNState() const { return m_nModuleDNState.load(); }

private:
    GThread* m_pGetDNThread = nullptr;
    KSMutex m_UARTMutex;  // serialises writes to the serial port
    std::atomic<int> m_nDNPasses{0};
    std::atomic<int> m_nModuleDNState{-1};
};
