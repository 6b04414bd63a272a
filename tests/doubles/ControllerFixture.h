#pragma once
// Files a controller expects on the camera, written under a test root.
#include <string>

#include "TestRoot.h"

namespace testutil {

inline void writeSchemeCount(const TempRoot& root, int count) {
    root.write("/hd1/moduleConfig/sensorAbility.xml",
               "<sensorAbility><paramScheme><item name=\"SchemeNum\" value=\"" + std::to_string(count) +
                   "\"/></paramScheme></sensorAbility>\n");
}

}  // namespace testutil
