#include "storage/IdManager.h"

#include <algorithm>

std::set<int>* IdManager::setOf(int type) {
    switch (type) {
        case TypeCommon: return &m_commonIds;
        case TypeEspecial: return &m_especialIds;
        case TypeSetOnly: return &m_setOnlyIds;
        case TypeKeepDefault: return &m_keepDefaultIds;
        default: return nullptr;
    }
}

void IdManager::addParameterId(int type, int id) {
    if (std::set<int>* s = setOf(type)) {
        s->insert(id);
        noteType(id);
    }
}

void IdManager::addParameterId(int type, int firstId, int lastId) {
    std::set<int>* s = setOf(type);
    if (s == nullptr || lastId < firstId) return;
    for (long long id = firstId; id <= lastId; ++id) {
        s->insert(s->end(), static_cast<int>(id));
        noteType(static_cast<int>(id));
    }
}

void IdManager::noteType(int id) {
    const int type = typeFromSets(id);
    if (id >= 0 && id < kSmallIds) {
        if (static_cast<size_t>(id) >= m_smallTypes.size()) m_smallTypes.resize(static_cast<size_t>(id) + 1, TypeUnknown);
        m_smallTypes[static_cast<size_t>(id)] = static_cast<unsigned char>(type);
    }
    if (m_types.empty() || m_types.back().first < id) {  // ascending registration: appended
        m_types.emplace_back(id, type);
        return;
    }
    auto it = std::lower_bound(m_types.begin(), m_types.end(), id,
                               [](const std::pair<int, int>& p, int key) { return p.first < key; });
    if (it != m_types.end() && it->first == id)
        it->second = type;
    else
        m_types.emplace(it, id, type);
}

int IdManager::getIdType(int id) const {
    if (id >= 0 && id < kSmallIds)
        return static_cast<size_t>(id) < m_smallTypes.size() ? static_cast<int>(m_smallTypes[static_cast<size_t>(id)]) : static_cast<int>(TypeUnknown);
    auto it = std::lower_bound(m_types.begin(), m_types.end(), id,
                               [](const std::pair<int, int>& p, int key) { return p.first < key; });
    return it != m_types.end() && it->first == id ? it->second : TypeUnknown;
}

int IdManager::typeFromSets(int id) const {
    if (m_keepDefaultIds.count(id)) return TypeKeepDefault;
    if (m_commonIds.count(id)) return TypeCommon;
    if (m_especialIds.count(id)) return TypeEspecial;
    if (m_setOnlyIds.count(id)) return TypeSetOnly;
    return TypeUnknown;
}

bool IdManager::isIdExist(int id) const {
    return m_commonIds.count(id) || m_especialIds.count(id) || m_setOnlyIds.count(id) || m_keepDefaultIds.count(id);
}

bool IdManager::isIdExistInSet(int id, const std::set<int>& ids) { return ids.count(id) != 0; }

int IdManager::copyInto(const std::set<int>& from, std::set<int>& out) {
    if (&from != &out) out = from;
    return 1;
}

int IdManager::getCommonIdList(std::set<int>& out) const { return copyInto(m_commonIds, out); }
int IdManager::getEspecialIdList(std::set<int>& out) const { return copyInto(m_especialIds, out); }
int IdManager::getSetOnlyIdList(std::set<int>& out) const { return copyInto(m_setOnlyIds, out); }
int IdManager::getKeepDefaultValueList(std::set<int>& out) const { return copyInto(m_keepDefaultIds, out); }
