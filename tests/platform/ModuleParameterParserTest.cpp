#include <gtest/gtest.h>

#include <string>

#include "platform/ModuleParameterParser.h"

TEST(ModuleParameterParserTest, ReadsKeyValueItems) {
    ModuleParameterParser p;
    ASSERT_TRUE(p.parse("RS485=/dev/ttyS1;isInfrared=1;GPIOInfraredLight=1,5,0"));
    std::string v;
    EXPECT_TRUE(p.getValue("RS485", v));
    EXPECT_EQ(v, "/dev/ttyS1");
    EXPECT_TRUE(p.getValue("isInfrared", v));
    EXPECT_EQ(v, "1");
    EXPECT_TRUE(p.getValue("GPIOInfraredLight", v));
    EXPECT_EQ(v, "1,5,0");
    int n = 0;
    EXPECT_TRUE(p.getValue("isInfrared", n));
    EXPECT_EQ(n, 1);
    EXPECT_EQ(p.getAll().size(), 3u);
}

TEST(ModuleParameterParserTest, MissingKeyLeavesValueUntouched) {
    ModuleParameterParser p;
    ASSERT_TRUE(p.parse("a=1"));
    std::string v = "keep";
    int n = 42;
    EXPECT_FALSE(p.getValue("b", v));
    EXPECT_FALSE(p.getValue("b", n));
    EXPECT_FALSE(p.getValue("A", v));  // keys are compared exactly
    EXPECT_EQ(v, "keep");
    EXPECT_EQ(n, 42);
    EXPECT_FALSE(p.hasKey("b"));
    EXPECT_TRUE(p.hasKey("a"));
}

TEST(ModuleParameterParserTest, TrimsBlanksAroundKeysAndValues) {
    ModuleParameterParser p;
    ASSERT_TRUE(p.parse("  key one = value with blanks \t; \r\n b=\t2 "));
    std::string v;
    EXPECT_TRUE(p.getValue("key one", v));
    EXPECT_EQ(v, "value with blanks");
    EXPECT_TRUE(p.getValue("b", v));
    EXPECT_EQ(v, "2");
}

TEST(ModuleParameterParserTest, ValueIsEverythingAfterTheFirstEquals) {
    ModuleParameterParser p;
    ASSERT_TRUE(p.parse("expr=a=b,c=d;empty="));
    std::string v;
    EXPECT_TRUE(p.getValue("expr", v));
    EXPECT_EQ(v, "a=b,c=d");
    v = "x";
    EXPECT_TRUE(p.getValue("empty", v));
    EXPECT_EQ(v, "");
}

TEST(ModuleParameterParserTest, EmptyItemsAreSkipped) {
    ModuleParameterParser p;
    ASSERT_TRUE(p.parse(";;a=1;; ;b=2;"));
    EXPECT_EQ(p.getAll().size(), 2u);
    ASSERT_TRUE(p.parse(""));
    EXPECT_TRUE(p.getAll().empty());
    ASSERT_TRUE(p.parse("  ;  "));
    EXPECT_TRUE(p.getAll().empty());
}

TEST(ModuleParameterParserTest, RepeatedKeyKeepsTheLastValue) {
    ModuleParameterParser p;
    ASSERT_TRUE(p.parse("a=1;b=2;a=3"));
    std::string v;
    EXPECT_TRUE(p.getValue("a", v));
    EXPECT_EQ(v, "3");
}

TEST(ModuleParameterParserTest, MalformedItemsFailAndLeaveTheParserEmpty) {
    ModuleParameterParser p;
    ASSERT_TRUE(p.parse("a=1"));
    EXPECT_FALSE(p.parse("a=1;novalue;b=2"));
    EXPECT_TRUE(p.getAll().empty());
    EXPECT_FALSE(p.parse("=1"));
    EXPECT_FALSE(p.parse("  =value"));
    EXPECT_FALSE(p.parse("justtext"));
    std::string v;
    EXPECT_FALSE(p.getValue("a", v));
}

TEST(ModuleParameterParserTest, ParseReplacesPreviousContent) {
    ModuleParameterParser p;
    ASSERT_TRUE(p.parse("a=1;b=2"));
    ASSERT_TRUE(p.parse("c=3"));
    std::string v;
    EXPECT_FALSE(p.getValue("a", v));
    EXPECT_TRUE(p.getValue("c", v));
    p.clear();
    EXPECT_FALSE(p.getValue("c", v));
}

TEST(ModuleParameterParserTest, IntegerValues) {
    ModuleParameterParser p;
    ASSERT_TRUE(p.parse("a=-12;b=1,5,0;c=2147483648;d=;e= 7 ;f=x1"));
    int n = 99;
    EXPECT_TRUE(p.getValue("a", n));
    EXPECT_EQ(n, -12);
    n = 99;
    EXPECT_FALSE(p.getValue("b", n));
    EXPECT_FALSE(p.getValue("c", n));
    EXPECT_FALSE(p.getValue("d", n));
    EXPECT_FALSE(p.getValue("f", n));
    EXPECT_EQ(n, 99);
    EXPECT_TRUE(p.getValue("e", n));
    EXPECT_EQ(n, 7);
}
