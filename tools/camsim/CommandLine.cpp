#include "camsim/CommandLine.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>

namespace camsim {

std::vector<std::string> splitWords(const std::string& line) {
    std::vector<std::string> words;
    std::string current;
    bool quoted = false, have = false;
    for (char c : line) {
        if (c == '"') {
            quoted = !quoted;
            have = true;
        } else if (!quoted && std::isspace(static_cast<unsigned char>(c))) {
            if (have) words.push_back(current);
            current.clear();
            have = false;
        } else {
            current += c;
            have = true;
        }
    }
    if (have) words.push_back(current);
    return words;
}

std::vector<std::string> splitCommands(const std::string& text) {
    std::vector<std::string> out;
    std::string current;
    for (char c : text) {
        if (c == ';' || c == '\n') {
            out.push_back(current);
            current.clear();
        } else {
            current += c;
        }
    }
    out.push_back(current);
    return out;
}

std::string trim(const std::string& s) {
    size_t b = 0, e = s.size();
    while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
    return s.substr(b, e - b);
}

std::string toLower(const std::string& s) {
    std::string out = s;
    for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

bool parseInt(const std::string& text, int& value) {
    if (text.empty()) return false;
    errno = 0;
    char* end = nullptr;
    long long v = std::strtoll(text.c_str(), &end, 10);
    if (errno != 0 || end == text.c_str() || *end != '\0' || v < INT_MIN || v > INT_MAX) return false;
    value = static_cast<int>(v);
    return true;
}

namespace {
bool parseClock(const std::string& text, int maxHour, int& hour, int& minute, int& second, bool allowSeconds) {
    std::vector<std::string> parts;
    std::string current;
    for (char c : text) {
        if (c == ':') {
            parts.push_back(current);
            current.clear();
        } else {
            current += c;
        }
    }
    parts.push_back(current);
    if (parts.size() < 2 || parts.size() > (allowSeconds ? 3u : 2u)) return false;
    for (const std::string& p : parts)
        if (p.empty() || p.size() > 2) return false;
    second = 0;
    if (!parseInt(parts[0], hour) || !parseInt(parts[1], minute)) return false;
    if (parts.size() == 3 && !parseInt(parts[2], second)) return false;
    if (hour < 0 || hour > maxHour || minute < 0 || minute > 59 || second < 0 || second > 59) return false;
    if (hour == 24 && (minute != 0 || second != 0)) return false;
    return true;
}
}  // namespace

bool parseTimeOfDay(const std::string& text, int& hour, int& minute, int& second) {
    return parseClock(text, 23, hour, minute, second, true);
}

bool parseWindow(const std::string& text, int& startHour, int& startMinute, int& endHour, int& endMinute) {
    size_t dash = text.find('-');
    if (dash == std::string::npos) return false;
    int s = 0;
    return parseClock(text.substr(0, dash), 24, startHour, startMinute, s, false) &&
           parseClock(text.substr(dash + 1), 24, endHour, endMinute, s, false);
}

bool parseDuration(const std::string& text, int64_t& ms) {
    std::string number = text;
    int64_t unit = 1000;
    auto endsWith = [&](const char* suffix) {
        std::string sfx(suffix);
        return number.size() > sfx.size() && number.compare(number.size() - sfx.size(), sfx.size(), sfx) == 0;
    };
    if (endsWith("ms")) {
        unit = 1;
        number.resize(number.size() - 2);
    } else if (endsWith("s")) {
        number.pop_back();
    } else if (endsWith("m")) {
        unit = 60000;
        number.pop_back();
    } else if (endsWith("h")) {
        unit = 3600000;
        number.pop_back();
    }
    int n = 0;
    if (!parseInt(number, n) || n < 0) return false;
    ms = static_cast<int64_t>(n) * unit;
    return true;
}

}  // namespace camsim
