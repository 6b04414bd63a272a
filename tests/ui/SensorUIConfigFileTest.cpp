#include "ui/SensorUIConfigFile.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "TestRoot.h"
#include "platform/KSFile.h"
#include "ui/MergedXml.h"

using testutil::TempRoot;

namespace {

const std::string kDir = "/hd1/moduleConfig/sensorConfig";
const std::string kSample = std::string(SENSORCTL_SOURCE_DIR) + "/sim/camroot/hd1/moduleConfig/sensorConfig";

// Copies the sample configuration tree to the camera path kDir of the root.
void installSample(const TempRoot& root) {
    std::filesystem::create_directories(root.real("/hd1/moduleConfig"));
    std::filesystem::copy(kSample, root.real(kDir), std::filesystem::copy_options::recursive);
}

// A file of the sample tree as shipped (read outside the platform root).
std::string sampleFile(const std::string& relative) {
    std::ifstream in(kSample + "/" + relative, std::ios::binary);
    EXPECT_TRUE(in.good()) << relative;
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

std::vector<int> tabKeys(const std::string& text) {
    tinyxml2::XMLDocument doc;
    EXPECT_EQ(doc.Parse(text.c_str()), tinyxml2::XML_SUCCESS) << text;
    std::vector<int> keys;
    if (doc.RootElement() == nullptr) return keys;
    for (const tinyxml2::XMLElement* e = doc.RootElement()->FirstChildElement(); e; e = e->NextSiblingElement())
        keys.push_back(MergedXml::keyOf(e));
    return keys;
}

// Shrinks one chosen file to half its size when it is read.
std::string g_shrinkTarget;
void shrinkTarget(const std::string& resolvedPath) {
    if (resolvedPath != g_shrinkTarget) return;
    std::error_code ec;
    auto size = std::filesystem::file_size(resolvedPath, ec);
    if (!ec) std::filesystem::resize_file(resolvedPath, size / 2, ec);
}

class SensorUIConfigFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        installSample(root);
        file.setUIConfigPath(kDir);
        file.setUIConfigPrefix("S2");
    }
    TempRoot root;
    SensorUIConfigFile file;
};

}  // namespace

TEST(SensorUIConfigFileDefaultsTest, MembersStartAtTheCameraPaths) {
    SensorUIConfigFile f;
    EXPECT_EQ(f.configDir(), "/hd1/moduleConfig/sensorConfig");
    EXPECT_EQ(f.styleDir(), "/hd1/moduleConfig/sensorConfig/style");
    EXPECT_EQ(f.commonDir(), "/hd1/moduleConfig/sensorConfig/common");
    EXPECT_EQ(f.languageDir(), "/hd1/moduleConfig/sensorConfig/language");
    EXPECT_EQ(f.styleDiversityDir(), "/hd1/moduleConfig/sensorConfig/styleDiversity");
    EXPECT_EQ(f.languageDiversityDir(), "/hd1/moduleConfig/sensorConfig/languageDiversity");
    EXPECT_EQ(f.languageConfigPath(), "/hd1/moduleConfig/sensorConfig/SensorLanguageConfig.xml");
    EXPECT_EQ(f.prefix(), "");
    EXPECT_EQ(f.getUIStyleConfigString(), "");
    EXPECT_TRUE(f.commonTexts().empty());
    EXPECT_TRUE(f.languageTexts().empty());
    EXPECT_EQ(f.getUICommonConfigString(1), "");
    EXPECT_EQ(f.getUILanguageConfigString(1), "");
}

TEST(SensorUIConfigFileDefaultsTest, SetPathMovesSixMembersButNotConfigDir) {
    SensorUIConfigFile f;
    f.setUIConfigPath("/tmp/ui");
    EXPECT_EQ(f.configDir(), "/hd1/moduleConfig/sensorConfig");
    EXPECT_EQ(f.styleDir(), "/tmp/ui/style");
    EXPECT_EQ(f.commonDir(), "/tmp/ui/common");
    EXPECT_EQ(f.languageDir(), "/tmp/ui/language");
    EXPECT_EQ(f.styleDiversityDir(), "/tmp/ui/styleDiversity");
    EXPECT_EQ(f.languageDiversityDir(), "/tmp/ui/languageDiversity");
    EXPECT_EQ(f.languageConfigPath(), "/tmp/ui/SensorLanguageConfig.xml");
    // A member handed back to the setter.
    f.setUIConfigPath(f.styleDir());
    EXPECT_EQ(f.commonDir(), "/tmp/ui/style/common");
    f.setUIConfigPrefix("S2");
    f.setUIConfigPrefix(f.prefix());
    EXPECT_EQ(f.prefix(), "S2");
}

TEST_F(SensorUIConfigFileTest, SampleTreeForAnInfraredFisheyeModule) {
    testing::internal::CaptureStdout();
    ASSERT_TRUE(file.init("RS485=/dev/ttyS1;isInfrared=1;lens=fisheye"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    // IR lamp tab after day/night, dewarp before the scheme tab, no defog tab.
    EXPECT_EQ(tabKeys(file.getUIStyleConfigString()), (std::vector<int>{1, 2, 3, 4, 9, 5, 6, 10, 8}));
    EXPECT_EQ(file.getUICommonConfigString(1), sampleFile("common/english/SensorCommon.xml"));
    EXPECT_EQ(file.getUICommonConfigString(2), sampleFile("common/chinese/SensorCommon.xml"));
    EXPECT_EQ(file.getUILanguageConfigString(1), sampleFile("language/english/S2Lang.xml"));
    EXPECT_EQ(file.getUILanguageConfigString(2), sampleFile("language/chinese/S2Lang.xml"));
    EXPECT_NE(file.getUILanguageConfigString(1), file.getUILanguageConfigString(2));
    // An unknown language gets language 1.
    EXPECT_EQ(file.getUILanguageConfigString(9), sampleFile("language/english/S2Lang.xml"));
    EXPECT_EQ(file.getUICommonConfigString(-1), sampleFile("common/english/SensorCommon.xml"));
}

TEST_F(SensorUIConfigFileTest, SampleTreeForADayOnlyModule) {
    // The sample's blocks are for its infrared fisheye module: none applies.
    ASSERT_TRUE(file.init("isInfrared=0;lens=normal"));
    EXPECT_EQ(tabKeys(file.getUIStyleConfigString()), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(SensorUIConfigFileTest, WithoutDiversityFileTheStyleIsServedByteForByte) {
    root.remove(kDir + "/styleDiversity/S2StyleDiversity.xml");
    ASSERT_TRUE(file.init("isInfrared=1;lens=fisheye"));
    EXPECT_EQ(file.getUIStyleConfigString(), sampleFile("style/S2Style.xml"));
}

TEST_F(SensorUIConfigFileTest, PrefixSelectsTheModuleFiles) {
    // Another module's files: no diversity file, its own style and texts.
    root.write(kDir + "/style/IMXStyle.xml", "<SensorStyle><Tab id=\"1\"/></SensorStyle>\n");
    root.write(kDir + "/language/english/IMXLang.xml", "<SensorLanguage>imx</SensorLanguage>\n");
    file.setUIConfigPrefix("IMX");
    testing::internal::CaptureStdout();
    ASSERT_TRUE(file.init("isInfrared=1"));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(file.getUIStyleConfigString(), "<SensorStyle><Tab id=\"1\"/></SensorStyle>\n");
    EXPECT_EQ(file.getUILanguageConfigString(1), "<SensorLanguage>imx</SensorLanguage>\n");
    // The common texts carry no prefix; the chinese IMX language file is missing.
    EXPECT_EQ(file.getUICommonConfigString(2), sampleFile("common/chinese/SensorCommon.xml"));
    EXPECT_EQ(file.getUILanguageConfigString(2), "<SensorLanguage>imx</SensorLanguage>\n");
    EXPECT_NE(out.find("getLanguageFile failed , path=" + kDir + "/language/chinese/IMXLang.xml\n"),
              std::string::npos)
        << out;
}

TEST_F(SensorUIConfigFileTest, DiversityWithoutStyleFailsTheMerge) {
    root.remove(kDir + "/style/S2Style.xml");
    testing::internal::CaptureStdout();
    EXPECT_FALSE(file.init("isInfrared=1"));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("objMergedXml.getStyleMergedString(isInfrared=1) failed\n"), std::string::npos) << out;
    EXPECT_EQ(file.getUIStyleConfigString(), "");
    EXPECT_TRUE(file.commonTexts().empty());
}

TEST_F(SensorUIConfigFileTest, NeitherStyleNorDiversityFails) {
    root.remove(kDir + "/style/S2Style.xml");
    root.remove(kDir + "/styleDiversity/S2StyleDiversity.xml");
    testing::internal::CaptureStdout();
    EXPECT_FALSE(file.init("isInfrared=1"));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("getStyleFileText failed , path=" + kDir + "/style/S2Style.xml \n"), std::string::npos) << out;
}

TEST_F(SensorUIConfigFileTest, MalformedDiversityFailsInit) {
    root.write(kDir + "/styleDiversity/S2StyleDiversity.xml", "<Module isInfrared=\"1\"><Delete>");
    EXPECT_FALSE(file.init("isInfrared=1"));
}

TEST_F(SensorUIConfigFileTest, MissingLanguageListIsFatal) {
    root.remove(kDir + "/SensorLanguageConfig.xml");
    testing::internal::CaptureStdout();
    EXPECT_FALSE(file.init("isInfrared=1"));
    EXPECT_NE(testing::internal::GetCapturedStdout().find("parse SensorLanguageConfig.xml failed "), std::string::npos);
    EXPECT_EQ(file.getUIStyleConfigString(), "");
}

TEST_F(SensorUIConfigFileTest, MissingLanguageFileFallsBackOnlyForThatText) {
    root.remove(kDir + "/language/chinese/S2Lang.xml");
    testing::internal::CaptureStdout();
    ASSERT_TRUE(file.init("isInfrared=1"));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("getLanguageFile failed , path=" + kDir + "/language/chinese/S2Lang.xml\n"), std::string::npos);
    EXPECT_EQ(file.getUILanguageConfigString(2), sampleFile("language/english/S2Lang.xml"));
    EXPECT_EQ(file.getUICommonConfigString(2), sampleFile("common/chinese/SensorCommon.xml"));
    EXPECT_EQ(file.languageTexts().count(2), 0u);
}

TEST_F(SensorUIConfigFileTest, MissingCommonFileSkipsTheWholeLanguage) {
    root.remove(kDir + "/common/chinese/SensorCommon.xml");
    testing::internal::CaptureStdout();
    ASSERT_TRUE(file.init("isInfrared=1"));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("getCommonFile failed , path=" + kDir + "/common/chinese/SensorCommon.xml\n"), std::string::npos);
    // The language file of that language is not even read.
    EXPECT_EQ(out.find("getLanguageFile failed"), std::string::npos);
    EXPECT_EQ(file.languageTexts().count(2), 0u);
    EXPECT_EQ(file.getUICommonConfigString(2), sampleFile("common/english/SensorCommon.xml"));
    EXPECT_EQ(file.getUILanguageConfigString(2), sampleFile("language/english/S2Lang.xml"));
}

TEST_F(SensorUIConfigFileTest, UnlistedIdWithoutLanguageOneIsEmpty) {
    root.write(kDir + "/SensorLanguageConfig.xml",
               "<sensorLanguageConfig><language id=\"2\" folder=\"chinese\"/><language id=\"3\" folder=\"english\"/>"
               "</sensorLanguageConfig>");
    ASSERT_TRUE(file.init("isInfrared=1"));
    EXPECT_EQ(file.getUILanguageConfigString(3), sampleFile("language/english/S2Lang.xml"));
    EXPECT_EQ(file.getUILanguageConfigString(7), "");
    EXPECT_EQ(file.getUICommonConfigString(7), "");
    EXPECT_EQ(file.getUICommonConfigString(1), "");
}

TEST_F(SensorUIConfigFileTest, LanguageListedTwiceTakesTheLaterTexts) {
    root.write(kDir + "/SensorLanguageConfig.xml",
               "<sensorLanguageConfig><language id=\"1\" folder=\"english\"/><language id=\"1\" folder=\"chinese\"/>"
               "</sensorLanguageConfig>");
    ASSERT_TRUE(file.init("isInfrared=1"));
    EXPECT_EQ(file.getUICommonConfigString(1), sampleFile("common/chinese/SensorCommon.xml"));
    EXPECT_EQ(file.getUILanguageConfigString(1), sampleFile("language/chinese/S2Lang.xml"));

    // A later entry whose language file is missing replaces only the common text.
    SensorUIConfigFile other;
    other.setUIConfigPath(kDir);
    other.setUIConfigPrefix("S2");
    root.remove(kDir + "/language/chinese/S2Lang.xml");
    ASSERT_TRUE(other.init("isInfrared=1"));
    EXPECT_EQ(other.getUICommonConfigString(1), sampleFile("common/chinese/SensorCommon.xml"));
    EXPECT_EQ(other.getUILanguageConfigString(1), sampleFile("language/english/S2Lang.xml"));
}

TEST_F(SensorUIConfigFileTest, FileThatShrinksBeforeTheReadIsUnreadable) {
    g_shrinkTarget = root.real(kDir + "/language/chinese/S2Lang.xml");
    KSFile::setBeforeReadHook(shrinkTarget);
    testing::internal::CaptureStdout();
    bool ok = file.init("isInfrared=1");
    std::string out = testing::internal::GetCapturedStdout();
    KSFile::setBeforeReadHook(nullptr);
    ASSERT_TRUE(ok);
    EXPECT_NE(out.find("getLanguageFile failed"), std::string::npos);
    EXPECT_EQ(file.getUILanguageConfigString(2), sampleFile("language/english/S2Lang.xml"));

    std::string text = "kept";
    g_shrinkTarget = root.real(kDir + "/style/S2Style.xml");
    KSFile::setBeforeReadHook(shrinkTarget);
    bool read = SensorUIConfigFile::getFileText(kDir + "/style/S2Style.xml", text);
    KSFile::setBeforeReadHook(nullptr);
    EXPECT_FALSE(read);
    EXPECT_EQ(text, "kept");
}

TEST(SensorUIConfigFileTextTest, GetFileTextReadsEveryByte) {
    TempRoot root;
    const std::string bytes("a\0b\xff\n", 5);
    root.write("/hd1/t.xml", bytes);
    root.write("/hd1/empty.xml", "");
    std::string text;
    ASSERT_TRUE(SensorUIConfigFile::getFileText("/hd1/t.xml", text));
    EXPECT_EQ(text, bytes);
    ASSERT_TRUE(SensorUIConfigFile::getFileText("/hd1/empty.xml", text));
    EXPECT_EQ(text, "");
    text = "kept";
    EXPECT_FALSE(SensorUIConfigFile::getFileText("/hd1/missing.xml", text));
    EXPECT_FALSE(SensorUIConfigFile::getFileText("/hd1", text));
    EXPECT_EQ(text, "kept");
}
