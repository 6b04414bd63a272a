#include "storage/SensorCache.h"

#include <algorithm>
#include <cstdio>

#include "platform/IntFormat.h"
#include "platform/KSLogger.h"

SensorCache::Pairs::iterator SensorCache::lowerBoundSearch(int id) {
    auto it = std::lower_bound(m_values.begin(), m_values.end(), id,
                               [](const std::pair<int, int>& p, int key) { return p.first < key; });
    m_nLast = static_cast<size_t>(it - m_values.begin());
    return it;
}

int SensorCache::setSensorValue(int id, int value) {
    KSMutexGuard lock(m_mutex);
    auto it = lowerBound(id);
    if (it != m_values.end() && it->first == id)
        it->second = value;
    else
        m_values.emplace(it, id, value);
    return 1;
}

int SensorCache::getSensorValue(int id, int& value) {
    KSMutexGuard lock(m_mutex);
    auto it = lowerBound(id);
    if (it == m_values.end() || it->first != id) return 0;
    value = it->second;
    return 1;
}

int SensorCache::isIdExist(int id) {
    KSMutexGuard lock(m_mutex);
    auto it = lowerBound(id);
    return (it != m_values.end() && it->first == id) ? 1 : 0;
}

int SensorCache::isEqualToCache(int id, int value) { return compareToCache(id, value) == Equal ? 1 : 0; }

int SensorCache::compareToCache(int id, int value) {
    KSMutexGuard lock(m_mutex);
    auto it = lowerBound(id);
    if (it == m_values.end() || it->first != id) return Absent;
    return it->second == value ? Equal : Different;
}

int SensorCache::setSensorValues(const std::string& text) {
    KSMutexGuard lock(m_mutex);
    if (!SensorParameterParser::parseSensorParameter(text, m_values)) {
        KSLogger::consolePuts("parseSensorParameter failed");
        return 0;
    }
    return 1;
}

int SensorCache::replaceSensorValues(const std::string& text, Pairs& parsed) {
    KSMutexGuard lock(m_mutex);
    m_values.clear();
    m_bCursorValid = false;
    int ok = 1;
    if (!SensorParameterParser::parseSensorParameter(text, m_values)) {
        KSLogger::consolePuts("parseSensorParameter failed");
        ok = 0;
    }
    parsed.assign(m_values.begin(), m_values.end());
    return ok;
}

int SensorCache::getAllSensorValues(std::string& text) {
    KSMutexGuard lock(m_mutex);
    SensorParameterParser::createSensorParameterString(m_values, text);
    return 1;
}

template <class It>
bool SensorCache::formatValues(It first, It last, std::string& out) {
    // Room for the longest items, written in place, then cut to what was written.
    const size_t start = out.size();
    out.resize(start + static_cast<size_t>(std::distance(first, last)) * IntFormat::kMaxPairLength);
    char* const begin = &out[0];
    char* p = begin + start;
    for (; first != last; ++first) {
        const int id = *first;
        auto at = lowerBound(id);
        if (at == m_values.end() || at->first != id) return false;
        p = IntFormat::writePair(p, id, at->second);
    }
    out.resize(static_cast<size_t>(p - begin));
    return true;
}

int SensorCache::getSensorValues(const std::set<int>& ids, std::string& text) {
    KSMutexGuard lock(m_mutex);
    m_text.clear();
    if (!formatValues(ids.begin(), ids.end(), m_text)) return 0;
    text.swap(m_text);
    return 1;
}

int SensorCache::getSensorValues(const std::string& idListText, std::string& text) {
    KSMutexGuard lock(m_mutex);
    m_ids.clear();
    if (!SensorParameterParser::parseParameterIdList(idListText, m_ids)) {
        KSLogger::consolePrintf("________SensorParameterParser::parseParameterIdList(%s) failed\n", idListText.c_str());
        return 0;
    }
    m_text.clear();
    if (!formatValues(m_ids.begin(), m_ids.end(), m_text)) return 0;
    text.swap(m_text);
    return 1;
}

int SensorCache::collectSensorValues(const std::set<int>& ids, Pairs& out) {
    KSMutexGuard lock(m_mutex);
    out.clear();
    out.reserve(ids.size());
    for (int id : ids) {
        auto at = lowerBound(id);
        if (at == m_values.end()) break;  // the ids ascend: none of the rest has a value
        if (at->first == id) out.push_back(*at);
    }
    return 1;
}

size_t SensorCache::skipEqualLocked(const Pairs& pairs, size_t from) {
    for (; from < pairs.size(); ++from) {
        auto at = lowerBound(pairs[from].first);
        if (at == m_values.end() || at->first != pairs[from].first || at->second != pairs[from].second) break;
    }
    return from;
}

size_t SensorCache::skipEqual(const Pairs& pairs, size_t from) {
    KSMutexGuard lock(m_mutex);
    return skipEqualLocked(pairs, from);
}

size_t SensorCache::storeAndSkip(int id, int value, int how, const Pairs& pairs, size_t from) {
    KSMutexGuard lock(m_mutex);
    if (how != StoreNothing) {
        auto it = lowerBound(id);
        if (it != m_values.end() && it->first == id) {
            if (how == StoreValue) it->second = value;
        } else {
            m_values.emplace(it, id, value);
        }
    }
    return skipEqualLocked(pairs, from);
}

int SensorCache::getFirstIdValue(int& id, int& value) {
    KSMutexGuard lock(m_mutex);
    m_bCursorValid = !m_values.empty();
    if (!m_bCursorValid) return 0;
    m_nCursorId = m_values.front().first;
    id = m_values.front().first;
    value = m_values.front().second;
    return 1;
}

int SensorCache::getNextIdValue(int& id, int& value) {
    KSMutexGuard lock(m_mutex);
    if (!m_bCursorValid) return 0;
    // The pair after the current id, wherever pairs were added meanwhile.
    auto it = std::upper_bound(m_values.begin(), m_values.end(), m_nCursorId,
                               [](int key, const std::pair<int, int>& p) { return key < p.first; });
    if (it == m_values.end()) {
        m_bCursorValid = false;
        return 0;
    }
    m_nCursorId = it->first;
    id = it->first;
    value = it->second;
    return 1;
}

int SensorCache::clear() {
    KSMutexGuard lock(m_mutex);
    m_values.clear();
    m_bCursorValid = false;
    return 1;
}

size_t SensorCache::size() {
    KSMutexGuard lock(m_mutex);
    return m_values.size();
}
