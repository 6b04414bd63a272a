// The fisheye board through the manager, on the simulated board: one
// setParameters of all 56 ids and one getAllParameters, as the web interface
// issues them.
#include <benchmark/benchmark.h>
#include <ftw.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "adc/SimAdc.h"
#include "app/IGPIO.h"
#include "app/IUARTController.h"
#include "core/SensorControllerManager.h"
#include "ksia/SimIsp.h"
#include "platform/FsUtil.h"
#include "IdleDevices.h"
#include "QuietConsole.h"
#include "platform/KSFile.h"
#include "platform/PlatformClock.h"
#include "platform/PlatformRoot.h"

namespace {

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

// A fisheye camera brought up by the manager in a temporary root on the virtual
// clock. The day/night worker waits on that clock, which the benchmark never
// moves, so it stays out of the measurements. The library's console lines are
// off while the camera exists.
class FisheyeCamera {
public:
    FisheyeCamera() {
        char tmpl[] = "/tmp/bench-fisheye-XXXXXX";
        m_strDir = ::mkdtemp(tmpl) ? tmpl : "/tmp/bench-fisheye";
        PlatformRoot::set(m_strDir);
        PlatformClock::useVirtual(1767571200);
        PlatformClock::setTimeOfDay(12, 0);
        KSFile::writeAll("/hd1/moduleConfig/sensorAbility.xml",
                         "<sensorAbility><paramScheme><item name=\"SchemeNum\" value=\"4\"/></paramScheme>"
                         "</sensorAbility>\n");
        KSFile::writeAll("/hd1/moduleConfig/machineInfo.xml",
                         "<machineInfo hardwareModel=\"KS-S2-FE\" hardwareCode=\"0x5a17\"/>\n");
        SimIsp::instance().reset();
        SimAdc::install();
        SimAdc::instance().reset();
        m_pManager = new SensorControllerManager();
        m_pManager->setUARTController(SafePointer<IUARTController>(new IdleUART()));
        m_pManager->setGPIO(SafePointer<IGPIO>(new IdleGPIO(0)));
        ModuleConfigure cfg(88, "isInfrared=0;GPIO=1,5,1;autoFocus=1;manualFocus=0;fisheye=1;autoIris=0", "");
        std::atomic<bool> done{false};
        std::thread init([&] {
            m_pManager->init(0, VideoResolution(1920, 1080), cfg);
            PlatformClock::threadLeaving();
            done = true;
        });
        while (!done.load())
            if (PlatformClock::waitForSleepers(1, 5)) PlatformClock::advanceMs(10);
        init.join();
        // One cycle of the worker applies the scheme in force; then it waits.
        PlatformClock::waitForSleepers(1);
        PlatformClock::advanceMs(1000);
        PlatformClock::waitForSleepers(1);
        m_controller = m_pManager->getSensorController();
        SimIsp::instance().clearCalls();
    }
    ~FisheyeCamera() {
        m_controller.reset();
        delete m_pManager;
        SimAdc::uninstall();
        PlatformClock::useReal();
        PlatformRoot::set("/");
        ::nftw(m_strDir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }
    ISensorController& controller() { return *m_controller; }
    bool ready() const { return !m_controller.isNull() && m_controller->getSensorStatus() == 2; }

private:
    QuietConsole m_quiet;
    std::string m_strDir;
    SensorControllerManager* m_pManager = nullptr;
    SafePointer<ISensorController> m_controller;
};

// Ids 1-56 (42 is no parameter of the board) with in-range values; the two
// variants differ in every id, so no value is skipped as unchanged.
std::string allIdsList(int variant) {
    const int a[57] = {0,  11, 12, 13, 14, 1, 17, 16, 1, 19, 20, 0, 60, 20, 1,  25, 2, 1, 28, 3,
                       3,  1,  2,  33, 34, 0, 36, 37, 19, 10, 7, 20, 80, 10, 6, 2, 45, 1, 48, 9,
                       3,  7,  0,  1,  1,  0, 1,  1,  1,  1,  1, 1,  1,  1,  1, 55, 6};
    const int b[57] = {0,  21, 22, 23, 24, 0, 15, 14, 0, 29, 30, 1, 65, 25, 0,  35, 1, 0, 38, 2,
                       1,  0,  1,  43, 44, 2, 46, 47, 20, 20, 6, 30, 85, 15, 7, 1, 55, 0, 58, 8,
                       2,  8,  0,  2,  2,  0, 2,  2,  2,  2,  2, 2,  2,  2,  0, 65, 7};
    const int* v = variant == 0 ? a : b;
    std::string list;
    char item[32];
    for (int id = 1; id <= 56; ++id) {
        if (id == 42) continue;
        std::snprintf(item, sizeof(item), "(%d,%d)", id, v[id]);
        list += item;
    }
    return list;
}

void BM_SetAll56ThroughManager(benchmark::State& state) {
    FisheyeCamera camera;
    if (!camera.ready()) {
        state.SkipWithError("the fisheye camera did not come up");
        return;
    }
    const std::string lists[2] = {allIdsList(0), allIdsList(1)};
    int64_t n = 0;
    for (auto _ : state) {
        int r = camera.controller().setParameters(lists[n & 1]);
        benchmark::DoNotOptimize(r);
        if (r != 0) {
            state.SkipWithError("setParameters refused a value");
            break;
        }
        if ((++n & 255) == 0) {
            state.PauseTiming();
            SimIsp::instance().clearCalls();  // the simulation's call log would grow without end
            state.ResumeTiming();
        }
    }
    state.SetItemsProcessed(state.iterations() * 55);
    state.counters["ISP_calls_per_op"] = 0;
    SimIsp::instance().clearCalls();
    camera.controller().setParameters(lists[0]);
    camera.controller().setParameters(lists[1]);
    state.counters["ISP_calls_per_op"] = static_cast<double>(SimIsp::instance().calls().size()) / 2.0;
}
BENCHMARK(BM_SetAll56ThroughManager)->Unit(benchmark::kMicrosecond);

void BM_GetAllParameters(benchmark::State& state) {
    FisheyeCamera camera;
    if (!camera.ready()) {
        state.SkipWithError("the fisheye camera did not come up");
        return;
    }
    std::string out;
    for (auto _ : state) {
        int r = camera.controller().getAllParameters(out);
        benchmark::DoNotOptimize(r);
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["bytes"] = static_cast<double>(out.size());
}
BENCHMARK(BM_GetAllParameters)->Unit(benchmark::kMicrosecond);

// The read of every parameter from the ISP that builds the factory file.
void BM_GetAllParametersFromSensor(benchmark::State& state) {
    FisheyeCamera camera;
    if (!camera.ready()) {
        state.SkipWithError("the fisheye camera did not come up");
        return;
    }
    std::string out;
    int64_t n = 0;
    for (auto _ : state) {
        int r = camera.controller().getAllParametersFromSensor(out);
        benchmark::DoNotOptimize(r);
        if ((++n & 255) == 0) {
            state.PauseTiming();
            SimIsp::instance().clearCalls();
            state.ResumeTiming();
        }
    }
}
BENCHMARK(BM_GetAllParametersFromSensor)->Unit(benchmark::kMicrosecond);

}  // namespace
