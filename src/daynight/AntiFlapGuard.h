#pragma once

// The optional anti-flap guard of the automatic day/night mode. A camera whose
// own infrared lamps light its light sensor turns to night, sees its lamps,
// turns to day, sees the dark, and so on. With the guard on, a switch to day
// that follows a switch to night within the hold-off window doubles the delay
// that the next day status must persist, up to a ceiling; an hour without any
// switch brings the delay back to the configured one. Off (hold-off 0) it
// changes nothing. Used under the controller's day/night mutex only.
class AntiFlapGuard {
public:
    // An hour without a switch resets the doubled delay.
    static constexpr int kStableSeconds = 3600;

    // Hold-off window and ceiling in seconds; a hold-off of 0 (or less) turns the guard off.
    void configure(int holdOffSeconds, int ceilingSeconds);
    bool enabled() const { return m_nHoldOff > 0; }
    int holdOff() const { return m_nHoldOff; }
    int ceiling() const { return m_nCeiling; }

    // How long a day status must persist now (seconds), given the configured delay.
    int dayDelay(int baseDelay, double now);
    // The camera entered `state` (1 day, 0 night) at `now` (seconds).
    void switched(int state, double now, int baseDelay);
    // The doubled delay in force, 0 when none.
    int raisedDelay() const { return m_nRaised; }

private:
    int m_nHoldOff = 0;
    int m_nCeiling = 0;
    int m_nRaised = 0;
    bool m_bNightSeen = false;
    double m_dLastNight = 0;
    double m_dLastSwitch = 0;
};
