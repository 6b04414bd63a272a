#include "camsim/SerialLine.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <thread>
#include <utility>

#include "camsim/CommandLine.h"
#include "camsim/SerialTrace.h"
#include "platform/FsUtil.h"
#include "platform/ModuleParameterParser.h"
#include "platform/PlatformClock.h"
#include "platform/PlatformRoot.h"
#include "platform/TermiosUARTController.h"
#include "ascii/SimAsciiModule.h"
#include "effio/SimEffioProcessor.h"
#include "line/SimSerialPty.h"
#include "line/SimSerialUART.h"
#include "visca/SimViscaModule.h"

namespace camsim {
namespace {

// The port handed to the library: the line's port with its traffic traced.
class TracedPort : public IUARTController {
public:
    using BaudSet = std::function<void(int baud)>;
    TracedPort(IUARTController* inner, std::shared_ptr<SerialTrace> trace, BaudSet baudSet)
        : m_pInner(inner), m_pTrace(std::move(trace)), m_baudSet(std::move(baudSet)) {}

    int open(const char* device) override { return m_pInner->open(device); }
    int setParameter(int port, int baudRate, int dataBits, int stopBits, int parity) override {
        const int r = m_pInner->setParameter(port, baudRate, dataBits, stopBits, parity);
        if (r == 1 && m_baudSet) m_baudSet(baudRate);
        static const char kParity[3] = {'N', 'O', 'E'};
        char text[96];
        std::snprintf(text, sizeof(text), "== port set to %d baud, %d%c%d%s", baudRate, dataBits,
                      parity >= 0 && parity <= 2 ? kParity[parity] : '?', stopBits, r == 1 ? "" : " (refused)");
        m_pTrace->note(text);
        return r;
    }
    int write(int port, const char* data, int length) override {
        const int n = m_pInner->write(port, data, length);
        if (n > 0) m_pTrace->sent(reinterpret_cast<const unsigned char*>(data), n);
        return n;
    }
    int read(int port, char* buffer, int capacity, int timeout) override {
        const int n = m_pInner->read(port, buffer, capacity, timeout);
        if (n > 0)
            m_pTrace->received(reinterpret_cast<const unsigned char*>(buffer), n);
        else if (n == 0 && capacity > 0)
            m_pTrace->timedOut(timeout * TimeoutUnitMs);
        return n;
    }

private:
    std::unique_ptr<IUARTController> m_pInner;
    std::shared_ptr<SerialTrace> m_pTrace;
    BaudSet m_baudSet;
};

const char* const kFaultMeaning[SimSerialDevice::FaultCount] = {
    "the reply is lost",
    "stray bytes come before the reply",
    "the reply comes byte by byte with gaps",
    "the reply comes after the reader's time-out",
    "one byte of the reply is changed",
    "the module ignores the packet altogether",
    "'buffer full' comes instead of an acknowledgement",
};

std::string percentText(double p) {
    char buf[16];
    std::snprintf(buf, sizeof(buf), "%g %%", p * 100);
    return buf;
}

// "30%", "30 %" (two words), "30", "0.5%"; 0 to 100.
bool parsePercent(const std::vector<std::string>& words, size_t from, double& p) {
    std::string text;
    for (size_t i = from; i < words.size(); ++i) text += words[i];
    if (!text.empty() && text.back() == '%') text.pop_back();
    if (text.empty()) return false;
    char* end = nullptr;
    const double v = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != '\0' || !(v >= 0 && v <= 100)) return false;
    p = v / 100;
    return true;
}

}  // namespace

SerialLine::SerialLine(const SimModule& row, SimModule::Link link)
    : m_strModel(row.deviceModel != nullptr ? row.deviceModel : ""),
      m_eLink(link),
      m_pTrace(std::make_shared<SerialTrace>()) {
    if (row.makeDevice != nullptr) m_pDevice = row.makeDevice(m_strModel.c_str());
    if (m_pDevice && link == SimModule::Pty) {
        // Over the pseudo-terminal the library's reads wait in host time while
        // the device clock stands: the device answers at once, with no wire time.
        m_pDevice->setPacing(false);
        m_pDevice->setReplyDelayMs(0);
    }
}

std::unique_ptr<SimSerialDevice> SerialLine::viscaBlock(const char* model) {
    std::unique_ptr<SimViscaModule> device(new SimViscaModule());
    device->setProfile(SimViscaModule::profile(model));
    return std::unique_ptr<SimSerialDevice>(device.release());
}

std::unique_ptr<SimSerialDevice> SerialLine::asciiModule(const char* model) {
    SimAsciiModule::Profile profile = SimAsciiModule::profile(model);
    if (profile.registers.empty()) return nullptr;  // not a module it knows
    std::unique_ptr<SimAsciiModule> device(new SimAsciiModule());
    device->setProfile(profile);
    return std::unique_ptr<SimSerialDevice>(device.release());
}

std::unique_ptr<SimSerialDevice> SerialLine::effioProcessor(const char*) {
    return std::unique_ptr<SimSerialDevice>(new SimEffioProcessor());
}

void SerialLine::setTraceText(bool text) { m_pTrace->setText(text); }

void SerialLine::setTraceVerdict(std::function<std::string(const unsigned char* bytes, int length)> verdict) {
    m_pTrace->setVerdict(std::move(verdict));
}

SerialLine::~SerialLine() { close(); }

int64_t SerialLine::nowMs() { return PlatformClock::nowMs(); }

bool SerialLine::open(const ModuleConfigure& record, std::string& problem) {
    ModuleParameterParser detail;
    if (!detail.parse(record.getDetail()) || !detail.getValue("RS485", m_strDevice) || m_strDevice.empty()) {
        // The library reports the record's fault itself; the line still needs a name.
        m_strDevice = "/dev/ttyS1";
    }
    if (!m_pDevice) {
        problem = "camsim has no simulated device of the model '" + m_strModel + "' for this module's line";
        return false;
    }
    if (m_eLink == SimModule::InProcess) return true;

    m_pPty.reset(new SimSerialPty(*m_pDevice, &SerialLine::nowMs));
    if (!m_pPty->start()) {
        problem = "no pseudo-terminal could be opened for --serial pty";
        m_pPty.reset();
        return false;
    }
    if (m_strDevice[0] != '/' || m_strDevice.find("..") != std::string::npos) {
        problem = "the module record's device '" + m_strDevice + "' is not a camera path like /dev/ttyS1";
        close();
        return false;
    }
    const std::string path = PlatformRoot::resolve(m_strDevice);
    FsUtil::makeDirs(FsUtil::dirName(path));
    struct stat st {};
    if (::lstat(path.c_str(), &st) == 0) {
        // A link left by an earlier camsim is replaced; anything else is not camsim's.
        if (!S_ISLNK(st.st_mode) || ::unlink(path.c_str()) != 0) {
            problem = path + " exists and is not a link that camsim made; remove it for --serial pty";
            close();
            return false;
        }
    }
    if (::symlink(m_pPty->slaveName().c_str(), path.c_str()) != 0) {
        problem = "cannot link " + path + " to the pseudo-terminal " + m_pPty->slaveName();
        close();
        return false;
    }
    m_strLinkPath = path;
    return true;
}

SafePointer<IUARTController> SerialLine::makePort() {
    if (m_eLink == SimModule::InProcess)
        return SafePointer<IUARTController>(
            new TracedPort(new SimSerialUART(*m_pDevice, m_strDevice), m_pTrace, TracedPort::BaudSet()));
    // The far end reads the slave's settings on its own thread: a new baud holds
    // for the device before the next byte goes out, as on a wire.
    SimSerialDevice* device = m_pDevice.get();
    return SafePointer<IUARTController>(new TracedPort(new TermiosUARTController(), m_pTrace, [device](int baud) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (device->getLineBaud() != baud && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }));
}

void SerialLine::close() {
    if (m_pPty) {
        m_pPty->stop();
        m_pPty.reset();
    }
    if (!m_strLinkPath.empty()) {
        struct stat st {};
        if (::lstat(m_strLinkPath.c_str(), &st) == 0 && S_ISLNK(st.st_mode)) ::unlink(m_strLinkPath.c_str());
        m_strLinkPath.clear();
    }
}

std::string SerialLine::linkText() const {
    if (m_eLink == SimModule::InProcess) return "in-process " + m_strDevice;
    return "pseudo-terminal " + (m_pPty ? m_pPty->slaveName() : std::string("(closed)")) + " linked as " +
           m_strDevice + ", real serial port";
}

std::string SerialLine::help(bool text) {
    return std::string(
               "  fault drop|noise|split|late|corrupt|silent|full [P% | once]   the module's replies fail so (100 % when\n"
               "                              no P); fault off; fault (the faults in force)\n") +
           (text ? "  trace serial on|off         the serial traffic as text, each line with the device time\n"
                 : "  trace serial on|off         the serial traffic in hex, each line with the device time\n");
}

std::string SerialLine::faultText() const {
    std::string text;
    for (int i = 0; i < SimSerialDevice::FaultCount; ++i) {
        if (m_probability[i] <= 0) continue;
        if (!text.empty()) text += ", ";
        text += std::string(SimSerialDevice::faultName(static_cast<SimSerialDevice::Fault>(i))) + " " +
                percentText(m_probability[i]);
    }
    return text.empty() ? "none" : text;
}

bool SerialLine::command(const std::string& cmd, const std::vector<std::string>& args, FILE* out,
                         std::string& error) {
    if (cmd == "trace") {
        if (args.empty()) {
            std::fprintf(out, "trace serial %s\n", m_pTrace->enabled() ? "on" : "off");
            return true;
        }
        const std::string what = args.size() == 2 ? toLower(args[0]) : std::string();
        const std::string on = args.size() == 2 ? toLower(args[1]) : std::string();
        if (what != "serial" || (on != "on" && on != "off")) {
            error = "usage: trace serial on|off";
            return true;
        }
        m_pTrace->setEnabled(on == "on");
        std::fprintf(out, "ok: serial trace %s%s\n", on.c_str(),
                     on == "on" ? " (lines 'serial': -> written, <- read, device time HH:MM:SS.mmm)" : "");
        return true;
    }
    if (cmd != "fault") return false;
    if (!m_pDevice) {
        error = "no simulated device on the line";
        return true;
    }
    if (args.empty()) {
        std::fprintf(out, "faults: %s\n", faultText().c_str());
        return true;
    }
    const std::string kind = toLower(args[0]);
    if (kind == "off" && args.size() == 1) {
        m_pDevice->clearFaults();
        for (double& p : m_probability) p = 0;
        std::fprintf(out, "ok: no faults; the module answers every packet\n");
        return true;
    }
    int fault = -1;
    for (int i = 0; i < SimSerialDevice::FaultCount; ++i)
        if (kind == SimSerialDevice::faultName(static_cast<SimSerialDevice::Fault>(i))) fault = i;
    const std::string usage = "usage: fault drop|noise|split|late|corrupt|silent|full [P% | once], fault off";
    if (fault < 0) {
        error = "unknown fault '" + args[0] + "'; " + usage;
        return true;
    }
    const SimSerialDevice::Fault f = static_cast<SimSerialDevice::Fault>(fault);
    const char* meaning = f == SimSerialDevice::BufferFull && m_pszBusyMeaning != nullptr ? m_pszBusyMeaning
                                                                                          : kFaultMeaning[fault];
    if (args.size() == 2 && toLower(args[1]) == "once") {
        m_pDevice->injectOnce(f);
        std::fprintf(out, "ok: fault %s once: for the next packet %s\n", args[0].c_str(), meaning);
        return true;
    }
    double p = 1.0;
    if (args.size() > 1 && !parsePercent(args, 1, p)) {
        error = "'" + args[1] + "' is no share from 0% to 100%; " + usage;
        return true;
    }
    m_pDevice->setFaultProbability(f, p);
    m_probability[fault] = p;
    std::fprintf(out, "ok: fault %s %s: %s (faults in force: %s)\n", SimSerialDevice::faultName(f),
                 percentText(p).c_str(), meaning, faultText().c_str());
    return true;
}

void SerialLine::forget() { m_pTrace->take(); }

void SerialLine::report(const SimFrontEnd::Printer& print) {
    for (const std::string& line : m_pTrace->take()) print("serial", line);
}

void SerialLine::printStatus(FILE* o, const std::string& deviceCounts) const {
    long written = 0, read = 0;
    m_pTrace->counts(written, read);
    if (m_pDevice)
        std::fprintf(o, "serial line    %s; port %d baud, module %d baud\n", linkText().c_str(),
                     m_pDevice->getLineBaud(), m_pDevice->getModuleBaud());
    std::fprintf(o, "faults         %s; trace %s\n", faultText().c_str(), m_pTrace->enabled() ? "on" : "off");
    std::fprintf(o, "traffic        %ld bytes written, %ld read%s%s\n", written, read, deviceCounts.empty() ? "" : "; ",
                 deviceCounts.c_str());
}

void SerialLine::printSummary(FILE* o, const std::string& deviceCounts) const {
    long written = 0, read = 0;
    m_pTrace->counts(written, read);
    std::fprintf(o, "  serial traffic        %ld bytes written, %ld read%s%s\n", written, read,
                 deviceCounts.empty() ? "" : ", ", deviceCounts.c_str());
}

}  // namespace camsim
