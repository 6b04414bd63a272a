#include "daynight/AntiFlapGuard.h"

#include <algorithm>

void AntiFlapGuard::configure(int holdOffSeconds, int ceilingSeconds) {
    m_nHoldOff = holdOffSeconds > 0 ? holdOffSeconds : 0;
    m_nCeiling = ceilingSeconds > 0 ? ceilingSeconds : 0;
    m_nRaised = 0;
    m_bNightSeen = false;
}

int AntiFlapGuard::dayDelay(int baseDelay, double now) {
    if (!enabled()) return baseDelay;
    if (m_nRaised != 0 && now - m_dLastSwitch >= kStableSeconds) m_nRaised = 0;
    return std::max(baseDelay, m_nRaised);
}

void AntiFlapGuard::switched(int state, double now, int baseDelay) {
    if (!enabled()) return;
    if (state == 0) {
        m_bNightSeen = true;
        m_dLastNight = now;
    } else if (m_bNightSeen && now - m_dLastNight <= m_nHoldOff) {
        const int current = std::max(std::max(baseDelay, 1), m_nRaised);
        m_nRaised = std::min(std::max(m_nCeiling, baseDelay), current * 2);
    }
    m_dLastSwitch = now;
}
