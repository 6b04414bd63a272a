#pragma once
#include <string>

#include "platform/MachineInfo.h"

// Reads the machine-information file. Format (docs/platform-files.md): a root
// element "machineInfo" whose attributes hardwareModel, hardwareCode,
// hardwareDescription, productModel, barCode and productionTime carry the six
// strings; a missing attribute reads as "".
class SystemInfoParser {
public:
    // Reads ConfigFileNameConst::getMachineInfoFileName().
    static bool parseMachineInfo(MachineInfo& info);
    // Reads the given file. False (and `info` untouched) when the file is
    // missing, not well-formed or its root is not "machineInfo".
    static bool parseMachineInfo(const std::string& path, MachineInfo& info);
};
