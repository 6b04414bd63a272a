// The ISP-board frame exchange with the IT1 controller against the simulated
// board in-process: the library's cost of one register write (frame out,
// 5-byte acknowledgement in, checksum and echo checked) and one 16-bit read.
// The board answers at once without pacing and the waits run on the virtual
// clock, so what is measured is the library, the in-process port and the
// board's own handling of the frame.
#include <benchmark/benchmark.h>

#include "BenchRoot.h"
#include "IdleDevices.h"
#include "QuietConsole.h"
#include "drivers/ispboard/IT1SenseController.h"
#include "ispboard/SimIspBoard.h"
#include "platform/PlatformClock.h"
#include "platform/SafePointer.h"
#include "line/SimSerialUART.h"

namespace {

const char* kDetail = "RS485=/dev/ttyS1;isInfrared=1";

template <class F>
void runOnBoard(benchmark::State& state, F&& exchange) {
    BenchRoot root;
    QuietConsole quiet;
    PlatformClock::useVirtual(1767571200);
    {
        SimIspBoard board(IT1SenseController::boardTable());
        board.setReplyDelayMs(0);
        board.setPacing(false);
        SafePointer<IUARTController> uart(new SimSerialUART(board, "/dev/ttyS1"));
        IT1SenseController ctl;
        ctl.setOperator(uart, SafePointer<IGPIO>(new IdleGPIO()));
        if (!ctl.initController(IT1SenseController::SensorType,
                                ModuleConfigure(IT1SenseController::SensorType, kDetail, "RS485=9600,8,1,0"))) {
            state.SkipWithError("init failed");
        } else {
            ctl.stopBoardWorkers();
            int64_t i = 0, failed = 0;
            for (auto _ : state) failed += exchange(ctl, i++) ? 0 : 1;
            state.counters["failed"] = static_cast<double>(failed);
        }
        ctl.stopWorker();
    }
    PlatformClock::useReal();
}

}  // namespace

static void BM_RegisterWriteInProcess(benchmark::State& state) {
    runOnBoard(state, [](IT1SenseController& c, int64_t i) {
        return c.writeRegister(IBaseIT1SenseController::RegBrightness, static_cast<int>(i % 100));
    });
}
BENCHMARK(BM_RegisterWriteInProcess)->Unit(benchmark::kMicrosecond);

static void BM_RegisterRead16InProcess(benchmark::State& state) {
    runOnBoard(state, [](IT1SenseController& c, int64_t) {
        int v = 0;
        return c.readRegister(IBaseIT1SenseController::RegShutterLimit, v);
    });
}
BENCHMARK(BM_RegisterRead16InProcess)->Unit(benchmark::kMicrosecond);
