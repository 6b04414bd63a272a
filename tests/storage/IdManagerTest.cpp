#include "storage/IdManager.h"

#include <gtest/gtest.h>

#include "storage/ControllerIdTable.h"

TEST(IdManagerTest, TypesOutsideOneToFourAreIgnored) {
    IdManager m;
    m.addParameterId(5, 1, 10);
    m.addParameterId(0, 1, 10);
    m.addParameterId(-1, 3);
    std::set<int> s;
    for (auto get : {&IdManager::getCommonIdList, &IdManager::getEspecialIdList, &IdManager::getSetOnlyIdList,
                     &IdManager::getKeepDefaultValueList}) {
        EXPECT_EQ((m.*get)(s), 1);
        EXPECT_TRUE(s.empty());
    }
    EXPECT_FALSE(m.isIdExist(3));
}

TEST(IdManagerTest, RangesIncludeBothEndsAndEmptyRangesEnterNothing) {
    IdManager m;
    m.addParameterId(1, 7, 7);
    m.addParameterId(1, 8, 7);
    std::set<int> s;
    m.getCommonIdList(s);
    EXPECT_EQ(s, (std::set<int>{7}));
    m.addParameterId(3, 20, 23);
    m.getSetOnlyIdList(s);
    EXPECT_EQ(s, (std::set<int>{20, 21, 22, 23}));
}

TEST(IdManagerTest, ClassificationPrecedence) {
    IdManager m;
    m.addParameterId(1, 5);
    m.addParameterId(4, 5);
    EXPECT_EQ(m.getIdType(5), 4);
    m.addParameterId(2, 6);
    m.addParameterId(3, 6);
    EXPECT_EQ(m.getIdType(6), 2);
    m.addParameterId(1, 7);
    m.addParameterId(2, 7);
    EXPECT_EQ(m.getIdType(7), 1);
    m.addParameterId(3, 8);
    EXPECT_EQ(m.getIdType(8), 3);
    EXPECT_EQ(m.getIdType(10000), 0);
    EXPECT_EQ(m.getIdType(10001), 0);
    EXPECT_TRUE(m.isIdExist(8));
    EXPECT_FALSE(m.isIdExist(9));
}

TEST(IdManagerTest, CopyingReplacesTheOutSet) {
    IdManager m;
    m.addParameterId(1, 1, 3);
    std::set<int> s{100, 200};
    m.getCommonIdList(s);
    EXPECT_EQ(s, (std::set<int>{1, 2, 3}));
    EXPECT_TRUE(IdManager::isIdExistInSet(2, s));
    EXPECT_FALSE(IdManager::isIdExistInSet(100, s));
}

TEST(IdManagerTest, ExtremeIdsDoNotOverflowTheRangeLoop) {
    IdManager m;
    m.addParameterId(1, 2147483646, 2147483647);
    EXPECT_EQ(m.getIdType(2147483647), 1);
    EXPECT_EQ(m.getIdType(2147483646), 1);
}

TEST(ControllerIdTableTest, FisheyeRangesComeFromTheTable) {
    IdManager m;
    ASSERT_TRUE(ControllerIdTable::registerIds("S2FisheyeSenseController", m));
    for (int id = 1; id <= 41; ++id) EXPECT_EQ(m.getIdType(id), 1) << id;
    EXPECT_EQ(m.getIdType(42), 0);
    for (int id = 43; id <= 53; ++id) EXPECT_EQ(m.getIdType(id), 3) << id;
    for (int id = 54; id <= 56; ++id) EXPECT_EQ(m.getIdType(id), 1) << id;
    EXPECT_EQ(m.getIdType(57), 0);
}

TEST(ControllerIdTableTest, EveryControllerIsListedAndUnknownNamesRegisterNothing) {
    EXPECT_EQ(ControllerIdTable::controllerCount(), 21u);  // the zoom board with masks besides
    IdManager m;
    EXPECT_FALSE(ControllerIdTable::registerIds("NoSuchController", m));
    EXPECT_FALSE(ControllerIdTable::registerIds(nullptr, m));
    EXPECT_FALSE(m.isIdExist(1));
    IdManager cmd;
    ASSERT_TRUE(ControllerIdTable::registerIds("CMD8100SenseController", cmd));
    EXPECT_EQ(cmd.getIdType(0), 1);
    EXPECT_EQ(cmd.getIdType(8), 0);
    EXPECT_EQ(cmd.getIdType(65), 4);
    EXPECT_EQ(cmd.getIdType(70), 3);
    std::set<int> especial;
    cmd.getEspecialIdList(especial);
    EXPECT_TRUE(especial.empty());
    for (size_t i = 0; i < ControllerIdTable::controllerCount(); ++i) {
        IdManager each;
        EXPECT_TRUE(ControllerIdTable::registerIds(ControllerIdTable::controllerName(i), each));
    }
}
