#include "platform/KestraTime.h"

#include "platform/PlatformClock.h"

KestraTime::KestraTime(int64_t seconds, int64_t microseconds)
    : m_nSeconds(seconds + microseconds / 1000000), m_nMicroseconds(microseconds % 1000000) {}

KestraTime KestraTime::currentTime() {
    int64_t ms = PlatformClock::nowMs();
    return KestraTime(ms / 1000, (ms % 1000) * 1000);
}

bool KestraTime::wait() const { return PlatformClock::sleepMs(toMs()); }
