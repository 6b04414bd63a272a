// The parameter-scheme members of ISensorController: scheme files, their daily
// windows in memory, the scheme state file and the automatic switching step.
#include <cstdio>
#include <cstdlib>

#include "core/ISensorController.h"
#include "platform/KSDeviceTime.h"
#include "platform/KSLogger.h"
#include "platform/SySystem.h"
#include "platform/XmlConfigureTool.h"
#include "storage/ParamScheme.h"
#include "storage/SensorConfigFile.h"
#include "storage/SensorPaths.h"

namespace {
const char kSchemeNode[] = "paramScheme";
const char kSchemeIndexItem[] = "SchemeIndex";
const char kSchemeModeItem[] = "SchemeMode";

int nowOfDay() {
    KSDeviceTime t = KSDeviceTime::getCurrentTime();
    return t.m_nHour * 100 + t.m_nMinute;
}
}  // namespace

int ISensorController::getParamSchemeNum(int& p_nSchemeNum) {
    XmlConfigureTool xml;
    if (!xml.open(SensorPaths::kSensorAbilityFile, 1, XmlConfigureTool::ModeRead)) {
        KSLogger::consolePrintf("open %s failed\n", "sensorAbility.xml");
        return 0;
    }
    std::vector<XmlConfigureNode> nodes = xml.getAllConfigNodeList();
    std::vector<XmlConfigureItem> items;
    if (nodes.empty() || !nodes[0].getItemList(items) || items.empty()) return 0;
    int num = 0;
    if (!items[0].getProperty("value", num)) return 0;
    p_nSchemeNum = num;
    KSLogger::consolePrintf("p_nSchemeNum=%d\n", p_nSchemeNum);
    return 1;
}

int ISensorController::isSensorSchemeFilesExist() {
    int num = 0;
    int ok = getParamSchemeNum(num);
    return schemeFilesExist(ok, num);
}

int ISensorController::schemeFilesExist(int numOk, int num) {
    if (!numOk || num < 1) return numOk;
    char name[256];
    for (int i = 0; i < num; ++i) {
        std::snprintf(name, sizeof(name), "%s%d.cfg", SensorPaths::kSchemePrefix, i);
        if (!SensorConfigFile(name).isExist()) {
            KSLogger::consolePrintf("sensor config file %s not exist\n", name);
            return 0;
        }
    }
    return 1;
}

int ISensorController::copySchemeFilesFromFactory() {
    int num = 0;
    int ok = getParamSchemeNum(num);
    if (!ok) return 0;
    char command[1024];
    for (int i = 0; i < num; ++i) {
        std::snprintf(command, sizeof(command), "cp %s %s%d.cfg", SensorPaths::kFactoryFile,
                      SensorPaths::kSchemePrefix, i);
        sy_system(command, 30);
    }
    return 1;
}

int ISensorController::resetSchemeFiles() {
    const std::vector<std::shared_ptr<SensorConfigFile>> files = getSchemeFiles();
    for (size_t i = 0; i < files.size(); ++i) files[i]->modifyParameter(500, i == 0 ? 1 : 0);
    return 1;
}

int ISensorController::loadSchemeParamToMemory() {
    std::vector<ParamScheme*> records;
    for (const std::shared_ptr<SensorConfigFile>& file : getSchemeFiles()) {
        // The five window ids 500-504 from one read of the file; a missing one stays 0.
        static const int kWindowIds[5] = {500, 501, 502, 503, 504};
        int v[5] = {0, 0, 0, 0, 0};
        file->readParametersByIds(kWindowIds, v, 5);
        ParamScheme* s = new ParamScheme();
        s->setEnableFlag(v[0]);
        s->setStartTime(100 * v[1] + 10 * v[2]);
        s->setEndTime(100 * v[3] + 10 * v[4]);
        records.push_back(s);
    }
    KSMutexGuard lock(m_GeneralMutex);
    clearSchemeList();
    m_pParamSchemeList.swap(records);
    return 1;
}

int ISensorController::readParamByScheme(int index, std::string& text) {
    if (index == -1) return m_pFactoryFile->readParametersFromFile(text);
    const std::shared_ptr<SensorConfigFile> file = getSchemeFile(index);
    return file ? file->readParametersFromFile(text) : 0;
}

int ISensorController::findCurrentSchemeIndex() {
    const int now = nowOfDay();
    KSMutexGuard lock(m_GeneralMutex);
    for (size_t i = 0; i < m_pParamSchemeList.size(); ++i) {
        int enable = 0, start = 0, end = 0;
        m_pParamSchemeList[i]->getEnableFlag(enable);
        m_pParamSchemeList[i]->getStartTime(start);
        m_pParamSchemeList[i]->getEndTime(end);
        if (enable && start <= now && now < end) return static_cast<int>(i);
    }
    return -1;
}

int ISensorController::readCurrentParam(int& index, std::string& text) {
    index = findCurrentSchemeIndex();
    readParamByScheme(index, text);
    return 1;
}

int ISensorController::switchScheme(int index) {
    std::string text;
    if (!readParamByScheme(index, text)) return 0;
    m_nCurrentParamScheme = index;
    KSLogger::consolePrintf("switch param(p_Scheme=%d):\n %s\n", index, text.c_str());
    unsigned char resetting = m_bResetting;
    m_bResetting = 1;
    if (setParameters(text) != 0) {
        ErrorPrintf("m_pSensorLastValueCache->setSensorValues() @switchParam failed\n");
        return 0;  // automatic switching stays off until the flag is cleared
    }
    m_bResetting = resetting;
    setParamSchemeToFile(index);
    return 1;
}

int ISensorController::setParamScheme(int index) {
    KSLogger::consolePrintf("#########ISensorController::setParamScheme %d\n", index);
    flush();
    if (index == m_nCurrentParamScheme) return 1;
    return switchScheme(index);
}

int ISensorController::getParamScheme(int& index) {
    index = m_nCurrentParamScheme;
    return 1;
}

int ISensorController::setParamMode(int mode) {
    KSLogger::consolePrintf("ISensorController::setParamMode:%d\n", mode);
    if (!setParamSchemeModeToFile(mode)) {
        ErrorPrintf("setParamSchemeModeToFile @setParamMode failed");
        return 0;
    }
    m_nParamMode = mode;
    return 1;
}

int ISensorController::getParamMode(int& mode) {
    KSLogger::consolePrintf("ISensorController::getParamMode:%d\n", m_nParamMode.load());
    mode = m_nParamMode;
    return 1;
}

int ISensorController::getParamSchemeFromFile(int& index) {
    std::string value;
    if (!getValueFromParamSchemeNode(kSchemeIndexItem, value)) return 0;
    index = static_cast<int>(std::strtoll(value.c_str(), nullptr, 10));
    return 1;
}

int ISensorController::getParamSchemeModeFromFile(int& mode) {
    std::string value;
    if (!getValueFromParamSchemeNode(kSchemeModeItem, value)) return 0;
    mode = static_cast<int>(std::strtoll(value.c_str(), nullptr, 10));
    return 1;
}

int ISensorController::setParamSchemeToFile(int index) {
    char value[16];
    std::snprintf(value, sizeof(value), "%d", index);
    return setValueToParamSchemeNode(kSchemeIndexItem, value);
}

int ISensorController::setParamSchemeModeToFile(int mode) {
    char value[16];
    std::snprintf(value, sizeof(value), "%d", mode);
    return setValueToParamSchemeNode(kSchemeModeItem, value);
}

namespace {
// Opens the scheme state file and finds the first item of "paramScheme" whose
// property "name" equals `name`.
bool openSchemeItem(XmlConfigureTool& xml, int mode, const std::string& name, XmlConfigureItem& found) {
    if (!xml.open(SensorPaths::kSchemeStateFile, 1, mode)) {
        KSLogger::consolePrintf("open %s failed\n", SensorPaths::kSchemeStateFile);
        return false;
    }
    XmlConfigureNode node = xml.getConfigNode(kSchemeNode);
    std::vector<XmlConfigureItem> items;
    if (node.isNull() || !node.getItemList(items)) return false;
    for (XmlConfigureItem& item : items) {
        std::string itemName;
        if (item.getProperty("name", itemName) && itemName == name) {
            found = item;
            return true;
        }
    }
    return false;
}
}  // namespace

int ISensorController::getValueFromParamSchemeNode(const std::string& name, std::string& value) {
    XmlConfigureTool xml;
    XmlConfigureItem item;
    if (!openSchemeItem(xml, XmlConfigureTool::ModeRead, name, item)) return 0;
    return item.getProperty("value", value) ? 1 : 0;
}

int ISensorController::setValueToParamSchemeNode(const std::string& name, const std::string& value) {
    XmlConfigureTool xml;
    XmlConfigureItem item;
    if (!openSchemeItem(xml, XmlConfigureTool::ModeUpdate, name, item)) return 0;
    item.setProperty("value", value);
    return xml.close() ? 1 : 0;
}

int ISensorController::createSensorXML() {
    XmlConfigureTool xml;
    xml.setRootNodeName("sensor");
    if (!xml.open(SensorPaths::kSchemeStateFile, 1, XmlConfigureTool::ModeCreate)) {
        KSLogger::consolePrintf("open %s failed\n", SensorPaths::kSchemeStateFile);
        return 0;
    }
    XmlConfigureNode node(kSchemeNode);
    XmlConfigureItem index;
    index.setProperty("name", kSchemeIndexItem);
    index.setProperty("value", m_nCurrentParamScheme);
    XmlConfigureItem mode;
    mode.setProperty("name", kSchemeModeItem);
    mode.setProperty("value", m_nParamMode);
    node.addConfigItem(index);
    node.addConfigItem(mode);
    xml.addConfigNode(node);
    if (!xml.close()) {
        KSLogger::consolePrintf("open %s failed\n", SensorPaths::kSchemeStateFile);
        return 0;
    }
    KSLogger::consolePuts("ISensorController::createSensorXML success");
    return 1;
}

int ISensorController::getEnableParam(int& value) {
    value = 1;
    return 1;
}
int ISensorController::getParamStartTime_H(int& value) {
    value = 0;
    return 1;
}
int ISensorController::getParamStartTime_M(int& value) {
    value = 0;
    return 1;
}
int ISensorController::getParamEndTime_H(int& value) {
    value = 24;
    return 1;
}
int ISensorController::getParamEndTime_M(int& value) {
    value = 0;
    return 1;
}

int ISensorController::paramSchemeSwitchBody() {
    printDebugMessage();
    if (m_nParamMode == 0) return 0;
    if (m_bResetting) return 0;
    // The winner is found from the records in memory; a scheme file is read
    // only when a switch is due, so an idle step touches no file.
    int index = findCurrentSchemeIndex();
    if (index != m_nCurrentParamScheme) {
        ErrorPrintf("Auto switch  Scheme to:%d", index);
        if (!switchScheme(index)) ErrorPrintf("Auto switch  Scheme error \n");
    }
    return 0;
}
