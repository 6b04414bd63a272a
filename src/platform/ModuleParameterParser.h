#pragma once
#include <map>
#include <string>

// Reads the key/value texts of a module record (ModuleConfigure detail and
// parameter texts), for example
//     RS485=/dev/ttyS1;isInfrared=1;GPIOInfraredLight=1,5,0
// Items are separated by ';'. In an item the key is the text before the first
// '=' and the value everything after it (it may hold ',' and '='). Blanks
// (space, tab, CR, LF) around keys and values are dropped. Empty items are
// skipped. An item without '=' or with an empty key makes the whole parse fail.
// A repeated key keeps its last value.
class ModuleParameterParser {
public:
    // Replaces the content with that of `text`. On failure the parser is left empty.
    bool parse(const std::string& text);

    // The value of `key` (compared exactly); false and `value` untouched when absent.
    bool getValue(const std::string& key, std::string& value) const;
    // The value of `key` as a decimal integer (blanks around it allowed); false and
    // `value` untouched when absent or not an integer of 32 bits.
    bool getValue(const std::string& key, int& value) const;

    bool hasKey(const std::string& key) const { return m_values.count(key) != 0; }
    const std::map<std::string, std::string>& getAll() const { return m_values; }
    void clear() { m_values.clear(); }

private:
    std::map<std::string, std::string> m_values;
};
