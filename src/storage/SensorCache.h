#pragma once
#include <map>
#include <set>
#include <string>

#include "platform/KSMutex.h"

// In-memory copy of the current value of every cached parameter id of one
// controller, ascending by id. Every operation takes the cache's mutex.
class SensorCache {
public:
    int setSensorValue(int id, int value);
    int getSensorValue(int id, int& value);
    int isIdExist(int id);
    int isEqualToCache(int id, int value);
    int setSensorValues(const std::string& text);
    int getAllSensorValues(std::string& text);
    int getSensorValues(const std::set<int>& ids, std::string& text);
    int getSensorValues(const std::string& idListText, std::string& text);
    int getFirstIdValue(int& id, int& value);
    int getNextIdValue(int& id, int& value);
    int clear();
    // Number of pairs held.
    size_t size();

private:
    KSMutex m_mutex;
    std::map<int, int> m_values;
    std::map<int, int>::iterator m_cursor = m_values.end();
    bool m_bCursorValid = false;
};
