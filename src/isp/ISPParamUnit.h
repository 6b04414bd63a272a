#pragma once
#include <map>
#include <string>

// One band of an ISP tuning table: for every looked-up key with
// min <= key < max, the settings held here apply.
//
// The band's name is the element name it carries in the tuning file. It only
// serves to merge repeated entries of the same band; lookups go by bounds.
// Bounds are signed, the lower one inclusive and the upper one exclusive.
// A band holds at most one value per setting name: setting a name again
// replaces the value, so when the file lists a setting twice in one band the
// later entry is the one kept.
class ISPParamUnit {
public:
    ISPParamUnit() = default;
    ISPParamUnit(const std::string& p_strName, int p_nMin, int p_nMax);

    void setName(const std::string& p_strName) { m_strName = p_strName; }
    bool getName(std::string& p_strName) const;
    void setMin(int p_nMin) { m_nMin = p_nMin; }
    bool getMin(int& p_nMin) const;
    void setMax(int p_nMax) { m_nMax = p_nMax; }
    bool getMax(int& p_nMax) const;

    // Stores (or replaces) one setting of the band.
    void setParam(const std::string& p_strName, int p_nValue);
    // False when the band has no setting of that name; the output is then untouched.
    bool getParam(const std::string& p_strName, int& p_nValue) const;

    // True when min <= key < max, compared as signed integers.
    bool contains(int p_nKey) const { return m_nMin <= p_nKey && p_nKey < m_nMax; }
    const std::string& name() const { return m_strName; }
    // The settings of the band, ordered by name.
    const std::map<std::string, int>& params() const { return m_mapParams; }

private:
    std::string m_strName;
    int m_nMin = 0;
    int m_nMax = 0;
    std::map<std::string, int> m_mapParams;
};
