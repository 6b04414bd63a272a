#include "platform/SensorParameterParser.h"

#include <charconv>
#include <cstdint>

namespace {

inline bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// The digit value of c, or a value above 9 for anything else (independent of char signedness).
inline unsigned digitOf(char c) {
    return static_cast<unsigned>(static_cast<unsigned char>(c)) - static_cast<unsigned>('0');
}

inline const char* skipBlanks(const char* p, const char* e) {
    while (p != e && isBlank(*p)) ++p;
    return p;
}

// Reads [-]digits into out; nullptr when there is no number or it does not fit 32 bits.
inline const char* parseInt(const char* p, const char* e, int& out) {
    bool negative = false;
    if (p != e && *p == '-') {
        negative = true;
        ++p;
    }
    if (p == e || digitOf(*p) > 9) return nullptr;
    const uint64_t limit = negative ? 2147483648ULL : 2147483647ULL;
    uint64_t v = 0;
    do {
        v = v * 10 + digitOf(*p);
        if (v > limit) return nullptr;  // bounded: stops long before uint64 could overflow
        ++p;
    } while (p != e && digitOf(*p) <= 9);
    out = negative ? static_cast<int>(-static_cast<int64_t>(v)) : static_cast<int>(v);
    return p;
}

inline const char* expect(const char* p, const char* e, char c) {
    p = skipBlanks(p, e);
    if (p == e || *p != c) return nullptr;
    return p + 1;
}

// Walks "(id,value)..." calling sink(id, value) per item; false on malformed text.
template <class Sink>
bool walkPairs(const char* p, const char* e, Sink&& sink) {
    for (;;) {
        p = skipBlanks(p, e);
        if (p == e) return true;
        if (*p != '(') return false;
        int id = 0;
        int value = 0;
        p = skipBlanks(p + 1, e);
        if ((p = parseInt(p, e, id)) == nullptr) return false;
        if ((p = expect(p, e, ',')) == nullptr) return false;
        p = skipBlanks(p, e);
        if ((p = parseInt(p, e, value)) == nullptr) return false;
        if ((p = expect(p, e, ')')) == nullptr) return false;
        sink(id, value);
    }
}

// Walks "(id)..." calling sink(id) per item; false on malformed text.
template <class Sink>
bool walkIds(const char* p, const char* e, Sink&& sink) {
    for (;;) {
        p = skipBlanks(p, e);
        if (p == e) return true;
        if (*p != '(') return false;
        int id = 0;
        p = skipBlanks(p + 1, e);
        if ((p = parseInt(p, e, id)) == nullptr) return false;
        if ((p = expect(p, e, ')')) == nullptr) return false;
        sink(id);
    }
}

inline void appendInt(std::string& out, int v) {
    char buf[16];
    auto r = std::to_chars(buf, buf + sizeof(buf), v);
    out.append(buf, static_cast<size_t>(r.ptr - buf));
}

}  // namespace

bool SensorParameterParser::parseSensorParameter(const std::string& text, std::map<int, int>& out) {
    const char* b = text.data();
    const char* e = b + text.size();
    // First pass checks the whole text so that a malformed text changes nothing.
    if (!walkPairs(b, e, [](int, int) {})) return false;
    auto hint = out.end();
    walkPairs(b, e, [&](int id, int value) {
        // The hint makes ascending ids (what the writer produces) amortised O(1).
        hint = std::next(out.insert_or_assign(hint, id, value));
    });
    return true;
}

bool SensorParameterParser::createSensorParameterString(const std::map<int, int>& params, std::string& out) {
    out.clear();
    out.reserve(params.size() * 16);
    for (const auto& kv : params) {
        out.push_back('(');
        appendInt(out, kv.first);
        out.push_back(',');
        appendInt(out, kv.second);
        out.push_back(')');
    }
    return true;
}

std::string SensorParameterParser::createSensorParameterString(const std::map<int, int>& params) {
    std::string out;
    createSensorParameterString(params, out);
    return out;
}

bool SensorParameterParser::parseParameterIdList(const std::string& text, std::set<int>& out) {
    const char* b = text.data();
    const char* e = b + text.size();
    if (!walkIds(b, e, [](int) {})) return false;
    auto hint = out.end();
    walkIds(b, e, [&](int id) { hint = std::next(out.insert(hint, id)); });
    return true;
}

bool SensorParameterParser::createParameterIdListString(const std::set<int>& ids, std::string& out) {
    out.clear();
    out.reserve(ids.size() * 8);
    for (int id : ids) {
        out.push_back('(');
        appendInt(out, id);
        out.push_back(')');
    }
    return true;
}
