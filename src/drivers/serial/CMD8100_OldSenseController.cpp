#include "drivers/serial/CMD8100_OldSenseController.h"

#include <cstdio>
#include <vector>

#include "platform/KSLogger.h"

namespace {

// The earlier CMD8100's parameters: id, first and last accepted value.
const ViscaParameter::Range kRanges[] = {
    {0, 0, 4},   {1, 0, 27},  {2, 0, 15},  {3, 4, 15},  {4, 0, 21},   {5, 0, 17},  {6, 1, 6},   {7, 0, 255},
    {9, 0, 255}, {10, 0, 3},  {11, 0, 1},  {12, 1, 15}, {13, 0, 0},   {14, 0, 1},  {15, 0, 1},  {16, 0, 2},
    {17, 0, 5},  {18, 0, 1},  {19, 0, 100}, {52, 0, 0}, {53, 0, 0},   {54, 0, 0},  {55, 0, 0},  {56, 0, 100},
    {57, 0, 0},  {58, 0, 0},  {59, 0, 0},  {60, 0, 0},  {61, 0, 0},   {62, 0, 0},  {63, 0, 0},  {64, 0, 0},
};

const std::vector<ViscaParameter>& table() {
    static const std::vector<ViscaParameter> rows =
        CMDSenseController::rowsWithRanges(kRanges, sizeof(kRanges) / sizeof(kRanges[0]));
    return rows;
}

// The module's video formats (register 0x72): width, height, code.
struct VideoFormat {
    int width, height, code;
};
const VideoFormat kVideoFormats[] = {{1920, 1080, 0x07}, {1280, 720, 0x0A}};

}  // namespace

CMD8100_OldSenseController::CMD8100_OldSenseController()
    : CMDSenseController(SensorType, "CMD8100_OldSenseController", "CMD8100_Old", table().data(), table().size(),
                         true) {}

CMD8100_OldSenseController::~CMD8100_OldSenseController() {
    // The worker may be in a transaction: stop it while the port is still here.
    stopWorker();
}

const ViscaParameter* CMD8100_OldSenseController::parameterTable(size_t& count) {
    count = table().size();
    return table().data();
}

int CMD8100_OldSenseController::videoFormatOf(const VideoResolution& res) {
    for (const VideoFormat& f : kVideoFormats)
        if (f.width == res.getVideoWidth() && f.height == res.getVideoHeight()) return f.code;
    return -1;
}

int CMD8100_OldSenseController::setVideoSystem(const VideoResolution& res) {
    const int code = videoFormatOf(res);
    if (code < 0) {
        KSLogger::consolePrintf("setVideoSystem(%d*%d) is not supported\n", res.getVideoWidth(), res.getVideoHeight());
        return 0;
    }
    unsigned char v[3] = {VideoFormatRegister, static_cast<unsigned char>((code >> 4) & 0x0F),
                          static_cast<unsigned char>(code & 0x0F)};
    if (!sendCommand(0x24, v, 3)) {
        KSLogger::consolePrintf("setVideoSystem(%d*%d) failed\n", res.getVideoWidth(), res.getVideoHeight());
        return 0;
    }
    return 1;
}

int CMD8100_OldSenseController::setSensorVideoSystem(int, const VideoResolution& res) { return setVideoSystem(res); }
