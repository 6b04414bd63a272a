#pragma once
#include <cstdint>

// The device's local time of day, read from the platform clock.
class KSDeviceTime {
public:
    static KSDeviceTime getCurrentTime();

    int getHour() const { return m_nHour; }
    int getMinute() const { return m_nMinute; }
    int getSecond() const { return m_nSecond; }

    int16_t m_nHour = 0;
    int16_t m_nMinute = 0;
    int16_t m_nSecond = 0;
};
