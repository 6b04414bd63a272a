// Costs of the parameter cache and the parameter files.
#include <benchmark/benchmark.h>

#include <map>
#include <set>
#include <string>

#include "BenchRoot.h"
#include "platform/SensorParameterParser.h"
#include "storage/SensorCache.h"
#include "storage/SensorConfigFile.h"

namespace {
std::string listOf(int n, int offset = 0) {
    std::map<int, int> m;
    for (int id = 1; id <= n; ++id) m[id] = id * 3 + offset;
    return SensorParameterParser::createSensorParameterString(m);
}
}  // namespace

static void BM_SensorCache_setSensorValues60(benchmark::State& state) {
    SensorCache cache;
    const std::string list = listOf(60);
    for (auto _ : state) benchmark::DoNotOptimize(cache.setSensorValues(list));
    state.SetItemsProcessed(state.iterations() * 60);
}
BENCHMARK(BM_SensorCache_setSensorValues60);

static void BM_SensorCache_getAllSensorValues60(benchmark::State& state) {
    SensorCache cache;
    cache.setSensorValues(listOf(60));
    std::string out;
    for (auto _ : state) benchmark::DoNotOptimize(cache.getAllSensorValues(out));
}
BENCHMARK(BM_SensorCache_getAllSensorValues60);

static void BM_SensorCache_getSensorValues10(benchmark::State& state) {
    SensorCache cache;
    cache.setSensorValues(listOf(60));
    std::set<int> ids{1, 5, 9, 13, 17, 21, 25, 29, 33, 37};
    std::string out;
    for (auto _ : state) benchmark::DoNotOptimize(cache.getSensorValues(ids, out));
}
BENCHMARK(BM_SensorCache_getSensorValues10);

static void BM_SensorCache_getSensorValues10FromText(benchmark::State& state) {
    SensorCache cache;
    cache.setSensorValues(listOf(60));
    const std::string ids = "(1)(5)(9)(13)(17)(21)(25)(29)(33)(37)";
    std::string out;
    for (auto _ : state) benchmark::DoNotOptimize(cache.getSensorValues(ids, out));
}
BENCHMARK(BM_SensorCache_getSensorValues10FromText);

// Alternating contents, so every save really replaces the file.
static void BM_SensorConfigFile_save60(benchmark::State& state) {
    BenchRoot root;
    SensorConfigFile file("/mnt/mtd/code/config_file/sensor0.cfg");
    file.setVersion(0);
    file.setVersion2(3);
    const std::string a = listOf(60), b = listOf(60, 1);
    bool flip = false;
    for (auto _ : state) {
        benchmark::DoNotOptimize(file.saveParametersToFile(flip ? a : b));
        flip = !flip;
    }
}
BENCHMARK(BM_SensorConfigFile_save60);

// A save whose content is already on disk: compared, not rewritten.
static void BM_SensorConfigFile_saveUnchanged60(benchmark::State& state) {
    BenchRoot root;
    SensorConfigFile file("/mnt/mtd/code/config_file/sensor0.cfg");
    const std::string a = listOf(60);
    file.saveParametersToFile(a);
    for (auto _ : state) benchmark::DoNotOptimize(file.saveParametersToFile(a));
}
BENCHMARK(BM_SensorConfigFile_saveUnchanged60);

static void BM_SensorConfigFile_read60(benchmark::State& state) {
    BenchRoot root;
    SensorConfigFile file("/mnt/mtd/code/config_file/sensor0.cfg");
    file.saveParametersToFile(listOf(60));
    for (auto _ : state) {
        std::map<int, int> m;
        benchmark::DoNotOptimize(file.readParametersFromFile(m));
    }
}
BENCHMARK(BM_SensorConfigFile_read60);
