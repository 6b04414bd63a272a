#pragma once
#include <cstdint>

#include "core/SensorTypes.h"
#include "drivers/ispboard/IspBoardSenseController.h"

// The in-house ISP board: image settings, HDR and run mode, door mode, power
// frequency, highlight hold, manual and automatic noise reduction, each in a
// register of the board's table (KestraISPSenseController::boardTable,
// docs/ispboard.md). The module detail's "HDR" key gives the HDR mode that
// start-up puts on the board, its "TNF" key whether the temporal noise filter
// follows the ISP tables.
class KestraISPSenseController : public IspBoardSenseController {
public:
    enum { SensorType = SensorTypes::KestraISP };
    enum : uint16_t {
        RegMirror = 0x0106,     // bit 0 horizontal, bit 1 vertical
        RegHdrMode = 0x0118,    // 0 off, 1 HDR, 2 WDR
        RegRunMode = 0x0119,    // 0 normal, 1 low latency, 2 low power
        RegNrMode = 0x011E,     // 0 automatic, 1 manual
        RegManualNr2D = 0x0120,
        RegManualNr3D = 0x0121,
        RegAutoNrLevel = 0x0122
    };
    enum { IdMirror = 6, IdHdrMode = 24, IdNrMode = 30, IdManualNr2D = 32, IdManualNr3D = 33, IdAutoNrLevel = 34 };

    KestraISPSenseController();
    ~KestraISPSenseController() override;
    static const IspBoardTable& boardTable();

    // ---- overridden operations, in slot order ----
    int getMirrorValue(int& value) override;
    int initController(int sensorType, const ModuleConfigure& cfg) override;
    int updateHDRMode(int mode) override;

    int getTNFSwitch() const { return m_nTNFSwitch.load(); }
    int getHDRModeOfDetail() const { return m_nHDRMode; }

protected:
    int setOwnParameter(const IspBoardTable::Parameter& row, int value) override;
    int getOwnParameter(const IspBoardTable::Parameter& row, int& value) override;
};
