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
#include "line/SimSerialDevice.h"
#include "platform/SafePointer.h"

class SimSerialPty;

namespace camsim {

class SerialTrace;

// The serial line of a simulated serial module and the simulated device at its
// far end, which the module's row chooses (SimModule::makeDevice: a VISCA block
// of a model profile, an ASCII register module, an Effio processor, ...). In-process,
// the device is the serial port itself (SimSerialUART, reads wait on the platform clock); over
// a pseudo-terminal the library's real serial port (TermiosUARTController)
// opens the record's device name, which camsim links under the root to the
// pty's slave side, and the device answers at the master side on the
// platform clock. Either way the port handed to the library is wrapped so that
// the traffic can be traced; the line owns the fault injection and the trace
// commands that every serial front end offers (`fault`, `trace serial`).
class SerialLine {
public:
    // The row's device (makeDevice for deviceModel) on a line of that link.
    SerialLine(const SimModule& row, SimModule::Link link);
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

    // The device at the far end; nullptr when the row names none it can build
    // (open() then fails).
    SimSerialDevice* device() { return m_pDevice.get(); }
    const SimSerialDevice* device() const { return m_pDevice.get(); }
    // The device as the kind a front end drives (nullptr when it is another kind).
    template <class Device>
    Device* deviceAs() {
        return dynamic_cast<Device*>(m_pDevice.get());
    }
    template <class Device>
    const Device* deviceAs() const {
        return dynamic_cast<const Device*>(m_pDevice.get());
    }

    // The device builders of the rows: the simulated VISCA block of a model
    // profile (SimViscaModule::profile), the ASCII register module of a
    // module's register file (SimAsciiModule::profile), the Effio processor.
    static std::unique_ptr<SimSerialDevice> viscaBlock(const char* model);
    static std::unique_ptr<SimSerialDevice> asciiModule(const char* model);
    static std::unique_ptr<SimSerialDevice> effioProcessor(const char* model);

    // The trace shows the traffic as text (commands of a text protocol, control
    // characters escaped) instead of hex.
    void setTraceText(bool text);
    // What each traced line of bytes says of itself (SerialTrace::setVerdict):
    // a checksummed frame's verdict.
    void setTraceVerdict(std::function<std::string(const unsigned char* bytes, int length)> verdict);
    // What the device's "full" fault does, for the fault command's messages
    // ("'buffer full' comes instead of an acknowledgement" by default).
    void setBusyMeaning(const char* meaning) { m_pszBusyMeaning = meaning; }
    // The device time of the line (platform clock).
    static int64_t nowMs();
    // "in-process" or "pseudo-terminal /dev/pts/N (linked as /dev/ttyS1)".
    std::string linkText() const;

    // `fault ...` and `trace serial ...`; false when `cmd` is neither.
    bool command(const std::string& cmd, const std::vector<std::string>& args, FILE* out, std::string& error);
    // The help lines; `text`: the trace shows text rather than hex.
    static std::string help(bool text = false);
    // The faults in force ("none", "drop 30 %, noise 100 %").
    std::string faultText() const;

    void forget();
    // Prints the trace lines since the previous call (kind "serial").
    void report(const SimFrontEnd::Printer& print);
    // The line's status lines; `deviceCounts` ends the traffic line ("the module
    // took 3 packets, carried out 2"), empty for none.
    void printStatus(FILE* out, const std::string& deviceCounts) const;
    void printSummary(FILE* out, const std::string& deviceCounts) const;

private:
    std::unique_ptr<SimSerialDevice> m_pDevice;
    std::string m_strModel;  // the row's device model, for messages
    SimModule::Link m_eLink;
    std::unique_ptr<SimSerialPty> m_pPty;
    std::string m_strDevice;   // the record's device name ("/dev/ttyS1")
    std::string m_strLinkPath; // the link under the root (pty only)
    std::shared_ptr<SerialTrace> m_pTrace;
    double m_probability[SimSerialDevice::FaultCount] = {};
    const char* m_pszBusyMeaning = nullptr;
};

}  // namespace camsim
