// Library overhead of the parameter pipeline and the scheme step, against a
// driver that does nothing.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

#include "BenchRoot.h"
#include "core/ISensorController.h"
#include "platform/KSFile.h"
#include "platform/SensorParameterParser.h"
#include "storage/IdManager.h"

namespace {

class IdleController : public ISensorController {
public:
    IdleController() : ISensorController(60) { getIdManager().addParameterId(1, 1, 56); }
    int getMirrorValue(int& v) override {
        v = 0;
        return 1;
    }
    int getParameterFromSensor(int, int& v) override {
        v = 0;
        return 1;
    }
    int setParameterToSensor(int, int) override { return 1; }
    int setSensorVideoSystem(int, const VideoResolution&) override { return 1; }
    int initController(int, const ModuleConfigure&) override { return 1; }
    void useScheme(int i) { m_nCurrentParamScheme = i; }
};

std::string listOf(int offset) {
    std::map<int, int> m;
    for (int id = 1; id <= 56; ++id) m[id] = id + offset;
    return SensorParameterParser::createSensorParameterString(m);
}

void writeRoot() {
    KSFile::writeAll("/hd1/moduleConfig/sensorAbility.xml",
                     "<sensorAbility><paramScheme><item name=\"SchemeNum\" value=\"4\"/></paramScheme></sensorAbility>");
    KSFile::writeAll("/mnt/mtd/code/config_file/sensor_Factory.cfg", listOf(0));
    for (int i = 0; i < 4; ++i) {
        char name[96];
        std::snprintf(name, sizeof(name), "/mnt/mtd/code/config_file/sensor%d.cfg", i);
        std::string s = listOf(0) + "(500," + (i == 0 ? "1" : "0") + ")(501,0)(502,0)(503,24)(504,0)";
        KSFile::writeAll(name, s);
    }
}

}  // namespace

static void BM_setParameters56Changed(benchmark::State& state) {
    BenchRoot root;
    IdleController c;
    const std::string a = listOf(0), b = listOf(1000);
    bool flip = false;
    for (auto _ : state) {
        benchmark::DoNotOptimize(c.setParameters(flip ? a : b));
        flip = !flip;
    }
    state.SetItemsProcessed(state.iterations() * 56);
}
BENCHMARK(BM_setParameters56Changed);

static void BM_setParameters56Unchanged(benchmark::State& state) {
    BenchRoot root;
    IdleController c;
    const std::string a = listOf(0);
    c.setParameters(a);
    for (auto _ : state) benchmark::DoNotOptimize(c.setParameters(a));
    state.SetItemsProcessed(state.iterations() * 56);
}
BENCHMARK(BM_setParameters56Unchanged);

static void BM_getParameters10(benchmark::State& state) {
    BenchRoot root;
    IdleController c;
    c.setParameters(listOf(0));
    const std::string ids = "(1)(5)(9)(13)(17)(21)(25)(29)(33)(37)";
    std::string out;
    for (auto _ : state) benchmark::DoNotOptimize(c.getParameters(ids, out));
}
BENCHMARK(BM_getParameters10);

// A flush whose values are already in the files: three compares, no write.
static void BM_flushUnchanged(benchmark::State& state) {
    BenchRoot root;
    writeRoot();
    IdleController c;
    c.initSensorFilesHandler();
    c.loadSchemeParamToMemory();
    c.switchScheme(0);
    c.flush();
    for (auto _ : state) benchmark::DoNotOptimize(c.flush());
}
BENCHMARK(BM_flushUnchanged);

// A flush after one value changed: the scheme file and the especial file are replaced.
static void BM_flushChanged(benchmark::State& state) {
    BenchRoot root;
    writeRoot();
    IdleController c;
    c.initSensorFilesHandler();
    c.loadSchemeParamToMemory();
    c.switchScheme(0);
    int v = 0;
    for (auto _ : state) {
        c.setParameter(1, ++v);
        benchmark::DoNotOptimize(c.flush());
    }
}
BENCHMARK(BM_flushChanged);

static void BM_paramSchemeSwitchBodyIdle(benchmark::State& state) {
    BenchRoot root;
    writeRoot();
    IdleController c;
    c.initSensorFilesHandler();
    c.loadSchemeParamToMemory();
    c.paramSchemeSwitchBody();  // applies the winning scheme once
    for (auto _ : state) benchmark::DoNotOptimize(c.paramSchemeSwitchBody());
}
BENCHMARK(BM_paramSchemeSwitchBodyIdle);
