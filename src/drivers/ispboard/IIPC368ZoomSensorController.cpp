#include "drivers/ispboard/IIPC368ZoomSensorController.h"

#include <vector>

#include "drivers/ispboard/IspBoardTableExtension.h"
#include "platform/KSLogger.h"

namespace {

typedef IIPC368ZoomSensorController M;

// The enable register and the four region registers of each mask.
std::vector<IspBoardTable::Register> maskRegisters() {
    static const char* const kNames[M::MaskCount][4] = {
        {"Mask0X", "Mask0Y", "Mask0Width", "Mask0Height"}, {"Mask1X", "Mask1Y", "Mask1Width", "Mask1Height"},
        {"Mask2X", "Mask2Y", "Mask2Width", "Mask2Height"}, {"Mask3X", "Mask3Y", "Mask3Width", "Mask3Height"},
        {"Mask4X", "Mask4Y", "Mask4Width", "Mask4Height"}, {"Mask5X", "Mask5Y", "Mask5Width", "Mask5Height"},
        {"Mask6X", "Mask6Y", "Mask6Width", "Mask6Height"}, {"Mask7X", "Mask7Y", "Mask7Width", "Mask7Height"}};
    std::vector<IspBoardTable::Register> r;
    r.push_back({M::RegMaskEnable, 8, "MaskEnable", 0, 0, 255, true});
    for (int n = 0; n < M::MaskCount; ++n) {
        const uint16_t base = static_cast<uint16_t>(M::RegMaskRegion + 4 * n);
        r.push_back({base, 16, kNames[n][0], 0, 0, M::MaxMaskX, true});
        r.push_back({static_cast<uint16_t>(base + 1), 16, kNames[n][1], 0, 0, M::MaxMaskY, true});
        r.push_back({static_cast<uint16_t>(base + 2), 16, kNames[n][2], 0, 0, M::MaxMaskX, true});
        r.push_back({static_cast<uint16_t>(base + 3), 16, kNames[n][3], 0, 0, M::MaxMaskY, true});
    }
    return r;
}

}  // namespace

const IspBoardTable& IIPC368ZoomSensorController::boardTable() {
    static const std::vector<IspBoardTable::Register> masks = maskRegisters();
    static const IspBoardTableExtension board("IIPC368ZoomSensorController", IT1ZoomModuleSenseController::boardTable(),
                                              masks.data(), masks.size(), nullptr, 0);
    return board.table();
}

IIPC368ZoomSensorController::IIPC368ZoomSensorController() : IT1ZoomModuleSenseController(SensorType, boardTable()) {}

int IIPC368ZoomSensorController::KSSendParam(uint16_t address, int value) {
    if (writeRegister(address, value)) return 1;
    KSLogger::consolePrintf("KSSendParam failed,address=0x%04x,value=%d\n", address, value);
    return 0;
}

int IIPC368ZoomSensorController::setRegion(int index, int x, int y, int width, int height) {
    if (static_cast<unsigned int>(index) >= MaskCount) {
        KSLogger::consolePuts("invalid value");
        return 0;
    }
    if (x < 0 || y < 0 || width < 0 || height < 0 || x + width > MaxMaskX || y + height > MaxMaskY) {
        KSLogger::consolePrintf("invalid mask region(%d,%d,%d,%d)\n", x, y, width, height);
        return 0;
    }
    const int region[4] = {x - x % MaskWidthStep, y - y % MaskHeightStep, width - width % MaskWidthStep,
                           height - height % MaskHeightStep};
    const uint16_t base = static_cast<uint16_t>(RegMaskRegion + 4 * index);
    for (int i = 0; i < 4; ++i)
        if (!KSSendParam(static_cast<uint16_t>(base + i), region[i])) return 0;
    return 1;
}

int IIPC368ZoomSensorController::setMaskBit(int index, int on) {
    if (static_cast<unsigned int>(index) >= MaskCount) {
        KSLogger::consolePuts("invalid value");
        return 0;
    }
    int r = modifyRegister(RegMaskEnable, [index, on](int current, int& next) {
        next = modifyAppointedBit(static_cast<unsigned char>(current), index, on);
        return true;
    });
    if (r == 1) return 1;
    KSLogger::consolePrintf("KSSendParam failed,address=0x%04x,value=%d\n", RegMaskEnable, on);
    return 0;
}

int IIPC368ZoomSensorController::setMask(int index, int x, int y, int width, int height) {
    return setRegion(index, x, y, width, height) && showMask(index);
}

int IIPC368ZoomSensorController::showMask(int index) { return setMaskBit(index, 1); }
int IIPC368ZoomSensorController::hideMask(int index) { return setMaskBit(index, 0); }

int IIPC368ZoomSensorController::clearMask(int index) {
    return hideMask(index) && setRegion(index, 0, 0, 0, 0);
}

int IIPC368ZoomSensorController::clearAllMask() {
    if (!KSSendParam(RegMaskEnable, 0)) return 0;
    for (int n = 0; n < MaskCount; ++n)
        if (!setRegion(n, 0, 0, 0, 0)) return 0;
    return 1;
}
