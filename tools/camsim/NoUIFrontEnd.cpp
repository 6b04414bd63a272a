#include "camsim/NoUIFrontEnd.h"

#include "camsim/ViscaFrontEnd.h"
#include "drivers/serial/NoSensorUIController.h"

namespace camsim {

std::unique_ptr<SimFrontEnd> NoUIFrontEnd::create(const SimModule& row, const ModuleConfigure& record,
                                                  SimModule::Link link, std::string& problem) {
    std::unique_ptr<NoUIFrontEnd> front(new NoUIFrontEnd(row, link));
    if (!front->openLine(record, problem)) return nullptr;
    front->m_pBlock = ViscaFrontEnd::blockOf(front->m_line, problem);
    if (front->m_pBlock == nullptr) return nullptr;
    return std::unique_ptr<SimFrontEnd>(front.release());
}

void NoUIFrontEnd::attach(SensorControllerManager& manager) { attachController(manager, new NoSensorUIController()); }

std::string NoUIFrontEnd::dayNightSource() const {
    return "the module's day/night state, read by the \"getDN\" thread (81 09 04 01 FF)";
}

void NoUIFrontEnd::printModuleStatus(FILE* o) {
    std::fprintf(o, "module         no image settings; %s\n", m_pBlock->isNight() ? "night" : "day");
}

std::string NoUIFrontEnd::deviceCounts() const { return ViscaFrontEnd::blockCounts(*m_pBlock); }

}  // namespace camsim
