#pragma once
#include <memory>
#include <string>

#include "app/ModuleConfigure.h"

class SensorUIConfigFile;

// Service object for the camera application: finds the sensor module in the
// module configuration file, keeps its record, and prepares the texts of the
// sensor's web-interface pages (the module's UI configuration file, and the
// style, common and language texts through a SensorUIConfigFile).
//
// The sensor module is the module with an id from 1 to 99 (the last one in the
// file when several are). Its parameter text names the UI configuration file
// ("GUIConfig") and the file-name prefix of its style and language files
// ("Prefix"), e.g. "GUIConfig=S2GUIConfig.xml;Prefix=S2".
class SensorFile {
public:
    SensorFile();
    ~SensorFile();
    SensorFile(const SensorFile&) = delete;
    SensorFile& operator=(const SensorFile&) = delete;

    // Default "/hd1/moduleConfig/moduleConfig.xml".
    void setModuleConfigFileName(const std::string& p_strFileName);
    // Default "/hd1/moduleConfig/sensorConfig".
    void setSensorConfigFilePath(const std::string& p_strPath);
    const std::string& getModuleConfigFileName() const { return m_strModuleConfigFileName; }
    const std::string& getSensorConfigFilePath() const { return m_strSensorConfigFilePath; }

    // Finds the sensor module and loads its texts. p_strModuleConfigFileName,
    // when not empty, replaces the module configuration file name first;
    // p_strModuleType selects the module entries of that type ("" for all).
    // 1 on success, 0 on failure (with a message); what was read before the
    // failing step is kept.
    int init(const std::string& p_strModuleConfigFileName, const std::string& p_strModuleType);

    const ModuleConfigure& getModuleConfigure() const { return m_objSensorModule; }
    const std::string& getUISensorConfig_V1() const { return m_strUISensorConfig; }
    std::string getUIStyleConfig() const;
    std::string getUICommonConfig(int p_nLanguageId) const;
    std::string getUILanguageConfig(int p_nLanguageId) const;

    // Reads the whole file into the UI sensor configuration text. 1 on success, 0 on failure.
    int initUIInitConfigString(const std::string& p_strPath);

private:
    std::string m_strModuleConfigFileName;
    std::string m_strSensorConfigFilePath;
    ModuleConfigure m_objSensorModule;
    std::string m_strUISensorConfig;
    std::unique_ptr<SensorUIConfigFile> m_pSensorUIConfigFile;
};
