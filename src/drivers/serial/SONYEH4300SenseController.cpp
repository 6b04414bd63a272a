#include "drivers/serial/SONYEH4300SenseController.h"

#include <cstdio>
#include <vector>

#include "drivers/serial/FCBEV7310SenseController.h"
#include "platform/KSLogger.h"

namespace {

// The EH4300's parameters: the FCB-EV7310's operations (same ids, same
// packets) with this module's accepted values. id, first and last accepted value.
const ViscaParameter::Range kRanges[] = {
    {1, 0, 100}, {2, 0, 3},   {3, 0, 1},   {4, 0, 5},   {5, 0, 0},   {6, 0, 3},    {7, 0, 28},  {8, 0, 0},
    {10, 0, 4},  {11, 0, 21}, {12, 0, 17}, {13, 0, 27}, {14, 0, 15}, {15, 4, 15},  {16, 0, 0},  {17, 0, 14},
    {18, 1, 48}, {19, 0, 0},  {20, 0, 15}, {21, 0, 15}, {22, 0, 0},  {23, 1, 6},   {24, 0, 255}, {25, 0, 255},
    {26, 0, 0},  {27, 0, 1},  {28, 0, 15}, {29, 0, 0},  {30, 0, 1},  {32, 0, 2},   {33, 0, 0},  {34, 1, 15},
    {37, 0, 0},  {38, 0, 6},  {39, 0, 3},  {40, 0, 2},  {41, 0, 2},  {44, 0, 2},   {45, 0, 255}, {46, 0, 255},
    {47, 0, 14}, {48, 0, 14}, {49, 0, 0},  {50, 0, 100}, {51, 0, 0}, {52, 0, 0},   {53, 0, 0},  {54, 0, 0},
    {55, 0, 0},  {56, 0, 100}, {57, 0, 0}, {58, 0, 0},  {59, 0, 0},  {60, 0, 0},   {61, 0, 0},  {62, 0, 0},
    {63, 0, 0},  {64, 0, 0},
};

const std::vector<ViscaParameter>& table() {
    static const std::vector<ViscaParameter> rows =
        FCBEV7310SenseController::rowsWithRanges(kRanges, sizeof(kRanges) / sizeof(kRanges[0]));
    return rows;
}

const unsigned char kSyncInquiry[6] = {0x81, 0x09, 0x04, 0x24, SONYEH4300SenseController::SyncRegister, 0xFF};
const unsigned char kSyncInternal[8] = {0x81, 0x01, 0x04, 0x24, SONYEH4300SenseController::SyncRegister, 0x00, 0x01, 0xFF};
const int kSyncAnswerLength = 5;

}  // namespace

SONYEH4300SenseController::SONYEH4300SenseController()
    : ViscaSenseController(SensorType, SearchForm, "SONYEH4300", table().data(), table().size()) {
    registerIds("SONYEH4300SenseController");
}

SONYEH4300SenseController::~SONYEH4300SenseController() {
    // The worker may be in a transaction: stop it while the port is still here.
    stopWorker();
}

const ViscaParameter* SONYEH4300SenseController::parameterTable(size_t& count) {
    count = table().size();
    return table().data();
}

bool SONYEH4300SenseController::openInterSync() {
    unsigned char answer[kSyncAnswerLength] = {0};
    if (!getParameterValue(reinterpret_cast<const char*>(kSyncInquiry), sizeof(kSyncInquiry),
                           reinterpret_cast<char*>(answer), kSyncAnswerLength)) {
        KSLogger::consolePrintf("read sync register(0x%x) failed\n", SyncRegister);
        return false;
    }
    if (answer[3] != 0) return true;
    KSLogger::consolePuts("Open inter-sync");
    if (!sendPacket(kSyncInternal, sizeof(kSyncInternal))) {
        KSLogger::consolePrintf("write sync register(0x%x) failed\n", SyncRegister);
        return false;
    }
    return true;
}

int SONYEH4300SenseController::initController(int, const ModuleConfigure& cfg) {
    KSLogger::consolePrintf("SONYEH4300SenseController::init,ModuleConfigure is(%s,%s)\n", cfg.getDetail().c_str(),
                cfg.getParameters().c_str());
    if (!openSerialPort(cfg)) return 0;
    return openInterSync() ? 1 : 0;
}
