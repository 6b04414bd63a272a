#pragma once
#include <set>
#include <utility>
#include <vector>

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
    // The registered ids of a type, without a copy. The registry is filled while the
    // controller is built and read-only afterwards.
    const std::set<int>& commonIds() const { return m_commonIds; }
    const std::set<int>& especialIds() const { return m_especialIds; }

private:
    std::set<int>* setOf(int type);
    static int copyInto(const std::set<int>& from, std::set<int>& out);
    // The type getIdType gives from the sets, kept in m_types.
    int typeFromSets(int id) const;
    void noteType(int id);

    std::set<int> m_commonIds;
    std::set<int> m_especialIds;
    std::set<int> m_setOnlyIds;
    std::set<int> m_keepDefaultIds;
    // (id, type) ascending by id: getIdType in one search on the parameter path;
    // the small ids (every id of the known controllers) by index, without a search.
    static constexpr int kSmallIds = 4096;
    std::vector<std::pair<int, int>> m_types;
    std::vector<unsigned char> m_smallTypes;
};
