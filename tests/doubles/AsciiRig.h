#pragma once
// An ASCII register module controller against the simulated module in-process,
// on the virtual clock, under a temporary platform root.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "TestRoot.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "ascii/SimAsciiModule.h"
#include "core/ISensorController.h"
#include "doubles/CapturedOutput.h"
#include "doubles/ClockPump.h"
#include "doubles/FakeGPIO.h"
#include "drivers/serial/AsciiParameter.h"
#include "line/SimSerialUART.h"
#include "platform/PlatformClock.h"
#include "platform/SafePointer.h"
#include "storage/IdManager.h"
#include "storage/SensorCache.h"

namespace testutil {

// The module, its in-process port and a GPIO; the controller is the test's.
struct AsciiBench {
    TempRoot root;
    VirtualClock clock{12, 0, 0};
    SimAsciiModule module;
    SimSerialUART* uartRaw;
    SafePointer<IUARTController> uart;
    FakeGPIO* gpioRaw;
    SafePointer<IGPIO> gpio;

    AsciiBench() {
        uartRaw = new SimSerialUART(module, "/dev/ttyS1");
        uart = SafePointer<IUARTController>(uartRaw);
        gpioRaw = new FakeGPIO();
        gpio = SafePointer<IGPIO>(gpioRaw);
    }
    size_t commandMark() const { return module.receivedCommands().size(); }
    std::vector<std::string> commandsSince(size_t from) const {
        auto all = module.receivedCommands();
        if (from >= all.size()) return {};
        return std::vector<std::string>(all.begin() + static_cast<long>(from), all.end());
    }
};

inline std::string joined(const std::vector<std::string>& v) {
    std::string s;
    for (auto& x : v) s += x + " ";
    return s;
}

// A controller of type T against the simulated module of profile `profileName`.
template <class T>
class AsciiControllerFixture : public ::testing::Test {
protected:
    AsciiBench bench;
    SafePointer<T> ctl;
    std::string initOutput;

    virtual const char* profileName() const = 0;
    void SetUp() override {
        bench.module.setSeed(11);
        bench.module.setProfile(SimAsciiModule::profile(profileName()));
    }
    void TearDown() override { resetController(); }
    T& make() {
        ctl.reset(new T());
        ctl->setOperator(bench.uart, bench.gpio);
        return *ctl;
    }
    // Runs init with the clock pumped; the workers are stopped after it, so
    // that the test thread alone drives the line.
    int init(const std::string& detail, const std::string& params, VideoResolution res = VideoResolution(1280, 720)) {
        if (ctl.isNull()) make();
        T* c = ctl.get();
        ModuleConfigure cfg(T::SensorType, detail, params);
        testing::internal::CaptureStdout();
        int r = runPumped([&] { return c->init(T::SensorType, cfg, res); });
        stopWorkers();
        bench.clock.advance(2000);
        if (c->getUARTPort() >= 0) c->clearUartBuffer();
        initOutput = testing::internal::GetCapturedStdout();
        if (std::getenv("ASCII_TRACE")) std::fprintf(stderr, "%s\n", initOutput.c_str());
        return r;
    }

    static std::set<int> idsOf(std::initializer_list<std::pair<int, int>> ranges) {
        std::set<int> s;
        for (auto& r : ranges)
            for (int id = r.first; id <= r.second; ++id) s.insert(id);
        return s;
    }

    // A fresh controller registers exactly these ids by type (the base
    // controller's common 500-504 besides), and its table has a row for each.
    void expectRegistered(const std::set<int>& common, const std::set<int>& setOnly, const std::set<int>& keep) {
        if (ctl.isNull()) make();
        std::set<int> c, s, e, k;
        ctl->getIdManager().getCommonIdList(c);
        ctl->getIdManager().getSetOnlyIdList(s);
        ctl->getIdManager().getEspecialIdList(e);
        ctl->getIdManager().getKeepDefaultValueList(k);
        std::set<int> withBase = common;
        for (int id = 500; id <= 504; ++id) withBase.insert(id);
        EXPECT_EQ(withBase, c);
        EXPECT_EQ(setOnly, s);
        EXPECT_EQ(keep, k);
        EXPECT_TRUE(e.empty());
        size_t count = 0;
        const AsciiParameter* table = T::parameterTable(count);
        std::set<int> rows;
        for (size_t i = 0; i < count; ++i) rows.insert(table[i].id);
        std::set<int> registered = common;
        registered.insert(setOnly.begin(), setOnly.end());
        registered.insert(keep.begin(), keep.end());
        EXPECT_EQ(registered, rows);
    }

    // Every row: a value inside the range is written to its register (the
    // module's register holds its data afterwards, one more write counted),
    // and a common row reads it back.
    void expectEveryIdChangesTheModule() {
        size_t count = 0;
        const AsciiParameter* table = T::parameterTable(count);
        for (size_t i = 0; i < count; ++i) {
            const AsciiParameter& row = table[i];
            for (int value : {row.maxValue, row.minValue, (row.minValue + row.maxValue) / 2}) {
                SCOPED_TRACE(std::string(row.name) + " " + std::to_string(value));
                const int writes = bench.module.writeCount(row.address);
                size_t mark = bench.commandMark();
                ASSERT_EQ(1, ctl->setParameterToSensor(row.id, value));
                auto sent = bench.commandsSince(mark);
                ASSERT_EQ(1u, sent.size()) << joined(sent);
                EXPECT_EQ(row.dataOf(value), bench.module.registerValue(row.address));
                EXPECT_EQ(writes + 1, bench.module.writeCount(row.address));
                if (ctl->getIdManager().getIdType(row.id) != 3) {
                    int back = -12345;
                    ASSERT_EQ(1, ctl->getParameterFromSensor(row.id, back));
                    EXPECT_EQ(value, back);
                }
            }
        }
    }

    // Every row refuses the values just outside its range (and -1) with its
    // text, sends nothing and caches nothing; the number of refusals.
    int expectEveryRefusal() {
        size_t count = 0;
        const AsciiParameter* table = T::parameterTable(count);
        std::string before;
        ctl->getLastValueCache().getAllSensorValues(before);
        int refused = 0;
        for (size_t i = 0; i < count; ++i) {
            const AsciiParameter& row = table[i];
            for (int bad : {row.maxValue + 1, row.minValue - 1, -1}) {
                if (bad >= row.minValue && bad <= row.maxValue) continue;
                SCOPED_TRACE(std::string(row.name) + " " + std::to_string(bad));
                testing::internal::CaptureStdout();
                const int packets = bench.module.packetCount();
                const int writes = bench.uartRaw->writeCalls();
                EXPECT_EQ(0, ctl->setParameter(row.id, bad));
                std::string o = testing::internal::GetCapturedStdout();
                EXPECT_NE(std::string::npos,
                          o.find(std::string(row.rangeName) + "(" + std::to_string(bad) + ") is out of range"))
                    << o;
                EXPECT_EQ(packets, bench.module.packetCount());
                EXPECT_EQ(writes, bench.uartRaw->writeCalls());
                ++refused;
            }
        }
        std::string after;
        ctl->getLastValueCache().getAllSensorValues(after);
        EXPECT_EQ(before, after);
        return refused;
    }

    // Stops the module's worker and the day/night worker. One of them may hold
    // the line in a read on the virtual clock while the other waits for the
    // line, and a stop waits for its thread: the stops run on a thread of
    // their own while this one moves the clock on to each pending wait.
    void stopWorkers() {
        if (ctl.isNull()) return;
        T* c = ctl.get();
        std::atomic<bool> done{false};
        std::thread stopper([&] {
            c->stopWorker();
            c->stopModuleWorker();
            PlatformClock::threadLeaving();
            done.store(true);
        });
        while (!done.load())
            if (!PlatformClock::advanceToNextWait()) std::this_thread::sleep_for(std::chrono::microseconds(50));
        stopper.join();
    }
    void resetController() {
        stopWorkers();
        ctl.reset();
    }

    // Each record lacks one key (or names an absent device): init fails with
    // its text and the controller never gets ready.
    struct MissingKey {
        std::string detail, params, text;
    };
    void expectInitFailures(const std::vector<MissingKey>& cases) {
        for (const MissingKey& c : cases) {
            SCOPED_TRACE(c.text);
            resetController();
            EXPECT_EQ(0, init(c.detail, c.params));
            EXPECT_NE(std::string::npos, initOutput.find(c.text)) << initOutput;
            EXPECT_NE(ISensorController::InitSuccess, ctl->getSensorStatus());
        }
    }

    // Whether a command is a write or a read of one of the table's registers.
    bool isTableCommand(const std::string& command) const {
        size_t count = 0;
        const AsciiParameter* table = T::parameterTable(count);
        for (size_t i = 0; i < count; ++i) {
            char prefix[8];
            table[i].writePrefix(prefix);
            char read[12];
            table[i].readCommand(read);
            if (command.compare(0, 6, prefix) == 0 || command == read) return true;
        }
        return false;
    }
};

}  // namespace testutil
