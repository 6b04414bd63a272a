#include "platform/ModuleConfigureParser.h"

#include "platform/XmlConfigureTool.h"

bool ModuleConfigureParser::parse(const std::string& fileName, const std::string& moduleType,
                                  std::vector<ModuleConfigure>& out) {
    out.clear();
    XmlConfigureTool tool;
    if (!tool.open(fileName, 0, XmlConfigureTool::ModeRead)) return false;
    if (tool.getRootNodeName() != "moduleConfig") return false;
    std::vector<ModuleConfigure> result;
    for (const XmlConfigureNode& node : tool.getAllConfigNodeList()) {
        if (node.getName() != "module") continue;
        int id = 0;
        if (!node.getProperty("id", id)) return false;
        std::string type, detail, parameters;
        node.getProperty("type", type);
        if (!moduleType.empty() && type != moduleType) continue;
        node.getProperty("detail", detail);
        node.getProperty("parameters", parameters);
        ModuleConfigure module(id, detail, parameters);
        module.setType(type);
        result.push_back(module);
    }
    out.swap(result);
    return true;
}
