#pragma once
#include <string>

// Fixed paths of the platform's configuration files (resolved under PlatformRoot
// by the readers). Formats: docs/platform-files.md.
class ConfigFileNameConst {
public:
    static std::string getMachineInfoFileName() { return "/hd1/moduleConfig/machineInfo.xml"; }
    static std::string getModuleConfigFileName() { return "/hd1/moduleConfig/moduleConfig.xml"; }
    static std::string getSensorAbilityFileName() { return "/hd1/moduleConfig/sensorAbility.xml"; }
    static std::string getSensorLanguageConfigFileName() {
        return "/hd1/moduleConfig/sensorConfig/SensorLanguageConfig.xml";
    }
};
