#pragma once
// A scriptable controller for tests: a "sensor" that keeps a value per id,
// records every call, and can be told to fail.
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "core/ISensorController.h"
#include "storage/IdManager.h"
#include "storage/SensorConfigFile.h"

class FakeController : public ISensorController {
public:
    explicit FakeController(int sensorType = 50) : ISensorController(sensorType) {
        // A small id layout: common 1-10, set-only 11, keep-default 12, especial 13.
        m_pIdManager->addParameterId(1, 1, 10);
        m_pIdManager->addParameterId(3, 11);
        m_pIdManager->addParameterId(4, 12);
        m_pIdManager->addParameterId(2, 13);
        for (int id = 1; id <= 13; ++id) sensor[id] = id * 10;
        sensor.erase(11);
    }
    ~FakeController() override { getDayNightThread().stop(); }

    // ---- scripted sensor ----
    std::map<int, int> sensor;       // values the sensor holds / reports
    std::set<int> failSet;           // ids whose set fails (returns 0)
    std::set<int> failGet;           // ids whose get fails
    std::vector<std::pair<int, int>> sets;  // every set that reached the sensor
    int initControllerResult = 1;
    int videoSystemResult = 1;
    int dnStatus = 1;                // reported by getDNStatusFromSensor
    int dnStatusResult = 1;
    int gain = 0;
    int gainResult = 1;
    int pictureDayCalls = 0, pictureNightCalls = 0, enterAutoCalls = 0, dependCalls = 0;
    std::vector<int> twoA;
    std::vector<std::string> calls;  // names of the hooks called, in order
    std::vector<std::string> lampPackets;
    std::map<int, int> updateOverrides;  // values UpdateParameters reports differently
    mutable std::mutex mu;

    int getMirrorValue(int& v) override {
        v = 0;
        return 1;
    }
    int getParameterFromSensor(int id, int& value) override {
        std::lock_guard<std::mutex> l(mu);
        if (failGet.count(id)) return 0;
        if (id >= 500 && id <= 504) return ISensorController::getParameterFromSensor(id, value);
        auto it = sensor.find(id);
        value = it == sensor.end() ? 0 : it->second;
        return 1;
    }
    int setParameterToSensor(int id, int value) override {
        std::lock_guard<std::mutex> l(mu);
        if (failSet.count(id)) return 0;
        if (id >= 500 && id <= 504) return ISensorController::setParameterToSensor(id, value);
        sets.emplace_back(id, value);
        sensor[id] = value;
        return 1;
    }
    int setSensorVideoSystem(int, const VideoResolution&) override {
        record("setSensorVideoSystem");
        return videoSystemResult;
    }
    int initController(int, const ModuleConfigure&) override {
        record("initController");
        setSensorConfigVersion(0);
        setSensorConfigVersion2(3);
        return initControllerResult;
    }
    int NotifySensorInitComplate() override {
        record("NotifySensorInitComplate");
        return 1;
    }
    int getDNStatusFromSensor(int& status) override {
        if (dnStatusResult) status = dnStatus;
        return dnStatusResult;
    }
    int turnPictureToDay() override {
        record("turnPictureToDay");
        ++pictureDayCalls;
        return 1;
    }
    int turnPictureToNight() override {
        record("turnPictureToNight");
        ++pictureNightCalls;
        return 1;
    }
    int enterAutoMode() override {
        ++enterAutoCalls;
        return 1;
    }
    int set2AParam(int status) override {
        twoA.push_back(status);
        return 1;
    }
    int getCurrentGain(int& g) override {
        if (gainResult) g = gain;
        return gainResult;
    }
    void doDependOnThread() override { ++dependCalls; }
    int setParameterValue(const char* data, int length) override {
        lampPackets.emplace_back(data, static_cast<size_t>(length));
        return 1;
    }
    int UpdateParameters(std::string& list) override {
        for (auto& kv : updateOverrides) UpdateParametersIdValue(list, kv.first, kv.second);
        return 1;
    }

    // ---- access to protected state for tests ----
    void setDetectSource(int s) { m_nDNDetectSource = s; }
    void setLDRBoard(bool b) { m_bLDRBoard = b ? 1 : 0; }
    void setSerialPTZ(bool b) { m_bSerialPTZModule = b ? 1 : 0; }
    void setUARTPort(int p) { m_nUARTPort = p; }
    void setIrCutGpio(int g, int p, int day) { m_nIrCutGroup = g, m_nIrCutPin = p, m_nIrCutDayLevel = day; }
    void setInfraredGpio(int g, int p, int day) { m_nInfraredGroup = g, m_nInfraredPin = p, m_nInfraredDayLevel = day; }
    void setLDRGpio(int g, int p, int day) { m_nLDRGroup = g, m_nLDRPin = p, m_nLDRDayLevel = day; }
    void setHDRMode(int m) { m_nHDRMode = m; }
    void setTNFSwitch(int s) { m_nTNFSwitch = s; }
    void setInitialisedFlag(bool b) { m_bInitialised = b ? 1 : 0; }
    void setResettingFlag(bool b) { m_bResetting = b ? 1 : 0; }
    void setCurrentScheme(int i) { m_nCurrentParamScheme = i; }
    int dnsSwitchDelayStored() const { return m_nDNSwitchDelay; }
    int dtnTime() const { return m_nDTNTime; }
    int ntdTime() const { return m_nNTDTime; }
    int dnDefault() const { return m_nDNDefault; }
    int paramMode() const { return m_nParamMode; }
    int pendingStatus() const { return m_nPendingDNStatus; }
    int tnfMode() const { return m_nTNFMode; }
    int tnfLevel() const { return m_nTNFLevel; }
    SensorConfigFile& factoryFile() { return *m_pFactoryFile; }
    SensorConfigFile& especialFile() { return *m_pEspecialFile; }

private:
    void record(const char* name) {
        std::lock_guard<std::mutex> l(mu);
        calls.emplace_back(name);
    }
};
