#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <thread>

#include "TestRoot.h"
#include "doubles/ControllerFixture.h"
#include "doubles/FakeController.h"
#include "storage/ParamScheme.h"
#include "storage/SensorCache.h"
#include "storage/SensorConfigFile.h"

using testutil::TempRoot;

namespace {
const char kFactory[] = "/mnt/mtd/code/config_file/sensor_Factory.cfg";
const char kEspecial[] = "/mnt/mtd/code/config_file/sensor_Especial.cfg";

std::string all(FakeController& c) {
    std::string s;
    c.getLastValueCache().getAllSensorValues(s);
    return s;
}
}  // namespace

TEST(ParameterPipelineTest, VersionIdsAreAcceptedAndNeverReachTheSensor) {
    TempRoot root;
    FakeController c;
    EXPECT_EQ(c.setParameter(10000, 5), 1);
    EXPECT_EQ(c.setParameter(10001, 5), 1);
    EXPECT_TRUE(c.sets.empty());
    EXPECT_EQ(all(c), "");
}

TEST(ParameterPipelineTest, UnchangedValueSkipsTheSensor) {
    TempRoot root;
    FakeController c;
    EXPECT_EQ(c.setParameter(1, 5), 1);
    EXPECT_EQ(c.setParameter(1, 5), 1);
    EXPECT_EQ(c.sets.size(), 1u);
    EXPECT_EQ(c.setParameter(1, 6), 1);
    EXPECT_EQ(c.sets.size(), 2u);
}

TEST(ParameterPipelineTest, FirstFailingPairStopsTheListAndIsReturnedNegated) {
    TempRoot root;
    FakeController c;
    c.failSet.insert(2);
    EXPECT_EQ(c.setParameters("(1,5)(2,7)(3,9)"), -2);
    EXPECT_EQ(all(c), "(1,5)");
    ASSERT_EQ(c.sets.size(), 1u);  // id 3 never tried
    int v = 0;
    EXPECT_EQ(c.getParameter(2, v), 1);  // the request is still reported
    EXPECT_EQ(v, 7);
    std::string request;
    c.getRequestCache().getAllSensorValues(request);
    EXPECT_EQ(request, "(1,5)(2,7)(3,9)");
}

// Negating INT_MIN overflows; a refused INT_MIN comes back as INT_MAX, and a
// refused negative id positive: callers test for non-zero.
TEST(ParameterPipelineTest, RefusedIntMinIdComesBackAsIntMax) {
    TempRoot root;
    FakeController c;
    c.failSet.insert(INT_MIN);
    c.failSet.insert(-7);
    c.failSet.insert(INT_MAX);
    EXPECT_EQ(c.setParameters("(-2147483648,1)"), INT_MAX);
    EXPECT_EQ(c.setParameters("(-7,1)"), 7);
    EXPECT_EQ(c.setParameters("(2147483647,1)"), -INT_MAX);
    EXPECT_TRUE(c.sets.empty());
    EXPECT_EQ(all(c), "");
}

TEST(ParameterPipelineTest, FailuresAreLogged) {
    TempRoot root;
    testutil::VirtualClock clock;
    FakeController c;
    testing::internal::CaptureStdout();
    c.init(50, ModuleConfigure(1, "", ""), VideoResolution(1, 1));
    c.failSet.insert(2);
    c.setParameters("(2,7)");
    c.setParameter(99, 1);  // not registered: the sensor takes it but the type is unknown
    testing::internal::GetCapturedStdout();
    std::string log = root.read("/mnt/mtd/log/SensorError.log");
    EXPECT_NE(log.find("setParameterToSensor (2,7) failed"), std::string::npos);
    EXPECT_NE(log.find("setParameter (2,7) failed"), std::string::npos);
    EXPECT_NE(log.find("id type is unknow"), std::string::npos);
}

TEST(ParameterPipelineTest, SetOnlyIdsAreNeverCached) {
    TempRoot root;
    FakeController c;
    EXPECT_EQ(c.setParameter(11, 1), 1);
    EXPECT_EQ(c.setParameter(11, 1), 1);
    EXPECT_EQ(c.sets.size(), 2u);  // a command reaches the sensor every time
    EXPECT_EQ(all(c), "");
}

TEST(ParameterPipelineTest, KeepDefaultIdIsCachedOnlyOnItsFirstWrite) {
    TempRoot root;
    FakeController c;
    EXPECT_EQ(c.setParameter(12, 1), 1);
    EXPECT_EQ(c.setParameter(12, 2), 1);
    EXPECT_EQ(c.sets.size(), 2u);
    EXPECT_EQ(all(c), "(12,1)");
}

TEST(ParameterPipelineTest, EmptyListSucceedsAndBadTextFailsNothing) {
    TempRoot root;
    FakeController c;
    EXPECT_EQ(c.setParameters(""), 0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(c.setParameters("(1,"), 0);
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(c.sets.empty());
}

TEST(ParameterPipelineTest, GetParametersAnswersFromTheLastValues) {
    TempRoot root;
    FakeController c;
    c.setParameters("(1,5)(3,4)");
    std::string out;
    EXPECT_EQ(c.getParameters("(3)(1)", out), 1);
    EXPECT_EQ(out, "(1,5)(3,4)");
    EXPECT_EQ(c.getParameters("(3)(2)", out), 0);
    EXPECT_EQ(out, "(1,5)(3,4)");
    int v = 0;
    EXPECT_EQ(c.getParameter(9, v), 0);
}

TEST(ParameterPipelineTest, UpdateParametersIdValueEditsTheFirstMatchingItem) {
    TempRoot root;
    FakeController c;
    std::string list = "(1,5)(12,7)";
    EXPECT_EQ(c.UpdateParametersIdValue(list, 1, 9), 1);
    EXPECT_EQ(list, "(1,9)(12,7)");
    EXPECT_EQ(c.UpdateParametersIdValue(list, 12, -3), 1);
    EXPECT_EQ(list, "(1,9)(12,-3)");
    std::string other = "(2,2)";
    EXPECT_THROW(c.UpdateParametersIdValue(other, 3, 1), std::out_of_range);
    EXPECT_EQ(other, "(2,2)");
    // The key is a plain text search: id 1 also matches the start of id 12.
    std::string only12 = "(12,7)";
    c.UpdateParametersIdValue(only12, 1, 0);
    EXPECT_EQ(only12, "(1,0)");
}

TEST(ParameterPipelineTest, GetAllParametersWithoutDifferencesDoesNotFlush) {
    TempRoot root;
    FakeController c;
    c.setParameters("(1,5)");
    testing::internal::CaptureStdout();
    std::string out;
    EXPECT_EQ(c.getAllParameters(out), 1);
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, "(1,5)");
    EXPECT_EQ(printed.find("save sensor parameter"), std::string::npos);
    EXPECT_FALSE(root.exists(kEspecial));
}

TEST(ParameterPipelineTest, GetAllParametersTakesHardwareChangesAndFlushes) {
    TempRoot root;
    FakeController c;
    c.setCurrentScheme(-1);
    root.write(kFactory, "(13,1)");
    c.setParameters("(1,5)(13,2)");
    c.updateOverrides[1] = 8;
    testing::internal::CaptureStdout();
    std::string out;
    EXPECT_EQ(c.getAllParameters(out), 1);
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, "(1,8)(13,2)");
    EXPECT_EQ(all(c), "(1,8)(13,2)");
    EXPECT_NE(printed.find("save sensor parameter"), std::string::npos);
    EXPECT_EQ(root.read(kEspecial), "(13,2)");
    EXPECT_EQ(root.read(kFactory), "(13,2)");
}

TEST(ParameterPipelineTest, GetAllParametersFromSensorReadsEveryListedId) {
    TempRoot root;
    FakeController c;
    std::string out;
    ASSERT_EQ(c.getAllParametersFromSensor(out), 1);
    EXPECT_EQ(out,
              "(1,10)(2,20)(3,30)(4,40)(5,50)(6,60)(7,70)(8,80)(9,90)(10,100)(12,120)(13,130)"
              "(500,1)(501,0)(502,0)(503,24)(504,0)");
    c.failGet.insert(13);
    std::string keep = "keep";
    testing::internal::CaptureStdout();
    EXPECT_EQ(c.getAllParametersFromSensor(keep), 0);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(keep, "keep");
}

TEST(ParameterPipelineTest, FlushChecksTheSchemeWindow) {
    TempRoot root;
    testutil::writeSchemeCount(root, 1);
    FakeController c;
    c.initSensorFilesHandler();
    c.setCurrentScheme(0);
    c.setParameters("(500,1)(501,23)(502,5)(503,24)(504,0)");
    root.write(kFactory, "(1,1)");
    EXPECT_EQ(c.flush(), 0);  // 23:50 to 24:00
    c.setParameters("(504,1)");
    EXPECT_EQ(c.flush(), 506);  // 24:10 as end
    c.setParameters("(501,24)(502,1)(503,24)(504,0)");
    EXPECT_EQ(c.flush(), 505);
    c.setParameters("(501,10)(502,0)(503,10)(504,0)");
    EXPECT_EQ(c.flush(), 507);  // equal start and end
    c.setParameters("(501,12)(503,8)");
    EXPECT_EQ(c.flush(), 507);
}

TEST(ParameterPipelineTest, FlushWritesSchemeFactoryAndEspecialFiles) {
    TempRoot root;
    testutil::writeSchemeCount(root, 2);
    FakeController c;
    c.setSensorConfigVersion(0);
    c.setSensorConfigVersion2(3);
    c.initSensorFilesHandler();
    c.loadSchemeParamToMemory();
    root.write(kFactory, "(1,1)(13,5)(10000,0)(10001,3)");
    c.setCurrentScheme(1);
    c.setParameters("(1,4)(13,6)(500,1)(501,8)(502,3)(503,18)(504,0)");
    ASSERT_EQ(c.flush(), 0);
    EXPECT_EQ(root.read("/mnt/mtd/code/config_file/sensor1.cfg"),
              "(1,4)(500,1)(501,8)(502,3)(503,18)(504,0)(13,6)(10000,0)(10001,3)");
    EXPECT_EQ(root.read(kFactory), "(1,1)(13,6)(10000,0)(10001,3)");
    EXPECT_EQ(root.read(kEspecial), "(13,6)(10000,0)(10001,3)");
    int enable = 0, start = 0, end = 0;
    c.getSchemeList()[1].getEnableFlag(enable);
    c.getSchemeList()[1].getStartTime(start);
    c.getSchemeList()[1].getEndTime(end);
    EXPECT_EQ(enable, 1);
    EXPECT_EQ(start, 830);
    EXPECT_EQ(end, 1800);
}

TEST(ParameterPipelineTest, FlushWithoutAFactoryFileFails) {
    TempRoot root;
    FakeController c;
    c.setCurrentScheme(-1);
    EXPECT_EQ(c.flush(), 508);
}

TEST(ParameterPipelineTest, FlushThatChangesNothingRewritesNoFile) {
    TempRoot root;
    testutil::writeSchemeCount(root, 1);
    FakeController c;
    c.initSensorFilesHandler();
    c.loadSchemeParamToMemory();
    c.setCurrentScheme(0);
    root.write(kFactory, "(13,5)");
    c.setParameters("(1,4)(13,5)(500,1)(501,0)(502,0)(503,24)(504,0)");
    ASSERT_EQ(c.flush(), 0);
    struct stat a[3] {};
    const std::string files[3] = {root.real(kFactory), root.real(kEspecial),
                                  root.real("/mnt/mtd/code/config_file/sensor0.cfg")};
    for (int i = 0; i < 3; ++i) ASSERT_EQ(::stat(files[i].c_str(), &a[i]), 0);
    ASSERT_EQ(c.flush(), 0);
    for (int i = 0; i < 3; ++i) {
        struct stat b {};
        ::stat(files[i].c_str(), &b);
        EXPECT_EQ(a[i].st_ino, b.st_ino) << files[i];
    }
}

TEST(ParameterPipelineTest, ResetToLastParametersBringsBackTheSchemeFile) {
    TempRoot root;
    testutil::writeSchemeCount(root, 1);
    FakeController c;
    c.initSensorFilesHandler();
    c.loadSchemeParamToMemory();
    c.setCurrentScheme(0);
    root.write(kFactory, "(13,5)");
    root.write("/mnt/mtd/code/config_file/sensor0.cfg", "(1,3)(500,1)(501,0)(502,0)(503,24)(504,0)");
    c.setParameters("(1,9)");
    testing::internal::CaptureStdout();
    EXPECT_EQ(c.resetToLastParameters(), 1);
    testing::internal::GetCapturedStdout();
    int v = 0;
    c.getLastValueCache().getSensorValue(1, v);
    EXPECT_EQ(v, 3);
    EXPECT_FALSE(c.isResetting());
}

TEST(ParameterPipelineTest, ResetToLastParametersFailsWhenTheFileIsMissing) {
    TempRoot root;
    FakeController c;
    c.setCurrentScheme(0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(c.resetToLastParameters(), 0);
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(c.isResetting());  // left set: automatic switching stays off
}

TEST(ParameterPipelineTest, ConcurrentListWritesKeepTheCachesConsistent) {
    TempRoot root;
    FakeController c;
    auto writer = [&c](int base) {
        for (int i = 0; i < 300; ++i) {
            std::string list = "(" + std::to_string(base) + "," + std::to_string(i) + ")(" +
                               std::to_string(base + 1) + "," + std::to_string(i) + ")";
            EXPECT_EQ(c.setParameters(list), 0);
            std::string out;
            c.getParameters("(1)", out);
        }
    };
    std::thread a(writer, 1), b(writer, 5);
    a.join();
    b.join();
    EXPECT_EQ(all(c), "(1,299)(2,299)(5,299)(6,299)");
}
