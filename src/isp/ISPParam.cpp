#include "isp/ISPParam.h"

#include <new>

void ISPParam::clear() {
    m_mapTables.clear();
    m_mapEnable.clear();
}

bool ISPParam::setEnableFlag(const std::string& p_strTable, bool p_bEnable) {
    m_mapEnable[p_strTable] = p_bEnable;
    return true;
}

bool ISPParam::getEnableFlag(const std::string& p_strTable, bool& p_bEnable) const {
    std::map<std::string, bool>::const_iterator it = m_mapEnable.find(p_strTable);
    if (it == m_mapEnable.end()) {
        return false;
    }
    p_bEnable = it->second;
    return true;
}

bool ISPParam::setParam(const std::string& p_strTable, const std::string& p_strBand, int p_nMin, int p_nMax,
                        const std::string& p_strName, int p_nValue) {
    // The only way to fail is running out of memory while growing the tables.
    try {
        std::vector<ISPParamUnit>& vecBands = m_mapTables[p_strTable];
        for (ISPParamUnit& objBand : vecBands) {
            if (objBand.name() == p_strBand) {
                objBand.setParam(p_strName, p_nValue);
                return true;
            }
        }
        ISPParamUnit objBand(p_strBand, p_nMin, p_nMax);
        objBand.setParam(p_strName, p_nValue);
        vecBands.push_back(objBand);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

bool ISPParam::getParam(const std::string& p_strTable, const std::string& p_strName, int p_nKey,
                        int& p_nValue) const {
    std::map<std::string, std::vector<ISPParamUnit>>::const_iterator it = m_mapTables.find(p_strTable);
    if (it == m_mapTables.end()) {
        return false;
    }
    for (const ISPParamUnit& objBand : it->second) {
        if (objBand.contains(p_nKey)) {
            return objBand.getParam(p_strName, p_nValue);
        }
    }
    return false;
}
