#include "storage/ControllerIdTable.h"

#include <cstring>

#include "storage/IdManager.h"

namespace {

// Type numbers: 1 common, 2 especial, 3 set-only, 4 keep-default-value.
const IdRange kBase[] = {{1, 500, 504}};
const IdRange kS2Fisheye[] = {{1, 1, 41}, {3, 43, 53}, {1, 54, 56}};
const IdRange kFCBEV7310[] = {{1, 1, 8}, {1, 10, 30}, {1, 32, 34}, {1, 38, 41}, {1, 44, 51}, {1, 57, 68}};
const IdRange kSONYEH4300[] = {{1, 1, 8},   {1, 10, 30}, {1, 32, 34}, {1, 38, 41},
                               {1, 44, 51}, {1, 56, 64}, {3, 37, 37}, {3, 52, 55}};
const IdRange kSONYCV7500[] = {{1, 1, 8},   {1, 10, 21}, {1, 23, 30}, {1, 32, 34}, {1, 39, 40},
                               {1, 44, 50}, {1, 56, 66}, {3, 37, 37}, {3, 52, 55}, {3, 67, 68}};
const IdRange kSONYCH3310[] = {{1, 1, 8}, {1, 10, 30}, {1, 32, 34}, {1, 38, 41}, {1, 44, 52}, {1, 56, 63}, {3, 37, 37}};
const IdRange kCMD8100[] = {{1, 0, 7},   {1, 9, 17},  {1, 19, 20}, {1, 56, 63},
                            {3, 52, 55}, {3, 64, 64}, {3, 66, 74}, {4, 65, 65}};
const IdRange kCMD8100Old[] = {{1, 0, 7}, {1, 9, 19}, {1, 56, 63}, {3, 52, 55}, {3, 64, 64}};
const IdRange kCMD7300[] = {{1, 0, 7}, {1, 9, 20}, {1, 56, 63}, {3, 52, 55}, {3, 64, 64}};
const IdRange kCMD8300[] = {{1, 1, 27}, {1, 29, 32}, {1, 57, 66}, {3, 28, 28}};
const IdRange kCMD7200[] = {{1, 1, 10}};
const IdRange kSC110NC[] = {{1, 1, 4}, {1, 6, 11}, {1, 13, 18}, {4, 19, 19}, {3, 20, 20}, {3, 22, 29}};
const IdRange kHitach[] = {{1, 1, 4}, {1, 6, 11}, {1, 13, 17}};
const IdRange kHitachCompat[] = {{1, 1, 4},   {1, 6, 7},   {1, 9, 10},  {1, 12, 14},
                                 {1, 16, 19}, {1, 21, 21}, {3, 20, 20}, {3, 54, 55}};
const IdRange kEffio[] = {{1, 1, 10}, {1, 12, 19}, {1, 21, 21}, {1, 57, 61}};
const IdRange kITN[] = {{1, 1, 26}};
const IdRange kIT1[] = {{1, 1, 6}, {1, 8, 19}, {1, 22, 22}};
const IdRange kIT1Zoom[] = {{1, 1, 6}, {1, 8, 21}, {3, 22, 22}};
const IdRange kSeawolf[] = {{1, 1, 14}, {1, 16, 20}, {1, 29, 29}, {1, 30, 30}, {1, 57, 61}, {3, 22, 28}};
const IdRange kKestraISP[] = {{1, 1, 12},  {1, 15, 15}, {1, 16, 16}, {1, 18, 18}, {1, 24, 30},
                              {1, 32, 33}, {1, 34, 37}, {1, 39, 39}, {1, 57, 62}};

struct Entry {
    const char* name;
    const IdRange* ranges;
    size_t count;
};

#define ENTRY(name, table) {name, table, sizeof(table) / sizeof(table[0])}
const Entry kTable[] = {
    ENTRY("ISensorController", kBase),
    ENTRY("S2FisheyeSenseController", kS2Fisheye),
    ENTRY("FCBEV7310SenseController", kFCBEV7310),
    ENTRY("SONYEH4300SenseController", kSONYEH4300),
    ENTRY("SONYCV7500SenseController", kSONYCV7500),
    ENTRY("SONYCH3310SenseController", kSONYCH3310),
    ENTRY("CMD8100SenseController", kCMD8100),
    ENTRY("CMD8100_OldSenseController", kCMD8100Old),
    ENTRY("CMD7300SenseController", kCMD7300),
    ENTRY("CMD8300SenseController", kCMD8300),
    ENTRY("CMD7200SenseController", kCMD7200),
    ENTRY("SC110N_CSenseController", kSC110NC),
    ENTRY("HitachSenseController", kHitach),
    ENTRY("HitachCompatSenseController", kHitachCompat),
    ENTRY("EffioSenseController", kEffio),
    ENTRY("ITNSenseController", kITN),
    ENTRY("IT1SenseController", kIT1),
    ENTRY("IT1ZoomModuleSenseController", kIT1Zoom),
    ENTRY("SeawolfSenseController", kSeawolf),
    ENTRY("KestraISPSenseController", kKestraISP),
    // The zoom board with privacy masks has the zoom board's parameters.
    ENTRY("IIPC368ZoomSensorController", kIT1Zoom),
};
#undef ENTRY

}  // namespace

const IdRange* ControllerIdTable::find(const char* controllerName, size_t& count) {
    count = 0;
    if (controllerName == nullptr) return nullptr;
    for (const Entry& e : kTable) {
        if (std::strcmp(e.name, controllerName) == 0) {
            count = e.count;
            return e.ranges;
        }
    }
    return nullptr;
}

bool ControllerIdTable::registerIds(const char* controllerName, IdManager& ids) {
    size_t count = 0;
    const IdRange* r = find(controllerName, count);
    if (r == nullptr) return false;
    for (size_t i = 0; i < count; ++i) ids.addParameterId(r[i].type, r[i].firstId, r[i].lastId);
    return true;
}

size_t ControllerIdTable::controllerCount() { return sizeof(kTable) / sizeof(kTable[0]); }

const char* ControllerIdTable::controllerName(size_t index) {
    return index < controllerCount() ? kTable[index].name : nullptr;
}
