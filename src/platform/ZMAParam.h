#pragma once

// One row of the lens table: a zoom position and the focus position that keeps
// the picture sharp there (both 0-65535, the module's position units).
class ZMAParam {
public:
    ZMAParam(int zoom = 0, int focus = 0) : m_nZoom(zoom), m_nFocus(focus) {}
    int getZoom() const { return m_nZoom; }
    int getFocus() const { return m_nFocus; }
    bool operator==(const ZMAParam& o) const { return m_nZoom == o.m_nZoom && m_nFocus == o.m_nFocus; }

private:
    int m_nZoom;
    int m_nFocus;
};
