// The ASCII register group (CMD7200) and the Effio camera processor against
// their simulated modules in-process: the library's cost of one transaction
// (waits on the virtual clock, so they cost no time; the module answers at
// once, unpaced), a register write with its echo check, a register read with
// its answer check, a frame write with its status check and a frame read with
// its checksum check.
#include <benchmark/benchmark.h>

#include "BenchRoot.h"
#include "IdleDevices.h"
#include "ascii/SimAsciiModule.h"
#include "drivers/serial/CMD7200SenseController.h"
#include "drivers/serial/EffioSenseController.h"
#include "effio/SimEffioProcessor.h"
#include "line/SimSerialUART.h"
#include "platform/PlatformClock.h"
#include "platform/SafePointer.h"

namespace {

const char* kDetail = "RS485=/dev/ttyS1;isInfrared=0";
const char* kParams = "RS485=9600,8,1,0";

// Runs `body` once per iteration against a started controller of type C on `device`.
template <class C, class Device, class Body>
void run(benchmark::State& state, Device& device, Body body) {
    BenchRoot root;
    PlatformClock::useVirtual(1767571200);
    {
        device.setReplyDelayMs(0);
        device.setPacing(false);
        SafePointer<IUARTController> uart(new SimSerialUART(device, "/dev/ttyS1"));
        C ctl;
        ctl.setOperator(uart, SafePointer<IGPIO>(new IdleGPIO()));
        if (!ctl.initController(C::SensorType, ModuleConfigure(C::SensorType, kDetail, kParams))) {
            state.SkipWithError("init failed");
        } else {
            int64_t i = 0, failed = 0;
            for (auto _ : state) failed += body(ctl, i++) ? 0 : 1;
            state.counters["failed"] = static_cast<double>(failed);
        }
        ctl.stopWorker();
    }
    PlatformClock::useReal();
}

}  // namespace

static void BM_AsciiWriteInProcess(benchmark::State& state) {
    SimAsciiModule module;
    module.setProfile(SimAsciiModule::profile("CMD7200"));
    run<CMD7200SenseController>(state, module, [](CMD7200SenseController& c, int64_t i) {
        return c.sendData((i & 1) ? ":W020010" : ":W020020");
    });
}
BENCHMARK(BM_AsciiWriteInProcess)->Unit(benchmark::kMicrosecond);

static void BM_AsciiReadInProcess(benchmark::State& state) {
    SimAsciiModule module;
    module.setProfile(SimAsciiModule::profile("CMD7200"));
    run<CMD7200SenseController>(state, module, [](CMD7200SenseController& c, int64_t) {
        int value = 0;
        return c.recvData(":r02200000", 10, value);
    });
}
BENCHMARK(BM_AsciiReadInProcess)->Unit(benchmark::kMicrosecond);

static void BM_EffioWriteInProcess(benchmark::State& state) {
    SimEffioProcessor processor;
    run<EffioSenseController>(state, processor, [](EffioSenseController& c, int64_t i) {
        const unsigned char data[1] = {static_cast<unsigned char>(i & 0xFF)};
        return c.setParameters(1, 0, data, 1);
    });
}
BENCHMARK(BM_EffioWriteInProcess)->Unit(benchmark::kMicrosecond);

static void BM_EffioReadInProcess(benchmark::State& state) {
    SimEffioProcessor processor;
    run<EffioSenseController>(state, processor, [](EffioSenseController& c, int64_t) {
        unsigned char data[2] = {0, 0};
        return c.getParameters(3, 3, 2, data);
    });
}
BENCHMARK(BM_EffioReadInProcess)->Unit(benchmark::kMicrosecond);
