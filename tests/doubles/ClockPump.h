#pragma once
// Runs a call that pauses on the virtual clock (the IR-cut pause of a day
// switch, the pause after a failed GPIO write, the ISP pass pause) from a test.
//
// A test thread that calls such an operation directly would wait forever,
// since only advanceMs moves virtual time. runPumped runs the call on a thread
// of its own and advances the clock in small steps while that thread waits,
// until the call returns. Threads already waiting when it starts (a running
// day/night worker) are left alone as long as their deadlines lie further away
// than the pumped call takes.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <utility>

#include "platform/PlatformClock.h"

namespace testutil {

// Virtual milliseconds that the last runPumped call let pass.
inline int64_t& lastPumpedMs() {
    static int64_t ms = 0;
    return ms;
}

template <class F>
auto runPumped(F&& fn, int64_t stepMs = 10) -> decltype(fn()) {
    using R = decltype(fn());
    const int base = PlatformClock::sleeperCount();
    const int64_t start = PlatformClock::nowMs();
    std::atomic<bool> done{false};
    R result{};
    std::thread worker([&] {
        result = fn();
        // The call may have been released from a wait by advanceMs; tell the
        // clock it has finished, so that advanceMs does not wait for it.
        PlatformClock::threadLeaving();
        done.store(true);
    });
    while (!done.load()) {
        if (PlatformClock::sleeperCount() > base)
            PlatformClock::advanceMs(stepMs);
        else
            std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
    worker.join();
    lastPumpedMs() = PlatformClock::nowMs() - start;
    return result;
}

}  // namespace testutil
