#include "platform/SystemInfoParser.h"

#include "platform/ConfigFileNameConst.h"
#include "platform/XmlConfigureTool.h"

bool SystemInfoParser::parseMachineInfo(MachineInfo& info) {
    return parseMachineInfo(ConfigFileNameConst::getMachineInfoFileName(), info);
}

bool SystemInfoParser::parseMachineInfo(const std::string& path, MachineInfo& info) {
    XmlConfigureTool tool;
    if (!tool.open(path, 0, XmlConfigureTool::ModeRead)) return false;
    XmlConfigureNode root = tool.getRootNode();
    if (root.getName() != "machineInfo") return false;
    auto get = [&root](const char* name) {
        std::string v;
        root.getProperty(name, v);
        return v;
    };
    MachineInfo result;
    result.setHardwareModel(get("hardwareModel"));
    result.setHardwareCode(get("hardwareCode"));
    result.setHardwareDescription(get("hardwareDescription"));
    result.setProductModel(get("productModel"));
    result.setBarCode(get("barCode"));
    result.setProductionTime(get("productionTime"));
    info = result;
    return true;
}
