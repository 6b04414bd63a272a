#include "camsim/IspBoardFrontEnd.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "camsim/CommandLine.h"
#include "drivers/ispboard/IIPC368ZoomSensorController.h"
#include "drivers/ispboard/IT1SenseController.h"
#include "drivers/ispboard/IT1ZoomModuleSenseController.h"
#include "drivers/ispboard/KestraISPSenseController.h"
#include "drivers/ispboard/SeawolfSenseController.h"

namespace camsim {
namespace {

const char* shapeName(IspBoardTable::FrameShape shape) {
    switch (shape) {
    case IspBoardTable::ITNFrames: return "ITN";
    case IspBoardTable::SeawolfFrames: return "Seawolf";
    default: return "family";
    }
}

// The name of a parameter row as camsim's commands use it: a whole register's
// name, else the name in its refusal text ("p_nMinShutter(%d) ..." ->
// "MinShutter"), else its first register's name.
std::string rowName(const IspBoardTable& table, const IspBoardTable::Parameter& row) {
    const IspBoardTable::Register* reg = table.findRegister(row.address);
    if (row.kind != IspBoardTable::Whole && row.rangeText != nullptr && std::strncmp(row.rangeText, "p_n", 3) == 0) {
        const char* end = std::strchr(row.rangeText, '(');
        if (end != nullptr) return std::string(row.rangeText + 3, end);
    }
    return reg != nullptr ? reg->name : std::string();
}

}  // namespace

std::unique_ptr<SimSerialDevice> IspBoardFrontEnd::board(const char* model) {
    struct Board {
        const char* model;
        const IspBoardTable& (*table)();
    };
    static const Board kBoards[] = {
        {"IT1", &IT1SenseController::boardTable},
        {"IT1Zoom", &IT1ZoomModuleSenseController::boardTable},
        {"IIPC368", &IIPC368ZoomSensorController::boardTable},
        {"Kestra", &KestraISPSenseController::boardTable},
        {"ITN", &ITNSenseController::boardTable},
        {"Seawolf", &SeawolfSenseController::boardTable},
    };
    for (const Board& b : kBoards)
        if (model != nullptr && std::strcmp(model, b.model) == 0)
            return std::unique_ptr<SimSerialDevice>(new SimIspBoard(b.table()));
    return nullptr;
}

std::unique_ptr<SimFrontEnd> IspBoardFrontEnd::build(const SimModule& row, const ModuleConfigure& record,
                                                     SimModule::Link link, std::string& problem, MakeController make,
                                                     DayNight dn) {
    std::unique_ptr<IspBoardFrontEnd> front(new IspBoardFrontEnd(row, link, make, dn));
    if (!front->openLine(record, problem)) return nullptr;
    front->m_pBoard = front->m_line.deviceAs<SimIspBoard>();
    if (front->m_pBoard == nullptr) {
        problem = "the module's line has no simulated ISP board at its far end";
        return nullptr;
    }
    const IspBoardTable::FrameShape shape = front->m_pBoard->table().frames;
    front->m_line.setTraceVerdict([shape](const unsigned char* bytes, int length) {
        return std::string(SimIspBoard::checksumOk(shape, bytes, length) ? "checksum ok" : "checksum bad");
    });
    return std::unique_ptr<SimFrontEnd>(front.release());
}

void IspBoardFrontEnd::attach(SensorControllerManager& manager) {
    m_pBoardController = m_make();
    const IspBoardTable& table = m_pBoardController->getTable();
    for (size_t i = 0; i < table.parameterCount; ++i) {
        const IspBoardTable::Parameter& row = table.parameters[i];
        const std::string word = commandWord(rowName(table, row).c_str());
        int taken = 0;
        if (word.empty() || parameterId(word, taken)) continue;
        m_names[row.id] = word;
        if (word == "sharpness") setSchemeParameter(row.id, row.minValue, row.maxValue);
    }
    attachController(manager, m_pBoardController);
    setModuleNight(m_bNight);  // the GPIO controller is there now
}

void IspBoardFrontEnd::beforeStop() {
    // The board's workers wait on the clock and use the line: they end first.
    if (m_pBoardController != nullptr) m_pBoardController->stopBoardWorkers();
}

void IspBoardFrontEnd::detach() {
    m_pBoardController = nullptr;
    SerialFrontEnd::detach();
}

void IspBoardFrontEnd::setModuleNight(bool night) {
    m_bNight = night;
    if (m_eDayNight == StatusRegister)
        m_pBoard->setRegister(IBaseIT1SenseController::RegDayNightStatus, night ? 0 : 1);
    else if (m_eDayNight == GpioInput && gpio() != nullptr)
        gpio()->setLevel(GpioGroup, GpioPin, night ? 1 : 0);
}

bool IspBoardFrontEnd::moduleNight() const {
    if (m_eDayNight == StatusRegister) return m_pBoard->registerValue(IBaseIT1SenseController::RegDayNightStatus) == 0;
    return m_bNight;
}

std::string IspBoardFrontEnd::deviceCounts() const {
    return "the board carried out " + std::to_string(m_pBoard->writeCount()) + " writes and " +
           std::to_string(m_pBoard->readCount()) + " reads, refused " + std::to_string(m_pBoard->refusalCount());
}

std::string IspBoardFrontEnd::dayNightSource() const {
    switch (m_eDayNight) {
    case StatusRegister: return "the board's day/night status register, read by the controller's worker";
    case GpioInput: return "the board's day/night output on GPIO 0/5 (GPIODNLevel, day low)";
    default: return "none: the board does not report day and night";
    }
}

void IspBoardFrontEnd::printModuleStatus(FILE* o) {
    const IspBoardTable& t = m_pBoard->table();
    std::fprintf(o, "board          %s's table, %s frames, %zu registers; %s\n", t.controllerName, shapeName(t.frames),
                 t.registerCount, moduleNight() ? "night" : "day");
}

void IspBoardFrontEnd::printRegister(FILE* o, const IspBoardTable::Register& reg) const {
    const int v = m_pBoard->registerValue(reg.address);
    std::fprintf(o, "%-24s 0x%04X = %d (0x%X)%s\n", reg.name, reg.address, v, static_cast<unsigned int>(v),
                 reg.writable ? "" : ", status");
}

std::string IspBoardFrontEnd::help() const {
    return "  board [NAME|0xADDR]         the simulated board's registers: all, or one by name or address\n"
           "  board fault checksum|long|short|off   the board's next answer with a wrong checksum, longer than\n"
           "                              the reader's buffer, or cut short; off clears them\n" +
           SerialFrontEnd::help();
}

bool IspBoardFrontEnd::command(const std::string& cmd, const std::vector<std::string>& args, FILE* o,
                               std::string& error) {
    if (SerialFrontEnd::command(cmd, args, o, error)) return true;
    if (cmd == "board") return cmdBoard(args, o, error);
    return false;
}

bool IspBoardFrontEnd::cmdBoard(const std::vector<std::string>& args, FILE* o, std::string& error) {
    const IspBoardTable& t = m_pBoard->table();
    if (args.empty()) {
        for (size_t i = 0; i < t.registerCount; ++i) printRegister(o, t.registers[i]);
        return true;
    }
    if (toLower(args[0]) == "fault") {
        static const char* const kUsage = "usage: board fault checksum|long|short|off";
        if (args.size() != 2) {
            error = kUsage;
            return true;
        }
        const std::string what = toLower(args[1]);
        if (what == "off") {
            m_pBoard->clearFrameFaults();
            std::fprintf(o, "ok: no faults of the answer frame\n");
            return true;
        }
        for (int k = 0; k < SimIspBoard::FrameFaultCount; ++k) {
            const SimIspBoard::FrameFault kind = static_cast<SimIspBoard::FrameFault>(k);
            if (what == SimIspBoard::frameFaultName(kind)) {
                m_pBoard->injectFrameFault(kind);
                std::fprintf(o, "ok: the board's next answer: %s\n", SimIspBoard::frameFaultName(kind));
                return true;
            }
        }
        error = kUsage;
        return true;
    }
    if (args.size() != 1) {
        error = "usage: board [NAME|0xADDR]";
        return true;
    }
    const std::string wanted = toLower(args[0]);
    char* end = nullptr;
    const long address = std::strtol(wanted.c_str(), &end, 16);
    const bool isAddress = wanted.size() > 2 && wanted.compare(0, 2, "0x") == 0 && end != nullptr && *end == '\0';
    for (size_t i = 0; i < t.registerCount; ++i) {
        const IspBoardTable::Register& reg = t.registers[i];
        if ((isAddress && reg.address == address) || toLower(reg.name) == wanted || commandWord(reg.name) == wanted) {
            printRegister(o, reg);
            return true;
        }
    }
    error = "the board has no register " + args[0];
    return true;
}

}  // namespace camsim
