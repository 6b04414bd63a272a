// Controller start-up and the idle work of its loops, for a controller whose
// driver does nothing: the platform root lies on tmpfs and the clock is the
// virtual one, so the driver's pauses (the 100 ms IR-cut pause of the first
// day mode) cost no time.
//
//   BM_InitWarm      init with every file present and the versions equal
//   BM_InitCold      init on an empty root: state file, factory file and four
//                    scheme files are created
//   BM_IdleCycle     one day/night worker cycle without its one-second wait
//                    (the scheme step and the day/night handling), nothing to
//                    switch, no file read or written
//   BM_ISPPassIdle   one ISP application pass with nothing changed (pause 0)
//
// The library's console lines are off while a benchmark runs.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <ftw.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "IdleController.h"
#include "QuietConsole.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "core/ISensorController.h"
#include "platform/FsUtil.h"
#include "platform/KSFile.h"
#include "platform/PlatformClock.h"
#include "platform/PlatformRoot.h"
#include "storage/IdManager.h"

namespace {

const int kSchemes = 4;

int removeEntry(const char* path, const struct stat*, int, struct FTW*) {
    return ::remove(path);
}

// A driver that does nothing: 60 common ids, every read gives the id, every
// write succeeds, day reported by the sensor, a constant gain.
// The platform root on tmpfs, the virtual clock, and the console off.
class BenchEnv {
public:
    BenchEnv() {
        char tmpl[] = "/dev/shm/sensorctl-bench-XXXXXX";
        char* d = ::mkdtemp(tmpl);
        m_dir = d ? d : "/tmp";
        PlatformRoot::set(m_dir);
        PlatformClock::useVirtual(1767571200);
        PlatformClock::setTimeOfDay(12, 0, 0);
        write("/hd1/moduleConfig/sensorAbility.xml",
              "<sensorAbility><paramScheme><item name=\"SchemeNum\" value=\"" + std::to_string(kSchemes) +
                  "\"/></paramScheme></sensorAbility>\n");
        m_pump = std::thread([this] { pumpLoop(); });
    }
    ~BenchEnv() {
        {
            std::lock_guard<std::mutex> l(m_mu);
            m_quit = true;
        }
        m_cv.notify_all();
        m_pump.join();
        PlatformClock::useReal();
        PlatformRoot::set("/");
        ::nftw(m_dir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }

    void write(const std::string& cameraPath, const std::string& text) {
        std::string real = m_dir + cameraPath;
        FsUtil::makeDirs(FsUtil::dirName(real));
        std::ofstream(real, std::ios::binary | std::ios::trunc) << text;
    }
    void removeConfigFiles() {
        std::string dir = m_dir + "/mnt/mtd/code/config_file";
        ::nftw(dir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }

    // Runs init with the clock advanced through the pauses it makes.
    int init(ISensorController& c) {
        ModuleConfigure cfg(88, "RS485=/dev/ttyS1;isInfrared=1;DNDefault=0", "");
        VideoResolution res(1920, 1080);
        setPumping(true);
        int r = c.init(50, cfg, res);
        setPumping(false);
        // This thread was released from a virtual wait; tell the clock it runs on.
        PlatformClock::threadLeaving();
        return r;
    }

    // Size and modification time of every file under the root.
    std::map<std::string, std::pair<long long, long long>> snapshot() {
        s_snapshot.clear();
        ::nftw(m_dir.c_str(), collect, 16, FTW_PHYS);
        return s_snapshot;
    }

private:
    static int collect(const char* path, const struct stat* st, int type, struct FTW*) {
        if (type == FTW_F)
            s_snapshot[path] = {
                static_cast<long long>(st->st_size),
                static_cast<long long>(st->st_mtim.tv_sec) * 1000000000LL + st->st_mtim.tv_nsec};
        return 0;
    }
    static std::map<std::string, std::pair<long long, long long>> s_snapshot;

    void setPumping(bool on) {
        {
            std::lock_guard<std::mutex> l(m_mu);
            m_pumping = on;
        }
        m_cv.notify_all();
    }
    // While init runs, releases every pause it makes as soon as it starts.
    void pumpLoop() {
        std::unique_lock<std::mutex> l(m_mu);
        for (;;) {
            m_cv.wait(l, [this] { return m_pumping || m_quit; });
            if (m_quit) return;
            l.unlock();
            if (PlatformClock::waitForSleepers(1, 1)) PlatformClock::advanceMs(100);
            l.lock();
        }
    }

    QuietConsole m_quiet;
    std::string m_dir;
    std::mutex m_mu;
    std::condition_variable m_cv;
    bool m_pumping = false;
    bool m_quit = false;
    std::thread m_pump;
};

std::map<std::string, std::pair<long long, long long>> BenchEnv::s_snapshot;

void BM_InitWarm(benchmark::State& state) {
    BenchEnv env;
    {
        IdleController first;
        if (!env.init(first)) state.SkipWithError("first init failed");
    }
    const auto files = env.snapshot();
    for (auto _ : state) {
        state.PauseTiming();
        IdleController* c = new IdleController();
        state.ResumeTiming();
        int r = env.init(*c);
        state.PauseTiming();
        if (!r) state.SkipWithError("init failed");
        delete c;
        state.ResumeTiming();
    }
    // Warm: the parameter files were neither removed nor rebuilt.
    auto now = env.snapshot();
    for (const char* name : {"sensor_Factory.cfg", "sensor0.cfg", "sensor3.cfg"}) {
        std::string key;
        for (const auto& f : files)
            if (f.first.size() > std::string(name).size() &&
                f.first.compare(f.first.size() - std::string(name).size(), std::string::npos, name) == 0 &&
                f.first[f.first.size() - std::string(name).size() - 1] == '/')
                key = f.first;
        if (key.empty() || now[key] != files.at(key))
            state.SkipWithError("a warm init rebuilt a parameter file");
    }
}
BENCHMARK(BM_InitWarm)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_InitCold(benchmark::State& state) {
    BenchEnv env;
    for (auto _ : state) {
        state.PauseTiming();
        env.removeConfigFiles();
        IdleController* c = new IdleController();
        state.ResumeTiming();
        int r = env.init(*c);
        state.PauseTiming();
        if (!r || !KSFile::isExist("/mnt/mtd/code/config_file/sensor3.cfg"))
            state.SkipWithError("cold init did not create the scheme files");
        delete c;
        state.ResumeTiming();
    }
}
BENCHMARK(BM_InitCold)->Unit(benchmark::kMicrosecond)->UseRealTime();

std::atomic<long> g_reads{0};
void countRead(const std::string&) {
    ++g_reads;
}

void BM_IdleCycle(benchmark::State& state) {
    BenchEnv env;
    IdleController c;
    if (!env.init(c)) state.SkipWithError("init failed");
    // The worker is stopped; its cycle body runs here instead, without its wait.
    c.getDayNightThread().stop();
    c.paramSchemeSwitchBody();  // the first step applies scheme 0
    c.DNSwitchHandle();         // the day reading starts the switch delay
    PlatformClock::advanceMs(10000);
    c.DNSwitchHandle();  // past the delay: day is decided each cycle, nothing to drive
    auto before = env.snapshot();
    g_reads = 0;
    KSFile::setBeforeReadHook(countRead);
    for (auto _ : state) {
        c.paramSchemeSwitchBody();
        c.DNSwitchHandle();
    }
    KSFile::setBeforeReadHook(nullptr);
    if (g_reads.load() != 0) state.SkipWithError("an idle cycle read a file");
    if (env.snapshot() != before) state.SkipWithError("an idle cycle wrote a file");
}
BENCHMARK(BM_IdleCycle)->Unit(benchmark::kNanosecond);

void BM_ISPPassIdle(benchmark::State& state) {
    BenchEnv env;
    env.write("/hd1/program/config/ISPParam.xml",
              "<config realTimeUpdate=\"0\" time=\"0\">"
              "<DN enable=\"1\"><night min=\"0\" max=\"1\"><item name=\"EE\" value=\"20\"/><item name=\"DC\" "
              "value=\"0\"/>"
              "<item name=\"A0\" value=\"48\"/><item name=\"TM\" value=\"12\"/></night>"
              "<day min=\"1\" max=\"2\"><item name=\"EE\" value=\"45\"/><item name=\"DC\" value=\"1\"/>"
              "<item name=\"A0\" value=\"16\"/><item name=\"TM\" value=\"4\"/></day></DN>"
              "<GAIN enable=\"1\"><low min=\"0\" max=\"24\"><item name=\"DC\" value=\"1\"/></low>"
              "<mid min=\"24\" max=\"48\"><item name=\"DC\" value=\"2\"/></mid></GAIN></config>");
    IdleController c;
    if (!env.init(c)) state.SkipWithError("init failed");
    c.getDayNightThread().stop();
    c.ISPParamBody();  // the first pass applies the values; the rest find nothing new
    for (auto _ : state) benchmark::DoNotOptimize(c.ISPParamBody());
}
BENCHMARK(BM_ISPPassIdle)->Unit(benchmark::kNanosecond);

}  // namespace
