#include "app/ModuleConfigure.h"

ModuleConfigure::ModuleConfigure(int moduleId, const std::string& detail, const std::string& parameters)
    : m_nModuleId(moduleId), m_strDetail(detail), m_strParameters(parameters) {}

bool ModuleConfigure::operator==(const ModuleConfigure& o) const {
    return m_nModuleId == o.m_nModuleId && m_strDetail == o.m_strDetail && m_strParameters == o.m_strParameters &&
           m_strType == o.m_strType;
}
