// `camsim replay` of a whole simulated day (sim/scenarios/clear-day.csv): the
// library's day/night worker and ISP loop on the virtual clock, one simulated
// second per step, with the light model and the report's bookkeeping. The
// counter ms_per_sim_hour is the real time one simulated hour takes.
#include <benchmark/benchmark.h>

#include <string>

#include "QuietConsole.h"
#include "camsim/ScenarioReplay.h"

namespace {

void replayDay(benchmark::State& state, bool guard) {
    QuietConsole quiet;
    camsim::Scenario scenario;
    std::string error;
    if (!scenario.load(std::string(SENSORCTL_SOURCE_DIR) + "/sim/scenarios/" +
                           (guard ? "porch-ir-reflection.csv" : "clear-day.csv"),
                       error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    camsim::ScenarioReplay::Options options;
    if (guard) {
        options.guardHoldOff = camsim::ScenarioReplay::kDefaultHoldOff;
        options.guardCeiling = camsim::ScenarioReplay::kDefaultCeiling;
    }
    double hours = 0, seconds = 0;
    for (auto _ : state) {
        camsim::ReplayReport report;
        if (!camsim::ScenarioReplay::run(scenario, options, report, error)) {
            state.SkipWithError(error.c_str());
            return;
        }
        hours += report.hours();
        seconds += report.realSeconds;
    }
    if (hours > 0) state.counters["ms_per_sim_hour"] = seconds * 1000 / hours;
}

void BM_ReplayClearDay(benchmark::State& state) { replayDay(state, false); }
void BM_ReplayPorchDayWithGuard(benchmark::State& state) { replayDay(state, true); }

BENCHMARK(BM_ReplayClearDay)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(BM_ReplayPorchDayWithGuard)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace
