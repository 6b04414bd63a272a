#pragma once
// A controller under test with everything around it: a temporary platform
// root, the virtual clock, a recording GPIO and serial port, and helpers to run
// init and read the two logs.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "TestRoot.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "doubles/ClockPump.h"
#include "doubles/ControllerFixture.h"
#include "doubles/ProbeController.h"
#include "platform/SafePointer.h"

namespace testutil {

inline const char* kErrorLogPath = "/mnt/mtd/log/SensorError.log";
inline const char* kInitLogPath = "/mnt/mtd/log/SensorInit.log";

// The message texts of a log file, without the time stamp and tag in front.
inline std::vector<std::string> logMessages(const TempRoot& root, const std::string& path) {
    std::vector<std::string> out;
    std::istringstream in(root.read(path));
    std::string line;
    while (std::getline(in, line)) {
        size_t tagEnd = line.find("] ");
        out.push_back(tagEnd == std::string::npos ? line : line.substr(tagEnd + 2));
    }
    return out;
}

inline size_t countOf(const std::vector<std::string>& lines, const std::string& text) {
    size_t n = 0;
    for (const std::string& l : lines)
        if (l == text) ++n;
    return n;
}

inline size_t countSubstr(const std::string& hay, const std::string& needle) {
    size_t n = 0;
    for (size_t p = hay.find(needle); p != std::string::npos; p = hay.find(needle, p + needle.size())) ++n;
    return n;
}

class ControllerRig {
public:
    explicit ControllerRig(int hour = 12, int minute = 0, int second = 0) : clock(hour, minute, second) {
        gpioRaw = new ProbeGPIO(&events);
        gpio = SafePointer<IGPIO>(gpioRaw);
        uartRaw = new ProbeUART(&events);
        uart = SafePointer<IUARTController>(uartRaw);
    }
    ~ControllerRig() { ctl.reset(); }

    ProbeController& make(int sensorType = 50) {
        ctl.reset();
        events.clear();
        ctl.reset(new ProbeController(events, sensorType));
        ctl->setOperator(uart, gpio);
        return *ctl;
    }

    // Runs the controller's init with the clock pumped through its pauses;
    // returns init's result once the worker (if started) is parked in its wait.
    int init(const std::string& detail = "RS485=/dev/ttyS1;isInfrared=1", int sensorType = 50) {
        ModuleConfigure cfg(88, detail, "");
        VideoResolution res(1920, 1080);
        ProbeController* c = ctl.get();
        int r = runPumped([&] { return c->init(sensorType, cfg, res); });
        if (c->getDayNightThread().isRunning()) PlatformClock::waitForSleepers(1);
        return r;
    }

    std::vector<std::string> errorLog() const { return logMessages(root, kErrorLogPath); }
    std::vector<std::string> initLog() const { return logMessages(root, kInitLogPath); }

    TempRoot root;
    VirtualClock clock;
    EventLog events;
    ProbeGPIO* gpioRaw;
    ProbeUART* uartRaw;
    SafePointer<IGPIO> gpio;
    SafePointer<IUARTController> uart;
    std::unique_ptr<ProbeController> ctl;
};

}  // namespace testutil
