// The key/value text of a module record: "RS485=/dev/ttyS1;isInfrared=1".
// A text that parses prints back ("key=value;" per key) to a text that parses
// to the same keys and values; a refused text leaves the parser empty.
#include <map>
#include <string>

#include "FuzzSupport.h"
#include "platform/ModuleParameterParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    ModuleParameterParser parser;
    FUZZ_CHECK(parser.parse("kept=1"));
    if (!parser.parse(text)) {
        FUZZ_CHECK(parser.getAll().empty());
        return 0;
    }
    std::string printed;
    for (const auto& kv : parser.getAll()) {
        FUZZ_CHECK(!kv.first.empty());
        std::string value;
        FUZZ_CHECK(parser.getValue(kv.first, value) && value == kv.second);
        int number = 12345;
        if (!parser.getValue(kv.first, number)) FUZZ_CHECK(number == 12345);
        printed += kv.first + "=" + kv.second + ";";
    }
    ModuleParameterParser again;
    FUZZ_CHECK(again.parse(printed));
    FUZZ_CHECK(again.getAll() == parser.getAll());
    return 0;
}
