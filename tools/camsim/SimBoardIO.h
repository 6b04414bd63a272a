#pragma once
// The GPIO controller and serial port the simulator hands to the library, as
// the camera application hands its own.
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "app/IGPIO.h"
#include "app/IUARTController.h"
#include "platform/PlatformClock.h"

namespace camsim {

// GPIO pins of the simulated board: levels are kept, every write is recorded.
class SimGPIO : public IGPIO {
public:
    struct Write {
        int group, pin, level;
        int64_t timeMs;
    };

    int open() override { return 1; }
    int close() override { return 1; }
    int notifySensorReady() override {
        std::lock_guard<std::mutex> l(m_mutex);
        ++m_nReady;
        return 1;
    }
    int setDirection(int, int, int) override { return 1; }
    int setLevel(int group, int pin, int level) override {
        std::lock_guard<std::mutex> l(m_mutex);
        m_levels[{group, pin}] = level;
        m_pending.push_back({group, pin, level, PlatformClock::nowMs()});
        ++m_nWrites;
        return 1;
    }
    // An input that was never driven reads low.
    int getLevel(int group, int pin, int& level) override {
        std::lock_guard<std::mutex> l(m_mutex);
        auto it = m_levels.find({group, pin});
        level = it == m_levels.end() ? 0 : it->second;
        return 1;
    }

    // The writes since the previous take.
    std::vector<Write> takeWrites() {
        std::lock_guard<std::mutex> l(m_mutex);
        std::vector<Write> out;
        out.swap(m_pending);
        return out;
    }
    // The level last driven onto a pin; false when it was never driven.
    bool levelOf(int group, int pin, int& level) {
        std::lock_guard<std::mutex> l(m_mutex);
        auto it = m_levels.find({group, pin});
        if (it == m_levels.end()) return false;
        level = it->second;
        return true;
    }
    int readyCount() {
        std::lock_guard<std::mutex> l(m_mutex);
        return m_nReady;
    }

private:
    std::mutex m_mutex;
    std::map<std::pair<int, int>, int> m_levels;
    std::vector<Write> m_pending;
    int m_nWrites = 0;
    int m_nReady = 0;
};

// A serial port with nothing on the line: writes are accepted, reads are empty.
class SimUART : public IUARTController {
public:
    int open(const char*) override { return 1; }
    int setParameter(int, int, int, int, int) override { return 1; }
    int write(int, const char*, int length) override { return length; }
    int read(int, char*, int, int) override { return 0; }
};

// Where the board's IR-cut filter and IR LEDs are wired (from the module detail).
struct BoardPins {
    bool hasIrCut = false;
    int irCutGroup = 0, irCutPin = 0, irCutDayLevel = 0;
    bool hasLeds = false;
    int ledGroup = 0, ledPin = 0, ledDayLevel = 0;
};

}  // namespace camsim
