#pragma once

// The optional anti-flap guard of the automatic day/night mode. A camera whose
// own infrared lamps light its light sensor turns to night, sees its lamps,
// turns to day, sees the dark, and so on. The sign of it is a day status that
// begins within moments of a switch to night (the lamps have just come on).
//
// With the guard on, such a day status (one that began within the hold-off
// after the last switch to night) must persist the guard's delay before the
// camera turns to day: at first kFloorSeconds, which is one hour, so that a
// camera whose lamps keep lifting its sensor flips at most twice in any hour
// (a switch to day and the switch back to night it causes). When a day switch
// that the guard held back is followed by a switch to night within the
// hold-off again, the delay doubles, up to the ceiling. A switch to day that
// holds for longer than the hold-off brings the delay back to the floor. Day
// statuses that begin later, and switches to night, are never delayed.
// Off (hold-off 0) it changes nothing. Used under the controller's day/night
// mutex only.
class AntiFlapGuard {
public:
    // The delay of a day status that follows a switch to night, before any doubling.
    static constexpr int kFloorSeconds = 3600;

    // Hold-off window and ceiling in seconds; a hold-off of 0 (or less) turns the
    // guard off. A ceiling below the floor is the only delay (no doubling).
    void configure(int holdOffSeconds, int ceilingSeconds);
    bool enabled() const { return m_nHoldOff > 0; }
    int holdOff() const { return m_nHoldOff; }
    int ceiling() const { return m_nCeiling; }

    // How long a day status that began at `since` (seconds) must persist, given the
    // configured delay. Remembers whether it held the status back, for switched().
    int dayDelay(int baseDelay, double since);
    // The camera entered `state` (1 day, 0 night) at `now` (seconds).
    void switched(int state, double now);
    // The delay a day status right after a switch to night must persist now, 0 when off.
    int raisedDelay() const { return enabled() ? m_nDelay : 0; }

private:
    int m_nHoldOff = 0;
    int m_nCeiling = 0;
    int m_nDelay = 0;             // the guard's delay in force (floor .. ceiling)
    bool m_bNightSeen = false;    // a switch to night has happened
    double m_dLastNight = 0;      // when
    bool m_bDaySeen = false;      // a switch to day has happened since that night
    double m_dLastDay = 0;        // when
    bool m_bHolding = false;      // the day status in progress is held back
    bool m_bLastDayHeld = false;  // the last switch to day was held back
};
