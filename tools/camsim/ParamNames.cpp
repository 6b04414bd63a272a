#include "camsim/ParamNames.h"

#include <cctype>

#include "drivers/fisheye/KsiaDriver.h"

namespace camsim {
namespace {

struct Named {
    int n;
    const char* name;
};

const Named kParameters[] = {
    {1, "brightness"},        {2, "saturation"},        {3, "contrast"},          {4, "sharpness"},
    {5, "shutter-mode"},      {6, "max-shutter"},       {7, "fixed-shutter"},     {8, "gain-mode"},
    {9, "max-gain"},          {10, "fixed-gain"},       {11, "daynight-mode"},    {12, "dtn-threshold"},
    {13, "ntd-threshold"},    {14, "iris-mode"},        {15, "iris-speed"},       {16, "indoor-outdoor"},
    {17, "wdr-mode"},         {18, "wdr-strength"},     {19, "metering"},         {20, "mirror"},
    {21, "be-away"},          {22, "nr2d-mode"},        {23, "nr2d-max"},         {24, "nr2d-fixed"},
    {25, "nr3d-mode"},        {26, "nr3d-max"},         {27, "nr3d-fixed"},       {28, "dtn-hour"},
    {29, "dtn-minute"},       {30, "ntd-hour"},         {31, "ntd-minute"},       {32, "ir-dtn-threshold"},
    {33, "ir-ntd-threshold"}, {34, "switch-delay"},     {35, "smart-ir"},         {36, "ir-power"},
    {37, "hlc-mode"},         {38, "hlc-strength"},     {39, "blc-mode"},         {40, "zoom-interval"},
    {41, "focus-interval"},   {43, "zoom-wide-slow"},   {44, "zoom-tele-slow"},   {46, "focus-far-slow"},
    {47, "focus-near-slow"},  {48, "zoom-wide-fast"},   {49, "zoom-tele-fast"},   {50, "focus-far-fast"},
    {51, "focus-near-fast"},  {52, "auto-focus"},       {53, "lens-reset"},       {54, "defog"},
    {55, "defog-strength"},   {56, "anti-shake"},       {500, "scheme-enable"},   {501, "scheme-start-hour"},
    {502, "scheme-start-10min"}, {503, "scheme-end-hour"}, {504, "scheme-end-10min"},
};

const Named kCommands[] = {
    {KSIA_BRIGHTNESS, "brightness"},
    {KSIA_SATURATION, "saturation"},
    {KSIA_SHARPNESS, "sharpness"},
    {KSIA_CONTRAST, "contrast"},
    {KSIA_SHUTTER_MODE, "shutter mode"},
    {KSIA_MAX_SHUTTER, "max shutter"},
    {KSIA_FIXED_SHUTTER, "fixed shutter"},
    {KSIA_VIDEO_SYSTEM, "video system"},
    {KSIA_GAIN_MODE, "gain mode"},
    {KSIA_MAX_GAIN, "max gain"},
    {KSIA_FIXED_GAIN, "fixed gain"},
    {KSIA_PICTURE_DAY_NIGHT, "picture day/night"},
    {KSIA_DTN_THRESHOLD, "day-to-night threshold"},
    {KSIA_NTD_THRESHOLD, "night-to-day threshold"},
    {KSIA_IRIS_MODE, "iris mode"},
    {KSIA_IRIS_SPEED, "iris speed"},
    {KSIA_INDOOR_OUTDOOR, "indoor/outdoor"},
    {KSIA_WDR_MODE, "WDR mode"},
    {KSIA_WDR_STRENGTH, "WDR strength"},
    {KSIA_PHOTOMETRY, "metering"},
    {KSIA_MIRROR, "mirror"},
    {KSIA_BE_AWAY, "be-away"},
    {KSIA_NR2D_MODE, "2D NR mode"},
    {KSIA_NR2D_MAX, "2D NR max"},
    {KSIA_NR2D_FIXED, "2D NR fixed"},
    {KSIA_NR3D_MODE, "3D NR mode"},
    {KSIA_NR3D_MAX, "3D NR max"},
    {KSIA_NR3D_FIXED, "3D NR fixed"},
    {KSIA_NIGHT_SWITCH_BUSY, "night switch busy"},
    {KSIA_INFRARED_PRESENT, "infrared present"},
    {KSIA_SMART_IR_MODE, "smart IR"},
    {KSIA_IR_MANUAL_POWER, "IR power"},
    {KSIA_HLC_MODE, "HLC mode"},
    {KSIA_HLC_STRENGTH, "HLC strength"},
    {KSIA_BLC_MODE, "BLC mode"},
    {KSIA_SCENE_LEVEL, "scene level"},
    {KSIA_ZOOM_INTERVAL, "zoom interval"},
    {KSIA_ZOOM_MOVE, "zoom move"},
    {KSIA_FOCUS_INTERVAL, "focus interval"},
    {KSIA_FOCUS_MOVE, "focus move"},
    {KSIA_DEFOG, "defog"},
    {KSIA_DEFOG_STRENGTH, "defog strength"},
    {KSIA_ANTI_SHAKE, "anti-shake"},
};

std::string lower(const std::string& s) {
    std::string out = s;
    for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

}  // namespace

const char* parameterName(int id) {
    for (const Named& p : kParameters)
        if (p.n == id) return p.name;
    return nullptr;
}

bool parameterIdByName(const std::string& name, int& id) {
    const std::string key = lower(name);
    for (const Named& p : kParameters) {
        if (key == p.name) {
            id = p.n;
            return true;
        }
    }
    return false;
}

std::string ispCommandName(int command) {
    for (const Named& c : kCommands)
        if (c.n == command) return c.name;
    return "command " + std::to_string(command);
}

}  // namespace camsim
