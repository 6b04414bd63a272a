#pragma once
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <istream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "app/ModuleConfigure.h"
#include "camsim/ConsoleCapture.h"
#include "camsim/EventMonitor.h"
#include "camsim/SimScheduling.h"
#include "camsim/SimFrontEnd.h"
#include "camsim/SimModule.h"
#include "core/SensorControllerManager.h"
#include "platform/GThread.h"

namespace camsim {

// The simulator camera: the library started as the camera application starts
// it, on a simulated front end (SimFrontEnd), with the camera's files under a
// root directory, driven by commands.
class CamSim {
public:
    struct Options {
        std::string root = "./camroot";
        int startHour = -1;  // device time at start; -1: the host's local time
        int startMinute = 0;
        int startSecond = 0;
        int light = 80;      // light level of the scene, percent
        bool verbose = false;
        bool capture = true; // take over standard output to sort the library's lines
        bool ticker = false; // let the virtual clock follow real time (interactive use)
        FILE* output = nullptr;  // where camsim's own lines go; nullptr: standard output
        bool resetRoot = false;  // rewrite camsim's own sample files of the root
        std::string module = "fisheye";  // the front end fitted (a name of SimModule::table())
        SimModule::Link link = SimModule::InProcess;  // where a serial module's line runs
    };

    CamSim();
    ~CamSim();
    CamSim(const CamSim&) = delete;
    CamSim& operator=(const CamSim&) = delete;

    // Prepares the root, brings the camera up and starts its threads. False
    // (with the reason printed) when the camera could not be brought up.
    bool start(const Options& options);
    // Stops the threads and the controller, gives standard output back.
    void stop();

    // Runs one command line; false when it asks to quit.
    bool execute(const std::string& line);
    // Runs commands from a stream (script file) until its end or "quit".
    void runScript(std::istream& in);
    // Runs commands from standard input (a prompt when `prompt`) until its end,
    // "quit" or a Ctrl-C at an empty prompt.
    void runInput(bool prompt);
    // Echoes a command with the device time and runs it; false when it asks to quit.
    bool echoAndExecute(const std::string& command);
    // Before camsim leaves: warns of values set and not saved (unless "quit!").
    void leave();
    // Ctrl-C: stops a run in progress (called from the signal handler).
    static void interrupt();
    // Number of commands that failed.
    int errorCount() const { return m_nErrors; }

    // The scripted compressed day of "camsim demo".
    static const char* const kDemoScript[];
    FILE* out() const { return m_options.output != nullptr ? m_options.output : m_capture.out(); }
    const EventMonitor::Totals& totals() const { return m_pMonitor->totals(); }
    const SimFrontEnd& frontEnd() const { return *m_pFrontEnd; }

    // For callers on other threads (camsim serve): each takes the command lock,
    // so they run one at a time, between the clock's steps and the prompt's commands.
    //
    // A parameter refused by a parameter list: its id (0: none) and the library's reason.
    struct Refusal {
        int id = 0;
        std::string reason;
    };
    // Runs one command as `execute` does and hands back camsim's lines of it as
    // well as printing them, and the parameter that the library refused if any;
    // false when the command failed.
    bool run(const std::string& line, std::vector<std::string>& lines, Refusal* refusal = nullptr);
    // Every parameter value in force (getAllParameters); false when the controller gave none.
    bool parameterValues(std::map<int, int>& values);
    // What the camera shows of its state now.
    struct Snapshot {
        std::string deviceTime;  // "2026-11-23 18:40:00"
        int64_t clockMs = 0;     // the virtual clock
        int dayNight = -1;       // 1 day, 0 night
        int dayNightMode = -1;
        std::string dayNightSource;
        std::string picture;     // IR-cut filter and lamps, as the board's pins show them
        bool lamps = false;
        int scheme = -1;
        bool schemeAuto = false;
        int light = 0;
        std::string lightText;
        std::string unsaved;     // values set and not saved, "name=value, ..."
    };
    Snapshot snapshot();
    // The module's name of a parameter id (nullptr: none).
    const char* parameterName(int id) const;
    const std::string& moduleName() const { return m_options.module; }

private:
    friend class ScenarioReplay;  // steps the clock and watches the camera second by second

    // Command handlers; each prints its own result or error.
    void cmdHelp(const std::vector<std::string>& args);
    void cmdSet(const std::vector<std::string>& args);
    void cmdGet(const std::vector<std::string>& args);
    void cmdShow();
    void cmdFlush();
    void cmdReset(const std::vector<std::string>& args);
    void cmdScheme(const std::vector<std::string>& args);
    void cmdDayNight(const std::vector<std::string>& args);
    void cmdLight(const std::vector<std::string>& args);
    void cmdTime(const std::vector<std::string>& args);
    void cmdRun(const std::vector<std::string>& args);
    void cmdStatus();
    void cmdFiles();
    void cmdCat(const std::vector<std::string>& args);
    void cmdLogs(const std::vector<std::string>& args);
    void cmdLens(const std::string& what, const std::vector<std::string>& args);
    void cmdVerbose(const std::vector<std::string>& args);
    void cmdUi(const std::vector<std::string>& args);
    // A command of the front end; lens commands of the fisheye board; a
    // refusal naming the module for another module's command.
    void cmdFrontEnd(const std::string& cmd, const std::vector<std::string>& args, const std::string& word);

    // "6 (max-shutter)"; "brightness=50, 6=3"; an id given by number or by name.
    std::string idLabel(int id) const;
    std::string describeList(const std::map<int, int>& values) const;
    bool resolveId(const std::string& word, int& id) const;
    void error(const std::string& text);
    void say(const std::string& text);
    void warnUnsaved(const char* how);
    // The values set since the last save, as "name=value, ...".
    std::string unsavedText() const;
    void cmdRepair();
    // Takes the advisory lock of the root; false (reason printed) when another camsim holds it.
    bool lockRoot();
    // Restores the scheme mode and scheme saved in sensor.xml, as the camera application does.
    void restoreSchemeChoice(bool known, int mode, int index);
    // Why a save was refused, and what to fix.
    std::string flushRefusal(int code);
    // Applies a parameter list through the controller; prints what happened.
    bool applyList(const std::string& list, const std::string& what);
    // The library's reason for a refusal, from its console lines of this command.
    std::string refusalReason(const std::vector<std::string>& lines) const;
    // Moves the virtual clock on, letting the workers run, printing events.
    // A run (`interruptible`) stops at Ctrl-C; the clock's own steps do not take it.
    void advance(int64_t ms, bool printEvents, bool interruptible = false);
    void configureSchemes();
    std::string deviceTimeText() const;
    void tickerLoop();
    // The progress line of a long run (on a terminal only).
    void drawProgress(int64_t doneMs, int64_t totalMs);
    void clearProgress();

    Options m_options;
    ConsoleCapture m_capture;
    std::unique_ptr<SimScheduling> m_pScheduling;  // how the simulated camera's threads are run
    const SimModule* m_pModule = nullptr;  // the row of the module fitted
    std::unique_ptr<SimFrontEnd> m_pFrontEnd;
    std::unique_ptr<EventMonitor> m_pMonitor;
    std::unique_ptr<SensorControllerManager> m_pManager;
    SafePointer<ISensorController> m_controller;
    std::unique_ptr<GThread> m_pIspThread;
    int m_nSleepers = 1;
    int m_nErrors = 0;
    bool m_bStarted = false;
    std::string m_strRoot;
    std::recursive_mutex m_clockMutex;  // held while the clock moves and while a command runs
    bool m_bProgressShown = false;
    std::map<int, int> m_unsaved;  // values set since the last save
    bool m_bQuitWarned = false;
    bool m_bQuitForced = false;
    bool m_bPrompt = false;
    std::atomic<bool> m_bAtPrompt{false};
    int m_nLockFd = -1;
    bool m_bFromInput = false;  // commands come from standard input
    bool m_bStopScript = false; // Ctrl-C ended a run of a script
    std::vector<std::string>* m_pCollect = nullptr;  // where `run` gathers the lines of its command
    Refusal m_lastRefusal;
    std::thread m_ticker;
    std::atomic<bool> m_bTickerStop{false};
};

}  // namespace camsim
