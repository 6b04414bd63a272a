#pragma once
#include <cstdint>
#include <cstdio>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "camsim/SimBoardIO.h"
#include "core/ISensorController.h"
#include "ksia/SimIsp.h"
#include "platform/SafePointer.h"

namespace camsim {

// Watches the simulated camera between steps of the clock and prints a
// timeline: parameter scheme switches, day/night transitions, GPIO writes to
// the IR-cut filter and LEDs, ISP commands and files written under the root.
class EventMonitor {
public:
    struct Totals {
        int schemeSwitches = 0;
        int toDay = 0;
        int toNight = 0;
        int ispSets = 0;
        int ispGets = 0;
        int ispFailures = 0;
        int gpioWrites = 0;
        int filesWritten = 0;
    };

    EventMonitor(SimGPIO& gpio, const BoardPins& pins);

    void setOutput(FILE* out) { m_pOut = out; }
    void setController(const SafePointer<ISensorController>& controller) { m_controller = controller; }
    // Takes the present state as the starting point (nothing is printed for it).
    void prime();
    // Prints what happened since the previous poll (nothing when quiet).
    void poll();
    void setQuiet(bool quiet) { m_bQuiet = quiet; }

    const Totals& totals() const { return m_totals; }
    // The most recent ISP calls, oldest first.
    std::vector<SimIsp::Call> recentIspCalls(size_t count) const;
    std::string describeGpio(int group, int pin, int level) const;

private:
    struct FileStamp {
        long long size;
        long long mtimeNs;
        bool operator!=(const FileStamp& o) const { return size != o.size || mtimeNs != o.mtimeNs; }
    };
    std::map<std::string, FileStamp> snapshotFiles() const;
    void print(const std::string& kind, const std::string& text);
    std::string stamp() const;

    SimGPIO& m_gpio;
    BoardPins m_pins;
    FILE* m_pOut = stdout;
    SafePointer<ISensorController> m_controller;
    bool m_bQuiet = false;
    int m_nScheme = -2;
    int m_nDNState = -1;
    std::map<std::string, FileStamp> m_files;
    std::deque<SimIsp::Call> m_recentIsp;
    Totals m_totals;
};

}  // namespace camsim
