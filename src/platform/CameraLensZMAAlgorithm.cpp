#include "platform/CameraLensZMAAlgorithm.h"

#include <cstddef>
#include <cstdint>

bool CameraLensZMAAlgorithm::setZMAParam(const std::vector<ZMAParam>& rows) {
    if (rows.empty()) return false;
    for (size_t i = 1; i < rows.size(); ++i)
        if (rows[i].getZoom() <= rows[i - 1].getZoom()) return false;
    m_rows = rows;
    return true;
}

bool CameraLensZMAAlgorithm::getFocusForZoom(int zoom, int& focus) const {
    if (m_rows.empty()) return false;
    if (zoom <= m_rows.front().getZoom()) {
        focus = m_rows.front().getFocus();
        return true;
    }
    if (zoom >= m_rows.back().getZoom()) {
        focus = m_rows.back().getFocus();
        return true;
    }
    size_t k = 1;
    while (m_rows[k].getZoom() < zoom) ++k;
    const ZMAParam& a = m_rows[k - 1];
    const ZMAParam& b = m_rows[k];
    // Rounded to the nearest position; 64-bit so that no product overflows.
    int64_t num = static_cast<int64_t>(b.getFocus() - a.getFocus()) * (zoom - a.getZoom());
    int64_t den = b.getZoom() - a.getZoom();
    int64_t step = num >= 0 ? (num + den / 2) / den : -((-num + den / 2) / den);
    focus = a.getFocus() + static_cast<int>(step);
    return true;
}
