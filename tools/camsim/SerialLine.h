#pragma once
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/IUARTController.h"
#include "app/ModuleConfigure.h"
#include "camsim/SimFrontEnd.h"
#include "camsim/SimModule.h"
#include "platform/SafePointer.h"
#include "visca/SimViscaModule.h"

class SimSerialPty;

namespace camsim {

class SerialTrace;

// The serial line of a simulated serial module and the VISCA device at its far
// end (SimViscaModule with the row's model profile). In-process, the device is
// the serial port itself (SimViscaUART, reads wait on the platform clock); over
// a pseudo-terminal the library's real serial port (TermiosUARTController)
// opens the record's device name, which camsim links under the root to the
// pty's slave side, and the device answers at the master side on the
// platform clock. Either way the port handed to the library is wrapped so that
// the traffic can be traced; the line owns the fault injection and the trace
// commands that every serial front end offers (`fault`, `trace serial`).
class SerialLine {
public:
    SerialLine(const char* viscaModel, SimModule::Link link);
    ~SerialLine();
    SerialLine(const SerialLine&) = delete;
    SerialLine& operator=(const SerialLine&) = delete;

    // Sets the device up for the record's line (device name, baud) and, over
    // a pseudo-terminal, starts the far end and links the device name to it.
    // False, with the reason in `problem`, when that cannot be done.
    bool open(const ModuleConfigure& record, std::string& problem);
    // The port to hand the manager (a new wrapper over the line's port).
    SafePointer<IUARTController> makePort();
    // After the manager is gone (its port closed): stops the far end and
    // removes the device link.
    void close();

    SimViscaModule& device() { return m_device; }
    const SimViscaModule& device() const { return m_device; }
    // The device time of the line (platform clock).
    static int64_t nowMs();
    // "in-process" or "pseudo-terminal /dev/pts/N (linked as /dev/ttyS1)".
    std::string linkText() const;

    // `fault ...` and `trace serial ...`; false when `cmd` is neither.
    bool command(const std::string& cmd, const std::vector<std::string>& args, FILE* out, std::string& error);
    static std::string help();
    // The faults in force ("none", "drop 30 %, noise 100 %").
    std::string faultText() const;

    void forget();
    // Prints the trace lines since the previous call (kind "serial").
    void report(const SimFrontEnd::Printer& print);
    void printStatus(FILE* out) const;
    void printSummary(FILE* out) const;

private:
    SimViscaModule m_device;
    SimModule::Link m_eLink;
    std::unique_ptr<SimSerialPty> m_pPty;
    std::string m_strDevice;   // the record's device name ("/dev/ttyS1")
    std::string m_strLinkPath; // the link under the root (pty only)
    std::shared_ptr<SerialTrace> m_pTrace;
    double m_probability[SimViscaModule::FaultCount] = {};
};

}  // namespace camsim
