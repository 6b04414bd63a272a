#pragma once
// A serial module controller against the simulated VISCA block in-process, on
// the virtual clock, under a temporary platform root.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "TestRoot.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "doubles/ClockPump.h"
#include "doubles/FakeGPIO.h"
#include "platform/SafePointer.h"
#include "visca/SimViscaModule.h"
#include "visca/SimViscaUART.h"

namespace testutil {

inline std::vector<uint8_t> bytesOf(std::initializer_list<int> v) {
    std::vector<uint8_t> out;
    for (int b : v) out.push_back(static_cast<uint8_t>(b));
    return out;
}

inline std::string hexOf(const std::vector<uint8_t>& v) {
    std::string s;
    char b[4];
    for (uint8_t x : v) {
        std::snprintf(b, sizeof(b), "%02X ", x);
        s += b;
    }
    return s;
}

// The module, its in-process port and a GPIO; the controller is the test's.
struct ViscaBench {
    TempRoot root;
    VirtualClock clock{12, 0, 0};
    SimViscaModule module;
    SimViscaUART* uartRaw;
    SafePointer<IUARTController> uart;
    FakeGPIO* gpioRaw;
    SafePointer<IGPIO> gpio;

    ViscaBench() {
        uartRaw = new SimViscaUART(module, "/dev/ttyS1");
        uart = SafePointer<IUARTController>(uartRaw);
        gpioRaw = new FakeGPIO();
        gpio = SafePointer<IGPIO>(gpioRaw);
    }
    // The packets that reached the module from the given index on.
    std::vector<std::vector<uint8_t>> packetsSince(size_t from) const {
        auto all = module.receivedPackets();
        if (from >= all.size()) return {};
        return std::vector<std::vector<uint8_t>>(all.begin() + static_cast<long>(from), all.end());
    }
    size_t packetMark() const { return module.receivedPackets().size(); }
};

}  // namespace testutil
