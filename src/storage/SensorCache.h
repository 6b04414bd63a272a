#pragma once
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "platform/KSMutex.h"
#include "platform/SensorParameterParser.h"

// In-memory copy of the current value of every cached parameter id of one
// controller, ascending by id. Every operation takes the cache's mutex once.
//
// The pairs are held in one flat list, ascending by id, whose storage is kept
// when the content changes: replacing the content with a list of the same size,
// or changing a value, allocates nothing.
class SensorCache {
public:
    using Pairs = SensorParameterParser::Pairs;

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

    // What compareToCache finds for an id.
    enum { Absent = 0, Different = 1, Equal = 2 };
    // Whether the id has a value, and whether it is `value`.
    int compareToCache(int id, int value);
    // clear() and setSensorValues(text) in one step; `parsed` receives the pairs
    // held afterwards (its storage reused). 0, with the cache empty, when the
    // text is malformed.
    int replaceSensorValues(const std::string& text, Pairs& parsed);
    // The pairs of those of `ids` that have a value, ascending (`out` is replaced).
    int collectSensorValues(const std::set<int>& ids, Pairs& out);
    // Index of the first of pairs[from..] whose value the cache does not hold
    // (pairs.size() when there is none): the pairs before it need no work.
    size_t skipEqual(const Pairs& pairs, size_t from);
    // How storeAndSkip stores the value.
    enum { StoreNothing = 0, StoreValue = 1, StoreIfAbsent = 2 };
    // Stores (id, value) as `how` says, then skipEqual(pairs, from), under one lock.
    size_t storeAndSkip(int id, int value, int how, const Pairs& pairs, size_t from);

private:
    // The pair of id, or where it would go; pairs looked up in ascending order
    // (a list being walked) are found next to the previous one without a search.
    Pairs::iterator lowerBound(int id) {
        const size_t i = m_nLast, n = m_values.size();
        if (i < n && m_values[i].first <= id) {
            if (m_values[i].first == id) return m_values.begin() + static_cast<std::ptrdiff_t>(i);
            if (i + 1 < n && m_values[i + 1].first >= id) {
                m_nLast = i + 1;
                return m_values.begin() + static_cast<std::ptrdiff_t>(i + 1);
            }
        }
        return lowerBoundSearch(id);
    }
    Pairs::iterator lowerBoundSearch(int id);
    // Index of the first pair at or after `from` that the cache does not hold.
    size_t skipEqualLocked(const Pairs& pairs, size_t from);
    // Appends "(id,value)" of every id in [first, last) (ascending) to out;
    // false, at the first id without a value.
    template <class It>
    bool formatValues(It first, It last, std::string& out);

    KSMutex m_mutex;
    Pairs m_values;
    size_t m_nLast = 0;   // index of the pair found last (a hint only)
    int m_nCursorId = 0;  // id of the pair the iteration stands on
    bool m_bCursorValid = false;
    std::vector<int> m_ids;  // the ids of the id list being answered
    std::string m_text;      // the answer being built
};
