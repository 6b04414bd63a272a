// The parameter list text "(3,50)(7,1)" and the id list "(1)(2)".
// A text that parses prints back to a text that parses to the same pairs (or
// ids) and prints the same again; a refused text leaves the container as it was.
#include <map>
#include <set>
#include <string>

#include "FuzzSupport.h"
#include "platform/SensorParameterParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);

    const std::map<int, int> before = {{-7, 1}, {2147483647, -2147483647 - 1}};
    std::map<int, int> pairs = before;
    if (SensorParameterParser::parseSensorParameter(text, pairs)) {
        std::map<int, int> parsed;
        FUZZ_CHECK(SensorParameterParser::parseSensorParameter(text, parsed));
        // Parsing adds into the container: later items overwrite.
        for (const auto& kv : parsed) FUZZ_CHECK(pairs.at(kv.first) == kv.second);
        std::string printed;
        FUZZ_CHECK(SensorParameterParser::createSensorParameterString(parsed, printed));
        std::map<int, int> again;
        FUZZ_CHECK(SensorParameterParser::parseSensorParameter(printed, again));
        FUZZ_CHECK(again == parsed);
        FUZZ_CHECK(SensorParameterParser::createSensorParameterString(again) == printed);
    } else {
        FUZZ_CHECK(pairs == before);
    }

    const std::set<int> idsBefore = {-1, 5};
    std::set<int> ids = idsBefore;
    if (SensorParameterParser::parseParameterIdList(text, ids)) {
        std::set<int> parsed;
        FUZZ_CHECK(SensorParameterParser::parseParameterIdList(text, parsed));
        for (int id : parsed) FUZZ_CHECK(ids.count(id) == 1);
        std::string printed;
        FUZZ_CHECK(SensorParameterParser::createParameterIdListString(parsed, printed));
        std::set<int> again;
        FUZZ_CHECK(SensorParameterParser::parseParameterIdList(printed, again));
        FUZZ_CHECK(again == parsed);
        std::string printedAgain;
        FUZZ_CHECK(SensorParameterParser::createParameterIdListString(again, printedAgain));
        FUZZ_CHECK(printedAgain == printed);
    } else {
        FUZZ_CHECK(ids == idsBefore);
    }
    return 0;
}
