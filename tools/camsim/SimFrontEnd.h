#pragma once
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/ModuleConfigure.h"
#include "core/SensorControllerManager.h"

namespace camsim {

// One simulated image front end: the hardware behind a module record that the
// simulator hands to the library in place of the camera's own (serial port,
// GPIO controller, ISP driver library, light sensor). The simulator core runs
// the library and the commands; everything that depends on the board goes
// through this interface.
class SimFrontEnd {
public:
    // Prints one timeline line: its kind ("gpio", "isp") and text.
    using Printer = std::function<void(const std::string& kind, const std::string& text)>;

    virtual ~SimFrontEnd() = default;

    // Names the board in messages ("fisheye board").
    virtual std::string name() const = 0;
    // Puts the simulated hardware in its power-on state and hands the manager
    // the serial port and GPIO controller, before the manager's init. A front
    // end whose controller the factory does not build hands the manager the
    // controller it constructed as well (setSensorController).
    virtual void attach(SensorControllerManager& manager) = 0;
    // Threads of the front end's controller that wait on the platform clock
    // besides the day/night worker (the simulator lets them settle too).
    virtual int clockThreads() const { return 0; }
    // The parameter list that camsim saves to scheme `index` of a fresh root
    // (the windows aside): values that this module accepts.
    virtual std::string schemeValues(int index) const = 0;
    // The name of a parameter id on this module (nullptr when it has none),
    // and the id of a name (any case).
    virtual const char* parameterName(int id) const = 0;
    virtual bool parameterId(const std::string& name, int& id) const = 0;
    // The lens commands of the fisheye board (zoom wide|tele, focus near|far,
    // focus auto, lens reset) are parameter ids 43-53 of this module.
    virtual bool lensByParameters() const { return false; }
    // Before the manager goes: stops the threads of the front end's controller
    // that wait on the platform clock (a worker paused on the clock would hold
    // up the manager's stop of the day/night worker). Nothing by default.
    virtual void beforeStop() {}
    // Takes the simulated hardware back after the manager is gone.
    virtual void detach() = 0;

    // Light level of the scene, 0 (dark) to 100 (bright), and how the board sees it.
    virtual void setLight(int percent) = 0;
    virtual int light() const = 0;
    virtual std::string lightText() const = 0;
    // Where the day/night decision of the sensor modes comes from.
    virtual std::string dayNightSource() const = 0;
    // What the board's pins show of day or night now ("IR-cut filter in, IR LEDs off").
    virtual std::string pictureState() const = 0;

    // Whether the board's infrared lamps are lit now (as their pins show).
    virtual bool irLampsOn() const { return false; }
    // The hardware activity counted so far: GPIO writes, ISP commands sent and read.
    virtual void activity(int& gpioWrites, int& ispSets, int& ispReads) const {
        gpioWrites = ispSets = ispReads = 0;
    }

    // Forgets the hardware activity so far (no timeline lines for it).
    virtual void forget() = 0;
    // Prints the hardware activity since the previous call, in order.
    virtual void report(const Printer& print) = 0;
    // The hardware lines of 'status'.
    virtual void printStatus(FILE* out) = 0;
    // Lines of the demo's summary.
    virtual void printSummary(FILE* out) const = 0;
    // Lines of 'help' for the board's own commands.
    virtual std::string help() const = 0;
    // Runs a command of the board's own; false when the command is not one of
    // them. A failure is described in `error`.
    virtual bool command(const std::string& cmd, const std::vector<std::string>& args, FILE* out,
                         std::string& error) = 0;
};

}  // namespace camsim
