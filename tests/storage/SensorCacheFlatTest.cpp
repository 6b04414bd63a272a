#include <gtest/gtest.h>

#include <set>
#include <string>

#include "storage/SensorCache.h"

using Pairs = SensorCache::Pairs;

TEST(SensorCacheFlatTest, CompareToCacheTellsAbsentDifferentAndEqual) {
    SensorCache c;
    EXPECT_EQ(c.compareToCache(3, 0), SensorCache::Absent);
    c.setSensorValue(3, 5);
    EXPECT_EQ(c.compareToCache(3, 5), SensorCache::Equal);
    EXPECT_EQ(c.compareToCache(3, 6), SensorCache::Different);
    EXPECT_EQ(c.compareToCache(4, 5), SensorCache::Absent);
}

TEST(SensorCacheFlatTest, ReplaceSensorValuesClearsParsesAndHandsBackThePairs) {
    SensorCache c;
    c.setSensorValue(1, 1);
    Pairs parsed{{99, 99}};
    EXPECT_EQ(c.replaceSensorValues("(5,50)(2,20)", parsed), 1);
    EXPECT_EQ(parsed, (Pairs{{2, 20}, {5, 50}}));
    std::string all;
    c.getAllSensorValues(all);
    EXPECT_EQ(all, "(2,20)(5,50)");
    testing::internal::CaptureStdout();
    EXPECT_EQ(c.replaceSensorValues("(1,", parsed), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "parseSensorParameter failed\n");
    EXPECT_TRUE(parsed.empty());
    EXPECT_EQ(c.size(), 0u);
}

TEST(SensorCacheFlatTest, CollectTakesOnlyTheIdsWithAValue) {
    SensorCache c;
    c.setSensorValues("(1,10)(3,30)(7,70)");
    Pairs out{{0, 0}};
    c.collectSensorValues(std::set<int>{0, 1, 2, 3, 8}, out);
    EXPECT_EQ(out, (Pairs{{1, 10}, {3, 30}}));
    c.collectSensorValues(std::set<int>{}, out);
    EXPECT_TRUE(out.empty());
}

TEST(SensorCacheFlatTest, SkipEqualStopsAtTheFirstPairTheCacheDoesNotHold) {
    SensorCache c;
    c.setSensorValues("(1,1)(2,2)(3,3)(4,4)");
    const Pairs pairs{{1, 1}, {2, 2}, {3, 30}, {4, 4}, {5, 5}};
    EXPECT_EQ(c.skipEqual(pairs, 0), 2u);
    EXPECT_EQ(c.skipEqual(pairs, 3), 4u);  // 5 is absent
    EXPECT_EQ(c.skipEqual(Pairs{{1, 1}, {4, 4}}, 0), 2u);
    EXPECT_EQ(c.skipEqual(pairs, 5), 5u);
}

TEST(SensorCacheFlatTest, StoreAndSkipStoresAsToldThenSkips) {
    SensorCache c;
    c.setSensorValues("(1,1)(3,3)");
    const Pairs pairs{{2, 2}, {3, 3}, {4, 4}};
    // A new id is stored; 3 is held already, 4 is not.
    EXPECT_EQ(c.storeAndSkip(2, 2, SensorCache::StoreValue, pairs, 1), 2u);
    EXPECT_EQ(c.compareToCache(2, 2), SensorCache::Equal);
    // Nothing stored.
    EXPECT_EQ(c.storeAndSkip(4, 4, SensorCache::StoreNothing, pairs, 3), 3u);
    EXPECT_EQ(c.isIdExist(4), 0);
    // Stored only while absent.
    c.storeAndSkip(4, 40, SensorCache::StoreIfAbsent, pairs, 3);
    c.storeAndSkip(4, 41, SensorCache::StoreIfAbsent, pairs, 3);
    EXPECT_EQ(c.compareToCache(4, 40), SensorCache::Equal);
    // An existing value is overwritten.
    c.storeAndSkip(1, 11, SensorCache::StoreValue, pairs, 3);
    std::string all;
    c.getAllSensorValues(all);
    EXPECT_EQ(all, "(1,11)(2,2)(3,3)(4,40)");
}

TEST(SensorCacheFlatTest, IterationGoesOnFromTheCurrentIdWhenPairsAreAddedMeanwhile) {
    SensorCache c;
    c.setSensorValues("(2,2)(4,4)(6,6)");
    int id = 0, v = 0;
    ASSERT_EQ(c.getFirstIdValue(id, v), 1);
    ASSERT_EQ(c.getNextIdValue(id, v), 1);
    EXPECT_EQ(id, 4);
    c.setSensorValue(1, 1);  // before the cursor: not visited
    c.setSensorValue(5, 5);  // after it: visited
    ASSERT_EQ(c.getNextIdValue(id, v), 1);
    EXPECT_EQ(id, 5);
    ASSERT_EQ(c.getNextIdValue(id, v), 1);
    EXPECT_EQ(id, 6);
    EXPECT_EQ(c.getNextIdValue(id, v), 0);
}

TEST(SensorCacheFlatTest, LookupsInAnyOrderFindEveryPair) {
    SensorCache c;
    for (int id = 100; id >= 0; id -= 3) c.setSensorValue(id, id * 2);
    for (int id : {1, 100, 4, 97, 3, 0, 52, 55, 58, 50}) {
        int v = -1;
        const bool held = id % 3 == 1;
        EXPECT_EQ(c.getSensorValue(id, v), held ? 1 : 0) << id;
        if (held) {
            EXPECT_EQ(v, id * 2) << id;
        }
    }
    std::string out;
    EXPECT_EQ(c.getSensorValues(std::string("(100)(1)(4)"), out), 1);
    EXPECT_EQ(out, "(1,2)(4,8)(100,200)");
}
