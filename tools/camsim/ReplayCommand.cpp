#include "camsim/ReplayCommand.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "camsim/CommandLine.h"
#include "camsim/ScenarioReplay.h"

namespace camsim {
namespace {

void replayUsage(FILE* o) {
    std::fprintf(o,
                 "usage: camsim replay SCENARIO.csv [--json] [--svg FILE] [--reflection N] [--anti-flap[=HOLDOFF,CEILING]]\n"
                 "  --json         the report as one JSON object\n"
                 "  --svg FILE     also draw the timeline (scene light, sensor reading, thresholds, state, IR lamps)\n"
                 "  --reflection N infrared reflection while the lamps are lit, 0-100 (default: the scenario's)\n"
                 "  --anti-flap    turn on the anti-flap guard (default hold-off %d s, ceiling %d s)\n"
                 "Scenario files: docs/scenarios.md; shipped ones in sim/scenarios/.\n",
                 ScenarioReplay::kDefaultHoldOff, ScenarioReplay::kDefaultCeiling);
}

}  // namespace

int replayMain(int argc, const char* const* argv) {
    std::string file, svg;
    bool json = false;
    ScenarioReplay::Options options;
    for (int i = 0; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "-h" || a == "--help") {
            replayUsage(stdout);
            return 0;
        } else if (a == "--json") {
            json = true;
        } else if (a == "--svg" || a == "--reflection") {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "camsim replay: %s needs a value\n", a.c_str());
                return 2;
            }
            const std::string v = argv[++i];
            if (a == "--svg") {
                svg = v;
            } else {
                int r = 0;
                if (!parseInt(v, r) || r < 0 || r > 100) {
                    std::fprintf(stderr, "camsim replay: --reflection wants 0-100, not '%s'\n", v.c_str());
                    return 2;
                }
                options.reflection = r;
            }
        } else if (a == "--anti-flap") {
            options.guardHoldOff = ScenarioReplay::kDefaultHoldOff;
            options.guardCeiling = ScenarioReplay::kDefaultCeiling;
        } else if (a.compare(0, 12, "--anti-flap=") == 0) {
            int h = 0, c = 0;
            char tail = 0;
            if (std::sscanf(a.c_str() + 12, "%d,%d%c", &h, &c, &tail) != 2 || h <= 0 || c <= 0) {
                std::fprintf(stderr, "camsim replay: --anti-flap=HOLDOFF,CEILING wants two positive numbers of seconds\n");
                return 2;
            }
            options.guardHoldOff = h;
            options.guardCeiling = c;
        } else if (!a.empty() && a[0] != '-' && file.empty()) {
            file = a;
        } else {
            std::fprintf(stderr, "camsim replay: unknown argument '%s'\n", a.c_str());
            replayUsage(stderr);
            return 2;
        }
    }
    if (file.empty()) {
        replayUsage(stderr);
        return 2;
    }
    Scenario scenario;
    std::string error;
    if (!scenario.load(file, error)) {
        std::fprintf(stderr, "camsim replay: %s\n", printable(error).c_str());
        return 2;
    }
    ReplayReport report;
    if (!ScenarioReplay::run(scenario, options, report, error)) {
        std::fprintf(stderr, "camsim replay: %s\n", error.c_str());
        return 2;
    }
    if (json)
        report.printJson(stdout);
    else
        report.printText(stdout);
    if (!svg.empty()) {
        std::ofstream out(svg, std::ios::trunc);
        out << report.svg();
        if (!out) {
            std::fprintf(stderr, "camsim replay: cannot write %s\n", svg.c_str());
            return 1;
        }
        if (!json) std::printf("timeline: %s\n", svg.c_str());
    }
    return 0;
}

}  // namespace camsim
