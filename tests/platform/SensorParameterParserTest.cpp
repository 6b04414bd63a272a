#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <set>
#include <string>

#include "platform/SensorParameterParser.h"

using Map = std::map<int, int>;

TEST(SensorParameterParserTest, ParsesBackToBackItems) {
    Map m;
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter("(3,50)(7,1)", m));
    EXPECT_EQ(m, (Map{{3, 50}, {7, 1}}));
}

TEST(SensorParameterParserTest, NegativeNumbersAndLimits) {
    Map m;
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter("(-1,-5)(2147483647,-2147483648)(0,0)", m));
    EXPECT_EQ(m, (Map{{-1, -5}, {INT_MAX, INT_MIN}, {0, 0}}));
    Map z;
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter("(0007,-000012)", z));
    EXPECT_EQ(z, (Map{{7, -12}}));
}

TEST(SensorParameterParserTest, NumbersAroundNineAndTenDigits) {
    Map m;
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter(
        "(999999999,1000000000)(1999999999,-1999999999)(000000000002147483647,-0000000000002147483648)", m));
    EXPECT_EQ(m, (Map{{999999999, 1000000000}, {1999999999, -1999999999}, {INT_MAX, INT_MIN}}));
    // Ten digits beyond the 32-bit range, including ones that wrap to a small value in 32 bits.
    for (const char* text : {"(2147483650,1)", "(4294967296,1)", "(4294967297,1)", "(1,-4294967295)",
                             "(12345678901,1)", "(1,9999999999)"}) {
        Map k{{42, 42}};
        EXPECT_FALSE(SensorParameterParser::parseSensorParameter(text, k)) << text;
        EXPECT_EQ(k, (Map{{42, 42}})) << text;
    }
}

TEST(SensorParameterParserTest, BlanksBetweenTokens) {
    Map m;
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter(" \t( 3 ,\n50 )\r\n ( 7,1)\v\f ", m));
    EXPECT_EQ(m, (Map{{3, 50}, {7, 1}}));
}

TEST(SensorParameterParserTest, EmptyTextIsAnEmptyList) {
    Map m;
    EXPECT_TRUE(SensorParameterParser::parseSensorParameter("", m));
    EXPECT_TRUE(m.empty());
    EXPECT_TRUE(SensorParameterParser::parseSensorParameter("   \n", m));
    EXPECT_TRUE(m.empty());
}

TEST(SensorParameterParserTest, LaterItemOverwritesAndParsingAddsIntoTheMap) {
    Map m{{1, 1}, {9, 9}};
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter("(5,1)(1,2)(5,3)", m));
    EXPECT_EQ(m, (Map{{1, 2}, {5, 3}, {9, 9}}));
}

TEST(SensorParameterParserTest, MalformedTextFailsAndChangesNothing) {
    const char* bad[] = {
        "(1,2",              // unbalanced
        "1,2)",              // no opening paren
        "((1,2)",            // doubled paren
        "(1,2))",            // extra closing paren
        "(1 2)",             // missing comma
        "(1,)",              // missing value
        "(,2)",              // missing id
        "()",                // empty item
        "(a,2)",             // letters
        "(1,2x)",            // trailing letter
        "(1,2)x",            // junk after items
        "(1,2);(3,4)",       // separator
        "(1,2),(3,4)",       // separator
        "(2147483648,1)",    // id overflow
        "(1,2147483648)",    // value overflow
        "(1,-2147483649)",   // value underflow
        "(1,99999999999999999999999)",
        "(--1,2)",           // double sign
        "(1,--1)",           // double sign
        "(-,1)",             // sign alone
        "(- 1,2)",           // blank inside the number
        "(+1,2)",            // plus not accepted
        "(1,2,3)",           // three numbers
        "(1.5,2)",           // not an integer
        "(0x10,1)",          // hex
        "(1,2)\xff",         // high byte
        "(\xb1,2)",          // high byte that is a digit when char arithmetic goes wrong
    };
    for (const char* text : bad) {
        Map m{{42, 42}};
        EXPECT_FALSE(SensorParameterParser::parseSensorParameter(text, m)) << text;
        EXPECT_EQ(m, (Map{{42, 42}})) << text;
    }
    // An embedded NUL is not a blank, and it does not end the text, wherever it stands.
    const std::string withNul[] = {std::string("(1,2)\0(3,4)", 11), std::string("(1,2)\0", 6),
                                   std::string("(1\0,2)", 6), std::string("(1,2\0)", 6),
                                   std::string("\0", 1), std::string("(\0", 2)};
    for (const std::string& text : withNul) {
        Map m;
        EXPECT_FALSE(SensorParameterParser::parseSensorParameter(text, m)) << text.size();
        EXPECT_TRUE(m.empty());
        SensorParameterParser::Pairs pairs;
        EXPECT_FALSE(SensorParameterParser::parseSensorParameter(text, pairs)) << text.size();
        EXPECT_TRUE(pairs.empty());
    }
    std::set<int> ids;
    EXPECT_FALSE(SensorParameterParser::parseParameterIdList(std::string("(1)\0", 4), ids));
    EXPECT_FALSE(SensorParameterParser::parseParameterIdList(std::string("(1\0)", 4), ids));
    EXPECT_TRUE(ids.empty());
}

TEST(SensorParameterParserTest, CreatesTextInAscendingIdOrder) {
    Map m{{7, 1}, {3, 50}, {-2, INT_MIN}, {INT_MAX, -1}};
    std::string text = "old";
    ASSERT_TRUE(SensorParameterParser::createSensorParameterString(m, text));
    EXPECT_EQ(text, "(-2,-2147483648)(3,50)(7,1)(2147483647,-1)");
    EXPECT_EQ(SensorParameterParser::createSensorParameterString(m), text);
    EXPECT_EQ(SensorParameterParser::createSensorParameterString(Map{}), "");
}

TEST(SensorParameterParserTest, RoundTrip) {
    Map m;
    for (int i = -500; i < 3000; i += 7) m[i] = i * 1000 - 3;
    std::string text = SensorParameterParser::createSensorParameterString(m);
    Map back;
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter(text, back));
    EXPECT_EQ(back, m);
}

TEST(SensorParameterParserTest, ParsesIdLists) {
    std::set<int> ids{99};
    ASSERT_TRUE(SensorParameterParser::parseParameterIdList("(1)(2)(17) ( -3 )(2)", ids));
    EXPECT_EQ(ids, (std::set<int>{-3, 1, 2, 17, 99}));
    std::set<int> empty;
    EXPECT_TRUE(SensorParameterParser::parseParameterIdList("", empty));
    EXPECT_TRUE(empty.empty());
    std::string text;
    ASSERT_TRUE(SensorParameterParser::createParameterIdListString(std::set<int>{17, 1, -3}, text));
    EXPECT_EQ(text, "(-3)(1)(17)");
}

TEST(SensorParameterParserTest, MalformedIdListsFailAndChangeNothing) {
    const char* bad[] = {"(1", "1)", "(1)(", "(1,2)", "(a)", "()", "(2147483648)", "(--1)", "(1)x", "(1)(2)]"};
    for (const char* text : bad) {
        std::set<int> ids{5};
        EXPECT_FALSE(SensorParameterParser::parseParameterIdList(text, ids)) << text;
        EXPECT_EQ(ids, (std::set<int>{5})) << text;
    }
}
