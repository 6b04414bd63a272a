#pragma once
#include <cstdint>

// A time span or point in seconds and microseconds on the platform clock.
class KestraTime {
public:
    KestraTime(int64_t seconds = 0, int64_t microseconds = 0);
    // The current monotonic time of the platform clock.
    static KestraTime currentTime();
    // Pauses the calling thread for this span. Returns false if cut short by a thread stop.
    bool wait() const;

    int64_t getSeconds() const { return m_nSeconds; }
    int64_t getMicroseconds() const { return m_nMicroseconds; }
    int64_t toMs() const { return m_nSeconds * 1000 + m_nMicroseconds / 1000; }

private:
    int64_t m_nSeconds;
    int64_t m_nMicroseconds;
};
