#include "daynight/AntiFlapGuard.h"

#include <algorithm>

void AntiFlapGuard::configure(int holdOffSeconds, int ceilingSeconds) {
    m_nHoldOff = holdOffSeconds > 0 ? holdOffSeconds : 0;
    m_nCeiling = ceilingSeconds > 0 ? ceilingSeconds : 0;
    m_nDelay = std::min(kFloorSeconds, m_nCeiling);
    m_bNightSeen = false;
    m_bDaySeen = false;
    m_bHolding = false;
    m_bLastDayHeld = false;
}

int AntiFlapGuard::dayDelay(int baseDelay, double since) {
    m_bHolding = false;
    if (!enabled() || !m_bNightSeen || m_bDaySeen) return baseDelay;
    // A day status that began within the hold-off after the switch to night: the lamps'.
    const double after = since - m_dLastNight;
    if (after < 0 || after > m_nHoldOff || m_nDelay <= baseDelay) return baseDelay;
    m_bHolding = true;
    return m_nDelay;
}

void AntiFlapGuard::switched(int state, double now) {
    if (!enabled()) return;
    if (state == 1) {
        m_bLastDayHeld = m_bHolding;
        m_bHolding = false;
        m_bDaySeen = true;
        m_dLastDay = now;
        return;
    }
    if (m_bDaySeen) {
        if (now - m_dLastDay > m_nHoldOff)
            m_nDelay = std::min(kFloorSeconds, m_nCeiling);  // that day held: the light was real
        else if (m_bLastDayHeld)
            m_nDelay = std::min(m_nCeiling, std::max(m_nDelay, 1) * 2);  // held back, and still flapped
    }
    m_bNightSeen = true;
    m_dLastNight = now;
    m_bDaySeen = false;
    m_bHolding = false;
    m_bLastDayHeld = false;
}
