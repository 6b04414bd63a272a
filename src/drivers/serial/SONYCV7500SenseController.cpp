#include "drivers/serial/SONYCV7500SenseController.h"

#include <cstdio>
#include <vector>

#include "drivers/serial/FCBEV7310SenseController.h"
#include "platform/KSLogger.h"

namespace {

typedef ViscaParameter P;

const int kBrightCompensationId = 66;

// The CV7500's parameters taken from the FCB-EV7310 (same ids, same packets)
// with this module's accepted values: id, first and last accepted value.
const ViscaParameter::Range kRanges[] = {
    {1, 0, 100}, {2, 0, 3},   {3, 0, 5},    {4, 0, 5},    {5, 0, 0},   {6, 0, 3},   {7, 0, 28},  {8, 0, 0},
    {10, 0, 4},  {11, 0, 21}, {12, 0, 17},  {13, 0, 27},  {14, 0, 15}, {15, 4, 15}, {16, 0, 0},  {17, 0, 14},
    {18, 1, 48}, {19, 0, 0},  {20, 0, 15},  {21, 0, 15},  {23, 1, 6},  {24, 0, 255}, {25, 0, 255}, {26, 0, 0},
    {27, 0, 1},  {28, 0, 15}, {29, 0, 0},   {30, 0, 1},   {32, 0, 2},  {33, 0, 0},  {34, 1, 15},  {37, 0, 0},
    {39, 0, 3},  {40, 0, 2},  {44, 0, 2},   {45, 0, 255}, {46, 0, 255}, {47, 0, 14}, {48, 0, 14}, {49, 0, 0},
    {50, 0, 100}, {52, 0, 0}, {53, 0, 0},   {54, 0, 0},   {55, 0, 0},  {56, 0, 100}, {57, 0, 0},  {58, 0, 0},
    {59, 0, 0},  {60, 0, 0},  {61, 0, 0},   {62, 0, 0},   {63, 0, 0},  {64, 0, 0},  {65, 0, 3},
};

// The CV7500's own rows: bright compensation with its level (0 off, 1-3 low,
// middle, high) and the point-light focus commands.
const ViscaParameter kOwnRows[] = {
    {kBrightCompensationId, "BrightCompensation", "p_nBrightCompensation", 0, 3, P::Controller, 0x14, 0, 0, 0},
    {67, "OpenPointLightFocus", nullptr, 0, 0, P::Fixed, SONYCV7500SenseController::PointLightFocusCode, 0x02, 0, 0},
    {68, "ClosePointLightFocus", nullptr, 0, 0, P::Fixed, SONYCV7500SenseController::PointLightFocusCode, 0x03, 0, 0},
};

const std::vector<ViscaParameter>& table() {
    static const std::vector<ViscaParameter> rows = [] {
        std::vector<ViscaParameter> r =
            FCBEV7310SenseController::rowsWithRanges(kRanges, sizeof(kRanges) / sizeof(kRanges[0]));
        r.insert(r.end(), kOwnRows, kOwnRows + sizeof(kOwnRows) / sizeof(kOwnRows[0]));
        return r;
    }();
    return rows;
}

}  // namespace

SONYCV7500SenseController::SONYCV7500SenseController()
    : ViscaSenseController(SensorType, SearchForm, "SONYCV7500", table().data(), table().size()) {
    registerIds("SONYCV7500SenseController");
}

SONYCV7500SenseController::~SONYCV7500SenseController() {
    // The worker may be in a transaction: stop it while the port is still here.
    stopWorker();
}

const ViscaParameter* SONYCV7500SenseController::parameterTable(size_t& count) {
    count = table().size();
    return table().data();
}

int SONYCV7500SenseController::setModuleRow(const ViscaParameter& row, int value, int& result) {
    if (row.id != kBrightCompensationId) return 0;
    // 81 01 04 14 0p 00 FF: p = level, 0 switches the compensation off.
    unsigned char v[2] = {static_cast<unsigned char>(value & 0x0F), 0x00};
    result = sendCommand(0x14, v, 2);
    return 1;
}

int SONYCV7500SenseController::OpenPointLightFocus() {
    unsigned char v = 0x02;
    return sendCommand(PointLightFocusCode, &v, 1);
}

int SONYCV7500SenseController::ClosePointLightFocus() {
    unsigned char v = 0x03;
    return sendCommand(PointLightFocusCode, &v, 1);
}

int SONYCV7500SenseController::checkPointLightFocusMode(int& mode) {
    const ViscaParameter row = {67, "PointLightFocus", nullptr, 0, 0, P::OnOff, PointLightFocusCode, 0, 0, 0};
    return inquireRow(row, mode);
}

int SONYCV7500SenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("SONYCV7500SenseController::init,ModuleConfigure is(%s,%s)\n", cfg.getDetail().c_str(),
                cfg.getParameters().c_str());
    return openSerialPort(cfg) ? 1 : 0;
}
