#include <gtest/gtest.h>

#include "isp/ISPParam.h"

namespace {

int lookup(const ISPParam& objParam, const std::string& strTable, const std::string& strName, int nKey,
           bool& bFound) {
    int nValue = -100;
    bFound = objParam.getParam(strTable, strName, nKey, nValue);
    return nValue;
}

}  // namespace

TEST(ISPParamTest, UnknownTableFailsLookup) {
    ISPParam objParam;
    int nValue = 42;
    EXPECT_FALSE(objParam.getParam("GAIN", "EE", 0, nValue));
    EXPECT_EQ(42, nValue);
}

TEST(ISPParamTest, AdjacentBandsUpperBoundBelongsToNextBand) {
    ISPParam objParam;
    ASSERT_TRUE(objParam.setParam("GAIN", "low", 0, 16, "EE", 10));
    ASSERT_TRUE(objParam.setParam("GAIN", "high", 16, 32, "EE", 20));
    bool bFound = false;
    EXPECT_EQ(10, lookup(objParam, "GAIN", "EE", 0, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(10, lookup(objParam, "GAIN", "EE", 15, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(20, lookup(objParam, "GAIN", "EE", 16, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(20, lookup(objParam, "GAIN", "EE", 31, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(-100, lookup(objParam, "GAIN", "EE", 32, bFound));
    EXPECT_FALSE(bFound);
    EXPECT_EQ(-100, lookup(objParam, "GAIN", "EE", -1, bFound));
    EXPECT_FALSE(bFound);
}

TEST(ISPParamTest, OverlappingBandsFirstInOrderWins) {
    ISPParam objParam;
    objParam.setParam("GAIN", "wide", 0, 100, "DC", 1);
    objParam.setParam("GAIN", "narrow", 10, 20, "DC", 2);
    bool bFound = false;
    EXPECT_EQ(1, lookup(objParam, "GAIN", "DC", 15, bFound));
    EXPECT_TRUE(bFound);

    ISPParam objOther;
    objOther.setParam("GAIN", "narrow", 10, 20, "DC", 2);
    objOther.setParam("GAIN", "wide", 0, 100, "DC", 1);
    EXPECT_EQ(2, lookup(objOther, "GAIN", "DC", 15, bFound));
    EXPECT_EQ(1, lookup(objOther, "GAIN", "DC", 25, bFound));
    EXPECT_TRUE(bFound);
}

TEST(ISPParamTest, RepeatedBandNameMergesIntoFirstAndKeepsItsBounds) {
    ISPParam objParam;
    objParam.setParam("GAIN", "g1", 0, 10, "EE", 5);
    objParam.setParam("GAIN", "g2", 10, 20, "EE", 6);
    objParam.setParam("GAIN", "g1", 50, 60, "A0", 7);
    const std::vector<ISPParamUnit>& vecBands = objParam.tables().at("GAIN");
    ASSERT_EQ(2u, vecBands.size());
    EXPECT_EQ("g1", vecBands[0].name());
    EXPECT_EQ("g2", vecBands[1].name());
    int nMin = -1, nMax = -1;
    vecBands[0].getMin(nMin);
    vecBands[0].getMax(nMax);
    EXPECT_EQ(0, nMin);
    EXPECT_EQ(10, nMax);
    bool bFound = false;
    EXPECT_EQ(7, lookup(objParam, "GAIN", "A0", 5, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(5, lookup(objParam, "GAIN", "EE", 5, bFound));
    EXPECT_TRUE(bFound);
    // The later bounds were not taken over.
    lookup(objParam, "GAIN", "A0", 55, bFound);
    EXPECT_FALSE(bFound);
}

TEST(ISPParamTest, BandNamesCompareExactly) {
    ISPParam objParam;
    objParam.setParam("GAIN", "Low", 0, 10, "EE", 1);
    objParam.setParam("GAIN", "low", 10, 20, "EE", 2);
    EXPECT_EQ(2u, objParam.tables().at("GAIN").size());
}

TEST(ISPParamTest, MatchedBandWithoutSettingFailsEvenIfLaterBandHasIt) {
    ISPParam objParam;
    objParam.setParam("GAIN", "first", 0, 16, "DC", 3);
    objParam.setParam("GAIN", "second", 0, 32, "EE", 12);
    bool bFound = true;
    EXPECT_EQ(-100, lookup(objParam, "GAIN", "EE", 8, bFound));
    EXPECT_FALSE(bFound);
    EXPECT_EQ(3, lookup(objParam, "GAIN", "DC", 8, bFound));
    EXPECT_TRUE(bFound);
    // Outside the first band the second one decides.
    EXPECT_EQ(12, lookup(objParam, "GAIN", "EE", 20, bFound));
    EXPECT_TRUE(bFound);
}

TEST(ISPParamTest, TablesAreIndependent) {
    ISPParam objParam;
    objParam.setParam("DN", "night", 0, 1, "EE", 1);
    objParam.setParam("DN", "day", 1, 2, "EE", 2);
    objParam.setParam("GAIN", "all", 0, 100, "EE", 50);
    bool bFound = false;
    EXPECT_EQ(1, lookup(objParam, "DN", "EE", 0, bFound));
    EXPECT_EQ(2, lookup(objParam, "DN", "EE", 1, bFound));
    EXPECT_EQ(50, lookup(objParam, "GAIN", "EE", 1, bFound));
    lookup(objParam, "dn", "EE", 1, bFound);
    EXPECT_FALSE(bFound);
}

TEST(ISPParamTest, NegativeKeysAndBoundsCompareSigned) {
    ISPParam objParam;
    objParam.setParam("T", "neg", -100, -10, "EE", -1);
    objParam.setParam("T", "around", -10, 10, "EE", 0);
    bool bFound = false;
    EXPECT_EQ(-1, lookup(objParam, "T", "EE", -100, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(-1, lookup(objParam, "T", "EE", -11, bFound));
    EXPECT_EQ(0, lookup(objParam, "T", "EE", -10, bFound));
    EXPECT_EQ(0, lookup(objParam, "T", "EE", 9, bFound));
    lookup(objParam, "T", "EE", -101, bFound);
    EXPECT_FALSE(bFound);
    lookup(objParam, "T", "EE", 10, bFound);
    EXPECT_FALSE(bFound);
}

TEST(ISPParamTest, InvertedOrEmptyBandNeverMatches) {
    ISPParam objParam;
    objParam.setParam("T", "empty", 5, 5, "EE", 1);
    objParam.setParam("T", "inverted", 20, 10, "EE", 2);
    bool bFound = true;
    lookup(objParam, "T", "EE", 5, bFound);
    EXPECT_FALSE(bFound);
    lookup(objParam, "T", "EE", 15, bFound);
    EXPECT_FALSE(bFound);
}

TEST(ISPParamTest, EnableFlags) {
    ISPParam objParam;
    bool bEnable = true;
    EXPECT_FALSE(objParam.getEnableFlag("GAIN", bEnable));
    EXPECT_TRUE(bEnable);
    EXPECT_TRUE(objParam.setEnableFlag("GAIN", false));
    ASSERT_TRUE(objParam.getEnableFlag("GAIN", bEnable));
    EXPECT_FALSE(bEnable);
    EXPECT_TRUE(objParam.setEnableFlag("GAIN", true));
    ASSERT_TRUE(objParam.getEnableFlag("GAIN", bEnable));
    EXPECT_TRUE(bEnable);
    EXPECT_FALSE(objParam.getEnableFlag("DN", bEnable));
    // A flag is independent of the table's bands.
    objParam.setParam("DN", "day", 1, 2, "EE", 1);
    EXPECT_FALSE(objParam.getEnableFlag("DN", bEnable));
}

TEST(ISPParamTest, ClearEmptiesBandsAndFlags) {
    ISPParam objParam;
    objParam.setEnableFlag("GAIN", true);
    objParam.setParam("GAIN", "all", 0, 100, "EE", 50);
    ASSERT_FALSE(objParam.empty());
    objParam.clear();
    EXPECT_TRUE(objParam.empty());
    bool bEnable = false;
    int nValue = 0;
    EXPECT_FALSE(objParam.getEnableFlag("GAIN", bEnable));
    EXPECT_FALSE(objParam.getParam("GAIN", "EE", 10, nValue));
    // Usable again after the clear.
    objParam.setParam("GAIN", "all", 0, 10, "EE", 4);
    EXPECT_TRUE(objParam.getParam("GAIN", "EE", 3, nValue));
    EXPECT_EQ(4, nValue);
}

TEST(ISPParamTest, CopyIsDeep) {
    ISPParam objParam;
    objParam.setEnableFlag("GAIN", true);
    objParam.setParam("GAIN", "all", 0, 100, "EE", 50);
    ISPParam objCopy = objParam;
    objParam.setParam("GAIN", "all", 0, 100, "EE", 51);
    objParam.setEnableFlag("GAIN", false);
    int nValue = 0;
    bool bEnable = false;
    ASSERT_TRUE(objCopy.getParam("GAIN", "EE", 1, nValue));
    EXPECT_EQ(50, nValue);
    ASSERT_TRUE(objCopy.getEnableFlag("GAIN", bEnable));
    EXPECT_TRUE(bEnable);
}
