#pragma once
#include <string>

#include "camsim/ReplayReport.h"
#include "camsim/Scenario.h"

namespace camsim {

class CamSim;

// Replays a light scenario through the simulator camera: the library's
// day/night worker, schemes and ISP loop on the virtual clock, one simulated
// second per step, as fast as the machine allows. Each second the light
// sensor (ADC and ISP scene level) sees the scene light plus the infrared
// reflection while the lamps are lit; the report compares the camera's state
// with the scene light.
class ScenarioReplay {
public:
    struct Options {
        double reflection = -1;  // overrides the scenario's reflection when >= 0
        int guardHoldOff = 0;    // anti-flap guard: hold-off and ceiling (s); 0 = off
        int guardCeiling = 0;
    };
    // The guard's parameters when camsim turns it on without values.
    static constexpr int kDefaultHoldOff = 60;
    static constexpr int kDefaultCeiling = 14400;

    // Replays on a camera started in a temporary root of its own (removed after).
    // False with `error` when the camera did not come up.
    static bool run(const Scenario& scenario, const Options& options, ReplayReport& report, std::string& error);
    // Replays on a camera already started (at the scenario's start time).
    static void replay(CamSim& sim, const Scenario& scenario, const Options& options, ReplayReport& report);
};

}  // namespace camsim
