#include "storage/SensorCache.h"

#include <cstdio>

#include "platform/SensorParameterParser.h"

int SensorCache::setSensorValue(int id, int value) {
    KSMutexGuard lock(m_mutex);
    m_values[id] = value;
    return 1;
}

int SensorCache::getSensorValue(int id, int& value) {
    KSMutexGuard lock(m_mutex);
    auto it = m_values.find(id);
    if (it == m_values.end()) return 0;
    value = it->second;
    return 1;
}

int SensorCache::isIdExist(int id) {
    KSMutexGuard lock(m_mutex);
    return m_values.count(id) ? 1 : 0;
}

int SensorCache::isEqualToCache(int id, int value) {
    KSMutexGuard lock(m_mutex);
    auto it = m_values.find(id);
    return (it != m_values.end() && it->second == value) ? 1 : 0;
}

int SensorCache::setSensorValues(const std::string& text) {
    KSMutexGuard lock(m_mutex);
    if (!SensorParameterParser::parseSensorParameter(text, m_values)) {
        std::puts("parseSensorParameter failed");
        return 0;
    }
    return 1;
}

int SensorCache::getAllSensorValues(std::string& text) {
    KSMutexGuard lock(m_mutex);
    SensorParameterParser::createSensorParameterString(m_values, text);
    return 1;
}

int SensorCache::getSensorValues(const std::set<int>& ids, std::string& text) {
    std::string out;
    char item[32];
    for (int id : ids) {
        int value = 0;
        if (!getSensorValue(id, value)) return 0;
        int n = std::snprintf(item, sizeof(item), "(%d,%d)", id, value);
        out.append(item, static_cast<size_t>(n));
    }
    text.swap(out);
    return 1;
}

int SensorCache::getSensorValues(const std::string& idListText, std::string& text) {
    std::set<int> ids;
    if (!SensorParameterParser::parseParameterIdList(idListText, ids)) {
        std::printf("________SensorParameterParser::parseParameterIdList(%s) failed\n", idListText.c_str());
        return 0;
    }
    return getSensorValues(ids, text);
}

int SensorCache::getFirstIdValue(int& id, int& value) {
    KSMutexGuard lock(m_mutex);
    m_cursor = m_values.begin();
    m_bCursorValid = m_cursor != m_values.end();
    if (!m_bCursorValid) return 0;
    id = m_cursor->first;
    value = m_cursor->second;
    return 1;
}

int SensorCache::getNextIdValue(int& id, int& value) {
    KSMutexGuard lock(m_mutex);
    if (!m_bCursorValid || m_cursor == m_values.end()) return 0;
    ++m_cursor;
    if (m_cursor == m_values.end()) {
        m_bCursorValid = false;
        return 0;
    }
    id = m_cursor->first;
    value = m_cursor->second;
    return 1;
}

int SensorCache::clear() {
    KSMutexGuard lock(m_mutex);
    m_values.clear();
    m_cursor = m_values.end();
    m_bCursorValid = false;
    return 1;
}

size_t SensorCache::size() {
    KSMutexGuard lock(m_mutex);
    return m_values.size();
}
