#include "platform/SensorLanguageConfigParser.h"

#include "platform/XmlConfigureTool.h"

bool SensorLanguageConfigParser::parse(const std::string& path, std::vector<SensorLanguageConfig>& out) {
    out.clear();
    XmlConfigureTool tool;
    if (!tool.open(path, 0, XmlConfigureTool::ModeRead)) return false;
    if (tool.getRootNodeName() != "sensorLanguageConfig") return false;
    std::vector<SensorLanguageConfig> result;
    for (const XmlConfigureNode& node : tool.getAllConfigNodeList()) {
        if (node.getName() != "language") continue;
        int id = 0;
        std::string folder;
        if (!node.getProperty("id", id) || !node.getProperty("folder", folder) || folder.empty()) return false;
        result.emplace_back(id, folder);
    }
    out.swap(result);
    return true;
}
