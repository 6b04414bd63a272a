// camsim: the simulator camera. Runs libsensorctl as the camera application
// does, on the simulated fisheye board, with the camera's files under a root
// directory. See README.md ("Simulator camera") for the commands.
#include <ftw.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include "camsim/CamSim.h"
#include "camsim/CommandLine.h"
#include "platform/PlatformClock.h"

namespace {

void usage(FILE* o) {
    std::fprintf(o,
                 "usage: camsim [options]                 interactive prompt (or commands from standard input)\n"
                 "       camsim [options] SCRIPT          run the commands of a script file\n"
                 "       camsim [options] -c \"CMD; CMD\"   run the given commands\n"
                 "       camsim demo [--keep]             a compressed day on the virtual clock\n"
                 "options:\n"
                 "  --root DIR     the camera's files (default ./camroot; created on first run)\n"
                 "  --time HH:MM   device time of day at start (default: the host's local time)\n"
                 "  --light N      light level of the scene at start, 0-100 (default 80)\n"
                 "  --verbose      show the library's console lines\n"
                 "  --no-capture   leave the library's console lines on standard output as they come\n"
                 "  --keep         (demo) keep the demo's root directory\n"
                 "Type 'help' at the prompt for the commands.\n");
}

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

int runDemo(camsim::CamSim::Options options, bool keep, bool rootGiven) {
    const auto started = std::chrono::steady_clock::now();
    if (!rootGiven) {
        char tmpl[] = "/tmp/camsim-demo-XXXXXX";
        if (::mkdtemp(tmpl) == nullptr) {
            std::perror("camsim: mkdtemp");
            return 2;
        }
        options.root = tmpl;
    }
    options.startHour = 5;
    options.startMinute = 30;
    options.light = 60;  // between the day/night thresholds: the camera starts as it always does, in day
    std::printf("camsim demo: a compressed day of the fisheye camera on the virtual clock\n");
    std::fflush(stdout);
    int status = 0;
    camsim::CamSim::Options used = options;
    {
        camsim::CamSim sim;
        if (!sim.start(options)) {
            status = 2;
        } else {
            const int64_t simStart = PlatformClock::nowMs();
            for (const char* const* line = camsim::CamSim::kDemoScript; *line != nullptr; ++line) {
                std::string t = *line;
                if (t.compare(0, 4, "echo") != 0) {
                    struct tm now {};
                    PlatformClock::localTime(now);
                    std::fprintf(sim.out(), "[%02d:%02d:%02d] > %s\n", now.tm_hour, now.tm_min, now.tm_sec, t.c_str());
                }
                sim.execute(t);
            }
            const int64_t simMs = PlatformClock::nowMs() - simStart;
            const camsim::EventMonitor::Totals& t = sim.totals();
            const double realS =
                std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
            std::fprintf(sim.out(),
                         "\nsummary\n"
                         "  scheme switches       %d\n"
                         "  day/night transitions %d (%d to night, %d to day)\n",
                         t.schemeSwitches, t.toDay + t.toNight, t.toNight, t.toDay);
            sim.frontEnd().printSummary(sim.out());
            std::fprintf(sim.out(),
                         "  files written         %d\n"
                         "  refused commands      %d%s\n"
                         "  simulated running     %lld s on the virtual clock, device clock moved over a whole day\n"
                         "  real time             %.2f s\n",
                         t.filesWritten, sim.errorCount(),
                         sim.errorCount() == 2 ? " (the two out-of-range values at 12:00, as intended)" : "",
                         static_cast<long long>(simMs / 1000), realS);
        }
    }
    if (!rootGiven) {
        if (keep) {
            std::printf("camsim demo: root kept in %s\n", used.root.c_str());
        } else {
            ::nftw(used.root.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
        }
    }
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    camsim::CamSim::Options options;
    std::string commands, script;
    bool haveCommands = false, demo = false, keep = false, rootGiven = false;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto next = [&](std::string& into) {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "camsim: %s needs a value\n", a.c_str());
                std::exit(2);
            }
            into = argv[++i];
        };
        if (a == "-h" || a == "--help") {
            usage(stdout);
            return 0;
        } else if (a == "--root") {
            next(options.root);
            rootGiven = true;
        } else if (a == "-c") {
            next(commands);
            haveCommands = true;
        } else if (a == "--time") {
            std::string v;
            next(v);
            int s = 0;
            if (!camsim::parseTimeOfDay(v, options.startHour, options.startMinute, s)) {
                std::fprintf(stderr, "camsim: --time wants HH:MM, not '%s'\n", v.c_str());
                return 2;
            }
        } else if (a == "--light") {
            std::string v;
            next(v);
            if (!camsim::parseInt(v, options.light) || options.light < 0 || options.light > 100) {
                std::fprintf(stderr, "camsim: --light wants 0-100, not '%s'\n", v.c_str());
                return 2;
            }
        } else if (a == "--verbose") {
            options.verbose = true;
        } else if (a == "--no-capture") {
            options.capture = false;
        } else if (a == "--keep") {
            keep = true;
        } else if (a == "demo" && script.empty() && !demo) {
            demo = true;
        } else if (!a.empty() && a[0] != '-' && script.empty()) {
            script = a;
        } else {
            std::fprintf(stderr, "camsim: unknown argument '%s'\n", a.c_str());
            usage(stderr);
            return 2;
        }
    }
    if (demo) return runDemo(options, keep, rootGiven);

    std::ifstream file;
    if (!script.empty()) {
        file.open(script);
        if (!file) {
            std::fprintf(stderr, "camsim: cannot read script %s\n", script.c_str());
            return 2;
        }
    }
    const bool interactive = !haveCommands && script.empty() && ::isatty(STDIN_FILENO);
    options.ticker = interactive;
    camsim::CamSim sim;
    if (!sim.start(options)) return 2;
    if (haveCommands) {
        for (const std::string& c : camsim::splitCommands(commands)) {
            std::string t = camsim::trim(c);
            if (t.empty()) continue;
            if (t.compare(0, 4, "echo") != 0) {
                struct tm now {};
                PlatformClock::localTime(now);
                std::fprintf(sim.out(), "[%02d:%02d:%02d] > %s\n", now.tm_hour, now.tm_min, now.tm_sec, t.c_str());
            }
            if (!sim.execute(t)) break;
        }
    } else if (!script.empty()) {
        sim.runScript(file, false);
    } else {
        sim.runScript(std::cin, interactive);
    }
    const int errors = sim.errorCount();
    sim.stop();
    return errors == 0 ? 0 : 1;
}
