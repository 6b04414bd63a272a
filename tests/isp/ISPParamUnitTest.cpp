#include <gtest/gtest.h>

#include <climits>

#include "isp/ISPParamUnit.h"

TEST(ISPParamUnitTest, DefaultBandIsEmptyAndHoldsNothing) {
    ISPParamUnit objBand;
    std::string strName = "x";
    int nMin = 5, nMax = 5, nValue = 77;
    EXPECT_TRUE(objBand.getName(strName));
    EXPECT_EQ("", strName);
    EXPECT_TRUE(objBand.getMin(nMin));
    EXPECT_TRUE(objBand.getMax(nMax));
    EXPECT_EQ(0, nMin);
    EXPECT_EQ(0, nMax);
    EXPECT_FALSE(objBand.getParam("EE", nValue));
    EXPECT_EQ(77, nValue);
    EXPECT_FALSE(objBand.contains(0));
}

TEST(ISPParamUnitTest, SettersAndGetters) {
    ISPParamUnit objBand;
    objBand.setName("g1");
    objBand.setMin(-20);
    objBand.setMax(40);
    std::string strName;
    int nMin = 0, nMax = 0;
    EXPECT_TRUE(objBand.getName(strName));
    EXPECT_TRUE(objBand.getMin(nMin));
    EXPECT_TRUE(objBand.getMax(nMax));
    EXPECT_EQ("g1", strName);
    EXPECT_EQ(-20, nMin);
    EXPECT_EQ(40, nMax);
}

TEST(ISPParamUnitTest, LaterSettingOfSameNameReplacesEarlier) {
    ISPParamUnit objBand("low", 0, 16);
    objBand.setParam("EE", 3);
    objBand.setParam("DC", -1);
    objBand.setParam("EE", 9);
    int nValue = 0;
    ASSERT_TRUE(objBand.getParam("EE", nValue));
    EXPECT_EQ(9, nValue);
    ASSERT_TRUE(objBand.getParam("DC", nValue));
    EXPECT_EQ(-1, nValue);
    EXPECT_EQ(2u, objBand.params().size());
}

TEST(ISPParamUnitTest, SettingNamesAreCaseSensitive) {
    ISPParamUnit objBand("b", 0, 1);
    objBand.setParam("EE", 4);
    int nValue = -5;
    EXPECT_FALSE(objBand.getParam("ee", nValue));
    EXPECT_EQ(-5, nValue);
}

TEST(ISPParamUnitTest, ContainsIsHalfOpenAndSigned) {
    ISPParamUnit objBand("neg", -10, -2);
    EXPECT_FALSE(objBand.contains(-11));
    EXPECT_TRUE(objBand.contains(-10));
    EXPECT_TRUE(objBand.contains(-3));
    EXPECT_FALSE(objBand.contains(-2));
    EXPECT_FALSE(objBand.contains(5));

    ISPParamUnit objWide("wide", INT_MIN, INT_MAX);
    EXPECT_TRUE(objWide.contains(INT_MIN));
    EXPECT_TRUE(objWide.contains(0));
    EXPECT_FALSE(objWide.contains(INT_MAX));
}

TEST(ISPParamUnitTest, CopyIsIndependent) {
    ISPParamUnit objBand("a", 1, 2);
    objBand.setParam("TM", 7);
    ISPParamUnit objCopy = objBand;
    objCopy.setParam("TM", 8);
    objCopy.setName("b");
    int nValue = 0;
    ASSERT_TRUE(objBand.getParam("TM", nValue));
    EXPECT_EQ(7, nValue);
    ASSERT_TRUE(objCopy.getParam("TM", nValue));
    EXPECT_EQ(8, nValue);
    EXPECT_EQ("a", objBand.name());
}
