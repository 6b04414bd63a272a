// The serial transaction layer with the FCB-EV7310 controller against the
// simulated VISCA block: the library's cost of one acknowledged transaction
// in-process (waits on the virtual clock, so they cost no time) in each reply
// form (message: FCB-EV7310, search: CMD8100, byte by byte: CMD8300), the round trip
// over a pseudo-terminal with the termios port, and the transaction time with
// the module pacing its bytes at 9600 baud, against the line's own time.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "BenchRoot.h"
#include "QuietConsole.h"
#include "IdleDevices.h"
#include "drivers/serial/CMD8100SenseController.h"
#include "drivers/serial/CMD8300SenseController.h"
#include "drivers/serial/FCBEV7310SenseController.h"
#include "platform/FsUtil.h"
#include "platform/PlatformClock.h"
#include "platform/SafePointer.h"
#include "platform/TermiosUARTController.h"
#include "visca/SimViscaModule.h"
#include "visca/SimViscaPty.h"
#include "visca/SimViscaUART.h"

namespace {

const unsigned char kGamma[2][6] = {{0x81, 0x01, 0x04, 0x5B, 0x01, 0xFF}, {0x81, 0x01, 0x04, 0x5B, 0x02, 0xFF}};
const char* kDetail = "RS485=/dev/ttyS1;isInfrared=1";


int transaction(ISensorController& c, int64_t i) {
    return c.setParameterValue(reinterpret_cast<const char*>(kGamma[i & 1]), 6);
}

}  // namespace

// In-process: the module answers at once and its waits run on the virtual clock.
static void BM_AcknowledgedTransactionInProcess(benchmark::State& state) {
    BenchRoot root;
    QuietConsole quiet;
    PlatformClock::useVirtual(1767571200);
    {
        SimViscaModule module;
        module.setReplyDelayMs(0);
        module.setPacing(false);
        SafePointer<IUARTController> uart(new SimViscaUART(module, "/dev/ttyS1"));
        FCBEV7310SenseController ctl;
        ctl.setOperator(uart, SafePointer<IGPIO>(new IdleGPIO()));
        if (!ctl.initController(73, ModuleConfigure(73, kDetail, "RS485=9600,8,1,0"))) {
            state.SkipWithError("init failed");
        } else {
            int64_t i = 0, failed = 0;
            for (auto _ : state) failed += transaction(ctl, i++) ? 0 : 1;
            state.counters["failed"] = static_cast<double>(failed);
        }
    }
    PlatformClock::useReal();
}
BENCHMARK(BM_AcknowledgedTransactionInProcess)->Unit(benchmark::kMicrosecond);

// The same in the search form (the CMD8100: one 3-byte read searched for either
// pattern, then the completion read) and the byte form (the CMD8300: the same
// reads, the reply tested byte by byte).
template <class Controller>
void BM_ViscaGroupTransactionInProcess(benchmark::State& state, const char* model, const char* detail,
                                       const char* params) {
    BenchRoot root;
    QuietConsole quiet;
    PlatformClock::useVirtual(1767571200);
    {
        SimViscaModule module;
        module.setProfile(SimViscaModule::profile(model));
        module.setReplyDelayMs(0);
        module.setPacing(false);
        SafePointer<IUARTController> uart(new SimViscaUART(module, "/dev/ttyS1"));
        Controller ctl;
        ctl.setOperator(uart, SafePointer<IGPIO>(new IdleGPIO()));
        if (!ctl.initController(Controller::SensorType, ModuleConfigure(Controller::SensorType, detail, params))) {
            state.SkipWithError("init failed");
        } else {
            int64_t i = 0, failed = 0;
            for (auto _ : state) failed += transaction(ctl, i++) ? 0 : 1;
            state.counters["failed"] = static_cast<double>(failed);
        }
        ctl.stopWorker();
    }
    PlatformClock::useReal();
}
static void BM_SearchFormTransactionInProcess(benchmark::State& state) {
    BM_ViscaGroupTransactionInProcess<CMD8100SenseController>(state, "CMD8100", "RS485=/dev/ttyS1;isInfrared=1;generation=2",
                                                              "RS485=9600,8,1,0");
}
BENCHMARK(BM_SearchFormTransactionInProcess)->Unit(benchmark::kMicrosecond);

static void BM_ByteFormTransactionInProcess(benchmark::State& state) {
    BM_ViscaGroupTransactionInProcess<CMD8300SenseController>(state, "CMD8300", "RS485=/dev/ttyS1;isInfrared=1",
                                                              "RS485=9600,8,1,0;GUIConfigName=CMD8300");
}
BENCHMARK(BM_ByteFormTransactionInProcess)->Unit(benchmark::kMicrosecond);

// Over a pseudo-terminal with the termios port; the module answers at once.
static void BM_TransactionOverPty(benchmark::State& state) {
    BenchRoot root;
    QuietConsole quiet;
    SimViscaModule module;
    const bool paced = state.range(0) != 0;
    module.setReplyDelayMs(paced ? SimViscaModule::FrameMs : 0);
    module.setPacing(paced);
    SimViscaPty far(module);
    if (!far.start()) {
        state.SkipWithError("no pseudo-terminal");
        return;
    }
    FsUtil::makeDirs(root.dir() + "/dev");
    if (::symlink(far.slaveName().c_str(), (root.dir() + "/dev/ttyS1").c_str()) != 0) {
        state.SkipWithError("symlink");
        return;
    }
    auto* port = new TermiosUARTController();
    SafePointer<IUARTController> uart(port);
    FCBEV7310SenseController ctl;
    ctl.setOperator(uart, SafePointer<IGPIO>(new IdleGPIO()));
    if (!ctl.initController(73, ModuleConfigure(73, kDetail, "RS485=9600,8,1,0"))) {
        state.SkipWithError("init failed");
        return;
    }
    int64_t i = 0, failed = 0;
    const unsigned long calls0 = port->getSystemCallCount();
    auto t0 = std::chrono::steady_clock::now();
    for (auto _ : state) failed += transaction(ctl, i++) ? 0 : 1;
    double us = std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - t0).count();
    const double n = static_cast<double>(state.iterations());
    state.counters["failed"] = static_cast<double>(failed);
    state.counters["syscalls_per_transaction"] = static_cast<double>(port->getSystemCallCount() - calls0) / n;
    if (paced) {
        // The line's own time: command (6 bytes), acknowledgement and completion
        // (3 bytes each) at 10 bits a byte and 9600 baud, plus the reply delay.
        const double lineUs = (6 + 3 + 3) * 10 * 1e6 / 9600 + SimViscaModule::FrameMs * 1000.0;
        state.counters["ratio_to_line_time"] = us / n / lineUs;
    }
    far.stop();
}
BENCHMARK(BM_TransactionOverPty)->Arg(0)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_TransactionOverPty)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(100);
