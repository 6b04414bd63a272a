#include "storage/IRPowerDefaultConfig.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tinyxml2.h>

#include <string>
#include <vector>

#include "TestRoot.h"

using testutil::TempRoot;

namespace {

const char kPath[] = "/mnt/mtd/code/config_file/IRPowerDefault.xml";
const int kFlag = 7;

const char kTable[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<IRConfig>\n"
    "    <version>\n"
    "        <item version=\"3\"/>\n"
    "    </version>\n"
    "    <IRPower>\n"
    "        <item zoomup=\"0\" far=\"60\" mid=\"40\" near=\"20\"/>\n"
    "        <item zoomup=\"1000\" far=\"80\" mid=\"50\" near=\"30\"/>\n"
    "        <item near=\"45\" mid=\"70\" far=\"100\" zoomup=\"2500\"/>\n"
    "        <item zoomup=\"-1\" far=\"-2\" mid=\"-3\" near=\"-4\"/>\n"
    "    </IRPower>\n"
    "</IRConfig>\n";

std::vector<IRPowerItem> prefilled() { return {IRPowerItem(9, 9, 9, 9)}; }

struct VersionNodes {
    std::string rootName;
    std::vector<std::string> versions;  // the "version" property of the first item of each "version" node
};

VersionNodes versionNodesOf(const std::string& text) {
    VersionNodes v;
    tinyxml2::XMLDocument doc;
    EXPECT_EQ(doc.Parse(text.c_str()), tinyxml2::XML_SUCCESS) << text;
    const tinyxml2::XMLElement* root = doc.RootElement();
    if (root == nullptr) return v;
    v.rootName = root->Name();
    for (const tinyxml2::XMLElement* n = root->FirstChildElement("version"); n; n = n->NextSiblingElement("version")) {
        const tinyxml2::XMLElement* item = n->FirstChildElement("item");
        const char* value = item != nullptr ? item->Attribute("version") : nullptr;
        v.versions.push_back(value != nullptr ? value : "<none>");
    }
    return v;
}

class IRPowerDefaultConfigTest : public ::testing::Test {
protected:
    TempRoot root;
    IRPowerDefaultConfig config;
};

}  // namespace

TEST_F(IRPowerDefaultConfigTest, GetVersionOfAMissingFile) {
    int version = 42;
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), -4);
    EXPECT_EQ(version, 42);
    EXPECT_FALSE(root.exists(kPath));
}

TEST_F(IRPowerDefaultConfigTest, GetVersionReadsOnceAndThenAnswersFromTheCache) {
    root.write(kPath, kTable);
    int version = 0;
    ASSERT_EQ(config.getVersion(kFlag, kPath, version), 0);
    EXPECT_EQ(version, 3);
    // A changed or vanished file is not read again.
    root.remove(kPath);
    version = 0;
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), 0);
    EXPECT_EQ(version, 3);
}

TEST_F(IRPowerDefaultConfigTest, GetVersionResultCodes) {
    int version = 42;
    root.write(kPath, "<IRConfig><IRPower/></IRConfig>");
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), -1);
    root.write(kPath, "<IRConfig><version/></IRConfig>");
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), -2);
    root.write(kPath, "<IRConfig><version><item value=\"3\"/></version></IRConfig>");
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), -3);
    root.write(kPath, "<IRConfig><version><item version=\"three\"/></version></IRConfig>");
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), -3);
    root.write(kPath, "<IRConfig><version><item version=\"3\"/>");
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), -4);
    EXPECT_EQ(version, 42);
    // Failures cache nothing: a repaired file is read.
    root.write(kPath, "<IRConfig><version><item version=\"5\"/><item version=\"6\"/></version></IRConfig>");
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), 0);
    EXPECT_EQ(version, 5);
}

TEST_F(IRPowerDefaultConfigTest, SetVersionOfTheCachedVersionLeavesTheFileAlone) {
    root.write(kPath, kTable);
    int version = 0;
    ASSERT_EQ(config.getVersion(kFlag, kPath, version), 0);
    root.remove(kPath);
    EXPECT_EQ(config.setVersion(kFlag, kPath, 3), 0);
    EXPECT_FALSE(root.exists(kPath));
}

TEST_F(IRPowerDefaultConfigTest, SetVersionOnAMissingFileCreatesIt) {
    EXPECT_EQ(config.setVersion(kFlag, kPath, 8), 0);
    ASSERT_TRUE(root.exists(kPath));
    VersionNodes v = versionNodesOf(root.read(kPath));
    EXPECT_EQ(v.rootName, "IRConfig");
    EXPECT_EQ(v.versions, (std::vector<std::string>{"8"}));
    int version = 0;
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), 0);
    EXPECT_EQ(version, 8);
    // Another object reads it from the file.
    IRPowerDefaultConfig other;
    EXPECT_EQ(other.getVersion(kFlag, kPath, version), 0);
    EXPECT_EQ(version, 8);
}

TEST_F(IRPowerDefaultConfigTest, SetVersionReplacesTheVersionAndKeepsTheTable) {
    root.write(kPath, kTable);
    EXPECT_EQ(config.setVersion(kFlag, kPath, 4), 0);
    VersionNodes v = versionNodesOf(root.read(kPath));
    EXPECT_EQ(v.rootName, "IRConfig");
    EXPECT_EQ(v.versions, (std::vector<std::string>{"4"}));
    IRPowerParam table;
    EXPECT_EQ(config.load(kFlag, kPath, table), 0);
    EXPECT_EQ(table.getIrPower().size(), 4u);
    // Setting it again does not rewrite the file.
    root.remove(kPath);
    EXPECT_EQ(config.setVersion(kFlag, kPath, 4), 0);
    EXPECT_FALSE(root.exists(kPath));
}

TEST_F(IRPowerDefaultConfigTest, SetVersionOnAnUnreadableFileFails) {
    root.write(kPath, "<IRConfig><version>");
    EXPECT_EQ(config.setVersion(kFlag, kPath, 4), -4);
    EXPECT_EQ(root.read(kPath), "<IRConfig><version>");
    int version = 0;
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), -4);
}

TEST_F(IRPowerDefaultConfigTest, LoadReadsEveryRowInFileOrder) {
    root.write(kPath, kTable);
    IRPowerParam table;
    table.setIrPower(prefilled());
    ASSERT_EQ(config.load(kFlag, kPath, table), 0);
    EXPECT_EQ(table.getIrPower(), (std::vector<IRPowerItem>{IRPowerItem(0, 60, 40, 20), IRPowerItem(1000, 80, 50, 30),
                                                           IRPowerItem(2500, 100, 70, 45),
                                                           IRPowerItem(-1, -2, -3, -4)}));
    const IRPowerItem& row = table.getIrPower()[1];
    EXPECT_EQ(row.getZoomUp(), 1000);
    EXPECT_EQ(row.getFarPower(), 80);
    EXPECT_EQ(row.getMidPower(), 50);
    EXPECT_EQ(row.getNearPower(), 30);
    // Loading leaves the file as it was.
    EXPECT_EQ(root.read(kPath), kTable);
}

TEST_F(IRPowerDefaultConfigTest, LoadOfAMissingFileOrNode) {
    IRPowerParam table;
    table.setIrPower(prefilled());
    EXPECT_EQ(config.load(kFlag, kPath, table), -4);
    root.write(kPath, "<IRConfig><version><item version=\"1\"/></version></IRConfig>");
    EXPECT_EQ(config.load(kFlag, kPath, table), -1);
    EXPECT_EQ(table.getIrPower(), prefilled());
}

TEST_F(IRPowerDefaultConfigTest, EmptyPowerNodeGivesAnEmptyTable) {
    root.write(kPath, "<IRConfig><IRPower></IRPower></IRConfig>");
    IRPowerParam table;
    table.setIrPower(prefilled());
    EXPECT_EQ(config.load(kFlag, kPath, table), 0);
    EXPECT_TRUE(table.getIrPower().empty());
}

TEST_F(IRPowerDefaultConfigTest, MissingPropertyInTheThirdRowLoadsNothing) {
    for (const char* row3 : {"<item zoomup=\"2500\" far=\"100\" mid=\"70\"/>", "<item far=\"100\" mid=\"70\" near=\"45\"/>",
                             "<item zoomup=\"2500\" far=\"x\" mid=\"70\" near=\"45\"/>"}) {
        root.write(kPath, std::string("<IRConfig><IRPower>"
                                      "<item zoomup=\"0\" far=\"60\" mid=\"40\" near=\"20\"/>"
                                      "<item zoomup=\"1000\" far=\"80\" mid=\"50\" near=\"30\"/>") +
                              row3 + "<item zoomup=\"3000\" far=\"1\" mid=\"1\" near=\"1\"/></IRPower></IRConfig>");
        IRPowerParam table;
        table.setIrPower(prefilled());
        EXPECT_EQ(config.load(kFlag, kPath, table), -3) << row3;
        EXPECT_EQ(table.getIrPower(), prefilled()) << row3;
    }
}

TEST_F(IRPowerDefaultConfigTest, OpenModes) {
    // Reading a missing file fails and creates nothing.
    EXPECT_EQ(config.open(kFlag, kPath, 1), 0);
    config.close();
    EXPECT_FALSE(root.exists(kPath));

    // Creating writes root "IRConfig" with the cached version (none yet: 0).
    EXPECT_EQ(config.open(kFlag, kPath, 3), 1);
    EXPECT_EQ(config.close(), 1);
    VersionNodes v = versionNodesOf(root.read(kPath));
    EXPECT_EQ(v.rootName, "IRConfig");
    EXPECT_EQ(v.versions, (std::vector<std::string>{"0"}));
    // The version counts as known from then on.
    root.remove(kPath);
    int version = 5;
    EXPECT_EQ(config.getVersion(kFlag, kPath, version), 0);
    EXPECT_EQ(version, 0);

    // Update mode on a missing file creates it too, with the version known.
    IRPowerDefaultConfig other;
    root.write(kPath, kTable);
    ASSERT_EQ(other.getVersion(kFlag, kPath, version), 0);
    root.remove(kPath);
    EXPECT_EQ(other.open(kFlag, kPath, 2), 1);
    EXPECT_EQ(other.close(), 1);
    EXPECT_EQ(versionNodesOf(root.read(kPath)).versions, (std::vector<std::string>{"3"}));

    // An existing file opens in any of the modes; a bad mode fails.
    EXPECT_EQ(other.open(kFlag, kPath, 1), 1);
    EXPECT_EQ(other.close(), 1);
    EXPECT_EQ(other.open(kFlag, kPath, 2), 1);
    EXPECT_EQ(other.close(), 1);
    EXPECT_EQ(other.open(kFlag, kPath, 9), 0);
    root.remove(kPath);
    EXPECT_EQ(other.open(kFlag, kPath, 9), 0);
    EXPECT_FALSE(root.exists(kPath));
}

TEST(IRPowerItemTest, SettersAndComparison) {
    IRPowerItem row;
    EXPECT_EQ(row, IRPowerItem(0, 0, 0, 0));
    row.setZoomUp(12);
    row.setFarPower(3);
    row.setMidPower(2);
    row.setNearPower(1);
    EXPECT_EQ(row, IRPowerItem(12, 3, 2, 1));
    EXPECT_NE(row, IRPowerItem(12, 3, 2, 0));
}
