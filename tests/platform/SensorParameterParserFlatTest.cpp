#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <string>
#include <vector>

#include "platform/SensorParameterParser.h"

using Pairs = SensorParameterParser::Pairs;

TEST(SensorParameterParserFlatTest, AscendingTextIsTakenAsItComes) {
    Pairs p;
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter(std::string("(1,10)(2,-20)(30,3)"), p));
    EXPECT_EQ(p, (Pairs{{1, 10}, {2, -20}, {30, 3}}));
}

TEST(SensorParameterParserFlatTest, UnorderedAndRepeatedIdsEndAscendingWithTheLastValue) {
    Pairs p;
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter(std::string(" (5,1) (-2,7)\n(5,2)(3,3)(-2,8) "), p));
    EXPECT_EQ(p, (Pairs{{-2, 8}, {3, 3}, {5, 2}}));
}

TEST(SensorParameterParserFlatTest, AddsIntoWhatIsThereAndOverwritesItsIds) {
    Pairs p{{1, 1}, {4, 4}, {9, 9}};
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter(std::string("(4,40)(2,20)(10,100)"), p));
    EXPECT_EQ(p, (Pairs{{1, 1}, {2, 20}, {4, 40}, {9, 9}, {10, 100}}));
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter(std::string("(11,0)(12,0)"), p));
    EXPECT_EQ(p.size(), 7u);
    EXPECT_EQ(p.back(), std::make_pair(12, 0));
}

TEST(SensorParameterParserFlatTest, MalformedTextLeavesTheListAsItWas) {
    Pairs p{{1, 1}};
    for (const char* bad : {"(2,2)(3,", "(2,2)x", "(+2,2)", "(2147483648,1)", "(1,-2147483649)", "((1,1)"}) {
        EXPECT_FALSE(SensorParameterParser::parseSensorParameter(std::string(bad), p)) << bad;
        EXPECT_EQ(p, (Pairs{{1, 1}})) << bad;
    }
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter(std::string("(-2147483648,2147483647)"), p));
    EXPECT_EQ(p.front(), std::make_pair(INT_MIN, INT_MAX));
}

TEST(SensorParameterParserFlatTest, AgreesWithTheMapForm) {
    const std::string texts[] = {"", "  ", "(3,1)(1,3)(2,2)(1,4)", "(0,0)", "(0000000001,-0000000002)",
                                 "(7, 8 )\t( -9 ,10)"};
    for (const std::string& text : texts) {
        Pairs flat;
        std::map<int, int> tree;
        ASSERT_TRUE(SensorParameterParser::parseSensorParameter(text, flat)) << text;
        ASSERT_TRUE(SensorParameterParser::parseSensorParameter(text, tree)) << text;
        EXPECT_EQ(flat, Pairs(tree.begin(), tree.end())) << text;
        std::string a, b;
        SensorParameterParser::createSensorParameterString(flat, a);
        SensorParameterParser::createSensorParameterString(tree, b);
        EXPECT_EQ(a, b) << text;
    }
}

TEST(SensorParameterParserFlatTest, CreateReplacesTheOutputWithEveryPair) {
    std::string out = "old";
    SensorParameterParser::createSensorParameterString(Pairs{{-1, INT_MIN}, {2, 0}}, out);
    EXPECT_EQ(out, "(-1,-2147483648)(2,0)");
    SensorParameterParser::createSensorParameterString(Pairs{}, out);
    EXPECT_EQ(out, "");
}

TEST(SensorParameterParserFlatTest, CreateWritesLongListsWhole) {
    // Enough pairs of the longest text to need several blocks of the writer.
    for (int count : {0, 1, 31, 32, 33, 64, 65, 1000}) {
        Pairs flat;
        std::map<int, int> tree;
        for (int i = 0; i < count; ++i) {
            const int id = INT_MIN + i, value = i % 2 ? INT_MIN : INT_MAX - i;
            flat.emplace_back(id, value);
            tree[id] = value;
        }
        std::string a = "stale", b;
        SensorParameterParser::createSensorParameterString(flat, a);
        SensorParameterParser::createSensorParameterString(tree, b);
        EXPECT_EQ(a, b) << count;
        Pairs back;
        ASSERT_TRUE(SensorParameterParser::parseSensorParameter(a, back)) << count;
        EXPECT_EQ(back, flat) << count;
    }
}

TEST(SensorParameterParserFlatTest, IdListEndsAscendingWithoutRepeats) {
    std::vector<int> ids{4};
    ASSERT_TRUE(SensorParameterParser::parseParameterIdList(std::string("(9)(1)(4)(9) (-3)"), ids));
    EXPECT_EQ(ids, (std::vector<int>{-3, 1, 4, 9}));
    EXPECT_FALSE(SensorParameterParser::parseParameterIdList(std::string("(1)(2,3)"), ids));
    EXPECT_EQ(ids, (std::vector<int>{-3, 1, 4, 9}));
}

TEST(SensorParameterParserFlatTest, FindPair) {
    const Pairs p{{-5, 1}, {0, 2}, {7, 3}};
    ASSERT_NE(SensorParameterParser::findPair(p, 7), nullptr);
    EXPECT_EQ(SensorParameterParser::findPair(p, 7)->second, 3);
    EXPECT_EQ(SensorParameterParser::findPair(p, -5)->second, 1);
    EXPECT_EQ(SensorParameterParser::findPair(p, 1), nullptr);
    EXPECT_EQ(SensorParameterParser::findPair(Pairs{}, 1), nullptr);
}
