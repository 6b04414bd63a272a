// powercut: power cuts against the library's configuration files.
//
// A writer (the simulator camera, camsim, with a random script of parameter
// changes, flushes, scheme switches and resets, started on a root prepared for
// a plain start, a version rebuild or the old single file's migration) runs in
// a child process under a temporary root and is killed with SIGKILL at a
// random moment. Then every file of the configuration directory is checked:
// it parses, it holds either its content from before the run or a complete
// content the writer committed during the run, nothing that held data before
// is empty, and a file is missing only when the writer removed it. The camera
// is then started once more (uncut) and must come up with every file complete:
// the version pairs of the factory file in each parameter file, every factory
// parameter in each scheme file, no old single file left, and temporary files
// not left behind (the start-up sweep removes the stale ones).
//
// In the lost-writes mode (every other cut) the writer runs with an LD_PRELOAD
// shim (LostWritesShim.c) that journals renames, removals and flushes of the
// directory; after the kill the directory is set to what a power cut would
// have kept: a rename or removal survives only when the directory was flushed
// after it, and a renamed file whose bytes were not flushed before comes back
// empty. The same checks follow.
//
// Usage: powercut [--cuts N] [--seed N] [--work DIR] [--verbose]
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/PlatformRoot.h"
#include "platform/SensorParameterParser.h"
#include "platform/XmlConfigureTool.h"

namespace {

const char kConfigDir[] = "/mnt/mtd/code/config_file";
const char kTempMarker[] = ".kstmp.";
const int kSchemes = 4;  // camsim sets up four parameter schemes

using Files = std::map<std::string, std::string>;  // file name -> bytes

struct Options {
    int cuts = 1000;
    unsigned seed = 1;
    std::string work;
    bool verbose = false;
};

struct Totals {
    int cuts = 0;
    int lostWritesCuts = 0;
    int killedMidRun = 0;      // the writer was still running when it was killed
    int failures = 0;
    int maxTemps = 0;
    int stuckAtQuit = 0;       // next starts that did not quit in time (killed)
    std::set<std::string> moments;  // distinct (scenario, journal position) cut points
    std::map<std::string, int> scenarios;
};

bool readFile(const std::string& path, std::string& out) {
    std::ifstream f(path, std::ios::binary);
    if (!f) return false;
    std::stringstream ss;
    ss << f.rdbuf();
    out = ss.str();
    return true;
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

bool isTemp(const std::string& name) { return name.find(kTempMarker) != std::string::npos; }

// The regular files of a directory, temporary files apart.
void listDir(const std::string& dir, Files* files, std::vector<std::string>* temps) {
    DIR* d = ::opendir(dir.c_str());
    if (d == nullptr) return;
    while (dirent* e = ::readdir(d)) {
        const std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        if (isTemp(name)) {
            if (temps != nullptr) temps->push_back(name);
        } else if (files != nullptr) {
            std::string bytes;
            readFile(dir + "/" + name, bytes);
            (*files)[name] = bytes;
        }
    }
    ::closedir(d);
}

int removeTree(const std::string& path) {
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) return 0;
    if (S_ISDIR(st.st_mode)) {
        DIR* d = ::opendir(path.c_str());
        if (d != nullptr) {
            while (dirent* e = ::readdir(d)) {
                const std::string name = e->d_name;
                if (name != "." && name != "..") removeTree(path + "/" + name);
            }
            ::closedir(d);
        }
        return ::rmdir(path.c_str());
    }
    return ::unlink(path.c_str());
}

void copyTree(const std::string& from, const std::string& to) {
    struct stat st {};
    if (::lstat(from.c_str(), &st) != 0) return;
    if (S_ISDIR(st.st_mode)) {
        ::mkdir(to.c_str(), 0755);
        DIR* d = ::opendir(from.c_str());
        if (d == nullptr) return;
        while (dirent* e = ::readdir(d)) {
            const std::string name = e->d_name;
            if (name != "." && name != "..") copyTree(from + "/" + name, to + "/" + name);
        }
        ::closedir(d);
    } else if (S_ISREG(st.st_mode)) {
        std::string bytes;
        readFile(from, bytes);
        writeFile(to, bytes);
    }
}

// One journal entry of the shim.
struct Entry {
    enum Kind { Rename, Unlink, DirSync, InPlace } kind;
    std::string name;  // file name within the directory
    std::string bytes; // Rename: the bytes that became the file
    bool synced = true;
};

std::vector<Entry> readJournal(const std::string& journal) {
    std::vector<Entry> out;
    std::ifstream f(journal);
    std::string line;
    while (std::getline(f, line)) {
        std::istringstream in(line);
        std::string word;
        in >> word;
        Entry e{Entry::DirSync, "", "", true};
        std::string path;
        if (word == "rename") {
            unsigned n = 0;
            int synced = 1;
            in >> n >> synced >> path;
            e.kind = Entry::Rename;
            e.synced = synced == 1;
            readFile(journal + "." + std::to_string(n), e.bytes);
        } else if (word == "unlink") {
            in >> path;
            e.kind = Entry::Unlink;
        } else if (word == "inplace") {
            in >> path;
            e.kind = Entry::InPlace;
        } else if (word != "dirsync") {
            continue;  // a line cut by the kill
        }
        e.name = path.substr(path.rfind('/') + 1);
        out.push_back(e);
    }
    return out;
}

// What a power cut at the end of the journal keeps: entries count only once
// the directory was flushed after them; a file renamed without its bytes
// flushed first keeps its name but loses its bytes.
Files durableState(const Files& before, const std::vector<Entry>& journal) {
    Files durable = before;
    std::vector<const Entry*> pending;
    for (const Entry& e : journal) {
        if (e.kind == Entry::DirSync) {
            for (const Entry* p : pending) {
                if (p->kind == Entry::Rename) durable[p->name] = p->synced ? p->bytes : std::string();
                if (p->kind == Entry::Unlink) durable.erase(p->name);
            }
            pending.clear();
        } else if (e.kind == Entry::Rename || e.kind == Entry::Unlink) {
            pending.push_back(&e);
        }
    }
    return durable;
}

bool parsesAsParameters(const std::string& bytes, std::map<int, int>& values) {
    values.clear();
    return SensorParameterParser::parseSensorParameter(bytes.substr(0, bytes.find('\0')), values);
}

bool opensAsXml(const std::string& name) {
    XmlConfigureTool tool;
    bool ok = tool.open(std::string(kConfigDir) + "/" + name, 0, XmlConfigureTool::ModeRead);
    tool.close();
    return ok;
}

class PowerCut {
public:
    explicit PowerCut(const Options& o) : m_opt(o), m_rng(o.seed) {
        m_root = o.work + "/root";
        m_dir = m_root + kConfigDir;
        m_journal = o.work + "/journal";
    }

    int run();

private:
    std::string prepare();
    std::string randomScript();
    pid_t startWriter(const std::string& script, const std::string& time, bool shim);
    int waitFor(pid_t pid, int seconds);
    int runRecovery();
    int cutWriter(const std::string& script, int& delayUs, bool& byJournal);
    void fail(const std::string& what);
    void checkAfterCut(const Files& before, const std::vector<Entry>& journal);
    void checkAfterRecovery();
    std::string hhmm(int minutes) const {
        char b[8];
        std::snprintf(b, sizeof(b), "%02d:%02d", minutes / 60 % 24, minutes % 60);
        return b;
    }

    Options m_opt;
    std::mt19937 m_rng;
    std::string m_root, m_dir, m_journal;
    Totals m_totals;
    int m_cut = 0;
    bool m_cutFailed = false;
    int m_maxDelayUs = 400000;
    int m_maxJournal = 1;
    std::string m_lastTime;  // the writer's start time of day
};

void PowerCut::fail(const std::string& what) {
    if (!m_cutFailed) ++m_totals.failures;
    m_cutFailed = true;
    std::fprintf(stderr, "powercut: cut %d: %s\n", m_cut, what.c_str());
}

// Prepares the root for the next run; returns the scenario's name.
std::string PowerCut::prepare() {
    const int pick = static_cast<int>(m_rng() % 100);
    Files files;
    listDir(m_dir, &files, nullptr);
    if (pick < 5 || files.count("sensor_Factory.cfg") == 0) {
        removeTree(m_root);
        return "first start";
    }
    if (pick < 20) {
        // A layout version the library does not expect: the next start rebuilds every file.
        std::map<int, int> factory;
        if (parsesAsParameters(files["sensor_Factory.cfg"], factory) && factory.count(10000)) {
            factory[10000] = factory[10000] == 998 ? 1000 : factory[10000] + 1;
            writeFile(m_dir + "/sensor_Factory.cfg", SensorParameterParser::createSensorParameterString(factory));
            return "version rebuild";
        }
    }
    if (pick < 40) {
        // The single parameter file of older versions: some of the parameters, with values
        // of one scheme or another (values the sensor accepts), no version.
        std::map<int, int> values, other;
        parsesAsParameters(files["sensor0.cfg"], values);
        parsesAsParameters(files["sensor1.cfg"], other);
        std::map<int, int> old;
        for (const auto& kv : values) {
            if (kv.first >= 10000 || m_rng() % 3 == 0) continue;
            old[kv.first] = m_rng() % 2 == 0 && other.count(kv.first) ? other[kv.first] : kv.second;
        }
        writeFile(m_dir + "/sensor.cfg", SensorParameterParser::createSensorParameterString(old));
        return "old-file migration";
    }
    return "plain start";
}

std::string PowerCut::randomScript() {
    static const int ids[] = {1, 2, 3, 4, 9, 12, 13, 15, 18, 23, 24};
    std::string script;
    const int n = 4 + static_cast<int>(m_rng() % 9);
    for (int i = 0; i < n; ++i) {
        std::string cmd;
        switch (m_rng() % 10) {
            case 0:
            case 1:
            case 2: {
                const int count = 1 + static_cast<int>(m_rng() % 3);
                cmd = "set ";
                for (int k = 0; k < count; ++k)
                    cmd += "(" + std::to_string(ids[m_rng() % (sizeof(ids) / sizeof(ids[0]))]) + "," +
                           std::to_string(m_rng() % 101) + ")";
                break;
            }
            case 3:
            case 4: cmd = "flush"; break;
            case 5: cmd = "scheme " + std::to_string(m_rng() % kSchemes); break;
            case 6: cmd = m_rng() % 2 ? "scheme auto" : "scheme manual"; break;
            case 7: {
                const int start = static_cast<int>(m_rng() % 22);
                const int end = start + 1 + static_cast<int>(m_rng() % static_cast<unsigned>(23 - start));
                cmd = "scheme window " + hhmm(start * 60) + "-" + hhmm(end * 60);
                break;
            }
            case 8: cmd = m_rng() % 2 ? "reset" : "reset last"; break;
            default: cmd = "time " + hhmm(static_cast<int>(m_rng() % 1440) / 10 * 10) + "; run 2s"; break;
        }
        script += (script.empty() ? "" : "; ") + cmd;
    }
    return script;
}

pid_t PowerCut::startWriter(const std::string& script, const std::string& time, bool shim) {
    ::unlink(m_journal.c_str());
    removeTree(m_opt.work + "/store");
    const pid_t pid = ::fork();
    if (pid != 0) return pid;
    const std::string log = m_opt.work + "/writer.log";
    const int fd = ::open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd >= 0) {
        ::dup2(fd, 1);
        ::dup2(fd, 2);
        ::close(fd);
    }
    // POWERCUT_CAMSIM and POWERCUT_SHIM_PATH name other copies of the two programs (for
    // a run that must not see a rebuild of the build tree replace them under it).
    const char* camsim = std::getenv("POWERCUT_CAMSIM") ? std::getenv("POWERCUT_CAMSIM") : POWERCUT_CAMSIM;
    const char* shimPath = std::getenv("POWERCUT_SHIM_PATH") ? std::getenv("POWERCUT_SHIM_PATH") : POWERCUT_SHIM;
    if (shim) {
        ::setenv("LD_PRELOAD", shimPath, 1);
        ::setenv("POWERCUT_DIR", m_dir.c_str(), 1);
        ::setenv("POWERCUT_JOURNAL", m_journal.c_str(), 1);
    }
    ::execl(camsim, "camsim", "--root", m_root.c_str(), "--time", time.c_str(), "-c", script.c_str(),
            static_cast<char*>(nullptr));
    std::_Exit(127);
}

// Waits for the child; kills it when it has not ended after `seconds`.
int PowerCut::waitFor(pid_t pid, int seconds) {
    int status = 0;
    for (int waited = 0; waited < seconds * 100; ++waited) {
        if (::waitpid(pid, &status, WNOHANG) == pid) return status;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ::kill(pid, SIGKILL);
    ::waitpid(pid, &status, 0);
    return status;
}

// The camera's next start, uncut, at midday (daylight: no night switch under way when
// the simulator quits).
int PowerCut::runRecovery() {
    const int status = waitFor(startWriter("get 1", "12:00", false), 10);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
}

void PowerCut::checkAfterCut(const Files& before, const std::vector<Entry>& journal) {
    Files now;
    listDir(m_dir, &now, nullptr);
    std::map<std::string, std::set<std::string>> committed;
    std::set<std::string> removed;
    for (const Entry& e : journal) {
        if (e.kind == Entry::Rename) committed[e.name].insert(e.bytes);
        if (e.kind == Entry::Unlink) removed.insert(e.name);
        if (e.kind == Entry::InPlace) fail(e.name + " was opened for writing in place");
    }
    for (const auto& kv : now) {
        const std::string& name = kv.first;
        const std::string& bytes = kv.second;
        auto old = before.find(name);
        const bool wasThere = old != before.end();
        if (!(wasThere && old->second == bytes) && committed[name].count(bytes) == 0)
            fail(name + " holds neither its old nor a complete new content (" + std::to_string(bytes.size()) +
                 " bytes)");
        if (wasThere && !old->second.empty() && bytes.empty()) fail(name + " became empty");
        std::map<int, int> values;
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".cfg") == 0 && !parsesAsParameters(bytes, values))
            fail(name + " does not parse");
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".xml") == 0 && !opensAsXml(name))
            fail(name + " does not parse as XML");
    }
    for (const auto& kv : before)
        if (now.count(kv.first) == 0 && removed.count(kv.first) == 0) fail(kv.first + " vanished");
}

void PowerCut::checkAfterRecovery() {
    Files now;
    std::vector<std::string> temps;
    listDir(m_dir, &now, &temps);
    if (static_cast<int>(temps.size()) > m_totals.maxTemps) m_totals.maxTemps = static_cast<int>(temps.size());
    // The start-up sweep removes every stale temporary file (all of them are, see above).
    if (!temps.empty()) fail(std::to_string(temps.size()) + " temporary files left after a start");
    if (now.count("sensor.cfg")) fail("the old single file is still there after a start");
    // The especial file is written by the first flush, not by a start.
    std::vector<std::string> required = {"sensor.xml", "sensor_Factory.cfg"};
    for (int i = 0; i < kSchemes; ++i) required.push_back("sensor" + std::to_string(i) + ".cfg");
    if (now.count("sensor_Especial.cfg")) required.push_back("sensor_Especial.cfg");
    std::map<int, int> factory;
    for (const std::string& name : required) {
        if (now.count(name) == 0) {
            fail(name + " is missing after a start");
            continue;
        }
        if (name == "sensor.xml") {
            if (!opensAsXml(name)) fail("sensor.xml does not parse after a start");
            continue;
        }
        std::map<int, int> values;
        if (!parsesAsParameters(now[name], values)) {
            fail(name + " does not parse after a start");
            continue;
        }
        if (name == "sensor_Factory.cfg") factory = values;
    }
    if (!factory.count(10000) || !factory.count(10001)) {
        fail("the factory file has no version pairs after a start");
        return;
    }
    for (const std::string& name : required) {
        std::map<int, int> values;
        if (name == "sensor.xml" || !parsesAsParameters(now[name], values)) continue;
        if (values[10000] != factory[10000] || values[10001] != factory[10001])
            fail(name + " does not hold the factory file's version after a start");
        if (name.compare(0, 6, "sensor") == 0 && name[6] >= '0' && name[6] <= '9')
            for (const auto& kv : factory)
                if (!values.count(kv.first)) {
                    fail(name + " lacks parameter " + std::to_string(kv.first) + " of the factory set after a start");
                    break;
                }
    }
}

// Starts a writer and kills it: half of the cuts at a random moment of the usual
// run time, half right after the writer announced its k-th file operation (k at
// random), plus a few microseconds, so that the cuts also fall inside renames
// and removals. `delayUs` receives the time from the start to the kill (or to
// the writer's end); the result is the writer's wait status.
int PowerCut::cutWriter(const std::string& script, int& delayUs, bool& byJournal) {
    byJournal = m_rng() % 2 == 0;
    // Most scripts write less than the longest run seen: aim at the first half of it.
    const int target = 1 + static_cast<int>(m_rng() % static_cast<unsigned>(std::max(1, m_maxJournal / 2)));
    const int extraUs = static_cast<int>(m_rng() % 300);
    const int delay = static_cast<int>(m_rng() % static_cast<unsigned>(m_maxDelayUs));
    const auto t0 = std::chrono::steady_clock::now();
    m_lastTime = hhmm(static_cast<int>(m_rng() % 1440));
    const pid_t pid = startWriter(script, m_lastTime, true);
    auto elapsedUs = [&] {
        return static_cast<int>(
            std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - t0).count());
    };
    if (byJournal) {
        int status = 0;
        for (;;) {
            if (::waitpid(pid, &status, WNOHANG) == pid) {
                delayUs = elapsedUs();
                return status;
            }
            std::ifstream j(m_journal);
            const int lines = static_cast<int>(std::count(std::istreambuf_iterator<char>(j), std::istreambuf_iterator<char>(), '\n'));
            if (lines >= target || elapsedUs() > 20 * m_maxDelayUs) break;
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
        std::this_thread::sleep_for(std::chrono::microseconds(extraUs));
    } else {
        std::this_thread::sleep_for(std::chrono::microseconds(delay));
    }
    delayUs = elapsedUs();
    ::kill(pid, SIGKILL);
    int status = 0;
    ::waitpid(pid, &status, 0);
    return status;
}

int PowerCut::run() {
    PlatformRoot::set(m_root);
    const auto began = std::chrono::steady_clock::now();
    // The writer's usual duration sets the range of the cut moments.
    {
        removeTree(m_root);
        const auto t0 = std::chrono::steady_clock::now();
        const pid_t pid =
            startWriter("set (1,40)(3,60); flush; scheme 1; set (2,30); flush; reset; flush; scheme auto", "12:00", true);
        const int status = waitFor(pid, 60);
        const auto us = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - t0);
        m_maxDelayUs = static_cast<int>(us.count() * 12 / 10) + 1000;
        // 1: a command was refused (a value out of range); 2: the camera did not come up.
        if (!WIFEXITED(status) || WEXITSTATUS(status) > 1) {
            std::fprintf(stderr, "powercut: the writer does not run (status %d); see %s/writer.log\n", status,
                         m_opt.work.c_str());
            return 2;
        }
    }
    for (m_cut = 1; m_cut <= m_opt.cuts; ++m_cut) {
        m_cutFailed = false;
        const bool lostWrites = m_cut % 2 == 0;
        const std::string scenario = prepare();
        Files before;
        listDir(m_dir, &before, nullptr);
        removeTree(m_opt.work + "/before");
        copyTree(m_root, m_opt.work + "/before");  // for a failure report
        const std::string script = randomScript();
        int delay = 0;
        bool byJournal = false;
        const int status = cutWriter(script, delay, byJournal);
        const bool killed = WIFSIGNALED(status);
        std::vector<Entry> journal = readJournal(m_journal);
        ++m_totals.cuts;
        ++m_totals.scenarios[scenario];
        if (killed) ++m_totals.killedMidRun;
        if (!killed) {
            // A run that ended before its cut tells how long runs take and how much they write.
            if (delay > m_maxDelayUs) m_maxDelayUs = delay;
        }
        if (static_cast<int>(journal.size()) > m_maxJournal) m_maxJournal = static_cast<int>(journal.size());
        m_totals.moments.insert(scenario + "/" + std::to_string(journal.size()));
        if (lostWrites) {
            ++m_totals.lostWritesCuts;
            // The directory as a power cut at this moment would have left it.
            const Files durable = durableState(before, journal);
            Files now;
            listDir(m_dir, &now, nullptr);
            for (const auto& kv : now)
                if (!durable.count(kv.first)) ::unlink((m_dir + "/" + kv.first).c_str());
            for (const auto& kv : durable) writeFile(m_dir + "/" + kv.first, kv.second);
        }
        if (m_opt.verbose)
            std::printf("cut %d (%s%s, %s%d us, %zu journal entries%s): %s\n", m_cut, scenario.c_str(),
                        lostWrites ? ", lost writes" : "", byJournal ? "by journal, " : "", delay, journal.size(), killed ? "" : ", finished",
                        script.c_str());
        checkAfterCut(before, journal);
        const std::string kept = m_opt.work + "/cut";
        removeTree(kept);
        ::rename(m_root.c_str(), kept.c_str());  // the state the cut left, for a failure report
        ::rename(m_journal.c_str(), (kept + ".journal").c_str());
        copyTree(kept, m_root);
        // The next start comes a while after the cut: the start-up sweep leaves temporary
        // files younger than a minute alone (they may belong to a write in progress).
        {
            std::vector<std::string> temps;
            listDir(m_dir, nullptr, &temps);
            const struct timeval old[2] = {{::time(nullptr) - 600, 0}, {::time(nullptr) - 600, 0}};
            for (const std::string& t : temps) ::utimes((m_dir + "/" + t).c_str(), old);
        }
        const int recovery = runRecovery();
        if (recovery == 128 + SIGKILL) {
            // Killed after the time limit: the simulator did not quit. Seen when the day/night
            // worker polls the ISP for the night switch while it is asked to stop; the files are
            // written by then, so the checks below still hold.
            ++m_totals.stuckAtQuit;
        } else if (recovery != 0) {
            fail("the camera's next start ended with status " + std::to_string(recovery) + " (see writer.log)");
        }
        checkAfterRecovery();
        if (m_cutFailed) {
            std::fprintf(stderr, "powercut: cut %d was: %s%s, at %s, after %d us, script: %s\n", m_cut,
                         scenario.c_str(), lostWrites ? " with lost writes" : "", m_lastTime.c_str(), delay,
                         script.c_str());
            const std::string failure = m_opt.work + "/failure-" + std::to_string(m_cut);
            ::rename(kept.c_str(), failure.c_str());
            ::rename((kept + ".journal").c_str(), (failure + ".journal").c_str());
            ::rename((m_opt.work + "/before").c_str(), (failure + ".before").c_str());
            ::rename((m_opt.work + "/writer.log").c_str(), (failure + ".log").c_str());
            std::fprintf(stderr,
                         "powercut: the state before the run is in %s.before, after the cut in %s, the journal in "
                         "%s.journal, the next start's output in %s.log\n",
                         failure.c_str(), failure.c_str(), failure.c_str(), failure.c_str());
            if (m_totals.failures >= 5) break;
            removeTree(m_root);  // start the next cut from a clean camera
        }
    }
    const double seconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - began).count() /
        1000.0;
    std::printf("powercut: %d cuts (%d with lost unsynced writes), %d while the writer ran, %zu distinct moments "
                "(scenario and journal position), %d failures, at most %d temporary files, %.1f s\n",
                m_totals.cuts, m_totals.lostWritesCuts, m_totals.killedMidRun, m_totals.moments.size(),
                m_totals.failures, m_totals.maxTemps, seconds);
    for (const auto& kv : m_totals.scenarios) std::printf("  %s: %d cuts\n", kv.first.c_str(), kv.second);
    if (m_totals.stuckAtQuit > 0)
        std::printf("  %d of the next starts did not quit within 10 s and were killed (checked all the same)\n",
                    m_totals.stuckAtQuit);
    return m_totals.failures == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--cuts" && i + 1 < argc)
            o.cuts = std::atoi(argv[++i]);
        else if (a == "--seed" && i + 1 < argc)
            o.seed = static_cast<unsigned>(std::strtoul(argv[++i], nullptr, 10));
        else if (a == "--work" && i + 1 < argc)
            o.work = argv[++i];
        else if (a == "--verbose")
            o.verbose = true;
        else {
            std::fprintf(stderr, "usage: powercut [--cuts N] [--seed N] [--work DIR] [--verbose]\n");
            return 2;
        }
    }
    bool ownWork = false;
    if (o.work.empty()) {
        char tmpl[] = "/tmp/sensorctl-powercut-XXXXXX";
        if (::mkdtemp(tmpl) == nullptr) return 2;
        o.work = tmpl;
        ownWork = true;
    }
    ::mkdir(o.work.c_str(), 0755);
    std::printf("powercut: seed %u, work directory %s\n", o.seed, o.work.c_str());
    std::fflush(stdout);
    const int rc = PowerCut(o).run();
    if (ownWork && rc == 0) removeTree(o.work);
    return rc;
}
