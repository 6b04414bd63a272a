#include "camsim/AsciiFrontEnd.h"

#include <cstdio>
#include <cstdlib>

#include "camsim/CommandLine.h"

namespace camsim {
namespace {

const int kNightBit = AsciiSenseController::StatusNightBit;

// The lens operations a module's table may have, as set-only rows of these names.
const char* const kLensOps[][3] = {
    {"zoom", "tele", "ZoomTele"},   {"zoom", "wide", "ZoomWide"},   {"zoom", "stop", "ZoomStop"},
    {"focus", "near", "FocusNear"}, {"focus", "far", "FocusFar"},   {"focus", "stop", "FocusStop"},
    {"focus", "onepush", "OnePushAF"}, {"iris", "open", "IrisOpen"}, {"iris", "close", "IrisClose"},
};

std::string hex4(int value) {
    char buf[8];
    std::snprintf(buf, sizeof(buf), "%04X", static_cast<unsigned int>(value) & 0xFFFFu);
    return buf;
}

}  // namespace

AsciiFrontEnd::AsciiFrontEnd(const SimModule& row, SimModule::Link link, MakeController make, int statusRegister)
    : SerialFrontEnd(row, link), m_make(make), m_nStatusRegister(statusRegister) {
    setTraceText();
    m_line.setBusyMeaning("the module is busy and ignores the command (no echo)");
}

std::unique_ptr<SimFrontEnd> AsciiFrontEnd::build(const SimModule& row, const ModuleConfigure& record,
                                                  SimModule::Link link, std::string& problem, MakeController make,
                                                  int statusRegister) {
    std::unique_ptr<AsciiFrontEnd> front(new AsciiFrontEnd(row, link, make, statusRegister));
    if (!front->openLine(record, problem)) return nullptr;
    front->m_pModule = front->m_line.deviceAs<SimAsciiModule>();
    if (front->m_pModule == nullptr) {
        problem = "the module's line has no simulated ASCII register module at its far end";
        return nullptr;
    }
    return std::unique_ptr<SimFrontEnd>(front.release());
}

void AsciiFrontEnd::attach(SensorControllerManager& manager) {
    m_pCamera = m_make();
    nameParameters(*m_pCamera);
    m_lensOps.clear();
    for (const auto& op : kLensOps)
        for (const auto& kv : m_names)
            if (kv.second == commandWord(op[2])) m_lensOps.push_back({op[0], op[1], op[2], kv.first});
    attachController(manager, m_pCamera);
}

void AsciiFrontEnd::detach() {
    m_pCamera = nullptr;
    SerialFrontEnd::detach();
}

void AsciiFrontEnd::setModuleNight(bool night) {
    if (m_nStatusRegister == NoStatus) return;
    const uint16_t address = static_cast<uint16_t>(m_nStatusRegister);
    const int value = m_pModule->registerValue(address);
    if (value >= 0) m_pModule->setRegister(address, night ? (value | kNightBit) : (value & ~kNightBit));
}

bool AsciiFrontEnd::moduleNight() const {
    if (m_nStatusRegister == NoStatus) return false;
    const int value = m_pModule->registerValue(static_cast<uint16_t>(m_nStatusRegister));
    return value >= 0 && (value & kNightBit) != 0;
}

std::string AsciiFrontEnd::deviceCounts() const {
    return "the module took " + std::to_string(m_pModule->packetCount()) + " commands, carried out " +
           std::to_string(m_pModule->commandCount());
}

std::string AsciiFrontEnd::dayNightSource() const {
    if (m_nStatusRegister == NoStatus)
        return "the board's day/night input (isInfrared=1), at day in camsim: the module reports no day/night "
               "state";
    return "the module's status register " + hex4(m_nStatusRegister) +
           " (bit 0: night), read by the controller's worker once a second";
}

void AsciiFrontEnd::printModuleStatus(FILE* o) {
    std::fprintf(o, "module         %s register module", m_pModule->moduleName().c_str());
    if (m_nStatusRegister != NoStatus)
        std::fprintf(o, ", %s (status register %s = 0x%s)", moduleNight() ? "night" : "day",
                     hex4(m_nStatusRegister).c_str(),
                     hex4(m_pModule->registerValue(static_cast<uint16_t>(m_nStatusRegister))).c_str());
    else
        std::fprintf(o, ", no day/night state");
    std::fprintf(o, "\n");
    if (m_pCamera == nullptr || m_lensOps.empty()) return;
    // The lens registers as the module holds them, each named after its
    // command ("zoom"), or its one operation ("focus onepush").
    std::string lens;
    for (size_t i = 0; i < m_lensOps.size(); ++i) {
        const AsciiParameter* row = m_pCamera->findRow(m_lensOps[i].id);
        if (row == nullptr || (i > 0 && m_pCamera->findRow(m_lensOps[i - 1].id)->address == row->address)) continue;
        const bool shared = i + 1 < m_lensOps.size() && m_pCamera->findRow(m_lensOps[i + 1].id)->address == row->address;
        char value[8];
        std::snprintf(value, sizeof(value), "0x%02X", static_cast<unsigned int>(m_pModule->registerValue(row->address)));
        lens += (lens.empty() ? "" : ", ") + std::string(m_lensOps[i].command) +
                (shared ? "" : " " + std::string(m_lensOps[i].argument)) + " " + hex4(row->address) + " = " + value;
    }
    std::fprintf(o, "lens           %s\n", lens.c_str());
}

std::string AsciiFrontEnd::help() const {
    std::string text;
    for (const char* command : {"zoom", "focus", "iris"}) {
        std::string arguments;
        for (const LensOp& op : m_lensOps)
            if (std::string(op.command) == command) arguments += (arguments.empty() ? "" : "|") + std::string(op.argument);
        if (arguments.empty()) continue;
        std::string line = "  " + std::string(command) + " " + arguments;
        line.resize(30, ' ');
        text += line + "the module's " + command + " command (its register write)\n";
    }
    return text +
           "  register ADDR               a register of the simulated module (hex address, 0110), as it holds it\n" +
           SerialFrontEnd::help();
}

bool AsciiFrontEnd::command(const std::string& cmd, const std::vector<std::string>& args, FILE* o,
                            std::string& error) {
    if (SerialFrontEnd::command(cmd, args, o, error)) return true;
    if (cmd == "register") {
        char* end = nullptr;
        const long address = args.size() == 1 ? std::strtol(args[0].c_str(), &end, 16) : -1;
        if (args.size() != 1 || args[0].empty() || *end != '\0' || address < 0 || address > 0xFFFF) {
            error = "usage: register ADDR (4 hex digits, 0110)";
            return true;
        }
        const int value = m_pModule->registerValue(static_cast<uint16_t>(address));
        if (value < 0)
            error = "the " + m_pModule->moduleName() + " module has no register " + hex4(static_cast<int>(address));
        else
            std::fprintf(o, "register %s = 0x%02X (%d), %d writes\n", hex4(static_cast<int>(address)).c_str(),
                         static_cast<unsigned int>(value), value,
                         m_pModule->writeCount(static_cast<uint16_t>(address)));
        return true;
    }
    if (m_pCamera == nullptr) return false;
    std::string usage;
    for (const LensOp& op : m_lensOps) {
        if (cmd != op.command) continue;
        usage += (usage.empty() ? "usage: " + cmd + " " : "|") + op.argument;
        if (args.size() != 1 || toLower(args[0]) != op.argument) continue;
        const AsciiParameter* row = m_pCamera->findRow(op.id);
        if (row != nullptr && m_pCamera->setParameterToSensor(op.id, row->minValue) == 1)
            std::fprintf(o, "ok: %s %s\n", op.command, op.argument);
        else
            error = cmd + " " + op.argument + " failed";
        return true;
    }
    if (usage.empty()) return false;
    error = usage;
    return true;
}

}  // namespace camsim
