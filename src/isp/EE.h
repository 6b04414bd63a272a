#pragma once

// The edge-enhancement hook of the ISP tuning. The chosen level is announced
// and remembered by the controller; this hook accepts any level and leaves the
// hardware as it is, so a driver that wants the level reads the remembered one.
class EE {
public:
    EE();
    ~EE();

    // Accepts any level; always true.
    bool setEE(int p_nLevel);
};
