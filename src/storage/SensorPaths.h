#pragma once

// The fixed paths of the controller's files and markers (resolved under the
// platform root by the file layer).
namespace SensorPaths {
constexpr const char* kConfigDir = "/mnt/mtd/code/config_file/";
constexpr const char* kFactoryFile = "/mnt/mtd/code/config_file/sensor_Factory.cfg";
constexpr const char* kEspecialFile = "/mnt/mtd/code/config_file/sensor_Especial.cfg";
constexpr const char* kSchemePrefix = "/mnt/mtd/code/config_file/sensor";
constexpr const char* kOldSingleFile = "/mnt/mtd/code/config_file/sensor.cfg";
constexpr const char* kSchemeStateFile = "/mnt/mtd/code/config_file/sensor.xml";
constexpr const char* kSensorAbilityFile = "/hd1/moduleConfig/sensorAbility.xml";
constexpr const char* kErrorLog = "/mnt/mtd/log/SensorError.log";
constexpr const char* kInitLog = "/mnt/mtd/log/SensorInit.log";
constexpr const char* kDebugMarker = "/factory_setting/SensorControlDebug";
constexpr const char* kDebugSign = "/mnt/mtd/sign/Debug.sign";
constexpr const char* kISPParamFile = "/hd1/program/config/ISPParam.xml";
}  // namespace SensorPaths
