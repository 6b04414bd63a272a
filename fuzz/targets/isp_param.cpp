// ISPParam.xml. A file that reads prints back (tables, bands, settings, the
// root properties) to a file that reads to the same tables; reading the same
// file twice gives the same result.
#include <set>
#include <string>

#include "FuzzSupport.h"
#include "isp/ISPParam.h"
#include "isp/ISPParamParse.h"
#include "platform/XmlConfigureTool.h"

namespace {

bool sameUnits(const std::vector<ISPParamUnit>& a, const std::vector<ISPParamUnit>& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        int minA = 0, maxA = 0, minB = 0, maxB = 0;
        a[i].getMin(minA);
        a[i].getMax(maxA);
        b[i].getMin(minB);
        b[i].getMax(maxB);
        if (a[i].name() != b[i].name() || minA != minB || maxA != maxB || a[i].params() != b[i].params())
            return false;
    }
    return true;
}

bool sameParam(const ISPParam& a, const ISPParam& b) {
    if (a.enableFlags() != b.enableFlags() || a.tables().size() != b.tables().size()) return false;
    for (const auto& kv : a.tables()) {
        auto it = b.tables().find(kv.first);
        if (it == b.tables().end() || !sameUnits(kv.second, it->second)) return false;
    }
    return true;
}

// Writes the tables as an ISPParam.xml of the usual layout.
void print(const ISPParam& param, bool realTimeUpdate, int delay) {
    XmlConfigureTool tool;
    FUZZ_CHECK(tool.setRootNodeName("config"));
    FUZZ_CHECK(tool.open(ISPParamParse::FilePath, 0, XmlConfigureTool::ModeCreate));
    XmlConfigureNode root = tool.getRootNode();
    root.setProperty("realTimeUpdate", realTimeUpdate);
    root.setProperty("time", delay);
    std::set<std::string> names;
    for (const auto& kv : param.enableFlags()) names.insert(kv.first);
    for (const auto& kv : param.tables()) names.insert(kv.first);
    for (const std::string& name : names) {
        XmlConfigureNode table(name);
        FUZZ_CHECK(!table.isNull());
        bool enable = false;
        if (param.getEnableFlag(name, enable)) table.setProperty("enable", enable);
        auto it = param.tables().find(name);
        if (it != param.tables().end()) {
            for (const ISPParamUnit& unit : it->second) {
                XmlConfigureNode band(unit.name());
                FUZZ_CHECK(!band.isNull());
                int min = 0, max = 0;
                unit.getMin(min);
                unit.getMax(max);
                band.setProperty("min", min);
                band.setProperty("max", max);
                for (const auto& setting : unit.params()) {
                    XmlConfigureItem item;
                    FUZZ_CHECK(item.setProperty("name", setting.first));
                    item.setProperty("value", setting.second);
                    band.addConfigItem(item);
                }
                table.addConfigNode(band);
            }
        }
        root.addConfigNode(table);
    }
    FUZZ_CHECK(tool.close());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::writeFile(ISPParamParse::FilePath, std::string(reinterpret_cast<const char*>(data), size));
    ISPParamParse first;
    const bool ok = first.parse();
    ISPParamParse second;
    FUZZ_CHECK(second.parse() == ok);
    if (!ok) return 0;
    ISPParam a, b;
    FUZZ_CHECK(first.getISPParam(a));
    FUZZ_CHECK(second.getISPParam(b));
    FUZZ_CHECK(sameParam(a, b));

    print(a, first.getRealTimeUpdate(), first.getDelayTime());
    ISPParamParse reread;
    FUZZ_CHECK(reread.parse());
    ISPParam c;
    FUZZ_CHECK(reread.getISPParam(c));
    FUZZ_CHECK(sameParam(a, c));
    FUZZ_CHECK(reread.getRealTimeUpdate() == first.getRealTimeUpdate());
    FUZZ_CHECK(reread.getDelayTime() == first.getDelayTime());
    return 0;
}
