#include <gtest/gtest.h>

#include "storage/IdManager.h"

TEST(IdManagerTypeTest, TypesAnsweredFromTheFlatListFollowThePriorityOfTheSets) {
    IdManager m;
    m.addParameterId(IdManager::TypeSetOnly, 50);
    m.addParameterId(IdManager::TypeCommon, 10, 20);
    m.addParameterId(IdManager::TypeEspecial, 5);          // registered out of order
    m.addParameterId(IdManager::TypeKeepDefault, 15);      // also common: keep-default wins
    m.addParameterId(IdManager::TypeEspecial, 12);         // also common: common wins
    m.addParameterId(IdManager::TypeCommon, 50);           // also set-only: common wins
    m.addParameterId(IdManager::TypeCommon, -3);
    EXPECT_EQ(m.getIdType(5), IdManager::TypeEspecial);
    EXPECT_EQ(m.getIdType(10), IdManager::TypeCommon);
    EXPECT_EQ(m.getIdType(15), IdManager::TypeKeepDefault);
    EXPECT_EQ(m.getIdType(12), IdManager::TypeCommon);
    EXPECT_EQ(m.getIdType(50), IdManager::TypeCommon);
    EXPECT_EQ(m.getIdType(-3), IdManager::TypeCommon);
    EXPECT_EQ(m.getIdType(21), IdManager::TypeUnknown);
    EXPECT_EQ(m.getIdType(4), IdManager::TypeUnknown);
    EXPECT_EQ(m.commonIds().size(), 13u);
    EXPECT_EQ(m.especialIds().size(), 2u);
}
