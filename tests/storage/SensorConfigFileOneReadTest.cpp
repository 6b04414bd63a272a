#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "TestRoot.h"
#include "storage/SensorConfigFile.h"

using testutil::TempRoot;

namespace {
const char kPath[] = "/mnt/mtd/code/config_file/sensor0.cfg";

long long modifiedAt(const TempRoot& root) {
    struct stat st {};
    if (::stat(root.real(kPath).c_str(), &st) != 0) return -1;
    return static_cast<long long>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
}
}  // namespace

TEST(SensorConfigFileOneReadTest, ReadParametersByIdsFillsTheFoundOnes) {
    TempRoot root;
    root.write(kPath, "(500,1)(501,6)(503,18)(7,7)");
    SensorConfigFile f(kPath);
    const int ids[5] = {500, 501, 502, 503, 504};
    int values[5] = {-1, -1, -1, -1, -1};
    ASSERT_EQ(f.readParametersByIds(ids, values, 5), 1);
    EXPECT_EQ(values[0], 1);
    EXPECT_EQ(values[1], 6);
    EXPECT_EQ(values[2], -1);
    EXPECT_EQ(values[3], 18);
    EXPECT_EQ(values[4], -1);
}

TEST(SensorConfigFileOneReadTest, ReadParametersByIdsFailsOnAMissingOrMalformedFile) {
    TempRoot root;
    SensorConfigFile f(kPath);
    const int ids[1] = {500};
    int values[1] = {9};
    EXPECT_EQ(f.readParametersByIds(ids, values, 1), 0);
    root.write(kPath, "(500,1)(501");
    EXPECT_EQ(f.readParametersByIds(ids, values, 1), 0);
    EXPECT_EQ(values[0], 9);
    // The text ends at the first zero byte.
    root.write(kPath, std::string("(500,2)\0(501,3)", 15));
    const int more[2] = {500, 501};
    int got[2] = {0, 0};
    ASSERT_EQ(f.readParametersByIds(more, got, 2), 1);
    EXPECT_EQ(got[0], 2);
    EXPECT_EQ(got[1], 0);
}

TEST(SensorConfigFileOneReadTest, CompareVersionsAnswersBothChecksLikeTheSingleOnes) {
    TempRoot root;
    SensorConfigFile f(kPath);
    int equal = 7, equal2 = 7;
    f.compareVersions(0, 3, equal, equal2);  // no file
    EXPECT_EQ(equal, 0);
    EXPECT_EQ(equal2, 0);
    const char* contents[] = {"(1,1)(10000,0)(10001,3)", "(10000,999)(10001,4)", "(10000,1)", "(10001,999)", ""};
    for (const char* content : contents) {
        root.write(kPath, content);
        f.compareVersions(0, 3, equal, equal2);
        EXPECT_EQ(equal, f.isVersionEqual(0)) << content;
        EXPECT_EQ(equal2, f.isVersion2Equal(3)) << content;
    }
}

TEST(SensorConfigFileOneReadTest, ModifyWithPairsChangesOnlyIdsTheFileHas) {
    TempRoot root;
    root.write(kPath, "(1,1)(2,2)(10000,0)(10001,3)");
    SensorConfigFile f(kPath);
    f.setVersion(5);
    ASSERT_EQ(f.modifyParameters(SensorConfigFile::Pairs{{2, 20}, {3, 30}, {10000, 9}}), 1);
    EXPECT_EQ(root.read(kPath), "(1,1)(2,20)(10000,0)(10001,3)");
    root.write(kPath, "(4,4)");
    ASSERT_EQ(f.modifyParameters(SensorConfigFile::Pairs{{4, 40}}), 1);
    EXPECT_EQ(root.read(kPath), "(4,40)(10000,5)");
}

TEST(SensorConfigFileOneReadTest, ModifyWithPairsLeavesAnUnchangedFileUntouched) {
    TempRoot root;
    root.write(kPath, "(1,1)(2,2)(10000,0)");
    const long long before = modifiedAt(root);
    SensorConfigFile f(kPath);
    ASSERT_EQ(f.modifyParameters(SensorConfigFile::Pairs{{1, 1}}), 1);
    EXPECT_EQ(modifiedAt(root), before);
    EXPECT_EQ(root.read(kPath), "(1,1)(2,2)(10000,0)");
    // The same pairs in other bytes (a blank) are written in the writer's form.
    root.write(kPath, "(1,1) (2,2)(10000,0)");
    ASSERT_EQ(f.modifyParameters(SensorConfigFile::Pairs{{1, 1}}), 1);
    EXPECT_EQ(root.read(kPath), "(1,1)(2,2)(10000,0)");
    EXPECT_EQ(SensorConfigFile("/mnt/mtd/none.cfg").modifyParameters(SensorConfigFile::Pairs{{1, 1}}), 0);
}

TEST(SensorConfigFileOneReadTest, SaveParameterListAddsTheVersionsUnlessTheTextHoldsOne) {
    TempRoot root;
    SensorConfigFile f(kPath);
    f.setVersion(0);
    f.setVersion2(3);
    ASSERT_EQ(f.saveParameterList("(5,10)", false), 1);
    EXPECT_EQ(root.read(kPath), "(5,10)(10000,0)(10001,3)");
    ASSERT_EQ(f.saveParameterList("(10000,7)(5,1)", true), 1);
    EXPECT_EQ(root.read(kPath), "(10000,7)(5,1)");
}
