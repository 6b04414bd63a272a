#pragma once
// The ids of inclusive ranges, for the registered-ids tests of the controllers.
#include <set>
#include <utility>

namespace testutil {

inline std::set<int> idsOf(std::initializer_list<std::pair<int, int>> ranges) {
    std::set<int> s;
    for (auto& r : ranges)
        for (int id = r.first; id <= r.second; ++id) s.insert(id);
    return s;
}

}  // namespace testutil
