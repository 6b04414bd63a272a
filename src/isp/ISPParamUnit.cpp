#include "isp/ISPParamUnit.h"

ISPParamUnit::ISPParamUnit(const std::string& p_strName, int p_nMin, int p_nMax)
    : m_strName(p_strName), m_nMin(p_nMin), m_nMax(p_nMax) {}

bool ISPParamUnit::getName(std::string& p_strName) const {
    p_strName = m_strName;
    return true;
}

bool ISPParamUnit::getMin(int& p_nMin) const {
    p_nMin = m_nMin;
    return true;
}

bool ISPParamUnit::getMax(int& p_nMax) const {
    p_nMax = m_nMax;
    return true;
}

void ISPParamUnit::setParam(const std::string& p_strName, int p_nValue) {
    m_mapParams[p_strName] = p_nValue;
}

bool ISPParamUnit::getParam(const std::string& p_strName, int& p_nValue) const {
    std::map<std::string, int>::const_iterator it = m_mapParams.find(p_strName);
    if (it == m_mapParams.end()) {
        return false;
    }
    p_nValue = it->second;
    return true;
}
