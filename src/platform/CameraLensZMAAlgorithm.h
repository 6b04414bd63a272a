#pragma once
#include <vector>

#include "platform/ZMAParam.h"

// Zoom tracking: the focus position that goes with a zoom position, by linear
// interpolation between the two rows of the lens table around it (the first or
// last row's focus outside the table).
class CameraLensZMAAlgorithm {
public:
    // Takes a table (rows by strictly rising zoom, at least one); false, and the
    // table left as it was, otherwise.
    bool setZMAParam(const std::vector<ZMAParam>& rows);
    bool hasTable() const { return !m_rows.empty(); }
    const std::vector<ZMAParam>& getZMAParam() const { return m_rows; }
    // The focus position for `zoom`; false when there is no table.
    bool getFocusForZoom(int zoom, int& focus) const;

private:
    std::vector<ZMAParam> m_rows;
};
