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

#include "doubles/ViscaRig.h"
#include "drivers/serial/ViscaParameter.h"
#include "platform/PlatformClock.h"
#include "storage/IdManager.h"
#include "storage/SensorCache.h"

namespace testutil {

typedef std::vector<std::vector<uint8_t>> ViscaPackets;

// The ids of inclusive ranges.
inline std::set<int> idsOf(std::initializer_list<std::pair<int, int>> ranges) {
    std::set<int> s;
    for (auto& r : ranges)
        for (int id = r.first; id <= r.second; ++id) s.insert(id);
    return s;
}

inline std::string packetsText(const ViscaPackets& p) {
    std::string s;
    for (auto& x : p) s += hexOf(x) + "| ";
    return s;
}

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

    // A fresh controller registers exactly these common and set-only ids (the
    // base controller's 500-504 besides), and its table has a row for each.
    void expectRegistered(const std::set<int>& common, const std::set<int>& setOnly) {
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
        EXPECT_TRUE(e.empty());
        EXPECT_TRUE(k.empty());
        size_t count = 0;
        const ViscaParameter* table = T::parameterTable(count);
        std::set<int> rows;
        for (size_t i = 0; i < count; ++i) rows.insert(table[i].id);
        std::set<int> registered = common;
        registered.insert(setOnly.begin(), setOnly.end());
        EXPECT_EQ(registered, rows);
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
    struct PacketCase {
        int id, value;
        std::vector<uint8_t> packet;
    };
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
};

}  // namespace testutil
