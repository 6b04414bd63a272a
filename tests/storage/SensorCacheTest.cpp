#include "storage/SensorCache.h"

#include <gtest/gtest.h>

#include <thread>

TEST(SensorCacheTest, SettingTwiceKeepsOnePairWithTheLastValue) {
    SensorCache c;
    EXPECT_EQ(c.setSensorValue(3, 1), 1);
    EXPECT_EQ(c.setSensorValue(3, 9), 1);
    std::string all;
    c.getAllSensorValues(all);
    EXPECT_EQ(all, "(3,9)");
    EXPECT_EQ(c.size(), 1u);
}

TEST(SensorCacheTest, IsEqualToCacheOnAnAbsentIdIsZeroEvenForZero) {
    SensorCache c;
    EXPECT_EQ(c.isEqualToCache(4, 0), 0);
    c.setSensorValue(4, 0);
    EXPECT_EQ(c.isEqualToCache(4, 0), 1);
    EXPECT_EQ(c.isEqualToCache(4, 1), 0);
}

TEST(SensorCacheTest, GetValueLeavesOutputAloneWhenAbsent) {
    SensorCache c;
    int v = 77;
    EXPECT_EQ(c.getSensorValue(1, v), 0);
    EXPECT_EQ(v, 77);
    EXPECT_EQ(c.isIdExist(1), 0);
}

TEST(SensorCacheTest, GetSensorValuesFailsWholeWhenOneIdIsAbsent) {
    SensorCache c;
    c.setSensorValues("(1,10)(2,20)(3,-30)");
    std::string out = "previous";
    EXPECT_EQ(c.getSensorValues(std::set<int>{1, 4, 3}, out), 0);
    EXPECT_EQ(out, "previous");
    EXPECT_EQ(c.getSensorValues(std::set<int>{3, 1}, out), 1);
    EXPECT_EQ(out, "(1,10)(3,-30)");
    EXPECT_EQ(c.getSensorValues(std::set<int>{}, out), 1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(c.getSensorValues(std::string("(2)(1)"), out), 1);
    EXPECT_EQ(out, "(1,10)(2,20)");
}

TEST(SensorCacheTest, BadIdListIsReported) {
    SensorCache c;
    std::string out = "x";
    testing::internal::CaptureStdout();
    EXPECT_EQ(c.getSensorValues(std::string("(1)(a)"), out), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "________SensorParameterParser::parseParameterIdList((1)(a)) failed\n");
    EXPECT_EQ(out, "x");
}

TEST(SensorCacheTest, SetSensorValuesAddsAndOverwritesAndReportsBadText) {
    SensorCache c;
    c.setSensorValue(9, 9);
    EXPECT_EQ(c.setSensorValues("(1,1)(9,10)"), 1);
    std::string all;
    c.getAllSensorValues(all);
    EXPECT_EQ(all, "(1,1)(9,10)");
    testing::internal::CaptureStdout();
    EXPECT_EQ(c.setSensorValues("(1,"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "parseSensorParameter failed\n");
    EXPECT_EQ(c.setSensorValues(""), 1);
}

TEST(SensorCacheTest, IterationInAscendingOrderEndsAfterTheLastPair) {
    SensorCache c;
    int id = 0, v = 0;
    EXPECT_EQ(c.getFirstIdValue(id, v), 0);
    EXPECT_EQ(c.getNextIdValue(id, v), 0);
    c.setSensorValues("(5,50)(-2,7)(3,30)");
    ASSERT_EQ(c.getFirstIdValue(id, v), 1);
    EXPECT_EQ(id, -2);
    ASSERT_EQ(c.getNextIdValue(id, v), 1);
    EXPECT_EQ(id, 3);
    ASSERT_EQ(c.getNextIdValue(id, v), 1);
    EXPECT_EQ(id, 5);
    EXPECT_EQ(v, 50);
    EXPECT_EQ(c.getNextIdValue(id, v), 0);
    EXPECT_EQ(c.getNextIdValue(id, v), 0);
    c.clear();
    EXPECT_EQ(c.size(), 0u);
    EXPECT_EQ(c.getFirstIdValue(id, v), 0);
}

TEST(SensorCacheTest, TwoThreadsHammeringOneCache) {
    SensorCache c;
    auto writer = [&c](int base) {
        for (int i = 0; i < 2000; ++i) {
            c.setSensorValue(base + i % 50, i);
            std::string s;
            c.getAllSensorValues(s);
            int v = 0;
            c.getSensorValue(base, v);
            c.isEqualToCache(base + 1, i);
            int id = 0;
            for (int more = c.getFirstIdValue(id, v); more; more = c.getNextIdValue(id, v)) {
            }
        }
    };
    std::thread a(writer, 0), b(writer, 1000);
    a.join();
    b.join();
    EXPECT_EQ(c.size(), 100u);
    int v = 0;
    EXPECT_EQ(c.getSensorValue(1049, v), 1);
    EXPECT_EQ(v, 1999);
}
