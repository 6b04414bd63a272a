#include "platform/KSMutex.h"

#include <chrono>
#include <thread>

#include "platform/PlatformClock.h"

void KSMutex::lockContended() {
    // The thread that drives a virtual clock is the only one that moves it: if
    // it simply blocked here while the holder pauses on that clock, neither
    // would ever go on. It lets the time pass instead until the holder lets go.
    if (PlatformClock::drivesVirtualClock()) {
        while (!m_mutex.try_lock())
            if (!PlatformClock::advanceToNextWait()) std::this_thread::yield();
        return;
    }
    // Any other thread waits; a thread released by the virtual clock does not
    // hold the clock up meanwhile (the holder may be pausing on that clock).
    const bool wasRunning = PlatformClock::beginLockWait();
    if (wasRunning) ++m_nClockWaiters;
    m_mutex.lock();
    PlatformClock::endLockWait(wasRunning);
    if (wasRunning) --m_nClockWaiters;
}

void KSMutex::handOver(int waiters) {
    if (!PlatformClock::drivesVirtualClock()) return;
    // A thread released by the clock waits for this lock: the driver lets it
    // take the lock (and count as running again) before it moves the clock on,
    // so that the waiter's turn does not depend on the machine's load.
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
    while (m_nClockWaiters.load() >= waiters && std::chrono::steady_clock::now() < until) std::this_thread::yield();
}

bool KSMutex::TryLock() { return m_mutex.try_lock(); }
