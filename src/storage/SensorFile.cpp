#include "storage/SensorFile.h"

#include <cstdio>
#include <vector>

#include "platform/KSFile.h"
#include "platform/KSLogger.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/ModuleParameterParser.h"
#include "ui/SensorUIConfigFile.h"

namespace {
const char kDefaultModuleConfigFileName[] = "/hd1/moduleConfig/moduleConfig.xml";
const char kDefaultSensorConfigFilePath[] = "/hd1/moduleConfig/sensorConfig";

// Module ids of sensor modules: 1 to 99.
bool isSensorModule(int p_nModuleId) { return p_nModuleId > 0 && p_nModuleId < 100; }
}  // namespace

SensorFile::SensorFile()
    : m_strModuleConfigFileName(kDefaultModuleConfigFileName),
      m_strSensorConfigFilePath(kDefaultSensorConfigFilePath),
      m_pSensorUIConfigFile(new SensorUIConfigFile) {}

SensorFile::~SensorFile() = default;

void SensorFile::setModuleConfigFileName(const std::string& p_strFileName) {
    if (&p_strFileName != &m_strModuleConfigFileName) m_strModuleConfigFileName = p_strFileName;
}

void SensorFile::setSensorConfigFilePath(const std::string& p_strPath) {
    if (&p_strPath != &m_strSensorConfigFilePath) m_strSensorConfigFilePath = p_strPath;
}

int SensorFile::initUIInitConfigString(const std::string& p_strPath) {
    KSFile file;
    if (!file.open(p_strPath, KSFile::ModeRead)) {
        KSLogger::consolePuts("ISensorController::initUIInitConfigString error");
        return 0;
    }
    long long fileLength = file.getLength();
    if (fileLength < 0) fileLength = 0;
    std::string text(static_cast<size_t>(fileLength), '\0');
    long long readLength = fileLength > 0 ? file.read(&text[0], fileLength) : 0;
    if (readLength < fileLength) {
        KSLogger::consolePrintf("read sensorUIConfig failed,fileLength = %d,readLength = %lld\n", static_cast<int>(fileLength),
                    readLength);
        return 0;
    }
    m_strUISensorConfig.swap(text);
    return 1;
}

int SensorFile::init(const std::string& p_strModuleConfigFileName, const std::string& p_strModuleType) {
    if (!p_strModuleConfigFileName.empty()) setModuleConfigFileName(p_strModuleConfigFileName);

    std::vector<ModuleConfigure> modules;
    if (!ModuleConfigureParser::parse(m_strModuleConfigFileName, p_strModuleType, modules) || modules.empty())
        m_objSensorModule.setModuleId(0);
    for (const ModuleConfigure& module : modules) {
        if (!isSensorModule(module.getModuleId())) continue;
        m_objSensorModule.setModuleId(module.getModuleId());
        m_objSensorModule.setDetail(module.getDetail());
        m_objSensorModule.setParameters(module.getParameters());
    }

    ModuleParameterParser parameters;
    if (!parameters.parse(m_objSensorModule.getParameters())) {
        KSLogger::consolePuts("parse senseParameter failed");
        return 0;
    }
    std::string guiConfigName;
    if (!parameters.getValue("GUIConfig", guiConfigName)) KSLogger::consolePuts("get GUIConfigName from senseParameter failed");

    const std::string guiConfigPath = m_strSensorConfigFilePath + "/" + guiConfigName;
    if (initUIInitConfigString(guiConfigPath) != 1) {
        KSLogger::consolePrintf("initUIConfigString from %s failed\n", guiConfigPath.c_str());
        return 0;
    }

    std::string prefix;
    if (!parameters.getValue("Prefix", prefix)) {
        KSLogger::consolePuts("getPrefix failed ");
        return 0;
    }

    m_pSensorUIConfigFile->setUIConfigPath(m_strSensorConfigFilePath);
    m_pSensorUIConfigFile->setUIConfigPrefix(prefix);
    if (!m_pSensorUIConfigFile->init(m_objSensorModule.getDetail())) {
        KSLogger::consolePuts("m_pSensorUIConfigFile  init  failed");
        return 0;
    }
    KSLogger::consolePuts("SensorFile::init  successs !!!!");
    return 1;
}

std::string SensorFile::getUIStyleConfig() const { return m_pSensorUIConfigFile->getUIStyleConfigString(); }

std::string SensorFile::getUICommonConfig(int p_nLanguageId) const {
    return m_pSensorUIConfigFile->getUICommonConfigString(p_nLanguageId);
}

std::string SensorFile::getUILanguageConfig(int p_nLanguageId) const {
    return m_pSensorUIConfigFile->getUILanguageConfigString(p_nLanguageId);
}
