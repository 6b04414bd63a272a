#include "isp/ISPParamParse.h"

#include <cstdio>
#include <string>
#include <vector>

#include "platform/KSLogger.h"
#include "platform/XmlConfigureItem.h"
#include "platform/XmlConfigureNode.h"
#include "platform/XmlConfigureTool.h"

const char* const ISPParamParse::FilePath = "/hd1/program/config/ISPParam.xml";

ISPParamParse::ISPParamParse() = default;

ISPParamParse::~ISPParamParse() = default;

bool ISPParamParse::parse() {
    XmlConfigureTool objTool;
    if (!objTool.open(FilePath, 1, XmlConfigureTool::ModeRead)) {
        KSLogger::consolePrintf("open %s failed\n", "ISPParam.xml");
        return false;
    }

    // Absent properties leave the values in hand.
    XmlConfigureNode objRoot = objTool.getConfigNode("config");
    objRoot.getProperty("realTimeUpdate", m_bRealTimeUpdate);
    objRoot.getProperty("time", m_nDelayTime);

    std::vector<XmlConfigureNode> vecTables;
    objRoot.getChildNodeList(vecTables);
    if (vecTables.empty()) {
        objTool.close();
        return true;
    }

    std::vector<XmlConfigureNode> vecBands;
    std::vector<XmlConfigureItem> vecItems;
    for (const XmlConfigureNode& objTable : vecTables) {
        const std::string strTable = objTable.getName();
        bool bEnable = false;
        objTable.getProperty("enable", bEnable);
        m_objISPParam.setEnableFlag(strTable, bEnable);

        objTable.getChildNodeList(vecBands);
        for (const XmlConfigureNode& objBand : vecBands) {
            const std::string strBand = objBand.getName();
            int nMin = 0;
            int nMax = 0;
            objBand.getProperty("min", nMin);
            objBand.getProperty("max", nMax);

            objBand.getItemList(vecItems);
            for (const XmlConfigureItem& objItem : vecItems) {
                std::string strName;
                int nValue = 0;
                objItem.getProperty("name", strName);
                objItem.getProperty("value", nValue);
                if (!m_objISPParam.setParam(strTable, strBand, nMin, nMax, strName, nValue)) {
                    KSLogger::consolePrintf("m_objISPParam.setParam:%s,%s,%d,%d,%s,%d \n", strTable.c_str(), strBand.c_str(),
                           nMin, nMax, strName.c_str(), nValue);
                    return false;
                }
            }
        }
    }

    objTool.close();
    return true;
}

bool ISPParamParse::getISPParam(ISPParam& p_objParam) const {
    if (&p_objParam != &m_objISPParam) {
        p_objParam = m_objISPParam;
    }
    return true;
}
