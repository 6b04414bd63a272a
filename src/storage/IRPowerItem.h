#pragma once

// One row of the infrared lamp power table: from zoom position `zoomUp` on,
// the power of the far, middle and near LED groups.
class IRPowerItem {
public:
    IRPowerItem() = default;
    IRPowerItem(int p_nZoomUp, int p_nFarPower, int p_nMidPower, int p_nNearPower)
        : m_nZoomUp(p_nZoomUp), m_nFarPower(p_nFarPower), m_nMidPower(p_nMidPower), m_nNearPower(p_nNearPower) {}

    int getZoomUp() const { return m_nZoomUp; }
    int getFarPower() const { return m_nFarPower; }
    int getMidPower() const { return m_nMidPower; }
    int getNearPower() const { return m_nNearPower; }

    void setZoomUp(int p_nZoomUp) { m_nZoomUp = p_nZoomUp; }
    void setFarPower(int p_nPower) { m_nFarPower = p_nPower; }
    void setMidPower(int p_nPower) { m_nMidPower = p_nPower; }
    void setNearPower(int p_nPower) { m_nNearPower = p_nPower; }

    bool operator==(const IRPowerItem& p_other) const {
        return m_nZoomUp == p_other.m_nZoomUp && m_nFarPower == p_other.m_nFarPower &&
               m_nMidPower == p_other.m_nMidPower && m_nNearPower == p_other.m_nNearPower;
    }
    bool operator!=(const IRPowerItem& p_other) const { return !(*this == p_other); }

private:
    int m_nZoomUp = 0;
    int m_nFarPower = 0;
    int m_nMidPower = 0;
    int m_nNearPower = 0;
};
