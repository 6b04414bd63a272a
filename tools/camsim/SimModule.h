#pragma once
#include <memory>
#include <string>
#include <vector>

#include "app/ModuleConfigure.h"

class SimSerialDevice;

namespace camsim {

class SimFrontEnd;

// One row of camsim's module table (SimModuleTable.cpp): a front end that
// `camsim --module NAME` fits to the simulated camera, the module record that
// the library is started with, and the simulated device behind a serial line.
struct SimModule {
    // Where a serial module's line runs: inside the process (the simulated
    // device as the serial port, on the virtual clock) or over a pseudo-terminal
    // through the real serial port (TermiosUARTController).
    enum Link { InProcess, Pty };
    // Builds the front end for the module record; nullptr, with the reason in
    // `problem`, when it cannot (no pseudo-terminal to be had, ...).
    using Factory = std::unique_ptr<SimFrontEnd> (*)(const SimModule& row, const ModuleConfigure& record, Link link,
                                                     std::string& problem);
    // Builds the simulated device at the far end of the line, as the model
    // `model` of its kind (a profile name); nullptr when it knows no such model.
    using DeviceFactory = std::unique_ptr<SimSerialDevice> (*)(const char* model);

    const char* name;         // the NAME of --module
    const char* description;  // names the module in messages ("Sony FCB-EV7310 zoom block, VISCA")
    int moduleId;             // the id of its record in the root's moduleConfig.xml
    int sensorType;           // handed to the manager's init
    // The record used when the root's moduleConfig.xml has none with moduleId.
    const char* detail;
    const char* parameters;
    Factory makeFrontEnd;
    // The simulated device on the module's serial line (SerialLine::viscaBlock,
    // asciiModule, effioProcessor, or a factory of another device kind) and the
    // model it is built as; nullptr for a module without a serial line.
    DeviceFactory makeDevice;
    const char* deviceModel;
    bool serial;  // the module talks over the serial line (--serial applies)
    // The front end's own commands, blank-separated (what its command() runs,
    // and the lens commands of the fisheye board).
    const char* commands;

    // The rows, the default (fisheye) first.
    static const std::vector<SimModule>& table();
    static const SimModule* find(const std::string& name);
    // "fisheye, fcbev7310, ..." in table order.
    static std::string names();
    // Whether `command` is one of this row's own commands.
    bool offers(const std::string& command) const;
    // The row's own commands as "zoom, focus, ...".
    std::string commandList() const;
};

}  // namespace camsim
