#include "drivers/serial/HitachCompatSenseController.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

// The iris step register carries 01 (open a step) or 02 (close a step).
const int kIrisOpen[] = {0x01};
const int kIrisClose[] = {0x02};

// The Hitachi rows that this module shares (same registers), by id.
const int kSharedIds[] = {1, 2, 3, 4, 6, 7, 9, 10, 13, 14, 16, 17};

// The rows of its own. Every address is this library's own definition.
// id, name, range name, first and last value, address, width, codes, own, power-on value.
const AsciiParameter kOwnRows[] = {
    {12, "VerticalSharpness", "p_nVerticalSharpness", 0, 15, 0x0114, 2, nullptr, true, 8},
    {18, "AutoIris", "p_nAutoIris", 0, 1, 0x0170, 2, nullptr, true, 1},
    {19, "IrisVoltage", "p_nIrisVoltage", 0, 255, 0x0171, 2, nullptr, true, 128},
    {20, "LensAdjust", "p_nLensAdjust", 1, 1, 0x0172, 2, nullptr, true, 0},
    {21, "LensType", "p_nLensType", 0, 1, 0x0173, 2, nullptr, true, 0},
    {54, "IrisOpen", "p_nIrisOpen", 1, 1, 0x0174, 2, kIrisOpen, true, 1},
    {55, "IrisClose", "p_nIrisClose", 1, 1, 0x0174, 2, kIrisClose, true, 1},
};

// The module's table: the shared rows and its own, ascending by id.
const std::vector<AsciiParameter>& table() {
    static const std::vector<AsciiParameter> rows = [] {
        size_t count = 0;
        const AsciiParameter* hitachi = HitachSenseController::parameterTable(count);
        std::vector<AsciiParameter> v;
        for (int id : kSharedIds) v.push_back(*AsciiParameter::find(hitachi, count, id));
        v.insert(v.end(), std::begin(kOwnRows), std::end(kOwnRows));
        std::sort(v.begin(), v.end(), [](const AsciiParameter& a, const AsciiParameter& b) { return a.id < b.id; });
        return v;
    }();
    return rows;
}

}  // namespace

HitachCompatSenseController::HitachCompatSenseController()
    : HitachSenseController(SensorType, "HitachCompatSenseController", table().data(), table().size()) {}

HitachCompatSenseController::~HitachCompatSenseController() {
    stopModuleWorker();
    stopWorker();
}

const AsciiParameter* HitachCompatSenseController::parameterTable(size_t& count) {
    count = table().size();
    return table().data();
}
