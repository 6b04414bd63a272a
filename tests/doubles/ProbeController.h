#pragma once
// A FakeController that stamps every hook it sees with the virtual time, so
// that tests can check the order of a start-up and when the day/night worker
// switched, and that gives tests read access to the ISP and day/night state.
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "doubles/FakeController.h"
#include "doubles/FakeGPIO.h"
#include "doubles/FakeUART.h"
#include "isp/ISPParam.h"
#include "platform/KSDeviceTime.h"
#include "platform/PlatformClock.h"
#include "storage/SensorLog.h"

struct ProbeEvent {
    int64_t ms;                // virtual monotonic time
    int hour, minute, second;  // device time of day
    std::string what;
};

// A shared, ordered record of what the controller and its doubles did.
class EventLog {
public:
    void add(const std::string& what) {
        KSDeviceTime t = KSDeviceTime::getCurrentTime();
        std::lock_guard<std::mutex> l(m_mu);
        m_events.push_back({PlatformClock::nowMs(), t.getHour(), t.getMinute(), t.getSecond(), what});
    }
    std::vector<ProbeEvent> events() const {
        std::lock_guard<std::mutex> l(m_mu);
        return m_events;
    }
    std::vector<std::string> names() const {
        std::lock_guard<std::mutex> l(m_mu);
        std::vector<std::string> out;
        for (const ProbeEvent& e : m_events) out.push_back(e.what);
        return out;
    }
    std::vector<ProbeEvent> only(const std::string& what) const {
        std::lock_guard<std::mutex> l(m_mu);
        std::vector<ProbeEvent> out;
        for (const ProbeEvent& e : m_events)
            if (e.what == what) out.push_back(e);
        return out;
    }
    size_t count(const std::string& what) const { return only(what).size(); }
    void clear() {
        std::lock_guard<std::mutex> l(m_mu);
        m_events.clear();
    }

private:
    mutable std::mutex m_mu;
    std::vector<ProbeEvent> m_events;
};

// GPIO double that reports its writes to an event log ("gpio:<group>,<pin>=<level>")
// and can answer reads from a function of the virtual time.
class ProbeGPIO : public FakeGPIO {
public:
    explicit ProbeGPIO(EventLog* log = nullptr) : m_log(log) {}
    // When set, reads of (group, pin) == levelPin are answered by levelAt(now).
    std::function<int(int64_t)> levelAt;
    std::pair<int, int> levelPin{-1, -1};
    struct Sample {
        int64_t ms;
        int level;
    };
    std::vector<Sample> samples;  // reads answered by levelAt
    std::atomic<int> failNextWrites{0};

    int setLevel(int group, int pin, int level) override {
        if (failNextWrites.load() > 0) {
            --failNextWrites;
            if (m_log) m_log->add("gpio-fail:" + key(group, pin, level));
            return 0;
        }
        int r = FakeGPIO::setLevel(group, pin, level);
        if (m_log && r) m_log->add("gpio:" + key(group, pin, level));
        if (m_log && !r) m_log->add("gpio-fail:" + key(group, pin, level));
        return r;
    }
    int getLevel(int group, int pin, int& level) override {
        if (levelAt && std::make_pair(group, pin) == levelPin) {
            level = levelAt(PlatformClock::nowMs());
            std::lock_guard<std::mutex> l(mu);
            samples.push_back({PlatformClock::nowMs(), level});
            return 1;
        }
        return FakeGPIO::getLevel(group, pin, level);
    }

private:
    static std::string key(int group, int pin, int level) {
        return std::to_string(group) + "," + std::to_string(pin) + "=" + std::to_string(level);
    }
    EventLog* m_log;
};

// Serial port double that reports what is written ("uart:<bytes>").
class ProbeUART : public FakeUART {
public:
    explicit ProbeUART(EventLog* log = nullptr) : m_log(log) {}
    int write(int port, const char* data, int length) override {
        int n = FakeUART::write(port, data, length);
        if (m_log) m_log->add("uart:" + std::string(data, static_cast<size_t>(length)));
        return n;
    }

private:
    EventLog* m_log;
};

class ProbeController : public FakeController {
public:
    explicit ProbeController(EventLog& log, int sensorType = 50) : FakeController(sensorType), m_log(log) {}
    ~ProbeController() override { getDayNightThread().stop(); }

    // Run inside initController, as a driver would set up its hardware fields there.
    std::function<void(ProbeController&)> onInitController;
    // Run at the start of the respective hook (for checks of the state at that point).
    std::function<void(ProbeController&)> onVideoSystem, onNotify, onPictureDay, onFirstSensorRead;
    // When set, doDependOnThread calls it (a driver's periodic work).
    std::function<void()> dependWork;
    std::atomic<int> autoCalls{0}, manualCalls{0};
    int hdrCalls = 0;
    std::vector<int> hdrModes;

    int initController(int sensorType, const ModuleConfigure& cfg) override {
        m_log.add("initController");
        m_firstRead = true;
        int r = FakeController::initController(sensorType, cfg);
        if (onInitController) onInitController(*this);
        return r;
    }
    // When set, the sensor's day/night reading follows this function of the virtual time.
    std::function<int(int64_t)> sensorDNAt;
    int getDNStatusFromSensor(int& status) override {
        if (sensorDNAt) {
            status = sensorDNAt(PlatformClock::nowMs());
            m_log.add("dn:" + std::to_string(status));
            return 1;
        }
        int r = FakeController::getDNStatusFromSensor(status);
        m_log.add(r ? "dn:" + std::to_string(status) : std::string("dn-fail"));
        return r;
    }
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override {
        m_log.add("setSensorVideoSystem");
        if (onVideoSystem) onVideoSystem(*this);
        return FakeController::setSensorVideoSystem(sensorType, res);
    }
    int NotifySensorInitComplate() override {
        m_log.add("NotifySensorInitComplate");
        if (onNotify) onNotify(*this);
        return FakeController::NotifySensorInitComplate();
    }
    int turnPictureToDay() override {
        m_log.add("turnPictureToDay");
        if (onPictureDay) onPictureDay(*this);
        return FakeController::turnPictureToDay();
    }
    int turnPictureToNight() override {
        m_log.add("turnPictureToNight");
        return FakeController::turnPictureToNight();
    }
    int getParameterFromSensor(int id, int& value) override {
        if (m_firstRead) {
            m_firstRead = false;
            m_log.add("readSensor");
            if (onFirstSensorRead) onFirstSensorRead(*this);
        }
        return FakeController::getParameterFromSensor(id, value);
    }
    // Virtual times at which the judge reached a decision (set2AParam is called then).
    std::vector<int64_t> decisions;
    int set2AParam(int status) override {
        decisions.push_back(PlatformClock::nowMs());
        return FakeController::set2AParam(status);
    }
    int turnToAutoDayNightMode() override {
        ++autoCalls;
        return 1;
    }
    int turnToManualDayNightMode() override {
        ++manualCalls;
        return 1;
    }
    int updateHDRMode(int mode) override {
        ++hdrCalls;
        hdrModes.push_back(mode);
        m_log.add("updateHDRMode:" + std::to_string(mode));
        return 1;
    }
    // Each worker cycle is logged as "cycle" (at its start) unless switched off.
    std::atomic<bool> logCycles{true};
    void doDependOnThread() override {
        FakeController::doDependOnThread();
        if (logCycles.load()) m_log.add("cycle");
        if (dependWork) dependWork();
    }

    // Opens the two logs as init does first, for tests that do not run init.
    void openLogs() {
        m_pErrorLog->init("/mnt/mtd/log/SensorError.log", 10240, 3);
        m_pInitLog->init("/mnt/mtd/log/SensorInit.log", 10240, 3);
    }

    // ---- read access to protected state ----
    const ISPParam& ispTables() const { return *m_pISPParam; }
    bool ispRealTimeUpdate() const { return m_bIspRealTimeUpdate; }
    int ispDelayTime() const { return m_nIspDelayTime; }
    int lastISPDayNightState() const { return m_nLastISPDayNightState; }
    void setDayNightStateValue(int s) { m_nDayNightState = s; }
    void setTNFModeValue(int m) { m_nTNFMode = m; }
    void setDNSwitchEnable(bool b) { m_bDNSwitchEnable = b ? 1 : 0; }
    int dnsTime() const { return m_CurrentTime.m_nHour * 100 + m_CurrentTime.m_nMinute; }
    void setSwitchTimes(int dtn, int ntd) {
        m_nDTNTime = dtn;
        m_nNTDTime = ntd;
    }
    EventLog& log() { return m_log; }

private:
    EventLog& m_log;
    bool m_firstRead = true;
};
