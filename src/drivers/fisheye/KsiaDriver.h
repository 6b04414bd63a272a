#pragma once
/*
 * Contract with the fisheye board's ISP driver library (libksia).
 *
 * The library is a closed C library of the board. The controller reaches it
 * through two calls:
 *
 *   ksia_preinit(&info)                       once, during initialisation, with
 *                                             the board's machine information;
 *   ksia_ioctrl(command, direction, &value)   one command: direction KSIA_SET
 *                                             makes the library read *value,
 *                                             KSIA_GET makes it write *value.
 *
 * ksia_ioctrl returns 0 on success and the library's error code otherwise.
 * On the camera the symbols come from the board library; host builds and tests
 * link a simulated library with the same symbols.
 */

#ifdef __cplusplus
extern "C" {
#endif

/* Directions of ksia_ioctrl. */
enum KsiaDirection { KSIA_GET = 0, KSIA_SET = 1 };

/* Command numbers of ksia_ioctrl, with the values the controller sends. */
enum KsiaCommand {
    KSIA_BRIGHTNESS = 1,          /* 0-100 */
    KSIA_SATURATION = 2,          /* 0-100 */
    KSIA_SHARPNESS = 3,           /* 0-100 */
    KSIA_CONTRAST = 4,            /* 0-100 */
    KSIA_SHUTTER_MODE = 17,       /* 0-1 */
    KSIA_MAX_SHUTTER = 18,        /* shutter index 0-18 */
    KSIA_FIXED_SHUTTER = 19,      /* shutter index 0-18 */
    KSIA_VIDEO_SYSTEM = 20,       /* set only; 0 or 1, inverted from the video system */
    KSIA_GAIN_MODE = 33,          /* 0-1 */
    KSIA_MAX_GAIN = 34,           /* 0-100 */
    KSIA_FIXED_GAIN = 35,         /* 0-100 */
    KSIA_PICTURE_DAY_NIGHT = 49,  /* set only; 1 day picture, 2 night picture */
    KSIA_DTN_THRESHOLD = 50,      /* day-to-night threshold 0-100 */
    KSIA_NTD_THRESHOLD = 51,      /* night-to-day threshold 0-100 */
    KSIA_IRIS_MODE = 65,          /* 0-1 */
    KSIA_IRIS_SPEED = 66,         /* 0-100 */
    KSIA_INDOOR_OUTDOOR = 67,     /* 0-2 */
    KSIA_WDR_MODE = 81,           /* 0-1 */
    KSIA_WDR_STRENGTH = 82,       /* 0-100 */
    KSIA_PHOTOMETRY = 97,         /* metering mode 0-3 */
    KSIA_MIRROR = 113,            /* 0-3 */
    KSIA_BE_AWAY = 114,           /* ceiling/wall mounting 0-1 */
    KSIA_NR2D_MODE = 129,         /* 0-2 */
    KSIA_NR2D_MAX = 130,          /* 0-100 */
    KSIA_NR2D_FIXED = 131,        /* 0-100 */
    KSIA_NR3D_MODE = 132,         /* 0-2 */
    KSIA_NR3D_MAX = 133,          /* 0-100 */
    KSIA_NR3D_FIXED = 134,        /* 0-100 */
    KSIA_NIGHT_SWITCH_BUSY = 177, /* get only; non-zero while a night switch is in progress */
    KSIA_INFRARED_PRESENT = 178,  /* set only; 0 no infrared light, 1 infrared light fitted */
    KSIA_SMART_IR_MODE = 193,     /* 1 or 2 */
    KSIA_IR_MANUAL_POWER = 194,   /* 0-100 */
    KSIA_HLC_MODE = 209,          /* 0-1 */
    KSIA_HLC_STRENGTH = 210,      /* 0-100 */
    KSIA_BLC_MODE = 225,          /* unchecked */
    KSIA_SCENE_LEVEL = 241,       /* get only; compared with the two thresholds */
    KSIA_ZOOM_INTERVAL = 273,     /* 0-4 */
    KSIA_ZOOM_MOVE = 274,         /* set only; 1 wide fast, 2 wide slow, 3 tele fast, 4 tele slow, 5 reset */
    KSIA_FOCUS_INTERVAL = 276,    /* set only; unchecked */
    KSIA_FOCUS_MOVE = 277,        /* set only; 1 near fast, 2 near slow, 3 far fast, 4 far slow,
                                     5 reset, 6 auto focus */
    KSIA_DEFOG = 305,             /* 0-1 */
    KSIA_DEFOG_STRENGTH = 306,    /* 0-100 */
    KSIA_ANTI_SHAKE = 322         /* unchecked */
};

/* The pre-initialisation record: six zero-terminated texts from the machine
 * information, 256 bytes in all. */
struct KsiaPreinitInfo {
    char szHardwareModel[32];
    char szHardwareCode[32];
    char szHardwareDescription[64];
    char szProductModel[64];
    char szBarCode[32];
    char szProductionTime[32];
};

/* Pre-initialises the library with the board's machine information. */
int ksia_preinit(struct KsiaPreinitInfo* p_pInfo);

/* Issues one command; 0 on success, the library's error code otherwise. */
int ksia_ioctrl(int p_nCommand, int p_nDirection, int* p_pValue);

#ifdef __cplusplus
}  // extern "C"

#include <cstddef>
static_assert(sizeof(KsiaPreinitInfo) == 256, "the pre-initialisation record is 256 bytes");
static_assert(offsetof(KsiaPreinitInfo, szHardwareCode) == 32 &&
                  offsetof(KsiaPreinitInfo, szHardwareDescription) == 64 &&
                  offsetof(KsiaPreinitInfo, szProductModel) == 128 &&
                  offsetof(KsiaPreinitInfo, szBarCode) == 192 &&
                  offsetof(KsiaPreinitInfo, szProductionTime) == 224,
              "field offsets of the pre-initialisation record");
static_assert(sizeof(int) == 4, "commands carry 32-bit integers");
#endif
