#pragma once
#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "app/IGPIO.h"
#include "app/IUARTController.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "daynight/AntiFlapGuard.h"
#include "platform/Format.h"
#include "platform/GThread.h"
#include "platform/KSDeviceTime.h"
#include "platform/KSMutex.h"
#include "platform/SafePointer.h"
#include "storage/ParamScheme.h"

class IdManager;
class SensorCache;
class SensorConfigFile;
class SensorLog;
class ISPParam;
class EE;

// The common base of every sensor controller. It carries the shared machinery
// (id registry, parameter caches, configuration files, parameter schemes, the
// day/night worker, ISP tuning tables, logs); a concrete controller overrides
// the pure operations and whichever optional operations its hardware has.
//
// Optional hardware operations (lens, iris, zoom, focus, gain) fail by default
// (return 0, out-argument untouched), while the day/night picture hooks and the
// notifications succeed by default, so that a controller without such hardware
// still lets the day/night machinery run.
class ISensorController {
public:
    // Status values of m_SensorStatus / m_BaseSensorStatus.
    enum { NotInitialised = 1, InitSuccess = 2 };

    explicit ISensorController(int sensorType);

    // ---- virtual operations, in slot order ----
    // The owner calls stopWorker() before deleting a controller: the worker
    // calls the controller's virtual operations, which must not run while a
    // derived part is being destroyed. Debug builds assert that it was done.
    virtual ~ISensorController();
    virtual int updateSensorVideoSystem(int sensorType, const VideoResolution& res);
    virtual int resetParameters();
    virtual int resetToLastParameters();
    virtual int flush();
    virtual int getMirrorValue(int& value) = 0;
    virtual int set2AParam(int status);
    virtual int getCameraVerInf(std::string& version);
    virtual int restoreAeMode();
    virtual int setRunAutoIris();
    virtual int IrisUp();
    virtual int IrisDown();
    virtual int FocusFar(int speed);
    virtual int FocusNear(int speed);
    virtual int ZoomIn(int speed);
    virtual int ZoomOut(int speed);
    virtual int getZoomValue(int& zoom, int& maxZoom);
    virtual int setZoomValue(int zoom);
    virtual int setFocusValue(int focus);
    virtual int getFocusValue(int& focus);
    virtual int setFocusMode(int mode);
    virtual int getFocusMode(int& mode);
    virtual int StopZoomContrl();
    virtual int StopFocusContrl();
    virtual int StopIris();
    virtual int setZoomAndFocusValue(int zoom, int focus);
    virtual int getDayNightState(int& state);
    virtual int getCameraFocusMode(int& mode);
    virtual int setNearLight(int level);
    virtual int getNearLight(int& level);
    virtual int setMiddleLight(int level);
    virtual int getMiddleLight(int& level);
    virtual int setFarLight(int level);
    virtual int getFarLight(int& level);
    virtual int getStillImageValue(int& value);
    virtual int enterAutoMode();
    virtual int setPowerMode(int mode);
    virtual int getPowerMode(int& mode);
    virtual int getParameterFromSensor(int id, int& value);
    virtual int setParameterToSensor(int id, int value);
    virtual int setSensorVideoSystem(int sensorType, const VideoResolution& res) = 0;
    virtual int NotifySensorInitComplate();
    virtual int UpdateParameters(std::string& list);
    virtual int getParameterValue(const char* name, int id, char* out, int outSize);
    virtual int setParameterValue(const char* data, int length);
    virtual int setDayNightMode(int mode);
    virtual int getDayNightMode(int& p_nDayNightMode);
    virtual int getDNStatusFromSensor(int& status);
    virtual int getDNStatusFromLDR(int& status);
    virtual int turnPictureToDay();
    virtual int turnPictureToNight();
    virtual int turnToAutoDayNightMode();
    virtual int turnToManualDayNightMode();
    virtual int SwitchInfraredIrCutToDay();
    virtual int SwitchInfraredIrCutToNight();
    virtual int initController(int sensorType, const ModuleConfigure& cfg) = 0;
    virtual int initFactorySetting();
    virtual int getCurrentGain(int& gain);
    virtual void doDependOnThread();
    virtual int updateHDRMode(int mode);

    // ---- accessors ----
    int getSensorType() const { return m_nSensorType; }
    int getSensorStatus() const { return m_SensorStatus; }
    int getBaseSensorStatus() const { return m_BaseSensorStatus; }
    int setDNSwitchDelay(int seconds);
    int getDNSwitchDelay(int& seconds);
    // The anti-flap guard of the automatic day/night mode (module detail key
    // "DNAntiFlap=HOLDOFF,CEILING", seconds); a hold-off of 0 turns it off.
    void setDNAntiFlap(int holdOffSeconds, int ceilingSeconds);
    // The delay the guard asks of a day status that begins right after a switch to
    // night, 0 when the guard is off.
    int getDNAntiFlapDelay();
    int getDTNTime_H(int& hour);
    int getDTNTime_M(int& minute);
    int getNTDTime_H(int& hour);
    int getNTDTime_M(int& minute);
    int setDTNTime_H(int hour);
    int setDTNTime_M(int minute);
    int setNTDTime_H(int hour);
    int setNTDTime_M(int minute);

    // ---- start-up and configuration files ----
    int setOperator(const SafePointer<IUARTController>& uart, const SafePointer<IGPIO>& gpio);
    int init(int sensorType, const ModuleConfigure& cfg, const VideoResolution& res);
    int initConfigFile();
    int initSensorFilesHandler();
    int checkSensorConfigVersion();
    int createSensorFile_Factory();
    int setSensorConfigVersion(int version);
    int setSensorConfigVersion2(int version);
    int stopPTZ();
    // Stops the day/night worker and waits until it has ended; a pass in
    // progress ends at its next wait. Safe to call more than once and when the
    // worker never started. Every owner of a controller calls it before
    // deleting the controller.
    void stopWorker();

    // ---- serial transactions (shared by every serial module controller) ----
    // 1 when `expected` occurs anywhere in `received`, else 0 (also for an empty read).
    static int checkUARTRecv(const unsigned char* expected, int expectedLength, const unsigned char* received,
                             int receivedLength);
    // Writes the checksum of a framed packet into byte length-2: the sum modulo 256 of
    // bytes 1 to length-3 (start and end byte outside); 0 for a packet shorter than 4 bytes.
    static void computeSum(unsigned char* packet, int length);
    // Drains the serial port: reads chunks of 20 bytes (time-out 1) until a read returns less.
    void clearUartBuffer();
    // Prints the bytes as "0x%x" separated by "," to the error output.
    void recodeArray(const unsigned char* bytes, int length);
    int getUARTPort() const { return m_nUARTPort; }

    // ---- messages ----
    void Debug_Printf(const char* fmt, ...) KS_PRINTF_FORMAT(2, 3);
    void InitPrintf(const char* fmt, ...) KS_PRINTF_FORMAT(2, 3);
    void ErrorPrintf(const char* fmt, ...) KS_PRINTF_FORMAT(2, 3);
    void printDebugMessage();

    // ---- parameter access ----
    // Applies a parameter list text. 0 when every pair was applied; when the
    // driver refuses one, minus its id. A refused negative id therefore comes
    // back positive, and INT_MIN, which has no negation, comes back as INT_MAX:
    // callers test the result for non-zero, not for a negative value.
    int setParameters(const std::string& list);
    int getParameters(const std::string& idList, std::string& out);
    int setParameter(int id, int value);
    int getParameter(int id, int& value);
    int getAllParameters(std::string& out);
    int getAllParametersFromSensor(std::string& out);
    int UpdateParametersIdValue(std::string& list, int id, int value);

    // ---- parameter schemes ----
    int getParamSchemeNum(int& p_nSchemeNum);
    int isSensorSchemeFilesExist();
    int copySchemeFilesFromFactory();
    int resetSchemeFiles();
    int loadSchemeParamToMemory();
    int readParamByScheme(int index, std::string& text);
    int readCurrentParam(int& index, std::string& text);
    int switchScheme(int index);
    int setParamScheme(int index);
    int getParamScheme(int& index);
    int setParamMode(int mode);
    int getParamMode(int& mode);
    int getParamSchemeFromFile(int& index);
    int getParamSchemeModeFromFile(int& mode);
    int setParamSchemeToFile(int index);
    int setParamSchemeModeToFile(int mode);
    int getValueFromParamSchemeNode(const std::string& name, std::string& value);
    int setValueToParamSchemeNode(const std::string& name, const std::string& value);
    int createSensorXML();
    int getEnableParam(int& value);
    int getParamStartTime_H(int& value);
    int getParamStartTime_M(int& value);
    int getParamEndTime_H(int& value);
    int getParamEndTime_M(int& value);
    int paramSchemeSwitchBody();

    // ---- day/night ----
    int enterDayMode();
    int enterNightMode();
    int getCurrentDNStatus(int& status);
    int DNSwitchJudge(int& status);
    int DNSwitchHandle();
    int DNSwitchByTime(int& status);
    int isTimeToSwitch(int status);
    void reInitDelayStartTime();
    void DNChangeThreadBody();

    // ---- ISP tuning ----
    bool ISPParamThreadInit();
    int ISPParamBody();
    bool setISPParam(const std::string& table, int key);
    bool setEEParam(const std::string& table, int key);
    bool setDCParam(const std::string& table, int key);
    bool set3DNRParam(const std::string& table, int key);
    bool getTNF(int& level);
    bool setTNF(int level);
    bool getTNFMode(int& mode);
    bool setTNFMode(int mode);

    // ---- state views (read-only, for drivers, tools and tests) ----
    int getCurrentDNState() const { return m_nCurrentDNStatus; }
    int getLastDayNightMode() const { return m_nLastDayNightMode; }
    int getStoredDayNightMode() const { return m_nDayNightMode; }
    int getCurrentParamSchemeIndex() const { return m_nCurrentParamScheme; }
    bool isInitialised() const { return m_bInitialised != 0; }
    bool isResetting() const { return m_bResetting != 0; }
    int getDebugFlag() const { return m_nDebugFlag; }
    int getConfigVersion() const { return m_nConfigVersion; }
    int getConfigVersion2() const { return m_nConfigVersion2; }
    IdManager& getIdManager() { return *m_pIdManager; }
    SensorCache& getRequestCache() { return *m_pSensorCache; }
    SensorCache& getLastValueCache() { return *m_pSensorLastValueCache; }
    // The scheme files' handlers: a copy of the list, taken under the general mutex.
    std::vector<std::shared_ptr<SensorConfigFile>> getSchemeFiles();
    // The handler of scheme `index` (taken under the general mutex), or null.
    std::shared_ptr<SensorConfigFile> getSchemeFile(int index);
    // A copy of the scheme records, taken under the general mutex.
    std::vector<ParamScheme> getSchemeList();
    GThread& getDayNightThread() { return *m_DNChangeThread; }
    int getLastEE() const { return m_nLastEE; }
    int getLastDC() const { return m_nLastDC; }
    int getLastA0() const { return m_nLastA0; }
    int getLastTM() const { return m_nLastTM; }
    int getDayNightState() const { return m_nDayNightState; }
    // Whether the automatic mode judges by the light-sensor board (and its own
    // thresholds, ids 32 and 33) rather than by the sensor's scene level.
    bool judgesByLightBoard() const { return m_nDNDetectSource != 0 && m_bLDRBoard != 0; }

    ISensorController(const ISensorController&) = delete;
    ISensorController& operator=(const ISensorController&) = delete;

protected:
    // Fields, in the order of the controller's data model.
    int m_nSensorType;
    KSMutex m_GeneralMutex;  // the scheme record list and the records in it
    unsigned char m_bSerialPTZModule = 0;
    int m_SensorStatus = NotInitialised;
    int m_BaseSensorStatus = NotInitialised;
    IdManager* m_pIdManager = nullptr;
    SensorCache* m_pSensorCache = nullptr;  // request cache
    SensorCache* m_pSensorLastValueCache = nullptr;
    SafePointer<IUARTController> m_pUART;
    int m_nUARTPort = -1;
    SafePointer<IGPIO> m_pGPIO;
    int m_nDayNightMode = 0;
    int m_nLastDayNightMode = -1;
    int m_nDNSwitchDelay = 5;
    double m_dDelayStartTime = 0.0;
    int m_nPendingDNStatus = -1;
    AntiFlapGuard m_antiFlap;  // under the day/night mutex
    std::atomic<int> m_nCurrentDNStatus{-1};
    unsigned char m_bDNSwitchEnable = 1;
    std::atomic<unsigned char> m_bInitialised{0};  // set after the worker has started
    int m_nDNDetectSource = 0;
    unsigned char m_bLDRBoard = 0;
    int m_nDNDefault = 0;
    // ISP tuning state
    // Shared between the parameter path, the day/night worker and the owner's
    // ISP loop: whole-value reads and writes, made atomic so they are well defined.
    std::atomic<int> m_nLastA0{-100};
    std::atomic<int> m_nLastTM{-100};
    std::atomic<int> m_nLastDC{-100};
    std::atomic<int> m_nLastEE{-100};
    std::atomic<bool> m_bIspRealTimeUpdate{false};
    std::atomic<int> m_nIspDelayTime{1};
    std::atomic<int> m_nDayNightState{1};
    std::atomic<int> m_nLastISPDayNightState{-1};
    std::atomic<int> m_nTNFMode{0};
    std::atomic<int> m_nTNFLevel{0};
    std::atomic<int> m_nTNFSwitch{0};
    int m_nConfigVersion = 0;
    int m_nConfigVersion2 = 0;
    // The scheme files' handlers, guarded by the general mutex. They are shared, so
    // that a list rebuilt meanwhile (a reset) never deletes a handler that a flush or
    // a scheme step on another thread is using: users take a handler under the mutex
    // and use it after letting go.
    std::vector<std::shared_ptr<SensorConfigFile>> m_pUsrFileOperatorList;
    int m_nIrCutGroup = 0, m_nIrCutPin = 0, m_nIrCutDayLevel = 0;
    int m_nInfraredGroup = 0, m_nInfraredPin = 0, m_nInfraredDayLevel = 0;
    int m_nLDRGroup = 0, m_nLDRPin = 0, m_nLDRDayLevel = 0;
    int m_nHDRMode = 0;
    SafePointer<SensorLog> m_pErrorLog;
    SafePointer<SensorLog> m_pInitLog;
    int m_nDebugFlag = 0;
    GThread* m_DNChangeThread = nullptr;
    KSMutex m_ParamMutex;
    SensorConfigFile* m_pFactoryFile = nullptr;
    SensorConfigFile* m_pEspecialFile = nullptr;
    ISPParam* m_pISPParam = nullptr;
    EE* m_pEE = nullptr;
    KSMutex m_ISPMutex;
    int m_nDTNTime = 6677;
    int m_nNTDTime = 8899;
    KSDeviceTime m_CurrentTime;
    KSMutex m_DNMutex;
    std::atomic<unsigned char> m_bResetting{0};
    std::vector<ParamScheme*> m_pParamSchemeList;  // under m_GeneralMutex, and so is every record in it
    std::atomic<int> m_nCurrentParamScheme{-2};
    std::atomic<int> m_nParamMode{1};
    // The pairs of the setParameters call in progress (under m_ParamMutex), kept
    // between calls so that their storage is reused.
    std::vector<std::pair<int, int>> m_requestPairs;

    // Index of the first enabled scheme whose window holds the current time of
    // day, from the records in memory; -1 (the factory set) when none does.
    int findCurrentSchemeIndex();
    // Registers this controller class's parameter ids from the shared table.
    void registerIds(const char* controllerName);
    // Replaces the scheme-file list / scheme records (delete all, create anew).
    void clearSchemeFiles();
    void clearSchemeList();
    // Writes a level to a GPIO pin (the IGPIO write); false when there is no GPIO or it fails.
    bool writeGpio(int group, int pin, int level);
    // Range check and lamp-board packet of the infrared lamp commands.
    int sendLampCommand(unsigned char command, int value, unsigned int maxValue, const char* what);
    // Stores one switch time unless it would equal the other one (checked only
    // after initialisation and outside a reset).
    int setTimeChecked(int& target, int other, int value, const char* label);
    bool readGpio(int group, int pin, int& level);
    // The driver step of setParameter for a pair the value cache does not hold:
    // how the cache is to store it (SensorCache::Store*), or -1 when the driver
    // refused it or the id is not registered (the failure is logged).
    int sendParameter(int id, int value);
    // isSensorSchemeFilesExist with the scheme count already read (numOk: its reading succeeded).
    int schemeFilesExist(int numOk, int num);
    // The scheme-file list of initSensorFilesHandler for `num` schemes.
    int createSchemeFileHandlers(int num);
};
