#pragma once
#include <string>
#include <vector>

#include "platform/SensorLanguageConfig.h"

// Reads "SensorLanguageConfig.xml". Format (docs/platform-files.md): a root
// element "sensorLanguageConfig" with one element
//     <language id="1" folder="english"/>
// per language; other elements are ignored.
class SensorLanguageConfigParser {
public:
    // The languages in file order; `out` is replaced. False (and `out` empty)
    // when the file is missing or not well-formed, its root is not
    // "sensorLanguageConfig", or a language lacks an integer id or a folder.
    static bool parse(const std::string& path, std::vector<SensorLanguageConfig>& out);
};
