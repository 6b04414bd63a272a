#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/SensorTypes.h"
#include "drivers/serial/ViscaSenseController.h"

// Controller of the CMD8300 zoom block camera on a serial line (VISCA, camera
// address 1). Replies in the byte form: one read of 3 bytes (time-out 4)
// tested byte by byte against 90 41 FF and 90 51 FF from a first byte 0x90,
// with a debug line per attempt. Its ids and ranges are the rows of
// parameterTable(): among them separate day-to-night and night-to-day
// sensitivity, manual and automatic noise reduction, highlight hold and
// infrared.
//
// Automatic noise reduction is the controller's periodic work
// (doDependOnThread, called by the day/night worker once a second): at most
// every AutoNRPeriodMs of the platform clock it asks the module's gain and
// sends the noise reduction level that goes with it when that level changed.
class CMD8300SenseController : public ViscaSenseController {
public:
    enum { SensorType = SensorTypes::CMD8300, AutoNRPeriodMs = 5000 };
    // The operations of this module's own rows.
    enum { OpNRMode = 1101, OpHighlightHold = 1102 };

    CMD8300SenseController();
    ~CMD8300SenseController() override;

    // The parameter table of this module, ascending by id.
    static const ViscaParameter* parameterTable(size_t& count);
    // The noise reduction level of automatic mode for a gain value (0-15).
    static int autoNRLevelOf(int gain);

    int initController(int sensorType, const ModuleConfigure& cfg) override;
    void doDependOnThread() override;

    // Opens and sets up the port from the module record; false, with the reason
    // printed, on failure.
    bool openUART(const ModuleConfigure& cfg);
    // Leaves the port: no transaction reaches the line afterwards.
    void closeUART();

    // Noise reduction: 0 the manual level (id 3), 1 automatic (by gain).
    int setNRMode(int p_nNRMode);
    int getNRMode() const { return m_nNRMode.load(); }
    // 0 off, 1-3 low, middle, high.
    int setHighlightHold(int p_nHighlightHold);

    const std::string& getGUIConfigName() const { return m_strGUIConfigName; }

protected:
    int setModuleRow(const ViscaParameter& row, int value, int& result) override;

private:
    // One pass of automatic noise reduction: the gain read, the level sent when it changed.
    int followGain();

    std::string m_strGUIConfigName;
    std::atomic<int> m_nNRMode{0};
    // The level that automatic mode last sent (-1: none yet) and when it last looked;
    // written by the worker, reset by the parameter path.
    std::atomic<int> m_nAutoNRLevel{-1};
    std::atomic<int64_t> m_nLastAutoNRMs{-1};
};
