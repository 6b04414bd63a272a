#pragma once
// A VISCA module controller of type T against the simulated block in-process,
// on the virtual clock: init with the clock pumped, the packets that one call
// sends, the texts that it prints.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "core/ISensorController.h"
#include "doubles/IdRanges.h"
#include "doubles/ViscaRig.h"
#include "drivers/serial/ViscaParameter.h"
#include "platform/PlatformClock.h"
#include "storage/IdManager.h"
#include "storage/SensorCache.h"

namespace testutil {

typedef std::vector<std::vector<uint8_t>> ViscaPackets;

inline std::string packetsText(const ViscaPackets& p) {
    std::string s;
    for (auto& x : p) s += hexOf(x) + "| ";
    return s;
}

// A parameter id, a value, and the one packet that setting it sends.
struct ViscaPacketCase {
    int id, value;
    std::vector<uint8_t> packet;
};

template <class T>
class ViscaControllerFixture : public ::testing::Test {
protected:
    ViscaBench bench;
    SafePointer<T> ctl;
    std::string initOutput;

    void SetUp() override {
        bench.module.setSeed(11);
        if (std::getenv("VISCA_TRACE"))
            bench.uartRaw->setTrace([](bool out, const unsigned char* b, int n, int64_t ms) {
                std::string s;
                char x[4];
                for (int i = 0; i < n; ++i) {
                    std::snprintf(x, sizeof(x), "%02X ", b[i]);
                    s += x;
                }
                std::fprintf(stderr, "%lld %s %s\n", static_cast<long long>(ms), out ? ">>" : "<<", s.c_str());
            });
    }
    void TearDown() override {
        if (!ctl.isNull()) ctl->stopWorker();
        ctl.reset();
    }

    T& make() {
        ctl.reset(new T());
        ctl->setOperator(bench.uart, bench.gpio);
        return *ctl;
    }
    // Runs init with the clock pumped; the day/night worker is stopped after it,
    // so that the test thread alone drives the line.
    int init(const std::string& detail, const std::string& params) {
        if (ctl.isNull()) make();
        T* c = ctl.get();
        ModuleConfigure cfg(T::SensorType, detail, params);
        testing::internal::CaptureStdout();
        int r = runPumped([&] { return c->init(T::SensorType, cfg, VideoResolution(1920, 1080)); });
        c->stopWorker();
        // A transaction of the worker cut short by the stop may leave a late reply:
        // let it come and drain it.
        bench.clock.advance(2000);
        if (c->getUARTPort() >= 0) c->clearUartBuffer();
        initOutput = testing::internal::GetCapturedStdout();
        return r;
    }
    // The packets that one call sends.
    template <class F>
    ViscaPackets sent(F&& call, int expectResult = 1) {
        size_t mark = bench.packetMark();
        EXPECT_EQ(expectResult, call());
        return bench.packetsSince(mark);
    }
    ViscaPackets set(int id, int value, int expectResult = 1) {
        return sent([&] { return ctl->setParameterToSensor(id, value); }, expectResult);
    }

    // A fresh controller registers exactly these common, set-only and
    // keep-default-value ids (the base controller's 500-504 besides), and its
    // table has a row for each.
    void expectRegistered(const std::set<int>& common, const std::set<int>& setOnly,
                          const std::set<int>& keepDefault = {}) {
        if (ctl.isNull()) make();
        size_t count = 0;
        const ViscaParameter* table = T::parameterTable(count);
        std::set<int> rows;
        for (size_t i = 0; i < count; ++i) rows.insert(table[i].id);
        expectRegisteredIds(ctl->getIdManager(), common, setOnly, keepDefault, rows);
    }

    // Every row with a range refuses the values just outside it (and -1) with
    // its text, sends nothing and caches nothing; the number of refusals.
    int expectEveryRefusal() {
        size_t count = 0;
        const ViscaParameter* table = T::parameterTable(count);
        std::string before;
        ctl->getLastValueCache().getAllSensorValues(before);
        int refused = 0;
        for (size_t i = 0; i < count; ++i) {
            const ViscaParameter& row = table[i];
            if (row.rangeName == nullptr) continue;
            for (int bad : {row.maxValue + 1, row.minValue - 1, -1}) {
                if (bad >= row.minValue && bad <= row.maxValue) continue;
                SCOPED_TRACE(row.name + std::string(" ") + std::to_string(bad));
                testing::internal::CaptureStdout();
                size_t mark = bench.packetMark();
                EXPECT_EQ(0, ctl->setParameter(row.id, bad));
                std::string o = testing::internal::GetCapturedStdout();
                EXPECT_NE(std::string::npos,
                          o.find(std::string(row.rangeName) + "(" + std::to_string(bad) + ") is out of range"))
                    << o;
                EXPECT_EQ(bench.packetMark(), mark);
                ++refused;
            }
        }
        std::string after;
        ctl->getLastValueCache().getAllSensorValues(after);
        EXPECT_EQ(before, after);
        return refused;
    }

    // Each id is accepted by the pipeline and sends exactly its packet.
    typedef ViscaPacketCase PacketCase;
    void expectPackets(const std::vector<PacketCase>& cases) {
        for (const PacketCase& c : cases) {
            SCOPED_TRACE("id " + std::to_string(c.id) + " value " + std::to_string(c.value));
            size_t mark = bench.packetMark();
            ASSERT_EQ(1, ctl->setParameter(c.id, c.value));
            ViscaPackets p = bench.packetsSince(mark);
            ASSERT_EQ(1u, p.size()) << packetsText(p);
            EXPECT_EQ(c.packet, p[0]) << hexOf(p[0]);
        }
    }
    // As expectPackets, and the module's state follows each packet: it carried
    // the command out, and a command that sets a value now holds the value sent.
    void expectPacketsApplied(const std::vector<PacketCase>& cases) {
        for (const PacketCase& c : cases) {
            SCOPED_TRACE("id " + std::to_string(c.id) + " value " + std::to_string(c.value));
            int carried = bench.module.commandCount();
            expectPackets({c});
            EXPECT_EQ(carried + 1, bench.module.commandCount());
            const uint8_t code = c.packet[3];
            const std::vector<uint8_t> value(c.packet.begin() + 4, c.packet.end() - 1);
            if (code == 0x39) {
                EXPECT_EQ(value[0], bench.module.aeMode());
            } else if (code == 0x24) {
                EXPECT_EQ((value[1] << 4) | value[2], bench.module.registerValue(value[0]));
            } else if (holdsValue(code)) {
                EXPECT_EQ(value, bench.module.valueOf(code));
            }
        }
    }
    struct RecordCase {
        std::string detail, params, text;
    };
    // Each bad module record fails init with its text.
    void expectInitFailures(const std::vector<RecordCase>& cases) {
        for (const RecordCase& c : cases) {
            SCOPED_TRACE(c.text);
            ctl.reset();
            EXPECT_EQ(0, init(c.detail, c.params));
            EXPECT_NE(std::string::npos, initOutput.find(c.text)) << initOutput;
            EXPECT_NE(ISensorController::InitSuccess, ctl->getSensorStatus());
        }
    }

    // The mirror id: value 3 (flip only) sends the reverse off, then the flip
    // on, and the module holds both.
    void expectMirror(int id) {
        ViscaPackets m = set(id, 3);
        EXPECT_EQ((ViscaPackets{bytesOf({0x81, 0x01, 0x04, 0x61, 0x03, 0xFF}),
                                bytesOf({0x81, 0x01, 0x04, 0x66, 0x02, 0xFF})}),
                  m);
        EXPECT_EQ(bytesOf({0x03}), bench.module.valueOf(0x61));
        EXPECT_EQ(bytesOf({0x02}), bench.module.valueOf(0x66));
    }

    // Values that the controller keeps itself (day/night mode, switch times):
    // each taken, nothing sent to the module.
    void expectControllersOwn(std::initializer_list<std::pair<int, int>> values) {
        size_t mark = bench.packetMark();
        for (auto& v : values) EXPECT_EQ(1, ctl->setParameter(v.first, v.second)) << v.first;
        EXPECT_EQ(mark, bench.packetMark());
    }

    // With each fault kind that spoils every attempt (probability 1), setting
    // `id` to `value` fails after three attempts, each followed by a drain,
    // within bounded time, and leaves the caches as they were.
    void expectFaultsRefuse(int id, int value) {
        std::string cached;
        ctl->getLastValueCache().getAllSensorValues(cached);
        for (SimViscaModule::Fault kind : {SimViscaModule::DropReply, SimViscaModule::LateReply,
                                           SimViscaModule::CorruptByte, SimViscaModule::Silent,
                                           SimViscaModule::BufferFull}) {
            SCOPED_TRACE(SimViscaModule::faultName(kind));
            settleLine();
            bench.module.setFaultProbability(kind, 1.0);
            size_t mark = bench.packetMark();
            int64_t t0 = PlatformClock::nowMs();
            testing::internal::CaptureStdout();
            EXPECT_EQ(0, ctl->setParameter(id, value));
            std::string out = testing::internal::GetCapturedStdout();
            EXPECT_EQ(3u, bench.packetsSince(mark).size());
            EXPECT_GE(occurrences(out, "Clear UART buffer"), 3u) << out;
            EXPECT_LT(PlatformClock::nowMs() - t0, 3000);
            std::string now;
            ctl->getLastValueCache().getAllSensorValues(now);
            EXPECT_EQ(cached, now);
        }
        settleLine();
    }
    // A one-shot of each fault kind costs at most one attempt: the set of `id`
    // succeeds and the module holds its value (`values` alternate so that
    // every set changes the value).
    void expectOneShotFaultsGetThrough(int id, uint8_t code, int first, int second) {
        int value = first;
        for (int k = 0; k < SimViscaModule::FaultCount; ++k) {
            SimViscaModule::Fault kind = static_cast<SimViscaModule::Fault>(k);
            SCOPED_TRACE(SimViscaModule::faultName(kind));
            settleLine();
            bench.module.injectOnce(kind);
            size_t mark = bench.packetMark();
            testing::internal::CaptureStdout();
            EXPECT_EQ(1, ctl->setParameter(id, value));
            testing::internal::GetCapturedStdout();
            EXPECT_LE(bench.packetsSince(mark).size(), 2u);
            EXPECT_EQ(value, bench.module.nibbleValue(code));
            value = value == first ? second : first;
        }
        settleLine();
    }
    // No fault, and the replies still on their way (late ones) have come and gone.
    void settleLine() {
        bench.module.clearFaults();
        bench.clock.advance(5000);
        testing::internal::CaptureStdout();
        ctl->clearUartBuffer();
        testing::internal::GetCapturedStdout();
    }
    static size_t occurrences(const std::string& hay, const std::string& needle) {
        size_t n = 0;
        for (size_t p = hay.find(needle); p != std::string::npos; p = hay.find(needle, p + 1)) ++n;
        return n;
    }

    // Whether the module keeps the value bytes of a command (not a move, a
    // trigger or a step).
    static bool holdsValue(uint8_t code) {
        for (uint8_t moving : {0x07, 0x08, 0x0B, 0x0E, 0x10, 0x18, 0x01, 0x24, 0x39})
            if (code == moving) return false;
        return true;
    }
};

}  // namespace testutil
