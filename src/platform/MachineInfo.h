#pragma once
#include <string>

// The camera's identity as recorded in the machine-information file
// (ConfigFileNameConst::getMachineInfoFileName, read by SystemInfoParser).
class MachineInfo {
public:
    const std::string& getHardwareModel() const { return m_strHardwareModel; }
    const std::string& getHardwareCode() const { return m_strHardwareCode; }
    const std::string& getHardwareDescription() const { return m_strHardwareDescription; }
    const std::string& getProductModel() const { return m_strProductModel; }
    const std::string& getBarCode() const { return m_strBarCode; }
    const std::string& getProductionTime() const { return m_strProductionTime; }

    void setHardwareModel(const std::string& v) { m_strHardwareModel = v; }
    void setHardwareCode(const std::string& v) { m_strHardwareCode = v; }
    void setHardwareDescription(const std::string& v) { m_strHardwareDescription = v; }
    void setProductModel(const std::string& v) { m_strProductModel = v; }
    void setBarCode(const std::string& v) { m_strBarCode = v; }
    void setProductionTime(const std::string& v) { m_strProductionTime = v; }

private:
    std::string m_strHardwareModel;
    std::string m_strHardwareCode;
    std::string m_strHardwareDescription;
    std::string m_strProductModel;
    std::string m_strBarCode;
    std::string m_strProductionTime;
};
