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
#include "line/SimSerialPty.h"
#include "visca/SimViscaUART.h"

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

const char* const kFaultMeaning[SimViscaModule::FaultCount] = {
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

SerialLine::SerialLine(const char* viscaModel, SimModule::Link link)
    : m_eLink(link), m_pTrace(std::make_shared<SerialTrace>()) {
    m_device.setProfile(SimViscaModule::profile(viscaModel != nullptr ? viscaModel : ""));
    if (link == SimModule::Pty) {
        // Over the pseudo-terminal the library's reads wait in host time while
        // the device clock stands: the device answers at once, with no wire time.
        m_device.setPacing(false);
        m_device.setReplyDelayMs(0);
    }
}

SerialLine::~SerialLine() { close(); }

int64_t SerialLine::nowMs() { return PlatformClock::nowMs(); }

bool SerialLine::open(const ModuleConfigure& record, std::string& problem) {
    ModuleParameterParser detail;
    if (!detail.parse(record.getDetail()) || !detail.getValue("RS485", m_strDevice) || m_strDevice.empty()) {
        // The library reports the record's fault itself; the line still needs a name.
        m_strDevice = "/dev/ttyS1";
    }
    if (m_eLink == SimModule::InProcess) return true;

    m_pPty.reset(new SimSerialPty(m_device, &SerialLine::nowMs));
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
            new TracedPort(new SimViscaUART(m_device, m_strDevice), m_pTrace, TracedPort::BaudSet()));
    // The far end reads the slave's settings on its own thread: a new baud holds
    // for the device before the next byte goes out, as on a wire.
    SimViscaModule* device = &m_device;
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

std::string SerialLine::help() {
    return "  fault drop|noise|split|late|corrupt|silent|full [P% | once]   the module's replies fail so (100 % when\n"
           "                              no P); fault off; fault (the faults in force)\n"
           "  trace serial on|off         the serial traffic in hex, each line with the device time\n";
}

std::string SerialLine::faultText() const {
    std::string text;
    for (int i = 0; i < SimViscaModule::FaultCount; ++i) {
        if (m_probability[i] <= 0) continue;
        if (!text.empty()) text += ", ";
        text += std::string(SimViscaModule::faultName(static_cast<SimViscaModule::Fault>(i))) + " " +
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
    if (args.empty()) {
        std::fprintf(out, "faults: %s\n", faultText().c_str());
        return true;
    }
    const std::string kind = toLower(args[0]);
    if (kind == "off" && args.size() == 1) {
        m_device.clearFaults();
        for (double& p : m_probability) p = 0;
        std::fprintf(out, "ok: no faults; the module answers every packet\n");
        return true;
    }
    int fault = -1;
    for (int i = 0; i < SimViscaModule::FaultCount; ++i)
        if (kind == SimViscaModule::faultName(static_cast<SimViscaModule::Fault>(i))) fault = i;
    const std::string usage = "usage: fault drop|noise|split|late|corrupt|silent|full [P% | once], fault off";
    if (fault < 0) {
        error = "unknown fault '" + args[0] + "'; " + usage;
        return true;
    }
    const SimViscaModule::Fault f = static_cast<SimViscaModule::Fault>(fault);
    if (args.size() == 2 && toLower(args[1]) == "once") {
        m_device.injectOnce(f);
        std::fprintf(out, "ok: fault %s once: for the next packet %s\n", args[0].c_str(), kFaultMeaning[fault]);
        return true;
    }
    double p = 1.0;
    if (args.size() > 1 && !parsePercent(args, 1, p)) {
        error = "'" + args[1] + "' is no share from 0% to 100%; " + usage;
        return true;
    }
    m_device.setFaultProbability(f, p);
    m_probability[fault] = p;
    std::fprintf(out, "ok: fault %s %s: %s (faults in force: %s)\n", SimViscaModule::faultName(f),
                 percentText(p).c_str(), kFaultMeaning[fault], faultText().c_str());
    return true;
}

void SerialLine::forget() { m_pTrace->take(); }

void SerialLine::report(const SimFrontEnd::Printer& print) {
    for (const std::string& line : m_pTrace->take()) print("serial", line);
}

void SerialLine::printStatus(FILE* o) const {
    long written = 0, read = 0;
    m_pTrace->counts(written, read);
    std::fprintf(o, "serial line    %s; port %d baud, module %d baud\n", linkText().c_str(), m_device.getLineBaud(),
                 m_device.getModuleBaud());
    std::fprintf(o, "faults         %s; trace %s\n", faultText().c_str(), m_pTrace->enabled() ? "on" : "off");
    std::fprintf(o, "traffic        %ld bytes written, %ld read; the module took %d packets, carried out %d\n", written,
                 read, m_device.packetCount(), m_device.commandCount());
}

void SerialLine::printSummary(FILE* o) const {
    long written = 0, read = 0;
    m_pTrace->counts(written, read);
    std::fprintf(o, "  serial traffic        %ld bytes written, %ld read, %d packets at the module\n", written, read,
                 m_device.packetCount());
}

}  // namespace camsim
