#include "core/ISensorController.h"

#include <cassert>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <atomic>

#include "isp/EE.h"
#include "isp/ISPParam.h"
#include "platform/DiskManager.h"
#include "platform/KSFile.h"
#include "platform/KSLogger.h"
#include "platform/ModuleParameterParser.h"
#include "platform/SensorParameterParser.h"
#include "platform/SySystem.h"
#include "storage/ControllerIdTable.h"
#include "storage/IdManager.h"
#include "storage/ParamScheme.h"
#include "storage/SensorCache.h"
#include "storage/SensorConfigFile.h"
#include "storage/SensorLog.h"
#include "storage/SensorPaths.h"

namespace {
// Decimal text to int as strtol reads it, clamped to the int range the same
// way whatever the width of long on the target.
int decimalToInt(const std::string& text) {
    long long v = std::strtoll(text.c_str(), nullptr, 10);
    if (v > 2147483647LL) return 2147483647;
    if (v < -2147483647LL - 1) return -2147483647 - 1;
    return static_cast<int>(v);
}
}  // namespace

ISensorController::ISensorController(int sensorType) : m_nSensorType(sensorType) {
    // Scalar fields take their start values from their initialisers.
    m_pIdManager = new IdManager();
    m_pSensorCache = new SensorCache();
    m_pSensorLastValueCache = new SensorCache();
    m_pErrorLog = SafePointer<SensorLog>(new SensorLog());
    m_pInitLog = SafePointer<SensorLog>(new SensorLog());
    m_pFactoryFile = new SensorConfigFile(SensorPaths::kFactoryFile);
    m_pEspecialFile = new SensorConfigFile(SensorPaths::kEspecialFile);
    m_pISPParam = new ISPParam();
    m_pEE = new EE();
    registerIds("ISensorController");

    KSFile marker;
    if (marker.open(SensorPaths::kDebugMarker, KSFile::ModeRead)) {
        KSLogger::consolePuts("*********In sensor debug mode (/factory_setting/SensorControlDebug)*********");
        m_nDebugFlag = 1;
        marker.close();
    }

    m_DNChangeThread = new GThread([this] { DNChangeThreadBody(); }, "DayNightChangeThread", GThread::emptyFun,
                                   GThread::emptyFun);
}

ISensorController::~ISensorController() {
    // The owner has stopped the worker (stopWorker) while the whole object was
    // alive; stopping it only here would let it call into a destroyed derived
    // part. Release builds still stop it before anything below goes.
    assert(m_DNChangeThread == nullptr || !m_DNChangeThread->isRunning());
    if (m_DNChangeThread != nullptr) {
        m_DNChangeThread->stop();
        delete m_DNChangeThread;
        m_DNChangeThread = nullptr;
    }
    delete m_pFactoryFile;
    delete m_pEspecialFile;
    delete m_pIdManager;
    delete m_pISPParam;
    delete m_pEE;
    delete m_pSensorCache;
    delete m_pSensorLastValueCache;
    m_pErrorLog.reset();
    m_pInitLog.reset();
    clearSchemeFiles();
    clearSchemeList();
}

void ISensorController::stopWorker() {
    if (m_DNChangeThread != nullptr) m_DNChangeThread->stop();
}

void ISensorController::registerIds(const char* controllerName) {
    ControllerIdTable::registerIds(controllerName, *m_pIdManager);
}

void ISensorController::clearSchemeFiles() {
    std::vector<std::shared_ptr<SensorConfigFile>> old;
    {
        KSMutexGuard lock(m_GeneralMutex);
        old.swap(m_pUsrFileOperatorList);
    }
}

std::vector<std::shared_ptr<SensorConfigFile>> ISensorController::getSchemeFiles() {
    KSMutexGuard lock(m_GeneralMutex);
    return m_pUsrFileOperatorList;
}

std::shared_ptr<SensorConfigFile> ISensorController::getSchemeFile(int index) {
    KSMutexGuard lock(m_GeneralMutex);
    if (index < 0 || static_cast<size_t>(index) >= m_pUsrFileOperatorList.size()) return nullptr;
    return m_pUsrFileOperatorList[static_cast<size_t>(index)];
}

std::vector<ParamScheme> ISensorController::getSchemeList() {
    KSMutexGuard lock(m_GeneralMutex);
    std::vector<ParamScheme> copy;
    copy.reserve(m_pParamSchemeList.size());
    for (const ParamScheme* s : m_pParamSchemeList) copy.push_back(*s);
    return copy;
}

void ISensorController::clearSchemeList() {
    for (ParamScheme* s : m_pParamSchemeList) delete s;
    m_pParamSchemeList.clear();
}

// ---- base behaviour of the virtual operations ----

int ISensorController::updateSensorVideoSystem(int, const VideoResolution&) { return 1; }
int ISensorController::set2AParam(int) { return 0; }
int ISensorController::getCameraVerInf(std::string&) { return 0; }
int ISensorController::restoreAeMode() { return 0; }
int ISensorController::setRunAutoIris() { return 0; }
int ISensorController::IrisUp() { return 0; }
int ISensorController::IrisDown() { return 0; }
int ISensorController::FocusFar(int) { return 0; }
int ISensorController::FocusNear(int) { return 0; }
int ISensorController::ZoomIn(int) { return 0; }
int ISensorController::ZoomOut(int) { return 0; }
int ISensorController::getZoomValue(int&, int&) { return 0; }
int ISensorController::setZoomValue(int) { return 0; }
int ISensorController::setFocusValue(int) { return 0; }
int ISensorController::getFocusValue(int&) { return 0; }
int ISensorController::setFocusMode(int) { return 0; }
int ISensorController::getFocusMode(int&) { return 0; }
int ISensorController::StopZoomContrl() { return 0; }
int ISensorController::StopFocusContrl() { return 0; }
int ISensorController::StopIris() { return 0; }
int ISensorController::setZoomAndFocusValue(int, int) { return 0; }
int ISensorController::getDayNightState(int&) { return 0; }
int ISensorController::getCameraFocusMode(int&) { return 0; }
int ISensorController::getNearLight(int& level) {
    level = 50;
    return 1;
}
int ISensorController::getMiddleLight(int& level) {
    level = 50;
    return 1;
}
int ISensorController::getFarLight(int& level) {
    level = 50;
    return 1;
}
int ISensorController::getStillImageValue(int&) { return 0; }
int ISensorController::enterAutoMode() { return 1; }
int ISensorController::getPowerMode(int& mode) {
    mode = 0;
    return 1;
}

int ISensorController::getParameterFromSensor(int id, int& value) {
    switch (id) {
        case 500:
            if (!getEnableParam(value)) {
                ErrorPrintf("getEnableParam failed");
                return 0;
            }
            return 1;
        case 501:
            if (!getParamStartTime_H(value)) {
                ErrorPrintf("getParamStartTime_H failed");
                return 0;
            }
            return 1;
        case 502:
            if (!getParamStartTime_M(value)) {
                ErrorPrintf("getParamStartTime_M failed");
                return 0;
            }
            return 1;
        case 503:
            if (!getParamEndTime_H(value)) {
                ErrorPrintf("getParamEndTime_H failed");
                return 0;
            }
            return 1;
        case 504:
            if (!getParamEndTime_M(value)) {
                ErrorPrintf("getParamEndTime_M failed");
                return 0;
            }
            return 1;
        default:
            return 0;
    }
}

int ISensorController::setParameterToSensor(int id, int) {
    // One unsigned comparison covers both ends of 500..504 (done in unsigned
    // arithmetic, so no id can overflow it).
    return static_cast<unsigned int>(id) - 500u > 4u ? -1 : 1;
}

int ISensorController::NotifySensorInitComplate() { return 1; }
int ISensorController::UpdateParameters(std::string&) { return 1; }
int ISensorController::getParameterValue(const char*, int, char*, int) { return 1; }
int ISensorController::setParameterValue(const char*, int) { return 1; }

int ISensorController::getDayNightMode(int& p_nDayNightMode) {
    p_nDayNightMode = m_nDNDefault;
    Debug_Printf("ISensorController::getDayNightMode() p_nDayNightMode(%d)\n", p_nDayNightMode);
    return 1;
}

int ISensorController::getDNStatusFromSensor(int&) { return 1; }
int ISensorController::turnPictureToDay() { return 1; }
int ISensorController::turnPictureToNight() { return 1; }
int ISensorController::turnToAutoDayNightMode() { return 1; }
int ISensorController::turnToManualDayNightMode() { return 1; }
int ISensorController::initFactorySetting() { return 1; }
int ISensorController::getCurrentGain(int&) { return 0; }
void ISensorController::doDependOnThread() {}
int ISensorController::updateHDRMode(int) { return 1; }

// ---- accessors whose getters report fixed values on purpose ----

int ISensorController::setDNSwitchDelay(int seconds) {
    m_nDNSwitchDelay = seconds;
    return 1;
}
int ISensorController::getDNSwitchDelay(int& seconds) {
    seconds = 5;
    return 1;
}
int ISensorController::getDTNTime_H(int& hour) {
    hour = 18;
    return 1;
}
int ISensorController::getDTNTime_M(int& minute) {
    minute = 0;
    return 1;
}
int ISensorController::getNTDTime_H(int& hour) {
    hour = 6;
    return 1;
}
int ISensorController::getNTDTime_M(int& minute) {
    minute = 0;
    return 1;
}

// ---- start-up ----

int ISensorController::setOperator(const SafePointer<IUARTController>& uart, const SafePointer<IGPIO>& gpio) {
    if (&uart != &m_pUART) m_pUART = uart;
    if (&gpio != &m_pGPIO) m_pGPIO = gpio;
    return 1;
}

int ISensorController::init(int sensorType, const ModuleConfigure& cfg, const VideoResolution& res) {
    m_pErrorLog->init(SensorPaths::kErrorLog, 10240, 3);
    m_pInitLog->init(SensorPaths::kInitLog, 10240, 3);
    ISPParamThreadInit();
    if (!initController(sensorType, cfg)) {
        ErrorPrintf("initController failed");
        return 0;
    }
    std::string detail = cfg.getDetail();
    Debug_Printf("detail:%s\n", detail.c_str());
    ModuleParameterParser parser;
    bool parsed = parser.parse(detail);
    if (!parsed) {
        ErrorPrintf("parse detail failed");
        return 0;
    }
    std::string strDNDefault;
    if (parser.getValue("DNDefault", strDNDefault))
        m_nDNDefault = decimalToInt(strDNDefault);
    KSLogger::consolePrintf("strDNDefault:%s m_nDNDefault(%d)\n", strDNDefault.c_str(), m_nDNDefault);
    std::string strAntiFlap;
    if (parser.getValue("DNAntiFlap", strAntiFlap)) {
        int holdOff = 0, ceiling = 0;
        if (std::sscanf(strAntiFlap.c_str(), "%d,%d", &holdOff, &ceiling) == 2 && holdOff > 0 && ceiling > 0)
            setDNAntiFlap(holdOff, ceiling);
        else
            InitPrintf("DNAntiFlap(%s) is not HOLDOFF,CEILING in seconds; the guard stays off", strAntiFlap.c_str());
    }
    if (m_nSensorType != 17) m_SensorStatus = InitSuccess;
    if (!stopPTZ()) InitPrintf("stop PTZ @ISensorController::init failed");
    if (!setSensorVideoSystem(sensorType, res)) InitPrintf("init setSensorVideoSystem failed");
    enterDayMode();
    m_BaseSensorStatus = InitSuccess;
    // A replacement interrupted by a power cut leaves its temporary file; one
    // beside a file that is never written again would stay for good.
    KSFile::removeStaleTemporaries(SensorPaths::kConfigDir);
    checkSensorConfigVersion();
    initConfigFile();
    loadSchemeParamToMemory();
    if (!NotifySensorInitComplate()) InitPrintf("NotifySensorInitComplate failed");
    if (!m_DNChangeThread->start()) InitPrintf("m_DNChangeThread->start() failed");
    m_bInitialised = 1;
    ErrorPrintf("ISensorController::initSensor  success\n");
    return parsed ? 1 : 0;
}

int ISensorController::checkSensorConfigVersion() {
    int equal = 0, equal2 = 0;
    m_pFactoryFile->compareVersions(m_nConfigVersion, m_nConfigVersion2, equal, equal2);  // one read
    if (equal) {
        if (equal2) return equal2;
        KSLogger::consolePrintf("sensor configure version 2 changed delete configure files \n");
        sy_system("rm /mnt/mtd/code/config_file/sensor_Factory.cfg", 30);
        return 0;
    }
    sy_system("rm /mnt/mtd/code/config_file/sensor_Factory.cfg", 30);
    int num = 0;
    int ok = getParamSchemeNum(num);
    if (!ok || num < 1) return ok;
    char command[128];
    for (int i = 0; i < num; ++i) {
        std::snprintf(command, sizeof(command), "rm %s%d.cfg", SensorPaths::kSchemePrefix, i);
        sy_system(command, 30);
    }
    return ok;
}

int ISensorController::initConfigFile() {
    if (!DiskManager::isFileExist(SensorPaths::kSchemeStateFile)) createSensorXML();
    if (!DiskManager::isFileExist(SensorPaths::kFactoryFile)) createSensorFile_Factory();
    int num = 0;
    const int numOk = getParamSchemeNum(num);
    if (!schemeFilesExist(numOk, num)) {
        copySchemeFilesFromFactory();
        initSensorFilesHandler();
        resetSchemeFiles();
    } else {
        // The handlers come from the scheme count just read (sensorAbility.xml is
        // read once); the console shows the count line of the handlers' step as before.
        KSLogger::consolePrintf("p_nSchemeNum=%d\n", num);
        createSchemeFileHandlers(num);
    }
    if (!DiskManager::isFileExist(SensorPaths::kOldSingleFile)) return 1;
    const std::shared_ptr<SensorConfigFile> first = getSchemeFile(0);
    if (!first) return 1;
    // The old single file becomes the first scheme's file and gains the factory set's
    // parameters. The merged file replaces the scheme file (atomically) before the old
    // file is removed, so a power cut at any moment leaves either the old file, which the
    // next start merges again, or the merged scheme file; never the old file's bytes
    // unmerged under the scheme file's name.
    char command[1024];
    std::snprintf(command, sizeof(command), "mv %s.cfg %s", SensorPaths::kSchemePrefix,
                  first->getFilePath().c_str());
    KSLogger::consolePrintf("command: %s\n", command);
    std::string factoryText;
    m_pFactoryFile->readParametersFromFile(factoryText);
    std::map<int, int> factory;
    SensorParameterParser::parseSensorParameter(factoryText, factory);
    SensorConfigFile oldFile(SensorPaths::kOldSingleFile);
    if (!first->modifyIdUnEqualParametersFrom(oldFile, factory)) return 1;
    std::snprintf(command, sizeof(command), "rm %s", SensorPaths::kOldSingleFile);
    sy_system(command, 30);
    return 1;
}

int ISensorController::initSensorFilesHandler() {
    int num = 0;
    int ok = getParamSchemeNum(num);
    if (!ok) return 0;
    return createSchemeFileHandlers(num);
}

int ISensorController::createSchemeFileHandlers(int num) {
    std::vector<std::shared_ptr<SensorConfigFile>> files;
    char name[256];
    for (int i = 0; i < num; ++i) {
        std::snprintf(name, sizeof(name), "%s%d.cfg", SensorPaths::kSchemePrefix, i);
        KSLogger::consolePrintf("ISensorController::initSensorFilesHandler() szFileName(%s)\n", name);
        std::shared_ptr<SensorConfigFile> f = std::make_shared<SensorConfigFile>(name);
        f->setVersion(m_nConfigVersion);
        f->setVersion2(m_nConfigVersion2);
        files.push_back(std::move(f));
    }
    {
        KSMutexGuard lock(m_GeneralMutex);
        files.swap(m_pUsrFileOperatorList);
    }
    return 1;  // the old handlers go with `files`, or with their last user
}

int ISensorController::createSensorFile_Factory() {
    std::string list;
    if (!getAllParametersFromSensor(list)) return 0;
    return m_pFactoryFile->saveParametersToFile(list);
}

int ISensorController::setSensorConfigVersion(int version) {
    m_nConfigVersion = version;
    for (const std::shared_ptr<SensorConfigFile>& f : getSchemeFiles()) f->setVersion(version);
    m_pFactoryFile->setVersion(version);
    m_pEspecialFile->setVersion(version);
    return 1;
}

int ISensorController::setSensorConfigVersion2(int version) {
    m_nConfigVersion2 = version;
    for (const std::shared_ptr<SensorConfigFile>& f : getSchemeFiles()) f->setVersion2(version);
    m_pFactoryFile->setVersion2(version);
    m_pEspecialFile->setVersion2(version);
    return 1;
}

int ISensorController::stopPTZ() {
    if (!m_bSerialPTZModule) return 1;
    if (!m_pUART.isNull() && m_pUART->write(m_nUARTPort, "MENUON", 6) == 6) return 1;
    ErrorPrintf("stop PTZ @getAllParameters failed");
    return 0;
}

// ---- messages ----

void ISensorController::Debug_Printf(const char* fmt, ...) {
    if (m_nDebugFlag != 1) return;
    char buffer[56];
    va_list ap;
    va_start(ap, fmt);
    std::vsnprintf(buffer, sizeof(buffer), fmt, ap);  // a longer message is cut, never overflows
    va_end(ap);
    KSLogger::consolePrintf("%s\n", buffer);
}

void ISensorController::InitPrintf(const char* fmt, ...) {
    char buffer[100];
    va_list ap;
    va_start(ap, fmt);
    std::vsnprintf(buffer, sizeof(buffer), fmt, ap);
    va_end(ap);
    if (!m_pInitLog.isNull()) m_pInitLog->WriteSensorLog("SensorInit", buffer);
}

void ISensorController::ErrorPrintf(const char* fmt, ...) {
    char buffer[100];
    va_list ap;
    va_start(ap, fmt);
    std::vsnprintf(buffer, sizeof(buffer), fmt, ap);
    va_end(ap);
    if (!m_pErrorLog.isNull()) m_pErrorLog->WriteSensorLog("SensorError", buffer);
}

void ISensorController::printDebugMessage() {
    if (!DiskManager::isFileExist(SensorPaths::kDebugSign)) return;
    static std::atomic<unsigned int> s_calls{0};
    if (s_calls.fetch_add(1) % 3 != 0) return;
    KSLogger::consolePrintf("m_nParamMode(%d) m_nCurrentParamScheme(%d)\n", m_nParamMode.load(), m_nCurrentParamScheme.load());
    std::string all;
    m_pSensorLastValueCache->getAllSensorValues(all);
    KSLogger::consolePrintf("m_pSensorLastValueCache:%s \n\n\n", all.c_str());
    const std::vector<std::shared_ptr<SensorConfigFile>> files = getSchemeFiles();
    for (size_t i = 0; i < files.size(); ++i)
        KSLogger::consolePrintf("m_pUsrFileOperatorList[%d]  %s\n", static_cast<int>(i), files[i]->getFilePath().c_str());
    const std::vector<ParamScheme> schemes = getSchemeList();
    for (size_t i = 0; i < schemes.size(); ++i) {
        int enable = 0, start = 0, end = 0;
        schemes[i].getEnableFlag(enable);
        schemes[i].getStartTime(start);
        schemes[i].getEndTime(end);
        KSLogger::consolePrintf("m_pParamSchemeList[%d]: nEnable(%d) %d -- %d \n\n", static_cast<int>(i), enable, start, end);
    }
    KSLogger::consolePrintf("%s\n", std::string(75, '-').c_str());
}
