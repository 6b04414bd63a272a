// camsim serve over loopback, as a browser uses it: the requests of a page load
// (the page files, the languages, the texts of one language, the values in force,
// the status) and a parameter change's round trip, each through an HTTP client
// against the simulator camera in this process.
#include <benchmark/benchmark.h>
#include <httplib.h>

#include <cstdio>
#include <memory>
#include <string>

#include "BenchRoot.h"
#include "camsim/CamSim.h"
#include "camsim/CamSimServer.h"

namespace {

// One camera and its server for all the benchmarks of this program.
class Served {
public:
    Served() {
        m_sink = std::fopen("/dev/null", "w");
        camsim::CamSim::Options options;
        options.root = m_root.dir() + "/camroot";
        options.startHour = 10;
        options.output = m_sink;
        options.capture = false;  // the benchmark reports on standard output
        m_ok = m_sim.start(options);
        std::string error;
        m_ok = m_ok && m_server.start("127.0.0.1", 0, error);
    }
    ~Served() {
        m_server.stop();
        m_sim.stop();
        if (m_sink != nullptr) std::fclose(m_sink);
    }
    bool ok() const { return m_ok; }
    int port() const { return m_server.port(); }

private:
    BenchRoot m_root;
    FILE* m_sink = nullptr;
    camsim::CamSim m_sim;
    camsim::CamSimServer m_server{m_sim};
    bool m_ok = false;
};

Served& served() {
    static Served s;
    return s;
}

bool get(httplib::Client& c, const char* path) {
    auto r = c.Get(path);
    return r && r->status == 200;
}

void BM_ServePageLoad(benchmark::State& state) {
    if (!served().ok()) return state.SkipWithError("camsim serve did not come up");
    httplib::Client c("127.0.0.1", served().port());
    c.set_keep_alive(true);
    c.set_tcp_nodelay(true);
    for (auto _ : state) {
        bool ok = get(c, "/") && get(c, "/style.css") && get(c, "/app.js") && get(c, "/api/languages") &&
                  get(c, "/api/ui/1") && get(c, "/api/parameters") && get(c, "/api/status");
        if (!ok) return state.SkipWithError("a request of the page load failed");
    }
}
BENCHMARK(BM_ServePageLoad)->Unit(benchmark::kMillisecond)->UseRealTime();

// One GET, again and again on one connection.
void getAgain(benchmark::State& state, const char* path) {
    if (!served().ok()) return state.SkipWithError("camsim serve did not come up");
    httplib::Client c("127.0.0.1", served().port());
    c.set_keep_alive(true);
    c.set_tcp_nodelay(true);
    for (auto _ : state)
        if (!get(c, path)) return state.SkipWithError("a GET failed");
}

void BM_ServeTextsOfOneLanguage(benchmark::State& state) { getAgain(state, "/api/ui/2"); }
BENCHMARK(BM_ServeTextsOfOneLanguage)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ServeParameterRoundTrip(benchmark::State& state) {
    if (!served().ok()) return state.SkipWithError("camsim serve did not come up");
    httplib::Client c("127.0.0.1", served().port());
    c.set_keep_alive(true);
    c.set_tcp_nodelay(true);
    int i = 0;
    for (auto _ : state) {
        const std::string body = "{\"text\":\"(2," + std::to_string(40 + (i++ % 20)) + ")\"}";
        auto r = c.Post("/api/parameters", body, "application/json");
        if (!r || r->status != 200) return state.SkipWithError("POST /api/parameters failed");
    }
}
BENCHMARK(BM_ServeParameterRoundTrip)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ServeStatus(benchmark::State& state) { getAgain(state, "/api/status"); }
BENCHMARK(BM_ServeStatus)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
