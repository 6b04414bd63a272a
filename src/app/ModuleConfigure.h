#pragma once
#include <string>

// The platform's record of a fitted sensor or camera module: its module id, a
// key/value detail text (e.g. "RS485=/dev/ttyS1;isInfrared=1;DNDefault=0") and
// a key/value parameter text, both read with ModuleParameterParser.
class ModuleConfigure {
public:
    ModuleConfigure() = default;
    ModuleConfigure(int moduleId, const std::string& detail, const std::string& parameters);

    int getModuleId() const { return m_nModuleId; }
    const std::string& getDetail() const { return m_strDetail; }
    const std::string& getParameters() const { return m_strParameters; }
    // The module type of the configuration file entry ("" when not given).
    const std::string& getType() const { return m_strType; }

    void setModuleId(int moduleId) { m_nModuleId = moduleId; }
    void setDetail(const std::string& detail) { m_strDetail = detail; }
    void setParameters(const std::string& parameters) { m_strParameters = parameters; }
    void setType(const std::string& type) { m_strType = type; }

    bool operator==(const ModuleConfigure& o) const;
    bool operator!=(const ModuleConfigure& o) const { return !(*this == o); }

private:
    int m_nModuleId = 0;
    std::string m_strDetail;
    std::string m_strParameters;
    std::string m_strType;
};
