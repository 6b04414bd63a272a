// camsim: the simulator camera. Runs libsensorctl as the camera application
// does, on the simulated fisheye board, with the camera's files under a root
// directory. See README.md ("Simulator camera") for the commands.
#include <ftw.h>
#include <signal.h>
#include <sys/stat.h>
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
#include "camsim/SimModule.h"
#include "camsim/ReplayCommand.h"
#ifdef CAMSIM_SERVE
#include "camsim/CamSimServer.h"
#endif
#include "platform/PlatformClock.h"

namespace {

void usage(FILE* o) {
    std::fprintf(o,
                 "usage: camsim [options]                 interactive prompt (or commands from standard input)\n"
                 "       camsim [options] SCRIPT          run the commands of a script file\n"
                 "       camsim [options] -c \"CMD; CMD\"   run the given commands\n"
                 "       camsim demo [--keep]             a compressed day on the virtual clock\n"
                 "       camsim replay SCENARIO [--json] [--svg FILE] [--reflection N] [--anti-flap[=H,C]]\n"
                 "                                        replay a light scenario, report day/night switching\n"
                 "       camsim [options] serve [--port N] [--listen ADDR]\n"
                 "                                        the image-settings pages and a JSON API over HTTP\n"
                 "                                        (default 127.0.0.1 port 8080; port 0: any free port).\n"
                 "                                        No authentication: a development tool; anyone who\n"
                 "                                        reaches the address can change and save the settings\n"
                 "options:\n"
                 "  --root DIR     the camera's files (default ./camroot; created on first run)\n"
                 "  --time HH:MM   device time of day at start (default: the host's local time)\n"
                 "  --light N      light level of the scene at start, 0-100 (default 80)\n"
                 "  --verbose      show the library's console lines\n"
                 "  --no-capture   leave the library's console lines on standard output as they come\n"
                 "  --reset-root   rewrite camsim's own sample files of the root (module, schemes, machine,\n"
                 "                 web texts); the library's files are kept\n"
                 "  --module NAME  the front end fitted: %s (default fisheye)\n"
                 "  --serial inprocess|pty   a serial module's line: the simulated device inside camsim (default)\n"
                 "                 or at the far end of a pseudo-terminal, through the real serial port\n"
                 "  --keep         (demo) keep the demo's own root and print where it is\n"
                 "Type 'help' at the prompt for the commands.\n",
                 camsim::SimModule::names().c_str());
}

#ifdef CAMSIM_SERVE
// camsim serve: the camera on the clock that follows real time, the server
// beside it, until SIGINT or SIGTERM.
int runServe(camsim::CamSim::Options options, const std::string& address, int port) {
    options.ticker = true;
    // Every thread started from here on inherits the blocked signals: this
    // thread takes them with sigwait.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    camsim::CamSim sim;
    if (!sim.start(options)) return 2;
    int status = 0;
    {
        camsim::CamSimServer server(sim);
        std::string problem;
        if (!server.start(address, port, problem)) {
            std::fprintf(stderr, "camsim serve: %s\n", problem.c_str());
            status = 2;
        } else {
            const std::string host = address.find(':') != std::string::npos ? "[" + address + "]" : address;
            std::fprintf(sim.out(),
                         "camsim serve: listening on http://%s:%d/ (no authentication: a development tool; "
                         "Ctrl-C stops)\n",
                         host.c_str(), server.port());
            std::fflush(sim.out());
            int got = 0;
            sigwait(&stopSignals, &got);
            std::fprintf(sim.out(), "camsim serve: stopping\n");
            server.stop();
        }
    }
    sim.leave();
    sim.stop();
    return status;
}
#endif

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

void onInterrupt(int) { camsim::CamSim::interrupt(); }

int runDemo(camsim::CamSim::Options options, bool keep, bool rootGiven) {
    const auto started = std::chrono::steady_clock::now();
    if (rootGiven) {
        // The demo saves values and moves schemes: it never runs on a root that
        // it did not make.
        std::fprintf(stderr,
                     "camsim: the demo runs in a temporary root of its own and never touches yours: leave out --root "
                     "(--keep keeps the demo's root and prints where it is)\n");
        return 2;
    }
    {
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
    {
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
    if (argc >= 2 && std::string(argv[1]) == "replay") return camsim::replayMain(argc - 2, argv + 2);
    camsim::CamSim::Options options;
    std::string commands, script, listen = "127.0.0.1";
    bool haveCommands = false, demo = false, keep = false, rootGiven = false, serve = false;
    int port = 8080;
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
        } else if (a == "--module") {
            next(options.module);
            if (camsim::SimModule::find(options.module) == nullptr) {
                std::fprintf(stderr, "camsim: unknown module '%s'; the modules are %s\n", options.module.c_str(),
                             camsim::SimModule::names().c_str());
                return 2;
            }
        } else if (a == "--serial") {
            std::string v;
            next(v);
            if (v == "pty")
                options.link = camsim::SimModule::Pty;
            else if (v == "inprocess" || v == "in-process")
                options.link = camsim::SimModule::InProcess;
            else {
                std::fprintf(stderr, "camsim: --serial wants inprocess or pty, not '%s'\n", v.c_str());
                return 2;
            }
        } else if (a == "--reset-root") {
            options.resetRoot = true;
        } else if (a == "--keep") {
            keep = true;
        } else if (a == "serve" && script.empty() && !demo && !serve) {
            serve = true;
        } else if (serve && a == "--port") {
            std::string v;
            next(v);
            if (!camsim::parseInt(v, port) || port < 0 || port > 65535) {
                std::fprintf(stderr, "camsim: --port wants 0-65535, not '%s'\n", v.c_str());
                return 2;
            }
        } else if (serve && a == "--listen") {
            next(listen);
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
    if (serve) {
        if (haveCommands || !script.empty() || demo) {
            std::fprintf(stderr, "camsim: serve takes no script or commands\n");
            return 2;
        }
#ifdef CAMSIM_SERVE
        return runServe(options, listen, port);
#else
        std::fprintf(stderr, "camsim: this build has no serve (cpp-httplib and nlohmann-json were not found)\n");
        return 2;
#endif
    }

    std::ifstream file;
    if (!script.empty()) {
        struct stat st {};
        const bool there = ::stat(script.c_str(), &st) == 0;
        if (there && !S_ISREG(st.st_mode)) {
            std::fprintf(stderr, "camsim: cannot read script %s: it is a directory, not a file of commands\n",
                         script.c_str());
            return 2;
        }
        file.open(script);
        if (!there || !file) {
            std::fprintf(stderr, "camsim: cannot read script %s\n", script.c_str());
            return 2;
        }
    }
    const bool interactive = !haveCommands && script.empty() && ::isatty(STDIN_FILENO);
    options.ticker = interactive;
    camsim::CamSim sim;
    // Ctrl-C stops a run (and at the prompt, leaves). Only this thread takes
    // it: the camera's threads start with it blocked.
    sigset_t intr;
    sigemptyset(&intr);
    sigaddset(&intr, SIGINT);
    pthread_sigmask(SIG_BLOCK, &intr, nullptr);
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // a blocked read returns, so the prompt sees it
    sigaction(SIGINT, &action, nullptr);
    const bool up = sim.start(options);
    pthread_sigmask(SIG_UNBLOCK, &intr, nullptr);
    if (!up) return 2;
    if (haveCommands) {
        bool more = true;
        for (const std::string& c : camsim::splitCommands(commands))
            if (!(more = sim.echoAndExecute(c))) break;
    } else if (!script.empty()) {
        sim.runScript(file);
    } else {
        sim.runInput(interactive);
    }
    sim.leave();
    const int errors = sim.errorCount();
    sim.stop();
    return errors == 0 ? 0 : 1;
}
