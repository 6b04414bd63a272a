#include "platform/IntFormat.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <random>
#include <string>

namespace {
std::string textOf(int v) {
    char buf[IntFormat::kMaxLength];
    return std::string(buf, IntFormat::toText(v, buf));
}
std::string printfOf(int v) {
    char buf[16];
    std::snprintf(buf, sizeof(buf), "%d", v);
    return buf;
}
}  // namespace

TEST(IntFormatTest, SmallNumbersAndTheirNegatives) {
    EXPECT_EQ(textOf(0), "0");
    EXPECT_EQ(textOf(7), "7");
    EXPECT_EQ(textOf(-7), "-7");
    EXPECT_EQ(textOf(10), "10");
    EXPECT_EQ(textOf(-10), "-10");
    EXPECT_EQ(textOf(99), "99");
    EXPECT_EQ(textOf(100), "100");
    EXPECT_EQ(textOf(-100), "-100");
    EXPECT_EQ(textOf(1000000000), "1000000000");
}

TEST(IntFormatTest, BothEndsOfTheIntRangeFitTheBuffer) {
    EXPECT_EQ(textOf(INT_MAX), "2147483647");
    EXPECT_EQ(textOf(INT_MIN), "-2147483648");
    EXPECT_EQ(textOf(INT_MIN + 1), "-2147483647");
    EXPECT_EQ(textOf(INT_MIN).size(), IntFormat::kMaxLength);
}

TEST(IntFormatTest, WritesWhatPrintfWrites) {
    for (int v = -20000; v <= 20000; ++v) ASSERT_EQ(textOf(v), printfOf(v)) << v;
    std::mt19937 random(16);
    for (int i = 0; i < 200000; ++i) {
        const int v = static_cast<int>(random());
        ASSERT_EQ(textOf(v), printfOf(v)) << v;
    }
    for (int digits = 1, p = 1; digits <= 9; ++digits, p *= 10) {
        for (int v : {p - 1, p, p + 1, -p + 1, -p, -p - 1}) ASSERT_EQ(textOf(v), printfOf(v)) << v;
    }
}

TEST(IntFormatTest, ItemsOfTheParameterListTexts) {
    std::string out = "x";
    IntFormat::appendPair(out, 3, 50);
    IntFormat::appendPair(out, INT_MIN, INT_MAX);
    IntFormat::appendPair(out, -1, 0);
    EXPECT_EQ(out, "x(3,50)(-2147483648,2147483647)(-1,0)");
    std::string ids;
    IntFormat::appendId(ids, 17);
    IntFormat::appendId(ids, INT_MIN);
    EXPECT_EQ(ids, "(17)(-2147483648)");
    std::string number = "n=";
    IntFormat::append(number, -42);
    EXPECT_EQ(number, "n=-42");
}

TEST(IntFormatTest, WritePairReturnsTheEndAndStaysInItsBound) {
    char buf[IntFormat::kMaxPairLength + 1];
    buf[IntFormat::kMaxPairLength] = '#';
    char* end = IntFormat::writePair(buf, INT_MIN, INT_MIN);
    EXPECT_EQ(std::string(buf, end), "(-2147483648,-2147483648)");
    EXPECT_EQ(static_cast<size_t>(end - buf), IntFormat::kMaxPairLength);
    EXPECT_EQ(buf[IntFormat::kMaxPairLength], '#');
}
