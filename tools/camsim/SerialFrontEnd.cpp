#include "camsim/SerialFrontEnd.h"

#include <cctype>

#include "camsim/CommandLine.h"
#include "core/ISensorController.h"

namespace camsim {

SerialFrontEnd::SerialFrontEnd(const SimModule& row, SimModule::Link link) : m_row(row), m_line(row, link) {}

std::string SerialFrontEnd::commandWord(const char* name) {
    std::string word;
    const std::string n = name;
    for (size_t i = 0; i < n.size(); ++i) {
        const char c = n[i];
        if (c == '_') {
            word += '-';
            continue;
        }
        const bool upper = std::isupper(static_cast<unsigned char>(c)) != 0;
        if (upper && i > 0 && !word.empty() && word.back() != '-') {
            const bool afterLower = std::islower(static_cast<unsigned char>(n[i - 1])) != 0 ||
                                    std::isdigit(static_cast<unsigned char>(n[i - 1])) != 0;
            const bool beforeLower = i + 1 < n.size() && std::islower(static_cast<unsigned char>(n[i + 1])) != 0 &&
                                     std::isupper(static_cast<unsigned char>(n[i - 1])) != 0;
            if (afterLower || beforeLower) word += '-';
        }
        word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return word;
}

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
    // One parameter that every serial module takes (sharpness, brightness) at
    // 50, 55, 60 and 50 % of its range: "(1,50)" for a range of 0-100.
    static const int kPercent[] = {50, 55, 60, 50};
    if (index < 0 || index >= 4) return std::string();
    const int value = m_nSchemeMin + (m_nSchemeMax - m_nSchemeMin) * kPercent[index] / 100;
    return "(" + std::to_string(m_nSchemeId) + "," + std::to_string(value) + ")";
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
    if (!reportsDayNight()) return;
    if (percent < NightBelow)
        setModuleNight(true);
    else if (percent >= DayFrom)
        setModuleNight(false);
}

std::string SerialFrontEnd::lightText() const {
    if (!reportsDayNight()) return "the module does not see it: it has no day/night state on the line";
    return std::string("the module switches by itself: night below ") + std::to_string(NightBelow) +
           " %, day from " + std::to_string(DayFrom) + " %; now " + (moduleNight() ? "night" : "day");
}

std::string SerialFrontEnd::pictureState() const {
    if (!reportsDayNight()) return "module without day/night state";
    return moduleNight() ? "module in night mode" : "module in day mode";
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
    m_line.printStatus(o, deviceCounts());
}

void SerialFrontEnd::printSummary(FILE* o) const { m_line.printSummary(o, deviceCounts()); }

bool SerialFrontEnd::command(const std::string& cmd, const std::vector<std::string>& args, FILE* o,
                             std::string& error) {
    return m_line.command(cmd, args, o, error);
}

}  // namespace camsim
