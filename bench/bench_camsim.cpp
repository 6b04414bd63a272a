// The simulator camera over a simulated day, as `camsim -c "run 24h"` runs it:
// the day/night worker, the ISP loop and the timeline, on the virtual clock.
#include <benchmark/benchmark.h>

#include <cstdio>

#include "BenchRoot.h"
#include "camsim/CamSim.h"

namespace {

void BM_CamsimSimulatedDay(benchmark::State& state) {
    BenchRoot root;
    FILE* sink = std::fopen("/dev/null", "w");
    camsim::CamSim::Options options;
    options.root = root.dir() + "/camroot";
    options.startHour = 10;
    options.output = sink;
    {
        camsim::CamSim sim;
        if (!sim.start(options)) {
            state.SkipWithError("the simulator camera did not come up");
        } else {
            for (auto _ : state) sim.execute("run 24h");
            if (sim.errorCount() != 0) state.SkipWithError("run 24h failed");
        }
    }
    std::fclose(sink);
}
BENCHMARK(BM_CamsimSimulatedDay)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

}  // namespace
