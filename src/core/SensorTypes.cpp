#include "core/SensorTypes.h"

const std::vector<int>& SensorTypes::all() {
    static const std::vector<int> types = {FCBEV7310, SONYEH4300, SONYCV7500, SONYCH3310, CMD8100, CMD8100_Old,
                                           CMD7300,   CMD8300,    Hitach,     HitachCompat, SC110N_C, CMD7200,
                                           Effio,     ITN,        Seawolf,    S2Fisheye,  IT1,     IT1ZoomModule,
                                           KestraISP, IIPC368Zoom, NoSensorUI};
    return types;
}

bool SensorTypes::isReserved(int type) {
    switch (type) {
        case 0: case 4: case 5: case 6: case 11: case 16: case 17: case 19: case 21: case 24:
            return true;
        default:
            return false;
    }
}
