#pragma once
#include <vector>

// The sensor type of every controller of this library: the number a controller
// is constructed with (getSensorType()), and by which a board's factory builds
// it (SensorTypeFactory). One table, so that no two controllers share a number.
//
// Numbers that the base controller treats specially are kept free: 0 (the
// do-nothing controller), 4, 5 and 6 (no edge-enhancement setting), 11, 16, 19
// and 24 (the temporal noise reduction classification), 17 (a controller that
// reports its own start-up), 21 (edge enhancement forced off in TNF mode 1).
struct SensorTypes {
    enum : int {
        Null = 0,
        // Serial camera modules: VISCA block cameras.
        FCBEV7310 = 73,
        SONYEH4300 = 74,
        SONYCV7500 = 75,
        SONYCH3310 = 76,
        CMD8100 = 77,
        CMD8100_Old = 78,
        CMD7300 = 79,
        CMD8300 = 80,
        // Serial camera modules: ASCII register cameras and the Effio processor.
        Hitach = 81,
        HitachCompat = 82,
        SC110N_C = 83,
        CMD7200 = 84,
        Effio = 85,
        // ISP boards.
        ITN = 86,
        Seawolf = 87,
        // The fisheye board (also its module id, which the fisheye factory is keyed by).
        S2Fisheye = 88,
        // ISP boards.
        IT1 = 89,
        IT1ZoomModule = 90,
        KestraISP = 91,
        IIPC368Zoom = 92,
        // A serial module without image settings.
        NoSensorUI = 99
    };

    // The numbers SensorTypeFactory builds a controller for, in the order above.
    static const std::vector<int>& all();
    // True for a number the base controller gives a behaviour of its own.
    static bool isReserved(int type);
};
