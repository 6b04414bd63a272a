#include "platform/KSDeviceTime.h"

#include <ctime>

#include "platform/PlatformClock.h"

KSDeviceTime KSDeviceTime::getCurrentTime() {
    struct tm t {};
    PlatformClock::localTime(t);
    KSDeviceTime d;
    d.m_nHour = static_cast<int16_t>(t.tm_hour);
    d.m_nMinute = static_cast<int16_t>(t.tm_min);
    d.m_nSecond = static_cast<int16_t>(t.tm_sec);
    return d;
}
