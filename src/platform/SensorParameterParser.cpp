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

// The walkers below read a std::string's characters up to and including the '\0'
// that always follows them (data()[size()]): that terminator is neither a blank, a
// digit nor a token, so every loop stops on it without comparing against the end.
// A '\0' inside the text stops a walk the same way and fails it (it is not the end).

inline const char* skipBlanks(const char* p) {
    while (isBlank(*p)) ++p;
    return p;
}

// Reads [-]digits into out; nullptr when there is no number or it does not fit 32 bits.
inline const char* parseInt(const char* p, int& out) {
    const bool negative = *p == '-';
    p += negative ? 1 : 0;
    unsigned d = digitOf(*p);
    if (d > 9) return nullptr;
    // Nine digits cannot pass the limit: they are read without the check, in 32 bits.
    uint32_t small = 0;
    int digits = 0;
    do {
        small = small * 10 + d;
        ++p;
    } while (++digits != 9 && (d = digitOf(*p)) <= 9);
    if (digits != 9 || (d = digitOf(*p)) > 9) {
        out = negative ? static_cast<int>(0u - small) : static_cast<int>(small);
        return p;
    }
    const uint64_t limit = negative ? 2147483648ULL : 2147483647ULL;
    uint64_t v = small;
    do {
        v = v * 10 + d;
        if (v > limit) return nullptr;  // bounded: stops long before uint64 could overflow
        ++p;
    } while ((d = digitOf(*p)) <= 9);
    out = negative ? static_cast<int>(-static_cast<int64_t>(v)) : static_cast<int>(v);
    return p;
}

// Walks "(id,value)..." of [p, e), *e == '\0', calling sink(id, value) per item; false on
// malformed text.
template <class Sink>
bool walkPairs(const char* p, const char* e, Sink&& sink) {
    for (;;) {
        p = skipBlanks(p);
        if (*p != '(') return *p == '\0' && p == e;
        int id = 0;
        int value = 0;
        if ((p = parseInt(skipBlanks(p + 1), id)) == nullptr) return false;
        p = skipBlanks(p);
        if (*p != ',') return false;
        if ((p = parseInt(skipBlanks(p + 1), value)) == nullptr) return false;
        p = skipBlanks(p);
        if (*p != ')') return false;
        ++p;
        sink(id, value);
    }
}

// Walks "(id)..." of [p, e), *e == '\0', calling sink(id) per item; false on malformed text.
template <class Sink>
bool walkIds(const char* p, const char* e, Sink&& sink) {
    for (;;) {
        p = skipBlanks(p);
        if (*p != '(') return *p == '\0' && p == e;
        int id = 0;
        if ((p = parseInt(skipBlanks(p + 1), id)) == nullptr) return false;
        p = skipBlanks(p);
        if (*p != ')') return false;
        ++p;
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
    // Items are written into a buffer on the stack and appended a block at a time:
    // sizing the string for the longest items first would fill all of it twice.
    out.clear();
    char block[32 * IntFormat::kMaxPairLength];
    char* p = block;
    for (const auto& kv : params) {
        if (p > block + sizeof(block) - IntFormat::kMaxPairLength) {
            out.append(block, static_cast<size_t>(p - block));
            p = block;
        }
        p = IntFormat::writePair(p, kv.first, kv.second);
    }
    out.append(block, static_cast<size_t>(p - block));
    return true;
}

const std::pair<int, int>* SensorParameterParser::findPair(const Pairs& pairs, int id) {
    auto it = std::lower_bound(pairs.begin(), pairs.end(), id,
                               [](const std::pair<int, int>& p, int key) { return p.first < key; });
    return it != pairs.end() && it->first == id ? &*it : nullptr;
}
