#include "camsim/CommandLine.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdio>
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
    if (!number.empty() && number.back() == 'd') {
        number.pop_back();
        number += "h";
        unit = 0;  // days: hours times 24 below
    }
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
        unit = unit == 0 ? 24 * 3600000LL : 3600000;
        number.pop_back();
    }
    if (unit == 0) return false;
    // A whole number, or one with a decimal fraction ("1.5").
    const size_t dot = number.find('.');
    int whole = 0, fraction = 0;
    int64_t scale = 1;
    if (dot == std::string::npos) {
        if (!parseInt(number, whole) || whole < 0 || number[0] == '+' || number[0] == '-') return false;
    } else {
        const std::string w = number.substr(0, dot), f = number.substr(dot + 1);
        if (w.empty() || f.empty() || f.size() > 6) return false;
        for (char ch : w + f)
            if (ch < '0' || ch > '9') return false;
        if (!parseInt(w, whole) || !parseInt(f, fraction)) return false;
        for (size_t i = 0; i < f.size(); ++i) scale *= 10;
    }
    ms = static_cast<int64_t>(whole) * unit + static_cast<int64_t>(fraction) * unit / scale;
    return true;
}

std::string printable(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (char ch : text) {
        const unsigned char b = static_cast<unsigned char>(ch);
        if ((b < 0x20 && ch != '\n' && ch != '\t') || b == 0x7f) {
            char code[8];
            std::snprintf(code, sizeof(code), "\\x%02x", b);
            out += code;
        } else {
            out += ch;
        }
    }
    return out;
}

}  // namespace camsim
