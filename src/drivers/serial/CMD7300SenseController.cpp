#include "drivers/serial/CMD7300SenseController.h"

#include <vector>

namespace {

// The CMD7300's parameters: id, first and last accepted value.
const ViscaParameter::Range kRanges[] = {
    {0, 0, 4},   {1, 0, 27},  {2, 0, 15},  {3, 4, 15},  {4, 0, 21},   {5, 0, 17},  {6, 1, 6},   {7, 0, 255},
    {9, 0, 255}, {10, 0, 3},  {11, 0, 1},  {12, 1, 15}, {13, 0, 0},   {14, 0, 1},  {15, 0, 1},  {16, 0, 2},
    {17, 0, 5},  {18, 0, 1},  {19, 0, 100}, {20, 0, 21}, {52, 0, 0},  {53, 0, 0},  {54, 0, 0},  {55, 0, 0},
    {56, 0, 100}, {57, 0, 0}, {58, 0, 0},  {59, 0, 0},  {60, 0, 0},   {61, 0, 0},  {62, 0, 0},  {63, 0, 0},
    {64, 0, 0},
};

const std::vector<ViscaParameter>& table() {
    static const std::vector<ViscaParameter> rows =
        CMDSenseController::rowsWithRanges(kRanges, sizeof(kRanges) / sizeof(kRanges[0]));
    return rows;
}

}  // namespace

CMD7300SenseController::CMD7300SenseController()
    : CMDSenseController(SensorType, "CMD7300SenseController", "CMD7300", table().data(), table().size(), false) {}

CMD7300SenseController::~CMD7300SenseController() {
    // The worker may be in a transaction: stop it while the port is still here.
    stopWorker();
}

const ViscaParameter* CMD7300SenseController::parameterTable(size_t& count) {
    count = table().size();
    return table().data();
}
