#pragma once
#include <cstdio>
#include <string>
#include <vector>

namespace camsim {

// What a scenario replay measured (ScenarioReplay), and its three forms: the
// text report, the JSON report for scripts and the SVG timeline.
class ReplayReport {
public:
    struct Transition {
        int seconds = 0;  // device time (seconds after 00:00:00 of the first day)
        int state = 0;    // the state entered: 1 day, 0 night
    };
    // One simulated second: the state in force during it and what the sensor saw.
    struct Sample {
        float scene = 0;   // scene light
        float sensor = 0;  // what the light sensor read (scene + reflection while the lamps are on)
        signed char state = 1;
        bool lamps = false;
        short gain = -1;   // the gain the ISP reported (the scenario's gain column), -1 without one
        short a0 = -100;   // the temporal noise reduction (A0) the gain-indexed ISP table left in force
    };

    std::string scenario;
    int startSeconds = 0;
    int endSeconds = 0;
    double reflection = 0;
    bool guard = false;
    int guardHoldOff = 0;
    int guardCeiling = 0;
    int nightLevel = 30;  // the camera turns to night at or below this light
    int dayLevel = 70;    // and to day at or above this one
    std::vector<Transition> transitions;
    std::vector<Sample> samples;  // one per second from startSeconds
    int wrongSeconds = 0;         // seconds in the wrong mode against the scene light
    int wrongNightSeconds = 0;    // of them: night while the scene was above the day level
    int wrongDaySeconds = 0;      // day while the scene was below the night level
    std::vector<int> latencies;   // each wrong-mode stretch that a switch ended, seconds
    int gpioWrites = 0;
    int ispSets = 0;
    int ispReads = 0;
    long long flashBytes = 0;
    int filesWritten = 0;
    double realSeconds = 0;

    int toNight() const;
    int toDay() const;
    double hours() const { return (endSeconds - startSeconds) / 3600.0; }
    // Transitions in the worst clock hour (device time) and on average per hour.
    int worstHourFlips(int* hourStart = nullptr) const;
    double meanFlipsPerHour() const;
    double meanLatency() const;
    int worstLatency() const;

    void printText(FILE* out) const;
    void printJson(FILE* out) const;
    std::string svg() const;
};

}  // namespace camsim
