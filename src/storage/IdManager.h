#pragma once
#include <set>

// Registry of the parameter ids a controller supports and how the parameter
// pipeline treats each: 1 common (cached, persisted), 2 especial (like common,
// shared by all schemes), 3 set-only (sent to the sensor only), 4 keep-default
// (cached on the first write only). 0 means not registered.
class IdManager {
public:
    enum { TypeUnknown = 0, TypeCommon = 1, TypeEspecial = 2, TypeSetOnly = 3, TypeKeepDefault = 4 };

    void addParameterId(int type, int id);
    void addParameterId(int type, int firstId, int lastId);
    int getIdType(int id) const;
    bool isIdExist(int id) const;
    static bool isIdExistInSet(int id, const std::set<int>& ids);
    int getCommonIdList(std::set<int>& out) const;
    int getEspecialIdList(std::set<int>& out) const;
    int getSetOnlyIdList(std::set<int>& out) const;
    int getKeepDefaultValueList(std::set<int>& out) const;

private:
    std::set<int>* setOf(int type);
    static int copyInto(const std::set<int>& from, std::set<int>& out);

    std::set<int> m_commonIds;
    std::set<int> m_especialIds;
    std::set<int> m_setOnlyIds;
    std::set<int> m_keepDefaultIds;
};
