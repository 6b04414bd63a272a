// The parameter access pipeline of ISensorController: list text in, driver
// writes, the two caches, flush to the configuration files and the resets.
#include <climits>
#include <cstdio>
#include <set>

#include "core/ISensorController.h"
#include "platform/DiskManager.h"
#include "platform/KSLogger.h"
#include "platform/SensorParameterParser.h"
#include "storage/IdManager.h"
#include "storage/ParamScheme.h"
#include "storage/SensorCache.h"
#include "storage/SensorConfigFile.h"
#include "storage/SensorPaths.h"

int ISensorController::sendParameter(int id, int value) {
    if (setParameterToSensor(id, value) != 1) {
        ErrorPrintf("setParameterToSensor (%d,%d) failed", id, value);
        return -1;
    }
    switch (m_pIdManager->getIdType(id)) {
        case IdManager::TypeSetOnly:
            return SensorCache::StoreNothing;
        case IdManager::TypeKeepDefault:
            // cached on its first write only
            return SensorCache::StoreIfAbsent;
        case IdManager::TypeCommon:
        case IdManager::TypeEspecial:
            return SensorCache::StoreValue;
        default:
            ErrorPrintf("id type is unknow");
            return -1;
    }
}

int ISensorController::setParameter(int id, int value) {
    if (id == SensorConfigFile::VersionId || id == SensorConfigFile::Version2Id) return 1;
    if (m_pSensorLastValueCache->compareToCache(id, value) == SensorCache::Equal) return 1;
    const int how = sendParameter(id, value);
    if (how < 0) return 0;
    if (how == SensorCache::StoreNothing) return 1;
    if (how == SensorCache::StoreIfAbsent && m_pSensorLastValueCache->isIdExist(id)) return 1;
    if (!m_pSensorLastValueCache->setSensorValue(id, value)) {
        ErrorPrintf("setValue to cache failed");
        return 0;
    }
    return 1;
}

int ISensorController::setParameters(const std::string& list) {
    KSMutexGuard lock(m_ParamMutex);
    // The request cache holds the whole list before the first pair goes to the
    // driver (a driver reads related values through getParameter); the pairs are
    // walked from a copy, so that the driver runs without the caches' locks.
    m_pSensorCache->replaceSensorValues(list, m_requestPairs);
    // setParameter for each pair in turn, with one lock of the value cache per pair
    // that goes to the driver: that lock stores the pair's value and skips the run
    // of pairs after it that the cache holds already.
    const SensorCache::Pairs& pairs = m_requestPairs;
    size_t i = m_pSensorLastValueCache->skipEqual(pairs, 0);
    while (i < pairs.size()) {
        const int id = pairs[i].first, value = pairs[i].second;
        int how = SensorCache::StoreNothing;  // the version pairs are neither sent nor cached
        if (id != SensorConfigFile::VersionId && id != SensorConfigFile::Version2Id) {
            how = sendParameter(id, value);
            if (how < 0) {
                ErrorPrintf("setParameter (%d,%d) failed", id, value);
                return id == INT_MIN ? INT_MAX : -id;  // INT_MIN has no negation
            }
        }
        i = m_pSensorLastValueCache->storeAndSkip(id, value, how, pairs, i + 1);
    }
    return 0;
}

int ISensorController::getParameter(int id, int& value) {
    if (m_pSensorCache->getSensorValue(id, value)) return 1;
    return m_pSensorLastValueCache->getSensorValue(id, value);
}

int ISensorController::getParameters(const std::string& idList, std::string& out) {
    KSMutexGuard lock(m_ParamMutex);
    return m_pSensorLastValueCache->getSensorValues(idList, out);
}

int ISensorController::getAllParameters(std::string& out) {
    if (!stopPTZ()) {
        ErrorPrintf("stop PTZ @getAllParameters failed");
        return 0;
    }
    std::string before;
    if (!m_pSensorLastValueCache->getAllSensorValues(before)) {
        ErrorPrintf("getAllSensorValues failed");
        return 0;
    }
    std::string updated = before;
    if (!UpdateParameters(updated)) {
        ErrorPrintf("UpdateParameters() failed");
        updated = before;
    }
    {
        KSMutexGuard lock(m_ParamMutex);
        m_pSensorLastValueCache->clear();
        if (!m_pSensorLastValueCache->setSensorValues(updated)) ErrorPrintf("setSensorValues failed");
    }
    if (updated != before) {
        KSLogger::consolePuts("save sensor parameter");
        flush();
    }
    out = updated;
    return 1;
}

int ISensorController::UpdateParametersIdValue(std::string& list, int id, int value) {
    char key[16];
    std::snprintf(key, sizeof(key), "%c%d", '(', id);
    std::string::size_type start = list.find(key);
    // An absent id makes the tail lookup throw std::out_of_range, as string::substr does.
    std::string rest = list.substr(start);
    std::string::size_type close = rest.find(')');
    char item[32];
    std::snprintf(item, sizeof(item), "(%d,%d)", id, value);
    if (close == std::string::npos)
        list.replace(start, std::string::npos, item);
    else
        list.replace(start, close + 1, item);
    return 1;
}

int ISensorController::getAllParametersFromSensor(std::string& out) {
    SensorCache fresh;
    std::set<int> lists[3];
    if (!m_pIdManager->getCommonIdList(lists[0]) || !m_pIdManager->getEspecialIdList(lists[1]) ||
        !m_pIdManager->getKeepDefaultValueList(lists[2]))
        return 0;
    for (const std::set<int>& ids : lists) {
        for (int id : ids) {
            int value = 0;
            if (!getParameterFromSensor(id, value)) {
                ErrorPrintf("getParameterFromSensor (%d) failed", id);
                return 0;
            }
            fresh.setSensorValue(id, value);
        }
    }
    return fresh.getAllSensorValues(out);
}

int ISensorController::flush() {
    const int scheme = m_nCurrentParamScheme;
    const bool selected = scheme != -1;
    if (selected) {
        int enable = 0, startH = 0, startM = 0, endH = 0, endM = 0;
        m_pSensorLastValueCache->getSensorValue(500, enable);
        m_pSensorLastValueCache->getSensorValue(501, startH);
        m_pSensorLastValueCache->getSensorValue(502, startM);
        m_pSensorLastValueCache->getSensorValue(503, endH);
        m_pSensorLastValueCache->getSensorValue(504, endM);
        int start = startH * 100 + startM * 10;
        int end = endH * 100 + endM * 10;
        if (start > 2400) return 505;
        if (end > 2400) return 506;
        if (start >= end) return 507;
        if (scheme >= 0) {
            // The list may be rebuilt (loadSchemeParamToMemory) or read (the
            // worker's scheme step) meanwhile: the record is reached under the
            // general mutex, and only for the record, not for the file writes.
            KSMutexGuard lock(m_GeneralMutex);
            if (static_cast<size_t>(scheme) < m_pParamSchemeList.size()) {
                ParamScheme* s = m_pParamSchemeList[static_cast<size_t>(scheme)];
                s->setEnableFlag(enable);
                s->setStartTime(start);
                s->setEndTime(end);
            }
        }
    }
    // Ids without a value in the cache are left out of the files rather than
    // failing the whole flush.
    SensorCache::Pairs commonPairs, especialPairs;
    m_pSensorLastValueCache->collectSensorValues(m_pIdManager->commonIds(), commonPairs);
    m_pSensorLastValueCache->collectSensorValues(m_pIdManager->especialIds(), especialPairs);
    // The texts are made here, well formed, so the files take them without parsing
    // them again; they only need to know whether a version pair is among them.
    auto holdsVersion = [](const SensorCache::Pairs& pairs) {
        return SensorParameterParser::findPair(pairs, SensorConfigFile::VersionId) != nullptr ||
               SensorParameterParser::findPair(pairs, SensorConfigFile::Version2Id) != nullptr;
    };
    const bool especialVersion = holdsVersion(especialPairs);
    std::string especial;
    SensorParameterParser::createSensorParameterString(especialPairs, especial);
    if (!m_pFactoryFile->modifyParameters(especialPairs)) return 508;
    if (selected) {
        const std::shared_ptr<SensorConfigFile> file = getSchemeFile(scheme);
        if (!file) return 508;
        std::string all;
        SensorParameterParser::createSensorParameterString(commonPairs, all);
        all += especial;
        if (!file->saveParameterList(all, especialVersion || holdsVersion(commonPairs))) return 508;
    }
    return m_pEspecialFile->saveParameterList(especial, especialVersion) ? 0 : 508;
}

int ISensorController::resetParameters() {
    m_bResetting = 1;
    if (!DiskManager::isFileExist(SensorPaths::kFactoryFile)) createSensorFile_Factory();
    setParamSchemeModeToFile(0);
    setParamScheme(0);
    copySchemeFilesFromFactory();
    initSensorFilesHandler();
    resetSchemeFiles();
    loadSchemeParamToMemory();
    switchScheme(0);
    m_bResetting = 0;
    KSLogger::consolePuts("resetParameters success");
    return 1;
}

int ISensorController::resetToLastParameters() {
    m_bResetting = 1;
    std::string list;
    int readOk = readParamByScheme(m_nCurrentParamScheme, list);
    if (!readOk) {
        ErrorPrintf("read user setting failed");
        return 0;
    }
    {
        KSMutexGuard lock(m_ParamMutex);
        m_pSensorCache->clear();
        m_pSensorCache->setSensorValues(list);
    }
    if (setParameters(list) != 0) {
        ErrorPrintf("setParameters @resetToLastParameters failed");
        return 0;
    }
    if (flush() != 0) {
        ErrorPrintf("flush @resetToLastParameters false\n");
        m_bResetting = 0;
        return 0;
    }
    m_bResetting = 0;
    return readOk;
}
