#pragma once
// Helpers for the fisheye controller tests: a controller with its protected
// state reachable, the simulated board reset, and a way to run code that waits
// on the virtual clock.
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "TestRoot.h"
#include "adc/SimAdc.h"
#include "drivers/fisheye/KsiaDriver.h"
#include "drivers/fisheye/S2FisheyeSenseController.h"
#include "ksia/SimIsp.h"
#include "platform/PlatformClock.h"

namespace testutil {

class TestableFisheye : public S2FisheyeSenseController {
public:
    // Marks the controller initialised, as the base init does after its first day mode.
    void markReady() {
        m_SensorStatus = InitSuccess;
        m_BaseSensorStatus = InitSuccess;
    }
    void setDetectSource(int source) { m_nDNDetectSource = source; }
    void setDayPictureFlag(int flag) { m_nDayNightState = flag; }
    void setInitialisedFlag(bool b) { m_bInitialised = b ? 1 : 0; }
    int detectSource() const { return m_nDNDetectSource; }
    bool ldrBoard() const { return m_bLDRBoard != 0; }
    int irCutGroup() const { return m_nIrCutGroup; }
    int irCutPin() const { return m_nIrCutPin; }
    int irCutDayLevel() const { return m_nIrCutDayLevel; }
    int infraredGroup() const { return m_nInfraredGroup; }
    int infraredPin() const { return m_nInfraredPin; }
    int infraredDayLevel() const { return m_nInfraredDayLevel; }
    int dtnTime() const { return m_nDTNTime; }
    int ntdTime() const { return m_nNTDTime; }
    int switchDelay() const { return m_nDNSwitchDelay; }
};

// Power-on state of the simulated ISP library and ADC, the ADC routed to the simulation.
inline void resetBoard() {
    SimIsp::instance().reset();
    SimAdc::install();
    SimAdc::instance().reset();
}

// The (command, direction, value) triples of the recorded ISP calls.
struct IspCall {
    int command, direction, value;
    bool operator==(const IspCall& o) const {
        return command == o.command && direction == o.direction && value == o.value;
    }
};

inline std::vector<IspCall> ispCalls() {
    std::vector<IspCall> out;
    for (const SimIsp::Call& c : SimIsp::instance().calls())
        out.push_back({c.nCommand, c.nDirection, c.nDirection == KSIA_SET ? c.nValueIn : c.nValueOut});
    return out;
}

inline std::vector<IspCall> ispSets() {
    std::vector<IspCall> out;
    for (const IspCall& c : ispCalls())
        if (c.direction == KSIA_SET) out.push_back(c);
    return out;
}

// Runs fn on its own thread and moves the virtual clock on in steps while it
// waits, until fn returns.
inline void runOnVirtualClock(const std::function<void()>& fn, int64_t stepMs = 10) {
    std::atomic<bool> done{false};
    std::thread worker([&] {
        fn();
        PlatformClock::threadLeaving();
        done = true;
    });
    while (!done.load()) {
        if (PlatformClock::waitForSleepers(1, 5)) PlatformClock::advanceMs(stepMs);
    }
    worker.join();
}

}  // namespace testutil
