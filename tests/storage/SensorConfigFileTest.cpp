#include "storage/SensorConfigFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "TestRoot.h"

using testutil::TempRoot;

namespace {
const char kPath[] = "/mnt/mtd/code/config_file/sensor_Factory.cfg";
}

TEST(SensorConfigFileTest, SavingAppendsBothVersions) {
    TempRoot root;
    SensorConfigFile f(kPath);
    f.setVersion(0);
    f.setVersion2(3);
    ASSERT_EQ(f.saveParametersToFile(std::string("(5,10)")), 1);
    EXPECT_EQ(root.read(kPath), "(5,10)(10000,0)(10001,3)");
    EXPECT_EQ(f.getFilePath(), kPath);
    EXPECT_EQ(f.isExist(), 1);
}

TEST(SensorConfigFileTest, TextHoldingAVersionIsWrittenUnchanged) {
    TempRoot root;
    SensorConfigFile f(kPath);
    f.setVersion(0);
    f.setVersion2(3);
    ASSERT_EQ(f.saveParametersToFile(std::string("(10000,7)(5,1)")), 1);
    EXPECT_EQ(root.read(kPath), "(10000,7)(5,1)");
}

TEST(SensorConfigFileTest, UnsetVersionsWriteTheTextAlone) {
    TempRoot root;
    SensorConfigFile f(kPath);
    ASSERT_EQ(f.saveParametersToFile(std::string("(1,2)(3,4)")), 1);
    EXPECT_EQ(root.read(kPath), "(1,2)(3,4)");
    f.setVersion2(3);
    ASSERT_EQ(f.saveParametersToFile(std::string("(1,2)")), 1);
    EXPECT_EQ(root.read(kPath), "(1,2)(10001,3)");
}

TEST(SensorConfigFileTest, WildcardVersionMatchesAny) {
    TempRoot root;
    root.write(kPath, "(1,1)(10000,999)(10001,4)");
    SensorConfigFile f(kPath);
    EXPECT_EQ(f.isVersionEqual(0), 1);
    EXPECT_EQ(f.isVersionEqual(-5), 1);
    EXPECT_EQ(f.isVersion2Equal(4), 1);
    EXPECT_EQ(f.isVersion2Equal(3), 0);
    root.write(kPath, "(1,1)");
    EXPECT_EQ(f.isVersionEqual(0), 0);  // no stamp
}

TEST(SensorConfigFileTest, ModifyParameterOfAnAbsentIdWritesNothing) {
    TempRoot root;
    root.write(kPath, "(1,1)(2,2)");
    SensorConfigFile f(kPath);
    EXPECT_EQ(f.modifyParameter(3, 5), 0);
    EXPECT_EQ(root.read(kPath), "(1,1)(2,2)");
    EXPECT_EQ(f.modifyParameter(2, 5), 1);
    EXPECT_EQ(root.read(kPath), "(1,1)(2,5)");
}

TEST(SensorConfigFileTest, ModifyParametersReplacesOnlyHeldIdsAndNeverTheStamps) {
    TempRoot root;
    root.write(kPath, "(1,1)(2,2)(10000,0)");
    SensorConfigFile f(kPath);
    EXPECT_EQ(f.modifyParameters(std::string("(2,9)(3,3)(10000,5)")), 1);
    EXPECT_EQ(root.read(kPath), "(1,1)(2,9)(10000,0)");
    EXPECT_EQ(f.modifyParameters(std::string("(2,")), 0);
}

TEST(SensorConfigFileTest, ModifyIdUnEqualParametersRebuildsOnTheGivenIds) {
    TempRoot root;
    root.write(kPath, "(1,9)(3,4)(10000,0)");
    SensorConfigFile f(kPath);
    std::map<int, int> given{{1, 5}, {2, 6}, {10000, 1}};
    ASSERT_EQ(f.modifyIdUnEqualParameters(given), 1);
    std::map<int, int> back;
    ASSERT_EQ(f.readParametersFromFile(back), 1);
    EXPECT_EQ(back, (std::map<int, int>{{1, 9}, {2, 6}, {10000, 1}}));
}

TEST(SensorConfigFileTest, MissingTruncatedEmptyAndGarbageFilesReadAsFailure) {
    TempRoot root;
    SensorConfigFile f(kPath);
    std::map<int, int> m;
    std::string text;
    int v = 42;
    EXPECT_EQ(f.readParametersFromFile(text), 0);  // missing
    EXPECT_EQ(f.readParameterById(1, v), 0);
    EXPECT_EQ(v, 42);
    EXPECT_EQ(f.isVersionEqual(0), 0);
    root.write(kPath, "(1,2)(3,");  // truncated by a power cut in an old firmware
    EXPECT_EQ(f.readParametersFromFile(m), 0);
    root.write(kPath, "\x01\xff garbage");
    EXPECT_EQ(f.readParametersFromFile(m), 0);
    EXPECT_EQ(f.modifyParameter(1, 1), 0);
    root.write(kPath, "");
    EXPECT_EQ(f.readParametersFromFile(text), 1);  // empty text is an empty list
    EXPECT_EQ(f.readParameterById(1, v), 0);
    root.write(kPath, std::string("(1,2)\0(3,4)", 11));
    text.clear();
    EXPECT_EQ(f.readParametersFromFile(text), 1);
    EXPECT_EQ(text, "(1,2)");  // the text ends at the first zero byte
}

TEST(SensorConfigFileTest, ReadAppendsToTheGivenText) {
    TempRoot root;
    root.write(kPath, "(1,2)");
    SensorConfigFile f(kPath);
    std::string text = "(0,0)";
    ASSERT_EQ(f.readParametersFromFile(text), 1);
    EXPECT_EQ(text, "(0,0)(1,2)");
}

TEST(SensorConfigFileTest, WrittenByOneObjectReadsBackThroughAnother) {
    TempRoot root;
    SensorConfigFile a("/mnt/mtd/code/config_file/sensor3.cfg");
    a.setVersion(0);
    a.setVersion2(3);
    std::map<int, int> values;
    for (int id = 1; id <= 60; ++id) values[id] = id * 7 - 100;
    ASSERT_EQ(a.saveParametersToFile(values), 1);
    SensorConfigFile b("/mnt/mtd/code/config_file/sensor3.cfg");
    std::map<int, int> back;
    ASSERT_EQ(b.readParametersFromFile(back), 1);
    values[10000] = 0;
    values[10001] = 3;
    EXPECT_EQ(back, values);
    int v = 0;
    EXPECT_EQ(b.readParameterById(60, v), 1);
    EXPECT_EQ(v, 320);
}

TEST(SensorConfigFileTest, UnparsableTextFailsAndLeavesTheFile) {
    TempRoot root;
    root.write(kPath, "(1,1)");
    SensorConfigFile f(kPath);
    EXPECT_EQ(f.saveParametersToFile(std::string("(1,x)")), 0);
    EXPECT_EQ(root.read(kPath), "(1,1)");
}

TEST(SensorConfigFileTest, OpenFailureIsReported) {
    TempRoot root;
    root.write("/mnt/blocked", "file where a directory should be");
    SensorConfigFile f("/mnt/blocked/sensor0.cfg");
    testing::internal::CaptureStdout();
    EXPECT_EQ(f.saveParametersToFile(std::string("(1,1)")), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "________open file(/mnt/blocked/sensor0.cfg) failed\n");
}

TEST(SensorConfigFileTest, SavingIdenticalContentDoesNotRewrite) {
    TempRoot root;
    SensorConfigFile f(kPath);
    ASSERT_EQ(f.saveParametersToFile(std::string("(1,1)")), 1);
    struct stat a {};
    ::stat(root.real(kPath).c_str(), &a);
    ASSERT_EQ(f.modifyParameters(std::string("(1,1)")), 1);
    struct stat b {};
    ::stat(root.real(kPath).c_str(), &b);
    EXPECT_EQ(a.st_ino, b.st_ino);
}
