#include "storage/IRPowerDefaultConfig.h"

#include <vector>

#include "platform/KSFile.h"
#include "platform/XmlConfigureItem.h"
#include "platform/XmlConfigureNode.h"

namespace {
const char kRootName[] = "IRConfig";
const char kVersionNode[] = "version";
const char kVersionProperty[] = "version";
const char kPowerNode[] = "IRPower";
}  // namespace

bool IRPowerDefaultConfig::addVersionNode(int p_nFlag, int p_nVersion) {
    XmlConfigureNode node(p_nFlag, kVersionNode);
    XmlConfigureItem item(p_nFlag);
    item.setProperty(kVersionProperty, p_nVersion);
    node.addConfigItem(item);
    return m_xmlTool.addConfigNode(node);
}

int IRPowerDefaultConfig::open(int p_nFlag, const std::string& p_strPath, int p_nMode) {
    m_xmlTool.close();
    const bool bExists = KSFile::isExist(p_strPath);
    if (bExists) return m_xmlTool.open(p_strPath, p_nFlag, p_nMode) ? 1 : 0;
    if (p_nMode != XmlConfigureTool::ModeUpdate && p_nMode != XmlConfigureTool::ModeCreate) return 0;

    // A new file: root "IRConfig" and the version known so far.
    m_xmlTool.setRootNodeName(kRootName);
    if (!m_xmlTool.open(p_strPath, p_nFlag, XmlConfigureTool::ModeCreate)) return 0;
    if (!addVersionNode(p_nFlag, m_nVersion)) {
        m_xmlTool.close();
        return 0;
    }
    m_bVersionLoaded = true;
    return 1;
}

int IRPowerDefaultConfig::close() { return m_xmlTool.close() ? 1 : 0; }

int IRPowerDefaultConfig::getVersion(int p_nFlag, const std::string& p_strPath, int& p_nVersion) {
    if (m_bVersionLoaded) {
        p_nVersion = m_nVersion;
        return Success;
    }
    if (open(p_nFlag, p_strPath, XmlConfigureTool::ModeRead) != 1) return OpenFailed;

    int nResult = Success;
    std::vector<XmlConfigureItem> items;
    XmlConfigureNode node = m_xmlTool.getConfigNode(kVersionNode);
    int nVersion = 0;
    if (node.isNull())
        nResult = NoNode;
    else if (!node.getItemList(items) || items.empty())
        nResult = NoItem;
    else if (!items.front().getProperty(kVersionProperty, nVersion))
        nResult = NoProperty;
    close();
    if (nResult != Success) return nResult;

    m_nVersion = nVersion;
    m_bVersionLoaded = true;
    p_nVersion = nVersion;
    return Success;
}

int IRPowerDefaultConfig::setVersion(int p_nFlag, const std::string& p_strPath, int p_nVersion) {
    if (m_bVersionLoaded && m_nVersion == p_nVersion) return Success;
    if (open(p_nFlag, p_strPath, XmlConfigureTool::ModeUpdate) != 1) return OpenFailed;

    m_xmlTool.removeConfigNode(kVersionNode);
    addVersionNode(p_nFlag, p_nVersion);
    m_nVersion = p_nVersion;
    m_bVersionLoaded = true;
    close();
    return Success;
}

int IRPowerDefaultConfig::load(int p_nFlag, const std::string& p_strPath, IRPowerParam& p_out) {
    if (open(p_nFlag, p_strPath, XmlConfigureTool::ModeRead) != 1) return OpenFailed;

    XmlConfigureNode node = m_xmlTool.getConfigNode(kPowerNode);
    if (node.isNull()) {
        close();
        return NoNode;
    }
    std::vector<XmlConfigureItem> items;
    if (!node.getItemList(items)) {
        close();
        return NoItem;
    }
    std::vector<IRPowerItem> rows;
    rows.reserve(items.size());
    for (const XmlConfigureItem& item : items) {
        int nZoomUp = 0;
        int nFar = 0;
        int nMid = 0;
        int nNear = 0;
        // A row missing any value spoils the whole table: nothing is handed over.
        if (!item.getProperty("zoomup", nZoomUp) || !item.getProperty("far", nFar) ||
            !item.getProperty("mid", nMid) || !item.getProperty("near", nNear)) {
            close();
            return NoProperty;
        }
        IRPowerItem row;
        row.setZoomUp(nZoomUp);
        row.setFarPower(nFar);
        row.setMidPower(nMid);
        row.setNearPower(nNear);
        rows.push_back(row);
    }
    p_out.setIrPower(rows);
    close();
    return Success;
}
