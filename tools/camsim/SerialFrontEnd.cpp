#include "camsim/SerialFrontEnd.h"

#include "camsim/CommandLine.h"
#include "core/ISensorController.h"

namespace camsim {

SerialFrontEnd::SerialFrontEnd(const SimModule& row, SimModule::Link link) : m_row(row), m_line(row.viscaModel, link) {}

std::string SerialFrontEnd::name() const { return std::string(m_row.name) + " module (" + m_row.description + ")"; }

void SerialFrontEnd::attachController(SensorControllerManager& manager, ISensorController* controller) {
    setLight(m_nLight);
    m_pGpio = new SimGPIO();
    manager.setUARTController(m_line.makePort());
    manager.setGPIO(SafePointer<IGPIO>(m_pGpio));
    manager.setSensorController(SafePointer<ISensorController>(controller));
}

void SerialFrontEnd::detach() {
    m_pGpio = nullptr;
    m_line.close();
}

std::string SerialFrontEnd::schemeValues(int index) const {
    // Sharpness (0-100), which every serial module takes.
    static const char* const kValues[] = {"(1,50)", "(1,55)", "(1,60)", "(1,50)"};
    return index >= 0 && index < 4 ? kValues[index] : "";
}

const char* SerialFrontEnd::parameterName(int id) const {
    auto it = m_names.find(id);
    return it == m_names.end() ? nullptr : it->second.c_str();
}

bool SerialFrontEnd::parameterId(const std::string& name, int& id) const {
    const std::string wanted = toLower(name);
    for (const auto& kv : m_names)
        if (kv.second == wanted) {
            id = kv.first;
            return true;
        }
    return false;
}

void SerialFrontEnd::setLight(int percent) {
    m_nLight = percent;
    if (percent < NightBelow)
        m_line.device().setNight(true);
    else if (percent >= DayFrom)
        m_line.device().setNight(false);
}

std::string SerialFrontEnd::lightText() const {
    return std::string("the module switches by itself: night below ") + std::to_string(NightBelow) +
           " %, day from " + std::to_string(DayFrom) + " %; now " + (m_line.device().isNight() ? "night" : "day");
}

std::string SerialFrontEnd::pictureState() const {
    return m_line.device().isNight() ? "module in night mode" : "module in day mode";
}

void SerialFrontEnd::forget() {
    m_line.forget();
    if (m_pGpio != nullptr) m_pGpio->takeWrites();
}

void SerialFrontEnd::report(const Printer& print) {
    if (m_pGpio != nullptr) m_pGpio->takeWrites();
    m_line.report(print);
}

void SerialFrontEnd::printStatus(FILE* o) {
    printModuleStatus(o);
    std::fprintf(o, "light          %d %% (%s)\n", m_nLight, lightText().c_str());
    m_line.printStatus(o);
}

void SerialFrontEnd::printSummary(FILE* o) const { m_line.printSummary(o); }

bool SerialFrontEnd::command(const std::string& cmd, const std::vector<std::string>& args, FILE* o,
                             std::string& error) {
    return m_line.command(cmd, args, o, error);
}

}  // namespace camsim
