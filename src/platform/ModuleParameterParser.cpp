#include "platform/ModuleParameterParser.h"

#include <cerrno>
#include <climits>
#include <cstdlib>

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string trim(const std::string& s, size_t begin, size_t end) {
    while (begin < end && isBlank(s[begin])) ++begin;
    while (end > begin && isBlank(s[end - 1])) --end;
    return s.substr(begin, end - begin);
}

}  // namespace

bool ModuleParameterParser::parse(const std::string& text) {
    std::map<std::string, std::string> values;
    size_t pos = 0;
    const size_t n = text.size();
    while (pos <= n) {
        size_t end = text.find(';', pos);
        if (end == std::string::npos) end = n;
        std::string item = trim(text, pos, end);
        if (!item.empty()) {
            size_t eq = item.find('=');
            if (eq == std::string::npos) {
                m_values.clear();
                return false;
            }
            std::string key = trim(item, 0, eq);
            if (key.empty()) {
                m_values.clear();
                return false;
            }
            values[key] = trim(item, eq + 1, item.size());
        }
        pos = end + 1;
    }
    m_values.swap(values);
    return true;
}

bool ModuleParameterParser::getValue(const std::string& key, std::string& value) const {
    auto it = m_values.find(key);
    if (it == m_values.end()) return false;
    value = it->second;
    return true;
}

bool ModuleParameterParser::getValue(const std::string& key, int& value) const {
    auto it = m_values.find(key);
    if (it == m_values.end()) return false;
    const std::string& s = it->second;
    if (s.empty()) return false;
    const char* begin = s.c_str();
    char* end = nullptr;
    errno = 0;
    long long v = std::strtoll(begin, &end, 10);
    if (end == begin || errno != 0 || v < INT_MIN || v > INT_MAX) return false;
    while (*end != '\0' && isBlank(*end)) ++end;
    if (*end != '\0') return false;
    value = static_cast<int>(v);
    return true;
}
