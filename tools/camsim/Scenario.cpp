#include "camsim/Scenario.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "camsim/CommandLine.h"

namespace camsim {
namespace {

const size_t kMaxFileBytes = 4 * 1024 * 1024;

std::vector<std::string> splitColumns(const std::string& line) {
    std::vector<std::string> cols;
    std::string cur;
    for (char c : line) {
        if (c == ',') {
            cols.push_back(trim(cur));
            cur.clear();
        } else {
            cur += c;
        }
    }
    cols.push_back(trim(cur));
    return cols;
}

// A decimal number with nothing after it.
bool parseNumber(const std::string& text, double& value) {
    if (text.empty()) return false;
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return end != nullptr && *end == '\0' && value == value;
}

std::string at(const std::string& name, int line) { return name + ":" + std::to_string(line) + ": "; }

}  // namespace

bool Scenario::parseClock(const std::string& text, int& seconds) {
    int h = 0, m = 0, s = 0;
    char tail = 0;
    if (text.size() != 8 || std::sscanf(text.c_str(), "%2d:%2d:%2d%c", &h, &m, &s, &tail) != 3) return false;
    if (text[2] != ':' || text[5] != ':') return false;
    for (size_t i : {0u, 1u, 3u, 4u, 6u, 7u})
        if (text[i] < '0' || text[i] > '9') return false;
    if (h > 47 || m > 59 || s > 59) return false;
    seconds = h * 3600 + m * 60 + s;
    return true;
}

std::string Scenario::clockText(int seconds) {
    char buf[16];
    std::snprintf(buf, sizeof(buf), "%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
    return buf;
}

bool Scenario::load(const std::string& path, std::string& error) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = "cannot read scenario " + path;
        return false;
    }
    std::string text;
    char buf[65536];
    while (in.read(buf, sizeof(buf)) || in.gcount() > 0) {
        text.append(buf, static_cast<size_t>(in.gcount()));
        if (text.size() > kMaxFileBytes) {
            error = path + ": larger than 4 MiB: not a scenario file";
            return false;
        }
    }
    std::string base = path.substr(path.find_last_of('/') == std::string::npos ? 0 : path.find_last_of('/') + 1);
    const size_t dot = base.find_last_of('.');
    if (dot != std::string::npos && dot > 0) base = base.substr(0, dot);
    if (!parse(text, path, error)) return false;
    m_strName = base;
    return true;
}

bool Scenario::parse(const std::string& text, const std::string& name, std::string& error) {
    // A refused file leaves the scenario empty.
    if (parseRows(text, name, error)) return true;
    m_rows.clear();
    return false;
}

bool Scenario::parseRows(const std::string& text, const std::string& name, std::string& error) {
    m_rows.clear();
    m_bGain = false;
    m_dReflection = 0;
    m_strName = name;
    std::istringstream in(text);
    std::string raw;
    int line = 0;
    bool header = false;
    while (std::getline(in, raw)) {
        ++line;
        for (size_t i = 0; i < raw.size(); ++i) {
            const unsigned char c = static_cast<unsigned char>(raw[i]);
            if ((c < 0x20 && c != '\t' && c != '\r') || c >= 0x7f) {
                char code[8];
                std::snprintf(code, sizeof(code), "0x%02x", c);
                error = at(name, line) + "byte " + code + " at column " + std::to_string(i + 1) +
                        ": not a text line; is this a scenario file?";
                return false;
            }
        }
        const std::string l = trim(raw);
        if (l.empty() || l[0] == '#') continue;
        const std::vector<std::string> cols = splitColumns(l);
        if (toLower(cols[0]) == "reflection") {
            double r = 0;
            if (cols.size() != 2 || !parseNumber(cols[1], r) || r < 0 || r > 100) {
                error = at(name, line) + "'reflection' wants one value 0-100 (reflection,40)";
                return false;
            }
            if (!m_rows.empty()) {
                error = at(name, line) + "'reflection' belongs before the first row";
                return false;
            }
            m_dReflection = r;
            continue;
        }
        if (toLower(cols[0]) == "time") {
            const bool ok = (cols.size() == 2 && toLower(cols[1]) == "light") ||
                            (cols.size() == 3 && toLower(cols[1]) == "light" && toLower(cols[2]) == "gain");
            if (!ok || header || !m_rows.empty()) {
                error = at(name, line) + "the header is 'time,light' or 'time,light,gain', once, before the rows";
                return false;
            }
            header = true;
            continue;
        }
        if (cols.size() < 2) {
            error = at(name, line) + "missing column: a row is time,light[,gain] (HH:MM:SS,0-100), found '" + l + "'";
            return false;
        }
        if (cols.size() > 3) {
            error = at(name, line) + std::to_string(cols.size()) + " columns: a row is time,light[,gain]";
            return false;
        }
        Row row;
        row.line = line;
        if (!parseClock(cols[0], row.seconds)) {
            error = at(name, line) + "time '" + cols[0] + "' is not HH:MM:SS (hours 00-47; 24-47 are the next day)";
            return false;
        }
        if (!parseNumber(cols[1], row.light) || row.light < 0 || row.light > 100) {
            error = at(name, line) + "light '" + cols[1] + "' is not a level from 0 to 100";
            return false;
        }
        if (cols.size() == 3) {
            if (!parseNumber(cols[2], row.gain) || row.gain < 0 || row.gain > 100) {
                error = at(name, line) + "gain '" + cols[2] + "' is not a value from 0 to 100";
                return false;
            }
        }
        if (!m_rows.empty()) {
            if ((cols.size() == 3) != m_bGain) {
                error = at(name, line) + (m_bGain ? "missing column: gain, which the rows before have"
                                                  : "a gain column that the rows before do not have");
                return false;
            }
            if (row.seconds <= m_rows.back().seconds) {
                error = at(name, line) + "time " + cols[0] + " is not after the previous row's " +
                        clockText(m_rows.back().seconds) + " (line " + std::to_string(m_rows.back().line) +
                        "): rows must be in time order";
                return false;
            }
        } else {
            m_bGain = cols.size() == 3;
        }
        m_rows.push_back(row);
    }
    if (m_rows.size() < 2) {
        error = name + ": " + (m_rows.empty() ? "no rows" : "only one row") +
                ": a scenario needs at least two rows of time,light (line " + std::to_string(line) + " is the last)";
        return false;
    }
    return true;
}

double Scenario::interpolate(double seconds, bool gain) const {
    if (m_rows.empty()) return 0;
    auto value = [gain](const Row& r) { return gain ? r.gain : r.light; };
    if (seconds <= m_rows.front().seconds) return value(m_rows.front());
    if (seconds >= m_rows.back().seconds) return value(m_rows.back());
    size_t lo = 0, hi = m_rows.size() - 1;
    while (hi - lo > 1) {
        const size_t mid = (lo + hi) / 2;
        if (m_rows[mid].seconds <= seconds) lo = mid; else hi = mid;
    }
    const Row& a = m_rows[lo];
    const Row& b = m_rows[hi];
    const double f = (seconds - a.seconds) / static_cast<double>(b.seconds - a.seconds);
    return value(a) + (value(b) - value(a)) * f;
}

double Scenario::lightAt(double seconds) const { return interpolate(seconds, false); }

double Scenario::gainAt(double seconds) const { return m_bGain ? interpolate(seconds, true) : -1; }

}  // namespace camsim
