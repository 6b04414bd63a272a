#include "camsim/ScenarioReplay.h"

#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "adc/SimAdc.h"
#include "camsim/CamSim.h"
#include "drivers/fisheye/KsiaDriver.h"
#include "drivers/fisheye/S2FisheyeSenseController.h"
#include "ksia/SimIsp.h"
#include "platform/PlatformClock.h"
#include "platform/PlatformRoot.h"

namespace camsim {
namespace {

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

// Light levels at which the camera turns to night (at or below) and to day (at
// or above), from the thresholds in force: the light sensor's own (ids 32, 33)
// when the board judges by it, the ISP's (commands 50, 51) otherwise. The ISP
// scene level is 100 - light, so both come out the same way.
void thresholds(ISensorController* controller, int& nightLevel, int& dayLevel) {
    int dtn = SimIsp::instance().value(KSIA_DTN_THRESHOLD);
    int ntd = SimIsp::instance().value(KSIA_NTD_THRESHOLD);
    auto* fisheye = dynamic_cast<S2FisheyeSenseController*>(controller);
    if (fisheye != nullptr && fisheye->judgesByLightBoard()) {
        dtn = fisheye->getStoredInfraredDTNThreshold();
        ntd = fisheye->getStoredInfraredNTDThreshold();
    }
    nightLevel = 100 - dtn;
    dayLevel = 100 - ntd;
}

}  // namespace

bool ScenarioReplay::run(const Scenario& scenario, const Options& options, ReplayReport& report, std::string& error) {
    char tmpl[] = "/tmp/camsim-replay-XXXXXX";
    if (::mkdtemp(tmpl) == nullptr) {
        error = "cannot make a temporary root";
        return false;
    }
    const std::string root = tmpl;
    FILE* sink = std::fopen("/dev/null", "w");
    bool ok = false;
    {
        CamSim sim;
        CamSim::Options o;
        o.root = root;
        const int start = scenario.startSeconds();
        o.startHour = start / 3600 % 24;
        o.startMinute = start / 60 % 60;
        o.startSecond = start % 60;
        o.output = sink;
        o.light = static_cast<int>(std::lround(scenario.lightAt(start)));  // what the first cycle sees
        if (sim.start(o)) {
            replay(sim, scenario, options, report);
            ok = true;
        } else {
            error = "the simulator camera did not come up";
        }
    }
    if (sink != nullptr) std::fclose(sink);
    ::nftw(root.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    return ok;
}

void ScenarioReplay::replay(CamSim& sim, const Scenario& scenario, const Options& options, ReplayReport& r) {
    const auto began = std::chrono::steady_clock::now();
    r = ReplayReport();
    r.scenario = scenario.name();
    r.startSeconds = scenario.startSeconds();
    r.endSeconds = scenario.endSeconds();
    r.reflection = options.reflection >= 0 ? options.reflection : scenario.reflection();
    r.guard = options.guardHoldOff > 0;
    r.guardHoldOff = r.guard ? options.guardHoldOff : 0;
    r.guardCeiling = r.guard ? options.guardCeiling : 0;
    sim.m_controller->setDNAntiFlap(r.guardHoldOff, r.guardCeiling);
    thresholds(sim.m_controller.get(), r.nightLevel, r.dayLevel);

    SimFrontEnd& fe = *sim.m_pFrontEnd;
    sim.m_pMonitor->prime();
    int gpio0 = 0, sets0 = 0, reads0 = 0;
    sim.m_pMonitor->poll();
    fe.activity(gpio0, sets0, reads0);

    const int total = r.endSeconds - r.startSeconds;
    r.samples.reserve(static_cast<size_t>(total));
    int prevState = 1;  // every camera begins in day
    int wrongSince = -1;
    for (int i = 0; i < total; ++i) {
        const int t = r.startSeconds + i;
        PlatformClock::waitForSleepers(sim.m_nSleepers, 30000);
        ReplayReport::Sample s;
        const int state = sim.m_controller->getCurrentDNState();
        s.state = static_cast<signed char>(state == 0 ? 0 : 1);
        s.lamps = fe.irLampsOn();
        s.scene = static_cast<float>(scenario.lightAt(t));
        s.sensor = static_cast<float>(std::min(100.0, s.scene + (s.lamps ? r.reflection : 0.0)));
        fe.setLight(static_cast<int>(std::lround(s.sensor)));
        if (scenario.hasGain()) {
            s.gain = static_cast<short>(std::lround(scenario.gainAt(t)));
            SimIsp::instance().setValue(KSIA_FIXED_GAIN, s.gain);
        }
        s.a0 = static_cast<short>(sim.m_controller->getLastA0());
        if (s.state != prevState) {
            r.transitions.push_back({t, s.state});
            if (wrongSince >= 0) r.latencies.push_back(t - wrongSince);
            wrongSince = -1;
            prevState = s.state;
        }
        const bool wrongNight = s.state == 0 && s.scene > r.dayLevel;
        const bool wrongDay = s.state == 1 && s.scene < r.nightLevel;
        if (wrongNight || wrongDay) {
            ++r.wrongSeconds;
            (wrongNight ? r.wrongNightSeconds : r.wrongDaySeconds)++;
            if (wrongSince < 0) wrongSince = t;
        } else {
            wrongSince = -1;
        }
        r.samples.push_back(s);
        sim.advance(1000, false);
        for (const std::string& path : sim.m_pMonitor->lastFiles()) {
            struct stat st {};
            if (::stat(PlatformRoot::resolve(path).c_str(), &st) == 0) {
                r.flashBytes += static_cast<long long>(st.st_size);
                ++r.filesWritten;
            }
        }
    }
    int gpio = 0, sets = 0, reads = 0;
    fe.activity(gpio, sets, reads);
    r.gpioWrites = gpio - gpio0;
    r.ispSets = sets - sets0;
    r.ispReads = reads - reads0;
    r.realSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
}

}  // namespace camsim
