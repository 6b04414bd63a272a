#pragma once
#include <cstdint>

#include "core/SensorTypes.h"
#include "drivers/ispboard/IBaseIT1SenseController.h"

// The IT1 board with a zoom lens: the family base with the lens registers
// added (zoom and focus moves, positions, auto focus, lens adjustment) and the
// night-colour id given up to the lens adjustment (id 22, a command). The port
// comes from the detail key "RS485" with the zoom board's own texts.
class IT1ZoomModuleSenseController : public IBaseIT1SenseController {
public:
    enum { SensorType = SensorTypes::IT1ZoomModule, MaxZoom = 1000, MaxFocus = 1023 };
    enum : uint16_t {
        RegLensCommand = 0x0090,  // 0 stop, 1 zoom in, 2 zoom out, 3 focus far, 4 focus near
        RegAutoFocus = 0x0091,    // 1 on
        RegZoomPosition = 0x0092, // 16 bits, 0-1000
        RegFocusPosition = 0x0093,  // 16 bits, 0-1023
        RegZoomSpeed = 0x0094,    // 0-7
        RegLensAdjust = 0x0095    // 1 starts the lens adjustment
    };
    enum { LensStop = 0, LensZoomIn = 1, LensZoomOut = 2, LensFocusFar = 3, LensFocusNear = 4 };
    enum { IdZoomSpeed = 20, IdAutoFocus = 21, IdAdjustLens = 22 };

    IT1ZoomModuleSenseController();
    static const IspBoardTable& boardTable();

    // ---- overridden operations, in slot order ----
    int FocusFar(int speed) override;
    int FocusNear(int speed) override;
    int ZoomIn(int speed) override;
    int ZoomOut(int speed) override;
    int getZoomValue(int& zoom, int& maxZoom) override;
    int setZoomValue(int zoom) override;
    int setFocusValue(int focus) override;
    int getFocusValue(int& focus) override;
    int setFocusMode(int mode) override;  // 0 automatic, 1 manual
    int getFocusMode(int& mode) override;
    int StopZoomContrl() override;
    int StopFocusContrl() override;

    // ---- lens ----
    int setAdjustLens();
    int setAutoFocus(int on);

protected:
    // A zoom board with a table of its own (the zoom board's table extended).
    IT1ZoomModuleSenseController(int sensorType, const IspBoardTable& table);

    int setOwnParameter(const IspBoardTable::Parameter& row, int value) override;
    int getOwnParameter(const IspBoardTable::Parameter& row, int& value) override;
    bool openPort(const ModuleConfigure& cfg) override;

private:
    int lensCommand(int command);
};
