#pragma once
#include <cstdint>
#include <cstdio>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "camsim/SimFrontEnd.h"
#include "core/ISensorController.h"
#include "platform/SafePointer.h"

namespace camsim {

// Watches the simulated camera between steps of the clock and prints a
// timeline: parameter scheme switches, day/night transitions, what the front
// end's hardware did (through the front end) and files written under the root.
class EventMonitor {
public:
    struct Totals {
        int schemeSwitches = 0;
        int toDay = 0;
        int toNight = 0;
        int filesWritten = 0;
    };

    explicit EventMonitor(SimFrontEnd& frontEnd);
    ~EventMonitor();
    EventMonitor(const EventMonitor&) = delete;
    EventMonitor& operator=(const EventMonitor&) = delete;

    void setOutput(FILE* out) { m_pOut = out; }
    // The controller to watch. Without `announceScheme` the scheme in force now
    // is taken as known (no timeline line for it).
    void setController(const SafePointer<ISensorController>& controller, bool announceScheme = true) {
        m_controller = controller;
        if (!announceScheme) m_nScheme = controller->getCurrentParamSchemeIndex();
    }
    // The camera paths of the files written or removed that the last poll reported.
    const std::vector<std::string>& lastFiles() const { return m_lastFiles; }
    // Timeline lines printed so far.
    int printedLines() const { return m_nPrinted; }
    // Takes the present state as the starting point (nothing is printed for it).
    void prime();
    // Prints what happened since the previous poll (nothing when quiet).
    void poll();
    void setQuiet(bool quiet) { m_bQuiet = quiet; }
    // A progress line without a line end is on the terminal: the next line
    // printed clears it first.
    void setLineToClear(bool pending) { m_bLineToClear = pending; }

    const Totals& totals() const { return m_totals; }

private:
    // Registered with the platform's file layer: collects the files changed.
    static void fileChanged(const std::string& resolvedPath);
    void print(const std::string& kind, const std::string& text);
    std::string stamp() const;

    SimFrontEnd& m_frontEnd;
    FILE* m_pOut = stdout;
    SafePointer<ISensorController> m_controller;
    bool m_bQuiet = false;
    bool m_bLineToClear = false;
    std::vector<std::string> m_lastFiles;
    int m_nPrinted = 0;
    int m_nScheme = -2;
    int m_nDNState = -1;
    Totals m_totals;
};

}  // namespace camsim
