#include "camsim/CamSim.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <map>
#include <csignal>
#include <sstream>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "camsim/CommandLine.h"
#include "camsim/ParamNames.h"
#include "storage/SensorFile.h"
#include "camsim/RootSetup.h"
#include "platform/ConfigFileNameConst.h"
#include "platform/KSFile.h"
#include "platform/KestraTime.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/PlatformClock.h"
#include "platform/PlatformRoot.h"
#include "platform/SensorParameterParser.h"
#include "storage/ParamScheme.h"
#include "storage/SensorPaths.h"

namespace camsim {
namespace {

const int64_t kMaxRunMs = 48LL * 3600 * 1000;
const size_t kMaxCatBytes = 64 * 1024;
// How long (real time) camsim lets its threads reach their next wait on the
// virtual clock before it moves the clock on regardless. Only a stuck thread
// takes that long; a busy machine must not change what a script does.
const int kSettleMs = 30000;

std::string join(const std::vector<std::string>& words, size_t from, const char* sep) {
    std::string out;
    for (size_t i = from; i < words.size(); ++i) {
        if (i > from) out += sep;
        out += words[i];
    }
    return out;
}


std::string hhmm(int t) {
    char buf[16];
    std::snprintf(buf, sizeof(buf), "%02d:%02d", t / 100, t % 100);
    return buf;
}


// Set by Ctrl-C (SIGINT); a run stops at its next step, input reading returns.
volatile std::sig_atomic_t g_interrupted = 0;

// Lens moves (43-53) are actions, not settings: nothing of them is saved.
bool isAction(int id) { return id >= 43 && id <= 53; }

std::string windowText(int hours, int tens) {
    char buf[32];
    std::snprintf(buf, sizeof(buf), "%02d:%02d", hours, tens * 10);
    return buf;
}

}  // namespace

void CamSim::interrupt() { g_interrupted = 1; }

const char* CamSim::parameterName(int id) const { return m_pFrontEnd ? m_pFrontEnd->parameterName(id) : nullptr; }

std::string CamSim::idLabel(int id) const {
    const char* name = parameterName(id);
    return std::to_string(id) + (name != nullptr ? std::string(" (") + name + ")" : std::string());
}

std::string CamSim::describeList(const std::map<int, int>& values) const {
    std::string out;
    for (const auto& kv : values) {
        if (!out.empty()) out += ", ";
        const char* name = parameterName(kv.first);
        out += (name != nullptr ? std::string(name) : std::to_string(kv.first)) + "=" + std::to_string(kv.second);
    }
    return out;
}

bool CamSim::resolveId(const std::string& word, int& id) const {
    if (parseInt(word, id)) return true;
    return m_pFrontEnd && m_pFrontEnd->parameterId(word, id);
}

CamSim::CamSim() = default;

CamSim::~CamSim() { stop(); }

void CamSim::say(const std::string& text) {
    if (m_pCollect != nullptr) m_pCollect->push_back(text);
    std::fprintf(out(), "%s\n", printable(text).c_str());
}

void CamSim::error(const std::string& text) {
    ++m_nErrors;
    if (m_pCollect != nullptr) m_pCollect->push_back("error: " + text);
    std::fprintf(out(), "error: %s\n", printable(text).c_str());
}

bool CamSim::run(const std::string& line, std::vector<std::string>& lines, Refusal* refusal) {
    std::lock_guard<std::recursive_mutex> lock(m_clockMutex);
    const int before = m_nErrors;
    m_lastRefusal = Refusal();
    m_pCollect = &lines;
    execute(line);
    m_pCollect = nullptr;
    if (refusal != nullptr) *refusal = m_lastRefusal;
    return m_nErrors == before;
}

bool CamSim::parameterValues(std::map<int, int>& values) {
    std::lock_guard<std::recursive_mutex> lock(m_clockMutex);
    if (!m_bStarted) return false;
    std::string text;
    const bool ok = m_controller->getAllParameters(text) && SensorParameterParser::parseSensorParameter(text, values);
    m_capture.take();
    return ok;
}

CamSim::Snapshot CamSim::snapshot() {
    std::lock_guard<std::recursive_mutex> lock(m_clockMutex);
    Snapshot s;
    s.deviceTime = deviceTimeText();
    s.clockMs = PlatformClock::nowMs();
    if (!m_bStarted) return s;
    s.dayNight = m_controller->getCurrentDNState();
    s.dayNightMode = m_controller->getStoredDayNightMode();
    s.dayNightSource = m_pFrontEnd->dayNightSource();
    s.picture = m_pFrontEnd->pictureState();
    s.lamps = m_pFrontEnd->irLampsOn();
    s.scheme = m_controller->getCurrentParamSchemeIndex();
    int mode = 0;
    m_controller->getParamMode(mode);
    s.schemeAuto = mode != 0;
    s.light = m_pFrontEnd->light();
    s.lightText = m_pFrontEnd->lightText();
    s.unsaved = unsavedText();
    m_capture.take();
    return s;
}

std::string CamSim::unsavedText() const { return describeList(m_unsaved); }

void CamSim::warnUnsaved(const char* how) {
    if (m_unsaved.empty()) return;
    say(std::string("warning: ") + how + " with values set and not saved: " + unsavedText() +
        " ('flush' saves them; 'quit!' leaves without this warning)");
}

void CamSim::leave() {
    if (!m_bQuitForced && !m_bQuitWarned) warnUnsaved("leaving");
}

bool CamSim::lockRoot() {
    const std::string path = m_strRoot + "/.camsim.lock";
    m_nLockFd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (m_nLockFd < 0) {
        std::fprintf(stderr, "camsim: cannot open the lock file %s\n", path.c_str());
        return false;
    }
    if (::flock(m_nLockFd, LOCK_EX | LOCK_NB) != 0) {
        char buf[32] = {0};
        ssize_t n = ::pread(m_nLockFd, buf, sizeof(buf) - 1, 0);
        std::string holder = n > 0 ? trim(std::string(buf, static_cast<size_t>(n))) : std::string("?");
        std::fprintf(stderr,
                     "camsim: the root %s is in use by camsim process %s (lock file %s); two cameras on one root "
                     "would overwrite each other's files\n",
                     m_strRoot.c_str(), holder.c_str(), path.c_str());
        ::close(m_nLockFd);
        m_nLockFd = -1;
        return false;
    }
    const std::string pid = std::to_string(static_cast<long long>(::getpid())) + "\n";
    if (::ftruncate(m_nLockFd, 0) != 0 || ::pwrite(m_nLockFd, pid.data(), pid.size(), 0) < 0)
        std::fprintf(stderr, "camsim: cannot write the process id into %s\n", path.c_str());
    return true;
}

void CamSim::restoreSchemeChoice(bool known, int mode, int index) {
    // As the camera application does: the library's own reading of the file
    // (getParamSchemeModeFromFile, getParamSchemeFromFile) where camsim could
    // not read it before the start.
    if (!known) {
        known = m_controller->getParamSchemeModeFromFile(mode) && m_controller->getParamSchemeFromFile(index);
        m_capture.take();
    }
    if (!known) {
        error("the saved scheme mode and scheme could not be read from " + std::string(SensorPaths::kSchemeStateFile) +
              " (the library's reason: 'logs console'); 'repair' recreates the file");
        return;
    }
    if (!m_controller->setParamMode(mode)) {
        m_capture.take();
        error("the saved scheme mode " + std::to_string(mode) + " could not be restored ('repair' recreates " +
              SensorPaths::kSchemeStateFile + ")");
        return;
    }
    if (mode == 0 && !m_controller->setParamScheme(index))
        error("the saved scheme " + std::to_string(index) + " could not be restored");
    m_capture.take();
    m_pMonitor->poll();
    say(std::string("camsim: restored from sensor.xml: scheme mode ") + (mode != 0 ? "auto" : "manual") +
        (mode == 0 ? ", scheme " + std::to_string(index) : std::string()));
}

std::string CamSim::deviceTimeText() const {
    struct tm now {};
    PlatformClock::localTime(now);
    char buf[48];
    std::snprintf(buf, sizeof(buf), "%04d-%02d-%02d %02d:%02d:%02d", now.tm_year + 1900, now.tm_mon + 1, now.tm_mday,
                  now.tm_hour, now.tm_min, now.tm_sec);
    return buf;
}

bool CamSim::start(const Options& options) {
    m_options = options;
    m_pModule = SimModule::find(options.module);
    if (m_pModule == nullptr) {
        std::fprintf(stderr, "camsim: unknown module '%s'; the modules are %s\n", options.module.c_str(),
                     SimModule::names().c_str());
        return false;
    }
    if (options.link == SimModule::Pty && !m_pModule->serial) {
        std::fprintf(stderr, "camsim: --serial pty is for the modules on a serial line; %s is not one\n",
                     m_pModule->name);
        return false;
    }
    std::string problem;
    if (!prepareRootDirectory(options.root, m_strRoot, problem)) {
        std::fprintf(stderr, "camsim: %s\n", problem.c_str());
        return false;
    }
    if (!lockRoot()) return false;
    PlatformRoot::set(m_strRoot);

    // The camera's clock is virtual: it starts at the host's local time (or the
    // given time of day) and moves when the simulator moves it. Its threads run
    // one at a time, so they share one CPU (SimScheduling.h says why).
    m_pScheduling.reset(new SimScheduling());
    time_t now = std::time(nullptr);
    struct tm local {};
    localtime_r(&now, &local);
    PlatformClock::useVirtual(static_cast<int64_t>(now) + local.tm_gmtoff);
    if (options.startHour >= 0) PlatformClock::setTimeOfDay(options.startHour, options.startMinute, options.startSecond);

    if (options.capture) m_capture.start();
    m_capture.setEcho(options.verbose);

    std::vector<std::string> written;
    bool fresh = false;
    if (!installDefaults(written, fresh, problem, options.resetRoot)) {
        error(problem);
        return false;
    }
    if (!checkSampleFiles(problem)) {
        error(problem + "; 'camsim --root " + m_strRoot +
              " --reset-root' rewrites camsim's sample files (the library's own files are kept)");
        return false;
    }
    say("camsim: root " + m_strRoot +
        (fresh ? " (new: fisheye sample configuration installed, " + std::to_string(written.size()) + " files)"
               : options.resetRoot ? " (existing, camsim's sample files rewritten: " + std::to_string(written.size()) + ")"
               : written.empty() ? " (existing)"
                                 : " (existing, " + std::to_string(written.size()) + " missing files restored)"));

    std::vector<ModuleConfigure> modules;
    if (!ModuleConfigureParser::parse(ConfigFileNameConst::getModuleConfigFileName(), "", modules) || modules.empty()) {
        error("no module in " + ConfigFileNameConst::getModuleConfigFileName() + " of the root");
        return false;
    }
    // The root's record of the module; the default module takes the root's
    // first record when there is none of its id (a root set up for another
    // board), any other module camsim's own record.
    const bool isDefault = m_pModule == &SimModule::table().front();
    ModuleConfigure module(m_pModule->moduleId, m_pModule->detail, m_pModule->parameters);
    bool ownRecord = !isDefault;
    if (isDefault) module = modules.front();
    for (const ModuleConfigure& m : modules)
        if (m.getModuleId() == m_pModule->moduleId) {
            module = m;
            ownRecord = false;
            break;
        }
    m_pFrontEnd = m_pModule->makeFrontEnd(*m_pModule, module, options.link, problem);
    if (!m_pFrontEnd) {
        error(problem);
        return false;
    }
    m_pFrontEnd->setLight(options.light);
    m_pManager.reset(new SensorControllerManager());
    m_pFrontEnd->attach(*m_pManager);
    m_pMonitor.reset(new EventMonitor(*m_pFrontEnd));
    m_pMonitor->setOutput(out());
    m_pMonitor->prime();

    say("camsim: " + deviceTimeText() + "  starting module " + std::to_string(module.getModuleId()) + " (detail \"" +
        module.getDetail() + "\")");
    if (!isDefault)
        say("camsim: front end: " + m_pFrontEnd->name() +
            (ownRecord ? "; the root's moduleConfig.xml has no module " + std::to_string(m_pModule->moduleId) +
                             ", camsim's record is used (parameters \"" + module.getParameters() + "\")"
                       : std::string()));
    // init waits on the platform clock (the ISP settles 3 s after the video
    // system is set). It runs on this thread, which drives the virtual clock:
    // its waits are the passing of that time, released in order, so the
    // start-up takes the same virtual time however busy the machine is.
    // An empty or foreign factory file makes the library rebuild every scheme
    // from factory values; say so, it is not a routine start.
    std::string factory;
    const bool factoryThere = !fresh && KSFile::readAll(SensorPaths::kFactoryFile, factory);
    // The library's first cycle rewrites sensor.xml with what is in force
    // then: the saved choice is read before.
    int savedMode = 1, savedIndex = 0;
    const bool haveChoice = !fresh && readSchemeChoice(savedMode, savedIndex);
    m_pManager->init(m_pModule->sensorType, VideoResolution(1920, 1080), module);
    m_controller = m_pManager->getSensorController();
    std::vector<std::string> initLines = m_capture.take();
    if (m_controller.isNull() || m_controller->getSensorStatus() != ISensorController::InitSuccess) {
        const std::string reason = refusalReason(initLines);
        error("the camera did not come up with module " + std::to_string(module.getModuleId()) +
              (isDefault ? " (the fisheye board is module 88; --module names the others)"
                         : " (" + m_pFrontEnd->name() + ")") +
              (reason.empty() ? std::string() : ": " + reason) + "; see " + SensorPaths::kErrorLog);
        return false;
    }
    m_bStarted = true;
    // The day/night worker (and the front end's own threads) have run their first cycle.
    PlatformClock::waitForSleepers(1 + m_pFrontEnd->clockThreads(), kSettleMs);
    // A fresh root's schemes are set up below: the factory window in force now
    // is no news.
    m_pMonitor->setController(m_controller, !fresh);
    m_pMonitor->poll();
    std::string rebuilt;
    for (const std::string& f : m_pMonitor->lastFiles())
        if (f.find("/sensor") != std::string::npos && f.size() > 4 && f.compare(f.size() - 4, 4, ".cfg") == 0)
            rebuilt += (rebuilt.empty() ? "" : ", ") + f.substr(f.rfind('/') + 1);
    if (factoryThere && rebuilt.find("sensor_Factory.cfg") != std::string::npos)
        say(std::string("warning: ") + SensorPaths::kFactoryFile +
            (trim(factory).empty() ? " was empty" : " has a version stamp that is not this library's") +
            ": the library took it for another version and rebuilt the factory set and the scheme files from "
            "factory values (" + rebuilt + "); values saved before and camsim's scheme windows are gone");

    if (fresh)
        configureSchemes();
    else
        restoreSchemeChoice(haveChoice, savedMode, savedIndex);

    ISensorController* controller = m_controller.get();
    m_pIspThread.reset(new GThread(
        [controller] {
            const int64_t before = PlatformClock::nowMs();
            controller->ISPParamBody();
            // A pass that returned early must not spin.
            if (PlatformClock::nowMs() == before) KestraTime(1, 0).wait();
        },
        "ISPParamThread"));
    m_nSleepers = 1 + m_pFrontEnd->clockThreads();
    if (m_pIspThread->start()) ++m_nSleepers;
    PlatformClock::waitForSleepers(m_nSleepers, kSettleMs);
    m_capture.take();
    say("camsim: camera up; type 'help' for the commands");
    if (options.ticker) m_ticker = std::thread([this] { tickerLoop(); });
    return true;
}

void CamSim::stop() {
    if (m_ticker.joinable()) {
        m_bTickerStop = true;
        m_ticker.join();
    }
    if (m_pIspThread) {
        m_pIspThread->stop();
        m_pIspThread.reset();
    }
    if (m_pFrontEnd && m_pManager) m_pFrontEnd->beforeStop();
    m_controller.reset();
    m_pManager.reset();  // stops the day/night worker, releases the GPIO and serial port
    m_pMonitor.reset();
    if (m_pFrontEnd) m_pFrontEnd->detach();
    if (m_bStarted || m_capture.isActive()) {
        m_capture.stop();
        PlatformClock::useReal();
    }
    m_bStarted = false;
    m_pScheduling.reset();
    if (m_nLockFd >= 0) {
        ::close(m_nLockFd);
        m_nLockFd = -1;
    }
}

void CamSim::configureSchemes() {
    struct Scheme {
        int index;
        const char* window;  // parameter list of ids 500-504
        const char* label;
    };
    const Scheme schemes[] = {
        {0, "(500,1)(501,6)(502,0)(503,18)(504,0)", "day 06:00-18:00"},
        {1, "(500,1)(501,18)(502,0)(503,24)(504,0)", "evening 18:00-24:00"},
        {2, "(500,1)(501,0)(502,0)(503,6)(504,0)", "night 00:00-06:00"},
        {3, "(500,0)(501,0)(502,0)(503,24)(504,0)", "spare, off"},
    };
    say("camsim: first start: setting up " + std::to_string(kSchemeCount) + " parameter schemes");
    m_pMonitor->setQuiet(true);
    for (const Scheme& s : schemes) {
        if (static_cast<size_t>(s.index) >= m_controller->getSchemeFiles().size()) break;
        m_controller->setParamScheme(s.index);
        m_controller->setParameters(std::string(s.window) + m_pFrontEnd->schemeValues(s.index));
        int r = m_controller->flush();
        say(std::string("  scheme ") + std::to_string(s.index) + ": " + s.label +
            (r == 0 ? "" : " (flush failed: " + std::to_string(r) + ")"));
    }
    m_controller->setParamMode(1);
    m_pMonitor->poll();
    m_pMonitor->setQuiet(false);
    // One cycle of the worker puts the scheme of the present time in force.
    advance(1000, true);
    m_capture.take();
}

void CamSim::tickerLoop() {
    while (!m_bTickerStop.load()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
        std::lock_guard<std::recursive_mutex> lock(m_clockMutex);
        if (m_bTickerStop.load()) break;
        const int before = m_pMonitor->printedLines();
        advance(250, true);
        // Lines printed while the user is at the prompt: give the prompt back.
        if (m_bAtPrompt.load() && m_pMonitor->printedLines() != before) {
            std::fprintf(out(), "camsim> ");
            std::fflush(out());
        }
    }
}

void CamSim::advance(int64_t ms, bool printEvents, bool interruptible) {
    std::lock_guard<std::recursive_mutex> lock(m_clockMutex);
    m_pMonitor->setQuiet(!printEvents);
    // A run that takes longer than a second of real time shows its progress,
    // on a terminal only: a script's output stays the same wherever it goes.
    const bool terminal = printEvents && ::isatty(::fileno(out())) == 1;
    const auto began = std::chrono::steady_clock::now();
    auto drawn = began;
    for (int64_t left = ms; left > 0;) {
        if (interruptible && g_interrupted) {
            g_interrupted = 0;
            clearProgress();
            say("interrupted (Ctrl-C) after " + std::to_string((ms - left) / 1000) + " s of " +
                std::to_string(ms / 1000) + " s; device time " + deviceTimeText());
            if (!m_bFromInput) m_bStopScript = true;
            break;
        }
        int64_t step = left < 1000 ? left : 1000;
        PlatformClock::waitForSleepers(m_nSleepers, kSettleMs);
        PlatformClock::advanceMs(step);
        left -= step;
        m_pMonitor->poll();
        if (terminal && (ms - left) % 60000 == 0) {
            const auto now = std::chrono::steady_clock::now();
            if (now - began > std::chrono::seconds(1) && now - drawn > std::chrono::milliseconds(200)) {
                drawProgress(ms - left, ms);
                drawn = now;
            }
        }
    }
    clearProgress();
    m_pMonitor->setQuiet(false);
}

void CamSim::drawProgress(int64_t doneMs, int64_t totalMs) {
    const long long done = doneMs / 1000, total = totalMs / 1000;
    std::fprintf(out(), "\r\033[K  run: %lldh%02lldm%02llds of %lldh%02lldm%02llds (%lld %%), device time %s", done / 3600,
                 done / 60 % 60, done % 60, total / 3600, total / 60 % 60, total % 60, done * 100 / total,
                 deviceTimeText().c_str());
    std::fflush(out());
    m_bProgressShown = true;
    m_pMonitor->setLineToClear(true);
}

void CamSim::clearProgress() {
    if (!m_bProgressShown) return;
    std::fprintf(out(), "\r\033[K");
    std::fflush(out());
    m_bProgressShown = false;
    m_pMonitor->setLineToClear(false);
}

std::string CamSim::refusalReason(const std::vector<std::string>& lines) const {
    for (const std::string& l : lines)
        if (l.find("out of range") != std::string::npos || l.find("Error:") != std::string::npos ||
            l.find("CheckKSEWFIResult") != std::string::npos || l.find("DTNTIME == NTDTIME") != std::string::npos)
            return trim(l);
    // A serial transaction that failed: the operation's line and the last attempt's.
    std::string operation, attempt;
    for (const std::string& l : lines) {
        if (l.find(" error,value is ") != std::string::npos || l.find("szRecvBuf error") != std::string::npos)
            operation = trim(l);
        if (l.find(" times) @") != std::string::npos) {
            attempt = trim(l);
            const size_t send = attempt.rfind(",send:");
            if (send != std::string::npos) attempt.erase(send);
        }
    }
    if (!operation.empty() || !attempt.empty())
        return operation + (operation.empty() || attempt.empty() ? "" : " after ") + attempt;
    for (const std::string& l : lines)
        if (l.find("id type is unknow") != std::string::npos) return "not a parameter of this camera";
    for (const std::string& l : lines)
        if (l.find("failed") != std::string::npos && l.find("setParameter") == std::string::npos) return trim(l);
    return std::string();
}

bool CamSim::applyList(const std::string& list, const std::string& what) {
    std::map<int, int> values;
    SensorParameterParser::parseSensorParameter(list, values);
    m_capture.take();
    int r = m_controller->setParameters(list);
    std::vector<std::string> lines = m_capture.take();
    if (r == 0) {
        for (const auto& kv : values)
            if (!isAction(kv.first)) m_unsaved[kv.first] = kv.second;
        say("ok: " + (what.empty() ? describeList(values) : what));
        m_pMonitor->poll();
        return true;
    }
    const int id = -r;
    std::string text = "parameter " + idLabel(id);
    auto it = values.find(id);
    if (it != values.end()) text += " = " + std::to_string(it->second);
    text += " refused";
    std::string reason = refusalReason(lines);
    if (!reason.empty()) text += ": " + reason;
    m_lastRefusal.id = id;
    m_lastRefusal.reason = reason;
    // The library applies a list in ascending id order and stops at the first
    // value it refuses.
    std::map<int, int> applied, notApplied;
    for (const auto& kv : values) (kv.first < id ? applied : notApplied)[kv.first] = kv.second;
    for (const auto& kv : applied)
        if (!isAction(kv.first)) m_unsaved[kv.first] = kv.second;
    if (values.size() > 1)
        text += "; applied: " + (applied.empty() ? std::string("none") : describeList(applied)) +
                "; not applied: " + describeList(notApplied);
    error(text);
    m_pMonitor->poll();
    return false;
}

bool CamSim::execute(const std::string& rawLine) {
    const std::string line = trim(rawLine);
    if (line.empty() || line[0] == '#') return true;
    std::vector<std::string> words = splitWords(line);
    if (words.empty()) return true;
    const std::string cmd = toLower(words[0]);
    std::vector<std::string> args(words.begin() + 1, words.end());
    if (cmd == "quit!" || cmd == "exit!") {
        m_bQuitForced = true;
        return false;
    }
    if (cmd == "quit" || cmd == "exit") {
        // At the prompt, values set and not saved hold the first quit back.
        if (m_bPrompt && !m_unsaved.empty() && !m_bQuitWarned) {
            m_bQuitWarned = true;
            say("values set and not saved: " + unsavedText() +
                " ('flush' saves them; 'quit' again or 'quit!' leaves without saving)");
            return true;
        }
        if (!m_bQuitWarned) warnUnsaved("leaving");
        m_bQuitWarned = true;
        return false;
    }
    m_bQuitWarned = false;

    std::lock_guard<std::recursive_mutex> lock(m_clockMutex);
    m_capture.take();
    try {
        if (cmd == "help" || cmd == "?")
            cmdHelp(args);
        else if (cmd == "echo")
            say(line.size() > 5 ? line.substr(5) : std::string());
        else if (!m_bStarted)
            error("the camera is not running");
        else if (cmd == "set")
            cmdSet(args);
        else if (cmd == "get")
            cmdGet(args);
        else if (cmd == "show" || cmd == "all")
            cmdShow();
        else if (cmd == "flush" || cmd == "save")
            cmdFlush();
        else if (cmd == "reset")
            cmdReset(args);
        else if (cmd == "scheme")
            cmdScheme(args);
        else if (cmd == "daynight" || cmd == "dn")
            cmdDayNight(args);
        else if (cmd == "light")
            cmdLight(args);
        else if (cmd == "time")
            cmdTime(args);
        else if (cmd == "run" || cmd == "wait")
            cmdRun(args);
        else if (cmd == "status")
            cmdStatus();
        else if (cmd == "files")
            cmdFiles();
        else if (cmd == "cat")
            cmdCat(args);
        else if (cmd == "logs" || cmd == "log")
            cmdLogs(args);
        else if (cmd == "verbose")
            cmdVerbose(args);
        else if (cmd == "ui")
            cmdUi(args);
        else if (cmd == "repair")
            cmdRepair();
        else
            cmdFrontEnd(cmd, args, words[0]);
    } catch (const std::exception& e) {
        error(std::string("command failed inside the library: ") + e.what());
    }
    std::fflush(out());
    return true;
}

void CamSim::cmdFrontEnd(const std::string& cmd, const std::vector<std::string>& args, const std::string& word) {
    m_pMonitor->poll();
    m_capture.take();
    std::string problem;
    if (m_pFrontEnd->command(cmd, args, out(), problem)) {
        if (!problem.empty()) {
            // The library's reason, from its console lines of this command.
            const std::string reason = refusalReason(m_capture.take());
            error(problem + (reason.empty() ? std::string() : ": " + reason));
        }
        m_pMonitor->poll();
        return;
    }
    if (m_pFrontEnd->lensByParameters() && (cmd == "zoom" || cmd == "focus" || cmd == "lens")) {
        cmdLens(cmd, args);
        return;
    }
    for (const SimModule& row : SimModule::table()) {
        if (&row == m_pModule || !row.offers(cmd)) continue;
        error("the " + m_pFrontEnd->name() + " has no '" + cmd + "' command (it is one of the " + row.name +
              " module's); its own commands: " + m_pModule->commandList() + " (type 'help')");
        return;
    }
    error("unknown command '" + word + "' (type 'help')");
}

bool CamSim::echoAndExecute(const std::string& command) {
    const std::string t = trim(command);
    if (t.empty() || t[0] == '#') return true;
    if (toLower(t.substr(0, 4)) != "echo") {
        struct tm now {};
        PlatformClock::localTime(now);
        std::fprintf(out(), "[%02d:%02d:%02d] > %s\n", now.tm_hour, now.tm_min, now.tm_sec, printable(t).c_str());
    }
    return execute(t) && !m_bStopScript;
}

void CamSim::runScript(std::istream& in) {
    std::string line;
    while (!m_bStopScript && std::getline(in, line)) {
        // A comment line is one whole; otherwise ';' separates commands, as with -c.
        if (!trim(line).empty() && trim(line)[0] == '#') continue;
        for (const std::string& command : splitCommands(line)) {
            if (!echoAndExecute(command)) return;
            if (m_bStopScript) return;
        }
    }
}

namespace {
// One line of standard input: 1, or 0 at its end, or -1 when Ctrl-C came.
int readInputLine(std::string& buffer, std::string& line) {
    for (;;) {
        size_t nl = buffer.find('\n');
        if (nl != std::string::npos) {
            line = buffer.substr(0, nl);
            buffer.erase(0, nl + 1);
            return 1;
        }
        if (g_interrupted) {
            g_interrupted = 0;
            buffer.clear();
            return -1;
        }
        char chunk[512];
        ssize_t n = ::read(STDIN_FILENO, chunk, sizeof(chunk));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            if (buffer.empty()) return 0;
            line.swap(buffer);
            buffer.clear();
            return 1;
        }
        buffer.append(chunk, static_cast<size_t>(n));
    }
}
}  // namespace

void CamSim::runInput(bool prompt) {
    m_bPrompt = prompt;
    m_bFromInput = true;
    std::string buffer, line;
    for (;;) {
        if (prompt) {
            std::fprintf(out(), "camsim> ");
            std::fflush(out());
        }
        m_bAtPrompt = true;
        const int got = readInputLine(buffer, line);
        m_bAtPrompt = false;
        if (got < 0) {
            // Ctrl-C while camsim waits for a command: leave.
            std::fprintf(out(), "\n");
            say("camsim: Ctrl-C at the prompt: leaving");
            break;
        }
        if (got == 0) break;
        bool more = true;
        if (!trim(line).empty() && trim(line)[0] == '#') continue;
        for (const std::string& command : splitCommands(line)) {
            more = prompt ? execute(command) : echoAndExecute(command);
            if (!more) break;
        }
        if (!more) break;
    }
    if (prompt) std::fprintf(out(), "\n");
}

void CamSim::cmdHelp(const std::vector<std::string>& args) {
    if (!args.empty() && toLower(args[0]) == "params") {
        say("parameters (name or number):");
        for (int id = 1; id <= 504; ++id) {
            const char* name = parameterName(id);
            if (name != nullptr) std::fprintf(out(), "  %3d  %s\n", id, name);
            if (id == 99) id = 499;  // the module ids end below 100; the scheme window is 500-504
        }
        return;
    }
    say("commands:\n"
        "  set (1,50)(3,40)            set parameters as a list text\n"
        "  set brightness=50 3 40      ... or by name/number and value\n"
        "  get brightness 3 ...        read parameters (the values in force)\n"
        "  show | all                  every parameter (getAllParameters)\n"
        "  flush                       save the values in force to the files\n"
        "  reset | reset last          factory values to every scheme | back to the saved scheme\n"
        "  scheme                      list the parameter schemes and their windows\n"
        "  scheme N | auto | manual    choose scheme N (switches to manual) | scheme mode\n"
        "  scheme window HH:MM-HH:MM   daily window of the active scheme (minutes in tens); scheme on|off\n"
        "  daynight auto|day|night|time|sensor      day/night mode (0-4)\n"
        "  daynight times HH:MM HH:MM  day-to-night and night-to-day times of the timetable mode\n"
        "  light N                     light level of the scene, 0 (dark) to 100 (bright): ISP scene level and ADC\n"
        "  time HH:MM[:SS]             set the device time of day (virtual clock)\n"
        "  run N[ms|s|m|h|d]           let the camera run for that long on the virtual clock (1.5s, 1 s, 1d)\n"
        "  status                      day/night state, IR-cut and LED levels, scheme, last ISP commands\n"
        "  files | cat PATH            the files under the root | one of them (camera path)\n"
        "  logs [error|init|console] [N]   the library's logs or console lines\n"
        "  verbose on|off              show the library's console lines\n"
        "  ui style | ui lang N        the web interface's style text merged for this module | common and\n"
        "                              language texts of language N (language 1 when N has none)\n"
        "  repair                      recreate sensor.xml (scheme mode and scheme) through the library\n"
        "  echo TEXT | help [params] | quit (warns of values not saved) | quit! (leaves without asking)\n" +
        (m_pFrontEnd ? "commands of the " + m_pFrontEnd->name() + ":\n" + m_pFrontEnd->help() : std::string()) +
        "modules (camsim --module NAME): " + SimModule::names());
}

void CamSim::cmdSet(const std::vector<std::string>& args) {
    if (args.empty()) {
        error("usage: set (ID,VALUE)...  or  set NAME=VALUE ...  or  set NAME VALUE");
        return;
    }
    std::string joined = join(args, 0, "");
    if (joined[0] == '(') {
        std::map<int, int> values;
        if (!SensorParameterParser::parseSensorParameter(joined, values) || values.empty()) {
            error("not a parameter list: '" + joined + "' (expected (id,value)(id,value)...)");
            return;
        }
        applyList(joined, "");
        return;
    }
    std::map<int, int> values;
    std::string list;
    for (size_t i = 0; i < args.size(); ++i) {
        std::string name = args[i], valueText;
        size_t eq = name.find('=');
        if (eq != std::string::npos) {
            valueText = name.substr(eq + 1);
            name = name.substr(0, eq);
        } else if (i + 1 < args.size()) {
            valueText = args[++i];
        } else {
            error("no value for '" + name + "'");
            return;
        }
        int id = 0, value = 0;
        if (!resolveId(name, id)) {
            error("unknown parameter '" + name + "' (see 'help params')");
            return;
        }
        if (!parseInt(valueText, value)) {
            error("value '" + valueText + "' of " + idLabel(id) + " is not a whole number");
            return;
        }
        values[id] = value;
    }
    for (const auto& kv : values) list += "(" + std::to_string(kv.first) + "," + std::to_string(kv.second) + ")";
    applyList(list, "");
}

void CamSim::cmdGet(const std::vector<std::string>& args) {
    if (args.empty()) {
        cmdShow();
        return;
    }
    for (const std::string& word : args) {
        int id = 0;
        if (!resolveId(word, id)) {
            error("unknown parameter '" + word + "' (see 'help params')");
            continue;
        }
        std::string text;
        std::map<int, int> values;
        if (m_controller->getParameters("(" + std::to_string(id) + ")", text) &&
            SensorParameterParser::parseSensorParameter(text, values) && values.count(id))
            std::fprintf(out(), "  %3d %-20s %d\n", id, parameterName(id) ? parameterName(id) : "", values[id]);
        else
            std::fprintf(out(), "  %3d %-20s -   (not a parameter of this camera)\n", id,
                         parameterName(id) ? parameterName(id) : "");
    }
    m_capture.take();
}

void CamSim::cmdShow() {
    std::string text;
    std::map<int, int> values;
    if (!m_controller->getAllParameters(text) || !SensorParameterParser::parseSensorParameter(text, values)) {
        error("the controller gave no parameters");
        return;
    }
    m_capture.take();
    std::vector<std::string> cells;
    for (const auto& kv : values) {
        char cell[64];
        const char* name = parameterName(kv.first);
        std::snprintf(cell, sizeof(cell), "%5d %-19s %6d", kv.first, name ? name : "", kv.second);
        cells.push_back(cell);
    }
    const size_t rows = (cells.size() + 1) / 2;
    for (size_t r = 0; r < rows; ++r)
        std::fprintf(out(), "%s   %s\n", cells[r].c_str(), r + rows < cells.size() ? cells[r + rows].c_str() : "");
    say(std::to_string(values.size()) + " parameters");
}

void CamSim::cmdFlush() {
    m_pMonitor->poll();
    const int scheme = m_controller->getCurrentParamSchemeIndex();
    int r = m_controller->flush();
    m_pMonitor->poll();
    if (r != 0) {
        error(flushRefusal(r));
        return;
    }
    std::string files;
    for (const std::string& f : m_pMonitor->lastFiles()) files += (files.empty() ? "" : ", ") + f;
    if (files.empty()) files = "no file changed: they held these values already";
    if (scheme >= 0) {
        say("ok: saved to scheme " + std::to_string(scheme) + ": " + files);
        m_unsaved.clear();
        return;
    }
    // With the factory set in force there is no scheme file to save to: the
    // library writes the values kept outside the schemes (the especial set) only.
    std::string especial;
    KSFile::readAll(SensorPaths::kEspecialFile, especial);
    std::map<int, int> saved, lost;
    SensorParameterParser::parseSensorParameter(especial, saved);
    for (const auto& kv : m_unsaved) {
        auto it = saved.find(kv.first);
        if (it == saved.end() || it->second != kv.second) lost[kv.first] = kv.second;
    }
    m_unsaved = lost;
    say("saved only the values kept outside the schemes (" + files + ")");
    if (!lost.empty())
        error("not saved: " + describeList(lost) +
              ": the factory set is in force (scheme -1: no scheme's window holds the time, or the scheme files "
              "could not be used) and it is saved to no file; choose a scheme ('scheme N' or 'scheme window') and "
              "flush again");
}

std::string CamSim::flushRefusal(int code) {
    std::string text;
    std::map<int, int> w;
    if (m_controller->getParameters("(500)(501)(502)(503)(504)", text))
        SensorParameterParser::parseSensorParameter(text, w);
    m_capture.take();
    const std::string start = windowText(w[501], w[502]), end = windowText(w[503], w[504]);
    const std::string fix = "; fix the window ('scheme window 06:00-18:00') and flush again";
    switch (code) {
        case 505:
            return "not saved (505): the scheme's start time " + start + " (501 start hour = " +
                   std::to_string(w[501]) + ", 502 start minutes/10 = " + std::to_string(w[502]) + ") is past 24:00" +
                   fix;
        case 506:
            return "not saved (506): the scheme's end time " + end + " (503 end hour = " + std::to_string(w[503]) +
                   ", 504 end minutes/10 = " + std::to_string(w[504]) + ") is past 24:00" + fix;
        case 507:
            return "not saved (507): the scheme's start time " + start + " (501, 502) is not before its end time " +
                   end + " (503, 504)" + fix;
        default:
            return "not saved (" + std::to_string(code) + "): a parameter file could not be written (see 'logs error')";
    }
}

void CamSim::cmdRepair() {
    if (m_controller->createSensorXML()) {
        m_capture.take();
        m_pMonitor->poll();
        int mode = 0;
        m_controller->getParamMode(mode);
        m_capture.take();
        say(std::string("ok: ") + SensorPaths::kSchemeStateFile + " recreated with the scheme in force (" +
            std::to_string(m_controller->getCurrentParamSchemeIndex()) + ") and the scheme mode in force (" +
            (mode != 0 ? "auto" : "manual") + ")");
    } else {
        m_capture.take();
        error(std::string("could not recreate ") + SensorPaths::kSchemeStateFile + " (see 'logs console')");
    }
}

void CamSim::cmdReset(const std::vector<std::string>& args) {
    if (!args.empty() && toLower(args[0]) == "last") {
        if (m_controller->resetToLastParameters()) {
            m_unsaved.clear();
            say("ok: back to the saved values of the active scheme");
        }
        else
            error("reset to the saved values failed (see 'logs error')");
    } else if (args.empty() || toLower(args[0]) == "factory") {
        m_controller->resetParameters();
        m_pMonitor->poll();
        m_unsaved.clear();
        int mode = 0, fileMode = -1;
        m_controller->getParamMode(mode);
        const bool haveFileMode = m_controller->getParamSchemeModeFromFile(fileMode) != 0;
        m_capture.take();
        std::string windows;
        const std::vector<ParamScheme> list = m_controller->getSchemeList();
        for (size_t i = 0; i < list.size(); ++i) {
            int enable = 0, start = 0, end = 0;
            list[i].getEnableFlag(enable);
            list[i].getStartTime(start);
            list[i].getEndTime(end);
            windows += (i ? ", " : "") + std::to_string(i) + " " + hhmm(start) + "-" + hhmm(end) + (enable ? " on" : " off");
        }
        say("ok: every scheme back to the factory values; scheme " +
            std::to_string(m_controller->getCurrentParamSchemeIndex()) + " active; scheme mode in force: " +
            (mode != 0 ? "auto" : "manual") +
            (haveFileMode && (fileMode != 0) != (mode != 0)
                 ? std::string(" (sensor.xml now says ") + (fileMode != 0 ? "auto" : "manual") +
                       ": the next start runs that)"
                 : std::string()) +
            "; scheme windows now: " + windows + " (camsim's windows are gone: 'scheme window' sets them again)");
        return;
    } else {
        error("usage: reset [factory|last]");
        return;
    }
    m_pMonitor->poll();
}

void CamSim::cmdScheme(const std::vector<std::string>& args) {
    const std::vector<ParamScheme> list = m_controller->getSchemeList();
    if (args.empty()) {
        int mode = 0;
        m_controller->getParamMode(mode);
        m_capture.take();
        say(std::string("scheme mode: ") + (mode != 0 ? "auto (by time window)" : "manual") +
            "; active scheme: " + std::to_string(m_controller->getCurrentParamSchemeIndex()));
        for (size_t i = 0; i < list.size(); ++i) {
            int enable = 0, start = 0, end = 0;
            list[i].getEnableFlag(enable);
            list[i].getStartTime(start);
            list[i].getEndTime(end);
            std::fprintf(out(), "  scheme %d  %s-%s  %s\n", static_cast<int>(i), hhmm(start).c_str(),
                         hhmm(end).c_str(), enable ? "on" : "off");
        }
        return;
    }
    const std::string sub = toLower(args[0]);
    if (sub == "auto" || sub == "manual") {
        if (m_controller->setParamMode(sub == "auto" ? 1 : 0))
            say("ok: scheme mode " + sub);
        else
            error("could not change the scheme mode: the library could not write it to " +
                  std::string(SensorPaths::kSchemeStateFile) + "; 'repair' recreates the file");
        m_capture.take();
        return;
    }
    if (sub == "window") {
        int sh = 0, sm = 0, eh = 0, em = 0;
        if (args.size() != 2 || !parseWindow(args[1], sh, sm, eh, em)) {
            error("usage: scheme window HH:MM-HH:MM (for example 06:00-18:00)");
            return;
        }
        if (sm % 10 != 0 || em % 10 != 0) {
            error("scheme windows run in steps of 10 minutes");
            return;
        }
        if (sh * 100 + sm >= eh * 100 + em) {
            error("the window must start before it ends (no window across midnight: use two schemes)");
            return;
        }
        char text[96];
        std::snprintf(text, sizeof(text), "(500,1)(501,%d)(502,%d)(503,%d)(504,%d)", sh, sm / 10, eh, em / 10);
        if (applyList(text, "window " + args[1] + " for scheme " +
                                std::to_string(m_controller->getCurrentParamSchemeIndex())))
            cmdFlush();
        return;
    }
    if (sub == "on" || sub == "off") {
        if (applyList(sub == "on" ? "(500,1)" : "(500,0)", "scheme " + sub)) cmdFlush();
        return;
    }
    int index = 0;
    if (list.empty()) {
        error("this camera has no parameter schemes: " + std::string(SensorPaths::kSensorAbilityFile) +
              " names none (SchemeNum)");
        return;
    }
    if (!parseInt(args[0], index) || index < 0 || static_cast<size_t>(index) >= list.size()) {
        error("no scheme '" + args[0] + "': schemes are 0 to " + std::to_string(static_cast<int>(list.size()) - 1));
        return;
    }
    m_capture.take();
    if (!m_controller->setParamMode(0)) {
        std::string reason = refusalReason(m_capture.take());
        error("could not turn automatic switching off: the library could not write the scheme mode to " +
              std::string(SensorPaths::kSchemeStateFile) + (reason.empty() ? "" : " (" + reason + ")") +
              "; nothing changed, and the camera keeps switching by time. 'repair' recreates the file");
        return;
    }
    if (!m_unsaved.empty())
        say("note: values set and not saved (" + unsavedText() + ") give way to the saved values of scheme " +
            std::to_string(index));
    m_unsaved.clear();
    if (m_controller->setParamScheme(index))
        say("ok: scheme " + std::to_string(index) + " active; automatic switching off ('scheme auto' turns it on)");
    else
        error("could not switch to scheme " + std::to_string(index) + " (see 'logs error')");
    m_capture.take();
    m_pMonitor->poll();
}

void CamSim::cmdDayNight(const std::vector<std::string>& args) {
    static const char* const kModes[] = {"auto", "day", "night", "time", "sensor"};
    if (args.empty()) {
        int mode = m_controller->getStoredDayNightMode();
        say("day/night mode " + std::to_string(mode) +
            (mode >= 0 && mode <= 4 ? std::string(" (") + kModes[mode] + ")" : std::string()) + ", state " +
            (m_controller->getCurrentDNState() == 1 ? "day" : "night"));
        return;
    }
    const std::string sub = toLower(args[0]);
    if (sub == "times") {
        int h1 = 0, m1 = 0, s = 0, h2 = 0, m2 = 0;
        if (args.size() != 3 || !parseTimeOfDay(args[1], h1, m1, s) || !parseTimeOfDay(args[2], h2, m2, s)) {
            error("usage: daynight times HH:MM HH:MM (day-to-night, night-to-day)");
            return;
        }
        char list[96];
        std::snprintf(list, sizeof(list), "(28,%d)(29,%d)(30,%d)(31,%d)", h1, m1, h2, m2);
        applyList(list, "timetable: night from " + args[1] + ", day from " + args[2]);
        return;
    }
    int mode = -1;
    for (int i = 0; i < 5; ++i)
        if (sub == kModes[i]) mode = i;
    if (sub == "timetable") mode = 3;
    if (mode < 0 && (!parseInt(sub, mode) || mode < 0 || mode > 4)) {
        error("unknown day/night mode '" + args[0] + "' (auto, day, night, time, sensor or 0-4)");
        return;
    }
    applyList("(11," + std::to_string(mode) + ")", std::string("day/night mode ") + kModes[mode] +
                                                     " (takes effect in the next cycle of the worker)");
}

void CamSim::cmdLight(const std::vector<std::string>& args) {
    int percent = 0;
    if (args.size() != 1 || !parseInt(args[0], percent) || percent < 0 || percent > 100) {
        error("usage: light N with N from 0 (dark) to 100 (bright)");
        return;
    }
    m_pFrontEnd->setLight(percent);
    say("ok: light " + std::to_string(percent) + " % (" + m_pFrontEnd->lightText() + ")");
}

void CamSim::cmdTime(const std::vector<std::string>& args) {
    if (args.empty()) {
        say("device time " + deviceTimeText());
        return;
    }
    int h = 0, m = 0, s = 0;
    if (args.size() != 1 || !parseTimeOfDay(args[0], h, m, s)) {
        error("usage: time HH:MM[:SS] (00:00 to 23:59)");
        return;
    }
    PlatformClock::setTimeOfDay(h, m, s);
    say("ok: device time " + deviceTimeText());
}

void CamSim::cmdRun(const std::vector<std::string>& args) {
    int64_t ms = 0;
    if (args.empty() || args.size() > 2 || !parseDuration(join(args, 0, ""), ms)) {
        error("usage: run N[ms|s|m|h|d] (for example run 30s, run 1.5s, run 2h, run 1d)");
        return;
    }
    if (ms > kMaxRunMs) {
        error("run at most 48h at a time");
        return;
    }
    advance(ms, true, true);
}

void CamSim::cmdStatus() {
    std::FILE* o = out();
    const int dn = m_controller->getCurrentDNState();
    const int mode = m_controller->getStoredDayNightMode();
    int paramMode = 0;
    m_controller->getParamMode(paramMode);
    m_capture.take();
    m_pMonitor->poll();
    std::fprintf(o, "device time    %s (virtual clock)\n", deviceTimeText().c_str());
    std::fprintf(o, "day/night      %s, mode %d, %s\n", dn == 1 ? "DAY" : dn == 0 ? "NIGHT" : "-", mode,
                 m_pFrontEnd->dayNightSource().c_str());
    std::fprintf(o, "scheme         %d (%s)\n", m_controller->getCurrentParamSchemeIndex(),
                 paramMode != 0 ? "auto" : "manual");
    m_pFrontEnd->printStatus(o);
}

void CamSim::cmdFiles() {
    for (const std::string& path : listRootFiles()) {
        std::string content;
        KSFile::readAll(path, content);
        std::fprintf(out(), "  %7zu  %s\n", content.size(), path.c_str());
    }
}

void CamSim::cmdCat(const std::vector<std::string>& args) {
    if (args.size() != 1 || args[0].empty() || args[0][0] != '/' || args[0].find("..") != std::string::npos) {
        error("usage: cat /camera/path (as listed by 'files')");
        return;
    }
    std::string content;
    if (!KSFile::readAll(args[0], content)) {
        error("no file " + args[0] + " under the root");
        return;
    }
    bool cut = content.size() > kMaxCatBytes;
    if (cut) content.resize(kMaxCatBytes);
    const std::string shown = printable(content);
    std::fwrite(shown.data(), 1, shown.size(), out());
    if (!shown.empty() && shown.back() != '\n') std::fputc('\n', out());
    if (cut) say("... (cut at 64 KiB)");
}

void CamSim::cmdLogs(const std::vector<std::string>& args) {
    std::string which = args.empty() ? "error" : toLower(args[0]);
    int count = 20;
    if (args.size() > 1 && (!parseInt(args[1], count) || count < 1)) {
        error("usage: logs [error|init|console] [N]");
        return;
    }
    std::vector<std::string> lines;
    if (which == "console") {
        lines = m_capture.recent(static_cast<size_t>(count));
    } else if (which == "error" || which == "init") {
        std::string content;
        const char* path = which == "error" ? SensorPaths::kErrorLog : SensorPaths::kInitLog;
        const bool there = KSFile::readAll(path, content);
        std::istringstream in(content);
        for (std::string l; std::getline(in, l);) lines.push_back(l);
        if (lines.size() > static_cast<size_t>(count)) lines.erase(lines.begin(), lines.end() - count);
        say(std::string("-- ") + path + " --");
        if (lines.empty()) say(there ? "  (no entries)" : "  (no entries: the library has not written this log)");
    } else {
        error("usage: logs [error|init|console] [N]");
        return;
    }
    for (const std::string& l : lines) std::fprintf(out(), "  %s\n", printable(l).c_str());
}

void CamSim::cmdLens(const std::string& what, const std::vector<std::string>& args) {
    const std::string a = args.empty() ? std::string() : toLower(args[0]);
    const bool fast = args.size() > 1 && toLower(args[1]) == "fast";
    int id = 0;
    if (what == "zoom" && (a == "wide" || a == "out"))
        id = fast ? 48 : 43;
    else if (what == "zoom" && (a == "tele" || a == "in"))
        id = fast ? 49 : 44;
    else if (what == "focus" && a == "near")
        id = fast ? 51 : 47;
    else if (what == "focus" && a == "far")
        id = fast ? 50 : 46;
    else if (what == "focus" && a == "auto")
        id = 52;
    else if (what == "lens" && a == "reset")
        id = 53;
    if (id == 0) {
        error("usage: zoom wide|tele [fast], focus near|far [fast], focus auto, lens reset");
        return;
    }
    applyList("(" + std::to_string(id) + ",1)", std::string(camsim::parameterName(id)));
}

void CamSim::cmdVerbose(const std::vector<std::string>& args) {
    if (args.size() != 1 || (toLower(args[0]) != "on" && toLower(args[0]) != "off")) {
        error("usage: verbose on|off");
        return;
    }
    m_capture.setEcho(toLower(args[0]) == "on");
    say("ok: library console lines " + std::string(m_capture.echo() ? "shown" : "hidden"));
}

void CamSim::cmdUi(const std::vector<std::string>& args) {
    int language = 0;
    const bool style = args.size() == 1 && toLower(args[0]) == "style";
    const bool lang = args.size() == 2 && toLower(args[0]) == "lang" && parseInt(args[1], language);
    if (!style && !lang) {
        error("usage: ui style | ui lang N");
        return;
    }
    // The texts are prepared afresh from the root's sensorConfig tree, as the
    // camera application does when it builds its web pages.
    SensorFile file;
    if (!file.init("", "")) {
        error("the web-interface texts could not be prepared (the library's reason: 'logs console')");
        return;
    }
    if (style) {
        std::fprintf(out(), "%s\n", file.getUIStyleConfig().c_str());
        return;
    }
    std::fprintf(out(), "-- common text of language %d --\n%s\n", language, file.getUICommonConfig(language).c_str());
    std::fprintf(out(), "-- language text of language %d --\n%s\n", language,
                 file.getUILanguageConfig(language).c_str());
}

const char* const CamSim::kDemoScript[] = {
    "echo",
    "echo == 05:30  before dawn: a dark scene, the light sensor reads 5 % ==",
    "light 5",
    "run 5s",
    "echo == 06:00  the day scheme's window opens ==",
    "time 05:59:55",
    "run 10s",
    "echo == 06:20  sunrise: half light stays between the thresholds, then day after the 5 s delay ==",
    "time 06:20",
    "light 50",
    "run 5s",
    "light 80",
    "run 7s",
    "echo == 09:00  an operator brightens the picture and saves it ==",
    "time 09:00",
    "set brightness=60 contrast=55",
    "flush",
    "run 2s",
    "echo == 12:00  out-of-range values are refused before the ISP ==",
    "time 12:00",
    "set max-shutter 19",
    "set (1,101)",
    "isp 3",
    "echo == 13:00  zoom and focus ==",
    "time 13:00",
    "zoom tele fast",
    "focus auto",
    "run 1s",
    "echo == 18:00  the evening scheme ==",
    "time 17:59:55",
    "run 10s",
    "echo == 18:40  dusk: the light falls to 25 %, night at once ==",
    "time 18:40",
    "light 25",
    "run 3s",
    "echo == 00:00  the night scheme ==",
    "time 23:59:55",
    "run 10s",
    "echo == 06:00  the next morning ==",
    "time 05:59:55",
    "run 10s",
    "light 85",
    "run 7s",
    "echo",
    "status",
    nullptr,
};

}  // namespace camsim
