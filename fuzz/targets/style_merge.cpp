// The web interface's style merge and language list. The input holds, split at
// NUL bytes, the module's detail text, the style text, the diversity text and
// the language list. A merge either fails and leaves the output alone, or
// yields one well-formed XML element, the same on a second merge; the language
// list either reads (every language with its folder) or leaves the list empty.
#include <string>
#include <vector>

#include <tinyxml2.h>

#include "FuzzSupport.h"
#include "platform/SensorLanguageConfig.h"
#include "platform/SensorLanguageConfigParser.h"
#include "platform/XmlDocumentCheck.h"
#include "ui/MergedXml.h"

namespace {
const char kStyle[] = "/hd1/moduleConfig/sensorConfig/style/S2Style.xml";
const char kDiversity[] = "/hd1/moduleConfig/sensorConfig/styleDiversity/S2StyleDiversity.xml";
const char kLanguages[] = "/hd1/moduleConfig/sensorConfig/SensorLanguageConfig.xml";
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<std::string> parts = fuzzsupport::splitInput(data, size, 4);
    fuzzsupport::writeFile(kStyle, parts[1]);
    fuzzsupport::writeFile(kDiversity, parts[2]);
    fuzzsupport::writeFile(kLanguages, parts[3]);

    MergedXml merged;
    merged.setStyleOriginalPath(kStyle);
    merged.setStyleModifyPath(kDiversity);
    std::string text = "untouched";
    if (merged.getStyleMergedString(parts[0], text)) {
        tinyxml2::XMLDocument doc;
        std::string why;
        FUZZ_CHECK(XmlDocumentCheck::parse(doc, text, XmlDocumentCheck::Elements::One, why));
        MergedXml again;
        again.setStyleOriginalPath(kStyle);
        again.setStyleModifyPath(kDiversity);
        std::string second;
        FUZZ_CHECK(again.getStyleMergedString(parts[0], second));
        FUZZ_CHECK(second == text);
    } else {
        FUZZ_CHECK(text == "untouched");
    }
    std::string lang = "untouched";
    FUZZ_CHECK(merged.getLangMergedString(parts[0], lang));
    FUZZ_CHECK(lang.empty());

    std::vector<SensorLanguageConfig> languages(1);
    if (SensorLanguageConfigParser::parse(kLanguages, languages)) {
        std::vector<SensorLanguageConfig> again;
        FUZZ_CHECK(SensorLanguageConfigParser::parse(kLanguages, again));
        FUZZ_CHECK(again.size() == languages.size());
    } else {
        FUZZ_CHECK(languages.empty());
    }
    return 0;
}
