// A persisted parameter set (SensorConfigFile) holding arbitrary bytes. A file
// that reads saves back to a file that reads to the same pairs; an operation
// that fails leaves the file's bytes as they were.
#include <map>
#include <string>

#include "FuzzSupport.h"
#include "platform/SensorParameterParser.h"
#include "storage/SensorConfigFile.h"

namespace {
const char kPath[] = "/mnt/mtd/code/config_file/fuzz.cfg";
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    fuzzsupport::writeFile(kPath, bytes);
    SensorConfigFile file(kPath);
    FUZZ_CHECK(file.isExist() == 1);

    // The text ends at the first NUL byte.
    std::string text;
    FUZZ_CHECK(file.readParametersFromFile(text) == 1);
    FUZZ_CHECK(text == bytes.substr(0, bytes.find('\0')));

    const std::map<int, int> sentinel = {{-3, 3}};
    std::map<int, int> values = sentinel;
    const bool readable = file.readParametersFromFile(values) == 1;
    std::map<int, int> parsed;
    FUZZ_CHECK(SensorParameterParser::parseSensorParameter(text, parsed) == readable);
    if (!readable) {
        FUZZ_CHECK(values == sentinel);
        // Every change fails on a file that does not read, and keeps its bytes.
        FUZZ_CHECK(file.modifyParameter(1, 2) == 0);
        FUZZ_CHECK(file.modifyParameters(std::map<int, int>{{1, 2}}) == 0);
        FUZZ_CHECK(file.isVersionEqual(1) == 0);
        FUZZ_CHECK(fuzzsupport::readFile(kPath) == bytes);
        return 0;
    }
    FUZZ_CHECK(file.isVersionEqual(7) ==
               (parsed.count(SensorConfigFile::VersionId) &&
                (parsed.at(SensorConfigFile::VersionId) == 7 ||
                 parsed.at(SensorConfigFile::VersionId) == SensorConfigFile::VersionWildcard)));

    // A malformed change is refused and the file keeps its bytes.
    FUZZ_CHECK(file.modifyParameters(std::string("(1,")) == 0);
    FUZZ_CHECK(file.saveParametersToFile(std::string("(1,2")) == 0);
    FUZZ_CHECK(fuzzsupport::readFile(kPath) == bytes);

    // Changing a stored pair changes only that pair.
    if (!parsed.empty()) {
        const int id = parsed.begin()->first;
        FUZZ_CHECK(file.modifyParameter(id, 4242) == 1);
        std::map<int, int> expected = parsed;
        expected[id] = 4242;
        std::map<int, int> after;
        FUZZ_CHECK(file.readParametersFromFile(after) == 1);
        FUZZ_CHECK(after == expected);
        parsed = after;
    }
    // A save of what was read reads back the same and prints the same.
    FUZZ_CHECK(file.saveParametersToFile(parsed) == 1);
    std::map<int, int> saved;
    FUZZ_CHECK(file.readParametersFromFile(saved) == 1);
    FUZZ_CHECK(saved == parsed);
    FUZZ_CHECK(fuzzsupport::readFile(kPath) == SensorParameterParser::createSensorParameterString(parsed));
    return 0;
}
