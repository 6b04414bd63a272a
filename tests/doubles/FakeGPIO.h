#pragma once
// A GPIO double that records every write and answers reads from a table.
#include <map>
#include <mutex>
#include <tuple>
#include <vector>

#include "app/IGPIO.h"

class FakeGPIO : public IGPIO {
public:
    struct Write {
        int group, pin, level;
    };
    std::vector<Write> writes;
    std::map<std::pair<int, int>, int> levels;  // read levels by (group, pin)
    bool failWrites = false;
    bool failReads = false;
    int notifyCalls = 0;
    int notifyResult = 1;
    std::mutex mu;

    int open() override { return 1; }
    int close() override { return 1; }
    int notifySensorReady() override {
        ++notifyCalls;
        return notifyResult;
    }
    int setDirection(int, int, int) override { return 1; }
    int setLevel(int group, int pin, int level) override {
        std::lock_guard<std::mutex> l(mu);
        if (failWrites) return 0;
        writes.push_back({group, pin, level});
        levels[{group, pin}] = level;
        return 1;
    }
    int getLevel(int group, int pin, int& level) override {
        std::lock_guard<std::mutex> l(mu);
        if (failReads) return 0;
        auto it = levels.find({group, pin});
        if (it == levels.end()) return 0;
        level = it->second;
        return 1;
    }
    size_t writeCount() {
        std::lock_guard<std::mutex> l(mu);
        return writes.size();
    }
};
