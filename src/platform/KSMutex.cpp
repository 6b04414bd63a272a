#include "platform/KSMutex.h"

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
    m_mutex.lock();
}

bool KSMutex::TryLock() { return m_mutex.try_lock(); }
