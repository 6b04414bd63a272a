// The sensor-type table: every controller has a number of its own, none that the
// base controller treats specially, and the factory by type builds the right one.
#include "core/SensorTypes.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "TestRoot.h"
#include "core/NullSenseController.h"
#include "core/SenseControllerFactory.h"
#include "core/SensorTypeFactory.h"
#include "drivers/fisheye/S2FisheyeSenseController.h"
#include "drivers/ispboard/IIPC368ZoomSensorController.h"
#include "drivers/ispboard/IT1SenseController.h"
#include "drivers/ispboard/IT1ZoomModuleSenseController.h"
#include "drivers/ispboard/ITNSenseController.h"
#include "drivers/ispboard/KestraISPSenseController.h"
#include "drivers/ispboard/SeawolfSenseController.h"
#include "drivers/serial/CMD7200SenseController.h"
#include "drivers/serial/CMD7300SenseController.h"
#include "drivers/serial/CMD8100SenseController.h"
#include "drivers/serial/CMD8100_OldSenseController.h"
#include "drivers/serial/CMD8300SenseController.h"
#include "drivers/serial/EffioSenseController.h"
#include "drivers/serial/FCBEV7310SenseController.h"
#include "drivers/serial/HitachCompatSenseController.h"
#include "drivers/serial/HitachSenseController.h"
#include "drivers/serial/NoSensorUIController.h"
#include "drivers/serial/SC110N_CSenseController.h"
#include "drivers/serial/SONYCH3310SenseController.h"
#include "drivers/serial/SONYCV7500SenseController.h"
#include "drivers/serial/SONYEH4300SenseController.h"

namespace {

// Whether the controller is exactly of class T (not a subclass of it that another row names).
template <class T>
bool isExactly(ISensorController* c) {
    return c != nullptr && typeid(*c) == typeid(T);
}

struct Row {
    const char* name;
    int type;  // the class's own SensorType
    std::function<bool(ISensorController*)> is;
};

#define ROW(T) Row{#T, T::SensorType, &isExactly<T>}

const std::vector<Row>& rows() {
    static const std::vector<Row> r = {
        ROW(FCBEV7310SenseController),   ROW(SONYEH4300SenseController),    ROW(SONYCV7500SenseController),
        ROW(SONYCH3310SenseController),  ROW(CMD8100SenseController),       ROW(CMD8100_OldSenseController),
        ROW(CMD7300SenseController),     ROW(CMD8300SenseController),       ROW(HitachSenseController),
        ROW(HitachCompatSenseController), ROW(SC110N_CSenseController),     ROW(CMD7200SenseController),
        ROW(EffioSenseController),       ROW(ITNSenseController),           ROW(SeawolfSenseController),
        ROW(S2FisheyeSenseController),
        ROW(IT1SenseController),         ROW(IT1ZoomModuleSenseController), ROW(KestraISPSenseController),
        ROW(IIPC368ZoomSensorController), ROW(NoSensorUIController),
    };
    return r;
}

TEST(SensorTypesTest, EveryControllerHasANumberOfItsOwnOutsideTheReservedOnes) {
    std::set<int> seen;
    for (const Row& row : rows()) {
        EXPECT_TRUE(seen.insert(row.type).second) << row.name << " shares " << row.type;
        EXPECT_FALSE(SensorTypes::isReserved(row.type)) << row.name << " " << row.type;
    }
    // The table lists exactly the controllers' numbers.
    EXPECT_EQ(seen, std::set<int>(SensorTypes::all().begin(), SensorTypes::all().end()));
    EXPECT_EQ(SensorTypes::all().size(), seen.size());
    for (int reserved : {0, 4, 5, 6, 11, 16, 17, 19, 21, 24}) EXPECT_TRUE(SensorTypes::isReserved(reserved));
    EXPECT_FALSE(SensorTypes::isReserved(SensorTypes::S2Fisheye));
}

TEST(SensorTypesTest, TheFactoryByTypeBuildsEachController) {
    testutil::TempRoot root;
    for (const Row& row : rows()) {
        SafePointer<ISensorController> c = SensorTypeFactory::create(row.type);
        EXPECT_TRUE(row.is(c.get())) << row.name << " for " << row.type << ": got " << typeid(*c.get()).name();
        EXPECT_EQ(row.type, c->getSensorType()) << row.name;
    }
    for (int unknown : {0, 1, 17, 72, 93, 100, -1}) {
        SafePointer<ISensorController> c = SensorTypeFactory::create(unknown);
        EXPECT_TRUE(isExactly<NullSenseController>(c.get())) << unknown;
        EXPECT_EQ(0, c->getSensorType());
    }
}

TEST(SensorTypesTest, TheFisheyeBoardsFactoryStillBuildsTheFisheyeControllerOnly) {
    testutil::TempRoot root;
    for (int type : SensorTypes::all()) {
        SafePointer<ISensorController> c = SenseControllerFactory::create(type);
        if (type == SensorTypes::S2Fisheye)
            EXPECT_TRUE(isExactly<S2FisheyeSenseController>(c.get()));
        else
            EXPECT_TRUE(isExactly<NullSenseController>(c.get())) << type;
    }
}

}  // namespace
