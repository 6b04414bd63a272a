// Merge of the web interface's style text for one module: a style of 200 tabs
// with a diversity file of 20 condition blocks, read, merged and printed.
#include <benchmark/benchmark.h>

#include <ftw.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cstdio>
#include <string>

#include "platform/KSFile.h"
#include "platform/PlatformRoot.h"
#include "ui/MergedXml.h"

namespace {

const char kStyle[] = "/hd1/moduleConfig/sensorConfig/style/BenchStyle.xml";
const char kDiversity[] = "/hd1/moduleConfig/sensorConfig/styleDiversity/BenchStyleDiversity.xml";
const char kDetail[] = "RS485=/dev/ttyS1;isInfrared=1;lens=3;board=S2;DNDefault=0";

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

std::string makeStyle(int tabs) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SensorStyle version=\"1\">\n";
    for (int k = 1; k <= tabs; ++k) {
        std::string id = std::to_string(k);
        text += "    <Tab id=\"" + id + "\" title=\"Tab" + id + "\">\n";
        for (int c = 0; c < 4; ++c)
            text += "        <Control id=\"" + std::to_string(k * 10 + c) + "\" type=\"slider\" min=\"0\" max=\"100\"/>\n";
        text += "    </Tab>\n";
    }
    return text + "</SensorStyle>\n";
}

// 20 blocks; three in four apply to the benchmark module. Each deletes two
// tabs, adds a run of three after one anchor and two tabs before another.
std::string makeDiversity(int blocks) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    for (int b = 0; b < blocks; ++b) {
        const bool applies = b % 4 != 3;
        const int base = b * 10 + 1;
        const int added = 1000 + b * 10;
        text += std::string("<Module isInfrared=\"1\" lens=\"") + (applies ? "2,3" : "5") + "\" board=\"S1,S2\">\n";
        text += "    <Delete><Tab id=\"" + std::to_string(base) + "\"/><Tab id=\"" + std::to_string(base + 1) +
                "\"/></Delete>\n";
        text += "    <AddAfter><Anchor id=\"" + std::to_string(base + 4) + "\">";
        for (int i = 0; i < 3; ++i)
            text += "<Tab id=\"" + std::to_string(added + i) + "\"><Control id=\"" + std::to_string(added + i) +
                    "0\" type=\"select\" options=\"0,1\"/></Tab>";
        text += "</Anchor></AddAfter>\n";
        text += "    <AddBefore><Anchor id=\"" + std::to_string(base + 7) + "\">";
        for (int i = 3; i < 5; ++i) text += "<Tab id=\"" + std::to_string(added + i) + "\"/>";
        text += "</Anchor></AddBefore>\n";
        text += "</Module>\n";
    }
    return text;
}

class BenchRoot {
public:
    BenchRoot() {
        char tmpl[] = "/tmp/sensorctl-bench-XXXXXX";
        const char* dir = ::mkdtemp(tmpl);
        m_dir = dir != nullptr ? dir : "";
        PlatformRoot::set(m_dir);
    }
    ~BenchRoot() {
        PlatformRoot::set("/");
        if (!m_dir.empty()) ::nftw(m_dir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }
    bool ok() const { return !m_dir.empty(); }

private:
    std::string m_dir;
};

void BM_StyleMerge200Tabs20Blocks(benchmark::State& state) {
    BenchRoot root;
    if (!root.ok() || !KSFile::writeAll(kStyle, makeStyle(200)) || !KSFile::writeAll(kDiversity, makeDiversity(20))) {
        state.SkipWithError("cannot write the benchmark files");
        return;
    }
    MergedXml merged;
    merged.setStyleOriginalPath(kStyle);
    merged.setStyleModifyPath(kDiversity);
    std::string text;
    for (auto _ : state) {
        if (!merged.getStyleMergedString(kDetail, text)) {
            state.SkipWithError("merge failed");
            return;
        }
        benchmark::DoNotOptimize(text.data());
    }
    state.counters["bytes"] = static_cast<double>(text.size());
}
BENCHMARK(BM_StyleMerge200Tabs20Blocks)->Unit(benchmark::kMicrosecond);

}  // namespace
