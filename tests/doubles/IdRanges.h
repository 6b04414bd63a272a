#pragma once
// The ids of inclusive ranges and the check of a controller's registered ids.
#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "storage/IdManager.h"

namespace testutil {

inline std::set<int> idsOf(std::initializer_list<std::pair<int, int>> ranges) {
    std::set<int> s;
    for (auto& r : ranges)
        for (int id = r.first; id <= r.second; ++id) s.insert(id);
    return s;
}

// A fresh controller's registry holds exactly these common, set-only and
// keep-default-value ids (the base controller's 500-504 besides) and no
// especial ids, and its driver table has a row for each registered id.
inline void expectRegisteredIds(IdManager& ids, const std::set<int>& common, const std::set<int>& setOnly,
                                const std::set<int>& keepDefault, const std::set<int>& tableRows) {
    std::set<int> c, s, e, k;
    ids.getCommonIdList(c);
    ids.getSetOnlyIdList(s);
    ids.getEspecialIdList(e);
    ids.getKeepDefaultValueList(k);
    std::set<int> withBase = common;
    for (int id = 500; id <= 504; ++id) withBase.insert(id);
    EXPECT_EQ(withBase, c);
    EXPECT_EQ(setOnly, s);
    EXPECT_TRUE(e.empty());
    EXPECT_EQ(keepDefault, k);
    std::set<int> registered = common;
    registered.insert(setOnly.begin(), setOnly.end());
    registered.insert(keepDefault.begin(), keepDefault.end());
    EXPECT_EQ(registered, tableRows);
}

}  // namespace testutil
