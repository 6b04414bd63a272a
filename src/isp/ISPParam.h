#pragma once
#include <map>
#include <string>
#include <vector>

#include "isp/ISPParamUnit.h"

// The ISP tuning tables: per table name ("GAIN", "DN", or any other) the list
// of its bands in the order they were first met, and per table an enable flag.
//
// Lookup: the bands of a table are walked in order and the first band whose
// range holds the key decides, whether or not it carries the setting asked
// for. So overlapping bands resolve to the earlier one, a key equal to a
// band's upper bound belongs to the next band, and nothing is interpolated.
//
// The object has no lock of its own; its owner serialises access.
class ISPParam {
public:
    ISPParam() = default;

    // Forgets every table and every enable flag.
    void clear();

    // Records the enable flag of a table, replacing an earlier one.
    bool setEnableFlag(const std::string& p_strTable, bool p_bEnable);
    // False when no flag was recorded for the table.
    bool getEnableFlag(const std::string& p_strTable, bool& p_bEnable) const;

    // Stores one setting of a band. A band already present under this table
    // with the same name (exact comparison) receives the setting and keeps the
    // bounds it was first given; otherwise a new band with these bounds is
    // appended to the table.
    bool setParam(const std::string& p_strTable, const std::string& p_strBand, int p_nMin, int p_nMax,
                  const std::string& p_strName, int p_nValue);

    // Looks up a setting for a key in a table (see the lookup rule above).
    // False when the table is unknown, no band holds the key, or the band
    // holding it lacks the setting; the output is then untouched.
    bool getParam(const std::string& p_strTable, const std::string& p_strName, int p_nKey,
                  int& p_nValue) const;

    // Read access for dumps and tests.
    const std::map<std::string, std::vector<ISPParamUnit>>& tables() const { return m_mapTables; }
    const std::map<std::string, bool>& enableFlags() const { return m_mapEnable; }
    bool empty() const { return m_mapTables.empty() && m_mapEnable.empty(); }

private:
    std::map<std::string, std::vector<ISPParamUnit>> m_mapTables;
    std::map<std::string, bool> m_mapEnable;
};
