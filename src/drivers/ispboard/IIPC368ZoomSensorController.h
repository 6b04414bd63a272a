#pragma once
#include <cstdint>

#include "core/SensorTypes.h"
#include "drivers/ispboard/IT1ZoomModuleSenseController.h"

// The zoom board with privacy masks: the IT1 zoom board (same ids and lens)
// with eight mask regions. A mask is a region in pixels of the picture (x, y,
// width, height, each a 16-bit register, snapped down to the board's steps of
// 8 pixels across and 4 down) and a bit of the mask-enable register that
// shows it. Every mask register goes out through KSSendParam.
class IIPC368ZoomSensorController : public IT1ZoomModuleSenseController {
public:
    enum { SensorType = SensorTypes::IIPC368Zoom, MaskCount = 8, MaskWidthStep = 8, MaskHeightStep = 4, MaxMaskX = 1920, MaxMaskY = 1080 };
    enum : uint16_t {
        RegMaskEnable = 0x00A0,  // bit n shows mask n
        RegMaskRegion = 0x00B0   // mask n: x, y, width, height at RegMaskRegion + 4n + 0..3
    };

    IIPC368ZoomSensorController();
    static const IspBoardTable& boardTable();

    // One mask register to the board; 1 on success, else "KSSendParam failed,address=0x%04x,value=%d".
    int KSSendParam(uint16_t address, int value);
    // The region of a mask (not shown by itself); refused with "invalid value"
    // for a mask that does not exist and "invalid mask region(%d,%d,%d,%d)" for
    // a region outside the picture, nothing sent.
    int setRegion(int index, int x, int y, int width, int height);
    // setRegion, then showMask.
    int setMask(int index, int x, int y, int width, int height);
    int showMask(int index);
    int hideMask(int index);
    // Hides the mask and zeroes its region.
    int clearMask(int index);
    // Hides every mask (one write of the enable register) and zeroes every region.
    int clearAllMask();
    int getMaskWidthStep() const { return MaskWidthStep; }
    int getMaskHeightStep() const { return MaskHeightStep; }

private:
    int setMaskBit(int index, int on);
};
