// Instruction, allocation and file-system call counts of the parameter path, against a
// driver that does nothing, on the release build (`make bench-count`).
//
// Run without arguments, the program runs itself under callgrind (valgrind) and prints
// one line per row: what was measured, the budget, OK or MISSED; the exit status is 1
// when a budget is missed. Each row is counted for 10, 60 and 500 parameter ids; the
// budgets are those of the 60-id camera (per pair and per id budgets hold for any count,
// the whole-call budgets of flush and init grow linearly above 60 ids).
//
// Under callgrind (`--child`), every path runs first unmeasured (so that caches, files and
// buffers are in their steady state), then between the collection toggles of callgrind's
// client requests with the allocation counter on, then once more with the platform file
// layer's call observer on; the observer's own work is never in an instruction count.
// Only the calling thread is counted (callgrind --separate-threads=yes, the counters are
// per thread): the day/night worker that init starts is not part of init's cost.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "BenchRoot.h"
#include "IdleController.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "core/ISensorController.h"
#include "platform/FsUtil.h"
#include "platform/KSFile.h"
#include "storage/IdManager.h"

// ---- allocation counter: every operator new of the counting thread while it is on ----

namespace {
thread_local bool t_countAllocs = false;
thread_local long t_allocs = 0;
}  // namespace

void* operator new(std::size_t size) {
    if (t_countAllocs) ++t_allocs;
    if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (t_countAllocs) ++t_allocs;
    return std::malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t& t) noexcept { return operator new(size, t); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace {

// ---- file-system calls of the counting thread, per file ----

struct FileCalls {
    long opens = 0;
    long reads = 0;
    long total = 0;
};
thread_local bool t_countCalls = false;
thread_local std::map<std::string, FileCalls>* t_calls = nullptr;

void onCall(FsUtil::Call call, const std::string& path) {
    if (!t_countCalls || t_calls == nullptr) return;
    FileCalls& f = (*t_calls)[path];
    ++f.total;
    if (call == FsUtil::CallOpen) ++f.opens;
    if (call == FsUtil::CallRead) ++f.reads;
}

// ---- the driver ----

int initController(ISensorController& c) {
    ModuleConfigure cfg(88, "RS485=/dev/ttyS1;isInfrared=1;DNDefault=0", "");
    return c.init(50, cfg, VideoResolution(1920, 1080));
}

std::string pairList(const std::vector<int>& ids, int offset) {
    std::string s;
    for (int id : ids) s += "(" + std::to_string(id) + "," + std::to_string(id + offset) + ")";
    return s;
}

std::string idList(const std::vector<int>& ids) {
    std::string s;
    for (int id : ids) s += "(" + std::to_string(id) + ")";
    return s;
}

// ---- one measured row ----

FILE* g_results = nullptr;

// What the counting window of the current run counts.
enum Phase { Unmeasured, CountInstructions, CountFileCalls };
Phase g_phase = Unmeasured;

// A measured body calls these around the work it measures.
void windowOpen() {
    if (g_phase == CountInstructions) {
        t_countAllocs = true;
        CALLGRIND_TOGGLE_COLLECT;
    } else if (g_phase == CountFileCalls) {
        t_countCalls = true;
    }
}
void windowClose() {
    if (g_phase == CountInstructions) {
        CALLGRIND_TOGGLE_COLLECT;
        t_countAllocs = false;
    } else if (g_phase == CountFileCalls) {
        t_countCalls = false;
    }
}

// Runs `body` three times: unmeasured, counted by callgrind with allocations counted, and
// with the file-system calls counted; writes the row's counts to the results file.
template <class Body>
void measure(const std::string& name, int units, Body&& body) {
    g_phase = Unmeasured;
    body();
    g_phase = CountInstructions;
    t_allocs = 0;
    CALLGRIND_ZERO_STATS;
    body();
    CALLGRIND_DUMP_STATS_AT(name.c_str());
    const long allocs = t_allocs;

    std::map<std::string, FileCalls> calls;
    t_calls = &calls;
    FsUtil::setCallObserver(onCall);
    g_phase = CountFileCalls;
    body();
    g_phase = Unmeasured;
    FsUtil::setCallObserver(nullptr);
    t_calls = nullptr;
    long maxOpens = 0, maxReads = 0, total = 0;
    for (const auto& f : calls) {
        if (f.second.opens > maxOpens) maxOpens = f.second.opens;
        if (f.second.reads > maxReads) maxReads = f.second.reads;
        total += f.second.total;
    }
    std::fprintf(g_results, "row %s %d %ld %ld %ld %ld %zu\n", name.c_str(), units, allocs, maxOpens, maxReads, total,
                 calls.size());
    for (const auto& f : calls)
        if (f.second.opens > 1 || f.second.reads > 1)
            std::fprintf(g_results, "file %s %s %ld %ld\n", name.c_str(), f.first.c_str(), f.second.opens,
                         f.second.reads);
    std::fflush(g_results);
}

const int kRepeat = 4;  // calls per measured run of the per-pair rows

int child(const char* resultsPath) {
    g_results = std::fopen(resultsPath, "w");
    if (g_results == nullptr) return 2;
    for (int count : {10, 60, 500}) {
        BenchRoot root;
        KSFile::writeAll("/hd1/moduleConfig/sensorAbility.xml",
                         "<sensorAbility><paramScheme><item name=\"SchemeNum\" value=\"4\"/></paramScheme>"
                         "</sensorAbility>\n");
        const std::vector<int> ids = IdleController::idsOf(count);
        const std::string n = std::to_string(count);
        {
            IdleController first(count);  // cold start: every file is created
            if (!initController(first)) return 3;
        }
        measure("init-warm/" + n, 1, [&] {
            IdleController c(count);
            windowOpen();
            int ok = initController(c);
            windowClose();
            if (!ok) std::exit(3);
            c.getDayNightThread().stop();
        });

        IdleController c(count);
        if (!initController(c)) return 3;
        c.getDayNightThread().stop();
        c.paramSchemeSwitchBody();  // the scheme of the time of day is applied
        const std::string a = pairList(ids, 0), b = pairList(ids, 1000), query = idList(ids);
        c.setParameters(a);
        int result = 0;
        measure("set-unchanged/" + n, kRepeat * count, [&] {
            windowOpen();
            for (int i = 0; i < kRepeat; ++i) result |= c.setParameters(a);
            windowClose();
        });
        measure("set-changed/" + n, kRepeat * count, [&] {
            windowOpen();
            for (int i = 0; i < kRepeat; ++i) result |= c.setParameters(i % 2 ? a : b);
            windowClose();
        });
        std::string out;
        measure("get/" + n, kRepeat * count, [&] {
            windowOpen();
            for (int i = 0; i < kRepeat; ++i) result |= c.getParameters(query, out) == 1 ? 0 : 1;
            windowClose();
        });
        c.flush();
        measure("flush-unchanged/" + n, 1, [&] {
            windowOpen();
            result |= c.flush();
            windowClose();
        });
        if (result != 0) return 4;
    }
    std::fclose(g_results);
    return 0;
}

// ---- the parent: runs the child under callgrind and reads its dumps ----

struct Row {
    int units = 0;
    long allocs = 0, maxOpens = 0, maxReads = 0, calls = 0, files = 0;
    unsigned long long instructions = 0;
    std::vector<std::string> overused;  // "path: N open, M read" of each file opened or read more than once
};

// Instruction totals of the calling thread per dump (the "-01" file of each dump).
std::map<std::string, unsigned long long> readDumps(const std::string& dir) {
    std::map<std::string, unsigned long long> totals;
    DIR* d = ::opendir(dir.c_str());
    if (d == nullptr) return totals;
    while (struct dirent* e = ::readdir(d)) {
        std::string name = e->d_name;
        if (name.size() < 3 || name.compare(name.size() - 3, 3, "-01") != 0) continue;
        std::ifstream in(dir + "/" + name);
        std::string line, desc;
        unsigned long long total = 0;
        bool haveTotal = false;
        const std::string trigger = "desc: Trigger: Client Request: ";
        while (std::getline(in, line)) {
            if (line.compare(0, trigger.size(), trigger) == 0) desc = line.substr(trigger.size());
            if (line.compare(0, 8, "totals: ") == 0) {
                total = std::strtoull(line.c_str() + 8, nullptr, 10);
                haveTotal = true;
            }
        }
        if (!desc.empty() && haveTotal) totals[desc] = total;
    }
    ::closedir(d);
    return totals;
}

std::string grouped(unsigned long long v) {
    std::string s = std::to_string(v);
    for (int i = static_cast<int>(s.size()) - 3; i > 0; i -= 3) s.insert(static_cast<size_t>(i), ",");
    return s;
}

int parent(const char* self) {
    char tmpl[] = "/tmp/sensorctl-count-XXXXXX";
    const char* dir = ::mkdtemp(tmpl);
    if (dir == nullptr) {
        std::perror("mkdtemp");
        return 2;
    }
    const std::string results = std::string(dir) + "/results";
    const std::string outFile = "--callgrind-out-file=" + std::string(dir) + "/callgrind.out";
    pid_t pid = ::fork();
    if (pid == 0) {
        int devNull = ::open("/dev/null", O_WRONLY);
        if (devNull >= 0) {
            ::dup2(devNull, 1);  // valgrind's own banner and the child's output
            ::dup2(devNull, 2);
        }
        ::execlp("valgrind", "valgrind", "--tool=callgrind", "--collect-atstart=no", "--separate-threads=yes",
                 outFile.c_str(), self, "--child", results.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "bench-count: the run under callgrind failed (status %d)%s\n",
                     WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                     WIFEXITED(status) && WEXITSTATUS(status) == 127 ? ": valgrind not found (scripts/setup --valgrind)"
                                                                     : "");
        return 2;
    }
    std::map<std::string, Row> rows;
    {
        std::ifstream in(results);
        std::string kind, name;
        while (in >> kind >> name) {
            if (kind == "row") {
                Row& r = rows[name];
                in >> r.units >> r.allocs >> r.maxOpens >> r.maxReads >> r.calls >> r.files;
            } else {
                std::string path;
                long opens = 0, reads = 0;
                in >> path >> opens >> reads;
                // The root is a fresh temporary directory: show the camera path.
                std::string::size_type cut = path.find("/mnt/");
                if (cut == std::string::npos) cut = path.find("/hd1/");
                if (cut != std::string::npos) path.erase(0, cut);
                rows[name].overused.push_back(path + ": " + std::to_string(opens) + " open, " + std::to_string(reads) +
                                              " read");
            }
        }
    }
    for (const auto& t : readDumps(dir)) rows[t.first].instructions = t.second;
    std::string cleanup = std::string("rm -rf ") + dir;
    if (std::system(cleanup.c_str()) != 0) std::fprintf(stderr, "bench-count: %s left behind\n", dir);

    bool missed = false;
    auto verdict = [&](bool ok) {
        if (!ok) missed = true;
        return ok ? "OK" : "MISSED";
    };
    std::printf("%-34s %4s  %-44s %-30s %s\n", "path", "ids", "measured", "goal", "");
    for (int count : {10, 60, 500}) {
        const std::string n = std::to_string(count);
        const double scale = count > 60 ? count / 60.0 : 1.0;
        char measured[128], goal[128];
        {
            const Row& r = rows["set-unchanged/" + n];
            double per = r.units ? static_cast<double>(r.instructions) / r.units : 0;
            double allocs = r.units ? static_cast<double>(r.allocs) / r.units : 0;
            std::snprintf(measured, sizeof(measured), "%.0f instr/pair, %.2f alloc/pair", per, allocs);
            std::snprintf(goal, sizeof(goal), "<= 250 instr, 0 alloc");
            std::printf("%-34s %4d  %-44s %-30s %s\n", "setParameters, unchanged pair", count, measured, goal,
                        verdict(r.units > 0 && per <= 250 && r.allocs == 0));
        }
        {
            const Row& r = rows["set-changed/" + n];
            double per = r.units ? static_cast<double>(r.instructions) / r.units : 0;
            double allocs = r.units ? static_cast<double>(r.allocs) / r.units : 0;
            std::snprintf(measured, sizeof(measured), "%.0f instr/pair, %.2f alloc/pair", per, allocs);
            std::snprintf(goal, sizeof(goal), "<= 400 instr");
            std::printf("%-34s %4d  %-44s %-30s %s\n", "setParameters, changed pair", count, measured, goal,
                        verdict(r.units > 0 && per <= 400));
        }
        {
            const Row& r = rows["get/" + n];
            double per = r.units ? static_cast<double>(r.instructions) / r.units : 0;
            double allocs = r.units ? static_cast<double>(r.allocs) / r.units : 0;
            std::snprintf(measured, sizeof(measured), "%.0f instr/id, %.2f alloc/id", per, allocs);
            std::snprintf(goal, sizeof(goal), "<= 250 instr");
            std::printf("%-34s %4d  %-44s %-30s %s\n", "getParameters, per id", count, measured, goal,
                        verdict(r.units > 0 && per <= 250));
        }
        {
            const Row& r = rows["flush-unchanged/" + n];
            const unsigned long long budget = static_cast<unsigned long long>(30000 * scale);
            std::snprintf(measured, sizeof(measured), "%s instr, %ld alloc, %ld fs calls", grouped(r.instructions).c_str(),
                          r.allocs, r.calls);
            std::snprintf(goal, sizeof(goal), "<= %s instr", grouped(budget).c_str());
            std::printf("%-34s %4d  %-44s %-30s %s\n", "flush, nothing changed", count, measured, goal,
                        verdict(r.units > 0 && r.instructions <= budget));
            std::snprintf(measured, sizeof(measured), "max %ld open, %ld read per file (%ld files)", r.maxOpens,
                          r.maxReads, r.files);
            std::printf("%-34s %4d  %-44s %-30s %s\n", "flush, nothing changed: files", count, measured,
                        "<= 1 open, 1 read per file", verdict(r.units > 0 && r.maxOpens <= 1 && r.maxReads <= 1));
            for (const std::string& f : r.overused) std::printf("%41s%s\n", "", f.c_str());
        }
        {
            const Row& r = rows["init-warm/" + n];
            const unsigned long long budget = static_cast<unsigned long long>(300000 * scale);
            std::snprintf(measured, sizeof(measured), "%s instr, %ld alloc, %ld fs calls", grouped(r.instructions).c_str(),
                          r.allocs, r.calls);
            std::snprintf(goal, sizeof(goal), "<= %s instr", grouped(budget).c_str());
            std::printf("%-34s %4d  %-44s %-30s %s\n", "warm init, 4 schemes", count, measured, goal,
                        verdict(r.units > 0 && r.instructions <= budget));
            std::snprintf(measured, sizeof(measured), "max %ld open, %ld read per file (%ld files)", r.maxOpens,
                          r.maxReads, r.files);
            std::printf("%-34s %4d  %-44s %-30s %s\n", "warm init, 4 schemes: files", count, measured,
                        "each file read once", verdict(r.units > 0 && r.maxOpens <= 1 && r.maxReads <= 1));
            for (const std::string& f : r.overused) std::printf("%41s%s\n", "", f.c_str());
        }
    }
    return missed ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--child") == 0) return child(argv[2]);
    if (argc != 1) {
        std::fprintf(stderr, "usage: %s   (runs itself under valgrind's callgrind)\n", argv[0]);
        return 2;
    }
    return parent(argv[0]);
}
