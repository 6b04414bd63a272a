#include "platform/SensorParameterParser.h"

#include <algorithm>
#include <cstdint>

#include "platform/IntFormat.h"

namespace {

inline bool isBlank(char c) {
    // Tab, LF, VT, FF and CR are 9-13; one comparison settles every printable character.
    return static_cast<unsigned char>(c) <= ' ' && (c == ' ' || (c >= '\t' && c <= '\r'));
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
    // Nine digits cannot pass the limit: they are read without the check.
    uint32_t small = 0;
    const char* const fast = e - p > 9 ? p + 9 : e;
    do {
        small = small * 10 + digitOf(*p);
        ++p;
    } while (p != fast && digitOf(*p) <= 9);
    uint64_t v = small;
    while (p != e && digitOf(*p) <= 9) {
        v = v * 10 + digitOf(*p);
        if (v > limit) return nullptr;  // bounded: stops long before uint64 could overflow
        ++p;
    }
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

inline int keyOf(const std::pair<int, int>& p) { return p.first; }
inline int keyOf(int id) { return id; }

// Items appended at [head, end) of v, which is ascending and unique before head, are
// merged into it: sorted by id (stable, so that for a repeated id the last item wins)
// and merged over the older entries. Ascending items above the old last entry, the
// common case, are left where they are.
template <class T>
void mergeAppended(std::vector<T>& v, size_t head) {
    bool ascending = true;
    for (size_t i = head; i < v.size(); ++i)
        if (i > 0 && keyOf(v[i]) <= keyOf(v[i - 1])) {
            ascending = false;
            break;
        }
    if (ascending) return;
    auto byKey = [](const T& a, const T& b) { return keyOf(a) < keyOf(b); };
    auto first = v.begin() + static_cast<std::ptrdiff_t>(head);
    std::stable_sort(first, v.end(), byKey);
    auto w = first;  // keep the last of each run of equal ids
    for (auto r = first; r != v.end(); ++r) {
        if (w != first && keyOf(*(w - 1)) == keyOf(*r))
            *(w - 1) = *r;
        else
            *w++ = *r;
    }
    v.erase(w, v.end());
    if (head == 0) return;
    std::vector<T> merged;
    merged.reserve(v.size());
    size_t i = 0, j = head;
    while (i < head || j < v.size()) {
        if (j == v.size() || (i < head && keyOf(v[i]) < keyOf(v[j]))) {
            merged.push_back(v[i++]);
        } else {
            if (i < head && keyOf(v[i]) == keyOf(v[j])) ++i;  // the new item replaces the old one
            merged.push_back(v[j++]);
        }
    }
    v.swap(merged);
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
        IntFormat::appendPair(out, kv.first, kv.second);
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
        IntFormat::appendId(out, id);
    }
    return true;
}

bool SensorParameterParser::parseSensorParameter(const std::string& text, Pairs& out) {
    const size_t head = out.size();
    const char* b = text.data();
    if (!walkPairs(b, b + text.size(), [&](int id, int value) { out.emplace_back(id, value); })) {
        out.resize(head);
        return false;
    }
    mergeAppended(out, head);
    return true;
}

bool SensorParameterParser::parseParameterIdList(const std::string& text, std::vector<int>& out) {
    const size_t head = out.size();
    const char* b = text.data();
    if (!walkIds(b, b + text.size(), [&](int id) { out.push_back(id); })) {
        out.resize(head);
        return false;
    }
    mergeAppended(out, head);
    return true;
}

bool SensorParameterParser::createSensorParameterString(const Pairs& params, std::string& out) {
    // Room for the longest items, written in place, then cut to what was written.
    out.resize(params.size() * IntFormat::kMaxPairLength);
    char* const begin = &out[0];
    char* p = begin;
    for (const auto& kv : params) p = IntFormat::writePair(p, kv.first, kv.second);
    out.resize(static_cast<size_t>(p - begin));
    return true;
}

const std::pair<int, int>* SensorParameterParser::findPair(const Pairs& pairs, int id) {
    auto it = std::lower_bound(pairs.begin(), pairs.end(), id,
                               [](const std::pair<int, int>& p, int key) { return p.first < key; });
    return it != pairs.end() && it->first == id ? &*it : nullptr;
}
